#include "DecodePipes/BaseDecodePipe.h"

#include "DecodePipeTestSupport.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "Transcoder/TranscoderTestSupport.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using KEP::Halvorn::DecodePipes::ClipMaterials;
using namespace Halvorn::Test;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace
{

std::wstring umid(const std::wstring& middle)
{
    return L"060A2B340101010501010D4313000000" + middle + L"114805D8080046020211C0D1";
}

// The materials of tests/data/sidecars/span/MEDIAPRO.XML.
const std::wstring TAKE = umid(L"B2000001");
const std::wstring STRAY = umid(L"B20001FF"); // named by the take, not in the profile
const std::wstring LONE = umid(L"B2000201");  // a clip under "./Clpr/"
const std::wstring BROKEN_TAKE = umid(L"B2000301");
const std::wstring PROXY_ONLY = umid(L"B2000401");
const std::wstring NO_URI = umid(L"B2000501");
const std::wstring NO_SIDECAR = umid(L"B2000601");

std::filesystem::path dataDir()
{
    const char* dir = std::getenv("HALVORN_TEST_DATA");
    return std::filesystem::path(dir ? dir : "tests/data") / "sidecars";
}

std::wstring wide(const std::filesystem::path& path)
{
    return MXF::SDK::Platform::fromUtf8(path.string());
}

// A mark's text as the reader keeps it: with one zero character after the text.
std::wstring mark(std::wstring text)
{
    return text + L'\0';
}

// The card of the span fixture in a temporary folder, with stand-ins for the three clips of its
// take: 300, 300 and 150 frames.
struct SpanCard
{
    SpanCard()
    {
        std::filesystem::copy(dataDir() / "span", dir.path() / "span",
                              std::filesystem::copy_options::recursive);
        writeStandIn(clip(1), "300 C1");
        writeStandIn(clip(2), "300 C2");
        writeStandIn(clip(3), "150 C3");
        writeStandIn(dir.path() / "span/CLPR/200_0002_01/200_0002_01.MP4", "100 L");
    }
    std::filesystem::path clip(int n) const
    {
        const std::string name = "200_0001_0" + std::to_string(n);
        return dir.path() / "span/CLPR" / name / (name + ".MP4");
    }
    std::wstring folder() const { return dir.file(L"span/"); }
    std::wstring profile() const { return dir.file(L"span/MEDIAPRO.XML"); }

    TempDir dir;
};

std::string describe(KEP::Halvorn::Sample* sample)
{
    if (sample == nullptr)
        return "end";
    auto* const frame = static_cast<FrameSample*>(sample);
    return std::to_string(frame->track) + ":" + frame->label + "@" + std::to_string(frame->frame);
}

// The next `count` samples as "track:label@frame", released.
std::vector<std::string> read(TestPipe& pipe, int count)
{
    std::vector<std::string> samples;
    for (int i = 0; i < count; ++i)
    {
        KEP::Halvorn::Sample* const sample = pipe.nextSample();
        samples.push_back(describe(sample));
        if (sample != nullptr)
            sample->release();
    }
    return samples;
}

// Reads to the end; the video samples' descriptions.
std::vector<std::string> readVideo(TestPipe& pipe)
{
    std::vector<std::string> video;
    while (KEP::Halvorn::Sample* const sample = pipe.nextSample())
    {
        if (static_cast<FrameSample*>(sample)->track == 1)
            video.push_back(describe(sample));
        sample->release();
    }
    return video;
}

bool load(TestPipe& pipe, KEP::Halvorn::EssenceTrackInfoList& tracks)
{
    return pipe.load(tracks, nullptr);
}

bool load(TestPipe& pipe)
{
    KEP::Halvorn::EssenceTrackInfoList tracks;
    return load(pipe, tracks);
}

void useInOut(TestPipe& pipe, std::uint64_t inPoint, std::uint64_t frames)
{
    pipe.setInPoint(inPoint, 0);
    pipe.setDuration(frames, frames);
    ASSERT_TRUE(pipe.useInOutPoint());
}

} // namespace

TEST(BaseDecodePipe, ReadsASingleFileTrackByTrackAndFrameByFrame)
{
    TempDir dir;
    writeStandIn(dir.path() / "clip.mp4", "3 A");
    const std::wstring xml = wide(dataDir() / "BPAV/CLPR/100_0001_01/100_0001_01M01.XML");
    TestPipe pipe;
    EXPECT_FALSE(pipe.isInputSet());
    EXPECT_STREQ(pipe.firstInputFile(), L"");
    EXPECT_STREQ(pipe.xmlMetadataFile(), L"");

    EXPECT_TRUE(pipe.setInputFile(dir.file(L"clip.mp4").c_str(), xml.c_str(), 42));
    EXPECT_TRUE(pipe.isInputSet());
    EXPECT_EQ(pipe.firstInputFile(), dir.file(L"clip.mp4"));
    EXPECT_EQ(pipe.xmlMetadataFile(), xml);
    EXPECT_EQ(pipe.clipStartOffset(), 42);
    // The marks of that sidecar, as its fixture lists them.
    ClipMaterials materials = pipe.clipMaterials();
    std::vector<std::uint64_t> frames;
    for (const auto& [frame, text] : materials)
        frames.push_back(frame);
    EXPECT_THAT(frames, ElementsAre(0u, 40u, 120u, 180u, 200u));
    EXPECT_EQ(materials[40], mark(L"_ShotMark1"));

    KEP::Halvorn::EssenceTrackInfoList tracks;
    ASSERT_TRUE(load(pipe, tracks));
    ASSERT_EQ(tracks.size(), 2u);
    EXPECT_EQ(tracks[0]->fileName, L"video.mxf");
    EXPECT_EQ(tracks[1]->fileName, L"audio_00.mxf");
    EXPECT_EQ(pipe.editRate(), MXF::SDK::Types::Rational(25, 1));
    EXPECT_THAT(pipe.events, ElementsAre("analyze A"));

    // One read gives a sample a track; progress counts frames read of the 3.
    EXPECT_EQ(pipe.progress(), 0.0);
    EXPECT_THAT(read(pipe, 1), ElementsAre("1:A@0"));
    EXPECT_DOUBLE_EQ(pipe.progress(), 100.0 / 3);
    EXPECT_THAT(read(pipe, 3), ElementsAre("2:A@0", "1:A@1", "2:A@1"));
    EXPECT_DOUBLE_EQ(pipe.progress(), 200.0 / 3);
    EXPECT_THAT(read(pipe, 4), ElementsAre("1:A@2", "2:A@2", "end", "end"));
    EXPECT_DOUBLE_EQ(pipe.progress(), 100.0);
    EXPECT_EQ(FrameSample::live, 0);

    // A file of no frames: the progress is 0 / 0.
    writeStandIn(dir.path() / "empty.mp4", "0 E");
    TestPipe empty;
    empty.setInputFile(dir.file(L"empty.mp4").c_str(), L"", 0);
    ASSERT_TRUE(load(empty));
    EXPECT_THAT(read(empty, 1), ElementsAre("end"));
    EXPECT_TRUE(std::isnan(empty.progress()));
    EXPECT_TRUE(empty.clipMaterials().empty()) << "no sidecar, no marks";
}

TEST(BaseDecodePipe, FindsTheFilesOfASpannedTakeByItsUmid)
{
    RecordingLogger logger;
    ScopedLogger installed(logger);
    SpanCard card;
    TestPipe pipe;
    ASSERT_TRUE(pipe.setInputUmid(card.profile().c_str(), TAKE.c_str()));
    EXPECT_TRUE(pipe.isInputSet());
    const std::wstring folder = card.folder();
    EXPECT_THAT(pipe.files().fileNames(),
                ElementsAre(folder + L"./CLPR/200_0001_01/200_0001_01.MP4",
                            folder + L"./CLPR/200_0001_02/200_0001_02.MP4",
                            folder + L"./CLPR/200_0001_03/200_0001_03.MP4"));
    EXPECT_EQ(pipe.firstInputFile(), folder + L"./CLPR/200_0001_01/200_0001_01.MP4");
    // The take's own sidecar; the Component offset of its first clip.
    EXPECT_EQ(pipe.xmlMetadataFile(), folder + L"./TAKR/200_0001/200_0001M01.XML");
    EXPECT_EQ(pipe.clipStartOffset(), 1500);
    // The clips' marks on the take's time line: clip 2 starts at 300, clip 3 at 300 + 300.
    const ClipMaterials expected = {{10, mark(L"In")}, {300, mark(L"Two")}, {749, mark(L"End")}};
    EXPECT_EQ(pipe.clipMaterials(), expected);
    EXPECT_THAT(logger.texts(),
                ElementsAre(L"Didn't find matching material node for take clip with umid: " + STRAY,
                            L"Setting xml metadata file for umid " + TAKE + L" to: " + folder +
                                L"./TAKR/200_0001/200_0001M01.XML"));
    EXPECT_EQ(logger.lines()[0].level, 0);
    EXPECT_EQ(logger.lines()[1].level, 0);

    // Without in and out points all three are read, one after the other: 750 frames.
    ASSERT_TRUE(load(pipe));
    const std::vector<std::string> video = readVideo(pipe);
    ASSERT_EQ(video.size(), 750u);
    EXPECT_EQ(video[299], "1:C1@299");
    EXPECT_EQ(video[300], "1:C2@0");
    EXPECT_EQ(video[600], "1:C3@0");
    EXPECT_EQ(video[749], "1:C3@149");
    EXPECT_THAT(pipe.events, ElementsAre("analyze C1", "close C1", "analyze C2", "close C2",
                                         "analyze C3", "close C3"));
    EXPECT_DOUBLE_EQ(pipe.progress(), 100.0);

    // A clip whose uri reads "Clpr": its one file, its offset and its marks.
    TestPipe lone;
    ASSERT_TRUE(lone.setInputUmid(card.profile().c_str(), LONE.c_str()));
    EXPECT_THAT(lone.files().fileNames(),
                ElementsAre(folder + L"./CLPR/200_0002_01/200_0002_01.MP4"));
    EXPECT_EQ(lone.clipStartOffset(), 250);
    EXPECT_EQ(lone.clipMaterials(), (ClipMaterials{{50, mark(L"Lone")}}));
}

TEST(BaseDecodePipe, ChoosesTheFilesOfASpannedTakeByInAndOutPoints)
{
    // The take's files: C1 frames 0..299, C2 300..599, C3 600..749 of the take.
    SpanCard card;
    struct Case
    {
        std::uint64_t inPoint;
        std::uint64_t frames;
        std::vector<std::string> events;
        std::vector<std::string> measured;
        std::uint64_t total;
        std::string first;
        std::string last;
    };
    const Case cases[] = {
        // At the start: C1 holds frames 0..99; 100 reached, C2 is not opened.
        {0, 100, {"analyze C1 0+100 back 0", "close C1"}, {"C1"}, 100, "1:C1@0", "1:C1@99"},
        // Across the first join: C1 gives 250..299 (length min(300 - 250, 100) = 50), then C2
        // is bounded to the 100 - 50 = 50 left: 0..49.
        {250,
         100,
         {"analyze C1 250+50 back 0", "close C1", "analyze C2 0+50 back 0", "close C2"},
         {"C1", "C2"},
         100,
         "1:C1@250",
         "1:C2@49"},
        // Inside C2: C1 is skipped (300 is below 400); first = 400 - 300 = 100, length 300 - 400
        // wraps and is capped to 100: 100..199.
        {400,
         100,
         {"analyze C2 100+100 back 0", "close C2"},
         {"C1", "C2"},
         100,
         "1:C2@100",
         "1:C2@199"},
        // Past the end of the take: C1 and C2 skipped (300, 600 below 700); C3 from 700 - 600 =
        // 100 has only 50 frames of the 100 asked.
        {700,
         100,
         {"analyze C3 100+100 back 0", "close C3"},
         {"C1", "C2", "C3"},
         50,
         "1:C3@100",
         "1:C3@149"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.inPoint);
        TestPipe pipe;
        ASSERT_TRUE(pipe.setInputUmid(card.profile().c_str(), TAKE.c_str()));
        useInOut(pipe, c.inPoint, c.frames);
        ASSERT_TRUE(load(pipe));
        const std::vector<std::string> video = readVideo(pipe);
        EXPECT_EQ(pipe.events, c.events);
        EXPECT_EQ(pipe.provider.measured, c.measured);
        EXPECT_EQ(pipe.files().totalFrames(), c.total);
        EXPECT_EQ(pipe.files().startFrame(), static_cast<std::int64_t>(c.inPoint));
        ASSERT_EQ(video.size(), c.total);
        EXPECT_EQ(video.front(), c.first);
        EXPECT_EQ(video.back(), c.last);
        EXPECT_DOUBLE_EQ(pipe.progress(), 100.0);
    }
}

TEST(BaseDecodePipe, ChecksInAndOutPointsBeforeUsingThem)
{
    RecordingLogger logger;
    ScopedLogger installed(logger);
    const std::wstring missing =
        L"setInPoint methods and setDuration methods must be called prior to useInOutPoint.";
    const std::wstring tooMany = L"The number of precharge frames plus the number of displayed "
                                 L"frames must be higher than total frames to read.";
    TempDir dir;
    writeStandIn(dir.path() / "clip.mp4", "20 A");
    {
        TestPipe pipe;
        pipe.setInputFile(dir.file(L"clip.mp4").c_str(), L"", 0);
        EXPECT_FALSE(pipe.useInOutPoint());
        pipe.setInPoint(5, 0);
        EXPECT_FALSE(pipe.useInOutPoint()) << "no duration yet";
        EXPECT_THAT(logger.texts(), ElementsAre(missing, missing));
        EXPECT_EQ(logger.lines()[0].level, 0);
        // Not in use: the file is read whole.
        ASSERT_TRUE(load(pipe));
        EXPECT_THAT(pipe.events, ElementsAre("analyze A"));
        EXPECT_EQ(pipe.files().totalFrames(), 20u);
    }
    {
        TestPipe pipe;
        pipe.setDuration(10, 10);
        logger.clear();
        EXPECT_FALSE(pipe.useInOutPoint()) << "no in point yet";
        EXPECT_THAT(logger.texts(), ElementsAre(missing));
    }
    {
        // Precharge 5 plus displayed 10 against a total of 15 passes, of 14 fails.
        TestPipe pipe;
        pipe.setInputFile(dir.file(L"clip.mp4").c_str(), L"", 0);
        pipe.setInPoint(2, 5);
        pipe.setDuration(14, 10);
        logger.clear();
        EXPECT_FALSE(pipe.useInOutPoint());
        EXPECT_THAT(logger.texts(), ElementsAre(tooMany));
        EXPECT_EQ(logger.lines()[0].level, 0);
        pipe.setDuration(15, 10);
        EXPECT_TRUE(pipe.useInOutPoint());
        // From frame 2, 15 frames: length min(20 - 2, 15) = 15.
        ASSERT_TRUE(load(pipe));
        EXPECT_THAT(pipe.events, ElementsAre("analyze A 2+15 back 0"));
    }
    {
        // The sum wraps: all ones plus 2 is 1, not more than 15.
        TestPipe pipe;
        pipe.setInPoint(0, ~std::uint64_t{0});
        pipe.setDuration(15, 2);
        EXPECT_TRUE(pipe.useInOutPoint());
    }
}

TEST(BaseDecodePipe, RefusesToLoadWhatItCannotRead)
{
    TempDir dir;
    writeStandIn(dir.path() / "clip.mp4", "20 A");
    writeStandIn(dir.path() / "unknown.mp4", "? U");
    {
        // A duration that can't be told: the manager's code 8 and its detail; the pipe shows 8.
        TestPipe pipe;
        pipe.setInputFile(dir.file(L"unknown.mp4").c_str(), L"", 0);
        EXPECT_FALSE(load(pipe));
        EXPECT_EQ(pipe.getErrorCode(), ERROR_LOADING_INPUT);
        EXPECT_STREQ(pipe.files().getErrorMessage(), L" -> Failed to load file duration.");
        EXPECT_THAT(pipe.events, IsEmpty());
    }
    {
        // An in point past the end: no file, so nothing to analyse.
        TestPipe pipe;
        pipe.setInputFile(dir.file(L"clip.mp4").c_str(), L"", 0);
        // 20 + 0 is below 21: the one file is skipped.
        useInOut(pipe, 21, 5);
        EXPECT_FALSE(load(pipe));
        EXPECT_EQ(pipe.getErrorCode(), ERROR_LOADING_INPUT);
        EXPECT_STREQ(pipe.files().getErrorMessage(), L" -> Unable to load input sources.");
        EXPECT_THAT(pipe.events, IsEmpty());
    }
    {
        // No track: code 10.
        TestPipe pipe;
        pipe.setInputFile(dir.file(L"clip.mp4").c_str(), L"", 0);
        pipe.videoTracks = 0;
        pipe.audioTracks = 0;
        EXPECT_FALSE(load(pipe));
        EXPECT_EQ(pipe.getErrorCode(), ERROR_NO_ESSENCE_TRACKS);
    }
    {
        // A failed analysis keeps the code it set.
        TestPipe pipe;
        pipe.setInputFile(dir.file(L"clip.mp4").c_str(), L"", 0);
        pipe.analysisFails = true;
        EXPECT_FALSE(load(pipe));
        EXPECT_EQ(pipe.getErrorCode(), ERROR_ANALYZING_INPUT);
    }
    {
        // A file that isn't there: the toolkit's error passes, for the transcoder to report.
        TestPipe pipe;
        pipe.setInputFile(dir.file(L"missing.mp4").c_str(), L"", 0);
        EXPECT_THROW(load(pipe), MXF::SDK::Exceptions::IOError);
    }
}

TEST(BaseDecodePipe, LoadsOnceAndStartsAgainAfterAReset)
{
    TempDir dir;
    writeStandIn(dir.path() / "clip.mp4", "20 A");
    TestPipe pipe;
    pipe.setInputFile(dir.file(L"clip.mp4").c_str(), L"", 0);
    useInOut(pipe, 4, 3);
    KEP::Halvorn::EssenceTrackInfoList first;
    ASSERT_TRUE(load(pipe, first));

    // A second load gives the same descriptors without touching the file.
    KEP::Halvorn::EssenceTrackInfoList second;
    ASSERT_TRUE(load(pipe, second));
    EXPECT_EQ(second, first);
    EXPECT_THAT(pipe.provider.measured, ElementsAre("A"));
    EXPECT_THAT(pipe.events, ElementsAre("analyze A 4+3 back 0"));

    // Part-way through, one sample is read ahead.
    EXPECT_THAT(read(pipe, 1), ElementsAre("1:A@4"));
    EXPECT_EQ(pipe.samplesHeld(), 1u);
    EXPECT_EQ(FrameSample::live, 1);

    // A reset closes the file, drops the samples and tracks, and keeps input and in point.
    pipe.reset();
    EXPECT_THAT(pipe.events, ElementsAre("analyze A 4+3 back 0", "close A"));
    EXPECT_EQ(FrameSample::live, 0);
    EXPECT_TRUE(pipe.tracks().empty());
    EXPECT_EQ(pipe.audioFileCounter(), 0u);
    EXPECT_EQ(pipe.progress(), 0.0);
    EXPECT_TRUE(pipe.isInputSet());

    KEP::Halvorn::EssenceTrackInfoList third;
    ASSERT_TRUE(load(pipe, third));
    EXPECT_NE(third, first) << "new descriptors";
    EXPECT_EQ(third[1]->fileName, L"audio_00.mxf");
    EXPECT_THAT(pipe.provider.measured, ElementsAre("A", "A"));
    EXPECT_THAT(read(pipe, 7),
                ElementsAre("1:A@4", "2:A@4", "1:A@5", "2:A@5", "1:A@6", "2:A@6", "end"));
}

TEST(BaseDecodePipe, AnswersTheUmidRoadsFailuresWithLogLines)
{
    RecordingLogger logger;
    ScopedLogger installed(logger);
    SpanCard card;
    const std::wstring profile = card.profile();
    const std::wstring noFiles = L"Unable to retrieve file associated to umid: ";
    struct Case
    {
        std::wstring umid;
        std::vector<std::wstring> lines;
        std::vector<int> levels;
    };
    const Case cases[] = {
        {STRAY,
         {L"Unable to retrieve uri in material node for umid: " + STRAY, noFiles + STRAY},
         {3, 0}},
        {NO_URI,
         {L"Unable to retrieve uri in material node for umid: " + NO_URI, noFiles + NO_URI},
         {3, 0}},
        // A uri under "SUB" is neither a clip nor a take.
        {PROXY_ONLY, {noFiles + PROXY_ONLY}, {0}},
        // Files found, but no NonRealTimeMeta sidecar.
        {NO_SIDECAR, {L"Unable to load xml metadata file for requested umid: " + NO_SIDECAR}, {0}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(std::string(c.umid.begin(), c.umid.end()));
        logger.clear();
        TestPipe pipe;
        EXPECT_FALSE(pipe.setInputUmid(profile.c_str(), c.umid.c_str()));
        EXPECT_FALSE(pipe.isInputSet());
        EXPECT_EQ(logger.texts(), c.lines);
        std::vector<int> levels;
        for (const LogLine& line : logger.lines())
            levels.push_back(line.level);
        EXPECT_EQ(levels, c.levels);
    }

    // A take whose SMIL file isn't there.
    logger.clear();
    TestPipe broken;
    EXPECT_FALSE(broken.setInputUmid(profile.c_str(), BROKEN_TAKE.c_str()));
    std::vector<LogLine> lines = logger.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_THAT(lines[0].text, StartsWith(L"Unable to open SMILE file pointed by TAKE UMID. ("));
    EXPECT_EQ(lines[0].text.back(), L')');
    EXPECT_EQ(lines[0].level, 0);
    EXPECT_EQ(lines[1].text, noFiles + BROKEN_TAKE);

    // A MediaProfile that isn't there.
    logger.clear();
    TestPipe nowhere;
    const std::wstring absent = card.dir.file(L"MEDIAPRO.XML");
    EXPECT_FALSE(nowhere.setInputUmid(absent.c_str(), TAKE.c_str()));
    lines = logger.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_THAT(lines[0].text, StartsWith(L"Unable to load MediaPro file (" + absent + L" - "));
    EXPECT_FALSE(nowhere.isInputSet());

    // A MediaProfile whose media files aren't there: the input is set, and the load fails on
    // opening the first one.
    TestPipe absentMedia;
    ASSERT_TRUE(
        absentMedia.setInputUmid(wide(dataDir() / "span/MEDIAPRO.XML").c_str(), TAKE.c_str()));
    EXPECT_EQ(absentMedia.files().fileNames().size(), 3u);
    try
    {
        load(absentMedia);
        FAIL() << "no exception";
    }
    catch (const MXF::SDK::Exceptions::IOError& e)
    {
        EXPECT_THAT(e.message(), HasSubstr(L"200_0001_01.MP4"));
    }
}

TEST(BaseDecodePipe, DeliversToTheTranscoderThroughItsSeam)
{
    ScopedDictionary dictionary;
    TempDir dir;
    writeStandIn(dir.path() / "clip.mp4", "3 A");

    Journal journal;
    TestTranscoder transcoder(journal);
    TestPipe pipe;
    pipe.transcoderSamples = true;
    TestEncodePipe encoder(journal);
    pipe.setInputFile(dir.file(L"clip.mp4").c_str(), L"", 0);
    ASSERT_TRUE(transcoder.setDecodePipe(&pipe));
    ASSERT_TRUE(transcoder.setEncodePipe(&encoder));
    ASSERT_TRUE(transcoder.transcode());
    ASSERT_TRUE(journal.waitFor("cbDone"));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Done);
    std::vector<int> written;
    for (const Event& event : journal.events())
        if (event.name == "write")
            written.push_back(event.code);
    // Track by track, frame by frame.
    EXPECT_THAT(written, ElementsAre(1, 2, 1, 2, 1, 2));

    // Unlinking resets the pipe, which can then run the same input again.
    ASSERT_TRUE(transcoder.unlink());
    EXPECT_EQ(pipe.events.back(), "close A");
    ASSERT_TRUE(transcoder.setDecodePipe(&pipe));
    ASSERT_TRUE(transcoder.setEncodePipe(&encoder));
    ASSERT_TRUE(transcoder.transcode());
    ASSERT_TRUE(journal.waitFor("cbDone", 2));
    EXPECT_EQ(journal.count("write"), 12);
    ASSERT_TRUE(transcoder.unlink());

    EXPECT_EQ(liveSamples, 0);
}
