#pragma once

#include "Transcoder/Samples/EssenceTrackInfo.h"

namespace KEP::Halvorn
{

// Fields (or frames, for progressive video) a second of a track: 24, 25, 30, 50 or 60, and 0 for
// an edit rate this product does not know. The edit rate must be stored exactly as 30000/1001,
// 60000/1001, 25/1, 50/1 or 24000/1001: 50/2 or 24/1 give 0.
int fieldRate(const EssenceTrackInfo& track);

// The Avid resolution identifier of an MPEG-2 video track, from its bit rate, field rate, frame
// layout and display size; 0, with a trace line saying why, when there is none.
int resolutionId(const EssenceTrackInfo& track);

} // namespace KEP::Halvorn
