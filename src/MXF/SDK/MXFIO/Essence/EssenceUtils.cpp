#include "MXF/SDK/MXFIO/EssenceUtils.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MXFIO/Reader.h"
#include "MXF/SDK/Utils/Hex.h"

#include <string>

namespace MXF::SDK::MXFIO::EssenceUtils
{

namespace
{

using Utils::hex;

// The footer, by every route the reader knows; null when none is found.
Partition* footerOf(Reader& reader)
{
    try
    {
        if (auto* recovering = dynamic_cast<Reader2*>(&reader))
            return recovering->footerPartitionIfAny();
        return reader.footerPartition();
    }
    catch (const Exceptions::BaseException&)
    {
        return nullptr;
    }
}

} // namespace

std::vector<Partition*> bodyPartitions(Reader& reader, UInt32 bodySID, SearchFrom from)
{
    std::vector<Partition*> found;
    if (from == SearchFrom::FOOTER)
    {
        Partition* currentPartition = footerOf(reader);
        MXF_SDK_CHECK_AS(currentPartition != 0, "currentPartition != 0",
                         "Could not find footer partition.", Exceptions::InvalidFormat);
        try
        {
            for (; currentPartition != nullptr;
                 currentPartition = reader.previousPartition(*currentPartition))
                if (currentPartition->partitionPack().bodySID().value() == bodySID)
                    found.insert(found.begin(), currentPartition);
        }
        catch (const Exceptions::BaseException&)
        {
            // A damaged head ends the chain; the partitions after it still hold their essence.
        }
        return found;
    }
    Partition* currentPartition = reader.headerPartition();
    MXF_SDK_CHECK_AS(currentPartition != 0, "currentPartition != 0",
                     "Could not find header partition.", Exceptions::InvalidFormat);
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

namespace
{

// The partition after `partition`, null at the end of the chain or where it breaks.
Partition* after(Reader& reader, Partition& partition)
{
    try
    {
        return reader.nextPartition(partition);
    }
    catch (const Exceptions::BaseException&)
    {
        return nullptr;
    }
}

UInt64 sourceEnd(Reader& reader)
{
    DataIO::RandomAccessDataSource& source = reader.source();
    return source.position() + source.remaining();
}

} // namespace

UInt64 endOfBody(Reader& reader, Partition& partition)
{
    if (Partition* next = after(reader, partition))
        return next->position();
    return sourceEnd(reader);
}

namespace
{

// The partition of the stream holding `offset` and the file position of it, or null.
Partition* find(Reader& reader, UInt32 bodySID, UInt64 offset, UInt64& positionOut, bool strict,
                SearchFrom from)
{
    const std::vector<Partition*> partitions = bodyPartitions(reader, bodySID, from);
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
        Partition* next = after(reader, partition);
        const UInt64 end = next != nullptr ? next->position() : sourceEnd(reader);
        if (offset > bodyOffset && end > bodyStart && offset - bodyOffset < end - bodyStart)
        {
            positionOut = bodyStart + (offset - bodyOffset);
            return &partition;
        }
        if (!strict)
            continue;
        const bool last = i + 1 == partitions.size();
        // Past this body but short of where the next body of the stream takes up.
        if (!last && offset > bodyOffset &&
            offset < partitions[i + 1]->partitionPack().bodyOffset().value())
            MXF_SDK_THROW(Exceptions::InvalidFormat,
                          "Expected body offset of partition 0x" + hex(offset) +
                              " is higher than begin of next partition (0x" + hex(end) + ")");
        if (last && next == nullptr)
            MXF_SDK_THROW(Exceptions::InvalidFormat,
                          "Expected body offset of partition 0x" + hex(offset) +
                              " is higher than the total file size (0x" + hex(end) + ")");
        if (last)
            MXF_SDK_THROW(Exceptions::InvalidFormat,
                          "Expected body absolute offset of last body partition 0x" + hex(offset) +
                              " is higher than begin of footer/next partition (0x" + hex(end) +
                              ")");
    }
    return nullptr;
}

} // namespace

Partition* partitionForOffset(Reader& reader, UInt32 bodySID, UInt64 offset, SearchFrom from)
{
    UInt64 ignored = 0;
    return find(reader, bodySID, offset, ignored, false, from);
}

UInt64 absolutePosition(Reader& reader, UInt32 bodySID, UInt64 offset, SearchFrom from)
{
    UInt64 position = 0;
    if (find(reader, bodySID, offset, position, true, from) == nullptr)
        MXF_SDK_THROW(Exceptions::InvalidFormat,
                      "Unable to find partition for the bodySID specified.");
    return position;
}

} // namespace MXF::SDK::MXFIO::EssenceUtils
