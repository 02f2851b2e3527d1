#include "DecodePipes/EssenceContainerKind.h"

#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/Types/UID.h"
#include "Transcoder/Samples/EssenceTrackInfo.h"

namespace KEP::Halvorn::DecodePipes
{

namespace
{

// Bytes 0 to 12 of every generic container label; byte 7, the registry version, is not looked at.
constexpr unsigned char GENERIC_CONTAINER[] = {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01,
                                               0x01, 0x0D, 0x01, 0x03, 0x01, 0x02};

} // namespace

EssenceContainerKind essenceContainerKind(const MXF::SDK::Types::UniversalLabel& label)
{
    const unsigned char* bytes = label.data();
    if (!MXF::SDK::KLV::equalIgnoringVersion(bytes, GENERIC_CONTAINER, sizeof GENERIC_CONTAINER))
        return KIND_UNKNOWN;
    const unsigned char mapping = bytes[13];
    const unsigned char streamOrVariant = bytes[14];
    switch (mapping)
    {
    case 0x01:
        return KIND_D10;
    case 0x02:
        return KIND_DV;
    case 0x04:
        // The stream id less 0x80: C0..DF audio, E0..EF video.
        if (streamOrVariant >= 0x40 && streamOrVariant <= 0x5F)
            return KIND_MPEG_ES_SOUND;
        if (streamOrVariant >= 0x60 && streamOrVariant <= 0x6F)
            return KIND_MPEG_ES_PICTURE;
        return KIND_UNKNOWN;
    case 0x05:
        return KIND_UNCOMPRESSED_PICTURE;
    case 0x06:
        if (streamOrVariant == 0x01 || streamOrVariant == 0x02)
            return KIND_BWF;
        if (streamOrVariant == 0x03 || streamOrVariant == 0x04)
            return KIND_AES3;
        return KIND_UNKNOWN;
    default:
        return KIND_UNKNOWN;
    }
}

unsigned pictureCoding(EssenceContainerKind kind)
{
    return kind == KIND_D10 || kind == KIND_MPEG_ES_PICTURE ? EssenceTrackInfo::CODING_VIDEO
                                                            : EssenceTrackInfo::CODING_NONE;
}

unsigned soundCoding(EssenceContainerKind kind)
{
    switch (kind)
    {
    case KIND_BWF:
    case KIND_D10:
        return EssenceTrackInfo::CODING_AUDIO;
    case KIND_AES3:
        return EssenceTrackInfo::CODING_AUDIO_TWOS;
    default:
        return EssenceTrackInfo::CODING_NONE;
    }
}

} // namespace KEP::Halvorn::DecodePipes
