#include "MXF/SDK/KLV/KeyPredicates.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>

namespace MXF::SDK::KLV
{

namespace
{

using Platform::Byte;

bool bytesAre(const Key& key, std::size_t from, std::initializer_list<Byte> expected) noexcept
{
    return std::equal(expected.begin(), expected.end(), key.data() + from);
}

bool isGroup(const Key& key) noexcept
{
    return bytesAre(key, 0, {0x06, 0x0E, 0x2B, 0x34, 0x02});
}

constexpr Byte FILL_ITEM_BYTES[16] = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x01,
                                      0x03, 0x01, 0x02, 0x10, 0x01, 0x00, 0x00, 0x00};

constexpr Byte AVID_ROOT_OBJECT[16] = {0x80, 0x53, 0x08, 0x00, 0x36, 0x21, 0x08, 0x04,
                                       0xB3, 0xB3, 0x98, 0xA5, 0x1C, 0x90, 0x11, 0xD4};
constexpr Byte AVID_OBJECT_DIRECTORY[16] = {0x96, 0x13, 0xB3, 0x8A, 0x87, 0x34, 0x87, 0x46,
                                            0xF1, 0x02, 0x96, 0xF0, 0x56, 0xE0, 0x4D, 0x2A};

Key& mutableFillItemKey()
{
    static Key key(FILL_ITEM_BYTES);
    return key;
}

} // namespace

bool equalIgnoringVersion(const Byte* bytes, const Byte* pattern, std::size_t size) noexcept
{
    constexpr std::size_t VERSION = 7;
    if (size <= VERSION)
        return std::memcmp(bytes, pattern, size) == 0;
    return std::memcmp(bytes, pattern, VERSION) == 0 &&
           std::memcmp(bytes + VERSION + 1, pattern + VERSION + 1, size - VERSION - 1) == 0;
}

bool isFillItem(const Key& key) noexcept
{
    return equalIgnoringVersion(key.data(), FILL_ITEM_BYTES, Key::SIZE);
}

bool isAvidRootObject(const Key& key) noexcept
{
    return std::memcmp(key.data(), AVID_ROOT_OBJECT, Key::SIZE) == 0;
}

bool isAvidObjectDirectory(const Key& key) noexcept
{
    return std::memcmp(key.data(), AVID_OBJECT_DIRECTORY, Key::SIZE) == 0;
}

const Byte* avidRootObjectKey() noexcept
{
    return AVID_ROOT_OBJECT;
}

const Byte* avidObjectDirectoryKey() noexcept
{
    return AVID_OBJECT_DIRECTORY;
}

bool isLocalSet(const Key& key) noexcept
{
    return isGroup(key) && (key.data()[5] & 0x87) == 0x03;
}

bool isLocalSet2Byte(const Key& key) noexcept
{
    return isGroup(key) && key.data()[5] == 0x53;
}

bool isFixedLengthPack(const Key& key) noexcept
{
    return isGroup(key) && key.data()[5] == 0x05;
}

bool isMetadataSetStructural(const Key& key) noexcept
{
    return isLocalSet2Byte(key) && key.data()[15] == 0 &&
           bytesAre(key, 6, {0x01, 0x01, 0x0D, 0x01, 0x01, 0x01, 0x01});
}

bool isMetadataSetDescriptive(const Key& key) noexcept
{
    return isLocalSet(key) && bytesAre(key, 6, {0x01, 0x01, 0x0D, 0x01, 0x04, 0x01});
}

bool isMetadataSet(const Key& key) noexcept
{
    return isMetadataSetStructural(key) || isMetadataSetDescriptive(key);
}

bool isIndexTableSegmentKey(const Key& key) noexcept
{
    return bytesAre(key, 0,
                    {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01, 0x0D, 0x01, 0x02, 0x01, 0x01,
                     0x10, 0x01, 0x00});
}

bool isGCEssenceElement(const Key& key) noexcept
{
    return bytesAre(key, 0,
                    {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x02, 0x01, 0x01, 0x0D, 0x01, 0x03, 0x01});
}

bool isGCSystemItem(const Key& key) noexcept
{
    return (isLocalSet(key) || isFixedLengthPack(key)) &&
           bytesAre(key, 6, {0x01, 0x01, 0x0D, 0x01, 0x03, 0x01});
}

bool isEssenceKey(const Key& key) noexcept
{
    return isGCEssenceElement(key) || isGCSystemItem(key);
}

Platform::UInt8 localTagSize(const Key& key) noexcept
{
    // Avid's root object is coded as the 2-byte local sets around it.
    if (isAvidRootObject(key))
        return 2;
    if (!isLocalSet(key))
        return 0;
    switch (key.data()[5] & 0x18)
    {
    case 0x18:
        return 4;
    case 0x10:
        return 2;
    default:
        return 1;
    }
}

Platform::UInt8 localLengthSize(const Key& key) noexcept
{
    if (isAvidRootObject(key))
        return 2;
    if (!isLocalSet(key))
        return 0;
    const Byte coding = key.data()[5] & 0xE0;
    return coding == 0x60 ? 4 : coding >> 5;
}

const Key& fillItemKey()
{
    return mutableFillItemKey();
}

void setFillItemKeyVersion(Platform::Byte version)
{
    Byte bytes[16];
    std::memcpy(bytes, FILL_ITEM_BYTES, sizeof bytes);
    bytes[7] = version;
    mutableFillItemKey() = Key(bytes);
}

} // namespace MXF::SDK::KLV
