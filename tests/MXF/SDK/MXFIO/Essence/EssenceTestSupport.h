#pragma once

#include "MXF/SDK/MXFIO/ReaderTestSupport.h"
#include "MXF/SDK/Metadata/Structural/Registration.h"

#include <cstdint>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace Halvorn::Test::Essence
{

using namespace Halvorn::Test::Support;
using MXFIO::exceptionText;
using MXFIO::fileSource;

// The reader's dictionary, with the structural sets registered first so that their typed classes
// are made.
inline std::shared_ptr<const MXF::SDK::MetaMetadata::Dictionary> dictionary()
{
    static const bool registered = []
    {
        MXF::SDK::Metadata::Structural::registerStructuralSets();
        return true;
    }();
    (void)registered;
    return MXFIO::dictionary();
}

inline std::unique_ptr<MXF::SDK::MXFIO::Reader2> readerOf(const std::string& name)
{
    return std::make_unique<MXF::SDK::MXFIO::Reader2>(fileSource(name), dictionary(), 65536);
}

// One line of expected/NAME.essence-md5.txt: ffmpeg's digest of one stream.
struct Digest
{
    std::string md5;
    std::uint64_t bytes = 0;
    std::uint64_t packets = 0;
};

inline std::map<std::string, Digest> digests(const std::string& name)
{
    std::map<std::string, Digest> result;
    for (const std::string& line : dataLines("expected/" + name + ".essence-md5.txt"))
    {
        std::istringstream fields(line);
        std::string tag;
        Digest digest;
        fields >> tag >> digest.md5 >> digest.bytes >> digest.packets;
        result[tag] = digest;
    }
    return result;
}

} // namespace Halvorn::Test::Essence
