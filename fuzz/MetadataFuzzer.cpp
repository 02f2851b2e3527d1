// The header metadata of a partition from any bytes: a partition pack, then what its
// HeaderByteCount covers, read by PartitionMetadata against the dictionary of data/. A header that
// reads must write; what it writes must read back and write again to the very same bytes.
#include "FuzzSupport.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "MXF/SDK/Packs/PartitionPack.h"
#include "MXF/SDK/Platform/Platform.h"
#include "MXF/SDK/Types/Integers.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <vector>

using namespace MXF::SDK;
using Platform::UInt64;

using Halvorn::Fuzz::require;

namespace
{

std::optional<std::vector<Platform::Byte>> written(Metadata::PartitionMetadata& metadata)
{
    try
    {
        DataIO::Memory::MemoryDataSink sink;
        metadata.write(sink);
        require(metadata.size() == sink.data().size());
        return sink.release();
    }
    catch (const Exceptions::BaseException&)
    {
        return std::nullopt; // a value too long for its length field, a tag that can't be had
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    DataIO::Memory::MemoryDataSource source(data, size);
    Metadata::PartitionMetadata metadata(*Halvorn::Fuzz::dictionary());
    try
    {
        UInt64 headerByteCount = 0;
        {
            KLV::KLVReader reader(source);
            UInt64 skipped = 0;
            auto item = reader.readKLV(skipped, 0);
            const Packs::PartitionPack pack(*item);
            headerByteCount = pack.headerByteCount().value();
        }
        metadata.read(source, headerByteCount);
    }
    catch (const Exceptions::BaseException&)
    {
        return 0;
    }
    // Whatever the file had in it is at hand.
    for (Metadata::MetadataSet* set : metadata.sets())
    {
        require(set->instanceUID() != nullptr);
        require(metadata.findSet(*set->instanceUID()) == set);
    }
    try
    {
        metadata.contentStorage();
    }
    catch (const Exceptions::BaseException&)
    {
    }

    const auto first = written(metadata);
    if (!first)
        return 0;
    Metadata::PartitionMetadata again(*Halvorn::Fuzz::dictionary());
    DataIO::Memory::MemoryDataSource back(first->data(), first->size());
    again.read(back, first->size());
    require(again.setCount() == metadata.setCount());
    const auto second = written(again);
    require(second && *second == *first);
    return 0;
}
