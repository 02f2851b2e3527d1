#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/Metadata/MetadataSet.h"
#include "MXF/SDK/Metadata/Structural/StructuralAccessors.h"

namespace MXF::SDK::Metadata::Structural
{

// The SMPTE 377M InterchangeObject: a set with an InstanceUID and a Generation UID, so it can
// be the target of references and be tracked through Identification. Every structural set
// but Identification derives from it.
class TrackableMetadataSet : public MetadataSet
{
public:
    using MetadataSet::MetadataSet;
    MXF_SDK_METADATA_SET_ACCEPT(MetadataSet)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_TrackableMetadataSet
};

} // namespace MXF::SDK::Metadata::Structural
