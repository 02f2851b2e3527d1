#include "MXF/SDK/Packs/RandomIndexPack.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/Templates/SafeCast.h"
#include "MXF/SDK/Types/Integers.h"
#include "PackWriting.h"

#include <algorithm>
#include <string>

namespace MXF::SDK::Packs
{

using Platform::Byte;
using Platform::UInt32;
using Platform::UInt64;

namespace
{

constexpr Byte RIP_KEY[KLV::Key::SIZE] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01, 0x01,
                                          0x0D, 0x01, 0x02, 0x01, 0x01, 0x11, 0x01, 0x00};
constexpr UInt64 ENTRY_SIZE = 12;
constexpr UInt64 TOTAL_LENGTH_SIZE = 4;

} // namespace

bool RandomIndexPack::isRandomIndexPack(const KLV::Key& key) noexcept
{
    return std::equal(std::begin(RIP_KEY), std::end(RIP_KEY), key.data());
}

RandomIndexPack::RandomIndexPack(Platform::UInt8 lengthSize) : lengthSize_(lengthSize) {}

RandomIndexPack::RandomIndexPack(KLV::KLVItem& item) : lengthSize_(item.lengthSize)
{
    if (!isRandomIndexPack(item.key))
        MXF_SDK_THROW(Exceptions::InvalidKey,
                      "Trying to create a RIP from a KLV with a invalid RIP Key.");
    // A rest of 5 to 15 bytes is no whole pair and no bare total length either: it fails as the
    // short rest below does, not halfway through a pair.
    while (item.value.remaining() >= ENTRY_SIZE + TOTAL_LENGTH_SIZE)
    {
        const UInt32 bodySID = Types::UInt32(item.value).value();
        const UInt64 byteOffset = Types::UInt64(item.value).value();
        add(bodySID, byteOffset);
    }
    if (item.value.remaining() != TOTAL_LENGTH_SIZE)
        MXF_SDK_THROW(Exceptions::NotEnoughData, "Not enough data to read Pack");
    // The caller found the pack by this length; it has nothing more to tell.
    static_cast<void>(Types::UInt32(item.value));
}

const std::vector<UInt64>& RandomIndexPack::offsets(UInt32 bodySID) const
{
    const auto found = offsetsBySID_.find(bodySID);
    if (found == offsetsBySID_.end())
        MXF_SDK_THROW(Exceptions::NotFound, "BodySid not found: " + std::to_string(bodySID));
    return found->second;
}

std::vector<UInt64> RandomIndexPack::partitionOffsets() const
{
    std::vector<UInt64> all;
    all.reserve(entries_.size());
    for (const Entry& entry : entries_)
        all.push_back(entry.byteOffset);
    std::sort(all.begin(), all.end());
    return all;
}

void RandomIndexPack::add(UInt32 bodySID, UInt64 byteOffset)
{
    entries_.push_back({bodySID, byteOffset});
    offsetsBySID_[bodySID].push_back(byteOffset);
}

void RandomIndexPack::serialize(DataIO::DataSink& sink) const
{
    const UInt64 length = entries_.size() * ENTRY_SIZE + TOTAL_LENGTH_SIZE;
    const UInt32 total = Templates::SafeCast<UInt32>(KLV::Key::SIZE + lengthSize_ + length);
    sink.write(RIP_KEY, KLV::Key::SIZE);
    Internal::writeLength(sink, length, lengthSize_);
    for (const Entry& entry : entries_)
    {
        Types::UInt32(entry.bodySID).serialize(sink);
        Types::UInt64(entry.byteOffset).serialize(sink);
    }
    Types::UInt32(total).serialize(sink);
}

} // namespace MXF::SDK::Packs
