#include "MXF/SDK/Utils/TimeCode.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "TestSupport.h"

#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <regex>
#include <tuple>

using namespace MXF::SDK;
using Halvorn::Test::Support::thrownMessage;
using Utils::TimeCode;

namespace
{

// SMPTE 12M drop frame: frame labels 0 and 1 (0 to 3 at 60) are skipped at the start of every
// minute except minutes 0, 10, 20, 30, 40 and 50.
std::int64_t dropFrameCount(int nominalRate, int h, int m, int s, int f)
{
    const int dropped = nominalRate / 15; // 2 at 30, 4 at 60
    const int totalMinutes = 60 * h + m;
    return (3600LL * h + 60 * m + s) * nominalRate + f -
           std::int64_t(dropped) * (totalMinutes - totalMinutes / 10);
}

} // namespace

TEST(TimeCode, DropFrameAt2997SkipsTwoLabelsAMinuteExceptEveryTenth)
{
    EXPECT_EQ(TimeCode(30, std::int64_t(1800), true).toString(), L"00:01:00:02");
    EXPECT_EQ(TimeCode(30, std::int64_t(17982), true).toString(), L"00:10:00:00");
    EXPECT_EQ(TimeCode(30, 0, 10, 0, 0, true).frameCount(), 17982);
    EXPECT_EQ(TimeCode(30, 1, 0, 0, 0, true).frameCount(), 107892);
    for (int m = 0; m < 60; ++m)
    {
        const int first = m % 10 == 0 ? 0 : 2;
        const std::int64_t n = dropFrameCount(30, 0, m, 0, first);
        const TimeCode label(30, 0, m, 0, first, true);
        EXPECT_EQ(label.frameCount(), n) << "minute " << m;
        EXPECT_EQ(TimeCode(30, n, true), label) << "minute " << m;
        if (m > 0)
        {
            TimeCode before(30, n - 1, true);
            EXPECT_EQ(before.seconds(), 59);
            ++before;
            EXPECT_EQ(before.toString(), label.toString()) << "minute " << m;
        }
        if (first == 2)
        {
            EXPECT_THROW(TimeCode(30, 0, m, 0, 1, true), Exceptions::InvalidValue);
        }
    }
    EXPECT_EQ(thrownMessage<Exceptions::InvalidValue>([] { TimeCode(30, 0, 1, 0, 0, true); }),
              L"Invalid value of 00:01:00:00 for 30 fps drop frame timecode");
}

TEST(TimeCode, DropFrameAt5994CountsFields)
{
    for (const auto& [h, m, s, f] :
         {std::tuple{0, 1, 0, 4}, {0, 10, 0, 0}, {1, 0, 0, 0}, {9, 59, 59, 59}, {23, 59, 59, 58}})
    {
        const std::int64_t n = dropFrameCount(60, h, m, s, f);
        const TimeCode tc(60, n, true);
        EXPECT_EQ(tc.hours(), h);
        EXPECT_EQ(tc.minutes(), m);
        EXPECT_EQ(tc.seconds(), s);
        EXPECT_EQ(tc.frames(), f / 2) << "frames count field pairs";
        EXPECT_EQ(tc.fieldPhase(), f % 2 == 1);
        EXPECT_EQ(tc.frameCount(), n);
    }
    EXPECT_EQ(TimeCode(60, 1, 0, 0, 0, true).frameCount(), 215784);
}

TEST(TimeCode, WholeDaysWrapPastMidnight)
{
    EXPECT_EQ(TimeCode(25, std::int64_t(2160000), false).toString(), L"00:00:00:00");
    EXPECT_EQ(TimeCode(25, std::int64_t(2160000 + 26), false).toString(), L"00:00:01:01");
    EXPECT_EQ(TimeCode(30, std::int64_t(107892 * 24 + 1800), true).toString(), L"00:01:00:02");
    TimeCode last(25, 23, 59, 59, 24);
    EXPECT_EQ(last.frameCount(), 2159999);
    ++last;
    EXPECT_EQ(last.toString(), L"00:00:00:00");
    for (std::int64_t n = 0; n < 2160000; n += 997)
        ASSERT_EQ(TimeCode(25, n, false).frameCount(), n);
    for (std::int64_t n = 0; n < 107892 * 24; n += 991)
        ASSERT_EQ(TimeCode(30, n, true).frameCount(), n);
}

TEST(TimeCode, FieldPhaseAtFiftyAndSixty)
{
    const TimeCode three(50, std::int64_t(3), false);
    EXPECT_EQ(three.toString(true), L"00:00:00:01.1");
    EXPECT_TRUE(three.fieldPhase());
    TimeCode tc(50, 0, 0, 0, 24);
    ++tc;
    EXPECT_EQ(tc.toString(true), L"00:00:00:24.1");
    ++tc;
    EXPECT_EQ(tc.toString(true), L"00:00:01:00.0");
    EXPECT_EQ(TimeCode(60, 0, 0, 0, 0, true).toString(true, true), L"00:00:00:00.0 (DF)");
    EXPECT_EQ(
        thrownMessage<Exceptions::InvalidValue>([] { TimeCode(25, 0, 0, 0, 0, false, true); }),
        L"this -> multiplexFactor () != 1: Field Phase value is only supported for frame "
        L"rate of 60 or 50.");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidValue>([] { TimeCode(50, 0, 0, 0, 25); }),
              L"Invalid value of 00:00:00:25 for 50 fps timecode");
}

TEST(TimeCode, InvalidValuesAndRefusedChanges)
{
    const TimeCode negative(25, std::int64_t(-1), false);
    EXPECT_EQ(negative.toString(), L"--:--:--:--");
    EXPECT_EQ(negative, TimeCode(30, std::int64_t(-5), false));
    EXPECT_FALSE(negative == TimeCode(25));
    EXPECT_EQ(thrownMessage<Exceptions::InvalidValue>([] { TimeCode(25, std::int64_t(10), true); }),
              L"Drop frame only allowed in 30 or 60 fps timecode and not for 25 fps timecode.");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidValue>([] { TimeCode(25, 24, 0, 0, 0); }),
              L"Invalid value of 24:00:00:00 for 25 fps timecode");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidValue>([] { TimeCode(std::uint8_t(0)); }),
              L"frameRate_ > 0: Invalid frameRate.");
    TimeCode tc(25, 10, 0, 0, 0);
    EXPECT_THROW(tc.setMinutes(60), Exceptions::InvalidValue);
    EXPECT_THROW(tc.setDropFrame(true), Exceptions::InvalidValue);
    EXPECT_EQ(tc.toString(), L"10:00:00:00") << "a refused change leaves the value alone";
    EXPECT_TRUE(TimeCode(25, 9, 59, 59, 24) < tc);
    EXPECT_FALSE(TimeCode(30, 10, 0, 0, 0, true) == TimeCode(30, 10, 0, 0, 0, false));
    Utils::TimeCodeExtended extended(25, 1, 2, 3, 4);
    extended.setBinaryGroup0(0x12345678);
    const Utils::TimeCodeExtended copy = extended;
    EXPECT_EQ(copy.binaryGroup0(), 0x12345678u);
    EXPECT_EQ(copy.toString(), L"01:02:03:04");
}

TEST(TimeCode, StartOfThe2997FixtureMatchesFfprobe)
{
    const std::string data =
        std::getenv("HALVORN_TEST_DATA") ? std::getenv("HALVORN_TEST_DATA") : "";
    std::ifstream probe(data + "/expected/xdcamhd422_1080i2997df.ffprobe.json");
    std::ifstream trace(data + "/expected/xdcamhd422_1080i2997df.mediainfo-trace.txt");
    ASSERT_TRUE(probe && trace) << "fixture expectations not found under " << data;
    const std::string probeText((std::istreambuf_iterator<char>(probe)), {});
    const std::string traceText((std::istreambuf_iterator<char>(trace)), {});
    std::smatch tcMatch, startMatch;
    ASSERT_TRUE(std::regex_search(probeText, tcMatch, std::regex("\"timecode\": \"([0-9:;]+)\"")));
    ASSERT_TRUE(std::regex_search(traceText, startMatch, std::regex("StartTimecode - ([0-9]+) ")));
    const TimeCode start(30, std::int64_t(std::stoll(startMatch[1])), true);
    std::wstring text = start.toString();
    text[8] = L';'; // ffprobe marks drop frame with the last separator
    EXPECT_EQ(text, std::wstring(tcMatch[1].first, tcMatch[1].second));
}
