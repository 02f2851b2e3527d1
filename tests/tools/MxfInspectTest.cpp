// mxf-inspect run as a program on the fixtures. Expectations come from MediaInfo's trace,
// ffprobe's packets and damage-offsets.txt (tests/data), never from an earlier run of the tool.
#include "InspectRun.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Halvorn::Test;

namespace
{

std::string dotted(const std::string& hex)
{
    std::string out;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        out += (i ? "." : "") + hex.substr(i, 2);
    return out;
}

// "OFFSET KEY LENGTH_SIZE LENGTH [NAME]"
struct Line
{
    unsigned long long offset = 0;
    std::string key;
    unsigned long long lengthSize = 0;
    unsigned long long length = 0;
    std::string name;

    unsigned long long end() const { return offset + 16 + lengthSize + length; }
};

bool parseItem(const std::string& text, Line& line)
{
    static const std::regex ITEM(
        R"(^(\d+) ((?:[0-9a-f]{2}\.){15}[0-9a-f]{2}) (\d) (\d+)(?: (.+))?$)");
    std::smatch m;
    if (!std::regex_match(text, m, ITEM))
        return false;
    line = {std::stoull(m[1]), m[2], std::stoull(m[3]), std::stoull(m[4]), m[5]};
    return true;
}

struct Report
{
    std::vector<Line> items;
    // Offset and size of each "OFFSET skipped N bytes" line.
    std::vector<std::pair<unsigned long long, unsigned long long>> skipped;
    unsigned long long count = 0;
};

Report parse(const Outcome& run)
{
    Report report;
    EXPECT_FALSE(run.lines.empty());
    if (run.lines.empty())
        return report;
    static const std::regex SKIPPED(R"(^(\d+) skipped (\d+) bytes$)");
    static const std::regex COUNT(R"(^(\d+) items$)");
    std::smatch m;
    EXPECT_TRUE(std::regex_match(run.lines.back(), m, COUNT)) << run.lines.back();
    report.count = std::stoull(m[1]);
    for (std::size_t i = 0; i + 1 < run.lines.size(); ++i)
    {
        Line line;
        if (parseItem(run.lines[i], line))
            report.items.push_back(line);
        else if (std::regex_match(run.lines[i], m, SKIPPED))
            report.skipped.emplace_back(std::stoull(m[1]), std::stoull(m[2]));
        else
            ADD_FAILURE() << "unexpected line: " << run.lines[i];
    }
    EXPECT_EQ(report.count, report.items.size());
    return report;
}

// MediaInfo's names for the kinds of item, mapped to ours.
std::string ourName(const std::string& mediaInfo)
{
    static const std::regex PARTITION(
        R"(^(Open|Closed) and (Complete|Incomplete) (Header|Body|Footer) Partition Pack$)");
    std::smatch m;
    if (std::regex_match(mediaInfo, m, PARTITION))
    {
        std::string name = m[3].str() + " partition " + m[1].str() + " " + m[2].str();
        for (char& c : name)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return name;
    }
    static const std::map<std::string, std::string> NAMES = {
        {"Padding", "fill"},
        {"Filler", "fill"},
        {"Primer", "primer"},
        {"Random Index Pack", "random index pack"},
        {"Index Table (Segment)", "index segment"},
        {"MPEG stream (Frame)", "essence element (picture)"},
        {"D-10 Video", "essence element (picture)"},
        {"PCM", "essence element (sound)"},
        {"D-10 Audio", "essence element (sound)"},
        {"SDTI Package Metadata Set", "essence element (system item)"},
    };
    if (const auto it = NAMES.find(mediaInfo); it != NAMES.end())
        return it->second;
    if (mediaInfo.rfind("SDTI System Metadata Pack", 0) == 0)
        return "essence element (system item)";
    return "metadata set";
}

struct Traced
{
    unsigned long long offset;
    std::string key;
    unsigned long long length;
    std::string name;
};

std::vector<Traced> mediaInfoItems(const std::string& fixture)
{
    std::ifstream in(testData("expected/" + fixture + ".klv.txt"));
    std::vector<Traced> out;
    for (std::string line; std::getline(in, line);)
    {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream fields(line);
        Traced t;
        std::string key;
        fields >> t.offset >> key >> t.length;
        std::getline(fields >> std::ws, t.name);
        t.key = dotted(key);
        out.push_back(t);
    }
    return out;
}

// What MediaInfo calls the clip-wrapped essence whose value alone it traces: "# 5657 no KLV
// header traced: PCM (59879 bytes)".
std::string clipEssenceName(const std::string& fixture)
{
    std::ifstream in(testData("expected/" + fixture + ".klv.txt"));
    static const std::regex TRACED(R"(^# \d+ no KLV header traced: (.+) \(\d+ bytes\)$)");
    std::smatch m;
    for (std::string line; std::getline(in, line);)
        if (std::regex_match(line, m, TRACED))
            return m[1];
    ADD_FAILURE() << "no untraced essence in " << fixture;
    return "";
}

const Line* itemAt(const Report& report, unsigned long long offset)
{
    for (const Line& line : report.items)
        if (line.offset == offset)
            return &line;
    return nullptr;
}

// `klv` on a fixture: items end to end from 0 to the end of the file, nothing skipped, and every
// item MediaInfo traces found at its offset with its key, length and name.
Report klvMatchingMediaInfo(const std::string& name, std::vector<Traced>& traced)
{
    const std::string path = testData(name + ".mxf");
    const Outcome run = inspect({"klv", path});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const Report report = parse(run);
    if (report.items.empty())
    {
        ADD_FAILURE() << "no items";
        return report;
    }
    EXPECT_TRUE(report.skipped.empty());
    EXPECT_EQ(report.items[0].offset, 0u);
    for (std::size_t i = 1; i < report.items.size(); ++i)
        EXPECT_EQ(report.items[i].offset, report.items[i - 1].end());
    EXPECT_EQ(report.items.back().end(), std::filesystem::file_size(path));
    traced = mediaInfoItems(name);
    for (const Traced& t : traced)
    {
        const Line* line = itemAt(report, t.offset);
        EXPECT_NE(line, nullptr) << "MediaInfo's item at " << t.offset;
        if (line == nullptr)
            continue;
        EXPECT_EQ(line->key, t.key);
        EXPECT_EQ(line->length, t.length);
        EXPECT_EQ(line->name, ourName(t.name)) << "at " << t.offset << ": " << t.name;
    }
    return report;
}

} // namespace

TEST(MxfInspectKlv, CleanFilesListEveryItemAsMediaInfoNamesIt)
{
    for (const std::string name :
         {"xdcamhd422_1080i25", "xdcamhd422_720p50", "xdcamhd422_1080i2997df", "imx50_625",
          "opatom_mpeg2", "opatom_pcm"})
    {
        SCOPED_TRACE(name);
        std::vector<Traced> traced;
        const Report report = klvMatchingMediaInfo(name, traced);
        if (name.rfind("opatom", 0) == 0)
        {
            // Everything MediaInfo traces, and the clip element whose value it shows.
            EXPECT_EQ(report.count, traced.size() + 1);
            ASSERT_NE(itemAt(report, 5632), nullptr);
            EXPECT_EQ(itemAt(report, 5632)->name, ourName(clipEssenceName(name)));
        }
    }
}

TEST(MxfInspectKlv, AvidFilesListEveryItemWhereMediaInfoHasItWithNothingSkipped)
{
    const std::string root = "80.53.08.00.36.21.08.04.b3.b3.98.a5.1c.90.11.d4";
    const std::string directory = "96.13.b3.8a.87.34.87.46.f1.02.96.f0.56.e0.4d.2a";
    for (const std::string name : {"lg720p50_v1", "lg720p50_a2", "imx50_v1", "imx50_a1"})
    {
        SCOPED_TRACE(name);
        const std::string path = testData(name + ".mxf");
        std::vector<Traced> mediaInfo;
        const Report report = klvMatchingMediaInfo(name, mediaInfo);
        std::map<unsigned long long, const Traced*> traced;
        for (const Traced& t : mediaInfo)
            traced[t.offset] = &t;
        // Where MediaInfo traces no item it says why: it lost the thread at Avid's two keys, it
        // shows a clip's value in chunks, or it is filling to the end of a partition.
        std::map<unsigned long long, std::string> notes;
        std::ifstream in(testData("expected/" + name + ".klv.txt"));
        static const std::regex NOTE(R"(^# (\d+) (.+)$)");
        std::smatch m;
        for (std::string text; std::getline(in, text);)
            if (std::regex_match(text, m, NOTE))
                notes.emplace(std::stoull(m[1]), m[2]);
        const std::string file = readFile(path);
        std::vector<std::string> avid;
        for (const Line& line : report.items)
        {
            if (traced.count(line.offset))
                continue;
            const auto note = notes.find(line.offset);
            const auto chunk = notes.find(line.end() - line.length);
            if (note != notes.end() &&
                note->second.find("Synchronisation lost") != std::string::npos)
            {
                avid.push_back(line.name);
                std::string bytes;
                for (std::size_t i = 0; i < 16; ++i)
                {
                    char hex[4];
                    std::snprintf(hex, sizeof hex, i ? ".%02x" : "%02x",
                                  static_cast<unsigned char>(file.at(line.offset + i)));
                    bytes += hex;
                }
                EXPECT_EQ(line.key, bytes);
                EXPECT_TRUE(line.key == root || line.key == directory) << line.key;
            }
            else if (note != notes.end() && note->second.find("filling") != std::string::npos)
                EXPECT_EQ(line.name, "fill");
            else
            {
                ASSERT_NE(chunk, notes.end())
                    << "an item MediaInfo doesn't know, at " << line.offset;
                EXPECT_EQ(line.name, "essence element (picture)") << chunk->second;
            }
        }
        EXPECT_EQ(avid, (std::vector<std::string>{"Avid root object", "Avid object directory"}));
    }
}

TEST(MxfInspectKlv, DamagedFilesAreWalkedToTheEndAndReportedOnOneLine)
{
    const std::string clean = testData("xdcamhd422_1080i25.mxf");
    const Report whole = parse(inspect({"klv", clean}));

    {
        SCOPED_TRACE("garbage");
        const Outcome run = inspect({"klv", testData("damaged_garbage.mxf")});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(oneLine(run.err)) << run.err;
        EXPECT_NE(run.err.find("1000 bytes at 11776"), std::string::npos) << run.err;
        const Report report = parse(run);
        const auto at = damage("damaged_garbage", "garbage_at");
        const auto length = damage("damaged_garbage", "garbage_len");
        ASSERT_EQ(report.skipped.size(), 1u);
        EXPECT_EQ(report.skipped[0], std::make_pair(at, length));
        EXPECT_EQ(report.count, whole.count);
        const Line* body = itemAt(report, damage("damaged_garbage", "body_partition_now_at"));
        ASSERT_NE(body, nullptr);
        EXPECT_EQ(body->name, "body partition closed complete");
    }
    {
        SCOPED_TRACE("bad length");
        const Outcome run = inspect({"klv", testData("damaged_bad_length.mxf")});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(oneLine(run.err)) << run.err;
        EXPECT_NE(run.err.find("item at 414208 declares 16777215 bytes"), std::string::npos)
            << run.err;
        const Report report = parse(run);
        const Line* bad = itemAt(report, damage("damaged_bad_length", "element_key_at"));
        ASSERT_NE(bad, nullptr);
        EXPECT_EQ(bad->length, damage("damaged_bad_length", "new_length"));
        EXPECT_EQ(bad->name, "essence element (picture)");
        // The walk resumes where the old length ended.
        const auto valueAt = damage("damaged_bad_length", "ber_length_at") +
                             damage("damaged_bad_length", "ber_width");
        ASSERT_EQ(report.skipped.size(), 1u);
        EXPECT_EQ(report.skipped[0],
                  std::make_pair(valueAt, damage("damaged_bad_length", "old_length")));
        EXPECT_EQ(report.count, whole.count);
    }
    for (const std::string name : {"damaged_truncated_30", "damaged_truncated_90"})
    {
        SCOPED_TRACE(name);
        const Outcome run = inspect({"klv", testData(name + ".mxf")});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(oneLine(run.err)) << run.err;
        const Report report = parse(run);
        // ffprobe's last packet is the element that is cut: its size is what is left of it.
        const auto [size, position] = lastPacket(name);
        ASSERT_FALSE(report.items.empty());
        EXPECT_EQ(report.items.back().offset, position);
        EXPECT_NE(run.err.find("item at " + std::to_string(position)), std::string::npos)
            << run.err;
        ASSERT_EQ(report.skipped.size(), 1u);
        EXPECT_EQ(report.skipped[0].second, size);
        EXPECT_EQ(report.skipped[0].first + size, damage(name, "cut_at"));
    }
    {
        SCOPED_TRACE("no footer");
        // Cut on an item boundary: every KLV item is whole, so the KLV layer finds no fault.
        const Outcome run = inspect({"klv", testData("damaged_no_footer.mxf")});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, "");
        const Report report = parse(run);
        EXPECT_EQ(report.items.back().end(), damage("damaged_no_footer", "cut_at"));
        for (const Line& line : report.items)
            EXPECT_EQ(line.name.find("footer"), std::string::npos);
    }
}

TEST(MxfInspectKlv, BadInputGivesOneLineOnStderrAndANonZeroExit)
{
    TempDir dir;
    auto write = [&](const std::string& name, const std::string& bytes)
    {
        std::ofstream(dir.path() / name, std::ios::binary) << bytes;
        return (dir.path() / name).string();
    };
    const std::string key =
        std::string("\x06\x0e\x2b\x34\x01\x02\x01\x01\x0d\x01\x03\x01\x15\x01\x05\x00", 16);
    const struct
    {
        const char* what;
        std::vector<std::string> args;
        int status;
        const char* says;
    } cases[] = {
        {"no arguments", {}, 2, "usage"},
        {"unknown subcommand", {"nonsense", "x"}, 2, "usage"},
        {"no file", {"klv"}, 2, "usage"},
        {"two files", {"klv", "a", "b"}, 2, "usage"},
        {"missing file", {"klv", (dir.path() / "missing.mxf").string()}, 2, "Error opening"},
        {"a directory", {"klv", dir.path().string()}, 2, "is a directory"},
        {"empty file", {"klv", write("empty.mxf", "")}, 2, "no KLV item"},
        {"no key at all", {"klv", write("text.mxf", std::string(5000, 'x'))}, 2, "5000 bytes at 0"},
        {"indefinite length",
         {"klv", write("ber80.mxf", key + "\x80" + "abc")},
         2,
         "Invalid BER size: 0x80"},
        {"huge length",
         {"klv", write("huge.mxf", key + "\x88\xff\xff\xff\xff\xff\xff\xff\xff" + "abc")},
         1,
         "declares 18446744073709551615 bytes"},
        {"key cut short", {"klv", write("cut.mxf", key.substr(0, 9))}, 2, "9 bytes at 0"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        const Outcome run = inspect(c.args);
        EXPECT_EQ(run.status, c.status);
        EXPECT_TRUE(oneLine(run.err)) << run.err;
        EXPECT_NE(run.err.find(c.says), std::string::npos) << run.err;
    }
}
