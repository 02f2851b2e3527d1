#pragma once

#include "MXF/SDK/Metadata/Structural/TrackableMetadataSet.h"

namespace MXF::SDK::Metadata::Structural
{

// Ties a file package to the essence container of a body stream (SMPTE 377M Essence Container
// Data): its BodySID, IndexSID and the UMID of the package.
class EssenceContainerData : public TrackableMetadataSet
{
public:
    using TrackableMetadataSet::TrackableMetadataSet;
    MXF_SDK_METADATA_SET_ACCEPT(TrackableMetadataSet)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The package whose packageUID is linkedPackageUID, among the sets of the owner; null when
    // there is none or the UID is empty.
    SourcePackage* linkedPackage() const;

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_EssenceContainerData
};

} // namespace MXF::SDK::Metadata::Structural
