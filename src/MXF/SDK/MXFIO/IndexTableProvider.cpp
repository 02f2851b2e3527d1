#include "MXF/SDK/MXFIO/IndexTableProvider.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/MXFIO/Reader.h"

#include <algorithm>

namespace MXF::SDK::IndexTables
{

namespace
{

// One past the segment's last edit unit; a sum beyond 64 bits stops at the end of the range.
Int64 endOf(const IndexTableSegment& segment)
{
    const Int64 start = segment.indexStartPosition().value();
    const Int64 duration = segment.indexDuration().value();
    Int64 end = 0;
    if (__builtin_add_overflow(start, duration, &end))
        return duration > 0 ? INT64_MAX : INT64_MIN;
    return end;
}

bool isOpenEndedCBE(const IndexTableSegment& segment)
{
    return segment.indexDuration().value() == 0 && segment.hasEditUnitByteCount() &&
           segment.editUnitByteCount().value() != 0;
}

bool hasIndex(MXFIO::Partition& partition, UInt32 indexSID)
{
    const auto& pack = partition.partitionPack();
    return pack.indexSID().value() == indexSID && pack.indexByteCount().value() != 0;
}

} // namespace

IndexTableCompleteCache::IndexTableCompleteCache(UInt32 indexSID, UInt32 bodySID)
    : indexSID_(indexSID), bodySID_(bodySID)
{
}

void IndexTableCompleteCache::add(SegmentHandle segment)
{
    if (!segment)
        return;
    if (segment->bodySID().value() != bodySID_)
        MXF_SDK_THROW(Exceptions::InvalidIndexSegment,
                      "Trying to cache an IndexTableSegment with different bodySID");
    if (segment->hasIndexSID() && segment->indexSID().value() != indexSID_)
        MXF_SDK_THROW(Exceptions::InvalidIndexSegment,
                      "Trying to cache an IndexTableSegment with different indexSID");
    const Int64 start = segment->indexStartPosition().value();
    const auto found = segments_.find(start);
    if (found == segments_.end())
        segments_.emplace(start, std::move(segment));
    else if (segment->indexDuration().value() > found->second->indexDuration().value())
        found->second = std::move(segment);
}

SegmentHandle IndexTableCompleteCache::segmentFor(Int64 editUnit) const
{
    auto found = segments_.upper_bound(editUnit);
    if (found == segments_.begin())
        return {};
    const SegmentHandle& segment = (--found)->second;
    if (editUnit < endOf(*segment) || isOpenEndedCBE(*segment))
        return segment;
    return {};
}

Int64 IndexTableCompleteCache::duration() const
{
    Int64 known = 0;
    for (const auto& [start, segment] : segments_)
        known = std::max(known, endOf(*segment));
    return known;
}

std::vector<SegmentHandle> IndexTableCompleteCache::segments() const
{
    std::vector<SegmentHandle> all;
    all.reserve(segments_.size());
    for (const auto& [start, segment] : segments_)
        all.push_back(segment);
    return all;
}

IndexTableProviderBase::IndexTableProviderBase(std::unique_ptr<IndexTableCache> cache)
    : cache_(std::move(cache))
{
}

SegmentHandle IndexTableProviderBase::segmentFor(Int64 editUnit)
{
    if (SegmentHandle cached = cache_->segmentFor(editUnit))
        return cached;
    return loadSegment(editUnit);
}

Int64 IndexTableProviderBase::duration()
{
    return cache_->duration();
}

std::optional<Int64> IndexTableProviderBase::parsePartition(MXFIO::Partition& partition)
{
    const auto [known, fresh] = parsed_.emplace(partition.position(), std::nullopt);
    if (!fresh)
        return known->second;
    const auto* complete = dynamic_cast<const IndexTableCompleteCache*>(cache_.get());
    std::optional<Int64> first;
    while (std::unique_ptr<KLV::KLVItem> item = partition.nextIndexSegment())
    {
        auto segment = std::make_shared<const IndexTableSegment>(*item);
        // A partition may index another stream too: only ours is cached.
        if (complete != nullptr &&
            (segment->bodySID().value() != complete->bodySID() ||
             (segment->hasIndexSID() && segment->indexSID().value() != complete->indexSID())))
            continue;
        const Int64 start = segment->indexStartPosition().value();
        first = first ? std::min(*first, start) : start;
        cache_->add(std::move(segment));
    }
    known->second = first;
    return first;
}

std::vector<MXFIO::Partition*> indexPartitions(MXFIO::Reader& reader, UInt32 indexSID)
{
    std::vector<MXFIO::Partition*> found;
    if (const Packs::RandomIndexPack* rip = reader.randomIndexPack())
    {
        bool whole = !rip->entries().empty();
        try
        {
            for (const UInt64 offset : rip->partitionOffsets())
            {
                MXFIO::Partition* partition = reader.partitionAt(offset);
                if (partition == nullptr)
                {
                    whole = false;
                    break;
                }
                if (hasIndex(*partition, indexSID))
                    found.push_back(partition);
            }
        }
        catch (const Exceptions::BaseException&)
        {
            whole = false;
        }
        if (whole)
            return found;
        found.clear();
    }
    // No RIP, or one that doesn't match the file: the chain, as far as it holds.
    try
    {
        for (MXFIO::Partition* partition = reader.headerPartition(); partition != nullptr;
             partition = reader.nextPartition(*partition))
            if (hasIndex(*partition, indexSID))
                found.push_back(partition);
    }
    catch (const Exceptions::BaseException&)
    {
    }
    return found;
}

IndexTableParseOnRequestProvider::IndexTableParseOnRequestProvider(MXFIO::Reader& reader,
                                                                   UInt32 indexSID, UInt32 bodySID)
    : IndexTableProviderBase(std::make_unique<IndexTableCompleteCache>(indexSID, bodySID)),
      reader_(reader), indexSID_(indexSID)
{
}

void IndexTableParseOnRequestProvider::findPartitions()
{
    if (found_)
        return;
    found_ = true;
    partitions_ = indexPartitions(reader_, indexSID_);
}

void IndexTableParseOnRequestProvider::loadAll()
{
    findPartitions();
    for (MXFIO::Partition* partition : partitions_)
        parsePartition(*partition);
}

SegmentHandle IndexTableParseOnRequestProvider::loadSegment(Int64 editUnit)
{
    findPartitions();
    for (MXFIO::Partition* partition : partitions_)
        if (parsePartition(*partition))
            if (SegmentHandle segment = cache().segmentFor(editUnit))
                return segment;
    return {};
}

IndexTablePositionEstimateProvider::IndexTablePositionEstimateProvider(MXFIO::Reader& reader,
                                                                       UInt32 indexSID,
                                                                       UInt32 bodySID,
                                                                       Int64 streamDuration)
    : IndexTableProviderBase(std::make_unique<IndexTableCompleteCache>(indexSID, bodySID)),
      reader_(reader), indexSID_(indexSID), streamDuration_(streamDuration)
{
}

SegmentHandle IndexTablePositionEstimateProvider::loadSegment(Int64 editUnit)
{
    if (!found_)
    {
        found_ = true;
        partitions_ = indexPartitions(reader_, indexSID_);
    }
    if (partitions_.empty() || editUnit < 0)
        return {};
    // The share of the duration taken as a share of the bytes: the last index partition at or
    // before that byte is the first guess.
    std::size_t at = 0;
    if (streamDuration_ > 0)
    {
        const UInt64 size = reader_.source().position() + reader_.source().remaining();
        const long double share =
            std::min<long double>(1.0L, static_cast<long double>(editUnit) / streamDuration_);
        const auto guess = static_cast<UInt64>(share * static_cast<long double>(size));
        while (at + 1 < partitions_.size() && partitions_[at + 1]->position() <= guess)
            ++at;
    }
    // From there, towards the edit unit, each partition parsed at most once.
    std::size_t low = at, high = at;
    for (std::size_t next = at;;)
    {
        const std::optional<Int64> start = parsePartition(*partitions_[next]);
        if (SegmentHandle segment = cache().segmentFor(editUnit))
            return segment;
        const bool before = start && *start > editUnit;
        if (before && low > 0)
            next = --low;
        else if (high + 1 < partitions_.size())
            next = ++high;
        else if (low > 0)
            next = --low;
        else
            return {};
    }
}

IndexTableStreamingProvider::IndexTableStreamingProvider(MXFIO::Reader& reader, UInt32 indexSID,
                                                         UInt32 bodySID)
    : IndexTableProviderBase(std::make_unique<IndexTableCompleteCache>(indexSID, bodySID)),
      reader_(reader), indexSID_(indexSID)
{
    MXFIO::Partition* headerPartition = reader_.headerPartition();
    MXF_SDK_CHECK_AS(headerPartition != 0, "headerPartition != 0",
                     "Cannot stream MXF file without header partition!", Exceptions::InvalidFormat);
    last_ = headerPartition;
    if (hasIndex(*headerPartition, indexSID_))
        offsets_.push_back(headerPartition->offset());
}

void IndexTableStreamingProvider::refresh()
{
    Synchronization::Mutex::ScopedLock lock(mutex_);
    const UInt64 from = last_->position();
    try
    {
        for (UInt32 step = 0; step < POLL_COUNT; ++step)
        {
            if (last_->position() - from >= READ_SIZE)
                break;
            MXFIO::Partition* next = reader_.nextPartition(*last_);
            if (next == nullptr)
                break;
            last_ = next;
            if (hasIndex(*next, indexSID_))
            {
                const auto at = std::lower_bound(offsets_.begin(), offsets_.end(), next->offset());
                if (at == offsets_.end() || *at != next->offset())
                    offsets_.insert(at, next->offset());
            }
        }
    }
    catch (const Exceptions::BaseException&)
    {
        // The writer may be in the middle of an item: what follows is looked at next time.
    }
}

std::vector<UInt64> IndexTableStreamingProvider::partitionOffsets()
{
    Synchronization::Mutex::ScopedLock lock(mutex_);
    return offsets_;
}

SegmentHandle IndexTableStreamingProvider::loadSegment(Int64 editUnit)
{
    refresh();
    Synchronization::Mutex::ScopedLock lock(mutex_);
    if (offsets_.empty())
        return {};
    // Segments of later partitions start later: a binary search on the first segment's start.
    std::size_t low = 0, high = offsets_.size() - 1;
    while (low <= high)
    {
        const std::size_t middle = low + (high - low) / 2;
        MXFIO::Partition* partition = reader_.partitionAt(offsets_[middle]);
        if (partition == nullptr)
            return {};
        const std::optional<Int64> start = parsePartition(*partition);
        if (SegmentHandle segment = cache().segmentFor(editUnit))
            return segment;
        if (start && *start <= editUnit)
            low = middle + 1;
        else if (middle == 0)
            break;
        else
            high = middle - 1;
    }
    return cache().segmentFor(editUnit);
}

} // namespace MXF::SDK::IndexTables
