#pragma once

#include "MXF/SDK/KLV/Key.h"

#include <string>

namespace Halvorn::Inspect
{

// A short name for what a key introduces, from the key's structure alone: partition packs, primer,
// fill, random index pack, index table segment, essence elements by item type (Avid's own too),
// metadata sets (the meta-dictionary's too), Avid's root object and object directory.
// Empty where the key is none of these.
std::string shortName(const MXF::SDK::KLV::Key& key);

} // namespace Halvorn::Inspect
