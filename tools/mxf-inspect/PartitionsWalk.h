#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Packs/PartitionPack.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace Halvorn::Inspect
{

// A partition pack read whole: where its key is, where the item ends, what it says.
struct FoundPartition
{
    MXF::SDK::Platform::UInt64 offset;
    MXF::SDK::Platform::UInt64 end;
    MXF::SDK::Packs::PartitionPack pack;
};

struct PartitionsWalkResult
{
    // Partition packs read whole.
    MXF::SDK::Platform::UInt64 partitions = 0;
    // The same, in file order.
    std::vector<FoundPartition> packs;
    // What is wrong with the file, on one line; empty when nothing is.
    std::string damage;
    // The source failed (an I/O error): the walk stopped there, and `damage` says why.
    bool failed = false;
};

// Finds every partition pack and random index pack from the source's position to its end by a
// walk over all KLV items, searching on after damaged bytes as the KLV walk does. Writes one line
// a partition pack:
//   OFFSET KIND STATUS COMPLETENESS ThisPartition PreviousPartition FooterPartition
//   HeaderByteCount IndexByteCount IndexSID BodySID KAG OPERATIONAL_PATTERN CONTAINERS
// (KIND header, body or footer; STATUS open or closed, COMPLETENESS complete or incomplete, or
// "generic stream" for both; labels in dotted hex, CONTAINERS joined by commas or "none"), and
// "OFFSET unreadable partition pack: WHY" for a pack that cannot be read. Then each random index
// pack, "OFFSET random index pack: N entries, agree|disagree with the partition packs found", an
// indented line an entry, "  body SID S at O: WHAT IS THERE", and "  not listed: partition pack
// at O" for each pack the RIP leaves out; or "no random index pack". Damage is garbage, items
// cut short, packs that cannot be read, no footer, packs whose offsets disagree with where
// they are, and a RIP that disagrees. Never throws for damaged bytes nor for a failing source.
PartitionsWalkResult walkPartitions(MXF::SDK::DataIO::RandomAccessDataSource& source,
                                    std::ostream& out);
// The same walk, with the same result, but no report.
PartitionsWalkResult findPartitions(MXF::SDK::DataIO::RandomAccessDataSource& source);

// "header", "body" or "footer".
const char* kindName(const MXF::SDK::Packs::PartitionPack& pack);

} // namespace Halvorn::Inspect
