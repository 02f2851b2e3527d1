#pragma once

#include "Transcoder/Samples/Sample.h"

#include <cstdint>
#include <string_view>

namespace KEP::Halvorn
{

// The 44-byte canonical RIFF header of a PCM Wave stream of unknown length, `trackId` 0. Both
// size fields (RIFF at 4, data at 40) are all ones; every number is little-endian. An audio queue
// starts with one, so that its consumer reads a Wave stream as it would a file.
class WaveHeaderSample : public HalvornSample
{
public:
    static constexpr std::uint32_t SIZE = 44;

    WaveHeaderSample(std::uint16_t bitsPerSample, std::uint16_t samplesPerSecond,
                     std::uint16_t channels);

private:
    void putTag(std::string_view tag);
    void putChunkHeader(std::string_view tag, std::uint32_t size);
    void put16(std::uint16_t value);
    void put32(std::uint32_t value);

    std::uint32_t writeOffset_ = 0;
};

} // namespace KEP::Halvorn
