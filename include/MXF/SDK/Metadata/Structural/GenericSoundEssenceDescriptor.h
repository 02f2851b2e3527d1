#pragma once

#include "MXF/SDK/Metadata/Structural/FileDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// What sound descriptors share (SMPTE 377M Generic Sound Essence Descriptor): sampling rate,
// channel count, bits per sample.
class GenericSoundEssenceDescriptor : public FileDescriptor
{
public:
    using FileDescriptor::FileDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(FileDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_GenericSoundEssenceDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
