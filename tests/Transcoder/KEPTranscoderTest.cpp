#include "KEP/Halvorn/KEPTranscoder.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "TranscoderTestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>

using namespace Halvorn::Test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace
{

// One transcoder with its pipes, logger and dictionary. Members end in reverse order, so the
// transcoder, and with it the worker, ends first.
template <typename Encoder = TestEncodePipe>
struct Rig
{
    explicit Rig(bool withDictionary = true)
    {
        if (withDictionary)
            dictionary.emplace();
    }
    // A test that failed half-way may leave the job held: let it go, so the transcoder can end.
    ~Rig()
    {
        gate.open();
        transcoder.resume();
    }

    void link()
    {
        ASSERT_TRUE(transcoder.setDecodePipe(&decoder));
        ASSERT_TRUE(transcoder.setEncodePipe(&encoder));
        ASSERT_EQ(transcoder.getState(), KEPTranscoder::Ready);
    }
    // Runs one job to its cbDone.
    void run()
    {
        ASSERT_TRUE(transcoder.transcode());
        ASSERT_TRUE(journal.waitFor("cbDone"));
    }
    // The worker's thread: the one that loaded the clip.
    std::thread::id worker() const
    {
        std::vector<Event> storage;
        const Event* load = journal.find("load", storage);
        return load != nullptr ? load->thread : std::thread::id();
    }
    std::vector<Event> errors() const
    {
        std::vector<Event> errors;
        for (const Event& event : journal.events())
            if (event.name == "cbError")
                errors.push_back(event);
        return errors;
    }

    RecordingLogger logger;
    ScopedLogger installed{logger};
    std::optional<ScopedDictionary> dictionary;
    Journal journal;
    // Holds the worker where a test's hook waits on it.
    Gate gate;
    Gate reached;
    TestDecodePipe decoder{journal};
    Encoder encoder{journal};
    TestTranscoder transcoder{journal};
};

const int samplesAtStart = liveSamples;

void expectNoLeakedSamples()
{
    EXPECT_EQ(liveSamples, samplesAtStart);
}

} // namespace

TEST(KEPTranscoder, LinksPipesOnlyWhileUnlinkedOrReady)
{
    Rig rig;
    KEPTranscoder& transcoder = rig.transcoder;
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Unlinked);
    EXPECT_FALSE(transcoder.setDecodePipe(nullptr));
    EXPECT_FALSE(transcoder.setEncodePipe(nullptr));
    EXPECT_TRUE(transcoder.setDecodePipe(&rig.decoder));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Unlinked);
    EXPECT_TRUE(transcoder.setEncodePipe(&rig.encoder));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Ready);
    EXPECT_TRUE(transcoder.setDecodePipe(&rig.decoder));
    EXPECT_FALSE(transcoder.setEncodePipe(nullptr));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Ready);

    // Pipes that this library did not make are taken, but leave nothing to run.
    ForeignDecodePipe foreignDecoder;
    EXPECT_TRUE(transcoder.setDecodePipe(&foreignDecoder));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Unlinked);
    EXPECT_FALSE(transcoder.transcode());
    EXPECT_TRUE(transcoder.setDecodePipe(&rig.decoder));
    ForeignEncodePipe foreignEncoder;
    EXPECT_TRUE(transcoder.setEncodePipe(&foreignEncoder));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Unlinked);
    EXPECT_FALSE(transcoder.transcode());
    EXPECT_THAT(rig.journal.names(), IsEmpty());
}

TEST(KEPTranscoder, RefusesJobCallsUntilLinkedAndUnlinksWithoutAJob)
{
    Rig rig;
    KEPTranscoder& transcoder = rig.transcoder;
    EXPECT_FALSE(transcoder.transcode());
    EXPECT_FALSE(transcoder.pause());
    EXPECT_FALSE(transcoder.resume());
    EXPECT_FALSE(transcoder.stop());
    EXPECT_FALSE(transcoder.createAAFFile());
    EXPECT_TRUE(transcoder.unlink());
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Unlinked);
    EXPECT_THAT(rig.logger.texts(),
                ElementsAre(L"Before locking mutex.", L"At beggining of: transcode ()"));

    rig.link();
    EXPECT_FALSE(transcoder.pause());
    EXPECT_FALSE(transcoder.resume());
    EXPECT_FALSE(transcoder.stop());
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Ready);
    EXPECT_TRUE(transcoder.unlink());
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Unlinked);
    EXPECT_THAT(rig.journal.names(), ElementsAre("encode.reset", "decode.reset"));
    EXPECT_FALSE(transcoder.transcode());
}

TEST(KEPTranscoder, RunsAJobToDoneOnItsOwnThread)
{
    Rig rig;
    rig.link();
    rig.run();
    EXPECT_EQ(rig.transcoder.getState(), KEPTranscoder::Done);
    EXPECT_THAT(rig.journal.names(), ElementsAre("load", "start", "write", "write", "write",
                                                 "flush", "finish", "cbDone"));
    const std::vector<Event> events = rig.journal.events();
    EXPECT_EQ(events[2].code, 0);
    EXPECT_EQ(events[3].code, 1);
    EXPECT_EQ(events[4].code, ERROR_TRANSCODING);
    EXPECT_EQ(events.back().code, KEPTranscoder::Done);
    EXPECT_EQ(events.back().thread, rig.worker());
    EXPECT_NE(rig.worker(), std::this_thread::get_id());

    // Unlinking a finished job only joins its thread.
    const auto before = std::chrono::steady_clock::now();
    EXPECT_TRUE(rig.transcoder.unlink());
    EXPECT_LT(std::chrono::steady_clock::now() - before, 1s);
    expectNoLeakedSamples();

    std::vector<std::wstring> hostLines, workerLines;
    for (const LogLine& line : rig.logger.lines())
        (line.thread == rig.worker() ? workerLines : hostLines).push_back(line.text);
    EXPECT_THAT(hostLines, ElementsAre(L"Before locking mutex.", L"At beggining of: transcode ()",
                                       L"Before launching transcoder thread", L"Before bind",
                                       L"After launching transcoder thread"));
    EXPECT_THAT(workerLines,
                ElementsAre(L"Inside transcode thread.", L"exiting transcode thread."));
    for (const LogLine& line : rig.logger.lines())
        EXPECT_EQ(line.level, line.text == L"After launching transcoder thread" ? 1 : 0);
}

TEST(KEPTranscoder, EndsAClipWithoutSamplesAsDoneAfterFinish)
{
    Rig rig;
    rig.decoder.sampleCount = 0;
    rig.link();
    rig.run();
    EXPECT_EQ(rig.transcoder.getState(), KEPTranscoder::Done);
    EXPECT_THAT(rig.journal.names(), ElementsAre("load", "start", "flush", "finish", "cbDone"));
}

TEST(KEPTranscoder, ReportsProgressAtOnceThenEveryTwoSecondsAndEndsAt100)
{
    Rig rig;
    rig.decoder.sampleCount = 0;
    rig.decoder.beforeSample = [&](int) { rig.gate.wait(); };
    rig.encoder.onFlush = [&] { rig.transcoder.waitForProgress(2); };
    rig.link();
    ASSERT_TRUE(rig.transcoder.transcode());

    // The first report comes before the pump has read anything, long before 2 seconds pass.
    ASSERT_TRUE(rig.transcoder.waitForProgress(1, 1000ms));
    const auto first = std::chrono::steady_clock::now();
    rig.gate.open();
    ASSERT_TRUE(rig.transcoder.waitForProgress(2));
    const auto second = std::chrono::steady_clock::now();
    ASSERT_TRUE(rig.journal.waitFor("cbDone"));

    EXPECT_GE(second - first, 1800ms);
    EXPECT_THAT(rig.transcoder.progress(), ElementsAre(0.0, 100.0));
    for (const std::thread::id thread : rig.transcoder.progressThreads())
    {
        EXPECT_NE(thread, rig.worker());
        EXPECT_NE(thread, std::this_thread::get_id());
    }
}

// Each way a job fails gives one cbError with its code and text, on the worker, then cbDone; the
// toolkit's exceptions are analysis errors, any other is an unknown one, both after an abort.
TEST(KEPTranscoder, ReportsEachFailureOnceThenDone)
{
    using MXF::SDK::Exceptions::InvalidFormat;
    struct Case
    {
        const char* name;
        std::function<void(Rig<>&)> arrange;
        bool withDictionary;
        int code;
        std::wstring text;
        std::vector<std::string> names;
    };
    const std::vector<Case> cases = {
        {"no input",
         [](Rig<>& rig) { rig.decoder.inputSet = false; },
         true,
         ERROR_INPUT_NOT_SET,
         L"Decoder pipe input file path is not set.",
         {"cbError", "cbDone"}},
        {"no output",
         [](Rig<>& rig) { rig.encoder.outputSet = false; },
         true,
         ERROR_OUTPUT_NOT_SET,
         L"Encoder pipe output file path is not set.",
         {"cbError", "cbDone"}},
        {"no dictionary",
         [](Rig<>&) {},
         false,
         ERROR_NO_DICTIONARY_FILE,
         L"Error while loading the dictionary. No dictionary file was set in KEPModule.",
         {"cbError", "cbDone"}},
        {"no essence tracks",
         [](Rig<>& rig)
         {
             rig.decoder.loadFails = true;
             rig.decoder.failure = {ERROR_NO_ESSENCE_TRACKS, L""};
         },
         true,
         ERROR_NO_ESSENCE_TRACKS,
         L"Input mxf file contains no valid essence tracks to perform transcoding.",
         {"load", "cbError", "cbDone"}},
        {"unreadable input",
         [](Rig<>& rig)
         {
             rig.decoder.loadFails = true;
             rig.decoder.failure = {ERROR_LOADING_INPUT, L"[clip.mxf]"};
         },
         true,
         ERROR_LOADING_INPUT,
         L"Failed to load input file.[clip.mxf]",
         {"load", "cbError", "cbDone"}},
        {"no temporary folder",
         [](Rig<>& rig)
         {
             rig.encoder.startFails = true;
             rig.encoder.failure = {ERROR_WRAPPING, L"Unable to create temporary folder."};
         },
         true,
         ERROR_WRAPPING,
         L"Error while wrapping essence.Unable to create temporary folder.",
         {"load", "start", "cbError", "cbDone"}},
        {"library exception in the pump",
         [](Rig<>& rig)
         {
             rig.decoder.beforeSample = [](int index)
             {
                 if (index == 1)
                     MXF_SDK_THROW(InvalidFormat, L"Not a partition pack");
             };
         },
         true,
         ERROR_ANALYZING_INPUT,
         L"Error while analyzing input file.-> Not a partition pack",
         {"load", "start", "write", "abort", "cbError", "cbDone"}},
        {"other exception in the pump",
         [](Rig<>& rig)
         {
             rig.decoder.beforeSample = [](int index)
             {
                 if (index == 2)
                     throw std::runtime_error("not the library's");
             };
         },
         true,
         ERROR_TRANSCODING,
         L"Unknown error while transcoding.",
         {"load", "start", "write", "write", "abort", "cbError", "cbDone"}},
        {"library exception in load",
         [](Rig<>& rig)
         { rig.decoder.onLoad = [] { MXF_SDK_THROW(InvalidFormat, L"Truncated header"); }; },
         true,
         ERROR_ANALYZING_INPUT,
         L"Error while analyzing input file.-> Truncated header",
         {"load", "abort", "cbError", "cbDone"}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        Rig rig(c.withDictionary);
        c.arrange(rig);
        rig.link();
        rig.run();
        EXPECT_EQ(rig.transcoder.getState(), KEPTranscoder::Failed);
        EXPECT_EQ(rig.journal.names(), c.names);
        const std::vector<Event> errors = rig.errors();
        ASSERT_EQ(errors.size(), 1u);
        EXPECT_EQ(errors[0].code, c.code);
        EXPECT_EQ(errors[0].text, c.text);
        EXPECT_NE(errors[0].thread, std::this_thread::get_id());
        EXPECT_EQ(rig.journal.events().back().code, KEPTranscoder::Failed);
        EXPECT_TRUE(rig.transcoder.unlink());
        EXPECT_EQ(rig.logger.count(L"exiting transcode thread."), 0);
        expectNoLeakedSamples();
    }
}

TEST(KEPTranscoder, AbortsThenReportsAWriteFailureAndReleasesTheSampleInHand)
{
    Rig rig;
    rig.decoder.sampleCount = 5;
    rig.encoder.failAfterWrites = 2;
    rig.encoder.failure = {ERROR_WRAPPING, L" Disk full."};
    rig.link();
    rig.run();
    EXPECT_EQ(rig.transcoder.getState(), KEPTranscoder::Failed);
    EXPECT_THAT(rig.journal.names(), ElementsAre("load", "start", "write", "write", "flush",
                                                 "finish", "abort", "cbError", "cbDone"));
    const std::vector<Event> errors = rig.errors();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].code, ERROR_WRAPPING);
    EXPECT_EQ(errors[0].text, L"Error while wrapping essence. Disk full.");
    EXPECT_EQ(rig.decoder.samplesRead, 3);
    EXPECT_TRUE(rig.transcoder.unlink());
    expectNoLeakedSamples();
    EXPECT_EQ(rig.logger.count(L"exiting transcode thread."), 1);
}

TEST(KEPTranscoder, ReportsADictionaryFileThatCannotBeOpenedAsCode9)
{
    Rig rig(false);
    TempDir directory;
    const std::wstring missing = directory.file(L"missing.bin");
    KEPModule::instance().mxfBinaryDictionary(missing.c_str());
    rig.link();
    rig.run();
    KEPModule::instance().mxfBinaryDictionary(L"");
    EXPECT_THAT(rig.journal.names(), ElementsAre("abort", "cbError", "cbDone"));
    const std::vector<Event> errors = rig.errors();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].code, ERROR_ANALYZING_INPUT);
    EXPECT_THAT(errors[0].text, StartsWith(L"Error while analyzing input file.-> "));
    EXPECT_NE(errors[0].text.find(missing), std::wstring::npos);
}

TEST(KEPTranscoder, GoesOnWithTheJobWhenCbProgressThrows)
{
    Rig rig;
    rig.transcoder.onProgress = [](double) { throw std::runtime_error("host failure"); };
    rig.decoder.beforeSample = [&](int index)
    {
        if (index == 0)
            rig.transcoder.waitForProgress(1);
    };
    rig.link();
    rig.run();
    EXPECT_EQ(rig.transcoder.getState(), KEPTranscoder::Done);
    EXPECT_TRUE(rig.errors().empty());
    EXPECT_EQ(rig.transcoder.progress().size(), 1u);
}

TEST(KEPTranscoder, PauseHoldsThePumpAndResumeCallsCbPausedOnTheCaller)
{
    Rig rig;
    rig.decoder.sampleCount = 4;
    rig.decoder.beforeSample = [&](int index)
    {
        if (index == 1)
        {
            rig.reached.open();
            rig.gate.wait();
        }
    };
    rig.link();
    KEPTranscoder& transcoder = rig.transcoder;
    ASSERT_TRUE(transcoder.transcode());
    rig.reached.wait();

    EXPECT_FALSE(transcoder.resume());
    EXPECT_FALSE(transcoder.transcode());
    EXPECT_FALSE(transcoder.unlink());
    EXPECT_FALSE(transcoder.setDecodePipe(&rig.decoder));
    EXPECT_FALSE(transcoder.setEncodePipe(&rig.encoder));
    EXPECT_TRUE(transcoder.pause());
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Paused);
    EXPECT_FALSE(transcoder.pause());
    EXPECT_FALSE(transcoder.stop());
    EXPECT_FALSE(transcoder.transcode());
    EXPECT_FALSE(transcoder.unlink());
    EXPECT_FALSE(transcoder.setDecodePipe(&rig.decoder));
    EXPECT_FALSE(transcoder.setEncodePipe(&rig.encoder));

    // The sample being read goes through; the next one waits for resume.
    rig.gate.open();
    ASSERT_TRUE(rig.journal.waitFor("write", 2));
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(rig.decoder.samplesRead, 2);
    EXPECT_EQ(rig.journal.count("cbPaused"), 0);

    EXPECT_TRUE(transcoder.resume());
    EXPECT_FALSE(transcoder.resume());
    ASSERT_TRUE(rig.journal.waitFor("cbDone"));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Done);
    EXPECT_THAT(rig.journal.names(), ElementsAre("load", "start", "write", "write", "cbPaused",
                                                 "write", "write", "flush", "finish", "cbDone"));
    std::vector<Event> storage;
    EXPECT_EQ(rig.journal.find("cbPaused", storage)->thread, std::this_thread::get_id());
}

TEST(KEPTranscoder, StopEndsTheJobWithCbDoneAndNoErrorForGood)
{
    Rig rig;
    rig.decoder.sampleCount = 4;
    rig.decoder.beforeSample = [&](int index)
    {
        if (index == 1)
        {
            rig.reached.open();
            rig.gate.wait();
        }
    };
    rig.link();
    KEPTranscoder& transcoder = rig.transcoder;
    ASSERT_TRUE(transcoder.transcode());
    rig.reached.wait();

    // A paused job must be resumed before it can be stopped.
    ASSERT_TRUE(transcoder.pause());
    EXPECT_FALSE(transcoder.stop());
    ASSERT_TRUE(transcoder.resume());
    EXPECT_TRUE(transcoder.stop());
    EXPECT_TRUE(rig.encoder.stopped);
    rig.gate.open();
    ASSERT_TRUE(rig.journal.waitFor("cbDone"));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Failed);
    EXPECT_FALSE(transcoder.stop());
    EXPECT_THAT(rig.journal.names(),
                ElementsAre("load", "start", "write", "cbPaused", "encode.stop", "write", "flush",
                            "abort", "cbDone"));
    EXPECT_EQ(rig.journal.events().back().code, KEPTranscoder::Failed);
    EXPECT_TRUE(rig.errors().empty());
    EXPECT_TRUE(transcoder.unlink());
    ASSERT_EQ(rig.logger.count(L"Process stopped by request of the API."), 1);
    for (const LogLine& line : rig.logger.lines())
    {
        if (line.text == L"Process stopped by request of the API.")
        {
            EXPECT_EQ(line.level, 1);
        }
    }

    // The stop outlives unlink: the next job ends as stopped without reading a sample.
    const int samplesRead = rig.decoder.samplesRead;
    rig.link();
    const std::size_t eventsBefore = rig.journal.events().size();
    ASSERT_TRUE(transcoder.transcode());
    ASSERT_TRUE(rig.journal.waitFor("cbDone", 2));
    EXPECT_EQ(rig.decoder.samplesRead, samplesRead);
    const std::vector<std::string> names = rig.journal.names();
    EXPECT_THAT(std::vector<std::string>(names.begin() + eventsBefore, names.end()),
                ElementsAre("load", "start", "flush", "abort", "cbDone"));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Failed);
    expectNoLeakedSamples();
}

TEST(KEPTranscoder, NeedsUnlinkAndBothPipesAgainAfterAJobButLoadsTheDictionaryOnce)
{
    Rig rig;
    rig.link();
    rig.run();
    KEPTranscoder& transcoder = rig.transcoder;
    EXPECT_FALSE(transcoder.transcode());
    EXPECT_FALSE(transcoder.setDecodePipe(&rig.decoder));
    EXPECT_FALSE(transcoder.setEncodePipe(&rig.encoder));
    EXPECT_FALSE(transcoder.pause());
    EXPECT_FALSE(transcoder.resume());
    EXPECT_FALSE(transcoder.stop());
    EXPECT_TRUE(transcoder.unlink());
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Unlinked);
    const std::vector<std::string> names = rig.journal.names();
    EXPECT_THAT(std::vector<std::string>(names.end() - 2, names.end()),
                ElementsAre("encode.reset", "decode.reset"));

    // This transcoder has its dictionary: the module's file no longer matters to it.
    KEPModule::instance().mxfBinaryDictionary(L"");
    EXPECT_TRUE(transcoder.setDecodePipe(&rig.decoder));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Unlinked);
    EXPECT_TRUE(transcoder.setEncodePipe(&rig.encoder));
    ASSERT_TRUE(transcoder.transcode());
    ASSERT_TRUE(rig.journal.waitFor("cbDone", 2));
    EXPECT_EQ(transcoder.getState(), KEPTranscoder::Done);
    EXPECT_TRUE(rig.errors().empty());

    Journal journal;
    TestTranscoder fresh(journal);
    ASSERT_TRUE(fresh.setDecodePipe(&rig.decoder));
    ASSERT_TRUE(fresh.setEncodePipe(&rig.encoder));
    ASSERT_TRUE(fresh.transcode());
    ASSERT_TRUE(journal.waitFor("cbDone"));
    EXPECT_THAT(journal.names(), ElementsAre("cbError", "cbDone"));
    EXPECT_EQ(journal.events()[0].code, ERROR_NO_DICTIONARY_FILE);
}

TEST(KEPTranscoder, CreatesTheAAFFileOnlyWithAnAvidPipeBothPipesAndASidecar)
{
    {
        Rig rig;
        rig.link();
        EXPECT_FALSE(rig.transcoder.createAAFFile());
        EXPECT_THAT(rig.logger.texts(), IsEmpty());
        EXPECT_THAT(rig.journal.names(), IsEmpty());
    }
    {
        Rig<TestAvidEncodePipe> rig;
        ASSERT_TRUE(rig.transcoder.setEncodePipe(&rig.encoder));
        EXPECT_FALSE(rig.transcoder.createAAFFile());
        ASSERT_EQ(rig.logger.lines().size(), 1u);
        EXPECT_EQ(rig.logger.lines()[0].level, 3);
        EXPECT_EQ(rig.logger.lines()[0].text,
                  L"Unable to create AAF file because DecodePipe and/or EncodePipe are not set.");
    }
    {
        Rig<TestAvidEncodePipe> rig;
        rig.decoder.xml = L"";
        rig.link();
        EXPECT_FALSE(rig.transcoder.createAAFFile());
        ASSERT_EQ(rig.logger.lines().size(), 1u);
        EXPECT_EQ(rig.logger.lines()[0].level, 3);
        EXPECT_EQ(rig.logger.lines()[0].text, L"Unable to create AAF xmlMetadataFile is not set.");
        EXPECT_EQ(rig.transcoder.getState(), KEPTranscoder::Ready);
    }
    {
        Rig<TestAvidEncodePipe> rig;
        rig.decoder.startOffset = 250;
        rig.decoder.firstFile = L"/media/C0001.MXF";
        rig.decoder.materials = {{10, L"Interview"}, {90, L"Shot change"}};
        rig.link();
        EXPECT_TRUE(rig.transcoder.createAAFFile());
        EXPECT_EQ(rig.transcoder.getState(), KEPTranscoder::Ready);
        EXPECT_THAT(rig.journal.names(), ElementsAre("load", "createAAFFile"));
        EXPECT_EQ(rig.encoder.startOffset, 250u);
        EXPECT_EQ(rig.encoder.xmlGiven, L"clip.xml");
        EXPECT_EQ(rig.encoder.clipNameGiven, L"/media/C0001.MXF");
        EXPECT_EQ(rig.encoder.materialsGiven, rig.decoder.materials);
        rig.run();
        EXPECT_EQ(rig.transcoder.getState(), KEPTranscoder::Done);
    }
    {
        Rig<TestAvidEncodePipe> rig;
        rig.encoder.createResult = false;
        rig.link();
        EXPECT_FALSE(rig.transcoder.createAAFFile());
        EXPECT_THAT(rig.journal.names(), ElementsAre("load", "createAAFFile", "abort"));
        EXPECT_EQ(rig.transcoder.getState(), KEPTranscoder::Ready);
    }
}

TEST(KEPTranscoder, ReportsFailuresOfCreateAAFFileOnTheCallersThread)
{
    struct Case
    {
        const char* name;
        std::function<void(Rig<TestAvidEncodePipe>&)> arrange;
        bool withDictionary;
        int code;
        const wchar_t* text;
        std::vector<std::string> names;
    };
    const std::vector<Case> cases = {
        {"no dictionary",
         [](Rig<TestAvidEncodePipe>&) {},
         false,
         ERROR_NO_DICTIONARY_FILE,
         L"Error while loading the dictionary. No dictionary file was set in KEPModule.",
         {"cbError", "cbDone"}},
        {"no essence tracks",
         [](Rig<TestAvidEncodePipe>& rig)
         {
             rig.decoder.loadFails = true;
             rig.decoder.failure = {ERROR_NO_ESSENCE_TRACKS, L""};
         },
         true,
         ERROR_NO_ESSENCE_TRACKS,
         L"Input mxf file contains no valid essence tracks to perform transcoding.",
         {"load", "cbError", "cbDone"}},
        {"library exception in load",
         [](Rig<TestAvidEncodePipe>& rig)
         {
             rig.decoder.onLoad = []
             { MXF_SDK_THROW(MXF::SDK::Exceptions::InvalidFormat, L"Truncated header"); };
         },
         true,
         ERROR_ANALYZING_INPUT,
         L"Error while analyzing input file.-> Truncated header",
         {"load", "abort", "cbError", "cbDone"}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        Rig<TestAvidEncodePipe> rig(c.withDictionary);
        c.arrange(rig);
        rig.link();
        EXPECT_FALSE(rig.transcoder.createAAFFile());
        EXPECT_EQ(rig.transcoder.getState(), KEPTranscoder::Failed);
        EXPECT_EQ(rig.journal.names(), c.names);
        const std::vector<Event> errors = rig.errors();
        ASSERT_EQ(errors.size(), 1u);
        EXPECT_EQ(errors[0].code, c.code);
        EXPECT_EQ(errors[0].text, c.text);
        for (const Event& event : rig.journal.events())
            EXPECT_EQ(event.thread, std::this_thread::get_id());
        EXPECT_FALSE(rig.transcoder.transcode());
    }
}

TEST(KEPTranscoder, DestructorWaitsForTheJobWithoutStoppingIt)
{
    Rig rig;
    rig.decoder.beforeSample = [&](int index)
    {
        if (index == 1)
            rig.gate.wait();
    };
    // Not a subclass: its callbacks would run while the subclass is already gone.
    auto transcoder = std::make_unique<KEPTranscoder>();
    ASSERT_TRUE(transcoder->setDecodePipe(&rig.decoder));
    ASSERT_TRUE(transcoder->setEncodePipe(&rig.encoder));
    ASSERT_TRUE(transcoder->transcode());
    ASSERT_TRUE(rig.journal.waitFor("write"));
    std::thread opener(
        [&]
        {
            std::this_thread::sleep_for(50ms);
            rig.gate.open();
        });
    transcoder.reset();
    opener.join();
    EXPECT_THAT(rig.journal.names(),
                ElementsAre("load", "start", "write", "write", "write", "flush", "finish"));
    EXPECT_EQ(rig.logger.count(L"Calling transcoder destructor"), 1);
}

TEST(KEPTranscoder, LetsTheHostUnlinkOrDeleteItFromCbDone)
{
    class SelfUnlinking : public TestTranscoder
    {
    public:
        using TestTranscoder::TestTranscoder;
        bool deleteItself = false;
        std::atomic<bool> unlinked{false};

    protected:
        void cbDone() override
        {
            unlinked = unlink();
            const bool deleting = deleteItself;
            TestTranscoder::cbDone();
            if (deleting)
                delete this;
        }
    };
    for (const bool deleteItself : {false, true})
    {
        SCOPED_TRACE(deleteItself ? "delete" : "unlink");
        Rig rig;
        auto* transcoder = new SelfUnlinking(rig.journal);
        transcoder->deleteItself = deleteItself;
        ASSERT_TRUE(transcoder->setDecodePipe(&rig.decoder));
        ASSERT_TRUE(transcoder->setEncodePipe(&rig.encoder));
        ASSERT_TRUE(transcoder->transcode());
        ASSERT_TRUE(rig.journal.waitFor("cbDone"));
        // The worker, now on its own, still writes its last line.
        for (int i = 0; i < 500 && rig.logger.count(L"exiting transcode thread.") == 0; ++i)
            std::this_thread::sleep_for(10ms);
        EXPECT_EQ(rig.logger.count(L"exiting transcode thread."), 1);
        if (!deleteItself)
        {
            EXPECT_TRUE(transcoder->unlinked);
            EXPECT_EQ(transcoder->getState(), KEPTranscoder::Unlinked);
            delete transcoder;
        }
        EXPECT_THAT(rig.journal.names(),
                    ElementsAre("load", "start", "write", "write", "write", "flush", "finish",
                                "encode.reset", "decode.reset", "cbDone"));
    }
}
