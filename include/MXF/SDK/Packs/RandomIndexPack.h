#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/Platform/Types.h"

#include <map>
#include <vector>

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

// The random index pack of SMPTE 377M (clause 12), the last item of a file. Key 06 0E 2B 34 02 05
// 01 01 0D 01 02 01 01 11 01 00. Value: pairs of BodySID (4) and the partition pack's byte offset
// (8), then the item's total length (4), key and BER length included, so that a reader finds
// the pack from the file's last 4 bytes. A value type.
class RandomIndexPack
{
public:
    struct Entry
    {
        Platform::UInt32 bodySID;
        Platform::UInt64 byteOffset;
    };

    // All 16 bytes are the RIP key.
    static bool isRandomIndexPack(const KLV::Key& key) noexcept;

    // An empty pack, to be written with a BER length of `lengthSize` bytes.
    explicit RandomIndexPack(Platform::UInt8 lengthSize = 4);
    // Reads the value from where it stands; the trailing total length is read and ignored.
    // Throws InvalidKey "Trying to create a RIP from a KLV with a invalid RIP Key."; NotEnoughData
    // "Not enough data to read Pack" when the value isn't whole pairs and 4 bytes; InvalidLength
    // when the file ends before the value does.
    explicit RandomIndexPack(KLV::KLVItem& item);

    // In file order.
    const std::vector<Entry>& entries() const noexcept { return entries_; }
    // Offsets of the partitions of one body SID, in file order. Throws NotFound "BodySid not found:
    // " and the number.
    const std::vector<Platform::UInt64>& offsets(Platform::UInt32 bodySID) const;
    // Every entry's offset, ascending.
    std::vector<Platform::UInt64> partitionOffsets() const;

    void add(Platform::UInt32 bodySID, Platform::UInt64 byteOffset);

    Platform::UInt8 lengthSize() const noexcept { return lengthSize_; }

    // The key, the BER length, the pairs in order of entry, the item's total length in 32 bits.
    // Throws InvalidLength when the length doesn't fit `lengthSize` bytes or the total 32 bits.
    void serialize(DataIO::DataSink& sink) const;

private:
    Platform::UInt8 lengthSize_;
    std::vector<Entry> entries_;
    std::map<Platform::UInt32, std::vector<Platform::UInt64>> offsetsBySID_;
};

} // namespace MXF::SDK::Packs
