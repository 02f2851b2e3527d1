#include "MXF/SDK/IndexTables/IndexTableArrays.h"

#include "MXF/SDK/ByteCoders/BigEndian.h"
#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Templates/SafeCast.h"

namespace MXF::SDK::IndexTables
{

using ByteCoders::readBigEndian;
using ByteCoders::writeBigEndian;
using Platform::Byte;
using Platform::UInt32;
using Platform::UInt64;
using Platform::UInt8;

IndexTableArray::IndexTableArray(UInt32 entrySize) : entrySize_(entrySize) {}

IndexTableArray::IndexTableArray(const Byte* value, UInt64 size, UInt32 entrySize)
    : entrySize_(entrySize)
{
    if (size < 8)
        MXF_SDK_THROW(Exceptions::InvalidLength, "Invalid data size in the Index Table "
                                                 "collection. Not enough data to read element "
                                                 "entry size");
    const UInt64 count = readBigEndian<UInt32>(value);
    if (readBigEndian<UInt32>(value + 4) != entrySize)
        MXF_SDK_THROW(Exceptions::InvalidLength,
                      "Invalid data size in Value to create an element in the Index Table "
                      "collections.");
    // Both factors are below 2^32, so the product can't wrap.
    if (count * entrySize != size - 8)
        MXF_SDK_THROW(Exceptions::InvalidLength,
                      "Number of expected values differ from the size of the local KLV value "
                      "field. Index Table Segment");
    bytes_.assign(value + 8, value + size);
}

void IndexTableArray::write(DataIO::DataSink& sink) const
{
    Byte head[8];
    writeBigEndian(count(), head);
    writeBigEndian(entrySize_, head + 4);
    sink.write(head, sizeof head);
    sink.write(bytes_.data(), bytes_.size());
}

UInt64 IndexTableArray::size() const
{
    return 8 + UInt64(bytes_.size());
}

const Byte* IndexTableArray::element(UInt32 index) const
{
    if (index >= count())
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds, "IndexEntryArray::at() IndexOutOfBonds");
    return bytes_.data() + std::size_t(index) * entrySize_;
}

void IndexTableArray::appendElement(const IndexTableSegmentEntry& entry)
{
    if (entry.size() != entrySize_)
        MXF_SDK_THROW(Exceptions::InvalidElement, "Trying to append an invalid element");
    // The count is written in 32 bits.
    Templates::SafeCast<UInt32>(UInt64(count()) + 1);
    bytes_.insert(bytes_.end(), entry.data(), entry.data() + entrySize_);
}

void IndexTableArray::insertElement(UInt32 index, const IndexTableSegmentEntry& entry)
{
    if (index > count())
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds,
                      "Trying to insert an element beyond the end of the data");
    if (entry.size() != entrySize_)
        MXF_SDK_THROW(Exceptions::InvalidElement, "TRying to insert an invalid element");
    Templates::SafeCast<UInt32>(UInt64(count()) + 1);
    bytes_.insert(bytes_.begin() + std::ptrdiff_t(std::size_t(index) * entrySize_), entry.data(),
                  entry.data() + entrySize_);
}

void IndexTableArray::removeElement(UInt32 index)
{
    if (index >= count())
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds,
                      "Trying to remove an element beyond the end of the data");
    const auto at = bytes_.begin() + std::ptrdiff_t(std::size_t(index) * entrySize_);
    bytes_.erase(at, at + entrySize_);
}

DeltaEntryArray::DeltaEntryArray() : IndexTableArray(DeltaEntry::SIZE) {}

DeltaEntryArray::DeltaEntryArray(const Byte* value, UInt64 size)
    : IndexTableArray(value, size, DeltaEntry::SIZE)
{
}

DeltaEntry DeltaEntryArray::at(UInt32 index) const
{
    return DeltaEntry(element(index));
}

void DeltaEntryArray::append(const DeltaEntry& entry)
{
    appendElement(entry);
}

void DeltaEntryArray::insert(UInt32 index, const DeltaEntry& entry)
{
    insertElement(index, entry);
}

void DeltaEntryArray::remove(UInt32 index)
{
    removeElement(index);
}

IndexEntryArray::IndexEntryArray(UInt8 sliceCount, UInt8 posTableCount)
    : IndexTableArray(IndexEntry::entrySize(sliceCount, posTableCount)), sliceCount_(sliceCount),
      posTableCount_(posTableCount)
{
}

IndexEntryArray::IndexEntryArray(const Byte* value, UInt64 size, UInt8 sliceCount,
                                 UInt8 posTableCount)
    : IndexTableArray(value, size, IndexEntry::entrySize(sliceCount, posTableCount)),
      sliceCount_(sliceCount), posTableCount_(posTableCount)
{
}

IndexEntry IndexEntryArray::at(UInt32 index) const
{
    return IndexEntry(element(index), sliceCount_, posTableCount_);
}

bool IndexEntryArray::matches(const IndexEntry& entry) const noexcept
{
    return entry.sliceCount() == sliceCount_ && entry.posTableCount() == posTableCount_;
}

void IndexEntryArray::append(const IndexEntry& entry)
{
    if (!matches(entry))
        MXF_SDK_THROW(Exceptions::InvalidElement, "Trying to append an invalid entry.");
    appendElement(entry);
}

void IndexEntryArray::insert(UInt32 index, const IndexEntry& entry)
{
    if (!matches(entry))
        MXF_SDK_THROW(Exceptions::InvalidElement, "TRying to insert an invalid element");
    insertElement(index, entry);
}

void IndexEntryArray::remove(UInt32 index)
{
    removeElement(index);
}

} // namespace MXF::SDK::IndexTables
