#pragma once

#include "KEP/Halvorn/KEPCodecPipe.h"
#include "Transcoder/Samples/EssenceTrackInfo.h"
#include "Transcoder/Samples/Sample.h"
#include "Utils/ErrorMessageEntity.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace MXF::SDK::MetaMetadata
{
class Dictionary;
}

namespace KEP::Halvorn::DecodePipes
{

// Frame position to text: the essence marks of a clip, which become the AAF file's locators.
using ClipMaterials = std::map<std::uint64_t, std::wstring>;

// The decode side as the transcoder drives it, on the job's thread. Header-only and abstract,
// because the transcoder sits below the decode pipes and must not link them: BaseDecodePipe is
// the one implementation. A failure leaves its code and detail in the entity; the transcoder
// reports them.
class IDecodePipe : public KEPDecodePipe, public Utils::ErrorMessageEntity
{
public:
    ~IDecodePipe() override = default;

    virtual bool isInputSet() const = 0;
    // Opens and analyses the clip and gives its track descriptors in `tracks`. A second call
    // gives the same descriptors again without touching the files.
    virtual bool load(EssenceTrackInfoList& tracks,
                      std::shared_ptr<MXF::SDK::MetaMetadata::Dictionary> dictionary) = 0;
    // The next sample with its reference for the caller, or null at the end of the essence.
    virtual Sample* nextSample() = 0;
    // Percent of the clip read so far.
    virtual double progress() = 0;
    // Back to the state after the input was set, so the pipe can run the same input again.
    virtual void reset() = 0;

    // Never null.
    virtual const wchar_t* xmlMetadataFile() const = 0;
    virtual int clipStartOffset() const = 0;
    // Empty, never null, without input files.
    virtual const wchar_t* firstInputFile() const = 0;
    virtual ClipMaterials clipMaterials() const = 0;
};

} // namespace KEP::Halvorn::DecodePipes
