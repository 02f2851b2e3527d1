#include "DataIOTestSupport.h"
#include "MXF/SDK/DataIO/Adapters.h"
#include "MXF/SDK/DataIO/File/FileDataSink.h"
#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/DataIO/SliceReader.h"
#include "TestSupport.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

using namespace Halvorn::Test;
using Halvorn::Test::Support::thrownMessage;
using MXF::SDK::DataIO::File::FileDataSink;
using MXF::SDK::DataIO::File::FileDataSource;
namespace Exceptions = MXF::SDK::Exceptions;

TEST(File, WrittenBytesReadBackUnderANonAsciiName)
{
    TempDir dir;
    const std::wstring path = dir.file(L"Caf\u00e9 \u2013 \u65e5\u672c.mxf");
    const auto bytes = patternBytes(100000);
    {
        FileDataSink sink(path, false);
        sink.write(bytes.data(), 60000);
        sink.write(bytes.data() + 60000, 40000);
        EXPECT_EQ(sink.position(), 100000u);
    }
    FileDataSource source(path, 0);
    EXPECT_EQ(source.remaining(), 100000u);
    std::vector<std::uint8_t> got(150000);
    EXPECT_EQ(source.read(got.data(), got.size()), 100000u) << "short read at the end";
    got.resize(100000);
    EXPECT_EQ(got, bytes);
    EXPECT_TRUE(source.eof());
    EXPECT_EQ(source.read(got.data(), 1), 0u);
}

TEST(File, SeekPastTheEndLandsAtTheEnd)
{
    TempDir dir;
    const std::wstring path = dir.file(L"seek.bin");
    std::ofstream(dir.path() / "seek.bin") << "0123456789";
    FileDataSource source(path, 4096);
    EXPECT_EQ(source.seek(1000), 10u);
    EXPECT_TRUE(source.eof());
    EXPECT_EQ(source.seek(3), 3u);
    EXPECT_EQ(source.skip(4), 4u);
    char c = 0;
    source.read(&c, 1);
    EXPECT_EQ(c, '7');
    EXPECT_EQ(source.skip(100), 2u);
    EXPECT_EQ(source.skipToEnd(), 10u);
}

TEST(File, AppendStartsAtTheEndAndRewritesCanReturnToTheOldEnd)
{
    TempDir dir;
    const std::wstring path = dir.file(L"append.bin");
    std::ofstream(dir.path() / "append.bin") << std::string(100, 'a');
    {
        FileDataSink sink(path, true);
        EXPECT_EQ(sink.position(), 100u);
        sink.write("bbbbbbbbbb", 10);
        EXPECT_EQ(sink.seek(10), 10u);
        sink.write("cccccccccc", 10); // a header rewrite in place
        // The sink counts rewritten bytes into its size, so it can seek back to the true end.
        EXPECT_EQ(sink.seek(110), 110u);
        sink.write("d", 1);
        EXPECT_EQ(sink.position(), 111u);
    }
    std::ifstream in(dir.path() / "append.bin", std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(in)), {});
    EXPECT_EQ(content, std::string(10, 'a') + std::string(10, 'c') + std::string(80, 'a') +
                           std::string(10, 'b') + "d");
}

TEST(File, OffsetsPastFourGigabytes)
{
    TempDir dir;
    const std::wstring path = dir.file(L"big.bin");
    constexpr UInt64 FOUR_GIB = UInt64(1) << 32;
    {
        std::ofstream touch(dir.path() / "big.bin");
    }
    std::filesystem::resize_file(dir.path() / "big.bin", FOUR_GIB + 1000); // sparse
    {
        FileDataSink sink(path, true);
        EXPECT_EQ(sink.position(), FOUR_GIB + 1000);
        sink.write("tail", 4);
        EXPECT_EQ(sink.seek(FOUR_GIB + 100), FOUR_GIB + 100);
        sink.write("mark", 4);
    }
    EXPECT_EQ(std::filesystem::file_size(dir.path() / "big.bin"), FOUR_GIB + 1004);
    FileDataSource source(path);
    EXPECT_EQ(source.remaining(), FOUR_GIB + 1004);
    char buffer[4];
    EXPECT_EQ(source.seek(FOUR_GIB + 100), FOUR_GIB + 100);
    EXPECT_EQ(source.read(buffer, 4), 4u);
    EXPECT_EQ(std::string(buffer, 4), "mark");
    EXPECT_EQ(source.skip(896), 896u);
    EXPECT_EQ(source.read(buffer, 4), 4u);
    EXPECT_EQ(std::string(buffer, 4), "tail");
    EXPECT_EQ(source.position(), FOUR_GIB + 1004);

    // The same through slices.
    source.seek(FOUR_GIB + 98);
    SliceSourceDataAdapter adapter(source, 3);
    SliceReader reader(&adapter, false);
    reader.skip(2);
    EXPECT_EQ(reader.readUInt32(), 0x6d61726bu); // "mark"
    EXPECT_EQ(reader.position(), FOUR_GIB + 104);
}

TEST(File, OpenFailuresNameThePathAndTheReason)
{
    TempDir dir;
    const std::wstring missing = dir.file(L"n\u00e9ant.mxf");
    EXPECT_EQ(thrownMessage<Exceptions::IOError>([&] { FileDataSource source(missing); }),
              L"file_ != 0: Error opening: '" + missing + L"'. No such file or directory");
    EXPECT_THROW(FileDataSink(missing, true), Exceptions::IOError) << "append needs the file";
    EXPECT_THROW(FileDataSink(dir.file(L"no/such/folder.mxf"), false), Exceptions::IOError);
}

TEST(File, WriteFailureLeavesPositionAlone)
{
    if (!std::filesystem::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full";
    FileDataSink sink(L"/dev/full", false, 0);
    EXPECT_EQ(thrownMessage<Exceptions::IOError>([&] { sink.write("x", 1); }),
              L"writeResult == howMuch: Error writing to file. No space left on device");
    EXPECT_EQ(sink.position(), 0u);
}

// Picture-sized reads alternating with sound-sized ones turn on the read-ahead; every read must
// still give the file's bytes at its own position, however the next one jumps.
TEST(File, ReadsAroundTheReadAheadGiveTheFilesBytes)
{
    TempDir dir;
    const std::wstring path = dir.file(L"frames.bin");
    const auto bytes = patternBytes(3000000);
    {
        FileDataSink sink(path, false);
        sink.write(bytes.data(), bytes.size());
    }
    FileDataSource source(path);
    std::uint64_t at = 0;
    const auto readAt = [&](std::uint64_t position, std::size_t size)
    {
        source.seek(position);
        std::vector<std::uint8_t> got(size);
        const std::uint64_t expected = std::min<std::uint64_t>(size, bytes.size() - position);
        ASSERT_EQ(source.read(got.data(), size), expected) << "at " << position;
        ASSERT_TRUE(std::equal(got.begin(), got.begin() + std::ptrdiff_t(expected),
                               bytes.begin() + std::ptrdiff_t(position)))
            << size << " bytes at " << position;
        EXPECT_EQ(source.position(), position + expected);
    };
    // Frames: a large element, a key's worth skipped, eight small ones with keys between.
    for (int frame = 0; frame < 8; ++frame)
    {
        readAt(at, 200000 + frame * 1000);
        at += 200000 + frame * 1000 + 20;
        for (int sound = 0; sound < 8; ++sound, at += 5760 + 20)
            readAt(at, 5760);
    }
    // Back into what the last read-ahead held, then large reads one after the other, a jump
    // far ahead, a read across the end and one that starts in the last buffer's tail.
    readAt(at - 3000, 100);
    for (int i = 0; i < 4; ++i, at += 300000)
        readAt(at, 300000);
    readAt(2900000, 5000);
    readAt(120000, 70000);
    readAt(bytes.size() - 70000, 200000);
    readAt(bytes.size() - 10, 5760);
    readAt(bytes.size() - 100000, 65536);
    readAt(bytes.size() - 30000, 100000);
    EXPECT_TRUE(source.eof());
}
