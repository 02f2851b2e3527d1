#pragma once

#include "MXF/SDK/Platform/Types.h"

namespace MXF::SDK::DataIO
{
class DataSource;
}

namespace MXF::SDK::KLV
{

// Calls `read` until `size` bytes have arrived, so sources that hand out short runs are fine. A
// read that gives nothing before that throws InvalidLength "Invalid data size in Value: N of M
// bytes"; the N bytes that did arrive are in `buffer` and consumed from the source.
void readExact(DataIO::DataSource& source, void* buffer, Platform::UInt64 size);

} // namespace MXF::SDK::KLV
