#pragma once

#include "MXF/SDK/DataIO/DataSource.h"

#include <optional>
#include <string>

namespace Halvorn::Inspect
{

struct ObjectDirectoryCheck
{
    // "N entries at OFFSET, each at the set it names", or which disagree.
    std::string text;
    // What disagrees, on one line; empty when nothing does.
    std::string damage;
};

// Avid's object directory (a table of InstanceUIDs and offsets) checked against the local sets
// that a walk over the header metadata from the source's position to `end` finds, offsets counted
// from `partitionStart`. Nothing when the metadata has no directory. The directory's value is a
// 64-bit entry count, an 8-bit entry size of at least 24, then the entries: InstanceUID, 64-bit
// offset, and what else the entry size holds. Never throws for damaged bytes nor for a failing
// source; the walk stops at the first item that can't be read.
std::optional<ObjectDirectoryCheck>
checkObjectDirectory(MXF::SDK::DataIO::RandomAccessDataSource& source,
                     MXF::SDK::Platform::UInt64 partitionStart, MXF::SDK::Platform::UInt64 end);

} // namespace Halvorn::Inspect
