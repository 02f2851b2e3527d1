#pragma once

#include "MXF/SDK/Metadata/Structural/TrackableMetadataSet.h"

namespace MXF::SDK::Metadata::Structural
{

// The ordered components of a track (SMPTE 377M Sequence): componentsCount(), component(i).
// It stands beside StructuralComponent here, though the dictionary derives it from Segment.
class Sequence : public TrackableMetadataSet
{
public:
    using TrackableMetadataSet::TrackableMetadataSet;
    MXF_SDK_METADATA_SET_ACCEPT(TrackableMetadataSet)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_Sequence
};

} // namespace MXF::SDK::Metadata::Structural
