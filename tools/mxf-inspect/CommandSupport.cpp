#include "Commands.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Platform.h"

#include <ostream>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;

std::unique_ptr<DataIO::File::FileDataSource> openFile(const std::string& path, std::ostream& err)
{
    try
    {
        return std::make_unique<DataIO::File::FileDataSource>(Platform::fromUtf8(path));
    }
    catch (const Exceptions::BaseException& e)
    {
        err << "mxf-inspect: " << e.what() << "\n";
        return nullptr;
    }
}

std::unique_ptr<DataIO::File::FileDataSource>
openFileArgument(const char* command, const std::vector<std::string>& args, std::ostream& err)
{
    if (args.size() != 1)
    {
        err << "usage: mxf-inspect " << command << " FILE\n";
        return nullptr;
    }
    return openFile(args[0], err);
}

int walkStatus(const std::string& path, const std::string& damage, bool failed, std::ostream& err)
{
    if (damage.empty())
        return CLEAN;
    err << "mxf-inspect: " << path << ": " << damage << "\n";
    return failed ? FAILED : DAMAGED;
}

} // namespace Halvorn::Inspect
