#pragma once

#include "Transcoder/Samples/Sample.h"

#include <cstdint>

namespace KEP::Halvorn::EncodePipes
{

// The push side of a track's queue, as the encode pipe sees it.
class SampleQueue
{
public:
    virtual ~SampleQueue() = default;
    // Takes over the caller's reference on `sample` (not null) and returns true, once the queue
    // is at or below its bound; a full queue waits up to `timeoutMicroseconds` for room, then
    // returns false and the reference stays the caller's.
    virtual bool enqueue(Sample* sample, std::uint32_t timeoutMicroseconds) = 0;
    // Ends the stream after what is queued. Never waits, never fails.
    virtual void close() = 0;
    virtual void setMaximumSize(std::uint64_t bytes) = 0;
    virtual std::uint64_t maximumSize() = 0;
    // Bytes queued now.
    virtual std::uint64_t size() = 0;

protected:
    SampleQueue() = default;
    SampleQueue(const SampleQueue&) = delete;
    SampleQueue& operator=(const SampleQueue&) = delete;
};

} // namespace KEP::Halvorn::EncodePipes
