// Samples through the sample queue between two threads, against a ring buffer of the same
// capacity that copies every byte in and out with memcpy, in the same run. The queue hands over
// pointers, so at 1 MiB a sample it should move several times the ring's bytes a second; at 4 KiB
// what counts is samples a second. QueueTransfer makes a sample for each one on the producer and
// frees it on the consumer, as a job does, so the cost of their memory is in its figure;
// QueueHandOver sends one sample over and over.
#include "EncodePipes/SampleQueue_impl.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

using namespace KEP::Halvorn;
using namespace KEP::Halvorn::EncodePipes;
using MXF::SDK::DataIO::SlicePtr;

namespace
{

constexpr std::uint64_t CAPACITY = SampleQueue_impl::DEFAULT_MAXIMUM_SIZE;
constexpr std::uint64_t BYTES_PER_ITERATION = std::uint64_t{1} << 30;
constexpr std::uint64_t LARGEST_SAMPLES_PER_ITERATION = 1 << 16;

std::uint64_t samplesPerIteration(std::uint64_t sampleSize)
{
    return std::min(BYTES_PER_ITERATION / sampleSize, LARGEST_SAMPLES_PER_ITERATION);
}

void QueueTransfer(benchmark::State& state)
{
    const auto sampleSize = static_cast<std::uint64_t>(state.range(0));
    const std::uint64_t count = samplesPerIteration(sampleSize);
    for (auto _ : state)
    {
        SampleQueue_impl queue(true);
        std::thread consumer(
            [&queue, sampleSize]
            {
                for (;;)
                {
                    const SlicePtr slice = queue.read(sampleSize);
                    if (slice->empty())
                        return;
                    benchmark::DoNotOptimize(slice->begin());
                }
            });
        for (std::uint64_t i = 0; i < count; ++i)
        {
            Sample* sample = new HalvornSample(1, sampleSize);
            while (!queue.enqueue(sample, 100000))
            {
            }
        }
        queue.close();
        consumer.join();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * count * sampleSize));
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * count));
}
BENCHMARK(QueueTransfer)->Arg(1 << 20)->Arg(4096)->UseRealTime()->Unit(benchmark::kMillisecond);

// The queue alone: one sample sent over and over, a reference each time, so that no sample is
// made or freed on the way.
void QueueHandOver(benchmark::State& state)
{
    const auto sampleSize = static_cast<std::uint64_t>(state.range(0));
    const std::uint64_t count = samplesPerIteration(sampleSize);
    Sample* sample = new HalvornSample(1, sampleSize);
    for (auto _ : state)
    {
        SampleQueue_impl queue(true);
        std::thread consumer(
            [&queue, sampleSize]
            {
                while (!queue.read(sampleSize)->empty())
                {
                }
            });
        for (std::uint64_t i = 0; i < count; ++i)
        {
            sample->addReference();
            while (!queue.enqueue(sample, 100000))
            {
            }
        }
        queue.close();
        consumer.join();
    }
    sample->release();
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * count));
}
BENCHMARK(QueueHandOver)->Arg(4096)->UseRealTime()->Unit(benchmark::kMillisecond);

// One producer, one consumer. Each side copies outside the lock, into or out of the part of the
// buffer that only it may touch, and takes the lock only to move its counter.
class CopyingRing
{
public:
    explicit CopyingRing(std::uint64_t capacity) : buffer_(capacity) {}

    void write(const std::uint8_t* bytes, std::uint64_t size)
    {
        std::uint64_t at;
        {
            std::unique_lock lock(mutex_);
            spaceAvailable_.wait(lock, [&] { return buffer_.size() - (written_ - read_) >= size; });
            at = written_;
        }
        copyIn(at, bytes, size);
        {
            const std::lock_guard lock(mutex_);
            written_ += size;
        }
        dataAvailable_.notify_one();
    }

    // False at the end.
    bool read(std::uint8_t* bytes, std::uint64_t size)
    {
        std::uint64_t at;
        {
            std::unique_lock lock(mutex_);
            dataAvailable_.wait(lock, [&] { return written_ - read_ >= size || closed_; });
            if (written_ - read_ < size)
                return false;
            at = read_;
        }
        copyOut(at, bytes, size);
        {
            const std::lock_guard lock(mutex_);
            read_ += size;
        }
        spaceAvailable_.notify_one();
        return true;
    }

    void close()
    {
        {
            const std::lock_guard lock(mutex_);
            closed_ = true;
        }
        dataAvailable_.notify_one();
    }

private:
    void copyIn(std::uint64_t at, const std::uint8_t* bytes, std::uint64_t size)
    {
        const std::uint64_t start = at % buffer_.size();
        const std::uint64_t first = std::min(size, buffer_.size() - start);
        std::memcpy(buffer_.data() + start, bytes, first);
        std::memcpy(buffer_.data(), bytes + first, size - first);
    }
    void copyOut(std::uint64_t at, std::uint8_t* bytes, std::uint64_t size) const
    {
        const std::uint64_t start = at % buffer_.size();
        const std::uint64_t first = std::min(size, buffer_.size() - start);
        std::memcpy(bytes, buffer_.data() + start, first);
        std::memcpy(bytes + first, buffer_.data(), size - first);
    }

    std::vector<std::uint8_t> buffer_;
    std::mutex mutex_;
    std::condition_variable spaceAvailable_;
    std::condition_variable dataAvailable_;
    std::uint64_t written_ = 0;
    std::uint64_t read_ = 0;
    bool closed_ = false;
};

void RingTransfer(benchmark::State& state)
{
    const auto sampleSize = static_cast<std::uint64_t>(state.range(0));
    const std::uint64_t count = samplesPerIteration(sampleSize);
    std::vector<std::uint8_t> source(sampleSize, 0x47);
    for (auto _ : state)
    {
        CopyingRing ring(CAPACITY);
        std::thread consumer(
            [&ring, sampleSize]
            {
                std::vector<std::uint8_t> destination(sampleSize);
                while (ring.read(destination.data(), sampleSize))
                    benchmark::DoNotOptimize(destination.data());
            });
        for (std::uint64_t i = 0; i < count; ++i)
            ring.write(source.data(), sampleSize);
        ring.close();
        consumer.join();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * count * sampleSize));
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * count));
}
BENCHMARK(RingTransfer)->Arg(1 << 20)->Arg(4096)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
