#pragma once

#include "MXF/SDK/Metadata/Structural/CDCIEssenceDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// MPEG-2 video (SMPTE 381M): GOP structure, bit rate, profile and level.
class MPEG2VideoDescriptor : public CDCIEssenceDescriptor
{
public:
    using CDCIEssenceDescriptor::CDCIEssenceDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(CDCIEssenceDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_MPEG2VideoDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
