#pragma once

#include "MXF/SDK/MXFIO/ContentStorageReader.h"
#include "MXF/SDK/MXFIO/ElementReader.h"
#include "MXF/SDK/Types/Rational.h"
#include "MXF/SDK/Types/UID.h"

#include <memory>
#include <optional>
#include <vector>

namespace MXF::SDK::Metadata::Structural
{
class GenericPackage;
class SourceClip;
class TimelineTrack;
} // namespace MXF::SDK::Metadata::Structural

namespace MXF::SDK::MXFIO
{

// The kind of an essence track, from its sequence's data definition.
enum class TrackKind
{
    PICTURE,
    SOUND,
    DATA
};

// The essence data definitions of SMPTE RP 224, 06 0E 2B 34 04 01 01 vv 01 03 02 02 0k 00 00 00:
// k 1 picture, 2 sound, 3 data, any version vv. Empty for any other label, timecode among them.
std::optional<TrackKind> trackKindOf(const Types::UniversalLabel& dataDefinition) noexcept;

// Reads the essence tracks of a package (the material package, most often) in time order.
class EssenceReader
{
public:
    struct Track
    {
        Metadata::Structural::TimelineTrack* track = nullptr;
        Metadata::Structural::SourceClip* clip = nullptr;
        TrackKind kind = TrackKind::PICTURE;
        UInt32 trackID = 0;
        // Of the file package's track, the key bytes 12 to 15 of its elements.
        UInt32 trackNumber = 0;
        Int64 currentPosition = 0;
        Int64 origin = 0;
        Int64 duration = 0;
        Types::Rational editRate{0, 1};
        std::unique_ptr<BaseElementEssenceReader> reader;
    };

    // InvalidFormat "clip != 0: Package contains a invalid clip in the track."; InvalidValue
    // "!(masterEditPeriod_ == 0): Package does not have valid Essence Tracks."; "currentEditRate >
    // 0: Edit rate non-greater than zero."; "Track position out of range." when a start position
    // and duration leave 64 bits. NotFound "... Track Number not found in this content Storage."
    // for an essence track whose elements the body does not have.
    EssenceReader(ContentStorageReader& storage, Metadata::Structural::GenericPackage& package);
    ~EssenceReader();

    std::size_t trackCount() const noexcept { return tracks_.size(); }
    Track& track(std::size_t index) { return tracks_.at(index); }
    std::size_t leadTrack() const noexcept { return leadTrack_; }
    const Types::Rational& masterEditPeriod() const noexcept { return masterEditPeriod_; }
    Int64 masterPosition() const noexcept { return masterPosition_; }

    // The next edit unit in time order: each track's edit units that begin before the end of the
    // current step, the lead track first, then the next step. False at the end of every track.
    bool next(std::size_t& trackOut, std::vector<Platform::Byte>& data);
    // As above, the data as a slice of a block of its own, read once and never copied.
    bool next(std::size_t& trackOut, DataIO::SlicePtr& data);
    // Every track to the time of `position` steps.
    void seek(Int64 position);

    // `position` at `fromRate` as a position at `toRate`, truncated toward zero; negative
    // positions stay as they are. InvalidValue "currentEditRate > 0" / "editRate > 0: Edit rate
    // non-greater than zero.".
    static Int64 convertPosition(Int64 position, const Types::Rational& fromRate,
                                 const Types::Rational& toRate);

private:
    // The track whose edit unit comes next, in the order of next; false at the end of every track.
    template <typename Data>
    bool nextInto(std::size_t& trackOut, Data& data);

    std::vector<Track> tracks_;
    // The lead track first, then the others in their order.
    std::vector<std::size_t> order_;
    // Each track's clip start, at the track's rate.
    std::vector<Int64> starts_;
    Types::Rational masterEditPeriod_{0, 1};
    Int64 masterPosition_ = 0;
    std::size_t leadTrack_ = SIZE_MAX;
    // Tracks whose data has run out.
    std::vector<bool> ended_;
};

} // namespace MXF::SDK::MXFIO
