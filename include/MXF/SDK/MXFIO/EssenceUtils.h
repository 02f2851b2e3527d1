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

// Where the search for the partitions of a stream starts: the header, going forward, or the
// footer, going back (for a file whose chain from the header is broken).
enum class SearchFrom
{
    HEADER,
    FOOTER
};

// The partitions of `bodySID` in file order, by the chain from the header (or back from the
// footer) as far as it holds. InvalidFormat "currentPartition != 0: Could not find header
// partition." / "... Could not find footer partition.".
std::vector<Partition*> bodyPartitions(Reader& reader, UInt32 bodySID,
                                       SearchFrom from = SearchFrom::HEADER);
// The position of the partition after `partition`, or the end of the source when there is none.
UInt64 endOfBody(Reader& reader, Partition& partition);
// The partition of `bodySID` whose body holds `offset`; null when none does.
Partition* partitionForOffset(Reader& reader, UInt32 bodySID, UInt64 offset,
                              SearchFrom from = SearchFrom::HEADER);
// The file position of `offset`. InvalidFormat "Could not find header partition." (or footer),
// or, when no body holds the offset, with the offset in hexadecimal:
// - before the next body of the stream: "Expected body offset of partition 0x<offset> is higher
//   than begin of next partition (0x<position of the partition after the body>)";
// - past the last body, which the file's end closes: "Expected body offset of partition
//   0x<offset> is higher than the total file size (0x<size>)";
// - past the last body, which a partition closes: "Expected body absolute offset of last body
//   partition 0x<offset> is higher than begin of footer/next partition (0x<position>)".
UInt64 absolutePosition(Reader& reader, UInt32 bodySID, UInt64 offset,
                        SearchFrom from = SearchFrom::HEADER);

} // namespace MXF::SDK::MXFIO::EssenceUtils
