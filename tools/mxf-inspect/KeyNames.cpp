#include "KeyNames.h"

#include "MXF/SDK/KLV/KeyPredicates.h"

#include <algorithm>
#include <initializer_list>

namespace Halvorn::Inspect
{

using namespace MXF::SDK::KLV;
using MXF::SDK::Platform::Byte;

namespace
{

// 06 0E 2B 34 02 05 01 vv 0D 01 02 01 01 (SMPTE 377M packs), the version vv ignored.
bool isStructurePack(const Key& key)
{
    static constexpr Byte HEAD[] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01};
    static constexpr Byte ITEM[] = {0x0D, 0x01, 0x02, 0x01, 0x01};
    return std::equal(std::begin(HEAD), std::end(HEAD), key.data()) &&
           std::equal(std::begin(ITEM), std::end(ITEM), key.data() + 8);
}

std::string partitionName(Byte kind, Byte status)
{
    std::string name;
    switch (kind)
    {
    case 0x02:
        name = "header";
        break;
    case 0x03:
        name = "body";
        break;
    case 0x04:
        name = "footer";
        break;
    default:
        return "";
    }
    // Status 0x11 in a body key is a generic stream partition (SMPTE 410M).
    if (kind == 0x03 && status == 0x11)
        return "generic stream partition";
    static constexpr const char* STATUS[] = {"open incomplete", "closed incomplete",
                                             "open complete", "closed complete"};
    if (status < 1 || status > 4)
        return "";
    return name + " partition " + STATUS[status - 1];
}

// Byte 12 of a generic container key, SMPTE 379M: 0x0n for items compatible with SDTI-CP, 0x1n
// for the others.
std::string itemName(Byte itemType)
{
    switch (itemType)
    {
    case 0x04:
    case 0x14:
        return "essence element (system item)";
    case 0x05:
    case 0x15:
        return "essence element (picture)";
    case 0x06:
    case 0x16:
        return "essence element (sound)";
    case 0x07:
    case 0x17:
        return "essence element (data)";
    case 0x18:
        return "essence element (compound)";
    default:
        return "essence element";
    }
}

// 06 0E 2B 34 02 53 01 01 0D 01 01 01 02: the sets of the AAF meta-dictionary.
bool isMetaDefinition(const Key& key)
{
    static constexpr Byte HEAD[] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01,
                                    0x01, 0x0D, 0x01, 0x01, 0x01, 0x02};
    return std::equal(std::begin(HEAD), std::end(HEAD), key.data());
}

// 06 0E 2B 34 01 02 01 01 0E 04 03 01: Avid's own essence elements, laid out as the generic
// container's (byte 12 the item type).
bool isAvidEssenceElement(const Key& key)
{
    static constexpr Byte HEAD[] = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x02,
                                    0x01, 0x01, 0x0E, 0x04, 0x03, 0x01};
    return std::equal(std::begin(HEAD), std::end(HEAD), key.data());
}

} // namespace

std::string shortName(const Key& key)
{
    const Byte* bytes = key.data();
    if (isFillItem(key))
        return "fill";
    if (isStructurePack(key) && bytes[15] == 0x00)
    {
        if (bytes[13] == 0x05 && bytes[14] == 0x01)
            return "primer";
        if (bytes[13] == 0x11 && bytes[14] == 0x01)
            return "random index pack";
        return partitionName(bytes[13], bytes[14]);
    }
    if (isIndexTableSegmentKey(key))
        return "index segment";
    if (isGCEssenceElement(key) || isAvidEssenceElement(key))
        return itemName(bytes[12]);
    if (isGCSystemItem(key))
        return "essence element (system item)";
    if (isMetadataSet(key) || isMetaDefinition(key))
        return "metadata set";
    if (isAvidRootObject(key))
        return "Avid root object";
    if (isAvidObjectDirectory(key))
        return "Avid object directory";
    return "";
}

} // namespace Halvorn::Inspect
