#include "Commands.h"

#include <exception>
#include <iostream>
#include <string_view>

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
    std::cerr << "usage: mxf-inspect";
    for (const Subcommand& command : SUBCOMMANDS)
        std::cerr << (&command == SUBCOMMANDS ? " " : " | ") << command.usage;
    std::cerr << "\n";
    return FAILED;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
        return usage();
    const std::string_view name = argv[1];
    for (const Subcommand& command : SUBCOMMANDS)
    {
        if (command.name != name)
            continue;
        try
        {
            return command.run({argv + 2, argv + argc}, std::cout, std::cerr);
        }
        catch (const std::exception& e)
        {
            std::cout.flush();
            std::cerr << "mxf-inspect: " << e.what() << "\n";
            return FAILED;
        }
    }
    return usage();
}
