#include "MXF/SDK/DataIO/Block.h"

#include "MXF/SDK/Templates/Singleton.h"

namespace MXF::SDK::DataIO
{

MemoryBlockFactory& MemoryBlockFactory::instance()
{
    return Templates::Singleton<MemoryBlockFactory>::instance();
}

EmptyBlock& EmptyBlock::instance()
{
    static EmptyBlock* const block = new EmptyBlock; // never destroyed: slices may outlive statics
    return *block;
}

} // namespace MXF::SDK::DataIO
