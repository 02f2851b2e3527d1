#include "Transcoder/Samples/Sample.h"

#include "TranscoderTestSupport.h"

#include <gtest/gtest.h>
#include <thread>

using namespace Halvorn::Test;

TEST(Sample, LastReleaseOnAnyThreadDeletesIt)
{
    const int before = liveSamples;
    Sample* sample = new TestSample(3);
    EXPECT_EQ(liveSamples, before + 1);
    sample->addReference();
    sample->release();
    EXPECT_EQ(liveSamples, before + 1);
    sample->data()[0] = 0x47;
    EXPECT_EQ(sample->size(), 16u);

    sample->addReference();
    std::thread other([sample] { sample->release(); });
    sample->release();
    other.join();
    EXPECT_EQ(liveSamples, before);
}
