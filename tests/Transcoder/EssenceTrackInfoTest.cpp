#include "Transcoder/Samples/EssenceTrackInfo.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace KEP::Halvorn;

TEST(EssenceTrackInfo, BearsANewSMPTE330MUMIDOfItsMaterialType)
{
    ::unsetenv("deterministic_uids");
    const EssenceTrackInfo video(5);
    const EssenceTrackInfo audio(8);

    // SMPTE 330M basic UMID: universal label, material type, SMPTE material number with
    // pseudo-random instance number, length 0x13.
    const std::uint8_t label[] = {0x06, 0x0A, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x05, 0x01, 0x01};
    for (std::size_t i = 0; i < sizeof label; ++i)
    {
        EXPECT_EQ(video.essenceKey[i], label[i]) << i;
        EXPECT_EQ(audio.essenceKey[i], label[i]) << i;
    }
    EXPECT_EQ(video.essenceKey[10], 5);
    EXPECT_EQ(audio.essenceKey[10], 8);
    EXPECT_EQ(video.essenceKey[11], 0x12);
    EXPECT_EQ(video.essenceKey[12], 0x13);
    EXPECT_NE(video.essenceKey, audio.essenceKey);
}
