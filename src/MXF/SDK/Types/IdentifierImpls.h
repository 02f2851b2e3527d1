#pragma once

#include "Allocation.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/FixedLengthIdentificationType.h"
#include "MXF/SDK/KLV/IdentifierText.h"
#include "MXF/SDK/Types/LocalTag.h"
#include "MXF/SDK/Types/UID.h"
#include "WireBytes.h"

#include <string>

// The Impls behind the identifier handles: the bytes, and the text forms each class reads and
// writes. Dotted hex is read by all and written by none.
namespace MXF::SDK::Types
{

namespace Internal
{

[[noreturn]] inline void cannotRead(const char* className)
{
    MXF_SDK_THROW(Exceptions::InvalidFormat, std::string("Don't know how to initialize ") +
                                                 className +
                                                 " in the given string representation format");
}

[[noreturn]] inline void cannotWrite(const char* className)
{
    MXF_SDK_THROW(Exceptions::InvalidFormat, std::string("Don't know how to represent ") +
                                                 className +
                                                 " in the given string representation format");
}

// Construction shared by the Impls: from bytes or an exact read. Each Impl reads text in its own
// constructor, where its own fromString is the one called.
template <std::size_t N>
class IdentifierImpl : public KLV::FixedLengthIdentificationType<N>, public ManagedObject
{
public:
    using KLV::FixedLengthIdentificationType<N>::FixedLengthIdentificationType;
    IdentifierImpl() = default;
    explicit IdentifierImpl(DataIO::DataSource& source) { readExact(source, this->data(), N); }
};

} // namespace Internal

class UniversalLabel::Impl : public Internal::IdentifierImpl<16>
{
public:
    using IdentifierImpl::IdentifierImpl;
    Impl(const std::wstring& text, KLV::StringRepresentationEncodingType representation)
    {
        fromString(text, representation);
    }

    void fromString(const std::wstring& text,
                    KLV::StringRepresentationEncodingType representation) override
    {
        using namespace KLV;
        if (representation == REPRESENTATION_DOTTED_HEX)
            IdentifierText::readDottedHex(text, data(), SIZE);
        else if (representation == REPRESENTATION_OID || representation == REPRESENTATION_NATIVE)
            IdentifierText::readOID(text, data(), SIZE, IdentifierText::UNIVERSAL_LABEL_HEAD);
        else
            Internal::cannotRead("UniversalLabel");
    }

    std::wstring toString(KLV::StringRepresentationEncodingType representation) const override
    {
        using namespace KLV;
        if (representation != REPRESENTATION_OID && representation != REPRESENTATION_NATIVE)
            Internal::cannotWrite("UniversalLabel");
        return IdentifierText::writeOID(data(), SIZE, IdentifierText::UNIVERSAL_LABEL_HEAD);
    }
};

class UUID::Impl : public Internal::IdentifierImpl<16>
{
public:
    using IdentifierImpl::IdentifierImpl;
    Impl(const std::wstring& text, KLV::StringRepresentationEncodingType representation)
    {
        fromString(text, representation);
    }

    void fromString(const std::wstring& text,
                    KLV::StringRepresentationEncodingType representation) override
    {
        using namespace KLV;
        if (representation == REPRESENTATION_DOTTED_HEX)
            IdentifierText::readDottedHex(text, data(), SIZE);
        else if (representation == REPRESENTATION_UUID || representation == REPRESENTATION_NATIVE)
            IdentifierText::readUUIDForm(text, data());
        else
            Internal::cannotRead("UUID");
    }

    std::wstring toString(KLV::StringRepresentationEncodingType representation) const override
    {
        using namespace KLV;
        if (representation != REPRESENTATION_UUID && representation != REPRESENTATION_NATIVE)
            Internal::cannotWrite("UUID");
        return IdentifierText::writeUUIDForm(data());
    }
};

namespace Internal
{

inline constexpr char UMID32_NAME[] = "UMID32";
inline constexpr char UMID64_NAME[] = "UMID64";
inline constexpr char LOCAL_TAG_NAME[] = "LocalTag";

// UMIDs and local tags: dotted and plain hex in, plain hex out.
template <std::size_t N, const char* ClassName>
class PlainHexImpl : public IdentifierImpl<N>
{
public:
    using IdentifierImpl<N>::IdentifierImpl;
    PlainHexImpl() = default;
    PlainHexImpl(const std::wstring& text, KLV::StringRepresentationEncodingType representation)
    {
        fromString(text, representation);
    }

    void fromString(const std::wstring& text,
                    KLV::StringRepresentationEncodingType representation) override
    {
        using namespace KLV;
        if (representation == REPRESENTATION_DOTTED_HEX)
            IdentifierText::readDottedHex(text, this->data(), N);
        else if (representation == REPRESENTATION_PLAIN_HEX ||
                 representation == REPRESENTATION_NATIVE)
            IdentifierText::readPlainHex(text, this->data(), N);
        else
            cannotRead(ClassName);
    }

    std::wstring toString(KLV::StringRepresentationEncodingType representation) const override
    {
        using namespace KLV;
        if (representation != REPRESENTATION_PLAIN_HEX && representation != REPRESENTATION_NATIVE)
            cannotWrite(ClassName);
        return IdentifierText::writePlainHex(this->data(), N);
    }
};

} // namespace Internal

class UMID32::Impl : public Internal::PlainHexImpl<32, Internal::UMID32_NAME>
{
public:
    using PlainHexImpl::PlainHexImpl;
};

class UMID64::Impl : public Internal::PlainHexImpl<64, Internal::UMID64_NAME>
{
public:
    using PlainHexImpl::PlainHexImpl;
};

class LocalTag::Impl : public Internal::PlainHexImpl<2, Internal::LOCAL_TAG_NAME>
{
public:
    using PlainHexImpl::PlainHexImpl;
};

} // namespace MXF::SDK::Types
