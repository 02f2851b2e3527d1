#include "Framework/Counter.h"

#include "Framework/Framework.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <thread>
#include <vector>

using KEP::Framework::Counting::Counter;

TEST(Counter, NamedCountersAreSharedAndCountFromOne)
{
    Counter& a = Counter::counter("test-counter-a");
    EXPECT_EQ(&a, &Counter::counter("test-counter-a"));
    EXPECT_NE(&a, &Counter::counter("test-counter-b"));
    EXPECT_EQ(a.next(), 1u);
    EXPECT_EQ(Counter::counter("test-counter-a").next(), 2u);
    EXPECT_EQ(Counter::counter("test-counter-b").next(), 1u);
}

TEST(Counter, ConcurrentNextGivesEveryValueOnce)
{
    constexpr int THREADS = 4, EACH = 20000;
    Counter& counter = Counter::counter("test-counter-threads");
    std::vector<std::vector<std::uint32_t>> values(THREADS);
    std::vector<std::thread> threads;
    for (int t = 0; t < THREADS; ++t)
        threads.emplace_back(
            [&, t]
            {
                for (int i = 0; i < EACH; ++i)
                    values[t].push_back(counter.next());
            });
    for (auto& t : threads)
        t.join();
    std::vector<std::uint32_t> all;
    for (auto& v : values)
        all.insert(all.end(), v.begin(), v.end());
    std::sort(all.begin(), all.end());
    ASSERT_EQ(all.size(), std::size_t(THREADS * EACH));
    for (std::size_t i = 0; i < all.size(); ++i)
        ASSERT_EQ(all[i], i + 1);
}

TEST(Framework, RandomNumbersVary)
{
    std::set<std::uint32_t> values;
    std::uint32_t orBits = 0;
    for (int i = 0; i < 256; ++i)
    {
        const std::uint32_t v = KEP::Framework::Framework::randomNumber();
        values.insert(v);
        orBits |= v;
    }
    EXPECT_GT(values.size(), 250u); // 256 draws of 32 bits: a repeat is a one in 130,000 event
    EXPECT_EQ(orBits, 0xFFFFFFFFu);
}
