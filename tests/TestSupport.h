#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Platform.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace Halvorn::Test
{

// A fresh directory under the system's temporary folder, removed with everything in it.
class TempDir
{
public:
    TempDir()
    {
        static std::atomic<int> serial{0};
        path_ = std::filesystem::temp_directory_path() /
                ("halvorn-test-" + std::to_string(::getpid()) + "-" + std::to_string(serial++));
        std::filesystem::create_directories(path_);
    }
    ~TempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return path_; }
    // Wide paths go through the toolkit's own conversion: std::filesystem's depends on the locale.
    std::wstring file(const std::wstring& name) const
    {
        return MXF::SDK::Platform::fromUtf8(path_.string()) + L"/" + name;
    }

private:
    std::filesystem::path path_;
};

// Clears environment variables, or sets one, for one scope, and puts them back after it.
class ScopedEnvironment
{
public:
    ScopedEnvironment(std::initializer_list<const char*> names)
    {
        for (const char* name : names)
        {
            const char* value = std::getenv(name);
            saved_.emplace_back(name, value ? std::optional<std::string>(value) : std::nullopt);
            ::unsetenv(name);
        }
    }
    ScopedEnvironment(const char* name, const std::string& value) : ScopedEnvironment({name})
    {
        ::setenv(name, value.c_str(), 1);
    }
    ~ScopedEnvironment()
    {
        for (const auto& [name, value] : saved_)
            if (value)
                ::setenv(name.c_str(), value->c_str(), 1);
            else
                ::unsetenv(name.c_str());
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::vector<std::pair<std::string, std::optional<std::string>>> saved_;
};

// Bytes 0, 1, 2, ... mixed so that a shifted or repeated run is caught.
inline std::vector<std::uint8_t> patternBytes(std::size_t size, std::uint32_t seed = 1)
{
    std::vector<std::uint8_t> bytes(size);
    std::uint32_t x = seed * 2654435761u + 1;
    for (auto& b : bytes)
    {
        x = x * 1664525u + 1013904223u;
        b = static_cast<std::uint8_t>(x >> 24);
    }
    return bytes;
}

// The Avid OP-Atom files of another writer among the fixtures (tests/data/README.md), by the
// start of a file name. Their headers hold Avid's object directory, which is no set, and a 9-byte
// BER length on every item: tests that hold every fixture to what ffmpeg writes leave them to tests
// of their own.
inline bool isAvidFixture(const std::string& fileName)
{
    for (const char* avid : {"lg720p50_v1.", "lg720p50_a2.", "imx50_v1.", "imx50_a1."})
        if (fileName.rfind(avid, 0) == 0)
            return true;
    return false;
}

} // namespace Halvorn::Test

// Bytes, test data and sources for the toolkit's suites; a namespace of its own, so that suites
// with helpers of these names keep theirs.
namespace Halvorn::Test::Support
{

using Bytes = std::vector<std::uint8_t>;
using Halvorn::Test::patternBytes;
using MXF::SDK::DataIO::DataSource;
using MXF::SDK::Platform::UInt64;

// "06 0e 2b 34" or "060e2b34" to bytes; written here so that expectations don't go through the
// identifier text code under test.
inline Bytes hexBytes(const std::string& text)
{
    Bytes out;
    int high = -1;
    for (const char c : text)
    {
        int digit = -1;
        if (c >= '0' && c <= '9')
            digit = c - '0';
        else if (c >= 'a' && c <= 'f')
            digit = c - 'a' + 10;
        else if (c >= 'A' && c <= 'F')
            digit = c - 'A' + 10;
        else
            continue;
        if (high < 0)
            high = digit;
        else
        {
            out.push_back(static_cast<std::uint8_t>(high * 16 + digit));
            high = -1;
        }
    }
    return out;
}

inline Bytes operator+(Bytes a, const Bytes& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// `value` as `size` big-endian bytes.
inline Bytes be(std::uint64_t value, int size)
{
    Bytes bytes(size);
    for (int i = size - 1; i >= 0; --i, value >>= 8)
        bytes[i] = std::uint8_t(value);
    return bytes;
}

// The big-endian number of `size` bytes at `at`.
inline std::uint64_t number(const std::uint8_t* at, int size)
{
    std::uint64_t value = 0;
    for (int i = 0; i < size; ++i)
        value = (value << 8) | at[i];
    return value;
}

inline std::uint64_t number(const Bytes& bytes, std::size_t at, int size)
{
    if (at + size > bytes.size())
        throw std::out_of_range("number past the end");
    return number(bytes.data() + at, size);
}

inline void put(Bytes& bytes, std::size_t at, std::uint64_t value, int size)
{
    const Bytes field = be(value, size);
    std::copy(field.begin(), field.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

// Where tests/data is: CTest says, else the source tree from its root.
inline std::string dataDir()
{
    const char* root = std::getenv("HALVORN_TEST_DATA");
    return root != nullptr ? root : "tests/data";
}

inline std::string testData(const std::string& name)
{
    return dataDir() + "/" + name;
}

inline Bytes bytesAt(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read " + path);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

// The bytes of tests/data/NAME.
inline Bytes fileBytes(const std::string& name)
{
    return bytesAt(testData(name));
}

// A value of damage-offsets.txt ("FILE WHAT VALUE"), made by the fixture script from the files.
inline std::uint64_t damageOffset(const std::string& file, const std::string& what)
{
    std::ifstream in(testData("damage-offsets.txt"));
    std::string f, w;
    std::uint64_t value = 0;
    while (in >> f >> w >> value)
        if (f == file && w == what)
            return value;
    throw std::runtime_error("no " + what + " for " + file + " in damage-offsets.txt");
}

// The lines of tests/data/NAME that are neither empty nor '#' comments.
inline std::vector<std::string> dataLines(const std::string& name)
{
    std::ifstream in(testData(name));
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] != '#')
            lines.push_back(line);
    return lines;
}

// One line of expected/NAME.klv.txt, from MediaInfo's trace: "OFFSET KEY_HEX LENGTH NAME".
struct ListedItem
{
    std::uint64_t offset = 0;
    std::string key;
    std::uint64_t length = 0;
    std::string name;
};

inline std::vector<ListedItem> listedItems(const std::string& name)
{
    std::vector<ListedItem> result;
    for (const std::string& line : dataLines("expected/" + name + ".klv.txt"))
    {
        std::istringstream fields(line);
        ListedItem item;
        fields >> item.offset >> item.key >> item.length;
        std::getline(fields >> std::ws, item.name);
        result.push_back(item);
    }
    return result;
}

// One line of expected/NAME.ffprobe-packets.csv: stream_index,pts,dts,duration,size,pos,flags.
struct Packet
{
    int stream = 0;
    long long pts = 0, duration = 0, size = 0, pos = 0;
};

inline std::vector<Packet> ffprobePackets(const std::string& name)
{
    std::vector<Packet> result;
    for (const std::string& line : dataLines("expected/" + name + ".ffprobe-packets.csv"))
    {
        std::vector<std::string> f;
        std::istringstream fields(line);
        for (std::string field; std::getline(fields, field, ',');)
            f.push_back(field);
        if (f.size() < 6)
            continue;
        auto value = [](const std::string& text) { return text == "N/A" ? -1 : std::stoll(text); };
        result.push_back({int(value(f[0])), value(f[1]), value(f[3]), value(f[4]), value(f[5])});
    }
    return result;
}

// The message of the `E` that `call` throws; another exception or none fails the test.
template <typename E, typename F>
std::wstring thrownMessage(F&& call)
{
    try
    {
        call();
    }
    catch (const E& e)
    {
        return e.message();
    }
    catch (const std::exception& e)
    {
        ADD_FAILURE() << "other exception: " << e.what();
        return L"another exception: " + MXF::SDK::Exceptions::toWide(e.what());
    }
    ADD_FAILURE() << "no exception";
    return L"nothing thrown";
}

// A file's bytes handed out at most `piece` at a time, as from a queue or a network; it can seek,
// so that readers of whole files run over it too.
class PiecewiseSource : public MXF::SDK::DataIO::RandomAccessDataSource
{
public:
    PiecewiseSource(Bytes bytes, UInt64 piece) : bytes_(std::move(bytes)), piece_(piece) {}

    UInt64 position() const override { return position_; }
    UInt64 remaining() const override { return bytes_.size() - position_; }
    UInt64 read(void* buffer, UInt64 size) override
    {
        const UInt64 count = std::min({size, piece_, remaining()});
        if (count != 0)
            std::memcpy(buffer, bytes_.data() + position_, count);
        position_ += count;
        return count;
    }
    UInt64 skip(UInt64 size) override
    {
        const UInt64 count = std::min(size, remaining());
        position_ += count;
        return count;
    }
    UInt64 skipToEnd() override { return position_ = bytes_.size(); }
    UInt64 seek(UInt64 position) override
    {
        return position_ = std::min<UInt64>(position, bytes_.size());
    }

private:
    Bytes bytes_;
    UInt64 piece_;
    UInt64 position_ = 0;
};

// Piece sizes small and odd enough to cut every field of a key, a length and a value.
inline const std::vector<UInt64>& oddPieces()
{
    static const std::vector<UInt64> pieces = {1, 2, 3, 7, 13};
    return pieces;
}

// Runs `check` over the bytes whole, and split into small pieces of odd sizes.
inline void
forEachSplit(const Bytes& bytes,
             const std::function<void(MXF::SDK::DataIO::RandomAccessDataSource&)>& check)
{
    {
        SCOPED_TRACE("whole");
        MXF::SDK::DataIO::Memory::MemoryDataSource whole(bytes.data(), bytes.size());
        check(whole);
    }
    for (const UInt64 piece : oddPieces())
    {
        SCOPED_TRACE("pieces of " + std::to_string(piece));
        PiecewiseSource split(bytes, piece);
        check(split);
    }
}

} // namespace Halvorn::Test::Support
