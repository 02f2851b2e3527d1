#include "ClipEssence.h"
#include "Commands.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"

#include <fstream>
#include <ostream>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;

namespace
{

struct Options
{
    std::string file, track, out;
    bool noIndex = false;
    Platform::UInt64 maxSkip = 0;
};

bool parse(const std::vector<std::string>& args, Options& options)
{
    for (std::size_t i = 0; i < args.size(); ++i)
    {
        if (args[i] == "--no-index")
            options.noIndex = true;
        else if ((args[i] == "--track" || args[i] == "--out") && i + 1 < args.size())
        {
            std::string& value = args[i] == "--track" ? options.track : options.out;
            value = args[++i];
        }
        else if (args[i] == "--max-skip" && i + 1 < args.size())
        {
            const std::string& value = args[++i];
            if (value.empty() || value.find_first_not_of("0123456789") != std::string::npos)
                return false;
            options.maxSkip = std::stoull(value);
        }
        else if (options.file.empty() && args[i].rfind("--", 0) != 0)
            options.file = args[i];
        else
            return false;
    }
    return !options.file.empty() && !options.track.empty() && !options.out.empty();
}

// D-10 sound (SMPTE 331M): after a 4-byte header, each sample has 8 subframes of 32 bits,
// little-endian, the audio in bits 4 to 27. The channels in use come out interleaved as
// little-endian PCM of their depth, as players take them.
void unpackAES3(std::vector<Platform::Byte>& data, unsigned channels, unsigned bits)
{
    std::vector<Platform::Byte> pcm;
    const unsigned bytes = bits > 16 ? 3 : 2;
    for (std::size_t at = 4; at + 32 <= data.size(); at += 32)
        for (unsigned c = 0; c < channels && c < 8; ++c)
        {
            const Platform::Byte* w = data.data() + at + 4 * c;
            const std::uint32_t word = w[0] | w[1] << 8 | w[2] << 16 | std::uint32_t(w[3]) << 24;
            const std::uint32_t sample = (word >> 4) & 0xFFFFFF;
            for (unsigned b = 3 - bytes; b < 3; ++b)
                pcm.push_back(Platform::Byte(sample >> (8 * b)));
        }
    data.swap(pcm);
}

// AES3 elements: the D-10 mapping (byte 13 of the container label 01) carries its sound so.
bool isAES3(MXFIO::ContentStorageReader& storage, const MXFIO::EssenceReader::Track& track,
            unsigned& channels, unsigned& bits)
{
    if (track.kind != MXFIO::TrackKind::SOUND || storage.essenceContainer().data()[13] != 0x01)
        return false;
    channels = 8;
    bits = 24;
    if (auto* descriptor = storage.trackDescriptor(track.trackNumber))
        if (auto* sound =
                Metadata::metadataSetAs<Metadata::Structural::GenericSoundEssenceDescriptor>(
                    *descriptor))
        {
            if (sound->channelCount() != nullptr)
                channels = sound->channelCount()->value();
            if (sound->quantizationBits() != nullptr)
                bits = sound->quantizationBits()->value();
        }
    return true;
}

// The tracks the options ask for, each into its file.
int writeTracks(const Options& options, std::unique_ptr<DataIO::File::FileDataSource> file,
                std::ostream& out, std::ostream& err)
{
    ClipEssence clip(std::move(file), options.maxSkip);
    if (clip.essence == nullptr)
        return fileFailure(options.file, "no material package", err);
    MXFIO::ContentStorageReader& storage = *clip.storage;
    MXFIO::EssenceReader& essence = *clip.essence;
    storage.seeker().ignoreIndex(options.noIndex);

    TrackTags tags;
    int written = 0;
    for (std::size_t t = 0; t < essence.trackCount(); ++t)
    {
        MXFIO::EssenceReader::Track& track = essence.track(t);
        const bool picture = track.kind == MXFIO::TrackKind::PICTURE;
        const std::string tag = tags.next(track.kind);
        if (options.track != "all" && options.track != tag)
            continue;
        const std::string path = options.track == "all"
                                     ? options.out + "/" + tag +
                                           (picture                                 ? ".es"
                                            : track.kind == MXFIO::TrackKind::SOUND ? ".pcm"
                                                                                    : ".bin")
                                     : options.out;
        std::ofstream sink(path, std::ios::binary);
        if (!sink)
        {
            err << "mxf-inspect: cannot write " << path << "\n";
            return FAILED;
        }
        unsigned channels = 0, bits = 0;
        const bool aes3 = isAES3(storage, track, channels, bits);
        std::vector<Platform::Byte> data;
        long long units = 0, bytes = 0;
        while (track.reader->read(data))
        {
            if (aes3)
                unpackAES3(data, channels, bits);
            sink.write(reinterpret_cast<const char*>(data.data()), std::streamsize(data.size()));
            ++units;
            bytes += static_cast<long long>(data.size());
        }
        out << tag << " track " << track.trackID << ": " << units << " edit units, " << bytes
            << " bytes to " << path << "\n";
        ++written;
    }
    return written == 0 ? fileFailure(options.file, "no track " + options.track, err) : CLEAN;
}

} // namespace

int essenceCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    Options options;
    if (!parse(args, options))
    {
        err << "usage: mxf-inspect " << ESSENCE_USAGE << "\n";
        return FAILED;
    }
    auto file = openFile(options.file, err);
    if (!file)
        return FAILED;
    try
    {
        return writeTracks(options, std::move(file), out, err);
    }
    catch (const std::exception& e)
    {
        out.flush();
        return fileFailure(options.file, e.what(), err);
    }
}

} // namespace Halvorn::Inspect
