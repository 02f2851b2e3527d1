#pragma once

// An encode pipe that records what reaches it, for the XDCAM pipe's jobs.

#include "DecodePipes/IDecodePipe.h"
#include "DecodePipes/XDCAMExpectations.h"
#include "EncodePipes/BaseEncodePipe.h"
#include "KEP/Halvorn/KEPCodecPipe.h"
#include "KEP/Halvorn/KEPModule.h"
#include "KEP/Halvorn/KEPTranscoder.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Platform/Platform.h"
#include "Transcoder/Samples/EssenceTrackInfo.h"
#include "Transcoder/Samples/Sample.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <gtest/gtest.h>
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

// The compiled dictionary of the build, loaded once.
inline std::shared_ptr<MXF::SDK::MetaMetadata::Dictionary> dictionary()
{
    static const auto loaded = []
    {
        auto made = std::make_shared<MXF::SDK::MetaMetadata::Dictionary>();
        MXF::SDK::MetaMetadata::BinaryLoader::load(
            MXF::SDK::Platform::fromUtf8(HALVORN_DICTIONARY_FILE), *made);
        return made;
    }();
    return loaded;
}

inline std::wstring fixture(const std::string& name)
{
    return MXF::SDK::Platform::fromUtf8(dataDir() + "/" + name);
}

// Every sample of a pipe, recorded as an encoder would; each is released.
inline void drain(KEP::Halvorn::DecodePipes::IDecodePipe& pipe, RecordingEncodePipe& into)
{
    while (KEP::Halvorn::Sample* sample = pipe.nextSample())
        into.write(sample);
}

// Each track of `tracks` got ffmpeg's bytes of `clip`; D-10 sound, which arrives as stored AES3
// elements, turned into PCM here (the encoder must keep the bytes).
inline void expectFFmpegsBytes(const std::string& clip,
                               const KEP::Halvorn::EssenceTrackInfoList& tracks,
                               const RecordingEncodePipe& encoder)
{
    SCOPED_TRACE(clip);
    std::vector<std::shared_ptr<KEP::Halvorn::EssenceTrackInfo>> video, audio;
    for (const auto& track : tracks)
        (track->fileName == L"video.mxf" ? video : audio).push_back(track);
    const auto records = encoder.records();
    EXPECT_EQ(records.size(), tracks.size());
    for (const Digest& digest : digests(clip))
    {
        SCOPED_TRACE(digest.tag);
        const auto& track =
            (digest.tag[0] == 'v' ? video : audio).at(std::stoul(digest.tag.substr(1)));
        const TrackRecord& record = records.at(track->trackId);
        EXPECT_EQ(record.samples, digest.packets);
        if (clip == "imx50_625" && digest.tag[0] == 'a')
        {
            Md5 pcm;
            std::uint64_t bytes = 0;
            for (const auto& element : encoder.bytesOf(track->trackId))
            {
                // A 4-byte header and 1920 samples of eight 4-byte slots.
                EXPECT_EQ(element.size(), 4u + 1920u * 8u * 4u);
                const auto converted =
                    aes3ToPcm(element, static_cast<int>(track->audio.channelCount),
                              static_cast<int>(track->audio.quantizationBits));
                pcm.update(converted.data(), converted.size());
                bytes += converted.size();
            }
            EXPECT_EQ(pcm.hex(), digest.md5);
            EXPECT_EQ(bytes, digest.bytes);
            continue;
        }
        EXPECT_EQ(record.hex(), digest.md5);
        EXPECT_EQ(record.bytes, digest.bytes);
    }
}

// A transcoder that counts its jobs' ends and keeps the last error it was told.
class JobTranscoder : public KEP::Halvorn::KEPTranscoder
{
public:
    std::atomic<int> errors{0};
    int code = 0;
    std::wstring text;

    // Waits for the next cbDone.
    bool waitDone()
    {
        std::unique_lock lock(mutex_);
        const bool done =
            changed_.wait_for(lock, std::chrono::seconds(120), [&] { return done_ > seen_; });
        seen_ = done_;
        return done;
    }

protected:
    void cbDone() override
    {
        const std::lock_guard lock(mutex_);
        ++done_;
        changed_.notify_all();
    }
    void cbError(int errorCode, const wchar_t* message) override
    {
        ++errors;
        code = errorCode;
        text = message;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int done_ = 0;
    int seen_ = 0;
};

// One job on `transcoder`, with the dictionary of the build: the state it ended in. The
// transcoder is left unlinked.
inline KEP::Halvorn::KEPTranscoder::State
runJob(JobTranscoder& transcoder, KEP::Halvorn::KEPDecodePipe& pipe, RecordingEncodePipe& encoder)
{
    KEP::Halvorn::KEPModule::instance().mxfBinaryDictionary(
        MXF::SDK::Platform::fromUtf8(HALVORN_DICTIONARY_FILE).c_str());
    EXPECT_TRUE(transcoder.setDecodePipe(&pipe));
    EXPECT_TRUE(transcoder.setEncodePipe(&encoder));
    EXPECT_TRUE(transcoder.transcode());
    EXPECT_TRUE(transcoder.waitDone());
    const KEP::Halvorn::KEPTranscoder::State state = transcoder.getState();
    EXPECT_TRUE(transcoder.unlink());
    return state;
}

} // namespace Halvorn::Test::XDCAM
