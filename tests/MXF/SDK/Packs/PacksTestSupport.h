#pragma once

#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/Types/UID.h"
#include "TestSupport.h"

#include <memory>

namespace Halvorn::Test
{

using namespace Support;

// The item that starts where the source stands.
inline std::unique_ptr<MXF::SDK::KLV::KLVItem> itemAt(DataSource& source)
{
    MXF::SDK::KLV::KLVReader reader(source);
    UInt64 skipped = 0;
    return reader.readKLV(skipped, 0);
}

template <typename Pack>
Bytes serialized(const Pack& pack)
{
    MXF::SDK::DataIO::Memory::MemoryDataSink sink;
    pack.serialize(sink);
    return sink.data();
}

// Builds the pack from the first item of `bytes`, read whole or `piece` bytes at a time; the pack's
// exception passes through.
template <typename Pack>
Pack packOf(const Bytes& bytes, UInt64 piece = 0)
{
    PiecewiseSource source(bytes, piece == 0 ? bytes.size() : piece);
    return Pack(*itemAt(source));
}

inline Bytes labelBytes(const MXF::SDK::Types::UniversalLabel& label)
{
    return Bytes(label.data(), label.data() + label.size());
}

} // namespace Halvorn::Test
