#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"

#include <array>
#include <cstddef>
#include <memory>

namespace MXF::SDK::DataIO
{
class BoundedDataSource;
class DataSource;
} // namespace MXF::SDK::DataIO

namespace MXF::SDK::Types
{

// SMPTE 422M J2K picture component sizing, 3 bytes of the ISO 15444-1 SIZ marker (A.5.1):
// Ssiz (bit depth - 1, top bit set for signed), XRsiz, YRsiz (subsampling).
class J2KPictureComponent final : public SimpleDataType
{
public:
    J2KPictureComponent(Platform::UInt8 ssiz, Platform::UInt8 xrsiz, Platform::UInt8 yrsiz);
    explicit J2KPictureComponent(DataIO::DataSource& source);
    J2KPictureComponent(const J2KPictureComponent& other);
    J2KPictureComponent& operator=(const J2KPictureComponent& other);
    ~J2KPictureComponent() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    Platform::UInt8 ssiz() const;
    Platform::UInt8 xrsiz() const;
    Platform::UInt8 yrsiz() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// The parameters of the ISO 15444-1 COD marker (A.6.1), kept as they come: Scod (1 byte), SGcod
// (4 bytes: progression order, layers (16 bits), colour transform), SPcod (at least 5 bytes:
// decomposition levels, code-block width, height and style, transform, then precinct sizes).
// Shorter values throw InvalidValue "J2KCodingStyleDefault size is smaller than required.
// J2KCodingStyleDefault must be at least 10 bytes." or, for the SPcod part, "J2KCodingStyleDefault
// Spcod item size is smaller than required. Spcod must be at least 5 bytes.".
class J2KCodingStyleDefault final : public SimpleDataType
{
public:
    static constexpr std::size_t SGCOD_SIZE = 4;

    J2KCodingStyleDefault(const Platform::Byte* bytes, std::size_t size);
    J2KCodingStyleDefault(Platform::UInt8 scod, const std::array<Platform::Byte, SGCOD_SIZE>& sgcod,
                          const Platform::Byte* spcod, std::size_t spcodSize);
    // Takes every remaining byte of the source.
    explicit J2KCodingStyleDefault(DataIO::BoundedDataSource& source);
    J2KCodingStyleDefault(const J2KCodingStyleDefault& other);
    J2KCodingStyleDefault& operator=(const J2KCodingStyleDefault& other);
    ~J2KCodingStyleDefault() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    Platform::UInt8 scod() const;
    std::array<Platform::Byte, SGCOD_SIZE> sgcod() const;
    const Platform::Byte* spcod() const;
    std::size_t spcodSize() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// The parameters of the ISO 15444-1 QCD marker (A.6.4), kept as they come: Sqcd (1 byte), SPqcd
// (at least 1 byte). Shorter values throw InvalidValue "J2KQuantisationDefault size is smaller than
// required. J2KQuantisationDefault must be at least 2 bytes." (read from a source the second
// sentence names J2KCodingStyleDefault), or for SPqcd "J2KQuantisationDefault sPgcd item size is
// smaller than required. Spcod must be at least 1 bytes.".
class J2KQuantisationDefault final : public SimpleDataType
{
public:
    J2KQuantisationDefault(const Platform::Byte* bytes, std::size_t size);
    J2KQuantisationDefault(Platform::UInt8 sqcd, const Platform::Byte* spqcd,
                           std::size_t spqcdSize);
    // Takes every remaining byte of the source.
    explicit J2KQuantisationDefault(DataIO::BoundedDataSource& source);
    J2KQuantisationDefault(const J2KQuantisationDefault& other);
    J2KQuantisationDefault& operator=(const J2KQuantisationDefault& other);
    ~J2KQuantisationDefault() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    Platform::UInt8 sqcd() const;
    const Platform::Byte* spqcd() const;
    std::size_t spqcdSize() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::Types
