#include "Transcoder/ErrorMessages.h"

#include "TranscoderTestSupport.h"

#include <gtest/gtest.h>
#include <mutex>

using KEP::Halvorn::ErrorMessages;

// The numbers are what hosts are given, so each name is pinned to its number here, once.
TEST(ErrorMessages, GivesTheEnglishTextOfEveryCodeAndAFallback)
{
    using namespace KEP::Halvorn;
    const struct
    {
        ErrorCode code;
        int number;
        const wchar_t* text;
    } codes[] = {
        {ERROR_TRANSCODING, 2, L"Unknown error while transcoding."},
        {ERROR_GENERATING_FILES, 3, L"Error received while generating files."},
        {ERROR_INPUT_NOT_SET, 4, L"Decoder pipe input file path is not set."},
        {ERROR_OUTPUT_NOT_SET, 5, L"Encoder pipe output file path is not set."},
        {ERROR_LOADING_DICTIONARY, 6, L"Error while loading the dictionary."},
        {ERROR_NO_DICTIONARY_FILE, 7,
         L"Error while loading the dictionary. No dictionary file was set in KEPModule."},
        {ERROR_LOADING_INPUT, 8, L"Failed to load input file."},
        {ERROR_ANALYZING_INPUT, 9, L"Error while analyzing input file."},
        {ERROR_NO_ESSENCE_TRACKS, 10,
         L"Input mxf file contains no valid essence tracks to perform transcoding."},
        {ERROR_UNSUPPORTED_CODING, 11, L"Input mp4 file contains a not supported coding type."},
        {ERROR_WRAPPING, 12, L"Error while wrapping essence."},
    };
    ErrorMessages& messages = ErrorMessages::instance();
    for (const auto& c : codes)
    {
        EXPECT_EQ(static_cast<int>(c.code), c.number);
        EXPECT_STREQ(messages.text(c.number), c.text) << c.number;
    }
    for (const int unknown : {0, 1, 13, -1, 1000})
        EXPECT_STREQ(messages.text(unknown), L"Unknown error occurred.") << unknown;
}

TEST(ErrorMessages, ReplaceChangesTheTextOfOneCode)
{
    ErrorMessages& messages = ErrorMessages::instance();
    const std::wstring english = messages.text(KEP::Halvorn::ERROR_INPUT_NOT_SET);
    {
        const std::lock_guard lock(messages.mutex());
        messages.replace(KEP::Halvorn::ERROR_INPUT_NOT_SET,
                         L"Le chemin du fichier d'entr\u00e9e n'est pas d\u00e9fini.");
    }
    EXPECT_STREQ(messages.text(KEP::Halvorn::ERROR_INPUT_NOT_SET),
                 L"Le chemin du fichier d'entr\u00e9e n'est pas d\u00e9fini.");
    EXPECT_STREQ(messages.text(KEP::Halvorn::ERROR_OUTPUT_NOT_SET),
                 L"Encoder pipe output file path is not set.");
    {
        const std::lock_guard lock(messages.mutex());
        messages.replace(KEP::Halvorn::ERROR_INPUT_NOT_SET, english.c_str());
    }
    EXPECT_EQ(messages.text(KEP::Halvorn::ERROR_INPUT_NOT_SET), english);
}

TEST(ErrorMessages, KeepsTheTextsWhenALanguageFileCannotBeRead)
{
    using namespace Halvorn::Test;
    RecordingLogger logger;
    ScopedLogger installed(logger);
    EXPECT_FALSE(KEPModule::instance().setErrorCodesFile(L"/nonexistent/halvorn-language.xml"));
    EXPECT_STREQ(ErrorMessages::instance().text(KEP::Halvorn::ERROR_INPUT_NOT_SET),
                 L"Decoder pipe input file path is not set.");
    ASSERT_EQ(logger.lines().size(), 1u);
    EXPECT_EQ(logger.lines()[0].level, 1);
    EXPECT_EQ(logger.lines()[0].text,
              L"Setting messages language according to file: /nonexistent/halvorn-language.xml");
}
