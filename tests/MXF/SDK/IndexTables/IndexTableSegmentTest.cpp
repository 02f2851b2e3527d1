// Segments built in code, and segments of hand-made bytes laid out as SMPTE 377M says, the
// malformed ones among them.
#include "MXF/SDK/IndexTables/IndexTableSegment.h"

#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/IndexTables/IndexTableSegmentWithGOPInfo.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <limits>

using namespace Halvorn::Test;
using MXF::SDK::Platform::Int64;
using MXF::SDK::Platform::UInt32;
using MXF::SDK::Platform::UInt64;
using namespace Halvorn::Test::Support;
using namespace MXF::SDK::IndexTables;
namespace Memory = MXF::SDK::DataIO::Memory;
namespace Exceptions = MXF::SDK::Exceptions;
namespace Types = MXF::SDK::Types;
namespace KLV = MXF::SDK::KLV;

namespace
{

const Bytes KEY = hexBytes("06 0e 2b 34 02 53 01 01 0d 01 02 01 01 10 01 00");
const Bytes UUID_BYTES = hexBytes("00112233 44556677 8899aabb ccddeeff");

Bytes item(unsigned tag, const Bytes& value)
{
    return be(tag, 2) + be(value.size(), 2) + value;
}

// Key, 4-byte BER length, value.
Bytes klv(const Bytes& value, const Bytes& key = KEY)
{
    return key + hexBytes("83") + be(value.size(), 3) + value;
}

// The mandatory items, as a segment writes them first.
Bytes head(UInt64 start = 0, UInt64 duration = 0)
{
    return item(0x3c0a, UUID_BYTES) + item(0x3f0b, be(25, 4) + be(1, 4)) +
           item(0x3f0c, be(start, 8)) + item(0x3f0d, be(duration, 8));
}

IndexTableSegment parsed(const Bytes& bytes)
{
    Memory::MemoryDataSource source(bytes.data(), bytes.size());
    KLV::KLVReader reader(source);
    UInt64 skipped = 0;
    return IndexTableSegment(*reader.readKLV(skipped, 0));
}

Bytes written(const IndexTableSegment& segment)
{
    Memory::MemoryDataSink sink;
    segment.write(sink);
    return sink.data();
}

template <typename E = Exceptions::BaseException>
std::string parseError(const Bytes& bytes)
{
    const std::wstring text = thrownMessage<E>([&] { parsed(bytes); });
    return std::string(text.begin(), text.end());
}

TEST(IndexTableSegment, BuiltSegmentWritesTheStandardLayoutAndReadsBack)
{
    IndexTableSegment segment;
    segment.setInstanceUID(Types::UUID(UUID_BYTES.data()));
    segment.setIndexEditRate(Types::Rational(25, 1));
    segment.setIndexStartPosition(100);
    segment.setIndexDuration(2);
    segment.setIndexSID(2);
    segment.setBodySID(1);
    segment.setSliceCount(1);
    segment.setPosTableCount(1);
    segment.appendDeltaEntry(DeltaEntry(-1, 0, 0x200));
    segment.appendDeltaEntry(DeltaEntry(0, 1, 0));
    IndexEntry first(1, 1);
    first.setRandomAccess(true);
    first.setSequenceHeader(true);
    first.setStreamOffset(0x0102030405060708);
    first.setSliceOffset(0, 0x24800);
    first.setPosTable(0, Types::Rational(-1, 2));
    IndexEntry second(1, 1);
    second.setTemporalOffset(1);
    second.setKeyFrameOffset(-1);
    second.setForwardPrediction(true);
    second.setBackwardPrediction(true);
    second.setStreamOffset(0x30800);
    segment.appendIndexEntry(second);
    segment.insertIndexEntry(0, first);

    const Bytes expected =
        klv(item(0x3c0a, UUID_BYTES) + item(0x3f0b, hexBytes("00000019 00000001")) +
            item(0x3f0c, be(100, 8)) + item(0x3f0d, be(2, 8)) + item(0x3f06, be(2, 4)) +
            item(0x3f07, be(1, 4)) + item(0x3f08, hexBytes("01")) + item(0x3f0e, hexBytes("01")) +
            item(0x3f09, hexBytes("00000002 00000006 ff 00 00000200 00 01 00000000")) +
            item(0x3f0a, hexBytes("00000002 00000017"
                                  "00 00 c0 0102030405060708 00024800 ffffffff 00000002"
                                  "01 ff 30 0000000000030800 00000000 00000000 00000000")));
    EXPECT_EQ(written(segment), expected);
    EXPECT_EQ(segment.size(), expected.size());

    const IndexTableSegment back = parsed(expected);
    EXPECT_EQ(written(back), expected);
    EXPECT_TRUE(back.hasIndexSID());
    EXPECT_FALSE(back.hasEditUnitByteCount());
    EXPECT_EQ(back.indexEditRate(), Types::Rational(25, 1));
    EXPECT_EQ(back.indexStartPosition().value(), 100);
    EXPECT_EQ(back.deltaEntry(0).posTableIndex(), -1);
    EXPECT_EQ(back.deltaEntry(0).elementDelta(), 0x200u);
    EXPECT_EQ(back.deltaEntry(1).slice(), 1);
    const IndexEntry entry = back.indexEntry(0);
    EXPECT_TRUE(entry.isRandomAccess() && entry.hasSequenceHeader());
    EXPECT_FALSE(entry.isForwardPrediction() || entry.isBackwardPrediction());
    EXPECT_EQ(entry.streamOffset(), 0x0102030405060708u);
    EXPECT_EQ(entry.sliceOffset(0), 0x24800u);
    EXPECT_EQ(entry.posTable(0).numerator(), -1);
    EXPECT_EQ(entry.posTable(0).denominator(), 2);
    EXPECT_EQ(back.indexEntry(1).keyFrameOffset(), -1);
    EXPECT_EQ(back.indexEntry(1).flags(), 0x30);
}

TEST(IndexTableSegment, OptionalItemsAreWrittenOnlyWhenSet)
{
    // A default segment: the five mandatory items and nothing else; InstanceUID is a new one.
    IndexTableSegment bare;
    EXPECT_TRUE(bare.hasInstanceUID());
    EXPECT_EQ(bare.size(), 16u + 4 + 20 + 3 * 12 + 8);
    EXPECT_EQ(written(bare).size(), bare.size());

    // CBE: EditUnitByteCount, no entries, neither array; a duration of 0 is legal.
    const Bytes cbe = klv(head() + item(0x3f05, be(312832, 4)) + item(0x3f07, be(1, 4)));
    const IndexTableSegment segment = parsed(cbe);
    EXPECT_EQ(segment.editUnitByteCount().value(), 312832u);
    EXPECT_EQ(segment.indexDuration().value(), 0);
    EXPECT_EQ(segment.deltaEntryArray(), nullptr);
    EXPECT_EQ(segment.indexEntryArray(), nullptr);
    EXPECT_EQ(written(segment), cbe);

    // Mandatory items missing from the file are written all the same, in the fixed order.
    const IndexTableSegment sparse = parsed(klv(item(0x3f07, be(7, 4)) + item(0x3c0a, UUID_BYTES)));
    EXPECT_FALSE(sparse.hasIndexEditRate());
    EXPECT_EQ(written(sparse),
              klv(item(0x3c0a, UUID_BYTES) + item(0x3f0b, be(1, 8)) + item(0x3f0c, be(0, 8)) +
                  item(0x3f0d, be(0, 8)) + item(0x3f07, be(7, 4))));
}

TEST(IndexTableSegment, UnknownTagsAreSkipped)
{
    const Bytes known = head(0, 1) + item(0x3f07, be(1, 4));
    const IndexTableSegment segment =
        parsed(klv(item(0x3f0f, be(5, 8)) + known + item(0xffff, Bytes(3, 0xab))));
    EXPECT_EQ(segment.bodySID().value(), 1u);
    EXPECT_EQ(written(segment), klv(known));
}

TEST(IndexTableSegment, MalformedSegmentsThrowTheirTexts)
{
    const Bytes body = head() + item(0x3f07, be(1, 4));
    Bytes otherKey = KEY;
    otherKey[13] = 0x11;
    EXPECT_EQ(parseError<Exceptions::InvalidKey>(klv(body, otherKey)),
              "Trying to load a Index Segment with an invalid key");
    const std::string coding = "Invalid MXF Index Segment set (local tag should be 2 bytes and "
                               "length field 2 bytes.)";
    Bytes berKey = KEY;
    berKey[5] = 0x13; // 2-byte tags, BER lengths
    EXPECT_EQ(parseError<Exceptions::InvalidIndexSegment>(klv(body, berKey)), coding);
    EXPECT_EQ(parseError<Exceptions::InvalidIndexSegment>(klv(body + hexBytes("3f 07 00"))),
              coding);

    const std::string leftOver =
        "Invalid data size in Local Value. Value still contains data to be read.";
    const std::string wrongSize = "Invalid data size in Value in the IndexTable Segment";
    EXPECT_EQ(parseError<Exceptions::InvalidLength>(klv(head() + item(0x3f05, be(1, 5)))),
              leftOver);
    EXPECT_EQ(parseError<Exceptions::InvalidLength>(klv(head() + item(0x3f05, be(1, 3)))),
              wrongSize);
    EXPECT_EQ(parseError<Exceptions::InvalidLength>(klv(item(0x3c0a, Bytes(17)))), leftOver);
    EXPECT_EQ(parseError<Exceptions::InvalidLength>(klv(item(0x3f08, Bytes()))), wrongSize);
    // An item longer than what is left of the value.
    EXPECT_EQ(parseError<Exceptions::InvalidLength>(klv(head() + hexBytes("3f 07 00 04 00 00"))),
              wrongSize);

    const std::string tooShort = "Invalid data size in the Index Table collection. Not enough "
                                 "data to read element entry size";
    const std::string badEntrySize =
        "Invalid data size in Value to create an element in the Index Table collections.";
    const std::string badCount = "Number of expected values differ from the size of the local "
                                 "KLV value field. Index Table Segment";
    EXPECT_EQ(parseError<Exceptions::InvalidLength>(klv(body + item(0x3f09, be(0, 7)))), tooShort);
    EXPECT_EQ(parseError<Exceptions::InvalidLength>(klv(body + item(0x3f0a, Bytes()))), tooShort);
    EXPECT_EQ(parseError<Exceptions::InvalidLength>(
                  klv(body + item(0x3f09, be(1, 4) + be(7, 4) + Bytes(7)))),
              badEntrySize);
    EXPECT_EQ(parseError<Exceptions::InvalidLength>(
                  klv(body + item(0x3f09, be(2, 4) + be(6, 4) + Bytes(6)))),
              badCount);
    EXPECT_EQ(parseError<Exceptions::InvalidLength>(
                  klv(body + item(0x3f09, be(0, 4) + be(6, 4) + Bytes(6)))),
              badCount);
    EXPECT_EQ(parseError<Exceptions::InvalidLength>(
                  klv(body + item(0x3f0a, be(0xffffffff, 4) + be(11, 4) + Bytes(11)))),
              badCount);
    EXPECT_EQ(
        parseError<Exceptions::InvalidLength>(klv(body + item(0x3f08, hexBytes("01")) +
                                                  item(0x3f0a, be(1, 4) + be(11, 4) + Bytes(11)))),
        badEntrySize);
    // The entry array ahead of SliceCount is read with NSL 0: 15-byte entries can't be.
    EXPECT_EQ(
        parseError<Exceptions::InvalidLength>(klv(
            body + item(0x3f0a, be(1, 4) + be(15, 4) + Bytes(15)) + item(0x3f08, hexBytes("01")))),
        badEntrySize);
    // SliceCount after entries were read would change their size.
    EXPECT_EQ(
        parseError<Exceptions::InvalidChange>(klv(
            body + item(0x3f0a, be(1, 4) + be(11, 4) + Bytes(11)) + item(0x3f08, hexBytes("01")))),
        "IndexEntryArray still contains value. Please empty IndexEntryArray before "
        "setting sliceCount");
}

TEST(IndexTableSegment, EveryCutOfASegmentThrowsAndEveryPieceSizeReads)
{
    IndexTableSegment segment;
    segment.setSliceCount(1);
    segment.appendDeltaEntry(DeltaEntry(0, 0, 0));
    for (int i = 0; i < 5; ++i)
        segment.appendIndexEntry(IndexEntry(1, 0));
    const Bytes whole = written(segment);
    for (std::size_t cut = 20; cut < whole.size(); ++cut)
    {
        const Bytes part(whole.begin(), whole.begin() + std::ptrdiff_t(cut));
        EXPECT_THROW(parsed(part), Exceptions::BaseException) << cut;
    }
    forEachSplit(whole,
                 [&](DataSource& source)
                 {
                     KLV::KLVReader reader(source);
                     UInt64 skipped = 0;
                     EXPECT_EQ(written(IndexTableSegment(*reader.readKLV(skipped, 0))), whole);
                 });
}

TEST(IndexTableSegment, LongIndexEntryArraySaysFFFFAndIsReadByItsCount)
{
    for (const UInt32 count : {5957u, 5958u, 7000u})
    {
        SCOPED_TRACE(count);
        IndexTableSegment segment;
        for (UInt32 i = 0; i < count; ++i)
        {
            IndexEntry entry;
            entry.setStreamOffset(i * 1000u);
            segment.appendIndexEntry(entry);
        }
        const Bytes bytes = written(segment);
        // 8 + 11 * 5957 = 65535, the largest array a 2-byte length can tell.
        const std::size_t at = bytes.size() - segment.indexEntryArray()->size() - 2;
        EXPECT_EQ(be((bytes[at] << 8) | bytes[at + 1], 2), hexBytes("ffff"));
        const IndexTableSegment back = parsed(bytes);
        ASSERT_EQ(back.indexEntryCount(), count);
        EXPECT_EQ(back.indexEntry(count - 1).streamOffset(), (count - 1) * 1000u);
        EXPECT_EQ(written(back), bytes);
    }
}

TEST(IndexTableSegment, EntryOperationsAndTheirTexts)
{
    IndexTableSegment segment;
    const auto text = [](auto&& call)
    {
        const std::wstring w = thrownMessage<Exceptions::BaseException>(call);
        return std::string(w.begin(), w.end());
    };
    EXPECT_EQ(text([&] { segment.deltaEntry(0); }),
              "IndexTableSegment::deltaEntry IndexOutOfBounds");
    EXPECT_EQ(text([&] { segment.indexEntry(0); }),
              "IndexTableSegment::indexEntry IndexOutOfBounds");
    EXPECT_EQ(text([&] { segment.removeDeltaEntry(0); }),
              "Trying to remove element from empty deltaEntryArray.");
    EXPECT_EQ(text([&] { segment.removeIndexEntry(0); }),
              "Trying to remove element from empty indexEntryArray.");
    EXPECT_THROW(segment.indexEntry(0), Exceptions::IndexOutOfBounds);

    segment.appendDeltaEntry(DeltaEntry(1, 2, 3));
    EXPECT_EQ(text([&] { segment.deltaEntry(1); }),
              "IndexTableSegment::deltaEntry IndexOutOfBounds");
    EXPECT_EQ(text([&] { segment.removeDeltaEntry(1); }),
              "Trying to remove an element beyond the end of the data");
    segment.removeDeltaEntry(0);
    EXPECT_EQ(segment.deltaEntryCount(), 0u);
    EXPECT_NE(segment.deltaEntryArray(), nullptr);

    segment.setSliceCount(2);
    EXPECT_THROW(segment.appendIndexEntry(IndexEntry(1, 0)), Exceptions::InvalidElement);
    EXPECT_EQ(text([&] { segment.appendIndexEntry(IndexEntry(1, 3)); }),
              "Error: NSL in segment has value: 2 while IndexEntry has NSL: 1\n"
              "Error: NPE in segment has value: 0 while IndexEntry has NPE: 3");
    EXPECT_EQ(text([&] { segment.insertIndexEntry(0, IndexEntry(0, 0)); }),
              "Error: NSL in segment has value: 2 while IndexEntry has NSL: 0\n"
              "Error: NPE in segment has value: 0 while IndexEntry has NPE: 0");
    segment.appendIndexEntry(IndexEntry(2, 0));
    EXPECT_EQ(text([&] { segment.insertIndexEntry(2, IndexEntry(2, 0)); }),
              "Trying to insert an element beyond the end of the data");
    EXPECT_EQ(text([&] { segment.setSliceCount(1); }),
              "IndexEntryArray still contains value. Please empty IndexEntryArray before setting "
              "sliceCount");
    EXPECT_EQ(text([&] { segment.setPosTableCount(1); }),
              "IndexEntryArray still contains value. Please empty IndexEntryArray before setting "
              "posTableCount");
    // Emptied, the array takes new counts.
    segment.removeIndexEntry(0);
    segment.setSliceCount(0);
    segment.setPosTableCount(1);
    segment.appendIndexEntry(IndexEntry(0, 1));
    EXPECT_EQ(segment.indexEntryArray()->entrySize(), 19u);

    IndexEntry entry(1, 1);
    EXPECT_EQ(text([&] { entry.sliceOffset(1); }),
              "Trying to access a element beyond the end of data.");
    EXPECT_EQ(text([&] { entry.setPosTable(1, Types::Rational(1, 1)); }),
              "Trying to access a element beyond the end of data.");

    IndexEntryArray array(1, 0);
    EXPECT_EQ(text([&] { array.at(0); }), "IndexEntryArray::at() IndexOutOfBonds");
    EXPECT_EQ(text([&] { array.append(IndexEntry(0, 0)); }), "Trying to append an invalid entry.");
    EXPECT_EQ(text([&] { array.insert(0, IndexEntry(0, 0)); }),
              "TRying to insert an invalid element");
    EXPECT_EQ(text([&] { array.remove(0); }),
              "Trying to remove an element beyond the end of the data");
    DeltaEntryArray deltas;
    EXPECT_EQ(text([&] { deltas.insert(1, DeltaEntry()); }),
              "Trying to insert an element beyond the end of the data");
    EXPECT_THROW(deltas.at(0), Exceptions::IndexOutOfBounds);

    // An element of the wrong size never reaches the flat store.
    struct RawArray : IndexTableArray
    {
        RawArray() : IndexTableArray(11) {}
        using IndexTableArray::appendElement;
    } raw;
    EXPECT_EQ(text([&] { raw.appendElement(DeltaEntry()); }),
              "Trying to append an invalid element");
    EXPECT_THROW(raw.appendElement(DeltaEntry()), Exceptions::InvalidElement);
}

// Entries of a segment: 'K' a key frame, else an entry whose key frame is `offset` back.
IndexTableSegmentWithGOPInfo gopSegment(Int64 start, Int64 duration,
                                        const std::vector<int>& keyFrameOffsets)
{
    IndexTableSegmentWithGOPInfo segment;
    segment.setIndexStartPosition(start);
    segment.setIndexDuration(duration);
    for (const int offset : keyFrameOffsets)
    {
        IndexEntry entry;
        entry.setRandomAccess(offset == 0);
        entry.setKeyFrameOffset(std::int8_t(offset));
        segment.appendIndexEntry(entry);
    }
    segment.update(nullptr, nullptr);
    return segment;
}

TEST(IndexTableSegmentWithGOPInfo, CarriesTheGOPAcrossTheBoundary)
{
    const auto a = gopSegment(0, 6, {0, -1, -2, 0, -1, -2});
    auto b = gopSegment(6, 6, {-3, -4, 0, -1, -2, -3});
    EXPECT_EQ(b.gopInfo(0).gopPosition, -1);
    EXPECT_EQ(b.gopInfo(2).gopPosition, 8);
    b.update(&a, nullptr);
    EXPECT_EQ(b.gopInfo(0).gopPosition, 3);
    EXPECT_EQ(b.gopInfo(1).keyFrameOffset, -4);
    EXPECT_EQ(b.gopInfo(2).gopPosition, 8);
    EXPECT_EQ(b.gopInfo(5).keyFrameOffset, -3);

    // Key frames before the start are unknown until the previous segment is tied in.
    auto c = gopSegment(12, 3, {-1, -2, -3});
    EXPECT_EQ(c.gopInfo(0).gopPosition, -1);
    c.update(&b, nullptr);
    EXPECT_EQ(c.gopInfo(0).gopPosition, 8);
    EXPECT_EQ(c.gopInfo(2).keyFrameOffset, -6);
    EXPECT_EQ(c.gopInfoCount(), 3u);
    b.update(&a, &c);

    const auto text = [](auto&& call)
    {
        const std::wstring w = thrownMessage<Exceptions::BaseException>(call);
        return std::string(w.begin(), w.end());
    };
    EXPECT_EQ(text([&] { c.gopInfo(3); }), "index < gopInfoVector_.size (): The "
                                           "IndexTableSegment is smaller than the given index.");
    EXPECT_EQ(text([&] { b.update(&c, nullptr); }),
              "previous -> indexStartPosition ().value () + previous -> indexDuration ().value "
              "() == this -> indexStartPosition ().value (): Trying to update non-consecutive "
              "IndexTableSegmentWithGOPInfo's.");
    EXPECT_EQ(text([&] { b.update(nullptr, &a); }),
              "this -> indexStartPosition ().value () + this -> indexDuration ().value () == "
              "next -> indexStartPosition ().value (): Trying to update non-consecutive "
              "IndexTableSegmentWithGOPInfo's.");
    // A previous segment inside one GOP has no key frame to hand on.
    const auto inside = gopSegment(12, 3, {-1, -2, -3});
    auto after = gopSegment(15, 1, {-4});
    EXPECT_EQ(text([&] { after.update(&inside, nullptr); }),
              "lastInfoFromPrevious.gopPosition >= 0: Not supported: IndexTableSegment duration "
              "is smaller than GOP length.");
    // Incomplete neighbours are not used, consecutive or not.
    const auto partial = gopSegment(0, 7, {0, -1});
    after.update(&partial, &partial);
    EXPECT_EQ(after.gopInfo(0).gopPosition, -1);

    // Positions at the ends of 64 bits: entries whose position or key frame would leave them stay
    // unknown, and a neighbour whose end would leave them is not consecutive.
    const Int64 max = std::numeric_limits<Int64>::max();
    const auto top = gopSegment(max - 1, 3, {0, -1, -2});
    EXPECT_EQ(top.gopInfo(0).gopPosition, max - 1);
    EXPECT_EQ(top.gopInfo(1).gopPosition, max - 1);
    EXPECT_EQ(top.gopInfo(2).gopPosition, -1);
    EXPECT_EQ(gopSegment(std::numeric_limits<Int64>::min(), 1, {-1}).gopInfo(0).gopPosition, -1);
    auto wrapped = gopSegment(std::numeric_limits<Int64>::min() + 1, 1, {0});
    EXPECT_EQ(text([&] { wrapped.update(&top, nullptr); }),
              "previous -> indexStartPosition ().value () + previous -> indexDuration ().value "
              "() == this -> indexStartPosition ().value (): Trying to update non-consecutive "
              "IndexTableSegmentWithGOPInfo's.");
}

} // namespace
