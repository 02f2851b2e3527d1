#include "MXF/SDK/Packs/PartitionPack.h"

#include "MXF/SDK/ByteCoders/BigEndian.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/KLV/ReadExact.h"
#include "MXF/SDK/Types/TypeIdentifiers.h"
#include "PackWriting.h"

#include <algorithm>
#include <vector>

namespace MXF::SDK::Packs
{

using Platform::Byte;
using Platform::UInt64;

namespace
{

constexpr Byte PREFIX[13] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01,
                             0x01, 0x0D, 0x01, 0x02, 0x01, 0x01};
constexpr Byte ZERO_LABEL[16] = {};

KLV::Key newKey(Byte kind, Byte status)
{
    Byte bytes[KLV::Key::SIZE] = {};
    std::copy(std::begin(PREFIX), std::end(PREFIX), bytes);
    bytes[13] = kind;
    bytes[14] = status;
    return KLV::Key(bytes);
}

const KLV::Key& validated(const KLV::Key& key)
{
    PartitionPack::validate(key);
    return key;
}

// A collection reserves room by its count, and a count or a length in a damaged file may claim
// far more than the file holds. So the batch is built from a copy of its own bytes, read in
// pieces as they really arrive, and only when the value can hold what the header claims;
// otherwise the collection sees the header alone and refuses it with its own text.
Types::Batch readEssenceContainers(KLV::Value& value)
{
    std::vector<Byte> bytes;
    KLV::readUpTo(value, bytes, 8);
    if (bytes.size() == 8)
    {
        const UInt64 count = ByteCoders::readBigEndian<Platform::UInt32>(bytes.data());
        const UInt64 size = ByteCoders::readBigEndian<Platform::UInt32>(bytes.data() + 4);
        if (count * size <= value.remaining())
            KLV::readUpTo(value, bytes, 8 + count * size);
    }
    DataIO::Memory::MemoryDataSource batch(bytes.data(), bytes.size());
    return Types::Batch(batch, Types::TypeIdentifiers::TYPE_UL);
}

} // namespace

bool PartitionPack::isPartitionPack(const KLV::Key& key) noexcept
{
    return std::equal(std::begin(PREFIX), std::end(PREFIX), key.data());
}

void PartitionPack::validate(const KLV::Key& key)
{
    if (!isPartitionPack(key))
        MXF_SDK_THROW(Exceptions::InvalidKey, "The key is not a PartitionPack key");
    const Byte kind = key[13];
    if (kind < HEADER_PARTITION || kind > FOOTER_PARTITION)
        MXF_SDK_THROW(Exceptions::InvalidPartitionKind,
                      "The key defines an invalid partition kind");
    const Byte status = key[14];
    const bool genericStream = status == GENERIC_STREAM && kind == BODY_PARTITION;
    if ((status < OPEN_INCOMPLETE || status > CLOSED_COMPLETE) && !genericStream)
        MXF_SDK_THROW(Exceptions::InvalidPartitionStatus,
                      "The key defines an invalid partition status");
}

PartitionPack::PartitionPack(PartitionKind kind, PartitionStatus status, Platform::UInt8 lengthSize)
    : key_(validated(newKey(kind, status))), lengthSize_(lengthSize),
      operationalPattern_(ZERO_LABEL), essenceContainers_(Types::UniversalLabel::SIZE)
{
}

PartitionPack::PartitionPack(KLV::KLVItem& item)
    : key_(validated(item.key)), lengthSize_(item.lengthSize), majorVersion_(item.value),
      minorVersion_(item.value), kagSize_(item.value), thisPartition_(item.value),
      previousPartition_(item.value), footerPartition_(item.value), headerByteCount_(item.value),
      indexByteCount_(item.value), indexSID_(item.value), bodyOffset_(item.value),
      bodySID_(item.value), operationalPattern_(item.value),
      essenceContainers_(readEssenceContainers(item.value))
{
}

void PartitionPack::kind(PartitionKind kind, Byte status)
{
    Byte bytes[KLV::Key::SIZE];
    std::copy_n(key_.data(), KLV::Key::SIZE, bytes);
    bytes[13] = kind;
    bytes[14] = status;
    key_ = KLV::Key(bytes);
}

PartitionPack::PartitionKind PartitionPack::partitionKind() const noexcept
{
    const Byte kind = key_.data()[13];
    return kind == HEADER_PARTITION || kind == BODY_PARTITION ? PartitionKind(kind)
                                                              : FOOTER_PARTITION;
}

bool PartitionPack::isOpen() const noexcept
{
    const Byte status = key_.data()[14];
    return status == OPEN_INCOMPLETE || status == OPEN_COMPLETE;
}

bool PartitionPack::isComplete() const noexcept
{
    const Byte status = key_.data()[14];
    return status == OPEN_COMPLETE || status == CLOSED_COMPLETE;
}

void PartitionPack::serialize(DataIO::DataSink& sink) const
{
    // Collection::size is 16 bits wide; a long batch must not wrap the pack's length.
    const UInt64 batchSize =
        8 + UInt64(essenceContainers_.itemCount()) * essenceContainers_.itemSize();
    sink.write(key_.data(), KLV::Key::SIZE);
    Internal::writeLength(sink, FIXED_SIZE + batchSize, lengthSize_);
    majorVersion_.serialize(sink);
    minorVersion_.serialize(sink);
    kagSize_.serialize(sink);
    thisPartition_.serialize(sink);
    previousPartition_.serialize(sink);
    footerPartition_.serialize(sink);
    headerByteCount_.serialize(sink);
    indexByteCount_.serialize(sink);
    indexSID_.serialize(sink);
    bodyOffset_.serialize(sink);
    bodySID_.serialize(sink);
    operationalPattern_.serialize(sink);
    essenceContainers_.serialize(sink);
}

} // namespace MXF::SDK::Packs
