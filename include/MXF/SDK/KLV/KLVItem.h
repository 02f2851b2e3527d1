#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/KLV/Value.h"
#include "MXF/SDK/Platform/Types.h"

namespace MXF::SDK::KLV
{

// One KLV item as read: held by a single owning pointer, dropped to move on to the next item.
struct KLVItem
{
    KLVItem(const Key& itemKey, Platform::UInt8 itemLengthSize, UInt64 itemLength,
            DataIO::DataSource& source, UInt64 itemKeyPosition)
        : key(itemKey), lengthSize(itemLengthSize), length(itemLength), value(source, itemLength),
          keyPosition(itemKeyPosition)
    {
    }

    // 16 + lengthSize + length: what a walk adds to its offset. Saturates instead of wrapping,
    // so that a hostile length can never move an offset backwards.
    UInt64 totalSize() const noexcept
    {
        const UInt64 head = 16 + UInt64(lengthSize);
        return length > UINT64_MAX - head ? UINT64_MAX : head + length;
    }

    Key key;
    // Bytes of the BER length as found in the file, first byte included.
    Platform::UInt8 lengthSize;
    UInt64 length;
    // Positioned at the first value byte.
    Value value;
    // Source position of the first key byte.
    UInt64 keyPosition;
};

} // namespace MXF::SDK::KLV
