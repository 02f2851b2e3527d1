#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"
#include "MXF/SDK/Templates/SafeCast.h"

namespace MXF::SDK::Metadata::Structural
{

namespace
{

// SMPTE 377M timecode data definition, 06.0E.2B.34.04.01.01.01.01.03.02.01.01.00.00.00.
constexpr Platform::Byte TIMECODE_DATA_DEFINITION[16] = {
    0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x01, 0x01, 0x03, 0x02, 0x01, 0x01, 0x00, 0x00, 0x00};
constexpr std::size_t VERSION_BYTE = 7;

bool isTimecodeDataDefinition(const Types::UniversalLabel& label)
{
    for (std::size_t i = 0; i < Types::UniversalLabel::SIZE; ++i)
    {
        if (i != VERSION_BYTE && label[i] != TIMECODE_DATA_DEFINITION[i])
            return false;
    }
    return true;
}

// The first component of a timecode track's sequence, checked as isDropFrame says.
const TimecodeComponent& timecodeComponent(const Track& track)
{
    const Sequence* seq = track.sequence();
    MXF_SDK_CHECK_AS(seq != nullptr, "seq != 0", "Timecode track has no sequence",
                     Exceptions::InvalidStructure);
    const Platform::UInt32 count = seq->componentsCount();
    MXF_SDK_CHECK_AS(count != 0, "count != 0", "Timecode track has no timecode components",
                     Exceptions::InvalidStructure);
    const StructuralComponent* component = seq->component(0);
    MXF_SDK_CHECK_AS(component != nullptr, "component != 0",
                     "Timecode track has no timecode components", Exceptions::InvalidStructure);
    const TimecodeComponent* tc = metadataSetAs<TimecodeComponent>(*component);
    MXF_SDK_CHECK_AS(tc != nullptr, "tc != 0", "Timecode component has invalid type",
                     Exceptions::InvalidStructure);
    return *tc;
}

} // namespace

ContentStorage& PrefaceHelpers::contentStorage(const Preface& preface)
{
    ContentStorage* contentStorage = preface.contentStorage();
    MXF_SDK_CHECK_AS(contentStorage != nullptr, "contentStorage != 0",
                     "Preface has no ContentStorage", Exceptions::InvalidStructure);
    return *contentStorage;
}

TimelineTrack* PackageHelpers::timecodeTrack(const GenericPackage& package)
{
    for (Platform::UInt32 i = 0; i < package.tracksCount(); ++i)
    {
        Track* track = package.track(i);
        TimelineTrack* timeline = track != nullptr ? metadataSetAs<TimelineTrack>(*track) : nullptr;
        const Sequence* sequence = timeline != nullptr ? timeline->sequence() : nullptr;
        const Types::UniversalLabel* dataDefinition =
            sequence != nullptr ? sequence->dataDefinition() : nullptr;
        if (dataDefinition != nullptr && isTimecodeDataDefinition(*dataDefinition))
            return timeline;
    }
    return nullptr;
}

bool PackageHelpers::isDropFrame(const Track& track)
{
    const Types::Boolean* b = timecodeComponent(track).dropFrame();
    MXF_SDK_CHECK_AS(b != nullptr, "b != 0",
                     "Timecode component does not have the 'dropFrame' element",
                     Exceptions::InvalidStructure);
    return b->value();
}

Utils::TimeCode PackageHelpers::startTimecode(const GenericPackage& package)
{
    const TimelineTrack* track = timecodeTrack(package);
    if (track == nullptr)
        return Utils::TimeCode();
    const bool dropFrame = isDropFrame(*track);
    const TimecodeComponent& tc = timecodeComponent(*track);
    const Types::Position* position = tc.startTimecode();
    MXF_SDK_CHECK_AS(position != nullptr, "position != 0",
                     "Timecode component does not have the 'startTimecode' element",
                     Exceptions::InvalidStructure);
    const Types::UInt16* base = tc.roundedTimecodeBase();
    MXF_SDK_CHECK_AS(base != nullptr, "base != 0",
                     "Timecode component does not have the 'roundedTimecodeBase' element",
                     Exceptions::InvalidStructure);
    return Utils::TimeCode(Templates::SafeCast<Platform::UInt8>(base->value()), position->value(),
                           dropFrame);
}

GenericPackage* PackageHelpers::packageByUID(const Preface& preface, const Types::UMID32& uid)
{
    const ContentStorage& storage = PrefaceHelpers::contentStorage(preface);
    for (Platform::UInt32 i = 0; i < storage.packagesCount(); ++i)
    {
        GenericPackage* package = storage.package(i);
        if (package == nullptr)
            continue;
        const Types::UMID32* packageUID = package->packageUID();
        MXF_SDK_CHECK_AS(packageUID != nullptr, "package.packageUID () != 0",
                         "Package has no packageUID", Exceptions::InvalidStructure);
        if (*packageUID == uid)
            return package;
    }
    return nullptr;
}

SourcePackage* EssenceContainerData::linkedPackage() const
{
    const Types::UMID32* uid = linkedPackageUID();
    // The owner is the only thing that knows all sets; a PartitionMetadata is the owner there is.
    const auto* metadata = dynamic_cast<const PartitionMetadata*>(owner());
    if (uid == nullptr || metadata == nullptr)
        return nullptr;
    for (MetadataSet* set : metadata->sets())
    {
        SourcePackage* package = metadataSetAs<SourcePackage>(*set);
        const Types::UMID32* packageUID = package != nullptr ? package->packageUID() : nullptr;
        if (packageUID != nullptr && *packageUID == *uid)
            return package;
    }
    return nullptr;
}

} // namespace MXF::SDK::Metadata::Structural
