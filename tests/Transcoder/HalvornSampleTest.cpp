#include "MXF/SDK/DataIO/Block.h"
#include "TestSupport.h"
#include "Transcoder/Sample.h"

#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

using namespace KEP::Halvorn;
using namespace MXF::SDK::DataIO;
using Halvorn::Test::patternBytes;

namespace
{

std::atomic<int> liveCounted{0};

class CountedSample : public HalvornSample
{
public:
    CountedSample(std::uint32_t trackId, std::uint64_t size) : HalvornSample(trackId, size)
    {
        ++liveCounted;
    }
    ~CountedSample() override { --liveCounted; }
};

} // namespace

TEST(HalvornSample, OwnsAWritableBufferOfItsSizeAndDiesWithItsLastReference)
{
    const int before = liveCounted;
    HalvornSample* sample = new CountedSample(7, 100000);
    EXPECT_EQ(sample->trackId(), 7u);
    ASSERT_EQ(sample->size(), 100000u);
    // Every byte is ours to write; the sanitizers catch a short buffer.
    std::memset(sample->data(), 0xA5, sample->size());

    sample->addReference();
    std::thread other([sample] { sample->release(); });
    other.join();
    EXPECT_EQ(liveCounted, before + 1);
    EXPECT_EQ(sample->data()[99999], 0xA5);
    sample->release();
    EXPECT_EQ(liveCounted, before);

    // Buffers are 32-bit: a size past 4 GiB keeps its low bits, and size() agrees with the buffer.
    HalvornSample* wide = new HalvornSample(1, (std::uint64_t{1} << 32) + 16);
    EXPECT_EQ(wide->size(), 16u);
    std::memset(wide->data(), 0, wide->size());
    wide->release();
}

TEST(ReadSample, CopiesTheWholeBlockAndOutlivesIt)
{
    const auto bytes = patternBytes(3000);
    ReadSample* sample = nullptr;
    {
        BlockPtr block = BlockPtr::adopt(MemoryBlockFactory::instance().createBlock(bytes.size()));
        std::memcpy(block->data(), bytes.data(), bytes.size());
        sample = new ReadSample(4, *block);
        EXPECT_NE(sample->data(), std::as_const(*block).data());
    }
    EXPECT_EQ(sample->trackId(), 4u);
    ASSERT_EQ(sample->size(), bytes.size());
    EXPECT_EQ(std::memcmp(sample->data(), bytes.data(), bytes.size()), 0);
    sample->release();

    ReadSample* empty = new ReadSample(2, EmptyBlock::instance());
    EXPECT_EQ(empty->size(), 0u);
    EXPECT_NE(empty->data(), nullptr);
    empty->release();
}

TEST(TWOSSample, AppendsValuesInHostOrderUntilFull)
{
    TWOSSample* sample = new TWOSSample(9, 6);
    const std::uint16_t values[] = {0x1234, 0xABCD, 0x0001};
    for (std::uint16_t value : values)
        sample->append(value);
    EXPECT_EQ(sample->trackId(), 9u);
    ASSERT_EQ(sample->size(), sizeof values);
    EXPECT_EQ(std::memcmp(sample->data(), values, sizeof values), 0);
    EXPECT_THROW(sample->append(0xFFFF), MXF::SDK::Exceptions::InvalidLength);
    EXPECT_EQ(std::memcmp(sample->data(), values, sizeof values), 0);
    sample->release();

    // An odd size leaves no room for a last half value.
    TWOSSample* odd = new TWOSSample(9, 3);
    odd->append(7);
    EXPECT_THROW(odd->append(8), MXF::SDK::Exceptions::InvalidLength);
    odd->release();
}
