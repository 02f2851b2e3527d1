#pragma once

#include <memory>
#include <vector>

namespace KEP::Halvorn
{

// The descriptor of one output track: filled by a decode pipe, read by the encode pipe.
class EssenceTrackInfo;

using EssenceTrackInfoList = std::vector<std::shared_ptr<EssenceTrackInfo>>;

} // namespace KEP::Halvorn
