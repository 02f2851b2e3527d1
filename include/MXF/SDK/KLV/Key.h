#pragma once

#include "MXF/SDK/KLV/FixedLengthIdentificationType.h"
#include "MXF/SDK/Platform/Types.h"

#include <compare>
#include <cstddef>
#include <memory>
#include <string>

namespace MXF::SDK::DataIO
{
class DataSource;
}

namespace MXF::SDK::KLV
{

// The 16-byte key of a KLV item (SMPTE 336M). A value type one pointer wide: copying allocates a
// new Impl, assignment copies the bytes. Equality and ordering compare all 16 bytes as unsigned,
// the first most significant; the version byte is masked only by the named predicates.
class Key
{
public:
    class Impl;

    static constexpr std::size_t SIZE = 16;

    explicit Key(const Platform::Byte* bytes);
    // An exact read of 16 bytes; throws InvalidLength "Invalid data size in Value..." when the
    // source runs dry.
    explicit Key(DataIO::DataSource& source);
    // Reads dotted hex and OID (1.3.53.2 stands for 06 0E 2B 34 02); REPRESENTATION_NATIVE is
    // OID. Any other form throws InvalidFormat "Don't know how to initialize Key in the given
    // string representation format".
    explicit Key(const std::wstring& text,
                 StringRepresentationEncodingType representation = REPRESENTATION_DOTTED_HEX);
    Key(const Key& other);
    Key& operator=(const Key& other);
    ~Key();

    // OID only (REPRESENTATION_OID or REPRESENTATION_NATIVE); anything else throws InvalidFormat
    // "Don't know how to represent Key in the given string representation format".
    std::wstring
    toString(StringRepresentationEncodingType representation = REPRESENTATION_OID) const;

    static constexpr std::size_t size() noexcept { return SIZE; }
    const Platform::Byte* data() const noexcept;
    // Throws std::out_of_range past byte 15.
    Platform::Byte operator[](std::size_t index) const;

    friend bool operator==(const Key& a, const Key& b) noexcept;
    friend std::strong_ordering operator<=>(const Key& a, const Key& b) noexcept;

private:
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::KLV
