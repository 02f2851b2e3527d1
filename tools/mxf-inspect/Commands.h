#pragma once

#include "MXF/SDK/DataIO/File/FileDataSource.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Halvorn::Inspect
{

// Exit statuses shared by all subcommands.
enum Status
{
    CLEAN = 0,
    // The file was read to its end but is damaged; stderr has one line saying how.
    DAMAGED = 1,
    // Bad arguments, or the file could not be read at all.
    FAILED = 2
};

// A subcommand gets the arguments after its name, writes its report to `out` and at most one
// line to `err`, and returns a Status.
using Command = int (*)(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

// Error lines give the expression of a failed check too (-v).
void setVerboseErrors(bool verbose);

// A failure's text as a user reads it: the message, without the source expression of the check
// that failed unless errors are verbose.
std::string userText(std::string_view what);

// One line on `err` naming the file and what is wrong with it; FAILED.
int fileFailure(const std::string& path, std::string_view what, std::ostream& err);

// The file at `path`, opened; null after the reason on `err`.
std::unique_ptr<MXF::SDK::DataIO::File::FileDataSource> openFile(const std::string& path,
                                                                 std::ostream& err);

// The one FILE argument of `command`, opened; null after a usage line or the reason on `err`.
std::unique_ptr<MXF::SDK::DataIO::File::FileDataSource>
openFileArgument(const char* command, const std::vector<std::string>& args, std::ostream& err);

// The status of a walk that found `damage` (empty: none), told on one line of `err`.
int walkStatus(const std::string& path, const std::string& damage, bool failed, std::ostream& err);

// One line per KLV item, skipped bytes on lines of their own, then "N items".
int klvCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

// One line per partition pack, then the random index pack checked against them.
int partitionsCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

// The usage of the metadata subcommand, after "mxf-inspect ".
inline constexpr const char* METADATA_USAGE =
    "metadata FILE [--partition header|footer|OFFSET] [--dictionary DICTIONARY] [--meta]";

// The header metadata of one partition as a tree from Avid's root object or the Preface down (see
// printMetadata), then "N sets"; Avid's object directory is checked against the sets found, and
// --meta shows the meta-dictionary whole. The partition is the header's unless --partition names
// the footer or the OFFSET of a partition pack's key, the first number `partitions` writes on its
// line. The sets are known from the compiled dictionary of the build unless --dictionary names
// another. A partition without header metadata, or whose metadata can't be read, is an error of the
// file.
int metadataCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

// Each index table segment with its delta and index entries, then a line per index table, then a
// line per track of the material package: its element and what the index finds of it.
int indexCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

inline constexpr const char* ESSENCE_USAGE =
    "essence FILE --track v0|a0|...|all --out PATH|DIR [--no-index] [--max-skip BYTES]";

// The data of one track of the material package (v0 the first picture track, a0, a1... the sound
// tracks, in the package's order), or of all into DIR, one file a track: MPEG-2 as an elementary
// stream, PCM as stored, D-10's AES3 sound as interleaved little-endian PCM. --no-index finds the
// edit units by walking the items. --max-skip lets up to BYTES of garbage stand before a partition
// pack (none by default).
int essenceCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

inline constexpr const char* TRACKS_USAGE =
    "tracks FILE|--mediapro MEDIAPRO.XML --umid UMID [--dictionary DICTIONARY]";

// The track descriptors the XDCAM decode pipe announces for a clip, one line a track as key=value,
// then the clip's duration and start time code. With --mediapro and --umid the clip is first
// found through the MediaProfile: its sidecar and start offset, its files with their frames, its
// marks.
int tracksCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

} // namespace Halvorn::Inspect
