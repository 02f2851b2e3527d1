// mxf-dictc -o OUTPUT SOURCE...: compiles the dictionary source files, taken together in the
// order given, into the binary dictionary that the toolkit loads at run time.

#include "DictionaryCompiler.h"
#include "DictionarySource.h"
#include "MXF/SDK/DataIO/File/FileDataSink.h"
#include "MXF/SDK/Platform/Platform.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace
{

int usage()
{
    std::cerr << "usage: mxf-dictc -o OUTPUT SOURCE...\n";
    return 2;
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw std::runtime_error(path + ": cannot be read");
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Written beside the output and renamed over it, so that a failed run leaves no partial file
// that the build could take for a finished one.
void writeFile(const std::string& path, const std::vector<std::uint8_t>& bytes)
{
    const std::string partial = path + ".partial";
    {
        MXF::SDK::DataIO::File::FileDataSink sink(MXF::SDK::Platform::fromUtf8(partial), false);
        sink.write(bytes.data(), bytes.size());
    }
    std::filesystem::rename(partial, path);
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() < 3 || arguments[0] != "-o")
        return usage();
    try
    {
        Halvorn::DictC::Source source;
        for (std::size_t i = 2; i < arguments.size(); ++i)
            Halvorn::DictC::parseSource(readFile(arguments[i]), arguments[i], source);
        writeFile(arguments[1], Halvorn::DictC::compileDictionary(source));
        return 0;
    }
    catch (const std::exception& e)
    {
        std::cerr << "mxf-dictc: " << e.what() << "\n";
        return 1;
    }
}
