#pragma once

#include "MXF/SDK/DataIO/DataSource.h"

#include <iosfwd>
#include <string>

namespace Halvorn::Inspect
{

struct KlvWalkResult
{
    MXF::SDK::Platform::UInt64 items = 0;
    // What is wrong with the bytes, on one line; empty for a clean run of KLV items.
    std::string damage;
    // The source failed (an I/O error): the walk stopped there, and `damage` says why.
    bool failed = false;
};

// Reads every KLV item from the source's position to its end and writes "OFFSET KEY LENGTH_SIZE
// LENGTH [NAME]" for each, and "OFFSET skipped N bytes" for each run of bytes where no key
// starts. An item whose length runs past the end is listed, and the search goes on from its
// first value byte. Never throws for damaged bytes nor for a failing source.
KlvWalkResult walkKlv(MXF::SDK::DataIO::RandomAccessDataSource& source, std::ostream& out);

} // namespace Halvorn::Inspect
