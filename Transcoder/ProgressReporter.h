#pragma once

#include "KEP/Halvorn/KEPTranscoder.h"
#include "Utils/Thread.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace KEP::Halvorn
{

// The thread of a job that calls cbProgress at once and then every PERIOD until stopped.
class ProgressReporter : public Utils::Thread
{
public:
    static constexpr std::chrono::seconds PERIOD{2};

    explicit ProgressReporter(KEPTranscoder::Impl& transcoder);
    // Stops and joins.
    ~ProgressReporter() override;

    // Wakes the thread if it waits for its next report, and joins it.
    void stop();

private:
    void run() override;

    bool stopRequested_ = false;
    KEPTranscoder::Impl& transcoder_;
    std::mutex mutex_;
    std::condition_variable wake_;
};

} // namespace KEP::Halvorn
