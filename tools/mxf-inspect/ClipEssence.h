#pragma once

#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/MXFIO/ContentStorageReader.h"
#include "MXF/SDK/MXFIO/EssenceReader.h"
#include "MXF/SDK/MXFIO/Reader.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"

#include <memory>
#include <string>

namespace Halvorn::Inspect
{

// A file's material package opened for reading its essence: the compiled dictionary of the
// build, the latest header metadata, the content storage and an EssenceReader on its tracks.
// Throws what the toolkit throws when the file has no usable metadata; null `essence` when it has
// no material package. `maxSkip` bytes may stand before each partition pack's key.
struct ClipEssence
{
    ClipEssence(std::unique_ptr<MXF::SDK::DataIO::File::FileDataSource> file,
                MXF::SDK::Platform::UInt64 maxSkip);

    std::unique_ptr<MXF::SDK::MXFIO::Reader2> reader;
    std::unique_ptr<MXF::SDK::Metadata::PartitionMetadata> metadata;
    std::unique_ptr<MXF::SDK::MXFIO::ContentStorageReader> storage;
    std::unique_ptr<MXF::SDK::MXFIO::EssenceReader> essence;
};

// The name of each track of an EssenceReader: v0 for the first picture track, a0, a1... for the
// sound tracks, in the package's order (ffmpeg's order of streams), d0, d1... for data tracks.
class TrackTags
{
public:
    std::string next(MXF::SDK::MXFIO::TrackKind kind);

private:
    int pictures_ = 0;
    int sounds_ = 0;
    int data_ = 0;
};

} // namespace Halvorn::Inspect
