// The header metadata of every clean fixture, read through the typed classes and held against
// what ffprobe and mediainfo say about the file (expected/structural/NAME.txt, flattened from
// their output by tests/data/make-structural-expectations.sh).

#include "MXF/SDK/Metadata/MetadataTestSupport.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

using namespace MXF::SDK;
using namespace MXF::SDK::Metadata;
using namespace MXF::SDK::Metadata::Structural;
using namespace Halvorn::Test::Metadata;

namespace
{

// One line of the expectations: its first word, the other plain words, and the key=value ones.
struct Record
{
    std::string kind;
    std::vector<std::string> words;
    std::map<std::string, std::string> fields;

    const std::string& operator[](const std::string& key) const
    {
        const auto found = fields.find(key);
        if (found == fields.end())
            throw std::runtime_error("no field " + key + " in a " + kind + " record");
        return found->second;
    }
    long long number(const std::string& key) const { return std::stoll((*this)[key]); }
    // "AxB" and the like: the two numbers either side of `separator`.
    std::pair<long long, long long> pair(const std::string& key, char separator) const
    {
        const std::string& text = (*this)[key];
        const std::size_t at = text.find(separator);
        return {std::stoll(text.substr(0, at)), std::stoll(text.substr(at + 1))};
    }
};

std::vector<Record> expectations(const std::string& name)
{
    std::vector<Record> records;
    for (const std::string& line : dataLines("expected/structural/" + name + ".txt"))
    {
        std::istringstream words(line);
        Record record;
        words >> record.kind;
        for (std::string word; words >> word;)
        {
            const std::size_t equals = word.find('=');
            if (equals == std::string::npos)
                record.words.push_back(word);
            else
                record.fields[word.substr(0, equals)] = word.substr(equals + 1);
        }
        records.push_back(record);
    }
    return records;
}

const Record& only(const std::vector<Record>& records, const std::string& kind)
{
    for (const Record& record : records)
        if (record.kind == kind)
            return record;
    throw std::runtime_error("no " + kind + " record");
}

template <typename UID>
Bytes bytesOf(const UID& uid)
{
    return Bytes(uid.data(), uid.data() + uid.size());
}

// Bytes 8..15 of a label, as mediainfo's CodecID shows them.
Bytes tail(const Types::UniversalLabel* label)
{
    return label != nullptr ? Bytes(label->data() + 8, label->data() + 16) : Bytes();
}

std::wstring wide(const std::string& text)
{
    std::wstring result;
    for (char c : text)
        result += wchar_t(c == '_' ? ' ' : c);
    return result;
}

std::vector<std::string> cleanFixtures()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(testData("expected/structural")))
        names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::unique_ptr<PartitionMetadata> readFixtureHeader(const std::string& name, const Record& header,
                                                     Bytes& file)
{
    file = fileBytes(name + ".mxf");
    std::size_t afterPack = std::size_t(header.number("offset"));
    parseItem(file, afterPack);
    auto metadata = std::make_unique<PartitionMetadata>(dictionary());
    DataIO::Memory::MemoryDataSource source(file.data(), file.size());
    source.seek(afterPack);
    metadata->read(source, Platform::UInt64(header.number("byte_count")));
    return metadata;
}

TimelineTrack* trackWithID(const GenericPackage& package, long long id)
{
    for (Platform::UInt32 i = 0; i < package.tracksCount(); ++i)
    {
        TimelineTrack* track = metadataSetAs<TimelineTrack>(*package.track(i));
        if (track != nullptr && track->trackID() != nullptr && track->trackID()->value() == id)
            return track;
    }
    return nullptr;
}

// The file descriptor of a track of the file package: a sub-descriptor linked to the track, or
// the package's descriptor itself.
FileDescriptor* descriptorOf(const SourcePackage& package, long long trackID)
{
    GenericDescriptor* descriptor = package.descriptor();
    if (descriptor == nullptr)
        return nullptr;
    if (MultipleDescriptor* multiple = metadataSetAs<MultipleDescriptor>(*descriptor))
    {
        for (Platform::UInt32 i = 0; i < multiple->fileDescriptorsCount(); ++i)
        {
            FileDescriptor* sub = multiple->fileDescriptor(i);
            if (sub != nullptr && sub->linkedTrackID() != nullptr &&
                sub->linkedTrackID()->value() == trackID)
                return sub;
        }
        return nullptr;
    }
    return metadataSetAs<FileDescriptor>(*descriptor);
}

// The track of `id` in both packages: edit rate, duration of its one clip, and the material clip
// pointing at the file package's track.
void checkTrack(GenericPackage& material, SourcePackage& file, const Types::UMID32& fileUID,
                const Record& expected, std::pair<long long, long long> rate, double decimalRate)
{
    for (GenericPackage* package : {&material, static_cast<GenericPackage*>(&file)})
    {
        SCOPED_TRACE(package == &material ? "material package" : "file package");
        const TimelineTrack* track = trackWithID(*package, expected.number("track"));
        ASSERT_NE(track, nullptr);
        ASSERT_NE(track->editRate(), nullptr);
        if (rate.second != 0)
        {
            EXPECT_EQ(track->editRate()->numerator(), rate.first);
            EXPECT_EQ(track->editRate()->denominator(), rate.second);
        }
        EXPECT_NEAR(double(track->editRate()->numerator()) / track->editRate()->denominator(),
                    decimalRate, 0.0005);
        ASSERT_NE(track->origin(), nullptr);
        EXPECT_EQ(track->origin()->value(), 0);
        ASSERT_NE(track->trackNumber(), nullptr);
        const Sequence* sequence = track->sequence();
        ASSERT_NE(sequence, nullptr);
        ASSERT_NE(sequence->duration(), nullptr);
        EXPECT_EQ(sequence->duration()->value(), expected.number("duration"));
        ASSERT_EQ(sequence->componentsCount(), 1u);
        const SourceClip* clip = metadataSetAs<SourceClip>(*sequence->component(0));
        ASSERT_NE(clip, nullptr);
        ASSERT_NE(clip->duration(), nullptr);
        EXPECT_EQ(clip->duration()->value(), expected.number("duration"));
        ASSERT_NE(clip->dataDefinition(), nullptr);
        EXPECT_EQ(bytesOf(*clip->dataDefinition()), bytesOf(*sequence->dataDefinition()));
        ASSERT_NE(clip->startPosition(), nullptr);
        EXPECT_EQ(clip->startPosition()->value(), 0);
        if (package == &material)
        {
            ASSERT_NE(clip->sourcePackageID(), nullptr);
            EXPECT_EQ(*clip->sourcePackageID(), fileUID);
            ASSERT_NE(clip->sourceTrackID(), nullptr);
            EXPECT_EQ(clip->sourceTrackID()->value(), expected.number("track"));
        }
    }
}

class StructureFromOutside : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { registerStructuralSets(); }
};

TEST_F(StructureFromOutside, EveryCleanFixtureAgreesWithFfprobeAndMediainfo)
{
    const std::vector<std::string> names = cleanFixtures();
    ASSERT_EQ(names.size(), 8u);
    for (const std::string& name : names)
    {
        SCOPED_TRACE(name);
        const std::vector<Record> expected = expectations(name);
        Bytes file;
        const auto metadata = readFixtureHeader(name, only(expected, "header"), file);

        // Preface, its identification and the operational pattern.
        Preface* preface = SubclassHelpers::findSet<Preface>(*metadata, Preface::classKey());
        ASSERT_NE(preface, nullptr);
        EXPECT_EQ(preface, metadataSetAs<Preface>(metadata->preface()));
        ASSERT_NE(preface->operationalPattern(), nullptr);
        EXPECT_EQ(bytesOf(*preface->operationalPattern()),
                  hexBytes(only(expected, "operational_pattern").words.at(0)));
        ASSERT_EQ(preface->identificationsCount(), 1u);
        const Identification* identification = preface->identification(0);
        ASSERT_NE(identification, nullptr);
        const Record& writer = only(expected, "identification");
        EXPECT_EQ(identification->companyName()->value(), wide(writer["company"]));
        EXPECT_EQ(identification->productName()->value(), wide(writer["product"]));
        EXPECT_EQ(identification->platform()->value(), wide(writer["platform"]));

        // Packages, by the UMIDs ffprobe reports.
        ContentStorage& storage = PrefaceHelpers::contentStorage(*preface);
        EXPECT_EQ(&storage, metadataSetAs<ContentStorage>(metadata->contentStorage()));
        EXPECT_EQ(storage.packagesCount(), 2u);
        std::map<std::string, GenericPackage*> packages;
        std::map<std::string, Types::UMID32> uids;
        for (const Record& record : expected)
        {
            if (record.kind != "package")
                continue;
            const std::string& which = record.words.at(0);
            const Types::UMID32 uid(hexBytes(record.words.at(1)).data());
            uids.emplace(which, uid);
            GenericPackage* package = PackageHelpers::packageByUID(*preface, uid);
            ASSERT_NE(package, nullptr) << which;
            EXPECT_EQ(package->tracksCount(), std::stoul(record["tracks"])) << which;
            packages[which] = package;
        }
        MaterialPackage* material = metadataSetAs<MaterialPackage>(*packages.at("material"));
        SourcePackage* source = metadataSetAs<SourcePackage>(*packages.at("file"));
        ASSERT_NE(material, nullptr);
        ASSERT_NE(source, nullptr);
        EXPECT_EQ(metadataSetAs<SourcePackage>(*material), nullptr);

        // The essence container data ties the file package to the body and index streams.
        ASSERT_EQ(storage.essenceContainerDataCount(), 1u);
        const EssenceContainerData* data = storage.essenceContainerData(0);
        ASSERT_NE(data, nullptr);
        const Record& sids = only(expected, "sids");
        ASSERT_NE(data->bodySID(), nullptr);
        EXPECT_EQ(data->bodySID()->value(), sids.number("body"));
        ASSERT_NE(data->indexSID(), nullptr);
        EXPECT_EQ(data->indexSID()->value(), sids.number("index"));
        EXPECT_EQ(*data->linkedPackageUID(), uids.at("file"));
        EXPECT_EQ(data->linkedPackage(), source);

        // Time code of both packages.
        for (const Record& record : expected)
        {
            if (record.kind != "timecode")
                continue;
            SCOPED_TRACE(record.words.at(0));
            GenericPackage& package = record.words.at(0) == "material"
                                          ? *material
                                          : *static_cast<GenericPackage*>(source);
            const TimelineTrack* track = PackageHelpers::timecodeTrack(package);
            ASSERT_NE(track, nullptr);
            EXPECT_EQ(track->trackID()->value(), record.number("track"));
            EXPECT_EQ(PackageHelpers::isDropFrame(*track), record["drop"] == "1");
            EXPECT_EQ(track->sequence()->duration()->value(), record.number("duration"));
            const TimecodeComponent* tc =
                metadataSetAs<TimecodeComponent>(*track->sequence()->component(0));
            ASSERT_NE(tc, nullptr);
            EXPECT_EQ(tc->roundedTimecodeBase()->value(), record.number("rate"));
            EXPECT_EQ(tc->dropFrame()->value(), record["drop"] == "1");
            const Utils::TimeCode start = PackageHelpers::startTimecode(package);
            EXPECT_EQ(start.toString(), wide(record["start"]));
            EXPECT_EQ(start.frameRate(), record.number("rate"));
            EXPECT_EQ(start.dropFrame(), record["drop"] == "1");
        }

        // Picture and sound tracks, and their descriptors in the file package.
        for (const Record& record : expected)
        {
            if (record.kind != "video" && record.kind != "audio")
                continue;
            SCOPED_TRACE(record.kind + " track " + record["track"]);
            if (record.kind == "video")
            {
                const auto rate = record.pair("rate", '/');
                checkTrack(*material, *source, uids.at("file"), record, rate,
                           double(rate.first) / double(rate.second));
            }
            else
            {
                checkTrack(*material, *source, uids.at("file"), record, {0, 0},
                           std::stod(record["rate"]));
            }
            const FileDescriptor* descriptor = descriptorOf(*source, record.number("track"));
            ASSERT_NE(descriptor, nullptr);
            EXPECT_EQ(tail(descriptor->essenceContainer()), hexBytes(record["container"]));
            if (record.kind == "video")
            {
                const auto* picture = metadataSetAs<GenericPictureEssenceDescriptor>(*descriptor);
                ASSERT_NE(picture, nullptr);
                ASSERT_NE(picture->frameLayout(), nullptr);
                const int layout = picture->frameLayout()->value();
                EXPECT_EQ(layout != 0, record["scan"] == "Interlaced");
                const auto stored = record.pair("stored", 'x');
                EXPECT_EQ(picture->storedWidth()->value(), stored.first);
                EXPECT_EQ(picture->storedHeight()->value(), stored.second);
                // Separate fields: the descriptor gives the other sizes for one field.
                const long long lines = layout == 1 ? 2 : 1;
                const auto sampled = record.pair("sampled", 'x');
                EXPECT_EQ(picture->sampledWidth()->value(), sampled.first);
                EXPECT_EQ(picture->sampledHeight()->value() * lines, sampled.second);
                const std::string& display = record["display"];
                const std::size_t x = display.find('x'), plus = display.find('+');
                EXPECT_EQ(picture->displayWidth()->value(), std::stoll(display.substr(0, x)));
                EXPECT_EQ(picture->displayHeight()->value() * lines,
                          std::stoll(display.substr(x + 1, plus - x - 1)));
                EXPECT_EQ(picture->displayYOffset()->value() * lines,
                          std::stoll(display.substr(plus + 1)));
                const auto aspect = record.pair("aspect", ':');
                ASSERT_NE(picture->aspectRatio(), nullptr);
                EXPECT_EQ(*picture->aspectRatio(), Types::Rational(Platform::Int32(aspect.first),
                                                                   Platform::Int32(aspect.second)));
                EXPECT_EQ(tail(picture->pictureEssenceCoding()), hexBytes(record["coding"]));
            }
            else
            {
                const auto* sound = metadataSetAs<GenericSoundEssenceDescriptor>(*descriptor);
                ASSERT_NE(sound, nullptr);
                ASSERT_NE(sound->audioSamplingRate(), nullptr);
                EXPECT_EQ(*sound->audioSamplingRate(),
                          Types::Rational(Platform::Int32(record.number("sampling")), 1));
                ASSERT_NE(sound->channelCount(), nullptr);
                EXPECT_EQ(sound->channelCount()->value(), record.number("channels"));
                ASSERT_NE(sound->quantizationBits(), nullptr);
                EXPECT_EQ(sound->quantizationBits()->value(), record.number("bits"));
            }
        }
    }
}

} // namespace
