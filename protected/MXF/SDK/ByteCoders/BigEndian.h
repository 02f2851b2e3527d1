#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <cstddef>
#include <type_traits>

// Big-endian integers in place, as every number of MXF stands in the file: the one way in which
// the toolkit turns bytes from a file into numbers and back. The caller has checked that the
// bytes are there.
namespace MXF::SDK::ByteCoders
{

template <typename T>
T readBigEndian(const Platform::Byte* bytes) noexcept
{
    using U = std::make_unsigned_t<T>;
    U value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        value = static_cast<U>((value << 8) | bytes[i]);
    return static_cast<T>(value);
}

// The first `count` bytes, at most 8, as an unsigned number: lengths whose width the file chooses.
inline Platform::UInt64 readBigEndian(const Platform::Byte* bytes, std::size_t count) noexcept
{
    Platform::UInt64 value = 0;
    for (std::size_t i = 0; i < count && i < sizeof value; ++i)
        value = (value << 8) | bytes[i];
    return value;
}

template <typename T>
void writeBigEndian(T value, Platform::Byte* bytes) noexcept
{
    using U = std::make_unsigned_t<T>;
    U bits = static_cast<U>(value);
    for (std::size_t i = sizeof(T); i-- > 0;)
    {
        bytes[i] = static_cast<Platform::Byte>(bits & 0xFF);
        bits = static_cast<U>(bits >> 8);
    }
}

} // namespace MXF::SDK::ByteCoders
