#pragma once

#include "MXF/SDK/Metadata/Structural/Track.h"

namespace MXF::SDK::Metadata::Structural
{

// A track of events at an event edit rate (SMPTE 377M Event Track).
class EventTrack : public Track
{
public:
    using Track::Track;
    MXF_SDK_METADATA_SET_ACCEPT(Track)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_EventTrack
};

} // namespace MXF::SDK::Metadata::Structural
