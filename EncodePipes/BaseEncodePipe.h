#pragma once

#include "Transcoder/Samples/EssenceTrackInfo.h"
#include "Transcoder/Samples/Sample.h"
#include "Utils/ErrorMessageEntity.h"

#include <cstdint>
#include <memory>

namespace MXF::SDK::MetaMetadata
{
class Dictionary;
}

namespace KEP::Halvorn::EncodePipes
{

// The encode side as the transcoder drives it. `start`, `write`, `flush` and `finish` run on the
// job's thread; `stop` on a host thread while the job runs; `reset` on a host thread after it.
// A failure on any of the pipe's threads leaves its code and detail in the entity.
class BaseEncodePipe : public Utils::ErrorMessageEntity
{
public:
    ~BaseEncodePipe() override = default;

    virtual bool isOutputSet() const = 0;
    // Prepares one output per track.
    virtual bool start(const EssenceTrackInfoList& tracks,
                       std::shared_ptr<MXF::SDK::MetaMetadata::Dictionary> dictionary) = 0;
    // Takes over the caller's reference on `sample`.
    virtual void write(Sample* sample) = 0;
    virtual bool hasFailed() const = 0;
    // Every sample written has reached its output.
    virtual void flush() = 0;
    // Completes the outputs; called under the transcoder's lock.
    virtual void finish() = 0;
    // Only raises flags, so that a `write` waiting for room gives up soon.
    virtual void stop() = 0;
    // Deletes whatever this job has written.
    virtual void abort() = 0;
    // Drops what the last job left, keeping the set-up.
    virtual void reset() = 0;
    virtual void setClipStartOffset(std::uint32_t offset) = 0;
};

} // namespace KEP::Halvorn::EncodePipes
