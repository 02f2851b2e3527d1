#pragma once

#include "MXF/SDK/Metadata/Structural/TrackableMetadataSet.h"

namespace MXF::SDK::Metadata::Structural
{

// A run of unparsed bytes of a Wave file chunk, kept through a transcode. Not the same as
// DarkParsedGroup, which is a set of a key the dictionary doesn't know.
class UnknownChunkSet : public TrackableMetadataSet
{
public:
    using TrackableMetadataSet::TrackableMetadataSet;
    MXF_SDK_METADATA_SET_ACCEPT(TrackableMetadataSet)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_UnknownChunkSet
};

} // namespace MXF::SDK::Metadata::Structural
