#include "MXF/SDK/KLV/Key.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/IdentifierText.h"
#include "MXF/SDK/KLV/ReadExact.h"

#include <cstring>

namespace MXF::SDK::KLV
{

class Key::Impl : public FixedLengthIdentificationType<16>
{
public:
    using FixedLengthIdentificationType::FixedLengthIdentificationType;

    void fromString(const std::wstring& text,
                    StringRepresentationEncodingType representation) override
    {
        switch (representation)
        {
        case REPRESENTATION_DOTTED_HEX:
            IdentifierText::readDottedHex(text, bytes_.data(), SIZE);
            return;
        case REPRESENTATION_OID:
        case REPRESENTATION_NATIVE:
            IdentifierText::readOID(text, bytes_.data(), SIZE, IdentifierText::KEY_HEAD);
            return;
        default:
            MXF_SDK_THROW(Exceptions::InvalidFormat,
                          "Don't know how to initialize Key in the given string representation "
                          "format");
        }
    }

    std::wstring toString(StringRepresentationEncodingType representation) const override
    {
        if (representation != REPRESENTATION_OID && representation != REPRESENTATION_NATIVE)
            MXF_SDK_THROW(Exceptions::InvalidFormat,
                          "Don't know how to represent Key in the given string representation "
                          "format");
        return IdentifierText::writeOID(bytes_.data(), SIZE, IdentifierText::KEY_HEAD);
    }
};

Key::Key(const Platform::Byte* bytes) : impl_(std::make_unique<Impl>(bytes)) {}

Key::Key(DataIO::DataSource& source) : impl_(std::make_unique<Impl>())
{
    readExact(source, impl_->data(), SIZE);
}

Key::Key(const std::wstring& text, StringRepresentationEncodingType representation)
    : impl_(std::make_unique<Impl>())
{
    impl_->fromString(text, representation);
}

Key::Key(const Key& other) : impl_(std::make_unique<Impl>(other.data())) {}

Key& Key::operator=(const Key& other)
{
    if (impl_ != other.impl_)
        std::memcpy(impl_->data(), other.data(), SIZE);
    return *this;
}

Key::~Key() = default;

std::wstring Key::toString(StringRepresentationEncodingType representation) const
{
    return impl_->toString(representation);
}

const Platform::Byte* Key::data() const noexcept
{
    return impl_->data();
}

Platform::Byte Key::operator[](std::size_t index) const
{
    return (*impl_)[index];
}

bool operator==(const Key& a, const Key& b) noexcept
{
    return std::memcmp(a.data(), b.data(), Key::SIZE) == 0;
}

std::strong_ordering operator<=>(const Key& a, const Key& b) noexcept
{
    return std::memcmp(a.data(), b.data(), Key::SIZE) <=> 0;
}

} // namespace MXF::SDK::KLV
