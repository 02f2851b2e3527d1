#include "MXF/SDK/DataIO/Adapters.h"

#include "DataIOTestSupport.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/DataIO/SliceReader.h"
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <set>

using namespace Halvorn::Test;
using MXF::SDK::DataIO::Memory::MemoryDataSink;
using MXF::SDK::DataIO::Memory::MemoryDataSource;

TEST(ChainDataSinkAdapter, PacksSmallWritesIntoSharedBlocks)
{
    CountingFactory factory;
    SliceChain chain;
    ChainDataSinkAdapter sink(factory, chain, 500, 1024);
    const auto bytes = patternBytes(1100);
    for (int i = 0; i < 10; ++i)
        sink.write(bytes.data() + i * 100, 100);
    EXPECT_EQ(chain.count(), 1u);
    EXPECT_EQ(chain.front()->size, 1000u);
    EXPECT_EQ(factory.created.load(), 1);
    sink.write(bytes.data() + 1000, 100); // 1100 > 1024: a second block
    EXPECT_EQ(factory.created.load(), 2);
    EXPECT_EQ(chain.count(), 2u);
    EXPECT_EQ(sink.position(), 1600u);
    EXPECT_EQ(bytesOf(chain), bytes);
    sink.write(bytes.data(), 0);
    EXPECT_EQ(chain.count(), 2u);
}

TEST(ChainDataSinkAdapter, WritesLargerThanTheBlockGetBlocksOfTheirOwn)
{
    CountingFactory factory;
    SliceChain chain;
    ChainDataSinkAdapter sink(factory, chain, 0, 1024);
    const auto bytes = patternBytes(4000);
    sink.write(bytes.data(), 2000);
    sink.write(bytes.data() + 2000, 2000);
    ASSERT_EQ(chain.count(), 2u);
    EXPECT_EQ(chain.front()->block->size(), 2000u);
    EXPECT_EQ(chain.back()->block->size(), 2000u);
    EXPECT_EQ(bytesOf(chain), bytes);

    SliceChain exact;
    ChainDataSinkAdapter unblocked(factory, exact, 0, 0);
    unblocked.write(bytes.data(), 7);
    unblocked.write(bytes.data() + 7, 9);
    EXPECT_EQ(exact.count(), 2u);
    EXPECT_EQ(exact.back()->block->size(), 9u);
    EXPECT_EQ(bytesOf(exact), std::vector<std::uint8_t>(bytes.begin(), bytes.begin() + 16));
}

TEST(ChainSinkDataAdapter, WritesEverySliceInOrderAndLeavesTheChain)
{
    CountingFactory factory;
    const auto bytes = patternBytes(64);
    BlockPtr block = BlockPtr::adopt(factory.blockWith(bytes));
    SliceChain chain;
    chain.pushBack(Slice::make(block.get(), 40, 24));
    chain.pushBack(Slice::make(block.get(), 0, 40));
    MemoryDataSink sink;
    ChainSinkDataAdapter adapter(sink);
    adapter.write(chain);
    EXPECT_EQ(chain.count(), 2u);
    std::vector<std::uint8_t> expected(bytes.begin() + 40, bytes.end());
    expected.insert(expected.end(), bytes.begin(), bytes.begin() + 40);
    EXPECT_EQ(sink.data(), expected);
}

TEST(SliceSourceDataAdapter, CutsBlocksWithoutCopyingAndCountsPositions)
{
    const auto bytes = patternBytes(10000);
    MemoryDataSource source(bytes.data(), bytes.size());
    SliceSourceDataAdapter adapter(source, 4096);
    SliceReader reader(&adapter, false);
    SliceChain chain;
    EXPECT_EQ(reader.readChain(5000, chain), 5000u);
    std::set<const Block*> blocks;
    for (const Slice& s : chain)
        blocks.insert(s.block);
    EXPECT_EQ(blocks.size(), 2u) << "one slice per source block: nothing gathered";
    EXPECT_EQ(reader.position(), 5000u);
    EXPECT_EQ(reader.skip(4000), 4000u);
    EXPECT_EQ(reader.position(), 9000u);
    auto rest = reader.readUpTo(5000);
    EXPECT_EQ(rest->size, 1000u);
    EXPECT_TRUE(reader.eof());
    auto got = bytesOf(chain);
    got.insert(got.end(), rest->begin(), rest->end());
    std::vector<std::uint8_t> expected(bytes.begin(), bytes.begin() + 5000);
    expected.insert(expected.end(), bytes.begin() + 9000, bytes.end());
    EXPECT_EQ(got, expected);
}
