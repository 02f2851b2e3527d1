#include "ClipEssence.h"

#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"
#include "MXF/SDK/Platform/Platform.h"

namespace Halvorn::Inspect
{

using namespace MXF::SDK;

ClipEssence::ClipEssence(std::unique_ptr<DataIO::File::FileDataSource> file,
                         Platform::UInt64 maxSkip)
{
    auto dictionary = std::make_shared<MetaMetadata::Dictionary>();
    MetaMetadata::BinaryLoader::load(Platform::fromUtf8(HALVORN_DICTIONARY_FILE), *dictionary);
    Metadata::Structural::registerStructuralSets();
    reader = std::make_unique<MXFIO::Reader2>(
        std::shared_ptr<DataIO::RandomAccessDataSource>(std::move(file)), dictionary, 65536);
    reader->setMaxSkip(maxSkip);
    metadata = reader->latestHeaderMetadataPartition().metadata();
    storage = std::make_unique<MXFIO::ContentStorageReader>(*metadata, *reader);
    auto& content = Metadata::Structural::PrefaceHelpers::contentStorage(storage->preface());
    for (Platform::UInt32 i = 0; i < content.packagesCount(); ++i)
        if (auto* package = content.package(i))
            if (Metadata::metadataSetAs<Metadata::Structural::MaterialPackage>(*package))
            {
                essence = std::make_unique<MXFIO::EssenceReader>(*storage, *package);
                return;
            }
}

std::string TrackTags::next(MXFIO::TrackKind kind)
{
    // Appended, not "v" + std::string: GCC 12 at -O3 takes that for overlapping copies.
    std::string tag;
    switch (kind)
    {
    case MXFIO::TrackKind::PICTURE:
        tag = 'v';
        tag += std::to_string(pictures_++);
        break;
    case MXFIO::TrackKind::SOUND:
        tag = 'a';
        tag += std::to_string(sounds_++);
        break;
    default:
        tag = 'd';
        tag += std::to_string(data_++);
        break;
    }
    return tag;
}

} // namespace Halvorn::Inspect
