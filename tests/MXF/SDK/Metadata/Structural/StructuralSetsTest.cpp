// Typed sets made in memory: registration, the checked casts between the classes, the accessor
// forms, and the helpers' checks with their exact texts.

#include "MXF/SDK/Metadata/MetadataSetFactory.h"
#include "MXF/SDK/Metadata/MetadataTestSupport.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"
#include "MXF/SDK/Types/Reference.h"

#include <gtest/gtest.h>

using namespace MXF::SDK;
using namespace MXF::SDK::Metadata;
using namespace MXF::SDK::Metadata::Structural;
using namespace Halvorn::Test::Metadata;

namespace
{

class StructuralSets : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { registerStructuralSets(); }

    template <typename T>
    T& make()
    {
        T* typed = metadataSetAs<T>(metadata_.createSet(T::classKey()));
        if (typed == nullptr)
            throw std::runtime_error("not made as its class");
        return *typed;
    }

    PartitionMetadata metadata_{dictionary()};
};

// A SMPTE 377M data definition label: 01 picture, 02 sound, timecode 01.03.02.01.01.
Types::UniversalLabel dataDefinition(std::uint8_t kind)
{
    const Platform::Byte timecode[16] = {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x01,
                                         0x01, 0x03, 0x02, kind, 0x01, 0x00, 0x00, 0x00};
    return Types::UniversalLabel(timecode);
}
constexpr std::uint8_t TIMECODE = 0x01, PICTURE_KIND = 0x02;

TEST_F(StructuralSets, EveryClassIsRegisteredUnderItsKeyAndMadeAsItself)
{
    int classes = 0;
#define CHECK_CLASS(Class)                                                                         \
    EXPECT_TRUE(MetadataSetFactory::instance().hasCreator(Class::classKey())) << #Class;           \
    EXPECT_NE(metadataSetAs<Class>(metadata_.createSet(Class::classKey())), nullptr) << #Class;    \
    ++classes;
    MXF_SDK_METADATA_FOR_EACH_STRUCTURAL_SET(CHECK_CLASS)
#undef CHECK_CLASS
    EXPECT_EQ(classes, 40);
    // Registering again changes nothing.
    registerStructuralSets();
    EXPECT_NE(metadataSetAs<Preface>(metadata_.createSet(Preface::classKey())), nullptr);
    // The keys are the dictionary's.
    EXPECT_EQ(Preface::classKey(), KLV::Key(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2f.00"));
    EXPECT_EQ(TrackableMetadataSet::classKey(),
              KLV::Key(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.01.00"));
    EXPECT_EQ(UnknownChunkSet::classKey(),
              KLV::Key(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.4f.00"));
}

TEST_F(StructuralSets, ChecksCastsFollowTheClassTree)
{
    MetadataSet& clip = make<SourceClip>();
    MetadataSet& dmClip = make<DMSourceClip>();
    MetadataSet& event = make<EventTrack>();
    EXPECT_NE(metadataSetAs<SourceClip>(clip), nullptr);
    EXPECT_NE(metadataSetAs<SourceClip>(dmClip), nullptr);
    EXPECT_NE(metadataSetAs<StructuralComponent>(dmClip), nullptr);
    EXPECT_NE(metadataSetAs<TrackableMetadataSet>(dmClip), nullptr);
    EXPECT_EQ(metadataSetAs<DMSourceClip>(clip), nullptr);
    EXPECT_EQ(metadataSetAs<TimelineTrack>(event), nullptr);
    EXPECT_NE(metadataSetAs<Track>(event), nullptr);
    EXPECT_EQ(metadataSetAs<SourceClip>(event), nullptr);
    const MetadataSet& constant = dmClip;
    EXPECT_NE(metadataSetAs<SourceClip>(constant), nullptr);
    EXPECT_NE(metadataSetAs<AES3AudioEssenceDescriptor>(make<AES3AudioEssenceDescriptor>()),
              nullptr);
    EXPECT_NE(metadataSetAs<GenericSoundEssenceDescriptor>(make<AES3AudioEssenceDescriptor>()),
              nullptr);
    EXPECT_EQ(metadataSetAs<TrackableMetadataSet>(make<Identification>()), nullptr);
}

TEST_F(StructuralSets, AccessorsReadWriteAndSurviveARoundTrip)
{
    Preface& preface = make<Preface>();
    ContentStorage& storage = make<ContentStorage>();
    MaterialPackage& package = make<MaterialPackage>();
    TimelineTrack& track = make<TimelineTrack>();
    Sequence& sequence = make<Sequence>();
    SourceClip& clip = make<SourceClip>();

    EXPECT_EQ(preface.contentStorage(), nullptr);
    preface.contentStorage(&storage);
    EXPECT_EQ(preface.contentStorage(), &storage);
    EXPECT_EQ(storage.packagesCount(), 0u);
    storage.addPackage(package);
    EXPECT_EQ(storage.packagesCount(), 1u);
    EXPECT_EQ(storage.package(0), &package);
    EXPECT_EQ(thrownMessage<Exceptions::IndexOutOfBounds>([&] { storage.package(1); }),
              L"Index out of bounds");
    package.addTrack(track);
    track.sequence(&sequence);
    sequence.addComponent(clip);
    EXPECT_EQ(sequence.componentsCount(), 1u);
    EXPECT_EQ(sequence.component(0), &clip);

    EXPECT_EQ(track.trackID(), nullptr);
    track.trackID(Types::UInt32(7));
    track.trackNumber(Types::UInt32(0x15010500));
    track.editRate(Types::Rational(30000, 1001));
    track.origin(Types::Position(2));
    sequence.dataDefinition(dataDefinition(PICTURE_KIND));
    sequence.duration(Types::Length(1234));
    clip.startPosition(Types::Position(10));
    clip.sourceTrackID(Types::UInt32(3));
    const Platform::Byte umid[32] = {0x06, 0x0A, 0x2B, 0x34, 1,  2,  3,  4,  5,  6,  7,
                                     8,    9,    10,   11,   12, 13, 14, 15, 16, 17, 18,
                                     19,   20,   21,   22,   23, 24, 25, 26, 27, 28};
    package.packageUID(Types::UMID32(umid));
    preface.addEssenceContainer(dataDefinition(PICTURE_KIND));
    preface.addEssenceContainer(dataDefinition(TIMECODE));
    preface.removeEssenceContainer(0);
    ASSERT_EQ(preface.essenceContainersCount(), 1u);
    EXPECT_EQ(*preface.essenceContainer(0), dataDefinition(TIMECODE));
    EXPECT_EQ(thrownMessage<Exceptions::IndexOutOfBounds>([&] { preface.essenceContainer(1); }),
              L"Index out of bounds");

    // Written and read back, the values come through the typed classes of the new sets.
    const Bytes bytes = written(metadata_);
    const auto back = readHeader(bytes);
    const Preface* readPreface = metadataSetAs<Preface>(back->preface());
    ASSERT_NE(readPreface, nullptr);
    const GenericPackage* readPackage =
        PackageHelpers::packageByUID(*readPreface, Types::UMID32(umid));
    ASSERT_NE(readPackage, nullptr);
    EXPECT_NE(metadataSetAs<const MaterialPackage>(*readPackage), nullptr);
    ASSERT_EQ(readPackage->tracksCount(), 1u);
    const TimelineTrack* readTrack = metadataSetAs<TimelineTrack>(*readPackage->track(0));
    ASSERT_NE(readTrack, nullptr);
    EXPECT_EQ(readTrack->trackID()->value(), 7u);
    EXPECT_EQ(readTrack->trackNumber()->value(), 0x15010500u);
    EXPECT_EQ(readTrack->editRate()->numerator(), 30000);
    EXPECT_EQ(readTrack->editRate()->denominator(), 1001);
    EXPECT_EQ(readTrack->origin()->value(), 2);
    ASSERT_NE(readTrack->sequence(), nullptr);
    EXPECT_EQ(readTrack->sequence()->duration()->value(), 1234);
    EXPECT_EQ(*readTrack->sequence()->dataDefinition(), dataDefinition(PICTURE_KIND));
    const SourceClip* readClip = metadataSetAs<SourceClip>(*readTrack->sequence()->component(0));
    ASSERT_NE(readClip, nullptr);
    EXPECT_EQ(readClip->startPosition()->value(), 10);
    EXPECT_EQ(readClip->sourceTrackID()->value(), 3u);
    EXPECT_EQ(readClip->sourcePackageID(), nullptr);
    EXPECT_EQ(metadataSetAs<Preface>(back->preface())->essenceContainersCount(), 1u);
}

TEST_F(StructuralSets, APrefaceWithoutContentStorageFailsEachHelper)
{
    Preface& preface = make<Preface>();
    const std::wstring expected = L"contentStorage != 0: Preface has no ContentStorage";
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>(
                  [&] { PrefaceHelpers::contentStorage(preface); }),
              expected);
    const Platform::Byte umid[32] = {};
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>(
                  [&] { PackageHelpers::packageByUID(preface, Types::UMID32(umid)); }),
              expected);
    // Set and cleared again, which the required reference allows only with force.
    ContentStorage& storage = make<ContentStorage>();
    preface.contentStorage(&storage);
    EXPECT_EQ(&PrefaceHelpers::contentStorage(preface), &storage);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidChange>([&] { preface.contentStorage(nullptr); }),
              L"Value 'ContentStorage' is required according to Schema");
    preface.contentStorage(nullptr, true);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>(
                  [&] { PrefaceHelpers::contentStorage(preface); }),
              expected);
}

TEST_F(StructuralSets, PackageByUIDComparesUntilAPackageWithoutUID)
{
    Preface& preface = make<Preface>();
    ContentStorage& storage = make<ContentStorage>();
    preface.contentStorage(&storage);
    Platform::Byte first[32] = {0x06, 0x0A, 0x2B, 0x34};
    Platform::Byte second[32] = {0x06, 0x0A, 0x2B, 0x34};
    second[31] = 1;
    SourcePackage& file = make<SourcePackage>();
    file.packageUID(Types::UMID32(first));
    storage.addPackage(file);
    EXPECT_EQ(PackageHelpers::packageByUID(preface, Types::UMID32(first)), &file);
    EXPECT_EQ(PackageHelpers::packageByUID(preface, Types::UMID32(second)), nullptr);
    MaterialPackage& empty = make<MaterialPackage>();
    storage.addPackage(empty);
    // Found before the empty one is met; not found, the walk meets it.
    EXPECT_EQ(PackageHelpers::packageByUID(preface, Types::UMID32(first)), &file);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>(
                  [&] { PackageHelpers::packageByUID(preface, Types::UMID32(second)); }),
              L"package.packageUID () != 0: Package has no packageUID");
}

TEST_F(StructuralSets, IsDropFrameChecksInOrder)
{
    TimelineTrack& track = make<TimelineTrack>();
    const auto dropFrame = [&] { return PackageHelpers::isDropFrame(track); };
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>(dropFrame),
              L"seq != 0: Timecode track has no sequence");

    Sequence& sequence = make<Sequence>();
    track.sequence(&sequence);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>(dropFrame),
              L"count != 0: Timecode track has no timecode components");

    // A component that refers to no set of the partition.
    CollectionReferenceElement* components = asCollectionReferenceElement(sequence.element(
        Types::UniversalLabel(L"06.0e.2b.34.01.01.01.02.06.01.01.04.06.09.00.00")));
    ASSERT_NE(components, nullptr);
    Platform::Byte nowhere[16] = {0xA0};
    nowhere[15] = 0x99;
    components->add(std::make_unique<Types::StrongReference>(Types::UUID(nowhere)));
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>(dropFrame),
              L"component != 0: Timecode track has no timecode components");
    sequence.removeComponent(0);

    SourceClip& clip = make<SourceClip>();
    sequence.addComponent(clip);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>(dropFrame),
              L"tc != 0: Timecode component has invalid type");

    TimecodeComponent& tc = make<TimecodeComponent>();
    sequence.removeComponent(0);
    sequence.addComponent(tc);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>(dropFrame),
              L"b != 0: Timecode component does not have the 'dropFrame' element");

    tc.dropFrame(Types::Boolean(true));
    EXPECT_TRUE(PackageHelpers::isDropFrame(track));
    tc.dropFrame(Types::Boolean(false));
    EXPECT_FALSE(PackageHelpers::isDropFrame(track));
}

TEST_F(StructuralSets, StartTimecodeComesFromTheFirstTimecodeTrack)
{
    MaterialPackage& package = make<MaterialPackage>();
    EXPECT_EQ(PackageHelpers::timecodeTrack(package), nullptr);
    EXPECT_FALSE(PackageHelpers::startTimecode(package).valid());
    EXPECT_EQ(PackageHelpers::startTimecode(package).toString(), L"--:--:--:--");

    // A picture track first: not a timecode track.
    const auto addTrack = [&](std::uint8_t kind) -> std::pair<TimelineTrack*, Sequence*>
    {
        TimelineTrack& track = make<TimelineTrack>();
        Sequence& sequence = make<Sequence>();
        sequence.dataDefinition(dataDefinition(kind));
        track.sequence(&sequence);
        package.addTrack(track);
        return {&track, &sequence};
    };
    addTrack(PICTURE_KIND);
    EXPECT_EQ(PackageHelpers::timecodeTrack(package), nullptr);
    const auto [track, sequence] = addTrack(TIMECODE);
    addTrack(TIMECODE);
    EXPECT_EQ(PackageHelpers::timecodeTrack(package), track);

    TimecodeComponent& tc = make<TimecodeComponent>();
    sequence->addComponent(tc);
    tc.dropFrame(Types::Boolean(true));
    EXPECT_EQ(thrownMessage<Exceptions::InvalidStructure>(
                  [&] { PackageHelpers::startTimecode(package); }),
              L"position != 0: Timecode component does not have the 'startTimecode' element");
    // 10:00:00;00 at 29.97 drop frame: 10 hours less 18 frames a minute but every tenth.
    tc.startTimecode(Types::Position(1078920));
    tc.roundedTimecodeBase(Types::UInt16(30));
    const Utils::TimeCode start = PackageHelpers::startTimecode(package);
    EXPECT_EQ(start.toString(false, true), L"10:00:00:00 (DF)");
    EXPECT_EQ(start.frameRate(), 30);
    tc.roundedTimecodeBase(Types::UInt16(300));
    EXPECT_EQ(
        thrownMessage<Exceptions::InvalidLength>([&] { PackageHelpers::startTimecode(package); }),
        L"Type size exceeded");
}

TEST_F(StructuralSets, EssenceContainerDataFindsItsLinkedPackage)
{
    EssenceContainerData& data = make<EssenceContainerData>();
    EXPECT_EQ(data.linkedPackage(), nullptr);
    Platform::Byte uid[32] = {0x06, 0x0A, 0x2B, 0x34};
    uid[31] = 5;
    data.linkedPackageUID(Types::UMID32(uid));
    EXPECT_EQ(data.linkedPackage(), nullptr);
    make<MaterialPackage>().packageUID(Types::UMID32(uid));
    EXPECT_EQ(data.linkedPackage(), nullptr);
    SourcePackage& file = make<SourcePackage>();
    file.packageUID(Types::UMID32(uid));
    EXPECT_EQ(data.linkedPackage(), &file);
}

} // namespace
