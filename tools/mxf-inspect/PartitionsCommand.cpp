#include "Commands.h"
#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Platform.h"
#include "PartitionsWalk.h"

#include <memory>
#include <ostream>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;

int partitionsCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    if (args.size() != 1)
    {
        err << "usage: mxf-inspect partitions FILE\n";
        return FAILED;
    }
    const std::string& path = args[0];
    std::unique_ptr<DataIO::File::FileDataSource> file;
    try
    {
        file = std::make_unique<DataIO::File::FileDataSource>(Platform::fromUtf8(path));
    }
    catch (const Exceptions::BaseException& e)
    {
        err << "mxf-inspect: " << e.what() << "\n";
        return FAILED;
    }

    const PartitionsWalkResult result = walkPartitions(*file, out);
    out.flush();
    if (result.damage.empty())
        return CLEAN;
    err << "mxf-inspect: " << path << ": " << result.damage << "\n";
    return result.failed ? FAILED : DAMAGED;
}

} // namespace Halvorn::Inspect
