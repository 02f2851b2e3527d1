#include "Transcoder/ErrorMessages.h"
#include "TranscoderTestSupport.h"

#include <cstdlib>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <mutex>

using KEP::Halvorn::ErrorMessages;
using namespace Halvorn::Test;

namespace
{

const std::wstring UNKNOWN = L"Unknown error occurred.";

// The English texts as the catalogue holds them before any file is read (ErrorMessagesTest holds
// them against their codes).
const std::map<int, std::wstring> ENGLISH = []
{
    std::map<int, std::wstring> english;
    for (int code = ERROR_TRANSCODING; code <= ERROR_WRAPPING; ++code)
        english[code] = ErrorMessages::instance().text(code);
    return english;
}();

std::wstring languageFile(const std::string& name)
{
    const char* dir = std::getenv("HALVORN_TEST_DATA");
    return MXF::SDK::Platform::fromUtf8(std::string(dir ? dir : "tests/data") + "/sidecars/" +
                                        name);
}

// The catalogue is shared by the whole process, and only a file brings English back. Code 1 can't
// be taken out again, but the fallback text stands for it just as well.
void backToEnglish()
{
    ErrorMessages& messages = ErrorMessages::instance();
    const std::lock_guard lock(messages.mutex());
    messages.replace(1, UNKNOWN.c_str());
    for (const auto& [code, text] : ENGLISH)
        messages.replace(code, text.c_str());
}

// English for every code from 0 to 13, but for `changed`.
void expectTexts(const std::map<int, std::wstring>& changed)
{
    for (int code = 0; code <= 13; ++code)
    {
        std::wstring expected = UNKNOWN;
        if (const auto found = changed.find(code); found != changed.end())
            expected = found->second;
        else if (const auto english = ENGLISH.find(code); english != ENGLISH.end())
            expected = english->second;
        EXPECT_EQ(ErrorMessages::instance().text(code), expected) << "code " << code;
    }
}

bool setErrorCodesFile(const std::wstring& path)
{
    return KEPModule::instance().setErrorCodesFile(path.c_str());
}

} // namespace

TEST(LanguageFile, OverlaysOnlyTheCodesOneToTwelveThatItHolds)
{
    RecordingLogger logger;
    ScopedLogger installed(logger);
    backToEnglish();

    // Beside code 4 it holds codes 0 and 13, "04", and a code 5 outside ErrorCodes.
    const std::wstring only4 = languageFile("language/id-4-only.xml");
    EXPECT_TRUE(setErrorCodesFile(only4));
    expectTexts({{ERROR_INPUT_NOT_SET, L"No input file was chosen for the decoder."}});
    ASSERT_EQ(logger.lines().size(), 1u);
    EXPECT_EQ(logger.lines()[0].level, 1);
    EXPECT_EQ(logger.lines()[0].text, L"Setting messages language according to file: " + only4);

    // Each file overlays what the ones before it left.
    EXPECT_TRUE(setErrorCodesFile(languageFile("language/empty-message.xml")));
    expectTexts({{ERROR_INPUT_NOT_SET, L"No input file was chosen for the decoder."},
                 {ERROR_LOADING_DICTIONARY, L""}});
    EXPECT_TRUE(setErrorCodesFile(languageFile("language/missing-attributes.xml")));
    expectTexts(
        {{ERROR_INPUT_NOT_SET, L"No input file was chosen for the decoder."},
         {ERROR_LOADING_DICTIONARY, L""},
         {ERROR_NO_ESSENCE_TRACKS, L"The MXF file holds no track that can be transcoded."}});
    EXPECT_TRUE(setErrorCodesFile(languageFile("language/wrong-root.xml")));
    expectTexts(
        {{ERROR_INPUT_NOT_SET, L"No input file was chosen for the decoder."},
         {ERROR_LOADING_DICTIONARY, L""},
         {ERROR_NO_ESSENCE_TRACKS, L"The MXF file holds no track that can be transcoded."}});

    backToEnglish();
    EXPECT_TRUE(setErrorCodesFile(languageFile("language/fr.xml")));
    expectTexts({
        {1, L"Erreur inconnue."},
        {ERROR_INPUT_NOT_SET,
         L"Le chemin du fichier d'entr\u00e9e du d\u00e9codeur n'est pas d\u00e9fini."},
        {ERROR_LOADING_INPUT, L"\u00c9chec du chargement du fichier d'entr\u00e9e."},
    });
    EXPECT_EQ(logger.lines().size(), 5u);
}

TEST(LanguageFile, ReadsNonLatinTextsBackExactly)
{
    const std::map<int, std::wstring> japanese = {
        {1, L"\u4e0d\u660e\u306a\u30a8\u30e9\u30fc\u3067\u3059\u3002"},
        {ERROR_INPUT_NOT_SET,
         L"\u30c7\u30b3\u30fc\u30c0\u30fc\u306e\u5165\u529b\u30d5\u30a1\u30a4\u30eb\u30d1\u30b9"
         L"\u304c\u8a2d\u5b9a\u3055\u308c\u3066\u3044\u307e\u305b\u3093\u3002"},
        {ERROR_ANALYZING_INPUT,
         L"\u5165\u529b\u30d5\u30a1\u30a4\u30eb\u306e\u89e3\u6790\u4e2d\u306b\u30a8\u30e9\u30fc"
         L"\u304c\u767a\u751f\u3057\u307e\u3057\u305f\u3002"},
    };
    backToEnglish();
    EXPECT_TRUE(setErrorCodesFile(languageFile("language/ja.xml")));
    expectTexts(japanese);

    backToEnglish();
    EXPECT_TRUE(setErrorCodesFile(languageFile("language/ja-utf16.xml")));
    expectTexts(japanese);

    // UTF-8 bytes under a Latin-1 declaration: the declaration wins, so "é" reads as two letters.
    backToEnglish();
    EXPECT_TRUE(setErrorCodesFile(languageFile("language/declared-latin1.xml")));
    expectTexts({{ERROR_INPUT_NOT_SET, L"Entr\u00c3\u00a9e manquante."}});
}

TEST(LanguageFile, AFileThatCannotBeReadGivesFalseAndKeepsTheTexts)
{
    RecordingLogger logger;
    ScopedLogger installed(logger);
    backToEnglish();
    EXPECT_TRUE(setErrorCodesFile(languageFile("language/id-4-only.xml")));

    TempDir dir;
    const auto write = [&](const char* name, const std::string& bytes)
    { std::ofstream(dir.path() / name, std::ios::binary) << bytes; };
    std::string nested = "<KEP_Halvorn><ErrorCodes>";
    nested.reserve(8 * 1024 * 1024 + 64);
    while (nested.size() < 4 * 1024 * 1024)
        nested += "<ErrorCodes>";
    nested += "<ErrorCode id=\"4\" message=\"deep\"/>";
    while (nested.size() < 8 * 1024 * 1024)
        nested += "</ErrorCodes>";
    write("nested.xml", nested);
    write("cut.xml", "<KEP_Halvorn><ErrorCodes><ErrorCode id=\"4\" message=\"cut");
    write("empty.xml", "");

    const std::vector<std::wstring> unreadable = {
        languageFile("language/missing.xml"),
        languageFile("not-xml.xml"),
        dir.file(L"nested.xml"),
        dir.file(L"cut.xml"),
        dir.file(L"empty.xml"),
        dir.file(L""),
    };
    for (const std::wstring& path : unreadable)
    {
        logger.clear();
        EXPECT_FALSE(setErrorCodesFile(path)) << path;
        expectTexts({{ERROR_INPUT_NOT_SET, L"No input file was chosen for the decoder."}});
        EXPECT_THAT(logger.texts(), ::testing::ElementsAre(
                                        L"Setting messages language according to file: " + path));
    }
    logger.clear();
    EXPECT_FALSE(KEPModule::instance().setErrorCodesFile(nullptr));
    EXPECT_THAT(logger.texts(),
                ::testing::ElementsAre(L"Setting messages language according to file: "));
}

TEST(LanguageFile, NeverReadsExternalEntitiesOrDtds)
{
    TempDir dir;
    const std::string marker = "HALVORN-LANGUAGE-MARKER";
    const std::wstring wideMarker = MXF::SDK::Platform::fromUtf8(marker);
    const std::string declaration = "<!ATTLIST ErrorCode message CDATA \"" + marker + "\">";
    std::ofstream(dir.path() / "marker.txt") << marker;
    std::ofstream(dir.path() / "evil.dtd") << declaration;
    const std::string base = dir.path().string();
    const std::string body = "<KEP_Halvorn><ErrorCodes><ErrorCode id=\"4\"/>"
                             "<ErrorCode id=\"5\" message=\"five\">&m;</ErrorCode>"
                             "</ErrorCodes></KEP_Halvorn>";
    const std::string entity = "<!ENTITY m SYSTEM \"file://" + base + "/marker.txt\">";
    const std::vector<std::string> doctypes = {
        "<!DOCTYPE KEP_Halvorn SYSTEM \"file://" + base + "/evil.dtd\" [" + entity + "]>",
        "<!DOCTYPE KEP_Halvorn SYSTEM \"" + base + "/evil.dtd\" [" + entity + "]>",
        "<!DOCTYPE KEP_Halvorn [<!ENTITY % p SYSTEM \"file://" + base + "/evil.dtd\"> %p;" +
            entity + "]>",
    };
    for (const std::string& doctype : doctypes)
    {
        SCOPED_TRACE(doctype);
        backToEnglish();
        std::ofstream(dir.path() / "language.xml") << "<?xml version=\"1.0\"?>" << doctype << body;
        if (setErrorCodesFile(dir.file(L"language.xml")))
            expectTexts({{ERROR_OUTPUT_NOT_SET, L"five"}});
        else
            expectTexts({});
    }

    // The same declaration inside the file does apply, so a leak would have shown above.
    backToEnglish();
    std::ofstream(dir.path() / "language.xml")
        << "<?xml version=\"1.0\"?><!DOCTYPE KEP_Halvorn [" << declaration << "]>"
        << "<KEP_Halvorn><ErrorCodes><ErrorCode id=\"4\"/></ErrorCodes></KEP_Halvorn>";
    EXPECT_TRUE(setErrorCodesFile(dir.file(L"language.xml")));
    expectTexts({{ERROR_INPUT_NOT_SET, wideMarker}});
    backToEnglish();
}
