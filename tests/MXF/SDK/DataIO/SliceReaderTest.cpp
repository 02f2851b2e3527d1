#include "MXF/SDK/DataIO/SliceReader.h"

#include "DataIOTestSupport.h"
#include "MXF/SDK/DataIO/BufferSliceSource.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

using namespace Halvorn::Test;
using Halvorn::Test::Support::thrownMessage;
namespace Exceptions = MXF::SDK::Exceptions;

namespace
{

// A buffer source holding `slices`, closed, so that eof is reached.
BufferSliceSource* bufferOf(std::vector<SlicePtr> slices)
{
    auto* buffer = new BufferSliceSource;
    for (auto& s : slices)
    {
        buffer->write(std::move(s));
    }
    buffer->close();
    return buffer;
}

} // namespace

TEST(SliceReader, ReadOfOneWholeSourceSliceIsThatSliceAndStraddlingReadsGatherFromItsFactory)
{
    CountingFactory mine, theirs;
    const auto bytes = patternBytes(100);
    BlockPtr first = BlockPtr::adopt(theirs.blockWith({bytes.begin(), bytes.begin() + 40}));
    BlockPtr second = BlockPtr::adopt(mine.blockWith({bytes.begin() + 40, bytes.end()}));
    std::vector<SlicePtr> slices;
    slices.push_back(Slice::make(first.get(), 0, 40));
    slices.push_back(Slice::make(second.get(), 0, 60));
    SliceReader reader(bufferOf(std::move(slices)), true);

    auto whole = reader.readExactly(30);
    EXPECT_EQ(whole->block, first.get()) << "no copy when one run holds all";
    auto straddling = reader.readUpTo(20);
    EXPECT_EQ(theirs.created.load(), 2) << "gathering block from the first run's factory";
    EXPECT_EQ(bytesOf(*straddling),
              std::vector<std::uint8_t>(bytes.begin() + 30, bytes.begin() + 50));
    EXPECT_EQ(reader.position(), 50u);
    auto rest = reader.readUpTo(1000);
    EXPECT_EQ(rest->block, second.get());
    EXPECT_EQ(rest->size, 50u);
    EXPECT_TRUE(reader.eof());
}

TEST(SliceReader, ExactReadsAtTheEnd)
{
    CountingFactory factory;
    const auto bytes = patternBytes(10);
    ChunkedSliceSource source(factory, bytes, 4);
    SliceReader reader(&source, false);
    EXPECT_EQ(reader.readExactly(6)->size, 6u);
    EXPECT_EQ(thrownMessage<Exceptions::NotEnoughData>([&] { reader.readExactly(5); }),
              L"Not enough data to read from the source");
    // The short read went back: nothing lost.
    EXPECT_EQ(reader.position(), 6u);
    auto left = reader.read(100);
    EXPECT_EQ(bytesOf(*left), std::vector<std::uint8_t>(bytes.begin() + 6, bytes.end()));
    EXPECT_TRUE(reader.eof());
    EXPECT_EQ(reader.readExactly(0)->size, 0u) << "no throw for 0 on an exhausted reader";
    EXPECT_THROW(reader.readExactly(1), Exceptions::NotEnoughData);
    EXPECT_THROW(reader.readUInt32(), Exceptions::NotEnoughData);
}

TEST(SliceReader, PushBackComesFirstAndReadMaxCutsWithoutCopying)
{
    CountingFactory factory;
    ChunkedSliceSource source(factory, patternBytes(300), 300);
    SliceReader reader(&source, false);
    auto hundred = reader.readExactly(100);
    const BlockPtr held = BlockPtr::share(hundred->block);
    Block* block = held.get();
    reader.pushBack(std::move(hundred));
    EXPECT_EQ(reader.bufferedSize(), 100u);
    EXPECT_EQ(reader.position(), 0u);
    EXPECT_EQ(reader.read(10)->size, 100u) << "read returns a pushed-back slice whole";
    reader.pushBack(Slice::make(block, 0, 100));
    auto ten = reader.readMax(10);
    EXPECT_EQ(ten->size, 10u);
    EXPECT_EQ(reader.bufferedSize(), 90u);
    EXPECT_EQ(reader.position(), 10u);
    EXPECT_EQ(factory.created.load(), 1) << "readMax never copies";
    reader.pushBack(Slice::make(block, 0, 0));
    EXPECT_EQ(reader.bufferedSize(), 90u) << "empty pushbacks vanish";
    SliceChain chain;
    chain.pushBack(std::move(ten));
    reader.pushBack(chain);
    EXPECT_TRUE(chain.empty());
    EXPECT_EQ(reader.position(), 0u);
    EXPECT_EQ(bytesOf(*reader.readExactly(300)), patternBytes(300));
}

TEST(SliceReader, SkipAcrossPushedBackAndSourceBytes)
{
    CountingFactory factory;
    const auto bytes = patternBytes(100);
    ChunkedSliceSource source(factory, bytes, 7);
    SliceReader reader(&source, false);
    reader.pushBack(reader.readExactly(20));
    EXPECT_EQ(reader.skip(5), 5u);
    EXPECT_EQ(reader.position(), 5u);
    EXPECT_EQ(reader.skip(30), 30u);
    EXPECT_EQ(reader.readUInt8(), bytes[35]);
    EXPECT_EQ(reader.skip(1000), 64u);
    EXPECT_TRUE(reader.eof());
    EXPECT_EQ(reader.skip(1), 0u);
}

// Any read pattern over any chunking of the source gives the same bytes in the same order.
TEST(SliceReader, EveryReadOverEveryChunkingGivesTheSameBytes)
{
    const auto bytes = patternBytes(257);
    for (UInt64 chunk : {1, 2, 3, 5, 7, 16, 64, 257})
    {
        for (bool stall : {false, true})
        {
            CountingFactory factory;
            ChunkedSliceSource source(factory, bytes, chunk, stall);
            SliceReader reader(&source, false);
            std::vector<std::uint8_t> got;
            SliceChain chain;
            for (UInt64 step = 1; !reader.eof(); step = step % 13 + 1)
            {
                const UInt64 position = reader.position();
                switch (step % 4)
                {
                case 0:
                {
                    auto s = reader.readUpTo(step);
                    got.insert(got.end(), s->begin(), s->end());
                    break;
                }
                case 1:
                    if (reader.readChain(step, chain) > 0)
                    {
                        auto chained = bytesOf(chain);
                        got.insert(got.end(), chained.begin(), chained.end());
                        chain.clear();
                    }
                    break;
                case 2:
                {
                    auto s = reader.readMax(step);
                    EXPECT_LE(s->size, step);
                    got.insert(got.end(), s->begin(), s->end());
                    break;
                }
                case 3:
                    if (bytes.size() - position >= 4)
                    {
                        const auto v = reader.readUInt32();
                        for (int shift = 24; shift >= 0; shift -= 8)
                            got.push_back(static_cast<std::uint8_t>(v >> shift));
                    }
                    break;
                }
                ASSERT_EQ(reader.position(), got.size()) << "chunk " << chunk;
            }
            EXPECT_EQ(got, bytes) << "chunk " << chunk << " stall " << stall;
        }
    }
}

TEST(SliceReader, BigEndianIntegers)
{
    CountingFactory factory;
    ChunkedSliceSource source(
        factory,
        {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0xff},
        3);
    SliceReader reader(&source, false);
    EXPECT_EQ(reader.readUInt64(), 0x0102030405060708u);
    EXPECT_EQ(reader.readUInt32(), 0x090a0b0cu);
    EXPECT_EQ(reader.readUInt16(), 0x0d0eu);
    EXPECT_EQ(reader.readUInt8(), 0xffu);
}

TEST(SliceReader, OwnedSourceAndPushedBackSlicesAreFreedWithTheReader)
{
    CountingFactory factory;
    {
        SliceReader reader(new ChunkedSliceSource(factory, patternBytes(50), 10), true);
        reader.pushBack(reader.readExactly(25));
    }
    EXPECT_EQ(factory.created.load(), factory.destroyed.load());
}

TEST(SliceReader, TypedReadPastTheEndThrowsTheReadersTextAndLeavesTheBytes)
{
    CountingFactory factory;
    ChunkedSliceSource source(factory, {0x0a, 0x0b, 0x0c}, 2);
    SliceReader reader(&source, false);
    try
    {
        reader.readUInt32();
        FAIL() << "no exception";
    }
    catch (const Exceptions::NotEnoughData& e)
    {
        EXPECT_EQ(e.message(), L"Not enough data to read from the source");
    }
    EXPECT_EQ(reader.readUInt16(), 0x0a0bu);
    EXPECT_EQ(reader.readUInt8(), 0x0cu);
}
