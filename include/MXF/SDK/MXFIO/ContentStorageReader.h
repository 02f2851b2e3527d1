#pragma once

#include "MXF/SDK/MXFIO/ElementReader.h"
#include "MXF/SDK/MXFIO/Seeker.h"
#include "MXF/SDK/Types/Rational.h"
#include "MXF/SDK/Types/UID.h"

#include <map>
#include <memory>

namespace MXF::SDK::Metadata
{
class MetadataSetOwner;
class PartitionMetadata;
namespace Structural
{
class FileDescriptor;
class Preface;
class SourcePackage;
class Track;
} // namespace Structural
} // namespace MXF::SDK::Metadata

namespace MXF::SDK::MXFIO
{

class Reader;

// The entry on one file: the file package with essence, its essence container and how its
// tracks meet the elements of the body.
class ContentStorageReader
{
public:
    // The metadata and the reader must outlive this object. OperationNotAllowed "metadata != 0:
    // Invalid MetadataSetOwner. Only PartitionMetadata is supported." for another kind of owner;
    // InvalidStructure "bodySID != 0: missing bodySID from essenceContainerdata."; NotFound
    // "bodySIDPartition != 0: Unable to find partition for the bodySID specified.", "descriptor
    // != 0: File Descriptor not found.", "essenceContainerUL != 0: Essence Container UL not
    // found.", "linkedPackage != 0: Source package not found.".
    ContentStorageReader(Metadata::MetadataSetOwner& metadata, Reader& reader);
    ~ContentStorageReader();
    ContentStorageReader(const ContentStorageReader&) = delete;
    ContentStorageReader& operator=(const ContentStorageReader&) = delete;

    // The longest track's duration.
    Int64 packageDuration();
    // From the metadata, or from the essence where it gives none or the file is OP-Atom.
    // InvalidElement "(sourcePackageDuration - trackDuration) < 1: duration with bad value." when
    // the metadata promises more edit units than the essence holds.
    Int64 trackDuration(UInt32 trackNumber);
    Types::Rational editRate(UInt32 trackNumber);
    // NotFound "it != impl_ -> metadataInfo_.trackNumber2TrackID.end (): TrackNumber has no
    // trackID correnpondent.".
    UInt32 trackID(UInt32 trackNumber) const;
    // The data of one edit unit; empty when the file doesn't hold it.
    std::vector<Platform::Byte> readFrame(UInt32 trackNumber, Int64 position);
    // A reader of the element of `trackNumber`, of the kind the wrapping asks for.
    std::unique_ptr<BaseElementEssenceReader> elementReader(UInt32 trackNumber);

    Seeker& seeker();
    Metadata::Structural::Preface& preface() const;
    Metadata::Structural::SourcePackage& sourcePackage() const;
    Metadata::Structural::FileDescriptor& descriptor() const;
    // The descriptor of one track: the file descriptor itself, or the one of a multiple
    // descriptor linked to the track; null when none is.
    Metadata::Structural::FileDescriptor* trackDescriptor(UInt32 trackNumber) const;
    const Types::UniversalLabel& essenceContainer() const;
    UInt32 bodySID() const;
    UInt32 indexSID() const;
    bool isOPAtom() const;
    bool isClipWrapped() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::MXFIO
