// Header metadata of 10,002 sets, made in memory through the dictionary of data/: a Preface, its
// ContentStorage and 10 material packages of 333 tracks, each track with its Sequence and one
// SourceClip. Three costs: making the sets (createSet and the setters), writing them (primer and
// sets to memory) and reading them back (sets, primer and the reference graph). Counters: the time
// a set, the bytes of the metadata, the heap a PartitionMetadata keeps (glibc's bytes in use with
// it alive, less those before) and the process's peak resident set.
#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Metadata/Element.h"
#include "MXF/SDK/Metadata/MetadataSet.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "MXF/SDK/Platform/Platform.h"
#include "MXF/SDK/Types/Integers.h"
#include "MXF/SDK/Types/Rational.h"
#include "MXF/SDK/Types/UID.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <malloc.h>
#include <memory>
#include <sys/resource.h>
#include <vector>

using namespace MXF::SDK;
using Metadata::MetadataSet;
using Metadata::PartitionMetadata;

namespace
{

constexpr int PACKAGES = 10;
constexpr int TRACKS = 333;

const MetaMetadata::Dictionary& dictionary()
{
    static const std::unique_ptr<MetaMetadata::Dictionary> loaded = []
    {
        auto made = std::make_unique<MetaMetadata::Dictionary>();
        MetaMetadata::BinaryLoader::load(Platform::fromUtf8(HALVORN_DICTIONARY_FILE), *made);
        return made;
    }();
    return *loaded;
}

KLV::Key key(const wchar_t* text)
{
    return KLV::Key(text);
}
Types::UniversalLabel label(const wchar_t* text)
{
    return Types::UniversalLabel(text);
}

// Keys and property labels of SMPTE 377M.
struct Labels
{
    KLV::Key preface = key(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2f.00");
    KLV::Key contentStorage = key(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.18.00");
    KLV::Key materialPackage = key(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.36.00");
    KLV::Key timelineTrack = key(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.3b.00");
    KLV::Key sequence = key(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.0f.00");
    KLV::Key sourceClip = key(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.11.00");
    Types::UniversalLabel storage = label(L"06.0e.2b.34.01.01.01.02.06.01.01.04.02.01.00.00");
    Types::UniversalLabel packages = label(L"06.0e.2b.34.01.01.01.02.06.01.01.04.05.01.00.00");
    Types::UniversalLabel tracks = label(L"06.0e.2b.34.01.01.01.02.06.01.01.04.06.05.00.00");
    Types::UniversalLabel trackSequence = label(L"06.0e.2b.34.01.01.01.02.06.01.01.04.02.04.00.00");
    Types::UniversalLabel components = label(L"06.0e.2b.34.01.01.01.02.06.01.01.04.06.09.00.00");
    Types::UniversalLabel trackID = label(L"06.0e.2b.34.01.01.01.02.01.07.01.01.00.00.00.00");
    Types::UniversalLabel editRate = label(L"06.0e.2b.34.01.01.01.02.05.30.04.05.00.00.00.00");
    Types::UniversalLabel origin = label(L"06.0e.2b.34.01.01.01.02.07.02.01.03.01.03.00.00");
    Types::UniversalLabel duration = label(L"06.0e.2b.34.01.01.01.02.07.02.02.01.01.03.00.00");
    Types::UniversalLabel dataDefinition =
        label(L"06.0e.2b.34.01.01.01.02.04.07.01.00.00.00.00.00");
    Types::UniversalLabel pictureTrack = label(L"06.0e.2b.34.04.01.01.01.01.03.02.02.01.00.00.00");
    Types::UniversalLabel sourceTrackID = label(L"06.0e.2b.34.01.01.01.02.06.01.01.03.02.00.00.00");
    Types::UniversalLabel startPosition = label(L"06.0e.2b.34.01.01.01.02.07.02.01.03.01.04.00.00");
};

const Labels& labels()
{
    static const Labels made;
    return made;
}

void refer(MetadataSet& from, const Types::UniversalLabel& property, MetadataSet& to)
{
    Metadata::Element& element = from.element(property);
    if (auto* single = Metadata::elementAs<Metadata::ReferenceElement>(element))
        single->setTarget(&to);
    else
        Metadata::asCollectionReferenceElement(element)->add(to);
}

void segment(MetadataSet& set)
{
    const Labels& l = labels();
    set.setValue(l.dataDefinition, std::make_unique<Types::UniversalLabel>(l.pictureTrack));
    set.setValue(l.duration, std::make_unique<Types::Length>(250));
}

void build(PartitionMetadata& metadata)
{
    const Labels& l = labels();
    MetadataSet& preface = metadata.createSet(l.preface);
    MetadataSet& storage = metadata.createSet(l.contentStorage);
    refer(preface, l.storage, storage);
    for (int p = 0; p < PACKAGES; ++p)
    {
        MetadataSet& package = metadata.createSet(l.materialPackage);
        refer(storage, l.packages, package);
        for (int t = 0; t < TRACKS; ++t)
        {
            MetadataSet& track = metadata.createSet(l.timelineTrack);
            track.setValue(l.trackID, std::make_unique<Types::UInt32>(t + 1));
            track.setValue(l.editRate, std::make_unique<Types::Rational>(25, 1));
            track.setValue(l.origin, std::make_unique<Types::Position>(0));
            refer(package, l.tracks, track);
            MetadataSet& sequence = metadata.createSet(l.sequence);
            segment(sequence);
            refer(track, l.trackSequence, sequence);
            MetadataSet& clip = metadata.createSet(l.sourceClip);
            segment(clip);
            clip.setValue(l.sourceTrackID, std::make_unique<Types::UInt32>(t + 1));
            clip.setValue(l.startPosition, std::make_unique<Types::Position>(0));
            refer(sequence, l.components, clip);
        }
    }
}

std::vector<Platform::Byte> written()
{
    PartitionMetadata metadata(dictionary());
    build(metadata);
    DataIO::Memory::MemoryDataSink sink;
    metadata.write(sink);
    return sink.release();
}

double peakResidentKiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss);
}

void perSet(benchmark::State& state, std::size_t sets)
{
    state.counters["sets"] = double(sets);
    state.counters["per_set"] =
        benchmark::Counter(double(state.iterations() * sets),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void makeSets(benchmark::State& state)
{
    dictionary();
    std::size_t sets = 0;
    std::size_t kept = 0;
    for (auto _ : state)
    {
        const std::size_t heapBefore = mallinfo2().uordblks;
        PartitionMetadata metadata(dictionary());
        build(metadata);
        sets = metadata.setCount();
        kept = mallinfo2().uordblks - heapBefore;
        benchmark::DoNotOptimize(sets);
    }
    perSet(state, sets);
    state.counters["kept_KiB"] = double(kept) / 1024;
    state.counters["peak_rss_KiB"] = peakResidentKiB();
}

void writeSets(benchmark::State& state)
{
    PartitionMetadata metadata(dictionary());
    build(metadata);
    std::size_t bytes = 0;
    for (auto _ : state)
    {
        DataIO::Memory::MemoryDataSink sink;
        metadata.write(sink);
        bytes = sink.position();
        benchmark::DoNotOptimize(bytes);
    }
    perSet(state, metadata.setCount());
    state.counters["bytes"] = double(bytes);
    state.SetBytesProcessed(std::int64_t(state.iterations() * bytes));
}

void readSets(benchmark::State& state)
{
    const std::vector<Platform::Byte> bytes = written();
    std::size_t sets = 0;
    std::size_t kept = 0;
    for (auto _ : state)
    {
        const std::size_t heapBefore = mallinfo2().uordblks;
        DataIO::Memory::MemoryDataSource source(bytes.data(), bytes.size());
        PartitionMetadata metadata(dictionary());
        metadata.read(source, bytes.size());
        sets = metadata.setCount();
        kept = mallinfo2().uordblks - heapBefore;
        benchmark::DoNotOptimize(sets);
    }
    if (sets != std::size_t(2 + PACKAGES * (1 + 3 * TRACKS)))
        state.SkipWithError("the metadata read back has another number of sets");
    perSet(state, sets);
    state.counters["bytes"] = double(bytes.size());
    state.counters["kept_KiB"] = double(kept) / 1024;
    state.counters["peak_rss_KiB"] = peakResidentKiB();
    state.SetBytesProcessed(std::int64_t(state.iterations() * bytes.size()));
}

} // namespace

BENCHMARK(makeSets)->Unit(benchmark::kMillisecond);
BENCHMARK(writeSets)->Unit(benchmark::kMillisecond);
BENCHMARK(readSets)->Unit(benchmark::kMillisecond);
