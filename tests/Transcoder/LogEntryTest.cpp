#include "Transcoder/LogEntry.h"

#include "Transcoder/LoggerHolder.h"
#include "TranscoderTestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Halvorn::Test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

LogEntry noteWithSuffix(RecordingLogger& logger)
{
    LogEntry entry(logger, LOG_NOTE, L"Enqueue timeout for track: ");
    entry << 7;
    return entry;
}

} // namespace

TEST(LogEntry, WritesItsLineOnceWhenItsLastHolderEnds)
{
    RecordingLogger logger;
    {
        LogEntry entry(logger, LOG_ERROR, L"Unable to create AAF ");
        entry << L"file" << std::wstring(L" at ") << 2 << L'.';
        EXPECT_THAT(logger.texts(), IsEmpty());
    }
    ASSERT_EQ(logger.lines().size(), 1u);
    EXPECT_EQ(logger.lines()[0].level, LOG_ERROR);
    EXPECT_EQ(logger.lines()[0].text, L"Unable to create AAF file at 2.");

    logger.clear();
    const std::size_t duringExpression =
        (noteWithSuffix(logger) << L" (late)", logger.lines().size());
    EXPECT_EQ(duringExpression, 0u);
    ASSERT_EQ(logger.lines().size(), 1u);
    EXPECT_EQ(logger.lines()[0].level, LOG_NOTE);
    EXPECT_EQ(logger.lines()[0].text, L"Enqueue timeout for track: 7 (late)");

    logger.clear();
    {
        LogEntry first(logger, LOG_TRACE, L"moved");
        {
            LogEntry second(std::move(first));
            second << L" on";
        }
        EXPECT_THAT(logger.texts(), ElementsAre(L"moved on"));
    }
    EXPECT_THAT(logger.texts(), ElementsAre(L"moved on"));
}

TEST(LoggerHolder, SendsLinesToTheLoggerCurrentWhenTheyBegan)
{
    LoggerHolder& holder = LoggerHolder::instance();
    holder.setLogger(nullptr);
    EXPECT_EQ(holder.logger(), nullptr);
    logEntry(LOG_ERROR, L"discarded") << 1;

    RecordingLogger first, second;
    holder.setLogger(&first);
    EXPECT_EQ(holder.logger(), &first);
    {
        LogEntry begun = logEntry(LOG_TRACE, L"begun with the first");
        holder.setLogger(&second);
        logEntry(LOG_NOTE, L"to the second");
    }
    holder.setLogger(nullptr);
    EXPECT_EQ(holder.logger(), nullptr);
    EXPECT_THAT(first.texts(), ElementsAre(L"begun with the first"));
    EXPECT_THAT(second.texts(), ElementsAre(L"to the second"));
}
