#pragma once

#include "MXF/SDK/DataIO/DataIOTestSupport.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/DataIO/SliceReader.h"
#include "MXF/SDK/Exceptions/Exceptions.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace Halvorn::Test
{

using Bytes = std::vector<std::uint8_t>;

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

// A byte source that hands out the bytes in runs of `piece` at most, each run a slice of its own
// block, read through a SliceReader: the way bytes arrive from a queue or a network.
class PiecewiseSource : public DataSource
{
public:
    PiecewiseSource(const Bytes& bytes, UInt64 piece)
        : chunks_(factory_, bytes, piece), reader_(&chunks_, false)
    {
    }

    UInt64 position() const override { return reader_.position(); }
    bool eof() const override { return reader_.eof(); }
    UInt64 read(void* buffer, UInt64 size) override
    {
        if (size == 0)
            return 0;
        SlicePtr run = reader_.readMax(size);
        std::memcpy(buffer, run->begin(), run->size);
        return run->size;
    }
    UInt64 skip(UInt64 size) override { return reader_.skip(size); }

private:
    CountingFactory factory_;
    ChunkedSliceSource chunks_;
    SliceReader reader_;
};

// Runs `check` over the bytes whole, and split into small pieces of odd sizes.
inline void forEachSplit(const Bytes& bytes, const std::function<void(DataSource&)>& check)
{
    {
        SCOPED_TRACE("whole");
        MXF::SDK::DataIO::Memory::MemoryDataSource whole(bytes.data(), bytes.size());
        check(whole);
    }
    for (const UInt64 piece : {1, 2, 3, 7, 13})
    {
        SCOPED_TRACE("pieces of " + std::to_string(piece));
        PiecewiseSource split(bytes, piece);
        check(split);
    }
}

inline std::string testData(const std::string& name)
{
    const char* dir = std::getenv("HALVORN_TEST_DATA");
    return std::string(dir ? dir : "tests/data") + "/" + name;
}

inline Bytes fileBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

// Runs `call`, which must throw `E`, and returns the message.
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
        return L"";
    }
    ADD_FAILURE() << "no exception";
    return L"";
}

} // namespace Halvorn::Test
