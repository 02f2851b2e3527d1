// Whole jobs through the transcoder with the XDCAM pipe and an encode pipe that records what
// reaches it: the bytes of every track, one job after another on one transcoder, and several
// transcoders at once.

#include "DecodePipes/XDCAMDecodePipe.h"
#include "XDCAMTestSupport.h"

#include <gtest/gtest.h>
#include <thread>

using namespace Halvorn::Test::XDCAM;
using namespace KEP::Halvorn;
using DecodePipes::XDCAMDecodePipe;

// The bytes of each track, end to end, are ffmpeg's, one element a sample in the order of the
// file (ffprobe's packets sorted by position). A file that declares 24 frames and holds 25 gives
// all 25, as ffmpeg does.
TEST(XDCAMJob, EveryClipReachesTheEncoderWholeInFileOrder)
{
    std::vector<std::string> clips = CLEAN_CLIPS;
    clips.push_back("declared/declared_short");
    for (const std::string& clip : clips)
    {
        SCOPED_TRACE(clip);
        JobTranscoder transcoder;
        XDCAMDecodePipe pipe;
        const bool d10 = clip == "imx50_625";
        RecordingEncodePipe encoder(d10);
        pipe.setInputFile(fixture(clip + ".mxf").c_str(), L"", 0);
        EXPECT_EQ(runJob(transcoder, pipe, encoder), KEPTranscoder::Done);
        EXPECT_EQ(transcoder.errors, 0);
        EXPECT_EQ(encoder.finishes(), 1);
        const EssenceTrackInfoList tracks = encoder.tracks();
        expectFFmpegsBytes(clip, tracks, encoder);

        const std::vector<Packet> packets = packetsInFileOrder(clip);
        const auto order = encoder.order();
        ASSERT_EQ(order.size(), packets.size());
        // The video track first, then the sound tracks, as ffmpeg numbers its streams.
        std::vector<std::uint32_t> streams;
        for (const bool video : {true, false})
            for (const auto& track : tracks)
                if ((track->fileName == L"video.mxf") == video)
                    streams.push_back(track->trackId);
        for (std::size_t i = 0; i < packets.size(); ++i)
        {
            ASSERT_EQ(order[i].first, streams.at(std::size_t(packets[i].stream))) << i;
            // ffmpeg hands out D-10 sound as PCM, not as the element it read.
            if (!d10 || packets[i].stream == 0)
            {
                ASSERT_EQ(order[i].second, packets[i].size) << i;
            }
        }
    }
}

// The same pipe, encoder and transcoder, relinked after each job: every run starts from the
// first element again.
TEST(XDCAMJob, FiftyJobsInARowOnOneTranscoder)
{
    JobTranscoder transcoder;
    XDCAMDecodePipe pipe;
    RecordingEncodePipe encoder;
    pipe.setInputFile(fixture("xdcamhd422_720p50.mxf").c_str(), L"", 0);
    for (int job = 0; job < 50; ++job)
    {
        SCOPED_TRACE(job);
        EXPECT_EQ(runJob(transcoder, pipe, encoder), KEPTranscoder::Done);
        if (job % 10 == 0 || job == 49)
            expectFFmpegsBytes("xdcamhd422_720p50", encoder.tracks(), encoder);
        else
            ASSERT_EQ(encoder.order().size(), 50u * 9u);
    }
    EXPECT_EQ(transcoder.errors, 0);
    EXPECT_EQ(encoder.starts(), 50);
    EXPECT_EQ(encoder.finishes(), 50);
}

TEST(XDCAMJob, FourTranscodersAtOnceOnDifferentClips)
{
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
        jobs.back()->pipe.setInputFile(fixture(clip + ".mxf").c_str(), L"", 0);
    }
    std::vector<std::thread> hosts;
    for (auto& job : jobs)
        hosts.emplace_back([&job] { runJob(job->transcoder, job->pipe, job->encoder); });
    for (std::thread& host : hosts)
        host.join();
    for (std::size_t i = 0; i < clips.size(); ++i)
    {
        EXPECT_EQ(jobs[i]->transcoder.errors, 0);
        expectFFmpegsBytes(clips[i], jobs[i]->encoder.tracks(), jobs[i]->encoder);
    }
}
