#include "DecodePipes/BaseDecodePipe.h"

#include "DecodePipes/ClipMetadata.h"
#include "Transcoder/ErrorMessages.h"
#include "Transcoder/LoggerHolder.h"

namespace KEP::Halvorn::DecodePipes
{

namespace
{

const wchar_t* orEmpty(const wchar_t* text)
{
    return text != nullptr ? text : L"";
}

} // namespace

BaseDecodePipe::BaseDecodePipe() = default;

BaseDecodePipe::~BaseDecodePipe()
{
    releaseSamples();
}

bool BaseDecodePipe::setInputFile(const wchar_t* mediaFile, const wchar_t* xmlFile, int startOffset)
{
    inputFiles_.setFiles({orEmpty(mediaFile)});
    xmlMetadataFile_ = orEmpty(xmlFile);
    clipMaterials_ = ClipMetadata::loadMaterials(xmlMetadataFile_.c_str());
    clipStartOffset_ = startOffset;
    inputSet_ = true;
    return true;
}

bool BaseDecodePipe::setInputUmid(const wchar_t* mediaProfileFile, const wchar_t* umid)
{
    umid = orEmpty(umid);
    try
    {
        ClipMetadata metadata;
        if (!metadata.load(mediaProfileFile))
            return false;
        std::vector<std::wstring> files = metadata.filesForUmid(umid);
        if (files.empty())
        {
            logEntry(LOG_TRACE, L"Unable to retrieve file associated to umid: ") << umid;
            return false;
        }
        inputFiles_.setFiles(std::move(files));
        xmlMetadataFile_ = metadata.xmlFileForUmid(umid);
        clipStartOffset_ = metadata.componentOffset();
        clipMaterials_ = metadata.materials();
        if (xmlMetadataFile_.empty())
        {
            logEntry(LOG_TRACE, L"Unable to load xml metadata file for requested umid: ") << umid;
            return false;
        }
        logEntry(LOG_TRACE, L"Setting xml metadata file for umid ")
            << umid << L" to: " << xmlMetadataFile_;
        inputSet_ = true;
        return true;
    }
    catch (...)
    {
        return false;
    }
}

void BaseDecodePipe::setInPoint(std::uint64_t inPoint, std::uint64_t prechargeFrames)
{
    inPoint_ = inPoint;
    prechargeFrames_ = prechargeFrames;
    inPointSet_ = true;
}

void BaseDecodePipe::setDuration(std::uint64_t totalFrames, std::uint64_t displayedFrames)
{
    totalFrames_ = totalFrames;
    displayedFrames_ = displayedFrames;
    durationSet_ = true;
}

bool BaseDecodePipe::useInOutPoint()
{
    if (!durationSet_ || !inPointSet_)
    {
        logEntry(LOG_TRACE, L"setInPoint methods and setDuration methods must be called prior to "
                            L"useInOutPoint.");
        return false;
    }
    // The text says the opposite of the test; hosts know it by its words.
    if (prechargeFrames_ + displayedFrames_ > totalFrames_)
    {
        logEntry(LOG_TRACE, L"The number of precharge frames plus the number of displayed frames "
                            L"must be higher than total frames to read.");
        return false;
    }
    inOutPointsInUse_ = true;
    return true;
}

bool BaseDecodePipe::isInputSet() const
{
    return inputSet_;
}

bool BaseDecodePipe::load(EssenceTrackInfoList& tracks,
                          std::shared_ptr<MXF::SDK::MetaMetadata::Dictionary> dictionary)
{
    // createAAFFile and then transcode: the second load keeps the first one's descriptors, whose
    // UMIDs the link file already names.
    if (loaded_)
    {
        tracks = tracks_;
        return true;
    }
    dictionary_ = std::move(dictionary);
    // The manager keeps its own detail; the code it means is the one the host sees.
    if (!inputFiles_.load(*this, inPoint_, totalFrames_, clipStartOffset_, inOutPointsInUse_) ||
        inputFiles_.currentEntry().file == nullptr)
    {
        errorCode_ = ERROR_LOADING_INPUT;
        return false;
    }
    if (!analyzeForTracks())
        return false;
    loaded_ = true;
    tracks = tracks_;
    return true;
}

Sample* BaseDecodePipe::nextSample()
{
    if (samples_.empty())
        readNextSamples();
    if (samples_.empty())
        return nullptr;
    Sample* const sample = samples_.front();
    samples_.pop_front();
    return sample;
}

double BaseDecodePipe::progress()
{
    return 100.0 * static_cast<double>(framesRead_) /
           static_cast<double>(inputFiles_.totalFrames());
}

void BaseDecodePipe::reset()
{
    inputFiles_.reset();
    framesRead_ = 0;
    cleanUp();
    // Read ahead for a job that is over: the next one starts from its first frame again.
    releaseSamples();
}

const wchar_t* BaseDecodePipe::xmlMetadataFile() const
{
    return xmlMetadataFile_.c_str();
}

int BaseDecodePipe::clipStartOffset() const
{
    return clipStartOffset_;
}

const wchar_t* BaseDecodePipe::firstInputFile() const
{
    return inputFiles_.firstFileName();
}

ClipMaterials BaseDecodePipe::clipMaterials() const
{
    return clipMaterials_;
}

MXF::SDK::Types::Rational BaseDecodePipe::editRate() const
{
    return editRate_;
}

bool BaseDecodePipe::advanceFile()
{
    // The old descriptors live until the new file is analysed: samples of the old file may still
    // refer to them on their way.
    const EssenceTrackInfoList previous = tracks_;
    cleanUp();
    return inputFiles_.advance() && analyzeForTracks();
}

bool BaseDecodePipe::analyzeForTracks()
{
    if (!analyzeCurrentFile())
        return false;
    if (tracks_.empty())
    {
        errorCode_ = ERROR_NO_ESSENCE_TRACKS;
        return false;
    }
    return true;
}

void BaseDecodePipe::cleanUp()
{
    loaded_ = false;
    audioFileCounter_ = 0;
    tracks_.clear();
    closeCurrentFile();
}

void BaseDecodePipe::releaseSamples()
{
    for (Sample* sample : samples_)
        sample->release();
    samples_.clear();
}

} // namespace KEP::Halvorn::DecodePipes
