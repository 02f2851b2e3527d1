#pragma once

#include "MXF/SDK/IndexTables/IndexTableSegmentEntry.h"
#include "MXF/SDK/Platform/Types.h"

#include <vector>

namespace MXF::SDK::DataIO
{
class DataSink;
}

namespace MXF::SDK::IndexTables
{

// The two arrays of an index table segment. On the wire: a UInt32 count, a UInt32 entry size and
// the entries. The entries are kept as one flat run of bytes in wire form.
class IndexTableArray
{
public:
    virtual ~IndexTableArray() = default;
    virtual void write(DataIO::DataSink& sink) const;
    // Bytes on the wire: 8 and the entries.
    virtual Platform::UInt64 size() const;

    Platform::UInt32 count() const noexcept { return Platform::UInt32(bytes_.size() / entrySize_); }
    Platform::UInt32 entrySize() const noexcept { return entrySize_; }
    bool empty() const noexcept { return bytes_.empty(); }

protected:
    explicit IndexTableArray(Platform::UInt32 entrySize);
    // Parses a whole local value. Throws InvalidLength "Invalid data size in the Index Table
    // collection. Not enough data to read element entry size" below 8 bytes; "Invalid data size
    // in Value to create an element in the Index Table collections." when the entry size isn't
    // `entrySize`; "Number of expected values differ from the size of the local KLV value field.
    // Index Table Segment" when the entries don't fill the value exactly.
    IndexTableArray(const Platform::Byte* value, Platform::UInt64 size, Platform::UInt32 entrySize);

    // IndexOutOfBounds "IndexEntryArray::at() IndexOutOfBonds" from count on.
    const Platform::Byte* element(Platform::UInt32 index) const;
    // InvalidElement "Trying to append an invalid element" for an element of another size.
    void appendElement(const IndexTableSegmentEntry& entry);
    // IndexOutOfBounds "Trying to insert an element beyond the end of the data" past count;
    // InvalidElement "TRying to insert an invalid element" for an element of another size.
    void insertElement(Platform::UInt32 index, const IndexTableSegmentEntry& entry);
    // IndexOutOfBounds "Trying to remove an element beyond the end of the data" from count on.
    void removeElement(Platform::UInt32 index);

private:
    Platform::UInt32 entrySize_;
    std::vector<Platform::Byte> bytes_;
};

class DeltaEntryArray final : public IndexTableArray
{
public:
    DeltaEntryArray();
    DeltaEntryArray(const Platform::Byte* value, Platform::UInt64 size);

    DeltaEntry at(Platform::UInt32 index) const;
    void append(const DeltaEntry& entry);
    void insert(Platform::UInt32 index, const DeltaEntry& entry);
    void remove(Platform::UInt32 index);
};

// Every entry has the array's NSL and NPE.
class IndexEntryArray final : public IndexTableArray
{
public:
    IndexEntryArray(Platform::UInt8 sliceCount, Platform::UInt8 posTableCount);
    IndexEntryArray(const Platform::Byte* value, Platform::UInt64 size, Platform::UInt8 sliceCount,
                    Platform::UInt8 posTableCount);

    Platform::UInt8 sliceCount() const noexcept { return sliceCount_; }
    Platform::UInt8 posTableCount() const noexcept { return posTableCount_; }

    IndexEntry at(Platform::UInt32 index) const;
    // InvalidElement "Trying to append an invalid entry." for an entry of other counts.
    void append(const IndexEntry& entry);
    // InvalidElement "TRying to insert an invalid element" for an entry of other counts.
    void insert(Platform::UInt32 index, const IndexEntry& entry);
    void remove(Platform::UInt32 index);

private:
    bool matches(const IndexEntry& entry) const noexcept;

    Platform::UInt8 sliceCount_;
    Platform::UInt8 posTableCount_;
};

} // namespace MXF::SDK::IndexTables
