#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/Collection.h"
#include "MXF/SDK/Types/Integers.h"
#include "MXF/SDK/Types/UID.h"

namespace MXF::SDK::DataIO
{
class DataSink;
}

namespace MXF::SDK::KLV
{
struct KLVItem;
}

namespace MXF::SDK::Packs
{

// The partition pack of SMPTE 377M (clause 7.1). Key: 06 0E 2B 34 02 05 01 01 0D 01 02 01 01,
// then kind, status, 00. Value, offsets from its first byte, all big-endian:
//    0 MajorVersion (2)       2 MinorVersion (2)      4 KAGSize (4)
//    8 ThisPartition (8)     16 PreviousPartition (8) 24 FooterPartition (8)
//   32 HeaderByteCount (8)   40 IndexByteCount (8)    48 IndexSID (4)
//   52 BodyOffset (8)        60 BodySID (4)           64 OperationalPattern (16)
//   80 EssenceContainers: batch of 16-byte labels (count 4, item size 4, items).
// A value type; the fields are the typed values in their wire form, so setting one is
// `pack.thisPartition().setValue(offset)`.
class PartitionPack
{
public:
    enum PartitionKind : Platform::Byte
    {
        HEADER_PARTITION = 0x02,
        BODY_PARTITION = 0x03,
        FOOTER_PARTITION = 0x04
    };

    // The status byte: open and closed as in whether the header metadata is final, complete as in
    // whether the pack's own fields are.
    enum PartitionStatus : Platform::Byte
    {
        OPEN_INCOMPLETE = 0x01,
        CLOSED_INCOMPLETE = 0x02,
        OPEN_COMPLETE = 0x03,
        CLOSED_COMPLETE = 0x04,
        // Body partitions only: a generic stream partition (SMPTE 410M).
        GENERIC_STREAM = 0x11
    };

    // Size of the value before the essence container batch.
    static constexpr Platform::UInt64 FIXED_SIZE = 80;

    // The first 13 bytes of the key match.
    static bool isPartitionPack(const KLV::Key& key) noexcept;
    // Throws InvalidKey "The key is not a PartitionPack key", InvalidPartitionKind "The key
    // defines an invalid partition kind" (byte 13 outside 02 to 04), InvalidPartitionStatus "The
    // key defines an invalid partition status" (byte 14 outside 01 to 04, and not 0x11 in a body
    // key).
    static void validate(const KLV::Key& key);

    // A pack to be written: every number 0, the operational pattern all zeros, no essence
    // container. Throws as `validate`.
    PartitionPack(PartitionKind kind, PartitionStatus status, Platform::UInt8 lengthSize = 4);
    // Reads the value from where it stands; bytes after the batch are left unread. Throws as
    // `validate`; InvalidLength for a value too short for the fixed fields or for its batch.
    // Nothing is allocated by a count or length from the file before the bytes are there.
    explicit PartitionPack(KLV::KLVItem& item);

    const KLV::Key& key() const noexcept { return key_; }
    // Writes `kind` and `status` into bytes 13 and 14 of the key, unchecked, so that a writer
    // can close a partition in place.
    void kind(PartitionKind kind, Platform::Byte status);
    // 02 and 03 read as themselves; any other byte answers FOOTER_PARTITION.
    PartitionKind partitionKind() const noexcept;
    // Status 01 or 03.
    bool isOpen() const noexcept;
    // Status 03 or 04.
    bool isComplete() const noexcept;

    // Bytes of the BER length: as read, or as given for a new pack.
    Platform::UInt8 lengthSize() const noexcept { return lengthSize_; }

    const Types::UInt16& majorVersion() const noexcept { return majorVersion_; }
    Types::UInt16& majorVersion() noexcept { return majorVersion_; }
    const Types::UInt16& minorVersion() const noexcept { return minorVersion_; }
    Types::UInt16& minorVersion() noexcept { return minorVersion_; }
    const Types::UInt32& kagSize() const noexcept { return kagSize_; }
    Types::UInt32& kagSize() noexcept { return kagSize_; }
    const Types::UInt64& thisPartition() const noexcept { return thisPartition_; }
    Types::UInt64& thisPartition() noexcept { return thisPartition_; }
    const Types::UInt64& previousPartition() const noexcept { return previousPartition_; }
    Types::UInt64& previousPartition() noexcept { return previousPartition_; }
    const Types::UInt64& footerPartition() const noexcept { return footerPartition_; }
    Types::UInt64& footerPartition() noexcept { return footerPartition_; }
    const Types::UInt64& headerByteCount() const noexcept { return headerByteCount_; }
    Types::UInt64& headerByteCount() noexcept { return headerByteCount_; }
    const Types::UInt64& indexByteCount() const noexcept { return indexByteCount_; }
    Types::UInt64& indexByteCount() noexcept { return indexByteCount_; }
    const Types::UInt32& indexSID() const noexcept { return indexSID_; }
    Types::UInt32& indexSID() noexcept { return indexSID_; }
    const Types::UInt64& bodyOffset() const noexcept { return bodyOffset_; }
    Types::UInt64& bodyOffset() noexcept { return bodyOffset_; }
    const Types::UInt32& bodySID() const noexcept { return bodySID_; }
    Types::UInt32& bodySID() noexcept { return bodySID_; }
    const Types::UniversalLabel& operationalPattern() const noexcept { return operationalPattern_; }
    Types::UniversalLabel& operationalPattern() noexcept { return operationalPattern_; }
    const Types::Batch& essenceContainers() const noexcept { return essenceContainers_; }
    Types::Batch& essenceContainers() noexcept { return essenceContainers_; }

    // The key, the BER of 80 + the batch's size in `lengthSize` bytes, the fields, the batch.
    // Throws InvalidLength when that length doesn't fit `lengthSize` bytes.
    void serialize(DataIO::DataSink& sink) const;

private:
    KLV::Key key_;
    Platform::UInt8 lengthSize_;
    Types::UInt16 majorVersion_;
    Types::UInt16 minorVersion_;
    Types::UInt32 kagSize_;
    Types::UInt64 thisPartition_;
    Types::UInt64 previousPartition_;
    Types::UInt64 footerPartition_;
    Types::UInt64 headerByteCount_;
    Types::UInt64 indexByteCount_;
    Types::UInt32 indexSID_;
    Types::UInt64 bodyOffset_;
    Types::UInt32 bodySID_;
    Types::UniversalLabel operationalPattern_;
    Types::Batch essenceContainers_;
};

} // namespace MXF::SDK::Packs
