#pragma once

#include "MXF/SDK/Metadata/Structural/Locator.h"

namespace MXF::SDK::Metadata::Structural
{

// A locator by a name meant for people (SMPTE 377M Text Locator).
class TextLocator : public Locator
{
public:
    using Locator::Locator;
    MXF_SDK_METADATA_SET_ACCEPT(Locator)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_TextLocator
};

} // namespace MXF::SDK::Metadata::Structural
