#include "MXF/SDK/MXFIO/Seeker.h"

#include "MXF/SDK/ByteCoders/BERCoder.h"
#include "MXF/SDK/ByteCoders/BigEndian.h"
#include "MXF/SDK/Exceptions/Checked.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/MXFIO/EssenceUtils.h"
#include "MXF/SDK/MXFIO/Reader.h"

namespace MXF::SDK::MXFIO
{

using Exceptions::checkedAdd;
using Exceptions::checkedMul;
using Exceptions::checkedSub;

namespace
{

// A segment whose positions, with the edit unit asked for, leave 64 bits.
constexpr char OUT_OF_RANGE[] = "Index table segment position out of range.";

UInt32 trackNumberOf(const KLV::Key& key)
{
    return ByteCoders::readBigEndian<UInt32>(key.data() + 12);
}

// Avid's long-GOP files may hold two index entries an edit unit, the second a copy of the first,
// and one more for the end: then the edit unit's entry is every second one. Looked up on every
// seek, so it looks at the first and the last pair only.
UInt32 entriesPerEditUnit(const IndexTables::IndexTableSegment& segment)
{
    const Int64 duration = segment.indexDuration().value();
    const UInt32 count = segment.indexEntryCount();
    if (duration <= 0 || UInt64(duration) > count / 2)
        return 1;
    const auto pairEqual = [&segment](UInt32 first)
    {
        return segment.indexEntry(first).streamOffset() ==
               segment.indexEntry(first + 1).streamOffset();
    };
    return pairEqual(0) && pairEqual(2 * (UInt32(duration) - 1)) ? 2 : 1;
}

// An index whose stream offsets go backwards can't be told from its good entries: none is used.
bool consistent(const std::vector<IndexTables::SegmentHandle>& segments)
{
    bool first = true;
    UInt64 last = 0;
    for (const auto& segment : segments)
    {
        const UInt32 stride = entriesPerEditUnit(*segment);
        for (UInt32 i = 0; i < segment->indexEntryCount(); i += stride)
        {
            const UInt64 offset = segment->indexEntry(i).streamOffset();
            if (!first && offset <= last)
                return false;
            first = false;
            last = offset;
        }
    }
    return true;
}

} // namespace

Seeker::Seeker(Reader& reader, UInt32 bodySID, UInt32 indexSID, std::map<UInt32, UInt32> elements,
               bool clipWrapped, UInt64 constantSize)
    : reader_(reader), bodySID_(bodySID), indexSID_(indexSID), elements_(std::move(elements)),
      clipWrapped_(clipWrapped), constantSize_(constantSize)
{
    if (indexSID_ != 0)
        provider_ = std::make_unique<IndexTables::IndexTableParseOnRequestProvider>(
            reader_, indexSID_, bodySID_);
}

Seeker::~Seeker() = default;

bool Seeker::trackNumberExists(UInt32 number) const
{
    return elements_.find(number) != elements_.end();
}

void Seeker::requireTrackNumber(UInt32 number) const
{
    MXF_SDK_CHECK_AS(trackNumberExists(number),
                     "impl_ -> seeker_ -> trackNumberExists (trackNumberValue)",
                     "Track Number not found in this content Storage.", Exceptions::NotFound);
}

bool Seeker::hasIndex()
{
    if (!indexTrusted_)
    {
        indexTrusted_ = false;
        if (provider_)
            try
            {
                provider_->loadAll();
                const auto segments = provider_->cache().segments();
                indexTrusted_ = !segments.empty() && consistent(segments);
            }
            catch (const Exceptions::BaseException&)
            {
                // A segment that can't be parsed: the walk stands in for the whole index.
            }
    }
    return *indexTrusted_;
}

Int64 Seeker::indexDuration()
{
    return hasIndex() ? provider_->duration() : 0;
}

void Seeker::useEstimateProvider(Int64 duration)
{
    if (indexSID_ != 0 && !estimate_)
        estimate_ = std::make_unique<IndexTables::IndexTablePositionEstimateProvider>(
            reader_, indexSID_, bodySID_, duration);
}

bool Seeker::position(UInt32 trackNumber, Int64 editUnit, UInt64& out, UInt64& sizeOut)
{
    const auto it = elements_.find(trackNumber);
    MXF_SDK_CHECK_AS(it != elements_.end(), "it != elements_.end ()",
                     "Track number not in Essence container", Exceptions::KeyNotFound);
    const std::optional<ElementPlace> place = indexed(trackNumber, editUnit);
    if (!place)
        return false;
    out = place->keyPosition;
    sizeOut = place->size;
    return true;
}

std::optional<ElementPlace> Seeker::locate(UInt32 trackNumber, Int64 editUnit)
{
    if (!ignoreIndex_)
        if (std::optional<ElementPlace> place = indexed(trackNumber, editUnit))
            return place;
    return walk(trackNumber, editUnit);
}

std::optional<ElementPlace> Seeker::indexed(UInt32 trackNumber, Int64 editUnit)
{
    if (ignoreIndex_ || editUnit < 0 || !hasIndex())
        return std::nullopt;
    const auto it = elements_.find(trackNumber);
    if (it == elements_.end())
        return std::nullopt;
    try
    {
        IndexTables::SegmentHandle segment = provider_->segmentFor(editUnit);
        if (!segment && estimate_)
            segment = estimate_->segmentFor(editUnit);
        if (!segment)
            return std::nullopt;
        return fromSegment(*segment, it->second, editUnit);
    }
    catch (const Exceptions::BaseException&)
    {
        return std::nullopt;
    }
}

std::optional<ElementPlace> Seeker::fromSegment(const IndexTables::IndexTableSegment& segment,
                                                UInt32 element, Int64 editUnit)
{
    const std::optional<StreamSpan> span = streamSpan(segment, element, editUnit);
    if (!span)
        return std::nullopt;
    return clipWrapped_ ? inClip(*span) : atElementKey(span->offset, element);
}

namespace
{

// The edit unit's entry in the segment, or none when the segment doesn't cover it. A segment of
// no duration with a constant edit unit size covers every edit unit from its start on.
std::optional<Int64> localIndex(const IndexTables::IndexTableSegment& segment, Int64 editUnit)
{
    const Int64 local = checkedSub<Exceptions::InvalidIndexSegment>(
        editUnit, segment.indexStartPosition().value(), OUT_OF_RANGE);
    const Int64 duration = segment.indexDuration().value();
    const bool constantSize = segment.hasEditUnitByteCount() && segment.editUnitByteCount().value();
    if (local < 0 || (local >= duration && !(duration == 0 && constantSize)))
        return std::nullopt;
    return local;
}

struct ElementDelta
{
    UInt32 slice = 0;
    UInt32 delta = 0;
};

// Where the element stands in each content package: its slice and its offset in the slice. A
// segment without delta entries knows only element 0, at the start of the package.
std::optional<ElementDelta> elementDelta(const IndexTables::IndexTableSegment& segment,
                                         UInt32 element)
{
    ElementDelta result;
    if (element < segment.deltaEntryCount())
    {
        const IndexTables::DeltaEntry delta = segment.deltaEntry(element);
        result = {delta.slice(), delta.elementDelta()};
    }
    else if (element != 0)
        return std::nullopt;
    const UInt32 slices = segment.hasSliceCount() ? segment.sliceCount().value() : 0;
    if (result.slice > slices)
        return std::nullopt;
    return result;
}

} // namespace

std::optional<StreamSpan> Seeker::streamSpan(const IndexTables::IndexTableSegment& segment,
                                             UInt32 element, Int64 editUnit)
{
    const std::optional<Int64> local = localIndex(segment, editUnit);
    const std::optional<ElementDelta> delta = elementDelta(segment, element);
    if (!local || !delta)
        return std::nullopt;
    StreamSpan span;
    if (segment.hasEditUnitByteCount() && segment.editUnitByteCount().value() != 0)
    {
        const UInt64 byteCount = segment.editUnitByteCount().value();
        span.offset =
            checkedMul<Exceptions::InvalidIndexSegment>(UInt64(editUnit), byteCount, OUT_OF_RANGE);
        span.next =
            checkedAdd<Exceptions::InvalidIndexSegment>(span.offset, byteCount, OUT_OF_RANGE);
    }
    else
    {
        const UInt32 stride = entriesPerEditUnit(segment);
        const UInt64 at = UInt64(*local) * stride;
        if (at >= segment.indexEntryCount())
            return std::nullopt;
        const IndexTables::IndexEntry entry = segment.indexEntry(UInt32(at));
        span.offset = entry.streamOffset();
        if (delta->slice > 0)
            span.offset = checkedAdd<Exceptions::InvalidIndexSegment>(
                span.offset, UInt64(entry.sliceOffset(delta->slice - 1)), OUT_OF_RANGE);
        if (at + stride < segment.indexEntryCount())
            span.next = segment.indexEntry(UInt32(at + stride)).streamOffset();
    }
    span.offset = checkedAdd<Exceptions::InvalidIndexSegment>(span.offset, UInt64(delta->delta),
                                                              OUT_OF_RANGE);
    return span;
}

std::optional<ElementPlace> Seeker::inClip(const StreamSpan& span)
{
    // Clip wrapping: offsets count from the first byte of the clip's value.
    if (!findClip())
        return std::nullopt;
    ElementPlace place;
    place.dataPosition =
        checkedAdd<Exceptions::InvalidIndexSegment>(clip_->dataPosition, span.offset, OUT_OF_RANGE);
    place.keyPosition = place.dataPosition;
    const UInt64 clipEnd =
        checkedAdd<Exceptions::InvalidIndexSegment>(clip_->dataPosition, clip_->size, OUT_OF_RANGE);
    if (place.dataPosition >= clipEnd)
        return std::nullopt;
    const UInt64 end = span.next
                           ? std::min(clipEnd, checkedAdd<Exceptions::InvalidIndexSegment>(
                                                   clip_->dataPosition, *span.next, OUT_OF_RANGE))
                           : clipEnd;
    if (end <= place.dataPosition)
        return std::nullopt;
    place.size = end - place.dataPosition;
    return place;
}

std::optional<ElementPlace> Seeker::atElementKey(UInt64 streamOffset, UInt32 element)
{
    // Frame wrapping: the place must hold the element's own key.
    const UInt64 position = absolutePosition(streamOffset);
    // The key and length are read by hand: the source then stands at the data, where the read
    // that follows begins, and keeps its buffer.
    DataIO::RandomAccessDataSource& source = reader_.source();
    source.seek(position);
    Platform::Byte head[16 + 9];
    if (source.read(head, 17) != 17)
        return std::nullopt;
    const KLV::Key key(head);
    // Forms the coder refuses, or longer than 64 bits: no element here.
    if (head[16] == 0x80 || head[16] > 0x88)
        return std::nullopt;
    const UInt32 lengthSize = ByteCoders::BERCoder::decodedSize(head[16]);
    if (source.read(head + 17, lengthSize - 1) != lengthSize - 1)
        return std::nullopt;
    const UInt64 length = ByteCoders::BERCoder::decode(head + 16, lengthSize);
    const bool element0System = KLV::isGCSystemItem(key);
    if (!(KLV::isEssenceKey(key) || element0System))
        return std::nullopt;
    const auto wanted = std::find_if(elements_.begin(), elements_.end(),
                                     [&](const auto& e) { return e.second == element; });
    if (wanted == elements_.end() || (!element0System && trackNumberOf(key) != wanted->first))
        return std::nullopt;
    return ElementPlace{position, position + 16 + lengthSize, length};
}

UInt64 Seeker::absolutePosition(UInt64 offset)
{
    if (!bodies_)
    {
        // Found once: every edit unit asks, and the chain of partitions doesn't change.
        std::vector<Body> bodies;
        for (Partition* partition : EssenceUtils::bodyPartitions(reader_, bodySID_))
            bodies.push_back({partition->partitionPack().bodyOffset().value(),
                              partition->bodyStart(),
                              EssenceUtils::endOfBody(reader_, *partition)});
        bodies_ = std::move(bodies);
    }
    for (const Body& body : *bodies_)
        if (offset >= body.offset && body.end > body.start &&
            offset - body.offset < body.end - body.start)
            return body.start + (offset - body.offset);
    // Past every body: the free function says so in its words.
    return EssenceUtils::absolutePosition(reader_, bodySID_, offset);
}

bool Seeker::findClip()
{
    if (clip_)
        return true;
    // The clip is the first item of the stream's first partition that has a body.
    for (std::size_t i = 0; !clip_; ++i)
    {
        if (!walkStarted_)
        {
            partitions_ = EssenceUtils::bodyPartitions(reader_, bodySID_);
            walkStarted_ = true;
        }
        if (i >= partitions_.size())
            return false;
        Partition& partition = *partitions_[i];
        DataIO::RandomAccessDataSource& source = reader_.source();
        const UInt64 start = partition.bodyStart();
        const UInt64 end = source.position() + source.remaining();
        if (start >= EssenceUtils::endOfBody(reader_, partition) || start >= end)
            continue;
        source.seek(start);
        KLV::KLVReader klv(source);
        UInt64 skipped = 0;
        const KLV::Key key = klv.readKey(skipped, 0);
        MXF_SDK_CHECK_AS(!KLV::isFillItem(key), "!KLV::isFillItem (key)",
                         "Expected Essence KLV on clip-wrapped body partition",
                         Exceptions::InvalidFormat);
        source.seek(start);
        const std::unique_ptr<KLV::KLVItem> item = klv.readKLV(skipped, 0);
        clip_ = ElementPlace{item->keyPosition, item->value.position(), item->length};
    }
    return true;
}

bool Seeker::walkOne()
{
    if (walkDone_)
        return false;
    if (!walkStarted_)
    {
        partitions_ = EssenceUtils::bodyPartitions(reader_, bodySID_);
        walkStarted_ = true;
    }
    while (partition_ < partitions_.size())
    {
        std::unique_ptr<KLV::KLVItem> item;
        try
        {
            UInt64 skipped = 0;
            item = partitions_[partition_]->nextEssence(skipped, 0);
        }
        catch (const Exceptions::BaseException&)
        {
            // Bytes that are no item end what can be walked of this partition.
        }
        if (!item)
        {
            ++partition_;
            continue;
        }
        if (KLV::isFillItem(item->key))
            continue;
        walked_[trackNumberOf(item->key)].push_back(
            ElementPlace{item->keyPosition, item->value.position(), item->length});
        return true;
    }
    walkDone_ = true;
    return false;
}

std::optional<ElementPlace> Seeker::walk(UInt32 trackNumber, Int64 editUnit)
{
    if (editUnit < 0)
        return std::nullopt;
    if (clipWrapped_)
    {
        if (!findClip())
            return std::nullopt;
        if (constantSize_ == 0)
        {
            // Nothing tells where the edit units of the clip start: it is read as one.
            if (editUnit != 0)
                return std::nullopt;
            return ElementPlace{clip_->dataPosition, clip_->dataPosition, clip_->size};
        }
        const UInt64 offset = UInt64(editUnit) * constantSize_;
        if (offset >= clip_->size)
            return std::nullopt;
        const UInt64 at = clip_->dataPosition + offset;
        return ElementPlace{at, at, std::min(constantSize_, clip_->size - offset)};
    }
    for (;;)
    {
        const auto found = walked_.find(trackNumber);
        if (found != walked_.end() && UInt64(editUnit) < found->second.size())
            return found->second[std::size_t(editUnit)];
        if (!walkOne())
            return std::nullopt;
    }
}

Int64 Seeker::walkedCount(UInt32 trackNumber)
{
    if (clipWrapped_)
    {
        if (!findClip())
            return 0;
        return constantSize_ == 0 ? 1 : Int64((clip_->size + constantSize_ - 1) / constantSize_);
    }
    while (walkOne())
    {
    }
    const auto found = walked_.find(trackNumber);
    return found == walked_.end() ? 0 : Int64(found->second.size());
}

} // namespace MXF::SDK::MXFIO
