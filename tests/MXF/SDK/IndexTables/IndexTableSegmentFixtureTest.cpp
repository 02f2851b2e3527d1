// Every index table segment of every fixture: read, held against what MediaInfo traced of it
// (expected/index, made by make-index-expectations.sh from the trace alone), written back byte for
// byte, and its offsets held against the packet positions ffprobe reports.
#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/IndexTables/IndexTableSegment.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/Packs/PartitionPack.h"
#include "TestSupport.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

using namespace Halvorn::Test;
using MXF::SDK::Platform::Int64;
using MXF::SDK::Platform::UInt32;
using MXF::SDK::Platform::UInt64;
using namespace Halvorn::Test::Support;
using namespace MXF::SDK::IndexTables;
namespace Memory = MXF::SDK::DataIO::Memory;
namespace KLV = MXF::SDK::KLV;

namespace
{

// Every fixture there is, so that new ones are held to the same.
std::vector<std::string> fixtures()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(testData("")))
        if (entry.path().extension() == ".mxf" && !isAvidFixture(entry.path().filename().string()))
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

const char* const SEGMENT_KEY = "06 0e 2b 34 02 53 01 01 0d 01 02 01 01 10 01 00";

struct ExpectedItem
{
    unsigned tag = 0;
    UInt64 length = 0;
    std::vector<std::string> value;
    UInt64 count = 0;
    UInt64 entrySize = 0;
    std::vector<std::vector<UInt64>> rows;
};

struct ExpectedSegment
{
    UInt64 offset = 0;
    UInt64 totalSize = 0;
    std::vector<ExpectedItem> items;

    const ExpectedItem* item(unsigned tag) const
    {
        for (const ExpectedItem& it : items)
            if (it.tag == tag)
                return &it;
        return nullptr;
    }
};

std::vector<ExpectedSegment> expectedSegments(const std::string& name)
{
    std::ifstream in(testData("expected/index/" + name + ".index.txt"));
    EXPECT_TRUE(in) << name;
    std::vector<ExpectedSegment> segments;
    std::string line;
    while (std::getline(in, line))
    {
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        if (kind == "segment")
        {
            segments.emplace_back();
            words >> segments.back().offset >> segments.back().totalSize;
            continue;
        }
        if (kind.empty() || kind[0] == '#')
            continue;
        EXPECT_FALSE(segments.empty()) << line;
        std::vector<ExpectedItem>& items = segments.back().items;
        if (kind == "item")
        {
            items.emplace_back();
            words >> std::hex >> items.back().tag >> std::dec >> items.back().length;
            continue;
        }
        ExpectedItem& item = items.back();
        if (kind == "value")
            for (std::string word; words >> word;)
                item.value.push_back(word);
        else if (kind == "array")
            words >> item.count >> item.entrySize;
        else
        {
            item.rows.emplace_back();
            for (UInt64 number; words >> number;)
                item.rows.back().push_back(number);
        }
    }
    return segments;
}

// Every place the segment key starts a KLV that fits in the file: a plain byte search, not our
// reader.
std::vector<UInt64> segmentOffsets(const Bytes& file)
{
    const Bytes key = hexBytes(SEGMENT_KEY);
    std::vector<UInt64> found;
    for (auto at = file.begin();
         (at = std::search(at, file.end(), key.begin(), key.end())) != file.end(); ++at)
        found.push_back(UInt64(at - file.begin()));
    return found;
}

std::unique_ptr<KLV::KLVItem> itemAt(Memory::MemoryDataSource& source, UInt64 offset)
{
    source.seek(offset);
    KLV::KLVReader reader(source);
    UInt64 skipped = 0;
    return reader.readKLV(skipped, 0);
}

Bytes written(const IndexTableSegment& segment)
{
    Memory::MemoryDataSink sink;
    segment.write(sink);
    return sink.data();
}

std::uint64_t number(const ExpectedItem& item, std::size_t at = 0)
{
    return std::stoull(item.value.at(at));
}

void checkFields(const IndexTableSegment& segment, const ExpectedSegment& expected)
{
    const auto has = [&](unsigned tag) { return expected.item(tag) != nullptr; };
    EXPECT_EQ(segment.hasInstanceUID(), has(0x3c0a));
    EXPECT_EQ(segment.hasIndexEditRate(), has(0x3f0b));
    EXPECT_EQ(segment.hasIndexStartPosition(), has(0x3f0c));
    EXPECT_EQ(segment.hasIndexDuration(), has(0x3f0d));
    EXPECT_EQ(segment.hasEditUnitByteCount(), has(0x3f05));
    EXPECT_EQ(segment.hasIndexSID(), has(0x3f06));
    EXPECT_EQ(segment.hasBodySID(), has(0x3f07));
    EXPECT_EQ(segment.hasSliceCount(), has(0x3f08));
    EXPECT_EQ(segment.hasPosTableCount(), has(0x3f0e));
    EXPECT_EQ(segment.deltaEntryArray() != nullptr, has(0x3f09));
    EXPECT_EQ(segment.indexEntryArray() != nullptr, has(0x3f0a));

    for (const ExpectedItem& item : expected.items)
    {
        SCOPED_TRACE("tag " + std::to_string(item.tag));
        switch (item.tag)
        {
        case 0x3c0a:
            EXPECT_EQ(Bytes(segment.instanceUID().data(), segment.instanceUID().data() + 16),
                      hexBytes(item.value.at(0)));
            break;
        case 0x3f0b:
            EXPECT_EQ(segment.indexEditRate().numerator(), std::stoll(item.value.at(0)));
            EXPECT_EQ(segment.indexEditRate().denominator(), std::stoll(item.value.at(1)));
            break;
        case 0x3f0c:
            EXPECT_EQ(segment.indexStartPosition().value(), std::stoll(item.value.at(0)));
            break;
        case 0x3f0d:
            EXPECT_EQ(segment.indexDuration().value(), std::stoll(item.value.at(0)));
            break;
        case 0x3f05:
            EXPECT_EQ(segment.editUnitByteCount().value(), number(item));
            break;
        case 0x3f06:
            EXPECT_EQ(segment.indexSID().value(), number(item));
            break;
        case 0x3f07:
            EXPECT_EQ(segment.bodySID().value(), number(item));
            break;
        case 0x3f08:
            EXPECT_EQ(segment.sliceCount().value(), number(item));
            break;
        case 0x3f0e:
            EXPECT_EQ(segment.posTableCount().value(), number(item));
            break;
        case 0x3f09:
            ASSERT_EQ(segment.deltaEntryCount(), item.count);
            EXPECT_EQ(segment.deltaEntryArray()->entrySize(), item.entrySize);
            EXPECT_EQ(segment.deltaEntryArray()->size(), item.length);
            for (UInt32 i = 0; i < item.count; ++i)
            {
                const DeltaEntry entry = segment.deltaEntry(i);
                const std::vector<UInt64>& row = item.rows.at(i);
                EXPECT_EQ(std::uint8_t(entry.posTableIndex()), row.at(0)) << i;
                EXPECT_EQ(entry.slice(), row.at(1)) << i;
                EXPECT_EQ(entry.elementDelta(), row.at(2)) << i;
            }
            break;
        case 0x3f0a:
        {
            ASSERT_EQ(segment.indexEntryCount(), item.count);
            EXPECT_EQ(segment.indexEntryArray()->entrySize(), item.entrySize);
            EXPECT_EQ(segment.indexEntryArray()->size(), item.length);
            const unsigned nsl = segment.sliceCount().value();
            const unsigned npe = segment.posTableCount().value();
            for (UInt32 i = 0; i < item.count; ++i)
            {
                const IndexEntry entry = segment.indexEntry(i);
                const std::vector<UInt64>& row = item.rows.at(i);
                ASSERT_EQ(row.size(), 4 + nsl + 2 * npe) << i;
                EXPECT_EQ(std::uint8_t(entry.temporalOffset()), row[0]) << i;
                EXPECT_EQ(std::uint8_t(entry.keyFrameOffset()), row[1]) << i;
                EXPECT_EQ(entry.flags(), row[2]) << i;
                EXPECT_EQ(entry.isRandomAccess(), (row[2] & 0x80) != 0) << i;
                EXPECT_EQ(entry.hasSequenceHeader(), (row[2] & 0x40) != 0) << i;
                EXPECT_EQ(entry.isForwardPrediction(), (row[2] & 0x20) != 0) << i;
                EXPECT_EQ(entry.isBackwardPrediction(), (row[2] & 0x10) != 0) << i;
                EXPECT_EQ(entry.streamOffset(), row[3]) << i;
                for (unsigned s = 0; s < nsl; ++s)
                    EXPECT_EQ(entry.sliceOffset(s), row[4 + s]) << i;
                for (unsigned p = 0; p < npe; ++p)
                {
                    EXPECT_EQ(std::uint32_t(entry.posTable(p).numerator()), row[4 + nsl + 2 * p]);
                    EXPECT_EQ(std::uint32_t(entry.posTable(p).denominator()), row[5 + nsl + 2 * p]);
                }
            }
            break;
        }
        default:
            ADD_FAILURE() << "tag outside the segment's: " << item.tag;
        }
    }
}

Bytes slice(const Bytes& file, UInt64 offset, UInt64 size)
{
    return Bytes(file.begin() + std::ptrdiff_t(offset),
                 file.begin() + std::ptrdiff_t(offset + size));
}

TEST(IndexTableSegmentFixture, EverySegmentMatchesMediaInfoAndWritesBackIdentically)
{
    int traced = 0;
    int untraced = 0;
    for (const std::string& name : fixtures())
    {
        SCOPED_TRACE(name);
        const Bytes file = fileBytes(name + ".mxf");
        ASSERT_FALSE(file.empty());
        // MediaInfo stops tracing at the broken element of damaged_bad_length, before its footer;
        // the file is xdcamhd422_1080i25 with one element length changed, its footer untouched.
        const std::vector<ExpectedSegment> expected =
            expectedSegments(name == "damaged_bad_length" ? "xdcamhd422_1080i25" : name);
        const std::vector<UInt64> offsets = segmentOffsets(file);
        for (const ExpectedSegment& segment : expected)
            EXPECT_NE(std::find(offsets.begin(), offsets.end(), segment.offset), offsets.end())
                << segment.offset;

        Memory::MemoryDataSource source(file.data(), file.size());
        for (const UInt64 offset : offsets)
        {
            SCOPED_TRACE(offset);
            const auto item = itemAt(source, offset);
            if (item->totalSize() > file.size() - offset)
            {
                // Cut by the end of the file (damaged_truncated_index): in the middle of an item
                // header there.
                EXPECT_EQ(thrownMessage<MXF::SDK::Exceptions::InvalidIndexSegment>(
                              [&] { IndexTableSegment{*item}; }),
                          L"Invalid MXF Index Segment set (local tag should be 2 bytes and "
                          L"length field 2 bytes.)");
                continue;
            }
            const IndexTableSegment segment(*item);
            EXPECT_EQ(source.position(), offset + item->totalSize());
            ASSERT_EQ(segment.size(), item->totalSize());
            EXPECT_EQ(written(segment), slice(file, offset, item->totalSize()));
            // And once more through a copy, read from what was written.
            const Bytes again = written(IndexTableSegment(segment));
            Memory::MemoryDataSource copy(again.data(), again.size());
            EXPECT_EQ(written(IndexTableSegment(*itemAt(copy, 0))), again);

            const auto found = std::find_if(expected.begin(), expected.end(),
                                            [&](const auto& e) { return e.offset == offset; });
            if (found == expected.end())
            {
                ++untraced; // past where MediaInfo stopped: body 3 of multibody_180p50
                continue;
            }
            EXPECT_EQ(segment.size(), found->totalSize);
            checkFields(segment, *found);
            ++traced;
        }
    }
    EXPECT_EQ(traced, 15);
    EXPECT_EQ(untraced, 1);
}

IndexTableSegment segmentAt(const Bytes& file, UInt64 offset)
{
    Memory::MemoryDataSource source(file.data(), file.size());
    return IndexTableSegment(*itemAt(source, offset));
}

// damaged_bad_index is xdcamhd422_1080i25 with three stream offsets changed, and nothing else.
TEST(IndexTableSegmentFixture, ChangedStreamOffsetsAreReadWhereTheyWereChanged)
{
    std::map<std::string, UInt64> damage;
    std::ifstream in(testData("damage-offsets.txt"));
    for (std::string file, what, value; in >> file >> what >> value;)
        if (file == "damaged_bad_index.mxf")
            damage[what] = std::stoull(value);
    const UInt64 at = damage.at("index_segment_at");
    const IndexTableSegment bad = segmentAt(fileBytes("damaged_bad_index.mxf"), at);
    const IndexTableSegment clean = segmentAt(fileBytes("xdcamhd422_1080i25.mxf"), at);
    ASSERT_EQ(bad.indexEntryCount(), damage.at("entry_count"));
    for (UInt32 i = 0; i < bad.indexEntryCount(); ++i)
    {
        const std::string n = "entry" + std::to_string(i);
        if (damage.count(n + "_new"))
        {
            EXPECT_EQ(bad.indexEntry(i).streamOffset(), damage.at(n + "_new"));
            EXPECT_EQ(clean.indexEntry(i).streamOffset(), damage.at(n + "_old"));
        }
        else
            EXPECT_EQ(bad.indexEntry(i).streamOffset(), clean.indexEntry(i).streamOffset()) << i;
    }
}

// ffprobe's packets by stream, each in file order.
std::map<int, std::vector<Packet>> packets(const std::string& name)
{
    std::map<int, std::vector<Packet>> byStream;
    for (const Packet& p : ffprobePackets(name))
        byStream[p.stream].push_back(p);
    return byStream;
}

// Where each partition of a body SID begins its share of the essence stream: its BodyOffset, and
// the file position of its first essence key (after the pack, fill, metadata and index segments).
struct EssencePart
{
    UInt64 bodyOffset;
    UInt64 keyPosition;
    UInt64 valueStart;
};

// Not the primer nor the RIP, which share the first 13 bytes.
bool isPartitionPack(const KLV::Key& key)
{
    return MXF::SDK::Packs::PartitionPack::isPartitionPack(key) && key[13] >= 0x02 &&
           key[13] <= 0x04;
}

std::vector<EssencePart> essenceParts(const Bytes& file, UInt64 bodySID)
{
    const Bytes prefix = hexBytes("06 0e 2b 34 02 05 01 01 0d 01 02 01 01");
    std::vector<EssencePart> parts;
    Memory::MemoryDataSource source(file.data(), file.size());
    for (auto at = file.begin();
         (at = std::search(at, file.end(), prefix.begin(), prefix.end())) != file.end(); ++at)
    {
        const auto pack = itemAt(source, UInt64(at - file.begin()));
        if (!isPartitionPack(pack->key) ||
            MXF::SDK::Packs::PartitionPack(*pack).bodySID().value() != bodySID)
            continue;
        const UInt64 bodyOffset = [&]
        {
            Memory::MemoryDataSource again(file.data(), file.size());
            return MXF::SDK::Packs::PartitionPack(*itemAt(again, UInt64(at - file.begin())))
                .bodyOffset()
                .value();
        }();
        KLV::KLVReader reader(source);
        UInt64 skipped = 0;
        // Each item is dropped before the next is read: dropping it moves the source past it.
        for (auto item = reader.readKLV(skipped, 0);;)
        {
            if (KLV::isEssenceKey(item->key))
            {
                parts.push_back(
                    {bodyOffset, item->keyPosition, item->keyPosition + 16 + item->lengthSize});
                break;
            }
            if (isPartitionPack(item->key))
                break;
            item.reset();
            item = reader.readKLV(skipped, 0);
        }
    }
    return parts;
}

// The part of the essence stream that holds `streamOffset`.
const EssencePart& partOf(const std::vector<EssencePart>& parts, UInt64 streamOffset)
{
    const EssencePart* found = &parts.at(0);
    for (const EssencePart& part : parts)
        if (part.bodyOffset <= streamOffset && part.bodyOffset >= found->bodyOffset)
            found = &part;
    return *found;
}

TEST(IndexTableSegmentFixture, StreamOffsetsGiveFfprobePacketPositions)
{
    std::size_t checked = 0;
    for (const std::string name :
         {"xdcamhd422_1080i25", "xdcamhd422_720p50", "xdcamhd422_1080i2997df", "imx50_625",
          "opatom_mpeg2", "opatom_pcm", "multibody_180p50", "runin_100", "damaged_footer_zero",
          "damaged_no_rip", "damaged_open_header"})
    {
        SCOPED_TRACE(name);
        const Bytes file = fileBytes(name + ".mxf");
        std::vector<IndexTableSegment> segments;
        for (const UInt64 at : segmentOffsets(file))
            segments.push_back(segmentAt(file, at));
        ASSERT_FALSE(segments.empty());
        const IndexTableSegment& first = segments.front();
        const std::vector<EssencePart> parts = essenceParts(file, first.bodySID().value());
        ASSERT_FALSE(parts.empty());
        // Clip-wrapped OP-Atom counts from the first byte of the clip's value.
        const bool clip = name.rfind("opatom", 0) == 0;

        const auto byStream = packets(name);
        const UInt64 firstElement = first.deltaEntryCount() - byStream.size();
        const UInt64 byteCount = first.editUnitByteCount().value();
        for (const auto& [stream, list] : byStream)
        {
            SCOPED_TRACE("stream " + std::to_string(stream));
            const DeltaEntry delta = first.deltaEntry(UInt32(firstElement + stream));
            for (std::size_t n = 0; n < list.size(); ++n)
            {
                const UInt64 pos = list[n].pos;
                UInt64 streamOffset = 0;
                UInt64 inUnit = 0;
                if (byteCount != 0)
                    streamOffset = (clip ? UInt64(list[n].pts) : n) * byteCount;
                else
                {
                    // The segment that indexes edit unit n.
                    const auto covering = std::find_if(
                        segments.begin(), segments.end(),
                        [&](const IndexTableSegment& s)
                        {
                            const Int64 start = s.indexStartPosition().value();
                            return Int64(n) >= start && Int64(n) < start + s.indexEntryCount();
                        });
                    ASSERT_NE(covering, segments.end()) << "edit unit " << n;
                    const IndexEntry entry = covering->indexEntry(
                        UInt32(Int64(n) - covering->indexStartPosition().value()));
                    streamOffset = entry.streamOffset();
                    if (!clip && delta.slice())
                        inUnit = entry.sliceOffset(delta.slice() - 1u);
                }
                if (!clip)
                    inUnit += delta.elementDelta();
                const EssencePart& part = partOf(parts, streamOffset);
                const UInt64 start = clip ? part.valueStart : part.keyPosition;
                EXPECT_EQ(pos, start + streamOffset - part.bodyOffset + inUnit) << "packet " << n;
                ++checked;
            }
        }
    }
    EXPECT_EQ(checked, 2961u);
}

} // namespace
