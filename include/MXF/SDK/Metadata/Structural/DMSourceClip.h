#pragma once

#include "MXF/SDK/Metadata/Structural/SourceClip.h"

namespace MXF::SDK::Metadata::Structural
{

// A source clip of descriptive metadata (SMPTE 377M DM Source Clip).
class DMSourceClip : public SourceClip
{
public:
    using SourceClip::SourceClip;
    MXF_SDK_METADATA_SET_ACCEPT(SourceClip)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_DMSourceClip
};

} // namespace MXF::SDK::Metadata::Structural
