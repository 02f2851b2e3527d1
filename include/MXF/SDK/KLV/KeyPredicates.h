#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/Platform/Types.h"

#include <cstddef>

// What kind of item a key names, from the SMPTE 336M key structure: byte 4 is the registry
// category (01 dictionary item, 02 group), byte 5 its coding, byte 7 the registry version, bytes
// 8 on the item. Plain byte comparisons; none allocates.
namespace MXF::SDK::KLV
{

// Whether the first `size` bytes (at most 16) of a key or label equal `pattern`'s, byte 7 aside:
// labels of one meaning differ in the version of the registry that first held them.
bool equalIgnoringVersion(const Platform::Byte* bytes, const Platform::Byte* pattern,
                          std::size_t size) noexcept;

// 06 0E 2B 34 01 01 01 vv 03 01 02 10 01 00 00 00, any version vv.
bool isFillItem(const Key& key) noexcept;
// Groups (byte 4 = 02) coded as local sets: (byte 5 & 0x87) == 0x03.
bool isLocalSet(const Key& key) noexcept;
// Local sets with 2-byte tags and 2-byte lengths: byte 5 = 0x53.
bool isLocalSet2Byte(const Key& key) noexcept;
// Groups coded as fixed-length packs: byte 5 = 0x05.
bool isFixedLengthPack(const Key& key) noexcept;
// 06 0E 2B 34 02 53 01 01 0D 01 01 01 01 xx xx 00.
bool isMetadataSetStructural(const Key& key) noexcept;
// Local sets under 0D 01 04 01 (descriptive metadata, SMPTE 380M).
bool isMetadataSetDescriptive(const Key& key) noexcept;
bool isMetadataSet(const Key& key) noexcept;
// 06 0E 2B 34 02 53 01 01 0D 01 02 01 01 10 01 00, exactly.
bool isIndexTableSegmentKey(const Key& key) noexcept;
// 06 0E 2B 34 01 02 01 01 0D 01 03 01, then item type, element count, element type, number.
bool isGCEssenceElement(const Key& key) noexcept;
// System item sets and packs of the generic container (0D 01 03 01 under a group key).
bool isGCSystemItem(const Key& key) noexcept;
bool isEssenceKey(const Key& key) noexcept;

// Avid header metadata carries two items whose keys lie outside the SMPTE registry: its root
// object, right after the primer, and its object directory, a table of InstanceUIDs and offsets.
// Both compare all 16 bytes.
bool isAvidRootObject(const Key& key) noexcept;
bool isAvidObjectDirectory(const Key& key) noexcept;
const Platform::Byte* avidRootObjectKey() noexcept;
const Platform::Byte* avidObjectDirectoryKey() noexcept;

// How a local set codes its tags and lengths, from byte 5; 0 for a key that is no local set.
// localTagSize: 1, 2 or 4. localLengthSize: 1, 2 or 4, or 0 for BER-coded lengths. Avid's root
// object has 2-byte tags and lengths.
Platform::UInt8 localTagSize(const Key& key) noexcept;
Platform::UInt8 localLengthSize(const Key& key) noexcept;

// The key fill items are written with: 06 0E 2B 34 01 01 01 01 03 01 02 10 01 00 00 00.
const Key& fillItemKey();
// Sets byte 7 of fillItemKey for the whole process. Meant for start-up: not thread-safe.
void setFillItemKeyVersion(Platform::Byte version);

} // namespace MXF::SDK::KLV
