// Copies of the 1080i25 fixture damaged here by byte surgery: each route to the footer made the
// one that decides, the edge cases of recovery, and every failure with its condition and text.
// Offsets come from MediaInfo's partition list of the clean file.
#include "MXF/SDK/Packs/PartitionPack.h"
#include "ReaderTestSupport.h"

#include <gtest/gtest.h>

using namespace Halvorn::Test::MXFIO;
using namespace MXF::SDK;
using Packs::PartitionPack;

namespace
{

const std::string CLEAN = "xdcamhd422_1080i25";

struct Layout
{
    std::size_t header, body, footer, rip;
};

Layout cleanLayout()
{
    const std::vector<ListedPartition> listed = listedPartitions(CLEAN);
    const Bytes bytes = fileBytes(CLEAN + ".mxf");
    const std::size_t rip = bytes.size() - number(bytes, bytes.size() - 4, 4);
    return {listed.at(0).offset, listed.at(1).offset, listed.at(2).offset, rip};
}

// A footer partition pack with no essence container, from the writing side of the packs.
Bytes footerPack(std::uint64_t thisPartition)
{
    Bytes pack = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01, 0x01, 0x0D, 0x01,
                  0x02, 0x01, 0x01, 0x04, 0x04, 0x00, 0x83, 0x00, 0x00, 88};
    pack.resize(pack.size() + 88, 0);
    put(pack, 20 + THIS_PARTITION, thisPartition, 8);
    put(pack, 20 + 80, 0, 4); // no essence containers
    put(pack, 20 + 84, 16, 4);
    return pack;
}

} // namespace

TEST(ReaderFooterRoutes, TheHeadersFieldDecides)
{
    // No RIP, and the tail past the footer holds another footer pack, followed by zeros long
    // enough that the scan's second window from the end starts between the two packs.
    const Layout at = cleanLayout();
    Bytes bytes = fileBytes(CLEAN + ".mxf");
    bytes.resize(at.rip);
    const Bytes decoy = footerPack(at.rip);
    bytes.insert(bytes.end(), decoy.begin(), decoy.end());
    bytes.resize(bytes.size() + 11000, 0);

    auto reader = readerOf(memorySource(bytes));
    EXPECT_EQ(reader->randomIndexPack(), nullptr);
    EXPECT_EQ(reader->footerPartition()->position(), at.footer);
    auto plain = readerOf<Reader>(memorySource(bytes));
    EXPECT_EQ(plain->footerPartition()->position(), at.footer);

    // With the field 0 the scan takes the decoy.
    setPackField(bytes, at.header, FOOTER_PARTITION, 0);
    auto scanned = readerOf(memorySource(bytes));
    EXPECT_EQ(scanned->footerPartition()->position(), at.rip);
    EXPECT_EQ(readerOf<Reader>(memorySource(bytes))->footerPartition(), nullptr);
}

TEST(ReaderFooterRoutes, TheRIPDecides)
{
    // Field 0 (as damaged_footer_zero), and the item before the footer pack made long enough to
    // cover it, so that a walk from anywhere before passes it by. The RIP goes straight to it.
    const Layout at = cleanLayout();
    Bytes bytes = fileBytes("damaged_footer_zero.mxf");
    std::size_t item = 12288;
    while (item + lengthAt(bytes, item) + (valueAt(bytes, item) - item) < at.footer)
        item = valueAt(bytes, item) + lengthAt(bytes, item);
    ASSERT_EQ(valueAt(bytes, item) + lengthAt(bytes, item), at.footer);
    ASSERT_EQ(bytes[item + 16], 0x83);
    put(bytes, item + 17, lengthAt(bytes, item) + 512, 3);

    auto reader = readerOf(memorySource(bytes));
    ASSERT_NE(reader->randomIndexPack(), nullptr);
    EXPECT_EQ(reader->footerPartition()->position(), at.footer);

    // Without the RIP, the strict scan ends at the last partition it can reach, the body.
    bytes.resize(at.rip);
    auto scanned = readerOf(memorySource(bytes));
    EXPECT_EQ(scanned->footerPartition()->position(), at.body);
    auto relaxed = readerOf(memorySource(bytes));
    EXPECT_EQ(relaxed->footerPartitionIfAny(), nullptr);
}

TEST(ReaderFooterRoutes, TheScanDecides)
{
    // damaged_footer_zero without its RIP: field 0, no RIP, the scan finds the footer.
    const Layout at = cleanLayout();
    Bytes bytes = fileBytes("damaged_footer_zero.mxf");
    bytes.resize(damageOffset("damaged_no_rip.mxf", "cut_at"));
    auto reader = readerOf(memorySource(bytes));
    EXPECT_EQ(reader->randomIndexPack(), nullptr);
    EXPECT_EQ(reader->footerPartition()->position(), at.footer);
    EXPECT_EQ(readerOf(memorySource(bytes))->footerPartitionIfAny()->position(), at.footer);

    // The same when the field points past the end and no RIP is left: a body cut short.
    for (const char* name :
         {"damaged_truncated_90.mxf", "damaged_truncated_30.mxf", "damaged_no_footer.mxf"})
    {
        SCOPED_TRACE(name);
        auto cut = readerOf(fileSource(name));
        Partition* last = cut->footerPartition();
        ASSERT_NE(last, nullptr);
        EXPECT_EQ(last->position(), at.body);
        EXPECT_EQ(last->partitionPack().partitionKind(), PartitionPack::BODY_PARTITION);
        EXPECT_EQ(readerOf(fileSource(name))->footerPartitionIfAny(), nullptr);
        // The header is closed: its metadata is the answer.
        EXPECT_EQ(cut->latestHeaderMetadataPartition().position(), at.header);
    }
}

TEST(ReaderEdgeCases, OnlyAHeaderWithFieldZeroAndNoRIP)
{
    const Layout at = cleanLayout();
    Bytes bytes = fileBytes(CLEAN + ".mxf");
    bytes.resize(at.body);
    setPackField(bytes, at.header, FOOTER_PARTITION, 0);
    auto reader = readerOf(memorySource(bytes));
    Partition* last = reader->footerPartition();
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last, reader->headerPartition());
    EXPECT_EQ(reader->footerPartitionIfAny(), nullptr);
    EXPECT_EQ(reader->nextPartition(*last), nullptr);
    EXPECT_EQ(reader->latestHeaderMetadataPartition().position(), 0u);

    // A file shorter than the scan's first window.
    bytes.resize(4000);
    EXPECT_EQ(readerOf(memorySource(bytes))->footerPartition()->position(), 0u);
}

TEST(ReaderEdgeCases, RIPLengthOf20OrLessMeansNoRIP)
{
    Bytes bytes = fileBytes(CLEAN + ".mxf");
    ASSERT_NE(readerOf(memorySource(bytes))->randomIndexPack(), nullptr);
    EXPECT_EQ(readerOf(memorySource(bytes))->randomIndexPack()->entries().size(), 3u);
    for (std::uint64_t length : {20u, 0u, 1u, 0xFFFFFFFFu})
    {
        put(bytes, bytes.size() - 4, length, 4);
        EXPECT_EQ(readerOf(memorySource(bytes))->randomIndexPack(), nullptr) << length;
    }
    // 21 and more: read, and not a RIP there either.
    put(bytes, bytes.size() - 4, 21, 4);
    EXPECT_EQ(readerOf(memorySource(bytes))->randomIndexPack(), nullptr);
    for (std::size_t size : {0, 3, 4})
        EXPECT_EQ(readerOf(memorySource(Bytes(size, 0x30)))->randomIndexPack(), nullptr);
}

TEST(ReaderEdgeCases, GenericStreamBodyWalksLikeAnyOther)
{
    const Layout at = cleanLayout();
    Bytes bytes = fileBytes(CLEAN + ".mxf");
    bytes[at.body + 14] = PartitionPack::GENERIC_STREAM;
    auto reader = readerOf(memorySource(bytes));
    Partition* body = reader->nextPartition(*reader->headerPartition());
    ASSERT_NE(body, nullptr);
    EXPECT_EQ(body->partitionPack().key()[14], 0x11);
    EXPECT_EQ(reader->nextPartition(*body)->position(), at.footer);
    EXPECT_EQ(reader->previousPartition(*reader->footerPartition()), body);
}

TEST(ReaderEdgeCases, GarbageBeforeABodyNeedsASearch)
{
    const UInt64 body = damageOffset("damaged_garbage.mxf", "body_partition_now_at");
    auto reader = readerOf(fileSource("damaged_garbage.mxf"));
    EXPECT_THROW(reader->nextPartition(*reader->headerPartition()), Exceptions::KeyNotFound);
    reader->setMaxSkip(damageOffset("damaged_garbage.mxf", "garbage_len"));
    Partition* found = reader->nextPartition(*reader->headerPartition());
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->position(), body);
    // Its ThisPartition is stale, and so are the footer's field and the RIP: the scan finds it.
    Partition* footer = reader->footerPartition();
    ASSERT_NE(footer, nullptr);
    EXPECT_EQ(footer->position(), 2644480u + 1000u);
}

TEST(ReaderFailures, EachConditionAndText)
{
    const Layout at = cleanLayout();
    const Bytes clean = fileBytes(CLEAN + ".mxf");

    // No partition within the run-in: one fill item and nothing else.
    Bytes fill = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x02, 0x03, 0x01, 0x02,
                  0x10, 0x01, 0x00, 0x00, 0x00, 0x04, 0,    0,    0,    0};
    EXPECT_EQ(
        exceptionText([&] { readerOf(memorySource(fill), 0)->latestHeaderMetadataPartition(); }),
        "header != 0: No header partition found");
    EXPECT_EQ(exceptionText(
                  [&] { readerOf<Reader>(memorySource({}), 0)->latestHeaderMetadataPartition(); }),
              "header != 0: No header partition found");

    // The body pack's PreviousPartition beyond the header's ThisPartition.
    Bytes bytes = clean;
    setPackField(bytes, at.body, PREVIOUS_PARTITION, 5);
    {
        auto reader = readerOf(memorySource(bytes));
        EXPECT_EQ(exceptionText([&] { reader->nextPartition(*reader->headerPartition()); }),
                  "next == 0 || next -> partitionPack ().previousPartition () <= current -> "
                  "partitionPack ().thisPartition (): The Partition Pack has an invalid "
                  "PreviousPartition value");
    }

    // The footer's PreviousPartition at an essence element, and at itself.
    for (std::uint64_t previous : {std::uint64_t(12288), std::uint64_t(at.footer)})
    {
        bytes = clean;
        setPackField(bytes, at.footer, PREVIOUS_PARTITION, previous);
        auto reader = readerOf(memorySource(bytes));
        EXPECT_EQ(exceptionText([&] { reader->previousPartition(*reader->footerPartition()); }),
                  "previous != current && previous != 0: A Partition has an invalid "
                  "PreviousPartition value");
    }

    // The body's ThisPartition not below the footer's.
    bytes = clean;
    setPackField(bytes, at.body, THIS_PARTITION, at.footer);
    {
        auto reader = readerOf(memorySource(bytes));
        EXPECT_EQ(exceptionText([&] { reader->previousPartition(*reader->footerPartition()); }),
                  "previous -> partitionPack ().thisPartition () < current -> partitionPack "
                  "().thisPartition (): Partitions have inconsistent ThisPartition values");
    }

    // The header's FooterPartition past the end, and at the body.
    EXPECT_EQ(exceptionText(
                  [&]
                  { readerOf<Reader>(fileSource("damaged_truncated_90.mxf"))->footerPartition(); }),
              "footerPosition < fileSize: Footer not found where indicated in primer");
    bytes = clean;
    setPackField(bytes, at.header, FOOTER_PARTITION, at.body);
    EXPECT_EQ(exceptionText([&] { readerOf<Reader>(memorySource(bytes))->footerPartition(); }),
              "footer != 0 && footer -> partitionPack ().partitionKind () == "
              "PartitionPack::FOOTER_PARTITION: Footer not found where indicated in primer");
    // Reader2 takes the field as a hint only.
    EXPECT_EQ(readerOf(memorySource(bytes))->footerPartition()->position(), at.footer);

    // The RIP's last entry at the body, the header's field 0.
    bytes = fileBytes("damaged_footer_zero.mxf");
    put(bytes, bytes.size() - 4 - 8, at.body, 8);
    EXPECT_EQ(exceptionText([&] { readerOf(memorySource(bytes))->footerPartition(); }),
              "partition -> partitionPack ().partitionKind () == PartitionPack::FOOTER_PARTITION: "
              "Last Partition indicated by RIP is not a Footer Partition");

    // Nothing at all.
    const Bytes nothing(20000, 0x00);
    EXPECT_EQ(exceptionText([&] { readerOf(memorySource(nothing))->footerPartition(); }),
              "partition != 0: No partition found");
    EXPECT_EQ(readerOf(memorySource(nothing))->footerPartitionIfAny(), nullptr);

    // The metadata of a partition whose HeaderByteCount is set but holds no primer.
    bytes = clean;
    setPackField(bytes, at.body, HEADER_BYTE_COUNT, 1000);
    {
        auto reader = readerOf(memorySource(bytes));
        EXPECT_EQ(exceptionText([&] { reader->partitionAt(at.body)->metadata(); }),
                  "PrimerPack::isPrimerPack (item -> key): This partition (0x2e00) does not have "
                  "a primer pack at the beginning of the metadata.");
    }

    // Below the body's offset.
    bytes = clean;
    setPackField(bytes, at.body, BODY_OFFSET, 0x1000);
    {
        auto reader = readerOf(memorySource(bytes));
        Partition* body = reader->partitionAt(at.body);
        EXPECT_EQ(exceptionText([&] { body->seekBody(0xFFF); }),
                  "offset >= partitionPack ().bodyOffset (): Trying to seek to 0xfff but "
                  "partition (0x2e00) body starts at 1000");
        EXPECT_NO_THROW(body->seekBody(0x1000));
        UInt64 skipped = 0;
        EXPECT_EQ(body->nextEssence(skipped, 0)->keyPosition, 12288u);
    }
}
