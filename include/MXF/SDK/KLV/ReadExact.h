#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <vector>

namespace MXF::SDK::DataIO
{
class DataSource;
}

// The reads of a run of bytes that every parser of the toolkit uses, so that sources that hand out
// short runs are fine everywhere and a claimed size never allocates more than arrives.
namespace MXF::SDK::KLV
{

// Calls `read` until `size` bytes have arrived or a read gives nothing; returns how many arrived.
Platform::UInt64 readUpTo(DataIO::DataSource& source, void* buffer, Platform::UInt64 size);

// Appends bytes of the source until `bytes` holds `size` of them or the source ends. Read in
// pieces, so that a length claiming more than the source holds allocates no more than arrives.
void readUpTo(DataIO::DataSource& source, std::vector<Platform::Byte>& bytes,
              Platform::UInt64 size);

// readUpTo that throws InvalidLength "Invalid data size in Value: N of M bytes" when fewer than
// `size` bytes arrive; the N bytes that did are in `buffer` and consumed from the source.
void readExact(DataIO::DataSource& source, void* buffer, Platform::UInt64 size);

} // namespace MXF::SDK::KLV
