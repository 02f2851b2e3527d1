#pragma once

// An encode pipe that records what reaches it, for the XDCAM pipe's jobs.

#include "DecodePipes/XDCAMExpectations.h"
#include "EncodePipes/BaseEncodePipe.h"
#include "KEP/Halvorn/KEPCodecPipe.h"
#include "Transcoder/Samples/EssenceTrackInfo.h"
#include "Transcoder/Samples/Sample.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace Halvorn::Test::XDCAM
{

// What one track received.
struct TrackRecord
{
    Md5 md5;
    std::uint64_t bytes = 0;
    std::uint64_t samples = 0;

    std::string hex() const
    {
        Md5 copy = md5;
        return copy.hex();
    }
};

// An encode pipe that keeps, per track id, a digest of the bytes written, and the order of the
// samples (track id and size). It releases every sample on the job's thread.
class RecordingEncodePipe : public KEP::Halvorn::EncodePipes::BaseEncodePipe,
                            public KEP::Halvorn::KEPEncodePipe
{
public:
    // With `keepBytes`, the bytes of every sample too (for the AES3 check).
    explicit RecordingEncodePipe(bool keepBytes = false) : keepBytes_(keepBytes) {}

    bool isOutputSet() const override { return true; }
    bool start(const KEP::Halvorn::EssenceTrackInfoList& tracks,
               std::shared_ptr<MXF::SDK::MetaMetadata::Dictionary>) override
    {
        const std::lock_guard lock(mutex_);
        tracks_ = tracks;
        records_.clear();
        order_.clear();
        bytes_.clear();
        ++starts_;
        return true;
    }
    void write(KEP::Halvorn::Sample* sample) override
    {
        auto* read = dynamic_cast<KEP::Halvorn::HalvornSample*>(sample);
        {
            const std::lock_guard lock(mutex_);
            const std::uint32_t id = read != nullptr ? read->trackId() : 0xFFFFFFFF;
            TrackRecord& record = records_[id];
            record.md5.update(sample->data(), sample->size());
            record.bytes += sample->size();
            ++record.samples;
            order_.emplace_back(id, sample->size());
            if (keepBytes_)
                bytes_[id].emplace_back(sample->data(), sample->data() + sample->size());
        }
        sample->release();
    }
    bool hasFailed() const override { return false; }
    void flush() override {}
    void finish() override { ++finishes_; }
    void stop() override {}
    void abort() override { ++aborts_; }
    void reset() override {}
    void setClipStartOffset(std::uint32_t) override {}

    KEP::Halvorn::EssenceTrackInfoList tracks() const
    {
        const std::lock_guard lock(mutex_);
        return tracks_;
    }
    std::map<std::uint32_t, TrackRecord> records() const
    {
        const std::lock_guard lock(mutex_);
        return records_;
    }
    std::vector<std::pair<std::uint32_t, std::uint64_t>> order() const
    {
        const std::lock_guard lock(mutex_);
        return order_;
    }
    std::vector<std::vector<std::uint8_t>> bytesOf(std::uint32_t track) const
    {
        const std::lock_guard lock(mutex_);
        const auto found = bytes_.find(track);
        return found != bytes_.end() ? found->second : std::vector<std::vector<std::uint8_t>>{};
    }
    int starts() const { return starts_; }
    int finishes() const { return finishes_; }
    int aborts() const { return aborts_; }

private:
    const bool keepBytes_;
    mutable std::mutex mutex_;
    KEP::Halvorn::EssenceTrackInfoList tracks_;
    std::map<std::uint32_t, TrackRecord> records_;
    std::vector<std::pair<std::uint32_t, std::uint64_t>> order_;
    std::map<std::uint32_t, std::vector<std::vector<std::uint8_t>>> bytes_;
    std::atomic<int> starts_{0};
    std::atomic<int> finishes_{0};
    std::atomic<int> aborts_{0};
};

} // namespace Halvorn::Test::XDCAM
