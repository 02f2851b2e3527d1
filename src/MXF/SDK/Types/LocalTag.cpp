#include "MXF/SDK/Types/LocalTag.h"

#include "HandleMembers.h"
#include "IdentifierImpls.h"

namespace MXF::SDK::Types
{

LocalTag::LocalTag(Platform::UInt16 tag) : impl_(std::make_unique<Impl>())
{
    Internal::writeBigEndian(tag, impl_->data());
}

Platform::UInt16 LocalTag::value() const
{
    return Internal::readBigEndian<Platform::UInt16>(impl_->data());
}

LocalTag::LocalTag(const Platform::Byte* bytes) : impl_(std::make_unique<Impl>(bytes)) {}

LocalTag::LocalTag(DataIO::DataSource& source) : impl_(std::make_unique<Impl>(source)) {}

LocalTag::LocalTag(const std::wstring& text, KLV::StringRepresentationEncodingType representation)
    : impl_(std::make_unique<Impl>(text, representation))
{
}

std::wstring LocalTag::toString(KLV::StringRepresentationEncodingType representation) const
{
    return impl_->toString(representation);
}

Platform::Byte LocalTag::operator[](std::size_t index) const
{
    return (*impl_)[index];
}

bool operator==(const LocalTag& a, const LocalTag& b) noexcept
{
    return *a.impl_ == *b.impl_;
}

std::strong_ordering operator<=>(const LocalTag& a, const LocalTag& b) noexcept
{
    return *a.impl_ <=> *b.impl_;
}

MXF_SDK_TYPES_HANDLE(LocalTag, SimpleDataType)

} // namespace MXF::SDK::Types
