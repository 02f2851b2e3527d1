#include "MXF/SDK/DataIO/BufferSliceSource.h"

#include "DataIOTestSupport.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

using namespace Halvorn::Test;
using Halvorn::Test::Support::thrownMessage;
namespace Exceptions = MXF::SDK::Exceptions;

TEST(BufferSliceSource, OpenEmptyGivesEmptyClosedEmptyThrowsClosedRefusesWrites)
{
    BufferSliceSource buffer;
    EXPECT_EQ(buffer.read(10)->size, 0u);
    EXPECT_FALSE(buffer.eof());
    buffer.close();
    EXPECT_TRUE(buffer.eof());
    EXPECT_EQ(thrownMessage<Exceptions::IOError>([&] { buffer.read(10); }),
              L"!impl_ -> closed_: BufferSliceSource::read: Source closed and empty!");
    EXPECT_EQ(thrownMessage<Exceptions::IOError>([&] { buffer.write(std::make_unique<Slice>()); }),
              L"this -> closed () == false: BufferSliceSource already closed.");
}

TEST(BufferSliceSource, ReadsWholeSlicesInOrderAndSkipsIntoThem)
{
    CountingFactory factory;
    const auto bytes = patternBytes(30);
    BlockPtr block = BlockPtr::adopt(factory.blockWith(bytes));
    BlockPtr other = BlockPtr::adopt(factory.blockWith(bytes));
    BufferSliceSource buffer;
    buffer.write(Slice::make(block.get(), 0, 10));
    buffer.write(Slice::make(other.get(), 10, 10));
    buffer.write(Slice::make(block.get(), 20, 10));
    EXPECT_EQ(buffer.size(), 30u);
    EXPECT_EQ(buffer.read(3)->size, 10u) << "maxSize is ignored";
    EXPECT_EQ(buffer.skip(12), 12u);
    EXPECT_EQ(buffer.position(), 22u);
    buffer.close();
    EXPECT_FALSE(buffer.eof());
    auto last = buffer.read(100);
    EXPECT_EQ(bytesOf(*last), std::vector<std::uint8_t>(bytes.begin() + 22, bytes.end()));
    EXPECT_EQ(buffer.skip(5), 0u);
    EXPECT_TRUE(buffer.eof());
}
