#include "Transcoder/ResolutionId.h"

#include "Transcoder/LoggerHolder.h"
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

// Routes the library's log lines to `logger` for the life of the scope.
class LogCapture
{
public:
    LogCapture() { LoggerHolder::instance().setLogger(&logger); }
    ~LogCapture() { LoggerHolder::instance().setLogger(nullptr); }

    std::vector<LogLine> take()
    {
        auto lines = logger.lines();
        logger.clear();
        return lines;
    }

    RecordingLogger logger;
};

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

TEST(ResolutionId, GivesEveryIdentifierOfItsTablesSilently)
{
    LogCapture capture;
    struct Row
    {
        std::uint32_t bitRate;
        std::int32_t numerator, denominator;
        bool interlaced;
        std::uint32_t width, height;
        int id;
    };
    const Row rows[] = {
        // 25 Mbit/s: field rate 50 or 60, whatever the picture size.
        {25000000, 25, 1, INTERLACED, 1440, 1080, 4003},
        {25000000, 50, 1, PROGRESSIVE, 1280, 720, 4003},
        {25000000, 30000, 1001, INTERLACED, 1440, 1080, 4004},
        {25000000, 60000, 1001, PROGRESSIVE, 1280, 720, 4004},
        // 50 Mbit/s likewise.
        {50000000, 25, 1, INTERLACED, 1920, 1080, 4074},
        {50000000, 50, 1, PROGRESSIVE, 1280, 720, 4074},
        {50000000, 30000, 1001, INTERLACED, 1920, 1080, 4073},
        {50000000, 60000, 1001, PROGRESSIVE, 1280, 720, 4073},
        // 35 Mbit/s, 1080 lines or 540 a field: width 1440, then any other width.
        {35000000, 25, 1, INTERLACED, 1440, 1080, 4043},
        {35000000, 25, 1, INTERLACED, 1920, 1080, 4081},
        {35000000, 30000, 1001, INTERLACED, 1440, 1080, 4044},
        {35000000, 30000, 1001, INTERLACED, 1920, 1080, 4080},
        {35000000, 24000, 1001, PROGRESSIVE, 1440, 1080, 4045},
        {35000000, 24000, 1001, PROGRESSIVE, 1920, 1080, 4084},
        {35000000, 25, 1, PROGRESSIVE, 1440, 1080, 4043},
        {35000000, 25, 1, PROGRESSIVE, 1920, 1080, 4083},
        {35000000, 30000, 1001, PROGRESSIVE, 1440, 1080, 4044},
        {35000000, 30000, 1001, PROGRESSIVE, 1920, 1080, 4082},
        {35000000, 25, 1, INTERLACED, 1440, 540, 4043},
        {35000000, 25, 1, INTERLACED, 1920, 540, 4081},
        {35000000, 30000, 1001, INTERLACED, 1280, 540, 4080},
        {35000000, 24000, 1001, PROGRESSIVE, 1920, 540, 4084},
        // 35 Mbit/s, 720 lines: by field rate alone.
        {35000000, 24000, 1001, PROGRESSIVE, 1280, 720, 4087},
        {35000000, 25, 1, PROGRESSIVE, 1280, 720, 4089},
        {35000000, 30000, 1001, PROGRESSIVE, 1280, 720, 4088},
        {35000000, 50, 1, PROGRESSIVE, 1280, 720, 4086},
        {35000000, 60000, 1001, PROGRESSIVE, 1280, 720, 4085},
        {35000000, 25, 1, INTERLACED, 1280, 720, 4086},
        {35000000, 30000, 1001, INTERLACED, 1280, 720, 4085},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(::testing::Message()
                     << row.bitRate << " " << row.numerator << "/" << row.denominator
                     << (row.interlaced ? "i " : "p ") << row.width << "x" << row.height);
        EXPECT_EQ(resolutionId(videoTrack(row.bitRate, row.numerator, row.denominator,
                                          row.interlaced, row.width, row.height)),
                  row.id);
        EXPECT_TRUE(capture.take().empty());
    }
}

TEST(ResolutionId, RefusesWithOneTraceLineSayingWhy)
{
    LogCapture capture;
    const std::wstring badBitRate = L"Unexpected bit rate in MPEG stream.";
    const std::wstring badRate = L"Unexpected frame rate.";
    const std::wstring badHeight = L"Unexpected display height for input video.";
    struct Row
    {
        EssenceTrackInfo track;
        std::wstring line;
    };
    const Row rows[] = {
        {videoTrack(30000000, 25, 1, INTERLACED), badBitRate},
        {videoTrack(0, 25, 1, INTERLACED), badBitRate},
        {videoTrack(25000000, 25, 1, PROGRESSIVE), badRate},
        {videoTrack(25000000, 24000, 1001, PROGRESSIVE), badRate},
        {videoTrack(50000000, 24000, 1001, INTERLACED), badRate},
        {videoTrack(50000000, 24, 1, PROGRESSIVE), badRate},
        {videoTrack(35000000, 24000, 1001, INTERLACED, 1920, 1080), badRate},
        {videoTrack(35000000, 50, 1, PROGRESSIVE, 1920, 1080), badRate},
        {videoTrack(35000000, 60000, 1001, PROGRESSIVE, 1440, 1080), badRate},
        {videoTrack(35000000, 24, 1, PROGRESSIVE, 1280, 720), badRate},
        {videoTrack(35000000, 25, 1, INTERLACED, 720, 576), badHeight},
        {videoTrack(35000000, 24, 1, INTERLACED, 1920, 1088), badHeight},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(::testing::Message()
                     << row.track.video.bitRate << " " << row.track.video.displayHeight);
        EXPECT_EQ(resolutionId(row.track), 0);
        const auto lines = capture.take();
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0].level, LOG_TRACE);
        EXPECT_EQ(lines[0].text, row.line);
    }
}

// Values that Avid-written and bmx-written files carry for the same formats.
TEST(ResolutionId, AgreesWithPublishedValuesWhereTheyOverlap)
{
    LogCapture capture;
    EXPECT_EQ(resolutionId(videoTrack(50000000, 25, 1, INTERLACED)), 4074);
    EXPECT_EQ(resolutionId(videoTrack(50000000, 30000, 1001, INTERLACED)), 4073);
    EXPECT_EQ(resolutionId(videoTrack(35000000, 25, 1, INTERLACED, 1920, 1080)), 4081);
    EXPECT_EQ(resolutionId(videoTrack(35000000, 25, 1, INTERLACED, 1440, 1080)), 4043);
    EXPECT_EQ(resolutionId(videoTrack(25000000, 25, 1, INTERLACED, 1440, 1080)), 4003);

    // Two formats where other writers differ, and this product's own mapping stands: 50 Mbit/s
    // 1080p25 (4076 elsewhere) is refused, and 50 Mbit/s 720p50 (4079 elsewhere) shares the
    // identifier of 1080i50.
    EXPECT_EQ(resolutionId(videoTrack(50000000, 25, 1, PROGRESSIVE)), 0);
    EXPECT_EQ(resolutionId(videoTrack(50000000, 50, 1, PROGRESSIVE, 1280, 720)), 4074);
}
