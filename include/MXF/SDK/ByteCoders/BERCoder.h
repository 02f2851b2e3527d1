#pragma once

#include "MXF/SDK/Platform/Types.h"

namespace MXF::SDK::ByteCoders
{

// BER lengths as KLV uses them (SMPTE 336M): below 0x80 the byte is the length; otherwise the low
// 7 bits count the big-endian length bytes that follow.
class BERCoder
{
public:
    // Bytes of the shortest form. A length with bit 63 set gives 1: the quantity has always been
    // taken as signed, and callers rely on nothing above 2^63.
    static Platform::UInt8 encodedSize(Platform::UInt64 length) noexcept;

    // Writes `size` bytes (1 to 9) to `buffer`. With size 1 the low byte is stored unchecked;
    // otherwise 0x80 | (size - 1) and the length big-endian, high bytes that don't fit dropped.
    // Throws InvalidFormat "Invalid BER size" for a size of 0 or above 9.
    static void encode(Platform::UInt64 length, Platform::UInt32 size, Platform::Byte* buffer);
    static void validateSize(Platform::UInt32 size);

    // The total size of a BER length from its first byte, 1 to 127. Throws InvalidFormat "Invalid
    // BER size: 0x80" for the indefinite form and "...: 0xff" for the reserved byte. Forms with
    // more than 8 length bytes are accepted.
    static Platform::UInt32 decodedSize(Platform::Byte firstByte);
    // `size` bytes, first byte included; of more than 8 length bytes the low 64 bits are kept.
    static Platform::UInt64 decode(const Platform::Byte* bytes, Platform::UInt32 size) noexcept;
};

} // namespace MXF::SDK::ByteCoders
