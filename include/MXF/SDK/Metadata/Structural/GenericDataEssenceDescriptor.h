#pragma once

#include "MXF/SDK/Metadata/Structural/FileDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// What data essence descriptors share (SMPTE 377M Generic Data Essence Descriptor).
class GenericDataEssenceDescriptor : public FileDescriptor
{
public:
    using FileDescriptor::FileDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(FileDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_GenericDataEssenceDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
