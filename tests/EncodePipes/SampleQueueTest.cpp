#include "EncodePipes/SampleQueue_impl.h"
#include "MXF/SDK/DataIO/SliceReader.h"
#include "TestSupport.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <thread>
#include <vector>

using namespace KEP::Halvorn;
using namespace KEP::Halvorn::EncodePipes;
using namespace MXF::SDK::DataIO;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Halvorn::Test::patternBytes;

namespace
{

std::atomic<int> liveSamples{0};
std::atomic<int> releasedOnProducer{0};
thread_local bool onProducer = false;

// A sample that counts itself, and notes when it dies on a producer's thread.
class CountedSample : public HalvornSample
{
public:
    explicit CountedSample(std::uint64_t size) : HalvornSample(1, size) { ++liveSamples; }
    CountedSample(std::uint64_t size, std::uint8_t tag) : CountedSample(size)
    {
        std::memset(data(), tag, size);
    }
    ~CountedSample() override
    {
        --liveSamples;
        if (onProducer)
            ++releasedOnProducer;
    }
};

// Order-sensitive hash of a run of bytes, eight at a time.
std::uint64_t hashBytes(std::uint64_t hash, const std::uint8_t* bytes, std::uint64_t size)
{
    constexpr std::uint64_t PRIME = 0x100000001B3;
    std::uint64_t i = 0;
    for (; i + 8 <= size; i += 8)
    {
        std::uint64_t word;
        std::memcpy(&word, bytes + i, 8);
        hash = (hash ^ word) * PRIME;
        hash = (hash << 29) | (hash >> 35);
    }
    for (; i < size; ++i)
        hash = (hash ^ bytes[i]) * PRIME;
    return (hash ^ size) * PRIME;
}

// 1 GiB; HALVORN_QUEUE_TEST_MIB changes it. ThreadSanitizer watches every byte hashed, so its
// build moves less to stay well inside a minute.
std::uint64_t transferBytes()
{
    if (const char* mib = std::getenv("HALVORN_QUEUE_TEST_MIB"))
        return std::strtoull(mib, nullptr, 10) << 20;
#if defined(__SANITIZE_THREAD__)
    return std::uint64_t{192} << 20;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
    return std::uint64_t{192} << 20;
#endif
#endif
    return std::uint64_t{1} << 30;
}

std::uint8_t firstByte(const Slice& slice)
{
    return *slice.begin();
}

// Sends `total` bytes in samples of 1 to `largest` bytes from a producer thread through a queue
// bounded at `bound`, and checks that they come out intact, in order, and die on the consumer.
void transferRandomSamples(std::uint64_t total, std::uint64_t largest, std::uint64_t bound)
{
    const int liveBefore = liveSamples;
    releasedOnProducer = 0;
    // Samples are cut from random places of a pool, so that each one differs from its neighbours.
    const std::vector<std::uint8_t> pool = patternBytes(3 * largest, 7);

    SampleQueue_impl queue(true);
    queue.setMaximumSize(bound);
    std::uint64_t sentHash = 0;
    std::uint64_t sent = 0;
    std::uint64_t samplesSent = 0;
    std::uint64_t largestQueued = 0;
    std::thread producer(
        [&]
        {
            onProducer = true;
            std::mt19937_64 random(20261123);
            std::uniform_int_distribution<std::uint64_t> sizes(1, largest);
            while (sent < total)
            {
                const std::uint64_t size = std::min(sizes(random), total - sent);
                std::uniform_int_distribution<std::uint64_t> offsets(0, pool.size() - size);
                Sample* sample = new CountedSample(size);
                std::memcpy(sample->data(), pool.data() + offsets(random), size);
                sentHash = hashBytes(sentHash, sample->data(), size);
                while (!queue.enqueue(sample, 100000))
                {
                }
                sent += size;
                ++samplesSent;
                largestQueued = std::max(largestQueued, queue.size());
            }
            queue.close();
        });

    std::uint64_t receivedHash = 0;
    std::uint64_t received = 0;
    std::uint64_t samplesReceived = 0;
    SampleQueueImplHolder source(queue);
    for (;;)
    {
        const SlicePtr slice = source.read(1);
        if (slice->empty())
        {
            // A blocking queue answers empty only at the end.
            EXPECT_TRUE(source.eof());
            break;
        }
        receivedHash = hashBytes(receivedHash, slice->begin(), slice->size);
        received += slice->size;
        ++samplesReceived;
    }
    producer.join();

    EXPECT_EQ(received, total);
    EXPECT_EQ(sent, total);
    EXPECT_EQ(samplesReceived, samplesSent);
    EXPECT_EQ(receivedHash, sentHash);
    EXPECT_EQ(queue.position(), total);
    EXPECT_EQ(queue.size(), 0u);
    // The bound holds, give or take the one sample it may admit on top.
    EXPECT_LE(largestQueued, bound + largest);
    EXPECT_EQ(liveSamples, liveBefore);
    EXPECT_EQ(releasedOnProducer, 0);
}

} // namespace

TEST(SampleQueue, MovesAGibibyteOfRandomSizedSamplesIntactInOrderAndFreesThemOnTheConsumer)
{
    transferRandomSamples(transferBytes(), 4 << 20, SampleQueue_impl::DEFAULT_MAXIMUM_SIZE);
}

// Audio-sized samples through a queue of a few dozen: both sides wait over and over, and the
// memory of released samples is reused at once on the other thread.
TEST(SampleQueue, MovesManySmallSamplesThroughAShortQueueIntact)
{
    transferRandomSamples(transferBytes() / 16, 8192, 0x20000);
}

TEST(SampleQueue, AdmitsWhileAtOrBelowItsBoundHoweverLargeTheSample)
{
    const int liveBefore = liveSamples;
    {
        SampleQueue_impl queue(true);
        EXPECT_EQ(queue.maximumSize(), 0x2000000u);
        // Exactly at the bound still admits, one byte past it does not.
        EXPECT_TRUE(queue.enqueue(new CountedSample(0x2000000), 0));
        EXPECT_TRUE(queue.enqueue(new CountedSample(1), 0));
        EXPECT_EQ(queue.size(), 0x2000001u);
        Sample* refused = new CountedSample(10, 0x5A);
        const auto start = Clock::now();
        EXPECT_FALSE(queue.enqueue(refused, 0));
        EXPECT_LT(Clock::now() - start, 1s);
        EXPECT_EQ(queue.size(), 0x2000001u);
        // Still the caller's: alive, and released by the caller alone.
        EXPECT_EQ(liveSamples, liveBefore + 3);
        EXPECT_EQ(refused->data()[9], 0x5A);
        refused->release();
        EXPECT_EQ(liveSamples, liveBefore + 2);
    }
    EXPECT_EQ(liveSamples, liveBefore);

    SampleQueue_impl small(true);
    small.setMaximumSize(1000);
    EXPECT_EQ(small.maximumSize(), 1000u);
    // An empty queue takes a sample five times its bound, then nothing more.
    EXPECT_TRUE(small.enqueue(new CountedSample(5000, 1), 0));
    Sample* next = new CountedSample(1, 2);
    EXPECT_FALSE(small.enqueue(next, 0));
    const SlicePtr big = small.read(1);
    EXPECT_EQ(big->size, 5000u);
    EXPECT_TRUE(small.enqueue(next, 0));
    EXPECT_EQ(small.size(), 1u);
}

TEST(SampleQueue, TimedEnqueueWaitsForItsDeadlineOrForRoom)
{
    SampleQueue_impl queue(true);
    queue.setMaximumSize(10);
    ASSERT_TRUE(queue.enqueue(new CountedSample(11, 1), 0));

    Sample* late = new CountedSample(5, 2);
    auto start = Clock::now();
    EXPECT_FALSE(queue.enqueue(late, 50000));
    EXPECT_GE(Clock::now() - start, 50ms);

    // A reader that makes room wakes the waiting producer long before its deadline.
    std::atomic<bool> admitted{false};
    start = Clock::now();
    std::thread producer([&] { admitted = queue.enqueue(late, 10000000); });
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(firstByte(*queue.read(1)), 1);
    producer.join();
    EXPECT_TRUE(admitted);
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_EQ(firstByte(*queue.read(1)), 2);
}

TEST(SampleQueue, CloseWhileFullDeliversEverySampleInOrderThenTheEndForGood)
{
    const int liveBefore = liveSamples;
    SampleQueue_impl queue(true);
    queue.setMaximumSize(100);
    std::vector<Sample*> sent;
    for (std::uint8_t tag = 1; tag <= 3; ++tag)
    {
        Sample* sample = new CountedSample(40u + tag, tag);
        ASSERT_TRUE(queue.enqueue(sample, 0));
        sent.push_back(sample);
    }
    Sample* refused = new CountedSample(1);
    ASSERT_FALSE(queue.enqueue(refused, 0));
    refused->release();

    const auto start = Clock::now();
    queue.close();
    EXPECT_LT(Clock::now() - start, 1s);
    std::uint64_t position = 0;
    for (Sample* sample : sent)
    {
        EXPECT_FALSE(queue.eof());
        const SlicePtr slice = queue.read(1);
        // The sample's own bytes: no copy on the way.
        EXPECT_EQ(slice->begin(), sample->data());
        EXPECT_EQ(slice->size, sample->size());
        position += slice->size;
        EXPECT_EQ(queue.position(), position);
    }
    EXPECT_EQ(liveSamples, liveBefore);
    EXPECT_TRUE(queue.eof());
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_TRUE(queue.read(1)->empty());
        EXPECT_TRUE(queue.eof());
    }
    EXPECT_EQ(queue.position(), 41u + 42u + 43u);
    // A second close does no harm.
    queue.close();
    EXPECT_TRUE(queue.read(1)->empty());
}

TEST(SampleQueue, CloseWakesAConsumerWaitingOnAnEmptyQueue)
{
    SampleQueue_impl queue(true);
    std::atomic<bool> returned{false};
    bool emptySlice = false;
    std::thread consumer(
        [&]
        {
            emptySlice = queue.read(1)->empty();
            returned = true;
        });
    std::this_thread::sleep_for(20ms);
    EXPECT_FALSE(returned);
    EXPECT_FALSE(queue.eof());
    queue.close();
    consumer.join();
    EXPECT_TRUE(emptySlice);
    EXPECT_TRUE(queue.eof());
    EXPECT_EQ(queue.position(), 0u);

    // A queue that does not block answers an empty read at once, open or closed.
    SampleQueue_impl polled(false);
    EXPECT_TRUE(polled.read(1)->empty());
    EXPECT_FALSE(polled.eof());
    ASSERT_TRUE(polled.enqueue(new CountedSample(3, 9), 0));
    EXPECT_EQ(firstByte(*polled.read(1)), 9);
    EXPECT_TRUE(polled.read(1)->empty());
    polled.close();
    EXPECT_TRUE(polled.read(1)->empty());
    EXPECT_TRUE(polled.eof());
}

TEST(SampleQueue, CloseWhileAProducerWaitsLeavesItsSampleWithIt)
{
    const int liveBefore = liveSamples;
    SampleQueue_impl queue(true);
    queue.setMaximumSize(10);
    ASSERT_TRUE(queue.enqueue(new CountedSample(20, 1), 0));

    Sample* waiting = new CountedSample(5, 2);
    std::atomic<bool> producerDone{false};
    bool admitted = true;
    std::thread producer(
        [&]
        {
            admitted = queue.enqueue(waiting, 400000);
            producerDone = true;
        });
    std::this_thread::sleep_for(20ms);
    const auto start = Clock::now();
    queue.close();
    // close does not wait for room, and gives the producer none.
    EXPECT_LT(Clock::now() - start, 200ms);
    EXPECT_FALSE(producerDone);
    producer.join();
    EXPECT_FALSE(admitted);
    EXPECT_EQ(waiting->data()[0], 2);
    waiting->release();

    EXPECT_EQ(firstByte(*queue.read(1)), 1);
    EXPECT_TRUE(queue.read(1)->empty());
    EXPECT_TRUE(queue.eof());
    EXPECT_EQ(liveSamples, liveBefore);
}

TEST(SampleQueue, ReadGivesTheWholeFrontSampleWhateverItIsAskedFor)
{
    SampleQueue_impl queue(true);
    ASSERT_TRUE(queue.enqueue(new CountedSample(100000, 3), 0));
    const SlicePtr slice = queue.read(1);
    EXPECT_EQ(slice->offset, 0u);
    EXPECT_EQ(slice->size, 100000u);
    EXPECT_EQ(queue.position(), 100000u);
    EXPECT_EQ(queue.size(), 0u);
}

TEST(SampleQueue, SkipDropsQueuedBytesWithoutWaitingAndKeepsTheEnd)
{
    const int liveBefore = liveSamples;
    SampleQueue_impl queue(true);
    const auto bytes = patternBytes(20, 5);
    ASSERT_TRUE(queue.enqueue(new CountedSample(10, 1), 0));
    Sample* second = new CountedSample(20);
    std::memcpy(second->data(), bytes.data(), bytes.size());
    ASSERT_TRUE(queue.enqueue(second, 0));
    ASSERT_TRUE(queue.enqueue(new CountedSample(30, 3), 0));

    EXPECT_EQ(queue.skip(10), 0u); // exact fit
    EXPECT_EQ(queue.position(), 10u);
    EXPECT_EQ(liveSamples, liveBefore + 2);
    // A cut inside a sample answers with the bytes cut, not the bytes skipped.
    EXPECT_EQ(queue.skip(5), 5u);
    EXPECT_EQ(queue.position(), 15u);
    EXPECT_EQ(queue.size(), 45u);
    const SlicePtr rest = queue.read(1);
    ASSERT_EQ(rest->size, 15u);
    EXPECT_EQ(std::memcmp(rest->begin(), bytes.data() + 5, 15), 0);

    // Running dry answers with the bytes still wanted.
    EXPECT_EQ(queue.skip(100), 70u);
    EXPECT_EQ(queue.position(), 60u);
    EXPECT_EQ(queue.skip(7), 7u);

    queue.close();
    EXPECT_EQ(queue.skip(5), 5u);
    EXPECT_TRUE(queue.eof());
    EXPECT_TRUE(queue.read(1)->empty());
    EXPECT_EQ(queue.position(), 60u);
    EXPECT_EQ(liveSamples, liveBefore + 1); // `rest` still holds the second sample
}

TEST(SampleQueue, DestructionReleasesEverySampleStillQueued)
{
    const int liveBefore = liveSamples;
    SlicePtr kept;
    {
        SampleQueue_impl queue(true);
        for (int i = 0; i < 4; ++i)
            ASSERT_TRUE(queue.enqueue(new CountedSample(1000, static_cast<std::uint8_t>(i)), 0));
        kept = queue.read(1);
        queue.close();
        // Behind the end: never read, but released all the same.
        ASSERT_TRUE(queue.enqueue(new CountedSample(10), 0));
        EXPECT_EQ(liveSamples, liveBefore + 5);
    }
    // A slice read before the queue died keeps its sample.
    EXPECT_EQ(liveSamples, liveBefore + 1);
    EXPECT_EQ(firstByte(*kept), 0);
    kept.reset();
    EXPECT_EQ(liveSamples, liveBefore);
}

TEST(SampleQueueImplHolder, LendsTheQueueToASliceReaderThatMayDeleteIt)
{
    SampleQueue_impl queue(true);
    const auto first = patternBytes(6, 1);
    const auto second = patternBytes(4, 2);
    Sample* a = new CountedSample(first.size());
    Sample* b = new CountedSample(second.size());
    std::memcpy(a->data(), first.data(), first.size());
    std::memcpy(b->data(), second.data(), second.size());
    const std::uint8_t* aBytes = a->data();
    ASSERT_TRUE(queue.enqueue(a, 0));
    ASSERT_TRUE(queue.enqueue(b, 0));
    queue.close();
    {
        SliceReader reader(new SampleQueueImplHolder(queue), true);
        // One whole sample comes through as it is; two are gathered into a heap block.
        const SlicePtr head = reader.readExactly(2);
        EXPECT_EQ(head->begin(), aBytes);
        const SlicePtr straddling = reader.readExactly(8);
        EXPECT_NE(straddling->block->data(), nullptr);
        EXPECT_EQ(std::memcmp(straddling->begin(), first.data() + 2, 4), 0);
        EXPECT_EQ(std::memcmp(straddling->begin() + 4, second.data(), 4), 0);
        EXPECT_EQ(reader.position(), 10u);
        EXPECT_TRUE(reader.eof());
    }
    // The holder is gone; the queue answers as before.
    EXPECT_TRUE(queue.eof());
    EXPECT_EQ(queue.position(), 10u);
}
