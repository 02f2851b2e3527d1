#pragma once

#include "MXF/SDK/Metadata/Structural/StructuralComponent.h"

namespace MXF::SDK::Metadata::Structural
{

// Descriptive metadata over a stretch of time (SMPTE 377M DM Segment), with the properties of
// the event and comment marker it derives from.
class DMSegment : public StructuralComponent
{
public:
    using StructuralComponent::StructuralComponent;
    MXF_SDK_METADATA_SET_ACCEPT(StructuralComponent)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_DMSegment
};

} // namespace MXF::SDK::Metadata::Structural
