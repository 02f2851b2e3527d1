#include "MXF/SDK/IndexTables/IndexTableSegment.h"

#include "MXF/SDK/ByteCoders/BERCoder.h"
#include "MXF/SDK/ByteCoders/BigEndian.h"
#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/KLV/ReadExact.h"
#include "MXF/SDK/Templates/SafeCast.h"
#include "MXF/SDK/Types/Factories/UIDFactory.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace MXF::SDK::IndexTables
{

using ByteCoders::readBigEndian;
using ByteCoders::writeBigEndian;
using Platform::Byte;
using Platform::Int32;
using Platform::Int64;
using Platform::UInt16;
using Platform::UInt32;
using Platform::UInt64;
using Platform::UInt8;

namespace
{

constexpr Byte SEGMENT_KEY[KLV::Key::SIZE] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01,
                                              0x0D, 0x01, 0x02, 0x01, 0x01, 0x10, 0x01, 0x00};
constexpr Byte ZERO_UUID[Types::UUID::SIZE] = {};
// The segment's own length is always written in 4 bytes: 0x83 and three more.
constexpr UInt32 LENGTH_SIZE = 4;
constexpr UInt64 MAX_VALUE_LENGTH = 0xFFFFFF;
constexpr UInt64 MAX_LOCAL_LENGTH = 0xFFFF;

enum Tag : UInt16
{
    INSTANCE_UID = 0x3C0A,
    INDEX_EDIT_RATE = 0x3F0B,
    INDEX_START_POSITION = 0x3F0C,
    INDEX_DURATION = 0x3F0D,
    EDIT_UNIT_BYTE_COUNT = 0x3F05,
    INDEX_SID = 0x3F06,
    BODY_SID = 0x3F07,
    SLICE_COUNT = 0x3F08,
    POS_TABLE_COUNT = 0x3F0E,
    DELTA_ENTRY_ARRAY = 0x3F09,
    INDEX_ENTRY_ARRAY = 0x3F0A,
};

const char* const CODING_TEXT =
    "Invalid MXF Index Segment set (local tag should be 2 bytes and length field 2 bytes.)";

void checkKey(const KLV::Key& key)
{
    // Byte 5 says how the set is coded; it is checked on its own so that a segment coded
    // otherwise is told apart from a key of something else.
    for (std::size_t i = 0; i < KLV::Key::SIZE; ++i)
        if (i != 5 && key.data()[i] != SEGMENT_KEY[i])
            MXF_SDK_THROW(Exceptions::InvalidKey,
                          "Trying to load a Index Segment with an invalid key");
    if (KLV::localTagSize(key) != 2 || KLV::localLengthSize(key) != 2)
        MXF_SDK_THROW(Exceptions::InvalidIndexSegment, CODING_TEXT);
}

using KLV::readUpTo;

void checkFieldSize(const std::vector<Byte>& bytes, std::size_t size)
{
    if (bytes.size() > size)
        MXF_SDK_THROW(Exceptions::InvalidLength,
                      "Invalid data size in Local Value. Value still contains data to be read.");
    if (bytes.size() < size)
        MXF_SDK_THROW(Exceptions::InvalidLength,
                      "Invalid data size in Value in the IndexTable Segment");
}

void writeItemHead(DataIO::DataSink& sink, UInt16 tag, UInt16 length)
{
    Byte head[4];
    writeBigEndian(tag, head);
    writeBigEndian(length, head + 2);
    sink.write(head, sizeof head);
}

void writeItem(DataIO::DataSink& sink, UInt16 tag, const Types::SimpleDataType& value)
{
    writeItemHead(sink, tag, value.size());
    value.serialize(sink);
}

} // namespace

struct IndexTableSegment::Impl
{
    Types::UUID instanceUID{ZERO_UUID};
    Types::Rational indexEditRate{0, 1};
    Types::Position indexStartPosition;
    Types::Length indexDuration;
    Types::UInt32 editUnitByteCount;
    Types::UInt32 indexSID;
    Types::UInt32 bodySID;
    Types::UInt8 sliceCount;
    Types::UInt8 posTableCount;
    std::optional<DeltaEntryArray> deltaEntries;
    std::optional<IndexEntryArray> indexEntries;

    bool hasInstanceUID = false;
    bool hasIndexEditRate = false;
    bool hasIndexStartPosition = false;
    bool hasIndexDuration = false;
    bool hasEditUnitByteCount = false;
    bool hasIndexSID = false;
    bool hasBodySID = false;
    bool hasSliceCount = false;
    bool hasPosTableCount = false;

    void setSliceCount(UInt8 value)
    {
        if (indexEntries && !indexEntries->empty())
            MXF_SDK_THROW(Exceptions::InvalidChange,
                          "IndexEntryArray still contains value. Please empty IndexEntryArray "
                          "before setting sliceCount");
        sliceCount.setValue(value);
        hasSliceCount = true;
        if (indexEntries)
            indexEntries.emplace(value, posTableCount.value());
    }

    void setPosTableCount(UInt8 value)
    {
        if (indexEntries && !indexEntries->empty())
            MXF_SDK_THROW(Exceptions::InvalidChange,
                          "IndexEntryArray still contains value. Please empty IndexEntryArray "
                          "before setting posTableCount");
        posTableCount.setValue(value);
        hasPosTableCount = true;
        if (indexEntries)
            indexEntries.emplace(sliceCount.value(), value);
    }

    void parseItem(UInt16 tag, const std::vector<Byte>& bytes)
    {
        switch (tag)
        {
        case INSTANCE_UID:
            checkFieldSize(bytes, Types::UUID::SIZE);
            instanceUID = Types::UUID(bytes.data());
            hasInstanceUID = true;
            break;
        case INDEX_EDIT_RATE:
            checkFieldSize(bytes, 8);
            indexEditRate =
                Types::Rational(readBigEndian<Int32>(&bytes[0]), readBigEndian<Int32>(&bytes[4]));
            hasIndexEditRate = true;
            break;
        case INDEX_START_POSITION:
            checkFieldSize(bytes, 8);
            indexStartPosition.setValue(readBigEndian<Int64>(&bytes[0]));
            hasIndexStartPosition = true;
            break;
        case INDEX_DURATION:
            checkFieldSize(bytes, 8);
            indexDuration.setValue(readBigEndian<Int64>(&bytes[0]));
            hasIndexDuration = true;
            break;
        case EDIT_UNIT_BYTE_COUNT:
            checkFieldSize(bytes, 4);
            editUnitByteCount.setValue(readBigEndian<UInt32>(&bytes[0]));
            hasEditUnitByteCount = true;
            break;
        case INDEX_SID:
            checkFieldSize(bytes, 4);
            indexSID.setValue(readBigEndian<UInt32>(&bytes[0]));
            hasIndexSID = true;
            break;
        case BODY_SID:
            checkFieldSize(bytes, 4);
            bodySID.setValue(readBigEndian<UInt32>(&bytes[0]));
            hasBodySID = true;
            break;
        case SLICE_COUNT:
            checkFieldSize(bytes, 1);
            setSliceCount(bytes[0]);
            break;
        case POS_TABLE_COUNT:
            checkFieldSize(bytes, 1);
            setPosTableCount(bytes[0]);
            break;
        case DELTA_ENTRY_ARRAY:
            deltaEntries.emplace(bytes.data(), bytes.size());
            break;
        case INDEX_ENTRY_ARRAY:
            indexEntries.emplace(bytes.data(), bytes.size(), sliceCount.value(),
                                 posTableCount.value());
            break;
        default:
            // Items of later revisions of the standard, or of other writers: not ours to keep.
            break;
        }
    }

    void parse(DataIO::BoundedDataSource& value)
    {
        std::vector<Byte> bytes;
        while (value.remaining() > 0)
        {
            bytes.clear();
            readUpTo(value, bytes, 4);
            if (bytes.size() != 4)
                MXF_SDK_THROW(Exceptions::InvalidIndexSegment, CODING_TEXT);
            const UInt16 tag = readBigEndian<UInt16>(&bytes[0]);
            UInt64 length = readBigEndian<UInt16>(&bytes[2]);
            bytes.clear();
            readUpTo(value, bytes, length);
            // A long index entry array has 0xFFFF for a length it can't express; its own count
            // and entry size tell the truth.
            if (tag == INDEX_ENTRY_ARRAY && length == MAX_LOCAL_LENGTH &&
                bytes.size() == MAX_LOCAL_LENGTH)
            {
                const UInt64 whole =
                    8 + UInt64(readBigEndian<UInt32>(&bytes[0])) * readBigEndian<UInt32>(&bytes[4]);
                if (whole > MAX_LOCAL_LENGTH)
                {
                    length = whole;
                    readUpTo(value, bytes, length);
                }
            }
            if (bytes.size() != length)
                MXF_SDK_THROW(Exceptions::InvalidLength,
                              "Invalid data size in Value in the IndexTable Segment");
            parseItem(tag, bytes);
        }
    }

    UInt64 valueLength() const
    {
        UInt64 length = (4 + Types::UUID::SIZE) + 3 * (4 + 8) + (4 + 4);
        length += hasEditUnitByteCount ? 4 + 4 : 0;
        length += hasIndexSID ? 4 + 4 : 0;
        length += hasSliceCount ? 4 + 1 : 0;
        length += hasPosTableCount ? 4 + 1 : 0;
        length += deltaEntries ? 4 + deltaEntries->size() : 0;
        length += indexEntries ? 4 + indexEntries->size() : 0;
        return length;
    }
};

IndexTableSegment::IndexTableSegment() : impl_(std::make_unique<Impl>())
{
    setInstanceUID(Types::Factories::newUUID());
}

IndexTableSegment::IndexTableSegment(const KLV::Key& key, DataIO::BoundedDataSource& value)
    : impl_(std::make_unique<Impl>())
{
    checkKey(key);
    impl_->parse(value);
}

IndexTableSegment::IndexTableSegment(KLV::KLVItem& item) : IndexTableSegment(item.key, item.value)
{
}

IndexTableSegment::IndexTableSegment(const IndexTableSegment& other)
    : impl_(std::make_unique<Impl>(*other.impl_))
{
}

IndexTableSegment& IndexTableSegment::operator=(const IndexTableSegment& other)
{
    if (this != &other)
        *impl_ = *other.impl_;
    return *this;
}

IndexTableSegment::~IndexTableSegment() = default;

const KLV::Key& IndexTableSegment::segmentKey()
{
    static const KLV::Key key(SEGMENT_KEY);
    return key;
}

UInt64 IndexTableSegment::size() const
{
    return KLV::Key::SIZE + LENGTH_SIZE + impl_->valueLength();
}

void IndexTableSegment::write(DataIO::DataSink& sink) const
{
    const Impl& s = *impl_;
    const UInt64 length = s.valueLength();
    if (length > MAX_VALUE_LENGTH)
        MXF_SDK_THROW(Exceptions::InvalidLength, "Type size exceeded");
    Byte ber[LENGTH_SIZE];
    ByteCoders::BERCoder::encode(length, LENGTH_SIZE, ber);
    sink.write(SEGMENT_KEY, KLV::Key::SIZE);
    sink.write(ber, LENGTH_SIZE);

    writeItem(sink, INSTANCE_UID, s.instanceUID);
    writeItem(sink, INDEX_EDIT_RATE, s.indexEditRate);
    writeItem(sink, INDEX_START_POSITION, s.indexStartPosition);
    writeItem(sink, INDEX_DURATION, s.indexDuration);
    if (s.hasEditUnitByteCount)
        writeItem(sink, EDIT_UNIT_BYTE_COUNT, s.editUnitByteCount);
    if (s.hasIndexSID)
        writeItem(sink, INDEX_SID, s.indexSID);
    writeItem(sink, BODY_SID, s.bodySID);
    if (s.hasSliceCount)
        writeItem(sink, SLICE_COUNT, s.sliceCount);
    if (s.hasPosTableCount)
        writeItem(sink, POS_TABLE_COUNT, s.posTableCount);
    if (s.deltaEntries)
    {
        writeItemHead(sink, DELTA_ENTRY_ARRAY, Templates::SafeCast<UInt16>(s.deltaEntries->size()));
        s.deltaEntries->write(sink);
    }
    if (s.indexEntries)
    {
        // What a 2-byte length can't say is said by the array's count and entry size.
        writeItemHead(sink, INDEX_ENTRY_ARRAY,
                      UInt16(std::min(s.indexEntries->size(), MAX_LOCAL_LENGTH)));
        s.indexEntries->write(sink);
    }
}

bool IndexTableSegment::hasInstanceUID() const
{
    return impl_->hasInstanceUID;
}

const Types::UUID& IndexTableSegment::instanceUID() const
{
    return impl_->instanceUID;
}

void IndexTableSegment::setInstanceUID(const Types::UUID& value)
{
    impl_->instanceUID = value;
    impl_->hasInstanceUID = true;
}

bool IndexTableSegment::hasIndexEditRate() const
{
    return impl_->hasIndexEditRate;
}

const Types::Rational& IndexTableSegment::indexEditRate() const
{
    return impl_->indexEditRate;
}

void IndexTableSegment::setIndexEditRate(const Types::Rational& value)
{
    impl_->indexEditRate = value;
    impl_->hasIndexEditRate = true;
}

bool IndexTableSegment::hasIndexStartPosition() const
{
    return impl_->hasIndexStartPosition;
}

const Types::Position& IndexTableSegment::indexStartPosition() const
{
    return impl_->indexStartPosition;
}

void IndexTableSegment::setIndexStartPosition(Int64 value)
{
    impl_->indexStartPosition.setValue(value);
    impl_->hasIndexStartPosition = true;
}

bool IndexTableSegment::hasIndexDuration() const
{
    return impl_->hasIndexDuration;
}

const Types::Length& IndexTableSegment::indexDuration() const
{
    return impl_->indexDuration;
}

void IndexTableSegment::setIndexDuration(Int64 value)
{
    impl_->indexDuration.setValue(value);
    impl_->hasIndexDuration = true;
}

bool IndexTableSegment::hasEditUnitByteCount() const
{
    return impl_->hasEditUnitByteCount;
}

const Types::UInt32& IndexTableSegment::editUnitByteCount() const
{
    return impl_->editUnitByteCount;
}

void IndexTableSegment::setEditUnitByteCount(UInt32 value)
{
    impl_->editUnitByteCount.setValue(value);
    impl_->hasEditUnitByteCount = true;
}

bool IndexTableSegment::hasIndexSID() const
{
    return impl_->hasIndexSID;
}

const Types::UInt32& IndexTableSegment::indexSID() const
{
    return impl_->indexSID;
}

void IndexTableSegment::setIndexSID(UInt32 value)
{
    impl_->indexSID.setValue(value);
    impl_->hasIndexSID = true;
}

bool IndexTableSegment::hasBodySID() const
{
    return impl_->hasBodySID;
}

const Types::UInt32& IndexTableSegment::bodySID() const
{
    return impl_->bodySID;
}

void IndexTableSegment::setBodySID(UInt32 value)
{
    impl_->bodySID.setValue(value);
    impl_->hasBodySID = true;
}

bool IndexTableSegment::hasSliceCount() const
{
    return impl_->hasSliceCount;
}

const Types::UInt8& IndexTableSegment::sliceCount() const
{
    return impl_->sliceCount;
}

void IndexTableSegment::setSliceCount(UInt8 value)
{
    impl_->setSliceCount(value);
}

bool IndexTableSegment::hasPosTableCount() const
{
    return impl_->hasPosTableCount;
}

const Types::UInt8& IndexTableSegment::posTableCount() const
{
    return impl_->posTableCount;
}

void IndexTableSegment::setPosTableCount(UInt8 value)
{
    impl_->setPosTableCount(value);
}

const DeltaEntryArray* IndexTableSegment::deltaEntryArray() const
{
    return impl_->deltaEntries ? &*impl_->deltaEntries : nullptr;
}

const IndexEntryArray* IndexTableSegment::indexEntryArray() const
{
    return impl_->indexEntries ? &*impl_->indexEntries : nullptr;
}

UInt32 IndexTableSegment::deltaEntryCount() const
{
    return impl_->deltaEntries ? impl_->deltaEntries->count() : 0;
}

DeltaEntry IndexTableSegment::deltaEntry(UInt32 index) const
{
    if (index >= deltaEntryCount())
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds,
                      "IndexTableSegment::deltaEntry IndexOutOfBounds");
    return impl_->deltaEntries->at(index);
}

void IndexTableSegment::appendDeltaEntry(const DeltaEntry& entry)
{
    if (!impl_->deltaEntries)
        impl_->deltaEntries.emplace();
    impl_->deltaEntries->append(entry);
}

void IndexTableSegment::removeDeltaEntry(UInt32 index)
{
    if (deltaEntryCount() == 0)
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds,
                      "Trying to remove element from empty deltaEntryArray.");
    impl_->deltaEntries->remove(index);
}

UInt32 IndexTableSegment::indexEntryCount() const
{
    return impl_->indexEntries ? impl_->indexEntries->count() : 0;
}

IndexEntry IndexTableSegment::indexEntry(UInt32 index) const
{
    if (index >= indexEntryCount())
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds,
                      "IndexTableSegment::indexEntry IndexOutOfBounds");
    return impl_->indexEntries->at(index);
}

namespace
{

void checkCounts(const Types::UInt8& sliceCount, const Types::UInt8& posTableCount,
                 const IndexEntry& entry)
{
    if (entry.sliceCount() == sliceCount.value() && entry.posTableCount() == posTableCount.value())
        return;
    MXF_SDK_THROW(
        Exceptions::InvalidElement,
        "Error: NSL in segment has value: " + std::to_string(sliceCount.value()) +
            " while IndexEntry has NSL: " + std::to_string(entry.sliceCount()) +
            "\nError: NPE in segment has value: " + std::to_string(posTableCount.value()) +
            " while IndexEntry has NPE: " + std::to_string(entry.posTableCount()));
}

} // namespace

void IndexTableSegment::appendIndexEntry(const IndexEntry& entry)
{
    checkCounts(impl_->sliceCount, impl_->posTableCount, entry);
    if (!impl_->indexEntries)
        impl_->indexEntries.emplace(impl_->sliceCount.value(), impl_->posTableCount.value());
    impl_->indexEntries->append(entry);
}

void IndexTableSegment::insertIndexEntry(UInt32 index, const IndexEntry& entry)
{
    checkCounts(impl_->sliceCount, impl_->posTableCount, entry);
    if (!impl_->indexEntries)
        impl_->indexEntries.emplace(impl_->sliceCount.value(), impl_->posTableCount.value());
    impl_->indexEntries->insert(index, entry);
}

void IndexTableSegment::removeIndexEntry(UInt32 index)
{
    if (indexEntryCount() == 0)
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds,
                      "Trying to remove element from empty indexEntryArray.");
    impl_->indexEntries->remove(index);
}

} // namespace MXF::SDK::IndexTables
