#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Platform/Types.h"

namespace MXF::SDK::Packs::Internal
{

// The BER form of `length` in exactly `lengthSize` bytes. Throws InvalidLength "Pack length N
// does not fit a BER length of S bytes" rather than write a length that has lost its high bytes,
// and InvalidFormat "Invalid BER size" for a size outside 1 to 9.
void writeLength(DataIO::DataSink& sink, Platform::UInt64 length, Platform::UInt8 lengthSize);

} // namespace MXF::SDK::Packs::Internal
