#pragma once

#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "MXF/SDK/Platform/Platform.h"
#include "TestSupport.h"

#include <cstdint>
#include <exception>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Halvorn::Test::Metadata
{

using namespace Halvorn::Test::Support;

inline const MXF::SDK::MetaMetadata::Dictionary& dictionary()
{
    static const std::unique_ptr<MXF::SDK::MetaMetadata::Dictionary> loaded = []
    {
        auto made = std::make_unique<MXF::SDK::MetaMetadata::Dictionary>();
        MXF::SDK::MetaMetadata::BinaryLoader::load(
            MXF::SDK::Platform::fromUtf8(HALVORN_DICTIONARY_FILE), *made);
        return made;
    }();
    return *loaded;
}

// A KLV item with a 4-byte BER length, as the partition writer makes them.
inline Bytes item(const Bytes& key, const Bytes& value)
{
    return key + Bytes{0x83} + be(value.size(), 3) + value;
}

// One property of a local set: 2-byte tag, 2-byte length.
inline Bytes local(std::uint16_t tag, const Bytes& value)
{
    return be(tag, 2) + be(value.size(), 2) + value;
}

inline Bytes primer(const std::vector<std::pair<std::uint16_t, Bytes>>& entries)
{
    Bytes value = be(entries.size(), 4) + be(18, 4);
    for (const auto& [tag, label] : entries)
        value = value + be(tag, 2) + label;
    return item({0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01, 0x01, 0x0D, 0x01, 0x02, 0x01, 0x01, 0x05,
                 0x01, 0x00},
                value);
}

inline Bytes uuid(std::uint8_t n)
{
    Bytes bytes(16, 0);
    bytes[0] = 0xA0;
    bytes[15] = n;
    return bytes;
}

// One KLV item of a file, parsed here.
struct Item
{
    Bytes key;
    Bytes ber;
    Bytes value;
};

inline Item parseItem(const Bytes& file, std::size_t& at)
{
    if (at + 17 > file.size())
        throw std::out_of_range("item past the end");
    Item item;
    item.key.assign(file.begin() + at, file.begin() + at + 16);
    const std::uint8_t first = file.at(at + 16);
    const int berSize = first < 0x80 ? 1 : 1 + (first & 0x7F);
    item.ber.assign(file.begin() + at + 16, file.begin() + at + 16 + berSize);
    const std::uint64_t length = first < 0x80 ? first : number(&file.at(at + 17), berSize - 1);
    if (length > file.size() || at + 16 + berSize + length > file.size())
        throw std::out_of_range("item past the end");
    item.value.assign(file.begin() + at + 16 + berSize, file.begin() + at + 16 + berSize + length);
    at += 16 + berSize + length;
    return item;
}

inline Bytes written(MXF::SDK::Metadata::PartitionMetadata& metadata)
{
    MXF::SDK::DataIO::Memory::MemoryDataSink sink;
    metadata.write(sink);
    return sink.data();
}

// Reads the header metadata of `bytes`. The same bytes in small odd pieces must read to the same
// header, written back byte for byte, or fail with the same text.
inline std::unique_ptr<MXF::SDK::Metadata::PartitionMetadata>
readHeader(const Bytes& bytes, const MXF::SDK::MetaMetadata::Dictionary& dict = dictionary())
{
    const auto readIn = [&](UInt64 piece)
    {
        auto metadata = std::make_unique<MXF::SDK::Metadata::PartitionMetadata>(dict);
        PiecewiseSource source(bytes, piece == 0 ? bytes.size() : piece);
        metadata->read(source, bytes.size());
        return metadata;
    };
    const auto outcome = [&](UInt64 piece) -> std::wstring
    {
        try
        {
            const Bytes out = written(*readIn(piece));
            return std::wstring(out.begin(), out.end());
        }
        catch (const MXF::SDK::Exceptions::BaseException& e)
        {
            return L"exception: " + e.message();
        }
    };
    const std::wstring whole = outcome(0);
    for (const UInt64 piece : oddPieces())
        EXPECT_EQ(outcome(piece), whole) << "read in pieces of " << piece;
    return readIn(0);
}

} // namespace Halvorn::Test::Metadata
