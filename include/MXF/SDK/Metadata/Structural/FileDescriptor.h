#pragma once

#include "MXF/SDK/Metadata/Structural/GenericDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// The descriptor of essence in a file (SMPTE 377M File Descriptor): sample rate, container
// duration, essence container label, linked track ID.
class FileDescriptor : public GenericDescriptor
{
public:
    using GenericDescriptor::GenericDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(GenericDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_FileDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
