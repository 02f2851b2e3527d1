#include "EncodePipes/SampleQueue_impl.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "Transcoder/SampleBlockAdapter.h"

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
    auto guard = lock();
    // Only the bytes already queued count, so that a sample larger than the bound still gets in.
    const auto hasRoom = [this] { return queuedSize_ <= maximumBytes_; };
    // The clock is read only when there is a wait to time.
    if (!hasRoom() &&
        !spaceAvailable_.wait_until(guard,
                                    std::chrono::steady_clock::now() +
                                        std::chrono::microseconds(timeoutMicroseconds),
                                    hasRoom))
        return false;
    push(sample);
    dataAvailable_.notify_all();
    return true;
}

void SampleQueue_impl::close()
{
    auto guard = lock();
    closed_ = true;
    push(nullptr);
    dataAvailable_.notify_all();
}

void SampleQueue_impl::push(Sample* sample)
{
    const UInt64 size = sample != nullptr ? sample->size() : 0;
    // The adapter takes over the caller's reference and the slice adds one; dropping the adapter's
    // first reference here leaves the slice as the sample's only holder.
    const BlockPtr adapter = BlockPtr::adopt(new SampleBlockAdapter(sample));
    slices_.push_back(Slice::make(adapter.get(), 0, size));
    queuedSize_ += size;
    totalEnqueued_ += size;
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
    auto guard = lock();
    // A closed queue is never empty: its end mark stays at the front for good.
    if (!blocking_ && slices_.empty())
        return std::make_unique<Slice>();
    dataAvailable_.wait(guard, [this] { return !slices_.empty(); });
    if (atEnd())
        return std::make_unique<Slice>();
    SlicePtr front = std::move(slices_.front());
    slices_.pop_front();
    queuedSize_ -= front->size;
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
