#pragma once

#include "EncodePipes/SampleQueue.h"
#include "MXF/SDK/DataIO/SliceSource.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>

namespace KEP::Halvorn::EncodePipes
{

// The queue between the job's pump, which pushes samples, and one wrapping thread, which pulls the
// same bytes out as slices: each sample becomes one slice on a SampleBlockAdapter, so no essence
// byte is copied, and the last slice on a sample releases it on the consumer's thread. Bounded in
// bytes; the bound is the only back-pressure of the encode side. Every operation may be called
// from any thread; each takes the one mutex and throws OSError "Error locking queue." if it
// cannot.
class SampleQueue_impl final : public SampleQueue, public MXF::SDK::DataIO::SliceSource
{
public:
    static constexpr std::uint64_t DEFAULT_MAXIMUM_SIZE = 0x2000000;

    // A `blocking` queue makes `read` wait for data; otherwise `read` answers at once.
    explicit SampleQueue_impl(bool blocking);
    // Releases every sample still queued.
    ~SampleQueue_impl() override;

    // Admits the sample when the bytes already queued are at most the bound, whatever the size of
    // the sample: the queue may overshoot by one sample.
    bool enqueue(Sample* sample, std::uint32_t timeoutMicroseconds) override;
    void close() override;
    void setMaximumSize(std::uint64_t bytes) override;
    std::uint64_t maximumSize() override;
    std::uint64_t size() override;

    // The next sample whole, however small `maxSize`. After `close` and the last sample: an empty
    // slice, at once, every time.
    MXF::SDK::DataIO::SlicePtr read(MXF::SDK::DataIO::UInt64 maxSize) override;
    // Bytes that have left the queue.
    MXF::SDK::DataIO::UInt64 position() const override;
    // Closed, and nothing left before the end.
    bool eof() const override;
    // Drops up to `size` queued bytes without waiting. Returns what `size` came to when it
    // stopped: 0 after an exact fit, the bytes still wanted when the queue ran dry, and the bytes
    // cut from the front sample when that sample was larger than the rest to skip.
    MXF::SDK::DataIO::UInt64 skip(MXF::SDK::DataIO::UInt64 size) override;

private:
    std::unique_lock<std::mutex> lock() const;
    // With the lock held.
    void push(MXF::SDK::DataIO::SlicePtr slice);
    bool atEnd() const;

    const bool blocking_;
    mutable std::mutex mutex_;
    std::condition_variable spaceAvailable_;
    std::condition_variable dataAvailable_;
    std::deque<MXF::SDK::DataIO::SlicePtr> slices_;
    std::uint64_t totalEnqueued_ = 0;
    std::uint64_t queuedSize_ = 0;
    std::uint64_t maximumBytes_ = DEFAULT_MAXIMUM_SIZE;
    bool closed_ = false;
    // Threads waiting on each condition: nobody is notified while nobody waits.
    std::uint32_t dataWaiters_ = 0;
    std::uint32_t spaceWaiters_ = 0;
};

// Lends a queue as a slice source that its user may own and delete; the queue stays where it is.
class SampleQueueImplHolder final : public MXF::SDK::DataIO::SliceSource
{
public:
    explicit SampleQueueImplHolder(SampleQueue_impl& queue) noexcept : queue_(&queue) {}

    MXF::SDK::DataIO::SlicePtr read(MXF::SDK::DataIO::UInt64 maxSize) override
    {
        return queue_->read(maxSize);
    }
    MXF::SDK::DataIO::UInt64 position() const override { return queue_->position(); }
    bool eof() const override { return queue_->eof(); }
    MXF::SDK::DataIO::UInt64 skip(MXF::SDK::DataIO::UInt64 size) override
    {
        return queue_->skip(size);
    }

private:
    SampleQueue_impl* queue_;
};

} // namespace KEP::Halvorn::EncodePipes
