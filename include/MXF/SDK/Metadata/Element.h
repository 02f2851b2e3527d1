#pragma once

#include "MXF/SDK/MetaMetadata/MetaAttributes.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"
#include "MXF/SDK/Types/Collection.h"
#include "MXF/SDK/Types/Reference.h"
#include "MXF/SDK/Types/UID.h"

#include <memory>

namespace MXF::SDK::DataIO
{
class BoundedDataSource;
class DataSink;
} // namespace MXF::SDK::DataIO

namespace MXF::SDK::MetaMetadata
{
class MetaElement;
}

namespace MXF::SDK::Metadata
{

class MetadataSet;
class PartitionDictionary;
class SimpleElement;
class ReferenceElement;
class ArrayElement;
class BatchElement;
class ArrayReferenceElement;
class BatchReferenceElement;

// One slot a concrete element class, each with an empty body.
class ElementVisitor
{
public:
    virtual ~ElementVisitor() = default;
    virtual void visit(SimpleElement& /*element*/) {}
    virtual void visit(ReferenceElement& /*element*/) {}
    virtual void visit(ArrayElement& /*element*/) {}
    virtual void visit(BatchElement& /*element*/) {}
    virtual void visit(ArrayReferenceElement& /*element*/) {}
    virtual void visit(BatchReferenceElement& /*element*/) {}
};

class ConstElementVisitor
{
public:
    virtual ~ConstElementVisitor() = default;
    virtual void visit(const SimpleElement& /*element*/) {}
    virtual void visit(const ReferenceElement& /*element*/) {}
    virtual void visit(const ArrayElement& /*element*/) {}
    virtual void visit(const BatchElement& /*element*/) {}
    virtual void visit(const ArrayReferenceElement& /*element*/) {}
    virtual void visit(const BatchReferenceElement& /*element*/) {}
};

// One property of a set: its attribute, and a value (none while empty). Values keep their wire
// form; `value` gives it as a BaseType to read through the visitors of Types, the setters of the
// concrete classes check what they are given. An element lives and dies with its set.
class Element
{
public:
    virtual void accept(ElementVisitor& visitor) = 0;
    virtual void accept(ConstElementVisitor& visitor) const = 0;
    virtual ~Element();

    // Parses the value from exactly the bytes of `source`: a value that doesn't take them all
    // throws InvalidLength. The old value is replaced and the listeners hear `elementLoaded`.
    virtual void load(DataIO::BoundedDataSource& source) = 0;
    const std::shared_ptr<const MetaMetadata::AbstractMetaAttribute>&
    metaAttribute() const noexcept;
    // The MetaAttribute behind the element; null for an element that stands for an unknown or
    // misplaced property.
    const MetaMetadata::MetaAttribute* knownMetaAttribute() const noexcept;
    const Types::UniversalLabel& universalLabel() const noexcept;
    MetadataSet& owner() const noexcept;
    bool isEmpty() const noexcept;
    // Bytes of the value, 0 when empty.
    virtual Platform::UInt16 size() const;
    // Forwarded to the value; nothing happens when the element is empty.
    void accept(Types::Visitors::Visitor& visitor) const;
    void accept(Types::Visitors::NonConstVisitor& visitor);
    // Nothing when empty; else the local tag from `dictionary` (a new dynamic one if need be), the
    // value's size big-endian in `lengthSize` bytes (1, 2 or 4), the value.
    virtual void serialize(DataIO::DataSink& sink, PartitionDictionary& dictionary,
                           Platform::UInt8 lengthSize) const;
    // A copy with its own value, belonging to `owner`.
    virtual std::unique_ptr<Element> clone(MetadataSet& owner) const = 0;

    // The value, null when empty.
    const Types::BaseType* value() const noexcept;
    // Replaces the value after the checks of the concrete class; the listeners hear
    // `valueChanging` and `valueChanged`. Null clears, see `clear`.
    virtual void setValue(std::unique_ptr<Types::BaseType> value, bool force = false) = 0;
    // Throws InvalidChange "Value '<name>' is required according to Schema" for a required
    // attribute ("Req"), unless `force`.
    void clear(bool force = false);
    // The property "name" of the attribute, "<unknown>" if it has none.
    std::wstring name() const;
    // The type number (TypeIdentifiers) values of this element have; Unknown for an element
    // without MetaAttribute.
    Platform::UInt32 dataType() const noexcept;

protected:
    Element(std::shared_ptr<const MetaMetadata::AbstractMetaAttribute> attribute,
            MetadataSet& owner);
    // The attribute's meta element, or the misplaced one; null for an unknown attribute.
    const MetaMetadata::MetaElement* metaElement() const noexcept;
    // Stores `value` (null empties), notifying the owner's listeners: as a load or as a change.
    void replaceValue(std::unique_ptr<Types::BaseType> value, bool loaded);
    // The clear check of `clear`, for setters of the subclasses.
    void checkClear(bool force) const;
    // Gives `copy` its own copy of this value, as a load.
    void copyValueTo(Element& copy) const;
    // Loads one value of the element's type; InvalidMetaAttribute "ReferenceElement can not be
    // changed because there is no metaAttribute." without a MetaAttribute.
    void loadSingle(DataIO::BoundedDataSource& source);
    Types::BaseType* mutableValue() noexcept;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// Mixin of the elements that hold plain values: checks a new value's type against the element's.
class ValueHolder
{
public:
    virtual ~ValueHolder();

protected:
    ValueHolder() = default;
    // InvalidChange "Setting value with an invalid type. Value Type of new value: <name> Value
    // type of element <name>".
    static void checkType(const Element& element, const Types::BaseType& value);
};

// Mixin of the elements that refer to sets: checks a target against the allowed references.
class ReferenceHolder
{
public:
    virtual ~ReferenceHolder();

    // The target's key must be one of the meta element's allowedReferences (an empty list allows
    // any), else MetadataSetReferenceNotAllowed "ReferenceElement with UL <label> cannot reference
    // set with key '<key>' Must reference one of: <keys>".
    static void check(const Element& element, const MetadataSet& target);

protected:
    ReferenceHolder() = default;
    // The set a reference points at, through the owner of `element`'s set; null when none.
    static MetadataSet* resolve(const Element& element, const Types::Reference& reference);
    // A strong or weak reference to `target` by its InstanceUID; NotFound "InstanceUID not found
    // in Metadata Set with key <key> Check Metadata Set builder." when it has none.
    static std::unique_ptr<Types::Reference> referenceTo(const MetadataSet& target, bool strong);
};

// What every concrete element class repeats: the public constructor, the visitor dispatch on
// `Self` and a clone with its own value.
template <typename Self, typename Base>
class ConcreteElement : public Base
{
public:
    ConcreteElement(std::shared_ptr<const MetaMetadata::AbstractMetaAttribute> attribute,
                    MetadataSet& owner)
        : Base(std::move(attribute), owner)
    {
    }

    void accept(ElementVisitor& visitor) override { visitor.visit(static_cast<Self&>(*this)); }
    void accept(ConstElementVisitor& visitor) const override
    {
        visitor.visit(static_cast<const Self&>(*this));
    }
    using Element::accept;
    std::unique_ptr<Element> clone(MetadataSet& owner) const override
    {
        auto copy = std::make_unique<Self>(this->metaAttribute(), owner);
        this->copyValueTo(*copy);
        return copy;
    }
};

// A plain value of any MetaSimpleElement, or the bytes of an unknown or misplaced property.
class SimpleElement final : public ConcreteElement<SimpleElement, Element>, public ValueHolder
{
public:
    using ConcreteElement::ConcreteElement;

    // InvalidMetaAttribute "ReferenceElement can not be changed because there is no
    // metaAttribute." without a MetaAttribute; else the value of the meta element's type.
    void load(DataIO::BoundedDataSource& source) override;
    void setValue(std::unique_ptr<Types::BaseType> value, bool force = false) override;
    // Keeps `value` as it is, for what didn't parse: no checks, no listeners.
    void setRawValue(std::unique_ptr<Types::BaseType> value);
};

// One StrongReference or WeakReference.
class ReferenceElement final : public ConcreteElement<ReferenceElement, Element>,
                               public ReferenceHolder
{
public:
    using ConcreteElement::ConcreteElement;

    void load(DataIO::BoundedDataSource& source) override;
    // InvalidMetaAttribute "ReferenceElement can not be changed because there is no
    // metaAttribute." without a MetaAttribute, and "Trying to set a value to a ReferenceElement
    // that differs from its MetaAttribute information" for a value that isn't a reference of the
    // meta element's kind.
    void setValue(std::unique_ptr<Types::BaseType> value, bool force = false) override;

    const Types::Reference* reference() const noexcept;
    // The set referred to, null when empty or when the owner has no set of that InstanceUID.
    MetadataSet* target() const;
    // Refers to `target` (checked), by its InstanceUID; null clears.
    void setTarget(MetadataSet* target, bool force = false);
    bool isStrong() const noexcept;
};

// Array and Batch of plain values.
class CollectionElement : public Element
{
public:
    // Items; 0 when empty.
    Platform::UInt32 count() const noexcept;
    // IndexOutOfBounds "Index out of bounds".
    const Types::BaseType& at(Platform::UInt32 index) const;
    const Types::Collection* collection() const noexcept;
    void load(DataIO::BoundedDataSource& source) override;
    // IndexOutOfBounds "Index out of bounds"; the count check of `checkCollection`.
    void remove(Platform::UInt32 index, bool force = false);

protected:
    using Element::Element;
    Platform::UInt32 dataSubType() const noexcept;
    // The InvalidChange checks of collections, all "Value '<name>" and then:
    // "': Setting collection with an invalid Sub Type.", "': Collection can not be changed to
    // another type!", "': Schema only allows to add N elements to this collection.", "': Schema
    // does not allow less than N elements in the collection.".
    void checkCollection(const Types::BaseType& value, bool force) const;
    void checkItem(const Types::BaseType& item) const;
    void checkCount(Platform::UInt64 count, bool force) const;
    // Appends to the value, making an empty collection of the right kind first.
    void appendItem(std::unique_ptr<Types::BaseType> item, bool force);
    std::unique_ptr<Types::Collection> emptyCollection() const;
};

// Items of the element's sub type, checked: "Value '<name>': Setting value with an invalid Sub
// Type in a collection." for another type.
class ValueCollectionElement : public CollectionElement, public ValueHolder
{
public:
    void setValue(std::unique_ptr<Types::BaseType> value, bool force = false) override;
    void add(std::unique_ptr<Types::BaseType> item, bool force = false);

protected:
    using CollectionElement::CollectionElement;
};

class ArrayElement final : public ConcreteElement<ArrayElement, ValueCollectionElement>
{
public:
    using ConcreteElement::ConcreteElement;
};

class BatchElement final : public ConcreteElement<BatchElement, ValueCollectionElement>
{
public:
    using ConcreteElement::ConcreteElement;
};

// Array and Batch of references. A reference of the other kind than the meta element's gives
// InvalidChange "Trying to set a StrongReference on a ArrayReferenceElement expecting a
// WeakReference" (and the same with the kinds swapped, and "on a BatchReferenceElement").
class CollectionReferenceElement : public CollectionElement, public ReferenceHolder
{
public:
    void setValue(std::unique_ptr<Types::BaseType> value, bool force = false) override;

    // The set item `index` refers to; null when the owner has none of that InstanceUID.
    // IndexOutOfBounds "Index out of bounds".
    MetadataSet* target(Platform::UInt32 index) const;
    // Appends a reference of the meta element's kind to `target`, checked.
    void add(MetadataSet& target, bool force = false);
    void add(std::unique_ptr<Types::Reference> reference, bool force = false);
    bool isStrong() const noexcept;

protected:
    using CollectionElement::CollectionElement;
    virtual const char* kindName() const noexcept = 0;
    void checkKind(const Types::BaseType& item) const;
};

class ArrayReferenceElement final
    : public ConcreteElement<ArrayReferenceElement, CollectionReferenceElement>
{
public:
    using ConcreteElement::ConcreteElement;

protected:
    const char* kindName() const noexcept override { return "ArrayReferenceElement"; }
};

class BatchReferenceElement final
    : public ConcreteElement<BatchReferenceElement, CollectionReferenceElement>
{
public:
    using ConcreteElement::ConcreteElement;

protected:
    const char* kindName() const noexcept override { return "BatchReferenceElement"; }
};

// Makes the empty element of an attribute: Simple, Reference, Array, Batch, ArrayReference or
// BatchReference by its meta element.
std::unique_ptr<Element> createElement(std::shared_ptr<const MetaMetadata::MetaAttribute> attribute,
                                       MetadataSet& owner);

// The checked casts of elements: null when the element isn't exactly a `T`.
template <typename T>
class GetElementVisitor : public ConstElementVisitor
{
public:
    using ConstElementVisitor::visit;
    void visit(const T& element) override { result_ = &element; }
    const T* result() const noexcept { return result_; }

private:
    const T* result_ = nullptr;
};

template <typename T>
class GetNonConstElementVisitor : public ElementVisitor
{
public:
    using ElementVisitor::visit;
    void visit(T& element) override { result_ = &element; }
    T* result() const noexcept { return result_; }

private:
    T* result_ = nullptr;
};

// Kin of elementAs for the abstract classes: null when the element is none of them.
const CollectionElement* asCollectionElement(const Element& element);
CollectionElement* asCollectionElement(Element& element);
const ValueCollectionElement* asValueCollectionElement(const Element& element);
ValueCollectionElement* asValueCollectionElement(Element& element);
const CollectionReferenceElement* asCollectionReferenceElement(const Element& element);
CollectionReferenceElement* asCollectionReferenceElement(Element& element);

template <typename T>
const T* elementAs(const Element& element)
{
    GetElementVisitor<T> visitor;
    element.accept(visitor);
    return visitor.result();
}
template <typename T>
T* elementAs(Element& element)
{
    GetNonConstElementVisitor<T> visitor;
    element.accept(visitor);
    return visitor.result();
}

} // namespace MXF::SDK::Metadata
