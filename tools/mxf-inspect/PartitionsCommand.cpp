#include "Commands.h"
#include "PartitionsWalk.h"

#include <ostream>

namespace Halvorn::Inspect
{

int partitionsCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    const auto file = openFileArgument("partitions", args, err);
    if (!file)
        return FAILED;
    const PartitionsWalkResult result = walkPartitions(*file, out);
    out.flush();
    // Without a single partition pack the file is no MXF at all: unreadable, not damaged.
    return walkStatus(args[0], result.damage, result.failed || result.packs.empty(), err);
}

} // namespace Halvorn::Inspect
