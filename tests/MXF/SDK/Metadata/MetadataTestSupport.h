#pragma once

#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "MXF/SDK/Platform/Platform.h"

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

using Bytes = std::vector<std::uint8_t>;

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

inline Bytes fileBytes(const std::string& name)
{
    const char* root = std::getenv("HALVORN_TEST_DATA");
    std::ifstream in(std::string(root != nullptr ? root : "tests/data") + "/" + name,
                     std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

inline Bytes operator+(Bytes a, const Bytes& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline Bytes be(std::uint64_t value, int size)
{
    Bytes bytes;
    for (int i = size - 1; i >= 0; --i)
        bytes.push_back(std::uint8_t(value >> (8 * i)));
    return bytes;
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

inline std::uint64_t number(const std::uint8_t* at, int size)
{
    std::uint64_t value = 0;
    for (int i = 0; i < size; ++i)
        value = (value << 8) | at[i];
    return value;
}

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

inline std::unique_ptr<MXF::SDK::Metadata::PartitionMetadata>
readHeader(const Bytes& bytes, const MXF::SDK::MetaMetadata::Dictionary& dict = dictionary())
{
    auto metadata = std::make_unique<MXF::SDK::Metadata::PartitionMetadata>(dict);
    MXF::SDK::DataIO::Memory::MemoryDataSource source(bytes.data(), bytes.size());
    metadata->read(source, bytes.size());
    return metadata;
}

inline Bytes written(MXF::SDK::Metadata::PartitionMetadata& metadata)
{
    MXF::SDK::DataIO::Memory::MemoryDataSink sink;
    metadata.write(sink);
    return sink.data();
}

// The message of the `Exception` that `call` throws, or what happened instead.
template <typename Exception, typename Call>
std::wstring thrown(Call call)
{
    try
    {
        call();
    }
    catch (const Exception& e)
    {
        return e.message();
    }
    catch (const std::exception& e)
    {
        return L"another exception: " + MXF::SDK::Exceptions::toWide(e.what());
    }
    return L"nothing thrown";
}

} // namespace Halvorn::Test::Metadata
