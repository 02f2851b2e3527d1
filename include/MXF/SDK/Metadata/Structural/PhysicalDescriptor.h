#pragma once

#include "MXF/SDK/Metadata/Structural/GenericDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// The descriptor of a physical source package (SMPTE 377M Physical Descriptor).
class PhysicalDescriptor : public GenericDescriptor
{
public:
    using GenericDescriptor::GenericDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(GenericDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_PhysicalDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
