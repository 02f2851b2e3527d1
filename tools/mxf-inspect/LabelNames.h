#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <string>

namespace Halvorn::Inspect
{

// The register name of a SMPTE label (RP 224: operational patterns, data definitions, essence
// containers, picture and sound coding) from the table in LabelNames.cpp, matched without the
// version byte (byte 8) as the register does; empty for a label not in the table.
std::string labelName(const MXF::SDK::Platform::Byte* label);

} // namespace Halvorn::Inspect
