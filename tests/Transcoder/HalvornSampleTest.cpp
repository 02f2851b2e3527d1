#include "MXF/SDK/DataIO/Block.h"
#include "TestSupport.h"
#include "Transcoder/Samples/Sample.h"

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <gtest/gtest.h>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

using namespace KEP::Halvorn;
using namespace MXF::SDK::DataIO;
using Halvorn::Test::patternBytes;

namespace
{

std::atomic<int> liveCounted{0};

class CountedSample : public HalvornSample
{
public:
    CountedSample(std::uint32_t trackId, std::uint64_t size) : HalvornSample(trackId, size)
    {
        ++liveCounted;
    }
    ~CountedSample() override { --liveCounted; }
};

// Every byte of the sample is `tag`.
bool holdsOnly(Sample& sample, std::uint8_t tag)
{
    const std::uint64_t size = sample.size();
    return size == 0 || (sample.data()[0] == tag &&
                         std::memcmp(sample.data(), sample.data() + 1, size - 1) == 0);
}

} // namespace

TEST(HalvornSample, OwnsAWritableBufferOfItsSizeAndDiesWithItsLastReference)
{
    const int before = liveCounted;
    HalvornSample* sample = new CountedSample(7, 100000);
    EXPECT_EQ(sample->trackId(), 7u);
    ASSERT_EQ(sample->size(), 100000u);
    // Every byte is ours to write; the sanitizers catch a short buffer.
    std::memset(sample->data(), 0xA5, sample->size());

    sample->addReference();
    std::thread other([sample] { sample->release(); });
    other.join();
    EXPECT_EQ(liveCounted, before + 1);
    EXPECT_EQ(sample->data()[99999], 0xA5);
    sample->release();
    EXPECT_EQ(liveCounted, before);

    // Buffers are 32-bit: a size past 4 GiB keeps its low bits, and size() agrees with the buffer.
    HalvornSample* wide = new HalvornSample(1, (std::uint64_t{1} << 32) + 16);
    EXPECT_EQ(wide->size(), 16u);
    std::memset(wide->data(), 0, wide->size());
    wide->release();
}

TEST(ReadSample, CopiesTheWholeBlockAndOutlivesIt)
{
    const auto bytes = patternBytes(3000);
    ReadSample* sample = nullptr;
    {
        BlockPtr block = BlockPtr::adopt(MemoryBlockFactory::instance().createBlock(bytes.size()));
        std::memcpy(block->data(), bytes.data(), bytes.size());
        sample = new ReadSample(4, *block);
        EXPECT_NE(sample->data(), std::as_const(*block).data());
    }
    EXPECT_EQ(sample->trackId(), 4u);
    ASSERT_EQ(sample->size(), bytes.size());
    EXPECT_EQ(std::memcmp(sample->data(), bytes.data(), bytes.size()), 0);
    sample->release();

    ReadSample* empty = new ReadSample(2, EmptyBlock::instance());
    EXPECT_EQ(empty->size(), 0u);
    EXPECT_NE(empty->data(), nullptr);
    empty->release();
}

TEST(TWOSSample, AppendsValuesInHostOrderUntilFull)
{
    TWOSSample* sample = new TWOSSample(9, 6);
    const std::uint16_t values[] = {0x1234, 0xABCD, 0x0001};
    for (std::uint16_t value : values)
        sample->append(value);
    EXPECT_EQ(sample->trackId(), 9u);
    ASSERT_EQ(sample->size(), sizeof values);
    EXPECT_EQ(std::memcmp(sample->data(), values, sizeof values), 0);
    EXPECT_THROW(sample->append(0xFFFF), MXF::SDK::Exceptions::InvalidLength);
    EXPECT_EQ(std::memcmp(sample->data(), values, sizeof values), 0);
    sample->release();

    // An odd size leaves no room for a last half value.
    TWOSSample* odd = new TWOSSample(9, 3);
    odd->append(7);
    EXPECT_THROW(odd->append(8), MXF::SDK::Exceptions::InvalidLength);
    odd->release();
}

TEST(HalvornSample, SamplesOfAnySizeOwnTheirWholeBufferAloneAcrossReuse)
{
    // Sizes on both sides of every quarter of a power of two, from nothing to past 64 KiB.
    std::vector<std::uint64_t> sizes{0, 1, 7, 8, 9, 63, 64, 65};
    for (std::uint64_t power = 64; power <= 0x10000; power *= 2)
        for (std::uint64_t edge : {power * 5 / 4, power * 3 / 2, power * 7 / 4, power * 2})
            for (std::uint64_t size : {edge - 1, edge, edge + 1})
                sizes.push_back(size);
    // The second round gets what the first released.
    for (std::uint8_t round = 0; round < 2; ++round)
    {
        std::vector<HalvornSample*> samples;
        for (std::uint32_t i = 0; i < sizes.size(); ++i)
        {
            // Sample objects of two sizes.
            HalvornSample* sample =
                i % 2 == 0 ? new HalvornSample(i, sizes[i]) : new TWOSSample(i, sizes[i]);
            ASSERT_EQ(sample->size(), sizes[i]);
            ASSERT_NE(sample->data(), nullptr);
            std::memset(sample->data(), static_cast<std::uint8_t>(i * 37 + round), sizes[i]);
            samples.push_back(sample);
        }
        // Written all, each still holds its own bytes: no two share any.
        for (std::uint32_t i = 0; i < samples.size(); ++i)
        {
            EXPECT_EQ(samples[i]->trackId(), i);
            EXPECT_TRUE(holdsOnly(*samples[i], static_cast<std::uint8_t>(i * 37 + round)))
                << "size " << sizes[i];
        }
        for (HalvornSample* sample : samples)
            sample->release();
    }
}

TEST(HalvornSample, SmallSamplesMadeOnOneThreadAndFreedOnAnotherStayIntact)
{
    const int before = liveCounted;
    // Each round's threads end before the next starts, which reuses what they released.
    for (int round = 0; round < 3; ++round)
    {
        std::mutex mutex;
        std::condition_variable handedOn;
        std::deque<HalvornSample*> handed;
        bool done = false;
        std::atomic<int> spoilt{0};
        std::thread consumer(
            [&]
            {
                for (;;)
                {
                    std::unique_lock lock(mutex);
                    handedOn.wait(lock, [&] { return !handed.empty() || done; });
                    if (handed.empty())
                        return;
                    HalvornSample* sample = handed.front();
                    handed.pop_front();
                    lock.unlock();
                    if (!holdsOnly(*sample, static_cast<std::uint8_t>(sample->trackId())))
                        ++spoilt;
                    sample->release();
                }
            });
        std::thread producer(
            [&]
            {
                std::mt19937 random(round);
                std::uniform_int_distribution<std::uint64_t> sizes(0, 9000);
                for (std::uint32_t i = 0; i < 5000; ++i)
                {
                    HalvornSample* sample = new CountedSample(i, sizes(random));
                    std::memset(sample->data(), static_cast<std::uint8_t>(i), sample->size());
                    const std::lock_guard lock(mutex);
                    handed.push_back(sample);
                    handedOn.notify_one();
                }
                const std::lock_guard lock(mutex);
                done = true;
                handedOn.notify_one();
            });
        producer.join();
        consumer.join();
        EXPECT_EQ(spoilt, 0);
    }
    EXPECT_EQ(liveCounted, before);
}

#if defined(__SANITIZE_ADDRESS__)
// Reused memory must not hide faults from AddressSanitizer.
TEST(HalvornSampleDeathTest, AddressSanitizerSeesPastTheEndAndAfterRelease)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            HalvornSample* sample = new HalvornSample(1, 100);
            static_cast<volatile std::uint8_t*>(sample->data())[100] = 1;
        },
        "AddressSanitizer");
    EXPECT_DEATH(
        {
            HalvornSample* sample = new HalvornSample(1, 4096);
            volatile std::uint8_t* bytes = sample->data();
            sample->release();
            bytes[100] = 1;
        },
        "AddressSanitizer");
}
#endif
