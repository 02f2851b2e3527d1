#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <cstddef>
#include <string>
#include <string_view>

// The text forms shared by keys, labels, UUIDs, UMIDs and local tags. Readers fill exactly `size`
// bytes of `out` or throw, leaving `out` untouched:
//   InvalidLength "Not enough data" for a text of the wrong length,
//   InvalidLabel "Label contains non Hexadecimal characters" for a bad digit pair.
namespace MXF::SDK::KLV::IdentifierText
{

using Platform::Byte;

// Two hex digits a byte, of either case, with one separator character of any kind between pairs:
// exactly 3 * size - 1 characters.
void readDottedHex(std::wstring_view text, Byte* out, std::size_t size);

// "0x" and two hex digits a byte: exactly 2 * size + 2 characters. Throws InvalidLabel "Expecting
// 0x in the start of the plain hexadecimal string representation" without the prefix.
void readPlainHex(std::wstring_view text, Byte* out, std::size_t size);
std::wstring writePlainHex(const Byte* bytes, std::size_t size);

// 16 bytes as 8-4-4-4-12 hex digits: exactly 36 characters. A hex digit where a separator belongs
// throws InvalidLabel "Expections an separator that was not a hexadecimal character".
void readUUIDForm(std::wstring_view text, Byte* out);
std::wstring writeUUIDForm(const Byte* bytes);

// The fixed head of an OID form: `numbers` in the text stand for `bytes` in the identifier.
struct OIDHead
{
    unsigned numbers[4];
    std::size_t numberCount;
    Byte bytes[5];
    std::size_t byteCount;
};
// 06 0E 2B 34 written as 1.3.53 (53, not 52: the form is kept as it has always been written).
inline constexpr OIDHead UNIVERSAL_LABEL_HEAD{{1, 3, 53}, 3, {0x06, 0x0E, 0x2B, 0x34}, 4};
inline constexpr OIDHead KEY_HEAD{{1, 3, 53, 2}, 4, {0x06, 0x0E, 0x2B, 0x34, 0x02}, 5};

// Decimal numbers separated by full stops: the head, then one number a byte; missing trailing
// bytes are 0. Throws InvalidLabel "OID contains values not in [0 - 255]." or "OID contains
// initial values not according to type", InvalidLength "Not enough data" when the text ends
// within the head or "OID contains more elements than expected".
void readOID(std::wstring_view text, Byte* out, std::size_t size, const OIDHead& head);
// The head, then each following byte in decimal; trailing zero bytes are left out.
std::wstring writeOID(const Byte* bytes, std::size_t size, const OIDHead& head);

// For people, not for reading back: "06.0e.2b.34...", lower case.
std::wstring writeDottedHex(const Byte* bytes, std::size_t size);

} // namespace MXF::SDK::KLV::IdentifierText
