#include "MXF/SDK/KLV/KeyPredicates.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

using namespace Halvorn::Test;
using namespace Halvorn::Test::Support;
using namespace MXF::SDK::KLV;

namespace
{

Key keyOf(const std::string& hex)
{
    return Key(hexBytes(hex).data());
}

// Keys as found in the fixtures (tests/data) and in the SMPTE registers.
const Key FILL_V1 = keyOf("06 0e 2b 34 01 01 01 01 03 01 02 10 01 00 00 00");
const Key FILL_V2 = keyOf("06 0e 2b 34 01 01 01 02 03 01 02 10 01 00 00 00");
const Key HEADER_PARTITION = keyOf("06 0e 2b 34 02 05 01 01 0d 01 02 01 01 02 04 00");
const Key PREFACE = keyOf("06 0e 2b 34 02 53 01 01 0d 01 01 01 01 01 2f 00");
const Key INDEX_SEGMENT = keyOf("06 0e 2b 34 02 53 01 01 0d 01 02 01 01 10 01 00");
const Key DMS1_FRAMEWORK = keyOf("06 0e 2b 34 02 53 01 01 0d 01 04 01 01 01 01 00");
const Key PICTURE = keyOf("06 0e 2b 34 01 02 01 01 0d 01 03 01 15 01 05 00");
const Key SDTI_SYSTEM_PACK = keyOf("06 0e 2b 34 02 05 01 01 0d 01 03 01 04 01 01 00");
const Key SDTI_PACKAGE_SET = keyOf("06 0e 2b 34 02 43 01 01 0d 01 03 01 04 01 02 01");
const Key AVID_ESSENCE = keyOf("06 0e 2b 34 01 02 01 01 0e 04 03 01 15 01 06 01");
const Key LABEL = keyOf("06 0e 2b 34 04 01 01 01 0d 01 02 01 01 01 09 00");
const Key AVID_ROOT = keyOf("80 53 08 00 36 21 08 04 b3 b3 98 a5 1c 90 11 d4");
const Key AVID_DIRECTORY = keyOf("96 13 b3 8a 87 34 87 46 f1 02 96 f0 56 e0 4d 2a");

} // namespace

TEST(KeyPredicates, FillItemsMatchWhateverTheVersionByte)
{
    EXPECT_TRUE(isFillItem(FILL_V1));
    EXPECT_TRUE(isFillItem(FILL_V2));
    EXPECT_TRUE(isFillItem(keyOf("06 0e 2b 34 01 01 01 7f 03 01 02 10 01 00 00 00")));
    EXPECT_FALSE(isFillItem(keyOf("06 0e 2b 34 01 01 01 02 03 01 02 10 02 00 00 00")));
    EXPECT_FALSE(isFillItem(keyOf("06 0e 2b 34 02 01 01 02 03 01 02 10 01 00 00 00")));
    EXPECT_FALSE(isFillItem(PICTURE));
}

TEST(KeyPredicates, AvidsPrivateKeysMatchWholeAndTheRootIsA2ByteLocalSet)
{
    EXPECT_TRUE(isAvidRootObject(AVID_ROOT));
    EXPECT_TRUE(isAvidObjectDirectory(AVID_DIRECTORY));
    EXPECT_FALSE(isAvidRootObject(AVID_DIRECTORY));
    EXPECT_FALSE(isAvidRootObject(keyOf("80 53 08 00 36 21 08 04 b3 b3 98 a5 1c 90 11 d5")));
    EXPECT_FALSE(isAvidObjectDirectory(keyOf("96 13 b3 8a 87 34 87 46 f1 02 96 f0 56 e0 4d 2b")));
    EXPECT_EQ(localTagSize(AVID_ROOT), 2);
    EXPECT_EQ(localLengthSize(AVID_ROOT), 2);
    EXPECT_EQ(localTagSize(AVID_DIRECTORY), 0);
    EXPECT_FALSE(isMetadataSet(AVID_ROOT));
}

TEST(KeyPredicates, GroupCodingComesFromByteFive)
{
    EXPECT_TRUE(isFixedLengthPack(HEADER_PARTITION));
    EXPECT_FALSE(isLocalSet(HEADER_PARTITION));
    EXPECT_EQ(localTagSize(HEADER_PARTITION), 0);
    EXPECT_EQ(localLengthSize(HEADER_PARTITION), 0);

    EXPECT_TRUE(isLocalSet(PREFACE));
    EXPECT_TRUE(isLocalSet2Byte(PREFACE));
    EXPECT_FALSE(isFixedLengthPack(PREFACE));
    EXPECT_EQ(localTagSize(PREFACE), 2);
    EXPECT_EQ(localLengthSize(PREFACE), 2);

    // 0x43: 1-byte tags, 2-byte lengths (the SDTI-CP package metadata set).
    EXPECT_TRUE(isLocalSet(SDTI_PACKAGE_SET));
    EXPECT_FALSE(isLocalSet2Byte(SDTI_PACKAGE_SET));
    EXPECT_EQ(localTagSize(SDTI_PACKAGE_SET), 1);
    EXPECT_EQ(localLengthSize(SDTI_PACKAGE_SET), 2);

    const struct
    {
        std::uint8_t coding, tag, length;
    } codings[] = {{0x03, 1, 0}, {0x13, 2, 0}, {0x1b, 4, 0}, {0x23, 1, 1},
                   {0x33, 2, 1}, {0x63, 1, 4}, {0x73, 2, 4}};
    for (const auto& c : codings)
    {
        Bytes bytes = hexBytes("06 0e 2b 34 02 00 01 01 0d 01 01 01 01 01 2f 00");
        bytes[5] = c.coding;
        const Key key(bytes.data());
        EXPECT_TRUE(isLocalSet(key)) << int(c.coding);
        EXPECT_EQ(localTagSize(key), c.tag) << int(c.coding);
        EXPECT_EQ(localLengthSize(key), c.length) << int(c.coding);
    }
    EXPECT_FALSE(isLocalSet(LABEL));
    EXPECT_FALSE(isLocalSet(keyOf("06 0e 2b 34 02 07 01 01 0d 01 01 01 01 01 2f 00")));
}

TEST(KeyPredicates, MetadataSetsIndexSegmentsAndEssence)
{
    EXPECT_TRUE(isMetadataSetStructural(PREFACE));
    EXPECT_TRUE(isMetadataSet(PREFACE));
    EXPECT_FALSE(isMetadataSetStructural(keyOf("06 0e 2b 34 02 53 01 01 0d 01 01 01 01 01 2f 01")));
    EXPECT_FALSE(isMetadataSetStructural(INDEX_SEGMENT));
    EXPECT_TRUE(isMetadataSetDescriptive(DMS1_FRAMEWORK));
    EXPECT_TRUE(isMetadataSet(DMS1_FRAMEWORK));
    EXPECT_FALSE(isMetadataSet(HEADER_PARTITION));

    EXPECT_TRUE(isIndexTableSegmentKey(INDEX_SEGMENT));
    EXPECT_FALSE(isIndexTableSegmentKey(keyOf("06 0e 2b 34 02 53 01 02 0d 01 02 01 01 10 01 00")))
        << "all 16 bytes count";

    EXPECT_TRUE(isGCEssenceElement(PICTURE));
    EXPECT_TRUE(isEssenceKey(PICTURE));
    EXPECT_FALSE(isGCSystemItem(PICTURE));
    EXPECT_TRUE(isGCSystemItem(SDTI_SYSTEM_PACK));
    EXPECT_TRUE(isGCSystemItem(SDTI_PACKAGE_SET));
    EXPECT_TRUE(isEssenceKey(SDTI_PACKAGE_SET));
    EXPECT_FALSE(isGCEssenceElement(SDTI_SYSTEM_PACK));
    EXPECT_FALSE(isEssenceKey(AVID_ESSENCE));
    EXPECT_FALSE(isEssenceKey(PREFACE));
}

TEST(KeyPredicates, FillItemKeyVersionCanBeSetForTheProcess)
{
    EXPECT_EQ(fillItemKey(), FILL_V1);
    setFillItemKeyVersion(0x02);
    EXPECT_EQ(fillItemKey(), FILL_V2);
    EXPECT_TRUE(isFillItem(fillItemKey()));
    setFillItemKeyVersion(0x01);
    EXPECT_EQ(fillItemKey(), FILL_V1);
}
