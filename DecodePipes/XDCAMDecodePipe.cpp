#include "DecodePipes/XDCAMDecodePipe.h"

#include "DecodePipes/EssenceContainerKind.h"
#include "MXF/SDK/DataIO/Slice.h"
#include "MXF/SDK/MXFIO/ContentStorageReader.h"
#include "MXF/SDK/MXFIO/EssenceReader.h"
#include "MXF/SDK/MXFIO/Reader.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"
#include "Transcoder/LoggerHolder.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <numeric>

namespace KEP::Halvorn::DecodePipes
{

namespace Structural = MXF::SDK::Metadata::Structural;
using MXF::SDK::Metadata::metadataSetAs;
using MXF::SDK::MXFIO::ContentStorageReader;
using MXF::SDK::MXFIO::EssenceReader;
using MXF::SDK::MXFIO::Reader2;
using MXF::SDK::Types::Rational;

namespace
{

// Partitions may be preceded by up to this many bytes of run-in.
constexpr std::uint64_t MAX_RUN_IN = 65536;

// Products of 64-bit durations and 32-bit rates.
__extension__ typedef __int128 Wide;

enum class TrackKind
{
    OTHER,
    PICTURE,
    SOUND
};

// Picture and sound by the essence reader's reading of the sequence's data definition.
TrackKind trackKind(const Structural::Track& track)
{
    const Structural::Sequence* sequence = track.sequence();
    const MXF::SDK::Types::UniversalLabel* label =
        sequence != nullptr ? sequence->dataDefinition() : nullptr;
    const std::optional<MXF::SDK::MXFIO::TrackKind> kind =
        label != nullptr ? MXF::SDK::MXFIO::trackKindOf(*label) : std::nullopt;
    return kind == MXF::SDK::MXFIO::TrackKind::PICTURE ? TrackKind::PICTURE
           : kind == MXF::SDK::MXFIO::TrackKind::SOUND ? TrackKind::SOUND
                                                       : TrackKind::OTHER;
}

template <typename Value>
auto valueOr0(const Value* value) -> decltype(value->value())
{
    return value != nullptr ? value->value() : 0;
}

// The first file package of the content storage: a source package described by a file
// descriptor, a multiple one included. Null when there is none.
Structural::SourcePackage* firstFilePackage(Structural::ContentStorage& storage)
{
    for (std::uint32_t i = 0; i < storage.packagesCount(); ++i)
        if (Structural::GenericPackage* package = storage.package(i))
            if (auto* source = metadataSetAs<Structural::SourcePackage>(*package))
                if (source->descriptor() != nullptr &&
                    metadataSetAs<Structural::FileDescriptor>(*source->descriptor()) != nullptr)
                    return source;
    return nullptr;
}

// The descriptor of the track `trackId` of a file package: the sub-descriptor of a multiple
// descriptor linked to it, or a single descriptor as it is. Null when there is none.
Structural::FileDescriptor* trackDescriptor(const Structural::SourcePackage& package,
                                            std::uint32_t trackId)
{
    Structural::GenericDescriptor* descriptor = package.descriptor();
    if (descriptor == nullptr)
        return nullptr;
    if (auto* multiple = metadataSetAs<Structural::MultipleDescriptor>(*descriptor))
    {
        for (std::uint32_t i = 0; i < multiple->fileDescriptorsCount(); ++i)
        {
            Structural::FileDescriptor* sub = multiple->fileDescriptor(i);
            if (sub != nullptr && sub->linkedTrackID() != nullptr &&
                sub->linkedTrackID()->value() == trackId)
                return sub;
        }
        return nullptr;
    }
    return metadataSetAs<Structural::FileDescriptor>(*descriptor);
}

EssenceContainerKind kindOf(const Structural::FileDescriptor* descriptor)
{
    return descriptor != nullptr && descriptor->essenceContainer() != nullptr
               ? essenceContainerKind(*descriptor->essenceContainer())
               : KIND_UNKNOWN;
}

void readPicture(const Structural::FileDescriptor* descriptor, VideoAttributes& video)
{
    if (descriptor == nullptr)
        return;
    if (const auto* mpeg = metadataSetAs<Structural::MPEG2VideoDescriptor>(*descriptor))
        video.bitRate = valueOr0(mpeg->bitRate());
    if (const auto* picture =
            metadataSetAs<Structural::GenericPictureEssenceDescriptor>(*descriptor))
    {
        video.storedHeight = valueOr0(picture->storedHeight());
        video.storedWidth = valueOr0(picture->storedWidth());
        video.sampledHeight = valueOr0(picture->sampledHeight());
        video.sampledWidth = valueOr0(picture->sampledWidth());
        video.sampledXOffset = valueOr0(picture->sampledXOffset());
        video.sampledYOffset = valueOr0(picture->sampledYOffset());
        video.displayHeight = valueOr0(picture->displayHeight());
        video.displayWidth = valueOr0(picture->displayWidth());
        video.displayXOffset = valueOr0(picture->displayXOffset());
        video.displayYOffset = valueOr0(picture->displayYOffset());
        if (const Rational* aspect = picture->aspectRatio(); aspect != nullptr)
        {
            video.aspectRatioNumerator = static_cast<std::uint32_t>(aspect->numerator());
            video.aspectRatioDenominator = static_cast<std::uint32_t>(aspect->denominator());
        }
        // The picture attribute the encode side writes back as it found it.
        video.signalAttribute = valueOr0(picture->signalStandard());
        video.frameLayout = valueOr0(picture->frameLayout());
        for (std::uint32_t i = 0; i < 2 && i < picture->videoLineMapCount(); ++i)
            video.videoLineMap[i] = valueOr0(picture->videoLineMap(i));
    }
    if (const auto* cdci = metadataSetAs<Structural::CDCIEssenceDescriptor>(*descriptor))
    {
        video.componentDepth = valueOr0(cdci->componentDepth());
        video.horizontalSubsampling = valueOr0(cdci->horizontalSubsampling());
        video.verticalSubsampling = valueOr0(cdci->verticalSubsampling());
        video.blackRefLevel = valueOr0(cdci->blackRefLevel());
        video.whiteRefLevel = valueOr0(cdci->whiteReflevel());
        video.colorRange = valueOr0(cdci->colorRange());
    }
}

void readSound(const Structural::FileDescriptor* descriptor, AudioAttributes& audio)
{
    const auto* sound = descriptor != nullptr
                            ? metadataSetAs<Structural::GenericSoundEssenceDescriptor>(*descriptor)
                            : nullptr;
    if (sound == nullptr)
        return;
    audio.quantizationBits = valueOr0(sound->quantizationBits());
    audio.channelCount = valueOr0(sound->channelCount());
    if (const Rational* rate = sound->audioSamplingRate(); rate != nullptr)
        audio.audioSampleRate = static_cast<std::uint32_t>(rate->numerator());
}

// Of a rate whose numbers are both positive.
Rational reduced(const Rational& rate)
{
    const std::int32_t divisor = std::gcd(rate.numerator(), rate.denominator());
    return Rational(rate.numerator() / divisor, rate.denominator() / divisor);
}

// Once a process, before the first header metadata is read: the sets come out typed.
void registerSetsOnce()
{
    static const bool registered = (Structural::registerStructuralSets(), true);
    (void)registered;
}

} // namespace

// A file opened for reading: the reader, the latest header metadata with its packages, and once
// the essence is wanted the readers of it. Members die in the reverse order.
struct XDCAMDecodePipe::OpenFile
{
    OpenFile(InputFile file, std::shared_ptr<const MXF::SDK::MetaMetadata::Dictionary> dictionary)
        : reader(std::make_unique<Reader2>(std::move(file), std::move(dictionary), MAX_RUN_IN)),
          metadata(reader->latestHeaderMetadataPartition().metadata())
    {
        auto* preface = metadataSetAs<Structural::Preface>(metadata->preface());
        if (preface == nullptr)
            return;
        Structural::ContentStorage& storage = Structural::PrefaceHelpers::contentStorage(*preface);
        filePackage = firstFilePackage(storage);
    }

    // The essence of the file package, every element the file holds, in file order: a track's
    // declared length does not end its reading, the file does. InvalidValue
    // "!(masterEditPeriod_ == 0): Package does not have valid Essence Tracks." and what the
    // content storage reader throws.
    void openEssence(bool whole)
    {
        storage = std::make_unique<ContentStorageReader>(*metadata, *reader);
        MXF_SDK_CHECK_AS(filePackage != 0, "package != 0",
                         "Package does not have valid Essence Tracks.",
                         MXF::SDK::Exceptions::InvalidValue);
        essence = std::make_unique<EssenceReader>(*storage, *filePackage);
        // An element reader without a length reads until the file holds no more of its element.
        for (std::size_t i = 0; whole && i < essence->trackCount(); ++i)
            essence->track(i).reader->setDuration(0);
    }

    // Frames of the first timeline track's rate that the longest essence track lasts; unknown
    // when a track's length is.
    std::uint64_t duration() const
    {
        Rational rate(1, 1);
        for (std::uint32_t i = 0; filePackage != nullptr && i < filePackage->tracksCount(); ++i)
        {
            Structural::Track* track = filePackage->track(i);
            auto* timeline =
                track != nullptr ? metadataSetAs<Structural::TimelineTrack>(*track) : nullptr;
            if (timeline != nullptr && timeline->editRate() != nullptr)
            {
                rate = *timeline->editRate();
                break;
            }
        }
        if (rate.numerator() <= 0 || rate.denominator() <= 0)
            return FileBoundsRetriever::UNKNOWN_DURATION;
        rate = reduced(rate);
        // The longest track in seconds, as a fraction: duration * d / n.
        Wide longestNum = 0;
        Wide longestDen = 1;
        for (std::size_t i = 0; i < essence->trackCount(); ++i)
        {
            const EssenceReader::Track& track = essence->track(i);
            if (track.duration < 0 || track.editRate.numerator() <= 0 ||
                track.editRate.denominator() <= 0)
                return FileBoundsRetriever::UNKNOWN_DURATION;
            const Wide num = Wide(track.duration) * track.editRate.denominator();
            const Wide den = track.editRate.numerator();
            if (num * longestDen > longestNum * den)
            {
                longestNum = num;
                longestDen = den;
            }
        }
        return static_cast<std::uint64_t>(longestNum * rate.numerator() /
                                          (longestDen * rate.denominator()));
    }

    std::unique_ptr<Reader2> reader;
    std::unique_ptr<MXF::SDK::Metadata::PartitionMetadata> metadata;
    Structural::SourcePackage* filePackage = nullptr;
    std::unique_ptr<ContentStorageReader> storage;
    std::unique_ptr<EssenceReader> essence;
};

namespace
{

// Measures a file once, when it is made; offers no trimming.
class XDCAMFileBoundsRetriever final : public FileBoundsRetriever
{
public:
    explicit XDCAMFileBoundsRetriever(std::uint64_t duration) : duration_(duration) {}
    std::uint64_t duration() override { return duration_; }
    std::uint64_t setBounds(std::uint64_t, std::uint64_t) override { return 0; }

private:
    std::uint64_t duration_;
};

} // namespace

XDCAMDecodePipe::XDCAMDecodePipe()
{
    registerSetsOnce();
}

XDCAMDecodePipe::~XDCAMDecodePipe()
{
    closeCurrentFile();
}

std::unique_ptr<FileBoundsRetriever> XDCAMDecodePipe::createFileBoundsRetriever(InputFile file)
{
    OpenFile measured(std::move(file), dictionary_);
    measured.openEssence(false);
    return std::make_unique<XDCAMFileBoundsRetriever>(measured.duration());
}

void XDCAMDecodePipe::closeCurrentFile()
{
    open_.reset();
}

bool XDCAMDecodePipe::analyzeCurrentFile()
{
    open_.reset();
    open_ = std::make_unique<OpenFile>(inputFiles_.currentEntry().file, dictionary_);
    if (Structural::SourcePackage* package = open_->filePackage)
    {
        for (std::uint32_t i = 0; i < package->tracksCount(); ++i)
        {
            Structural::Track* track = package->track(i);
            if (track == nullptr)
                continue;
            const TrackKind kind = trackKind(*track);
            auto* timeline = metadataSetAs<Structural::TimelineTrack>(*track);
            if (kind == TrackKind::OTHER || timeline == nullptr)
                continue;
            const std::uint32_t trackId = valueOr0(track->trackID());
            const Structural::FileDescriptor* descriptor = trackDescriptor(*package, trackId);
            const EssenceContainerKind container = kindOf(descriptor);
            const Rational editRate =
                timeline->editRate() != nullptr ? *timeline->editRate() : Rational(0, 1);
            if (kind == TrackKind::PICTURE)
            {
                auto info = std::make_shared<EssenceTrackInfo>(5);
                info->trackId = trackId;
                info->coding = pictureCoding(container);
                info->editRate = editRate;
                readPicture(descriptor, info->video);
                info->fileName = L"video.mxf";
                tracks_.push_back(std::move(info));
                editRate_ = editRate;
            }
            else
            {
                auto info = std::make_shared<EssenceTrackInfo>(8);
                info->trackId = trackId;
                info->coding = soundCoding(container);
                info->editRate = editRate;
                readSound(descriptor, info->audio);
                wchar_t name[24];
                std::swprintf(name, sizeof name / sizeof *name, L"audio_%02u.mxf",
                              static_cast<unsigned>(audioFileCounter_++));
                info->fileName = name;
                tracks_.push_back(std::move(info));
            }
        }
    }
    open_->openEssence(true);
    return true;
}

void XDCAMDecodePipe::readNextSamples()
{
    std::size_t index = 0;
    std::uint32_t trackId = 0;
    MXF::SDK::DataIO::SlicePtr element;
    // Elements of tracks without a descriptor (data tracks) have nowhere to go.
    do
    {
        if (open_ == nullptr || open_->essence == nullptr || !open_->essence->next(index, element))
        {
            logEntry(LOG_TRACE, L"Finished read essence. No more data.");
            return;
        }
        trackId = open_->essence->track(index).trackID;
    } while (std::none_of(tracks_.begin(), tracks_.end(),
                          [&](const auto& track) { return track->trackId == trackId; }));
    // The element was read into a block of its own; the sample copies it, and the block goes with
    // the slice at the end of the call. Only a read cut short by the file leaves the block longer
    // than its bytes.
    HalvornSample* sample = nullptr;
    if (element->offset == 0 && element->size == element->block->size())
        sample = new ReadSample(trackId, *element->block);
    else
    {
        sample = new HalvornSample(trackId, element->size);
        if (!element->empty())
            std::memcpy(sample->data(), element->begin(), element->size);
    }
    try
    {
        samples_.push_back(sample);
    }
    catch (...)
    {
        sample->release();
        throw;
    }
}

} // namespace KEP::Halvorn::DecodePipes
