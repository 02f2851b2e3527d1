// The ffmpeg fixtures and the damaged copies of tests/data read by Reader and Reader2. What is
// expected comes from MediaInfo's trace (expected/NAME.partitions.txt and NAME.klv.txt) and from
// the offsets the fixture script wrote to damage-offsets.txt.
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "ReaderTestSupport.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

using namespace Halvorn::Test::MXFIO;
using namespace MXF::SDK;
using Packs::PartitionPack;

namespace
{

std::string kindName(const PartitionPack& pack)
{
    switch (pack.partitionKind())
    {
    case PartitionPack::HEADER_PARTITION:
        return "header";
    case PartitionPack::BODY_PARTITION:
        return "body";
    default:
        return "footer";
    }
}

std::vector<Partition*> walkForward(Reader& reader)
{
    std::vector<Partition*> found;
    for (Partition* p = reader.headerPartition(); p != nullptr && found.size() < 100;
         p = reader.nextPartition(*p))
        found.push_back(p);
    return found;
}

std::vector<Partition*> walkBackward(Reader& reader, Partition* last)
{
    std::vector<Partition*> found;
    for (Partition* p = last; p != nullptr && found.size() < 100; p = reader.previousPartition(*p))
        found.push_back(p);
    std::reverse(found.begin(), found.end());
    return found;
}

std::vector<std::uint64_t> positions(const std::vector<Partition*>& partitions)
{
    std::vector<std::uint64_t> result;
    for (const Partition* p : partitions)
        result.push_back(p->position());
    return result;
}

// The partitions MediaInfo lists are found, in order, with the fields it read.
void expectListed(const std::string& name, const std::vector<Partition*>& found)
{
    std::size_t at = 0;
    for (const ListedPartition& listed : listedPartitions(name))
    {
        while (at < found.size() && found[at]->position() != listed.offset)
            ++at;
        ASSERT_LT(at, found.size()) << name << ": no partition at " << listed.offset;
        const PartitionPack& pack = found[at]->partitionPack();
        EXPECT_EQ(kindName(pack), listed.kind) << name << " " << listed.offset;
        EXPECT_EQ(pack.isOpen(), listed.status == "open") << name << " " << listed.offset;
        EXPECT_EQ(pack.isComplete(), listed.completeness == "complete");
        EXPECT_EQ(pack.thisPartition().value(), listed.thisPartition);
        EXPECT_EQ(pack.previousPartition().value(), listed.previousPartition);
        EXPECT_EQ(pack.footerPartition().value(), listed.footerPartition);
        EXPECT_EQ(pack.headerByteCount().value(), listed.headerByteCount);
        EXPECT_EQ(pack.indexByteCount().value(), listed.indexByteCount);
        EXPECT_EQ(pack.indexSID().value(), listed.indexSID);
        EXPECT_EQ(pack.bodySID().value(), listed.bodySID);
        EXPECT_EQ(pack.kagSize().value(), listed.kag);
    }
}

// Sets MediaInfo traced between the primer and the end of what HeaderByteCount covers.
std::size_t listedSetCount(const std::string& name, std::uint64_t primer, std::uint64_t count)
{
    std::size_t sets = 0;
    for (const ListedItem& item : listedItems(name))
        if (item.offset > primer && item.offset < primer + count &&
            item.key.compare(0, 10, "060e2b3402") == 0)
            ++sets;
    return sets;
}

std::uint64_t listedPrimerAfter(const std::string& name, std::uint64_t from)
{
    for (const ListedItem& item : listedItems(name))
        if (item.offset >= from && item.key == "060e2b34020501010d01020101050100")
            return item.offset;
    return 0;
}

const std::vector<std::string> FIXTURES = {
    "xdcamhd422_1080i25",  "xdcamhd422_720p50", "xdcamhd422_1080i2997df", "imx50_625",
    "opatom_mpeg2",        "opatom_pcm",        "multibody_180p50",       "runin_100",
    "damaged_open_header", "damaged_no_rip",    "damaged_footer_zero",    "damaged_bad_index"};

} // namespace

TEST(ReaderFixtures, EveryListedPartitionIsFoundForwardAndBackward)
{
    for (const std::string& name : FIXTURES)
        for (const NamedSource& source : sourcesOf(name + ".mxf"))
        {
            SCOPED_TRACE(name + ", " + source.name);
            auto reader = readerOf(source.open());
            const std::vector<Partition*> forward = walkForward(*reader);
            expectListed(name, forward);
            Partition* footer = reader->footerPartition();
            ASSERT_NE(footer, nullptr);
            EXPECT_EQ(footer, forward.back());
            EXPECT_EQ(footer->partitionPack().partitionKind(), PartitionPack::FOOTER_PARTITION);
            EXPECT_EQ(positions(walkBackward(*reader, footer)), positions(forward));

            // A fresh reader walking backward first finds the same packs.
            auto fresh = readerOf(source.open());
            const std::vector<Partition*> backward = walkBackward(*fresh, fresh->footerPartition());
            expectListed(name, backward);
            EXPECT_EQ(positions(backward), positions(forward));
            // The plain Reader trusts the header's field, which is 0 in one of them.
            if (name != "damaged_footer_zero")
            {
                auto plain = readerOf<Reader>(source.open());
                ASSERT_NE(plain->footerPartition(), nullptr);
                EXPECT_EQ(plain->footerPartition()->position(), footer->position());
            }
        }
}

TEST(ReaderFixtures, MultibodyHasAllItsPartitionsIncludingTheOneMediaInfoMisses)
{
    const std::string file = "multibody_180p50.mxf";
    const std::vector<std::uint64_t> expected = {
        0, damageOffset(file, "body_partition_1_at"), damageOffset(file, "body_partition_2_at"),
        damageOffset(file, "body_partition_3_at"), damageOffset(file, "footer_partition_at")};
    auto reader = readerOf(fileSource(file));
    EXPECT_EQ(positions(walkForward(*reader)), expected);
    auto backward = readerOf(fileSource(file));
    EXPECT_EQ(positions(walkBackward(*backward, backward->footerPartition())), expected);

    // The RIP agrees, and the partitions of a body SID are found from the header on.
    const Packs::RandomIndexPack* rip = reader->randomIndexPack();
    ASSERT_NE(rip, nullptr);
    ASSERT_EQ(rip->entries().size(), 5u);
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(rip->entries()[i].byteOffset, expected[i]);
    EXPECT_EQ(reader->partitionByBodySID(1)->position(), expected[1]);
    EXPECT_EQ(reader->partitionByBodySID(0)->position(), 0u);
    EXPECT_EQ(reader->partitionByBodySID(7), nullptr);
    EXPECT_EQ(reader->partitionAt(expected[3])->position(), expected[3]);
    EXPECT_EQ(reader->partitionAt(expected[3] + 512), nullptr); // an index segment stands there

    // Each body partition's index segment and its first essence item.
    Partition* body2 = reader->partitionAt(expected[2]);
    std::unique_ptr<KLV::KLVItem> segment = body2->nextIndexSegment();
    ASSERT_NE(segment, nullptr);
    EXPECT_EQ(segment->keyPosition, expected[2] + 512);
    EXPECT_TRUE(KLV::isIndexTableSegmentKey(segment->key));
    segment.reset();
    EXPECT_EQ(body2->nextIndexSegment(), nullptr);
    // The body starts after the index area, at the pack's BodyOffset of the essence.
    EXPECT_EQ(body2->bodyStart(), expected[2] + 512 + 4608);
    EXPECT_EQ(Exceptions::toWide(exceptionText([&] { body2->seekBody(1000); })),
              L"offset >= partitionPack ().bodyOffset (): Trying to seek to 0x3e8 but partition "
              L"(0x109200) body starts at 107800");
}

TEST(ReaderFixtures, MetadataOfHeaderAndFooterHasTheSetsMediaInfoTraced)
{
    for (const std::string& name : FIXTURES)
        for (const NamedSource& source : sourcesOf(name + ".mxf"))
        {
            SCOPED_TRACE(name + ", " + source.name);
            auto reader = readerOf(source.open());
            for (Partition* partition : {reader->headerPartition(), reader->footerPartition()})
            {
                const std::uint64_t count = partition->partitionPack().headerByteCount().value();
                if (count == 0)
                {
                    // A footer without metadata has its index segment after the fill.
                    EXPECT_EQ(
                        exceptionText([&] { partition->metadata(); }),
                        "PrimerPack::isPrimerPack (item -> key): This partition (0x" +
                            [](std::uint64_t v)
                            {
                                std::ostringstream s;
                                s << std::hex << v;
                                return s.str();
                            }(partition->offset()) +
                            ") does not have a primer pack at the beginning of the metadata.");
                    continue;
                }
                const std::uint64_t primer = listedPrimerAfter(name, partition->position());
                ASSERT_NE(primer, 0u);
                EXPECT_EQ(partition->headerStart(), primer);
                std::unique_ptr<Metadata::PartitionMetadata> metadata = partition->metadata();
                const std::size_t listed = listedSetCount(name, primer, count);
                EXPECT_GT(listed, 10u);
                EXPECT_EQ(metadata->setCount(), listed) << partition->position();
                EXPECT_NO_THROW(metadata->preface());
            }
        }
}

TEST(ReaderFixtures, IndexAndEssenceOfTheFrameWrappedFile)
{
    const std::string name = "xdcamhd422_1080i25";
    auto reader = readerOf(fileSource(name + ".mxf"));
    Partition* header = reader->headerPartition();
    Partition* body = reader->nextPartition(*header);
    Partition* footer = reader->footerPartition();
    EXPECT_EQ(header->nextIndexSegment(), nullptr); // IndexSID 0
    UInt64 skipped = 1;
    EXPECT_EQ(header->nextEssence(skipped, 0), nullptr); // BodySID 0
    EXPECT_EQ(skipped, 0u);

    std::unique_ptr<KLV::KLVItem> segment = footer->nextIndexSegment();
    ASSERT_NE(segment, nullptr);
    EXPECT_EQ(footer->state(), Partition::INDEX);
    EXPECT_EQ(segment->keyPosition, 2644992u);
    EXPECT_EQ(segment->length, 544u);
    segment.reset();
    EXPECT_EQ(footer->nextIndexSegment(), nullptr); // fill, then the end of the area

    // Every item of the body, from its first to the footer's pack; the ones MediaInfo traced are
    // among them.
    EXPECT_EQ(body->state(), Partition::START);
    std::vector<std::pair<UInt64, UInt64>> items;
    UInt64 end = 0;
    for (std::unique_ptr<KLV::KLVItem> item; (item = body->nextEssence(skipped, 0));)
    {
        EXPECT_EQ(body->state(), Partition::BODY);
        EXPECT_EQ(skipped, 0u);
        // A walk that goes elsewhere in between doesn't lose the place.
        if (items.size() == 3)
            reader->previousPartition(*footer);
        items.emplace_back(item->keyPosition, item->length);
        end = item->keyPosition + item->totalSize();
    }
    EXPECT_EQ(body->state(), Partition::END);
    ASSERT_FALSE(items.empty());
    EXPECT_EQ(items.front().first, 12288u);
    EXPECT_EQ(end, footer->position());
    std::size_t traced = 0;
    for (const ListedItem& listed : listedItems(name))
    {
        if (listed.offset < 12288 || listed.offset >= footer->position())
            continue;
        ++traced;
        EXPECT_NE(
            std::find(items.begin(), items.end(), std::make_pair(listed.offset, listed.length)),
            items.end())
            << listed.offset;
    }
    EXPECT_GT(traced, 90u);

    // Stream offset 512 is the first picture element (ffprobe's packet 0 at 12800).
    body->seekBody(512);
    std::unique_ptr<KLV::KLVItem> picture = body->nextEssence(skipped, 0);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->keyPosition, 12800u);
    EXPECT_TRUE(KLV::isGCEssenceElement(picture->key));
}

TEST(ReaderFixtures, IndexInTheHeaderOfTheD10File)
{
    auto reader = readerOf(fileSource("imx50_625.mxf"));
    Partition* header = reader->headerPartition();
    std::unique_ptr<KLV::KLVItem> segment = header->nextIndexSegment();
    ASSERT_NE(segment, nullptr);
    EXPECT_EQ(segment->keyPosition,
              damageOffset("damaged_truncated_index.mxf", "index_segment_at"));
    segment.reset();
    EXPECT_EQ(header->nextIndexSegment(), nullptr);
    UInt64 skipped = 0;
    std::unique_ptr<KLV::KLVItem> first = header->nextEssence(skipped, 0);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->keyPosition, header->bodyStart());
    EXPECT_EQ(header->bodyStart(), 6144u + 512u);
}

TEST(ReaderFixtures, RunInOf100Bytes)
{
    const std::string file = "runin_100.mxf";
    const UInt64 runIn = damageOffset(file, "run_in_len");
    auto reader = readerOf(fileSource(file), 65536);
    Partition* header = reader->headerPartition();
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(reader->runInSize(), runIn);
    EXPECT_EQ(header->position(), damageOffset(file, "header_partition_at"));
    const Bytes bytes = fileBytes(file);
    EXPECT_EQ(reader->runInBytes(), Bytes(bytes.begin(), bytes.begin() + runIn));
    Bytes fromSource(runIn);
    EXPECT_EQ(reader->runIn().read(fromSource.data(), 1000), runIn);
    EXPECT_EQ(fromSource, reader->runInBytes());
    for (Partition* p : walkForward(*reader))
    {
        EXPECT_EQ(p->partitionPack().thisPartition().value(), p->offset());
        EXPECT_EQ(p->position(), p->offset() + runIn);
    }
    EXPECT_EQ(reader->footerPartition()->offset(), 2644480u);
    EXPECT_EQ(reader->latestHeaderMetadataPartition().position(), runIn);
    EXPECT_EQ(reader->partitionAt(11776)->position(), 11776 + runIn);
    UInt64 skipped = 0;
    std::unique_ptr<KLV::KLVItem> first = reader->partitionAt(11776)->nextEssence(skipped, 0);
    EXPECT_EQ(first->keyPosition, 12288 + runIn);

    // Without room for the run-in there is no key where the file starts.
    auto strict = readerOf(fileSource(file), 0);
    EXPECT_THROW(strict->headerPartition(), Exceptions::KeyNotFound);
}

TEST(ReaderFixtures, OpenHeaderTakesTheFootersMetadata)
{
    const std::string file = "damaged_open_header.mxf";
    const UInt64 footer = damageOffset(file, "footer_partition_at");
    auto reader2 = readerOf(fileSource(file));
    Partition& latest = reader2->latestHeaderMetadataPartition();
    EXPECT_EQ(latest.position(), footer);
    EXPECT_EQ(latest.headerStart(), damageOffset(file, "footer_metadata_at"));
    EXPECT_NO_THROW(latest.metadata()->preface());
    auto reader = readerOf<Reader>(fileSource(file));
    EXPECT_EQ(reader->latestHeaderMetadataPartition().position(), footer);

    // A closed header is the answer at once.
    auto clean = readerOf(fileSource("xdcamhd422_1080i25.mxf"));
    EXPECT_EQ(&clean->latestHeaderMetadataPartition(), clean->headerPartition());
}

// Every file of tests/data, damaged or not, through everything Reader2 does: it either works or
// throws one of the toolkit's exceptions, and ends.
TEST(ReaderFixtures, EveryFileEnds)
{
    for (const auto& entry : std::filesystem::directory_iterator(dataDir()))
    {
        if (entry.path().extension() != ".mxf")
            continue;
        const std::string name = entry.path().filename().string();
        SCOPED_TRACE(name);
        auto reader = readerOf(memorySource(fileBytes(name)));
        std::vector<Partition*> seen;
        try
        {
            for (Partition* p = reader->headerPartition(); p != nullptr && seen.size() < 50;
                 p = reader->nextPartition(*p))
                seen.push_back(p);
        }
        catch (const Exceptions::BaseException&)
        {
        }
        try
        {
            for (Partition* p = reader->footerPartitionIfAny(); p != nullptr && seen.size() < 100;
                 p = reader->previousPartition(*p))
                seen.push_back(p);
        }
        catch (const Exceptions::BaseException&)
        {
        }
        try
        {
            reader->latestHeaderMetadataPartition().metadata();
        }
        catch (const Exceptions::BaseException&)
        {
        }
        for (Partition* p : seen)
        {
            try
            {
                UInt64 skipped = 0;
                for (int i = 0; i < 1000 && p->nextIndexSegment(); ++i)
                {
                }
                for (int i = 0; i < 100000 && p->nextEssence(skipped, 4096); ++i)
                {
                }
            }
            catch (const Exceptions::BaseException&)
            {
            }
        }
        EXPECT_FALSE(name.rfind("xdcam", 0) == 0 && seen.empty());
    }
}
