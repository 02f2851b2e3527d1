#include "MXF/SDK/MXFIO/EssenceUtils.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MXFIO/Reader.h"

#include <cstdio>
#include <string>

namespace MXF::SDK::MXFIO::EssenceUtils
{

namespace
{

std::string hex(UInt64 value)
{
    char text[24];
    std::snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(value));
    return text;
}

} // namespace

std::vector<Partition*> bodyPartitions(Reader& reader, UInt32 bodySID)
{
    Partition* currentPartition = reader.headerPartition();
    MXF_SDK_CHECK_AS(currentPartition != 0, "currentPartition != 0",
                     "Could not find header partition.", Exceptions::InvalidFormat);
    std::vector<Partition*> found;
    try
    {
        for (; currentPartition != nullptr;
             currentPartition = reader.nextPartition(*currentPartition))
            if (currentPartition->partitionPack().bodySID().value() == bodySID)
                found.push_back(currentPartition);
    }
    catch (const Exceptions::BaseException&)
    {
        // A damaged tail ends the chain; the partitions before it still hold their essence.
    }
    return found;
}

UInt64 endOfBody(Reader& reader, Partition& partition)
{
    try
    {
        if (Partition* next = reader.nextPartition(partition))
            return next->position();
    }
    catch (const Exceptions::BaseException&)
    {
    }
    DataIO::RandomAccessDataSource& source = reader.source();
    return source.position() + source.remaining();
}

namespace
{

// The partition of the stream holding `offset` and the file position of it, or null.
Partition* find(Reader& reader, UInt32 bodySID, UInt64 offset, UInt64& positionOut, bool strict)
{
    const std::vector<Partition*> partitions = bodyPartitions(reader, bodySID);
    for (std::size_t i = 0; i < partitions.size(); ++i)
    {
        Partition& partition = *partitions[i];
        const UInt64 bodyOffset = partition.partitionPack().bodyOffset().value();
        const UInt64 bodyStart = partition.bodyStart();
        if (offset == bodyOffset)
        {
            positionOut = bodyStart;
            return &partition;
        }
        const UInt64 end = endOfBody(reader, partition);
        if (offset > bodyOffset && end > bodyStart && offset - bodyOffset < end - bodyStart)
        {
            positionOut = bodyStart + (offset - bodyOffset);
            return &partition;
        }
        if (strict && i + 1 == partitions.size())
            MXF_SDK_THROW(Exceptions::InvalidFormat,
                          "Expected body absolute offset of last body partition 0x" + hex(offset) +
                              " is higher than begin of footer/next partition (0x" + hex(end) +
                              ")");
    }
    return nullptr;
}

} // namespace

Partition* partitionForOffset(Reader& reader, UInt32 bodySID, UInt64 offset)
{
    UInt64 ignored = 0;
    return find(reader, bodySID, offset, ignored, false);
}

UInt64 absolutePosition(Reader& reader, UInt32 bodySID, UInt64 offset)
{
    UInt64 position = 0;
    if (find(reader, bodySID, offset, position, true) == nullptr)
        MXF_SDK_THROW(Exceptions::InvalidFormat,
                      "Unable to find partition for the bodySID specified.");
    return position;
}

} // namespace MXF::SDK::MXFIO::EssenceUtils
