#include "DataIOTestSupport.h"
#include "MXF/SDK/DataIO/SliceChain.h"
#include "TestSupport.h"

#include <condition_variable>
#include <deque>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>

using namespace Halvorn::Test;
using Halvorn::Test::Support::thrownMessage;
namespace Exceptions = MXF::SDK::Exceptions;

TEST(Slice, BlockDiesWithItsLastSliceAndNotBefore)
{
    CountingFactory factory;
    BlockPtr block = BlockPtr::adopt(factory.blockWith(patternBytes(100)));
    auto a = Slice::make(block.get(), 0, 60);
    auto b = std::make_unique<Slice>(*a); // copy: a new reference, no links
    EXPECT_EQ(b->next, nullptr);
    EXPECT_TRUE(*a == *b);
    block = BlockPtr();
    a.reset();
    EXPECT_EQ(factory.destroyed.load(), 0);
    b.reset();
    EXPECT_EQ(factory.destroyed.load(), 1);
}

TEST(Slice, RefusesSpansOutsideItsBlock)
{
    CountingFactory factory;
    BlockPtr block = BlockPtr::adopt(factory.createBlock(10));
    EXPECT_NO_THROW(Slice::make(block.get(), 10, 0));
    EXPECT_THROW(Slice::make(block.get(), 5, 6), Exceptions::InvalidValue);
    EXPECT_THROW(Slice::make(block.get(), 11, 0), Exceptions::InvalidValue);
    EXPECT_THROW(Slice::make(block.get(), 1, UINT64_MAX), Exceptions::InvalidValue);
}

TEST(Slice, DefaultSliceIsEmptyOnTheSharedEmptyBlock)
{
    Slice empty;
    EXPECT_EQ(empty.block, &EmptyBlock::instance());
    EXPECT_NE(empty.data, nullptr);
    EXPECT_EQ(empty.size, 0u);
    EXPECT_EQ(empty.block->release(), 1u);
    BlockPtr fresh = BlockPtr::adopt(empty.block->createBlock(8));
    EXPECT_EQ(fresh->size(), 8u);
}

TEST(Slice, MemoryBlocksAreLimitedTo32Bits)
{
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>(
                  [&] { MemoryBlockFactory::instance().createBlock(UInt64(1) << 32); }),
              L"Type size exceeded");
}

TEST(Slice, SplitAtEveryBoundaryKeepsAllBytes)
{
    CountingFactory factory;
    const auto bytes = patternBytes(16);
    BlockPtr block = BlockPtr::adopt(factory.blockWith(bytes));
    for (UInt64 cut = 0; cut <= 12; ++cut)
    {
        auto slice = Slice::make(block.get(), 2, 12);
        auto tail = slice->splitAt(slice->begin() + cut);
        EXPECT_EQ(slice->size, cut);
        EXPECT_EQ(tail->offset, 2 + cut);
        EXPECT_EQ(tail->block, block.get());
        auto joined = bytesOf(*slice);
        auto rest = bytesOf(*tail);
        joined.insert(joined.end(), rest.begin(), rest.end());
        EXPECT_EQ(joined, std::vector<std::uint8_t>(bytes.begin() + 2, bytes.begin() + 14));
    }
    auto slice = Slice::make(block.get(), 2, 12);
    EXPECT_THROW(slice->splitAt(slice->begin() + 13), Exceptions::InvalidValue);
    slice->shrink(2);
    EXPECT_EQ(slice->size, 10u);
    EXPECT_THROW(slice->shrink(11), Exceptions::InvalidValue);
}

TEST(Slice, SlicesMadeOnOneThreadDieOnAnother)
{
    CountingFactory factory;
    constexpr int BLOCKS = 200, SLICES_PER_BLOCK = 50;
    std::mutex mutex;
    std::condition_variable ready;
    std::deque<SlicePtr> queue;
    bool done = false;

    std::thread consumer(
        [&]
        {
            std::uint64_t sum = 0;
            for (;;)
            {
                std::unique_lock lock(mutex);
                ready.wait(lock, [&] { return !queue.empty() || done; });
                if (queue.empty())
                    break;
                SlicePtr slice = std::move(queue.front());
                queue.pop_front();
                lock.unlock();
                for (const Byte* p = slice->begin(); p != slice->end(); ++p)
                    sum += *p;
            }
            EXPECT_GT(sum, 0u);
        });
    std::thread producer(
        [&]
        {
            for (int b = 0; b < BLOCKS; ++b)
            {
                BlockPtr block =
                    BlockPtr::adopt(factory.blockWith(patternBytes(SLICES_PER_BLOCK, b)));
                for (int s = 0; s < SLICES_PER_BLOCK; ++s)
                {
                    std::lock_guard lock(mutex);
                    queue.push_back(Slice::make(block.get(), s, 1));
                    ready.notify_one();
                }
            }
            std::lock_guard lock(mutex);
            done = true;
            ready.notify_one();
        });
    producer.join();
    consumer.join();
    EXPECT_EQ(factory.created.load(), BLOCKS);
    EXPECT_EQ(factory.destroyed.load(), BLOCKS);
}

TEST(SliceChain, PushMergesAdjacentSpansOfOneBlockOnly)
{
    CountingFactory factory;
    BlockPtr block = BlockPtr::adopt(factory.blockWith(patternBytes(100)));
    BlockPtr other = BlockPtr::adopt(factory.blockWith(patternBytes(100, 2)));
    SliceChain chain;
    chain.pushBack(Slice::make(block.get(), 0, 10));
    chain.pushBack(Slice::make(block.get(), 10, 5)); // continues: merges
    EXPECT_EQ(chain.count(), 1u);
    EXPECT_EQ(chain.front()->size, 15u);
    chain.pushBack(Slice::make(block.get(), 0, 0)); // empty: vanishes
    EXPECT_EQ(chain.count(), 1u);
    chain.pushBack(Slice::make(block.get(), 20, 5)); // gap: separate
    chain.pushBack(Slice::make(other.get(), 25, 5)); // other block at the right offset: separate
    EXPECT_EQ(chain.count(), 3u);
    EXPECT_EQ(chain.size(), 25u);
    chain.pushFront(Slice::make(other.get(), 20, 5));  // different block from the head
    chain.pushFront(Slice::make(other.get(), 10, 10)); // ends where the head starts: merges
    EXPECT_EQ(chain.count(), 4u);
    EXPECT_EQ(chain.front()->offset, 10u);
    EXPECT_EQ(chain.front()->size, 15u);
    auto last = chain.popBack();
    EXPECT_EQ(last->block, other.get());
    EXPECT_EQ(last->next, nullptr);
    chain.clear();
    EXPECT_TRUE(chain.empty());
    EXPECT_EQ(chain.popFront(), nullptr);
}

TEST(SliceChain, SplicesAtEveryBoundaryKeepOrderAndEmptyTheSource)
{
    CountingFactory factory;
    const auto bytes = patternBytes(8);
    BlockPtr block = BlockPtr::adopt(factory.blockWith(bytes));
    for (int split = 0; split <= 8; ++split)
    {
        SliceChain head, tail, back, front;
        // One slice a byte, every other byte of its own record: no merging can hide an error.
        for (int i = 0; i < 8; ++i)
        {
            auto piece = Slice::make(block.get(), i, 1);
            SliceChain& target = i < split ? head : tail;
            SliceChain spare;
            spare.pushBack(std::move(piece));
            target.spliceBack(spare);
        }
        back.spliceBack(head);
        back.spliceBack(tail);
        EXPECT_TRUE(head.empty());
        EXPECT_TRUE(tail.empty());
        EXPECT_EQ(bytesOf(back), bytes) << "split " << split;

        SliceChain first, second;
        for (int i = 0; i < 8; ++i)
        {
            SliceChain spare;
            spare.pushBack(Slice::make(block.get(), i, 1));
            (i < split ? first : second).spliceBack(spare);
        }
        front.spliceFront(second);
        front.spliceFront(first);
        EXPECT_EQ(bytesOf(front), bytes) << "split " << split;
        EXPECT_TRUE(first.empty() && second.empty());

        SliceChain moved(std::move(front));
        EXPECT_TRUE(front.empty());
        EXPECT_EQ(bytesOf(moved), bytes);
    }
    block = BlockPtr();
    EXPECT_EQ(factory.destroyed.load(), 1);
}
