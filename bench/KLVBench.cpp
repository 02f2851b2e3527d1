// Walking the KLV items of a large file with KLVReader against reading the same bytes with
// read(2). The file (1 GiB by default, HALVORN_BENCH_FILE_MB to change) repeats the body
// partition of tests/data/xdcamhd422_1080i25.mxf, about 200 items a repeat, and is made once in
// the temporary folder; both loops read it warm in the same run.
#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/Platform/Platform.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

using namespace MXF::SDK;
using Platform::UInt64;

namespace
{

struct BenchFile
{
    std::string path;
    UInt64 size = 0;
    UInt64 items = 0;
};

UInt64 wantedSize()
{
    const char* mb = std::getenv("HALVORN_BENCH_FILE_MB");
    return (mb ? std::strtoull(mb, nullptr, 10) : 1024) << 20;
}

bool isPartitionPack(const KLV::Key& key, Platform::Byte kind)
{
    static const Platform::Byte HEAD[] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01,
                                          0x01, 0x0D, 0x01, 0x02, 0x01, 0x01};
    return std::equal(std::begin(HEAD), std::end(HEAD), key.data()) && key[13] == kind;
}

const BenchFile& benchFile()
{
    static const BenchFile file = []
    {
        std::ifstream in(HALVORN_TEST_DATA_DIR "/xdcamhd422_1080i25.mxf", std::ios::binary);
        const std::vector<char> fixture(std::istreambuf_iterator<char>(in), {});
        if (fixture.empty())
            std::abort();

        // The body partition: from its pack up to the footer pack.
        DataIO::Memory::MemoryDataSource source(fixture.data(), fixture.size());
        KLV::KLVReader reader(source);
        UInt64 bodyStart = 0, bodyEnd = 0, bodyItems = 0;
        while (!source.eof() && bodyEnd == 0)
        {
            UInt64 skipped = 0;
            auto item = reader.readKLV(skipped, 0);
            if (isPartitionPack(item->key, 0x03))
                bodyStart = item->keyPosition;
            else if (isPartitionPack(item->key, 0x04))
                bodyEnd = item->keyPosition;
            if (bodyStart != 0 && bodyEnd == 0)
                ++bodyItems;
        }
        if (bodyStart == 0 || bodyEnd == 0)
            std::abort();

        BenchFile made;
        made.path = Platform::toUtf8(Platform::temporaryDirectory()) + "/halvorn-klv-bench-" +
                    std::to_string(::getpid()) + ".mxf";
        const int fd = ::open(made.path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const auto bodySize = static_cast<ssize_t>(bodyEnd - bodyStart);
        while (made.size < wantedSize())
        {
            if (::write(fd, fixture.data() + bodyStart, bodySize) != bodySize)
                std::abort();
            made.size += bodySize;
            made.items += bodyItems;
        }
        ::close(fd);
        std::atexit([] { ::unlink(benchFile().path.c_str()); });
        return made;
    }();
    return file;
}

// Seconds a pass of ReadLoop took, for KLVWalk's ratio; ReadLoop is registered first.
double readSeconds = 0;

double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void ReadLoop(benchmark::State& state)
{
    const BenchFile& file = benchFile();
    std::vector<char> buffer(1 << 20);
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state)
    {
        const int fd = ::open(file.path.c_str(), O_RDONLY);
        UInt64 total = 0;
        ssize_t n;
        while ((n = ::read(fd, buffer.data(), buffer.size())) > 0)
            total += static_cast<UInt64>(n);
        ::close(fd);
        if (total != file.size)
            state.SkipWithError("short read");
        benchmark::DoNotOptimize(total);
    }
    readSeconds = secondsSince(start) / static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.size));
    state.counters["items"] = static_cast<double>(file.items);
}
BENCHMARK(ReadLoop)->Unit(benchmark::kMillisecond)->MinTime(2);

void KLVWalk(benchmark::State& state)
{
    const BenchFile& file = benchFile();
    const auto start = std::chrono::steady_clock::now();
    for (auto _ : state)
    {
        // Argument: the stream buffer size (-1 for the C library's default of 4 KiB).
        DataIO::File::FileDataSource source(Platform::fromUtf8(file.path),
                                            static_cast<Platform::Int32>(state.range(0)));
        KLV::KLVReader reader(source);
        UInt64 items = 0;
        while (!source.eof())
        {
            UInt64 skipped = 0;
            reader.readKLV(skipped, 0);
            ++items;
        }
        if (items != file.items)
            state.SkipWithError("wrong item count");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.size));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * file.items));
    state.counters["time_per_item"] =
        benchmark::Counter(static_cast<double>(state.iterations() * file.items),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    if (readSeconds > 0)
        state.counters["times_read2"] =
            secondsSince(start) / static_cast<double>(state.iterations()) / readSeconds;
}
BENCHMARK(KLVWalk)->Arg(-1)->Arg(1 << 20)->Unit(benchmark::kMillisecond)->MinTime(2);

// The same walk over 256 MiB of the file held in memory: the reader's own cost per item, without
// the seek and read calls that each skip of a file costs.
void KLVWalkInMemory(benchmark::State& state)
{
    const BenchFile& file = benchFile();
    const UInt64 size = std::min<UInt64>(file.size, UInt64(256) << 20);
    std::vector<char> bytes(size);
    const int fd = ::open(file.path.c_str(), O_RDONLY);
    if (::read(fd, bytes.data(), size) != static_cast<ssize_t>(size))
        std::abort();
    ::close(fd);
    DataIO::Memory::MemoryDataSource source(bytes.data(), size);
    UInt64 items = 0;
    for (auto _ : state)
    {
        source.seek(0);
        KLV::KLVReader reader(source);
        items = 0;
        UInt64 skipped = 0;
        while (!source.eof())
        {
            // The repeats are cut at a whole size, not at an item: the last one may run past.
            reader.readKLV(skipped, 0);
            ++items;
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * items));
    state.counters["time_per_item"] =
        benchmark::Counter(static_cast<double>(state.iterations() * items),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(KLVWalkInMemory)->Unit(benchmark::kMillisecond)->MinTime(2);

} // namespace
