// mxf-inspect tracks on the fixtures: every field that ffprobe or MediaInfo also report is theirs
// (expected/structural/NAME.txt and the tools' JSON), the clip's duration and start time code too;
// the MediaProfile road lists the clip's sidecar, files, frames and marks.

#include "DecodePipes/XDCAMExpectations.h"
#include "InspectRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>

using namespace Halvorn::Test;
using namespace Halvorn::Test::XDCAM;
using ::testing::HasSubstr;

namespace
{

std::vector<std::map<std::string, std::string>> linesOf(const Outcome& run, const std::string& kind)
{
    return keyValueLines(run.lines, kind);
}

unsigned number(const std::string& text, std::size_t index, char separator)
{
    std::istringstream in(text);
    std::string part;
    for (std::size_t i = 0; i <= index; ++i)
        std::getline(in, part, separator);
    return static_cast<unsigned>(std::stoul(part));
}

} // namespace

TEST(MxfInspectTracksTest, EachTrackAsTheToolsSeeIt)
{
    for (const std::string& clip : CLEAN_CLIPS)
    {
        SCOPED_TRACE(clip);
        const Outcome run = inspect({"tracks", testData(clip + ".mxf")});
        ASSERT_EQ(run.status, 0) << run.err;
        const auto tracks = linesOf(run, "track");
        const auto videoLines = structural(clip, "video");
        const auto audioLines = structural(clip, "audio");
        ASSERT_EQ(tracks.size(), videoLines.size() + audioLines.size());
        const std::string ffprobe = expected(clip, ".ffprobe.json");
        const std::string mediainfo = expected(clip, ".mediainfo.json");

        auto video = tracks.front();
        auto line = videoLines.front();
        EXPECT_EQ(video["id"], line["track"]);
        EXPECT_EQ(video["material"], "5");
        EXPECT_EQ(video["coding"], "1");
        EXPECT_EQ(video["edit_rate"], line["rate"]);
        EXPECT_EQ(video["file"], "video.mxf");
        EXPECT_EQ(video["stored"], line["stored"]);
        // Field heights in the descriptor for separate fields, frame heights in the tools.
        const unsigned f = line["scan"] == "Interlaced" ? 2 : 1;
        EXPECT_EQ(video["frame_layout"], f == 2 ? "1" : "0");
        EXPECT_EQ(number(video["sampled"], 0, 'x'), number(line["sampled"], 0, 'x'));
        const std::string sampled = video["sampled"];
        EXPECT_EQ(f * number(sampled.substr(sampled.find('x') + 1), 0, '+'),
                  number(line["sampled"], 1, 'x'));
        const std::string display = video["display"];
        EXPECT_EQ(std::to_string(number(display, 0, 'x')) + "x" +
                      std::to_string(f * number(display.substr(display.find('x') + 1), 0, '+')) +
                      "+" + std::to_string(f * number(display, 2, '+')),
                  line["display"]);
        EXPECT_EQ(std::to_string(f * number(display.substr(display.find('x') + 1), 0, '+')),
                  jsonField(mediainfo, "\"@type\": \"Video\"", 0, "Height"));
        const unsigned num = number(video["aspect"], 0, '/');
        const unsigned den = number(video["aspect"], 1, '/');
        EXPECT_EQ(std::to_string(num / std::gcd(num, den)) + ":" +
                      std::to_string(den / std::gcd(num, den)),
                  line["aspect"]);
        EXPECT_EQ(video["resolution"], "0") << "no bit rate of the table";
        // Two lines per frame: fields 1 and 2 start on these lines of 1080i and 625.
        if (f == 2)
        {
            EXPECT_NE(video["line_map"], "0,0");
        }

        for (std::size_t i = 0; i < audioLines.size(); ++i)
        {
            SCOPED_TRACE(i);
            auto audio = tracks[i + 1];
            auto fields = audioLines[i];
            EXPECT_EQ(audio["id"], fields["track"]);
            EXPECT_EQ(audio["material"], "8");
            EXPECT_EQ(audio["edit_rate"], line["rate"]);
            EXPECT_EQ(audio["sample_rate"], fields["sampling"]);
            EXPECT_EQ(audio["bits"], fields["bits"]);
            EXPECT_EQ(audio["channels"], fields["channels"]);
            EXPECT_EQ(audio["channels"],
                      jsonField(ffprobe, "\"index\":", static_cast<int>(i) + 1, "channels"));
            char name[32];
            std::snprintf(name, sizeof name, "audio_%02zu.mxf", i);
            EXPECT_EQ(audio["file"], name);
        }

        const auto clipLines = linesOf(run, "clip");
        ASSERT_EQ(clipLines.size(), 1u);
        auto summary = clipLines.front();
        EXPECT_EQ(summary["duration"], line["duration"]);
        EXPECT_EQ(summary["duration"],
                  jsonField(mediainfo, "\"@type\": \"Video\"", 0, "FrameCount"));
        EXPECT_EQ(summary["start"],
                  jsonField(mediainfo, "\"@type\": \"Video\"", 0, "TimeCode_FirstFrame"));
        const std::size_t tag = ffprobe.find("\"timecode\": \"");
        ASSERT_NE(tag, std::string::npos);
        EXPECT_EQ(summary["start"], ffprobe.substr(tag + 13, 11));
    }
}

TEST(MxfInspectTracksTest, AClipFoundThroughItsMediaProfile)
{
    TempDir dir;
    std::filesystem::copy(testData("sidecars/BPAV"), dir.path() / "BPAV",
                          std::filesystem::copy_options::recursive);
    std::filesystem::copy_file(testData("xdcamhd422_720p50.mxf"),
                               dir.path() / "BPAV/CLPR/100_0002_01/100_0002_01.MP4");
    std::filesystem::copy_file(testData("imx50_625.mxf"),
                               dir.path() / "BPAV/CLPR/100_0002_02/100_0002_02.MP4");
    const std::string folder = (dir.path() / "BPAV").string();
    const Outcome run =
        inspect({"tracks", "--mediapro", folder + "/MEDIAPRO.XML", "--umid",
                 "060A2B340101010501010D4313000000E3BF2065114805D8080046020211A2B3"});
    ASSERT_EQ(run.status, 0) << run.err;
    ASSERT_GE(run.lines.size(), 5u);
    EXPECT_EQ(run.lines[0],
              "clip umid=060A2B340101010501010D4313000000E3BF2065114805D8080046020211A2B3"
              " sidecar=" +
                  folder + "/./TAKR/100_0002/100_0002M01.XML start_offset=0");
    EXPECT_EQ(run.lines[1],
              "file frames=50 name=" + folder + "/./CLPR/100_0002_01/100_0002_01.MP4");
    EXPECT_EQ(run.lines[2], "file frames=8 name=" + folder + "/./CLPR/100_0002_02/100_0002_02.MP4");
    // The take's marks: its clips' on the take's time line (the second clip from 300).
    const auto marks = linesOf(run, "mark");
    ASSERT_FALSE(marks.empty());
    EXPECT_EQ(marks.front().at("frame"), "0");
    EXPECT_EQ(linesOf(run, "mark").back().at("frame"), "400");
    // The first clip's tracks; the duration counts both files.
    const auto tracks = linesOf(run, "track");
    EXPECT_EQ(tracks.size(), 9u);
    EXPECT_EQ(tracks.front().at("edit_rate"), "50/1");
    EXPECT_EQ(linesOf(run, "clip").back().at("duration"), "58");
    EXPECT_EQ(linesOf(run, "clip").back().at("start"), "10:00:00:00");
}

TEST(MxfInspectTracksTest, BadArgumentsAndFilesAreErrors)
{
    Outcome run = inspect({"tracks"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("usage: mxf-inspect tracks"));
    run = inspect({"tracks", testData("imx50_625.mxf"), "--umid", "X"});
    EXPECT_EQ(run.status, 2);
    run = inspect({"tracks", testData("sidecars/not-xml.xml")});
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(oneLine(run.err)) << run.err;
    run = inspect({"tracks", "--mediapro", testData("sidecars/BPAV/MEDIAPRO.XML"), "--umid",
                   "060A2B340101010501010D4313000000FFFFFFFF114805D8080046020211A2B3"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("no clip"));
    EXPECT_TRUE(run.lines.empty());
}
