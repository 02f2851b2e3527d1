#include "Commands.h"
#include "KlvWalk.h"

#include <ostream>

namespace Halvorn::Inspect
{

int klvCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    const auto file = openFileArgument("klv", args, err);
    if (!file)
        return FAILED;
    const KlvWalkResult result = walkKlv(*file, out);
    out << result.items << " items\n";
    out.flush();
    // Without a single item the file is no KLV at all: unreadable, not damaged.
    return walkStatus(args[0], result.damage, result.failed || result.items == 0, err);
}

} // namespace Halvorn::Inspect
