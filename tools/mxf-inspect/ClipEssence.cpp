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
    switch (kind)
    {
    case MXFIO::TrackKind::PICTURE:
        return "v" + std::to_string(pictures_++);
    case MXFIO::TrackKind::SOUND:
        return "a" + std::to_string(sounds_++);
    default:
        return "d" + std::to_string(data_++);
    }
}

} // namespace Halvorn::Inspect
