#pragma once

#include "MXF/SDK/Metadata/Structural/StructuralComponent.h"

namespace MXF::SDK::Metadata::Structural
{

// A stretch of a track of another package (SMPTE 377M Source Clip): sourcePackageID,
// sourceTrackID and startPosition.
class SourceClip : public StructuralComponent
{
public:
    using StructuralComponent::StructuralComponent;
    MXF_SDK_METADATA_SET_ACCEPT(StructuralComponent)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_SourceClip
};

} // namespace MXF::SDK::Metadata::Structural
