#include "MXF/SDK/KLV/Padding.h"

#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

using namespace Halvorn::Test;
using namespace Halvorn::Test::Support;
using MXF::SDK::DataIO::Memory::MemoryDataSink;
using MXF::SDK::Utils::Padding;
namespace Exceptions = MXF::SDK::Exceptions;
namespace KLV = MXF::SDK::KLV;

namespace
{

const Bytes FILL_KEY = hexBytes("06 0e 2b 34 01 01 01 01 03 01 02 10 01 00 00 00");

} // namespace

TEST(Padding, FillItemsHaveTheirExactSize)
{
    MemoryDataSink smallest;
    Padding::writeFillItem(smallest, 17, 1);
    EXPECT_EQ(smallest.data(), FILL_KEY + hexBytes("00"));

    MemoryDataSink four;
    Padding::writeFillItem(four, 100, 4);
    EXPECT_EQ(four.data(), FILL_KEY + hexBytes("83 00 00 50") + Bytes(80, 0));

    // Bigger than the shared block of zeros, written in pieces.
    MemoryDataSink large;
    Padding::writeFillItem(large, 200000, 9);
    EXPECT_EQ(large.data(), FILL_KEY + hexBytes("88 00 00 00 00 00 03 0d 27") + Bytes(199975, 0));

    KLV::setFillItemKeyVersion(0x02);
    MemoryDataSink version2;
    Padding::writeFillItem(version2, 20, 4);
    KLV::setFillItemKeyVersion(0x01);
    EXPECT_EQ(version2.data()[7], 0x02);
}

TEST(Padding, FillItemsSmallerThanAKeyAndLengthAreRefused)
{
    const std::wstring text =
        L"Is not possible to make a KLV Fill item which is less than 17 bytes in length";
    MemoryDataSink sink;
    EXPECT_EQ(thrownMessage<Exceptions::InvalidValue>([&] { Padding::writeFillItem(sink, 16, 1); }),
              text);
    EXPECT_EQ(
        thrownMessage<Exceptions::InvalidValue>([&] { Padding::writeFillItem(sink, 100, 0); }),
        text);
    // Says 17 even where the real minimum is 20.
    EXPECT_EQ(thrownMessage<Exceptions::InvalidValue>([&] { Padding::writeFillItem(sink, 19, 4); }),
              text);
    EXPECT_EQ(
        thrownMessage<Exceptions::InvalidFormat>([&] { Padding::writeFillItem(sink, 100, 10); }),
        L"Invalid BER size");
    EXPECT_TRUE(sink.data().empty()) << "nothing written by a refused call";
}

TEST(Padding, FillSizeReachesTheNextKAGBoundaryWithRoomForKeyAndLength)
{
    EXPECT_EQ(Padding::fillSizeForKAG(512, 500, 17), 12u + 512u);
    EXPECT_EQ(Padding::fillSizeForKAG(512, 512, 17), 0u);
    EXPECT_EQ(Padding::fillSizeForKAG(512, 0, 17), 0u);
    EXPECT_EQ(Padding::fillSizeForKAG(512, 490, 17), 22u);
    EXPECT_EQ(Padding::fillSizeForKAG(512, 495, 17), 17u);
    EXPECT_EQ(Padding::fillSizeForKAG(512, 1024 + 496, 20), 16u + 512u);
    // The minimum rounds up to whole KAGs: 15 + 32.
    EXPECT_EQ(Padding::fillSizeForKAG(16, 1, 20), 47u);
    EXPECT_EQ(Padding::fillSizeForKAG(0, 12345, 17), 0u) << "KAG 0 counts as 1";
    EXPECT_EQ(Padding::fillSizeForKAG(1, 12345, 17), 0u);
    EXPECT_EQ(Padding::fillSizeForKAG(512, 0x100000000 + 100, 20), 412u) << "64-bit positions";
}

TEST(Padding, AlignToKAGWritesOneFillUpToTheBoundary)
{
    MemoryDataSink sink;
    sink.write(Bytes(100, 0xAB).data(), 100);
    Padding::alignToKAG(sink, 512, 4);
    ASSERT_EQ(sink.position(), 512u);
    EXPECT_EQ(Bytes(sink.data().begin() + 100, sink.data().begin() + 120),
              FILL_KEY + hexBytes("83 00 01 88"));

    Padding::alignToKAG(sink, 512, 4);
    EXPECT_EQ(sink.position(), 512u) << "already on the boundary";

    sink.write(Bytes(500, 0xAB).data(), 500);
    Padding::alignToKAG(sink, 512, 4);
    EXPECT_EQ(sink.position(), 1536u) << "12 bytes are too few for a fill: one more KAG";
}
