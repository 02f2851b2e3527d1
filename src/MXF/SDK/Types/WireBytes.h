#pragma once

#include "Allocation.h"
#include "MXF/SDK/ByteCoders/BigEndian.h"
#include "MXF/SDK/KLV/ReadExact.h"
#include "MXF/SDK/Platform/Types.h"

#include <array>
#include <cstddef>
#include <type_traits>

namespace MXF::SDK::DataIO
{
class DataSource;
class BoundedDataSource;
} // namespace MXF::SDK::DataIO

// Wire forms: bytes in file order, read from sources and converted on the way out.
namespace MXF::SDK::Types::Internal
{

using ByteCoders::readBigEndian;
using ByteCoders::writeBigEndian;
using KLV::readExact;
using Platform::Byte;

// Every remaining byte of the source. More than 32 bits of them throws InvalidLength "Type size
// exceeded".
ByteVector readRemaining(DataIO::BoundedDataSource& source);

// The address `data` gives for a value of no bytes.
const Byte* emptyBytes() noexcept;

// N bytes of wire form, the Impl of most values of fixed size.
template <std::size_t N>
struct FixedBytes : ManagedObject
{
    std::array<Byte, N> bytes{};

    FixedBytes() = default;
    explicit FixedBytes(DataIO::DataSource& source) { readExact(source, bytes.data(), N); }

    const Byte* data() const noexcept { return bytes.data(); }
    static constexpr Platform::UInt16 size() noexcept { return N; }
};

// Wire form of a value of variable size.
struct VariableBytes : ManagedObject
{
    ByteVector bytes;

    VariableBytes() = default;
    VariableBytes(const Byte* data, std::size_t size) : bytes(data, data + size) {}
    explicit VariableBytes(ByteVector data) : bytes(std::move(data)) {}

    const Byte* data() const noexcept { return bytes.empty() ? emptyBytes() : bytes.data(); }
    Platform::UInt16 size() const;
};

} // namespace MXF::SDK::Types::Internal
