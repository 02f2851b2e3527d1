#include "StructuralSupport.h"

#include "MXF/SDK/Exceptions/Exceptions.h"

namespace MXF::SDK::Metadata::Structural
{

namespace
{

// The element of the label as the kind the accessor expects: NotFound from `element` when the
// set has no such attribute; InvalidMetaAttribute when the dictionary made it of another kind.
ReferenceElement& referenceElement(MetadataSet& set, Label label)
{
    ReferenceElement* element =
        elementAs<ReferenceElement>(set.element(Types::UniversalLabel(label)));
    MXF_SDK_CHECK_AS(element != nullptr, "element != 0", "Element is not a ReferenceElement",
                     Exceptions::InvalidMetaAttribute);
    return *element;
}

const CollectionElement& collectionElement(const MetadataSet& set, Label label)
{
    const CollectionElement* element =
        asCollectionElement(set.element(Types::UniversalLabel(label)));
    MXF_SDK_CHECK_AS(element != nullptr, "element != 0", "Element is not a CollectionElement",
                     Exceptions::InvalidMetaAttribute);
    return *element;
}

ValueCollectionElement& valueCollection(MetadataSet& set, Label label)
{
    ValueCollectionElement* element =
        asValueCollectionElement(set.element(Types::UniversalLabel(label)));
    MXF_SDK_CHECK_AS(element != nullptr, "element != 0", "Element is not a collection of values",
                     Exceptions::InvalidMetaAttribute);
    return *element;
}

CollectionReferenceElement& referenceCollection(const MetadataSet& set, Label label)
{
    CollectionReferenceElement* element =
        asCollectionReferenceElement(set.element(Types::UniversalLabel(label)));
    MXF_SDK_CHECK_AS(element != nullptr, "element != 0",
                     "Element is not a collection of references", Exceptions::InvalidMetaAttribute);
    return *element;
}

} // namespace

void setSimple(MetadataSet& set, Label label, const Types::SimpleDataType& value)
{
    set.setValue(Types::UniversalLabel(label), value.clone());
}

void setTarget(MetadataSet& set, Label label, MetadataSet* target, bool force)
{
    referenceElement(set, label).setTarget(target, force);
}

Platform::UInt32 itemCount(const MetadataSet& set, Label label)
{
    const Element* element = set.findElement(Types::UniversalLabel(label));
    const CollectionElement* collection =
        element != nullptr ? asCollectionElement(*element) : nullptr;
    return collection != nullptr ? collection->count() : 0;
}

const Types::BaseType& item(const MetadataSet& set, Label label, Platform::UInt32 index)
{
    return collectionElement(set, label).at(index);
}

void addItem(MetadataSet& set, Label label, const Types::SimpleDataType& item, bool force)
{
    valueCollection(set, label).add(item.clone(), force);
}

void removeItem(MetadataSet& set, Label label, Platform::UInt32 index, bool force)
{
    valueCollection(set, label).remove(index, force);
}

MetadataSet* itemTarget(const MetadataSet& set, Label label, Platform::UInt32 index)
{
    return referenceCollection(set, label).target(index);
}

void addTarget(MetadataSet& set, Label label, MetadataSet& target, bool force)
{
    referenceCollection(set, label).add(target, force);
}

void removeTarget(MetadataSet& set, Label label, Platform::UInt32 index, bool force)
{
    referenceCollection(set, label).remove(index, force);
}

} // namespace MXF::SDK::Metadata::Structural
