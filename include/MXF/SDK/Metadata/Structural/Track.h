#pragma once

#include "MXF/SDK/Metadata/Structural/TrackableMetadataSet.h"

namespace MXF::SDK::Metadata::Structural
{

// What the three kinds of track share (SMPTE 377M Generic Track): track ID and number, name
// and the sequence.
class Track : public TrackableMetadataSet
{
public:
    using TrackableMetadataSet::TrackableMetadataSet;
    MXF_SDK_METADATA_SET_ACCEPT(TrackableMetadataSet)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_Track
};

} // namespace MXF::SDK::Metadata::Structural
