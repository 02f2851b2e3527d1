#include "DecodePipes/XDCAMDecodePipe.h"

#include "DecodePipes/EssenceContainerKind.h"
#include "KEP/Halvorn/KEPTranscoder.h"
#include "MXF/SDK/Platform/Platform.h"
#include "MXF/SDK/Types/UID.h"
#include "Transcoder/ErrorMessages.h"
#include "Transcoder/ResolutionId.h"
#include "Transcoder/TranscoderTestSupport.h"
#include "XDCAMTestSupport.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>

using namespace Halvorn::Test;
using namespace Halvorn::Test::XDCAM;
using namespace KEP::Halvorn;
using DecodePipes::XDCAMDecodePipe;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace
{

// A pipe loaded with one fixture.
struct Loaded
{
    explicit Loaded(const std::string& clip)
    {
        pipe.setInputFile(fixture(clip + ".mxf").c_str(), L"", 0);
        ok = pipe.load(tracks, dictionary());
    }
    XDCAMDecodePipe pipe;
    EssenceTrackInfoList tracks;
    bool ok = false;
};

// The video track and the sound tracks, in the order announced.
std::vector<std::shared_ptr<EssenceTrackInfo>> ofMaterialType(const EssenceTrackInfoList& tracks,
                                                              bool video)
{
    std::vector<std::shared_ptr<EssenceTrackInfo>> found;
    for (const auto& track : tracks)
        if ((track->fileName == L"video.mxf") == video)
            found.push_back(track);
    return found;
}

std::string sizeText(std::uint32_t width, std::uint32_t height)
{
    return std::to_string(width) + "x" + std::to_string(height);
}

MXF::SDK::Types::UniversalLabel label(const std::string& dotted)
{
    return MXF::SDK::Types::UniversalLabel(MXF::SDK::Platform::fromUtf8(dotted));
}

} // namespace

TEST(XDCAMEssenceContainerKind, RegisteredLabelsGiveTheirKindsAndCodings)
{
    using namespace DecodePipes;
    struct Case
    {
        const char* label;
        EssenceContainerKind kind;
        unsigned picture;
        unsigned sound;
    };
    // Labels as RP 224 registers them (ffmpeg writes the MPEG ES one with stream id E0 as 60).
    const Case cases[] = {
        {"06.0e.2b.34.04.01.01.02.0d.01.03.01.02.04.60.01", KIND_MPEG_ES_PICTURE, 1, 0},
        {"06.0e.2b.34.04.01.01.02.0d.01.03.01.02.04.6f.02", KIND_MPEG_ES_PICTURE, 1, 0},
        {"06.0e.2b.34.04.01.01.02.0d.01.03.01.02.04.40.01", KIND_MPEG_ES_SOUND, 0, 0},
        {"06.0e.2b.34.04.01.01.02.0d.01.03.01.02.04.3c.01", KIND_UNKNOWN, 0, 0},
        {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.01.01.01", KIND_D10, 1, 2},
        {"06.0e.2b.34.04.01.01.02.0d.01.03.01.02.01.06.7f", KIND_D10, 1, 2},
        {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.06.01.00", KIND_BWF, 0, 2},
        {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.06.02.00", KIND_BWF, 0, 2},
        {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.06.03.00", KIND_AES3, 0, 3},
        {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.06.04.00", KIND_AES3, 0, 3},
        {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.02.41.01", KIND_DV, 0, 0},
        {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.05.00.00", KIND_UNCOMPRESSED_PICTURE, 0, 0},
        {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.7f.01.00", KIND_UNKNOWN, 0, 0},
        // An AAF container and a data definition are no generic container labels.
        {"06.0e.2b.34.04.01.01.01.0d.01.13.01.02.06.01.00", KIND_UNKNOWN, 0, 0},
        {"06.0e.2b.34.04.01.01.01.01.03.02.02.01.00.00.00", KIND_UNKNOWN, 0, 0},
    };
    for (const Case& c : cases)
    {
        const EssenceContainerKind kind = essenceContainerKind(label(c.label));
        EXPECT_EQ(kind, c.kind) << c.label;
        EXPECT_EQ(pictureCoding(kind), c.picture) << c.label;
        EXPECT_EQ(soundCoding(kind), c.sound) << c.label;
    }
}

// Each descriptor field that ffprobe or MediaInfo report, as they report it.
TEST(XDCAMDecodePipe, TrackDescriptorsAreWhatTheToolsSee)
{
    for (const std::string& clip : CLEAN_CLIPS)
    {
        SCOPED_TRACE(clip);
        Loaded loaded(clip);
        ASSERT_TRUE(loaded.ok);
        const std::string ffprobe = expected(clip, ".ffprobe.json");
        const std::string mediainfo = expected(clip, ".mediainfo.json");
        const auto videoLines = structural(clip, "video");
        const auto audioLines = structural(clip, "audio");
        const auto videos = ofMaterialType(loaded.tracks, true);
        const auto audios = ofMaterialType(loaded.tracks, false);
        ASSERT_EQ(videos.size(), 1u);
        ASSERT_EQ(videoLines.size(), 1u);
        ASSERT_EQ(audios.size(), audioLines.size());
        ASSERT_EQ(loaded.tracks.front(), videos.front()) << "the file package's order";

        const EssenceTrackInfo& video = *videos.front();
        auto line = videoLines.front();
        EXPECT_EQ(video.trackId, std::stoul(line["track"]));
        EXPECT_EQ(video.coding, EssenceTrackInfo::CODING_VIDEO);
        EXPECT_EQ(std::to_string(video.editRate.numerator()) + "/" +
                      std::to_string(video.editRate.denominator()),
                  line["rate"]);
        EXPECT_EQ(jsonField(ffprobe, "\"index\":", 0, "r_frame_rate"), line["rate"]);
        // The descriptor's heights are one field's for separate fields (frame layout 1, which
        // the MediaInfo trace shows for the interlaced fixtures); the tools give the frame's.
        const bool interlaced = line["scan"] == "Interlaced";
        EXPECT_EQ(video.video.frameLayout, interlaced ? 1 : 0);
        const std::uint32_t f = interlaced ? 2 : 1;
        EXPECT_EQ(sizeText(video.video.storedWidth, video.video.storedHeight), line["stored"]);
        EXPECT_EQ(sizeText(video.video.sampledWidth, f * video.video.sampledHeight),
                  line["sampled"]);
        EXPECT_EQ(sizeText(video.video.displayWidth, f * video.video.displayHeight) + "+" +
                      std::to_string(f * video.video.displayYOffset),
                  line["display"]);
        EXPECT_EQ(std::to_string(video.video.sampledWidth),
                  jsonField(ffprobe, "\"index\":", 0, "width"));
        EXPECT_EQ(std::to_string(f * video.video.sampledHeight),
                  jsonField(ffprobe, "\"index\":", 0, "height"));
        EXPECT_EQ(std::to_string(video.video.displayWidth),
                  jsonField(mediainfo, "\"@type\": \"Video\"", 0, "Width"));
        EXPECT_EQ(std::to_string(f * video.video.displayHeight),
                  jsonField(mediainfo, "\"@type\": \"Video\"", 0, "Height"));
        EXPECT_EQ(jsonField(ffprobe, "\"index\":", 0, "field_order"),
                  interlaced ? "tt" : "progressive");
        EXPECT_EQ(jsonField(mediainfo, "\"@type\": \"Video\"", 0, "ScanType"), line["scan"]);
        EXPECT_EQ(std::to_string(video.video.aspectRatioNumerator /
                                 std::gcd(video.video.aspectRatioNumerator,
                                          video.video.aspectRatioDenominator)) +
                      ":" +
                      std::to_string(video.video.aspectRatioDenominator /
                                     std::gcd(video.video.aspectRatioNumerator,
                                              video.video.aspectRatioDenominator)),
                  line["aspect"]);
        // 4:2:2 at 8 bits.
        EXPECT_EQ(video.video.componentDepth, 8u);
        EXPECT_EQ(video.video.horizontalSubsampling, 2u);
        EXPECT_EQ(video.video.verticalSubsampling, 1u);
        // The descriptor's bit rate, when it has one (MediaInfo traces it as "Maximum bit rate"),
        // is the stream's as both tools give it; IMX's descriptor has none.
        const std::string trace = expected(clip, ".mediainfo-trace.txt");
        const std::size_t traced = trace.find("Maximum bit rate - ");
        if (traced == std::string::npos)
        {
            EXPECT_EQ(video.video.bitRate, 0u);
        }
        else
        {
            const std::string value =
                trace.substr(traced + 19, trace.find(' ', traced + 19) - traced - 19);
            EXPECT_EQ(std::to_string(video.video.bitRate), value);
            for (const std::string& bitRate :
                 {jsonField(ffprobe, "\"index\":", 0, "bit_rate"),
                  jsonField(mediainfo, "\"@type\": \"Video\"", 0, "BitRate")})
            {
                if (!bitRate.empty())
                {
                    EXPECT_EQ(std::to_string(video.video.bitRate), bitRate);
                }
            }
        }
        EXPECT_EQ(std::to_string(loaded.pipe.clipDuration()), line["duration"]);
        EXPECT_EQ(std::to_string(loaded.pipe.clipDuration()),
                  jsonField(mediainfo, "\"@type\": \"Video\"", 0, "FrameCount"));
        EXPECT_EQ(loaded.pipe.editRate(), video.editRate);

        const bool d10 = line["container"].starts_with("0D01030102010");
        for (std::size_t i = 0; i < audios.size(); ++i)
        {
            SCOPED_TRACE(i);
            const EssenceTrackInfo& audio = *audios[i];
            auto fields = audioLines[i];
            const int stream = static_cast<int>(i) + 1;
            EXPECT_EQ(audio.trackId, std::stoul(fields["track"]));
            EXPECT_EQ(audio.editRate, video.editRate);
            EXPECT_EQ(std::to_string(audio.audio.audioSampleRate), fields["sampling"]);
            EXPECT_EQ(std::to_string(audio.audio.audioSampleRate),
                      jsonField(ffprobe, "\"index\":", stream, "sample_rate"));
            EXPECT_EQ(std::to_string(audio.audio.channelCount), fields["channels"]);
            EXPECT_EQ(std::to_string(audio.audio.channelCount),
                      jsonField(ffprobe, "\"index\":", stream, "channels"));
            EXPECT_EQ(std::to_string(audio.audio.quantizationBits), fields["bits"]);
            EXPECT_EQ(std::to_string(audio.audio.quantizationBits),
                      jsonField(ffprobe, "\"index\":", stream, "bits_per_sample"));
            // AES3 containers give the second audio form; D-10's sound counts as PCM.
            EXPECT_EQ(audio.coding,
                      d10 ? EssenceTrackInfo::CODING_AUDIO : EssenceTrackInfo::CODING_AUDIO_TWOS);
            wchar_t name[16];
            std::swprintf(name, 16, L"audio_%02zu.mxf", i);
            EXPECT_EQ(audio.fileName, name);
        }
    }
}

// The fixtures' descriptors carry 10 Mbit/s, 200 kbit/s or (IMX) no bit rate, none of which the
// table knows. With the rates of the Sony formats put in, each track's own rate, layout and
// display size lead to the table's row: 35 Mbit/s 1080i25 1920 wide 4081, 720p50 4086, 1080i
// 29.97 1920 wide 4080; 50 Mbit/s at field rate 50, 4074.
TEST(XDCAMDecodePipe, ResolutionIdentifiersFollowTheTable)
{
    const std::map<std::string, std::pair<std::uint32_t, int>> rows = {
        {"xdcamhd422_1080i25", {35000000, 4081}},
        {"xdcamhd422_720p50", {35000000, 4086}},
        {"xdcamhd422_1080i2997df", {35000000, 4080}},
        {"imx50_625", {50000000, 4074}},
        {"multibody_180p50", {35000000, 0}}};
    for (const auto& [clip, row] : rows)
    {
        Loaded loaded(clip);
        ASSERT_TRUE(loaded.ok) << clip;
        EssenceTrackInfo video = *ofMaterialType(loaded.tracks, true).front();
        EXPECT_EQ(resolutionId(video), 0) << clip;
        video.video.bitRate = row.first;
        EXPECT_EQ(resolutionId(video), row.second) << clip;
    }
}

namespace
{

// Whether `logger` got the line `text` at `level`.
bool has(const RecordingLogger& logger, int level, const std::wstring& text)
{
    for (const LogLine& line : logger.lines())
        if (line.level == level && line.text == text)
            return true;
    return false;
}

// A copy of a fixture whose essence tracks of the given kinds (1 picture, 2 sound) bear the data
// essence track label instead: 06 0E 2B 34 04 01 01 vv 01 03 02 02 0k 00 00 00, k becomes 3.
std::wstring asDataTracks(const TempDir& dir, const std::string& clip, std::vector<int> kinds)
{
    std::string bytes = readText(dataDir() + "/" + clip + ".mxf");
    const std::string head("\x06\x0E\x2B\x34\x04\x01\x01", 7);
    const std::string essence("\x01\x03\x02\x02", 4);
    int changed = 0;
    for (std::size_t at = bytes.find(head); at != std::string::npos && at + 16 <= bytes.size();
         at = bytes.find(head, at + 1))
        if (bytes.compare(at + 8, 4, essence) == 0 &&
            std::find(kinds.begin(), kinds.end(), bytes[at + 12]) != kinds.end() &&
            bytes.compare(at + 13, 3, std::string(3, '\0')) == 0)
        {
            bytes[at + 12] = 3;
            ++changed;
        }
    EXPECT_GT(changed, 0);
    const std::wstring path = dir.file(MXF::SDK::Platform::fromUtf8(clip) + L"-data.mxf");
    std::ofstream(std::filesystem::path(MXF::SDK::Platform::toUtf8(path)), std::ios::binary)
        << bytes;
    return path;
}

} // namespace

// A track that is neither picture nor sound gives no descriptor, and its elements reach no one.
// The end of the essence is traced.
TEST(XDCAMDecodePipe, DataTracksGiveNoDescriptorAndNoSamples)
{
    RecordingLogger lines;
    ScopedLogger installed(lines);
    TempDir dir;
    XDCAMDecodePipe pipe;
    pipe.setInputFile(asDataTracks(dir, "xdcamhd422_1080i25", {2}).c_str(), L"", 0);
    EssenceTrackInfoList tracks;
    ASSERT_TRUE(pipe.load(tracks, dictionary()));
    ASSERT_EQ(tracks.size(), 1u);
    EXPECT_EQ(tracks.front()->fileName, L"video.mxf");
    RecordingEncodePipe drained;
    drain(pipe, drained);
    ASSERT_EQ(drained.records().size(), 1u);
    const Digest v0 = digests("xdcamhd422_1080i25").front();
    EXPECT_EQ(drained.records().begin()->second.hex(), v0.md5);
    EXPECT_EQ(drained.records().begin()->second.samples, v0.packets);
    EXPECT_TRUE(has(lines, 0, L"Finished read essence. No more data."));
}

// A picture whose container is not MPEG ES or D-10 (here relabelled as frame-wrapped DV, every
// copy of the label in the file) is still announced, with no coding, and still read.
TEST(XDCAMDecodePipe, APictureOfAnotherContainerIsAnnouncedWithoutCoding)
{
    TempDir dir;
    std::string bytes = readText(dataDir() + "/xdcamhd422_1080i25.mxf");
    const std::string mpeg("\x0D\x01\x03\x01\x02\x04\x60\x01", 8);
    const std::string dv("\x0D\x01\x03\x01\x02\x02\x41\x01", 8);
    int changed = 0;
    for (std::size_t at = bytes.find(mpeg); at != std::string::npos; at = bytes.find(mpeg, at + 8))
    {
        bytes.replace(at, 8, dv);
        ++changed;
    }
    ASSERT_GT(changed, 0);
    const std::wstring path = dir.file(L"dv-labelled.mxf");
    std::ofstream(std::filesystem::path(MXF::SDK::Platform::toUtf8(path)), std::ios::binary)
        << bytes;
    XDCAMDecodePipe pipe;
    pipe.setInputFile(path.c_str(), L"", 0);
    EssenceTrackInfoList tracks;
    ASSERT_TRUE(pipe.load(tracks, dictionary()));
    ASSERT_EQ(tracks.size(), 9u);
    EXPECT_EQ(tracks.front()->fileName, L"video.mxf");
    EXPECT_EQ(tracks.front()->coding, EssenceTrackInfo::CODING_NONE);
    EXPECT_EQ(tracks.front()->video.storedWidth, 1920u);
    EXPECT_EQ(tracks.back()->coding, EssenceTrackInfo::CODING_AUDIO_TWOS);
    RecordingEncodePipe drained;
    drain(pipe, drained);
    EXPECT_EQ(drained.records().at(tracks.front()->trackId).hex(),
              digests("xdcamhd422_1080i25").front().md5);
}

// In and out points choose files; the file chosen is read whole.
TEST(XDCAMDecodePipe, AnInPointStillReadsTheFileFromItsFirstFrame)
{
    XDCAMDecodePipe pipe;
    pipe.setInputFile(fixture("xdcamhd422_1080i25.mxf").c_str(), L"", 0);
    pipe.setInPoint(10, 0);
    pipe.setDuration(5, 5);
    ASSERT_TRUE(pipe.useInOutPoint());
    EssenceTrackInfoList tracks;
    ASSERT_TRUE(pipe.load(tracks, dictionary()));
    EXPECT_EQ(pipe.clipDuration(), 25u) << "no trimming for this format";
    RecordingEncodePipe drained;
    drain(pipe, drained);
    EXPECT_EQ(drained.records().at(tracks.front()->trackId).samples, 25u);
    EXPECT_EQ(drained.records().at(tracks.front()->trackId).hex(),
              digests("xdcamhd422_1080i25").front().md5);
}

// Clips found by UMID through a MediaProfile: a clip, and a take of two clips, of which only the
// first file is read while both are measured.
TEST(XDCAMDecodePipe, InputByUmidReadsTheClipsFiles)
{
    TempDir dir;
    std::filesystem::copy(dataDir() + "/sidecars/BPAV", dir.path() / "BPAV",
                          std::filesystem::copy_options::recursive);
    const auto place = [&](const std::string& clip, const std::string& component)
    {
        std::filesystem::copy_file(dataDir() + "/" + clip + ".mxf",
                                   dir.path() / "BPAV/CLPR" / component);
    };
    place("xdcamhd422_1080i25", "100_0001_01/100_0001_01.MP4");
    place("xdcamhd422_720p50", "100_0002_01/100_0002_01.MP4");
    place("xdcamhd422_1080i25", "100_0002_02/100_0002_02.MP4");
    const std::wstring profile = dir.file(L"BPAV/MEDIAPRO.XML");

    XDCAMDecodePipe clip;
    ASSERT_TRUE(clip.setInputUmid(
        profile.c_str(), L"060A2B340101010501010D43130000007A3C51D2114805D8080046020211A2B3"));
    EXPECT_EQ(std::wstring(clip.xmlMetadataFile()),
              dir.file(L"BPAV/./CLPR/100_0001_01/100_0001_01M01.XML"));
    EXPECT_EQ(clip.clipMaterials().size(), 5u) << "marks at 0, 40, 120, 180 and 200";
    EssenceTrackInfoList tracks;
    ASSERT_TRUE(clip.load(tracks, dictionary()));
    EXPECT_EQ(tracks.size(), 9u);
    RecordingEncodePipe first;
    drain(clip, first);
    EXPECT_EQ(first.records().at(tracks.front()->trackId).hex(),
              digests("xdcamhd422_1080i25").front().md5);

    XDCAMDecodePipe take;
    ASSERT_TRUE(take.setInputUmid(
        profile.c_str(), L"060A2B340101010501010D4313000000E3BF2065114805D8080046020211A2B3"));
    ASSERT_TRUE(take.load(tracks, dictionary()));
    EXPECT_EQ(take.clipDuration(), 75u) << "50 + 25 frames";
    EXPECT_EQ(take.inputFiles().fileNames().size(), 2u);
    RecordingEncodePipe drained;
    drain(take, drained);
    EXPECT_EQ(drained.records().at(tracks.front()->trackId).hex(),
              digests("xdcamhd422_720p50").front().md5);
    EXPECT_EQ(drained.records().at(tracks.front()->trackId).samples, 50u);
}

// What the host is told, code and text, for each way a job can fail before its first sample.
TEST(XDCAMDecodePipe, FailuresGiveTheirCodesAndTexts)
{
    TempDir dir;
    RecordingEncodePipe encoder;
    {
        XDCAMDecodePipe pipe;
        JobTranscoder result;
        EXPECT_EQ(runJob(result, pipe, encoder), KEPTranscoder::Failed);
        EXPECT_EQ(result.code, ERROR_INPUT_NOT_SET);
        EXPECT_EQ(result.text, L"Decoder pipe input file path is not set.");
    }
    {
        // The file cannot be opened: the toolkit's exception, reported as an analysis error.
        XDCAMDecodePipe pipe;
        pipe.setInputFile(dir.file(L"missing.mxf").c_str(), L"", 0);
        JobTranscoder result;
        runJob(result, pipe, encoder);
        EXPECT_EQ(result.code, ERROR_ANALYZING_INPUT);
        EXPECT_THAT(result.text, StartsWith(L"Error while analyzing input file.-> "));
        EXPECT_THAT(result.text, HasSubstr(L"Error opening: '" + dir.file(L"missing.mxf") + L"'."));
    }
    {
        // An in point past the clip's end leaves no file to read.
        XDCAMDecodePipe pipe;
        pipe.setInputFile(fixture("xdcamhd422_1080i25.mxf").c_str(), L"", 0);
        pipe.setInPoint(30, 0);
        pipe.setDuration(5, 5);
        ASSERT_TRUE(pipe.useInOutPoint());
        JobTranscoder result;
        runJob(result, pipe, encoder);
        EXPECT_EQ(result.code, ERROR_LOADING_INPUT);
        EXPECT_EQ(result.text, L"Failed to load input file.");
    }
    for (const std::string& name :
         {std::string("sidecars/not-xml.xml"), std::string("damaged_truncated_header.mxf")})
    {
        SCOPED_TRACE(name);
        XDCAMDecodePipe pipe;
        pipe.setInputFile(fixture(name).c_str(), L"", 0);
        JobTranscoder result;
        runJob(result, pipe, encoder);
        EXPECT_EQ(result.code, ERROR_ANALYZING_INPUT);
        EXPECT_THAT(result.text, StartsWith(L"Error while analyzing input file.-> "));
        EXPECT_GT(result.text.size(), std::wstring(L"Error while analyzing input file.-> ").size());
    }
    {
        XDCAMDecodePipe pipe;
        pipe.setInputFile(asDataTracks(dir, "xdcamhd422_1080i25", {1, 2}).c_str(), L"", 0);
        JobTranscoder result;
        runJob(result, pipe, encoder);
        EXPECT_EQ(result.code, ERROR_NO_ESSENCE_TRACKS);
        EXPECT_EQ(result.text,
                  L"Input mxf file contains no valid essence tracks to perform transcoding.");
    }
    {
        // A MediaProfile whose clip files are not on the card.
        XDCAMDecodePipe pipe;
        ASSERT_TRUE(
            pipe.setInputUmid(fixture("sidecars/BPAV/MEDIAPRO.XML").c_str(),
                              L"060A2B340101010501010D43130000007A3C51D2114805D8080046020211A2B3"));
        JobTranscoder result;
        runJob(result, pipe, encoder);
        EXPECT_EQ(result.code, ERROR_ANALYZING_INPUT);
        EXPECT_THAT(result.text, StartsWith(L"Error while analyzing input file.-> "));
        EXPECT_THAT(result.text, HasSubstr(L"Error opening: "));
        EXPECT_THAT(result.text, HasSubstr(L"BPAV/./CLPR/100_0001_01/100_0001_01.MP4"));
    }
    EXPECT_EQ(encoder.starts(), 0);
}
