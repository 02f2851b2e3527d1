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

// The identifiers that can stand as element values. Each is a value handle over a private Impl:
// construction allocates one, copying allocates another, assignment copies the bytes.
class UID : public SimpleDataType
{
protected:
    UID() = default;
    UID(const UID&) = default;
    UID& operator=(const UID&) = default;
};

// A SMPTE 298M universal label.
class UniversalLabel final : public UID
{
public:
    class Impl;

    static constexpr std::size_t SIZE = 16;

    explicit UniversalLabel(const Platform::Byte* bytes);
    // An exact read of 16 bytes; throws InvalidLength "Invalid data size in Value..." when the
    // source runs dry.
    explicit UniversalLabel(DataIO::DataSource& source);
    // Reads dotted hex and OID (1.3.53 stands for 06 0E 2B 34); REPRESENTATION_NATIVE is OID.
    // Any other form throws InvalidFormat "Don't know how to initialize UniversalLabel in the given
    // string representation format".
    explicit UniversalLabel(
        const std::wstring& text,
        KLV::StringRepresentationEncodingType representation = KLV::REPRESENTATION_DOTTED_HEX);
    UniversalLabel(const UniversalLabel& other);
    UniversalLabel& operator=(const UniversalLabel& other);
    ~UniversalLabel() override;

    // Writes OID only (REPRESENTATION_OID or REPRESENTATION_NATIVE); anything else throws
    // InvalidFormat "Don't know how to represent UniversalLabel in the given string representation
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
    friend bool operator==(const UniversalLabel& a, const UniversalLabel& b) noexcept;
    friend std::strong_ordering operator<=>(const UniversalLabel& a,
                                            const UniversalLabel& b) noexcept;

private:
    std::unique_ptr<Impl> impl_;
};

// An RFC 4122 UUID, bytes in the order of its text form. New ones come from
// Factories::newUUID.
class UUID final : public UID
{
public:
    class Impl;

    static constexpr std::size_t SIZE = 16;

    explicit UUID(const Platform::Byte* bytes);
    // An exact read of 16 bytes; throws InvalidLength "Invalid data size in Value..." when the
    // source runs dry.
    explicit UUID(DataIO::DataSource& source);
    // Reads dotted hex and the UUID form; REPRESENTATION_NATIVE is the UUID form.
    // Any other form throws InvalidFormat "Don't know how to initialize UUID in the given string
    // representation format".
    explicit UUID(const std::wstring& text, KLV::StringRepresentationEncodingType representation =
                                                KLV::REPRESENTATION_DOTTED_HEX);
    UUID(const UUID& other);
    UUID& operator=(const UUID& other);
    ~UUID() override;

    // Writes the UUID form only (REPRESENTATION_UUID or REPRESENTATION_NATIVE); anything else
    // throws InvalidFormat "Don't know how to represent UUID in the given string representation
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
    friend bool operator==(const UUID& a, const UUID& b) noexcept;
    friend std::strong_ordering operator<=>(const UUID& a, const UUID& b) noexcept;

private:
    std::unique_ptr<Impl> impl_;
};

// A SMPTE 330M basic UMID. New ones come from Factories::newUMID32.
class UMID32 final : public UID
{
public:
    class Impl;

    static constexpr std::size_t SIZE = 32;

    explicit UMID32(const Platform::Byte* bytes);
    // An exact read of 32 bytes; throws InvalidLength "Invalid data size in Value..." when the
    // source runs dry.
    explicit UMID32(DataIO::DataSource& source);
    // Reads dotted hex and plain hex; REPRESENTATION_NATIVE is plain hex.
    // Any other form throws InvalidFormat "Don't know how to initialize UMID32 in the given string
    // representation format".
    explicit UMID32(const std::wstring& text, KLV::StringRepresentationEncodingType representation =
                                                  KLV::REPRESENTATION_DOTTED_HEX);
    UMID32(const UMID32& other);
    UMID32& operator=(const UMID32& other);
    ~UMID32() override;

    // Writes plain hex only (REPRESENTATION_PLAIN_HEX or REPRESENTATION_NATIVE); anything else
    // throws InvalidFormat "Don't know how to represent UMID32 in the given string representation
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
    friend bool operator==(const UMID32& a, const UMID32& b) noexcept;
    friend std::strong_ordering operator<=>(const UMID32& a, const UMID32& b) noexcept;

private:
    std::unique_ptr<Impl> impl_;
};

// A SMPTE 330M extended UMID: the basic UMID and 32 bytes of source pack.
class UMID64 final : public UID
{
public:
    class Impl;

    static constexpr std::size_t SIZE = 64;

    explicit UMID64(const Platform::Byte* bytes);
    // An exact read of 64 bytes; throws InvalidLength "Invalid data size in Value..." when the
    // source runs dry.
    explicit UMID64(DataIO::DataSource& source);
    // Reads dotted hex and plain hex; REPRESENTATION_NATIVE is plain hex.
    // Any other form throws InvalidFormat "Don't know how to initialize UMID64 in the given string
    // representation format".
    explicit UMID64(const std::wstring& text, KLV::StringRepresentationEncodingType representation =
                                                  KLV::REPRESENTATION_DOTTED_HEX);
    UMID64(const UMID64& other);
    UMID64& operator=(const UMID64& other);
    ~UMID64() override;

    // Writes plain hex only (REPRESENTATION_PLAIN_HEX or REPRESENTATION_NATIVE); anything else
    // throws InvalidFormat "Don't know how to represent UMID64 in the given string representation
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
    friend bool operator==(const UMID64& a, const UMID64& b) noexcept;
    friend std::strong_ordering operator<=>(const UMID64& a, const UMID64& b) noexcept;

private:
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::Types
