#pragma once

namespace MXF::SDK::Types
{
class UniversalLabel;
}

namespace KEP::Halvorn::DecodePipes
{

// What a generic container essence-container label (SMPTE 379M, registered in RP 224 as
// 06 0E 2B 34 04 01 01 vv 0D 01 03 01 02 mm ss ww) says about the essence of one track: the
// mapping `mm`, and for MPEG elementary streams the stream id `ss`. Only what the decode pipes
// turn into output tracks is told apart; the values are the ones the track step tests.
enum EssenceContainerKind : int
{
    // No descriptor, another registry, or a mapping this product does not decode.
    KIND_UNKNOWN = 0,
    // mm 06, ww 01 or 02: SMPTE 382M broadcast wave, frame or clip wrapped.
    KIND_BWF = 1,
    // mm 02: SMPTE 383M DV-DIF.
    KIND_DV = 2,
    // mm 05: SMPTE 384M uncompressed pictures.
    KIND_UNCOMPRESSED_PICTURE = 3,
    // mm 06, ww 03 or 04: SMPTE 382M AES3, frame or clip wrapped (XDCAM HD sound).
    KIND_AES3 = 4,
    // mm 01: SMPTE 386M D-10 (IMX). Picture and sound share the label; the sound is the AES3
    // element of 331M, eight channel slots.
    KIND_D10 = 5,
    // mm 04, ss 40..5F: SMPTE 381M MPEG elementary stream of an audio stream id.
    KIND_MPEG_ES_SOUND = 6,
    // mm 04, ss 60..6F: SMPTE 381M MPEG elementary stream of a video stream id (XDCAM HD
    // pictures).
    KIND_MPEG_ES_PICTURE = 7
};

// The kind of an essence container label; the version byte vv is not looked at.
EssenceContainerKind essenceContainerKind(const MXF::SDK::Types::UniversalLabel& label);

// The coding of an output track (EssenceTrackInfo::Coding) from the kind of its input: a picture
// in an MPEG ES or D-10 container is video; a sound in a wave or D-10 container is PCM, one in an
// AES3 container the other audio form. Anything else gives no coding, and its track is still
// announced.
unsigned pictureCoding(EssenceContainerKind kind);
unsigned soundCoding(EssenceContainerKind kind);

} // namespace KEP::Halvorn::DecodePipes
