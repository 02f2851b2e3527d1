#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/MXFIO/Partition.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Packs/RandomIndexPack.h"
#include "MXF/SDK/Platform/Types.h"

#include <memory>
#include <vector>

namespace MXF::SDK::MXFIO
{

using Platform::Int64;
using Platform::UInt32;

// Opens a file of partitions: finds the header, walks the partitions both ways and hands out
// Partition objects, which it owns and keeps for its whole life, one per pack position. It trusts
// the header and the chain of PreviousPartition and ThisPartition values; Reader2 adds recovery
// for a damaged tail. Nothing here reads metadata: Partition::metadata does.
//
// Offsets in packs and in the RIP count from the end of the run-in, the bytes (at most
// `maxRunIn`) before the header partition pack; a position in the source is runInSize + offset.
// One thread at a time.
class Reader
{
public:
    Reader(std::shared_ptr<DataIO::RandomAccessDataSource> source,
           std::shared_ptr<const MetaMetadata::Dictionary> dictionary, UInt64 maxRunIn);
    virtual ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    // The first partition within `maxRunIn` bytes of the start, or null. The bytes before it are
    // the run-in. KeyNotFound when no key starts within `maxRunIn` bytes.
    Partition* headerPartition();
    // The partition the header's FooterPartition names; null when there is no header or the field
    // is 0. InvalidFormat "Footer not found where indicated in primer" when the source is shorter
    // or no footer stands there.
    Partition* footerPartition();
    // The partition after `current`, found by walking its items from the end of its index area
    // (a search of `maxSkip` bytes before each key); null after a footer or at the end of the
    // source. InvalidFormat "next == 0 || next -> partitionPack ().previousPartition () <= current
    // -> partitionPack ().thisPartition (): The Partition Pack has an invalid PreviousPartition
    // value".
    Partition* nextPartition(Partition& current);
    // The partition at `current`'s PreviousPartition; null for a header. InvalidFormat "previous
    // != current && previous != 0: A Partition has an invalid PreviousPartition value", or
    // "previous -> partitionPack ().thisPartition () < current -> partitionPack ().thisPartition
    // (): Partitions have inconsistent ThisPartition values". KeyNotFound when no key stands there.
    Partition* previousPartition(Partition& current);
    // The partition whose pack starts exactly at `offset` (as packs count), or, when another item
    // stands there, null.
    Partition* partitionAt(UInt64 offset);
    // The first partition, from the header on, of that BodySID; null for none.
    Partition* partitionByBodySID(UInt32 bodySID);
    // The RIP at the end of the source, looked for once; null when there is none.
    const Packs::RandomIndexPack* randomIndexPack();
    // The partition whose metadata to use: a closed header with metadata; else the last partition
    // with metadata; else the header. InvalidFormat "header != 0: No header partition found".
    Partition& latestHeaderMetadataPartition();

    UInt64 maxRunIn() const noexcept;
    // 0 until the header has been looked for.
    UInt64 runInSize() const noexcept;
    // The run-in bytes as read, and a source over them (made on first use).
    const std::vector<Platform::Byte>& runInBytes() const noexcept;
    DataIO::RandomAccessDataSource& runIn();
    // The search before each key of a forward walk, and of the partitions' metadata and index;
    // 0 (keys must follow one another) unless set.
    UInt64 maxSkip() const noexcept;
    void setMaxSkip(UInt64 maxSkip) noexcept;

    DataIO::RandomAccessDataSource& source() const noexcept;
    const MetaMetadata::Dictionary& dictionary() const noexcept;

protected:
    // From the source's position: items are read with a search of at most `maxBytes` bytes
    // before each key and passed over until a partition pack, which is returned (from the
    // cache when it was found before). Unless `unlimited`, the bytes searched and passed over
    // are taken from `maxBytes` too. Null when the source ends or `maxBytes` is used up.
    // `skippedOut` counts every byte before the pack; `sawEssence` is set when an essence item
    // was passed. KeyNotFound and what the packs throw pass to the caller.
    Partition* findPartition(Int64 maxBytes, bool unlimited, UInt64& skippedOut, bool& sawEssence);
    // The cached partition at a position, or the one a search of `maxBytes` 0 finds there.
    Partition* partitionAtPosition(UInt64 position, bool unlimited);
    // The RIP's last entry, when it is a footer. InvalidFormat "partition -> partitionPack
    // ().partitionKind () == PartitionPack::FOOTER_PARTITION: Last Partition indicated by RIP is
    // not a Footer Partition" when a partition with that ThisPartition stands there but isn't.
    Partition* footerFromRIP();
    // The backward scan from the end in windows of 0x1810 bytes every 0x1800: the last partition
    // of the source (strict) or the footer, if that is what it is (relaxed). Strict: InvalidFormat
    // "partition != 0: No partition found".
    Partition* scanBackwards(bool relaxed);

    UInt64 sourceSize() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// A Reader that also finds the footer of a file whose tail is damaged: by the header's
// FooterPartition, taken as a hint; by the RIP; by scanning backwards from the end.
class Reader2 : public Reader
{
public:
    using Reader::Reader;
    ~Reader2() override;

    // The footer by the three routes in turn. The strict scan gives the last partition of the
    // file when no footer is found, which then isn't cached as the footer.
    Partition* footerPartition();
    // The same with the relaxed scan: null when no footer is found.
    Partition* footerPartitionIfAny();
    // As Reader's, but the partitions with metadata are looked for backwards from the footer
    // found above.
    Partition& latestHeaderMetadataPartition();

private:
    Partition* findFooter(bool relaxed);

    Partition* footer_ = nullptr;
};

} // namespace MXF::SDK::MXFIO
