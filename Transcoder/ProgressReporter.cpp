#include "Transcoder/ProgressReporter.h"

#include "Transcoder/KEPTranscoderImpl.h"

namespace KEP::Halvorn
{

ProgressReporter::ProgressReporter(KEPTranscoder::Impl& transcoder) : transcoder_(transcoder) {}

ProgressReporter::~ProgressReporter()
{
    stop();
}

void ProgressReporter::stop()
{
    {
        const std::lock_guard lock(mutex_);
        stopRequested_ = true;
    }
    wake_.notify_all();
    join();
}

void ProgressReporter::run()
{
    std::unique_lock lock(mutex_);
    while (!stopRequested_)
    {
        lock.unlock();
        // A host whose cbProgress throws gets no more reports; the job goes on.
        try
        {
            transcoder_.reportProgress();
        }
        catch (...)
        {
            return;
        }
        lock.lock();
        const auto next = std::chrono::steady_clock::now() + PERIOD;
        wake_.wait_until(lock, next, [this] { return stopRequested_; });
    }
}

} // namespace KEP::Halvorn
