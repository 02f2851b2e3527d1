#pragma once

#include "MXF/SDK/Metadata/Structural/Track.h"

namespace MXF::SDK::Metadata::Structural
{

// A track of continuous time at an edit rate (SMPTE 377M Timeline Track).
class TimelineTrack : public Track
{
public:
    using Track::Track;
    MXF_SDK_METADATA_SET_ACCEPT(Track)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_TimelineTrack
};

} // namespace MXF::SDK::Metadata::Structural
