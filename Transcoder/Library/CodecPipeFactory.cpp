#include "DecodePipes/XDCAMDecodePipe.h"
#include "KEP/Halvorn/KEPModule.h"

namespace KEP::Halvorn
{

namespace
{

// Through the pipe's own operator new; a pipe that cannot be made is null, as the host is told.
template <typename Pipe>
KEPCodecPipe* make() noexcept
{
    try
    {
        return new Pipe;
    }
    catch (...)
    {
        return nullptr;
    }
}

} // namespace

KEPCodecPipe* KEPModule::newCodecPipe(KEPCodecPipeType type)
{
    // Negative values compare as unsigned, so they are unknown too.
    switch (static_cast<unsigned>(type))
    {
    case XDCAMDecodePipeType:
        return make<DecodePipes::XDCAMDecodePipe>();
    case XDCAMEXDecodePipeType:
    case AvidEncodePipeType:
    case OPAtomEncodePipeType:
        // Each type gets its make<Pipe>() here once its pipe is part of the library.
        return nullptr;
    default:
        return nullptr;
    }
}

} // namespace KEP::Halvorn
