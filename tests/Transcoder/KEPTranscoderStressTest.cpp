// A thousand jobs, each hit by pause, resume, stop and unlink from two host threads at random
// while it runs. Every job must end once, in a state it may end in, within 10 seconds.
#include "KEP/Halvorn/KEPTranscoder.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "TranscoderTestSupport.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <random>

using namespace Halvorn::Test;

namespace
{

constexpr int JOBS = 1000;
constexpr auto JOB_LIMIT = 10s;

enum class Fault
{
    None,
    WriteFails,
    LoadFails,
    ThrowsInPump
};

// Counts callbacks; any callback after cbDone is a fault of the transcoder.
class StressTranscoder : public KEPTranscoder
{
public:
    std::atomic<int> done{0};
    std::atomic<int> errors{0};
    std::atomic<int> errorCode{0};
    std::atomic<int> paused{0};
    std::atomic<int> lateCallbacks{0};
    std::atomic<int> stateAtDone{0};

    bool waitDone()
    {
        std::unique_lock lock(mutex_);
        return doneChanged_.wait_for(lock, JOB_LIMIT, [this] { return done > 0; });
    }

protected:
    void cbDone() override
    {
        noteLate();
        stateAtDone = getState();
        // Notified under the lock: once the waiter sees `done`, nothing here touches this object.
        const std::lock_guard lock(mutex_);
        ++done;
        doneChanged_.notify_all();
    }
    void cbError(int code, const wchar_t*) override
    {
        noteLate();
        ++errors;
        errorCode = code;
    }
    void cbPaused() override
    {
        noteLate();
        ++paused;
    }
    void cbProgress(double) override { noteLate(); }

private:
    void noteLate()
    {
        if (done > 0)
            ++lateCallbacks;
    }

    std::mutex mutex_;
    std::condition_variable doneChanged_;
};

struct Job
{
    explicit Job(std::mt19937& random)
    {
        decoder.sampleCount = std::uniform_int_distribution(0, 60)(random);
        const int kind = std::uniform_int_distribution(0, 9)(random);
        const int at = std::uniform_int_distribution(0, 60)(random);
        fault = kind < 7    ? Fault::None
                : kind == 7 ? Fault::WriteFails
                : kind == 8 ? Fault::LoadFails
                            : Fault::ThrowsInPump;
        switch (fault)
        {
        case Fault::None:
            break;
        case Fault::WriteFails:
            encoder.failAfterWrites = at + 1;
            encoder.failure = {ERROR_WRAPPING, L""};
            triggers = at + 1 <= decoder.sampleCount;
            break;
        case Fault::LoadFails:
            decoder.loadFails = true;
            decoder.failure = {ERROR_NO_ESSENCE_TRACKS, L""};
            triggers = true;
            break;
        case Fault::ThrowsInPump:
            decoder.beforeSample = [at](int index)
            {
                if (index == at)
                    MXF_SDK_THROW(MXF::SDK::Exceptions::InvalidFormat, L"bad essence");
            };
            triggers = at <= decoder.sampleCount;
            break;
        }
        // Give the host threads room between samples.
        decoder.onLoad = [] { std::this_thread::yield(); };
        encoder.onWrite = [](int) { std::this_thread::yield(); };
    }

    int expectedCode() const
    {
        switch (fault)
        {
        case Fault::WriteFails:
            return ERROR_WRAPPING;
        case Fault::LoadFails:
            return ERROR_NO_ESSENCE_TRACKS;
        case Fault::ThrowsInPump:
            return ERROR_ANALYZING_INPUT;
        case Fault::None:
            break;
        }
        return 0;
    }

    Journal journal;
    TestDecodePipe decoder{journal};
    TestEncodePipe encoder{journal};
    Fault fault = Fault::None;
    bool triggers = false;
    std::atomic<int> resumes{0};
    std::atomic<int> stops{0};
    StressTranscoder transcoder;
};

// Two host threads that call into the current job at random until told to leave it.
class Chaos
{
public:
    explicit Chaos(std::uint32_t seed)
    {
        for (std::uint32_t i = 0; i < threads_.size(); ++i)
            threads_[i] = std::thread([this, seed, i] { loop(seed + i); });
    }
    ~Chaos()
    {
        {
            const std::lock_guard lock(mutex_);
            quit_ = true;
        }
        changed_.notify_all();
        for (std::thread& thread : threads_)
            thread.join();
    }

    void attach(Job& job)
    {
        {
            const std::lock_guard lock(mutex_);
            job_ = &job;
        }
        changed_.notify_all();
    }
    // Returns once neither thread touches the job any more.
    void detach()
    {
        std::unique_lock lock(mutex_);
        job_ = nullptr;
        changed_.wait(lock, [this] { return busy_ == 0; });
    }

private:
    void loop(std::uint32_t seed)
    {
        std::mt19937 random(seed);
        std::uniform_int_distribution<int> action(0, 99);
        std::uniform_int_distribution<int> pauseMicroseconds(0, 30);
        std::unique_lock lock(mutex_);
        for (;;)
        {
            changed_.wait(lock, [this] { return quit_ || job_ != nullptr; });
            if (quit_)
                return;
            Job& job = *job_;
            ++busy_;
            lock.unlock();
            act(job, action(random));
            std::this_thread::sleep_for(std::chrono::microseconds(pauseMicroseconds(random)));
            lock.lock();
            if (--busy_ == 0)
                changed_.notify_all();
        }
    }

    static void act(Job& job, int roll)
    {
        KEPTranscoder& transcoder = job.transcoder;
        if (roll < 30)
            transcoder.pause();
        else if (roll < 65)
            job.resumes += transcoder.resume();
        else if (roll < 68)
            job.stops += transcoder.stop();
        else if (roll < 80)
            transcoder.unlink();
        else
            (void)transcoder.getState();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    Job* job_ = nullptr;
    int busy_ = 0;
    bool quit_ = false;
    std::array<std::thread, 2> threads_;
};

bool endState(int state)
{
    return state == KEPTranscoder::Done || state == KEPTranscoder::Failed ||
           state == KEPTranscoder::Unlinked;
}

} // namespace

TEST(KEPTranscoderStress, EveryJobEndsOnceInAValidStateWhateverTheHostThreadsDo)
{
    ScopedDictionary dictionary;
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    Chaos chaos(seed);
    int done = 0, failed = 0, stopped = 0, resumed = 0;

    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < JOBS; ++i)
    {
        SCOPED_TRACE("job " + std::to_string(i));
        {
            Job job(random);
            ASSERT_TRUE(job.transcoder.setDecodePipe(&job.decoder));
            ASSERT_TRUE(job.transcoder.setEncodePipe(&job.encoder));
            ASSERT_TRUE(job.transcoder.transcode());
            chaos.attach(job);
            if (!job.transcoder.waitDone())
            {
                // A hung job cannot be cleaned up: its transcoder would wait for it forever.
                ADD_FAILURE() << "job " << i << " did not end within 10 seconds";
                std::fflush(stdout);
                std::_Exit(1);
            }
            chaos.detach();

            StressTranscoder& t = job.transcoder;
            resumed += job.resumes;
            EXPECT_EQ(t.done, 1);
            EXPECT_EQ(t.lateCallbacks, 0);
            EXPECT_EQ(t.paused, job.resumes);
            EXPECT_TRUE(endState(t.getState())) << t.getState();
            EXPECT_TRUE(endState(t.stateAtDone)) << t.stateAtDone;
            EXPECT_LE(t.errors, 1);
            EXPECT_LE(job.journal.count("finish"), 1);
            EXPECT_LE(job.journal.count("abort"), 1);
            if (t.errors == 1)
            {
                EXPECT_TRUE(job.triggers);
                EXPECT_EQ(t.errorCode, job.expectedCode());
                EXPECT_NE(t.stateAtDone, KEPTranscoder::Done);
                ++failed;
            }
            else if (job.stops > 0)
            {
                EXPECT_NE(job.fault, Fault::LoadFails);
                EXPECT_NE(t.stateAtDone, KEPTranscoder::Done);
                EXPECT_EQ(job.journal.count("finish"), 0);
                EXPECT_EQ(job.journal.count("abort"), 1);
                ++stopped;
            }
            else
            {
                EXPECT_FALSE(job.triggers);
                EXPECT_NE(t.stateAtDone, KEPTranscoder::Failed);
                EXPECT_EQ(job.journal.count("finish"), 1);
                EXPECT_EQ(job.journal.count("abort"), 0);
                ++done;
            }
        }
        ASSERT_EQ(liveSamples, 0);
        if (HasFailure())
            break;
    }
    const auto seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::cout << JOBS << " jobs in " << seconds << " s: " << done << " done, " << failed
              << " failed, " << stopped << " stopped; " << resumed << " pauses resumed\n";
}
