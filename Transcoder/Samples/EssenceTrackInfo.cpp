#include "Transcoder/Samples/EssenceTrackInfo.h"

#include "MXF/SDK/Types/Factories/UIDFactory.h"

namespace KEP::Halvorn
{

namespace Factories = MXF::SDK::Types::Factories;

EssenceTrackInfo::EssenceTrackInfo(std::uint8_t materialType)
    : essenceKey(Factories::newUMID32(materialType, Factories::MNMI_SMPTE,
                                      Factories::INMI_24BIT_PRN, 1,
                                      static_cast<Factories::TimeSnapVersion>(0)))
{
}

} // namespace KEP::Halvorn
