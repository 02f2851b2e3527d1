#include "KEP/Halvorn/KEPModule.h"

#include "Transcoder/DictionaryFile.h"
#include "Transcoder/LoggerHolder.h"
#include "TranscoderTestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

using namespace Halvorn::Test;
using ::testing::ElementsAre;

TEST(KEPModule, InstallsTheHostLoggerAndFallsBackToDiscarding)
{
    KEPModule& module = KEPModule::instance();
    EXPECT_EQ(&module, &KEPModule::instance());
    module.installLogger(nullptr);
    EXPECT_EQ(module.getLogger(), nullptr);
    logEntry(LOG_NOTE, L"nobody hears this");

    RecordingLogger logger;
    module.installLogger(&logger);
    EXPECT_EQ(module.getLogger(), &logger);
    logEntry(LOG_NOTE, L"Process stopped by request of the API.");
    module.installLogger(nullptr);
    EXPECT_EQ(module.getLogger(), nullptr);
    logEntry(LOG_NOTE, L"nor this");
    EXPECT_THAT(logger.texts(), ElementsAre(L"Process stopped by request of the API."));
}

TEST(KEPModule, KeepsItsOwnCopyOfTheDictionaryPath)
{
    KEPModule& module = KEPModule::instance();
    wchar_t path[] = L"/dictionaries/mxf.bin";
    module.mxfBinaryDictionary(path);
    path[1] = L'X';
    EXPECT_STREQ(module.mxfBinaryDictionary(), L"/dictionaries/mxf.bin");
    EXPECT_EQ(KEP::Halvorn::currentDictionaryFile(), L"/dictionaries/mxf.bin");

    module.mxfBinaryDictionary(L"");
    ASSERT_NE(module.mxfBinaryDictionary(), nullptr);
    EXPECT_STREQ(module.mxfBinaryDictionary(), L"");
    module.mxfBinaryDictionary(nullptr);
    ASSERT_NE(module.mxfBinaryDictionary(), nullptr);
    EXPECT_STREQ(module.mxfBinaryDictionary(), L"");
}

// A path read on one thread while another sets paths of other lengths: what was handed out must
// stay readable (ASan and TSan see a freed or raced buffer).
TEST(KEPModule, AHandedOutDictionaryPathSurvivesAConcurrentSet)
{
    KEPModule& module = KEPModule::instance();
    const std::wstring shortPath = L"/d.bin";
    const std::wstring longPath = L"/a/dictionary/path/long/enough/to/leave/the/small/buffer.bin";
    module.mxfBinaryDictionary(shortPath.c_str());
    std::thread setter(
        [&]
        {
            for (int i = 0; i < 20000; ++i)
                module.mxfBinaryDictionary((i % 2 != 0 ? shortPath : longPath).c_str());
        });
    int bad = 0;
    for (int i = 0; i < 20000; ++i)
    {
        const std::wstring seen = module.mxfBinaryDictionary();
        bad += seen != shortPath && seen != longPath;
    }
    setter.join();
    EXPECT_EQ(bad, 0);
}
