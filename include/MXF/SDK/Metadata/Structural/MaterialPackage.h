#pragma once

#include "MXF/SDK/Metadata/Structural/GenericPackage.h"

namespace MXF::SDK::Metadata::Structural
{

// The output timeline of the file (SMPTE 377M Material Package).
class MaterialPackage : public GenericPackage
{
public:
    using GenericPackage::GenericPackage;
    MXF_SDK_METADATA_SET_ACCEPT(GenericPackage)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_MaterialPackage
};

} // namespace MXF::SDK::Metadata::Structural
