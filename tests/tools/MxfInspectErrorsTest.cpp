#include "InspectRun.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Halvorn::Test;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

namespace
{

std::string writeFile(const TempDir& dir, const std::string& name, const std::string& bytes)
{
    std::ofstream(dir.path() / name, std::ios::binary) << bytes;
    return (dir.path() / name).string();
}

// The arguments that make each subcommand read FILE and nothing else.
std::vector<std::string> argsFor(const std::string& command, const std::string& file,
                                 const TempDir& dir)
{
    if (command == "essence")
        return {command, file, "--track", "all", "--out", dir.path().string()};
    return {command, file};
}

} // namespace

// A file that cannot be read at all gives, for every subcommand, exit 2 and one line on stderr
// that names the file and says what is wrong, without the toolkit's check expression (-v keeps
// it).
TEST(MxfInspectErrors, UnreadableFilesGiveOneLineNamingTheFile)
{
    TempDir dir;
    const std::string png =
        std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16) + std::string(200, 'x');
    const struct
    {
        const char* what;
        std::string file;
        const char* says;
    } inputs[] = {
        {"empty file", writeFile(dir, "empty.mxf", ""), ""},
        {"PNG", writeFile(dir, "picture.png", png), ""},
        {"directory", dir.path().string(), "is a directory"},
        {"missing file", (dir.path() / "missing.mxf").string(), "Error opening: '"},
    };
    for (const char* command : {"klv", "partitions", "metadata", "index", "essence", "tracks"})
        for (const auto& input : inputs)
        {
            SCOPED_TRACE(std::string(command) + " on " + input.what);
            const Outcome run = inspect(argsFor(command, input.file, dir));
            EXPECT_EQ(run.status, 2);
            EXPECT_TRUE(oneLine(run.err)) << run.err;
            EXPECT_THAT(run.err, StartsWith("mxf-inspect: " + input.file + ": "));
            EXPECT_THAT(run.err, HasSubstr(input.says));
            EXPECT_THAT(run.err, Not(HasSubstr("!= 0")));
        }

    std::vector<std::string> verbose = argsFor("essence", inputs[3].file, dir);
    verbose.insert(verbose.begin(), "-v");
    EXPECT_THAT(inspect(verbose).err, HasSubstr("file_ != 0: Error opening: '"));
}

// The index segment's start and duration are added: a hostile start near the largest position
// is refused as damage, not wrapped into a negative edit unit.
TEST(MxfInspectErrors, IndexRefusesASegmentWhoseEndOverflows)
{
    std::string bytes = readFile(testData("xdcamhd422_1080i25.mxf"));
    // IndexStartPosition (tag 3F0C, 8 bytes) of the footer's segment.
    const std::size_t segment = damage("damaged_bad_index", "index_segment_at");
    const std::size_t tag = bytes.find(std::string("\x3f\x0c\x00\x08", 4), segment);
    ASSERT_NE(tag, std::string::npos);
    bytes.replace(tag + 4, 8, "\x7f\xff\xff\xff\xff\xff\xff\xf0");
    TempDir dir;
    const std::string file = writeFile(dir, "overflow.mxf", bytes);
    const Outcome run = inspect({"index", file});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(oneLine(run.err)) << run.err;
    EXPECT_THAT(run.err, HasSubstr(file + ": index segment at " + std::to_string(segment) +
                                   ": start 9223372036854775792 and duration 25"));
    for (const std::string& line : run.lines)
        EXPECT_THAT(line, Not(HasSubstr("to -"))) << "a wrapped end";
}
