#include "MXF/SDK/IndexTables/IndexTableSegmentWithGOPInfo.h"

#include "MXF/SDK/Exceptions/Exceptions.h"

namespace MXF::SDK::IndexTables
{

using Platform::Int64;
using Platform::UInt32;

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
        const Int64 position = start + i;
        const Int64 keyFrame =
            entry.isRandomAccess() ? position : position + entry.keyFrameOffset();
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
        MXF_SDK_CHECK_AS(previous->indexStartPosition().value() +
                                 previous->indexDuration().value() ==
                             this->indexStartPosition().value(),
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
            for (UInt32 i = 0; i < gopInfoVector_.size() && gopInfoVector_[i].gopPosition < 0; ++i)
                gopInfoVector_[i] = {lastInfoFromPrevious.gopPosition,
                                     lastInfoFromPrevious.gopPosition - (start + i)};
        }
    }
    if (next && next->isComplete())
        MXF_SDK_CHECK_AS(this->indexStartPosition().value() + this->indexDuration().value() ==
                             next->indexStartPosition().value(),
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
