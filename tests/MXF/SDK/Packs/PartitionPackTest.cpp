#include "MXF/SDK/Packs/PartitionPack.h"

#include "MXF/SDK/Types/Visitors/Visitor.h"
#include "PacksTestSupport.h"

#include <gtest/gtest.h>

using namespace Halvorn::Test;
using MXF::SDK::Packs::PartitionPack;
namespace Exceptions = MXF::SDK::Exceptions;
namespace Types = MXF::SDK::Types;

namespace
{

const Bytes OP1A = hexBytes("06 0e 2b 34 04 01 01 01 0d 01 02 01 01 01 09 00");
const Bytes MPEG_ES = hexBytes("06 0e 2b 34 04 01 01 02 0d 01 03 01 02 04 60 01");
const Bytes AES_BWF = hexBytes("06 0e 2b 34 04 01 01 01 0d 01 03 01 02 06 03 00");

Bytes keyWith(std::uint8_t kind, std::uint8_t status)
{
    Bytes key = hexBytes("06 0e 2b 34 02 05 01 01 0d 01 02 01 01 00 00 00");
    key[13] = kind;
    key[14] = status;
    return key;
}

// A closed complete body partition pack, every field a different number so that a field read
// from the wrong place shows; value 88 bytes with an empty batch.
const Bytes FIXED_FIELDS = hexBytes("00 01"                   // MajorVersion 1
                                    "00 03"                   // MinorVersion 3
                                    "00 00 02 00"             // KAGSize 512
                                    "00 00 00 00 00 00 2e 00" // ThisPartition 11776
                                    "00 00 00 00 00 00 01 00" // PreviousPartition 256
                                    "00 00 00 00 00 28 5a 00" // FooterPartition 2644480
                                    "00 00 00 00 00 00 2c 00" // HeaderByteCount 11264
                                    "00 00 00 00 00 00 04 00" // IndexByteCount 1024
                                    "00 00 00 02"             // IndexSID 2
                                    "01 02 03 04 05 06 07 08" // BodyOffset
                                    "00 00 00 01") +          // BodySID 1
                           OP1A;                              // OperationalPattern
const Bytes EMPTY_BATCH = hexBytes("00 00 00 00  00 00 00 10");
const Bytes AFTER_KEY = hexBytes("83 00 00 58") + FIXED_FIELDS + EMPTY_BATCH;
const Bytes BODY_PACK = keyWith(0x03, 0x04) + AFTER_KEY;

std::wstring validateMessage(const Bytes& key)
{
    try
    {
        PartitionPack::validate(MXF::SDK::KLV::Key(key.data()));
    }
    catch (const Exceptions::BaseException& e)
    {
        return e.message();
    }
    return L"";
}

} // namespace

TEST(PartitionPack, ReadsEveryFieldInWireOrder)
{
    forEachSplit(BODY_PACK,
                 [](DataSource& source)
                 {
                     const PartitionPack pack(*itemAt(source));
                     EXPECT_EQ(Bytes(pack.key().data(), pack.key().data() + 16), keyWith(3, 4));
                     EXPECT_EQ(pack.lengthSize(), 4);
                     EXPECT_EQ(pack.majorVersion().value(), 1);
                     EXPECT_EQ(pack.minorVersion().value(), 3);
                     EXPECT_EQ(pack.kagSize().value(), 512u);
                     EXPECT_EQ(pack.thisPartition().value(), 11776u);
                     EXPECT_EQ(pack.previousPartition().value(), 256u);
                     EXPECT_EQ(pack.footerPartition().value(), 2644480u);
                     EXPECT_EQ(pack.headerByteCount().value(), 11264u);
                     EXPECT_EQ(pack.indexByteCount().value(), 1024u);
                     EXPECT_EQ(pack.indexSID().value(), 2u);
                     EXPECT_EQ(pack.bodyOffset().value(), 0x0102030405060708u);
                     EXPECT_EQ(pack.bodySID().value(), 1u);
                     EXPECT_EQ(labelBytes(pack.operationalPattern()), OP1A);
                     EXPECT_EQ(pack.essenceContainers().itemCount(), 0u);
                     EXPECT_EQ(pack.partitionKind(), PartitionPack::BODY_PARTITION);
                     EXPECT_FALSE(pack.isOpen());
                     EXPECT_TRUE(pack.isComplete());
                     EXPECT_TRUE(source.eof());
                 });
}

TEST(PartitionPack, PackWithNoEssenceContainerHasAValueOf88BytesAndIsWrittenBackAsRead)
{
    EXPECT_EQ(FIXED_FIELDS.size() + EMPTY_BATCH.size(), 88u);
    EXPECT_EQ(serialized(packOf<PartitionPack>(BODY_PACK)), BODY_PACK);
    // The length keeps the size it was read with.
    for (const Bytes& length :
         {hexBytes("58"), hexBytes("81 58"), hexBytes("88 00 00 00 00 00 00 00 58")})
    {
        const Bytes pack = keyWith(0x02, 0x01) + length + FIXED_FIELDS + EMPTY_BATCH;
        EXPECT_EQ(serialized(packOf<PartitionPack>(pack)), pack);
    }
}

TEST(PartitionPack, EssenceContainersAreReadAsLabelsAndCountedInTheLength)
{
    const Bytes bytes = keyWith(0x04, 0x02) + hexBytes("83 00 00 78") + FIXED_FIELDS +
                        hexBytes("00 00 00 02  00 00 00 10") + MPEG_ES + AES_BWF;
    forEachSplit(bytes,
                 [&](DataSource& source)
                 {
                     const PartitionPack pack(*itemAt(source));
                     const Types::Batch& containers = pack.essenceContainers();
                     ASSERT_EQ(containers.itemCount(), 2u);
                     EXPECT_EQ(containers.itemSize(), 16u);
                     const auto* first =
                         Types::Visitors::getAs<Types::UniversalLabel>(containers.at(0));
                     const auto* second =
                         Types::Visitors::getAs<Types::UniversalLabel>(containers.at(1));
                     ASSERT_TRUE(first && second);
                     EXPECT_EQ(labelBytes(*first), MPEG_ES);
                     EXPECT_EQ(labelBytes(*second), AES_BWF);
                     EXPECT_EQ(serialized(pack), bytes);
                 });
}

TEST(PartitionPack, ALongBatchKeepsItsTrueLength)
{
    // 4096 labels make a batch of 65544 bytes, more than a 16-bit size can hold.
    PartitionPack pack(PartitionPack::BODY_PARTITION, PartitionPack::CLOSED_COMPLETE);
    for (int i = 0; i < 4096; ++i)
        pack.essenceContainers().append(std::make_unique<Types::UniversalLabel>(MPEG_ES.data()));
    const Bytes bytes = serialized(pack);
    ASSERT_EQ(bytes.size(), 16u + 4 + 80 + 8 + 4096 * 16);
    EXPECT_EQ(Bytes(bytes.begin() + 16, bytes.begin() + 20), hexBytes("83 01 00 58"));
}

TEST(PartitionPack, ValidateNamesWhatIsWrongWithTheKey)
{
    const std::wstring notPack = L"The key is not a PartitionPack key";
    const std::wstring badKind = L"The key defines an invalid partition kind";
    const std::wstring badStatus = L"The key defines an invalid partition status";
    Bytes indexSegment = hexBytes("06 0e 2b 34 02 53 01 01 0d 01 02 01 01 10 01 00");
    Bytes otherVersion = keyWith(0x02, 0x04);
    otherVersion[7] = 0x02;
    const struct
    {
        const char* what;
        Bytes key;
        std::wstring message;
    } cases[] = {
        {"index table segment key", indexSegment, notPack},
        {"version byte 02", otherVersion, notPack},
        {"kind 01", keyWith(0x01, 0x04), badKind},
        {"kind 05", keyWith(0x05, 0x01), badKind},
        {"kind 05 with a bad status too", keyWith(0x05, 0x00), badKind},
        {"status 00", keyWith(0x02, 0x00), badStatus},
        {"status 05", keyWith(0x04, 0x05), badStatus},
        {"header with status 0x11", keyWith(0x02, 0x11), badStatus},
        {"footer with status 0x11", keyWith(0x04, 0x11), badStatus},
        {"body with status 0x12", keyWith(0x03, 0x12), badStatus},
        {"body with status 0x11", keyWith(0x03, 0x11), L""},
        {"header open incomplete", keyWith(0x02, 0x01), L""},
        {"footer closed complete", keyWith(0x04, 0x04), L""},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(validateMessage(c.key), c.message);
        EXPECT_EQ(PartitionPack::isPartitionPack(MXF::SDK::KLV::Key(c.key.data())),
                  c.message != notPack);
    }
    EXPECT_EQ(thrownMessage<Exceptions::InvalidPartitionKind>(
                  [] { packOf<PartitionPack>(keyWith(0x05, 0x04) + AFTER_KEY); }),
              badKind);
    EXPECT_EQ(
        thrownMessage<Exceptions::InvalidPartitionStatus>(
            [] { PartitionPack(PartitionPack::HEADER_PARTITION, PartitionPack::GENERIC_STREAM); }),
        badStatus);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidKey>(
                  [&] { packOf<PartitionPack>(indexSegment + AFTER_KEY); }),
              notPack);
}

TEST(PartitionPack, KindRewritesTheKeyUncheckedAndUnknownKindsReadAsFooter)
{
    PartitionPack pack = packOf<PartitionPack>(BODY_PACK);
    pack.kind(PartitionPack::HEADER_PARTITION, PartitionPack::OPEN_INCOMPLETE);
    EXPECT_EQ(pack.partitionKind(), PartitionPack::HEADER_PARTITION);
    EXPECT_TRUE(pack.isOpen());
    EXPECT_FALSE(pack.isComplete());
    EXPECT_EQ(serialized(pack), keyWith(0x02, 0x01) + AFTER_KEY);

    // Kind 05 never passes validate; bytes that bypassed it answer footer.
    pack.kind(static_cast<PartitionPack::PartitionKind>(0x05), 0x04);
    EXPECT_EQ(pack.partitionKind(), PartitionPack::FOOTER_PARTITION);
    EXPECT_EQ(serialized(pack), keyWith(0x05, 0x04) + AFTER_KEY);

    pack.kind(PartitionPack::BODY_PARTITION, PartitionPack::GENERIC_STREAM);
    EXPECT_EQ(pack.partitionKind(), PartitionPack::BODY_PARTITION);
    EXPECT_FALSE(pack.isOpen());
    EXPECT_FALSE(pack.isComplete());
}

TEST(PartitionPack, StatusSaysOpenAndComplete)
{
    const struct
    {
        std::uint8_t status;
        bool open;
        bool complete;
    } cases[] = {
        {0x01, true, false}, {0x02, false, false}, {0x03, true, true}, {0x04, false, true}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(int(c.status));
        const PartitionPack pack = packOf<PartitionPack>(keyWith(0x02, c.status) + AFTER_KEY);
        EXPECT_EQ(pack.isOpen(), c.open);
        EXPECT_EQ(pack.isComplete(), c.complete);
    }
}

TEST(PartitionPack, ValuesShortOfTheirFieldsOrBatchFail)
{
    const Bytes key = keyWith(0x03, 0x04);
    const Bytes fields79(FIXED_FIELDS.begin(), FIXED_FIELDS.end() - 1);
    const Bytes oneLabelOfTwo = hexBytes("00 00 00 02  00 00 00 10") + MPEG_ES;
    const struct
    {
        const char* what;
        Bytes bytes;
        std::wstring message;
    } cases[] = {
        {"79 bytes of fields", key + hexBytes("4f") + fields79,
         L"Invalid data size in Value: 15 of 16 bytes"},
        {"no batch", key + hexBytes("50") + FIXED_FIELDS,
         L"Invalid data size in collection. Not enough data to read number of elements"},
        {"one label of two", key + hexBytes("68") + FIXED_FIELDS + oneLabelOfTwo,
         L"Invalid data size in collection. Not enough data to read 2 elements of size 16"},
        {"items of 15 bytes",
         key + hexBytes("67") + FIXED_FIELDS + hexBytes("00 00 00 01 00 00 00 0f") +
             Bytes(MPEG_ES.begin(), MPEG_ES.end() - 1),
         L"Invalid data size in Value to create an element in the collection."},
        // A length far beyond the bytes, and a count that would fill it: nothing is sized by
        // either before the bytes are there.
        {"length and count beyond the file",
         key + hexBytes("87 01 00 00 00 00 00 00") + FIXED_FIELDS +
             hexBytes("ff ff ff ff 00 00 00 01"),
         L"Invalid data size in collection. Not enough data to read 4294967295 elements of size 1"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>([&] { packOf<PartitionPack>(c.bytes); }),
                  c.message);
    }
}

TEST(PartitionPack, NewPackIsWrittenFieldByField)
{
    PartitionPack pack(PartitionPack::HEADER_PARTITION, PartitionPack::OPEN_INCOMPLETE);
    EXPECT_EQ(pack.lengthSize(), 4);
    EXPECT_EQ(serialized(pack),
              keyWith(0x02, 0x01) + hexBytes("83 00 00 58") + Bytes(80, 0) + EMPTY_BATCH);

    pack.majorVersion().setValue(1);
    pack.minorVersion().setValue(3);
    pack.kagSize().setValue(512);
    pack.thisPartition().setValue(11776);
    pack.previousPartition().setValue(256);
    pack.footerPartition().setValue(2644480);
    pack.headerByteCount().setValue(11264);
    pack.indexByteCount().setValue(1024);
    pack.indexSID().setValue(2);
    pack.bodyOffset().setValue(0x0102030405060708);
    pack.bodySID().setValue(1);
    pack.operationalPattern() = Types::UniversalLabel(OP1A.data());
    pack.essenceContainers().append(std::make_unique<Types::UniversalLabel>(MPEG_ES.data()));
    pack.kind(PartitionPack::BODY_PARTITION, PartitionPack::CLOSED_COMPLETE);
    EXPECT_EQ(serialized(pack), keyWith(0x03, 0x04) + hexBytes("83 00 00 68") + FIXED_FIELDS +
                                    hexBytes("00 00 00 01  00 00 00 10") + MPEG_ES);
}

TEST(PartitionPack, LengthThatDoesNotFitItsBERSizeIsNotWritten)
{
    PartitionPack pack(PartitionPack::FOOTER_PARTITION, PartitionPack::CLOSED_COMPLETE, 1);
    EXPECT_EQ(serialized(pack).at(16), 0x58);
    for (int i = 0; i < 3; ++i)
        pack.essenceContainers().append(std::make_unique<Types::UniversalLabel>(AES_BWF.data()));
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>([&] { serialized(pack); }),
              L"Pack length 136 does not fit a BER length of 1 bytes");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidFormat>(
                  [] {
                      serialized(PartitionPack(PartitionPack::BODY_PARTITION,
                                               PartitionPack::OPEN_COMPLETE, 0));
                  }),
              L"Invalid BER size");
}

TEST(PartitionPack, BytesAfterTheBatchAreLeftUnreadAndNotWrittenBack)
{
    // Four bytes of something after an empty batch, inside the value.
    const Bytes padded = keyWith(0x03, 0x04) + hexBytes("83 00 00 5c") + FIXED_FIELDS +
                         EMPTY_BATCH + hexBytes("de ad be ef");
    MXF::SDK::DataIO::Memory::MemoryDataSource source(padded.data(), padded.size());
    {
        const PartitionPack pack(*itemAt(source));
        EXPECT_EQ(serialized(pack), BODY_PACK);
    }
    EXPECT_TRUE(source.eof()) << "the dropped item moves the source past its value";

    // A length of 2^48 over a pack of 88 bytes: the pack reads, and nothing waits for the rest.
    const Bytes huge =
        keyWith(0x03, 0x04) + hexBytes("87 01 00 00 00 00 00 00") + FIXED_FIELDS + EMPTY_BATCH;
    EXPECT_EQ(packOf<PartitionPack>(huge).essenceContainers().itemCount(), 0u);
}
