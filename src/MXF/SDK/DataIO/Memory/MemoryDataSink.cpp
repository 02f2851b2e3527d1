#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"

#include "MXF/SDK/Exceptions/Exceptions.h"

namespace MXF::SDK::DataIO::Memory
{

void MemoryDataSink::write(const void* buffer, UInt64 size)
{
    if (size > UINT32_MAX - data_.size())
        MXF_SDK_THROW(Exceptions::IOError, "Type size exceeded");
    const auto* bytes = static_cast<const Platform::Byte*>(buffer);
    data_.insert(data_.end(), bytes, bytes + size);
}

} // namespace MXF::SDK::DataIO::Memory
