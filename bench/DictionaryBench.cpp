// Loading the compiled dictionary of data/: from memory, which is the loader's own cost, and from
// its file, as a transcoder does it. Counters: what the loaded Dictionary keeps on the heap
// (glibc's count of bytes in use with the Dictionary alive, less the count before) and the
// process's peak resident set.
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Platform/Platform.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <sys/resource.h>
#include <vector>

using namespace MXF::SDK;
using MetaMetadata::BinaryLoader;
using MetaMetadata::Dictionary;

namespace
{

const std::vector<char>& dictionaryBytes()
{
    static const std::vector<char> bytes = []
    {
        std::ifstream in(HALVORN_DICTIONARY_FILE, std::ios::binary);
        std::vector<char> read(std::istreambuf_iterator<char>(in), {});
        if (read.empty())
            std::abort();
        return read;
    }();
    return bytes;
}

std::size_t heapInUse()
{
    return mallinfo2().uordblks;
}

double peakResidentKiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss);
}

void addCounters(benchmark::State& state, const Dictionary& dictionary, std::size_t kept)
{
    state.counters["elements"] = double(dictionary.metaElementCount());
    state.counters["sets"] = double(dictionary.metaMetadataSetCount());
    state.counters["tags"] = double(dictionary.localTagCount());
    state.counters["kept_KiB"] = double(kept) / 1024;
    state.counters["peak_rss_KiB"] = peakResidentKiB();
    state.SetBytesProcessed(std::int64_t(state.iterations() * dictionaryBytes().size()));
}

void loadFromMemory(benchmark::State& state)
{
    const std::vector<char>& bytes = dictionaryBytes();
    for (auto _ : state)
    {
        DataIO::Memory::MemoryDataSource source(bytes.data(), bytes.size());
        Dictionary dictionary;
        BinaryLoader::load(source, dictionary);
        benchmark::DoNotOptimize(dictionary);
    }
    DataIO::Memory::MemoryDataSource source(bytes.data(), bytes.size());
    const std::size_t before = heapInUse();
    {
        Dictionary dictionary;
        BinaryLoader::load(source, dictionary);
        addCounters(state, dictionary, heapInUse() - before);
    }
}

void loadFromFile(benchmark::State& state)
{
    const std::wstring path = Platform::fromUtf8(HALVORN_DICTIONARY_FILE);
    for (auto _ : state)
    {
        Dictionary dictionary;
        BinaryLoader::load(path, dictionary);
        benchmark::DoNotOptimize(dictionary);
    }
    const std::size_t before = heapInUse();
    Dictionary dictionary;
    BinaryLoader::load(path, dictionary);
    addCounters(state, dictionary, heapInUse() - before);
}

} // namespace

BENCHMARK(loadFromMemory)->Unit(benchmark::kMillisecond);
BENCHMARK(loadFromFile)->Unit(benchmark::kMillisecond);
