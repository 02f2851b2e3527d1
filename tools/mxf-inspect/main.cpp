#include "Commands.h"

#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

using namespace Halvorn::Inspect;

namespace
{

struct Subcommand
{
    std::string_view name;
    Command run;
    std::string_view usage;
};

constexpr Subcommand SUBCOMMANDS[] = {
    {"klv", klvCommand, "klv FILE"},
    {"partitions", partitionsCommand, "partitions FILE"},
    {"metadata", metadataCommand, METADATA_USAGE},
    {"index", indexCommand, "index FILE"},
    {"essence", essenceCommand, ESSENCE_USAGE},
    {"tracks", tracksCommand, TRACKS_USAGE},
};

int usage()
{
    std::cerr << "usage: mxf-inspect [-v]";
    for (const Subcommand& command : SUBCOMMANDS)
        std::cerr << (&command == SUBCOMMANDS ? " " : " | ") << command.usage;
    std::cerr << "\n";
    return FAILED;
}

} // namespace

int main(int argc, char** argv)
{
    // -v, anywhere: error lines keep the expression of the check that failed.
    std::vector<std::string> args;
    for (int i = 1; i < argc; ++i)
        if (std::string_view(argv[i]) == "-v")
            setVerboseErrors(true);
        else
            args.emplace_back(argv[i]);
    if (args.empty())
        return usage();
    for (const Subcommand& command : SUBCOMMANDS)
    {
        if (command.name != args.front())
            continue;
        try
        {
            return command.run({args.begin() + 1, args.end()}, std::cout, std::cerr);
        }
        catch (const std::exception& e)
        {
            std::cout.flush();
            std::cerr << "mxf-inspect: " << userText(e.what()) << "\n";
            return FAILED;
        }
    }
    return usage();
}
