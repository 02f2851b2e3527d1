#include "MXF/SDK/Metadata/MetadataSet.h"

#include "ElementSupport.h"
#include "MXF/SDK/ByteCoders/BERCoder.h"
#include "MXF/SDK/ByteCoders/BigEndian.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/KLV/ReadExact.h"
#include "MXF/SDK/Metadata/PartitionDictionary.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"

#include <algorithm>
#include <string>
#include <vector>

namespace MXF::SDK::Metadata
{

using Platform::Byte;
using Platform::UInt64;
using Platform::UInt8;

namespace
{

// A basic UMID where the dictionary has an extended one: padded with zeros to 64 bytes.
const Byte UMID_SPECIAL_LABEL[16] = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x07,
                                     0x01, 0x01, 0x15, 0x09, 0x00, 0x00, 0x00, 0x00};

UInt8 elementLengthSize(const KLV::Key& key)
{
    const UInt8 size = KLV::localLengthSize(key);
    return size == 0 ? 2 : size;
}

// Reads `size` bytes in pieces, so that a length that runs past the data costs no more memory
// than the data has.
std::vector<Byte> readBytes(KLV::Value& value, UInt64 size)
{
    std::vector<Byte> bytes;
    KLV::readUpTo(value, bytes, size);
    if (bytes.size() < size)
        MXF_SDK_THROW(Exceptions::InvalidLength,
                      "Invalid data size in Value: " + std::to_string(bytes.size()) + " of " +
                          std::to_string(size) + " bytes");
    return bytes;
}

} // namespace

struct MetadataSet::Impl
{
    Impl(const KLV::Key& setKey, const MetaMetadata::MetaMetadataSet* meta,
         MetadataSetOwner* setOwner)
        : key(setKey), metaMetadataSet(meta), owner(setOwner)
    {
    }

    KLV::Key key;
    const MetaMetadata::MetaMetadataSet* metaMetadataSet;
    MetadataSetOwner* owner;
    UInt8 lengthSize = DEFAULT_LENGTH_SIZE;
    Elements elements;
    InvalidElements invalidElements;
};

MetadataSet::MetadataSet(MetadataSetOwner* owner,
                         const MetaMetadata::MetaMetadataSet& metaMetadataSet, const KLV::Key& key)
    : impl_(std::make_unique<Impl>(key, &metaMetadataSet, owner))
{
    if (!std::equal(key.data(), key.data() + KLV::Key::SIZE,
                    metaMetadataSet.universalLabel().data()))
        MXF_SDK_THROW(Exceptions::InvalidMetadataSet,
                      "MetadataSet Key and MetaMetadataSet do not agree");
    for (const auto& attribute : metaMetadataSet.metaAttributes())
        impl_->elements.emplace(attribute->universalLabel(), createElement(attribute, *this));
}

MetadataSet::MetadataSet(MetadataSetOwner* owner, const KLV::Key& key)
    : impl_(std::make_unique<Impl>(key, nullptr, owner))
{
}

MetadataSet::~MetadataSet() = default;

const KLV::Key& MetadataSet::key() const noexcept
{
    return impl_->key;
}

const MetaMetadata::MetaMetadataSet* MetadataSet::metaMetadataSet() const noexcept
{
    return impl_->metaMetadataSet;
}

MetadataSetOwner* MetadataSet::owner() const noexcept
{
    return impl_->owner;
}

UInt8 MetadataSet::lengthSize() const noexcept
{
    return impl_->lengthSize;
}

void MetadataSet::setLengthSize(UInt8 lengthSize)
{
    ByteCoders::BERCoder::validateSize(lengthSize);
    impl_->lengthSize = lengthSize;
}

void MetadataSet::read(KLV::KLVItem& item, PartitionDictionary& dictionary)
{
    ByteCoders::BERCoder::validateSize(item.lengthSize);
    impl_->lengthSize = item.lengthSize;
    const UInt8 tagSize = KLV::localTagSize(item.key);
    const UInt8 lengthSize = KLV::localLengthSize(item.key);
    if (tagSize != 2 || (lengthSize != 1 && lengthSize != 2 && lengthSize != 4))
        MXF_SDK_THROW(Exceptions::InvalidMetadataSet,
                      "Invalid Metadata Set local field length or length field length");
    const Types::UniversalLabel umidLabel(UMID_SPECIAL_LABEL);
    KLV::Value& value = item.value;
    while (value.remaining() != 0)
    {
        const Types::LocalTag tag(value);
        Byte lengthBytes[4];
        value.readExact(lengthBytes, lengthSize);
        const UInt64 length = ByteCoders::readBigEndian(lengthBytes, lengthSize);
        if (length > value.remaining())
            MXF_SDK_THROW(Exceptions::InvalidLength,
                          "Invalid data size in Value to create an element in the metadataSet.");
        const std::vector<Byte> bytes = readBytes(value, length);
        const Types::UniversalLabel label = dictionary.universalLabel(tag, false);

        Element* element = findElement(label);
        if (element != nullptr && element->isEmpty())
        {
            try
            {
                if (label == umidLabel && bytes.size() == 32)
                {
                    std::vector<Byte> padded(bytes);
                    padded.resize(64, 0);
                    DataIO::Memory::MemoryDataSource source(padded.data(), padded.size());
                    element->load(source);
                }
                else
                {
                    DataIO::Memory::MemoryDataSource source(bytes.data(), bytes.size());
                    element->load(source);
                }
                continue;
            }
            catch (const std::exception&)
            {
                // Kept as it came, below.
            }
        }
        const MetaMetadata::MetaElement* misplaced =
            element == nullptr ? dictionary.dictionary().metaElement(label) : nullptr;
        CreateInvalidElementVisitor create(*this, label, bytes.data(), bytes.size());
        addInvalidElement(create.create(misplaced));
    }
}

Element& MetadataSet::element(const Types::UniversalLabel& label) const
{
    Element* found = findElement(label);
    if (found == nullptr)
        MXF_SDK_THROW(Exceptions::NotFound,
                      L"No element with this Universal Label was found: " + label.toString());
    return *found;
}

Element* MetadataSet::findElement(const Types::UniversalLabel& label) const noexcept
{
    const auto found = impl_->elements.find(label);
    return found != impl_->elements.end() ? found->second.get() : nullptr;
}

const MetadataSet::Elements& MetadataSet::elements() const noexcept
{
    return impl_->elements;
}

const MetadataSet::InvalidElements& MetadataSet::invalidElements() const noexcept
{
    return impl_->invalidElements;
}

void MetadataSet::addInvalidElement(std::unique_ptr<Element> element)
{
    impl_->invalidElements.push_back(std::move(element));
    if (impl_->owner != nullptr)
        impl_->owner->invalidElementAdded(*impl_->invalidElements.back());
}

void MetadataSet::removeInvalidElement(const Element& element)
{
    auto& invalid = impl_->invalidElements;
    const auto found = std::find_if(invalid.begin(), invalid.end(),
                                    [&](const auto& held) { return held.get() == &element; });
    if (found == invalid.end())
        MXF_SDK_THROW(Exceptions::NotFound, "Element not found in Invalid Element list!");
    if (impl_->owner != nullptr)
        impl_->owner->invalidElementRemoving(**found);
    invalid.erase(found);
}

const Types::BaseType* MetadataSet::value(const Types::UniversalLabel& label) const
{
    const Element* found = findElement(label);
    return found != nullptr ? found->value() : nullptr;
}

void MetadataSet::setValue(const Types::UniversalLabel& label,
                           std::unique_ptr<Types::BaseType> value, bool force)
{
    element(label).setValue(std::move(value), force);
}

MetadataSet* MetadataSet::referencedSet(const Types::UniversalLabel& label) const
{
    Element* found = findElement(label);
    const ReferenceElement* reference =
        found != nullptr ? elementAs<ReferenceElement>(*found) : nullptr;
    return reference != nullptr ? reference->target() : nullptr;
}

const Types::UUID* MetadataSet::instanceUID() const
{
    const Types::UniversalLabel& label = Support::instanceUIDLabel();
    if (const Types::BaseType* held = value(label))
        return Types::Visitors::getAs<Types::UUID>(*held);
    for (const auto& invalid : impl_->invalidElements)
        if (invalid->universalLabel() == label && invalid->value() != nullptr)
            if (const Types::UUID* uid = Types::Visitors::getAs<Types::UUID>(*invalid->value()))
                return uid;
    return nullptr;
}

UInt64 MetadataSet::valueSize(PartitionDictionary& /*dictionary*/, bool withInvalidElements) const
{
    const UInt64 head = 2 + UInt64(elementLengthSize(impl_->key));
    UInt64 total = 0;
    for (const auto& [label, element] : impl_->elements)
        if (!element->isEmpty())
            total += head + element->size();
    if (withInvalidElements)
        for (const auto& element : impl_->invalidElements)
            if (!element->isEmpty())
                total += head + element->size();
    return total;
}

UInt64 MetadataSet::size(PartitionDictionary& dictionary, bool withInvalidElements) const
{
    const UInt64 length = valueSize(dictionary, withInvalidElements);
    return KLV::Key::SIZE +
           std::max<UInt64>(impl_->lengthSize, ByteCoders::BERCoder::encodedSize(length)) + length;
}

void MetadataSet::serialize(DataIO::DataSink& sink, PartitionDictionary& dictionary,
                            bool withInvalidElements) const
{
    const UInt64 length = valueSize(dictionary, withInvalidElements);
    const UInt8 berSize =
        std::max<UInt8>(impl_->lengthSize, ByteCoders::BERCoder::encodedSize(length));
    Byte head[KLV::Key::SIZE + 9];
    std::copy(impl_->key.data(), impl_->key.data() + KLV::Key::SIZE, head);
    ByteCoders::BERCoder::encode(length, berSize, head + KLV::Key::SIZE);
    sink.write(head, KLV::Key::SIZE + berSize);
    const UInt8 lengthSize = elementLengthSize(impl_->key);
    for (const auto& [label, element] : impl_->elements)
        element->serialize(sink, dictionary, lengthSize);
    if (withInvalidElements)
        for (const auto& element : impl_->invalidElements)
            element->serialize(sink, dictionary, lengthSize);
}

DarkParsedGroup::DarkParsedGroup(MetadataSetOwner* owner, const KLV::Key& key)
    : MetadataSet(owner, key)
{
}

} // namespace MXF::SDK::Metadata
