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

using MXFIO::damageOffset;
using MXFIO::dataDir;
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
    std::ifstream in(dataDir() + "/expected/" + name + ".essence-md5.txt");
    std::map<std::string, Digest> result;
    for (std::string line; std::getline(in, line);)
    {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream fields(line);
        std::string tag;
        Digest digest;
        fields >> tag >> digest.md5 >> digest.bytes >> digest.packets;
        result[tag] = digest;
    }
    return result;
}

// One line of expected/NAME.ffprobe-packets.csv.
struct Packet
{
    int stream = 0;
    long long pts = 0, duration = 0, size = 0, pos = 0;
};

inline std::vector<Packet> packets(const std::string& name)
{
    std::ifstream in(dataDir() + "/expected/" + name + ".ffprobe-packets.csv");
    std::vector<Packet> result;
    for (std::string line; std::getline(in, line);)
    {
        std::vector<std::string> f;
        std::istringstream fields(line);
        for (std::string field; std::getline(fields, field, ',');)
            f.push_back(field);
        if (f.size() < 6)
            continue;
        auto number = [](const std::string& text) { return text == "N/A" ? -1 : std::stoll(text); };
        result.push_back(
            {int(number(f[0])), number(f[1]), number(f[3]), number(f[4]), number(f[5])});
    }
    return result;
}

} // namespace Halvorn::Test::Essence
