#pragma once

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Types.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace MXF::SDK::KLV
{

enum StringRepresentationEncodingType
{
    REPRESENTATION_DOTTED_HEX = 0, // 06.0E.2B.34.02.53.01.01.0D.01.01.01.01.01.2F.00
    REPRESENTATION_PLAIN_HEX = 1,  // 0x060e2b34025301010d01010101012f00
    REPRESENTATION_OID = 2,        // 1.3.53.2.83.1.1.13.1.1.1.1.1.47
    REPRESENTATION_UUID = 3,       // 01234567-89ab-cdef-0123-456789abcdef
    REPRESENTATION_NATIVE = 4      // whichever of these is natural to the class
};

class FixedLengthIdentificationTypeBase
{
public:
    virtual ~FixedLengthIdentificationTypeBase() = default;
};

// N bytes that name something: keys and labels (16), UUIDs (16), UMIDs (32, 64), local tags (2).
// The text slots refuse every form; each identifier's Impl overrides them with the forms it
// accepts.
template <std::size_t N>
class FixedLengthIdentificationType : public FixedLengthIdentificationTypeBase
{
public:
    static constexpr std::size_t SIZE = N;

    FixedLengthIdentificationType() noexcept : bytes_{} {}
    explicit FixedLengthIdentificationType(const Platform::Byte* bytes) noexcept
    {
        std::copy(bytes, bytes + N, bytes_.begin());
    }

    virtual void fromString(const std::wstring& /*text*/,
                            StringRepresentationEncodingType /*representation*/)
    {
        MXF_SDK_THROW(Exceptions::InvalidValue,
                      "Can't retrieve in the requested type for the given "
                      "StringRepresentationEncodingType");
    }
    virtual std::wstring toString(StringRepresentationEncodingType /*representation*/) const
    {
        MXF_SDK_THROW(Exceptions::InvalidValue, "Can't represent the requested type in the given "
                                                "StringRepresentationEncodingType");
    }

    const Platform::Byte* data() const noexcept { return bytes_.data(); }
    Platform::Byte* data() noexcept { return bytes_.data(); }
    static constexpr std::size_t size() noexcept { return N; }
    Platform::Byte operator[](std::size_t index) const { return bytes_.at(index); }

    // All N bytes as unsigned, the first most significant.
    friend bool operator==(const FixedLengthIdentificationType& a,
                           const FixedLengthIdentificationType& b) noexcept
    {
        return a.bytes_ == b.bytes_;
    }
    friend auto operator<=>(const FixedLengthIdentificationType& a,
                            const FixedLengthIdentificationType& b) noexcept
    {
        return a.bytes_ <=> b.bytes_;
    }

protected:
    std::array<Platform::Byte, N> bytes_;
};

} // namespace MXF::SDK::KLV
