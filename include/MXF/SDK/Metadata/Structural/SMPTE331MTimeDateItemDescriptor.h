#pragma once

#include "MXF/SDK/Metadata/Structural/FileDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// The time and date of a system item (SMPTE 385M).
class SMPTE331MTimeDateItemDescriptor : public FileDescriptor
{
public:
    using FileDescriptor::FileDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(FileDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_SMPTE331MTimeDateItemDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
