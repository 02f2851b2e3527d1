#pragma once

#include "EncodePipes/BaseEncodePipe.h"
#include "KEP/Halvorn/KEPCodecPipe.h"

#include <cstdint>
#include <map>
#include <string>

namespace KEP::Halvorn::EncodePipes
{

// An encode pipe that also writes an AAF file linking its outputs.
class AvidEncodePipe : public KEPAvidEncodePipe, public BaseEncodePipe
{
public:
    ~AvidEncodePipe() override = default;

    // Writes the link file for `tracks`, read from the clip `clipName` whose metadata sidecar is
    // `xmlPath`; `materials` (frame position to text) become its locators. Runs before the job.
    virtual bool createAAFFile(const wchar_t* xmlPath, const EssenceTrackInfoList& tracks,
                               const wchar_t* clipName,
                               const std::map<std::uint64_t, std::wstring>& materials) = 0;
};

} // namespace KEP::Halvorn::EncodePipes
