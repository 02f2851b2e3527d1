#pragma once

#include "MXF/SDK/Metadata/Structural/GenericSoundEssenceDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// Wave PCM sound (SMPTE 382M): block align and average bytes a second.
class WAVEAudioEssenceDescriptor : public GenericSoundEssenceDescriptor
{
public:
    using GenericSoundEssenceDescriptor::GenericSoundEssenceDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(GenericSoundEssenceDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_WAVEAudioEssenceDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
