#include "DecodePipes/InputFilesManager.h"

#include "DecodePipeTestSupport.h"
#include "MXF/SDK/Exceptions/Exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using KEP::Halvorn::DecodePipes::InputFilesManager;
using namespace Halvorn::Test;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace
{

// Stand-ins named 0, 1, 2... in a fresh folder, in the order given.
std::vector<std::wstring> standIns(const TempDir& dir, const std::vector<std::string>& texts)
{
    std::vector<std::wstring> names;
    for (std::size_t i = 0; i < texts.size(); ++i)
    {
        writeStandIn(dir.path() / std::to_string(i), texts[i]);
        names.push_back(dir.file(std::to_wstring(i)));
    }
    return names;
}

// An entry as "<label> <first>+<count> back <moveBack>", or "<label> whole".
std::string describe(const FileEntry& entry)
{
    if (entry.file == nullptr)
        return "none";
    const std::string label = readStandIn(*entry.file).label;
    if (!entry.bounded)
        return label + " whole";
    return label + " " + std::to_string(entry.firstFrame) + "+" + std::to_string(entry.frameCount) +
           " back " + std::to_string(entry.moveBack);
}

std::vector<std::string> entries(InputFilesManager& files)
{
    std::vector<std::string> all;
    for (bool more = files.currentEntry().file != nullptr; more; more = files.advance())
        all.push_back(describe(files.currentEntry()));
    return all;
}

struct Loaded
{
    bool result;
    std::vector<std::string> entries;
};

Loaded load(InputFilesManager& files, StandInProvider& provider, std::uint64_t inPoint,
            std::uint64_t wanted, bool useInOutPoint = true, std::int64_t clipOffset = 0)
{
    const bool result = files.load(provider, inPoint, wanted, clipOffset, useInOutPoint);
    return {result, entries(files)};
}

} // namespace

TEST(InputFilesManager, TakesEveryFileWholeWithoutInAndOutPoints)
{
    TempDir dir;
    InputFilesManager files;
    StandInProvider provider;
    files.setFiles(standIns(dir, {"100 A", "100 B", "100 C"}));
    EXPECT_EQ(files.firstFileName(), dir.file(L"0"));

    // The in point and the count are ignored when they are not in use.
    const Loaded loaded = load(files, provider, 150, 10, false, 7);
    EXPECT_TRUE(loaded.result);
    EXPECT_THAT(loaded.entries, ElementsAre("A whole", "B whole", "C whole"));
    EXPECT_THAT(provider.measured, ElementsAre("A", "B", "C"));
    EXPECT_EQ(files.totalFrames(), 300u);
    EXPECT_EQ(files.clipOffset(), 7);
    EXPECT_EQ(files.startFrame(), 0);
    EXPECT_EQ(files.getErrorCode(), 0);
    EXPECT_STREQ(files.getErrorMessage(), L"");

    // Past the last entry there is no file, and no way further.
    EXPECT_EQ(files.currentEntry().file, nullptr);
    EXPECT_FALSE(files.advance());

    // A reset drops the entries but keeps the names and the totals until the next load.
    files.reset();
    EXPECT_EQ(files.currentEntry().file, nullptr);
    EXPECT_EQ(files.totalFrames(), 300u);
    EXPECT_EQ(files.fileNames().size(), 3u);
    EXPECT_THAT(load(files, provider, 0, 0, false).entries,
                ElementsAre("A whole", "B whole", "C whole"));

    InputFilesManager empty;
    EXPECT_STREQ(empty.firstFileName(), L"");
}

TEST(InputFilesManager, BoundsTheFileHoldingTheInPointAndTrimsTheLast)
{
    TempDir dir;
    StandInProvider provider;
    {
        // In point 150, 100 frames wanted, over three files of 100.
        // A: 100 + 0 is below 150: skipped whole, skipped = 100, nothing recorded.
        // B: 100 + 100 = 200 holds it: length = 100 - 150 wraps, capped to 100; first =
        //    150 - 100 = 50; bounded to 50 frames (50..99); total 50.
        // C: 100 + 50 = 150 is not below 100: bounded to 100 - 50 = 50 frames; total 100.
        InputFilesManager files;
        files.setFiles(standIns(dir, {"100 A", "100 B", "100 C"}));
        EXPECT_THAT(load(files, provider, 150, 100).entries,
                    ElementsAre("B 50+100 back 0", "C 0+50 back 0"));
        EXPECT_EQ(files.totalFrames(), 100u);
        EXPECT_EQ(files.startFrame(), 150);
        EXPECT_EQ(files.clipOffset(), 0);
    }
    {
        // The length of the first entry is measured against the overall in point.
        // A (100): skipped, skipped = 100.
        // B (300): length = 300 - 150 = 150, not the 250 left after frame 50; first = 50; total
        //    150.
        // C (100): 100 + 150 = 250 is not below 200: bounded to 200 - 150 = 50; total 200.
        InputFilesManager files;
        files.setFiles(standIns(dir, {"100 A", "300 B", "100 C"}));
        EXPECT_THAT(load(files, provider, 150, 200).entries,
                    ElementsAre("B 50+150 back 0", "C 0+50 back 0"));
        EXPECT_EQ(files.totalFrames(), 200u);
    }
    {
        // In point 0, 250 wanted over three files of 100.
        // A: length = min(100 - 0, 250) = 100; total 100.
        // B: 100 + 100 = 200 is below 250: wanted whole; total 200.
        // C: 100 + 200 = 300 is not: bounded to 250 - 200 = 50; total 250.
        InputFilesManager files;
        files.setFiles(standIns(dir, {"100 A", "100 B", "100 C"}));
        EXPECT_THAT(load(files, provider, 0, 250).entries,
                    ElementsAre("A 0+100 back 0", "B whole", "C 0+50 back 0"));
        EXPECT_EQ(files.totalFrames(), 250u);
    }
    {
        // In point 100, exactly A's end: 100 + 0 is not below 100, so A is kept with first =
        // 100 and length min(100 - 100, 50) = 0. B then gives the 50 frames.
        InputFilesManager files;
        files.setFiles(standIns(dir, {"100 A", "100 B", "100 C"}));
        provider.measured.clear();
        EXPECT_THAT(load(files, provider, 100, 50).entries,
                    ElementsAre("A 100+0 back 0", "B 0+50 back 0"));
        EXPECT_THAT(provider.measured, ElementsAre("A", "B"));
        EXPECT_EQ(files.totalFrames(), 50u);
    }
    {
        // 200 wanted are reached exactly at B's end (100 + 100 is not below 200, so B is bounded
        // to 100): the third name is never opened, though it names no file.
        InputFilesManager files;
        std::vector<std::wstring> names = standIns(dir, {"100 A", "100 B"});
        names.push_back(dir.file(L"missing"));
        files.setFiles(names);
        EXPECT_THAT(load(files, provider, 0, 200).entries,
                    ElementsAre("A 0+100 back 0", "B 0+100 back 0"));
        EXPECT_EQ(files.totalFrames(), 200u);
    }
}

TEST(InputFilesManager, MovesTheStartBackWhereTheFormatSaysSo)
{
    // Frames can only start every 12th. In point 130, 50 wanted, offset 1000.
    // A (100): skipped, skipped = 100.
    // B (100): length = 100 - 130 wraps, capped to 50; first = 30; the start moves back to 24,
    //    by 6, and the file now holds 24..79: 56 frames.
    // startFrame = 130 - 6 = 124; clipOffset = 1000 + 6; 56 frames reach the 50 wanted.
    TempDir dir;
    StandInProvider provider;
    provider.gop = 12;
    InputFilesManager files;
    files.setFiles(standIns(dir, {"100 A", "100 B", "100 C"}));
    EXPECT_THAT(load(files, provider, 130, 50, true, 1000).entries, ElementsAre("B 30+50 back 6"));
    EXPECT_EQ(files.startFrame(), 124);
    EXPECT_EQ(files.clipOffset(), 1006);
    EXPECT_EQ(files.totalFrames(), 56u);
}

TEST(InputFilesManager, ReportsFilesItCannotUse)
{
    TempDir dir;
    {
        // An in point past the end of all files: no entries, code 8, and still true.
        InputFilesManager files;
        StandInProvider provider;
        files.setFiles(standIns(dir, {"100 A", "100 B", "100 C"}));
        const Loaded loaded = load(files, provider, 400, 10);
        EXPECT_TRUE(loaded.result);
        EXPECT_THAT(loaded.entries, IsEmpty());
        EXPECT_THAT(provider.measured, ElementsAre("A", "B", "C"));
        EXPECT_EQ(files.getErrorCode(), ERROR_LOADING_INPUT);
        EXPECT_STREQ(files.getErrorMessage(), L" -> Unable to load input sources.");
        EXPECT_EQ(files.totalFrames(), 0u);
        // The detail grows with each failure.
        EXPECT_TRUE(load(files, provider, 400, 10).result);
        EXPECT_STREQ(files.getErrorMessage(),
                     L" -> Unable to load input sources. -> Unable to load input sources.");
    }
    {
        // Nothing wanted: done before the first file is opened.
        InputFilesManager files;
        StandInProvider provider;
        files.setFiles(standIns(dir, {"100 A"}));
        EXPECT_TRUE(load(files, provider, 0, 0).result);
        EXPECT_THAT(provider.measured, IsEmpty());
        EXPECT_EQ(files.getErrorCode(), ERROR_LOADING_INPUT);
    }
    {
        // A duration that can't be told ends the load there.
        InputFilesManager files;
        StandInProvider provider;
        files.setFiles(standIns(dir, {"100 A", "? B", "100 C"}));
        EXPECT_FALSE(files.load(provider, 0, 0, 0, false));
        EXPECT_THAT(provider.measured, ElementsAre("A", "B"));
        EXPECT_EQ(files.getErrorCode(), ERROR_LOADING_INPUT);
        EXPECT_STREQ(files.getErrorMessage(), L" -> Failed to load file duration.");
    }
    {
        // A file that isn't there: the error of opening it passes.
        InputFilesManager files;
        StandInProvider provider;
        std::vector<std::wstring> names = standIns(dir, {"100 A"});
        names.push_back(dir.file(L"missing"));
        files.setFiles(names);
        try
        {
            files.load(provider, 0, 0, 0, false);
            FAIL() << "no exception";
        }
        catch (const MXF::SDK::Exceptions::IOError& e)
        {
            EXPECT_THAT(e.message(), HasSubstr(L"Error opening"));
        }
    }
}
