#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/MetaMetadata/PropertyMap.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"
#include "MXF/SDK/Types/UID.h"

#include <memory>
#include <vector>

namespace MXF::SDK::MetaMetadata
{

class MetaCollection;
class MetaReferenceCollection;
class MetaReferenceElement;
class MetaSimpleElement;

// One slot a concrete meta element class, each with an empty body.
class MetaElementVisitor
{
public:
    virtual ~MetaElementVisitor() = default;
    virtual void visit(const MetaSimpleElement& /*element*/) {}
    virtual void visit(const MetaReferenceElement& /*element*/) {}
    virtual void visit(const MetaCollection& /*element*/) {}
    virtual void visit(const MetaReferenceCollection& /*element*/) {}
};

// The description of one kind of value: the label of the property, its type number
// (Types::TypeIdentifiers) and what its concrete class adds. Reach that class through
// MetaElementVisitor or metaElementAs.
class MetaElement : public PropertyMap
{
public:
    ~MetaElement() override;

    const Types::UniversalLabel& universalLabel() const noexcept { return universalLabel_; }
    Platform::UInt32 dataType() const noexcept { return dataType_; }
    virtual void accept(MetaElementVisitor& visitor) const = 0;

protected:
    MetaElement(const Types::UniversalLabel& universalLabel, Platform::UInt32 dataType);

private:
    Types::UniversalLabel universalLabel_;
    Platform::UInt32 dataType_;
};

// Mixin of the elements that hold plain values, not references to sets.
class MetaValueHolder
{
public:
    virtual ~MetaValueHolder();

protected:
    MetaValueHolder() = default;
};

// Mixin of the elements that refer to sets.
class MetaReferenceHolder
{
public:
    virtual ~MetaReferenceHolder();

    // Keys of the sets that may be referred to; empty allows any set.
    const std::vector<KLV::Key>& allowedReferences() const noexcept { return allowedReferences_; }

protected:
    explicit MetaReferenceHolder(std::vector<KLV::Key> allowedReferences);

private:
    std::vector<KLV::Key> allowedReferences_;
};

using Enumerations = std::vector<std::unique_ptr<Types::BaseType>>;

// A single plain value. Throws InvalidMetaElement "Tried to create a MetaSimpleElement with
// dataType: " and the type's name for Array, Batch, StrongReference and WeakReference.
class MetaSimpleElement final : public MetaElement, public MetaValueHolder
{
public:
    MetaSimpleElement(const Types::UniversalLabel& universalLabel, Platform::UInt32 dataType);
    MetaSimpleElement(const Types::UniversalLabel& universalLabel, Platform::UInt32 dataType,
                      Enumerations enumerations);

    // The values allowed, each of type `dataType`; empty allows any.
    const Enumerations& enumerations() const noexcept { return enumerations_; }
    void accept(MetaElementVisitor& visitor) const override;

private:
    Enumerations enumerations_;
};

// A single reference. Throws InvalidMetaElement "Tried to create a MetaReferenceElement with
// dataType: " and the type's name unless `dataType` is StrongReference or WeakReference.
class MetaReferenceElement final : public MetaElement, public MetaReferenceHolder
{
public:
    MetaReferenceElement(const Types::UniversalLabel& universalLabel, Platform::UInt32 dataType,
                         std::vector<KLV::Key> allowedReferences);

    void accept(MetaElementVisitor& visitor) const override;
};

// An Array or Batch of `dataSubType` values, `minimum` to `maximum` of them. Throws
// InvalidMetaElement "Tried to create a MetaCollectionElement derived class with dataType: " and
// the type's name unless `dataType` is Array or Batch, and "...with invalid limits: " and the
// minimum and maximum, as "5, 2", when the maximum is below the minimum.
class MetaCollectionElement : public MetaElement
{
public:
    Platform::UInt32 dataSubType() const noexcept { return dataSubType_; }
    Platform::UInt32 minimum() const noexcept { return minimum_; }
    Platform::UInt32 maximum() const noexcept { return maximum_; }

protected:
    MetaCollectionElement(const Types::UniversalLabel& universalLabel, Platform::UInt32 dataType,
                          Platform::UInt32 dataSubType, Platform::UInt32 minimum,
                          Platform::UInt32 maximum);

private:
    Platform::UInt32 dataSubType_;
    Platform::UInt32 minimum_;
    Platform::UInt32 maximum_;
};

// A collection of plain values. Throws InvalidMetaElement "Tried to create a MetaCollection with
// dataSubType: " and the name for items of StrongReference or WeakReference.
class MetaCollection final : public MetaCollectionElement, public MetaValueHolder
{
public:
    MetaCollection(const Types::UniversalLabel& universalLabel, Platform::UInt32 dataType,
                   Platform::UInt32 dataSubType, Platform::UInt32 minimum,
                   Platform::UInt32 maximum);

    void accept(MetaElementVisitor& visitor) const override;
};

// A collection of references. Throws InvalidMetaElement "Tried to create a
// MetaReferenceCollection with dataType: " and the name of `dataSubType` unless the items are
// StrongReference or WeakReference.
class MetaReferenceCollection final : public MetaCollectionElement, public MetaReferenceHolder
{
public:
    MetaReferenceCollection(const Types::UniversalLabel& universalLabel, Platform::UInt32 dataType,
                            Platform::UInt32 dataSubType, Platform::UInt32 minimum,
                            Platform::UInt32 maximum, std::vector<KLV::Key> allowedReferences);

    void accept(MetaElementVisitor& visitor) const override;
};

// The checked cast of meta elements: `result` is the element when it is exactly a `T`, else null.
template <typename T>
class GetMetaElementVisitor : public MetaElementVisitor
{
public:
    using MetaElementVisitor::visit;
    void visit(const T& element) override { result_ = &element; }
    const T* result() const noexcept { return result_; }

private:
    const T* result_ = nullptr;
};

template <typename T>
const T* metaElementAs(const MetaElement& element)
{
    GetMetaElementVisitor<T> visitor;
    element.accept(visitor);
    return visitor.result();
}

} // namespace MXF::SDK::MetaMetadata
