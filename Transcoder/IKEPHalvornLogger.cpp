#include "KEP/Halvorn/IKEPHalvornLogger.h"

#include "Transcoder/Samples/Allocation.h"

namespace KEP::Halvorn
{

IKEPHalvornLogger::~IKEPHalvornLogger() = default;

KEP_HALVORN_DEFINE_ALLOCATION(IKEPHalvornLogger)

} // namespace KEP::Halvorn
