#include "MXF/SDK/KLV/Value.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

using namespace Halvorn::Test;
using namespace Halvorn::Test::Support;
using MXF::SDK::KLV::Value;
namespace Exceptions = MXF::SDK::Exceptions;

namespace
{

// 3 bytes before the value, a 10-byte value, 5 bytes after it.
const Bytes BYTES = patternBytes(18);

Bytes range(std::size_t from, std::size_t to)
{
    return Bytes(BYTES.begin() + from, BYTES.begin() + to);
}

} // namespace

TEST(Value, ReadsAndSkipsOnlyWithinItsLengthAtTheSourcesPositions)
{
    forEachSplit(BYTES,
                 [](DataSource& source)
                 {
                     source.skip(3);
                     Value value(source, 10);
                     EXPECT_EQ(value.size(), 10u);
                     EXPECT_EQ(value.position(), 3u) << "absolute, not relative to the value";
                     EXPECT_EQ(value.remaining(), 10u);
                     Bytes four(4);
                     value.readExact(four.data(), 4);
                     EXPECT_EQ(four, range(3, 7));
                     EXPECT_EQ(value.skip(2), 2u);
                     EXPECT_EQ(value.remaining(), 4u);
                     Bytes rest(100, 0);
                     UInt64 got = 0;
                     while (UInt64 n = value.read(rest.data() + got, 100 - got))
                         got += n;
                     EXPECT_EQ(got, 4u) << "a larger read is shortened";
                     EXPECT_EQ(Bytes(rest.begin(), rest.begin() + 4), range(9, 13));
                     EXPECT_TRUE(value.eof());
                     EXPECT_EQ(value.skip(5), 0u);
                     EXPECT_EQ(source.position(), 13u);
                 });
}

TEST(Value, DestroyingItLeavesTheSourceAfterTheItemWhetherReadOrNot)
{
    forEachSplit(BYTES,
                 [](DataSource& source)
                 {
                     source.skip(3);
                     {
                         Value untouched(source, 10);
                     }
                     EXPECT_EQ(source.position(), 13u);
                 });
    forEachSplit(BYTES,
                 [](DataSource& source)
                 {
                     source.skip(3);
                     {
                         Value partly(source, 10);
                         Bytes two(2);
                         partly.readExact(two.data(), 2);
                     }
                     EXPECT_EQ(source.position(), 13u);
                 });
    forEachSplit(BYTES,
                 [](DataSource& source)
                 {
                     source.skip(3);
                     Value value(source, 10);
                     EXPECT_EQ(value.skipToEnd(), 13u);
                     EXPECT_TRUE(value.eof());
                 });
}

TEST(Value, ALengthPastTheEndOfTheSourceEndsAtTheSourceEnd)
{
    forEachSplit(BYTES,
                 [](DataSource& source)
                 {
                     source.skip(3);
                     {
                         Value huge(source, 0xFFFFFFFFFFFFFFF0);
                         EXPECT_EQ(huge.remaining(), 0xFFFFFFFFFFFFFFF0);
                         Bytes buffer(64);
                         EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>(
                                       [&] { huge.readExact(buffer.data(), 64); }),
                                   L"Invalid data size in Value: 15 of 64 bytes");
                         EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + 15), range(3, 18));
                     }
                     EXPECT_EQ(source.position(), 18u);
                     EXPECT_TRUE(source.eof());
                 });
}

TEST(Value, ReadExactPastItsOwnEndThrows)
{
    forEachSplit(BYTES,
                 [](DataSource& source)
                 {
                     Value value(source, 4);
                     Bytes buffer(6);
                     EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>(
                                   [&] { value.readExact(buffer.data(), 6); }),
                               L"Invalid data size in Value: 4 of 6 bytes");
                     EXPECT_EQ(source.position(), 4u) << "never beyond the value";
                 });
}
