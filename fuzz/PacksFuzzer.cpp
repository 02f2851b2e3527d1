// The packs of the file frame from any bytes. The first byte picks what the rest is given to: a
// partition pack, a primer, a random index pack, or the partitions walk of mxf-inspect over the
// whole rest. A pack that reads must write, and what it writes must read back to the same bytes.
#include "FuzzSupport.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/Packs/PartitionPack.h"
#include "MXF/SDK/Packs/PrimerPack.h"
#include "MXF/SDK/Packs/RandomIndexPack.h"
#include "PartitionsWalk.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <ostream>
#include <vector>

using namespace MXF::SDK;
using Platform::UInt64;

using Halvorn::Fuzz::require;

namespace
{

template <typename Pack>
std::optional<Pack> read(const std::uint8_t* data, std::size_t size)
{
    DataIO::Memory::MemoryDataSource source(data, size);
    KLV::KLVReader reader(source);
    UInt64 skipped = 0;
    try
    {
        auto item = reader.readKLV(skipped, 0);
        return Pack(*item);
    }
    catch (const Exceptions::BaseException&)
    {
        return std::nullopt;
    }
}

template <typename Pack>
std::optional<std::vector<std::uint8_t>> written(const Pack& pack)
{
    DataIO::Memory::MemoryDataSink sink;
    try
    {
        pack.serialize(sink);
    }
    catch (const Exceptions::InvalidLength&)
    {
        return std::nullopt; // a length that its BER size cannot hold
    }
    catch (const Exceptions::InvalidFormat&)
    {
        return std::nullopt; // a BER size above 9 bytes, which reads but never writes
    }
    return sink.release();
}

template <typename Pack>
void roundTrip(const std::uint8_t* data, std::size_t size)
{
    const std::optional<Pack> pack = read<Pack>(data, size);
    if (!pack)
        return;
    const auto bytes = written(*pack);
    if (!bytes)
        return;
    const std::optional<Pack> again = read<Pack>(bytes->data(), bytes->size());
    require(again.has_value());
    require(written(*again) == bytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    switch (data[0] % 4)
    {
    case 0:
    {
        roundTrip<Packs::PartitionPack>(data + 1, size - 1);
        break;
    }
    case 1:
    {
        roundTrip<Packs::PrimerPack>(data + 1, size - 1);
        break;
    }
    case 2:
    {
        roundTrip<Packs::RandomIndexPack>(data + 1, size - 1);
        break;
    }
    default:
    {
        DataIO::Memory::MemoryDataSource source(data + 1, size - 1);
        std::ostream discard(nullptr);
        const auto result = Halvorn::Inspect::walkPartitions(source, discard);
        require(!result.failed);
        // The smallest pack: key, 1-byte length, 80 bytes of fields, an empty batch.
        require(result.partitions == 0 || size - 1 >= 16 + 1 + 80 + 8);
        break;
    }
    }
    return 0;
}
