#include "DictionarySource.h"

#include "DictionaryCompiler.h"
#include "TestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

using namespace Halvorn::DictC;

namespace
{

const std::string INSTANCE_UID_LINE =
    "element InstanceUID 06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00 UUID\n";
const std::string SET_LINE = "set Thing 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2f.00\n";

// The message of the failure that compiling the source gives, or "" if it gives none.
std::string failure(const std::string& text)
{
    try
    {
        Source source;
        parseSource(text, "bad.txt", source);
        compileDictionary(source);
    }
    catch (const SourceError& e)
    {
        return e.what();
    }
    return "";
}

} // namespace

TEST(DictionarySource, RefusesAnUnknownTypeName)
{
    EXPECT_EQ(failure(INSTANCE_UID_LINE +
                      "element Width 06.0e.2b.34.01.01.01.01.04.01.05.02.02.00.00.00 UInt31\n"),
              "bad.txt:2: unknown type name 'UInt31'");
    EXPECT_EQ(failure("element Lines 06.0e.2b.34.01.01.01.02.04.01.03.02.05.00.00.00 Batch of "
                      "Int33\n"),
              "bad.txt:1: unknown type name 'Int33'");
}

TEST(DictionarySource, RefusesTypesThatHoldNoValueOrNeedAnotherForm)
{
    EXPECT_EQ(failure("element K 06.0e.2b.34.01.01.01.01.04.01.05.02.02.00.00.00 Key\n"),
              "bad.txt:1: type 'Key' has no value class");
    EXPECT_EQ(failure("element K 06.0e.2b.34.01.01.01.01.04.01.05.02.02.00.00.00 "
                      "DUMMY_TO_REPLACE_EDIT_RATE\n"),
              "bad.txt:1: type 'DUMMY_TO_REPLACE_EDIT_RATE' has no value class");
    EXPECT_EQ(failure("element K 06.0e.2b.34.01.01.01.01.04.01.05.02.02.00.00.00 Array\n"),
              "bad.txt:1: a collection needs 'Array of TYPE'");
    EXPECT_EQ(failure("element K 06.0e.2b.34.01.01.01.01.04.01.05.02.02.00.00.00 "
                      "StrongReference\n"),
              "bad.txt:1: a reference needs 'to SET ...' or 'to any'");
    EXPECT_EQ(failure("element K 06.0e.2b.34.01.01.01.01.04.01.05.02.02.00.00.00 Array of "
                      "Batch\n"),
              "bad.txt:1: type 'Batch' needs the form 'Batch of TYPE'");
}

TEST(DictionarySource, RefusesADuplicateLabel)
{
    EXPECT_EQ(failure(INSTANCE_UID_LINE +
                      "element Other 06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00 UL\n"),
              "bad.txt:2: duplicate label 06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00 "
              "(element 'InstanceUID' at bad.txt:1)");
    EXPECT_EQ(failure(INSTANCE_UID_LINE + SET_LINE + "    InstanceUID 3c0a Req\n" +
                      "set Other 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2f.00\n" +
                      "    InstanceUID 3c0a Req\n"),
              "bad.txt:4: duplicate label 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2f.00 "
              "(set 'Thing' at bad.txt:2)");
}

TEST(DictionarySource, RefusesADuplicateName)
{
    EXPECT_EQ(failure(INSTANCE_UID_LINE +
                      "element InstanceUID 06.0e.2b.34.01.01.01.02.05.20.07.01.08.00.00.00 UUID\n"),
              "bad.txt:2: duplicate element name 'InstanceUID' (first at bad.txt:1)");
    EXPECT_EQ(failure(INSTANCE_UID_LINE + SET_LINE + "    InstanceUID 3c0a Req\n" +
                      "set Thing 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.30.00\n" +
                      "    InstanceUID 3c0a Req\n"),
              "bad.txt:4: duplicate set name 'Thing' (first at bad.txt:2)");
}

TEST(DictionarySource, RefusesAReferenceToAnUndefinedElement)
{
    EXPECT_EQ(failure(INSTANCE_UID_LINE + SET_LINE + "    InstanceUID 3c0a Req\n" +
                      "    PackageUID 4401 Req\n"),
              "bad.txt:4: reference to an undefined element 'PackageUID'");
    EXPECT_EQ(failure(INSTANCE_UID_LINE + SET_LINE + "    InstanceUID 3c0a Req\n" +
                      "extend Thing\n    AppCode - Opt\n"),
              "bad.txt:5: reference to an undefined element 'AppCode'");
}

TEST(DictionarySource, RefusesAReferenceToAnUndefinedSet)
{
    EXPECT_EQ(failure(INSTANCE_UID_LINE +
                      "element Tracks 06.0e.2b.34.01.01.01.02.06.01.01.04.06.05.00.00 Array of "
                      "StrongReference to Track\n"),
              "bad.txt:2: reference to an undefined set 'Track'");
    EXPECT_EQ(failure(INSTANCE_UID_LINE +
                      "set Preface 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2f.00 : "
                      "InterchangeObject\n"),
              "bad.txt:2: set 'Preface' derives from an undefined set 'InterchangeObject'");
    EXPECT_EQ(failure(INSTANCE_UID_LINE + "extend Preface\n    InstanceUID 3c0a Req\n"),
              "bad.txt:2: extend of an undefined set 'Preface'");
}

TEST(DictionarySource, RefusesBadHex)
{
    EXPECT_EQ(failure("element InstanceUID 06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.0g UUID\n"),
              "bad.txt:1: bad hex in label '06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.0g': 16 "
              "bytes of two hex digits, separated by dots");
    EXPECT_EQ(failure("element InstanceUID 06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00 UUID\n"),
              "bad.txt:1: bad hex in label '06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00': 16 "
              "bytes of two hex digits, separated by dots");
    EXPECT_EQ(failure("element InstanceUID 060e2b34010101010101150200000000 UUID\n"),
              "bad.txt:1: bad hex in label '060e2b34010101010101150200000000': 16 bytes of two "
              "hex digits, separated by dots");
    EXPECT_EQ(failure(INSTANCE_UID_LINE + SET_LINE + "    InstanceUID 3cxa Req\n"),
              "bad.txt:3: bad hex in local tag '3cxa': four hex digits, or - for none");
    EXPECT_EQ(failure(INSTANCE_UID_LINE + SET_LINE + "    InstanceUID 03c0a Req\n"),
              "bad.txt:3: bad hex in local tag '03c0a': four hex digits, or - for none");
    EXPECT_EQ(failure(INSTANCE_UID_LINE + SET_LINE + "    InstanceUID 0000 Req\n"),
              "bad.txt:3: local tag 0000 is not a tag");
}

TEST(DictionarySource, RefusesAnUnknownRequiredStatus)
{
    EXPECT_EQ(failure(INSTANCE_UID_LINE + SET_LINE + "    InstanceUID 3c0a Required\n"),
              "bad.txt:3: unknown required status 'Required': Req, E/req, D/req, B.Effort or Opt");
}

TEST(DictionarySource, RefusesASetWithoutInstanceUID)
{
    EXPECT_EQ(failure("element Version 06.0e.2b.34.01.01.01.02.03.01.02.01.05.00.00.00 "
                      "VersionType\n" +
                      SET_LINE + "    Version 3b05 Req\n"),
              "bad.txt:2: set 'Thing' has no InstanceUID attribute "
              "(06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00)");
}

TEST(DictionarySource, RefusesTheSameLabelTwiceInASet)
{
    EXPECT_EQ(failure(INSTANCE_UID_LINE + SET_LINE + "    InstanceUID 3c0a Req\n" +
                      "set Other 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.30.00 : Thing\n" +
                      "    InstanceUID 3c0a Req\n"),
              "bad.txt:5: set 'Other' would hold 06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00 "
              "'InstanceUID' twice (also at bad.txt:3)");
}

TEST(DictionarySource, RefusesADerivationCycle)
{
    EXPECT_EQ(failure(INSTANCE_UID_LINE +
                      "set A 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2f.00 : B\n" +
                      "    InstanceUID 3c0a Req\n" +
                      "set B 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.30.00 : A\n"),
              "bad.txt:2: derivation of set 'A' runs in a circle through 'A'");
}

TEST(DictionarySource, RefusesALocalTagForTwoLabelsAndTwoTagsForALabel)
{
    const std::string elements =
        INSTANCE_UID_LINE +
        "element Version 06.0e.2b.34.01.01.01.02.03.01.02.01.05.00.00.00 VersionType\n";
    EXPECT_EQ(failure(elements + SET_LINE + "    InstanceUID 3c0a Req\n    Version 3c0a Opt\n"),
              "bad.txt:5: local tag 3c0a given to "
              "06.0e.2b.34.01.01.01.02.03.01.02.01.05.00.00.00 and to "
              "06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00 (at bad.txt:4)");
    EXPECT_EQ(failure(elements + SET_LINE + "    InstanceUID 3c0a Req\n    Version 3b05 Opt\n" +
                      "set Other 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.30.00\n" +
                      "    InstanceUID 3c0a Req\n    Version 3b06 Opt\n"),
              "bad.txt:8: label 06.0e.2b.34.01.01.01.02.03.01.02.01.05.00.00.00 given local "
              "tags 3b06 and 3b05 (at bad.txt:5)");
}

TEST(DictionarySource, RefusesBadEnumerationValues)
{
    const std::string layout = "element Layout 06.0e.2b.34.01.01.01.01.04.01.03.01.04.00.00.00 ";
    EXPECT_EQ(failure(layout + "UInt8\n    value 256 too big\n"),
              "bad.txt:2: value '256' out of range");
    EXPECT_EQ(failure(layout + "Int8\n    value -129 too small\n"),
              "bad.txt:2: value '-129' out of range");
    EXPECT_EQ(failure(layout + "UInt8\n    value -1 no sign\n"),
              "bad.txt:2: value '-1' out of range");
    EXPECT_EQ(failure(layout + "UInt8\n    value one\n"), "bad.txt:2: bad value 'one'");
    EXPECT_EQ(failure(layout + "Rational\n    value 1\n"),
              "bad.txt:2: enumeration values need a simple element of an integer, UL or UUID "
              "type");
    EXPECT_EQ(failure(layout + "Array of UInt8\n    value 1\n"),
              "bad.txt:2: enumeration values need a simple element of an integer, UL or UUID "
              "type");
}

TEST(DictionarySource, RefusesBadBounds)
{
    EXPECT_EQ(failure("element Lines 06.0e.2b.34.01.01.01.02.04.01.03.02.05.00.00.00 Batch 3..2 "
                      "of Int32\n"),
              "bad.txt:1: bad bounds '3..2': maximum below minimum");
    EXPECT_EQ(failure("element Lines 06.0e.2b.34.01.01.01.02.04.01.03.02.05.00.00.00 Batch 3 of "
                      "Int32\n"),
              "bad.txt:1: bad bounds '3': MIN..MAX or MIN..*");
}

TEST(DictionarySource, RefusesMisplacedAndUnknownLines)
{
    EXPECT_EQ(failure("    InstanceUID 3c0a Req\n"),
              "bad.txt:1: indented line outside an element, set or extend");
    EXPECT_EQ(failure("elements InstanceUID\n"),
              "bad.txt:1: unknown statement 'elements': element, set or extend");
    EXPECT_EQ(failure(INSTANCE_UID_LINE + "    InstanceUID 3c0a Req\n"),
              "bad.txt:2: expected 'value VALUE MEANING' under an element");
    EXPECT_EQ(failure(INSTANCE_UID_LINE + SET_LINE + "    InstanceUID 3c0a\n"),
              "bad.txt:3: expected 'ELEMENT TAG STATUS' in a set");
    EXPECT_EQ(
        failure("element Instance-UID 06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00 UUID\n"),
        "bad.txt:1: bad name 'Instance-UID': letters, digits, '_' and '.' only");
}

TEST(DictionarySource, IgnoresCommentsBlankLinesAndCarriageReturns)
{
    Source source;
    parseSource("# a comment\r\n\r\n" + INSTANCE_UID_LINE + "   # indented comment\n" + SET_LINE +
                    "    InstanceUID 3c0a Req   # trailing comment\r\n",
                "good.txt", source);
    ASSERT_EQ(source.elements.size(), 1u);
    ASSERT_EQ(source.sets.size(), 1u);
    EXPECT_EQ(source.sets[0].attributes.size(), 1u);
    EXPECT_EQ(source.sets[0].where.line, 5);
    EXPECT_NO_THROW(compileDictionary(source));
}

// The command reports the file and line, and leaves no output behind.
TEST(DictionaryCompilerCommand, FailsWithFileAndLineOnAMalformedSource)
{
    const Halvorn::Test::TempDir dir;
    const std::filesystem::path source = dir.path() / "bad.txt";
    std::ofstream(source) << INSTANCE_UID_LINE << SET_LINE << "    InstanceUID 3c0a Maybe\n";
    const std::filesystem::path output = dir.path() / "out.bin";
    const std::filesystem::path errors = dir.path() / "errors.txt";
    const std::string command = std::string(MXF_DICTC_PATH) + " -o " + output.string() + " " +
                                source.string() + " 2> " + errors.string();

    EXPECT_NE(std::system(command.c_str()), 0);
    std::ostringstream text;
    text << std::ifstream(errors).rdbuf();
    EXPECT_EQ(text.str(), "mxf-dictc: " + source.string() +
                              ":3: unknown required status 'Maybe': Req, E/req, D/req, B.Effort "
                              "or Opt\n");
    EXPECT_FALSE(std::filesystem::exists(output));
    EXPECT_FALSE(std::filesystem::exists(output.string() + ".partial"));
}
