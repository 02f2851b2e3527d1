#include "MXF/SDK/IndexTables/IndexTableSegmentWithGOPInfo.h"

#include "MXF/SDK/Exceptions/Exceptions.h"

namespace MXF::SDK::IndexTables
{

using Platform::Int64;
using Platform::UInt32;

namespace
{

// Positions come from the file: a sum that leaves 64 bits is no position.
bool add(Int64 a, Int64 b, Int64& sum)
{
    return !__builtin_add_overflow(a, b, &sum);
}

bool consecutive(const IndexTableSegment& first, const IndexTableSegment& second)
{
    Int64 end = 0;
    return add(first.indexStartPosition().value(), first.indexDuration().value(), end) &&
           end == second.indexStartPosition().value();
}

} // namespace

IndexTableSegmentWithGOPInfo::IndexTableSegmentWithGOPInfo() = default;

IndexTableSegmentWithGOPInfo::IndexTableSegmentWithGOPInfo(const KLV::Key& key,
                                                           DataIO::BoundedDataSource& value)
    : IndexTableSegment(key, value)
{
    rebuild();
}

IndexTableSegmentWithGOPInfo::IndexTableSegmentWithGOPInfo(KLV::KLVItem& item)
    : IndexTableSegment(item)
{
    rebuild();
}

bool IndexTableSegmentWithGOPInfo::isComplete() const
{
    return Int64(indexEntryCount()) == indexDuration().value();
}

void IndexTableSegmentWithGOPInfo::rebuild()
{
    const Int64 start = indexStartPosition().value();
    const UInt32 count = indexEntryCount();
    gopInfoVector_.assign(count, GOPInfo());
    for (UInt32 i = 0; i < count; ++i)
    {
        const IndexEntry entry = indexEntry(i);
        Int64 position = 0;
        Int64 keyFrame = 0;
        if (!add(start, i, position))
            break;
        if (entry.isRandomAccess())
            keyFrame = position;
        else if (!add(position, entry.keyFrameOffset(), keyFrame))
            continue;
        // A key frame before the start is known only through the segment before.
        if (keyFrame >= start)
            gopInfoVector_[i] = {keyFrame, keyFrame - position};
    }
}

void IndexTableSegmentWithGOPInfo::update(const IndexTableSegmentWithGOPInfo* previous,
                                          const IndexTableSegmentWithGOPInfo* next)
{
    rebuild();
    if (previous && previous->isComplete())
    {
        MXF_SDK_CHECK_AS(consecutive(*previous, *this),
                         "previous -> indexStartPosition ().value () + previous -> indexDuration "
                         "().value () == this -> indexStartPosition ().value ()",
                         "Trying to update non-consecutive IndexTableSegmentWithGOPInfo's.",
                         Exceptions::InvalidIndexSegment);
        if (!previous->gopInfoVector_.empty())
        {
            const GOPInfo& lastInfoFromPrevious = previous->gopInfoVector_.back();
            MXF_SDK_CHECK_AS(lastInfoFromPrevious.gopPosition >= 0,
                             "lastInfoFromPrevious.gopPosition >= 0",
                             "Not supported: IndexTableSegment duration is smaller than GOP "
                             "length.",
                             Exceptions::InvalidIndexSegment);
            const Int64 start = indexStartPosition().value();
            // The start and the previous segment's end are one position, so none of these sums
            // leaves 64 bits unless the last GOP lies far before it; such an entry stays unknown.
            Int64 position = 0;
            Int64 offset = 0;
            for (UInt32 i = 0;
                 i < gopInfoVector_.size() && gopInfoVector_[i].gopPosition < 0 &&
                 add(start, i, position) &&
                 !__builtin_sub_overflow(lastInfoFromPrevious.gopPosition, position, &offset);
                 ++i)
                gopInfoVector_[i] = {lastInfoFromPrevious.gopPosition, offset};
        }
    }
    if (next && next->isComplete())
        MXF_SDK_CHECK_AS(consecutive(*this, *next),
                         "this -> indexStartPosition ().value () + this -> indexDuration ().value "
                         "() == next -> indexStartPosition ().value ()",
                         "Trying to update non-consecutive IndexTableSegmentWithGOPInfo's.",
                         Exceptions::InvalidIndexSegment);
}

const IndexTableSegmentWithGOPInfo::GOPInfo&
IndexTableSegmentWithGOPInfo::gopInfo(UInt32 index) const
{
    MXF_SDK_CHECK_AS(index < gopInfoVector_.size(), "index < gopInfoVector_.size ()",
                     "The IndexTableSegment is smaller than the given index.",
                     Exceptions::IndexOutOfBounds);
    return gopInfoVector_[index];
}

} // namespace MXF::SDK::IndexTables
