// Small headers made byte by byte against the dictionary of data/: the rules of reading (dark
// data, tags, the UMID case), of the reference graph, of new tags, and of the setters.
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MetaMetadata/MetaAttributes.h"
#include "MXF/SDK/MetaMetadata/MetaElements.h"
#include "MXF/SDK/Metadata/MetadataSet.h"
#include "MXF/SDK/Metadata/MetadataSetFactory.h"
#include "MXF/SDK/Types/Boolean.h"
#include "MXF/SDK/Types/Integers.h"
#include "MXF/SDK/Types/OpaqueTypes.h"
#include "MXF/SDK/Types/TypeIdentifiers.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"
#include "MetadataTestSupport.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

using namespace Halvorn::Test::Metadata;
using namespace MXF::SDK;
using namespace MXF::SDK::Metadata;
using Types::LocalTag;
using Types::UniversalLabel;

namespace
{

Bytes setKey(std::uint8_t kind)
{
    return {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01,
            0x0D, 0x01, 0x01, 0x01, 0x01, 0x01, kind, 0x00};
}

KLV::Key key(std::uint8_t kind)
{
    return KLV::Key(setKey(kind).data());
}

constexpr std::uint8_t PREFACE = 0x2F, IDENTIFICATION = 0x30, CONTENT_STORAGE = 0x18,
                       PICTURE_DESCRIPTOR = 0x27;

Bytes set(std::uint8_t kind, const Bytes& properties)
{
    return item(setKey(kind), properties);
}

Bytes batch(const std::vector<Bytes>& items)
{
    Bytes bytes = be(items.size(), 4) + be(items.empty() ? 0 : items[0].size(), 4);
    for (const Bytes& each : items)
        bytes = bytes + each;
    return bytes;
}

const UniversalLabel INSTANCE_UID(L"06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00");
const UniversalLabel CONTENT_STORAGE_REF(L"06.0e.2b.34.01.01.01.02.06.01.01.04.02.01.00.00");
const UniversalLabel PACKAGES(L"06.0e.2b.34.01.01.01.02.06.01.01.04.05.01.00.00");
const UniversalLabel IS_RIP_PRESENT(L"06.0e.2b.34.01.01.01.0e.04.04.05.03.00.00.00.00");
const UniversalLabel DISPLAY_X_OFFSET(L"06.0e.2b.34.01.01.01.01.04.01.05.01.0d.00.00.00");
const UniversalLabel UMID_LABEL(L"06.0e.2b.34.01.01.01.07.01.01.15.09.00.00.00.00");

std::wstring uuidText(std::uint8_t n)
{
    return Types::UUID(uuid(n).data()).toString();
}

// What reading a primer and then `sets` throws as an `E`.
template <typename E>
std::wstring readFailure(const Bytes& sets)
{
    return thrownMessage<E>([&] { readHeader(primer({}) + sets); });
}

TEST(MetadataStructure, PrefaceAndContentStorageAreChecked)
{
    const Bytes empty = primer({});
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>(
                  [&]
                  { readHeader(empty + set(IDENTIFICATION, local(0x3c0a, uuid(1))))->preface(); }),
              L"Preface not found in PartitionMetadata");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>(
                  [&]
                  {
                      readHeader(empty + set(PREFACE, local(0x3c0a, uuid(1))) +
                                 set(PREFACE, local(0x3c0a, uuid(2))))
                          ->preface();
                  }),
              L"More than one Preface found in PartitionMetadata");

    // A strong reference to a set that isn't there is no error of reading.
    auto dangling =
        readHeader(empty + set(PREFACE, local(0x3c0a, uuid(1)) + local(0x3b03, uuid(9))));
    EXPECT_EQ(dangling->preface().referencedSet(CONTENT_STORAGE_REF), nullptr);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>([&] { dangling->contentStorage(); }),
              L"contentStorage != 0: No ContentStorage");

    auto noPackages =
        readHeader(empty + set(PREFACE, local(0x3c0a, uuid(1)) + local(0x3b03, uuid(2))) +
                   set(CONTENT_STORAGE, local(0x3c0a, uuid(2)) + local(0x1901, batch({}))));
    EXPECT_EQ(&noPackages->preface().element(CONTENT_STORAGE_REF),
              &noPackages->preface().element(CONTENT_STORAGE_REF));
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>([&] { noPackages->contentStorage(); }),
              L"contentStorage -> packagesCount () > 0: No ContentStorage packages");
}

TEST(MetadataStructure, InstanceUIDsAndCyclesAreChecked)
{
    EXPECT_EQ(readFailure<Exceptions::InvalidFormat>(set(PREFACE, local(0x3c0a, uuid(1))) +
                                                     set(IDENTIFICATION, local(0x3c0a, uuid(1)))),
              L"The " + key(IDENTIFICATION).toString() + L" metadataSet has an instance UID, " +
                  uuidText(1) + L", already defined!");
    EXPECT_EQ(readFailure<Exceptions::NotFound>(set(IDENTIFICATION, local(0x3c01, {0, 0x41}))),
              L"InstanceUID not found in Metadata Set with key " + key(IDENTIFICATION).toString() +
                  L" Check Metadata Set builder.");
    // A set that holds itself, and a cycle through two sets.
    EXPECT_EQ(readFailure<Exceptions::InvalidFormat>(
                  set(CONTENT_STORAGE, local(0x3c0a, uuid(2)) + local(0x1901, batch({uuid(2)})))),
              L"Circular reference for this instanceUID: " + uuidText(2));
    EXPECT_EQ(readFailure<Exceptions::InvalidFormat>(
                  set(PREFACE, local(0x3c0a, uuid(1)) + local(0x3b03, uuid(2))) +
                  set(CONTENT_STORAGE, local(0x3c0a, uuid(2)) + local(0x1901, batch({uuid(1)})))),
              L"Circular reference for this instanceUID: " + uuidText(1));
}

TEST(MetadataReading, TagsThatDontResolveEndTheRead)
{
    EXPECT_EQ(readFailure<Exceptions::LocalTagNotFound>(
                  set(PREFACE, local(0x3c0a, uuid(1)) + local(0x7f7f, {1}))),
              L"Dictionary does not contain static Local Tag 0x7f7f");
    EXPECT_EQ(readFailure<Exceptions::NotFoundInPrimer>(
                  set(PREFACE, local(0x3c0a, uuid(1)) + local(0x9999, {1}))),
              L"Could not resolve local tag 0x9999 to Universal Label using either primer and the "
              L"dictionary.");
    EXPECT_EQ(readFailure<Exceptions::InvalidLocalTag>(set(PREFACE, local(0x0000, {1}))),
              L"Invalid Local Tag '00.00'");

    PartitionDictionary strict(dictionary());
    EXPECT_EQ(thrownMessage<Exceptions::NotFoundInPrimer>(
                  [&] { strict.universalLabel(LocalTag(0x3c0a), true); }),
              L"Could not resolve local tag 0x3c0a to Universal Label using primer.");
    strict.primerPack().add(LocalTag(0x3c0a), IS_RIP_PRESENT);
    EXPECT_EQ(strict.universalLabel(LocalTag(0x3c0a), false), IS_RIP_PRESENT);
    EXPECT_EQ(thrownMessage<Exceptions::UniversalLabelCollision>(
                  [&] { strict.universalLabel(LocalTag(0x3c0a), true); }),
              L"Primer redefines a static assigned tag!");
}

TEST(MetadataReading, CodingAndFramingFaultsThrow)
{
    Bytes berSet = set(PREFACE, local(0x3c0a, uuid(1)));
    berSet[5] = 0x13; // BER-coded local lengths
    EXPECT_EQ(readFailure<Exceptions::InvalidMetadataSet>(berSet),
              L"Invalid Metadata Set local field length or length field length");
    Bytes overlong = set(PREFACE, local(0x3c0a, uuid(1)));
    overlong[overlong.size() - 17] = 0x20; // the length says 32 where 16 are left
    EXPECT_EQ(readFailure<Exceptions::InvalidLength>(overlong),
              L"Invalid data size in Value to create an element in the metadataSet.");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidFormat>(
                  [&] { readHeader(set(PREFACE, local(0x3c0a, uuid(1))) + primer({})); }),
              L"PrimerPack::isPrimerPack (item -> key): Expected Primer Pack");
}

TEST(MetadataReading, WhatDoesntParseIsKeptAndWrittenBack)
{
    // An Int32 of 2 bytes, after the InstanceUID in label order: the set comes back as it was.
    const Bytes descriptor =
        set(PICTURE_DESCRIPTOR, local(0x3c0a, uuid(1)) + local(0x320a, {0x12, 0x34}));
    auto metadata = readHeader(primer({}) + descriptor);
    const MetadataSet& read = *metadata->sets().at(0);
    EXPECT_TRUE(read.element(DISPLAY_X_OFFSET).isEmpty());
    ASSERT_EQ(read.invalidElements().size(), 1u);
    const Element& invalid = *read.invalidElements()[0];
    EXPECT_EQ(invalid.universalLabel(), DISPLAY_X_OFFSET);
    EXPECT_NE(Types::Visitors::getAs<Types::Unknown>(*invalid.value()), nullptr);
    EXPECT_EQ(invalid.knownMetaAttribute(), nullptr);
    const Bytes out = written(*metadata);
    EXPECT_EQ(Bytes(out.end() - descriptor.size(), out.end()), descriptor);

    EXPECT_EQ(thrownMessage<Exceptions::NotFound>([&] { read.element(IS_RIP_PRESENT); }),
              L"No element with this Universal Label was found: " + IS_RIP_PRESENT.toString());
    MetadataSet& changeable = *metadata->sets().at(0);
    changeable.removeInvalidElement(invalid);
    EXPECT_TRUE(changeable.invalidElements().empty());
    EXPECT_EQ(thrownMessage<Exceptions::NotFound>(
                  [&] { changeable.removeInvalidElement(changeable.element(INSTANCE_UID)); }),
              L"Element not found in Invalid Element list!");
}

TEST(MetadataReading, DarkSetAndDarkPropertySurviveInAFixture)
{
    // Byte surgery on the header of opatom_pcm: a property of a label no dictionary has, under a
    // new dynamic tag, at the end of the Identification set, and a set of an unknown key.
    const Bytes file = fileBytes("opatom_pcm.mxf");
    std::size_t at = 512; // the primer, after the partition pack and its fill
    const Item oldPrimer = parseItem(file, at);
    ASSERT_EQ(oldPrimer.key[13], 0x05);
    const Bytes darkLabel = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x0E,
                             0x0F, 0x7F, 0x7F, 0x01, 0x00, 0x00, 0x00, 0x00};
    const Bytes& primerValue = oldPrimer.value;
    Bytes header = item(oldPrimer.key, be(number(primerValue.data(), 4) + 1, 4) +
                                           Bytes(primerValue.begin() + 4, primerValue.end()) +
                                           be(0xFF01, 2) + darkLabel);
    const Bytes darkProperty = local(0xFF01, {'d', 'a', 'r', 'k'});
    Bytes identification;
    while (at < 5120)
    {
        Item next = parseItem(file, at);
        if (next.key[4] != 0x02)
            continue; // fill
        if (next.key == setKey(IDENTIFICATION))
        {
            next.value = next.value + darkProperty;
            identification = next.value;
        }
        header = header + item(next.key, next.value);
    }
    ASSERT_FALSE(identification.empty());
    Bytes darkKey = setKey(0x01);
    darkKey[9] = 0x7F;
    const Bytes darkSet = item(darkKey, local(0x3c0a, uuid(7)) + darkProperty);
    header = header + darkSet;

    auto metadata = readHeader(header);
    MetadataSet& dark = *metadata->sets().back();
    ASSERT_NE(metadataSetAs<DarkParsedGroup>(dark), nullptr);
    EXPECT_NE(metadataSetAs<const MetadataSet>(static_cast<const MetadataSet&>(dark)), nullptr);
    EXPECT_EQ(metadataSetAs<DarkParsedGroup>(metadata->preface()), nullptr);
    EXPECT_EQ(metadata->findSet(Types::UUID(uuid(7).data())), &dark);
    ASSERT_EQ(dark.invalidElements().size(), 2u);
    EXPECT_NE(Types::Visitors::getAs<Types::UUID>(*dark.invalidElements()[0]->value()), nullptr);
    MetadataSet& withDark = metadata->set(key(IDENTIFICATION));
    ASSERT_EQ(withDark.invalidElements().size(), 1u);
    EXPECT_EQ(withDark.invalidElements()[0]->universalLabel(), UniversalLabel(darkLabel.data()));

    const Bytes out = written(*metadata);
    EXPECT_EQ(Bytes(out.end() - darkSet.size(), out.end()), darkSet);
    const Bytes identificationKey = setKey(IDENTIFICATION);
    const auto found =
        std::search(out.begin(), out.end(), identificationKey.begin(), identificationKey.end());
    ASSERT_NE(found, out.end());
    const std::size_t length = (found[17] << 16) | (found[18] << 8) | found[19];
    EXPECT_EQ(length, identification.size());
    EXPECT_EQ(Bytes(found + 20 + length - darkProperty.size(), found + 20 + length), darkProperty);
    EXPECT_EQ(written(*readHeader(out)), out);
}

TEST(MetadataReading, BasicUMIDLoadsIntoAnExtendedOne)
{
    // No set of data/ has this label: a dictionary of one set made here.
    MetaMetadata::Dictionary small;
    small.addMetaElement(INSTANCE_UID, std::make_unique<MetaMetadata::MetaSimpleElement>(
                                           INSTANCE_UID, Types::TypeIdentifiers::TYPE_UUID));
    small.addMetaElement(UMID_LABEL, std::make_unique<MetaMetadata::MetaSimpleElement>(
                                         UMID_LABEL, Types::TypeIdentifiers::TYPE_UMID64));
    auto meta =
        std::make_unique<MetaMetadata::MetaMetadataSet>(UniversalLabel(setKey(0x70).data()));
    meta->addMetaAttribute(std::make_shared<MetaMetadata::MetaAttribute>(
        INSTANCE_UID, LocalTag(0x3c0a), 0, *small.metaElement(INSTANCE_UID)));
    meta->addMetaAttribute(std::make_shared<MetaMetadata::MetaAttribute>(
        UMID_LABEL, LocalTag(0x4409), 4, *small.metaElement(UMID_LABEL)));
    small.addMetaMetadataSet(std::move(meta));
    small.addLocalTag(LocalTag(0x3c0a), INSTANCE_UID);
    small.addLocalTag(LocalTag(0x4409), UMID_LABEL);

    const Bytes umid = Halvorn::Test::patternBytes(32);
    auto metadata =
        readHeader(primer({}) + set(0x70, local(0x3c0a, uuid(1)) + local(0x4409, umid)), small);
    const Element& element = metadata->sets().at(0)->element(UMID_LABEL);
    ASSERT_NE(Types::Visitors::getAs<Types::UMID64>(*element.value()), nullptr);
    EXPECT_EQ(element.size(), 64);
    const Bytes out = written(*metadata);
    EXPECT_EQ(Bytes(out.end() - 68, out.end()), local(0x4409, umid + Bytes(32, 0)));
}

TEST(MetadataTags, NewDynamicTagsGoToThePrimer)
{
    PartitionMetadata metadata(dictionary());
    MetadataSet& preface = metadata.createSet(key(PREFACE));
    preface.setValue(IS_RIP_PRESENT, std::make_unique<Types::Boolean>(true));
    const Bytes out = written(metadata);
    const Bytes isRip(IS_RIP_PRESENT.data(), IS_RIP_PRESENT.data() + 16);
    const Bytes instanceUID(INSTANCE_UID.data(), INSTANCE_UID.data() + 16);
    // The primer, ascending by tag: the static InstanceUID tag, then the first dynamic tag.
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 20 + 8 + 36),
              primer({{0x3c0a, instanceUID}, {0x8000, isRip}}));
    EXPECT_EQ(Bytes(out.end() - 5, out.end()), local(0x8000, {1}));

    PartitionDictionary tags(dictionary());
    tags.primerPack().add(LocalTag(0x8000), INSTANCE_UID);
    EXPECT_EQ(tags.localTag(IS_RIP_PRESENT), LocalTag(0x8001));
    EXPECT_EQ(tags.localTag(IS_RIP_PRESENT), LocalTag(0x8001));
    EXPECT_EQ(tags.localTag(PACKAGES), LocalTag(0x1901));

    tags.setNextDynamicTag(0xFFFF);
    EXPECT_EQ(tags.localTag(UMID_LABEL), LocalTag(0xFFFF));
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLocalTag>([&] { tags.nextDynamicTag(); }),
              L"All LocalTags are used");
    EXPECT_EQ(thrownMessage<Exceptions::LocalTagNotFound>(
                  [&] { tags.localTag(UniversalLabel(setKey(0x55).data())); }),
              L"No LocalTag defined for this UniversalLabel");
}

class CountingListener final : public BaseMetadataIndexListener
{
public:
    void setAdded(MetadataSet&) override { ++added; }
    void valueChanging(Element&) override { ++changing; }
    void valueChanged(Element&) override { ++changed; }
    int added = 0, changing = 0, changed = 0;
};

TEST(MetadataModel, SettersCheckWhatTheyAreGiven)
{
    PartitionMetadata metadata(dictionary());
    CountingListener listener;
    metadata.addListener(listener);
    MetadataSet& preface = metadata.createSet(key(PREFACE));
    MetadataSet& identification = metadata.createSet(key(IDENTIFICATION));
    MetadataSet& storage = metadata.createSet(key(CONTENT_STORAGE));
    EXPECT_EQ(listener.added, 3);
    Bytes unknown = setKey(0x01);
    unknown[13] = 0x7F;
    const KLV::Key unknownKey(unknown.data());
    EXPECT_EQ(thrownMessage<Exceptions::NotFound>([&] { metadata.createSet(unknownKey); }),
              L"A MetaMetadataSet with Key " + unknownKey.toString() +
                  L" was not found in the Dictionary.");

    auto* reference = elementAs<ReferenceElement>(preface.element(CONTENT_STORAGE_REF));
    ASSERT_NE(reference, nullptr);
    const std::wstring refused = thrownMessage<Exceptions::MetadataSetReferenceNotAllowed>(
        [&] { reference->setTarget(&identification); });
    EXPECT_EQ(refused.substr(0, refused.find(L"Must")),
              L"ReferenceElement with UL " + CONTENT_STORAGE_REF.toString() +
                  L" cannot reference set with key '" + key(IDENTIFICATION).toString() + L"' ");
    EXPECT_NE(refused.find(key(CONTENT_STORAGE).toString()), std::wstring::npos);
    reference->setTarget(&storage);
    EXPECT_EQ(&metadata.preface(), &preface);
    EXPECT_EQ(preface.referencedSet(CONTENT_STORAGE_REF), &storage);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidMetaAttribute>(
                  [&] {
                      reference->setValue(
                          std::make_unique<Types::WeakReference>(*storage.instanceUID()));
                  }),
              L"Trying to set a value to a ReferenceElement that differs from its MetaAttribute "
              L"information");

    auto* packages = asCollectionReferenceElement(storage.element(PACKAGES));
    ASSERT_NE(packages, nullptr);
    EXPECT_EQ(
        thrownMessage<Exceptions::InvalidChange>(
            [&] { packages->add(std::make_unique<Types::WeakReference>(*preface.instanceUID())); }),
        L"Trying to set a WeakReference on a BatchReferenceElement expecting a "
        L"StrongReference");
    EXPECT_EQ(thrownMessage<Exceptions::IndexOutOfBounds>([&] { packages->at(0); }),
              L"Index out of bounds");

    EXPECT_EQ(
        thrownMessage<Exceptions::InvalidChange>([&] { preface.element(INSTANCE_UID).clear(); }),
        L"Value 'InstanceUID' is required according to Schema");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidChange>(
                  [&] { preface.setValue(INSTANCE_UID, std::make_unique<Types::UInt8>(1)); }),
              L"Setting value with an invalid type. Value Type of new value: UInt8 Value type of "
              L"element UUID");

    // A new InstanceUID moves the set in the index.
    const Types::UUID old = *identification.instanceUID();
    const int changes = listener.changed;
    identification.setValue(INSTANCE_UID, std::make_unique<Types::UUID>(uuid(42).data()));
    EXPECT_EQ(listener.changed, changes + 1);
    EXPECT_EQ(listener.changing, listener.changed);
    EXPECT_EQ(metadata.findSet(old), nullptr);
    EXPECT_EQ(metadata.findSet(Types::UUID(uuid(42).data())), &identification);
    metadata.removeSet(identification);
    EXPECT_EQ(metadata.findSet(Types::UUID(uuid(42).data())), nullptr);
    EXPECT_EQ(metadata.sets(key(IDENTIFICATION)).size(), 0u);
    EXPECT_EQ(thrownMessage<Exceptions::NotFound>([&] { metadata.set(key(IDENTIFICATION)); }),
              L"Didn't find MetadataSet with specified key.");
    metadata.removeListener(listener);

    EXPECT_EQ(thrownMessage<Exceptions::InvalidMetadataSet>(
                  [&]
                  {
                      MetadataSet(
                          nullptr,
                          *dictionary().metaMetadataSet(UniversalLabel(setKey(PREFACE).data())),
                          key(IDENTIFICATION));
                  }),
              L"MetadataSet Key and MetaMetadataSet do not agree");
}

} // namespace
