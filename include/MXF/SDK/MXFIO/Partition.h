#pragma once

#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Metadata/Listeners.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "MXF/SDK/Packs/PartitionPack.h"
#include "MXF/SDK/Platform/Types.h"

#include <memory>
#include <optional>

namespace MXF::SDK::DataIO
{
class RandomAccessDataSource;
}

namespace MXF::SDK::MXFIO
{

using Platform::UInt64;

// One partition of a file: its pack, and the metadata, index segments and essence items it holds.
class AbstractPartition
{
public:
    virtual ~AbstractPartition() = default;

    virtual const Packs::PartitionPack& partitionPack() const noexcept = 0;
    // The header metadata of this partition, read anew into a PartitionMetadata.
    virtual std::unique_ptr<Metadata::PartitionMetadata> metadata() = 0;
    // The next index table segment of the index area, or null at its end.
    virtual std::unique_ptr<KLV::KLVItem> nextIndexSegment() = 0;
    // The next item of the body, fill items included, or null at the end of the partition.
    virtual std::unique_ptr<KLV::KLVItem> nextEssence(UInt64& skippedOut, UInt64 maxSkip) = 0;
    // Goes to an essence byte offset (as the pack's BodyOffset counts) of this partition.
    virtual void seekBody(UInt64 offset) = 0;
};

// A partition as a Reader found it. The source, the KLVReader and the dictionary are shared with
// the Reader, which owns its partitions; the source has one position for all of them, so each
// operation seeks where it needs to be.
//
// The areas, as SMPTE 377M lays them out: after the pack come fill items up to the KAG, which no
// byte count covers; the header metadata (HeaderByteCount, from the primer on); the index area
// (IndexByteCount); the body, whose first byte is at the pack's BodyOffset of the essence.
class Partition final : public AbstractPartition
{
public:
    enum State
    {
        START = 0,
        INDEX = 1,
        BODY = 2,
        END = 3
    };

    // `position` is where the pack's key stands in the source, `packSize` the pack's whole item,
    // `runInSize` the bytes before the header partition, which every offset in the packs leaves
    // out. `maxSkip` bounds the key search of the metadata and of the index area.
    Partition(DataIO::RandomAccessDataSource& source, KLV::KLVReader klvReader,
              std::shared_ptr<const MetaMetadata::Dictionary> dictionary, Packs::PartitionPack pack,
              UInt64 position, UInt64 packSize, UInt64 runInSize, UInt64 maxSkip);
    ~Partition() override;
    Partition(const Partition&) = delete;
    Partition& operator=(const Partition&) = delete;

    const Packs::PartitionPack& partitionPack() const noexcept override { return pack_; }

    // Skips fill after the pack, then requires the primer: InvalidFormat "PrimerPack::isPrimerPack
    // (item -> key): This partition (0x<offset>) does not have a primer pack at the beginning of
    // the metadata.". Items up to the primer's position + HeaderByteCount whose key begins 06 0E
    // 2B 34 02 become sets; the others are dropped. Then the reference graph is built. The
    // listener, when set, is attached during the read. What KLVReader and the sets throw passes.
    // The Reader's dictionary must outlive the metadata.
    std::unique_ptr<Metadata::PartitionMetadata> metadata() override;
    // Null when IndexSID or IndexByteCount is 0, at the end of the area, or at an item that is
    // neither an index segment (the standard key or `indexSegmentKey`) nor fill; state INDEX while
    // in the area, BODY after such an item.
    std::unique_ptr<KLV::KLVItem> nextIndexSegment() override;
    // Null when BodySID is 0, at the end of the source (state END) or at a pack key, which ends
    // the body (state END; the key is left for the reader). State BODY otherwise.
    std::unique_ptr<KLV::KLVItem> nextEssence(UInt64& skippedOut, UInt64 maxSkip) override;
    // InvalidPosition "offset >= partitionPack ().bodyOffset (): Trying to seek to 0x<offset> but
    // partition (0x<position>) body starts at <bodyOffset>", numbers in hexadecimal.
    void seekBody(UInt64 offset) override;

    // Absolute place of the pack's key in the source.
    UInt64 position() const noexcept { return position_; }
    // The same as the packs count it: without the run-in.
    UInt64 offset() const noexcept { return position_ - runInSize_; }
    UInt64 packSize() const noexcept { return packSize_; }
    UInt64 runInSize() const noexcept { return runInSize_; }
    UInt64 maxSkip() const noexcept { return maxSkip_; }
    void setMaxSkip(UInt64 maxSkip) noexcept { maxSkip_ = maxSkip; }
    State state() const noexcept { return state_; }

    // Borrowed; null for none.
    void setListener(Metadata::PartitionMetadataListener* listener) noexcept
    {
        listener_ = listener;
    }
    // A second key taken as an index table segment beside the standard one.
    void setIndexSegmentKey(const KLV::Key& key) { indexSegmentKey_ = key; }

    // Absolute starts of the areas (each saturating at the top of the 64-bit range). The header
    // start is the first item after the pack's fill, found once by a search of `maxSkip`; where
    // that search fails, the end of the last whole fill item.
    UInt64 headerStart();
    UInt64 indexStart();
    UInt64 bodyStart();

private:
    UInt64 indexEnd();
    void moveTo(UInt64 position);

    DataIO::RandomAccessDataSource& source_;
    KLV::KLVReader klvReader_;
    std::shared_ptr<const MetaMetadata::Dictionary> dictionary_;
    Packs::PartitionPack pack_;
    UInt64 position_;
    UInt64 packSize_;
    UInt64 runInSize_;
    UInt64 maxSkip_;
    State state_ = START;
    Metadata::PartitionMetadataListener* listener_ = nullptr;
    std::optional<KLV::Key> indexSegmentKey_;
    std::optional<UInt64> headerStart_;
    // Where the next index segment and the next essence item are read.
    UInt64 indexCursor_ = 0;
    UInt64 bodyCursor_ = 0;
};

} // namespace MXF::SDK::MXFIO
