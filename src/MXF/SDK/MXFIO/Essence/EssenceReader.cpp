#include "MXF/SDK/MXFIO/EssenceReader.h"

#include "MXF/SDK/Exceptions/Checked.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"

#include <algorithm>
#include <cstring>

namespace MXF::SDK::MXFIO
{

using namespace Metadata::Structural;

namespace
{

// Products of 64-bit positions and 32-bit rates.
__extension__ typedef __int128 Wide;

bool positive(const Types::Rational& rate)
{
    return !rate.isUndefined() && rate.denominator() != 0 &&
           (rate.numerator() > 0) == (rate.denominator() > 0) && rate.numerator() != 0;
}

Track* trackByID(GenericPackage& package, UInt32 id)
{
    for (UInt32 i = 0; i < package.tracksCount(); ++i)
        if (Track* track = package.track(i))
            if (track->trackID() != nullptr && track->trackID()->value() == id)
                return track;
    return nullptr;
}

// Positions and durations of a track whose sums leave 64 bits.
constexpr char OUT_OF_RANGE[] = "Track position out of range.";

} // namespace

std::optional<TrackKind> trackKindOf(const Types::UniversalLabel& dataDefinition) noexcept
{
    static const Platform::Byte essence[] = {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01,
                                             0x01, 0x01, 0x01, 0x03, 0x02, 0x02};
    const Platform::Byte* l = dataDefinition.data();
    if (!KLV::equalIgnoringVersion(l, essence, sizeof essence) || l[13] != 0 || l[14] != 0 ||
        l[15] != 0)
        return std::nullopt;
    switch (l[12])
    {
    case 1:
        return TrackKind::PICTURE;
    case 2:
        return TrackKind::SOUND;
    case 3:
        return TrackKind::DATA;
    default:
        return std::nullopt;
    }
}

Int64 EssenceReader::convertPosition(Int64 position, const Types::Rational& currentEditRate,
                                     const Types::Rational& editRate)
{
    MXF_SDK_CHECK_AS(positive(currentEditRate), "currentEditRate > 0",
                     "Edit rate non-greater than zero.", Exceptions::InvalidValue);
    MXF_SDK_CHECK_AS(positive(editRate), "editRate > 0", "Edit rate non-greater than zero.",
                     Exceptions::InvalidValue);
    if (position < 0)
        return position;
    // Position to time at the first rate, time to position at the second, truncated.
    const Wide num = Wide(position) * editRate.numerator() * currentEditRate.denominator();
    const Wide den = Wide(editRate.denominator()) * currentEditRate.numerator();
    const Wide result = num / den;
    if (result > INT64_MAX)
        MXF_SDK_THROW(Exceptions::InvalidValue, OUT_OF_RANGE);
    return Int64(result);
}

namespace
{

struct EssenceTrack
{
    TimelineTrack* timeline = nullptr;
    Sequence* sequence = nullptr;
    TrackKind kind = TrackKind::PICTURE;
    SourceClip* clip = nullptr;
};

// A timeline track with a rate and a sequence of source clips under an essence data definition;
// empty for any other track, timecode among them.
std::optional<EssenceTrack> essenceTrack(Metadata::Structural::Track* generic)
{
    auto* timeline =
        generic != nullptr ? Metadata::metadataSetAs<TimelineTrack>(*generic) : nullptr;
    if (timeline == nullptr || timeline->sequence() == nullptr || timeline->editRate() == nullptr)
        return std::nullopt;
    Sequence& sequence = *timeline->sequence();
    if (sequence.dataDefinition() == nullptr || sequence.componentsCount() == 0)
        return std::nullopt;
    const std::optional<TrackKind> kind = trackKindOf(*sequence.dataDefinition());
    if (!kind)
        return std::nullopt;
    SourceClip* clip = nullptr;
    for (UInt32 c = 0; c < sequence.componentsCount(); ++c)
    {
        StructuralComponent* component = sequence.component(c);
        SourceClip* one =
            component != nullptr ? Metadata::metadataSetAs<SourceClip>(*component) : nullptr;
        MXF_SDK_CHECK_AS(one != 0, "clip != 0", "Package contains a invalid clip in the track.",
                         Exceptions::InvalidFormat);
        if (clip == nullptr)
            clip = one;
    }
    return EssenceTrack{timeline, &sequence, *kind, clip};
}

// The file package's track behind a clip, which gives the element; null when there is none.
TimelineTrack* fileTrackOf(ContentStorageReader& storage, const SourceClip& clip)
{
    GenericPackage* filePackage =
        clip.sourcePackageID() != nullptr
            ? PackageHelpers::packageByUID(storage.preface(), *clip.sourcePackageID())
            : nullptr;
    Metadata::Structural::Track* fileTrack =
        filePackage != nullptr && clip.sourceTrackID() != nullptr
            ? trackByID(*filePackage, clip.sourceTrackID()->value())
            : nullptr;
    auto* fileTimeline =
        fileTrack != nullptr ? Metadata::metadataSetAs<TimelineTrack>(*fileTrack) : nullptr;
    return fileTimeline != nullptr && fileTimeline->trackNumber() != nullptr ? fileTimeline
                                                                             : nullptr;
}

// A track of the file package is its own element, read from the first edit unit: its clip leads
// out of the file.
TimelineTrack* ownFileTrack(Metadata::Structural::Track& generic)
{
    auto* timeline = Metadata::metadataSetAs<TimelineTrack>(generic);
    return timeline != nullptr && timeline->trackNumber() != nullptr ? timeline : nullptr;
}

Int64 clipStart(const SourceClip& clip, bool ownTrack)
{
    return !ownTrack && clip.startPosition() != nullptr ? clip.startPosition()->value() : 0;
}

// The record of a track, its element reader positioned at the clip's start and bounded by the
// material track's length at the file track's rate.
EssenceReader::Track trackRecord(ContentStorageReader& storage, const EssenceTrack& essence,
                                 Metadata::Structural::Track& generic, TimelineTrack& fileTrack,
                                 bool ownTrack)
{
    const UInt32 number = fileTrack.trackNumber()->value();
    storage.seeker().requireTrackNumber(number);
    EssenceReader::Track record;
    record.track = essence.timeline;
    record.clip = essence.clip;
    record.kind = essence.kind;
    record.trackID = generic.trackID() != nullptr ? generic.trackID()->value() : 0;
    record.trackNumber = number;
    record.editRate = *essence.timeline->editRate();
    record.origin = essence.timeline->origin() != nullptr ? essence.timeline->origin()->value() : 0;
    record.duration =
        essence.sequence->duration() != nullptr ? essence.sequence->duration()->value() : 0;
    const Types::Rational fileRate =
        fileTrack.editRate() != nullptr ? *fileTrack.editRate() : record.editRate;
    const Int64 start = clipStart(*essence.clip, ownTrack);
    record.currentPosition = EssenceReader::convertPosition(start, record.editRate, fileRate);
    record.reader = storage.elementReader(number);
    if (record.duration <= 0)
        record.duration = record.reader->duration();
    const Int64 fileDuration = EssenceReader::convertPosition(
        Exceptions::checkedAdd<Exceptions::InvalidValue>(start, record.duration, OUT_OF_RANGE),
        record.editRate, fileRate);
    if (record.reader->duration() <= 0 || fileDuration < record.reader->duration())
        record.reader->setDuration(fileDuration);
    return record;
}

} // namespace

EssenceReader::EssenceReader(ContentStorageReader& storage, GenericPackage& package)
{
    UInt32 lowestOrder = UINT32_MAX;
    const bool ownTracks = &package == &storage.sourcePackage();
    for (UInt32 i = 0; i < package.tracksCount(); ++i)
    {
        Metadata::Structural::Track* generic = package.track(i);
        const std::optional<EssenceTrack> essence = essenceTrack(generic);
        if (!essence)
            continue;
        TimelineTrack* fileTrack =
            ownTracks ? ownFileTrack(*generic) : fileTrackOf(storage, *essence->clip);
        if (fileTrack == nullptr)
            continue;
        Track record = trackRecord(storage, *essence, *generic, *fileTrack, ownTracks);
        if (record.reader->order() < lowestOrder)
        {
            lowestOrder = record.reader->order();
            leadTrack_ = tracks_.size();
        }
        // A package's first track with a length sets the pace.
        if (masterEditPeriod_ == Types::Rational(0, 1) && record.duration != 0)
        {
            MXF_SDK_CHECK_AS(positive(record.editRate), "currentEditRate > 0",
                             "Edit rate non-greater than zero.", Exceptions::InvalidValue);
            masterEditPeriod_ = Types::Rational(1, 1);
            masterEditPeriod_ /= record.editRate;
        }
        tracks_.push_back(std::move(record));
    }
    MXF_SDK_CHECK_AS(!(masterEditPeriod_ == Types::Rational(0, 1)), "!(masterEditPeriod_ == 0)",
                     "Package does not have valid Essence Tracks.", Exceptions::InvalidValue);
    for (std::size_t i = 0; i < tracks_.size(); ++i)
    {
        if (i != leadTrack_)
            order_.push_back(i);
        starts_.push_back(clipStart(*tracks_[i].clip, ownTracks));
        tracks_[i].reader->seek(tracks_[i].currentPosition);
    }
    if (leadTrack_ < tracks_.size())
        order_.insert(order_.begin(), leadTrack_);
}

EssenceReader::~EssenceReader() = default;

void EssenceReader::seek(Int64 position)
{
    masterPosition_ = position;
    ended_.clear();
    for (Track& record : tracks_)
    {
        const Types::Rational fileRate = record.editRate;
        // Steps of the master period to the track's own edit units.
        const Wide num = Wide(position) * masterEditPeriod_.numerator() * fileRate.numerator();
        const Wide den = Wide(masterEditPeriod_.denominator()) * fileRate.denominator();
        const Wide steps = num / den;
        if (steps > INT64_MAX || steps < INT64_MIN)
            MXF_SDK_THROW(Exceptions::InvalidValue, OUT_OF_RANGE);
        record.currentPosition = Exceptions::checkedAdd<Exceptions::InvalidValue>(
            starts_[std::size_t(&record - tracks_.data())], Int64(steps), OUT_OF_RANGE);
        record.reader->seek(record.currentPosition);
    }
}

template <typename Data>
bool EssenceReader::nextInto(std::size_t& trackOut, Data& data)
{
    if (ended_.size() != tracks_.size())
        ended_.assign(tracks_.size(), false);
    for (;;)
    {
        bool any = false;
        for (const std::size_t i : order_)
        {
            if (ended_[i])
                continue;
            any = true;
            Track& record = tracks_[i];
            const Int64 done = Exceptions::checkedSub<Exceptions::InvalidValue>(
                record.reader->position(), starts_[i], OUT_OF_RANGE);
            // The edit unit belongs to this step when its time is below the step's end:
            // done / rate < (master + 1) * period. Only a track that is due is looked at, so
            // that the file is read in the order it was written.
            const Wide left =
                Wide(done) * record.editRate.denominator() * masterEditPeriod_.denominator();
            const Wide right = (Wide(masterPosition_) + 1) * masterEditPeriod_.numerator() *
                               record.editRate.numerator();
            if (left >= right)
                continue;
            if (record.reader->read(data))
            {
                record.currentPosition = record.reader->position();
                trackOut = i;
                return true;
            }
            ended_[i] = true;
        }
        if (!any)
            return false;
        ++masterPosition_;
    }
}

bool EssenceReader::next(std::size_t& trackOut, std::vector<Platform::Byte>& data)
{
    return nextInto(trackOut, data);
}

bool EssenceReader::next(std::size_t& trackOut, DataIO::SlicePtr& data)
{
    return nextInto(trackOut, data);
}

} // namespace MXF::SDK::MXFIO
