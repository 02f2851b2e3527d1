#pragma once

#include "MXF/SDK/KLV/FixedLengthIdentificationType.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"

#include <compare>
#include <cstddef>
#include <memory>
#include <string>

namespace MXF::SDK::DataIO
{
class DataSource;
}

namespace MXF::SDK::Types
{

// The 2-byte local tag of an item in a local set (SMPTE 336M, 2-byte tags), big-endian.
class LocalTag final : public SimpleDataType
{
public:
    class Impl;

    static constexpr std::size_t SIZE = 2;

    explicit LocalTag(const Platform::Byte* bytes);
    // An exact read of 2 bytes; throws InvalidLength "Invalid data size in Value..." when the
    // source runs dry.
    explicit LocalTag(DataIO::DataSource& source);
    // Reads dotted hex and plain hex; REPRESENTATION_NATIVE is plain hex.
    // Any other form throws InvalidFormat "Don't know how to initialize LocalTag in the given
    // string representation format".
    explicit LocalTag(
        const std::wstring& text,
        KLV::StringRepresentationEncodingType representation = KLV::REPRESENTATION_DOTTED_HEX);
    LocalTag(const LocalTag& other);
    LocalTag& operator=(const LocalTag& other);
    ~LocalTag() override;
    explicit LocalTag(Platform::UInt16 tag);

    Platform::UInt16 value() const;

    // Writes plain hex only (REPRESENTATION_PLAIN_HEX or REPRESENTATION_NATIVE); anything else
    // throws InvalidFormat "Don't know how to represent LocalTag in the given string representation
    // format".
    std::wstring toString(
        KLV::StringRepresentationEncodingType representation = KLV::REPRESENTATION_NATIVE) const;

    // Throws std::out_of_range past the last byte.
    Platform::Byte operator[](std::size_t index) const;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    // All bytes as unsigned, the first most significant.
    friend bool operator==(const LocalTag& a, const LocalTag& b) noexcept;
    friend std::strong_ordering operator<=>(const LocalTag& a, const LocalTag& b) noexcept;

private:
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::Types
