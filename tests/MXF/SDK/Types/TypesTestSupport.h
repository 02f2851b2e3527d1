#pragma once

#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Types/BaseType.h"
#include "TestSupport.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Halvorn::Test
{

using Support::Bytes;
using Support::operator+;
using Support::PiecewiseSource;
using Support::thrownMessage;

inline Bytes serialized(const MXF::SDK::Types::BaseType& value)
{
    MXF::SDK::DataIO::Memory::MemoryDataSink sink;
    value.serialize(sink);
    return sink.data();
}

inline MXF::SDK::DataIO::Memory::MemoryDataSource sourceOf(const Bytes& bytes)
{
    return MXF::SDK::DataIO::Memory::MemoryDataSource(bytes.data(), bytes.size());
}
} // namespace Halvorn::Test
