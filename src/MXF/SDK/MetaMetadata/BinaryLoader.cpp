#include "MXF/SDK/MetaMetadata/BinaryLoader.h"

#include "DictionaryFileFormat.h"
#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/MetaMetadata/AttributeRequiredStatus.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Types/LocalTag.h"

#include <algorithm>
#include <vector>

namespace MXF::SDK::MetaMetadata
{

using namespace DictionaryFileFormat;
using Types::LocalTag;
using Types::UniversalLabel;

namespace
{

constexpr UInt16 MAJOR_VERSION = 2;

// A set is complete only with an attribute of this label.
const Byte INSTANCE_UID[16] = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x01,
                               0x01, 0x01, 0x15, 0x02, 0x00, 0x00, 0x00, 0x00};

// A BER length, then one element item: key, BER length, body.
std::unique_ptr<MetaElement> readInlineElement(DataIO::DataSource& body)
{
    KLV::Value field(body, readBER(body).length);
    const UInt64 keyPosition = field.position();
    Byte key[KLV::Key::SIZE];
    readBytes(field, key, sizeof key);
    const BERLength length = readBER(field);
    KLV::KLVItem item(KLV::Key(key), length.size, length.length, field, keyPosition);
    return BinaryLoaderFactory::create(item);
}

std::shared_ptr<const MetaAttribute>
readAttribute(DataIO::BoundedDataSource& body, const Dictionary& dictionary, bool& hasInstanceUID)
{
    std::optional<UniversalLabel> label;
    UInt32 requiredStatus = AttributeRequiredStatus::REQUIRED;
    std::optional<LocalTag> localTag;
    std::unique_ptr<MetaElement> ownElement;
    PropertyPairs pairs;
    while (body.remaining() > 0)
    {
        const UInt16 tag = readUInt16(body);
        if (pairs.read(tag, body))
            continue;
        switch (tag)
        {
        case ATTRIBUTE_LABEL:
            readLabelField(body, label);
            hasInstanceUID = hasInstanceUID ||
                             (label && std::equal(INSTANCE_UID, INSTANCE_UID + 16, label->data()));
            break;
        case REQUIRED_STATUS:
            requiredStatus = readNumberField(body);
            break;
        case ATTRIBUTE_ELEMENT:
            ownElement = readInlineElement(body);
            break;
        case ATTRIBUTE_LOCAL_TAG:
        {
            KLV::Value field = shortField(body);
            if (field.size() != 0)
            {
                Byte bytes[LocalTag::SIZE];
                readBytes(field, bytes, sizeof bytes);
                localTag.emplace(bytes);
            }
            break;
        }
        default:
            MXF_SDK_THROW(Exceptions::InvalidStructure, "Invalid localTag in MetaAttribute");
        }
    }

    // An attribute without a label of its own is taken as the all-zero label.
    static const Byte NO_LABEL[UniversalLabel::SIZE] = {};
    const UniversalLabel attributeLabel = label ? *label : UniversalLabel(NO_LABEL);
    std::shared_ptr<MetaAttribute> attribute;
    if (ownElement)
        attribute = std::make_shared<MetaAttribute>(attributeLabel, localTag, requiredStatus,
                                                    std::move(ownElement));
    else if (const MetaElement* element = dictionary.metaElement(attributeLabel))
        attribute =
            std::make_shared<MetaAttribute>(attributeLabel, localTag, requiredStatus, *element);
    else
        MXF_SDK_THROW(Exceptions::InvalidStructure,
                      "The current MetaAttribute doesn't have any metaElement");

    PropertyMap& properties = *attribute;
    properties = pairs.take();
    if (localTag)
        properties.setProperty(L"LocalTag", localTag->toString(KLV::REPRESENTATION_NATIVE));
    properties.setProperty(L"MetadataElementRequiredStatus",
                           AttributeRequiredStatus::instance().text(requiredStatus));
    properties.setProperty(L"UniversalLabel", attributeLabel.toString(KLV::REPRESENTATION_NATIVE));
    return attribute;
}

// A BER length, then attribute items (key, BER length, body) that must fill it exactly.
void readAttributes(DataIO::DataSource& body, const Dictionary& dictionary,
                    std::vector<std::shared_ptr<const MetaAttribute>>& attributes,
                    bool& hasInstanceUID)
{
    const UInt64 length = readBER(body).length;
    for (UInt64 consumed = 0; consumed < length;)
    {
        Byte key[KLV::Key::SIZE];
        readBytes(body, key, sizeof key);
        if (itemKind(key) != META_ATTRIBUTE)
            MXF_SDK_THROW(Exceptions::InvalidULDesignator, "Invalid MetaAttribute Key");
        const BERLength attributeLength = readBER(body);
        const UInt64 head = sizeof key + attributeLength.size;
        const UInt64 left = length - consumed;
        if (head > left || attributeLength.length > left - head)
            MXF_SDK_THROW(Exceptions::InvalidStructure, "Invalid MetaAttribute");
        consumed += head + attributeLength.length;
        KLV::Value attributeBody(body, attributeLength.length);
        attributes.push_back(readAttribute(attributeBody, dictionary, hasInstanceUID));
    }
}

void readSet(DataIO::BoundedDataSource& body, Dictionary& dictionary)
{
    std::optional<UniversalLabel> label;
    std::vector<std::shared_ptr<const MetaAttribute>> attributes;
    bool hasInstanceUID = false;
    PropertyPairs pairs;
    while (body.remaining() > 0)
    {
        const UInt16 tag = readUInt16(body);
        if (pairs.read(tag, body))
            continue;
        if (tag == LABEL)
            readLabelField(body, label);
        else if (tag == ATTRIBUTES)
            readAttributes(body, dictionary, attributes, hasInstanceUID);
        else
            MXF_SDK_THROW(Exceptions::InvalidStructure, "Invalid Local Tag");
    }
    if (!label)
        MXF_SDK_THROW(Exceptions::InvalidStructure, "MetaMetadataSet without set UniversalLabel");
    if (!hasInstanceUID)
        MXF_SDK_THROW(Exceptions::InvalidStructure,
                      "MetaMetadataSet without InstanceUID MetaAttribute");

    auto set = std::make_unique<MetaMetadataSet>(*label);
    static_cast<PropertyMap&>(*set) = pairs.take();
    for (std::shared_ptr<const MetaAttribute>& attribute : attributes)
        set->addMetaAttribute(std::move(attribute));
    dictionary.addMetaMetadataSet(std::move(set));
}

// Pairs of a 2-byte tag and a 16-byte label to the end of the value.
void readTagTable(DataIO::BoundedDataSource& body, Dictionary& dictionary)
{
    constexpr UInt64 PAIR = LocalTag::SIZE + UniversalLabel::SIZE;
    UInt64 expected = body.remaining();
    while (body.remaining() > 0)
    {
        Byte pair[PAIR];
        readBytes(body, pair, sizeof pair);
        dictionary.addLocalTag(LocalTag(pair), UniversalLabel(pair + LocalTag::SIZE));
        expected -= PAIR;
        if (body.remaining() != expected)
            MXF_SDK_THROW(Exceptions::InvalidStructure, "LocalTag to UniversalLabel corrupted");
    }
}

} // namespace

void BinaryLoader::load(DataIO::DataSource& source, Dictionary& dictionary)
{
    if (readUInt16(source) != MAJOR_VERSION)
        MXF_SDK_THROW(Exceptions::InvalidFormat, "Invalid dictionary version number");
    readUInt16(source);

    KLV::KLVReader reader(source);
    while (!source.eof())
    {
        UInt64 skipped = 0;
        const std::unique_ptr<KLV::KLVItem> item = reader.readKLV(skipped, 0);
        if (std::unique_ptr<MetaElement> element = BinaryLoaderFactory::create(*item))
        {
            // The element lives on in the dictionary, so its label may be passed along with it.
            const MetaElement& added = *element;
            dictionary.addMetaElement(added.universalLabel(), std::move(element));
            continue;
        }
        const ItemKind kind = itemKind(item->key.data());
        if (kind == META_METADATA_SET)
            readSet(item->value, dictionary);
        else if (kind == TAG_TABLE)
            readTagTable(item->value, dictionary);
        else
            MXF_SDK_THROW(Exceptions::InvalidULDesignator, "UnKnown Set");
    }
}

void BinaryLoader::load(const std::wstring& path, Dictionary& dictionary)
{
    DataIO::File::FileDataSource file(path);
    load(file, dictionary);
}

} // namespace MXF::SDK::MetaMetadata
