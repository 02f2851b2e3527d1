#pragma once

#include "DecodePipes/BaseDecodePipe.h"
#include "DecodePipes/InputFilesManager.h"
#include "MXF/SDK/DataIO/DataSource.h"
#include "TestSupport.h"
#include "Transcoder/ErrorMessages.h"
#include "Transcoder/Samples/EssenceTrackInfo.h"
#include "Transcoder/Samples/Sample.h"
#include "Transcoder/TranscoderTestSupport.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace Halvorn::Test
{

using KEP::Halvorn::DecodePipes::FileBoundsProvider;
using KEP::Halvorn::DecodePipes::FileBoundsRetriever;
using KEP::Halvorn::DecodePipes::FileEntry;
using KEP::Halvorn::DecodePipes::InputFile;

// Stand-in media files: the text "<frames> <label>", or "? <label>" for a file whose duration
// can't be told. No format is needed to measure and trim frames.
struct StandIn
{
    std::uint64_t frames = FileBoundsRetriever::UNKNOWN_DURATION;
    std::string label;
};

inline void writeStandIn(const std::filesystem::path& file, const std::string& text)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

inline StandIn readStandIn(MXF::SDK::DataIO::RandomAccessDataSource& file)
{
    char text[64] = {};
    file.seek(0);
    file.read(text, sizeof text - 1);
    StandIn standIn;
    char* end = text;
    if (text[0] != '?')
        standIn.frames = std::strtoull(text, &end, 10);
    else
        ++end;
    while (*end == ' ')
        ++end;
    standIn.label = end;
    return standIn;
}

// Measures a stand-in. A format that can only start at every `gop`th frame moves a bounded start
// back to the one before it.
class StandInRetriever : public FileBoundsRetriever
{
public:
    StandInRetriever(std::uint64_t frames, std::uint64_t gop)
        : frames_(frames), gop_(gop), end_(frames)
    {
    }
    std::uint64_t duration() override
    {
        return frames_ == UNKNOWN_DURATION ? UNKNOWN_DURATION : end_ - start_;
    }
    std::uint64_t setBounds(std::uint64_t firstFrame, std::uint64_t frameCount) override
    {
        const std::uint64_t first = std::min(firstFrame, frames_);
        start_ = first - first % gop_;
        end_ = frameCount >= frames_ - first ? frames_ : first + frameCount;
        return first - start_;
    }

private:
    std::uint64_t frames_;
    std::uint64_t gop_;
    std::uint64_t start_ = 0;
    std::uint64_t end_;
};

// Retrievers for stand-ins, and the labels of the files measured, in order.
class StandInProvider : public FileBoundsProvider
{
public:
    std::uint64_t gop = 1;
    std::vector<std::string> measured;

    std::unique_ptr<FileBoundsRetriever> createFileBoundsRetriever(InputFile file) override
    {
        const StandIn standIn = readStandIn(*file);
        measured.push_back(standIn.label);
        return std::make_unique<StandInRetriever>(standIn.frames, gop);
    }
};

// A sample that says which track, file and frame it is of. Live ones are counted.
class FrameSample : public KEP::Halvorn::RefCountMixIn<KEP::Halvorn::Sample>
{
public:
    static inline std::atomic<int> live{0};

    FrameSample(std::uint32_t track, std::string label, std::uint64_t frame)
        : track(track), label(std::move(label)), frame(frame)
    {
        ++live;
    }
    ~FrameSample() override { --live; }

    std::uint8_t* data() override { return reinterpret_cast<std::uint8_t*>(&frame); }
    std::uint64_t size() const override { return sizeof frame; }

    const std::uint32_t track;
    const std::string label;
    std::uint64_t frame;
};

// A decode pipe over stand-ins: each file has `videoTracks` video tracks (id 1) and `audioTracks`
// sound tracks (ids 2 and up); one read gives one sample a track for the next frame, then goes on
// to the next file. What it is asked to do is written to `events`. Its samples are FrameSamples,
// or with `transcoderSamples` the TestSamples that the transcoder's test pipes take.
class TestPipe : public KEP::Halvorn::DecodePipes::BaseDecodePipe
{
public:
    ~TestPipe() override { closeCurrentFile(); }

    StandInProvider provider;
    int videoTracks = 1;
    int audioTracks = 1;
    bool analysisFails = false;
    bool transcoderSamples = false;
    std::vector<std::string> events;

    std::unique_ptr<FileBoundsRetriever> createFileBoundsRetriever(InputFile file) override
    {
        return provider.createFileBoundsRetriever(std::move(file));
    }

    KEP::Halvorn::DecodePipes::InputFilesManager& files() { return inputFiles_; }
    const KEP::Halvorn::EssenceTrackInfoList& tracks() const { return tracks_; }
    std::uint32_t audioFileCounter() const { return audioFileCounter_; }
    std::size_t samplesHeld() const { return samples_.size(); }
    using BaseDecodePipe::advanceFile;

protected:
    void closeCurrentFile() override
    {
        if (open_)
            events.push_back("close " + label_);
        open_ = false;
    }
    bool analyzeCurrentFile() override
    {
        const FileEntry entry = inputFiles_.currentEntry();
        const StandIn standIn = readStandIn(*entry.file);
        label_ = standIn.label;
        open_ = true;
        events.push_back("analyze " + label_ +
                         (entry.bounded ? " " + std::to_string(entry.firstFrame) + "+" +
                                              std::to_string(entry.frameCount) + " back " +
                                              std::to_string(entry.moveBack)
                                        : ""));
        if (analysisFails)
        {
            errorCode_ = KEP::Halvorn::ERROR_ANALYZING_INPUT;
            return false;
        }
        next_ = entry.bounded ? entry.firstFrame - entry.moveBack : 0;
        end_ = entry.bounded && entry.frameCount < standIn.frames - entry.firstFrame
                   ? entry.firstFrame + entry.frameCount
                   : standIn.frames;
        for (int i = 0; i < videoTracks; ++i)
        {
            auto video = std::make_shared<KEP::Halvorn::EssenceTrackInfo>(5);
            video->trackId = 1;
            video->fileName = L"video.mxf";
            tracks_.push_back(video);
        }
        for (int i = 0; i < audioTracks; ++i)
        {
            auto audio = std::make_shared<KEP::Halvorn::EssenceTrackInfo>(8);
            audio->trackId = static_cast<std::uint32_t>(2 + i);
            wchar_t name[32];
            std::swprintf(name, 32, L"audio_%02u.mxf", audioFileCounter_++);
            audio->fileName = name;
            tracks_.push_back(audio);
        }
        editRate_ = MXF::SDK::Types::Rational(25, 1);
        return true;
    }
    void readNextSamples() override
    {
        while (next_ >= end_)
            if (!advanceFile())
                return;
        for (const auto& track : tracks_)
            if (transcoderSamples)
                samples_.push_back(new TestSample(track->trackId));
            else
                samples_.push_back(new FrameSample(track->trackId, label_, next_));
        ++next_;
        ++framesRead_;
    }

private:
    bool open_ = false;
    std::string label_;
    std::uint64_t next_ = 0;
    std::uint64_t end_ = 0;
};

} // namespace Halvorn::Test
