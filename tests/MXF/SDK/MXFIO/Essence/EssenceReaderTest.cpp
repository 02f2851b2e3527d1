// Essence read from every fixture, held against ffmpeg: the MD5 of each track's data against
// expected/NAME.essence-md5.txt, by the index and by the walk; durations and edit-unit positions
// against ffprobe's packets; and for the damaged copies, how much is readable, from how the
// fixture script cut them (damage-offsets.txt, and the clean file's packet positions).

#include "MXF/SDK/MXFIO/EssenceReader.h"

#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/MXFIO/ContentStorageReader.h"
#include "MXF/SDK/MXFIO/Essence/EssenceTestSupport.h"
#include "MXF/SDK/MXFIO/Essence/Md5.h"
#include "MXF/SDK/MXFIO/EssenceUtils.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <regex>

using namespace MXF::SDK;
using namespace MXF::SDK::MXFIO;
using namespace Halvorn::Test::Essence;

namespace
{

struct Opened
{
    std::unique_ptr<Reader2> reader;
    Partition* metadataPartition = nullptr;
    std::unique_ptr<Metadata::PartitionMetadata> metadata;
    std::unique_ptr<ContentStorageReader> storage;
    std::unique_ptr<EssenceReader> essence;
    std::vector<std::string> tags;
};

std::unique_ptr<Opened> open(const std::string& name, bool ignoreIndex)
{
    auto opened = std::make_unique<Opened>();
    opened->reader = readerOf(name);
    opened->metadataPartition = &opened->reader->latestHeaderMetadataPartition();
    opened->metadata = opened->metadataPartition->metadata();
    opened->storage = std::make_unique<ContentStorageReader>(*opened->metadata, *opened->reader);
    opened->storage->seeker().ignoreIndex(ignoreIndex);
    Metadata::Structural::ContentStorage& storage =
        Metadata::Structural::PrefaceHelpers::contentStorage(opened->storage->preface());
    for (UInt32 i = 0; i < storage.packagesCount() && !opened->essence; ++i)
        if (auto* package = storage.package(i))
            if (Metadata::metadataSetAs<Metadata::Structural::MaterialPackage>(*package))
                opened->essence = std::make_unique<EssenceReader>(*opened->storage, *package);
    if (!opened->essence)
        throw std::runtime_error("no material package in " + name);
    int pictures = 0, sounds = 0;
    for (std::size_t t = 0; t < opened->essence->trackCount(); ++t)
        opened->tags.push_back(opened->essence->track(t).kind == TrackKind::PICTURE
                                   ? "v" + std::to_string(pictures++)
                                   : "a" + std::to_string(sounds++));
    return opened;
}

// D-10 sound (SMPTE 331M): a 4-byte header, then per sample 8 subframes of 32 bits, little-endian,
// the audio in bits 4 to 27. ffmpeg gives the channels in use, interleaved, at their bit depth.
std::vector<std::uint8_t> unpackAES3(const std::vector<std::uint8_t>& element, int channels,
                                     int bits)
{
    std::vector<std::uint8_t> pcm;
    for (std::size_t at = 4; at + 32 <= element.size(); at += 32)
        for (int c = 0; c < channels; ++c)
        {
            const std::size_t w = at + 4 * c;
            const std::uint32_t word = element[w] | element[w + 1] << 8 | element[w + 2] << 16 |
                                       std::uint32_t(element[w + 3]) << 24;
            const std::uint32_t sample = (word >> 4) & 0xFFFFFF;
            for (int b = bits == 24 ? 0 : 1; b < 3; ++b)
                pcm.push_back(std::uint8_t(sample >> (8 * b)));
        }
    return pcm;
}

struct Read
{
    Digest digest;
    std::int64_t count = 0;
};

Read readTrack(Opened& opened, std::size_t t, bool aes3 = false)
{
    Md5 md5;
    Read result;
    std::vector<std::uint8_t> data;
    while (opened.essence->track(t).reader->read(data))
    {
        if (aes3)
            data = unpackAES3(data, 4, 16);
        md5.update(data.data(), data.size());
        result.digest.bytes += data.size();
        ++result.count;
    }
    result.digest.md5 = md5.hex();
    return result;
}

const std::vector<std::string> CLEAN = {
    "xdcamhd422_1080i25", "xdcamhd422_720p50", "xdcamhd422_1080i2997df", "imx50_625",
    "opatom_mpeg2",       "opatom_pcm",        "multibody_180p50"};
const std::vector<std::string> WHOLE_DAMAGED = {"damaged_open_header", "damaged_no_rip",
                                                "damaged_footer_zero", "damaged_no_footer",
                                                "runin_100",           "damaged_bad_index"};
const std::vector<std::string> CUT = {"damaged_truncated_30", "damaged_truncated_90",
                                      "damaged_bad_length"};

void expectDigests(const std::string& name, bool ignoreIndex)
{
    SCOPED_TRACE(name + (ignoreIndex ? " by walking" : " by the index"));
    const auto expected = digests(name);
    ASSERT_FALSE(expected.empty());
    auto opened = open(name + ".mxf", ignoreIndex);
    ASSERT_EQ(opened->tags.size(), expected.size());
    for (std::size_t t = 0; t < opened->tags.size(); ++t)
    {
        const std::string& tag = opened->tags[t];
        SCOPED_TRACE(tag);
        const bool aes3 = name == "imx50_625" && tag[0] == 'a';
        const Read read = readTrack(*opened, t, aes3);
        EXPECT_EQ(read.digest.md5, expected.at(tag).md5);
        EXPECT_EQ(read.digest.bytes, expected.at(tag).bytes);
    }
}

TEST(EssenceReaderTest, EveryTrackOfEveryFixtureAsFFmpegDeliversIt)
{
    for (const auto& names : {CLEAN, WHOLE_DAMAGED, CUT})
        for (const std::string& name : names)
        {
            // The cut length of damaged_bad_length swallows the file by its walk only.
            if (name != "damaged_bad_length")
                expectDigests(name, false);
            expectDigests(name, true);
        }
}

// Stream time bases and durations of ffprobe.json, in stream order.
std::vector<std::pair<Types::Rational, long long>> streams(const std::string& name)
{
    std::ifstream in(dataDir() + "/expected/" + name + ".ffprobe.json");
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    std::vector<std::pair<Types::Rational, long long>> result;
    const std::regex base("\"time_base\": \"(\\d+)/(\\d+)\"");
    const std::regex duration("\"duration_ts\": (\\d+)");
    auto b = std::sregex_iterator(text.begin(), text.end(), base);
    auto d = std::sregex_iterator(text.begin(), text.end(), duration);
    for (; b != std::sregex_iterator() && d != std::sregex_iterator(); ++b, ++d)
        result.push_back(
            {Types::Rational(std::stoi((*b)[1]), std::stoi((*b)[2])), std::stoll((*d)[1])});
    return result;
}

// Nearest edit unit: 29.97 fps sound packets of 1602 and 1601 samples fall either side of it.
long long editUnits(long long ticks, const Types::Rational& base, const Types::Rational& rate)
{
    const long long num = ticks * base.numerator() * rate.numerator();
    const long long den = (long long)base.denominator() * rate.denominator();
    return (2 * num + den) / (2 * den);
}

TEST(EssenceReaderTest, DurationsRatesAndPositionsAsFFprobeHasThem)
{
    for (const std::string& name : CLEAN)
    {
        SCOPED_TRACE(name);
        auto opened = open(name + ".mxf", false);
        const auto bases = streams(name);
        ASSERT_EQ(bases.size(), opened->essence->trackCount());
        const auto all = ffprobePackets(name);
        for (std::size_t t = 0; t < bases.size(); ++t)
        {
            SCOPED_TRACE(opened->tags[t]);
            EssenceReader::Track& track = opened->essence->track(t);
            const Types::Rational rate = opened->storage->editRate(track.trackNumber);
            EXPECT_EQ(rate, track.editRate);
            const long long duration = editUnits(bases[t].second, bases[t].first, rate);
            EXPECT_EQ(opened->storage->trackDuration(track.trackNumber), duration);
            EXPECT_EQ(track.duration, duration);
            long long ticks = 0;
            for (const Packet& packet : all)
                if (packet.stream == int(t))
                {
                    const long long unit = editUnits(ticks, bases[t].first, rate);
                    UInt64 at = 0, size = 0;
                    ASSERT_TRUE(
                        opened->storage->seeker().position(track.trackNumber, unit, at, size));
                    EXPECT_EQ(at, UInt64(packet.pos)) << "edit unit " << unit;
                    ticks += packet.duration;
                }
            UInt64 at = 0, size = 0;
            EXPECT_FALSE(opened->storage->seeker().position(track.trackNumber, duration, at, size));
        }
    }
}

TEST(EssenceReaderTest, TimeOrderAndMasterPeriod)
{
    auto opened = open("xdcamhd422_720p50.mxf", false);
    EXPECT_EQ(opened->essence->masterEditPeriod(), Types::Rational(1, 50));
    EXPECT_EQ(opened->essence->leadTrack(), 0u);
    std::size_t track = 0;
    std::vector<std::uint8_t> data;
    std::vector<std::size_t> order;
    while (opened->essence->next(track, data))
        order.push_back(track);
    ASSERT_EQ(order.size(), 50u * 9);
    // Each step: the picture, then the eight sounds.
    for (std::size_t i = 0; i < order.size(); ++i)
        EXPECT_EQ(order[i], i % 9);
    EXPECT_EQ(EssenceReader::convertPosition(7, Types::Rational(25, 1), Types::Rational(48000, 1)),
              13440);
    EXPECT_EQ(EssenceReader::convertPosition(-3, Types::Rational(25, 1), Types::Rational(50, 1)),
              -3);
    EXPECT_EQ(
        exceptionText(
            []
            { EssenceReader::convertPosition(1, Types::Rational(0, 1), Types::Rational(25, 1)); }),
        "currentEditRate > 0: Edit rate non-greater than zero.");
    EXPECT_EQ(exceptionText(
                  [] {
                      EssenceReader::convertPosition(1, Types::Rational(25, 1),
                                                     Types::Rational(-25, 1));
                  }),
              "editRate > 0: Edit rate non-greater than zero.");
}

// Packets of the clean 1080i25 per stream whose element key lies before `limit`.
std::vector<long long> cleanPacketsBefore(std::uint64_t limit, bool inclusive)
{
    std::vector<long long> counts(9, 0);
    for (const Packet& packet : ffprobePackets("xdcamhd422_1080i25"))
        if (UInt64(packet.pos) < limit || (inclusive && UInt64(packet.pos) == limit))
            ++counts.at(std::size_t(packet.stream));
    return counts;
}

TEST(EssenceReaderTest, DamagedCopiesReadAsFarAsTheyWereCut)
{
    struct Case
    {
        std::string name;
        std::vector<long long> counts;
    };
    const std::vector<Case> cases = {
        {"damaged_truncated_30",
         cleanPacketsBefore(damageOffset("damaged_truncated_30.mxf", "cut_at"), false)},
        {"damaged_truncated_90",
         cleanPacketsBefore(damageOffset("damaged_truncated_90.mxf", "cut_at"), false)},
        {"damaged_no_footer",
         cleanPacketsBefore(damageOffset("damaged_no_footer.mxf", "cut_at"), false)},
        // Its length runs past the end: what follows the element isn't reached by the walk.
        {"damaged_bad_length",
         cleanPacketsBefore(damageOffset("damaged_bad_length.mxf", "element_key_at"), true)}};
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        auto opened = open(c.name + ".mxf", true);
        for (std::size_t t = 0; t < 9; ++t)
            EXPECT_EQ(readTrack(*opened, t).count, c.counts[t]) << opened->tags[t];
    }
    // The index of damaged_bad_length still knows every element.
    auto indexed = open("damaged_bad_length.mxf", false);
    EXPECT_EQ(readTrack(*indexed, 0).count, 25);
}

TEST(EssenceReaderTest, WhichMetadataAndWhichBodyPartitions)
{
    // The open header's metadata gives way to the footer's.
    auto open1 = open("damaged_open_header.mxf", false);
    EXPECT_EQ(open1->metadataPartition->offset(),
              damageOffset("damaged_open_header.mxf", "footer_partition_at"));
    auto clean = open("xdcamhd422_1080i25.mxf", false);
    EXPECT_EQ(clean->metadataPartition->offset(), 0u);
    // The run-in moves every position but no offset.
    auto runIn = open("runin_100.mxf", false);
    EXPECT_EQ(runIn->metadataPartition->position(),
              damageOffset("runin_100.mxf", "header_partition_at"));
    // Partitions of the body, from the README's RIP table of multibody_180p50.
    std::vector<UInt64> found;
    for (Partition* p : EssenceUtils::bodyPartitions(*clean->reader, 1))
        found.push_back(p->offset());
    EXPECT_EQ(found, std::vector<UInt64>{11776});
    auto multi = open("multibody_180p50.mxf", false);
    found.clear();
    for (Partition* p : EssenceUtils::bodyPartitions(*multi->reader, 1))
        found.push_back(p->offset());
    EXPECT_EQ(found,
              (std::vector<UInt64>{damageOffset("multibody_180p50.mxf", "body_partition_1_at"),
                                   damageOffset("multibody_180p50.mxf", "body_partition_2_at"),
                                   damageOffset("multibody_180p50.mxf", "body_partition_3_at")}));
    // The stream offset where body 2 begins (its BodyOffset, README) is its first body byte.
    Partition* body2 = EssenceUtils::partitionForOffset(*multi->reader, 1, 1079296);
    ASSERT_NE(body2, nullptr);
    EXPECT_EQ(body2->offset(), 1085952u);
    EXPECT_EQ(EssenceUtils::absolutePosition(*multi->reader, 1, 1079296), body2->bodyStart());
    // Past the last body: the text of the table.
    EXPECT_NE(exceptionText([&] { EssenceUtils::absolutePosition(*multi->reader, 1, 1u << 30); })
                  .find("Expected body absolute offset of last body partition 0x40000000 is higher "
                        "than begin of footer/next partition (0x"),
              std::string::npos);
}

TEST(EssenceReaderTest, SeekerChecksAndTexts)
{
    auto opened = open("xdcamhd422_1080i25.mxf", false);
    Seeker& seeker = opened->storage->seeker();
    UInt64 at = 0, size = 0;
    EXPECT_EQ(exceptionText([&] { seeker.position(0x12345678, 0, at, size); }),
              "it != elements_.end (): Track number not in Essence container");
    EXPECT_TRUE(seeker.hasIndex());
    EXPECT_FALSE(seeker.position(opened->essence->track(0).trackNumber, -1, at, size));
    EXPECT_EQ(exceptionText([&] { opened->storage->trackID(0x12345678); }),
              "it != impl_ -> metadataInfo_.trackNumber2TrackID.end (): TrackNumber has no trackID "
              "correnpondent.");
    EXPECT_FALSE(opened->storage->isOPAtom());
    EXPECT_TRUE(open("opatom_pcm.mxf", false)->storage->isOPAtom());
    EXPECT_TRUE(open("opatom_pcm.mxf", false)->storage->isClipWrapped());
    // The third picture element (README: edit unit 2 at 414208 in damaged_bad_length's source).
    EXPECT_TRUE(seeker.position(opened->essence->track(0).trackNumber, 2, at, size));
    EXPECT_EQ(at, damageOffset("damaged_bad_length.mxf", "element_key_at"));
    EXPECT_EQ(size, damageOffset("damaged_bad_length.mxf", "old_length"));
    EXPECT_EQ(opened->storage->readFrame(opened->essence->track(0).trackNumber, 2).size(),
              damageOffset("damaged_bad_length.mxf", "old_length"));
}

} // namespace

namespace
{

using Halvorn::Test::MXFIO::Bytes;

std::unique_ptr<Reader2> readerOfBytes(const Bytes& bytes)
{
    return std::make_unique<Reader2>(Halvorn::Test::MXFIO::memorySource(bytes), dictionary(),
                                     65536);
}

} // namespace

TEST(EssenceReaderTest, SlicesHoldWhatFFmpegDelivers)
{
    for (const std::string name : {"xdcamhd422_1080i25", "opatom_pcm", "multibody_180p50",
                                   "damaged_truncated_30", "damaged_no_footer"})
    {
        SCOPED_TRACE(name);
        auto opened = open(name + ".mxf", false);
        std::vector<Md5> md5(opened->essence->trackCount());
        std::vector<std::uint64_t> bytes(md5.size());
        std::size_t track = 0;
        DataIO::SlicePtr data;
        while (opened->essence->next(track, data))
        {
            ASSERT_TRUE(data);
            md5.at(track).update(data->begin(), data->size);
            bytes.at(track) += data->size;
        }
        EXPECT_FALSE(data);
        const auto expected = digests(name);
        for (std::size_t t = 0; t < md5.size(); ++t)
        {
            SCOPED_TRACE(opened->tags[t]);
            EXPECT_EQ(md5[t].hex(), expected.at(opened->tags[t]).md5);
            EXPECT_EQ(bytes[t], expected.at(opened->tags[t]).bytes);
        }
    }
}

TEST(EssenceReaderTest, DurationAndStreamOffsetTexts)
{
    // A source package that promises two edit units more than its essence holds: every Duration
    // of the OP-Atom file's sequences and clips grows by two.
    {
        auto clean = open("opatom_mpeg2.mxf", false);
        const UInt32 number = clean->essence->track(0).trackNumber;
        const std::uint64_t units = std::uint64_t(clean->storage->trackDuration(number));
        Bytes bytes = fileBytes("opatom_mpeg2.mxf");
        Bytes pattern = {0x02, 0x02, 0x00, 0x08, 0, 0, 0, 0, 0, 0, 0, 0};
        put(pattern, 4, units, 8);
        int changed = 0;
        for (auto at = bytes.begin();
             (at = std::search(at, bytes.end(), pattern.begin(), pattern.end())) != bytes.end();
             ++changed)
            put(bytes, std::size_t(at - bytes.begin()) + 4, units + 2, 8);
        ASSERT_GT(changed, 0);
        auto reader = readerOfBytes(bytes);
        auto metadata = reader->latestHeaderMetadataPartition().metadata();
        ContentStorageReader storage(*metadata, *reader);
        EXPECT_EQ(exceptionText([&] { storage.trackDuration(number); }),
                  "(sourcePackageDuration - trackDuration) < 1: duration with bad value.");
    }

    // From the footer: the same place as from the header; a file without one says so.
    auto multi = open("multibody_180p50.mxf", false);
    EXPECT_EQ(EssenceUtils::absolutePosition(*multi->reader, 1, 1079296,
                                             EssenceUtils::SearchFrom::FOOTER),
              EssenceUtils::absolutePosition(*multi->reader, 1, 1079296));
    EXPECT_EQ(
        EssenceUtils::bodyPartitions(*multi->reader, 1, EssenceUtils::SearchFrom::FOOTER).size(),
        3u);
    auto noFooter = open("damaged_no_footer.mxf", false);
    const UInt32 sid = noFooter->storage->bodySID();
    EXPECT_EQ(exceptionText(
                  [&] {
                      EssenceUtils::absolutePosition(*noFooter->reader, sid, 0,
                                                     EssenceUtils::SearchFrom::FOOTER);
                  }),
              "currentPartition != 0: Could not find footer partition.");

    // Past the last body, which the cut file's end closes.
    const std::uint64_t size = fileBytes("damaged_no_footer.mxf").size();
    char sizeText[32];
    std::snprintf(sizeText, sizeof sizeText, "%llx", static_cast<unsigned long long>(size));
    EXPECT_EQ(
        exceptionText([&] { EssenceUtils::absolutePosition(*noFooter->reader, sid, 1ull << 40); }),
        std::string("Expected body offset of partition 0x10000000000 is higher than the "
                    "total file size (0x") +
            sizeText + ")");

    // A stream offset between two bodies: body 2's BodyOffset (README 1079296) moved on by 1 MiB
    // leaves the offset where body 1 ends in no body. Body 2's pack stands at 1085952.
    Bytes bytes = fileBytes("multibody_180p50.mxf");
    const std::size_t pack = damageOffset("multibody_180p50.mxf", "body_partition_2_at");
    ASSERT_EQ(pack, 1085952u);
    // Key, BER length, then major and minor version, KAG size, five 64-bit fields, IndexSID.
    const std::size_t value = pack + 16 + 1 + (bytes[pack + 16] & 0x7F);
    put(bytes, value + 52, 1079296 + 0x100000, 8);
    auto gap = readerOfBytes(bytes);
    EXPECT_EQ(exceptionText([&] { EssenceUtils::absolutePosition(*gap, 1, 1079296); }),
              "Expected body offset of partition 0x107800 is higher than begin of next partition "
              "(0x109200)");
}

// The file source the elements are read through: small reads from its buffer, large ones straight
// into the caller's memory, in any order, hold the file's bytes.
TEST(EssenceReaderTest, FileReadsOfEverySizeHoldTheFilesBytes)
{
    const Bytes whole = fileBytes("xdcamhd422_720p50.mxf");
    for (const int bufferSize : {-1, 0, 7, 4096, 65536})
    {
        SCOPED_TRACE(bufferSize);
        DataIO::File::FileDataSource source(
            Platform::fromUtf8(dataDir() + "/xdcamhd422_720p50.mxf"), bufferSize);
        std::uint64_t state = 12345;
        Bytes got;
        for (int i = 0; i < 400; ++i)
        {
            state = state * 6364136223846793005ull + 1442695040888963407ull;
            const std::uint64_t at = (state >> 20) % (whole.size() + 10);
            const std::uint64_t size = i % 3 == 0 ? (state >> 8) % 300000 : (state >> 8) % 40;
            // Half of the reads go on from where the last stopped.
            if (i % 2 == 0)
            {
                EXPECT_EQ(source.seek(at), std::min<std::uint64_t>(at, whole.size()));
            }
            const std::uint64_t from = source.position();
            got.resize(size);
            const std::uint64_t read = source.read(got.data(), size);
            ASSERT_EQ(read, std::min<std::uint64_t>(size, whole.size() - from));
            ASSERT_TRUE(std::equal(got.begin(), got.begin() + read, whole.begin() + from));
            EXPECT_EQ(source.position(), from + read);
        }
    }
}
