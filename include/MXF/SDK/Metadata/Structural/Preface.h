#pragma once

#include "MXF/SDK/Metadata/Structural/TrackableMetadataSet.h"

namespace MXF::SDK::Metadata::Structural
{

// The root of the header metadata (SMPTE 377M Preface): the content storage, the
// identifications, the operational pattern and the essence containers of the file.
// PrefaceHelpers::contentStorage gives the content storage checked.
class Preface : public TrackableMetadataSet
{
public:
    using TrackableMetadataSet::TrackableMetadataSet;
    MXF_SDK_METADATA_SET_ACCEPT(TrackableMetadataSet)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_Preface
};

} // namespace MXF::SDK::Metadata::Structural
