#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"

#include "MXF/SDK/Exceptions/Exceptions.h"

#include <algorithm>
#include <cstring>

namespace MXF::SDK::DataIO::Memory
{

MemoryDataSource::MemoryDataSource(const void* data, UInt64 size)
{
    if (size > UINT32_MAX)
        MXF_SDK_THROW(Exceptions::IOError, "Type size exceeded");
    const auto* bytes = static_cast<const Platform::Byte*>(data);
    data_.assign(bytes, bytes + size);
}

UInt64 MemoryDataSource::read(void* buffer, UInt64 size)
{
    const UInt64 howMuch = std::min(size, remaining());
    if (howMuch == 0)
        return 0;
    std::memcpy(buffer, data_.data() + position_, howMuch);
    position_ += howMuch;
    return howMuch;
}

UInt64 MemoryDataSource::skip(UInt64 size)
{
    const UInt64 howMuch = std::min(size, remaining());
    position_ += howMuch;
    return howMuch;
}

UInt64 MemoryDataSource::seek(UInt64 position)
{
    position_ = std::min<UInt64>(position, data_.size());
    return position_;
}

} // namespace MXF::SDK::DataIO::Memory
