#include "MXF/SDK/Metadata/Element.h"

#include "ElementSupport.h"
#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MetaMetadata/AttributeRequiredStatus.h"
#include "MXF/SDK/MetaMetadata/MetaElements.h"
#include "MXF/SDK/Metadata/MetadataSet.h"
#include "MXF/SDK/Metadata/PartitionDictionary.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "MXF/SDK/Types/Factories/BaseTypeFactory.h"
#include "MXF/SDK/Types/TypeIdentifiers.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"

#include <string>

namespace MXF::SDK::Metadata
{

using MetaMetadata::AbstractMetaAttribute;
using MetaMetadata::MetaAttribute;
using Platform::Byte;
using Platform::UInt32;
using Platform::UInt64;
namespace TI = Types::TypeIdentifiers;

namespace
{

class AttributeKind final : public MetaMetadata::MetaAttributeVisitor
{
public:
    void visit(const MetaAttribute& attribute) override
    {
        known = &attribute;
        element = &attribute.metaElement();
    }
    void visit(const MetaMetadata::MisplacedAttribute& attribute) override
    {
        element = &attribute.metaElement();
    }

    const MetaAttribute* known = nullptr;
    const MetaMetadata::MetaElement* element = nullptr;
};

std::wstring number(UInt64 value)
{
    return std::to_wstring(value);
}

const MetaMetadata::MetaReferenceHolder* referenceHolder(const MetaMetadata::MetaElement* element)
{
    if (element == nullptr)
        return nullptr;
    if (const auto* single =
            MetaMetadata::metaElementAs<MetaMetadata::MetaReferenceElement>(*element))
        return single;
    return MetaMetadata::metaElementAs<MetaMetadata::MetaReferenceCollection>(*element);
}

const MetaMetadata::MetaCollectionElement* collectionMeta(const MetaMetadata::MetaElement* element)
{
    if (element == nullptr)
        return nullptr;
    if (const auto* values = MetaMetadata::metaElementAs<MetaMetadata::MetaCollection>(*element))
        return values;
    return MetaMetadata::metaElementAs<MetaMetadata::MetaReferenceCollection>(*element);
}

const UInt64 NO_INDEX_LIMIT = 0xFFFFFFFFu;

} // namespace

struct Element::Impl
{
    std::shared_ptr<const AbstractMetaAttribute> attribute;
    MetadataSet& owner;
    const MetaAttribute* known;
    const MetaMetadata::MetaElement* metaElement;
    std::unique_ptr<Types::BaseType> value;
};

Element::Element(std::shared_ptr<const AbstractMetaAttribute> attribute, MetadataSet& owner)
{
    AttributeKind kind;
    if (attribute)
        attribute->accept(kind);
    impl_.reset(new Impl{std::move(attribute), owner, kind.known, kind.element, nullptr});
}

Element::~Element() = default;

const std::shared_ptr<const AbstractMetaAttribute>& Element::metaAttribute() const noexcept
{
    return impl_->attribute;
}

const MetaAttribute* Element::knownMetaAttribute() const noexcept
{
    return impl_->known;
}

const Types::UniversalLabel& Element::universalLabel() const noexcept
{
    return impl_->attribute->universalLabel();
}

MetadataSet& Element::owner() const noexcept
{
    return impl_->owner;
}

bool Element::isEmpty() const noexcept
{
    return impl_->value == nullptr;
}

Platform::UInt16 Element::size() const
{
    if (!impl_->value)
        return 0;
    if (const Types::SimpleDataType* simple = Types::Visitors::asSimpleDataType(*impl_->value))
        return simple->size();
    if (const Types::Collection* collection = Types::Visitors::asCollection(*impl_->value))
        return collection->size();
    return 0;
}

void Element::accept(Types::Visitors::Visitor& visitor) const
{
    if (impl_->value)
        impl_->value->accept(visitor);
}

void Element::accept(Types::Visitors::NonConstVisitor& visitor)
{
    if (impl_->value)
        impl_->value->accept(visitor);
}

void Element::serialize(DataIO::DataSink& sink, PartitionDictionary& dictionary,
                        Platform::UInt8 lengthSize) const
{
    if (!impl_->value)
        return;
    const Types::LocalTag tag = dictionary.localTag(universalLabel());
    const UInt32 length = size();
    if (lengthSize < 4 && (length >> (8 * lengthSize)) != 0)
        MXF_SDK_THROW(Exceptions::InvalidLength, "Type size exceeded");
    Byte head[6] = {tag[0], tag[1]};
    for (unsigned i = 0; i < lengthSize; ++i)
        head[2 + i] = Byte(length >> (8 * (lengthSize - 1 - i)));
    sink.write(head, 2 + lengthSize);
    impl_->value->serialize(sink);
}

const Types::BaseType* Element::value() const noexcept
{
    return impl_->value.get();
}

Types::BaseType* Element::mutableValue() noexcept
{
    return impl_->value.get();
}

void Element::clear(bool force)
{
    checkClear(force);
    if (impl_->value)
        replaceValue(nullptr, false);
}

std::wstring Element::name() const
{
    if (impl_->known != nullptr && impl_->known->hasProperty(L"name"))
        return impl_->known->property(L"name");
    return L"<unknown>";
}

UInt32 Element::dataType() const noexcept
{
    return impl_->metaElement != nullptr ? impl_->metaElement->dataType()
                                         : UInt32(TI::TYPE_UNKNOWN);
}

const MetaMetadata::MetaElement* Element::metaElement() const noexcept
{
    return impl_->metaElement;
}

void Element::replaceValue(std::unique_ptr<Types::BaseType> value, bool loaded)
{
    MetadataSetOwner* setOwner = impl_->owner.owner();
    if (loaded)
    {
        impl_->value = std::move(value);
        if (setOwner != nullptr)
            setOwner->elementLoaded(*this);
        return;
    }
    if (setOwner != nullptr)
        setOwner->valueChanging(*this);
    impl_->value = std::move(value);
    if (setOwner != nullptr)
        setOwner->valueChanged(*this);
}

void Element::copyValueTo(Element& copy) const
{
    if (value() != nullptr)
        copy.replaceValue(Support::cloneValue(*value()), true);
}

void Element::loadSingle(DataIO::BoundedDataSource& source)
{
    if (knownMetaAttribute() == nullptr)
        MXF_SDK_THROW(Exceptions::InvalidMetaAttribute,
                      "ReferenceElement can not be changed because there is no metaAttribute.");
    std::unique_ptr<Types::BaseType> value =
        Types::Factories::BaseTypeFactory::instance().create(dataType(), source);
    Support::checkConsumed(source);
    replaceValue(std::move(value), true);
}

void Element::checkClear(bool force) const
{
    if (!force && impl_->known != nullptr &&
        impl_->known->requiredStatus() == MetaMetadata::AttributeRequiredStatus::REQUIRED)
        MXF_SDK_THROW(Exceptions::InvalidChange,
                      L"Value '" + name() + L"' is required according to Schema");
}

ValueHolder::~ValueHolder() = default;

void ValueHolder::checkType(const Element& element, const Types::BaseType& value)
{
    const UInt32 type = Support::typeNumber(value);
    if (type != element.dataType())
        MXF_SDK_THROW(Exceptions::InvalidChange,
                      L"Setting value with an invalid type. Value Type of new value: " +
                          Support::typeName(type) + L" Value type of element " +
                          Support::typeName(element.dataType()));
}

ReferenceHolder::~ReferenceHolder() = default;

void ReferenceHolder::check(const Element& element, const MetadataSet& target)
{
    const MetaMetadata::MetaReferenceHolder* holder = nullptr;
    if (const MetaAttribute* known = element.knownMetaAttribute())
        holder = referenceHolder(&known->metaElement());
    if (holder == nullptr || holder->allowedReferences().empty())
        return;
    for (const KLV::Key& allowed : holder->allowedReferences())
        if (allowed == target.key())
            return;
    std::wstring keys;
    for (const KLV::Key& allowed : holder->allowedReferences())
        keys += (keys.empty() ? L"" : L", ") + allowed.toString();
    MXF_SDK_THROW(Exceptions::MetadataSetReferenceNotAllowed,
                  L"ReferenceElement with UL " + element.universalLabel().toString() +
                      L" cannot reference set with key '" + target.key().toString() + L"'" +
                      L" Must reference one of: " + keys);
}

MetadataSet* ReferenceHolder::resolve(const Element& element, const Types::Reference& reference)
{
    MetadataSetOwner* owner = element.owner().owner();
    return owner != nullptr ? owner->findSet(reference.uuid()) : nullptr;
}

std::unique_ptr<Types::Reference> ReferenceHolder::referenceTo(const MetadataSet& target,
                                                               bool strong)
{
    const Types::UUID* uid = target.instanceUID();
    if (uid == nullptr)
        MXF_SDK_THROW(Exceptions::NotFound, L"InstanceUID not found in Metadata Set with key " +
                                                target.key().toString() +
                                                L" Check Metadata Set builder.");
    if (strong)
        return std::make_unique<Types::StrongReference>(*uid);
    return std::make_unique<Types::WeakReference>(*uid);
}

void SimpleElement::load(DataIO::BoundedDataSource& source)
{
    loadSingle(source);
}

void SimpleElement::setValue(std::unique_ptr<Types::BaseType> value, bool force)
{
    if (!value)
        return clear(force);
    if (knownMetaAttribute() == nullptr)
        MXF_SDK_THROW(Exceptions::InvalidMetaAttribute,
                      "ReferenceElement can not be changed because there is no metaAttribute.");
    checkType(*this, *value);
    replaceValue(std::move(value), false);
}

void SimpleElement::setRawValue(std::unique_ptr<Types::BaseType> value)
{
    replaceValue(std::move(value), true);
}

void ReferenceElement::load(DataIO::BoundedDataSource& source)
{
    loadSingle(source);
}

void ReferenceElement::setValue(std::unique_ptr<Types::BaseType> value, bool force)
{
    if (knownMetaAttribute() == nullptr)
        MXF_SDK_THROW(Exceptions::InvalidMetaAttribute,
                      "ReferenceElement can not be changed because there is no metaAttribute.");
    if (!value)
        return clear(force);
    const Types::Reference* reference = Types::Visitors::asReference(*value);
    if (reference == nullptr || Support::typeNumber(*value) != dataType())
        MXF_SDK_THROW(Exceptions::InvalidMetaAttribute,
                      "Trying to set a value to a ReferenceElement that differs from its "
                      "MetaAttribute information");
    if (const MetadataSet* target = resolve(*this, *reference))
        check(*this, *target);
    replaceValue(std::move(value), false);
}

const Types::Reference* ReferenceElement::reference() const noexcept
{
    return value() != nullptr ? Types::Visitors::asReference(*value()) : nullptr;
}

MetadataSet* ReferenceElement::target() const
{
    const Types::Reference* ref = reference();
    return ref != nullptr ? resolve(*this, *ref) : nullptr;
}

void ReferenceElement::setTarget(MetadataSet* target, bool force)
{
    if (target == nullptr)
        return setValue(nullptr, force);
    check(*this, *target);
    setValue(referenceTo(*target, isStrong()), force);
}

bool ReferenceElement::isStrong() const noexcept
{
    return dataType() == TI::TYPE_STRONG_REFERENCE;
}

UInt32 CollectionElement::count() const noexcept
{
    const Types::Collection* values = collection();
    return values != nullptr ? values->itemCount() : 0;
}

const Types::BaseType& CollectionElement::at(UInt32 index) const
{
    if (index >= count())
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds, "Index out of bounds");
    return collection()->at(index);
}

const Types::Collection* CollectionElement::collection() const noexcept
{
    return value() != nullptr ? Types::Visitors::asCollection(*value()) : nullptr;
}

UInt32 CollectionElement::dataSubType() const noexcept
{
    const MetaMetadata::MetaCollectionElement* meta = collectionMeta(metaElement());
    return meta != nullptr ? meta->dataSubType() : UInt32(TI::TYPE_UNKNOWN);
}

void CollectionElement::checkCollection(const Types::BaseType& value, bool force) const
{
    const Types::Collection* values = Types::Visitors::asCollection(value);
    if (values == nullptr || Support::typeNumber(value) != dataType())
        MXF_SDK_THROW(Exceptions::InvalidChange,
                      L"Value '" + name() + L"': Collection can not be changed to another type!");
    for (UInt32 i = 0; i < values->itemCount(); ++i)
        if (Support::typeNumber(values->at(i)) != dataSubType())
            MXF_SDK_THROW(Exceptions::InvalidChange,
                          L"Value '" + name() + L"': Setting collection with an invalid Sub Type.");
    checkCount(values->itemCount(), force);
}

void CollectionElement::checkItem(const Types::BaseType& item) const
{
    if (Support::typeNumber(item) != dataSubType())
        MXF_SDK_THROW(Exceptions::InvalidChange,
                      L"Value '" + name() +
                          L"': Setting value with an invalid Sub Type in a collection.");
}

void CollectionElement::checkCount(UInt64 count, bool force) const
{
    const MetaMetadata::MetaCollectionElement* meta = collectionMeta(metaElement());
    if (force || meta == nullptr)
        return;
    if (count > meta->maximum() || count > NO_INDEX_LIMIT)
        MXF_SDK_THROW(Exceptions::InvalidChange,
                      L"Value '" + name() + L"': Schema only allows to add " +
                          number(meta->maximum()) + L" elements to this collection.");
    if (count < meta->minimum())
        MXF_SDK_THROW(Exceptions::InvalidChange,
                      L"Value '" + name() + L"': Schema does not allow less than " +
                          number(meta->minimum()) + L" elements in the collection.");
}

std::unique_ptr<Types::Collection> CollectionElement::emptyCollection() const
{
    if (dataType() == TI::TYPE_ARRAY)
        return std::make_unique<Types::Array>();
    return std::make_unique<Types::Batch>();
}

void CollectionElement::appendItem(std::unique_ptr<Types::BaseType> item, bool force)
{
    const MetaMetadata::MetaCollectionElement* meta = collectionMeta(metaElement());
    if (!force && meta != nullptr && UInt64(count()) + 1 > meta->maximum())
        MXF_SDK_THROW(Exceptions::InvalidChange,
                      L"Value '" + name() + L"': Schema only allows to add " +
                          number(meta->maximum()) + L" elements to this collection.");
    std::unique_ptr<Types::Collection> values =
        collection() != nullptr ? collection()->clone() : emptyCollection();
    values->append(std::move(item));
    replaceValue(std::move(values), false);
}

void CollectionElement::remove(UInt32 index, bool force)
{
    if (index >= count())
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds, "Index out of bounds");
    const MetaMetadata::MetaCollectionElement* meta = collectionMeta(metaElement());
    if (!force && meta != nullptr && count() - 1 < meta->minimum())
        MXF_SDK_THROW(Exceptions::InvalidChange,
                      L"Value '" + name() + L"': Schema does not allow less than " +
                          number(meta->minimum()) + L" elements in the collection.");
    std::unique_ptr<Types::Collection> values = collection()->clone();
    values->remove(index);
    replaceValue(std::move(values), false);
}

void CollectionElement::load(DataIO::BoundedDataSource& source)
{
    std::unique_ptr<Types::BaseType> value =
        Types::Factories::BaseTypeFactory::instance().createCollection(dataType(), source,
                                                                       dataSubType());
    Support::checkConsumed(source);
    replaceValue(std::move(value), true);
}

void ValueCollectionElement::setValue(std::unique_ptr<Types::BaseType> value, bool force)
{
    if (!value)
        return clear(force);
    checkCollection(*value, force);
    replaceValue(std::move(value), false);
}

void ValueCollectionElement::add(std::unique_ptr<Types::BaseType> item, bool force)
{
    checkItem(*item);
    appendItem(std::move(item), force);
}

void CollectionReferenceElement::checkKind(const Types::BaseType& item) const
{
    if (Types::Visitors::asReference(item) == nullptr)
        checkItem(item);
    const UInt32 kind = Support::typeNumber(item);
    if (kind != dataSubType())
        MXF_SDK_THROW(Exceptions::InvalidChange, L"Trying to set a " + Support::typeName(kind) +
                                                     L" on a " + Exceptions::toWide(kindName()) +
                                                     L" expecting a " +
                                                     Support::typeName(dataSubType()));
}

void CollectionReferenceElement::setValue(std::unique_ptr<Types::BaseType> value, bool force)
{
    if (!value)
        return clear(force);
    if (const Types::Collection* values = Types::Visitors::asCollection(*value))
        for (UInt32 i = 0; i < values->itemCount(); ++i)
            checkKind(values->at(i));
    checkCollection(*value, force);
    const Types::Collection* values = Types::Visitors::asCollection(*value);
    for (UInt32 i = 0; i < values->itemCount(); ++i)
        if (const MetadataSet* target =
                resolve(*this, *Types::Visitors::asReference(values->at(i))))
            check(*this, *target);
    replaceValue(std::move(value), false);
}

MetadataSet* CollectionReferenceElement::target(UInt32 index) const
{
    const Types::Reference* reference = Types::Visitors::asReference(at(index));
    return reference != nullptr ? resolve(*this, *reference) : nullptr;
}

void CollectionReferenceElement::add(MetadataSet& target, bool force)
{
    check(*this, target);
    appendItem(referenceTo(target, isStrong()), force);
}

void CollectionReferenceElement::add(std::unique_ptr<Types::Reference> reference, bool force)
{
    checkKind(*reference);
    if (const MetadataSet* target = resolve(*this, *reference))
        check(*this, *target);
    appendItem(std::move(reference), force);
}

bool CollectionReferenceElement::isStrong() const noexcept
{
    return dataSubType() == TI::TYPE_STRONG_REFERENCE;
}

namespace
{

class ElementMaker final : public MetaMetadata::MetaElementVisitor
{
public:
    ElementMaker(std::shared_ptr<const MetaAttribute> attribute, MetadataSet& owner)
        : attribute_(std::move(attribute)), owner_(owner)
    {
    }

    void visit(const MetaMetadata::MetaSimpleElement&) override
    {
        result = std::make_unique<SimpleElement>(attribute_, owner_);
    }
    void visit(const MetaMetadata::MetaReferenceElement&) override
    {
        result = std::make_unique<ReferenceElement>(attribute_, owner_);
    }
    void visit(const MetaMetadata::MetaCollection& element) override
    {
        if (element.dataType() == TI::TYPE_ARRAY)
            result = std::make_unique<ArrayElement>(attribute_, owner_);
        else
            result = std::make_unique<BatchElement>(attribute_, owner_);
    }
    void visit(const MetaMetadata::MetaReferenceCollection& element) override
    {
        if (element.dataType() == TI::TYPE_ARRAY)
            result = std::make_unique<ArrayReferenceElement>(attribute_, owner_);
        else
            result = std::make_unique<BatchReferenceElement>(attribute_, owner_);
    }

    std::unique_ptr<Element> result;

private:
    std::shared_ptr<const MetaAttribute> attribute_;
    MetadataSet& owner_;
};

template <typename Result, bool Collections, bool References, typename E>
Result* castTo(E& element)
{
    using Base = std::conditional_t<std::is_const_v<E>, ConstElementVisitor, ElementVisitor>;
    struct Visitor final : Base
    {
        using Base::visit;
        void
        visit(std::conditional_t<std::is_const_v<E>, const ArrayElement, ArrayElement>& e) override
        {
            if constexpr (Collections)
                result = &e;
        }
        void
        visit(std::conditional_t<std::is_const_v<E>, const BatchElement, BatchElement>& e) override
        {
            if constexpr (Collections)
                result = &e;
        }
        void visit(std::conditional_t<std::is_const_v<E>, const ArrayReferenceElement,
                                      ArrayReferenceElement>& e) override
        {
            if constexpr (References)
                result = &e;
        }
        void visit(std::conditional_t<std::is_const_v<E>, const BatchReferenceElement,
                                      BatchReferenceElement>& e) override
        {
            if constexpr (References)
                result = &e;
        }
        Result* result = nullptr;
    };
    Visitor visitor;
    element.accept(visitor);
    return visitor.result;
}

} // namespace

std::unique_ptr<Element> createElement(std::shared_ptr<const MetaAttribute> attribute,
                                       MetadataSet& owner)
{
    const MetaMetadata::MetaElement& meta = attribute->metaElement();
    ElementMaker maker(std::move(attribute), owner);
    meta.accept(maker);
    return std::move(maker.result);
}

const CollectionElement* asCollectionElement(const Element& element)
{
    return castTo<const CollectionElement, true, true>(element);
}
CollectionElement* asCollectionElement(Element& element)
{
    return castTo<CollectionElement, true, true>(element);
}
const ValueCollectionElement* asValueCollectionElement(const Element& element)
{
    return castTo<const ValueCollectionElement, true, false>(element);
}
ValueCollectionElement* asValueCollectionElement(Element& element)
{
    return castTo<ValueCollectionElement, true, false>(element);
}
const CollectionReferenceElement* asCollectionReferenceElement(const Element& element)
{
    return castTo<const CollectionReferenceElement, false, true>(element);
}
CollectionReferenceElement* asCollectionReferenceElement(Element& element)
{
    return castTo<CollectionReferenceElement, false, true>(element);
}

} // namespace MXF::SDK::Metadata
