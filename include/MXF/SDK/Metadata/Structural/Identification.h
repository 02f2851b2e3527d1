#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/Metadata/MetadataSet.h"
#include "MXF/SDK/Metadata/Structural/StructuralAccessors.h"

namespace MXF::SDK::Metadata::Structural
{

// One application that wrote or changed the file (SMPTE 377M Identification). It has no
// Generation UID of its own to follow, which is why it alone stands outside
// TrackableMetadataSet.
class Identification : public MetadataSet
{
public:
    using MetadataSet::MetadataSet;
    MXF_SDK_METADATA_SET_ACCEPT(MetadataSet)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_Identification
};

} // namespace MXF::SDK::Metadata::Structural
