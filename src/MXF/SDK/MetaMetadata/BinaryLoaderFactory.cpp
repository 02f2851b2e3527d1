#include "DictionaryFileFormat.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/Types/Factories/BaseTypeFactory.h"

#include <limits>
#include <vector>

namespace MXF::SDK::MetaMetadata
{

using namespace DictionaryFileFormat;

namespace
{

// What an element body holds. A field that is missing keeps its value here.
struct ElementFields
{
    std::optional<Types::UniversalLabel> label;
    UInt32 dataType = 0;
    UInt32 dataSubType = 0;
    UInt32 minimum = 0;
    UInt32 maximum = std::numeric_limits<UInt32>::max();
    std::vector<KLV::Key> allowedReferences;
    Enumerations enumerations;
    PropertyPairs pairs;
};

// A BER length that covers a 2-byte length and a batch of keys: count, item size, 16 bytes a key.
std::vector<KLV::Key> readAllowedReferences(DataIO::DataSource& body)
{
    KLV::Value field(body, readBER(body).length);
    const UInt16 length = readUInt16(field);
    const UInt32 count = readUInt32(field);
    const UInt32 itemSize = readUInt32(field);
    if (UInt64(count) * itemSize + 8 != length)
        MXF_SDK_THROW(Exceptions::InvalidStructure, "Allowed Metadata Sets References are invalid");
    // Not reserved from the count: the keys must first be there.
    std::vector<KLV::Key> keys;
    for (UInt32 i = 0; i < count; ++i)
    {
        Byte key[KLV::Key::SIZE];
        readBytes(field, key, sizeof key);
        keys.emplace_back(key);
    }
    return keys;
}

// A BER length, then entries: a 2-byte identifier, which must be the element's type, a 2-byte
// size and a value of that type in that many bytes.
Enumerations readEnumerations(DataIO::DataSource& body, UInt32 dataType)
{
    KLV::Value field(body, readBER(body).length);
    Enumerations values;
    while (field.remaining() > 0)
    {
        if (readUInt16(field) != dataType)
            MXF_SDK_THROW(Exceptions::InvalidStructure,
                          "The enumeration identifier differs from element identifier");
        std::vector<Byte> bytes(readUInt16(field));
        readBytes(field, bytes.data(), bytes.size());
        DataIO::Memory::MemoryDataSource value(bytes.data(), bytes.size());
        values.push_back(Types::Factories::BaseTypeFactory::instance().create(dataType, value));
    }
    return values;
}

ElementFields readElementFields(DataIO::BoundedDataSource& body)
{
    ElementFields fields;
    while (body.remaining() > 0)
    {
        const UInt16 tag = readUInt16(body);
        if (fields.pairs.read(tag, body))
            continue;
        switch (tag)
        {
        case LABEL:
            readLabelField(body, fields.label);
            break;
        case DATA_TYPE:
            fields.dataType = readNumberField(body);
            break;
        case DATA_SUB_TYPE:
            fields.dataSubType = readNumberField(body);
            break;
        case MINIMUM:
            fields.minimum = readNumberField(body);
            break;
        case MAXIMUM:
            fields.maximum = readNumberField(body);
            break;
        case ALLOWED_REFERENCES:
            fields.allowedReferences = readAllowedReferences(body);
            break;
        case ENUMERATION:
            fields.enumerations = readEnumerations(body, fields.dataType);
            break;
        default:
            MXF_SDK_THROW(Exceptions::InvalidStructure, "Invalid Local Tag");
        }
    }
    return fields;
}

} // namespace

std::unique_ptr<MetaElement> BinaryLoaderFactory::create(KLV::KLVItem& item)
{
    const ItemKind kind = itemKind(item.key.data());
    if (kind < META_COLLECTION || kind > META_SIMPLE_ELEMENT)
        return nullptr;
    ElementFields fields = readElementFields(item.value);
    if (!fields.label)
        MXF_SDK_THROW(Exceptions::InvalidStructure, "MetaSimpleElement without set UniversalLabel");

    const Types::UniversalLabel& label = *fields.label;
    std::unique_ptr<MetaElement> element;
    switch (kind)
    {
    case META_COLLECTION:
        element = std::make_unique<MetaCollection>(label, fields.dataType, fields.dataSubType,
                                                   fields.minimum, fields.maximum);
        break;
    case META_REFERENCE_COLLECTION:
        element = std::make_unique<MetaReferenceCollection>(
            label, fields.dataType, fields.dataSubType, fields.minimum, fields.maximum,
            std::move(fields.allowedReferences));
        break;
    case META_REFERENCE_ELEMENT:
        element = std::make_unique<MetaReferenceElement>(label, fields.dataType,
                                                         std::move(fields.allowedReferences));
        break;
    default:
        element = fields.enumerations.empty()
                      ? std::make_unique<MetaSimpleElement>(label, fields.dataType)
                      : std::make_unique<MetaSimpleElement>(label, fields.dataType,
                                                            std::move(fields.enumerations));
        break;
    }
    static_cast<PropertyMap&>(*element) = fields.pairs.take();
    return element;
}

} // namespace MXF::SDK::MetaMetadata
