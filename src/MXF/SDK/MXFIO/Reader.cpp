#include "MXF/SDK/MXFIO/Reader.h"

#include "MXF/SDK/ByteCoders/BigEndian.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXFIOSupport.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace MXF::SDK::MXFIO
{

using Packs::PartitionPack;
using Platform::Byte;

namespace
{

// Damage in the bytes read is one thing, a failing source another: only the first may be passed
// over by the searches that recover.
template <typename Search>
Partition* tolerant(Search&& search)
{
    try
    {
        return search();
    }
    catch (const Exceptions::IOError&)
    {
        throw;
    }
    catch (const Exceptions::BaseException&)
    {
        return nullptr;
    }
}

bool isFooter(const Partition* partition)
{
    return partition != nullptr &&
           partition->partitionPack().partitionKind() == PartitionPack::FOOTER_PARTITION;
}

bool hasMetadata(const Partition& partition)
{
    return partition.partitionPack().headerByteCount().value() != 0;
}

// Whether the header partition is the one to read the metadata from: it has some, closed. Throws
// when there is no header partition at all.
bool metadataInHeader(const Partition* header)
{
    MXF_SDK_CHECK_AS(header != nullptr, "header != 0", "No header partition found",
                     Exceptions::InvalidFormat);
    return hasMetadata(*header) && !header->partitionPack().isOpen();
}

Int64 asBudget(UInt64 bytes)
{
    return bytes > UInt64(INT64_MAX) ? INT64_MAX : Int64(bytes);
}

} // namespace

struct Reader::Impl
{
    Impl(std::shared_ptr<DataIO::RandomAccessDataSource> dataSource,
         std::shared_ptr<const MetaMetadata::Dictionary> metaDictionary, UInt64 maxRunInBytes)
        : source(std::move(dataSource)), klvReader(*source), dictionary(std::move(metaDictionary)),
          maxRunIn(maxRunInBytes)
    {
    }

    std::shared_ptr<DataIO::RandomAccessDataSource> source;
    KLV::KLVReader klvReader;
    std::shared_ptr<const MetaMetadata::Dictionary> dictionary;
    UInt64 maxRunIn;
    UInt64 runInSize = 0;
    std::vector<Byte> runInBytes;
    std::unique_ptr<DataIO::Memory::MemoryDataSource> runIn;
    // By the absolute position of the pack's key.
    std::map<UInt64, std::unique_ptr<Partition>> partitions;
    std::optional<Packs::RandomIndexPack> rip;
    bool ripLookedFor = false;
    UInt64 maxSkip = 0;
    // While the header is looked for, the pack found is the end of the run-in.
    bool findingHeader = false;
};

Reader::Reader(std::shared_ptr<DataIO::RandomAccessDataSource> source,
               std::shared_ptr<const MetaMetadata::Dictionary> dictionary, UInt64 maxRunIn)
{
    MXF_SDK_CHECK(source != nullptr, "No data source", Exceptions::InvalidValue);
    MXF_SDK_CHECK(dictionary != nullptr, "No dictionary", Exceptions::InvalidValue);
    impl_ = std::make_unique<Impl>(std::move(source), std::move(dictionary), maxRunIn);
}

Reader::~Reader() = default;

UInt64 Reader::maxRunIn() const noexcept
{
    return impl_->maxRunIn;
}

UInt64 Reader::runInSize() const noexcept
{
    return impl_->runInSize;
}

const std::vector<Byte>& Reader::runInBytes() const noexcept
{
    return impl_->runInBytes;
}

DataIO::RandomAccessDataSource& Reader::runIn()
{
    if (!impl_->runIn)
        impl_->runIn = std::make_unique<DataIO::Memory::MemoryDataSource>(impl_->runInBytes.data(),
                                                                          impl_->runInBytes.size());
    return *impl_->runIn;
}

UInt64 Reader::maxSkip() const noexcept
{
    return impl_->maxSkip;
}

void Reader::setMaxSkip(UInt64 maxSkip) noexcept
{
    impl_->maxSkip = maxSkip;
}

DataIO::RandomAccessDataSource& Reader::source() const noexcept
{
    return *impl_->source;
}

const MetaMetadata::Dictionary& Reader::dictionary() const noexcept
{
    return *impl_->dictionary;
}

UInt64 Reader::sourceSize() const
{
    return impl_->source->position() + impl_->source->remaining();
}

Partition* Reader::findPartition(Int64 maxBytes, bool unlimited, UInt64& skippedOut,
                                 bool& sawEssence)
{
    DataIO::RandomAccessDataSource& source = *impl_->source;
    skippedOut = 0;
    while (source.remaining() > 0 && maxBytes >= 0)
    {
        UInt64 skipped = 0;
        std::unique_ptr<KLV::KLVItem> item;
        try
        {
            item = impl_->klvReader.readKLV(skipped, UInt64(maxBytes));
        }
        catch (const Exceptions::NotEnoughData&)
        {
            // The source ends within a key or its length: no partition after this.
            skippedOut = saturatingAdd(skippedOut, skipped);
            return nullptr;
        }
        skippedOut = saturatingAdd(skippedOut, skipped);
        if (!unlimited)
            maxBytes -= Int64(std::min<UInt64>(skipped, UInt64(maxBytes)));

        if (isPartitionKey(item->key))
        {
            const UInt64 position = item->keyPosition;
            auto cached = impl_->partitions.find(position);
            if (cached != impl_->partitions.end())
                return cached->second.get();
            PartitionPack pack(*item);
            const UInt64 runInSize = impl_->findingHeader ? position : impl_->runInSize;
            auto partition = std::make_unique<Partition>(
                source, impl_->klvReader, impl_->dictionary, std::move(pack), position,
                item->totalSize(), runInSize, impl_->maxSkip);
            item.reset();
            return impl_->partitions.emplace(position, std::move(partition)).first->second.get();
        }
        if (KLV::isEssenceKey(item->key))
            sawEssence = true;
        const UInt64 size = item->totalSize();
        skippedOut = saturatingAdd(skippedOut, size);
        if (!unlimited)
            maxBytes = size > UInt64(maxBytes) ? -1 : maxBytes - Int64(size);
    }
    return nullptr;
}

Partition* Reader::partitionAtPosition(UInt64 position, bool unlimited)
{
    auto cached = impl_->partitions.find(position);
    if (cached != impl_->partitions.end())
        return cached->second.get();
    if (position >= sourceSize())
        return nullptr;
    impl_->source->seek(position);
    UInt64 skipped = 0;
    bool sawEssence = false;
    return findPartition(0, unlimited, skipped, sawEssence);
}

Partition* Reader::headerPartition()
{
    if (!impl_->partitions.empty())
    {
        auto header = impl_->partitions.find(impl_->runInSize);
        if (header != impl_->partitions.end())
            return header->second.get();
    }
    impl_->source->seek(0);
    UInt64 skipped = 0;
    bool sawEssence = false;
    impl_->findingHeader = true;
    Partition* header = nullptr;
    try
    {
        header = findPartition(asBudget(impl_->maxRunIn), false, skipped, sawEssence);
    }
    catch (...)
    {
        impl_->findingHeader = false;
        throw;
    }
    impl_->findingHeader = false;
    if (header == nullptr)
        return nullptr;
    impl_->runInSize = header->position();
    if (impl_->runInSize != 0 && impl_->runInBytes.empty())
    {
        std::vector<Byte> bytes(impl_->runInSize);
        impl_->source->seek(0);
        bytes.resize(impl_->source->read(bytes.data(), bytes.size()));
        impl_->runInBytes = std::move(bytes);
        impl_->runIn.reset();
    }
    return header;
}

Partition* Reader::footerPartition()
{
    Partition* header = headerPartition();
    if (header == nullptr)
        return nullptr;
    const UInt64 field = header->partitionPack().footerPartition().value();
    if (field == 0)
        return nullptr;
    const UInt64 position = saturatingAdd(field, impl_->runInSize);
    Partition* footer = nullptr;
    auto cached = impl_->partitions.find(position);
    if (cached != impl_->partitions.end())
    {
        footer = cached->second.get();
    }
    else
    {
        const UInt64 size = sourceSize();
        MXF_SDK_CHECK_AS(position < size, "footerPosition < fileSize",
                         "Footer not found where indicated in primer", Exceptions::InvalidFormat);
        impl_->source->seek(position);
        UInt64 skipped = 0;
        bool sawEssence = false;
        footer = findPartition(0, true, skipped, sawEssence);
    }
    MXF_SDK_CHECK_AS(isFooter(footer),
                     "footer != 0 && footer -> partitionPack ().partitionKind () == "
                     "PartitionPack::FOOTER_PARTITION",
                     "Footer not found where indicated in primer", Exceptions::InvalidFormat);
    return footer;
}

Partition* Reader::nextPartition(Partition& current)
{
    const PartitionPack& pack = current.partitionPack();
    if (pack.partitionKind() == PartitionPack::FOOTER_PARTITION)
        return nullptr;
    auto after = impl_->partitions.upper_bound(current.position());
    if (after != impl_->partitions.end() &&
        after->second->partitionPack().previousPartition().value() == pack.thisPartition().value())
        return after->second.get();

    // The walk goes over the items of the body by their lengths, whatever their size.
    impl_->source->seek(current.bodyStart());
    UInt64 skipped = 0;
    bool sawEssence = false;
    Partition* next = findPartition(asBudget(impl_->maxSkip), true, skipped, sawEssence);
    MXF_SDK_CHECK_AS(next == nullptr || next->partitionPack().previousPartition().value() <=
                                            pack.thisPartition().value(),
                     "next == 0 || next -> partitionPack ().previousPartition () <= current -> "
                     "partitionPack ().thisPartition ()",
                     "The Partition Pack has an invalid PreviousPartition value",
                     Exceptions::InvalidFormat);
    return next;
}

Partition* Reader::previousPartition(Partition& current)
{
    const PartitionPack& pack = current.partitionPack();
    if (pack.partitionKind() == PartitionPack::HEADER_PARTITION)
        return nullptr;
    const UInt64 position = saturatingAdd(pack.previousPartition().value(), impl_->runInSize);
    Partition* previous = partitionAtPosition(position, false);
    MXF_SDK_CHECK_AS(
        previous != &current && previous != nullptr, "previous != current && previous != 0",
        "A Partition has an invalid PreviousPartition value", Exceptions::InvalidFormat);
    MXF_SDK_CHECK_AS(
        previous->partitionPack().thisPartition().value() < pack.thisPartition().value(),
        "previous -> partitionPack ().thisPartition () < current -> partitionPack "
        "().thisPartition ()",
        "Partitions have inconsistent ThisPartition values", Exceptions::InvalidFormat);
    return previous;
}

Partition* Reader::partitionAt(UInt64 offset)
{
    headerPartition();
    return partitionAtPosition(saturatingAdd(offset, impl_->runInSize), false);
}

Partition* Reader::partitionByBodySID(UInt32 bodySID)
{
    for (Partition* partition = headerPartition(); partition != nullptr;
         partition = nextPartition(*partition))
    {
        if (partition->partitionPack().bodySID().value() == bodySID)
            return partition;
    }
    return nullptr;
}

const Packs::RandomIndexPack* Reader::randomIndexPack()
{
    if (!impl_->ripLookedFor)
    {
        impl_->ripLookedFor = true;
        DataIO::RandomAccessDataSource& source = *impl_->source;
        const UInt64 size = sourceSize();
        try
        {
            if (size >= 4)
            {
                source.seek(size - 4);
                Byte bytes[4] = {};
                const UInt64 got = source.read(bytes, sizeof bytes);
                const UInt64 length = ByteCoders::readBigEndian<Platform::UInt32>(bytes);
                // Twenty is the least a RIP holds besides its entries.
                if (got == 4 && length < size && length > 20)
                {
                    source.seek(size - length);
                    UInt64 skipped = 0;
                    std::unique_ptr<KLV::KLVItem> item = impl_->klvReader.readKLV(skipped, 0);
                    impl_->rip.emplace(*item);
                }
            }
        }
        catch (const Exceptions::IOError&)
        {
            throw;
        }
        catch (const Exceptions::BaseException&)
        {
            impl_->rip.reset(); // not a RIP: the file simply has none
        }
    }
    return impl_->rip ? &*impl_->rip : nullptr;
}

Partition& Reader::latestHeaderMetadataPartition()
{
    Partition* header = headerPartition();
    if (metadataInHeader(header))
        return *header;
    Partition* latest = header;
    for (Partition* partition = nextPartition(*header); partition != nullptr;
         partition = nextPartition(*partition))
    {
        if (hasMetadata(*partition))
            latest = partition;
    }
    return *latest;
}

Partition* Reader::footerFromRIP()
{
    const Packs::RandomIndexPack* rip = randomIndexPack();
    if (rip == nullptr || rip->entries().empty())
        return nullptr;
    const UInt64 offset = rip->entries().back().byteOffset;
    Partition* partition = tolerant(
        [&] { return partitionAtPosition(saturatingAdd(offset, impl_->runInSize), false); });
    if (partition != nullptr && partition->partitionPack().thisPartition().value() == offset)
        MXF_SDK_CHECK_AS(
            partition->partitionPack().partitionKind() == PartitionPack::FOOTER_PARTITION,
            "partition -> partitionPack ().partitionKind () == PartitionPack::FOOTER_PARTITION",
            "Last Partition indicated by RIP is not a Footer Partition", Exceptions::InvalidFormat);
    return isFooter(partition) ? partition : nullptr;
}

Partition* Reader::scanBackwards(bool relaxed)
{
    // Each window overlaps the one after it by the size of a key.
    constexpr UInt64 STEP = 0x1800;
    constexpr UInt64 WINDOW = 0x1810;
    DataIO::RandomAccessDataSource& source = *impl_->source;
    const UInt64 size = sourceSize();
    const auto search = [&](UInt64 from)
    {
        return tolerant(
            [&]
            {
                source.seek(from);
                UInt64 skipped = 0;
                bool sawEssence = false;
                return findPartition(Int64(std::min(WINDOW, size - from)), true, skipped,
                                     sawEssence);
            });
    };

    UInt64 start = size > STEP ? size - STEP : 0;
    Partition* partition = search(start);
    while (partition == nullptr)
    {
        if (start == 0)
        {
            if (relaxed)
                return nullptr;
            MXF_SDK_CHECK_AS(partition != nullptr, "partition != 0", "No partition found",
                             Exceptions::InvalidFormat);
        }
        start = start > STEP ? start - STEP : 0;
        partition = search(start);
    }
    // Forward again from there, so that the last partition of the file is the answer.
    while (!isFooter(partition))
    {
        const UInt64 after = saturatingAdd(partition->position(), partition->packSize());
        if (after >= size)
            break;
        Partition* next = search(after);
        if (next == nullptr || next->position() <= partition->position())
            break;
        partition = next;
    }
    if (relaxed && !isFooter(partition))
        return nullptr;
    return partition;
}

Reader2::~Reader2() = default;

Partition* Reader2::findFooter(bool relaxed)
{
    if (footer_ != nullptr)
        return footer_;
    headerPartition();
    // The header's field is a hint: a writer that could not seek back leaves it 0 or stale.
    Partition* footer = tolerant([&] { return Reader::footerPartition(); });
    if (!isFooter(footer))
        footer = footerFromRIP();
    if (!isFooter(footer))
        footer = scanBackwards(relaxed);
    if (isFooter(footer))
        footer_ = footer;
    return footer;
}

Partition* Reader2::footerPartition()
{
    return findFooter(false);
}

Partition* Reader2::footerPartitionIfAny()
{
    return findFooter(true);
}

Partition& Reader2::latestHeaderMetadataPartition()
{
    Partition* header = headerPartition();
    if (metadataInHeader(header))
        return *header;
    for (Partition* partition = footerPartition(); partition != nullptr;
         partition = previousPartition(*partition))
    {
        if (hasMetadata(*partition))
            return *partition;
    }
    return *header;
}

} // namespace MXF::SDK::MXFIO
