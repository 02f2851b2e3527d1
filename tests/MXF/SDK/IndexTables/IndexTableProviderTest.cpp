// The cache of index table segments and the providers over it: the cache's rules in memory, the
// providers on multibody_180p50.mxf, whose segments the fixture README lists from its RIP and
// packs.

#include "MXF/SDK/MXFIO/IndexTableProvider.h"

#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/MXFIO/Essence/EssenceTestSupport.h"

#include <gtest/gtest.h>

using namespace MXF::SDK;
using namespace MXF::SDK::IndexTables;
using Halvorn::Test::Essence::exceptionText;
using Halvorn::Test::Essence::readerOf;

namespace
{

SegmentHandle segment(Int64 start, Int64 duration, UInt32 bodySID = 1, UInt32 indexSID = 2,
                      UInt32 byteCount = 0)
{
    auto made = std::make_shared<IndexTableSegment>();
    made->setIndexEditRate(Types::Rational(25, 1));
    made->setIndexStartPosition(start);
    made->setIndexDuration(duration);
    made->setBodySID(bodySID);
    if (indexSID != 0)
        made->setIndexSID(indexSID);
    if (byteCount != 0)
        made->setEditUnitByteCount(byteCount);
    return made;
}

Int64 startOf(const SegmentHandle& found)
{
    return found ? found->indexStartPosition().value() : -1;
}

TEST(IndexTableCompleteCacheTest, KeepsOneSegmentPerStartTheLongest)
{
    IndexTableCompleteCache cache(2, 1);
    const SegmentHandle first = segment(0, 10);
    cache.add(first);
    cache.add(first);
    cache.add(segment(0, 5));
    ASSERT_EQ(cache.segments().size(), 1u);
    EXPECT_EQ(cache.segments()[0], first);
    const SegmentHandle longer = segment(0, 12);
    cache.add(longer);
    EXPECT_EQ(cache.segments()[0], longer);
    cache.add(nullptr);
    EXPECT_EQ(cache.segments().size(), 1u);
    EXPECT_EQ(cache.duration(), 12);
}

TEST(IndexTableCompleteCacheTest, FindsTheSegmentOfAnEditUnit)
{
    IndexTableCompleteCache cache(2, 1);
    cache.add(segment(10, 10));
    cache.add(segment(0, 10));
    cache.add(segment(25, 5));
    EXPECT_EQ(startOf(cache.segmentFor(-1)), -1);
    EXPECT_EQ(startOf(cache.segmentFor(0)), 0);
    EXPECT_EQ(startOf(cache.segmentFor(9)), 0);
    EXPECT_EQ(startOf(cache.segmentFor(10)), 10);
    EXPECT_EQ(startOf(cache.segmentFor(19)), 10);
    EXPECT_EQ(startOf(cache.segmentFor(20)), -1); // the gap
    EXPECT_EQ(startOf(cache.segmentFor(29)), 25);
    EXPECT_EQ(startOf(cache.segmentFor(30)), -1); // beyond the last
    EXPECT_EQ(cache.duration(), 30);
}

TEST(IndexTableCompleteCacheTest, ConstantSizeSegmentOfDurationZeroCoversAllAfter)
{
    IndexTableCompleteCache cache(2, 1);
    cache.add(segment(0, 0, 1, 2, 250000));
    EXPECT_EQ(startOf(cache.segmentFor(0)), 0);
    EXPECT_EQ(startOf(cache.segmentFor(1000000)), 0);
    IndexTableCompleteCache plain(2, 1);
    plain.add(segment(0, 0));
    EXPECT_EQ(startOf(plain.segmentFor(0)), -1);
}

TEST(IndexTableCompleteCacheTest, RefusesOtherStreamsButTakesASegmentWithoutIndexSID)
{
    IndexTableCompleteCache cache(2, 1);
    EXPECT_EQ(exceptionText([&] { cache.add(segment(0, 1, 3)); }),
              "Trying to cache an IndexTableSegment with different bodySID");
    EXPECT_EQ(exceptionText([&] { cache.add(segment(0, 1, 1, 5)); }),
              "Trying to cache an IndexTableSegment with different indexSID");
    cache.add(segment(0, 4, 1, 0));
    EXPECT_EQ(startOf(cache.segmentFor(3)), 0);
}

// README: segments (start, duration) (0, 262) in body 2, (262, 252) in body 3, (514, 11) in the
// footer; 525 edit units.
void expectMultibodySegments(IndexTableProvider& provider)
{
    EXPECT_EQ(startOf(provider.segmentFor(520)), 514);
    EXPECT_EQ(startOf(provider.segmentFor(0)), 0);
    EXPECT_EQ(startOf(provider.segmentFor(261)), 0);
    EXPECT_EQ(startOf(provider.segmentFor(262)), 262);
    EXPECT_EQ(startOf(provider.segmentFor(513)), 262);
    EXPECT_EQ(startOf(provider.segmentFor(524)), 514);
    EXPECT_EQ(startOf(provider.segmentFor(525)), -1);
    EXPECT_EQ(provider.duration(), 525);
    const SegmentHandle last = provider.segmentFor(524);
    EXPECT_EQ(last->indexDuration().value(), 11);
    EXPECT_EQ(last->bodySID().value(), 1u);
    EXPECT_EQ(last->indexSID().value(), 2u);
}

TEST(IndexTableProvidersTest, ParseOnRequestParsesOnlyWhatIsAskedFor)
{
    auto reader = readerOf("multibody_180p50.mxf");
    IndexTableParseOnRequestProvider provider(*reader, 2, 1);
    EXPECT_EQ(startOf(provider.segmentFor(10)), 0);
    EXPECT_EQ(provider.cache().segments().size(), 1u);
    expectMultibodySegments(provider);
    EXPECT_EQ(provider.cache().segments().size(), 3u);
}

TEST(IndexTableProvidersTest, ParseOnRequestFollowsTheChainWithoutARIP)
{
    // The same segments when the RIP is gone: damaged_no_rip is 1080i25 less its RIP, whose one
    // segment is in the footer (25 edit units).
    auto reader = readerOf("damaged_no_rip.mxf");
    IndexTableParseOnRequestProvider provider(*reader, 2, 1);
    EXPECT_EQ(startOf(provider.segmentFor(24)), 0);
    EXPECT_EQ(provider.duration(), 25);
    EXPECT_EQ(startOf(provider.segmentFor(25)), -1);
}

TEST(IndexTableProvidersTest, EstimateStartsNearTheEditUnit)
{
    auto reader = readerOf("multibody_180p50.mxf");
    IndexTablePositionEstimateProvider provider(*reader, 2, 1, 525);
    EXPECT_EQ(startOf(provider.segmentFor(520)), 514);
    // 520/525 of the bytes falls in body 3 (indexing 262..513, written with it); the footer,
    // next to it, holds the segment. Body 2 at the start was never parsed.
    ASSERT_EQ(provider.cache().segments().size(), 2u);
    EXPECT_EQ(provider.cache().segments()[0]->indexStartPosition().value(), 262);
    expectMultibodySegments(provider);
}

TEST(IndexTableProvidersTest, StreamingSearchesThePartitionsSeen)
{
    auto reader = readerOf("multibody_180p50.mxf");
    IndexTableStreamingProvider provider(*reader, 2, 1);
    EXPECT_TRUE(provider.partitionOffsets().empty());
    expectMultibodySegments(provider);
    EXPECT_EQ(provider.partitionOffsets(), (std::vector<UInt64>{1085952, 2052096, 2097152}));
    EXPECT_EQ(IndexTableStreamingProvider::READ_SIZE, 83886080u);
    EXPECT_EQ(IndexTableStreamingProvider::POLL_COUNT, 5000u);
}

TEST(IndexTableProvidersTest, StreamingNeedsAHeader)
{
    // One fill item longer than the run-in allowed, and nothing after it: no header partition.
    std::vector<std::uint8_t> bytes = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x01, 0x03,
                                       0x01, 0x02, 0x10, 0x01, 0x00, 0x00, 0x00, 0x10};
    bytes.resize(bytes.size() + 16, 0);
    auto source = std::make_shared<DataIO::Memory::MemoryDataSource>(bytes.data(), bytes.size());
    MXFIO::Reader2 reader(source, Halvorn::Test::Essence::dictionary(), 10);
    EXPECT_EQ(exceptionText([&] { IndexTableStreamingProvider(reader, 2, 1); }),
              "headerPartition != 0: Cannot stream MXF file without header partition!");
}

} // namespace
