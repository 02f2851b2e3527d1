#include "MXF/SDK/KLV/Padding.h"

#include "MXF/SDK/ByteCoders/BERCoder.h"
#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KeyPredicates.h"

#include <algorithm>
#include <array>

namespace MXF::SDK::Utils
{

using Platform::UInt32;
using Platform::UInt64;

void Padding::writeFillItem(DataIO::DataSink& sink, UInt64 totalSize, UInt32 berSize)
{
    // The text names 17 whatever the length size; it is the minimum for a 1-byte length.
    if (berSize == 0 || totalSize < 16 + UInt64(berSize))
        MXF_SDK_THROW(Exceptions::InvalidValue,
                      "Is not possible to make a KLV Fill item which is less than 17 bytes in "
                      "length");
    Platform::Byte length[9];
    UInt64 zeros = totalSize - berSize - 16;
    ByteCoders::BERCoder::encode(zeros, berSize, length);

    static const std::array<Platform::Byte, 65536> ZEROS{};
    sink.write(KLV::fillItemKey().data(), 16);
    sink.write(length, berSize);
    while (zeros > 0)
    {
        const UInt64 piece = std::min<UInt64>(zeros, ZEROS.size());
        sink.write(ZEROS.data(), piece);
        zeros -= piece;
    }
}

UInt64 Padding::fillSizeForKAG(UInt32 kagSize, UInt64 position, UInt64 minimumSize)
{
    const UInt64 kag = kagSize == 0 ? 1 : kagSize;
    const UInt64 offset = position % kag;
    if (offset == 0)
        return 0;
    UInt64 gap = kag - offset;
    if (gap < minimumSize)
        gap += (minimumSize + kag - 1) / kag * kag;
    return gap;
}

void Padding::alignToKAG(DataIO::DataSink& sink, UInt32 kagSize, UInt32 berSize)
{
    const UInt64 fill = fillSizeForKAG(kagSize, sink.position(), UInt64(berSize) + 16);
    if (fill != 0)
        writeFillItem(sink, fill, berSize);
}

} // namespace MXF::SDK::Utils
