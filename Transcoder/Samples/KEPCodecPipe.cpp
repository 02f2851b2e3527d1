#include "KEP/Halvorn/KEPCodecPipe.h"

#include "Transcoder/Samples/Allocation.h"

namespace KEP::Halvorn
{

KEPCodecPipe::~KEPCodecPipe() = default;
KEPDecodePipe::~KEPDecodePipe() = default;
KEPEncodePipe::~KEPEncodePipe() = default;
KEPOPAtomEncodePipe::~KEPOPAtomEncodePipe() = default;
KEPAvidEncodePipe::~KEPAvidEncodePipe() = default;

KEP_HALVORN_DEFINE_ALLOCATION(KEPCodecPipe)
KEP_HALVORN_DEFINE_ALLOCATION(KEPDecodePipe)
KEP_HALVORN_DEFINE_ALLOCATION(KEPEncodePipe)
KEP_HALVORN_DEFINE_ALLOCATION(KEPOPAtomEncodePipe)
KEP_HALVORN_DEFINE_ALLOCATION(KEPAvidEncodePipe)

} // namespace KEP::Halvorn
