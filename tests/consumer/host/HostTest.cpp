// What a host application can do with the public headers and the library alone.
#include <KEP/Halvorn/IKEPHalvornLogger.h>
#include <KEP/Halvorn/KEPCodecPipe.h>
#include <KEP/Halvorn/KEPModule.h>
#include <KEP/Halvorn/KEPTranscoder.h>
#include <atomic>
#include <cstdio>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

using namespace KEP::Halvorn;

static_assert(sizeof(wchar_t) == 4, "wide strings at the boundary are 32-bit");

namespace
{

class HostLogger : public IKEPHalvornLogger
{
public:
    void log(int level, const wchar_t* text) override
    {
        const std::lock_guard lock(mutex_);
        lines_.emplace_back(level, text);
    }
    std::vector<std::pair<int, std::wstring>> lines() const
    {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::pair<int, std::wstring>> lines_;
};

class HostTranscoder : public KEPTranscoder
{
public:
    std::atomic<int> callbacks{0};

protected:
    void cbDone() override { ++callbacks; }
    void cbProgress(double) override { ++callbacks; }
    void cbError(int, const wchar_t*) override { ++callbacks; }
    void cbPaused() override { ++callbacks; }
};

} // namespace

// First in this program: it sees the module as the library makes it.
TEST(Host, FindsOneModuleWithEmptyPathsAndNoLogger)
{
    KEPModule& module = KEPModule::instance();
    EXPECT_EQ(&module, &KEPModule::instance());
    ASSERT_NE(module.mxfBinaryDictionary(), nullptr);
    EXPECT_STREQ(module.mxfBinaryDictionary(), L"");
    EXPECT_EQ(module.getLogger(), nullptr);

    module.mxfBinaryDictionary(L"/opt/halvorn/SMPTE.dict");
    EXPECT_STREQ(module.mxfBinaryDictionary(), L"/opt/halvorn/SMPTE.dict");
    module.mxfBinaryDictionary(L"");
    EXPECT_STREQ(module.mxfBinaryDictionary(), L"");
    EXPECT_FALSE(module.setErrorCodesFile(L"/nonexistent/halvorn-errors.xml"));
}

TEST(Host, ReceivesTheLibrarysLinesThroughItsLogger)
{
    KEPModule& module = KEPModule::instance();
    HostLogger logger;
    module.installLogger(&logger);
    EXPECT_EQ(module.getLogger(), &logger);
    {
        HostTranscoder transcoder;
        EXPECT_FALSE(transcoder.transcode());
    }
    module.installLogger(nullptr);
    EXPECT_EQ(module.getLogger(), nullptr);
    const std::vector<std::pair<int, std::wstring>> expected = {
        {0, L"Before locking mutex."},
        {0, L"At beggining of: transcode ()"},
        {0, L"Calling transcoder destructor"},
    };
    EXPECT_EQ(logger.lines(), expected);
}

TEST(Host, AnUnlinkedTranscoderRefusesEveryJobCall)
{
    HostTranscoder transcoder;
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Unlinked);
    EXPECT_FALSE(transcoder.setDecodePipe(nullptr));
    EXPECT_FALSE(transcoder.setEncodePipe(nullptr));
    EXPECT_FALSE(transcoder.transcode());
    EXPECT_FALSE(transcoder.pause());
    EXPECT_FALSE(transcoder.resume());
    EXPECT_FALSE(transcoder.stop());
    EXPECT_FALSE(transcoder.createAAFFile());
    EXPECT_TRUE(transcoder.unlink());
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Unlinked);
    EXPECT_EQ(transcoder.callbacks, 0);
}

TEST(Host, AllocatesExportedClassesThroughTheLibrary)
{
    auto* transcoder = new HostTranscoder;
    EXPECT_EQ(transcoder->getState(), KEPTranscoder::Unlinked);
    delete transcoder;

    auto* loggers = new HostLogger[3];
    loggers[2].log(1, L"note");
    EXPECT_EQ(loggers[2].lines().size(), 1u);
    delete[] loggers;

    alignas(HostTranscoder) unsigned char place[sizeof(HostTranscoder)];
    auto* placed = new (place) HostTranscoder;
    EXPECT_EQ(static_cast<void*>(placed), static_cast<void*>(place));
    placed->~HostTranscoder();
}

TEST(Host, GetsAPipeOfTheRightKindOrNullForEachType)
{
    KEPModule& module = KEPModule::instance();
    HostLogger logger;
    module.installLogger(&logger);
    for (const KEPCodecPipeType type : {XDCAMDecodePipeType, XDCAMEXDecodePipeType})
    {
        KEPCodecPipe* pipe = module.newCodecPipe(type);
        if (pipe != nullptr)
        {
            EXPECT_NE(dynamic_cast<KEPDecodePipe*>(pipe), nullptr) << type;
        }
        delete pipe;
    }
    KEPCodecPipe* avid = module.newCodecPipe(AvidEncodePipeType);
    if (avid != nullptr)
    {
        EXPECT_NE(dynamic_cast<KEPAvidEncodePipe*>(avid), nullptr);
    }
    delete avid;
    KEPCodecPipe* opAtom = module.newCodecPipe(OPAtomEncodePipeType);
    if (opAtom != nullptr)
    {
        EXPECT_NE(dynamic_cast<KEPOPAtomEncodePipe*>(opAtom), nullptr);
    }
    delete opAtom;

    for (const int unknown : {4, -1, 1000})
        EXPECT_EQ(module.newCodecPipe(static_cast<KEPCodecPipeType>(unknown)), nullptr) << unknown;
    module.installLogger(nullptr);
    EXPECT_TRUE(logger.lines().empty());
}

// The XDCAM decode pipe as a host configures it. The public headers offer no encode pipe a host
// could make itself (the transcoder runs only the library's own), so the job itself runs in the
// build's halvorn_host_job_tests, over the same factory.
TEST(Host, ConfiguresAnXDCAMDecodePipeByPathAndByUmid)
{
    KEPModule& module = KEPModule::instance();
    const std::string data = HALVORN_HOST_TEST_DATA;
    const std::wstring clip(std::wstring(data.begin(), data.end()) + L"/xdcamhd422_1080i25.mxf");
    const std::wstring profile(std::wstring(data.begin(), data.end()) +
                               L"/sidecars/BPAV/MEDIAPRO.XML");

    // The dictionary the library ships, in the share folder of the build or the installation.
    const std::string dictionary = HALVORN_HOST_DICTIONARY;
    std::FILE* shipped = std::fopen(dictionary.c_str(), "rb");
    ASSERT_NE(shipped, nullptr) << dictionary;
    std::fclose(shipped);
    module.mxfBinaryDictionary(std::wstring(dictionary.begin(), dictionary.end()).c_str());

    KEPCodecPipe* made = module.newCodecPipe(XDCAMDecodePipeType);
    ASSERT_NE(made, nullptr);
    auto* pipe = dynamic_cast<KEPDecodePipe*>(made);
    ASSERT_NE(pipe, nullptr);
    EXPECT_TRUE(pipe->setInputFile(clip.c_str(), L"", 0));
    EXPECT_TRUE(pipe->setInputUmid(
        profile.c_str(), L"060A2B340101010501010D43130000007A3C51D2114805D8080046020211A2B3"));
    EXPECT_FALSE(pipe->setInputUmid(
        profile.c_str(), L"060A2B340101010501010D4313000000FFFFFFFF114805D8080046020211A2B3"));
    pipe->setInPoint(0, 5);
    pipe->setDuration(14, 10);
    EXPECT_FALSE(pipe->useInOutPoint()) << "5 + 10 precharge and displayed frames exceed 14";
    pipe->setDuration(15, 10);
    EXPECT_TRUE(pipe->useInOutPoint());

    class HostEncodePipe : public KEPEncodePipe
    {
    };
    HostEncodePipe own;
    HostTranscoder transcoder;
    EXPECT_TRUE(transcoder.setDecodePipe(pipe));
    EXPECT_TRUE(transcoder.setEncodePipe(&own));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Unlinked) << "a pipe of the host never runs";
    EXPECT_FALSE(transcoder.transcode());
    EXPECT_TRUE(transcoder.unlink());
    delete made;
    module.mxfBinaryDictionary(L"");
}
