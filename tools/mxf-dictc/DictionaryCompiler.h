#pragma once

#include "DictionarySource.h"

#include <cstdint>
#include <vector>

namespace Halvorn::DictC
{

// The binary dictionary of a whole source: version 2.0, every top-level element in source order,
// every set in source order with its attributes flattened (those of its parent first, then its
// own, then those of its extensions), then the table of static local tags in ascending order.
// Checks what the syntax cannot: names, labels, keys and local tags that clash, undefined
// elements and sets, cycles of derivation, sets without InstanceUID. Throws SourceError. The same
// source gives the same bytes.
std::vector<std::uint8_t> compileDictionary(const Source& source);

} // namespace Halvorn::DictC
