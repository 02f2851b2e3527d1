#pragma once

#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MXFIO/Reader.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Platform/Platform.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace Halvorn::Test::MXFIO
{

using Bytes = std::vector<std::uint8_t>;
using MXF::SDK::MXFIO::Partition;
using MXF::SDK::MXFIO::Reader;
using MXF::SDK::MXFIO::Reader2;
using MXF::SDK::Platform::UInt64;

inline std::string dataDir()
{
    const char* root = std::getenv("HALVORN_TEST_DATA");
    return root != nullptr ? root : "tests/data";
}

inline std::shared_ptr<const MXF::SDK::MetaMetadata::Dictionary> dictionary()
{
    static const std::shared_ptr<const MXF::SDK::MetaMetadata::Dictionary> loaded = []
    {
        auto made = std::make_shared<MXF::SDK::MetaMetadata::Dictionary>();
        MXF::SDK::MetaMetadata::BinaryLoader::load(
            MXF::SDK::Platform::fromUtf8(HALVORN_DICTIONARY_FILE), *made);
        return made;
    }();
    return loaded;
}

inline Bytes fileBytes(const std::string& name)
{
    std::ifstream in(dataDir() + "/" + name, std::ios::binary);
    if (!in)
        throw std::runtime_error("missing fixture " + name);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

inline std::shared_ptr<MXF::SDK::DataIO::RandomAccessDataSource> fileSource(const std::string& name)
{
    return std::make_shared<MXF::SDK::DataIO::File::FileDataSource>(
        MXF::SDK::Platform::fromUtf8(dataDir() + "/" + name));
}

inline std::shared_ptr<MXF::SDK::DataIO::RandomAccessDataSource> memorySource(const Bytes& bytes)
{
    return std::make_shared<MXF::SDK::DataIO::Memory::MemoryDataSource>(bytes.data(), bytes.size());
}

template <typename R = Reader2>
std::unique_ptr<R> readerOf(std::shared_ptr<MXF::SDK::DataIO::RandomAccessDataSource> source,
                            std::uint64_t maxRunIn = 65536)
{
    return std::make_unique<R>(std::move(source), dictionary(), maxRunIn);
}

// A value of damage-offsets.txt, made by the fixture script from the files themselves.
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

// One line of expected/NAME.partitions.txt, from MediaInfo's trace.
struct ListedPartition
{
    std::uint64_t offset;
    std::string kind, status, completeness;
    std::uint64_t thisPartition, previousPartition, footerPartition, headerByteCount,
        indexByteCount, indexSID, bodySID, kag;
};

inline std::vector<ListedPartition> listedPartitions(const std::string& name)
{
    std::ifstream in(dataDir() + "/expected/" + name + ".partitions.txt");
    std::vector<ListedPartition> result;
    for (std::string line; std::getline(in, line);)
    {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream fields(line);
        ListedPartition p;
        fields >> p.offset >> p.kind >> p.status >> p.completeness >> p.thisPartition >>
            p.previousPartition >> p.footerPartition >> p.headerByteCount >> p.indexByteCount >>
            p.indexSID >> p.bodySID >> p.kag;
        result.push_back(p);
    }
    return result;
}

// One line of expected/NAME.klv.txt.
struct ListedItem
{
    std::uint64_t offset;
    std::string key;
    std::uint64_t length;
    std::string name;
};

inline std::vector<ListedItem> listedItems(const std::string& name)
{
    std::ifstream in(dataDir() + "/expected/" + name + ".klv.txt");
    std::vector<ListedItem> result;
    for (std::string line; std::getline(in, line);)
    {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream fields(line);
        ListedItem item;
        fields >> item.offset >> item.key >> item.length;
        std::getline(fields, item.name);
        result.push_back(item);
    }
    return result;
}

inline std::uint64_t number(const Bytes& bytes, std::size_t at, int size)
{
    std::uint64_t value = 0;
    for (int i = 0; i < size; ++i)
        value = (value << 8) | bytes.at(at + i);
    return value;
}

inline void put(Bytes& bytes, std::size_t at, std::uint64_t value, int size)
{
    for (int i = size - 1; i >= 0; --i, value >>= 8)
        bytes.at(at + i) = std::uint8_t(value);
}

// Where the value of the item at `at` starts.
inline std::size_t valueAt(const Bytes& bytes, std::size_t at)
{
    const std::uint8_t first = bytes.at(at + 16);
    return at + 17 + (first < 0x80 ? 0 : (first & 0x7F));
}

inline std::uint64_t lengthAt(const Bytes& bytes, std::size_t at)
{
    const std::uint8_t first = bytes.at(at + 16);
    return first < 0x80 ? first : number(bytes, at + 17, first & 0x7F);
}

// Fields of a partition pack, as offsets into its value.
enum PackField : std::size_t
{
    THIS_PARTITION = 8,
    PREVIOUS_PARTITION = 16,
    FOOTER_PARTITION = 24,
    HEADER_BYTE_COUNT = 32,
    BODY_OFFSET = 52
};

inline void setPackField(Bytes& bytes, std::size_t pack, PackField field, std::uint64_t value)
{
    put(bytes, valueAt(bytes, pack) + field, value, 8);
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

} // namespace Halvorn::Test::MXFIO
