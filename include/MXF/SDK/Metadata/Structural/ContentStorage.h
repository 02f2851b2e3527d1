#pragma once

#include "MXF/SDK/Metadata/Structural/TrackableMetadataSet.h"

namespace MXF::SDK::Metadata::Structural
{

// All packages of the file and the essence container data that ties file packages to
// essence streams (SMPTE 377M Content Storage): packagesCount(), package(index).
class ContentStorage : public TrackableMetadataSet
{
public:
    using TrackableMetadataSet::TrackableMetadataSet;
    MXF_SDK_METADATA_SET_ACCEPT(TrackableMetadataSet)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_ContentStorage
};

} // namespace MXF::SDK::Metadata::Structural
