#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/Metadata/MetadataSet.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"

namespace MXF::SDK::Metadata::Structural::SubclassHelpers
{

// The first set of `key` in `metadata`, as a `T`: null when it is of another class. NotFound
// "Didn't find MetadataSet with specified key." when there is none.
template <typename T>
T* findSet(const PartitionMetadata& metadata, const KLV::Key& key)
{
    return metadataSetAs<T>(metadata.set(key));
}

} // namespace MXF::SDK::Metadata::Structural::SubclassHelpers
