// The reader against the ffmpeg-made fixtures of tests/data. Expectations come from MediaInfo's
// trace and ffprobe's packet list (tests/data/expected), from damage-offsets.txt, and from what
// SMPTE 377M fixes in the files themselves (partition packs, the RIP, KAG fill); none from our
// own output.
#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/Platform/Platform.h"
#include "TestSupport.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>

using namespace Halvorn::Test;
using namespace Halvorn::Test::Support;
using namespace MXF::SDK::KLV;
namespace Exceptions = MXF::SDK::Exceptions;
namespace Platform = MXF::SDK::Platform;

namespace
{

const char* const CLEAN[] = {"xdcamhd422_1080i25", "xdcamhd422_720p50", "xdcamhd422_1080i2997df",
                             "imx50_625",          "opatom_mpeg2",      "opatom_pcm"};
const char* const DAMAGED[] = {"damaged_truncated_30", "damaged_truncated_90", "damaged_no_footer",
                               "damaged_garbage", "damaged_bad_length"};

std::vector<std::string> allFixtures()
{
    std::vector<std::string> all(std::begin(CLEAN), std::end(CLEAN));
    all.insert(all.end(), std::begin(DAMAGED), std::end(DAMAGED));
    return all;
}

struct Found
{
    UInt64 offset;
    Bytes key;
    unsigned lengthSize;
    UInt64 length;
    UInt64 skippedBefore;

    UInt64 valueStart() const { return offset + 16 + lengthSize; }
    UInt64 end() const { return valueStart() + length; }
};

struct Walked
{
    std::vector<Found> items;
    UInt64 size = 0;
    // Bytes at the end in which no whole key and length was found.
    UInt64 tail = 0;

    const Found* at(UInt64 offset) const
    {
        for (const Found& f : items)
            if (f.offset == offset)
                return &f;
        return nullptr;
    }
};

// Reads item after item, as a recovering reader does: an item whose length runs past the end of
// the file is kept, and the search goes on from its first value byte.
Walked walk(const std::string& name, UInt64 maxSkip = UINT64_MAX)
{
    MXF::SDK::DataIO::File::FileDataSource file(Platform::fromUtf8(testData(name + ".mxf")));
    Walked walked;
    walked.size = file.remaining();
    KLVReader reader(file);
    while (file.position() < walked.size)
    {
        const UInt64 searchStart = file.position();
        UInt64 skipped = 0;
        std::unique_ptr<KLVItem> item;
        try
        {
            item = reader.readKLV(skipped, maxSkip);
        }
        catch (const Exceptions::NotEnoughData&)
        {
            walked.tail = walked.size - searchStart;
            break;
        }
        walked.items.push_back({item->keyPosition, Bytes(item->key.data(), item->key.data() + 16),
                                item->lengthSize, item->length, skipped});
        const UInt64 valueStart = item->value.position();
        if (item->length > walked.size - valueStart)
        {
            item.reset();
            file.seek(valueStart);
        }
    }
    return walked;
}

const Walked& walked(const std::string& name)
{
    static std::map<std::string, Walked> cache;
    auto it = cache.find(name);
    if (it == cache.end())
        it = cache.emplace(name, walk(name)).first;
    return it->second;
}

UInt64 damage(const std::string& file, const std::string& what)
{
    return damageOffset(file + ".mxf", what);
}

// SMPTE 377M keys: 06 0E 2B 34 02 05 01 vv 0D 01 02 01 01 kk ss 00.
bool isPartitionPack(const Bytes& key, std::uint8_t kind)
{
    const Bytes head = hexBytes("06 0e 2b 34 02 05 01");
    const Bytes item = hexBytes("0d 01 02 01 01");
    return std::equal(head.begin(), head.end(), key.begin()) &&
           std::equal(item.begin(), item.end(), key.begin() + 8) && key[13] == kind &&
           key[14] >= 1 && key[14] <= 4 && key[15] == 0;
}

// `ours` holds the items of xdcamhd422_1080i25 in order, each at `expected(clean item)`: its
// offset, and the bytes skipped before it.
void expectCleanItems(const Walked& ours,
                      const std::function<std::pair<UInt64, UInt64>(const Found&)>& expected,
                      UInt64 lengthChangedAt = UINT64_MAX)
{
    const Walked& clean = walked("xdcamhd422_1080i25");
    ASSERT_EQ(ours.items.size(), clean.items.size());
    for (std::size_t i = 0; i < clean.items.size(); ++i)
    {
        const Found& c = clean.items[i];
        const Found& o = ours.items[i];
        const auto [offset, skipped] = expected(c);
        EXPECT_EQ(o.offset, offset) << i;
        EXPECT_EQ(o.key, c.key) << i;
        EXPECT_TRUE(c.offset == lengthChangedAt || o.length == c.length) << i;
        EXPECT_EQ(o.skippedBefore, skipped) << i;
    }
}

bool isFrameWrapped(const std::string& name)
{
    return name.rfind("opatom", 0) != 0;
}

} // namespace

TEST(KLVFixtures, EveryItemMediaInfoTracesIsFoundWithTheSameKeyAndLengthInOrder)
{
    for (const std::string& name : allFixtures())
    {
        SCOPED_TRACE(name);
        const Walked& ours = walked(name);
        std::size_t next = 0;
        for (const ListedItem& traced : listedItems(name))
        {
            const Bytes tracedKey = hexBytes(traced.key);
            // MediaInfo takes the lone prefix at 12276 for a key; its fifth byte is 07,
            // which starts no key.
            if (name == "damaged_garbage" && traced.offset == damage(name, "lure_key_prefix_at"))
            {
                EXPECT_EQ(tracedKey[4], 0x07);
                EXPECT_EQ(ours.at(traced.offset), nullptr);
                continue;
            }
            while (next < ours.items.size() && ours.items[next].offset < traced.offset)
                ++next;
            ASSERT_LT(next, ours.items.size()) << "no item at " << traced.offset;
            const Found& found = ours.items[next];
            ASSERT_EQ(found.offset, traced.offset) << traced.name;
            EXPECT_EQ(found.key, tracedKey) << "at " << traced.offset;
            EXPECT_EQ(found.length, traced.length) << "at " << traced.offset;
        }
    }
}

TEST(KLVFixtures, FfprobePacketsAreEssenceElementsOrLieInTheClipElement)
{
    for (const std::string& name : allFixtures())
    {
        SCOPED_TRACE(name);
        const Walked& ours = walked(name);
        const std::vector<Packet> packets = ffprobePackets(name);
        if (name == "damaged_garbage")
        {
            EXPECT_TRUE(packets.empty()) << "ffprobe gave up on this one";
            continue;
        }
        ASSERT_FALSE(packets.empty());
        if (!isFrameWrapped(name))
        {
            // One clip element holds the packets back to back, from its first value byte.
            const Found* clip = ours.at(packets.front().pos - 25);
            ASSERT_NE(clip, nullptr);
            EXPECT_TRUE(isGCEssenceElement(Key(clip->key.data())));
            EXPECT_EQ(clip->lengthSize, 9u);
            UInt64 position = clip->valueStart();
            for (const Packet& p : packets)
            {
                EXPECT_EQ(UInt64(p.pos), position);
                position += p.size;
            }
            EXPECT_EQ(position, clip->end());
            continue;
        }
        for (const Packet& p : packets)
        {
            const Found* element = ours.at(p.pos);
            ASSERT_NE(element, nullptr) << "no item at packet position " << p.pos;
            EXPECT_TRUE(isGCEssenceElement(Key(element->key.data())));
            if (element->end() > ours.size)
                EXPECT_EQ(UInt64(p.size), ours.size - element->valueStart()) << "cut by the end";
            else if (name == "imx50_625" && p.stream == 1)
                // ffmpeg unpacks the D-10 AES3 element (4-byte header, 8 channels of 4
                // bytes a sample) to 4 channels of 16-bit PCM.
                EXPECT_EQ(UInt64(p.size), (element->length - 4) / 32 * 4 * 2);
            else
                EXPECT_EQ(UInt64(p.size), element->length) << "at " << p.pos;
        }
    }
}

TEST(KLVFixtures, ItemsTileEachCleanFileFromTheHeaderPartitionPackToTheEnd)
{
    for (const char* name : CLEAN)
    {
        SCOPED_TRACE(name);
        const Walked& ours = walked(name);
        ASSERT_FALSE(ours.items.empty());
        EXPECT_EQ(ours.items[0].offset, 0u);
        EXPECT_TRUE(isPartitionPack(ours.items[0].key, 0x02)) << "header partition pack first";
        UInt64 expected = 0;
        for (const Found& f : ours.items)
        {
            EXPECT_EQ(f.offset, expected);
            EXPECT_EQ(f.skippedBefore, 0u);
            expected = f.end();
        }
        EXPECT_EQ(expected, ours.size) << "the last item ends at the end of the file";
        EXPECT_EQ(ours.tail, 0u);
    }
}

TEST(KLVFixtures, PartitionsAndFillSitWhereTheHeaderPackAndTheRIPSay)
{
    for (const char* name : CLEAN)
    {
        SCOPED_TRACE(name);
        const Walked& ours = walked(name);
        const Bytes file = fileBytes(std::string(name) + ".mxf");
        ASSERT_EQ(file.size(), ours.size);

        // Header partition pack value: Major, Minor (2 each), KAGSize (4), ThisPartition,
        // PreviousPartition, FooterPartition, HeaderByteCount (8 each).
        const UInt64 header = ours.items[0].valueStart();
        const UInt64 kag = number(file, header + 4, 4);
        const UInt64 footer = number(file, header + 24, 8);
        const UInt64 headerByteCount = number(file, header + 32, 8);
        EXPECT_EQ(kag, 512u);
        const Found* footerPack = ours.at(footer);
        ASSERT_NE(footerPack, nullptr);
        EXPECT_TRUE(isPartitionPack(footerPack->key, 0x04));

        // Header metadata starts after the pack and its fill, and ends on an item boundary.
        ASSERT_TRUE(isFillItem(Key(ours.items[1].key.data())));
        EXPECT_NE(ours.at(ours.items[1].end() + headerByteCount), nullptr);

        // The RIP (SMPTE 377M): the last item; its last 4 bytes give its size; then pairs of
        // BodySID (4) and ByteOffset (8), each the offset of a partition pack that says so.
        const UInt64 ripSize = number(file, file.size() - 4, 4);
        const Found& rip = ours.items.back();
        EXPECT_EQ(rip.offset, file.size() - ripSize);
        EXPECT_EQ(rip.key, hexBytes("06 0e 2b 34 02 05 01 01 0d 01 02 01 01 11 01 00"));
        std::vector<UInt64> partitions;
        for (UInt64 at = rip.valueStart(); at + 4 < rip.end(); at += 12)
            partitions.push_back(number(file, at + 4, 8));
        EXPECT_EQ(partitions.front(), 0u);
        EXPECT_EQ(partitions.back(), footer);
        for (const UInt64 offset : partitions)
        {
            const Found* pack = ours.at(offset);
            ASSERT_NE(pack, nullptr) << offset;
            EXPECT_TRUE(isPartitionPack(pack->key, 0x02) || isPartitionPack(pack->key, 0x03) ||
                        isPartitionPack(pack->key, 0x04));
            EXPECT_EQ(number(file, pack->valueStart() + 8, 8), offset) << "ThisPartition";
        }

        // Fill items are there to bring the next item to the KAG grid.
        for (const Found& f : ours.items)
        {
            if (isFillItem(Key(f.key.data())))
            {
                EXPECT_EQ(f.end() % kag, 0u) << "fill at " << f.offset;
            }
        }
    }
}

TEST(KLVFixtures, OpAtomFilesHoldWhatMediaInfoTracesAndOneClipElement)
{
    // MediaInfo traces every item of these but the clip element, of which it shows the value.
    for (const char* name : {"opatom_mpeg2", "opatom_pcm"})
    {
        SCOPED_TRACE(name);
        const Walked& ours = walked(name);
        EXPECT_EQ(ours.items.size(), listedItems(name).size() + 1);
        const auto clips =
            std::count_if(ours.items.begin(), ours.items.end(),
                          [](const Found& f) { return isGCEssenceElement(Key(f.key.data())); });
        EXPECT_EQ(clips, 1);
        ASSERT_NE(ours.at(5632), nullptr) << "clip key at 5632 (tests/data/README.md)";
    }
    EXPECT_EQ(walked("opatom_pcm").at(5632)->length, 144000u) << "48000 samples of 3 bytes";
}

TEST(KLVDamaged, TruncatedFilesEndInTheElementThatIsCut)
{
    const Walked& clean = walked("xdcamhd422_1080i25");
    for (const char* name : {"damaged_truncated_30", "damaged_truncated_90", "damaged_no_footer"})
    {
        SCOPED_TRACE(name);
        const Walked& ours = walked(name);
        const UInt64 cut = damage(name, "cut_at");
        EXPECT_EQ(ours.size, cut);
        std::vector<const Found*> before;
        for (const Found& f : clean.items)
            if (f.offset < cut)
                before.push_back(&f);
        ASSERT_EQ(ours.items.size(), before.size()) << "no item lost, none made up";
        for (std::size_t i = 0; i < before.size(); ++i)
        {
            EXPECT_EQ(ours.items[i].offset, before[i]->offset);
            EXPECT_EQ(ours.items[i].key, before[i]->key);
            EXPECT_EQ(ours.items[i].length, before[i]->length);
        }
        const Found& last = ours.items.back();
        if (std::string(name) == "damaged_no_footer")
        {
            EXPECT_EQ(last.end(), cut) << "cut on an item boundary";
            EXPECT_EQ(ours.tail, 0u);
        }
        else
        {
            // ffprobe's last packet is that element, cut short.
            const Packet lastPacket = ffprobePackets(name).back();
            EXPECT_EQ(last.offset, UInt64(lastPacket.pos));
            EXPECT_GT(last.end(), cut);
            EXPECT_EQ(cut - last.valueStart(), UInt64(lastPacket.size));
            EXPECT_EQ(ours.tail, cut - last.valueStart()) << "no key in what is left of it";
        }
    }
}

TEST(KLVDamaged, GarbageIsSkippedUpToTheBodyPartitionPack)
{
    const std::string name = "damaged_garbage";
    const UInt64 garbageAt = damage(name, "garbage_at");
    const UInt64 garbageLength = damage(name, "garbage_len");
    const UInt64 bodyAt = damage(name, "body_partition_now_at");
    ASSERT_EQ(garbageAt + garbageLength, bodyAt);

    const Walked& ours = walked(name);
    expectCleanItems(ours,
                     [&](const Found& c)
                     {
                         return std::pair(c.offset + (c.offset >= garbageAt ? garbageLength : 0),
                                          c.offset == garbageAt ? garbageLength : 0);
                     });
    const Found* body = ours.at(bodyAt);
    ASSERT_NE(body, nullptr);
    EXPECT_TRUE(isPartitionPack(body->key, 0x03));

    // With a limit the search stops short, past the lure at 12276 that it does not take.
    MXF::SDK::DataIO::File::FileDataSource file(Platform::fromUtf8(testData(name + ".mxf")));
    KLVReader reader(file);
    file.seek(garbageAt);
    UInt64 skipped = 0;
    EXPECT_EQ(
        thrownMessage<Exceptions::KeyNotFound>([&] { reader.readKLV(skipped, garbageLength - 1); }),
        L"Exceeded maximum bytes to skip before finding a key. Started to search at 0x2e00 "
        L"Skipped 0x3e8 current position: 0x31ed");
    file.seek(garbageAt);
    EXPECT_THROW(reader.readKLV(skipped, damage(name, "lure_key_prefix_at") - garbageAt),
                 Exceptions::KeyNotFound);
    file.seek(garbageAt);
    auto item = reader.readKLV(skipped, garbageLength);
    EXPECT_EQ(skipped, garbageLength);
    EXPECT_EQ(item->keyPosition, bodyAt);
}

TEST(KLVDamaged, ALengthPastTheEndIsKeptAndTheSearchResumesAtTheNextElement)
{
    const std::string name = "damaged_bad_length";
    const UInt64 keyAt = damage(name, "element_key_at");
    const UInt64 lengthAt = damage(name, "ber_length_at");
    const UInt64 width = damage(name, "ber_width");
    const UInt64 oldLength = damage(name, "old_length");
    const UInt64 resumeAt = lengthAt + width + oldLength;

    const Walked& ours = walked(name);
    const Found* bad = ours.at(keyAt);
    ASSERT_NE(bad, nullptr);
    EXPECT_EQ(bad->length, damage(name, "new_length"));
    EXPECT_EQ(bad->lengthSize, width);
    EXPECT_EQ(bad->valueStart(), lengthAt + width);
    EXPECT_GT(bad->end(), ours.size);

    expectCleanItems(
        ours,
        [&](const Found& c) { return std::pair(c.offset, c.offset == resumeAt ? oldLength : 0); },
        keyAt);
    EXPECT_NE(ours.at(resumeAt), nullptr);

    // Without the resynchronisation, dropping the item moves to the end of the file at once.
    MXF::SDK::DataIO::File::FileDataSource file(Platform::fromUtf8(testData(name + ".mxf")));
    KLVReader reader(file);
    file.seek(keyAt);
    UInt64 skipped = 0;
    reader.readKLV(skipped, 0).reset();
    EXPECT_TRUE(file.eof());
}

TEST(KLVFixtures, ACleanFileReadInSmallPiecesGivesTheSameItems)
{
    const Bytes bytes = fileBytes("opatom_pcm.mxf");
    const Walked& whole = walked("opatom_pcm");
    for (const UInt64 piece : {7, 4093})
    {
        SCOPED_TRACE(piece);
        PiecewiseSource source(bytes, piece);
        KLVReader reader(source);
        for (const Found& expected : whole.items)
        {
            UInt64 skipped = 0;
            auto item = reader.readKLV(skipped, 0);
            ASSERT_EQ(item->keyPosition, expected.offset);
            EXPECT_EQ(Bytes(item->key.data(), item->key.data() + 16), expected.key);
            EXPECT_EQ(item->length, expected.length);
        }
        EXPECT_TRUE(source.eof());
    }
    // The damaged stretch of damaged_garbage, cut out: 11595 (the last header fill) to 13288.
    const Bytes garbage = fileBytes("damaged_garbage.mxf");
    const Bytes stretch(garbage.begin() + 11595, garbage.begin() + 13288);
    forEachSplit(stretch,
                 [](DataSource& source)
                 {
                     KLVReader reader(source);
                     UInt64 skipped = 0;
                     EXPECT_EQ(reader.readKLV(skipped, 0)->length, 161u);
                     auto body = reader.readKLV(skipped, 2000);
                     EXPECT_EQ(skipped, 1000u);
                     EXPECT_EQ(body->keyPosition, 12776u - 11595u);
                     body.reset();
                     EXPECT_TRUE(isFillItem(reader.readKLV(skipped, 0)->key));
                     EXPECT_TRUE(source.eof());
                 });
}
