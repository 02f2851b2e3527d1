// mxf-inspect metadata run as a program. Which sets the header metadata has comes from MediaInfo's
// trace (expected/NAME.mediainfo-trace.txt), the values from ffprobe's and MediaInfo's reports
// (expected/NAME.ffprobe.json, NAME.mediainfo.json) and from SMPTE 377M; never from an earlier run
// of the tool.
#include "InspectRun.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
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

const std::vector<std::string> AVID_FIXTURES = {"lg720p50_v1", "lg720p50_a2", "imx50_v1",
                                                "imx50_a1"};

// The fixtures made by ffmpeg: the Avid files of another writer have tests of their own.
std::vector<std::string> fixtures(bool damaged)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(testData("")))
    {
        const std::string name = entry.path().stem().string();
        const bool avid =
            std::find(AVID_FIXTURES.begin(), AVID_FIXTURES.end(), name) != AVID_FIXTURES.end();
        if (entry.path().extension() == ".mxf" && !avid &&
            (name.rfind("damaged_", 0) == 0) == damaged)
            names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The header metadata as MediaInfo traces it: the offset of the primer, HeaderByteCount from the
// header partition pack, and the class of each set (the top-level items from the primer on,
// within HeaderByteCount, but for fill).
struct Trace
{
    unsigned long long header = 0;
    unsigned long long primer = 0;
    unsigned long long headerByteCount = 0;
    std::vector<std::string> sets;
};

// MediaInfo's names, "Timeline Track - Valid from Package", as the dictionary's class names.
std::string className(std::string traced)
{
    traced = traced.substr(0, traced.find(" - "));
    traced.erase(
        std::remove_if(traced.begin(), traced.end(), [](char c) { return c == ' ' || c == '-'; }),
        traced.end());
    if (traced == "AES3Descriptor")
        return "AES3AudioEssenceDescriptor";
    if (traced == "WaveAudioDescriptor")
        return "WAVEAudioEssenceDescriptor";
    return traced;
}

Trace trace(const std::string& fixture)
{
    static const std::regex ITEM(R"(^([0-9A-F]+) (\S.*?)(?: \(\d+ bytes\))?$)");
    static const std::regex HBC(R"(^[0-9A-F]+  HeaderByteCount:\s+(\d+))");
    std::ifstream in(testData("expected/" + fixture + ".mediainfo-trace.txt"));
    std::vector<std::pair<unsigned long long, std::string>> items;
    Trace found;
    std::smatch m;
    for (std::string line; std::getline(in, line);)
    {
        if (std::regex_match(line, m, ITEM))
            items.emplace_back(std::stoull(m[1], nullptr, 16), m[2]);
        else if (found.headerByteCount == 0 && std::regex_search(line, m, HBC))
            found.headerByteCount = std::stoull(m[1]);
    }
    for (const auto& [offset, name] : items)
    {
        if (name.find("Header Partition Pack") != name.npos && found.primer == 0)
            found.header = offset;
        else if (name == "Primer" && found.primer == 0)
            found.primer = offset;
        else if (found.primer != 0 && offset < found.primer + found.headerByteCount &&
                 name != "Padding")
            found.sets.push_back(className(name));
    }
    return found;
}

// Lines "[NAME: ]CLASS {UUID}" or "[I] CLASS {UUID}" that open a set.
std::vector<std::string> printedClasses(const std::vector<std::string>& lines)
{
    static const std::regex SET(
        R"(^ *(?:\[\d+\] |[A-Za-z0-9]+: )?([A-Za-z0-9]+) \{[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12}\}$)");
    std::vector<std::string> classes;
    std::smatch m;
    for (const std::string& line : lines)
        if (std::regex_match(line, m, SET))
            classes.push_back(m[1]);
    return classes;
}

std::size_t count(const std::vector<std::string>& lines, const std::string& text)
{
    return std::count_if(lines.begin(), lines.end(),
                         [&](const std::string& line)
                         { return line.substr(line.find_first_not_of(' ')) == text; });
}

bool contains(const std::vector<std::string>& lines, const std::string& text)
{
    return std::any_of(lines.begin(), lines.end(),
                       [&](const std::string& line) { return line.find(text) != line.npos; });
}

// Every value of "key": VALUE or "key": "VALUE" in a JSON report.
std::vector<std::string> jsonValues(const std::string& file, const std::string& key)
{
    const std::string json = readFile(testData("expected/" + file));
    const std::regex field("\"" + key + R"re(": "?([^",\n]*)"?)re");
    std::vector<std::string> values;
    for (std::sregex_iterator it(json.begin(), json.end(), field), end; it != end; ++it)
        values.push_back((*it)[1]);
    return values;
}

std::string first(const std::string& file, const std::string& key)
{
    const std::vector<std::string> values = jsonValues(file, key);
    if (values.empty())
        ADD_FAILURE() << "no " << key << " in " << file;
    return values.empty() ? "" : values.front();
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// "060e2b34.04010101.0d010201.01010900" as 06.0e.2b.34...
std::string dottedUL(const std::string& grouped)
{
    std::string hex = grouped;
    hex.erase(std::remove(hex.begin(), hex.end(), '.'), hex.end());
    std::string out;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        out += (i ? "." : "") + hex.substr(i, 2);
    return out;
}

// SMPTE 12M time code as a frame count from midnight; "HH:MM:SS;FF" drops two frame numbers a
// minute but every tenth (30 frame base).
unsigned long long timecodeFrames(const std::string& text, unsigned base)
{
    const unsigned h = std::stoul(text.substr(0, 2)), m = std::stoul(text.substr(3, 2)),
                   s = std::stoul(text.substr(6, 2)), f = std::stoul(text.substr(9, 2));
    const unsigned long long minutes = h * 60ull + m;
    unsigned long long frames = (minutes * 60 + s) * base + f;
    if (text[8] == ';')
        frames -= 2 * (minutes - minutes / 10);
    return frames;
}

// MediaInfo's "2011-03-04 05:06:07.008" (the year unpadded) as 2011-03-04T05:06:07.008Z.
std::string isoDate(const std::string& text)
{
    unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, milli = 0;
    EXPECT_EQ(std::sscanf(text.c_str(), "%u-%u-%u %u:%u:%u.%u", &year, &month, &day, &hour, &minute,
                          &second, &milli),
              7)
        << text;
    char iso[40];
    std::snprintf(iso, sizeof iso, "%04u-%02u-%02uT%02u:%02u:%02u.%03uZ", year, month, day, hour,
                  minute, second, milli);
    return iso;
}

std::string editRateLine(const std::string& rate)
{
    return "EditRate: " + rate;
}

} // namespace

TEST(MxfInspectMetadata, CleanFilesShowEverySetMediaInfoTracesAndNothingUnknown)
{
    const std::vector<std::string> names = fixtures(false);
    ASSERT_GE(names.size(), 7u);
    for (const std::string& name : names)
    {
        SCOPED_TRACE(name);
        const Outcome run = inspect({"metadata", testData(name + ".mxf")});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, "");
        ASSERT_GE(run.lines.size(), 3u);

        const Trace traced = trace(name);
        ASSERT_GT(traced.sets.size(), 10u);
        EXPECT_EQ(run.lines.front().rfind("header metadata of the header partition at " +
                                              std::to_string(traced.header) + ": HeaderByteCount " +
                                              std::to_string(traced.headerByteCount) + ", ",
                                          0),
                  0u)
            << run.lines.front();
        EXPECT_EQ(run.lines.back(), std::to_string(traced.sets.size()) + " sets");
        std::vector<std::string> printed = printedClasses(run.lines);
        std::vector<std::string> expected = traced.sets;
        std::sort(printed.begin(), printed.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(printed, expected);

        // The tree starts at the Preface and reaches everything ffmpeg writes.
        EXPECT_EQ(run.lines.at(1).rfind("Preface {", 0), 0u);
        EXPECT_FALSE(contains(run.lines, "not reached from the Preface"));
        for (const char* word : {"unknown", "misplaced", "unparsed", "missing", "=>"})
            EXPECT_FALSE(contains(run.lines, word)) << word;
    }
}

TEST(MxfInspectMetadata, ValuesReadAsFfprobeAndMediaInfoReportThem)
{
    for (const std::string& name : fixtures(false))
    {
        SCOPED_TRACE(name);
        const Outcome run = inspect({"metadata", testData(name + ".mxf")});
        ASSERT_EQ(run.status, 0);
        const std::string probe = name + ".ffprobe.json", info = name + ".mediainfo.json";
        const std::vector<std::string> types = jsonValues(probe, "codec_type");
        const auto videos = std::count(types.begin(), types.end(), "video");
        const auto sounds = std::count(types.begin(), types.end(), "audio");

        // Picture: edit rate, stored width, sampled and displayed sizes (per field when the frame
        // layout is 1, separate fields).
        if (videos > 0)
        {
            EXPECT_GE(count(run.lines, editRateLine(first(probe, "r_frame_rate"))), 2u);
            EXPECT_EQ(count(run.lines, "StoredWidth: " + first(probe, "width")), 1u);
            const unsigned fields = count(run.lines, "FrameLayout: 1") == 1 ? 2 : 1;
            const auto height = [&](const char* key)
            { return std::to_string(std::stoul(first(info, key)) / fields); };
            EXPECT_EQ(count(run.lines, "SampledWidth: " + first(info, "Sampled_Width")), 1u);
            EXPECT_EQ(count(run.lines, "SampledHeight: " + height("Sampled_Height")), 1u);
            EXPECT_EQ(count(run.lines, "DisplayWidth: " + first(info, "Width")), 1u);
            EXPECT_EQ(count(run.lines, "DisplayHeight: " + height("Height")), 1u);
        }
        // Sound: one descriptor a stream, at the stream's rate.
        if (sounds > 0)
        {
            EXPECT_EQ(count(run.lines, "AudioSamplingRate: " + first(probe, "sample_rate") + "/1"),
                      static_cast<std::size_t>(sounds));
        }

        // Time code: the start as a frame count in both packages, drop frame with ";".
        const std::string timecode = first(probe, "timecode");
        const std::string base = std::to_string(std::lround(std::stod(first(info, "FrameRate"))));
        EXPECT_EQ(count(run.lines, "RoundedTimecodeBase: " + base), 2u);
        EXPECT_EQ(count(run.lines, "StartTimecode: " +
                                       std::to_string(timecodeFrames(timecode, std::stoul(base)))),
                  2u);
        EXPECT_EQ(count(run.lines, timecode[8] == ';' ? "DropFrame: true" : "DropFrame: false"),
                  2u);

        // Identification, packages and pattern, in their text forms.
        EXPECT_EQ(count(run.lines, "CompanyName: \"" + first(probe, "company_name") + "\""), 1u);
        EXPECT_EQ(count(run.lines, "ProductName: \"" + first(probe, "product_name") + "\""), 1u);
        EXPECT_EQ(count(run.lines, "[0] Identification {" + first(probe, "uid") + "}"), 1u);
        EXPECT_EQ(count(run.lines, "ThisGenerationUID: {" + first(probe, "generation_uid") + "}"),
                  1u);
        EXPECT_EQ(count(run.lines, "PackageUID: " + lower(first(probe, "material_package_umid"))),
                  1u);
        EXPECT_EQ(count(run.lines, "PackageUID: " + lower(first(probe, "file_package_umid"))), 1u);
        EXPECT_TRUE(contains(
            run.lines,
            "OperationalPattern: " + dottedUL(first(probe, "operational_pattern_ul")) + " (MXF"));
        EXPECT_TRUE(contains(run.lines, "DataDefinition: "
                                        "06.0e.2b.34.04.01.01.01.01.03.02.01.01.00.00.00 "
                                        "(SMPTE-12M Timecode Track Inactive User Bits)"));
        EXPECT_EQ(count(run.lines, "LastModifiedDate: " + isoDate(first(info, "Encoded_Date"))),
                  1u);
    }
}

TEST(MxfInspectMetadata, OtherPartitionsByNameOrOffset)
{
    const std::string clean = testData("xdcamhd422_1080i25.mxf");
    // ffmpeg repeats no metadata in the footer; the damaged copy claims it does.
    Outcome run = inspect({"metadata", clean, "--partition", "footer"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.lines.empty());
    EXPECT_EQ(run.err, "mxf-inspect: " + clean +
                           ": the footer partition at 2644480 has no header metadata "
                           "(HeaderByteCount 0)\n");
    run = inspect({"metadata", clean, "--partition", "11776"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("the body partition at 11776 has no header metadata"),
              std::string::npos);
    run = inspect({"metadata", clean, "--partition", "0"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.lines.back(), "76 sets");

    // The run-in moves every pack on by 100 bytes.
    run = inspect({"metadata", testData("runin_100.mxf"), "--partition", "100"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.lines.front().rfind("header metadata of the header partition at 100:", 0), 0u);

    const std::string open = testData("damaged_open_header.mxf");
    const Trace traced = trace("xdcamhd422_1080i25");
    run = inspect({"metadata", open, "--partition", "footer"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.lines.front().rfind("header metadata of the footer partition at 2644480: "
                                      "HeaderByteCount 11264",
                                      0),
              0u);
    EXPECT_EQ(run.lines.back(), std::to_string(traced.sets.size()) + " sets");

    run = inspect({"metadata", testData("damaged_no_footer.mxf"), "--partition", "footer"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "mxf-inspect: " + testData("damaged_no_footer.mxf") + ": no footer partition\n");
    run = inspect({"metadata", clean, "--partition", "5"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "mxf-inspect: " + clean + ": no partition pack at 5\n");
}

TEST(MxfInspectMetadata, DamagedFilesGiveTheTreeOrOneLineAndNeverCrash)
{
    for (const std::string& name : fixtures(true))
    {
        SCOPED_TRACE(name);
        const std::string path = testData(name + ".mxf");
        const Outcome run = inspect({"metadata", path});
        const Trace traced = trace(name);
        // Damage after the header metadata is none of this subcommand's business.
        const bool cut = std::filesystem::file_size(path) < traced.primer + traced.headerByteCount;
        EXPECT_EQ(run.status, cut ? 1 : 0);
        if (run.status == 0)
        {
            EXPECT_EQ(run.err, "");
            EXPECT_EQ(run.lines.back(), std::to_string(traced.sets.size()) + " sets");
        }
        else
        {
            EXPECT_TRUE(oneLine(run.err)) << run.err;
            EXPECT_EQ(run.err.rfind("mxf-inspect: " + path +
                                        ": header metadata of the header partition at 0: ",
                                    0),
                      0u)
                << run.err;
        }
    }
}

TEST(MxfInspectMetadata, BrokenReferencesAndUnknownSetsAreShownForWhatTheyAre)
{
    const std::string original = readFile(testData("xdcamhd422_1080i25.mxf"));
    TempDir dir;
    const auto write = [&](const std::string& bytes)
    {
        const std::string path = (dir.path() / "copy.mxf").string();
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    };
    // Offsets from MediaInfo's list: the Preface at 2560, Identification at 2764, each with a
    // 4-byte BER length; the Preface's ContentStorage is its static tag 3b03 with 16 bytes.
    std::string bytes = original;
    const std::size_t tag = bytes.find(std::string("\x3b\x03\x00\x10", 4), 2560 + 20);
    ASSERT_LT(tag, 2560u + 20 + 186);
    bytes[tag + 4 + 15] ^= 0x55;
    std::string path = write(bytes);
    Outcome run = inspect({"metadata", path});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(oneLine(run.err));
    EXPECT_NE(run.err.find(", which no set has"), std::string::npos) << run.err;
    EXPECT_TRUE(
        contains(run.lines, "  ContentStorage: missing {adab4424-2f25-4dc7-92ff-000d000000"));
    EXPECT_EQ(count(run.lines, "not reached from the Preface:"), 1u);
    EXPECT_EQ(count(run.lines, "ContentStorage {adab4424-2f25-4dc7-92ff-000d00000000}"), 1u);
    EXPECT_EQ(run.lines.back(), "76 sets");

    // Identification's key, byte 12, to one no dictionary has: its properties are then known
    // labels in a set that has no place for them.
    bytes = original;
    ASSERT_EQ(bytes[2764 + 11], '\x01');
    bytes[2764 + 11] = '\x7f';
    path = write(bytes);
    run = inspect({"metadata", path});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(count(run.lines, "[0] unknown set 06.0e.2b.34.02.53.01.01.0d.01.01.7f.01.01.30.00, "
                               "174 bytes {adab4424-2f25-4dc7-92ff-000c00000000}"),
              1u);
    EXPECT_EQ(count(run.lines, "misplaced CompanyName 06.0e.2b.34.01.01.01.02.05.20.07.01.02.01."
                               "00.00, tag 3c01, 14 bytes: \"FFmpeg\""),
              1u);
    EXPECT_EQ(run.lines.back(), "76 sets");
}

TEST(MxfInspectMetadata, UsageAndInputErrorsExitTwoWithOneLine)
{
    const std::string usage = "usage: mxf-inspect metadata FILE [--partition header|footer|OFFSET] "
                              "[--dictionary DICTIONARY] [--meta]\n";
    const std::string clean = testData("opatom_pcm.mxf");
    for (const std::vector<std::string>& args :
         std::vector<std::vector<std::string>>{{"metadata"},
                                               {"metadata", clean, clean},
                                               {"metadata", clean, "--partition"},
                                               {"metadata", clean, "--partition", "body"},
                                               {"metadata", clean, "--partition", "-1"},
                                               {"metadata", clean, "--frobnicate"}})
    {
        const Outcome run = inspect(args);
        EXPECT_EQ(run.status, 2) << args.back();
        EXPECT_EQ(run.err, usage) << args.back();
        EXPECT_TRUE(run.lines.empty());
    }
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"metadata", testData("no-such-file.mxf")},
             {"metadata", clean, "--dictionary", testData("no-such-dictionary.bin")},
             {"metadata", clean, "--dictionary", clean}})
    {
        const Outcome run = inspect(args);
        EXPECT_EQ(run.status, 2) << args.back();
        EXPECT_TRUE(oneLine(run.err)) << run.err;
        EXPECT_EQ(run.err.rfind("mxf-inspect: ", 0), 0u) << run.err;
        EXPECT_TRUE(run.lines.empty());
    }
}

namespace
{

// The value of the first line "INDENT NAME: VALUE" after line `from` (or the first at all).
std::string valueAfter(const std::vector<std::string>& lines, const std::string& name,
                       std::size_t from = 0)
{
    for (std::size_t i = from; i < lines.size(); ++i)
    {
        const std::size_t at = lines[i].find_first_not_of(' ');
        if (at != std::string::npos && lines[i].compare(at, name.size() + 2, name + ": ") == 0)
            return lines[i].substr(at + name.size() + 2);
    }
    return "";
}

std::size_t lineOf(const std::vector<std::string>& lines, const std::string& part)
{
    for (std::size_t i = 0; i < lines.size(); ++i)
        if (lines[i].find(part) != std::string::npos)
            return i;
    return lines.size();
}

// Avid's ResolutionID as the file has it, found through MediaInfo's trace alone: the primer's tag
// for the property's label, the descriptor's item of that tag, its 4 value bytes from the file.
long long resolutionIdInTheFile(const std::string& name)
{
    std::istringstream trace(readFile(testData("expected/" + name + ".mediainfo-trace.txt")));
    static const std::regex ENTRY(
        R"(^[0-9A-F]+ +LocalTagEntryBatch - ([0-9A-F]{4}) - A0240060-94EB-75CB-CE2A-CA4D51AB11D3 )");
    std::string tag;
    std::smatch m;
    for (std::string line; std::getline(trace, line);)
    {
        if (tag.empty() && std::regex_search(line, m, ENTRY))
            tag = m[1];
        else if (!tag.empty() && line.find(" " + tag + " (8 bytes)") != std::string::npos)
        {
            const auto item = std::stoull(line.substr(0, line.find(' ')), nullptr, 16);
            const std::string file = readFile(testData(name + ".mxf"));
            long long value = 0;
            for (std::size_t i = 0; i < 4; ++i)
                value = value << 8 | static_cast<unsigned char>(file.at(item + 4 + i));
            return value;
        }
    }
    ADD_FAILURE() << "no ResolutionID in the trace of " << name;
    return -1;
}

} // namespace

TEST(MxfInspectMetadata, AvidHeadersShowNothingUnknownAndTheirAvidPropertiesAgree)
{
    for (const std::string& name : AVID_FIXTURES)
        for (const bool meta : {false, true})
        {
            SCOPED_TRACE(name + (meta ? " --meta" : ""));
            std::vector<std::string> args = {"metadata", testData(name + ".mxf")};
            if (meta)
                args.push_back("--meta");
            const Outcome run = inspect(args);
            EXPECT_EQ(run.status, 0);
            EXPECT_EQ(run.err, "");
            const auto& lines = run.lines;
            ASSERT_GT(lines.size(), 2u);
            EXPECT_EQ(lines[1].rfind("AvidMetadataRoot {", 0), 0u) << lines[1];
            for (const std::string& line : lines)
                for (const char* dark :
                     {"unknown set", "unknown property", "misplaced", "missing", "not reached"})
                    EXPECT_EQ(line.find(dark), std::string::npos) << line;

            // The Preface's Avid properties name the packages.
            const std::size_t material = lineOf(lines, "MaterialPackage {");
            EXPECT_EQ(valueAfter(lines, "MasterMobID"), valueAfter(lines, "PackageUID", material));
            EXPECT_EQ(valueAfter(lines, "EssenceFileMobID"), valueAfter(lines, "LinkedPackageUID"));
            EXPECT_NE(valueAfter(lines, "MasterMobID"), "");
            EXPECT_NE(valueAfter(lines, "MasterMobID"), valueAfter(lines, "EssenceFileMobID"));
            if (name.find("_v1") != std::string::npos)
            {
                EXPECT_EQ(valueAfter(lines, "ResolutionID"),
                          std::to_string(resolutionIdInTheFile(name)));
            }

            // The object directory names every set, each where it is.
            std::smatch m;
            const std::string directory = valueAfter(lines, "ObjectDirectory");
            ASSERT_TRUE(std::regex_match(directory, m,
                                         std::regex(R"((\d+) entries at \d+, each at the set )"
                                                    R"(it names)")))
                << directory;
            EXPECT_EQ(m[1].str() + " sets", lines.back());

            // The meta-dictionary: a line a class, or all of it.
            const std::string classes = valueAfter(lines, "RootMetaDictionary");
            const auto described =
                std::count_if(lines.begin(), lines.end(),
                              [](const std::string& line)
                              { return line.find("ClassDefinition \"") != std::string::npos; });
            if (meta)
                EXPECT_GT(described, 54 * 2) << "each class, and as its properties' parent";
            else
            {
                EXPECT_NE(classes.find(": 54 classes, 113 types"), std::string::npos) << classes;
                EXPECT_EQ(described, 54);
            }
        }
}

TEST(MxfInspectMetadata, AvidObjectDirectoryThatDisagreesIsDamage)
{
    // Entry 0 names the root object; move its offset by one byte.
    std::string bytes = readFile(testData("imx50_a1.mxf"));
    const std::size_t directory = bytes.find("\x96\x13\xb3\x8a\x87\x34\x87\x46", 5000);
    ASSERT_NE(directory, std::string::npos);
    const std::size_t offset = directory + 16 + 9 + 9 + 16;
    ++bytes.at(offset + 7);
    TempDir dir;
    const auto path = dir.path() / "moved.mxf";
    std::ofstream(path, std::ios::binary) << bytes;
    const Outcome run = inspect({"metadata", path.string()});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(oneLine(run.err)) << run.err;
    EXPECT_NE(run.err.find("1 entries disagree with the sets found"), std::string::npos) << run.err;
    EXPECT_NE(valueAfter(run.lines, "ObjectDirectory").find(": the set is at 5120"),
              std::string::npos);
}
