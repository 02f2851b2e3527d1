// Every pack of every fixture, read and written back, and held against the layout SMPTE 377M
// fixes. The packs are found by a plain byte search, not by our reader; what MediaInfo traces of
// them is checked through mxf-inspect partitions (tests/tools).
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Packs/PartitionPack.h"
#include "MXF/SDK/Packs/PrimerPack.h"
#include "MXF/SDK/Packs/RandomIndexPack.h"
#include "PacksTestSupport.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <map>

using namespace Halvorn::Test;
using namespace MXF::SDK::Packs;
namespace Memory = MXF::SDK::DataIO::Memory;

namespace
{

const char* const FIXTURES[] = {
    "xdcamhd422_1080i25", "xdcamhd422_720p50", "xdcamhd422_1080i2997df", "imx50_625",
    "opatom_mpeg2",       "opatom_pcm",        "damaged_truncated_30",   "damaged_truncated_90",
    "damaged_no_footer",  "damaged_garbage",   "damaged_bad_length"};

bool isClean(const std::string& name)
{
    return name.rfind("damaged", 0) != 0;
}

// One KLV item located by hand: SMPTE 336M BER, short or long form.
struct Located
{
    UInt64 offset;
    unsigned lengthSize;
    UInt64 length;

    UInt64 valueStart() const { return offset + 16 + lengthSize; }
    UInt64 end() const { return valueStart() + length; }
};

Located locate(const Bytes& file, UInt64 offset)
{
    const std::uint8_t first = file.at(offset + 16);
    if (first < 0x80)
        return {offset, 1, first};
    const unsigned count = first & 0x7f;
    return {offset, count + 1, number(file, offset + 17, count)};
}

// Every 06 0E 2B 34 02 05 01 01 0D 01 02 01 01 in the file, with the item it starts.
std::vector<Located> packsIn(const Bytes& file)
{
    const Bytes prefix = hexBytes("06 0e 2b 34 02 05 01 01 0d 01 02 01 01");
    std::vector<Located> found;
    const std::uint8_t* begin = file.data();
    const std::uint8_t* const end = begin + file.size();
    while (const void* hit = std::memchr(begin, prefix[0], std::size_t(end - begin)))
    {
        const auto* at = static_cast<const std::uint8_t*>(hit);
        begin = at + 1;
        if (std::size_t(end - at) < 17 || std::memcmp(at, prefix.data(), prefix.size()) != 0)
            continue;
        const Located item = locate(file, UInt64(at - file.data()));
        if (item.end() <= file.size())
            found.push_back(item);
    }
    return found;
}

Bytes slice(const Bytes& file, const Located& item)
{
    return Bytes(file.begin() + item.offset, file.begin() + item.end());
}

template <typename Pack>
Pack readAt(const Bytes& file, const Located& item, UInt64 piece = 0)
{
    return packOf<Pack>(slice(file, item), piece);
}

// The 18-byte pairs of a primer's value, ordered by tag.
std::vector<Bytes> sortedPairs(const Bytes& file, const Located& primer)
{
    std::vector<Bytes> pairs;
    for (UInt64 at = primer.valueStart() + 8; at + 18 <= primer.end(); at += 18)
        pairs.emplace_back(file.begin() + at, file.begin() + at + 18);
    std::sort(pairs.begin(), pairs.end(),
              [](const Bytes& a, const Bytes& b) { return number(a, 0, 2) < number(b, 0, 2); });
    return pairs;
}

struct FixturePacks
{
    std::vector<std::pair<Located, PartitionPack>> partitions;
    std::vector<Located> primers;
    std::vector<std::pair<Located, RandomIndexPack>> rips;
};

FixturePacks readAll(const Bytes& file)
{
    FixturePacks packs;
    for (const Located& item : packsIn(file))
    {
        const std::uint8_t kind = file[item.offset + 13];
        if (kind == 0x05)
            packs.primers.push_back(item);
        else if (kind == 0x11)
            packs.rips.emplace_back(item, readAt<RandomIndexPack>(file, item));
        else
            packs.partitions.emplace_back(item, readAt<PartitionPack>(file, item));
    }
    return packs;
}

struct Fixture
{
    Bytes file;
    FixturePacks packs;
};

// Each fixture is read and searched once for all the tests.
const Fixture& fixture(const std::string& name)
{
    static std::map<std::string, Fixture> cache;
    auto found = cache.find(name);
    if (found == cache.end())
    {
        Bytes file = fileBytes(name + ".mxf");
        FixturePacks packs = readAll(file);
        found = cache.emplace(name, Fixture{std::move(file), std::move(packs)}).first;
    }
    return found->second;
}

} // namespace

TEST(PackFixtures, EveryPackIsWrittenBackAsItWasReadWholeOrInPieces)
{
    std::vector<UInt64> pieces = oddPieces();
    pieces.insert(pieces.begin(), 0);
    for (const std::string name : FIXTURES)
        for (const UInt64 piece : pieces)
        {
            SCOPED_TRACE(name + ", pieces of " + std::to_string(piece));
            const auto& [file, packs] = fixture(name);
            ASSERT_FALSE(packs.partitions.empty());
            ASSERT_FALSE(packs.primers.empty());
            for (const auto& [item, pack] : packs.partitions)
                EXPECT_EQ(serialized(readAt<PartitionPack>(file, item, piece)), slice(file, item))
                    << "partition pack at " << item.offset;
            for (const auto& [item, rip] : packs.rips)
                EXPECT_EQ(serialized(readAt<RandomIndexPack>(file, item, piece)), slice(file, item))
                    << "RIP at " << item.offset;
            // The primer writes its pairs in order of tags; ffmpeg writes them in another order.
            for (const Located& item : packs.primers)
            {
                SCOPED_TRACE("primer at " + std::to_string(item.offset));
                const PrimerPack primer = readAt<PrimerPack>(file, item, piece);
                EXPECT_EQ(primer.size(), number(file, item.valueStart(), 4));
                const Bytes written = serialized(primer);
                ASSERT_EQ(written.size(), item.end() - item.offset);
                EXPECT_TRUE(std::equal(written.begin(), written.begin() + 16 + item.lengthSize + 8,
                                       file.begin() + item.offset));
                std::vector<Bytes> pairs;
                for (auto at = written.begin() + 16 + item.lengthSize + 8; at != written.end();
                     at += 18)
                    pairs.emplace_back(at, at + 18);
                EXPECT_EQ(pairs, sortedPairs(file, item));
            }
        }
}

TEST(PackFixtures, CleanFilesKeepTheLayoutOfSMPTE377M)
{
    for (const std::string name : FIXTURES)
    {
        if (!isClean(name))
            continue;
        SCOPED_TRACE(name);
        const auto& [file, packs] = fixture(name);
        const auto& partitions = packs.partitions;
        ASSERT_GE(partitions.size(), 2u);
        EXPECT_EQ(partitions.front().first.offset, 0u);
        EXPECT_EQ(partitions.front().second.partitionKind(), PartitionPack::HEADER_PARTITION);
        const UInt64 footer = partitions.back().first.offset;
        EXPECT_EQ(partitions.back().second.partitionKind(), PartitionPack::FOOTER_PARTITION);
        for (std::size_t i = 0; i < partitions.size(); ++i)
        {
            const auto& [item, pack] = partitions[i];
            SCOPED_TRACE("pack at " + std::to_string(item.offset));
            EXPECT_EQ(pack.thisPartition().value(), item.offset);
            EXPECT_EQ(pack.previousPartition().value(),
                      i == 0 ? 0 : partitions[i - 1].first.offset);
            EXPECT_EQ(pack.footerPartition().value(), footer);
            // Header metadata starts with the primer; index segments follow it.
            if (pack.headerByteCount().value() > 0)
            {
                const auto primer =
                    std::find_if(packs.primers.begin(), packs.primers.end(),
                                 [&](const Located& p) { return p.offset > item.offset; });
                ASSERT_NE(primer, packs.primers.end());
                const UInt64 indexAt = primer->offset + pack.headerByteCount().value();
                if (pack.indexByteCount().value() > 0)
                {
                    EXPECT_EQ(Bytes(file.begin() + indexAt, file.begin() + indexAt + 16),
                              hexBytes("06 0e 2b 34 02 53 01 01 0d 01 02 01 01 10 01 00"));
                }
            }
        }
        // One RIP, the last item, found from the file's last 4 bytes, listing every partition.
        ASSERT_EQ(packs.rips.size(), 1u);
        const auto& [ripItem, rip] = packs.rips.front();
        EXPECT_EQ(ripItem.end(), file.size());
        EXPECT_EQ(number(file, file.size() - 4, 4), ripItem.end() - ripItem.offset);
        ASSERT_EQ(rip.entries().size(), partitions.size());
        for (std::size_t i = 0; i < partitions.size(); ++i)
        {
            EXPECT_EQ(rip.entries()[i].byteOffset, partitions[i].first.offset);
            EXPECT_EQ(rip.entries()[i].bodySID, partitions[i].second.bodySID().value());
        }
    }
}
