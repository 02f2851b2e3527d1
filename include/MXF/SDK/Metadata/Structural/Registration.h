#pragma once

namespace MXF::SDK::Metadata::Structural
{

// Registers the creator of every structural set class with MetadataSetFactory, so that sets read
// or created afterwards are of their typed class. Call it once at start-up, before sets are made
// on several threads; calling it again does no harm. It is explicit because the toolkit is a
// static library, where a registration by static initialiser could be dropped by the linker.
void registerStructuralSets();

} // namespace MXF::SDK::Metadata::Structural
