#pragma once

#include "KEP/Halvorn/KEPTranscoder.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>

namespace MXF::SDK::MetaMetadata
{
class Dictionary;
}

namespace KEP::Halvorn
{

namespace DecodePipes
{
class IDecodePipe;
}
namespace EncodePipes
{
class BaseEncodePipe;
}
namespace Utils
{
class ErrorMessageEntity;
}

// The transcoder's state machine and its job. One mutex guards the state and every public call;
// the worker takes it once per sample, for the pause test, and around the end of the pump.
class __attribute__((visibility("hidden"))) KEPTranscoder::Impl
{
public:
    explicit Impl(KEPTranscoder& owner);
    ~Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    bool setDecodePipe(KEPDecodePipe* pipe);
    bool setEncodePipe(KEPEncodePipe* pipe);
    bool transcode();
    bool pause();
    bool resume();
    bool stop();
    bool unlink();
    State state() const { return state_.load(); }
    bool createAAFFile();

    // For ProgressReporter and TranscoderError, which call back into the host.
    void reportProgress();
    // The caller holds the mutex.
    void setStateLocked(State state) { state_ = state; }
    void notifyError(int code, const wchar_t* message);
    void notifyDone();

private:
    std::unique_lock<std::mutex> lock() { return std::unique_lock(mutex_); }
    void work(DecodePipes::IDecodePipe& decoder, EncodePipes::BaseEncodePipe& encoder);
    bool runJob(DecodePipes::IDecodePipe& decoder, EncodePipes::BaseEncodePipe& encoder);
    void pump(DecodePipes::IDecodePipe& decoder, EncodePipes::BaseEncodePipe& encoder);
    void conclude(EncodePipes::BaseEncodePipe& encoder);
    // False when no dictionary file was set; throws when the file cannot be read or is not a
    // dictionary, and then tries again on the next call.
    bool loadDictionary();
    void setState(State state);
    // `held` holds the mutex; the error takes it over to change the state.
    void report(int code, std::wstring_view detail, std::unique_lock<std::mutex> held);
    void reportEntity(const Utils::ErrorMessageEntity& entity, std::unique_lock<std::mutex> held);
    static void joinThread(std::thread& thread);

    // Empty until the first job that needs it loads the file; kept for all later jobs.
    std::shared_ptr<MXF::SDK::MetaMetadata::Dictionary> dictionary_;
    bool dictionaryLoaded_ = false;
    KEPTranscoder& owner_;
    std::atomic<State> state_{Unlinked};
    DecodePipes::IDecodePipe* decodePipe_ = nullptr;
    EncodePipes::BaseEncodePipe* encodePipe_ = nullptr;
    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable resumeCondition_;
    std::atomic<bool> stopRequested_{false};
    bool paused_ = false;
    bool stoppable_ = true;
    // Read by the progress thread without the lock.
    std::atomic<double> progress_{0.0};
};

} // namespace KEP::Halvorn
