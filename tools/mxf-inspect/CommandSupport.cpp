#include "Commands.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Platform.h"

#include <filesystem>
#include <ostream>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;

namespace
{

bool verboseErrors = false;

// Whether a piece of a failure's text is the source expression of a failed check
// ("file_ != 0", "!(masterEditPeriod_ == 0)", "Platform::fileSeek (file_, position)").
bool isCheckExpression(std::string_view piece)
{
    for (const std::string_view op : {"!=", "==", " < ", " > ", "<=", ">=", "->", "&&", "||", "::"})
        if (piece.find(op) != std::string_view::npos)
            return true;
    return piece.starts_with('!') || piece.starts_with('(') || piece.ends_with(')');
}

} // namespace

void setVerboseErrors(bool verbose)
{
    verboseErrors = verbose;
}

std::string userText(std::string_view what)
{
    if (verboseErrors)
        return std::string(what);
    // The text is pieces joined by ": "; the last one is the message itself and always stays.
    std::string text;
    for (std::size_t at = 0;;)
    {
        const std::size_t end = what.find(": ", at);
        const std::string_view piece =
            what.substr(at, end == std::string_view::npos ? end : end - at);
        if (end == std::string_view::npos)
            return text + std::string(piece);
        if (!isCheckExpression(piece))
            text += std::string(piece) + ": ";
        at = end + 2;
    }
}

int fileFailure(const std::string& path, std::string_view what, std::ostream& err)
{
    err << "mxf-inspect: " << path << ": " << userText(what) << "\n";
    return FAILED;
}

std::unique_ptr<DataIO::File::FileDataSource> openFile(const std::string& path, std::ostream& err)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
    {
        fileFailure(path, "is a directory", err);
        return nullptr;
    }
    try
    {
        return std::make_unique<DataIO::File::FileDataSource>(Platform::fromUtf8(path));
    }
    catch (const Exceptions::BaseException& e)
    {
        fileFailure(path, e.what(), err);
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
    err << "mxf-inspect: " << path << ": " << userText(damage) << "\n";
    return failed ? FAILED : DAMAGED;
}

} // namespace Halvorn::Inspect
