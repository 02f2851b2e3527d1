#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <vector>

namespace MXF::SDK::MXFIO
{
class Partition;
class Reader;
} // namespace MXF::SDK::MXFIO

// Offsets in the essence stream of a BodySID, as BodyOffset and index tables count them, turned
// into places in the file.
namespace MXF::SDK::MXFIO::EssenceUtils
{

using Platform::UInt32;
using Platform::UInt64;

// The partitions of `bodySID` in file order, by the chain from the header as far as it holds.
// InvalidFormat "currentPartition != 0: Could not find header partition.".
std::vector<Partition*> bodyPartitions(Reader& reader, UInt32 bodySID);
// The position of the partition after `partition`, or the end of the source when there is none.
UInt64 endOfBody(Reader& reader, Partition& partition);
// The partition of `bodySID` whose body holds `offset`; null when none does.
Partition* partitionForOffset(Reader& reader, UInt32 bodySID, UInt64 offset);
// The file position of `offset`. InvalidFormat "Could not find header partition.", or, when the
// offset lies past every body of the stream, "Expected body absolute offset of last body partition
// 0x<offset> is higher than begin of footer/next partition (0x<position>)".
UInt64 absolutePosition(Reader& reader, UInt32 bodySID, UInt64 offset);

} // namespace MXF::SDK::MXFIO::EssenceUtils
