// The loader on small files written field by field: what a good file gives, and each fault of the
// format with its exception and text. Every file is also read in small pieces.
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"

#include "DictionaryFileBytes.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/MetaMetadata/AttributeRequiredStatus.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Types/Integers.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"
#include "TestSupport.h"

#include <fstream>
#include <gtest/gtest.h>

using namespace Halvorn::Test;
using Halvorn::Test::Support::Bytes;
using Halvorn::Test::Support::hexBytes;
using Halvorn::Test::Support::operator+;
using Halvorn::Test::Support::forEachSplit;
using Halvorn::Test::Support::thrownMessage;
using namespace Halvorn::Test::DictionaryFile;
using namespace MXF::SDK;
using namespace MXF::SDK::MetaMetadata;
using Types::LocalTag;
using Types::UniversalLabel;

namespace
{

const Bytes INSTANCE_UID = hexBytes("06 0e 2b 34 01 01 01 01 01 01 15 02 00 00 00 00");
const Bytes GENERATION_UID = hexBytes("06 0e 2b 34 01 01 01 02 05 20 07 01 08 00 00 00");
const Bytes SIGNAL_STANDARD = hexBytes("06 0e 2b 34 01 01 01 05 04 05 01 13 00 00 00 00");
const Bytes IDENTIFICATIONS = hexBytes("06 0e 2b 34 01 01 01 02 06 01 01 04 06 04 00 00");
const Bytes PRIMARY_PACKAGE = hexBytes("06 0e 2b 34 01 01 01 04 06 01 01 04 01 08 00 00");
const Bytes ESSENCE_CONTAINERS = hexBytes("06 0e 2b 34 01 01 01 02 01 02 02 10 02 01 00 00");
const Bytes FORMAT_VERSION = hexBytes("06 0e 2b 34 01 01 01 02 06 01 01 07 08 00 00 00");
const Bytes PREFACE = hexBytes("06 0e 2b 34 02 53 01 01 0d 01 01 01 01 01 2f 00");
const Bytes IDENTIFICATION = hexBytes("06 0e 2b 34 02 53 01 01 0d 01 01 01 01 01 30 00");
const Bytes PACKAGE = hexBytes("06 0e 2b 34 02 53 01 01 0d 01 01 01 01 01 34 00");

UniversalLabel ul(const Bytes& bytes)
{
    return UniversalLabel(bytes.data());
}

Bytes instanceUIDElement()
{
    return simpleElement(INSTANCE_UID, 27, name("InstanceUID"));
}

// One element of each kind, a set that uses them, an attribute with an element of its own, and
// the tag table.
Bytes goodFile()
{
    return header(2, 7) + instanceUIDElement() +
           simpleElement(
               SIGNAL_STANDARD, 35,
               name("SignalStandard") +
                   berField(0x0009, enumerationEntry(35, {0x00}) + enumerationEntry(35, {0x04}))) +
           item(0x01, name("EssenceContainers") + label(0x0003, ESSENCE_CONTAINERS) +
                          number(0x0004, 1) + number(0x0005, 23) + number(0x0006, 1) +
                          number(0x0007, 8)) +
           item(0x03, name("PrimaryPackage") + label(0x0003, PRIMARY_PACKAGE) + number(0x0004, 30) +
                          allowedReferences({PACKAGE})) +
           item(0x02, name("Identifications") + label(0x0003, IDENTIFICATIONS) + number(0x0004, 0) +
                          number(0x0005, 29) + number(0x0006, 1) + number(0x0007, 0xFFFFFFFF) +
                          allowedReferences({IDENTIFICATION})) +
           set(PREFACE,
               attribute(INSTANCE_UID, 0, 0x3c0a, name("InstanceUID")) +
                   attribute(SIGNAL_STANDARD, 4, 0, name("SignalStandard")) +
                   attribute(ESSENCE_CONTAINERS, 0, 0x3b0a) +
                   attribute(PRIMARY_PACKAGE, 3, 0x3b08) + attribute(IDENTIFICATIONS, 0, 0x3b06) +
                   attribute(FORMAT_VERSION, 2, 0x0004,
                             name("FormatVersion") +
                                 berField(0x000D, simpleElement(FORMAT_VERSION, 18))),
               name("Preface")) +
           tagTable({{0x3c0a, INSTANCE_UID},
                     {0x3b0a, ESSENCE_CONTAINERS},
                     {0x3b08, PRIMARY_PACKAGE},
                     {0x3b06, IDENTIFICATIONS},
                     {0x0004, FORMAT_VERSION}});
}

void load(DataIO::DataSource& source, Dictionary& dictionary)
{
    BinaryLoader::load(source, dictionary);
}

void load(const Bytes& file, Dictionary& dictionary)
{
    DataIO::Memory::MemoryDataSource source(file.data(), file.size());
    BinaryLoader::load(source, dictionary);
}

template <typename E>
void expectFailure(const Bytes& file, const std::wstring& text)
{
    forEachSplit(file,
                 [&](DataIO::DataSource& source)
                 {
                     Dictionary dictionary;
                     EXPECT_EQ(thrownMessage<E>([&] { load(source, dictionary); }), text);
                 });
}

Bytes wireBytes(const Types::BaseType& value)
{
    const auto* simple = Types::Visitors::asSimpleDataType(value);
    if (simple == nullptr)
        return {};
    return Bytes(simple->data(), simple->data() + simple->size());
}

} // namespace

TEST(BinaryLoader, LoadsEveryKindOfItemOfAGoodFile)
{
    forEachSplit(
        goodFile(),
        [](DataIO::DataSource& source)
        {
            Dictionary dictionary;
            load(source, dictionary);
            EXPECT_EQ(dictionary.metaElementCount(), 5u);
            EXPECT_EQ(dictionary.metaMetadataSetCount(), 1u);
            EXPECT_EQ(dictionary.localTagCount(), 5u);

            const auto* signal =
                metaElementAs<MetaSimpleElement>(*dictionary.metaElement(ul(SIGNAL_STANDARD)));
            ASSERT_NE(signal, nullptr);
            EXPECT_EQ(signal->dataType(), 35u);
            EXPECT_EQ(signal->property(L"name"), L"SignalStandard");
            ASSERT_EQ(signal->enumerations().size(), 2u);
            EXPECT_EQ(wireBytes(*signal->enumerations()[0]), Bytes{0x00});
            EXPECT_EQ(wireBytes(*signal->enumerations()[1]), Bytes{0x04});
            EXPECT_NE(Types::Visitors::getAs<Types::SignalStandard>(*signal->enumerations()[1]),
                      nullptr);

            const auto* containers =
                metaElementAs<MetaCollection>(*dictionary.metaElement(ul(ESSENCE_CONTAINERS)));
            ASSERT_NE(containers, nullptr);
            EXPECT_EQ(containers->dataType(), 1u);
            EXPECT_EQ(containers->dataSubType(), 23u);
            EXPECT_EQ(containers->minimum(), 1u);
            EXPECT_EQ(containers->maximum(), 8u);

            const auto* primary =
                metaElementAs<MetaReferenceElement>(*dictionary.metaElement(ul(PRIMARY_PACKAGE)));
            ASSERT_NE(primary, nullptr);
            EXPECT_EQ(primary->dataType(), 30u);
            ASSERT_EQ(primary->allowedReferences().size(), 1u);
            EXPECT_EQ(Bytes(primary->allowedReferences()[0].data(),
                            primary->allowedReferences()[0].data() + 16),
                      PACKAGE);

            const auto* identifications = metaElementAs<MetaReferenceCollection>(
                *dictionary.metaElement(ul(IDENTIFICATIONS)));
            ASSERT_NE(identifications, nullptr);
            EXPECT_EQ(identifications->dataType(), 0u);
            EXPECT_EQ(identifications->dataSubType(), 29u);
            EXPECT_EQ(identifications->maximum(), 0xFFFFFFFFu);
            ASSERT_EQ(identifications->allowedReferences().size(), 1u);

            const MetaMetadataSet* preface = dictionary.metaMetadataSet(ul(PREFACE));
            ASSERT_NE(preface, nullptr);
            EXPECT_EQ(preface->property(L"name"), L"Preface");
            ASSERT_EQ(preface->metaAttributes().size(), 6u);
            const Bytes order[] = {INSTANCE_UID,    SIGNAL_STANDARD, ESSENCE_CONTAINERS,
                                   PRIMARY_PACKAGE, IDENTIFICATIONS, FORMAT_VERSION};
            for (std::size_t i = 0; i < 6; ++i)
                EXPECT_TRUE(preface->metaAttributes()[i]->universalLabel() == ul(order[i])) << i;

            const auto instanceUID = preface->metaAttribute(ul(INSTANCE_UID));
            ASSERT_NE(instanceUID, nullptr);
            EXPECT_EQ(&instanceUID->metaElement(), dictionary.metaElement(ul(INSTANCE_UID)));
            ASSERT_NE(instanceUID->localTag(), nullptr);
            EXPECT_EQ(instanceUID->localTag()->value(), 0x3c0a);
            EXPECT_EQ(instanceUID->requiredStatus(), 0u);
            // The file's pairs and the three the loader adds, with the text forms of the
            // identifier classes: plain hex for tags, OID for labels.
            EXPECT_EQ(instanceUID->properties(),
                      (std::map<std::wstring, std::wstring>{
                          {L"name", L"InstanceUID"},
                          {L"LocalTag", L"0x3c0a"},
                          {L"MetadataElementRequiredStatus", L"Req"},
                          {L"UniversalLabel", L"1.3.53.1.1.1.1.1.1.21.2"}}));

            const auto signalAttribute = preface->metaAttribute(ul(SIGNAL_STANDARD));
            EXPECT_EQ(signalAttribute->localTag(), nullptr);
            EXPECT_FALSE(signalAttribute->hasProperty(L"LocalTag"));
            EXPECT_EQ(signalAttribute->property(L"MetadataElementRequiredStatus"), L"Opt");
            EXPECT_EQ(preface->metaAttribute(ul(PRIMARY_PACKAGE))
                          ->property(L"MetadataElementRequiredStatus"),
                      L"B.Effort");

            // The inline element belongs to its attribute, not to the dictionary.
            const auto version = preface->metaAttribute(ul(FORMAT_VERSION));
            EXPECT_EQ(dictionary.metaElement(ul(FORMAT_VERSION)), nullptr);
            const auto* own = metaElementAs<MetaSimpleElement>(version->metaElement());
            ASSERT_NE(own, nullptr);
            EXPECT_EQ(own->dataType(), 18u);
            EXPECT_EQ(version->property(L"MetadataElementRequiredStatus"), L"D/req");

            ASSERT_NE(dictionary.universalLabel(LocalTag(0x3b08)), nullptr);
            EXPECT_TRUE(*dictionary.universalLabel(LocalTag(0x3b08)) == ul(PRIMARY_PACKAGE));
            ASSERT_NE(dictionary.localTag(ul(FORMAT_VERSION)), nullptr);
            EXPECT_EQ(dictionary.localTag(ul(FORMAT_VERSION))->value(), 0x0004);
            EXPECT_EQ(dictionary.universalLabel(LocalTag(0x3b09)), nullptr);
        });
}

TEST(BinaryLoader, ChecksTheMajorVersionOnlyAndTakesAVersionAloneAsEmpty)
{
    forEachSplit(header(2, 0),
                 [](DataIO::DataSource& source)
                 {
                     Dictionary dictionary;
                     load(source, dictionary);
                     EXPECT_EQ(dictionary.metaElementCount(), 0u);
                     EXPECT_EQ(dictionary.metaMetadataSetCount(), 0u);
                     EXPECT_EQ(dictionary.localTagCount(), 0u);
                 });
    for (const std::uint16_t minor : {0x0001, 0x00ff, 0xffff})
    {
        Dictionary dictionary;
        load(header(2, minor) + instanceUIDElement(), dictionary);
        EXPECT_EQ(dictionary.metaElementCount(), 1u) << minor;
    }
    // 00 01 / 00 03 / 02 00: major versions 1, 3 and 512.
    for (const Bytes& bad : {hexBytes("00 01 00 00"), hexBytes("00 03 00 00"), hexBytes("02 00")})
    {
        expectFailure<Exceptions::InvalidFormat>(bad + instanceUIDElement(),
                                                 L"Invalid dictionary version number");
        expectFailure<Exceptions::InvalidFormat>(bad, L"Invalid dictionary version number");
    }
}

TEST(BinaryLoader, RefusesAShortFile)
{
    const Bytes whole = header() + instanceUIDElement();
    // The version, the key, the length and the body each cut short.
    for (const std::size_t size : {std::size_t(0), std::size_t(1), std::size_t(3), std::size_t(10),
                                   std::size_t(20), whole.size() - 1})
        expectFailure<Exceptions::NotEnoughData>(Bytes(whole.begin(), whole.begin() + size),
                                                 L"Not enough data");
    // A body that declares more than it has.
    const Bytes body = label(0x0003, INSTANCE_UID) + number(0x0004, 27);
    expectFailure<Exceptions::NotEnoughData>(header() + itemKey(0x04) + ber(body.size() + 4) + body,
                                             L"Not enough data");
    // A field that declares more than its item has, though the file goes on.
    expectFailure<Exceptions::NotEnoughData>(
        header() + item(0x04, label(0x0003, INSTANCE_UID) + field(0x0004, {0, 0})) +
            instanceUIDElement(),
        L"Not enough data");
}

TEST(BinaryLoader, RefusesKeysOutsideTheItemsOfTheTopLevel)
{
    expectFailure<Exceptions::InvalidULDesignator>(header() + item(0x08, {}), L"UnKnown Set");
    expectFailure<Exceptions::InvalidULDesignator>(header() + item(0x00, {}), L"UnKnown Set");
    // An attribute belongs in a set.
    expectFailure<Exceptions::InvalidULDesignator>(header() + attribute(INSTANCE_UID, 0, 0x3c0a),
                                                   L"UnKnown Set");
    // A label of the register is no item either.
    expectFailure<Exceptions::InvalidULDesignator>(
        header() + hexBytes("06 0e 2b 34 01 01 01 01 01 01 15 02 00 00 00 00 00"), L"UnKnown Set");
}

TEST(BinaryLoader, HoldsNamesAndValuesOfPropertiesInPairs)
{
    const auto element = [](const Bytes& pairs)
    { return header() + item(0x04, pairs + label(0x0003, INSTANCE_UID) + number(0x0004, 27)); };
    expectFailure<Exceptions::InvalidStructure>(element(text(1, "a") + text(1, "b")),
                                                L"Found another Property Name without Property "
                                                L"Value");
    expectFailure<Exceptions::InvalidStructure>(element(text(2, "b")),
                                                L"Found a Property Value without Property Name");
    expectFailure<Exceptions::InvalidStructure>(element(text(1, "a") + number(0x0004, 27)),
                                                L"Found a Property Value without Property Name");

    // The same rules in sets and attributes.
    expectFailure<Exceptions::InvalidStructure>(
        header() + instanceUIDElement() +
            set(PREFACE, attribute(INSTANCE_UID, 0, 0x3c0a, text(2, "b"))),
        L"Found a Property Value without Property Name");
    expectFailure<Exceptions::InvalidStructure>(
        header() + instanceUIDElement() +
            set(PREFACE, attribute(INSTANCE_UID, 0, 0x3c0a), text(1, "a") + text(1, "b")),
        L"Found another Property Name without Property Value");

    // Empty texts, several pairs, and a name given twice: the later value wins.
    Dictionary dictionary;
    load(element(text(1, "") + text(2, "") + text(1, "kind") + text(2, "x") + text(1, "kind") +
                 text(2, "y")),
         dictionary);
    const MetaElement* loaded = dictionary.metaElement(ul(INSTANCE_UID));
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->properties(),
              (std::map<std::wstring, std::wstring>{{L"", L""}, {L"kind", L"y"}}));
}

TEST(BinaryLoader, RefusesFieldsThatDoNotBelongInTheirBody)
{
    // 000A in an element, 0004 in a set, 0003 in an attribute.
    expectFailure<Exceptions::InvalidStructure>(
        header() + simpleElement(INSTANCE_UID, 27, berField(0x000A, {})), L"Invalid Local Tag");
    expectFailure<Exceptions::InvalidStructure>(
        header() + instanceUIDElement() +
            set(PREFACE, attribute(INSTANCE_UID, 0, 0x3c0a), number(0x0004, 27)),
        L"Invalid Local Tag");
    expectFailure<Exceptions::InvalidStructure>(
        header() + instanceUIDElement() +
            set(PREFACE, attribute(INSTANCE_UID, 0, 0x3c0a, label(0x0003, INSTANCE_UID))),
        L"Invalid localTag in MetaAttribute");
}

TEST(BinaryLoader, NeedsTheLabelOfEveryElementAndSet)
{
    for (const std::uint8_t kind : {0x01, 0x02, 0x03, 0x04})
    {
        expectFailure<Exceptions::InvalidStructure>(
            header() + item(kind, name("x") + number(0x0004, 27)),
            L"MetaSimpleElement without set UniversalLabel");
        expectFailure<Exceptions::InvalidStructure>(
            header() + item(kind, label(0x0003, {}) + number(0x0004, 27)),
            L"MetaSimpleElement without set UniversalLabel");
    }
    expectFailure<Exceptions::InvalidStructure>(
        header() + instanceUIDElement() +
            item(0x05, name("x") + berField(0x000A, attribute(INSTANCE_UID, 0, 0x3c0a))),
        L"MetaMetadataSet without set UniversalLabel");
    expectFailure<Exceptions::InvalidStructure>(
        header() + instanceUIDElement() + simpleElement(GENERATION_UID, 27) +
            set(PREFACE, attribute(GENERATION_UID, 4, 0x0102)),
        L"MetaMetadataSet without InstanceUID MetaAttribute");
}

TEST(BinaryLoader, ChecksTheListsOfAnElement)
{
    // Batch length 24 for one key: 8 + 1 * 16 = 24 is right, 25 and 23 are not.
    const auto references = [](std::uint16_t batchLength)
    {
        const Bytes batch = be16(batchLength) + be32(1) + be32(16) + PACKAGE;
        return header() + item(0x03, label(0x0003, PRIMARY_PACKAGE) + number(0x0004, 30) +
                                         berField(0x0008, batch));
    };
    Dictionary dictionary;
    load(references(24), dictionary);
    EXPECT_NE(dictionary.metaElement(ul(PRIMARY_PACKAGE)), nullptr);
    for (const std::uint16_t wrong : {23, 25, 0})
        expectFailure<Exceptions::InvalidStructure>(
            references(wrong), L"Allowed Metadata Sets References are invalid");

    // The identifier of an entry is the element's type: 35 here, not 20.
    expectFailure<Exceptions::InvalidStructure>(
        header() + simpleElement(SIGNAL_STANDARD, 35, berField(0x0009, enumerationEntry(20, {1}))),
        L"The enumeration identifier differs from element identifier");
    // A type of no simple value has no factory.
    expectFailure<Exceptions::NoFactory>(
        header() + simpleElement(SIGNAL_STANDARD, 10, berField(0x0009, enumerationEntry(10, {1}))),
        L"No Factory for type");
}

TEST(BinaryLoader, ReadsBERLengthsOfUpToNineBytes)
{
    // 000A with 88 and eight length bytes: 9 bytes in all, allowed.
    const Bytes attributes = attribute(INSTANCE_UID, 0, 0x3c0a);
    const Bytes longForm =
        hexBytes("88 00 00 00 00 00 00 00") + Bytes{std::uint8_t(attributes.size())};
    const Bytes setBody = label(0x0003, PREFACE) + be16(0x000A) + longForm + attributes;
    Dictionary dictionary;
    load(header() + instanceUIDElement() + item(0x05, setBody), dictionary);
    EXPECT_NE(dictionary.metaMetadataSet(ul(PREFACE)), nullptr);

    // 89: ten bytes.
    expectFailure<Exceptions::NotEnoughData>(
        header() + instanceUIDElement() +
            item(0x05, label(0x0003, PREFACE) + be16(0x000A) + hexBytes("89") + Bytes(8, 0) +
                           Bytes{std::uint8_t(attributes.size())} + attributes),
        L"BER lenght is more than allowed");
    // The same reader for the lengths of attributes, of 0008, 0009 and 000D.
    expectFailure<Exceptions::NotEnoughData>(
        header() + instanceUIDElement() +
            set(PREFACE, itemKey(0x06) + hexBytes("ff") + Bytes(20, 0)),
        L"BER lenght is more than allowed");
    expectFailure<Exceptions::NotEnoughData>(
        header() + simpleElement(SIGNAL_STANDARD, 35, be16(0x0009) + hexBytes("8a") + Bytes(12, 0)),
        L"BER lenght is more than allowed");
}

TEST(BinaryLoader, ChecksTheAttributesOfASet)
{
    expectFailure<Exceptions::InvalidULDesignator>(
        header() + instanceUIDElement() +
            set(PREFACE, item(0x04, label(0x000B, INSTANCE_UID) + number(0x000C, 0))),
        L"Invalid MetaAttribute Key");

    // An attribute that runs past the end of 000A, which is one byte short of it.
    const Bytes attributes = attribute(INSTANCE_UID, 0, 0x3c0a);
    expectFailure<Exceptions::InvalidStructure>(
        header() + instanceUIDElement() +
            item(0x05, label(0x0003, PREFACE) + be16(0x000A) + ber(attributes.size() - 1) +
                           attributes + name("x")),
        L"Invalid MetaAttribute");

    // The element must come first in the file.
    expectFailure<Exceptions::InvalidStructure>(
        header() + set(PREFACE, attribute(INSTANCE_UID, 0, 0x3c0a)) + instanceUIDElement(),
        L"The current MetaAttribute doesn't have any metaElement");

    expectFailure<Exceptions::InvalidMetaAttribute>(
        header() + instanceUIDElement() +
            set(PREFACE, attribute(INSTANCE_UID, 0, 0x3c0a) + attribute(INSTANCE_UID, 4, 0)),
        L"A MetaAttribute with UL 1.3.53.1.1.1.1.1.1.21.2 already exists in this "
        L"MetaMetadataSet");

    expectFailure<Exceptions::NotFound>(header() + instanceUIDElement() +
                                            set(PREFACE, attribute(INSTANCE_UID, 5, 0x3c0a)),
                                        L"StatusNotFound: 5");
}

TEST(BinaryLoader, TakesAnElementInsideAnAttributeAsAtTheTopLevel)
{
    const Bytes element = simpleElement(
        SIGNAL_STANDARD, 35, name("SignalStandard") + berField(0x0009, enumerationEntry(35, {4})));
    Dictionary dictionary;
    load(header() + instanceUIDElement() + element +
             set(PREFACE, attribute(INSTANCE_UID, 0, 0x3c0a) +
                              attribute(SIGNAL_STANDARD, 4, 0, berField(0x000D, element))),
         dictionary);
    const MetaElement* top = dictionary.metaElement(ul(SIGNAL_STANDARD));
    const MetaElement& inside =
        dictionary.metaMetadataSet(ul(PREFACE))->metaAttribute(ul(SIGNAL_STANDARD))->metaElement();
    ASSERT_NE(top, nullptr);
    EXPECT_NE(top, &inside);
    const auto* a = metaElementAs<MetaSimpleElement>(*top);
    const auto* b = metaElementAs<MetaSimpleElement>(inside);
    ASSERT_TRUE(a != nullptr && b != nullptr);
    EXPECT_TRUE(a->universalLabel() == b->universalLabel());
    EXPECT_EQ(a->dataType(), b->dataType());
    EXPECT_EQ(a->properties(), b->properties());
    ASSERT_EQ(b->enumerations().size(), 1u);
    EXPECT_EQ(wireBytes(*b->enumerations()[0]), Bytes{4});

    // Faults of the element come out the same way.
    const Bytes broken = item(0x04, number(0x0004, 27));
    expectFailure<Exceptions::InvalidStructure>(header() + broken,
                                                L"MetaSimpleElement without set UniversalLabel");
    expectFailure<Exceptions::InvalidStructure>(
        header() + instanceUIDElement() +
            set(PREFACE, attribute(INSTANCE_UID, 0, 0x3c0a, berField(0x000D, broken))),
        L"MetaSimpleElement without set UniversalLabel");
    expectFailure<Exceptions::InvalidMetaElement>(
        header() + instanceUIDElement() +
            set(PREFACE, attribute(INSTANCE_UID, 0, 0x3c0a,
                                   berField(0x000D, item(0x03, label(0x0003, INSTANCE_UID) +
                                                                   number(0x0004, 27))))),
        L"Tried to create a MetaReferenceElement with dataType: UUID");
}

TEST(BinaryLoader, ReadsTheTagTableInPairsOfEighteenBytes)
{
    Dictionary dictionary;
    load(header() + tagTable({{0x3c0a, INSTANCE_UID}, {0x0102, GENERATION_UID}}), dictionary);
    EXPECT_EQ(dictionary.localTagCount(), 2u);
    ASSERT_NE(dictionary.localTag(ul(GENERATION_UID)), nullptr);
    EXPECT_EQ(dictionary.localTag(ul(GENERATION_UID))->value(), 0x0102);

    // 18 + 17 bytes.
    const Bytes table = be16(0x3c0a) + INSTANCE_UID + be16(0x0102) +
                        Bytes(GENERATION_UID.begin(), GENERATION_UID.end() - 1);
    expectFailure<Exceptions::NotEnoughData>(header() + item(0x07, table), L"Not enough data");
}

TEST(BinaryLoader, LetsTheLaterOfTwoSetsOrElementsOfALabelWin)
{
    Dictionary dictionary;
    load(header() + instanceUIDElement() + simpleElement(GENERATION_UID, 27) +
             set(PREFACE, attribute(INSTANCE_UID, 0, 0x3c0a), name("first")) +
             simpleElement(GENERATION_UID, 23) +
             set(PREFACE, attribute(INSTANCE_UID, 0, 0x3c0a) + attribute(GENERATION_UID, 4, 0),
                 name("second")),
         dictionary);
    EXPECT_EQ(dictionary.metaMetadataSetCount(), 1u);
    const MetaMetadataSet* preface = dictionary.metaMetadataSet(ul(PREFACE));
    EXPECT_EQ(preface->property(L"name"), L"second");
    EXPECT_EQ(preface->metaAttributes().size(), 2u);
    EXPECT_EQ(dictionary.metaElement(ul(GENERATION_UID))->dataType(), 23u);
    EXPECT_EQ(preface->metaAttribute(ul(GENERATION_UID))->metaElement().dataType(), 23u);
}

TEST(BinaryLoader, KeepsWhatItReadBeforeAFault)
{
    Dictionary dictionary;
    const Bytes file = header() + instanceUIDElement() + simpleElement(GENERATION_UID, 27) +
                       item(0x09, {}) + simpleElement(SIGNAL_STANDARD, 35);
    EXPECT_THROW(load(file, dictionary), Exceptions::InvalidULDesignator);
    EXPECT_EQ(dictionary.metaElementCount(), 2u);
    EXPECT_EQ(dictionary.metaElement(ul(SIGNAL_STANDARD)), nullptr);
}

TEST(BinaryLoader, OpensAFileByItsPath)
{
    TempDir directory;
    const std::wstring path = directory.file(L"dictionary.bin");
    {
        const Bytes file = goodFile();
        std::ofstream(directory.path() / "dictionary.bin", std::ios::binary)
            .write(reinterpret_cast<const char*>(file.data()), std::streamsize(file.size()));
    }
    Dictionary dictionary;
    BinaryLoader::load(path, dictionary);
    EXPECT_EQ(dictionary.metaElementCount(), 5u);

    Dictionary none;
    EXPECT_THROW(BinaryLoader::load(directory.file(L"missing.bin"), none), Exceptions::IOError);
}

TEST(BinaryLoaderFactory, BuildsElementsOnlyForTheFourElementKeys)
{
    const Bytes body = label(0x0003, SIGNAL_STANDARD) + number(0x0004, 20);
    for (std::uint8_t kind = 0; kind < 0x10; ++kind)
    {
        const Bytes bytes = itemKey(kind) + ber(body.size()) + body;
        DataIO::Memory::MemoryDataSource source(bytes.data(), bytes.size());
        source.seek(17);
        KLV::KLVItem item(KLV::Key(bytes.data()), 1, body.size(), source, 0);
        std::unique_ptr<MetaElement> element;
        if (kind == 0x04)
        {
            element = BinaryLoaderFactory::create(item);
            ASSERT_NE(element, nullptr);
            EXPECT_NE(metaElementAs<MetaSimpleElement>(*element), nullptr);
            EXPECT_EQ(item.value.remaining(), 0u);
        }
        else if (kind < 0x01 || kind > 0x04)
        {
            EXPECT_EQ(BinaryLoaderFactory::create(item), nullptr) << int(kind);
            EXPECT_EQ(item.value.remaining(), body.size()) << int(kind);
        }
        else
        {
            // Collections and references refuse a type of single values.
            EXPECT_THROW(BinaryLoaderFactory::create(item), Exceptions::InvalidMetaElement);
        }
    }
}
