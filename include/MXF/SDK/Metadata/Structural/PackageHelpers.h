#pragma once

#include "MXF/SDK/Utils/TimeCode.h"

namespace MXF::SDK::Types
{
class UMID32;
}

namespace MXF::SDK::Metadata::Structural
{
class GenericPackage;
class Preface;
class TimelineTrack;
class Track;
} // namespace MXF::SDK::Metadata::Structural

// Time code and look-up of packages, as readers and builders need them.
namespace MXF::SDK::Metadata::Structural::PackageHelpers
{

// The first TimelineTrack of `package` whose sequence has the SMPTE 377M timecode data
// definition (the version byte of the label aside); null when there is none.
TimelineTrack* timecodeTrack(const GenericPackage& package);

// The dropFrame flag of the first component of a timecode track's sequence. Each check throws
// InvalidStructure, in this order: "seq != 0: Timecode track has no sequence"; "count != 0" and
// "component != 0" with "Timecode track has no timecode components"; "tc != 0: Timecode component
// has invalid type"; "b != 0: Timecode component does not have the 'dropFrame' element".
bool isDropFrame(const Track& track);

// The start time code of the package's first timecode track: its startTimecode counted at its
// roundedTimecodeBase, with isDropFrame; an undefined time code when the package has no timecode
// track. The checks of isDropFrame, then InvalidStructure "position != 0: Timecode component does
// not have the 'startTimecode' element" and "base != 0: ... 'roundedTimecodeBase' element"; a
// base above 255 throws InvalidLength "Type size exceeded".
Utils::TimeCode startTimecode(const GenericPackage& package);

// The package of the content storage whose packageUID is `uid`; null when none is. The errors of
// PrefaceHelpers::contentStorage; InvalidStructure "package.packageUID () != 0: Package has no
// packageUID" for a package met on the way without one.
GenericPackage* packageByUID(const Preface& preface, const Types::UMID32& uid);

} // namespace MXF::SDK::Metadata::Structural::PackageHelpers
