// The XDCAM decode pipe reading every element of a large clip into a sink that drops the samples,
// against read(2) of the same file. Each runs in a child process of its own, so that its wall
// time, CPU time and peak memory are its own. The clip comes from bench/make-large-clip.sh; its
// path is the first argument or HALVORN_LARGE_CLIP. The pipe's row also gives the time of the job
// alone: what a host pays once per process (the dictionary) is done before it.
//
//   xdcam_pipe_bench [CLIP [ROUNDS]]

#include "DecodePipes/XDCAMDecodePipe.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Platform/Platform.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace KEP::Halvorn;

namespace
{

// What a run tells its parent through a pipe.
struct Result
{
    unsigned long long bytes = 0;
    unsigned long long items = 0;
    // Of the job alone, when the run has one.
    double jobWall = 0;
    double jobCpu = 0;
};

double cpuSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

Result readAll(const std::string& path)
{
    Result result;
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0)
        return result;
    std::vector<char> buffer(1 << 20);
    for (ssize_t got; (got = ::read(fd, buffer.data(), buffer.size())) > 0;)
    {
        result.bytes += static_cast<unsigned long long>(got);
        ++result.items;
    }
    ::close(fd);
    return result;
}

Result decodeAll(const std::string& path)
{
    auto dictionary = std::make_shared<MXF::SDK::MetaMetadata::Dictionary>();
    MXF::SDK::MetaMetadata::BinaryLoader::load(
        MXF::SDK::Platform::fromUtf8(HALVORN_DICTIONARY_FILE), *dictionary);
    const auto start = std::chrono::steady_clock::now();
    const double cpuStart = cpuSeconds();
    DecodePipes::XDCAMDecodePipe pipe;
    pipe.setInputFile(MXF::SDK::Platform::fromUtf8(path).c_str(), L"", 0);
    EssenceTrackInfoList tracks;
    Result result;
    if (!pipe.load(tracks, dictionary))
        return result;
    while (Sample* sample = pipe.nextSample())
    {
        result.bytes += sample->size();
        ++result.items;
        sample->release();
    }
    result.jobWall =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    result.jobCpu = cpuSeconds() - cpuStart;
    return result;
}

// Runs `work` in a child, prints its figures and returns its wall time and that of its job.
std::pair<double, double> measure(const char* name, const std::function<Result()>& work)
{
    int channel[2];
    if (::pipe(channel) != 0)
        return {0, 0};
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = ::fork();
    if (child == 0)
    {
        ::close(channel[0]);
        Result result{};
        try
        {
            result = work();
        }
        catch (const std::exception& e)
        {
            std::fprintf(stderr, "%s: %s\n", name, e.what());
        }
        if (::write(channel[1], &result, sizeof result) != sizeof result)
            std::_Exit(1);
        std::_Exit(0);
    }
    ::close(channel[1]);
    Result result{};
    if (::read(channel[0], &result, sizeof result) != sizeof result)
        result = {};
    ::close(channel[0]);
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    const double wall =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const double cpu = double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                       double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    std::printf("%-14s %8.3f s wall %8.3f s CPU %8.1f MiB/s %8ld KiB peak RSS %12llu bytes "
                "%9llu items\n",
                name, wall, cpu, double(result.bytes) / (1 << 20) / wall, usage.ru_maxrss,
                result.bytes, result.items);
    if (result.jobWall > 0)
        std::printf("%-14s %8.3f s wall %8.3f s CPU %8.1f MiB/s\n", "  job alone", result.jobWall,
                    result.jobCpu, double(result.bytes) / (1 << 20) / result.jobWall);
    return {wall, result.jobWall};
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv)
{
    const char* fromEnvironment = std::getenv("HALVORN_LARGE_CLIP");
    const std::string clip = argc > 1          ? argv[1]
                             : fromEnvironment ? fromEnvironment
                                               : "build/bench-data/xdcamhd422_1080i25_1024MiB.mxf";
    std::printf("clip %s\n", clip.c_str());
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;
    // Interleaved, so that both see the file in the page cache and the machine's load alike.
    std::vector<double> reads, pipes, jobs;
    for (int round = 0; round < rounds; ++round)
    {
        reads.push_back(measure("read(2)", [&] { return readAll(clip); }).first);
        const auto [wall, job] = measure("XDCAM pipe", [&] { return decodeAll(clip); });
        pipes.push_back(wall);
        jobs.push_back(job);
    }
    // The machine's load shifts between runs; the best of each is the steadier figure.
    const double read = median(reads);
    const double bestRead = *std::min_element(reads.begin(), reads.end());
    const double bestPipe = *std::min_element(pipes.begin(), pipes.end());
    const double bestJob = *std::min_element(jobs.begin(), jobs.end());
    std::printf("median of %d: read(2) %.3f s, pipe %.3f s (%.2fx), job alone %.3f s (%.2fx)\n",
                rounds, read, median(pipes), median(pipes) / read, median(jobs),
                median(jobs) / read);
    std::printf("best of %d:   read(2) %.3f s, pipe %.3f s (%.2fx), job alone %.3f s (%.2fx); "
                "goal <= 1.3x\n",
                rounds, bestRead, bestPipe, bestPipe / bestRead, bestJob, bestJob / bestRead);
    return 0;
}
