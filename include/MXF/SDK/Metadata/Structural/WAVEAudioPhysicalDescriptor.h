#pragma once

#include "MXF/SDK/Metadata/Structural/PhysicalDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// The Broadcast Wave file an import came from, with its quality chunks (SMPTE 382M); a Wave
// transcode keeps it, with UnknownChunkSet.
class WAVEAudioPhysicalDescriptor : public PhysicalDescriptor
{
public:
    using PhysicalDescriptor::PhysicalDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(PhysicalDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_WAVEAudioPhysicalDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
