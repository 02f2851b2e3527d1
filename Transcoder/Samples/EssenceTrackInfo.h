#pragma once

#include "MXF/SDK/Types/Rational.h"
#include "MXF/SDK/Types/UID.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace KEP::Halvorn
{

// Picture attributes of a video track, in the order the decode pipes copy them.
struct VideoAttributes
{
    std::uint32_t bitRate = 0;
    std::uint32_t storedHeight = 0;
    std::uint32_t storedWidth = 0;
    std::uint32_t sampledHeight = 0;
    std::uint32_t sampledWidth = 0;
    std::int32_t sampledXOffset = 0;
    std::int32_t sampledYOffset = 0;
    std::uint32_t displayHeight = 0;
    std::uint32_t displayWidth = 0;
    std::int32_t displayXOffset = 0;
    std::int32_t displayYOffset = 0;
    std::uint32_t aspectRatioNumerator = 0;
    std::uint32_t aspectRatioDenominator = 0;
    // Opaque here: read from the input's picture descriptor and written back unchanged.
    std::uint32_t signalAttribute = 0;
    std::uint32_t componentDepth = 0;
    std::uint32_t horizontalSubsampling = 0;
    std::uint32_t verticalSubsampling = 0;
    std::uint32_t blackRefLevel = 0;
    std::uint32_t whiteRefLevel = 0;
    std::uint32_t colorRange = 0;
    // 0 is a full frame; anything else means fields.
    std::uint8_t frameLayout = 0;
    // Absent entries are 0.
    std::int32_t videoLineMap[2] = {};
};

struct AudioAttributes
{
    std::uint32_t quantizationBits = 0;
    std::uint32_t channelCount = 0;
    std::uint32_t audioSampleRate = 0;
};

// The descriptor of one output track: filled by a decode pipe, read by the encode pipe. `coding`
// says which of `video` and `audio` is meaningful.
class EssenceTrackInfo
{
public:
    enum Coding : std::uint32_t
    {
        CODING_NONE = 0,
        CODING_VIDEO = 1,
        // The two audio forms: PCM from an MXF clip, and split 16-bit channels from an MP4 clip.
        CODING_AUDIO = 2,
        CODING_AUDIO_TWOS = 3
    };

    // A new `essenceKey` of `materialType` (5 video, 8 audio).
    explicit EssenceTrackInfo(std::uint8_t materialType);

    // The `trackId` of the track's samples.
    std::uint32_t trackId = 0;
    // The UMID of the output file's source package; the AAF link file may replace it.
    MXF::SDK::Types::UMID32 essenceKey;
    MXF::SDK::Types::Rational editRate{0, 1};
    VideoAttributes video;
    AudioAttributes audio;
    std::uint32_t coding = CODING_NONE;
    // Inside the output folder: "video.mxf", "audio_00.mxf" and up.
    std::wstring fileName;
};

using EssenceTrackInfoList = std::vector<std::shared_ptr<EssenceTrackInfo>>;

} // namespace KEP::Halvorn
