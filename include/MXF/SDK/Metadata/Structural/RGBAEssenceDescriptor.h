#pragma once

#include "MXF/SDK/Metadata/Structural/GenericPictureEssenceDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// Component picture essence (SMPTE 377M RGBA Descriptor).
class RGBAEssenceDescriptor : public GenericPictureEssenceDescriptor
{
public:
    using GenericPictureEssenceDescriptor::GenericPictureEssenceDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(GenericPictureEssenceDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_RGBAEssenceDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
