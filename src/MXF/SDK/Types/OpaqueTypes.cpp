#include "MXF/SDK/Types/OpaqueTypes.h"

#include "HandleMembers.h"
#include "WireBytes.h"

namespace MXF::SDK::Types
{

struct DataStream::Impl : Internal::VariableBytes
{
    using VariableBytes::VariableBytes;
};

DataStream::DataStream(const Platform::Byte* bytes, std::size_t size)
    : impl_(std::make_unique<Impl>(bytes, size))
{
}

DataStream::DataStream(DataIO::BoundedDataSource& source)
    : impl_(std::make_unique<Impl>(Internal::readRemaining(source)))
{
}

MXF_SDK_TYPES_HANDLE(DataStream, SimpleDataType)

struct DataValue::Impl : Internal::VariableBytes
{
    using VariableBytes::VariableBytes;
};

DataValue::DataValue(const Platform::Byte* bytes, std::size_t size)
    : impl_(std::make_unique<Impl>(bytes, size))
{
}

DataValue::DataValue(DataIO::BoundedDataSource& source)
    : impl_(std::make_unique<Impl>(Internal::readRemaining(source)))
{
}

MXF_SDK_TYPES_HANDLE(DataValue, SimpleDataType)

struct Unknown::Impl : Internal::VariableBytes
{
    using VariableBytes::VariableBytes;
};

Unknown::Unknown(const Platform::Byte* bytes, std::size_t size)
    : impl_(std::make_unique<Impl>(bytes, size))
{
}

Unknown::Unknown(DataIO::BoundedDataSource& source)
    : impl_(std::make_unique<Impl>(Internal::readRemaining(source)))
{
}

MXF_SDK_TYPES_HANDLE(Unknown, SimpleDataType)

} // namespace MXF::SDK::Types
