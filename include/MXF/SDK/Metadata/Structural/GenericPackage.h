#pragma once

#include "MXF/SDK/Metadata/Structural/TrackableMetadataSet.h"

namespace MXF::SDK::Metadata::Structural
{

// What material and source packages share (SMPTE 377M Generic Package): the package UMID,
// name, dates and tracks.
class GenericPackage : public TrackableMetadataSet
{
public:
    using TrackableMetadataSet::TrackableMetadataSet;
    MXF_SDK_METADATA_SET_ACCEPT(TrackableMetadataSet)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_GenericPackage
};

} // namespace MXF::SDK::Metadata::Structural
