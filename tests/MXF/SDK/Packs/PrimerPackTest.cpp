#include "MXF/SDK/Packs/PrimerPack.h"

#include "PacksTestSupport.h"

#include <gtest/gtest.h>

using namespace Halvorn::Test;
using MXF::SDK::Packs::PrimerPack;
namespace Exceptions = MXF::SDK::Exceptions;
namespace Types = MXF::SDK::Types;

namespace
{

const Bytes PRIMER_KEY = hexBytes("06 0e 2b 34 02 05 01 01 0d 01 02 01 01 05 01 00");
// InstanceUID, GenerationUID, and a dynamic tag for a private label.
const Bytes INSTANCE_UID = hexBytes("06 0e 2b 34 01 01 01 01 01 01 15 02 00 00 00 00");
const Bytes GENERATION_UID = hexBytes("06 0e 2b 34 01 01 01 02 05 20 07 01 08 00 00 00");
const Bytes PRIVATE = hexBytes("a0 24 00 60 94 eb 75 cb ce 2a ca 4d 51 ab 11 d3");

// Tags out of order, as ffmpeg writes them.
const Bytes THREE_PAIRS = hexBytes("3c 0a") + INSTANCE_UID + hexBytes("01 02") + GENERATION_UID +
                          hexBytes("80 01") + PRIVATE;
const Bytes PRIMER = PRIMER_KEY + hexBytes("83 00 00 3e") // 62 bytes
                     + hexBytes("00 00 00 03") + hexBytes("00 00 00 12") + THREE_PAIRS;

Types::LocalTag tag(std::uint16_t value)
{
    return Types::LocalTag(value);
}

Types::UniversalLabel label(const Bytes& bytes)
{
    return Types::UniversalLabel(bytes.data());
}

} // namespace

TEST(PrimerPack, ReadsPairsInFileOrderAndResolvesBothWays)
{
    forEachSplit(PRIMER,
                 [](DataSource& source)
                 {
                     const PrimerPack primer(*itemAt(source));
                     ASSERT_EQ(primer.size(), 3u);
                     EXPECT_EQ(primer.at(0).localTag.value(), 0x3c0a);
                     EXPECT_EQ(labelBytes(primer.at(0).universalLabel), INSTANCE_UID);
                     EXPECT_EQ(primer.at(1).localTag.value(), 0x0102);
                     EXPECT_EQ(primer.at(2).localTag.value(), 0x8001);
                     EXPECT_EQ(labelBytes(primer.at(2).universalLabel), PRIVATE);

                     const Types::UniversalLabel* found = primer.universalLabel(tag(0x0102));
                     ASSERT_NE(found, nullptr);
                     EXPECT_EQ(labelBytes(*found), GENERATION_UID);
                     const Types::LocalTag* foundTag = primer.localTag(label(PRIVATE));
                     ASSERT_NE(foundTag, nullptr);
                     EXPECT_EQ(foundTag->value(), 0x8001);
                     EXPECT_EQ(primer.universalLabel(tag(0x3c09)), nullptr);
                     EXPECT_EQ(primer.localTag(label(PRIMER_KEY)), nullptr);
                     EXPECT_EQ(thrownMessage<Exceptions::IndexOutOfBounds>([&] { primer.at(3); }),
                               L"Trying to access an element beyond the end of the data");
                 });
}

TEST(PrimerPack, WritesOnePairATagInOrderOfTags)
{
    EXPECT_EQ(serialized(packOf<PrimerPack>(PRIMER)),
              PRIMER_KEY + hexBytes("83 00 00 3e  00 00 00 03  00 00 00 12") + hexBytes("01 02") +
                  GENERATION_UID + hexBytes("3c 0a") + INSTANCE_UID + hexBytes("80 01") + PRIVATE);
}

TEST(PrimerPack, CountZeroIsLegalAndResolvesNothing)
{
    const Bytes empty = PRIMER_KEY + hexBytes("83 00 00 08  00 00 00 00  00 00 00 12");
    const PrimerPack primer = packOf<PrimerPack>(empty);
    EXPECT_EQ(primer.size(), 0u);
    EXPECT_EQ(primer.universalLabel(tag(0x3c0a)), nullptr);
    EXPECT_EQ(primer.localTag(label(INSTANCE_UID)), nullptr);
    EXPECT_EQ(serialized(primer), empty);
}

TEST(PrimerPack, ItemSizeIsReadButPairsAreAlways18Bytes)
{
    const Bytes odd = PRIMER_KEY + hexBytes("83 00 00 3e  00 00 00 03  00 00 00 20") + THREE_PAIRS;
    const PrimerPack primer = packOf<PrimerPack>(odd);
    ASSERT_EQ(primer.size(), 3u);
    EXPECT_EQ(primer.at(2).localTag.value(), 0x8001);
    EXPECT_EQ(serialized(primer).at(27), 0x12);
}

TEST(PrimerPack, RepeatedTagIsMappedAnewAndStaysInTheList)
{
    const Bytes repeated = PRIMER_KEY + hexBytes("83 00 00 2c  00 00 00 02  00 00 00 12") +
                           hexBytes("3c 0a") + INSTANCE_UID + hexBytes("3c 0a") + PRIVATE;
    const PrimerPack primer = packOf<PrimerPack>(repeated);
    ASSERT_EQ(primer.size(), 2u);
    EXPECT_EQ(labelBytes(primer.at(0).universalLabel), INSTANCE_UID);
    EXPECT_EQ(labelBytes(primer.at(1).universalLabel), PRIVATE);
    EXPECT_EQ(labelBytes(*primer.universalLabel(tag(0x3c0a))), PRIVATE);
    EXPECT_EQ(serialized(primer), PRIMER_KEY + hexBytes("83 00 00 1a  00 00 00 01  00 00 00 12") +
                                      hexBytes("3c 0a") + PRIVATE);
}

// The primer is written in tag order: a label of several tags must be found by the same one
// whatever order they came in, or a second write gives other bytes than the first.
TEST(PrimerPack, LabelOfSeveralTagsIsFoundByTheLowestAndNeverBy0000)
{
    for (const bool lowFirst : {true, false})
    {
        PrimerPack primer;
        primer.add(tag(lowFirst ? 0x8001 : 0x9000), label(PRIVATE));
        primer.add(tag(lowFirst ? 0x9000 : 0x8001), label(PRIVATE));
        primer.add(tag(0x0000), label(PRIVATE));
        EXPECT_EQ(primer.localTag(label(PRIVATE))->value(), 0x8001) << lowFirst;
        // The lowest given to another label: the next one answers.
        primer.add(tag(0x8001), label(INSTANCE_UID));
        EXPECT_EQ(primer.localTag(label(PRIVATE))->value(), 0x9000) << lowFirst;
        EXPECT_EQ(primer.localTag(label(INSTANCE_UID))->value(), 0x8001) << lowFirst;
    }
    PrimerPack onlyZero;
    onlyZero.add(tag(0x0000), label(PRIVATE));
    EXPECT_EQ(onlyZero.localTag(label(PRIVATE)), nullptr);
    EXPECT_NE(onlyZero.universalLabel(tag(0x0000)), nullptr);
}

TEST(PrimerPack, AddBuildsAPrimerToWrite)
{
    PrimerPack primer(2);
    primer.add(tag(0x3c0a), label(INSTANCE_UID));
    primer.add(tag(0x0102), label(GENERATION_UID));
    EXPECT_EQ(primer.size(), 2u);
    EXPECT_EQ(primer.localTag(label(GENERATION_UID))->value(), 0x0102);
    EXPECT_EQ(serialized(primer), PRIMER_KEY + hexBytes("81 2c  00 00 00 02  00 00 00 12") +
                                      hexBytes("01 02") + GENERATION_UID + hexBytes("3c 0a") +
                                      INSTANCE_UID);
}

TEST(PrimerPack, WrongKeyOrTooFewPairsFail)
{
    const Bytes afterKey(PRIMER.begin() + 16, PRIMER.end());
    EXPECT_EQ(thrownMessage<Exceptions::InvalidKey>(
                  [&] {
                      packOf<PrimerPack>(
                          hexBytes("06 0e 2b 34 02 05 01 01 0d 01 02 01 01 02 04 00") + afterKey);
                  }),
              L"Trying to create a Primer from a KLV with a invalid primerPack Key.");
    // Three pairs announced, two and a half there.
    const Bytes short2 = PRIMER_KEY + hexBytes("83 00 00 3e  00 00 00 03  00 00 00 12") +
                         Bytes(THREE_PAIRS.begin(), THREE_PAIRS.end() - 9);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>([&] { packOf<PrimerPack>(short2); }),
              L"Invalid data size in Value: 7 of 16 bytes");
    // A count of four billion in a value that claims to hold them: each pair is read before it
    // is kept, so the bytes run out long before memory does.
    const Bytes huge =
        PRIMER_KEY + hexBytes("88 00 00 00 10 00 00 00 00  ff ff ff ff 00 00 00 12") + THREE_PAIRS;
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>([&] { packOf<PrimerPack>(huge); }),
              L"Invalid data size in Value: 0 of 2 bytes");
}
