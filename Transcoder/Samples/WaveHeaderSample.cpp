#include "Transcoder/Samples/WaveHeaderSample.h"

#include <cstring>

namespace KEP::Halvorn
{

namespace
{

constexpr std::uint32_t UNKNOWN_LENGTH = 0xFFFFFFFF;
constexpr std::uint32_t PCM_FORMAT_SIZE = 16;
constexpr std::uint16_t WAVE_FORMAT_PCM = 1;

} // namespace

WaveHeaderSample::WaveHeaderSample(std::uint16_t bitsPerSample, std::uint16_t samplesPerSecond,
                                   std::uint16_t channels)
    : HalvornSample(0, SIZE)
{
    putChunkHeader("RIFF", UNKNOWN_LENGTH);
    putTag("WAVE");
    putChunkHeader("fmt ", PCM_FORMAT_SIZE);
    put16(WAVE_FORMAT_PCM);
    put16(channels);
    put32(samplesPerSecond);
    put32(std::uint32_t{bitsPerSample} * channels * samplesPerSecond >> 3);
    put16(static_cast<std::uint16_t>((bitsPerSample >> 3) * channels));
    put16(bitsPerSample);
    putChunkHeader("data", UNKNOWN_LENGTH);
}

void WaveHeaderSample::putTag(std::string_view tag)
{
    std::memcpy(data() + writeOffset_, tag.data(), 4);
    writeOffset_ += 4;
}

void WaveHeaderSample::putChunkHeader(std::string_view tag, std::uint32_t size)
{
    putTag(tag);
    put32(size);
}

void WaveHeaderSample::put16(std::uint16_t value)
{
    data()[writeOffset_++] = static_cast<std::uint8_t>(value);
    data()[writeOffset_++] = static_cast<std::uint8_t>(value >> 8);
}

void WaveHeaderSample::put32(std::uint32_t value)
{
    put16(static_cast<std::uint16_t>(value));
    put16(static_cast<std::uint16_t>(value >> 16));
}

} // namespace KEP::Halvorn
