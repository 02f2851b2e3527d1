#pragma once

#include "MXF/SDK/Metadata/Structural/GenericPackage.h"

namespace MXF::SDK::Metadata::Structural
{

// A file or a physical source package (SMPTE 377M Source Package), with the descriptor of its
// essence.
class SourcePackage : public GenericPackage
{
public:
    using GenericPackage::GenericPackage;
    MXF_SDK_METADATA_SET_ACCEPT(GenericPackage)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_SourcePackage
};

} // namespace MXF::SDK::Metadata::Structural
