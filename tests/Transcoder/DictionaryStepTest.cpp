// The transcoder's dictionary step with real files: the compiled dictionary of data/, and files
// that are not dictionaries.
#include "KEP/Halvorn/KEPTranscoder.h"
#include "MXF/SDK/KLV/KLVTestSupport.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Platform/Platform.h"
#include "TranscoderTestSupport.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Halvorn::Test;
using MXF::SDK::MetaMetadata::Dictionary;
using ::testing::ElementsAre;

namespace
{

// Keeps the dictionary that each load was given.
class DictionaryKeepingDecodePipe : public TestDecodePipe
{
public:
    using TestDecodePipe::TestDecodePipe;

    bool load(EssenceTrackInfoList& tracks, std::shared_ptr<Dictionary> dictionary) override
    {
        {
            const std::lock_guard lock(mutex_);
            given_.push_back(dictionary);
        }
        return TestDecodePipe::load(tracks, dictionary);
    }
    std::vector<std::shared_ptr<Dictionary>> given() const
    {
        const std::lock_guard lock(mutex_);
        return given_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<Dictionary>> given_;
};

// The module's dictionary path for the life of the scope.
class DictionaryPath
{
public:
    explicit DictionaryPath(const std::wstring& path)
    {
        KEPModule::instance().mxfBinaryDictionary(path.c_str());
    }
    ~DictionaryPath() { KEPModule::instance().mxfBinaryDictionary(L""); }
    DictionaryPath(const DictionaryPath&) = delete;
    DictionaryPath& operator=(const DictionaryPath&) = delete;
};

struct Job
{
    // Links both pipes, runs one job to its cbDone and unlinks.
    void run()
    {
        ASSERT_TRUE(transcoder.setDecodePipe(&decoder));
        ASSERT_TRUE(transcoder.setEncodePipe(&encoder));
        const int done = journal.count("cbDone");
        ASSERT_TRUE(transcoder.transcode());
        ASSERT_TRUE(journal.waitFor("cbDone", done + 1));
        state = transcoder.getState();
        ASSERT_TRUE(transcoder.unlink());
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
    Journal journal;
    DictionaryKeepingDecodePipe decoder{journal};
    TestEncodePipe encoder{journal};
    TestTranscoder transcoder{journal};
    KEPTranscoder::State state = KEPTranscoder::Unlinked;
};

std::wstring compiledDictionary()
{
    return MXF::SDK::Platform::fromUtf8(HALVORN_DICTIONARY_FILE);
}

// Knows the Preface and the static tag of InstanceUID.
bool knowsThePreface(const Dictionary& dictionary)
{
    const MXF::SDK::Types::UniversalLabel preface(
        hexBytes("06 0e 2b 34 02 53 01 01 0d 01 01 01 01 01 2f 00").data());
    const MXF::SDK::Types::UniversalLabel* instanceUID =
        dictionary.universalLabel(MXF::SDK::Types::LocalTag(0x3c0a));
    return dictionary.metaMetadataSet(preface) != nullptr && instanceUID != nullptr &&
           *instanceUID == MXF::SDK::Types::UniversalLabel(
                               hexBytes("06 0e 2b 34 01 01 01 01 01 01 15 02 00 00 00 00").data());
}

} // namespace

TEST(TranscoderDictionaryStep, LoadsTheCompiledDictionaryOnceForAllJobs)
{
    Job job;
    {
        const DictionaryPath path(compiledDictionary());
        job.run();
    }
    EXPECT_EQ(job.state, KEPTranscoder::Done);
    EXPECT_TRUE(job.errors().empty());
    const std::vector<std::shared_ptr<Dictionary>> first = job.decoder.given();
    ASSERT_EQ(first.size(), 1u);
    ASSERT_NE(first[0], nullptr);
    EXPECT_TRUE(knowsThePreface(*first[0]));

    // The module's path no longer matters to this transcoder.
    TempDir directory;
    const DictionaryPath missing(directory.file(L"missing.bin"));
    job.run();
    EXPECT_EQ(job.state, KEPTranscoder::Done);
    EXPECT_TRUE(job.errors().empty());
    const std::vector<std::shared_ptr<Dictionary>> both = job.decoder.given();
    ASSERT_EQ(both.size(), 2u);
    EXPECT_EQ(both[1], first[0]);
}

TEST(TranscoderDictionaryStep, ReportsAFileThatIsNoDictionaryAsCode9AndReadsAGoodOneLater)
{
    TempDir directory;
    const std::filesystem::path file = directory.path() / "dictionary.bin";
    const Bytes compiled = fileBytes(HALVORN_DICTIONARY_FILE);
    ASSERT_GT(compiled.size(), 1000u);
    const auto write = [&](const Bytes& bytes)
    {
        std::ofstream(file, std::ios::binary | std::ios::trunc)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    };
    const DictionaryPath path(directory.file(L"dictionary.bin"));

    struct Broken
    {
        Bytes bytes;
        std::wstring detail;
    };
    const Broken broken[] = {
        {hexBytes("00 01 00 00"), L"Invalid dictionary version number"},
        {Bytes(compiled.begin(), compiled.end() - 1), L"Not enough data"},
        {hexBytes("00 02 00 00") + hexBytes("06 0e 2b 34 00 00 00 00 00 00 00 00 00 00 00 08 00"),
         L"UnKnown Set"},
    };
    Job job;
    int jobs = 0;
    for (const Broken& fault : broken)
    {
        write(fault.bytes);
        job.run();
        ++jobs;
        EXPECT_EQ(job.state, KEPTranscoder::Failed);
        const std::vector<Event> errors = job.errors();
        ASSERT_EQ(errors.size(), std::size_t(jobs));
        EXPECT_EQ(errors.back().code, ERROR_ANALYZING_INPUT);
        EXPECT_EQ(errors.back().text, L"Error while analyzing input file.-> " + fault.detail);
    }
    // Nothing was loaded from the clip and nothing started, but the encode pipe was told to abort.
    EXPECT_EQ(job.journal.count("load"), 0);
    EXPECT_EQ(job.journal.count("start"), 0);
    EXPECT_EQ(job.journal.count("abort"), jobs);

    write(compiled);
    job.run();
    EXPECT_EQ(job.state, KEPTranscoder::Done);
    EXPECT_EQ(job.errors().size(), std::size_t(jobs));
    const std::vector<std::shared_ptr<Dictionary>> given = job.decoder.given();
    ASSERT_EQ(given.size(), 1u);
    EXPECT_TRUE(knowsThePreface(*given[0]));
}
