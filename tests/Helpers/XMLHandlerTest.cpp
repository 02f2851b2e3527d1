#include "Helpers/XMLHandler/XMLHandler.h"

#include "Helpers/XMLHandler/Exceptions.h"
#include "TestSupport.h"

#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

using KEP::Quenfold::Helpers::XMLHandler;
namespace Exceptions = KEP::Quenfold::Helpers::Exceptions;
using Halvorn::Test::TempDir;

namespace
{

const wchar_t* const NRT = LR"(<?xml version="1.0" encoding="UTF-8"?>
<NonRealTimeMeta xmlns="urn:schemas-professionalDisc:nonRealTimeMeta:ver.2.00" lastUpdate="2009-01-21T10:42:00+01:00">
  <Duration value="250"/>
  <CreationDate value="2009-01-21T10:41:35+01:00"/>
  <Title usAscii="Caf&#233; &#x65E5;&#x672C;">Clip 12ab</Title>
  <Flags on="TRUE" count="10" off="false" empty=""/>
  <KlvPacketTable>
    <KlvPacket frameCount="10" key="060E2B34010101050301020A02000000"/>
    <KlvPacket frameCount="20" key="060E2B34010101050301020A02000000"/>
  </KlvPacketTable>
</NonRealTimeMeta>)";

template <typename Exception>
std::wstring failureOf(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const Exception& e)
    {
        return e.message();
    }
    catch (const std::exception& e)
    {
        return L"wrong exception: " + MXF::SDK::Platform::fromUtf8(e.what());
    }
    return L"no exception";
}

} // namespace

TEST(XMLHandler, AnswersXPathInWideStringsIntegersAndBooleans)
{
    XMLHandler xml;
    xml.loadContent(NRT);
    EXPECT_EQ(
        xml.getString(L"/*[local-name()='NonRealTimeMeta']/*[local-name()='Duration']/@value"),
        L"250");
    EXPECT_EQ(xml.getInt(L"//*[local-name()='Duration']/@value"), 250);
    EXPECT_EQ(xml.getInt(L"//*[local-name()='Title']"), 0) << "no leading digit";
    EXPECT_EQ(xml.getString(L"//*[local-name()='Title']/@usAscii"), L"Caf\u00e9 \u65e5\u672c");
    EXPECT_TRUE(xml.getBool(L"//*[local-name()='Flags']/@on"));
    EXPECT_TRUE(xml.getBool(L"//*[local-name()='Flags']/@count")) << "a 1 anywhere is true";
    EXPECT_FALSE(xml.getBool(L"//*[local-name()='Flags']/@off"));
    EXPECT_FALSE(xml.getBool(L"//*[local-name()='Flags']/@empty"));
    EXPECT_EQ(xml.getStrings(L"//*[local-name()='KlvPacket']/@frameCount"),
              (std::vector<std::wstring>{L"10", L"20"}));
    EXPECT_TRUE(xml.exists(L"//*[local-name()='KlvPacketTable']"));
    EXPECT_FALSE(xml.exists(L"//*[local-name()='Missing']"));
    EXPECT_NE(xml.toString().find(L"KlvPacketTable"), std::wstring::npos);

    xml.loadContent(L"<a><b>12ab</b></a>");
    EXPECT_EQ(xml.getInt(L"/a/b"), 12);
    EXPECT_FALSE(xml.exists(L"//*[local-name()='Duration']")) << "the old document is gone";
}

TEST(XMLHandler, MissingValuesAndBadPathsFailWithTheirTexts)
{
    XMLHandler xml;
    EXPECT_FALSE(xml.exists(L"/a")) << "nothing loaded";
    xml.loadContent(NRT);
    EXPECT_FALSE(xml.exists(L"//[[[")) << "malformed path: false, no throw";
    EXPECT_EQ(failureOf<Exceptions::MissingCODInfo>([&] { xml.getString(L"/x/y"); }),
              L"Couln't retrieve /x/y from the given XML configuration content.");
    EXPECT_EQ(failureOf<Exceptions::MissingCODInfo>([&] { xml.getInt(L"/x/y"); }),
              L"Couln't retrieve /x/y from the given XML configuration content.");
    EXPECT_EQ(failureOf<Exceptions::MissingCODInfo>([&] { xml.getStrings(L"/x/y"); }),
              L"Couln't retrieve any value /x/y from the given XML configuration content.");
    EXPECT_EQ(failureOf<Exceptions::QuenfoldHelpersException>([&] { xml.getString(L"//[[["); }),
              L"Unknown error in Xerces or Xalan");
}

TEST(XMLHandler, BrokenDocumentsFailCleanly)
{
    XMLHandler xml;
    const std::wstring noDocument =
        L"Couln't retrieve any COD information from the given XML content";
    EXPECT_EQ(failureOf<Exceptions::MissingCODInfo>([&] { xml.loadContent(L"not xml at all"); }),
              noDocument);
    EXPECT_EQ(failureOf<Exceptions::MissingCODInfo>([&] { xml.loadContent(L""); }), noDocument);
    EXPECT_EQ(failureOf<Exceptions::MissingCODInfo>([&] { xml.loadContent(L"<a><b></a>"); }),
              noDocument);
    EXPECT_FALSE(xml.exists(L"/a")) << "a failed load leaves no document behind";
    // The bytes handed over are UTF-8 whatever the declaration says: read or refused, never a
    // crash.
    try
    {
        xml.loadContent(L"<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>\u00e9</a>");
    }
    catch (const Exceptions::QuenfoldHelpersException&)
    {
    }

    std::wstring deep;
    for (std::size_t i = 0; i <= XMLHandler::MAX_DEPTH + 1; ++i)
        deep += L"<a>";
    for (std::size_t i = 0; i <= XMLHandler::MAX_DEPTH + 1; ++i)
        deep += L"</a>";
    EXPECT_THROW(xml.loadContent(deep.c_str()), Exceptions::InvalidCODStruture);

    // Refused before parsing: deep nesting near the size limit would keep the parser busy for
    // minutes, and so would a flat document of a million elements.
    std::wstring deepest;
    for (int i = 0; i < 500000; ++i)
        deepest += L"<a>";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THROW(xml.loadContent(deepest.c_str()), Exceptions::InvalidCODStruture);
    std::wstring flat = L"<r>";
    for (std::size_t i = 0; i <= XMLHandler::MAX_ELEMENTS; ++i)
        flat += L"<b/>";
    flat += L"</r>";
    EXPECT_EQ(failureOf<Exceptions::InvalidCODStruture>([&] { xml.loadContent(flat.c_str()); }),
              L"XML document holds more than 100000 elements");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    // Comments, CDATA and declarations are not elements; an attribute may hold '>'.
    xml.loadContent(
        L"<?xml version=\"1.0\"?><!-- <x><x><x> --><r a=\"1>2\"><![CDATA[<y><y>]]><s/></r>");
    EXPECT_EQ(xml.getString(L"/r/@a"), L"1>2");

    const std::wstring huge = L"<a>" + std::wstring(XMLHandler::MAX_DOCUMENT_SIZE, L'x') + L"</a>";
    EXPECT_THROW(xml.loadContent(huge.c_str()), Exceptions::InvalidCODStruture);

    const wchar_t* const laughs = LR"(<?xml version="1.0"?>
<!DOCTYPE lolz [
 <!ENTITY lol "lol">
 <!ENTITY lol1 "&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;">
 <!ENTITY lol2 "&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;&lol1;">
 <!ENTITY lol3 "&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;">
 <!ENTITY lol4 "&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;&lol3;">
 <!ENTITY lol5 "&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;&lol4;">
 <!ENTITY lol6 "&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;&lol5;">
 <!ENTITY lol7 "&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;&lol6;">
 <!ENTITY lol8 "&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;&lol7;">
 <!ENTITY lol9 "&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;&lol8;">
]>
<lolz>&lol9;</lolz>)";
    EXPECT_THROW(xml.loadContent(laughs), Exceptions::QuenfoldHelpersException);
}

TEST(XMLHandler, ExternalEntitiesAndDtdsAreNeverRead)
{
    TempDir dir;
    const std::string marker = "SECRET-MARKER-7f3a";
    std::ofstream(dir.path() / "secret.txt") << marker;
    std::ofstream(dir.path() / "evil.dtd") << "<!ENTITY dtdEntity \"" << marker << "\">";
    const std::string base = dir.path().string();
    const std::wstring wideBase(base.begin(), base.end());
    const std::vector<std::wstring> documents = {
        L"<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY x SYSTEM \"file://" + wideBase +
            L"/secret.txt\">]><a>&x;</a>",
        L"<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY x SYSTEM \"" + wideBase +
            L"/secret.txt\">]><a b=\"1\">&x;</a>",
        L"<?xml version=\"1.0\"?><!DOCTYPE a SYSTEM \"file://" + wideBase +
            L"/evil.dtd\"><a>&dtdEntity;</a>",
        L"<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY % p SYSTEM \"file://" + wideBase +
            L"/evil.dtd\"> %p;]><a>&dtdEntity;</a>",
        L"<a xmlns:xi=\"http://www.w3.org/2001/XInclude\"><xi:include href=\"file://" + wideBase +
            L"/secret.txt\" parse=\"text\"/></a>",
    };
    const std::wstring wideMarker(marker.begin(), marker.end());
    for (const auto& document : documents)
    {
        XMLHandler xml;
        try
        {
            xml.loadContent(document.c_str());
        }
        catch (const Exceptions::QuenfoldHelpersException&)
        {
            continue; // failing cleanly is as good as ignoring the entity
        }
        EXPECT_EQ(xml.toString().find(wideMarker), std::wstring::npos) << document;
        EXPECT_EQ(xml.getString(L"/a").find(wideMarker), std::wstring::npos) << document;
    }
}

TEST(XMLHandler, LoadsFilesByWideNameAndUtf16WithAByteOrderMark)
{
    TempDir dir;
    {
        std::ofstream out(dir.path() / "m\xc3\xa9"
                                       "dia.xml",
                          std::ios::binary);
        const char16_t text[] = u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><a v=\"\u65e5\"/>";
        out.write("\xff\xfe", 2);
        for (const char16_t c : std::u16string(text))
        {
            out.put(static_cast<char>(c & 0xFF));
            out.put(static_cast<char>(c >> 8));
        }
    }
    XMLHandler xml;
    xml.loadFile(dir.file(L"m\u00e9dia.xml").c_str());
    EXPECT_EQ(xml.getString(L"/a/@v"), L"\u65e5");
    EXPECT_THROW(xml.loadFile(dir.file(L"missing.xml").c_str()),
                 Exceptions::QuenfoldHelpersException);
}

TEST(XMLHandler, HandlersOnSeveralThreadsWorkIndependently)
{
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 4; ++t)
        threads.emplace_back(
            [&, t]
            {
                XMLHandler xml;
                for (int i = 0; i < 50; ++i)
                {
                    const std::wstring doc =
                        L"<r><v>" + std::to_wstring(t * 1000 + i) + L"</v></r>";
                    xml.loadContent(doc.c_str());
                    if (xml.getInt(L"/r/v") != t * 1000 + i)
                        ++wrong;
                }
            });
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(wrong.load(), 0);
}
