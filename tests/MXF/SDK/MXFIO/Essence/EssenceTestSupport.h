#pragma once

#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MXFIO/Reader.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Metadata/Structural/Registration.h"
#include "MXF/SDK/Platform/Platform.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace Halvorn::Test::Essence
{

inline std::string dataDir()
{
    const char* root = std::getenv("HALVORN_TEST_DATA");
    return root != nullptr ? root : "tests/data";
}

inline std::shared_ptr<const MXF::SDK::MetaMetadata::Dictionary> dictionary()
{
    static const std::shared_ptr<const MXF::SDK::MetaMetadata::Dictionary> loaded = []
    {
        MXF::SDK::Metadata::Structural::registerStructuralSets();
        auto made = std::make_shared<MXF::SDK::MetaMetadata::Dictionary>();
        MXF::SDK::MetaMetadata::BinaryLoader::load(
            MXF::SDK::Platform::fromUtf8(HALVORN_DICTIONARY_FILE), *made);
        return made;
    }();
    return loaded;
}

inline std::shared_ptr<MXF::SDK::DataIO::RandomAccessDataSource> fileSource(const std::string& name)
{
    return std::make_shared<MXF::SDK::DataIO::File::FileDataSource>(
        MXF::SDK::Platform::fromUtf8(dataDir() + "/" + name));
}

inline std::unique_ptr<MXF::SDK::MXFIO::Reader2> readerOf(const std::string& name)
{
    return std::make_unique<MXF::SDK::MXFIO::Reader2>(fileSource(name), dictionary(), 65536);
}

// A value of damage-offsets.txt, written by the fixture script from the files themselves.
inline std::uint64_t damageOffset(const std::string& file, const std::string& what)
{
    std::ifstream in(dataDir() + "/damage-offsets.txt");
    std::string f, w;
    std::uint64_t value = 0;
    while (in >> f >> w >> value)
        if (f == file && w == what)
            return value;
    throw std::runtime_error("no " + what + " for " + file + " in damage-offsets.txt");
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

inline std::string exceptionText(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const MXF::SDK::Exceptions::BaseException& e)
    {
        return e.what();
    }
    return "no exception";
}

} // namespace Halvorn::Test::Essence
