// Any bytes as a file for essence access: the metadata Reader2 chooses, the content storage,
// the material package's tracks and the first 100 edit units of each, by the index and by the
// walk. Damage may throw the toolkit's exceptions; nothing may crash, hang or read outside the
// input.
#include "FuzzSupport.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MXFIO/ContentStorageReader.h"
#include "MXF/SDK/MXFIO/EssenceReader.h"
#include "MXF/SDK/MXFIO/Reader.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"
#include "MXF/SDK/Platform/Platform.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace MXF::SDK;

namespace
{

std::shared_ptr<const MetaMetadata::Dictionary> dictionary()
{
    // The structural sets first, so that their typed classes are made.
    static const bool registered = (Metadata::Structural::registerStructuralSets(), true);
    (void)registered;
    return Halvorn::Fuzz::dictionary();
}

void readEssence(const std::uint8_t* data, std::size_t size, bool ignoreIndex)
{
    auto source = std::make_shared<DataIO::Memory::MemoryDataSource>(data, size);
    MXFIO::Reader2 reader(source, dictionary(), 65536);
    const auto metadata = reader.latestHeaderMetadataPartition().metadata();
    MXFIO::ContentStorageReader storage(*metadata, reader);
    storage.seeker().ignoreIndex(ignoreIndex);
    auto& content = Metadata::Structural::PrefaceHelpers::contentStorage(storage.preface());
    for (Platform::UInt32 i = 0; i < content.packagesCount(); ++i)
        if (auto* package = content.package(i))
            if (Metadata::metadataSetAs<Metadata::Structural::MaterialPackage>(*package))
            {
                MXFIO::EssenceReader essence(storage, *package);
                std::size_t track = 0;
                std::vector<Platform::Byte> bytes;
                for (int units = 0; units < 100 * 16 && essence.next(track, bytes); ++units)
                    if (bytes.size() > size)
                        std::abort();
                return;
            }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    for (const bool ignoreIndex : {false, true})
        try
        {
            readEssence(data, size, ignoreIndex);
        }
        catch (const Exceptions::BaseException&)
        {
        }
    return 0;
}
