#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"

#include <memory>
#include <string>

namespace MXF::SDK::DataIO
{
class BoundedDataSource;
class DataSource;
} // namespace MXF::SDK::DataIO

namespace MXF::SDK::Types
{

// 7-bit text, no terminator, as many bytes as the value has.
class ISO7String final : public SimpleDataType
{
public:
    explicit ISO7String(const std::string& text);
    // Takes every remaining byte of the source.
    explicit ISO7String(DataIO::BoundedDataSource& source);
    ISO7String(const ISO7String& other);
    ISO7String& operator=(const ISO7String& other);
    ~ISO7String() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    std::string value() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// One UTF-16 code unit, big-endian.
class UTF16 final : public SimpleDataType
{
public:
    explicit UTF16(char16_t unit);
    explicit UTF16(DataIO::DataSource& source);
    UTF16(const UTF16& other);
    UTF16& operator=(const UTF16& other);
    ~UTF16() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    char16_t value() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// UTF-16 code units, big-endian, no terminator: the whole of the value. Beside the wire form it
// keeps the decoded text.
class UTF16String final : public SimpleDataType
{
public:
    // Characters above U+FFFF become surrogate pairs.
    explicit UTF16String(const std::wstring& text);
    // Takes every remaining byte of the source. More than 32 bits of them throws InvalidLength
    // "Type size exceeded"; an odd count throws InvalidValue "UTF-16 data must have a even number
    // of bytes.".
    explicit UTF16String(DataIO::BoundedDataSource& source);
    UTF16String(const UTF16String& other);
    UTF16String& operator=(const UTF16String& other);
    ~UTF16String() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    // Decoded up to the first zero code unit, as files pad strings with zeros. Surrogate pairs
    // become one character; a lone surrogate becomes U+FFFD.
    const std::wstring& value() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::Types
