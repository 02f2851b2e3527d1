#include "KEP/Halvorn/KEPModule.h"

#include "Transcoder/DictionaryFile.h"
#include "Transcoder/LoggerHolder.h"
#include "TranscoderTestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
