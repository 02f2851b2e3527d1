#pragma once

#include "MXF/SDK/IndexTables/IndexTableArrays.h"
#include "MXF/SDK/IndexTables/IndexTableSegmentEntry.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/Integers.h"
#include "MXF/SDK/Types/Rational.h"
#include "MXF/SDK/Types/UID.h"

#include <memory>

namespace MXF::SDK::DataIO
{
class BoundedDataSource;
class DataSink;
} // namespace MXF::SDK::DataIO

namespace MXF::SDK::KLV
{
class Key;
struct KLVItem;
} // namespace MXF::SDK::KLV

namespace MXF::SDK::IndexTables
{

// An index table segment of SMPTE 377M: key 06 0E 2B 34 02 53 01 01 0D 01 02 01 01 10 01 00, a
// BER length in 4 bytes, then local items of a 2-byte tag and a 2-byte length, big-endian:
//
//   3C0A InstanceUID         always written     3F06 IndexSID         if set
//   3F0B IndexEditRate       always             3F07 BodySID          always
//   3F0C IndexStartPosition  always             3F08 SliceCount       if set
//   3F0D IndexDuration       always             3F0E PosTableCount    if set
//   3F05 EditUnitByteCount   if set             3F09 DeltaEntryArray  if it exists
//                                               3F0A IndexEntryArray  if it exists
//
// written in this order. Each field has a flag saying whether it was read or set. An index entry
// array longer than a 2-byte length can say has 0xFFFF there and is read by its own count and
// entry size.
class IndexTableSegment
{
public:
    // Everything unset, a new InstanceUID.
    IndexTableSegment();
    // Parses the whole value. The order of tags matters: SliceCount and PosTableCount must come
    // before the index entry array, whose entry size they give. Unknown tags are skipped.
    // Throws InvalidKey "Trying to load a Index Segment with an invalid key"; InvalidIndexSegment
    // "Invalid MXF Index Segment set (local tag should be 2 bytes and length field 2 bytes.)" for
    // a key coded otherwise or an item header cut short; InvalidLength "Invalid data size in
    // Local Value. Value still contains data to be read." for a field value too long, "Invalid
    // data size in Value in the IndexTable Segment" for one too short or cut short, and the
    // array texts of IndexTableArray.
    IndexTableSegment(const KLV::Key& key, DataIO::BoundedDataSource& value);
    explicit IndexTableSegment(KLV::KLVItem& item);
    IndexTableSegment(const IndexTableSegment& other);
    IndexTableSegment& operator=(const IndexTableSegment& other);
    virtual ~IndexTableSegment();

    // Bytes of the whole KLV when written.
    virtual Platform::UInt64 size() const;
    // Throws InvalidLength "Type size exceeded" when the value doesn't fit the 4-byte length.
    virtual void write(DataIO::DataSink& sink) const;

    static const KLV::Key& segmentKey();

    bool hasInstanceUID() const;
    const Types::UUID& instanceUID() const;
    void setInstanceUID(const Types::UUID& value);
    bool hasIndexEditRate() const;
    const Types::Rational& indexEditRate() const;
    void setIndexEditRate(const Types::Rational& value);
    bool hasIndexStartPosition() const;
    const Types::Position& indexStartPosition() const;
    void setIndexStartPosition(Platform::Int64 value);
    bool hasIndexDuration() const;
    const Types::Length& indexDuration() const;
    void setIndexDuration(Platform::Int64 value);
    bool hasEditUnitByteCount() const;
    const Types::UInt32& editUnitByteCount() const;
    void setEditUnitByteCount(Platform::UInt32 value);
    bool hasIndexSID() const;
    const Types::UInt32& indexSID() const;
    void setIndexSID(Platform::UInt32 value);
    bool hasBodySID() const;
    const Types::UInt32& bodySID() const;
    void setBodySID(Platform::UInt32 value);
    bool hasSliceCount() const;
    const Types::UInt8& sliceCount() const;
    // With index entries present: InvalidChange "IndexEntryArray still contains value. Please
    // empty IndexEntryArray before setting sliceCount". An empty array takes the new count.
    void setSliceCount(Platform::UInt8 value);
    bool hasPosTableCount() const;
    const Types::UInt8& posTableCount() const;
    // As setSliceCount, the text ending "before setting posTableCount".
    void setPosTableCount(Platform::UInt8 value);

    // Null when the segment has no such array.
    const DeltaEntryArray* deltaEntryArray() const;
    const IndexEntryArray* indexEntryArray() const;

    Platform::UInt32 deltaEntryCount() const;
    // IndexOutOfBounds "IndexTableSegment::deltaEntry IndexOutOfBounds".
    DeltaEntry deltaEntry(Platform::UInt32 index) const;
    // The first one makes the array.
    void appendDeltaEntry(const DeltaEntry& entry);
    // IndexOutOfBounds "Trying to remove element from empty deltaEntryArray." on no entries.
    void removeDeltaEntry(Platform::UInt32 index);

    Platform::UInt32 indexEntryCount() const;
    // IndexOutOfBounds "IndexTableSegment::indexEntry IndexOutOfBounds".
    IndexEntry indexEntry(Platform::UInt32 index) const;
    // The first one makes the array from sliceCount and posTableCount. An entry with other
    // counts throws InvalidElement with two lines, "Error: NSL in segment has value: 1 while
    // IndexEntry has NSL: 0" and the same for NPE.
    void appendIndexEntry(const IndexEntry& entry);
    void insertIndexEntry(Platform::UInt32 index, const IndexEntry& entry);
    // IndexOutOfBounds "Trying to remove element from empty indexEntryArray." on no entries.
    void removeIndexEntry(Platform::UInt32 index);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::IndexTables
