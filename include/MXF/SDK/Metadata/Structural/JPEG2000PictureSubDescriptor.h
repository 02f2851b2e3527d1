#pragma once

#include "MXF/SDK/Metadata/Structural/SubDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// The JPEG 2000 coding parameters of a picture descriptor (SMPTE 422M).
class JPEG2000PictureSubDescriptor : public SubDescriptor
{
public:
    using SubDescriptor::SubDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(SubDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_JPEG2000PictureSubDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
