#include "Commands.h"
#include "DecodePipes/XDCAMDecodePipe.h"
#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/MXFIO/Reader.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"
#include "MXF/SDK/Platform/Platform.h"
#include "Transcoder/ErrorMessages.h"
#include "Transcoder/ResolutionId.h"

#include <cstdio>
#include <optional>
#include <ostream>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;
using KEP::Halvorn::EssenceTrackInfo;
using KEP::Halvorn::DecodePipes::XDCAMDecodePipe;

namespace
{

struct Arguments
{
    std::string file;
    std::string mediaProfile;
    std::string umid;
    std::string dictionary = HALVORN_DICTIONARY_FILE;
};

std::optional<Arguments> parse(const std::vector<std::string>& args)
{
    Arguments parsed;
    for (std::size_t i = 0; i < args.size(); ++i)
    {
        const std::string& arg = args[i];
        const bool option = arg == "--mediapro" || arg == "--umid" || arg == "--dictionary";
        if (option && i + 1 < args.size())
            (arg == "--mediapro" ? parsed.mediaProfile
             : arg == "--umid"   ? parsed.umid
                                 : parsed.dictionary) = args[++i];
        else if (!option && !arg.starts_with("--") && parsed.file.empty())
            parsed.file = arg;
        else
            return std::nullopt;
    }
    const bool byFile = !parsed.file.empty() && parsed.mediaProfile.empty() && parsed.umid.empty();
    const bool byUmid = parsed.file.empty() && !parsed.mediaProfile.empty() && !parsed.umid.empty();
    if (!byFile && !byUmid)
        return std::nullopt;
    return parsed;
}

std::string rational(const Types::Rational& value)
{
    return std::to_string(value.numerator()) + "/" + std::to_string(value.denominator());
}

// hh:mm:ss:ff, with ";" before the frames for drop frame, as SMPTE 12M prints it.
std::string timecodeText(const Utils::TimeCode& timecode)
{
    if (!timecode.valid())
        return "-";
    char text[16];
    std::snprintf(text, sizeof text, "%02u:%02u:%02u%c%02u", unsigned(timecode.hours()),
                  unsigned(timecode.minutes()), unsigned(timecode.seconds()),
                  timecode.dropFrame() ? ';' : ':', unsigned(timecode.frames()));
    return text;
}

// The start time code of a clip file: its material package's timecode track, else its file
// package's; "-" when it has none.
std::string startTimecode(const std::wstring& path,
                          const std::shared_ptr<const MetaMetadata::Dictionary>& dictionary)
{
    MXFIO::Reader2 reader(std::make_shared<DataIO::File::FileDataSource>(path), dictionary, 65536);
    const std::unique_ptr<Metadata::PartitionMetadata> metadata =
        reader.latestHeaderMetadataPartition().metadata();
    auto* preface = Metadata::metadataSetAs<Metadata::Structural::Preface>(metadata->preface());
    if (preface == nullptr)
        return "-";
    Metadata::Structural::ContentStorage& storage =
        Metadata::Structural::PrefaceHelpers::contentStorage(*preface);
    std::string found = "-";
    for (int pass = 0; pass < 2 && found == "-"; ++pass)
        for (std::uint32_t i = 0; i < storage.packagesCount() && found == "-"; ++i)
        {
            Metadata::Structural::GenericPackage* package = storage.package(i);
            const bool material =
                package != nullptr &&
                Metadata::metadataSetAs<Metadata::Structural::MaterialPackage>(*package) != nullptr;
            if (package != nullptr && material == (pass == 0) &&
                Metadata::Structural::PackageHelpers::timecodeTrack(*package) != nullptr)
                found = timecodeText(Metadata::Structural::PackageHelpers::startTimecode(*package));
        }
    return found;
}

void printTrack(const EssenceTrackInfo& track, std::ostream& out)
{
    out << "track id=" << track.trackId << " material=" << unsigned(track.essenceKey.data()[10])
        << " coding=" << track.coding << " edit_rate=" << rational(track.editRate);
    if (track.fileName == L"video.mxf")
    {
        const KEP::Halvorn::VideoAttributes& v = track.video;
        out << " bit_rate=" << v.bitRate << " stored=" << v.storedWidth << "x" << v.storedHeight
            << " sampled=" << v.sampledWidth << "x" << v.sampledHeight << "+" << v.sampledXOffset
            << "+" << v.sampledYOffset << " display=" << v.displayWidth << "x" << v.displayHeight
            << "+" << v.displayXOffset << "+" << v.displayYOffset
            << " aspect=" << v.aspectRatioNumerator << "/" << v.aspectRatioDenominator
            << " signal=" << v.signalAttribute << " depth=" << v.componentDepth
            << " subsampling=" << v.horizontalSubsampling << "," << v.verticalSubsampling
            << " levels=" << v.blackRefLevel << "," << v.whiteRefLevel
            << " color_range=" << v.colorRange << " frame_layout=" << unsigned(v.frameLayout)
            << " line_map=" << v.videoLineMap[0] << "," << v.videoLineMap[1]
            << " resolution=" << KEP::Halvorn::resolutionId(track);
    }
    else
        out << " sample_rate=" << track.audio.audioSampleRate
            << " bits=" << track.audio.quantizationBits << " channels=" << track.audio.channelCount;
    out << " file=" << Platform::toUtf8(track.fileName) << "\n";
}

// The clip's files, marks and track descriptors as the XDCAM pipe finds them.
int describeClip(const Arguments& parsed, const std::string& input,
                 const std::shared_ptr<MetaMetadata::Dictionary>& dictionary, std::ostream& out,
                 std::ostream& err)
{
    XDCAMDecodePipe pipe;
    const std::wstring umid = Platform::fromUtf8(parsed.umid);
    if (parsed.file.empty())
    {
        if (!pipe.setInputUmid(Platform::fromUtf8(parsed.mediaProfile).c_str(), umid.c_str()))
            return fileFailure(input, "no clip with its files and sidecar for umid " + parsed.umid,
                               err);
    }
    else
        pipe.setInputFile(Platform::fromUtf8(parsed.file).c_str(), L"", 0);

    KEP::Halvorn::EssenceTrackInfoList tracks;
    if (!pipe.load(tracks, dictionary))
    {
        const int code = pipe.getErrorCode();
        return fileFailure(input,
                           Platform::toUtf8(KEP::Halvorn::ErrorMessages::instance().text(code)) +
                               Platform::toUtf8(code == KEP::Halvorn::ERROR_LOADING_INPUT
                                                    ? pipe.inputFiles().getErrorMessage()
                                                    : pipe.getErrorMessage()),
                           err);
    }
    if (!parsed.umid.empty())
    {
        out << "clip umid=" << parsed.umid
            << " sidecar=" << Platform::toUtf8(pipe.xmlMetadataFile())
            << " start_offset=" << pipe.clipStartOffset() << "\n";
        for (const std::wstring& name : pipe.inputFiles().fileNames())
        {
            const auto file = std::make_shared<DataIO::File::FileDataSource>(name);
            out << "file frames=" << pipe.createFileBoundsRetriever(file)->duration()
                << " name=" << Platform::toUtf8(name) << "\n";
        }
        for (const auto& [frame, text] : pipe.clipMaterials())
            out << "mark frame=" << frame << " text=" << Platform::toUtf8(text) << "\n";
    }
    for (const auto& track : tracks)
        printTrack(*track, out);
    out << "clip duration=" << pipe.clipDuration()
        << " start=" << startTimecode(pipe.firstInputFile(), dictionary) << "\n";
    return CLEAN;
}

} // namespace

int tracksCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    const std::optional<Arguments> parsed = parse(args);
    if (!parsed)
    {
        err << "usage: mxf-inspect " << TRACKS_USAGE << "\n";
        return FAILED;
    }
    auto dictionary = std::make_shared<MetaMetadata::Dictionary>();
    try
    {
        MetaMetadata::BinaryLoader::load(Platform::fromUtf8(parsed->dictionary), *dictionary);
    }
    catch (const Exceptions::BaseException& e)
    {
        return fileFailure(parsed->dictionary, e.what(), err);
    }

    // A clip file that can't be opened is told as every subcommand tells it.
    const std::string& input = parsed->file.empty() ? parsed->mediaProfile : parsed->file;
    if (!parsed->file.empty() && openFile(parsed->file, err) == nullptr)
        return FAILED;
    try
    {
        return describeClip(*parsed, input, dictionary, out, err);
    }
    catch (const std::exception& e)
    {
        out.flush();
        return fileFailure(input, e.what(), err);
    }
}

} // namespace Halvorn::Inspect
