#pragma once

#include "DecodePipes/IDecodePipe.h"
#include "EncodePipes/AvidEncodePipe.h"
#include "EncodePipes/BaseEncodePipe.h"
#include "KEP/Halvorn/IKEPHalvornLogger.h"
#include "KEP/Halvorn/KEPModule.h"
#include "KEP/Halvorn/KEPTranscoder.h"
#include "TestSupport.h"
#include "Transcoder/ErrorMessages.h"
#include "Transcoder/Samples/Sample.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <fstream>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Halvorn::Test
{

using namespace std::chrono_literals;
using namespace KEP::Halvorn;

struct LogLine
{
    int level;
    std::wstring text;
    std::thread::id thread;
};

class RecordingLogger : public IKEPHalvornLogger
{
public:
    void log(int level, const wchar_t* text) override
    {
        const std::lock_guard lock(mutex_);
        lines_.push_back({level, text, std::this_thread::get_id()});
    }
    std::vector<LogLine> lines() const
    {
        const std::lock_guard lock(mutex_);
        return lines_;
    }
    std::vector<std::wstring> texts() const
    {
        std::vector<std::wstring> texts;
        for (const LogLine& line : lines())
            texts.push_back(line.text);
        return texts;
    }
    int count(const std::wstring& text) const
    {
        int n = 0;
        for (const LogLine& line : lines())
            n += line.text == text;
        return n;
    }
    void clear()
    {
        const std::lock_guard lock(mutex_);
        lines_.clear();
    }

private:
    mutable std::mutex mutex_;
    std::vector<LogLine> lines_;
};

// Installs a logger for the life of the scope. Declare it after the logger and before anything
// whose threads may still log.
class ScopedLogger
{
public:
    explicit ScopedLogger(IKEPHalvornLogger& logger)
    {
        KEPModule::instance().installLogger(&logger);
    }
    ~ScopedLogger() { KEPModule::instance().installLogger(nullptr); }
    ScopedLogger(const ScopedLogger&) = delete;
    ScopedLogger& operator=(const ScopedLogger&) = delete;
};

// Points the module at an existing dictionary file for the life of the scope: the smallest one,
// version 2.0 and nothing more.
class ScopedDictionary
{
public:
    ScopedDictionary() : path_(directory_.file(L"dictionary.bin"))
    {
        std::ofstream(directory_.path() / "dictionary.bin", std::ios::binary)
            << std::string("\x00\x02\x00\x00", 4);
        KEPModule::instance().mxfBinaryDictionary(path_.c_str());
    }
    ~ScopedDictionary() { KEPModule::instance().mxfBinaryDictionary(L""); }
    ScopedDictionary(const ScopedDictionary&) = delete;
    ScopedDictionary& operator=(const ScopedDictionary&) = delete;

    const std::wstring& path() const { return path_; }

private:
    TempDir directory_;
    std::wstring path_;
};

struct Event
{
    std::string name;
    int code = 0;
    std::wstring text;
    std::thread::id thread;
};

// What the pipes and the transcoder did, in order, from every thread.
class Journal
{
public:
    void add(std::string name, int code = 0, std::wstring text = {})
    {
        {
            const std::lock_guard lock(mutex_);
            events_.push_back({std::move(name), code, std::move(text), std::this_thread::get_id()});
        }
        changed_.notify_all();
    }
    std::vector<Event> events() const
    {
        const std::lock_guard lock(mutex_);
        return events_;
    }
    std::vector<std::string> names() const
    {
        std::vector<std::string> names;
        for (const Event& event : events())
            names.push_back(event.name);
        return names;
    }
    int count(const std::string& name) const
    {
        int n = 0;
        for (const Event& event : events())
            n += event.name == name;
        return n;
    }
    const Event* find(const std::string& name, std::vector<Event>& storage) const
    {
        storage = events();
        for (const Event& event : storage)
            if (event.name == name)
                return &event;
        return nullptr;
    }
    // False when `name` did not happen `times` times within `limit`.
    bool waitFor(const std::string& name, int times = 1, std::chrono::milliseconds limit = 5000ms)
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, limit,
                                 [&]
                                 {
                                     int n = 0;
                                     for (const Event& event : events_)
                                         n += event.name == name;
                                     return n >= times;
                                 });
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Event> events_;
};

// Holds a thread until opened.
class Gate
{
public:
    void open()
    {
        {
            const std::lock_guard lock(mutex_);
            open_ = true;
        }
        opened_.notify_all();
    }
    void wait()
    {
        std::unique_lock lock(mutex_);
        opened_.wait(lock, [this] { return open_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool open_ = false;
};

// Samples alive in the whole process: a test that ends with a job has it back at its start value.
inline std::atomic<int> liveSamples{0};

class TestSample : public RefCountMixIn<Sample>
{
public:
    explicit TestSample(std::uint32_t track) : track_(track) { ++liveSamples; }
    ~TestSample() override { --liveSamples; }

    std::uint8_t* data() override { return bytes_; }
    std::uint64_t size() const override { return sizeof bytes_; }
    std::uint32_t trackId() const { return track_; }

private:
    std::uint32_t track_;
    std::uint8_t bytes_[16] = {};
};

struct PipeFailure
{
    int code = 0;
    std::wstring detail;
};

// A decode pipe that makes `sampleCount` samples; every step is logged to the journal.
class TestDecodePipe : public DecodePipes::IDecodePipe
{
public:
    explicit TestDecodePipe(Journal& journal) : journal_(journal) {}

    bool inputSet = true;
    int sampleCount = 3;
    bool loadFails = false;
    PipeFailure failure;
    // Runs at the start of load and of every nextSample (with the sample's index); may throw or
    // wait.
    std::function<void()> onLoad;
    std::function<void(int)> beforeSample;
    std::wstring xml = L"clip.xml";
    int startOffset = 0;
    std::wstring firstFile = L"clip.mxf";
    DecodePipes::ClipMaterials materials;

    std::atomic<int> samplesRead{0};

    bool setInputFile(const wchar_t*, const wchar_t*, int) override { return true; }
    bool setInputUmid(const wchar_t*, const wchar_t*) override { return true; }
    void setInPoint(std::uint64_t, std::uint64_t) override {}
    void setDuration(std::uint64_t, std::uint64_t) override {}
    bool useInOutPoint() override { return true; }

    bool isInputSet() const override { return inputSet; }
    bool load(EssenceTrackInfoList&, std::shared_ptr<MXF::SDK::MetaMetadata::Dictionary>) override
    {
        journal_.add("load");
        if (onLoad)
            onLoad();
        if (!loadFails)
            return true;
        errorCode_ = failure.code;
        errorMessage_ = failure.detail;
        return false;
    }
    Sample* nextSample() override
    {
        const int index = samplesRead;
        if (beforeSample)
            beforeSample(index);
        if (index >= sampleCount)
            return nullptr;
        ++samplesRead;
        return new TestSample(static_cast<std::uint32_t>(index));
    }
    double progress() override { return 100.0 * samplesRead / sampleCount; }
    void reset() override { journal_.add("decode.reset"); }
    const wchar_t* xmlMetadataFile() const override { return xml.c_str(); }
    int clipStartOffset() const override { return startOffset; }
    const wchar_t* firstInputFile() const override { return firstFile.c_str(); }
    DecodePipes::ClipMaterials clipMaterials() const override { return materials; }

private:
    Journal& journal_;
};

// The encode behaviour shared by the plain and the Avid test pipes. Written samples are released
// at once, as the queue's consumer would.
template <typename Base>
class TestEncodeBehaviour : public Base
{
public:
    explicit TestEncodeBehaviour(Journal& journal) : journal_(journal) {}

    bool outputSet = true;
    bool startFails = false;
    PipeFailure failure;
    // Fails, as a wrapping thread would, once this many samples were written; -1 never.
    int failAfterWrites = -1;
    std::function<void(int)> onWrite;
    std::function<void()> onFlush;

    std::atomic<int> writes{0};
    std::atomic<bool> stopped{false};
    std::uint32_t startOffset = 0;

    bool isOutputSet() const override { return outputSet; }
    bool start(const EssenceTrackInfoList&,
               std::shared_ptr<MXF::SDK::MetaMetadata::Dictionary>) override
    {
        journal_.add("start");
        if (!startFails)
            return true;
        this->errorCode_ = failure.code;
        this->errorMessage_ = failure.detail;
        return false;
    }
    void write(Sample* sample) override
    {
        const int index = writes++;
        journal_.add("write", static_cast<int>(static_cast<TestSample*>(sample)->trackId()));
        sample->release();
        if (onWrite)
            onWrite(index);
        if (index + 1 == failAfterWrites)
        {
            this->errorCode_ = failure.code;
            this->errorMessage_ = failure.detail;
            failed_ = true;
        }
    }
    bool hasFailed() const override { return failed_; }
    void flush() override
    {
        journal_.add("flush");
        if (onFlush)
            onFlush();
    }
    void finish() override { journal_.add("finish"); }
    void stop() override
    {
        stopped = true;
        journal_.add("encode.stop");
    }
    void abort() override { journal_.add("abort"); }
    void reset() override { journal_.add("encode.reset"); }
    void setClipStartOffset(std::uint32_t offset) override { startOffset = offset; }

protected:
    Journal& journal_;

private:
    std::atomic<bool> failed_{false};
};

class PlainEncodeBase : public EncodePipes::BaseEncodePipe, public KEPEncodePipe
{
};

using TestEncodePipe = TestEncodeBehaviour<PlainEncodeBase>;

class TestAvidEncodePipe : public TestEncodeBehaviour<EncodePipes::AvidEncodePipe>
{
public:
    using TestEncodeBehaviour::TestEncodeBehaviour;

    bool createResult = true;
    std::wstring xmlGiven;
    std::wstring clipNameGiven;
    DecodePipes::ClipMaterials materialsGiven;

    bool setOutput(const wchar_t*, const wchar_t*) override { return true; }
    bool createAAFFile(const wchar_t* xmlPath, const EssenceTrackInfoList&, const wchar_t* clipName,
                       const std::map<std::uint64_t, std::wstring>& materials) override
    {
        journal_.add("createAAFFile");
        xmlGiven = xmlPath;
        clipNameGiven = clipName;
        materialsGiven = materials;
        return createResult;
    }
};

// Pipes of the public interface that this library did not make.
class ForeignDecodePipe : public KEPDecodePipe
{
public:
    bool setInputFile(const wchar_t*, const wchar_t*, int) override { return true; }
    bool setInputUmid(const wchar_t*, const wchar_t*) override { return true; }
    void setInPoint(std::uint64_t, std::uint64_t) override {}
    void setDuration(std::uint64_t, std::uint64_t) override {}
    bool useInOutPoint() override { return true; }
};

class ForeignEncodePipe : public KEPEncodePipe
{
};

// Puts every callback in the journal; cbProgress values are kept apart, as they come at any time.
class TestTranscoder : public KEPTranscoder
{
public:
    explicit TestTranscoder(Journal& journal) : journal_(journal) {}

    std::function<void(double)> onProgress;

    std::vector<double> progress() const
    {
        const std::lock_guard lock(mutex_);
        return progress_;
    }
    std::vector<std::thread::id> progressThreads() const
    {
        const std::lock_guard lock(mutex_);
        return progressThreads_;
    }
    bool waitForProgress(std::size_t reports, std::chrono::milliseconds limit = 5000ms)
    {
        std::unique_lock lock(mutex_);
        return progressed_.wait_for(lock, limit, [&] { return progress_.size() >= reports; });
    }

protected:
    void cbDone() override { journal_.add("cbDone", getState()); }
    void cbProgress(double percent) override
    {
        {
            const std::lock_guard lock(mutex_);
            progress_.push_back(percent);
            progressThreads_.push_back(std::this_thread::get_id());
        }
        progressed_.notify_all();
        if (onProgress)
            onProgress(percent);
    }
    void cbError(int code, const wchar_t* message) override
    {
        journal_.add("cbError", code, message);
    }
    void cbPaused() override { journal_.add("cbPaused"); }

private:
    Journal& journal_;
    mutable std::mutex mutex_;
    std::condition_variable progressed_;
    std::vector<double> progress_;
    std::vector<std::thread::id> progressThreads_;
};

} // namespace Halvorn::Test
