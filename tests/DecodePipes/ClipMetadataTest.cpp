#include "DecodePipes/ClipMetadata.h"

#include "Helpers/XMLHandler/Exceptions.h"
#include "Transcoder/TranscoderTestSupport.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using KEP::Halvorn::DecodePipes::ClipMaterials;
using KEP::Halvorn::DecodePipes::ClipMetadata;
using KEP::Halvorn::DecodePipes::mediaProfileFolder;
using KEP::Quenfold::Helpers::Exceptions::QuenfoldHelpersException;
using namespace Halvorn::Test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace
{

const std::wstring CLIP = L"060A2B340101010501010D43130000007A3C51D2114805D8080046020211A2B3";
const std::wstring TAKE_CLIP_1 =
    L"060A2B340101010501010D4313000000C19D0E43114805D8080046020211A2B3";
const std::wstring TAKE_CLIP_2 =
    L"060A2B340101010501010D4313000000D2AE1F54114805D8080046020211A2B3";
const std::wstring NO_SIDECAR = L"060A2B340101010501010D4313000000F4C03176114805D8080046020211A2B3";
const std::wstring TAKE = L"060A2B340101010501010D4313000000E3BF2065114805D8080046020211A2B3";
const std::wstring PROXY = L"060A2B340101010501010D43130000007A3C51D2114805D8080046020211A2C1";

std::string dataDir()
{
    const char* dir = std::getenv("HALVORN_TEST_DATA");
    return std::string(dir ? dir : "tests/data") + "/sidecars";
}

std::wstring sidecar(const std::string& name)
{
    return MXF::SDK::Platform::fromUtf8(dataDir() + "/" + name);
}

// A mark's text as the reader keeps it: with one zero character after the text.
std::wstring mark(std::wstring text)
{
    return text + L'\0';
}

void write(const std::filesystem::path& file, const std::string& bytes)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

std::string nested(const std::string& root, std::size_t depth)
{
    std::string document = "<" + root + ">";
    document.reserve(depth * 7 + 64);
    for (std::size_t i = 0; i < depth; ++i)
        document += "<a>";
    for (std::size_t i = 0; i < depth; ++i)
        document += "</a>";
    return document + "</" + root + ">";
}

} // namespace

TEST(ClipMetadata, FindsTheNonRealTimeMetaFileOfEachMaterial)
{
    RecordingLogger logger;
    ScopedLogger installed(logger);
    ClipMetadata metadata;
    ASSERT_TRUE(metadata.load(sidecar("BPAV/MEDIAPRO.XML").c_str()));
    const std::wstring folder = sidecar("BPAV/");
    EXPECT_EQ(metadata.xmlFileForUmid(CLIP.c_str()),
              folder + L"./CLPR/100_0001_01/100_0001_01M01.XML");
    EXPECT_EQ(metadata.xmlFileForUmid(TAKE_CLIP_1.c_str()),
              folder + L"./CLPR/100_0002_01/100_0002_01M01.XML");
    EXPECT_EQ(metadata.xmlFileForUmid(TAKE_CLIP_2.c_str()),
              folder + L"./CLPR/100_0002_02/100_0002_02M01.XML");
    EXPECT_EQ(metadata.xmlFileForUmid(TAKE.c_str()), folder + L"./TAKR/100_0002/100_0002M01.XML");
    EXPECT_EQ(metadata.xmlFileForUmid(NO_SIDECAR.c_str()), L"") << "only PPN and MP4, no XML";
    EXPECT_EQ(metadata.xmlFileForUmid(PROXY.c_str()), L"") << "a proxy is no material";
    EXPECT_EQ(metadata.xmlFileForUmid(CLIP.substr(0, 63).c_str()), L"") << "compared whole";
    EXPECT_EQ(metadata.xmlFileForUmid(L"\"]|//*[\""), L"") << "a quote breaks the path, no more";
    EXPECT_EQ(metadata.xmlFileForUmid(nullptr), L"");
    EXPECT_THAT(logger.texts(), IsEmpty());

    ClipMetadata unloaded;
    EXPECT_EQ(unloaded.xmlFileForUmid(CLIP.c_str()), L"");
}

TEST(ClipMetadata, JoinsUrisToTheMediaProfileFolderWithForwardSlashes)
{
    EXPECT_EQ(mediaProfileFolder(L"/cards/A/BPAV/MEDIAPRO.XML"), L"/cards/A/BPAV/");
    EXPECT_EQ(mediaProfileFolder(L"D:\\cards\\A\\BPAV\\MEDIAPRO.XML"), L"D:/cards/A/BPAV/");
    EXPECT_EQ(mediaProfileFolder(L"\\\\nas\\ingest\\BPAV\\MEDIAPRO.XML"), L"\\\\nas/ingest/BPAV/");
    EXPECT_EQ(mediaProfileFolder(L"/mnt/ingest\\BPAV/MEDIAPRO.XML"), L"/mnt/ingest/BPAV/");
    EXPECT_EQ(mediaProfileFolder(L"MEDIAPRO.XML"), L"");
    EXPECT_EQ(mediaProfileFolder(L"\\\\nas"), L"");
    EXPECT_EQ(mediaProfileFolder(L""), L"");

    // On this system a backslash may stand in a file name; the profile is still found by its
    // name as given, and the uris are joined to the folder with the backslashes turned.
    TempDir dir;
    std::filesystem::copy_file(dataDir() + "/BPAV/MEDIAPRO.XML",
                               dir.path() / "card\\BPAV\\MEDIAPRO.XML");
    ClipMetadata metadata;
    ASSERT_TRUE(metadata.load(dir.file(L"card\\BPAV\\MEDIAPRO.XML").c_str()));
    EXPECT_EQ(metadata.xmlFileForUmid(CLIP.c_str()),
              dir.file(L"card/BPAV/./CLPR/100_0001_01/100_0001_01M01.XML"));
}

TEST(ClipMetadata, ReadsTheMarksOfAClipAtTheirFrames)
{
    const std::wstring file = sidecar("BPAV/CLPR/100_0001_01/100_0001_01M01.XML");
    const ClipMaterials expected = {
        {0, mark(L"_RecStart")},    {40, mark(L"_ShotMark1")},
        {120, mark(L"_ShotMark2")}, // the first of the two marks on that frame
        {180, mark(L"")},           // empty lengthValue
        {200, mark(L"_Flash")},     // lower-case digits
    };
    ClipMetadata metadata;
    EXPECT_EQ(metadata.loadMaterialFile(file.c_str(), 0), 250u);
    EXPECT_EQ(metadata.materials(), expected);

    ClipMetadata shifted;
    EXPECT_EQ(shifted.loadMaterialFile(file.c_str(), 1000), 250u);
    EXPECT_EQ(shifted.materials().begin()->first, 1000u);
    // The second file's frame 60 lands on the first one's 120, which keeps its mark.
    EXPECT_EQ(
        shifted.loadMaterialFile(sidecar("BPAV/CLPR/100_0002_02/100_0002_02M01.XML").c_str(), 1060),
        120u);
    EXPECT_EQ(shifted.materials().at(1060), mark(L"_RecStart"));
    EXPECT_EQ(shifted.materials().at(1120), mark(L"_ShotMark2"));
    EXPECT_EQ(shifted.materials().at(1160), mark(L"_ShotMark1"));
    EXPECT_EQ(shifted.materials().size(), 7u);

    EXPECT_EQ(ClipMetadata::loadMaterials(file.c_str()), expected);
    EXPECT_THAT(ClipMetadata::loadMaterials(sidecar("not-xml.xml").c_str()), IsEmpty());
    EXPECT_THAT(ClipMetadata::loadMaterials(sidecar("missing.xml").c_str()), IsEmpty());
}

TEST(ClipMetadata, ReadsWideMarksTwoBytesACharacter)
{
    ClipMetadata metadata;
    EXPECT_EQ(
        metadata.loadMaterialFile(sidecar("BPAV/CLPR/100_0002_01/100_0002_01M01.XML").c_str(), 0),
        300u);
    EXPECT_EQ(metadata.materials(), (ClipMaterials{
                                        {0, mark(L"_RecStart")},
                                        {30, mark(L"\u00dcberblick")},
                                        {150, mark(L"\u6e2f\u306e\u671d")},
                                        {299, mark(L"Caf\u00e9")},
                                    }));
}

TEST(ClipMetadata, PutsTheMarksOfATakeOnOneTimeLine)
{
    ClipMetadata take;
    ASSERT_TRUE(take.load(sidecar("BPAV/MEDIAPRO.XML").c_str()));
    take.loadMaterialsForUmids({TAKE_CLIP_1, TAKE_CLIP_2});
    // The second clip starts after the 300 frames of the first.
    EXPECT_EQ(take.materials(), (ClipMaterials{
                                    {0, mark(L"_RecStart")},
                                    {30, mark(L"\u00dcberblick")},
                                    {150, mark(L"\u6e2f\u306e\u671d")},
                                    {299, mark(L"Caf\u00e9")},
                                    {300, mark(L"_RecStart")},
                                    {360, mark(L"\u7d42")},
                                    {400, mark(L"_ShotMark1")},
                                }));

    ClipMetadata stopped;
    ASSERT_TRUE(stopped.load(sidecar("BPAV/MEDIAPRO.XML").c_str()));
    stopped.loadMaterialsForUmids({CLIP, NO_SIDECAR, TAKE_CLIP_1});
    EXPECT_EQ(stopped.materials().size(), 5u) << "the clip without a sidecar ends the list";
    EXPECT_EQ(stopped.materials().count(250), 0u);

    // A clip whose sidecar is broken ends the take with an exception; the marks before stay.
    TempDir dir;
    std::filesystem::copy_file(dataDir() + "/BPAV/MEDIAPRO.XML", dir.path() / "MEDIAPRO.XML");
    std::filesystem::create_directories(dir.path() / "CLPR/100_0002_01");
    std::filesystem::copy_file(dataDir() + "/BPAV/CLPR/100_0002_01/100_0002_01M01.XML",
                               dir.path() / "CLPR/100_0002_01/100_0002_01M01.XML");
    write(dir.path() / "CLPR/100_0002_02/100_0002_02M01.XML", "<NonRealTimeMeta><Duration");
    ClipMetadata broken;
    ASSERT_TRUE(broken.load(dir.file(L"MEDIAPRO.XML").c_str()));
    EXPECT_THROW(broken.loadMaterialsForUmids({TAKE_CLIP_1, TAKE_CLIP_2}),
                 QuenfoldHelpersException);
    EXPECT_EQ(broken.materials().size(), 4u);
    EXPECT_EQ(broken.materials().at(299), mark(L"Caf\u00e9"));
}

TEST(ClipMetadata, FindsTheMediaFilesOfAClipOrATakeByUmid)
{
    RecordingLogger logger;
    ScopedLogger installed(logger);
    ClipMetadata metadata;
    EXPECT_EQ(metadata.componentOffset(), 0) << "no clip yet";
    EXPECT_THAT(metadata.filesForUmid(CLIP.c_str()), IsEmpty()) << "no profile yet";
    ASSERT_TRUE(metadata.load(sidecar("BPAV/MEDIAPRO.XML").c_str()));
    const std::wstring folder = sidecar("BPAV/");
    EXPECT_THAT(metadata.filesForUmid(TAKE.c_str()),
                ElementsAre(folder + L"./CLPR/100_0002_01/100_0002_01.MP4",
                            folder + L"./CLPR/100_0002_02/100_0002_02.MP4"));
    // The marks of both clips, the second's after the 300 frames of the first.
    EXPECT_EQ(metadata.materials().size(), 7u);
    EXPECT_EQ(metadata.materials().at(360), mark(L"\u7d42"));
    EXPECT_EQ(metadata.componentOffset(), 0);
    // Each call's result replaces the last.
    EXPECT_THAT(metadata.filesForUmid(CLIP.c_str()),
                ElementsAre(folder + L"./CLPR/100_0001_01/100_0001_01.MP4"));
    EXPECT_THAT(metadata.filesForUmid(PROXY.c_str()), IsEmpty()) << "a proxy is no material";
    const std::wstring noUri = L"Unable to retrieve uri in material node for umid: ";
    EXPECT_THAT(logger.texts(), ElementsAre(noUri + CLIP, noUri + PROXY));
    EXPECT_EQ(logger.lines()[1].level, 3);

    // A clip's sidecar that can't be parsed ends the take's resolution with the files found so
    // far, and is told as a failure of the SMIL file.
    TempDir dir;
    std::filesystem::copy(dataDir() + "/BPAV", dir.path() / "BPAV",
                          std::filesystem::copy_options::recursive);
    write(dir.path() / "BPAV/CLPR/100_0002_02/100_0002_02M01.XML", "<NonRealTimeMeta><Duration");
    ClipMetadata broken;
    ASSERT_TRUE(broken.load(dir.file(L"BPAV/MEDIAPRO.XML").c_str()));
    logger.clear();
    EXPECT_EQ(broken.filesForUmid(TAKE.c_str()).size(), 2u);
    EXPECT_EQ(broken.materials().size(), 4u);
    EXPECT_THAT(logger.texts(),
                ElementsAre(StartsWith(L"Unable to open SMILE file pointed by TAKE UMID. (")));
}

TEST(ClipMetadata, DecodesTheEdgesOfLengthValue)
{
    ClipMetadata metadata;
    EXPECT_EQ(metadata.loadMaterialFile(sidecar("nrt/decode-edges.xml").c_str(), 0), 0u)
        << "no Duration";
    EXPECT_EQ(metadata.materials(), (ClipMaterials{
                                        {10, mark(L"")}, // odd count of digits
                                        {20, mark(std::wstring(L"ABCD\0", 5))}, // one byte short
                                        {30, mark(L"ABCDE")},                   // the narrow key
                                        {31, mark(L"ABCDE")},                   // neither key
                                        {40, mark(L"AB\u4300")}, // odd byte count, wide
                                        {50, mark(L"AB")},       // a cut-off wide key
                                        {60, mark(std::wstring(L"\0A\0B", 4))}, // key in lower case
                                        {75, mark(L"_Cue")}, // a blank before the frame
                                    }));

    EXPECT_EQ(ClipMetadata::decode(L"054142434445", false), mark(L"ABCDE"));
    EXPECT_EQ(ClipMetadata::decode(L"05414243444546", false), mark(L"ABCDE")) << "beyond length";
    EXPECT_EQ(ClipMetadata::decode(L"04436166E9", false), mark(L"Caf\u00e9"));
    EXPECT_EQ(ClipMetadata::decode(L"0800430061006600e9", true), mark(L"Caf\u00e9"));
    EXPECT_EQ(ClipMetadata::decode(L"04D83DDE00", true), mark(L"\xd83d\xde00"))
        << "UTF-16 units as they come";
    EXPECT_EQ(ClipMetadata::decode(L"", true), mark(L""));
    EXPECT_EQ(ClipMetadata::decode(L"0", false), mark(L""));
    EXPECT_EQ(ClipMetadata::decode(L"02", false), mark(std::wstring(2, L'\0')));
    EXPECT_EQ(ClipMetadata::decode(L"FF", true).size(), 129u) << "128 characters of missing digits";
}

TEST(ClipMetadata, MissingAttributesAndWrongRootsGiveNothing)
{
    ClipMetadata metadata;
    EXPECT_EQ(metadata.loadMaterialFile(sidecar("nrt/missing-attributes.xml").c_str(), 0), 0u);
    EXPECT_EQ(metadata.materials(), (ClipMaterials{
                                        {6, mark(L"_Flash")},                  // no key: narrow
                                        {7, mark(std::wstring(L"\0A\0B", 4))}, // empty key: narrow
                                    }));

    ClipMetadata wrongRoot;
    EXPECT_EQ(wrongRoot.loadMaterialFile(sidecar("nrt/wrong-root.xml").c_str(), 0), 0u);
    EXPECT_THAT(wrongRoot.materials(), IsEmpty());

    ClipMetadata profile;
    ASSERT_TRUE(profile.load(sidecar("mediapro/wrong-root.xml").c_str()));
    EXPECT_EQ(profile.xmlFileForUmid(CLIP.c_str()), L"");

    ASSERT_TRUE(profile.load(sidecar("mediapro/missing-attributes.xml").c_str()));
    EXPECT_EQ(profile.xmlFileForUmid(CLIP.c_str()), L"") << "no uri";
    EXPECT_EQ(profile.xmlFileForUmid(TAKE_CLIP_1.c_str()), L"") << "no type";
    EXPECT_EQ(profile.xmlFileForUmid(TAKE_CLIP_2.c_str()), L"") << "type in lower case";
    EXPECT_EQ(profile.xmlFileForUmid(NO_SIDECAR.c_str()),
              sidecar("mediapro/./CLPR/100_0003_01/100_0003_01M02.XML"))
        << "the first XML entry that has a uri";
}

TEST(ClipMetadata, BrokenDocumentsFailCleanly)
{
    RecordingLogger logger;
    ScopedLogger installed(logger);
    ClipMetadata metadata;
    ASSERT_TRUE(metadata.load(sidecar("BPAV/MEDIAPRO.XML").c_str()));

    const std::wstring notXml = sidecar("not-xml.xml");
    EXPECT_FALSE(metadata.load(notXml.c_str()));
    ASSERT_EQ(logger.lines().size(), 1u);
    EXPECT_EQ(logger.lines()[0].level, 0);
    EXPECT_EQ(logger.lines()[0].text,
              L"Unable to load MediaPro file (" + notXml +
                  L" - Couln't retrieve any COD information from the given XML content)");
    EXPECT_EQ(metadata.xmlFileForUmid(CLIP.c_str()), L"") << "the failed load left no profile";
    EXPECT_THROW(metadata.loadMaterialFile(notXml.c_str(), 0), QuenfoldHelpersException);
    EXPECT_THAT(metadata.materials(), IsEmpty());

    TempDir dir;
    write(dir.path() / "huge.xml", nested("NonRealTimeMeta", 8 * 1024 * 1024 / 7));
    write(dir.path() / "deep.xml", nested("NonRealTimeMeta", 5000));
    write(dir.path() / "cut.xml", "<?xml version=\"1.0\"?><MediaProfile><Contents><Mat");
    for (const wchar_t* name : {L"huge.xml", L"deep.xml", L"cut.xml", L"missing.xml"})
    {
        const std::wstring path = dir.file(name);
        logger.clear();
        EXPECT_FALSE(metadata.load(path.c_str())) << name;
        ASSERT_EQ(logger.lines().size(), 1u) << name;
        EXPECT_THAT(logger.lines()[0].text,
                    ::testing::StartsWith(L"Unable to load MediaPro file (" + path + L" - "));
        EXPECT_THAT(logger.lines()[0].text, ::testing::EndsWith(L")"));
        EXPECT_THROW(metadata.loadMaterialFile(path.c_str(), 0), QuenfoldHelpersException);
    }
    EXPECT_THAT(metadata.materials(), IsEmpty());
}

// A long shoot's sidecar: 400 marks as a camera writes them, narrow and wide, some on the same
// frame. Every one is read, and a table of 10,000 marks still goes in a few seconds.
TEST(ClipMetadata, ReadsEveryMarkOfALongTable)
{
    const auto table = [](int marks)
    {
        std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<NonRealTimeMeta "
                          "xmlns=\"urn:schemas-professionalDisc:nonRealTimeMeta:ver.2.00\">"
                          "<Duration value=\"90000\"/><KlvPacketTable>\n";
        for (int i = 0; i < marks; ++i)
        {
            // Every tenth mark is wide ("\u00dc" and a digit), every 50th repeats its frame.
            const bool wide = i % 10 == 3;
            const int frame = i % 50 == 49 ? (i - 1) * 7 : i * 7;
            const std::string text = wide ? "0400DC003" + std::to_string(i % 10)
                                          : "0A5F53686F744D61726B3" + std::to_string(i % 10);
            xml += "  <KlvPacket key=\"060E2B34010101050301020A020" +
                   std::string(wide ? "1" : "0") + "0000\" frameCount=\"" + std::to_string(frame) +
                   "\" lengthValue=\"" + text + "\" status=\"spot\"/>\n";
        }
        return xml + "</KlvPacketTable></NonRealTimeMeta>\n";
    };
    TempDir dir;
    write(dir.path() / "M01.XML", table(400));
    ClipMetadata metadata;
    EXPECT_EQ(metadata.loadMaterialFile(dir.file(L"M01.XML").c_str(), 100), 90000u);
    const ClipMaterials marks = metadata.materials();
    ASSERT_EQ(marks.size(), 392u) << "400 packets, 8 on a frame met before";
    for (int i = 0; i < 400; ++i)
    {
        if (i % 50 == 49)
            continue;
        const std::wstring digit(1, static_cast<wchar_t>(L'0' + i % 10));
        EXPECT_EQ(marks.at(100 + i * 7u),
                  mark(i % 10 == 3 ? L"\u00dc" + digit : L"_ShotMark" + digit))
            << i;
    }

    // Processor time, not wall time: a loaded machine must not fail it.
    write(dir.path() / "M02.XML", table(10000));
    const std::clock_t start = std::clock();
    ClipMetadata many;
    many.loadMaterialFile(dir.file(L"M02.XML").c_str(), 0);
    EXPECT_EQ(many.materials().size(), 9800u);
    EXPECT_LT(std::clock() - start, 20 * CLOCKS_PER_SEC);
}

TEST(ClipMetadata, NeverReadsExternalEntitiesOrDtds)
{
    TempDir dir;
    const std::string marker = "HALVORN-SIDECAR-MARKER";
    const std::wstring wideMarker = MXF::SDK::Platform::fromUtf8(marker);
    // "HALVORN-SIDECAR-MARKER" as a lengthValue: 22 bytes of text.
    const std::string markerHex = "1648414C564F524E2D534944454341522D4D41524B4552";
    const std::string declarations = "<!ATTLIST KlvPacket lengthValue CDATA \"" + markerHex +
                                     "\">\n" + "<!ATTLIST RelevantInfo uri CDATA \"" + marker +
                                     "\">\n";
    write(dir.path() / "marker.txt", marker);
    write(dir.path() / "evil.dtd", declarations);
    const std::string base = dir.path().string();

    const std::string nrtBody =
        "<NonRealTimeMeta><Duration value=\"10\"/><Title>&m;</Title><KlvPacketTable>"
        "<KlvPacket key=\"060E2B34010101050301020A02000000\" frameCount=\"5\"/>"
        "</KlvPacketTable></NonRealTimeMeta>";
    const std::string profileBody =
        "<MediaProfile><Contents><Material umid=\"U\"><RelevantInfo type=\"XML\"/>"
        "</Material></Contents></MediaProfile>";
    const std::string entity = "<!ENTITY m SYSTEM \"file://" + base + "/marker.txt\">";
    const std::vector<std::string> doctypes = {
        "<!DOCTYPE r SYSTEM \"file://" + base + "/evil.dtd\" [" + entity + "]>",
        "<!DOCTYPE r SYSTEM \"" + base + "/evil.dtd\" [" + entity + "]>",
        "<!DOCTYPE r [<!ENTITY % p SYSTEM \"file://" + base + "/evil.dtd\"> %p;" + entity + "]>",
    };
    for (const std::string& doctype : doctypes)
    {
        SCOPED_TRACE(doctype);
        write(dir.path() / "nrt.xml", "<?xml version=\"1.0\"?>" + doctype + nrtBody);
        write(dir.path() / "profile.xml", "<?xml version=\"1.0\"?>" + doctype + profileBody);
        ClipMetadata metadata;
        try
        {
            metadata.loadMaterialFile(dir.file(L"nrt.xml").c_str(), 0);
        }
        catch (const QuenfoldHelpersException&)
        {
        }
        for (const auto& [frame, text] : metadata.materials())
            EXPECT_EQ(text.find(wideMarker), std::wstring::npos) << frame;
        if (metadata.load(dir.file(L"profile.xml").c_str()))
        {
            EXPECT_EQ(metadata.xmlFileForUmid(L"U").find(wideMarker), std::wstring::npos);
        }
    }

    // The same declarations inside the document do apply, so the checks above can see a leak.
    std::string plainBody = nrtBody;
    plainBody.erase(plainBody.find("&m;"), 3);
    write(dir.path() / "nrt.xml",
          "<?xml version=\"1.0\"?><!DOCTYPE r [" + declarations + "]>" + plainBody);
    ClipMetadata control;
    control.loadMaterialFile(dir.file(L"nrt.xml").c_str(), 0);
    EXPECT_EQ(control.materials(), (ClipMaterials{{5, mark(wideMarker)}}));
}
