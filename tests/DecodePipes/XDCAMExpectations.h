#pragma once

// What the XDCAM fixtures are held against: what ffprobe and MediaInfo wrote about them, and
// ffmpeg's essence digests.

#include "MXF/SDK/MXFIO/Essence/Md5.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace Halvorn::Test::XDCAM
{

using Md5 = Halvorn::Test::Essence::Md5;

// The clean XDCAM HD, IMX and OP1a fixtures.
inline const std::vector<std::string> CLEAN_CLIPS = {"xdcamhd422_1080i25", "xdcamhd422_720p50",
                                                     "xdcamhd422_1080i2997df", "imx50_625",
                                                     "multibody_180p50"};

inline std::string dataDir()
{
    const char* root = std::getenv("HALVORN_TEST_DATA");
    return root != nullptr ? root : "tests/data";
}

inline std::string readText(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline std::string expected(const std::string& clip, const std::string& suffix)
{
    return readText(dataDir() + "/expected/" + clip + suffix);
}

// The `key=value` words of each of `lines` that begins with the word `kind`, in order.
inline std::vector<std::map<std::string, std::string>>
keyValueLines(const std::vector<std::string>& lines, const std::string& kind)
{
    std::vector<std::map<std::string, std::string>> found;
    for (const std::string& line : lines)
    {
        std::istringstream words(line);
        std::string first;
        words >> first;
        if (first != kind)
            continue;
        std::map<std::string, std::string> fields;
        for (std::string word; words >> word;)
            if (const auto eq = word.find('='); eq != std::string::npos)
                fields[word.substr(0, eq)] = word.substr(eq + 1);
        found.push_back(std::move(fields));
    }
    return found;
}

// Those of expected/structural/NAME.txt for `kind` ("video", "audio").
inline std::vector<std::map<std::string, std::string>> structural(const std::string& clip,
                                                                  const std::string& kind)
{
    std::vector<std::string> lines;
    std::istringstream in(expected("structural/" + clip, ".txt"));
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return keyValueLines(lines, kind);
}

// The value of `"key": value` in the `n`th object of a JSON text that starts with `"marker"`
// (ffprobe's `"index": N` or MediaInfo's `"@type": "Video"`), quotes removed; empty when the
// object has no such key. Enough for the flat objects both tools write.
inline std::string jsonField(const std::string& json, const std::string& marker, int n,
                             const std::string& key)
{
    std::size_t at = 0;
    for (int i = 0; i <= n; ++i)
    {
        at = json.find(marker, i == 0 ? 0 : at + 1);
        if (at == std::string::npos)
            return {};
    }
    std::size_t end = json.find(marker.substr(0, marker.find(':') + 1), at + 1);
    if (const std::size_t format = json.find("\"format\":", at); format < end)
        end = format;
    const std::size_t field = json.find("\"" + key + "\":", at);
    if (field == std::string::npos || field >= end)
        return {};
    std::size_t value = field + key.size() + 3;
    while (json[value] == ' ' || json[value] == '"')
        ++value;
    std::size_t stop = value;
    while (stop < json.size() && json[stop] != '"' && json[stop] != ',' && json[stop] != '\n')
        ++stop;
    return json.substr(value, stop - value);
}

// A line of NAME.essence-md5.txt: tag (v0, a0...), digest, bytes, packets.
struct Digest
{
    std::string tag;
    std::string md5;
    std::uint64_t bytes = 0;
    std::uint64_t packets = 0;
};

inline std::vector<Digest> digests(const std::string& clip)
{
    std::vector<Digest> lines;
    std::istringstream in(expected(clip, ".essence-md5.txt"));
    for (std::string line; std::getline(in, line);)
    {
        if (line.empty() || line[0] == '#')
            continue;
        Digest digest;
        std::istringstream(line) >> digest.tag >> digest.md5 >> digest.bytes >> digest.packets;
        lines.push_back(digest);
    }
    return lines;
}

// ffprobe's packets in file order: stream index and size, sorted by position.
struct Packet
{
    int stream = 0;
    std::uint64_t size = 0;
    std::uint64_t position = 0;
};

inline std::vector<Packet> packetsInFileOrder(const std::string& clip)
{
    std::vector<Packet> packets;
    std::istringstream in(expected(clip, ".ffprobe-packets.csv"));
    for (std::string line; std::getline(in, line);)
    {
        std::vector<std::string> cells;
        std::istringstream row(line);
        for (std::string cell; std::getline(row, cell, ',');)
            cells.push_back(cell);
        if (cells.size() < 6)
            continue;
        packets.push_back({std::stoi(cells[0]), std::stoull(cells[4]), std::stoull(cells[5])});
    }
    std::stable_sort(packets.begin(), packets.end(),
                     [](const Packet& a, const Packet& b) { return a.position < b.position; });
    return packets;
}

// D-10 sound as SMPTE 331M stores it (a 4-byte element header, then per sample eight 32-bit
// little-endian subframes, the audio in bits 4 to 27) turned into interleaved little-endian PCM of
// `channels` channels and `bits` bits, as ffmpeg's digest has it.
inline std::vector<std::uint8_t> aes3ToPcm(const std::vector<std::uint8_t>& element, int channels,
                                           int bits)
{
    std::vector<std::uint8_t> pcm;
    for (std::size_t at = 4; at + 32 <= element.size(); at += 32)
        for (int c = 0; c < channels; ++c)
        {
            const std::uint8_t* p = element.data() + at + 4 * c;
            const std::uint32_t word = std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 |
                                       std::uint32_t(p[2]) << 16 | std::uint32_t(p[3]) << 24;
            const std::uint32_t sample = (word >> 4) & 0xFFFFFF;
            if (bits == 24)
                pcm.insert(pcm.end(), {std::uint8_t(sample), std::uint8_t(sample >> 8),
                                       std::uint8_t(sample >> 16)});
            else
                pcm.insert(pcm.end(), {std::uint8_t(sample >> 8), std::uint8_t(sample >> 16)});
        }
    return pcm;
}

} // namespace Halvorn::Test::XDCAM
