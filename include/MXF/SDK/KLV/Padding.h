#pragma once

#include "MXF/SDK/Platform/Types.h"

namespace MXF::SDK::DataIO
{
class DataSink;
}

namespace MXF::SDK::Utils
{

// Fill items (SMPTE 336M fill, 377M KLV alignment grid).
class Padding
{
public:
    // One fill item of exactly `totalSize` bytes: fillItemKey, a BER length of `berSize` bytes,
    // then zeros. Nothing is allocated. Throws InvalidValue "Is not possible to make a KLV Fill
    // item which is less than 17 bytes in length" when `berSize` is 0 or `totalSize` < 16 +
    // `berSize`, and InvalidFormat "Invalid BER size" when `berSize` is above 9. With `berSize` 1
    // the value length must be below 128: it is stored unchecked.
    static void writeFillItem(DataIO::DataSink& sink, Platform::UInt64 totalSize,
                              Platform::UInt32 berSize);

    // Bytes of fill from `position` to the next multiple of `kagSize` (0 counts as 1): 0 on a
    // multiple; a gap below `minimumSize` grows by `minimumSize` rounded up to whole KAGs, so
    // that a fill item always has room for its key and length.
    static Platform::UInt64 fillSizeForKAG(Platform::UInt32 kagSize, Platform::UInt64 position,
                                           Platform::UInt64 minimumSize);

    // Writes the fill that brings `sink` to the next KAG boundary, if one is needed.
    static void alignToKAG(DataIO::DataSink& sink, Platform::UInt32 kagSize,
                           Platform::UInt32 berSize);
};

} // namespace MXF::SDK::Utils
