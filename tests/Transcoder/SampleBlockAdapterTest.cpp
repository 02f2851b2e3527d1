#include "Transcoder/Samples/SampleBlockAdapter.h"

#include "MXF/SDK/DataIO/Slice.h"
#include "TestSupport.h"

#include <atomic>
#include <cstring>
#include <gtest/gtest.h>

using namespace KEP::Halvorn;
using namespace MXF::SDK::DataIO;
using Halvorn::Test::patternBytes;

namespace
{

std::atomic<int> liveCounted{0};

class CountedSample : public HalvornSample
{
public:
    explicit CountedSample(const std::vector<std::uint8_t>& bytes) : HalvornSample(1, bytes.size())
    {
        std::memcpy(data(), bytes.data(), bytes.size());
        ++liveCounted;
    }
    ~CountedSample() override { --liveCounted; }
};

} // namespace

TEST(SampleBlockAdapter, ShowsTheSampleReadOnlyAndSharesItsLife)
{
    const int before = liveCounted;
    Sample* sample = new CountedSample(patternBytes(64));
    // The adapter takes over the creator's reference.
    Block* adapter = new SampleBlockAdapter(sample);
    EXPECT_EQ(std::as_const(*adapter).data(), sample->data());
    EXPECT_EQ(adapter->data(), nullptr);
    EXPECT_EQ(adapter->size(), 64u);
    EXPECT_EQ(adapter->addReference(), 2u);
    EXPECT_EQ(adapter->release(), 1u);
    EXPECT_EQ(liveCounted, before + 1);

    // A slice on the adapter views the sample's own bytes, and a holder of the sample alone keeps
    // it past the adapter.
    sample->addReference();
    {
        const Slice slice(adapter, 8, 56);
        EXPECT_EQ(slice.begin(), sample->data() + 8);
        EXPECT_EQ(adapter->release(), 1u); // the slice holds the last adapter reference
    }
    EXPECT_EQ(liveCounted, before + 1);
    EXPECT_EQ(sample->data()[63], patternBytes(64)[63]);
    sample->release();
    EXPECT_EQ(liveCounted, before);
}

TEST(SampleBlockAdapter, WithoutASampleIsAnEmptyBlockWithNullData)
{
    Block* adapter = new SampleBlockAdapter(nullptr);
    EXPECT_EQ(adapter->size(), 0u);
    EXPECT_EQ(std::as_const(*adapter).data(), nullptr);
    EXPECT_EQ(adapter->addReference(), 2u);
    EXPECT_EQ(adapter->release(), 1u);

    // Copies of sample bytes land in writable heap blocks.
    Block* copy = adapter->createBlock(10);
    EXPECT_EQ(copy->size(), 10u);
    EXPECT_NE(copy->data(), nullptr);
    copy->release();
    EXPECT_EQ(adapter->release(), 0u);
}
