#include "MXF/SDK/MXFIO/Partition.h"

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/Packs/PrimerPack.h"
#include "MXFIOSupport.h"

#include <utility>

namespace MXF::SDK::MXFIO
{

Partition::Partition(DataIO::RandomAccessDataSource& source, KLV::KLVReader klvReader,
                     std::shared_ptr<const MetaMetadata::Dictionary> dictionary,
                     Packs::PartitionPack pack, UInt64 position, UInt64 packSize, UInt64 runInSize,
                     UInt64 maxSkip)
    : source_(source), klvReader_(std::move(klvReader)), dictionary_(std::move(dictionary)),
      pack_(std::move(pack)), position_(position), packSize_(packSize), runInSize_(runInSize),
      maxSkip_(maxSkip)
{
}

Partition::~Partition() = default;

void Partition::moveTo(UInt64 position)
{
    if (source_.position() != position)
        source_.seek(position);
}

UInt64 Partition::headerStart()
{
    if (headerStart_)
        return *headerStart_;
    UInt64 start = saturatingAdd(position_, packSize_);
    moveTo(start);
    try
    {
        for (;;)
        {
            UInt64 skipped = 0;
            std::unique_ptr<KLV::KLVItem> item = klvReader_.readKLV(skipped, maxSkip_);
            start = item->keyPosition;
            if (!KLV::isFillItem(item->key))
                break;
            start = saturatingAdd(start, item->totalSize());
        }
    }
    catch (const Exceptions::IOError&)
    {
        throw;
    }
    catch (const Exceptions::BaseException&)
    {
        // Damage right after the pack: the areas are taken to start there.
    }
    headerStart_ = start;
    return start;
}

UInt64 Partition::indexStart()
{
    return saturatingAdd(headerStart(), pack_.headerByteCount().value());
}

UInt64 Partition::indexEnd()
{
    return saturatingAdd(indexStart(), pack_.indexByteCount().value());
}

UInt64 Partition::bodyStart()
{
    return indexEnd();
}

std::unique_ptr<Metadata::PartitionMetadata> Partition::metadata()
{
    moveTo(headerStart());
    UInt64 skipped = 0;
    std::unique_ptr<KLV::KLVItem> item = klvReader_.readKLV(skipped, maxSkip_);
    while (KLV::isFillItem(item->key))
    {
        item.reset();
        item = klvReader_.readKLV(skipped, maxSkip_);
    }
    MXF_SDK_CHECK_AS(Packs::PrimerPack::isPrimerPack(item->key),
                     "PrimerPack::isPrimerPack (item -> key)",
                     "This partition (0x" + hex(offset()) +
                         ") does not have a primer pack at the beginning of the metadata.",
                     Exceptions::InvalidFormat);
    const UInt64 end = saturatingAdd(item->keyPosition, pack_.headerByteCount().value());
    auto metadata = std::make_unique<Metadata::PartitionMetadata>(
        *dictionary_, std::make_unique<Packs::PrimerPack>(*item));
    item.reset();
    if (listener_ != nullptr)
        metadata->addListener(*listener_);
    while (source_.position() < end)
    {
        item = klvReader_.readKLV(skipped, maxSkip_);
        if (isGroupKey(item->key))
            metadata->readSet(*item);
        item.reset();
    }
    metadata->buildReferenceGraph();
    if (listener_ != nullptr)
        metadata->removeListener(*listener_);
    return metadata;
}

std::unique_ptr<KLV::KLVItem> Partition::nextIndexSegment()
{
    if (pack_.indexSID().value() == 0 || pack_.indexByteCount().value() == 0)
        return nullptr;
    const UInt64 end = indexEnd();
    if (state_ != INDEX)
        indexCursor_ = indexStart();
    state_ = INDEX;
    for (;;)
    {
        if (indexCursor_ >= end)
            return nullptr;
        moveTo(indexCursor_);
        if (source_.remaining() == 0)
            return nullptr;
        UInt64 skipped = 0;
        const KLV::Key key = klvReader_.readKey(skipped, maxSkip_);
        const bool segment = KLV::isIndexTableSegmentKey(key) ||
                             (indexSegmentKey_.has_value() && key == *indexSegmentKey_);
        if (!segment && !KLV::isFillItem(key))
        {
            state_ = BODY;
            bodyCursor_ = bodyStart();
            return nullptr;
        }
        std::unique_ptr<KLV::KLVItem> item = klvReader_.readKLV(skipped, 0);
        indexCursor_ = saturatingAdd(item->keyPosition, item->totalSize());
        if (segment)
            return item;
    }
}

std::unique_ptr<KLV::KLVItem> Partition::nextEssence(UInt64& skippedOut, UInt64 maxSkip)
{
    skippedOut = 0;
    if (pack_.bodySID().value() == 0)
        return nullptr;
    if (state_ < BODY)
        bodyCursor_ = bodyStart();
    state_ = BODY;
    moveTo(bodyCursor_);
    if (source_.remaining() == 0)
    {
        state_ = END;
        return nullptr;
    }
    const KLV::Key key = klvReader_.readKey(skippedOut, maxSkip);
    if (Packs::PartitionPack::isPartitionPack(key))
    {
        state_ = END;
        bodyCursor_ = source_.position() - KLV::Key::SIZE;
        return nullptr;
    }
    UInt64 again = 0;
    std::unique_ptr<KLV::KLVItem> item = klvReader_.readKLV(again, 0);
    bodyCursor_ = saturatingAdd(item->keyPosition, item->totalSize());
    return item;
}

void Partition::seekBody(UInt64 offset)
{
    const UInt64 bodyOffset = pack_.bodyOffset().value();
    MXF_SDK_CHECK_AS(offset >= bodyOffset, "offset >= partitionPack ().bodyOffset ()",
                     "Trying to seek to 0x" + hex(offset) + " but partition (0x" + hex(position_) +
                         ") body starts at " + hex(bodyOffset),
                     Exceptions::InvalidPosition);
    bodyCursor_ = saturatingAdd(bodyStart(), offset - bodyOffset);
    state_ = BODY;
    moveTo(bodyCursor_);
}

} // namespace MXF::SDK::MXFIO
