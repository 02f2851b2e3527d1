#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Platform/Types.h"

#include <vector>

namespace MXF::SDK::DataIO::Memory
{

// A copy of some bytes, read from any position. At most 4 GiB - 1: more throws IOError
// "Type size exceeded".
class MemoryDataSource : public RandomAccessDataSource
{
public:
    MemoryDataSource(const void* data, UInt64 size);

    UInt64 position() const override { return position_; }
    UInt64 read(void* buffer, UInt64 size) override;
    UInt64 skip(UInt64 size) override;
    UInt64 remaining() const override { return data_.size() - position_; }
    UInt64 skipToEnd() override { return position_ = data_.size(); }
    UInt64 seek(UInt64 position) override;

private:
    std::vector<Platform::Byte> data_;
    UInt64 position_ = 0;
};

} // namespace MXF::SDK::DataIO::Memory
