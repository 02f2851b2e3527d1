// Its own program: the module must not exist before this test makes it.
#include "KEP/Halvorn/KEPModule.h"
#include "Transcoder/LoggerHolder.h"
#include "TranscoderTestSupport.h"

#include <gtest/gtest.h>
#include <latch>

using namespace Halvorn::Test;

TEST(KEPModule, FirstUseFromTwoThreadsMakesOneModuleWithTheEnglishTexts)
{
    RecordingLogger logger;
    LoggerHolder::instance().setLogger(&logger);

    std::latch ready(2);
    KEPModule* made[2] = {};
    auto use = [&](int i)
    {
        ready.arrive_and_wait();
        made[i] = &KEPModule::instance();
    };
    std::thread first(use, 0), second(use, 1);
    first.join();
    second.join();
    EXPECT_EQ(made[0], made[1]);

    const std::vector<LogLine> lines = logger.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].level, 0);
    EXPECT_EQ(lines[0].text, L"Created Singleton KEPModule.");
    EXPECT_EQ(lines[1].level, 1);
    EXPECT_EQ(lines[1].text, L"Setting default error messages language to English.");

    ASSERT_NE(made[0]->mxfBinaryDictionary(), nullptr);
    EXPECT_STREQ(made[0]->mxfBinaryDictionary(), L"");
    EXPECT_EQ(made[0]->getLogger(), &logger);
    made[0]->installLogger(nullptr);
}
