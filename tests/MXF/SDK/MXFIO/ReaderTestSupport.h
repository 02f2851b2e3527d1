#pragma once

#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MXFIO/Reader.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Platform/Platform.h"
#include "TestSupport.h"

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

using namespace Halvorn::Test::Support;
using MXF::SDK::MXFIO::Partition;
using MXF::SDK::MXFIO::Reader;
using MXF::SDK::MXFIO::Reader2;
using MXF::SDK::Platform::UInt64;

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

inline std::shared_ptr<MXF::SDK::DataIO::RandomAccessDataSource> fileSource(const std::string& name)
{
    return std::make_shared<MXF::SDK::DataIO::File::FileDataSource>(
        MXF::SDK::Platform::fromUtf8(dataDir() + "/" + name));
}

inline std::shared_ptr<MXF::SDK::DataIO::RandomAccessDataSource> memorySource(const Bytes& bytes)
{
    return std::make_shared<MXF::SDK::DataIO::Memory::MemoryDataSource>(bytes.data(), bytes.size());
}

// A fixture as a file, and as bytes handed out in small odd pieces: every reader must find the
// same.
struct NamedSource
{
    std::string name;
    std::function<std::shared_ptr<MXF::SDK::DataIO::RandomAccessDataSource>()> open;
};

inline std::vector<NamedSource> sourcesOf(const std::string& name)
{
    std::vector<NamedSource> sources = {{"file", [name] { return fileSource(name); }}};
    const auto bytes = std::make_shared<const Bytes>(fileBytes(name));
    // Whole files: pieces of 7 and 13 already cut every key, length and pack field; 1-byte pieces
    // over megabytes only slow the sanitizer build.
    for (const UInt64 piece : {UInt64{7}, UInt64{13}})
        sources.push_back({"pieces of " + std::to_string(piece), [bytes, piece]
                           { return std::make_shared<PiecewiseSource>(*bytes, piece); }});
    return sources;
}

template <typename R = Reader2>
std::unique_ptr<R> readerOf(std::shared_ptr<MXF::SDK::DataIO::RandomAccessDataSource> source,
                            std::uint64_t maxRunIn = 65536)
{
    return std::make_unique<R>(std::move(source), dictionary(), maxRunIn);
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
    std::vector<ListedPartition> result;
    for (const std::string& line : dataLines("expected/" + name + ".partitions.txt"))
    {
        std::istringstream fields(line);
        ListedPartition p;
        fields >> p.offset >> p.kind >> p.status >> p.completeness >> p.thisPartition >>
            p.previousPartition >> p.footerPartition >> p.headerByteCount >> p.indexByteCount >>
            p.indexSID >> p.bodySID >> p.kag;
        result.push_back(p);
    }
    return result;
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
