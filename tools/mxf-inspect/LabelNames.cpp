#include "LabelNames.h"

#include "MXF/SDK/KLV/IdentifierText.h"
#include "MXF/SDK/Platform/Platform.h"

#include <string_view>

namespace Halvorn::Inspect
{

using MXF::SDK::Platform::Byte;

namespace
{

struct LabelName
{
    std::string_view label; // dotted hex, lower case
    const char* name;
};

// Names as the SMPTE Labels register gives them (RP 224, rp224-labels.csv of the reference data):
// what the fixtures and XDCAM and D-10 files carry, with their near kin.
constexpr LabelName LABELS[] = {
    {"06.0e.2b.34.04.01.01.01.01.03.02.01.01.00.00.00",
     "SMPTE-12M Timecode Track Inactive User Bits"},
    {"06.0e.2b.34.04.01.01.01.01.03.02.01.10.00.00.00", "Descriptive Metadata Track"},
    {"06.0e.2b.34.04.01.01.01.01.03.02.02.01.00.00.00", "Picture Essence Track"},
    {"06.0e.2b.34.04.01.01.01.01.03.02.02.02.00.00.00", "Sound Essence Track"},
    {"06.0e.2b.34.04.01.01.01.01.03.02.02.03.00.00.00", "Data Essence Track"},
    {"06.0e.2b.34.04.01.01.01.0d.01.02.01.01.01.01.00",
     "MXF OP1a SingleItem SinglePackage UniTrack Stream Internal"},
    {"06.0e.2b.34.04.01.01.01.0d.01.02.01.01.01.09.00",
     "MXF OP1a SingleItem SinglePackage MultiTrack Stream Internal"},
    {"06.0e.2b.34.04.01.01.02.0d.01.02.01.10.00.00.00", "MXF-OP Atom 1 Track 1 SourceClip"},
    {"06.0e.2b.34.04.01.01.02.0d.01.02.01.10.01.00.00", "MXF-OP Atom 1 Track N SourceClips"},
    {"06.0e.2b.34.04.01.01.02.0d.01.02.01.10.02.00.00", "MXF-OP Atom N Tracks 1 SourceClip"},
    {"06.0e.2b.34.04.01.01.02.0d.01.02.01.10.03.00.00", "MXF-OP Atom N Tracks N SourceClips"},
    {"06.0e.2b.34.04.01.01.02.0d.01.03.01.02.04.60.01",
     "MXF-GC Frame-wrapped MPEG-ES VideoStream-0 SID"},
    {"06.0e.2b.34.04.01.01.02.0d.01.03.01.02.04.60.02",
     "MXF-GC Clip-wrapped MPEG-ES VideoStream-0 SID"},
    {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.06.01.00",
     "MXF-GC Frame-wrapped Broadcast Wave audio data"},
    {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.06.02.00",
     "MXF-GC Clip-wrapped Broadcast Wave audio data"},
    {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.06.03.00", "MXF-GC Frame-wrapped AES3 audio data"},
    {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.06.04.00", "MXF-GC Clip-wrapped AES3 audio data"},
    {"06.0e.2b.34.04.01.01.03.0d.01.03.01.02.7f.01.00", "MXF-GC Generic Essence Multiple Mappings"},
    {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.01.01.01",
     "MXF-GC Frame-wrapped SMPTE D-10 625x50I 50Mbps DefinedTemplate"},
    {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.01.02.01",
     "MXF-GC Frame-wrapped SMPTE D-10 525x59.94I 50Mbps DefinedTemplate"},
    {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.01.03.01",
     "MXF-GC Frame-wrapped SMPTE D-10 625x50I 40Mbps DefinedTemplate"},
    {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.01.04.01",
     "MXF-GC Frame-wrapped SMPTE D-10 525x59.94I 40Mbps DefinedTemplate"},
    {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.01.05.01",
     "MXF-GC Frame-wrapped SMPTE D-10 625x50I 30Mbps DefinedTemplate"},
    {"06.0e.2b.34.04.01.01.01.0d.01.03.01.02.01.06.01",
     "MXF-GC Frame-wrapped SMPTE D-10 525x59.94I 30Mbps DefinedTemplate"},
    {"06.0e.2b.34.04.01.01.01.04.01.02.02.01.02.01.01", "SMPTE D-10 50Mbps 625x50I"},
    {"06.0e.2b.34.04.01.01.01.04.01.02.02.01.02.01.02", "SMPTE D-10 50Mbps 525x59.94I"},
    {"06.0e.2b.34.04.01.01.01.04.01.02.02.01.02.01.03", "SMPTE D-10 40Mbps 625x50I"},
    {"06.0e.2b.34.04.01.01.01.04.01.02.02.01.02.01.04", "SMPTE D-10 40Mbps 525x59.94I"},
    {"06.0e.2b.34.04.01.01.01.04.01.02.02.01.02.01.05", "SMPTE D-10 30Mbps 625x50I"},
    {"06.0e.2b.34.04.01.01.01.04.01.02.02.01.02.01.06", "SMPTE D-10 30Mbps 525x59.94I"},
    {"06.0e.2b.34.04.01.01.03.04.01.02.02.01.02.03.00", "MPEG-2 422P-ML Long GOP"},
    {"06.0e.2b.34.04.01.01.03.04.01.02.02.01.04.03.00", "MPEG-2 422P-HL Long GOP"},
    {"06.0e.2b.34.04.01.01.03.04.01.02.02.01.03.03.00", "MPEG-2 MP-HL Long GOP"},
    {"06.0e.2b.34.04.01.01.03.04.01.02.02.01.04.02.00", "MPEG-2 422P-HL I-Frame"},
    {"06.0e.2b.34.04.01.01.03.04.01.02.02.01.02.02.00", "MPEG-2 422P-ML I-Frame"},
    {"06.0e.2b.34.04.01.01.01.04.02.02.01.00.00.00.00", "Uncompressed Sound Coding"},
    {"06.0e.2b.34.04.01.01.01.04.02.02.01.7f.00.00.00", "Undefined Sound Coding"},
};

// Byte 8, the version, at characters 21 and 22 of the dotted form.
constexpr std::size_t VERSION_AT = 21;

bool sameButVersion(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && a.substr(0, VERSION_AT) == b.substr(0, VERSION_AT) &&
           a.substr(VERSION_AT + 2) == b.substr(VERSION_AT + 2);
}

} // namespace

std::string labelName(const Byte* label)
{
    const std::string text =
        MXF::SDK::Platform::toUtf8(MXF::SDK::KLV::IdentifierText::writeDottedHex(label, 16));
    for (const LabelName& entry : LABELS)
        if (sameButVersion(entry.label, text))
            return entry.name;
    return "";
}

} // namespace Halvorn::Inspect
