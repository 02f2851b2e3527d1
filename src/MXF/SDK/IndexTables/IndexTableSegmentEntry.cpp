#include "MXF/SDK/IndexTables/IndexTableSegmentEntry.h"

#include "MXF/SDK/ByteCoders/BigEndian.h"
#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"

#include <algorithm>

namespace MXF::SDK::IndexTables
{

using ByteCoders::readBigEndian;
using ByteCoders::writeBigEndian;
using Platform::Byte;
using Platform::Int32;
using Platform::Int8;
using Platform::UInt32;
using Platform::UInt64;
using Platform::UInt8;

DeltaEntry::DeltaEntry(Int8 posTableIndex, UInt8 slice, UInt32 elementDelta)
{
    setPosTableIndex(posTableIndex);
    setSlice(slice);
    setElementDelta(elementDelta);
}

DeltaEntry::DeltaEntry(const Byte* bytes)
{
    std::copy_n(bytes, SIZE, bytes_.begin());
}

void DeltaEntry::write(DataIO::DataSink& sink) const
{
    sink.write(bytes_.data(), SIZE);
}

Int8 DeltaEntry::posTableIndex() const
{
    return readBigEndian<Int8>(&bytes_[0]);
}

void DeltaEntry::setPosTableIndex(Int8 value)
{
    writeBigEndian(value, &bytes_[0]);
}

UInt8 DeltaEntry::slice() const
{
    return bytes_[1];
}

void DeltaEntry::setSlice(UInt8 value)
{
    bytes_[1] = value;
}

UInt32 DeltaEntry::elementDelta() const
{
    return readBigEndian<UInt32>(&bytes_[2]);
}

void DeltaEntry::setElementDelta(UInt32 value)
{
    writeBigEndian(value, &bytes_[2]);
}

IndexEntry::IndexEntry(UInt8 sliceCount, UInt8 posTableCount)
    : sliceCount_(sliceCount), posTableCount_(posTableCount),
      bytes_(entrySize(sliceCount, posTableCount))
{
}

IndexEntry::IndexEntry(const Byte* bytes, UInt8 sliceCount, UInt8 posTableCount)
    : sliceCount_(sliceCount), posTableCount_(posTableCount),
      bytes_(bytes, bytes + entrySize(sliceCount, posTableCount))
{
}

void IndexEntry::write(DataIO::DataSink& sink) const
{
    sink.write(bytes_.data(), bytes_.size());
}

Int8 IndexEntry::temporalOffset() const
{
    return readBigEndian<Int8>(&bytes_[0]);
}

void IndexEntry::setTemporalOffset(Int8 value)
{
    writeBigEndian(value, &bytes_[0]);
}

Int8 IndexEntry::keyFrameOffset() const
{
    return readBigEndian<Int8>(&bytes_[1]);
}

void IndexEntry::setKeyFrameOffset(Int8 value)
{
    writeBigEndian(value, &bytes_[1]);
}

UInt8 IndexEntry::flags() const
{
    return bytes_[2];
}

void IndexEntry::setFlags(UInt8 value)
{
    bytes_[2] = value;
}

UInt64 IndexEntry::streamOffset() const
{
    return readBigEndian<UInt64>(&bytes_[3]);
}

void IndexEntry::setStreamOffset(UInt64 value)
{
    writeBigEndian(value, &bytes_[3]);
}

void IndexEntry::setFlag(Byte bit, bool on)
{
    bytes_[2] = on ? Byte(bytes_[2] | bit) : Byte(bytes_[2] & ~bit);
}

std::size_t IndexEntry::sliceOffsetAt(UInt32 index) const
{
    if (index >= sliceCount_)
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds,
                      "Trying to access a element beyond the end of data.");
    return 11 + 4 * std::size_t(index);
}

std::size_t IndexEntry::posTableAt(UInt32 index) const
{
    if (index >= posTableCount_)
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds,
                      "Trying to access a element beyond the end of data.");
    return 11 + 4 * std::size_t(sliceCount_) + 8 * std::size_t(index);
}

UInt32 IndexEntry::sliceOffset(UInt32 index) const
{
    return readBigEndian<UInt32>(&bytes_[sliceOffsetAt(index)]);
}

void IndexEntry::setSliceOffset(UInt32 index, UInt32 value)
{
    writeBigEndian(value, &bytes_[sliceOffsetAt(index)]);
}

Types::Rational IndexEntry::posTable(UInt32 index) const
{
    const Byte* at = &bytes_[posTableAt(index)];
    return Types::Rational(readBigEndian<Int32>(at), readBigEndian<Int32>(at + 4));
}

void IndexEntry::setPosTable(UInt32 index, const Types::Rational& value)
{
    std::copy_n(value.data(), 8, &bytes_[posTableAt(index)]);
}

} // namespace MXF::SDK::IndexTables
