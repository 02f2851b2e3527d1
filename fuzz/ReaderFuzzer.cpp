// Any bytes as a file for Reader2: the header, the footer (with recovery), the partitions walked
// both ways, the metadata it would choose, and the first items of the first bodies. Damage may
// throw the toolkit's exceptions; nothing may crash, hang or read outside the input.
#include "FuzzSupport.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MXFIO/Reader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Platform/Platform.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace MXF::SDK;
using MXFIO::Partition;
using Platform::UInt64;

using Halvorn::Fuzz::dictionary;
using Halvorn::Fuzz::guarded;
using Halvorn::Fuzz::require;

namespace
{

constexpr int MAX_STEPS = 64;

void checkInside(const Partition* partition, std::size_t size)
{
    if (partition != nullptr)
        require(partition->position() < size);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    auto source = std::make_shared<DataIO::Memory::MemoryDataSource>(data, size);
    MXFIO::Reader2 reader(source, dictionary(), 65536);
    // The first byte, when there is one, lets the walks search a little.
    reader.setMaxSkip(size == 0 ? 0 : data[0] & 0x3F);

    std::vector<Partition*> partitions;
    guarded(
        [&]
        {
            Partition* header = reader.headerPartition();
            checkInside(header, size);
            require(reader.runInSize() <= 65536 &&
                    reader.runInBytes().size() == reader.runInSize());
            for (Partition* p = header; p != nullptr && partitions.size() < MAX_STEPS;
                 p = reader.nextPartition(*p))
            {
                checkInside(p, size);
                require(partitions.empty() || p->position() > partitions.back()->position());
                partitions.push_back(p);
            }
        });
    guarded(
        [&]
        {
            Partition* footer = reader.footerPartitionIfAny();
            checkInside(footer, size);
            int steps = 0;
            for (Partition* p = footer; p != nullptr && steps < MAX_STEPS;
                 p = reader.previousPartition(*p), ++steps)
            {
                checkInside(p, size);
                partitions.push_back(p);
            }
        });
    guarded([&] { checkInside(reader.footerPartition(), size); });
    guarded([&] { reader.randomIndexPack(); });
    guarded([&] { reader.latestHeaderMetadataPartition().metadata(); });

    for (std::size_t i = 0; i < partitions.size() && i < 4; ++i)
    {
        Partition* partition = partitions[i];
        guarded(
            [&]
            {
                for (int n = 0; n < MAX_STEPS && partition->nextIndexSegment(); ++n)
                {
                }
            });
        guarded(
            [&]
            {
                UInt64 skipped = 0;
                for (int n = 0; n < 256; ++n)
                {
                    std::unique_ptr<KLV::KLVItem> item = partition->nextEssence(skipped, 64);
                    if (!item)
                        break;
                    require(item->keyPosition < size);
                }
                require(partition->state() >= Partition::BODY ||
                        partition->partitionPack().bodySID().value() == 0);
            });
    }
    return 0;
}
