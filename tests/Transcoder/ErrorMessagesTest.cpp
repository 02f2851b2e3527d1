#include "Transcoder/ErrorMessages.h"

#include "TranscoderTestSupport.h"

#include <gtest/gtest.h>
#include <mutex>

using KEP::Halvorn::ErrorMessages;

TEST(ErrorMessages, GivesTheEnglishTextOfEveryCodeAndAFallback)
{
    ErrorMessages& messages = ErrorMessages::instance();
    EXPECT_STREQ(messages.text(2), L"Unknown error while transcoding.");
    EXPECT_STREQ(messages.text(3), L"Error received while generating files.");
    EXPECT_STREQ(messages.text(4), L"Decoder pipe input file path is not set.");
    EXPECT_STREQ(messages.text(5), L"Encoder pipe output file path is not set.");
    EXPECT_STREQ(messages.text(6), L"Error while loading the dictionary.");
    EXPECT_STREQ(messages.text(7),
                 L"Error while loading the dictionary. No dictionary file was set in KEPModule.");
    EXPECT_STREQ(messages.text(8), L"Failed to load input file.");
    EXPECT_STREQ(messages.text(9), L"Error while analyzing input file.");
    EXPECT_STREQ(messages.text(10),
                 L"Input mxf file contains no valid essence tracks to perform transcoding.");
    EXPECT_STREQ(messages.text(11), L"Input mp4 file contains a not supported coding type.");
    EXPECT_STREQ(messages.text(12), L"Error while wrapping essence.");
    for (const int unknown : {0, 1, 13, -1, 1000})
        EXPECT_STREQ(messages.text(unknown), L"Unknown error occurred.") << unknown;
}

TEST(ErrorMessages, ReplaceChangesTheTextOfOneCode)
{
    ErrorMessages& messages = ErrorMessages::instance();
    const std::wstring english = messages.text(4);
    {
        const std::lock_guard lock(messages.mutex());
        messages.replace(4, L"Le chemin du fichier d'entr\u00e9e n'est pas d\u00e9fini.");
    }
    EXPECT_STREQ(messages.text(4), L"Le chemin du fichier d'entr\u00e9e n'est pas d\u00e9fini.");
    EXPECT_STREQ(messages.text(5), L"Encoder pipe output file path is not set.");
    {
        const std::lock_guard lock(messages.mutex());
        messages.replace(4, english.c_str());
    }
    EXPECT_EQ(messages.text(4), english);
}

TEST(ErrorMessages, KeepsTheTextsWhenALanguageFileCannotBeRead)
{
    using namespace Halvorn::Test;
    RecordingLogger logger;
    ScopedLogger installed(logger);
    EXPECT_FALSE(KEPModule::instance().setErrorCodesFile(L"/nonexistent/halvorn-language.xml"));
    EXPECT_STREQ(ErrorMessages::instance().text(4), L"Decoder pipe input file path is not set.");
    ASSERT_EQ(logger.lines().size(), 1u);
    EXPECT_EQ(logger.lines()[0].level, 1);
    EXPECT_EQ(logger.lines()[0].text,
              L"Setting messages language according to file: /nonexistent/halvorn-language.xml");
}
