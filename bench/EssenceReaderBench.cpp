// EssenceReader reading every element of a large clip, against read(2) of the same file in the same
// run, and the peak memory of each. The clip comes from bench/make-large-clip.sh; its path is the
// first argument or HALVORN_LARGE_CLIP.
//
//   essence_reader_bench [CLIP]

#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/MXFIO/ContentStorageReader.h"
#include "MXF/SDK/MXFIO/EssenceReader.h"
#include "MXF/SDK/MXFIO/Reader.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"
#include "MXF/SDK/Platform/Platform.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

using namespace MXF::SDK;

namespace
{

double seconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

long peakKiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

double readAll(const std::string& path, unsigned long long& bytes)
{
    const auto start = std::chrono::steady_clock::now();
    const int fd = ::open(path.c_str(), O_RDONLY);
    std::vector<char> buffer(1 << 20);
    bytes = 0;
    for (ssize_t got; (got = ::read(fd, buffer.data(), buffer.size())) > 0;)
        bytes += static_cast<unsigned long long>(got);
    ::close(fd);
    return seconds(start);
}

double essenceAll(const std::string& path, unsigned long long& bytes, long long& elements,
                  double& setUp)
{
    const auto start = std::chrono::steady_clock::now();
    auto dictionary = std::make_shared<MetaMetadata::Dictionary>();
    MetaMetadata::BinaryLoader::load(Platform::fromUtf8(HALVORN_DICTIONARY_FILE), *dictionary);
    Metadata::Structural::registerStructuralSets();
    MXFIO::Reader2 reader(
        std::make_shared<DataIO::File::FileDataSource>(Platform::fromUtf8(path), 1 << 16),
        dictionary, 65536);
    const auto metadata = reader.latestHeaderMetadataPartition().metadata();
    MXFIO::ContentStorageReader storage(*metadata, reader);
    auto& content = Metadata::Structural::PrefaceHelpers::contentStorage(storage.preface());
    Metadata::Structural::GenericPackage* material = nullptr;
    for (Platform::UInt32 i = 0; i < content.packagesCount() && material == nullptr; ++i)
        if (auto* package = content.package(i))
            if (Metadata::metadataSetAs<Metadata::Structural::MaterialPackage>(*package))
                material = package;
    MXFIO::EssenceReader essence(storage, *material);
    setUp = seconds(start);
    std::size_t track = 0;
    // Each element in a block of its own, as the decode pipe hands them on.
    DataIO::SlicePtr data;
    bytes = 0;
    elements = 0;
    while (essence.next(track, data))
    {
        bytes += data->size;
        ++elements;
    }
    return seconds(start);
}

} // namespace

int main(int argc, char** argv)
{
    const char* fromEnv = std::getenv("HALVORN_LARGE_CLIP");
    const std::string path = argc > 1 ? argv[1] : fromEnv != nullptr ? fromEnv : "";
    if (path.empty())
    {
        std::fprintf(stderr,
                     "usage: essence_reader_bench CLIP (bench/make-large-clip.sh makes one)\n");
        return 2;
    }
    unsigned long long fileBytes = 0, essenceBytes = 0;
    long long elements = 0;
    double setUp = 0;
    readAll(path, fileBytes); // warms the page cache for both
    const double readTime = readAll(path, fileBytes);
    const long readPeak = peakKiB();
    const double essenceTime = essenceAll(path, essenceBytes, elements, setUp);
    const long essencePeak = peakKiB();
    const double readAgain = readAll(path, fileBytes);
    const double best = std::min(readTime, readAgain);
    std::printf("read(2):        %.3f s, %.3f s again, %llu bytes, peak %ld KiB\n", readTime,
                readAgain, fileBytes, readPeak);
    std::printf("EssenceReader:  %.3f s (%.3f s of it dictionary, metadata and tracks), %lld "
                "elements, %llu bytes, peak %ld KiB\n",
                essenceTime, setUp, elements, essenceBytes, essencePeak);
    std::printf("ratio:          %.2f (goal <= 1.30)\n", essenceTime / best);
    return 0;
}
