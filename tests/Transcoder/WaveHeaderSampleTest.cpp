#include "Transcoder/Samples/WaveHeaderSample.h"

#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KEP::Halvorn;

namespace
{

std::string hex(const std::uint8_t* bytes, std::size_t size)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < size; ++i)
    {
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 15];
    }
    return text;
}

struct Format
{
    int bits, rate, channels;
};

// The headers that Python's own wave module writes for empty streams of `formats`, with both size
// fields set to all ones as for a stream of unknown length, one a line in hexadecimal. Empty when
// python3 cannot be run.
std::vector<std::string> pythonWaveHeaders(const std::vector<Format>& formats)
{
    std::string command = "python3 -c \""
                          "import io, sys, wave\n"
                          "for format in sys.argv[1:]:\n"
                          "    bits, rate, channels = map(int, format.split(','))\n"
                          "    buffer = io.BytesIO()\n"
                          "    w = wave.open(buffer, 'wb')\n"
                          "    w.setnchannels(channels)\n"
                          "    w.setsampwidth(bits // 8)\n"
                          "    w.setframerate(rate)\n"
                          "    w.writeframes(b'')\n"
                          "    w.close()\n"
                          "    header = bytearray(buffer.getvalue())\n"
                          "    header[4:8] = b'\\xff' * 4\n"
                          "    header[40:44] = b'\\xff' * 4\n"
                          "    print(header.hex())\n"
                          "\"";
    for (const Format& format : formats)
        command += " " + std::to_string(format.bits) + "," + std::to_string(format.rate) + "," +
                   std::to_string(format.channels);
    command += " 2>/dev/null";
    std::FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr)
        return {};
    std::vector<std::string> headers;
    char line[256];
    while (std::fgets(line, sizeof line, pipe) != nullptr)
        headers.emplace_back(line, std::strcspn(line, "\n"));
    return ::pclose(pipe) == 0 ? headers : std::vector<std::string>();
}

} // namespace

TEST(WaveHeaderSample, IsTheCanonicalRiffHeaderOfAStreamOfUnknownLength)
{
    WaveHeaderSample* sample = new WaveHeaderSample(24, 48000, 2);
    EXPECT_EQ(sample->trackId(), 0u);
    ASSERT_EQ(sample->size(), 44u);
    const std::vector<std::uint8_t> expected = {
        'R',  'I',  'F',  'F', 0xFF, 0xFF, 0xFF, 0xFF, // RIFF chunk, length unknown
        'W',  'A',  'V',  'E',                         // form type
        'f',  'm',  't',  ' ', 16,   0,    0,    0,    // format chunk of 16 bytes
        1,    0,                                       // PCM
        2,    0,                                       // channels
        0x80, 0xBB, 0,    0,                           // 48000 samples a second
        0x00, 0x65, 0x04, 0,                           // 288000 bytes a second
        6,    0,                                       // block align
        24,   0,                                       // bits per sample
        'd',  'a',  't',  'a', 0xFF, 0xFF, 0xFF, 0xFF, // data chunk, length unknown
    };
    EXPECT_EQ(hex(sample->data(), 44), hex(expected.data(), expected.size()));
    sample->release();
}

TEST(WaveHeaderSample, MatchesAnIndependentWriterForCommonFormats)
{
    const std::vector<Format> formats = {{24, 48000, 1}, {16, 48000, 1}, {16, 48000, 2},
                                         {24, 48000, 8}, {16, 44100, 2}, {24, 32000, 4}};
    const std::vector<std::string> references = pythonWaveHeaders(formats);
    if (references.empty())
        GTEST_SKIP() << "python3 is not available";
    ASSERT_EQ(references.size(), formats.size());
    for (std::size_t i = 0; i < formats.size(); ++i)
    {
        const Format& format = formats[i];
        SCOPED_TRACE(::testing::Message()
                     << format.bits << " bits " << format.rate << " Hz " << format.channels);
        WaveHeaderSample* sample = new WaveHeaderSample(
            static_cast<std::uint16_t>(format.bits), static_cast<std::uint16_t>(format.rate),
            static_cast<std::uint16_t>(format.channels));
        EXPECT_EQ(hex(sample->data(), static_cast<std::size_t>(sample->size())), references[i]);
        sample->release();
    }
}
