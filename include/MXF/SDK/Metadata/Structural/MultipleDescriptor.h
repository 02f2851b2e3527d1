#pragma once

#include "MXF/SDK/Metadata/Structural/FileDescriptor.h"

namespace MXF::SDK::Metadata::Structural
{

// The descriptor of a file package with several essence tracks (SMPTE 377M Multiple
// Descriptor): one file descriptor a track, fileDescriptor(i).
class MultipleDescriptor : public FileDescriptor
{
public:
    using FileDescriptor::FileDescriptor;
    MXF_SDK_METADATA_SET_ACCEPT(FileDescriptor)

    // The key this class is registered under with MetadataSetFactory.
    static KLV::Key classKey();

    // The accessors of the dictionary's properties, generated (gen-structural.py).
    MXF_SDK_STRUCTURAL_ACCESSORS_MultipleDescriptor
};

} // namespace MXF::SDK::Metadata::Structural
