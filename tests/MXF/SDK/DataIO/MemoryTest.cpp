#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

using namespace MXF::SDK::DataIO;
using Halvorn::Test::patternBytes;
using Halvorn::Test::Support::thrownMessage;
namespace Exceptions = MXF::SDK::Exceptions;

TEST(MemoryDataSource, CopiesItsBytesAndClampsEveryMove)
{
    auto bytes = patternBytes(10);
    Memory::MemoryDataSource source(bytes.data(), bytes.size());
    const auto original = bytes;
    bytes.assign(10, 0); // the source holds its own copy
    std::uint8_t buffer[20];
    EXPECT_EQ(source.read(buffer, 0), 0u);
    EXPECT_EQ(source.read(buffer, 4), 4u);
    EXPECT_EQ(std::vector<std::uint8_t>(buffer, buffer + 4),
              std::vector<std::uint8_t>(original.begin(), original.begin() + 4));
    EXPECT_EQ(source.skip(3), 3u);
    EXPECT_EQ(source.read(buffer, 20), 3u);
    EXPECT_EQ(buffer[0], original[7]);
    EXPECT_TRUE(source.eof());
    EXPECT_EQ(source.skip(1), 0u);
    EXPECT_EQ(source.seek(100), 10u);
    EXPECT_EQ(source.seek(2), 2u);
    EXPECT_EQ(source.remaining(), 8u);
    EXPECT_EQ(source.skipToEnd(), 10u);
}

TEST(MemoryDataSourceAndSink, RefuseMoreThan32Bits)
{
    const std::uint8_t byte = 0;
    // Both check the size before they touch a byte.
    EXPECT_EQ(thrownMessage<Exceptions::IOError>(
                  [&] { Memory::MemoryDataSource(&byte, UInt64(1) << 32); }),
              L"Type size exceeded");
    Memory::MemoryDataSink sink;
    sink.write("abc", 3);
    EXPECT_THROW(sink.write(&byte, UINT32_MAX - 2), Exceptions::IOError);
    EXPECT_EQ(sink.position(), 3u);
    sink.write("de", 2);
    EXPECT_EQ(std::string(sink.data().begin(), sink.data().end()), "abcde");
}
