// Reading a large file as slices against a plain read(2) loop, and the cost of slice records.
// The file (1 GiB by default, HALVORN_BENCH_FILE_MB to change) is made once in the temporary
// folder and read warm by both loops in the same run.
#include "MXF/SDK/DataIO/Adapters.h"
#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/DataIO/SliceReader.h"
#include "MXF/SDK/Platform/Platform.h"

#include <benchmark/benchmark.h>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <fcntl.h>
#include <mutex>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace MXF::SDK;
using namespace MXF::SDK::DataIO;

namespace
{

constexpr UInt64 BUFFER_SIZE = 1 << 20;

UInt64 fileSize()
{
    const char* mb = std::getenv("HALVORN_BENCH_FILE_MB");
    return (mb ? std::strtoull(mb, nullptr, 10) : 1024) << 20;
}

const std::string& benchFile()
{
    static const std::string path = []
    {
        const std::string p = Platform::toUtf8(Platform::temporaryDirectory()) + "/halvorn-bench-" +
                              std::to_string(::getpid()) + ".bin";
        const int fd = ::open(p.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        std::vector<char> chunk(BUFFER_SIZE);
        for (std::size_t i = 0; i < chunk.size(); ++i)
            chunk[i] = static_cast<char>(i * 31 + 7);
        for (UInt64 done = 0; done < fileSize(); done += chunk.size())
            if (::write(fd, chunk.data(), chunk.size()) != static_cast<ssize_t>(chunk.size()))
                std::abort();
        ::close(fd);
        std::atexit([] { ::unlink(benchFile().c_str()); });
        return p;
    }();
    return path;
}

void PlainReadLoop(benchmark::State& state)
{
    std::vector<char> buffer(BUFFER_SIZE);
    for (auto _ : state)
    {
        const int fd = ::open(benchFile().c_str(), O_RDONLY);
        UInt64 total = 0;
        ssize_t n;
        while ((n = ::read(fd, buffer.data(), buffer.size())) > 0)
            total += static_cast<UInt64>(n);
        ::close(fd);
        benchmark::DoNotOptimize(total);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileSize()));
}
BENCHMARK(PlainReadLoop)->Unit(benchmark::kMillisecond)->MinTime(2);

void FileReadChain(benchmark::State& state)
{
    for (auto _ : state)
    {
        File::FileDataSource file(Platform::fromUtf8(benchFile()));
        SliceSourceDataAdapter slices(file, BUFFER_SIZE);
        SliceReader reader(&slices, false);
        UInt64 total = 0;
        SliceChain chain;
        while (!reader.eof())
        {
            total += reader.readChain(BUFFER_SIZE, chain);
            chain.clear();
        }
        benchmark::DoNotOptimize(total);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileSize()));
}
BENCHMARK(FileReadChain)->Unit(benchmark::kMillisecond)->MinTime(2);

void SliceMakeAndRelease(benchmark::State& state)
{
    BlockPtr block = BlockPtr::adopt(MemoryBlockFactory::instance().createBlock(4096));
    for (auto _ : state)
    {
        SlicePtr slice = Slice::make(block.get(), 16, 100);
        benchmark::DoNotOptimize(slice.get());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(SliceMakeAndRelease);

// Slices made here and deleted on a consumer thread, as samples go to a wrapping thread. The
// figure includes the hand-over through a mutex-guarded queue; SliceHandOverOnly is that part
// alone.
void handOver(benchmark::State& state, bool makeSlices)
{
    BlockPtr block = BlockPtr::adopt(MemoryBlockFactory::instance().createBlock(4096));
    std::mutex mutex;
    std::condition_variable ready;
    std::deque<SlicePtr> queue;
    std::deque<int> tokens;
    bool done = false;
    std::thread consumer(
        [&]
        {
            std::deque<SlicePtr> batch;
            std::deque<int> tokenBatch;
            for (;;)
            {
                {
                    std::unique_lock lock(mutex);
                    ready.wait(lock, [&] { return !queue.empty() || !tokens.empty() || done; });
                    if (queue.empty() && tokens.empty() && done)
                        return;
                    batch.swap(queue);
                    tokenBatch.swap(tokens);
                }
                batch.clear(); // the slices die here
                tokenBatch.clear();
            }
        });
    constexpr int BATCH = 256;
    for (auto _ : state)
    {
        std::deque<SlicePtr> made;
        std::deque<int> madeTokens;
        for (int i = 0; i < BATCH; ++i)
        {
            if (makeSlices)
                made.push_back(Slice::make(block.get(), i, 8));
            else
                madeTokens.push_back(i);
        }
        std::lock_guard lock(mutex);
        for (auto& s : made)
            queue.push_back(std::move(s));
        for (int t : madeTokens)
            tokens.push_back(t);
        ready.notify_one();
    }
    {
        std::lock_guard lock(mutex);
        done = true;
        ready.notify_one();
    }
    consumer.join();
    state.SetItemsProcessed(state.iterations() * BATCH);
}

void SliceCrossThread(benchmark::State& state)
{
    handOver(state, true);
}
BENCHMARK(SliceCrossThread)->UseRealTime();

void SliceHandOverOnly(benchmark::State& state)
{
    handOver(state, false);
}
BENCHMARK(SliceHandOverOnly)->UseRealTime();

} // namespace
