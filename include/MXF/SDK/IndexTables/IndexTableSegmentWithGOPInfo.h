#pragma once

#include "MXF/SDK/IndexTables/IndexTableSegment.h"

#include <vector>

namespace MXF::SDK::IndexTables
{

// A segment that knows, for each index entry, where the GOP of that edit unit starts, also when
// that key frame lies in the segment before.
class IndexTableSegmentWithGOPInfo : public IndexTableSegment
{
public:
    struct GOPInfo
    {
        // Edit unit of the key frame, in the index's edit units; -1 while unknown (the key frame
        // lies before this segment and no previous segment has been tied in).
        Platform::Int64 gopPosition = -1;
        // gopPosition minus the entry's own position: 0 or less once known.
        Platform::Int64 keyFrameOffset = 0;
    };

    IndexTableSegmentWithGOPInfo();
    IndexTableSegmentWithGOPInfo(const KLV::Key& key, DataIO::BoundedDataSource& value);
    explicit IndexTableSegmentWithGOPInfo(KLV::KLVItem& item);

    // Recomputes the records from the entries and ties in the neighbours, either may be null.
    // A neighbour counts only when complete (as many entries as its indexDuration); it must then
    // be consecutive, or InvalidIndexSegment "Trying to update non-consecutive
    // IndexTableSegmentWithGOPInfo's.". Entries ahead of this segment's first key frame take the
    // GOP of the previous segment's last entry, which must be known: else InvalidIndexSegment
    // "Not supported: IndexTableSegment duration is smaller than GOP length.".
    void update(const IndexTableSegmentWithGOPInfo* previous,
                const IndexTableSegmentWithGOPInfo* next);

    // IndexOutOfBounds "index < gopInfoVector_.size (): The IndexTableSegment is smaller than the
    // given index.".
    const GOPInfo& gopInfo(Platform::UInt32 index) const;
    Platform::UInt32 gopInfoCount() const noexcept
    {
        return Platform::UInt32(gopInfoVector_.size());
    }

private:
    bool isComplete() const;
    void rebuild();

    std::vector<GOPInfo> gopInfoVector_;
};

} // namespace MXF::SDK::IndexTables
