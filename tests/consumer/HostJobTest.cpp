// A whole job as a host runs it: module, factory, decode pipe configured through KEPDecodePipe,
// transcoder and its callbacks; only the encode pipe is the test's, recording what reaches it.

#include "DecodePipes/XDCAMTestSupport.h"
#include "KEP/Halvorn/KEPCodecPipe.h"
#include "KEP/Halvorn/KEPModule.h"
#include "KEP/Halvorn/KEPTranscoder.h"
#include "MXF/SDK/Platform/Platform.h"
#include "TestSupport.h"

#include <condition_variable>
#include <filesystem>
#include <gtest/gtest.h>

using namespace Halvorn::Test;
using namespace Halvorn::Test::XDCAM;
using namespace KEP::Halvorn;

namespace
{

class HostTranscoder : public KEPTranscoder
{
public:
    std::vector<double> progress;
    int errorCode = 0;
    std::wstring errorText;

    bool waitDone()
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(60), [&] { return done_; });
    }

protected:
    void cbDone() override
    {
        const std::lock_guard lock(mutex_);
        done_ = true;
        changed_.notify_all();
    }
    void cbProgress(double percent) override
    {
        const std::lock_guard lock(mutex_);
        progress.push_back(percent);
    }
    void cbError(int code, const wchar_t* text) override
    {
        errorCode = code;
        errorText = text;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool done_ = false;
};

// The job of `pipe`, one transcoder, to its end.
void runJob(KEPCodecPipe* made, RecordingEncodePipe& encoder)
{
    HostTranscoder transcoder;
    ASSERT_TRUE(transcoder.setDecodePipe(dynamic_cast<KEPDecodePipe*>(made)));
    ASSERT_TRUE(transcoder.setEncodePipe(&encoder));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Ready);
    ASSERT_TRUE(transcoder.transcode());
    ASSERT_TRUE(transcoder.waitDone());
    EXPECT_EQ(transcoder.errorCode, 0) << MXF::SDK::Platform::toUtf8(transcoder.errorText);
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Done);
    EXPECT_TRUE(transcoder.unlink());
}

void expectClip(const std::string& clip, const RecordingEncodePipe& encoder)
{
    SCOPED_TRACE(clip);
    std::vector<std::uint32_t> video, audio;
    for (const auto& track : encoder.tracks())
        (track->fileName == L"video.mxf" ? video : audio).push_back(track->trackId);
    const auto records = encoder.records();
    for (const Digest& digest : digests(clip))
    {
        const std::uint32_t id =
            (digest.tag[0] == 'v' ? video : audio).at(std::stoul(digest.tag.substr(1)));
        EXPECT_EQ(records.at(id).hex(), digest.md5) << digest.tag;
        EXPECT_EQ(records.at(id).samples, digest.packets) << digest.tag;
    }
    EXPECT_EQ(encoder.finishes(), 1);
}

} // namespace

TEST(HostJob, AnXDCAMClipByPathReachesTheEncodePipe)
{
    KEPModule& module = KEPModule::instance();
    module.mxfBinaryDictionary(MXF::SDK::Platform::fromUtf8(HALVORN_DICTIONARY_FILE).c_str());
    KEPCodecPipe* made = module.newCodecPipe(XDCAMDecodePipeType);
    ASSERT_NE(made, nullptr);
    auto* pipe = dynamic_cast<KEPDecodePipe*>(made);
    ASSERT_NE(pipe, nullptr);
    const std::wstring clip = MXF::SDK::Platform::fromUtf8(dataDir() + "/xdcamhd422_1080i25.mxf");
    ASSERT_TRUE(pipe->setInputFile(clip.c_str(), L"", 0));
    RecordingEncodePipe encoder;
    runJob(made, encoder);
    expectClip("xdcamhd422_1080i25", encoder);
    delete made;
}

TEST(HostJob, AnXDCAMClipByUmidReachesTheEncodePipe)
{
    TempDir dir;
    std::filesystem::copy(dataDir() + "/sidecars/BPAV", dir.path() / "BPAV",
                          std::filesystem::copy_options::recursive);
    std::filesystem::copy_file(dataDir() + "/xdcamhd422_1080i2997df.mxf",
                               dir.path() / "BPAV/CLPR/100_0001_01/100_0001_01.MP4");
    KEPModule& module = KEPModule::instance();
    module.mxfBinaryDictionary(MXF::SDK::Platform::fromUtf8(HALVORN_DICTIONARY_FILE).c_str());
    KEPCodecPipe* made = module.newCodecPipe(XDCAMDecodePipeType);
    ASSERT_NE(made, nullptr);
    ASSERT_TRUE(dynamic_cast<KEPDecodePipe*>(made)->setInputUmid(
        dir.file(L"BPAV/MEDIAPRO.XML").c_str(),
        L"060A2B340101010501010D43130000007A3C51D2114805D8080046020211A2B3"));
    RecordingEncodePipe encoder;
    runJob(made, encoder);
    expectClip("xdcamhd422_1080i2997df", encoder);
    delete made;
}
