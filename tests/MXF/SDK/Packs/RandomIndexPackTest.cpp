#include "MXF/SDK/Packs/RandomIndexPack.h"

#include "PacksTestSupport.h"

#include <gtest/gtest.h>

using namespace Halvorn::Test;
using MXF::SDK::Packs::RandomIndexPack;
namespace Exceptions = MXF::SDK::Exceptions;

namespace
{

const Bytes RIP_KEY = hexBytes("06 0e 2b 34 02 05 01 01 0d 01 02 01 01 11 01 00");

using Offsets = std::vector<UInt64>;

} // namespace

TEST(RandomIndexPack, OneEntryHasAValueOf16Bytes)
{
    const Bytes rip = RIP_KEY + hexBytes("10") +
                      hexBytes("00 00 00 01  00 00 00 00 00 00 2e 00") // BodySID 1 at 11776
                      + hexBytes("00 00 00 21");                       // 16 + 1 + 16 bytes
    forEachSplit(rip,
                 [&](DataSource& source)
                 {
                     const RandomIndexPack pack(*itemAt(source));
                     ASSERT_EQ(pack.entries().size(), 1u);
                     EXPECT_EQ(pack.entries()[0].bodySID, 1u);
                     EXPECT_EQ(pack.entries()[0].byteOffset, 11776u);
                     EXPECT_EQ(pack.offsets(1), Offsets{11776});
                     EXPECT_TRUE(source.eof());
                     EXPECT_EQ(serialized(pack), rip);
                 });
}

TEST(RandomIndexPack, KeepsEntriesInFileOrderAndGroupsOffsetsByBodySID)
{
    // A footer listed before the body partitions: not what a writer does, but nothing forbids it.
    const Bytes rip = RIP_KEY + hexBytes("83 00 00 34") +
                      hexBytes("00 00 00 00  00 00 00 00 00 28 5a 00")   // 0 at 2644480
                      + hexBytes("00 00 00 01  00 00 00 00 00 00 2e 00") // 1 at 11776
                      + hexBytes("00 00 00 00  00 00 00 00 00 00 00 00") // 0 at 0
                      + hexBytes("00 00 00 01  00 00 00 00 00 00 20 00") // 1 at 8192
                      + hexBytes("00 00 00 48");
    forEachSplit(rip,
                 [&](DataSource& source)
                 {
                     const RandomIndexPack pack(*itemAt(source));
                     ASSERT_EQ(pack.entries().size(), 4u);
                     EXPECT_EQ(pack.entries()[3].bodySID, 1u);
                     EXPECT_EQ(pack.entries()[3].byteOffset, 8192u);
                     EXPECT_EQ(pack.offsets(0), (Offsets{2644480, 0}));
                     EXPECT_EQ(pack.offsets(1), (Offsets{11776, 8192}));
                     EXPECT_EQ(pack.partitionOffsets(), (Offsets{0, 8192, 11776, 2644480}));
                     EXPECT_EQ(thrownMessage<Exceptions::NotFound>([&] { pack.offsets(7); }),
                               L"BodySid not found: 7");
                     EXPECT_EQ(serialized(pack), rip);
                 });
}

TEST(RandomIndexPack, ValueOfNoWholePairsBeforeTheLengthFails)
{
    const Bytes pair = hexBytes("00 00 00 01  00 00 00 00 00 00 2e 00");
    for (const std::size_t size : {0, 3, 5, 12, 15, 17, 27})
    {
        SCOPED_TRACE(size);
        Bytes value = pair + pair + pair;
        value.resize(size);
        const Bytes rip = RIP_KEY + Bytes{static_cast<std::uint8_t>(size)} + value;
        EXPECT_EQ(thrownMessage<Exceptions::NotEnoughData>([&] { packOf<RandomIndexPack>(rip); }),
                  L"Not enough data to read Pack");
    }
    const RandomIndexPack empty = packOf<RandomIndexPack>(RIP_KEY + hexBytes("04 00 00 00 15"));
    EXPECT_TRUE(empty.entries().empty());
    EXPECT_TRUE(empty.partitionOffsets().empty());
}

TEST(RandomIndexPack, WrongKeyOrCutValueFails)
{
    EXPECT_EQ(thrownMessage<Exceptions::InvalidKey>(
                  []
                  {
                      packOf<RandomIndexPack>(hexBytes(
                          "06 0e 2b 34 02 05 01 01 0d 01 02 01 01 05 01 00 04 00 00 00 15"));
                  }),
              L"Trying to create a RIP from a KLV with a invalid RIP Key.");
    // 28 bytes declared, 20 there.
    const Bytes cut = RIP_KEY + hexBytes("1c") + hexBytes("00 00 00 01  00 00 00 00 00 00 2e 00") +
                      hexBytes("00 00 00 00  00 00 00 00");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>([&] { packOf<RandomIndexPack>(cut); }),
              L"Invalid data size in Value: 4 of 8 bytes");
}

TEST(RandomIndexPack, WritesPairsInOrderOfEntryAndItsOwnTotalLength)
{
    RandomIndexPack pack;
    pack.add(0, 0);
    pack.add(1, 11776);
    EXPECT_EQ(pack.offsets(1), Offsets{11776});
    EXPECT_EQ(serialized(pack), RIP_KEY + hexBytes("83 00 00 1c") +
                                    hexBytes("00 00 00 00  00 00 00 00 00 00 00 00") +
                                    hexBytes("00 00 00 01  00 00 00 00 00 00 2e 00") +
                                    hexBytes("00 00 00 30")); // 16 + 4 + 28
    RandomIndexPack narrow(1);
    for (int i = 0; i < 11; ++i)
        narrow.add(1, 512 * i);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>([&] { serialized(narrow); }),
              L"Pack length 136 does not fit a BER length of 1 bytes");
}
