#include "MXF/SDK/Types/UID.h"

#include "HandleMembers.h"
#include "IdentifierImpls.h"

namespace MXF::SDK::Types
{

UniversalLabel::UniversalLabel(const Platform::Byte* bytes) : impl_(std::make_unique<Impl>(bytes))
{
}

UniversalLabel::UniversalLabel(DataIO::DataSource& source) : impl_(std::make_unique<Impl>(source))
{
}

UniversalLabel::UniversalLabel(const std::wstring& text,
                               KLV::StringRepresentationEncodingType representation)
    : impl_(std::make_unique<Impl>(text, representation))
{
}

std::wstring UniversalLabel::toString(KLV::StringRepresentationEncodingType representation) const
{
    return impl_->toString(representation);
}

Platform::Byte UniversalLabel::operator[](std::size_t index) const
{
    return (*impl_)[index];
}

bool operator==(const UniversalLabel& a, const UniversalLabel& b) noexcept
{
    return *a.impl_ == *b.impl_;
}

std::strong_ordering operator<=>(const UniversalLabel& a, const UniversalLabel& b) noexcept
{
    return *a.impl_ <=> *b.impl_;
}

MXF_SDK_TYPES_HANDLE(UniversalLabel, UID)

UUID::UUID(const Platform::Byte* bytes) : impl_(std::make_unique<Impl>(bytes)) {}

UUID::UUID(DataIO::DataSource& source) : impl_(std::make_unique<Impl>(source)) {}

UUID::UUID(const std::wstring& text, KLV::StringRepresentationEncodingType representation)
    : impl_(std::make_unique<Impl>(text, representation))
{
}

std::wstring UUID::toString(KLV::StringRepresentationEncodingType representation) const
{
    return impl_->toString(representation);
}

Platform::Byte UUID::operator[](std::size_t index) const
{
    return (*impl_)[index];
}

bool operator==(const UUID& a, const UUID& b) noexcept
{
    return *a.impl_ == *b.impl_;
}

std::strong_ordering operator<=>(const UUID& a, const UUID& b) noexcept
{
    return *a.impl_ <=> *b.impl_;
}

MXF_SDK_TYPES_HANDLE(UUID, UID)

UMID32::UMID32(const Platform::Byte* bytes) : impl_(std::make_unique<Impl>(bytes)) {}

UMID32::UMID32(DataIO::DataSource& source) : impl_(std::make_unique<Impl>(source)) {}

UMID32::UMID32(const std::wstring& text, KLV::StringRepresentationEncodingType representation)
    : impl_(std::make_unique<Impl>(text, representation))
{
}

std::wstring UMID32::toString(KLV::StringRepresentationEncodingType representation) const
{
    return impl_->toString(representation);
}

Platform::Byte UMID32::operator[](std::size_t index) const
{
    return (*impl_)[index];
}

bool operator==(const UMID32& a, const UMID32& b) noexcept
{
    return *a.impl_ == *b.impl_;
}

std::strong_ordering operator<=>(const UMID32& a, const UMID32& b) noexcept
{
    return *a.impl_ <=> *b.impl_;
}

MXF_SDK_TYPES_HANDLE(UMID32, UID)

UMID64::UMID64(const Platform::Byte* bytes) : impl_(std::make_unique<Impl>(bytes)) {}

UMID64::UMID64(DataIO::DataSource& source) : impl_(std::make_unique<Impl>(source)) {}

UMID64::UMID64(const std::wstring& text, KLV::StringRepresentationEncodingType representation)
    : impl_(std::make_unique<Impl>(text, representation))
{
}

std::wstring UMID64::toString(KLV::StringRepresentationEncodingType representation) const
{
    return impl_->toString(representation);
}

Platform::Byte UMID64::operator[](std::size_t index) const
{
    return (*impl_)[index];
}

bool operator==(const UMID64& a, const UMID64& b) noexcept
{
    return *a.impl_ == *b.impl_;
}

std::strong_ordering operator<=>(const UMID64& a, const UMID64& b) noexcept
{
    return *a.impl_ <=> *b.impl_;
}

MXF_SDK_TYPES_HANDLE(UMID64, UID)

} // namespace MXF::SDK::Types
