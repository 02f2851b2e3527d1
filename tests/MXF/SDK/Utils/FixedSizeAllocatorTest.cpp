#include "MXF/SDK/Utils/FixedSizeAllocator.h"

#include <gtest/gtest.h>
#include <set>
#include <thread>
#include <vector>

using MXF::SDK::Utils::FixedSizeAllocator_T;

TEST(FixedSizeAllocator, ThreadsReuseEachOthersFreedItems)
{
    FixedSizeAllocator_T<48> allocator;
    std::vector<void*> freedByOther;
    std::thread other(
        [&]
        {
            for (int i = 0; i < 3; ++i)
                freedByOther.push_back(allocator.allocate(48));
            for (void* p : freedByOther)
                allocator.deallocate(p);
        });
    other.join();
    std::set<void*> reused;
    for (int i = 0; i < 3; ++i)
        reused.insert(allocator.allocate(40));
    EXPECT_EQ(reused, std::set<void*>(freedByOther.begin(), freedByOther.end()));
    for (void* p : reused)
        allocator.deallocate(p);
}

TEST(FixedSizeAllocator, RefusesItemsLargerThanItsSize)
{
    FixedSizeAllocator_T<16> allocator;
    EXPECT_THROW(allocator.allocate(17), MXF::SDK::Exceptions::BadAlloc);
}

TEST(FixedSizeAllocator, ConcurrentAllocateAndFreeNeverHandsOutAnItemTwice)
{
    FixedSizeAllocator_T<32> allocator;
    constexpr int THREADS = 4, ROUNDS = 20000;
    std::vector<std::thread> threads;
    std::atomic<int> clashes{0};
    for (int t = 0; t < THREADS; ++t)
        threads.emplace_back(
            [&, t]
            {
                std::vector<int*> mine;
                for (int i = 0; i < ROUNDS; ++i)
                {
                    auto* p = static_cast<int*>(allocator.allocate(32));
                    *p = t;
                    mine.push_back(p);
                    if (mine.size() == 8)
                    {
                        for (int* q : mine)
                        {
                            if (*q != t)
                                ++clashes;
                            allocator.deallocate(q);
                        }
                        mine.clear();
                    }
                }
                for (int* q : mine)
                    allocator.deallocate(q);
            });
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(clashes.load(), 0);
}
