#pragma once

// What every generated accessor calls: read and write one element of a set by its label. The
// element kinds come from the dictionary loaded at run time, which may not be the one the
// accessors were generated from, so a missing element or one of another kind is an error here,
// never a crash.

#include "MXF/SDK/Metadata/Element.h"
#include "MXF/SDK/Metadata/MetadataSet.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"
#include "MXF/SDK/Types/UID.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"

namespace MXF::SDK::Metadata::Structural
{

using Label = const Platform::Byte*;

// The value of a simple element, null when empty or when the set has no such attribute.
template <typename T>
const T* valueAs(const MetadataSet& set, Label label)
{
    const Types::BaseType* value = set.value(Types::UniversalLabel(label));
    return value != nullptr ? Types::Visitors::getAs<T>(*value) : nullptr;
}

void setSimple(MetadataSet& set, Label label, const Types::SimpleDataType& value);

// The target of a ReferenceElement; null when empty, unresolved or of another class.
template <typename T>
T* targetAs(const MetadataSet& set, Label label)
{
    MetadataSet* target = set.referencedSet(Types::UniversalLabel(label));
    return target != nullptr ? metadataSetAs<T>(*target) : nullptr;
}

// Null clears, as far as the attribute allows.
void setTarget(MetadataSet& set, Label label, MetadataSet* target, bool force);

// Items of a collection, 0 when empty or when the set has no such attribute.
Platform::UInt32 itemCount(const MetadataSet& set, Label label);

const Types::BaseType& item(const MetadataSet& set, Label label, Platform::UInt32 index);

template <typename T>
const T* itemAs(const MetadataSet& set, Label label, Platform::UInt32 index)
{
    return Types::Visitors::getAs<T>(item(set, label, index));
}

void addItem(MetadataSet& set, Label label, const Types::SimpleDataType& item, bool force);
void removeItem(MetadataSet& set, Label label, Platform::UInt32 index, bool force);

MetadataSet* itemTarget(const MetadataSet& set, Label label, Platform::UInt32 index);

template <typename T>
T* itemTargetAs(const MetadataSet& set, Label label, Platform::UInt32 index)
{
    MetadataSet* target = itemTarget(set, label, index);
    return target != nullptr ? metadataSetAs<T>(*target) : nullptr;
}

void addTarget(MetadataSet& set, Label label, MetadataSet& target, bool force);
void removeTarget(MetadataSet& set, Label label, Platform::UInt32 index, bool force);

} // namespace MXF::SDK::Metadata::Structural
