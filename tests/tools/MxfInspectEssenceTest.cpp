// mxf-inspect essence and index on the fixtures: every track written out, by the index and by the
// walk, has ffmpeg's MD5 (expected/NAME.essence-md5.txt); the index listing has the segments the
// fixture README gives from the packs.

#include "InspectRun.h"
#include "MXF/SDK/MXFIO/Essence/Md5.h"

#include <gtest/gtest.h>
#include <regex>

using namespace Halvorn::Test;

namespace
{

// "TAG MD5 BYTES PACKETS" a stream ffmpeg delivers, "# stream N: ..." one it doesn't.
std::map<std::string, std::string> expectedDigests(const std::string& name)
{
    std::istringstream in(readFile(testData("expected/" + name + ".essence-md5.txt")));
    std::map<std::string, std::string> digests;
    for (std::string line; std::getline(in, line);)
    {
        std::istringstream fields(line);
        std::string tag, md5;
        if (line[0] != '#' && fields >> tag >> md5)
            digests[tag] = md5;
    }
    return digests;
}

// ffmpeg's stream index of each tag of the digests: the lines follow the streams in order.
std::map<int, std::string> streamTags(const std::string& name)
{
    std::istringstream in(readFile(testData("expected/" + name + ".essence-md5.txt")));
    std::map<int, std::string> tags;
    int stream = 0;
    for (std::string line; std::getline(in, line);)
        if (line.rfind("# stream ", 0) == 0)
            ++stream;
        else if (!line.empty() && line[0] != '#')
            tags[stream++] = line.substr(0, line.find(' '));
    return tags;
}

std::string md5Of(const std::filesystem::path& path)
{
    const std::string bytes = readFile(path);
    Essence::Md5 md5;
    md5.update(bytes.data(), bytes.size());
    return md5.hex();
}

TEST(MxfInspectEssenceTest, EveryTrackByIndexAndByWalkAsFFmpegDeliversIt)
{
    for (const char* name :
         {"xdcamhd422_1080i25", "xdcamhd422_720p50", "xdcamhd422_1080i2997df", "imx50_625",
          "opatom_mpeg2", "opatom_pcm", "multibody_180p50", "damaged_open_header", "damaged_no_rip",
          "damaged_footer_zero", "damaged_no_footer", "runin_100", "damaged_bad_index",
          "damaged_truncated_30", "damaged_truncated_90", "lg720p50_v1", "lg720p50_a2", "imx50_v1",
          "imx50_a1"})
        for (const bool walk : {false, true})
        {
            SCOPED_TRACE(std::string(name) + (walk ? " --no-index" : ""));
            TempDir dir;
            std::vector<std::string> args = {"essence", testData(std::string(name) + ".mxf"),
                                             "--track", "all",
                                             "--out",   dir.path().string()};
            if (walk)
                args.push_back("--no-index");
            const Outcome run = inspect(args);
            EXPECT_EQ(run.status, 0) << run.err;
            const auto expected = expectedDigests(name);
            ASSERT_FALSE(expected.empty());
            EXPECT_EQ(run.lines.size(), expected.size());
            for (const auto& [tag, md5] : expected)
                EXPECT_EQ(md5Of(dir.path() / (tag + (tag[0] == 'v' ? ".es" : ".pcm"))), md5) << tag;
        }
}

TEST(MxfInspectEssenceTest, OneTrackAndBadArguments)
{
    TempDir dir;
    const auto path = dir.path() / "a3.pcm";
    const Outcome run = inspect(
        {"essence", testData("xdcamhd422_1080i25.mxf"), "--track", "a3", "--out", path.string()});
    EXPECT_EQ(run.status, 0);
    // The 1000 Hz track, the same as opatom_pcm's (README's cross-check).
    EXPECT_EQ(md5Of(path), expectedDigests("opatom_pcm").at("a0"));
    EXPECT_EQ(inspect({"essence", testData("xdcamhd422_1080i25.mxf"), "--track", "a8", "--out",
                       path.string()})
                  .status,
              2);
    EXPECT_EQ(inspect({"essence", testData("xdcamhd422_1080i25.mxf")}).status, 2);
}

TEST(MxfInspectIndexTest, SegmentsOfTheMultibodyFixture)
{
    const Outcome run = inspect({"index", testData("multibody_180p50.mxf")});
    EXPECT_EQ(run.status, 0) << run.err;
    std::vector<std::string> segments;
    for (const std::string& line : run.lines)
        if (line.rfind("segment at ", 0) == 0 || line.rfind("  index SID", 0) == 0 ||
            line.rfind("index SID", 0) == 0)
            segments.push_back(line);
    // README: segments at 1086464 (0, 262), 2052608 (262, 252), 2097664 (514, 11), 50 fps.
    const std::vector<std::string> expected = {
        "segment at 1086464 (partition 1085952)",
        "  index SID 2, body SID 1, edit rate 50/1, start 0, duration 262, edit unit byte count 0, "
        "delta entries 3, index entries 262",
        "segment at 2052608 (partition 2052096)",
        "  index SID 2, body SID 1, edit rate 50/1, start 262, duration 252, edit unit byte count "
        "0, delta entries 3, index entries 252",
        "segment at 2097664 (partition 2097152)",
        "  index SID 2, body SID 1, edit rate 50/1, start 514, duration 11, edit unit byte count "
        "0, "
        "delta entries 3, index entries 11",
        "index SID 2, body SID 1: 3 segments, edit units 0 to 525, 525 entries"};
    EXPECT_EQ(segments, expected);
    // The corrupted entry 3 of damaged_bad_index, as the fixture script wrote it.
    const Outcome bad = inspect({"index", testData("damaged_bad_index.mxf")});
    const std::string entry3 =
        "    entry 3: stream offset " + std::to_string(damage("damaged_bad_index", "entry3_new"));
    bool found = false;
    for (const std::string& line : bad.lines)
        found = found || line.rfind(entry3 + ",", 0) == 0;
    EXPECT_TRUE(found);
}

} // namespace

namespace
{

struct StreamPackets
{
    long long count = 0, first = -1, last = -1, lastSize = 0, bytes = 0;
};

// ffprobe's packets per stream (stream,pts,dts,duration,size,pos,flags), named v0, a0... as
// ffmpeg numbers its streams with a codec.
std::map<std::string, StreamPackets> ffprobePackets(const std::string& name)
{
    std::istringstream in(readFile(testData("expected/" + name + ".ffprobe-packets.csv")));
    const std::map<int, std::string> tags = streamTags(name);
    std::map<std::string, StreamPackets> streams;
    for (std::string line; std::getline(in, line);)
    {
        std::vector<std::string> fields;
        std::istringstream split(line);
        for (std::string field; std::getline(split, field, ',');)
            fields.push_back(field);
        StreamPackets& packets = streams[tags.at(std::stoi(fields.at(0)))];
        const long long pos = std::stoll(fields.at(5));
        packets.first = packets.count == 0 ? pos : packets.first;
        packets.last = pos;
        packets.lastSize = std::stoll(fields.at(4));
        packets.bytes += packets.lastSize;
        ++packets.count;
    }
    return streams;
}

} // namespace

TEST(MxfInspectIndexTest, TrackSummariesAgreeWithFFprobesPackets)
{
    const std::regex summary(
        R"(^(v\d+|a\d+) track \d+: number 0x[0-9a-f]{8}, element \d+, (\d+) edit units indexed, )"
        R"(first at (\d+), last at (\d+), (\d+) bytes$)");
    for (const char* name :
         {"xdcamhd422_1080i25", "xdcamhd422_720p50", "xdcamhd422_1080i2997df", "imx50_625",
          "multibody_180p50", "runin_100", "lg720p50_v1", "lg720p50_a2", "imx50_v1", "imx50_a1"})
    {
        SCOPED_TRACE(name);
        const Outcome run = inspect({"index", testData(std::string(name) + ".mxf")});
        EXPECT_EQ(run.status, 0) << run.err;
        const auto expected = ffprobePackets(name);
        std::size_t tracks = 0;
        for (const std::string& line : run.lines)
        {
            std::smatch m;
            if (!std::regex_match(line, m, summary))
                continue;
            ++tracks;
            const StreamPackets& packets = expected.at(m[1]);
            const long long units = std::stoll(m[2]), last = std::stoll(m[4]);
            EXPECT_EQ(std::stoll(m[3]), packets.first) << line;
            if (units != packets.count)
            {
                // ffmpeg gives clip-wrapped sound in packets of many edit units: the units must
                // end where the packets do.
                const long long unitSize = std::stoll(m[5]) / units;
                EXPECT_EQ(last + unitSize, packets.last + packets.lastSize) << line;
            }
            else
                EXPECT_EQ(last, packets.last) << line;
            // ffmpeg unpacks D-10's AES3 sound, so only its packets' places compare.
            if (!(std::string(name) == "imx50_625" && line[0] == 'a'))
            {
                EXPECT_EQ(std::stoll(m[5]), packets.bytes) << line;
            }
        }
        EXPECT_EQ(tracks, expected.size());
    }
}

TEST(MxfInspectEssenceTest, GarbageBeforeTheBodyNeedsAllowedSkipping)
{
    // Without leave to skip, the partition walk stops at the garbage with the reader's text.
    TempDir dir;
    const std::string file = testData("damaged_garbage.mxf");
    const Outcome refused =
        inspect({"essence", file, "--track", "all", "--out", dir.path().string()});
    EXPECT_EQ(refused.status, 2);
    EXPECT_NE(refused.err.find("Exceeded maximum bytes to skip before finding a key. Started to "
                               "search at 0x2e00"),
              std::string::npos)
        << refused.err;
    // With the garbage's length allowed, every track is the clean clip's, which the garbage was
    // cut into: ffmpeg's digests of that clip.
    const std::string allowed = std::to_string(damage("damaged_garbage", "garbage_len"));
    for (const bool walk : {false, true})
    {
        SCOPED_TRACE(walk ? "--no-index" : "index");
        std::vector<std::string> args = {
            "essence", file, "--track", "all", "--out", dir.path().string(), "--max-skip", allowed};
        if (walk)
            args.push_back("--no-index");
        const Outcome run = inspect(args);
        EXPECT_EQ(run.status, 0) << run.err;
        for (const auto& [tag, md5] : expectedDigests("xdcamhd422_1080i25"))
            EXPECT_EQ(md5Of(dir.path() / (tag + (tag[0] == 'v' ? ".es" : ".pcm"))), md5) << tag;
    }
    EXPECT_EQ(inspect({"essence", file, "--track", "all", "--out", dir.path().string(),
                       "--max-skip", "ten"})
                  .status,
              2);
}
