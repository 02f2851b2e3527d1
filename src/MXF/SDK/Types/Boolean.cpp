#include "MXF/SDK/Types/Boolean.h"

#include "HandleMembers.h"
#include "WireBytes.h"

namespace MXF::SDK::Types
{

struct Boolean::Impl : Internal::FixedBytes<1>
{
    using FixedBytes::FixedBytes;
};

Boolean::Boolean(bool value) : impl_(std::make_unique<Impl>())
{
    setValue(value);
}

Boolean::Boolean(DataIO::DataSource& source) : impl_(std::make_unique<Impl>(source)) {}

bool Boolean::value() const
{
    return impl_->bytes[0] != 0;
}

void Boolean::setValue(bool value)
{
    impl_->bytes[0] = value ? 1 : 0;
}

MXF_SDK_TYPES_HANDLE(Boolean, SimpleDataType)

} // namespace MXF::SDK::Types
