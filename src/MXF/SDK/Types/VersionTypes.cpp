#include "MXF/SDK/Types/VersionTypes.h"

#include "HandleMembers.h"
#include "WireBytes.h"

namespace MXF::SDK::Types
{

using Internal::readBigEndian;
using Internal::writeBigEndian;

struct VersionType::Impl : Internal::FixedBytes<2>
{
    using FixedBytes::FixedBytes;
};

VersionType::VersionType(Platform::UInt8 majorVersion, Platform::UInt8 minorVersion)
    : impl_(std::make_unique<Impl>())
{
    impl_->bytes = {majorVersion, minorVersion};
}

VersionType::VersionType(DataIO::DataSource& source) : impl_(std::make_unique<Impl>(source)) {}

Platform::UInt8 VersionType::majorVersion() const
{
    return impl_->bytes[0];
}

Platform::UInt8 VersionType::minorVersion() const
{
    return impl_->bytes[1];
}

MXF_SDK_TYPES_HANDLE(VersionType, SimpleDataType)

struct ProductVersion::Impl : Internal::FixedBytes<10>
{
    using FixedBytes::FixedBytes;

    Platform::UInt16 number(std::size_t index) const
    {
        return readBigEndian<Platform::UInt16>(bytes.data() + 2 * index);
    }
};

ProductVersion::ProductVersion(Platform::UInt16 majorVersion, Platform::UInt16 minorVersion,
                               Platform::UInt16 patch, Platform::UInt16 build,
                               Platform::UInt16 release)
    : impl_(std::make_unique<Impl>())
{
    const Platform::UInt16 numbers[] = {majorVersion, minorVersion, patch, build, release};
    for (std::size_t i = 0; i < 5; ++i)
        writeBigEndian(numbers[i], impl_->bytes.data() + 2 * i);
}

ProductVersion::ProductVersion(DataIO::DataSource& source) : impl_(std::make_unique<Impl>(source))
{
}

Platform::UInt16 ProductVersion::majorVersion() const
{
    return impl_->number(0);
}

Platform::UInt16 ProductVersion::minorVersion() const
{
    return impl_->number(1);
}

Platform::UInt16 ProductVersion::patch() const
{
    return impl_->number(2);
}

Platform::UInt16 ProductVersion::build() const
{
    return impl_->number(3);
}

Platform::UInt16 ProductVersion::release() const
{
    return impl_->number(4);
}

MXF_SDK_TYPES_HANDLE(ProductVersion, SimpleDataType)

} // namespace MXF::SDK::Types
