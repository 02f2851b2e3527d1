#pragma once

#include "MXF/SDK/Platform/Platform.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
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
