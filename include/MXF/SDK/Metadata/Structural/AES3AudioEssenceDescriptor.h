#pragma once

#include "MXF/SDK/Metadata/Structural/WAVEAudioEssenceDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// AES3 sound (SMPTE 382M): channel status and user data.
class AES3AudioEssenceDescriptor : public WAVEAudioEssenceDescriptor
{
public:
    using WAVEAudioEssenceDescriptor::WAVEAudioEssenceDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(WAVEAudioEssenceDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_AES3AudioEssenceDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
