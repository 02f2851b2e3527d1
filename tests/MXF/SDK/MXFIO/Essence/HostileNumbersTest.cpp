// Track numbers, positions and durations that a damaged or hostile file declares: refused with a
// text, never wrapped or undefined.
#include "MXF/SDK/MXFIO/ContentStorageReader.h"
#include "MXF/SDK/MXFIO/Essence/EssenceTestSupport.h"
#include "MXF/SDK/MXFIO/Essence/Md5.h"
#include "MXF/SDK/MXFIO/EssenceReader.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <optional>

using namespace MXF::SDK;
using namespace MXF::SDK::MXFIO;
using namespace Halvorn::Test::Essence;
using Halvorn::Test::MXFIO::Bytes;

namespace
{

struct Opened
{
    std::unique_ptr<Reader2> reader;
    std::unique_ptr<Metadata::PartitionMetadata> metadata;
    std::unique_ptr<ContentStorageReader> storage;
};

std::unique_ptr<Opened> openBytes(const Bytes& bytes)
{
    auto opened = std::make_unique<Opened>();
    opened->reader =
        std::make_unique<Reader2>(Halvorn::Test::MXFIO::memorySource(bytes), dictionary(), 65536);
    opened->metadata = opened->reader->latestHeaderMetadataPartition().metadata();
    opened->storage = std::make_unique<ContentStorageReader>(*opened->metadata, *opened->reader);
    return opened;
}

std::unique_ptr<EssenceReader> materialReader(Opened& opened)
{
    auto& storage = Metadata::Structural::PrefaceHelpers::contentStorage(opened.storage->preface());
    for (UInt32 i = 0; i < storage.packagesCount(); ++i)
        if (auto* package = storage.package(i))
            if (Metadata::metadataSetAs<Metadata::Structural::MaterialPackage>(*package))
                return std::make_unique<EssenceReader>(*opened.storage, *package);
    throw std::runtime_error("no material package");
}

void putBigEndian(Bytes& bytes, std::size_t at, std::uint64_t value, int width)
{
    for (int i = 0; i < width; ++i)
        bytes[at + i] = std::uint8_t(value >> (8 * (width - 1 - i)));
}

// Sets every local item `tag` of `width` bytes that holds `from` (any value when `from` is
// empty) to `to`; returns how many there were.
int patchItems(Bytes& bytes, std::uint16_t tag, int width, std::optional<std::uint64_t> from,
               std::uint64_t to)
{
    Bytes head = {std::uint8_t(tag >> 8), std::uint8_t(tag), 0, std::uint8_t(width)};
    if (from)
    {
        head.resize(4 + width);
        putBigEndian(head, 4, *from, width);
    }
    int changed = 0;
    for (auto at = bytes.begin();
         (at = std::search(at, bytes.end(), head.begin(), head.end())) != bytes.end();
         ++at, ++changed)
        putBigEndian(bytes, std::size_t(at - bytes.begin()) + 4, to, width);
    return changed;
}

} // namespace

TEST(HostileNumbers, TrackNumberWithoutElementsIsNotFound)
{
    Bytes bytes = Halvorn::Test::MXFIO::fileBytes("opatom_pcm.mxf");
    const UInt32 number = [&]
    {
        auto clean = openBytes(bytes);
        return materialReader(*clean)->track(0).trackNumber;
    }();
    // The file package's track names a number that no element of the body bears.
    ASSERT_GT(patchItems(bytes, 0x4804, 4, number, 0x16FFFF01), 0);
    auto opened = openBytes(bytes);
    EXPECT_EQ(exceptionText([&] { materialReader(*opened); }),
              "impl_ -> seeker_ -> trackNumberExists (trackNumberValue): Track Number not found "
              "in this content Storage.");
}

TEST(HostileNumbers, StartPlusDurationPastInt64IsRefused)
{
    Bytes bytes = Halvorn::Test::MXFIO::fileBytes("opatom_mpeg2.mxf");
    // A clip that starts five edit units before the last position there is.
    ASSERT_GT(patchItems(bytes, 0x1201, 8, std::nullopt, INT64_MAX - 5), 0);
    auto opened = openBytes(bytes);
    EXPECT_EQ(exceptionText([&] { materialReader(*opened); }), "Track position out of range.");
}

// An index segment that starts at either end of 64 bits covers nothing the reader asks for; the
// body's own elements give the essence as ffmpeg reads it.
TEST(HostileNumbers, IndexStartAtEitherEndLeavesTheEssenceToTheWalk)
{
    for (const std::string name : {"xdcamhd422_1080i25", "opatom_pcm"})
        for (const std::int64_t start : {INT64_MIN, INT64_MAX})
        {
            SCOPED_TRACE(name + " " + std::to_string(start));
            Bytes bytes = Halvorn::Test::MXFIO::fileBytes(name + ".mxf");
            ASSERT_GT(patchItems(bytes, 0x3F0C, 8, std::nullopt, std::uint64_t(start)), 0);
            auto opened = openBytes(bytes);
            auto essence = materialReader(*opened);
            std::vector<Md5> md5(essence->trackCount());
            std::size_t track = 0;
            DataIO::SlicePtr data;
            while (essence->next(track, data))
                md5.at(track).update(data->begin(), data->size);
            const auto expected = digests(name);
            int pictures = 0, sounds = 0;
            for (std::size_t t = 0; t < md5.size(); ++t)
            {
                const std::string tag = essence->track(t).kind == TrackKind::PICTURE
                                            ? "v" + std::to_string(pictures++)
                                            : "a" + std::to_string(sounds++);
                EXPECT_EQ(md5[t].hex(), expected.at(tag).md5) << tag;
            }
        }
}
