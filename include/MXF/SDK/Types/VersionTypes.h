#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"

#include <memory>

namespace MXF::SDK::DataIO
{
class DataSource;
}

namespace MXF::SDK::Types
{

// SMPTE 377M VersionType: major byte, minor byte.
class VersionType final : public SimpleDataType
{
public:
    VersionType(Platform::UInt8 majorVersion, Platform::UInt8 minorVersion);
    explicit VersionType(DataIO::DataSource& source);
    VersionType(const VersionType& other);
    VersionType& operator=(const VersionType& other);
    ~VersionType() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    Platform::UInt8 majorVersion() const;
    Platform::UInt8 minorVersion() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// SMPTE 377M ProductVersion: five 16-bit big-endian numbers, 10 bytes: major, minor, patch,
// build, release (0 unknown, 1 released, 2 debug, 3 patched, 4 beta, 5 private build).
class ProductVersion final : public SimpleDataType
{
public:
    ProductVersion(Platform::UInt16 majorVersion, Platform::UInt16 minorVersion,
                   Platform::UInt16 patch, Platform::UInt16 build, Platform::UInt16 release);
    explicit ProductVersion(DataIO::DataSource& source);
    ProductVersion(const ProductVersion& other);
    ProductVersion& operator=(const ProductVersion& other);
    ~ProductVersion() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    Platform::UInt16 majorVersion() const;
    Platform::UInt16 minorVersion() const;
    Platform::UInt16 patch() const;
    Platform::UInt16 build() const;
    Platform::UInt16 release() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::Types
