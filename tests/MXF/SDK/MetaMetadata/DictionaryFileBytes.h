#pragma once

#include "TestSupport.h"

#include <cstdint>
#include <string>

// Writers of the dictionary file's pieces, from its description and nothing else, so that the
// loader's tests can build files field by field and break one field at a time.
namespace Halvorn::Test::DictionaryFile
{

using Support::Bytes;
using Support::hexBytes;
using Support::operator+;

inline Bytes be16(std::uint32_t value)
{
    return {static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}

inline Bytes be32(std::uint32_t value)
{
    return be16(value >> 16) + be16(value & 0xFFFF);
}

// Shortest form.
inline Bytes ber(std::size_t length)
{
    if (length < 0x80)
        return {static_cast<std::uint8_t>(length)};
    Bytes digits;
    for (std::size_t rest = length; rest != 0; rest >>= 8)
        digits.insert(digits.begin(), static_cast<std::uint8_t>(rest));
    return Bytes{static_cast<std::uint8_t>(0x80 | digits.size())} + digits;
}

// Major and minor version.
inline Bytes header(std::uint16_t major = 2, std::uint16_t minor = 0)
{
    return be16(major) + be16(minor);
}

// 06 0E 2B 34 00 .. 00 NN
inline Bytes itemKey(std::uint8_t kind)
{
    Bytes key = {0x06, 0x0E, 0x2B, 0x34, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, kind};
    return key;
}

inline Bytes item(std::uint8_t kind, const Bytes& body)
{
    return itemKey(kind) + ber(body.size()) + body;
}

// Tag, 2-byte length, content.
inline Bytes field(std::uint16_t tag, const Bytes& content)
{
    return be16(tag) + be16(static_cast<std::uint32_t>(content.size())) + content;
}

// Tag, BER length, content.
inline Bytes berField(std::uint16_t tag, const Bytes& content)
{
    return be16(tag) + ber(content.size()) + content;
}

inline Bytes number(std::uint16_t tag, std::uint32_t value)
{
    return field(tag, be32(value));
}

// ASCII as UTF-16BE.
inline Bytes text(std::uint16_t tag, const std::string& ascii)
{
    Bytes utf16;
    for (const char c : ascii)
        utf16 = utf16 + Bytes{0, static_cast<std::uint8_t>(c)};
    return field(tag, utf16);
}

// The property pair that names an element, set or attribute.
inline Bytes name(const std::string& value)
{
    return text(0x0001, "name") + text(0x0002, value);
}

inline Bytes label(std::uint16_t tag, const Bytes& bytes)
{
    return field(tag, bytes);
}

// 0008: BER length, 2-byte length of the batch, count, item size, the keys.
inline Bytes allowedReferences(const std::vector<Bytes>& keys)
{
    Bytes batch = be32(static_cast<std::uint32_t>(keys.size())) + be32(16);
    for (const Bytes& key : keys)
        batch = batch + key;
    return berField(0x0008, be16(static_cast<std::uint32_t>(batch.size())) + batch);
}

// One entry of 0009: identifier, size, value.
inline Bytes enumerationEntry(std::uint16_t identifier, const Bytes& value)
{
    return be16(identifier) + be16(static_cast<std::uint32_t>(value.size())) + value;
}

inline Bytes simpleElement(const Bytes& elementLabel, std::uint32_t dataType,
                           const Bytes& more = {})
{
    return item(0x04, label(0x0003, elementLabel) + number(0x0004, dataType) + more);
}

// An attribute item: 000B label, 000C status, 000E tag when not 0, and more fields.
inline Bytes attribute(const Bytes& attributeLabel, std::uint32_t status, std::uint16_t localTag,
                       const Bytes& more = {})
{
    Bytes body = label(0x000B, attributeLabel) + number(0x000C, status);
    if (localTag != 0)
        body = body + field(0x000E, be16(localTag));
    return item(0x06, body + more);
}

inline Bytes set(const Bytes& key, const Bytes& attributes, const Bytes& more = {})
{
    return item(0x05, label(0x0003, key) + berField(0x000A, attributes) + more);
}

inline Bytes tagTable(const std::vector<std::pair<std::uint16_t, Bytes>>& pairs)
{
    Bytes body;
    for (const auto& [tag, pairLabel] : pairs)
        body = body + be16(tag) + pairLabel;
    return item(0x07, body);
}

} // namespace Halvorn::Test::DictionaryFile
