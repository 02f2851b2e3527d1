#pragma once

#include "DecodePipes/IDecodePipe.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace KEP::Halvorn::DecodePipes
{

// The XML sidecars of camera clips: the MediaProfile document that lists the materials of a disc
// or card, and each clip's NonRealTimeMeta document, whose KlvPacketTable holds the text marks
// that become the locators of the AAF file. Every document is read as hostile.
//
// One object belongs to one thread at a time. Parse failures of a NonRealTimeMeta document are
// QuenfoldHelpersException; everything else fails by an empty result.
class ClipMetadata
{
public:
    // Key of a mark whose text has two bytes a character, high byte first.
    static constexpr std::wstring_view WIDE_MARK_KEY = L"060E2B34010101050301020A02010000";
    // Key of a mark whose text has one byte a character. Any key but WIDE_MARK_KEY reads so; this
    // one is named only to say where it comes from.
    static constexpr std::wstring_view NARROW_MARK_KEY = L"060E2B34010101050301020A02000000";

    ClipMetadata();
    ~ClipMetadata();
    ClipMetadata(const ClipMetadata&) = delete;
    ClipMetadata& operator=(const ClipMetadata&) = delete;

    // Parses the MediaProfile document. False, after a log line, when it can't be read.
    bool load(const wchar_t* path);
    // The media files of a material: for a clip its one Component; for a take, through the take's
    // SMIL edit list, the Component of each clip it names, in order. The marks of those clips
    // are loaded on the way. Empty, after a log line, when the material or its uri is unknown;
    // a failure part of the way gives the files found until then.
    std::vector<std::wstring> filesForUmid(const wchar_t* umid);
    // The Component offset of the clip found by the last filesForUmid (for a take, its first
    // clip); 0 when there is none.
    int componentOffset();
    // The NonRealTimeMeta file of a material: the MediaProfile's folder joined with the uri of its
    // RelevantInfo of type "XML". Empty when there is none.
    std::wstring xmlFileForUmid(const wchar_t* umid);

    // Adds the marks of one NonRealTimeMeta file, each at its frame plus `frameOffset`; a frame
    // that already has a mark keeps it. Returns the clip's Duration, 0 when it has none. Of a table
    // too large to query in reasonable time only the first marks are read.
    std::uint64_t loadMaterialFile(const wchar_t* path, std::uint64_t frameOffset);
    // The marks of several clips on one time line: each clip's marks are moved by the durations of
    // the clips before it. Stops at the first clip without a NonRealTimeMeta file; a file that
    // can't be parsed throws, and the marks read before it stay.
    void loadMaterialsForUmids(const std::vector<std::wstring>& umids);
    // A copy of the marks loaded so far.
    ClipMaterials materials() const;

    // The marks of a single NonRealTimeMeta file from frame 0; none when it can't be read.
    static ClipMaterials loadMaterials(const wchar_t* xmlFile);
    // The text of a mark from its lengthValue: a length byte, then as many bytes of text, all as
    // hexadecimal digits; two bytes a character when `wide`. Digits that are missing or not
    // hexadecimal read as 0, and an odd number of digits gives no text. The result always ends in
    // one embedded zero character.
    static std::wstring decode(std::wstring_view hex, bool wide);

private:
    // The clips of a take, by the `ref` elements of its SMIL edit list.
    void loadTake(const std::wstring& smilFile);

    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// The folder of a MediaProfile file, up to and including its last "/", after every "\" but the two
// leading ones of a network path has become "/". Empty when there is no separator.
std::wstring mediaProfileFolder(std::wstring_view mediaProfileFile);

} // namespace KEP::Halvorn::DecodePipes
