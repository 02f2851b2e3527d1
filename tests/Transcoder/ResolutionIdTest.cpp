#include "Transcoder/ResolutionId.h"

#include "Transcoder/LogEntry.h"
#include "TranscoderTestSupport.h"

#include <gtest/gtest.h>

using namespace KEP::Halvorn;
using Halvorn::Test::LogLine;
using Halvorn::Test::RecordingLogger;

namespace
{

constexpr bool INTERLACED = true;
constexpr bool PROGRESSIVE = false;

EssenceTrackInfo videoTrack(std::uint32_t bitRate, std::int32_t numerator, std::int32_t denominator,
                            bool interlaced, std::uint32_t displayWidth = 1920,
                            std::uint32_t displayHeight = 1080)
{
    EssenceTrackInfo track(5);
    track.coding = EssenceTrackInfo::CODING_VIDEO;
    track.editRate = MXF::SDK::Types::Rational(numerator, denominator);
    track.video.bitRate = bitRate;
    track.video.frameLayout = interlaced ? 1 : 0;
    track.video.displayWidth = displayWidth;
    track.video.displayHeight = displayHeight;
    return track;
}

} // namespace

TEST(FieldRate, ComparesTheStoredEditRateExactly)
{
    struct Row
    {
        std::int32_t numerator, denominator;
        int progressive, interlaced;
    };
    const Row rows[] = {
        {30000, 1001, 30, 60}, {60000, 1001, 60, 60}, {25, 1, 25, 50}, {50, 1, 50, 50},
        {24000, 1001, 24, 24}, {24, 1, 0, 0},         {50, 2, 0, 0},   {60000, 2002, 0, 0},
        {30, 1, 0, 0},         {60, 1, 0, 0},         {0, 1, 0, 0},    {25, 0, 0, 0},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(std::to_string(row.numerator) + "/" + std::to_string(row.denominator));
        EXPECT_EQ(fieldRate(videoTrack(0, row.numerator, row.denominator, PROGRESSIVE)),
                  row.progressive);
        EXPECT_EQ(fieldRate(videoTrack(0, row.numerator, row.denominator, INTERLACED)),
                  row.interlaced);
    }
}

// Every identifier of the tables, silently; a refusal gives 0 and one trace line saying why.
// Where Avid- and bmx-written files carry values for the same formats (4074, 4073, 4081, 4043,
// 4003) they agree; 50 Mbit/s 1080p25 (4076 elsewhere) is refused, and 50 Mbit/s 720p50 (4079
// elsewhere) shares the identifier of 1080i50: this product's own mapping stands.
TEST(ResolutionId, FollowsItsTablesAndSaysWhyItRefuses)
{
    RecordingLogger logger;
    Halvorn::Test::ScopedLogger installed(logger);
    const std::wstring bitRate = L"Unexpected bit rate in MPEG stream.";
    const std::wstring rate = L"Unexpected frame rate.";
    const std::wstring height = L"Unexpected display height for input video.";
    struct Row
    {
        std::uint32_t bitRate;
        std::int32_t numerator, denominator;
        bool interlaced;
        std::uint32_t width, height;
        int id;
        std::wstring line;
    };
    const Row rows[] = {
        // 25 and 50 Mbit/s: field rate 50 or 60, whatever the picture size.
        {25000000, 25, 1, INTERLACED, 1440, 1080, 4003, L""},
        {25000000, 50, 1, PROGRESSIVE, 1280, 720, 4003, L""},
        {25000000, 30000, 1001, INTERLACED, 1440, 1080, 4004, L""},
        {25000000, 60000, 1001, PROGRESSIVE, 1280, 720, 4004, L""},
        {50000000, 25, 1, INTERLACED, 1920, 1080, 4074, L""},
        {50000000, 50, 1, PROGRESSIVE, 1280, 720, 4074, L""},
        {50000000, 30000, 1001, INTERLACED, 1920, 1080, 4073, L""},
        {50000000, 60000, 1001, PROGRESSIVE, 1280, 720, 4073, L""},
        // 35 Mbit/s, 1080 lines or 540 a field: width 1440, then any other width.
        {35000000, 25, 1, INTERLACED, 1440, 1080, 4043, L""},
        {35000000, 25, 1, INTERLACED, 1920, 1080, 4081, L""},
        {35000000, 30000, 1001, INTERLACED, 1440, 1080, 4044, L""},
        {35000000, 30000, 1001, INTERLACED, 1920, 1080, 4080, L""},
        {35000000, 24000, 1001, PROGRESSIVE, 1440, 1080, 4045, L""},
        {35000000, 24000, 1001, PROGRESSIVE, 1920, 1080, 4084, L""},
        {35000000, 25, 1, PROGRESSIVE, 1440, 1080, 4043, L""},
        {35000000, 25, 1, PROGRESSIVE, 1920, 1080, 4083, L""},
        {35000000, 30000, 1001, PROGRESSIVE, 1440, 1080, 4044, L""},
        {35000000, 30000, 1001, PROGRESSIVE, 1920, 1080, 4082, L""},
        {35000000, 25, 1, INTERLACED, 1440, 540, 4043, L""},
        {35000000, 25, 1, INTERLACED, 1920, 540, 4081, L""},
        {35000000, 30000, 1001, INTERLACED, 1280, 540, 4080, L""},
        {35000000, 24000, 1001, PROGRESSIVE, 1920, 540, 4084, L""},
        // 35 Mbit/s, 720 lines: by field rate alone.
        {35000000, 24000, 1001, PROGRESSIVE, 1280, 720, 4087, L""},
        {35000000, 25, 1, PROGRESSIVE, 1280, 720, 4089, L""},
        {35000000, 30000, 1001, PROGRESSIVE, 1280, 720, 4088, L""},
        {35000000, 50, 1, PROGRESSIVE, 1280, 720, 4086, L""},
        {35000000, 60000, 1001, PROGRESSIVE, 1280, 720, 4085, L""},
        {35000000, 25, 1, INTERLACED, 1280, 720, 4086, L""},
        {35000000, 30000, 1001, INTERLACED, 1280, 720, 4085, L""},
        // Refused.
        {30000000, 25, 1, INTERLACED, 1920, 1080, 0, bitRate},
        {0, 25, 1, INTERLACED, 1920, 1080, 0, bitRate},
        {25000000, 25, 1, PROGRESSIVE, 1920, 1080, 0, rate},
        {25000000, 24000, 1001, PROGRESSIVE, 1920, 1080, 0, rate},
        {50000000, 24000, 1001, INTERLACED, 1920, 1080, 0, rate},
        {50000000, 24, 1, PROGRESSIVE, 1920, 1080, 0, rate},
        {50000000, 25, 1, PROGRESSIVE, 1920, 1080, 0, rate},
        {35000000, 24000, 1001, INTERLACED, 1920, 1080, 0, rate},
        {35000000, 50, 1, PROGRESSIVE, 1920, 1080, 0, rate},
        {35000000, 60000, 1001, PROGRESSIVE, 1440, 1080, 0, rate},
        {35000000, 24, 1, PROGRESSIVE, 1280, 720, 0, rate},
        {35000000, 25, 1, INTERLACED, 720, 576, 0, height},
        {35000000, 24, 1, INTERLACED, 1920, 1088, 0, height},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(::testing::Message()
                     << row.bitRate << " " << row.numerator << "/" << row.denominator
                     << (row.interlaced ? "i " : "p ") << row.width << "x" << row.height);
        EXPECT_EQ(resolutionId(videoTrack(row.bitRate, row.numerator, row.denominator,
                                          row.interlaced, row.width, row.height)),
                  row.id);
        const auto lines = logger.lines();
        logger.clear();
        ASSERT_EQ(lines.size(), row.line.empty() ? 0u : 1u);
        if (!row.line.empty())
        {
            EXPECT_EQ(lines[0].level, LOG_TRACE);
            EXPECT_EQ(lines[0].text, row.line);
        }
    }
}
