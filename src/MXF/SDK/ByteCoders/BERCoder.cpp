#include "MXF/SDK/ByteCoders/BERCoder.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Utils/Hex.h"

namespace MXF::SDK::ByteCoders
{

using Platform::Byte;
using Platform::UInt32;
using Platform::UInt64;

Platform::UInt8 BERCoder::encodedSize(UInt64 length) noexcept
{
    if (static_cast<Platform::Int64>(length) < 128)
        return 1;
    Platform::UInt8 bytes = 0;
    for (; length != 0; length >>= 8)
        ++bytes;
    return bytes + 1;
}

void BERCoder::encode(UInt64 length, UInt32 size, Byte* buffer)
{
    validateSize(size);
    if (size == 1)
    {
        buffer[0] = static_cast<Byte>(length);
        return;
    }
    buffer[0] = static_cast<Byte>(0x80 | (size - 1));
    for (UInt32 i = size - 1; i >= 1; --i, length >>= 8)
        buffer[i] = static_cast<Byte>(length);
}

void BERCoder::validateSize(UInt32 size)
{
    if (size == 0 || size > 9)
        MXF_SDK_THROW(Exceptions::InvalidFormat, "Invalid BER size");
}

UInt32 BERCoder::decodedSize(Byte firstByte)
{
    if (firstByte == 0x80 || firstByte == 0xFF)
        MXF_SDK_THROW(Exceptions::InvalidFormat, "Invalid BER size: 0x" + Utils::hex(firstByte));
    return firstByte < 0x80 ? 1 : (firstByte & 0x7Fu) + 1;
}

UInt64 BERCoder::decode(const Byte* bytes, UInt32 size) noexcept
{
    if (size == 1)
        return bytes[0];
    UInt64 length = 0;
    for (UInt32 i = 1; i < size; ++i)
        length = (length << 8) | bytes[i];
    return length;
}

} // namespace MXF::SDK::ByteCoders
