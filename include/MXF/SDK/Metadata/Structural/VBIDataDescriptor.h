#pragma once

#include "MXF/SDK/Metadata/Structural/GenericDataEssenceDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// Vertical blanking lines (SMPTE 436M).
class VBIDataDescriptor : public GenericDataEssenceDescriptor
{
public:
    using GenericDataEssenceDescriptor::GenericDataEssenceDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(GenericDataEssenceDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_VBIDataDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
