#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Platform/Types.h"

#include <utility>
#include <vector>

namespace MXF::SDK::DataIO::Memory
{

// Collects bytes in a growing vector. At most 4 GiB - 1: more throws IOError "Type size exceeded".
class MemoryDataSink : public DataSink
{
public:
    void write(const void* buffer, UInt64 size) override;
    UInt64 position() const override { return data_.size(); }

    const std::vector<Platform::Byte>& data() const noexcept { return data_; }
    std::vector<Platform::Byte> release() noexcept { return std::move(data_); }

private:
    std::vector<Platform::Byte> data_;
};

} // namespace MXF::SDK::DataIO::Memory
