#pragma once

#include "DecodePipes/IDecodePipe.h"
#include "DecodePipes/InputFilesManager.h"
#include "MXF/SDK/Types/Rational.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

namespace KEP::Halvorn::DecodePipes
{

// The common body of the decode pipes: input selection, in and out points, the clip's files, the
// track list and the samples read ahead. A subclass analyses a file into track descriptors, reads
// samples and closes the file, and makes the retriever that measures a file of its format.
class BaseDecodePipe : public IDecodePipe, public FileBoundsProvider
{
public:
    BaseDecodePipe();
    // Releases the samples still held. A subclass closes its file in its own destructor.
    ~BaseDecodePipe() override;
    BaseDecodePipe(const BaseDecodePipe&) = delete;
    BaseDecodePipe& operator=(const BaseDecodePipe&) = delete;

    // One media file, its NonRealTimeMeta sidecar (whose marks are read at once) and the clip's
    // start offset. Always true.
    bool setInputFile(const wchar_t* mediaFile, const wchar_t* xmlFile, int startOffset) override;
    // The files of a clip or take found by its UMID through a MediaProfile document. False, after
    // a log line, when the profile, the files or the sidecar can't be found.
    bool setInputUmid(const wchar_t* mediaProfileFile, const wchar_t* umid) override;
    // The first frame wanted, counted over the clip's files end to end. The precharge frames are
    // only checked by useInOutPoint.
    void setInPoint(std::uint64_t inPoint, std::uint64_t prechargeFrames) override;
    // The frames to read. The displayed frames are only checked by useInOutPoint.
    void setDuration(std::uint64_t totalFrames, std::uint64_t displayedFrames) override;
    // Makes the next load honour the in point and duration. False, after a log line, when either
    // is missing or precharge plus displayed frames exceed the total.
    bool useInOutPoint() override;

    bool isInputSet() const final;
    // Opens the files, analyses the first one and gives its track descriptors in `tracks`. A
    // failure leaves ERROR_LOADING_INPUT (no file to read) or ERROR_NO_ESSENCE_TRACKS in the
    // entity, or throws from the toolkit.
    bool load(EssenceTrackInfoList& tracks,
              std::shared_ptr<MXF::SDK::MetaMetadata::Dictionary> dictionary) final;
    Sample* nextSample() final;
    // Percent of the total frames read; not finite when the total is 0.
    double progress() final;
    // Drops the files, tracks and samples of the last job; the input and the in and out points
    // stay.
    void reset() final;

    const wchar_t* xmlMetadataFile() const final;
    int clipStartOffset() const final;
    const wchar_t* firstInputFile() const final;
    ClipMaterials clipMaterials() const final;
    // Of the essence, as the analysis found it.
    MXF::SDK::Types::Rational editRate() const;

protected:
    // Releases what analyzeCurrentFile opened. Safe to call when nothing is open.
    virtual void closeCurrentFile() = 0;
    // Reads the current entry of inputFiles_ into tracks_ and editRate_. Always called with an
    // entry that holds a file. False after setting the entity.
    virtual bool analyzeCurrentFile() = 0;
    // Appends to samples_ what one read gives; nothing at the end of the essence.
    virtual void readNextSamples() = 0;

    // Closes the current file and analyses the next one. False at the end of the files or when
    // the analysis fails (the entity then says why).
    bool advanceFile();

    std::uint32_t audioFileCounter_ = 0;
    InputFilesManager inputFiles_;
    std::shared_ptr<MXF::SDK::MetaMetadata::Dictionary> dictionary_;
    EssenceTrackInfoList tracks_;
    MXF::SDK::Types::Rational editRate_{0, 1};
    // One reference of each is the pipe's.
    std::deque<Sample*> samples_;
    std::uint64_t framesRead_ = 0;

private:
    // Step 2 of advanceFile and of reset.
    void cleanUp();
    void releaseSamples();
    // analyzeCurrentFile, then ERROR_NO_ESSENCE_TRACKS when it announced no track.
    bool analyzeForTracks();

    bool inputSet_ = false;
    bool loaded_ = false;
    std::uint64_t inPoint_ = 0;
    std::uint64_t prechargeFrames_ = 0;
    bool inPointSet_ = false;
    std::uint64_t totalFrames_ = 0;
    std::uint64_t displayedFrames_ = 0;
    bool durationSet_ = false;
    bool inOutPointsInUse_ = false;
    std::wstring xmlMetadataFile_;
    std::int32_t clipStartOffset_ = 0;
    ClipMaterials clipMaterials_;
};

} // namespace KEP::Halvorn::DecodePipes
