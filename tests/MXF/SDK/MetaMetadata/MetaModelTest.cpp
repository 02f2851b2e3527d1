// The meta classes, the Dictionary's maps and the required statuses, without a file.
#include "MXF/SDK/MetaMetadata/AttributeRequiredStatus.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/MetaMetadata/MetaElements.h"
#include "MXF/SDK/MetaMetadata/MetaMetadataSet.h"
#include "TestSupport.h"

#include <gtest/gtest.h>
#include <thread>

using namespace Halvorn::Test;
using Halvorn::Test::Support::Bytes;
using Halvorn::Test::Support::hexBytes;
using Halvorn::Test::Support::operator+;
using Halvorn::Test::Support::forEachSplit;
using Halvorn::Test::Support::thrownMessage;
using namespace MXF::SDK;
using namespace MXF::SDK::MetaMetadata;
using Types::LocalTag;
using Types::UniversalLabel;

namespace
{

UniversalLabel ul(const char* hex)
{
    return UniversalLabel(hexBytes(hex).data());
}

const UniversalLabel LABEL = ul("06 0e 2b 34 01 01 01 02 05 20 07 01 08 00 00 00");
const UniversalLabel OTHER = ul("06 0e 2b 34 01 01 01 01 01 01 15 02 00 00 00 00");

} // namespace

TEST(MetaElements, RefuseTypesAndLimitsThatDoNotFitTheirClass)
{
    using E = Exceptions::InvalidMetaElement;
    // Type numbers: 0 Array, 1 Batch, 15 Rational, 18 UInt32, 27 UUID, 29 StrongReference,
    // 30 WeakReference.
    EXPECT_EQ(thrownMessage<E>([] { MetaCollection(LABEL, 18, 15, 0, 1); }),
              L"Tried to create a MetaCollectionElement derived class with dataType: UInt32");
    EXPECT_EQ(thrownMessage<E>([] { MetaReferenceCollection(LABEL, 29, 29, 0, 1, {}); }),
              L"Tried to create a MetaCollectionElement derived class with dataType: "
              L"StrongReference");
    EXPECT_EQ(thrownMessage<E>([] { MetaCollection(LABEL, 0, 15, 5, 2); }),
              L"Tried to create a MetaCollectionElement derived class with invalid limits: 5, 2");
    for (const auto& [type, name] :
         {std::pair{0u, L"Array"}, std::pair{1u, L"Batch"}, std::pair{29u, L"StrongReference"},
          std::pair{30u, L"WeakReference"}})
        EXPECT_EQ(thrownMessage<E>([type = type] { MetaSimpleElement(LABEL, type); }),
                  std::wstring(L"Tried to create a MetaSimpleElement with dataType: ") + name);
    EXPECT_EQ(thrownMessage<E>([] { MetaReferenceElement(LABEL, 27, {}); }),
              L"Tried to create a MetaReferenceElement with dataType: UUID");
    // Past the type table the number stands for the name.
    EXPECT_EQ(thrownMessage<E>([] { MetaReferenceElement(LABEL, 99, {}); }),
              L"Tried to create a MetaReferenceElement with dataType: 99");
    EXPECT_EQ(thrownMessage<E>([] { MetaReferenceCollection(LABEL, 1, 18, 0, 1, {}); }),
              L"Tried to create a MetaReferenceCollection with dataType: UInt32");
    EXPECT_EQ(thrownMessage<E>([] { MetaCollection(LABEL, 1, 30, 0, 1); }),
              L"Tried to create a MetaCollection with dataSubType: WeakReference");

    const MetaCollection exact(LABEL, 1, 15, 3, 3);
    EXPECT_EQ(exact.minimum(), 3u);
    const MetaReferenceCollection references(LABEL, 0, 30, 0, 0xFFFFFFFF, {});
    EXPECT_EQ(metaElementAs<MetaReferenceCollection>(references), &references);
    EXPECT_EQ(metaElementAs<MetaCollection>(references), nullptr);
    EXPECT_EQ(metaElementAs<MetaSimpleElement>(exact), nullptr);
}

TEST(PropertyMap, ReplacesByNameAndRefusesAMissingName)
{
    PropertyMap map;
    map.setProperty(L"name", L"Preface");
    map.setProperty(L"name", L"Header");
    EXPECT_EQ(map.property(L"name"), L"Header");
    EXPECT_EQ(thrownMessage<Exceptions::NotFound>([&] { (void)map.property(L"colour"); }),
              L"Property not found: colour");

    MetaSimpleElement element(LABEL, 27);
    static_cast<PropertyMap&>(element) = map;
    EXPECT_EQ(element.properties(), map.properties());
}

TEST(MetaMetadataSet, RefusesASecondAttributeOfALabel)
{
    const MetaSimpleElement uuid(OTHER, 27);
    MetaMetadataSet set(ul("06 0e 2b 34 02 53 01 01 0d 01 01 01 01 01 2f 00"));
    set.addMetaAttribute(std::make_shared<MetaAttribute>(OTHER, LocalTag(0x3c0a), 0, uuid));
    EXPECT_EQ(thrownMessage<Exceptions::InvalidMetaAttribute>(
                  [&] {
                      set.addMetaAttribute(
                          std::make_shared<MetaAttribute>(OTHER, std::nullopt, 4, uuid));
                  }),
              L"A MetaAttribute with UL 1.3.53.1.1.1.1.1.1.21.2 already exists in this "
              L"MetaMetadataSet");
    ASSERT_EQ(set.metaAttributes().size(), 1u);
    EXPECT_EQ(set.metaAttribute(OTHER)->requiredStatus(), 0u);
    EXPECT_EQ(set.metaAttribute(LABEL), nullptr);
}

TEST(Dictionary, PairsEachTagWithOneLabel)
{
    Dictionary dictionary;
    dictionary.addLocalTag(LocalTag(0x0102), LABEL);
    dictionary.addLocalTag(LocalTag(0x0102), OTHER);
    EXPECT_TRUE(*dictionary.universalLabel(LocalTag(0x0102)) == OTHER);
    EXPECT_EQ(dictionary.localTag(LABEL), nullptr);
    EXPECT_EQ(dictionary.localTag(OTHER)->value(), 0x0102);

    dictionary.addLocalTag(LocalTag(0x3c0a), OTHER);
    EXPECT_EQ(dictionary.universalLabel(LocalTag(0x0102)), nullptr);
    EXPECT_EQ(dictionary.localTag(OTHER)->value(), 0x3c0a);
    EXPECT_EQ(dictionary.localTagCount(), 1u);
}

TEST(Dictionary, KeepsWhatALaterEntryReplacedAlive)
{
    Dictionary dictionary;
    dictionary.addMetaElement(LABEL, std::make_unique<MetaSimpleElement>(LABEL, 27));
    const MetaElement* first = dictionary.metaElement(LABEL);
    dictionary.addMetaElement(LABEL, std::make_unique<MetaSimpleElement>(LABEL, 23));
    EXPECT_EQ(dictionary.metaElement(LABEL)->dataType(), 23u);
    EXPECT_EQ(first->dataType(), 27u);

    dictionary.addMetaMetadataSet(std::make_unique<MetaMetadataSet>(OTHER));
    const MetaMetadataSet* set = dictionary.metaMetadataSet(OTHER);
    dictionary.addMetaMetadataSet(std::make_unique<MetaMetadataSet>(OTHER));
    EXPECT_NE(dictionary.metaMetadataSet(OTHER), set);
    EXPECT_TRUE(set->universalLabel() == OTHER);
    EXPECT_EQ(dictionary.metaElementCount(), 1u);
    EXPECT_EQ(dictionary.metaMetadataSetCount(), 1u);
}

TEST(AttributeRequiredStatus, MapsTheStatusesOf377MBothWays)
{
    const AttributeRequiredStatus& statuses = AttributeRequiredStatus::instance();
    const wchar_t* texts[] = {L"Req", L"E/req", L"D/req", L"B.Effort", L"Opt"};
    for (std::uint32_t status = 0; status < 5; ++status)
    {
        EXPECT_EQ(statuses.text(status), texts[status]);
        EXPECT_EQ(statuses.status(texts[status]), status);
    }
    EXPECT_EQ(thrownMessage<Exceptions::NotFound>([&] { (void)statuses.text(5); }),
              L"StatusNotFound: 5");
    EXPECT_EQ(thrownMessage<Exceptions::NotFound>([&] { (void)statuses.status(L"req"); }),
              L"StatusNotFound: req");
}

TEST(Dictionary, IsReadByManyThreadsAtOnce)
{
    Dictionary dictionary;
    dictionary.addLocalTag(LocalTag(0x3c0a), OTHER);
    dictionary.addMetaElement(OTHER, std::make_unique<MetaSimpleElement>(OTHER, 27));
    std::vector<std::thread> threads;
    std::vector<const AttributeRequiredStatus*> made(4);
    for (std::size_t i = 0; i < made.size(); ++i)
        threads.emplace_back(
            [&, i]
            {
                made[i] = &AttributeRequiredStatus::instance();
                for (int round = 0; round < 200; ++round)
                {
                    EXPECT_EQ(dictionary.localTag(OTHER)->value(), 0x3c0a);
                    EXPECT_EQ(dictionary.metaElement(OTHER)->dataType(), 27u);
                    EXPECT_EQ(made[i]->text(4), L"Opt");
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    for (const AttributeRequiredStatus* statuses : made)
        EXPECT_EQ(statuses, made[0]);
}
