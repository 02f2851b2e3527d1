#include "MXF/SDK/KLV/IdentifierText.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Utils/Hex.h"

#include <vector>

namespace MXF::SDK::KLV::IdentifierText
{

namespace
{

using Utils::hexDigit;

void checkLength(std::wstring_view text, std::size_t expected)
{
    if (text.size() != expected)
        MXF_SDK_THROW(Exceptions::InvalidLength, "Not enough data");
}

// Reads the pairs at `positions` into `out`, all checked before the first byte is stored.
void readPairs(std::wstring_view text, const std::vector<std::size_t>& positions, Byte* out)
{
    std::vector<Byte> bytes;
    bytes.reserve(positions.size());
    for (const std::size_t at : positions)
    {
        const int high = hexDigit(text[at]);
        const int low = hexDigit(text[at + 1]);
        if (high < 0 || low < 0)
            MXF_SDK_THROW(Exceptions::InvalidLabel, "Label contains non Hexadecimal characters");
        bytes.push_back(static_cast<Byte>(high * 16 + low));
    }
    std::copy(bytes.begin(), bytes.end(), out);
}

void appendHex(std::wstring& out, Byte byte)
{
    static constexpr wchar_t DIGITS[] = L"0123456789abcdef";
    out.push_back(DIGITS[byte >> 4]);
    out.push_back(DIGITS[byte & 0x0F]);
}

// Without the C library's wide formatting, which costs a locale conversion a call.
void appendDecimal(std::wstring& out, unsigned value)
{
    wchar_t digits[10];
    std::size_t count = 0;
    do
    {
        digits[count++] = wchar_t(L'0' + value % 10);
        value /= 10;
    } while (value != 0);
    while (count > 0)
        out.push_back(digits[--count]);
}

} // namespace

void readDottedHex(std::wstring_view text, Byte* out, std::size_t size)
{
    checkLength(text, 3 * size - 1);
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < size; ++i)
        positions.push_back(3 * i);
    readPairs(text, positions, out);
}

void readPlainHex(std::wstring_view text, Byte* out, std::size_t size)
{
    checkLength(text, 2 * size + 2);
    if (text.substr(0, 2) != L"0x")
        MXF_SDK_THROW(Exceptions::InvalidLabel,
                      "Expecting 0x in the start of the plain hexadecimal string representation");
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < size; ++i)
        positions.push_back(2 + 2 * i);
    readPairs(text, positions, out);
}

std::wstring writePlainHex(const Byte* bytes, std::size_t size)
{
    std::wstring out = L"0x";
    for (std::size_t i = 0; i < size; ++i)
        appendHex(out, bytes[i]);
    return out;
}

namespace
{
bool separatorAfter(std::size_t byteIndex)
{
    return byteIndex == 3 || byteIndex == 5 || byteIndex == 7 || byteIndex == 9;
}
} // namespace

void readUUIDForm(std::wstring_view text, Byte* out)
{
    checkLength(text, 36);
    std::vector<std::size_t> positions;
    std::size_t at = 0;
    for (std::size_t i = 0; i < 16; ++i)
    {
        positions.push_back(at);
        at += 2;
        if (separatorAfter(i))
        {
            if (hexDigit(text[at]) >= 0)
                MXF_SDK_THROW(Exceptions::InvalidLabel,
                              "Expections an separator that was not a hexadecimal character");
            ++at;
        }
    }
    readPairs(text, positions, out);
}

std::wstring writeUUIDForm(const Byte* bytes)
{
    std::wstring out;
    for (std::size_t i = 0; i < 16; ++i)
    {
        appendHex(out, bytes[i]);
        if (separatorAfter(i))
            out.push_back(L'-');
    }
    return out;
}

void readOID(std::wstring_view text, Byte* out, std::size_t size, const OIDHead& head)
{
    std::vector<unsigned> numbers;
    std::size_t start = 0;
    while (start <= text.size())
    {
        const std::size_t stop = std::min(text.find(L'.', start), text.size());
        const std::wstring_view piece = text.substr(start, stop - start);
        unsigned value = 0;
        bool valid = !piece.empty();
        for (const wchar_t c : piece)
        {
            if (c < L'0' || c > L'9' || value > 255)
            {
                valid = c >= L'0' && c <= L'9';
                value = 256;
                break;
            }
            value = value * 10 + static_cast<unsigned>(c - L'0');
        }
        if (!valid || value > 255)
            MXF_SDK_THROW(Exceptions::InvalidLabel, "OID contains values not in [0 - 255].");
        numbers.push_back(value);
        start = stop + 1;
    }
    for (std::size_t i = 0; i < head.numberCount; ++i)
    {
        if (i >= numbers.size())
            MXF_SDK_THROW(Exceptions::InvalidLength, "Not enough data");
        if (numbers[i] != head.numbers[i])
            MXF_SDK_THROW(Exceptions::InvalidLabel,
                          "OID contains initial values not according to type");
    }
    if (numbers.size() - head.numberCount > size - head.byteCount)
        MXF_SDK_THROW(Exceptions::InvalidLength, "OID contains more elements than expected");
    std::vector<Byte> bytes(size, 0);
    std::copy(head.bytes, head.bytes + head.byteCount, bytes.begin());
    for (std::size_t i = head.numberCount; i < numbers.size(); ++i)
        bytes[head.byteCount + i - head.numberCount] = static_cast<Byte>(numbers[i]);
    std::copy(bytes.begin(), bytes.end(), out);
}

std::wstring writeOID(const Byte* bytes, std::size_t size, const OIDHead& head)
{
    std::wstring out;
    for (std::size_t i = 0; i < head.numberCount; ++i)
    {
        if (i > 0)
            out.push_back(L'.');
        appendDecimal(out, head.numbers[i]);
    }
    std::size_t last = size;
    while (last > head.byteCount && bytes[last - 1] == 0)
        --last;
    for (std::size_t i = head.byteCount; i < last; ++i)
    {
        out.push_back(L'.');
        appendDecimal(out, bytes[i]);
    }
    return out;
}

std::wstring writeDottedHex(const Byte* bytes, std::size_t size)
{
    std::wstring out;
    for (std::size_t i = 0; i < size; ++i)
    {
        if (i > 0)
            out.push_back(L'.');
        appendHex(out, bytes[i]);
    }
    return out;
}

} // namespace MXF::SDK::KLV::IdentifierText
