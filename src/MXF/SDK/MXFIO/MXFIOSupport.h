#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/Packs/PartitionPack.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Utils/Hex.h"

#include <cstdint>
#include <string>

namespace MXF::SDK::MXFIO
{

// Offsets from a file may be anything: sums stop at the top instead of wrapping.
inline Platform::UInt64 saturatingAdd(Platform::UInt64 a, Platform::UInt64 b) noexcept
{
    return a > UINT64_MAX - b ? UINT64_MAX : a + b;
}

using Utils::hex;

// Groups (06 0E 2B 34 02): what header metadata is made of.
inline bool isGroupKey(const KLV::Key& key) noexcept
{
    const Platform::Byte* bytes = key.data();
    return bytes[0] == 0x06 && bytes[1] == 0x0E && bytes[2] == 0x2B && bytes[3] == 0x34 &&
           bytes[4] == 0x02;
}

// A partition pack proper; the primer and the RIP share its first 13 bytes.
inline bool isPartitionKey(const KLV::Key& key) noexcept
{
    const Platform::Byte kind = key.data()[13];
    return Packs::PartitionPack::isPartitionPack(key) && kind >= 0x02 && kind <= 0x04;
}

} // namespace MXF::SDK::MXFIO
