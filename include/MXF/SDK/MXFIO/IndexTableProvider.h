#pragma once

#include "MXF/SDK/IndexTables/IndexTableSegment.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Synchronization/Mutex.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace MXF::SDK::MXFIO
{
class Partition;
class Reader;
} // namespace MXF::SDK::MXFIO

namespace MXF::SDK::IndexTables
{

using Platform::Int64;
using Platform::UInt32;
using Platform::UInt64;

// A parsed segment, shared between the cache and whoever asked for it; empty for none.
using SegmentHandle = std::shared_ptr<const IndexTableSegment>;

// Segments of one index table held for look-up by edit unit.
class IndexTableCache
{
public:
    virtual ~IndexTableCache() = default;

    virtual void add(SegmentHandle segment) = 0;
    // The segment that covers `editUnit`, or empty.
    virtual SegmentHandle segmentFor(Int64 editUnit) const = 0;
    // The edit units known: the highest IndexStartPosition + IndexDuration of the segments.
    virtual Int64 duration() const = 0;
    // All segments, by IndexStartPosition.
    virtual std::vector<SegmentHandle> segments() const = 0;
};

// Every segment of one IndexSID and BodySID, kept by IndexStartPosition.
class IndexTableCompleteCache final : public IndexTableCache
{
public:
    IndexTableCompleteCache(UInt32 indexSID, UInt32 bodySID);

    // Null does nothing. InvalidIndexSegment "Trying to cache an IndexTableSegment with different
    // bodySID", and "... different indexSID" when the segment has an IndexSID and it differs.
    // Of two segments with one start, the one with the greater IndexDuration stays.
    void add(SegmentHandle segment) override;
    // The last segment starting at or before `editUnit`, if `editUnit` falls within its duration
    // or it is a constant-size (EditUnitByteCount) segment of duration 0, which covers all after.
    SegmentHandle segmentFor(Int64 editUnit) const override;
    Int64 duration() const override;
    std::vector<SegmentHandle> segments() const override;

    UInt32 indexSID() const noexcept { return indexSID_; }
    UInt32 bodySID() const noexcept { return bodySID_; }

private:
    UInt32 indexSID_;
    UInt32 bodySID_;
    std::map<Int64, SegmentHandle> segments_;
};

// Which index table segment covers an edit unit, however the segments are come by.
class IndexTableProvider
{
public:
    virtual ~IndexTableProvider() = default;

    // Empty when no segment covers `editUnit`. What parsing a segment throws passes.
    virtual SegmentHandle segmentFor(Int64 editUnit) = 0;
    // The edit units known so far.
    virtual Int64 duration() = 0;
};

// Asks its cache first, and loads only what the cache lacks.
class IndexTableProviderBase : public IndexTableProvider
{
public:
    explicit IndexTableProviderBase(std::unique_ptr<IndexTableCache> cache);

    SegmentHandle segmentFor(Int64 editUnit) override;
    Int64 duration() override;

    const IndexTableCache& cache() const noexcept { return *cache_; }

protected:
    // Loads what may hold `editUnit` into the cache and gives the segment, or empty.
    virtual SegmentHandle loadSegment(Int64 editUnit) = 0;

    IndexTableCache& mutableCache() noexcept { return *cache_; }
    // Parses the index segments of `partition` into the cache, once a partition; segments of
    // another stream are left out. Gives the edit units its segments start at, lowest first, or
    // nothing when it has none of ours.
    std::optional<Int64> parsePartition(MXFIO::Partition& partition);

private:
    std::unique_ptr<IndexTableCache> cache_;
    std::map<UInt64, std::optional<Int64>> parsed_;
};

// The partitions that carry index segments of `indexSID`, in file order: from the RIP when every
// entry of it leads to a partition, else by the chain from the header, up to the first failure.
std::vector<MXFIO::Partition*> indexPartitions(MXFIO::Reader& reader, UInt32 indexSID);

// Parses the index partitions in file order until one gives the segment asked for.
class IndexTableParseOnRequestProvider : public IndexTableProviderBase
{
public:
    // The reader must outlive the provider.
    IndexTableParseOnRequestProvider(MXFIO::Reader& reader, UInt32 indexSID, UInt32 bodySID);

    // Parses every index partition.
    void loadAll();

protected:
    SegmentHandle loadSegment(Int64 editUnit) override;

private:
    void findPartitions();

    MXFIO::Reader& reader_;
    UInt32 indexSID_;
    bool found_ = false;
    std::vector<MXFIO::Partition*> partitions_;
};

// For long files of many partitions: guesses the partition of an edit unit from its share of the
// file's byte size, given the stream's duration, and moves from there to the neighbours.
class IndexTablePositionEstimateProvider : public IndexTableProviderBase
{
public:
    IndexTablePositionEstimateProvider(MXFIO::Reader& reader, UInt32 indexSID, UInt32 bodySID,
                                       Int64 streamDuration);

protected:
    SegmentHandle loadSegment(Int64 editUnit) override;

private:
    MXFIO::Reader& reader_;
    UInt32 indexSID_;
    Int64 streamDuration_;
    bool found_ = false;
    std::vector<MXFIO::Partition*> partitions_;
};

// For a file still being written: each look-up first follows the partitions added since the last
// one, a bounded stretch at a time, then searches the index partitions by their segments' start.
// The list of partitions is guarded by a mutex, as another thread may ask while the file grows.
class IndexTableStreamingProvider : public IndexTableProviderBase
{
public:
    // Bytes one refresh reads at most, and steps it takes at most.
    static constexpr UInt64 READ_SIZE = 0x5000000;
    static constexpr UInt32 POLL_COUNT = 5000;

    // InvalidFormat "headerPartition != 0: Cannot stream MXF file without header partition!".
    IndexTableStreamingProvider(MXFIO::Reader& reader, UInt32 indexSID, UInt32 bodySID);

    // Follows the chain from the last partition seen, within the limits above.
    void refresh();
    // Offsets (as packs count) of the index partitions seen so far, sorted.
    std::vector<UInt64> partitionOffsets();

protected:
    SegmentHandle loadSegment(Int64 editUnit) override;

private:
    MXFIO::Reader& reader_;
    UInt32 indexSID_;
    Synchronization::Mutex mutex_;
    MXFIO::Partition* last_ = nullptr;
    std::vector<UInt64> offsets_;
};

} // namespace MXF::SDK::IndexTables
