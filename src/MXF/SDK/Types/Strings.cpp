#include "MXF/SDK/Types/Strings.h"

#include "HandleMembers.h"
#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Templates/SafeCast.h"
#include "WireBytes.h"

namespace MXF::SDK::Types
{

using Platform::Byte;

struct ISO7String::Impl : Internal::VariableBytes
{
    using VariableBytes::VariableBytes;
};

ISO7String::ISO7String(const std::string& text)
    : impl_(std::make_unique<Impl>(reinterpret_cast<const Byte*>(text.data()), text.size()))
{
}

ISO7String::ISO7String(DataIO::BoundedDataSource& source)
    : impl_(std::make_unique<Impl>(Internal::readRemaining(source)))
{
}

std::string ISO7String::value() const
{
    return std::string(impl_->bytes.begin(), impl_->bytes.end());
}

MXF_SDK_TYPES_HANDLE(ISO7String, SimpleDataType)

struct UTF16::Impl : Internal::FixedBytes<2>
{
    using FixedBytes::FixedBytes;
};

UTF16::UTF16(char16_t unit) : impl_(std::make_unique<Impl>())
{
    Internal::writeBigEndian(static_cast<Platform::UInt16>(unit), impl_->bytes.data());
}

UTF16::UTF16(DataIO::DataSource& source) : impl_(std::make_unique<Impl>(source)) {}

char16_t UTF16::value() const
{
    return static_cast<char16_t>(Internal::readBigEndian<Platform::UInt16>(impl_->bytes.data()));
}

MXF_SDK_TYPES_HANDLE(UTF16, SimpleDataType)

namespace
{

constexpr wchar_t REPLACEMENT_CHARACTER = 0xFFFD;

Internal::ByteVector encodeUTF16(const std::wstring& text)
{
    Internal::ByteVector bytes;
    bytes.reserve(2 * text.size());
    const auto put = [&bytes](Platform::UInt32 unit)
    {
        bytes.push_back(static_cast<Byte>(unit >> 8));
        bytes.push_back(static_cast<Byte>(unit & 0xFF));
    };
    for (const wchar_t c : text)
    {
        const auto code = static_cast<Platform::UInt32>(c);
        if (code > 0x10FFFF)
            put(REPLACEMENT_CHARACTER);
        else if (code > 0xFFFF)
        {
            put(0xD800 + ((code - 0x10000) >> 10));
            put(0xDC00 + ((code - 0x10000) & 0x3FF));
        }
        else
            put(code);
    }
    return bytes;
}

std::wstring decodeUTF16(const Internal::ByteVector& bytes)
{
    std::wstring text;
    const std::size_t count = bytes.size() / 2;
    for (std::size_t i = 0; i < count; ++i)
    {
        const Platform::UInt32 unit = Internal::readBigEndian<Platform::UInt16>(&bytes[2 * i]);
        if (unit == 0)
            break;
        if (unit >= 0xD800 && unit < 0xDC00 && i + 1 < count)
        {
            const Platform::UInt32 low =
                Internal::readBigEndian<Platform::UInt16>(&bytes[2 * (i + 1)]);
            if (low >= 0xDC00 && low < 0xE000)
            {
                text.push_back(
                    static_cast<wchar_t>(0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00)));
                ++i;
                continue;
            }
        }
        const bool surrogate = unit >= 0xD800 && unit < 0xE000;
        text.push_back(surrogate ? REPLACEMENT_CHARACTER : static_cast<wchar_t>(unit));
    }
    return text;
}

Internal::ByteVector readUTF16(DataIO::BoundedDataSource& source)
{
    const auto size = Templates::SafeCast<Platform::UInt32>(source.remaining());
    if (size % 2 != 0)
        MXF_SDK_THROW(Exceptions::InvalidValue, "UTF-16 data must have a even number of bytes.");
    return Internal::readRemaining(source);
}

} // namespace

struct UTF16String::Impl : Internal::VariableBytes
{
    std::wstring text;

    explicit Impl(Internal::ByteVector wire)
        : VariableBytes(std::move(wire)), text(decodeUTF16(bytes))
    {
    }
};

UTF16String::UTF16String(const std::wstring& text)
    : impl_(std::make_unique<Impl>(encodeUTF16(text)))
{
}

UTF16String::UTF16String(DataIO::BoundedDataSource& source)
    : impl_(std::make_unique<Impl>(readUTF16(source)))
{
}

const std::wstring& UTF16String::value() const
{
    return impl_->text;
}

MXF_SDK_TYPES_HANDLE(UTF16String, SimpleDataType)

} // namespace MXF::SDK::Types
