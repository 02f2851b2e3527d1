// Whole jobs through the transcoder with the XDCAM pipe and an encode pipe that records what
// reaches it: the bytes of every track, one job after another on one transcoder, and several
// transcoders at once.

#include "DecodePipes/XDCAMDecodePipe.h"
#include "KEP/Halvorn/KEPModule.h"
#include "KEP/Halvorn/KEPTranscoder.h"
#include "MXF/SDK/Platform/Platform.h"
#include "XDCAMTestSupport.h"

#include <condition_variable>
#include <gtest/gtest.h>
#include <thread>

using namespace Halvorn::Test::XDCAM;
using namespace KEP::Halvorn;
using DecodePipes::XDCAMDecodePipe;

namespace
{

class JobTranscoder : public KEPTranscoder
{
public:
    std::atomic<int> errors{0};

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
    void cbError(int, const wchar_t*) override { ++errors; }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int done_ = 0;
    int seen_ = 0;
};

void useBuildDictionary()
{
    KEPModule::instance().mxfBinaryDictionary(
        MXF::SDK::Platform::fromUtf8(HALVORN_DICTIONARY_FILE).c_str());
}

// The encoder got the tracks the pipe announced, and each track ffmpeg's bytes; D-10 sound, which
// arrives as stored AES3 elements, turned into PCM here.
void expectFFmpegsBytes(const std::string& clip, const RecordingEncodePipe& encoder)
{
    SCOPED_TRACE(clip);
    const EssenceTrackInfoList tracks = encoder.tracks();
    std::vector<std::uint32_t> video, audio;
    for (const auto& track : tracks)
        (track->fileName == L"video.mxf" ? video : audio).push_back(track->trackId);
    const auto records = encoder.records();
    EXPECT_EQ(records.size(), tracks.size());
    for (const Digest& digest : digests(clip))
    {
        SCOPED_TRACE(digest.tag);
        const std::size_t n = std::stoul(digest.tag.substr(1));
        const std::uint32_t id = (digest.tag[0] == 'v' ? video : audio).at(n);
        const TrackRecord& record = records.at(id);
        EXPECT_EQ(record.samples, digest.packets);
        if (clip == "imx50_625" && digest.tag[0] == 'a')
        {
            Md5 pcm;
            for (const auto& element : encoder.bytesOf(id))
            {
                const auto converted = aes3ToPcm(element, 4, 16);
                pcm.update(converted.data(), converted.size());
            }
            EXPECT_EQ(pcm.hex(), digest.md5);
            continue;
        }
        EXPECT_EQ(record.hex(), digest.md5);
        EXPECT_EQ(record.bytes, digest.bytes);
    }
}

// One job of `clip` on `transcoder`, which is left unlinked.
void runClip(JobTranscoder& transcoder, XDCAMDecodePipe& pipe, RecordingEncodePipe& encoder)
{
    ASSERT_TRUE(transcoder.setDecodePipe(&pipe));
    ASSERT_TRUE(transcoder.setEncodePipe(&encoder));
    ASSERT_TRUE(transcoder.transcode());
    ASSERT_TRUE(transcoder.waitDone());
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Done);
    ASSERT_TRUE(transcoder.unlink());
}

std::wstring fixture(const std::string& clip)
{
    return MXF::SDK::Platform::fromUtf8(dataDir() + "/" + clip + ".mxf");
}

} // namespace

TEST(XDCAMJob, EveryCleanClipReachesTheEncoderWhole)
{
    useBuildDictionary();
    for (const std::string& clip : CLEAN_CLIPS)
    {
        JobTranscoder transcoder;
        XDCAMDecodePipe pipe;
        RecordingEncodePipe encoder(clip == "imx50_625");
        pipe.setInputFile(fixture(clip).c_str(), L"", 0);
        runClip(transcoder, pipe, encoder);
        EXPECT_EQ(transcoder.errors, 0);
        EXPECT_EQ(encoder.finishes(), 1);
        expectFFmpegsBytes(clip, encoder);
    }
}

// The same pipe, encoder and transcoder, relinked after each job: every run starts from the
// first element again.
TEST(XDCAMJob, FiftyJobsInARowOnOneTranscoder)
{
    useBuildDictionary();
    JobTranscoder transcoder;
    XDCAMDecodePipe pipe;
    RecordingEncodePipe encoder;
    pipe.setInputFile(fixture("xdcamhd422_720p50").c_str(), L"", 0);
    for (int job = 0; job < 50; ++job)
    {
        SCOPED_TRACE(job);
        runClip(transcoder, pipe, encoder);
        if (job % 10 == 0 || job == 49)
            expectFFmpegsBytes("xdcamhd422_720p50", encoder);
        else
            ASSERT_EQ(encoder.order().size(), 50u * 9u);
    }
    EXPECT_EQ(transcoder.errors, 0);
    EXPECT_EQ(encoder.starts(), 50);
    EXPECT_EQ(encoder.finishes(), 50);
}

TEST(XDCAMJob, FourTranscodersAtOnceOnDifferentClips)
{
    useBuildDictionary();
    const std::vector<std::string> clips = {"xdcamhd422_1080i25", "xdcamhd422_720p50",
                                            "xdcamhd422_1080i2997df", "multibody_180p50"};
    struct Job
    {
        JobTranscoder transcoder;
        XDCAMDecodePipe pipe;
        RecordingEncodePipe encoder;
    };
    std::vector<std::unique_ptr<Job>> jobs;
    for (const std::string& clip : clips)
    {
        jobs.push_back(std::make_unique<Job>());
        jobs.back()->pipe.setInputFile(fixture(clip).c_str(), L"", 0);
    }
    std::vector<std::thread> hosts;
    for (auto& job : jobs)
        hosts.emplace_back([&job] { runClip(job->transcoder, job->pipe, job->encoder); });
    for (std::thread& host : hosts)
        host.join();
    for (std::size_t i = 0; i < clips.size(); ++i)
    {
        EXPECT_EQ(jobs[i]->transcoder.errors, 0);
        expectFFmpegsBytes(clips[i], jobs[i]->encoder);
    }
}
