#pragma once

#include "MXF/SDK/Metadata/Structural/StructuralComponent.h"

namespace MXF::SDK::Metadata::Structural
{

// The start of a continuous time code (SMPTE 377M Timecode Component): startTimecode,
// roundedTimecodeBase and dropFrame.
class TimecodeComponent : public StructuralComponent
{
public:
    using StructuralComponent::StructuralComponent;
    MXF_SDK_METADATA_SET_ACCEPT(StructuralComponent)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_TimecodeComponent
};

} // namespace MXF::SDK::Metadata::Structural
