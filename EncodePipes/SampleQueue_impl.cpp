#include "EncodePipes/SampleQueue_impl.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "Transcoder/Samples/SampleBlockAdapter.h"

#include <chrono>
#include <system_error>
#include <vector>

namespace KEP::Halvorn::EncodePipes
{

using MXF::SDK::DataIO::BlockPtr;
using MXF::SDK::DataIO::Slice;
using MXF::SDK::DataIO::SlicePtr;
using MXF::SDK::DataIO::UInt64;

namespace
{

// The end mark is the one slice on an adapter without a sample: its bytes start at null.
bool isEndMark(const Slice& slice)
{
    return slice.begin() == nullptr;
}

// One slice over the whole of `sample` (null for the end mark), on an adapter that takes over one
// reference on it. The slice adds one and the adapter's first is dropped here, which leaves the
// slice as the holder of that reference.
SlicePtr sliceOf(Sample* sample)
{
    const BlockPtr adapter = BlockPtr::adopt(new SampleBlockAdapter(sample));
    return Slice::make(adapter.get(), 0, sample != nullptr ? sample->size() : 0);
}

} // namespace

SampleQueue_impl::SampleQueue_impl(bool blocking) : blocking_(blocking) {}

SampleQueue_impl::~SampleQueue_impl() = default;

std::unique_lock<std::mutex> SampleQueue_impl::lock() const
{
    try
    {
        return std::unique_lock(mutex_);
    }
    catch (const std::system_error&)
    {
        MXF_SDK_THROW(MXF::SDK::Exceptions::OSError, "Error locking queue.");
    }
}

bool SampleQueue_impl::enqueue(Sample* sample, std::uint32_t timeoutMicroseconds)
{
    // The slice is made before the lock, so that the consumer never waits on its allocations. It
    // holds a reference of its own until it is queued: a failure leaves the caller's untouched.
    sample->addReference();
    SlicePtr slice = sliceOf(sample);
    bool wake = false;
    {
        auto guard = lock();
        // Only the bytes already queued count, so that a sample larger than the bound still gets
        // in.
        const auto hasRoom = [this] { return queuedSize_ <= maximumBytes_; };
        // The clock is read only when there is a wait to time.
        if (!hasRoom())
        {
            ++spaceWaiters_;
            const bool room = spaceAvailable_.wait_until(
                guard,
                std::chrono::steady_clock::now() + std::chrono::microseconds(timeoutMicroseconds),
                hasRoom);
            --spaceWaiters_;
            if (!room)
                return false;
        }
        push(std::move(slice));
        // Queued, the slice stands for the caller's reference. Dropped under the lock, as no
        // consumer can have released the slice yet, so the sample cannot die here.
        sample->release();
        wake = dataWaiters_ != 0;
    }
    // After the unlock, so that the consumer does not wake only to wait for the mutex.
    if (wake)
        dataAvailable_.notify_all();
    return true;
}

void SampleQueue_impl::close()
{
    SlicePtr endMark = sliceOf(nullptr);
    auto guard = lock();
    closed_ = true;
    push(std::move(endMark));
    // Under the lock, unlike `enqueue`: a consumer that sees the end may go on to destroy the
    // queue.
    dataAvailable_.notify_all();
}

void SampleQueue_impl::push(SlicePtr slice)
{
    queuedSize_ += slice->size;
    totalEnqueued_ += slice->size;
    slices_.push_back(std::move(slice));
}

bool SampleQueue_impl::atEnd() const
{
    return !slices_.empty() && isEndMark(*slices_.front());
}

void SampleQueue_impl::setMaximumSize(std::uint64_t bytes)
{
    auto guard = lock();
    maximumBytes_ = bytes;
}

std::uint64_t SampleQueue_impl::maximumSize()
{
    auto guard = lock();
    return maximumBytes_;
}

std::uint64_t SampleQueue_impl::size()
{
    auto guard = lock();
    return queuedSize_;
}

SlicePtr SampleQueue_impl::read(UInt64 /*maxSize*/)
{
    SlicePtr front;
    bool wake = false;
    {
        auto guard = lock();
        // A closed queue is never empty: its end mark stays at the front for good.
        if (!blocking_ && slices_.empty())
            return std::make_unique<Slice>();
        if (slices_.empty())
        {
            ++dataWaiters_;
            dataAvailable_.wait(guard, [this] { return !slices_.empty(); });
            --dataWaiters_;
        }
        if (atEnd())
            return std::make_unique<Slice>();
        front = std::move(slices_.front());
        slices_.pop_front();
        queuedSize_ -= front->size;
        wake = spaceWaiters_ != 0;
    }
    // After the unlock, as in `enqueue`.
    if (wake)
        spaceAvailable_.notify_all();
    return front;
}

UInt64 SampleQueue_impl::position() const
{
    auto guard = lock();
    return totalEnqueued_ - queuedSize_;
}

bool SampleQueue_impl::eof() const
{
    auto guard = lock();
    return closed_ && atEnd();
}

UInt64 SampleQueue_impl::skip(UInt64 size)
{
    // Declared before the lock, so that the samples skipped are released after it.
    std::vector<SlicePtr> skipped;
    auto guard = lock();
    // The end mark is not skipped: with it gone a later read would wait for ever.
    while (size != 0 && !slices_.empty() && !atEnd())
    {
        Slice& front = *slices_.front();
        if (front.size > size)
        {
            front.consume(size);
            queuedSize_ -= size;
            break;
        }
        size -= front.size;
        queuedSize_ -= front.size;
        skipped.push_back(std::move(slices_.front()));
        slices_.pop_front();
    }
    return size;
}

} // namespace KEP::Halvorn::EncodePipes
