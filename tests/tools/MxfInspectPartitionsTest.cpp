// mxf-inspect partitions run as a program. Which packs a file has and what they hold comes from
// MediaInfo's trace (expected/NAME.partitions.txt), from ffprobe, and from the bytes SMPTE 377M
// puts at fixed places (the RIP found from the file's last 4 bytes, the essence container batch
// at value offset 80); never from an earlier run of the tool.
#include "InspectRun.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

using namespace Halvorn::Test;

namespace
{

using Bytes = std::string;

unsigned long long bigEndian(const Bytes& bytes, std::size_t at, unsigned size)
{
    unsigned long long value = 0;
    for (unsigned i = 0; i < size; ++i)
        value = value << 8 | static_cast<unsigned char>(bytes.at(at + i));
    return value;
}

std::string dotted(const Bytes& bytes, std::size_t at)
{
    static const char* HEX = "0123456789abcdef";
    std::string out;
    for (std::size_t i = 0; i < 16; ++i)
    {
        const auto b = static_cast<unsigned char>(bytes.at(at + i));
        out += (i ? "." : "") + std::string{HEX[b >> 4], HEX[b & 15]};
    }
    return out;
}

// Offset of the value of the KLV item at `offset`, by SMPTE 336M BER.
std::size_t valueStart(const Bytes& file, std::size_t offset)
{
    const auto first = static_cast<unsigned char>(file.at(offset + 16));
    return offset + 17 + (first < 0x80 ? 0 : (first & 0x7f));
}

// The essence container labels of the pack at `offset`: a batch at value offset 80.
std::string containersAt(const Bytes& file, std::size_t offset)
{
    const std::size_t batch = valueStart(file, offset) + 80;
    const auto count = bigEndian(file, batch, 4);
    std::string out;
    for (unsigned long long i = 0; i < count; ++i)
        out += (i ? "," : "") + dotted(file, batch + 8 + 16 * i);
    return out.empty() ? "none" : out;
}

struct PackLine
{
    unsigned long long offset;
    std::string traced; // the first twelve fields, as NAME.partitions.txt writes them
    std::string operationalPattern;
    std::string containers;
};

struct RIPEntry
{
    unsigned long long bodySID, offset;
    std::string what;
};

struct Listing
{
    std::vector<PackLine> packs;
    std::vector<std::string> unreadable;
    bool hasRIP = false;
    unsigned long long ripOffset = 0;
    bool agree = false;
    unsigned long long ripEntries = 0;
    std::vector<RIPEntry> entries;
    std::vector<unsigned long long> notListed;
};

Listing parse(const Outcome& run)
{
    static const std::regex PACK(R"(^((\d+) (?:header|body|footer) (?:open|closed|generic) )"
                                 R"((?:complete|incomplete|stream)(?: \d+){8}) )"
                                 R"(((?:[0-9a-f]{2}\.){15}[0-9a-f]{2}) (none|[0-9a-f.,]+)$)");
    static const std::regex UNREADABLE(R"(^\d+ unreadable partition pack: .+$)");
    static const std::regex RIP(
        R"(^(\d+) random index pack: (\d+) entries, (agree|disagree) with the partition packs found$)");
    static const std::regex ENTRY(R"(^  body SID (\d+) at (\d+): (.+)$)");
    static const std::regex NOT_LISTED(R"(^  not listed: partition pack at (\d+)$)");
    Listing listing;
    std::smatch m;
    for (const std::string& line : run.lines)
    {
        if (std::regex_match(line, m, PACK))
            listing.packs.push_back({std::stoull(m[2]), m[1], m[3], m[4]});
        else if (std::regex_match(line, UNREADABLE))
            listing.unreadable.push_back(line);
        else if (std::regex_match(line, m, RIP))
        {
            EXPECT_FALSE(listing.hasRIP) << "a second RIP";
            listing.hasRIP = true;
            listing.ripOffset = std::stoull(m[1]);
            listing.agree = m[3] == "agree";
            listing.ripEntries = std::stoull(m[2]);
        }
        else if (std::regex_match(line, m, ENTRY))
            listing.entries.push_back({std::stoull(m[1]), std::stoull(m[2]), m[3]});
        else if (std::regex_match(line, m, NOT_LISTED))
            listing.notListed.push_back(std::stoull(m[1]));
        else
            EXPECT_EQ(line, "no random index pack");
    }
    return listing;
}

// expected/NAME.partitions.txt: OFFSET and the eleven fields after it, as MediaInfo traced them.
std::vector<std::string> mediaInfoPartitions(const std::string& name)
{
    std::ifstream in(testData("expected/" + name + ".partitions.txt"));
    std::vector<std::string> out;
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] != '#')
            out.push_back(line);
    EXPECT_FALSE(out.empty()) << name;
    return out;
}

std::vector<std::string> tracedFields(const Listing& listing)
{
    std::vector<std::string> out;
    for (const PackLine& pack : listing.packs)
        out.push_back(pack.traced);
    return out;
}

// "operational_pattern_ul": "060e2b34.04010101.0d010201.01010900" in expected/NAME.ffprobe.json.
std::string ffprobeOperationalPattern(const std::string& name)
{
    const std::string json = readFile(testData("expected/" + name + ".ffprobe.json"));
    static const std::regex OP(R"re("operational_pattern_ul": "([0-9a-f.]+)")re");
    std::smatch m;
    EXPECT_TRUE(std::regex_search(json, m, OP)) << name;
    Bytes bytes;
    const std::string hex = std::regex_replace(m[1].str(), std::regex("\\."), "");
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return dotted(bytes, 0);
}

struct RIPBytes
{
    unsigned long long offset;
    std::vector<std::pair<unsigned long long, unsigned long long>> entries; // body SID, offset
};

// The RIP as SMPTE 377M lets a reader find it: the last 4 bytes give its total length.
RIPBytes ripOf(const Bytes& file)
{
    RIPBytes rip;
    rip.offset = file.size() - bigEndian(file, file.size() - 4, 4);
    for (std::size_t at = valueStart(file, rip.offset); at + 4 < file.size(); at += 12)
        rip.entries.emplace_back(bigEndian(file, at, 4), bigEndian(file, at + 4, 8));
    return rip;
}

std::string kindAt(const Listing& listing, unsigned long long offset)
{
    for (const PackLine& pack : listing.packs)
        if (pack.offset == offset)
        {
            std::istringstream fields(pack.traced);
            std::string at, kind;
            fields >> at >> kind;
            return kind;
        }
    return "";
}

// Bytes of small hand-made files.
Bytes be(unsigned long long value, unsigned size)
{
    Bytes out;
    for (unsigned i = size; i-- > 0;)
        out += static_cast<char>((value >> (8 * i)) & 0xff);
    return out;
}

const Bytes PACK_PREFIX("\x06\x0e\x2b\x34\x02\x05\x01\x01\x0d\x01\x02\x01\x01", 13);

Bytes partitionPack(unsigned kind, unsigned status, unsigned long long self,
                    unsigned long long previous, unsigned long long footer, unsigned bodySID)
{
    return PACK_PREFIX + be(kind, 1) + be(status, 1) + be(0, 1) + "\x83" + be(88, 3) + be(1, 2) +
           be(3, 2) + be(512, 4) + be(self, 8) + be(previous, 8) + be(footer, 8) + be(0, 8) +
           be(0, 8) + be(0, 4) + be(0, 8) + be(bodySID, 4) + Bytes(16, '\0') + be(0, 4) + be(16, 4);
}

Bytes rip(const std::vector<std::pair<unsigned, unsigned long long>>& entries)
{
    Bytes value;
    for (const auto& [sid, offset] : entries)
        value += be(sid, 4) + be(offset, 8);
    return PACK_PREFIX + "\x11\x01" + be(0, 1) + "\x83" + be(value.size() + 4, 3) + value +
           be(16 + 4 + value.size() + 4, 4);
}

} // namespace

TEST(MxfInspectPartitions, CleanFilesListThePacksMediaInfoTracesAndARIPThatAgrees)
{
    for (const std::string name :
         {"xdcamhd422_1080i25", "xdcamhd422_720p50", "xdcamhd422_1080i2997df", "imx50_625",
          "opatom_mpeg2", "opatom_pcm"})
    {
        SCOPED_TRACE(name);
        const std::string path = testData(name + ".mxf");
        const Outcome run = inspect({"partitions", path});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, "");
        const Listing listing = parse(run);
        EXPECT_EQ(tracedFields(listing), mediaInfoPartitions(name));
        EXPECT_TRUE(listing.unreadable.empty());

        const Bytes file = readFile(path);
        for (const PackLine& pack : listing.packs)
        {
            SCOPED_TRACE("pack at " + std::to_string(pack.offset));
            EXPECT_EQ(pack.operationalPattern, ffprobeOperationalPattern(name));
            EXPECT_EQ(pack.containers, containersAt(file, pack.offset));
        }

        const RIPBytes expected = ripOf(file);
        ASSERT_TRUE(listing.hasRIP);
        EXPECT_EQ(listing.ripOffset, expected.offset);
        EXPECT_TRUE(listing.agree);
        EXPECT_TRUE(listing.notListed.empty());
        ASSERT_EQ(listing.ripEntries, expected.entries.size());
        ASSERT_EQ(listing.entries.size(), expected.entries.size());
        for (std::size_t i = 0; i < expected.entries.size(); ++i)
        {
            EXPECT_EQ(listing.entries[i].bodySID, expected.entries[i].first);
            EXPECT_EQ(listing.entries[i].offset, expected.entries[i].second);
            EXPECT_EQ(listing.entries[i].what,
                      kindAt(listing, expected.entries[i].second) + " partition pack");
        }
    }
}

TEST(MxfInspectPartitions, DamagedFilesShowThePacksLeftAndSayWhatIsWrongOnOneLine)
{
    const std::string prefix = "mxf-inspect: ";
    {
        SCOPED_TRACE("garbage");
        const std::string path = testData("damaged_garbage.mxf");
        const Outcome run = inspect({"partitions", path});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(oneLine(run.err)) << run.err;
        EXPECT_EQ(run.err.rfind(prefix + path + ": " +
                                    std::to_string(damage("damaged_garbage", "garbage_len")) +
                                    " bytes at " +
                                    std::to_string(damage("damaged_garbage", "garbage_at")) +
                                    " with no KLV key (and ",
                                0),
                  0u)
            << run.err;
        const Listing listing = parse(run);
        // The packs where they now are, with the offsets they were written with.
        EXPECT_EQ(tracedFields(listing), mediaInfoPartitions("damaged_garbage"));
        ASSERT_TRUE(listing.hasRIP);
        EXPECT_EQ(listing.ripOffset, ripOf(readFile(path)).offset);
        EXPECT_FALSE(listing.agree);
        ASSERT_EQ(listing.entries.size(), 3u);
        EXPECT_EQ(listing.entries[0].what, "header partition pack");
        EXPECT_EQ(listing.entries[1].what, "no partition pack there");
        EXPECT_EQ(listing.entries[2].what, "no partition pack there");
        const auto bodyAt = damage("damaged_garbage", "body_partition_now_at");
        ASSERT_EQ(listing.notListed.size(), 2u);
        EXPECT_EQ(listing.notListed[0], bodyAt);
        EXPECT_EQ(listing.notListed[1], listing.packs.back().offset);
    }
    {
        SCOPED_TRACE("no footer");
        const std::string path = testData("damaged_no_footer.mxf");
        const Outcome run = inspect({"partitions", path});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, prefix + path + ": no footer partition\n");
        const Listing listing = parse(run);
        EXPECT_EQ(tracedFields(listing), mediaInfoPartitions("damaged_no_footer"));
        EXPECT_FALSE(listing.hasRIP);
        EXPECT_EQ(run.lines.back(), "no random index pack");
    }
    for (const std::string name : {"damaged_truncated_30", "damaged_truncated_90"})
    {
        SCOPED_TRACE(name);
        const std::string path = testData(name + ".mxf");
        const Outcome run = inspect({"partitions", path});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(oneLine(run.err)) << run.err;
        // ffprobe's last packet is the element that is cut: what is left of it is its size.
        const auto [size, position] = lastPacket(name);
        EXPECT_NE(run.err.find(": item at " + std::to_string(position) + " declares "),
                  std::string::npos)
            << run.err;
        EXPECT_NE(run.err.find("the file has " + std::to_string(size) + " left"), std::string::npos)
            << run.err;
        const Listing listing = parse(run);
        EXPECT_EQ(tracedFields(listing), mediaInfoPartitions(name));
        EXPECT_FALSE(listing.hasRIP);
    }
    {
        SCOPED_TRACE("bad length");
        const std::string path = testData("damaged_bad_length.mxf");
        const Outcome run = inspect({"partitions", path});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(oneLine(run.err)) << run.err;
        EXPECT_NE(run.err.find(": item at " +
                               std::to_string(damage("damaged_bad_length", "element_key_at")) +
                               " declares " +
                               std::to_string(damage("damaged_bad_length", "new_length")) +
                               " bytes"),
                  std::string::npos)
            << run.err;
        // MediaInfo stops at the broken element; the search after it finds the rest of the
        // packs of the file it was made from.
        const Listing listing = parse(run);
        EXPECT_EQ(tracedFields(listing), mediaInfoPartitions("xdcamhd422_1080i25"));
        const auto traced = mediaInfoPartitions("damaged_bad_length");
        const auto found = tracedFields(listing);
        ASSERT_LE(traced.size(), found.size());
        EXPECT_TRUE(std::equal(traced.begin(), traced.end(), found.begin()));
        EXPECT_TRUE(listing.hasRIP);
        EXPECT_TRUE(listing.agree);
    }
}

TEST(MxfInspectPartitions, BrokenInputGivesOneLineOnStderrAndANonZeroExit)
{
    TempDir dir;
    auto write = [&](const std::string& name, const Bytes& bytes)
    {
        std::ofstream(dir.path() / name, std::ios::binary) << bytes;
        return (dir.path() / name).string();
    };
    // 108 bytes a pack: key, 4-byte length, 88 bytes of value.
    const Bytes header = partitionPack(0x02, 0x04, 0, 0, 108, 0);
    const Bytes footer = partitionPack(0x04, 0x04, 108, 0, 108, 0);
    const Bytes headerAndFooter = header + footer;
    const Bytes rightRIP = rip({{0, 0}, {0, 108}});
    const Bytes badKind = partitionPack(0x05, 0x04, 0, 0, 0, 0);
    const struct
    {
        const char* what;
        std::vector<std::string> args;
        int status;
        const char* says;
    } cases[] = {
        {"no file", {"partitions"}, 2, "usage: mxf-inspect partitions FILE"},
        {"two files", {"partitions", "a", "b"}, 2, "usage"},
        {"missing file", {"partitions", (dir.path() / "missing.mxf").string()}, 2, "Error opening"},
        {"a directory", {"partitions", dir.path().string()}, 2, "is a directory"},
        {"empty file", {"partitions", write("empty.mxf", "")}, 2, "no partition pack"},
        {"no key at all",
         {"partitions", write("text.mxf", Bytes(5000, 'x'))},
         2,
         "5000 bytes at 0 with no whole KLV key and length (and 1 more)"},
        {"a piece of clip-wrapped sound",
         {"partitions",
          write("sound.mxf", readFile(testData("opatom_pcm.mxf")).substr(5632, 2000))},
         2,
         "item at 0 declares 144000 bytes of value, the file has 1975 left"},
        {"header and footer, no RIP", {"partitions", write("no-rip.mxf", headerAndFooter)}, 0, ""},
        {"header only", {"partitions", write("header.mxf", header)}, 1, "no footer partition"},
        {"kind 05",
         {"partitions", write("kind5.mxf", badKind)},
         2,
         "partition pack at 0: The key defines an invalid partition kind"},
        {"pack cut short",
         {"partitions", write("cut.mxf", header.substr(0, 60))},
         2,
         "partition pack at 0: Invalid data size in Value"},
        {"pack with a huge length",
         {"partitions", write("huge.mxf", PACK_PREFIX + "\x02\x04" + be(0, 1) + "\x88" +
                                              Bytes(8, '\xff') + "abc")},
         2,
         "partition pack at 0: "},
        {"RIP that agrees", {"partitions", write("rip.mxf", headerAndFooter + rightRIP)}, 0, ""},
        {"RIP with a wrong body SID",
         {"partitions", write("rip-sid.mxf", headerAndFooter + rip({{1, 0}, {0, 108}}))},
         1,
         "random index pack at 216 disagrees with the partition packs found"},
        {"RIP of 5 bytes",
         {"partitions",
          write("rip-5.mxf", headerAndFooter + rightRIP.substr(0, 16) + "\x05" + Bytes(5, '\0'))},
         1,
         "random index pack at 216: Not enough data to read Pack"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        const Outcome run = inspect(c.args);
        EXPECT_EQ(run.status, c.status);
        if (c.status == 0)
        {
            EXPECT_EQ(run.err, "");
            EXPECT_EQ(parse(run).packs.size(), 2u);
            continue;
        }
        EXPECT_TRUE(oneLine(run.err)) << run.err;
        EXPECT_NE(run.err.find(c.says), std::string::npos) << run.err;
    }
}
