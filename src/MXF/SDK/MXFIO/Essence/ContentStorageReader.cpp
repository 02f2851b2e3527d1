#include "MXF/SDK/MXFIO/ContentStorageReader.h"

#include "MXF/SDK/ByteCoders/BigEndian.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/MXFIO/Reader.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"
#include "MXF/SDK/Packs/PartitionPack.h"

#include <algorithm>
#include <cstring>

namespace MXF::SDK::MXFIO
{

using namespace Metadata::Structural;

namespace
{

UInt32 trackNumberOf(const KLV::Key& key)
{
    return ByteCoders::readBigEndian<UInt32>(key.data() + 12);
}

// Generic container labels, 06 0E 2B 34 04 01 01 vv 0D 01 03 01 02 mm ww xx: the mapping mm
// tells which byte says clip wrapping.
bool labelSaysClip(const Types::UniversalLabel& label)
{
    const Platform::Byte* l = label.data();
    static const Platform::Byte gc[] = {0x0D, 0x01, 0x03, 0x01, 0x02};
    if (std::memcmp(l + 8, gc, sizeof gc) != 0)
        return false;
    switch (l[13])
    {
    case 0x02: // DV
    case 0x05: // uncompressed pictures
    case 0x04: // MPEG elementary streams
    case 0x07:
    case 0x08:
    case 0x10:
        return l[15] == 0x02;
    case 0x06: // BWF and AES3
        return l[14] == 0x02 || l[14] == 0x04;
    case 0x0C: // JPEG 2000
        return l[14] == 0x02;
    default:
        return false;
    }
}

} // namespace

struct ContentStorageReader::Impl
{
    struct MetadataInfo
    {
        std::map<UInt32, UInt32> trackNumber2TrackID;
        std::optional<Types::UniversalLabel> essenceContainer;
        UInt32 bodySID = 0;
        UInt32 indexSID = 0;
        SourcePackage* sourcePackage = nullptr;
    };

    Impl(Reader& r) : reader(r) {}

    Reader& reader;
    Preface* preface = nullptr;
    FileDescriptor* descriptor = nullptr;
    MetadataInfo metadataInfo_;
    bool opAtom = false;
    bool clipWrapped = false;
    std::unique_ptr<Seeker> seeker_;
};

namespace
{

// The essence container data of the file's own package: the first whose package is in the file.
std::pair<EssenceContainerData*, SourcePackage*> fileContainer(ContentStorage& storage)
{
    for (UInt32 i = 0; i < storage.essenceContainerDataCount(); ++i)
        if (EssenceContainerData* data = storage.essenceContainerData(i))
            if (SourcePackage* linked = data->linkedPackage())
                return {data, linked};
    return {nullptr, nullptr};
}

bool hasOPAtomPattern(const Preface& preface)
{
    static const Platform::Byte opAtom[] = {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01,
                                            0x02, 0x0D, 0x01, 0x02, 0x01, 0x10};
    const Types::UniversalLabel* pattern = preface.operationalPattern();
    return pattern != nullptr && KLV::equalIgnoringVersion(pattern->data(), opAtom, sizeof opAtom);
}

struct ContentPackage
{
    // Track number to place in the package, as the delta entries of the index count them.
    std::map<UInt32, UInt32> elements;
    // The body holds one essence item: a clip, whatever the label says.
    bool singleItem = false;
};

// The elements of the first content package, in order. The system item, however many items it
// has, is one element. What could be read of a damaged package is what the seeker knows.
ContentPackage firstContentPackage(DataIO::RandomAccessDataSource& source, UInt64 bodyStart)
{
    ContentPackage package;
    std::map<UInt32, UInt32>& elements = package.elements;
    UInt32 essenceItems = 0;
    try
    {
        source.seek(bodyStart);
        KLV::KLVReader klv(source);
        bool system = false;
        for (int items = 0; items < 256 && source.remaining() != 0; ++items)
        {
            UInt64 skipped = 0;
            const std::unique_ptr<KLV::KLVItem> item = klv.readKLV(skipped, 0x1000);
            if (Packs::PartitionPack::isPartitionPack(item->key))
            {
                package.singleItem = essenceItems == 1;
                break;
            }
            if (KLV::isFillItem(item->key))
                continue;
            const UInt32 number = trackNumberOf(item->key);
            if (KLV::isGCSystemItem(item->key))
            {
                if (!system)
                    elements.emplace(number, UInt32(elements.size()));
                else
                    elements.emplace(number, elements.begin()->second);
                system = true;
                continue;
            }
            if (elements.count(number) != 0)
                break;
            ++essenceItems;
            UInt32 next = 0;
            for (const auto& e : elements)
                next = std::max(next, e.second + 1);
            elements.emplace(number, next);
            if (item->keyPosition + item->totalSize() >= source.position() + source.remaining() &&
                item->length > 0)
            {
                package.singleItem = essenceItems == 1;
                break;
            }
        }
        if (source.remaining() == 0 && essenceItems == 1)
            package.singleItem = true;
    }
    catch (const Exceptions::BaseException&)
    {
    }
    return package;
}

// Bytes of an edit unit of clip-wrapped sound, where the descriptor says; 0 when it doesn't. The
// block is one sample; an edit unit at a lower rate than the samples holds several.
UInt64 clipEditUnitSize(FileDescriptor& descriptor)
{
    UInt64 size = 0;
    if (const auto* wave = Metadata::metadataSetAs<WAVEAudioEssenceDescriptor>(descriptor))
        if (wave->blockAlign() != nullptr)
            size = wave->blockAlign()->value();
    if (size != 0)
        if (const auto* sound = Metadata::metadataSetAs<GenericSoundEssenceDescriptor>(descriptor))
            if (sound->audioSamplingRate() != nullptr && descriptor.sampleRate() != nullptr)
            {
                const Types::Rational& samples = *sound->audioSamplingRate();
                const Types::Rational& units = *descriptor.sampleRate();
                const long long num = (long long)samples.numerator() * units.denominator();
                const long long den = (long long)samples.denominator() * units.numerator();
                if (den > 0 && num > 0 && num % den == 0)
                    size *= UInt64(num / den);
            }
    return size;
}

} // namespace

ContentStorageReader::ContentStorageReader(Metadata::MetadataSetOwner& owner, Reader& reader)
    : impl_(std::make_unique<Impl>(reader))
{
    auto* metadata = dynamic_cast<Metadata::PartitionMetadata*>(&owner);
    MXF_SDK_CHECK_AS(metadata != 0, "metadata != 0",
                     "Invalid MetadataSetOwner. Only PartitionMetadata is supported.",
                     Exceptions::OperationNotAllowed);
    Preface* preface = SubclassHelpers::findSet<Preface>(*metadata, Preface::classKey());
    MXF_SDK_CHECK_AS(preface != 0, "preface != 0", "Preface not found.", Exceptions::NotFound);
    impl_->preface = preface;

    const auto [data, linkedPackage] = fileContainer(PrefaceHelpers::contentStorage(*preface));
    MXF_SDK_CHECK_AS(linkedPackage != 0, "linkedPackage != 0", "Source package not found.",
                     Exceptions::NotFound);
    const UInt32 bodySID = data->bodySID() != nullptr ? data->bodySID()->value() : 0;
    MXF_SDK_CHECK_AS(bodySID != 0, "bodySID != 0", "missing bodySID from essenceContainerdata.",
                     Exceptions::InvalidStructure);
    Partition* bodySIDPartition = reader.partitionByBodySID(bodySID);
    MXF_SDK_CHECK_AS(bodySIDPartition != 0, "bodySIDPartition != 0",
                     "Unable to find partition for the bodySID specified.", Exceptions::NotFound);
    FileDescriptor* descriptor =
        linkedPackage->descriptor() != nullptr
            ? Metadata::metadataSetAs<FileDescriptor>(*linkedPackage->descriptor())
            : nullptr;
    MXF_SDK_CHECK_AS(descriptor != 0, "descriptor != 0", "File Descriptor not found.",
                     Exceptions::NotFound);
    const Types::UniversalLabel* essenceContainerUL = descriptor->essenceContainer();
    MXF_SDK_CHECK_AS(essenceContainerUL != 0, "essenceContainerUL != 0",
                     "Essence Container UL not found.", Exceptions::NotFound);

    auto& info = impl_->metadataInfo_;
    info.bodySID = bodySID;
    info.indexSID = data->indexSID() != nullptr ? data->indexSID()->value() : 0;
    info.sourcePackage = linkedPackage;
    info.essenceContainer = *essenceContainerUL;
    impl_->descriptor = descriptor;
    for (UInt32 i = 0; i < linkedPackage->tracksCount(); ++i)
        if (Track* track = linkedPackage->track(i))
            if (track->trackNumber() != nullptr && track->trackID() != nullptr &&
                track->trackNumber()->value() != 0)
                info.trackNumber2TrackID[track->trackNumber()->value()] = track->trackID()->value();

    impl_->opAtom = hasOPAtomPattern(*preface);
    ContentPackage package = firstContentPackage(reader.source(), bodySIDPartition->bodyStart());
    // Writers label clip-wrapped essence as frame-wrapped at times, so an OP-Atom body of one
    // essence item counts as a clip too.
    impl_->clipWrapped =
        labelSaysClip(*essenceContainerUL) || (impl_->opAtom && package.singleItem);
    const UInt64 constantSize = impl_->clipWrapped ? clipEditUnitSize(*descriptor) : 0;
    impl_->seeker_ =
        std::make_unique<Seeker>(reader, bodySID, info.indexSID, std::move(package.elements),
                                 impl_->clipWrapped, constantSize);
}

ContentStorageReader::~ContentStorageReader() = default;

Seeker& ContentStorageReader::seeker()
{
    return *impl_->seeker_;
}

Preface& ContentStorageReader::preface() const
{
    return *impl_->preface;
}

SourcePackage& ContentStorageReader::sourcePackage() const
{
    return *impl_->metadataInfo_.sourcePackage;
}

FileDescriptor& ContentStorageReader::descriptor() const
{
    return *impl_->descriptor;
}

FileDescriptor* ContentStorageReader::trackDescriptor(UInt32 trackNumber) const
{
    const auto* multiple = Metadata::metadataSetAs<MultipleDescriptor>(*impl_->descriptor);
    if (multiple == nullptr)
        return impl_->descriptor;
    const auto id = impl_->metadataInfo_.trackNumber2TrackID.find(trackNumber);
    if (id == impl_->metadataInfo_.trackNumber2TrackID.end())
        return nullptr;
    for (UInt32 i = 0; i < multiple->fileDescriptorsCount(); ++i)
        if (FileDescriptor* one = multiple->fileDescriptor(i))
            if (one->linkedTrackID() != nullptr && one->linkedTrackID()->value() == id->second)
                return one;
    return nullptr;
}

const Types::UniversalLabel& ContentStorageReader::essenceContainer() const
{
    return *impl_->metadataInfo_.essenceContainer;
}

UInt32 ContentStorageReader::bodySID() const
{
    return impl_->metadataInfo_.bodySID;
}

UInt32 ContentStorageReader::indexSID() const
{
    return impl_->metadataInfo_.indexSID;
}

bool ContentStorageReader::isOPAtom() const
{
    return impl_->opAtom;
}

bool ContentStorageReader::isClipWrapped() const
{
    return impl_->clipWrapped;
}

UInt32 ContentStorageReader::trackID(UInt32 trackNumber) const
{
    const auto it = impl_->metadataInfo_.trackNumber2TrackID.find(trackNumber);
    MXF_SDK_CHECK_AS(it != impl_->metadataInfo_.trackNumber2TrackID.end(),
                     "it != impl_ -> metadataInfo_.trackNumber2TrackID.end ()",
                     "TrackNumber has no trackID correnpondent.", Exceptions::NotFound);
    return it->second;
}

namespace
{

Track* trackOf(SourcePackage& package, UInt32 trackNumber)
{
    for (UInt32 i = 0; i < package.tracksCount(); ++i)
        if (Track* track = package.track(i))
            if (track->trackNumber() != nullptr && track->trackNumber()->value() == trackNumber)
                return track;
    return nullptr;
}

} // namespace

Types::Rational ContentStorageReader::editRate(UInt32 trackNumber)
{
    SourcePackage* sourcePackage = impl_->metadataInfo_.sourcePackage;
    MXF_SDK_CHECK_AS(sourcePackage != 0, "sourcePackage != 0", "Source package not found.",
                     Exceptions::BrokenLink);
    Track* track = trackOf(*sourcePackage, trackNumber);
    MXF_SDK_CHECK_AS(track != 0, "track != 0", "Track not found.", Exceptions::NotFound);
    auto* timeline = Metadata::metadataSetAs<TimelineTrack>(*track);
    const bool valid = timeline != nullptr && timeline->editRate() != nullptr &&
                       !timeline->editRate()->isUndefined() &&
                       timeline->editRate()->numerator() != 0;
    MXF_SDK_CHECK_AS(valid, "editRate != 0", "Track with invalid editRate",
                     Exceptions::InvalidElement);
    return *timeline->editRate();
}

Int64 ContentStorageReader::trackDuration(UInt32 trackNumberValue)
{
    SourcePackage* sourcePackage = impl_->metadataInfo_.sourcePackage;
    MXF_SDK_CHECK_AS(sourcePackage != 0, "sourcePackage != 0", "Source package not found.",
                     Exceptions::BrokenLink);
    Track* track = trackOf(*sourcePackage, trackNumberValue);
    MXF_SDK_CHECK_AS(track != 0, "track != 0", "Track not found.", Exceptions::NotFound);
    editRate(trackNumberValue);
    Sequence* sequence = track->sequence();
    MXF_SDK_CHECK_AS(sequence != 0, "sequence != 0", "Sequence not present in track.",
                     Exceptions::InvalidElement);
    Int64 duration = sequence->duration() != nullptr ? sequence->duration()->value() : -1;
    if (duration <= 0 || impl_->opAtom)
    {
        const UInt32 trackNumber = trackNumberValue;
        MXF_SDK_CHECK_AS(trackNumber != 0, "trackNumber != 0", "Track Number not found.",
                         Exceptions::NotFound);
        // From the essence: the index's last entry, else the walk or the clip's length.
        Seeker& seeker = *impl_->seeker_;
        Int64 fromEssence = seeker.indexDuration();
        if (fromEssence == 0 || impl_->clipWrapped)
        {
            const Int64 walked = seeker.walkedCount(trackNumber);
            if (fromEssence == 0 || (impl_->clipWrapped && walked > 1))
                fromEssence = walked;
        }
        if (duration > 0 && fromEssence > 0)
        {
            // The package may not promise an edit unit more than the essence holds.
            const Int64 sourcePackageDuration = duration;
            const Int64 trackDuration = fromEssence;
            MXF_SDK_CHECK_AS((sourcePackageDuration - trackDuration) < 1,
                             "(sourcePackageDuration - trackDuration) < 1",
                             "duration with bad value.", Exceptions::InvalidElement);
            duration = std::min(duration, fromEssence);
        }
        else if (duration <= 0)
            duration = fromEssence;
    }
    impl_->seeker_->requireTrackNumber(trackNumberValue);
    return duration;
}

Int64 ContentStorageReader::packageDuration()
{
    Int64 longest = 0;
    for (const auto& [number, id] : impl_->metadataInfo_.trackNumber2TrackID)
        if (impl_->seeker_->trackNumberExists(number))
            longest = std::max(longest, trackDuration(number));
    return longest;
}

std::unique_ptr<BaseElementEssenceReader> ContentStorageReader::elementReader(UInt32 trackNumber)
{
    const Int64 duration = trackDuration(trackNumber);
    if (impl_->clipWrapped)
        return std::make_unique<ElementEssenceReaderClipWrap>(
            *impl_->seeker_, impl_->reader.source(), trackNumber, duration);
    return std::make_unique<ElementEssenceReader>(*impl_->seeker_, impl_->reader.source(),
                                                  trackNumber, duration);
}

std::vector<Platform::Byte> ContentStorageReader::readFrame(UInt32 trackNumber, Int64 position)
{
    std::unique_ptr<BaseElementEssenceReader> reader = elementReader(trackNumber);
    reader->seek(position);
    std::vector<Platform::Byte> data;
    reader->read(data);
    return data;
}

} // namespace MXF::SDK::MXFIO
