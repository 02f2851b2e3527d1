#include "Transcoder/KEPTranscoderImpl.h"

#include "DecodePipes/IDecodePipe.h"
#include "EncodePipes/AvidEncodePipe.h"
#include "EncodePipes/BaseEncodePipe.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "Transcoder/DictionaryFile.h"
#include "Transcoder/ErrorMessages.h"
#include "Transcoder/Samples/EssenceTrackInfo.h"
#include "Transcoder/LoggerHolder.h"
#include "Transcoder/ProgressReporter.h"
#include "Transcoder/TranscoderError.h"

#include <string>
#include <system_error>

namespace KEP::Halvorn
{

using DecodePipes::IDecodePipe;
using EncodePipes::BaseEncodePipe;

KEPTranscoder::Impl::Impl(KEPTranscoder& owner)
    : dictionary_(std::make_shared<MXF::SDK::MetaMetadata::Dictionary>()), owner_(owner)
{
}

KEPTranscoder::Impl::~Impl()
{
    logEntry(LOG_TRACE, L"Calling transcoder destructor");
    joinThread(thread_);
}

bool KEPTranscoder::Impl::setDecodePipe(KEPDecodePipe* pipe)
{
    const std::lock_guard lock(mutex_);
    if (pipe == nullptr || (state_ != Unlinked && state_ != Ready))
        return false;
    // A pipe of another library is taken and leaves the transcoder unable to run.
    decodePipe_ = dynamic_cast<IDecodePipe*>(pipe);
    state_ = decodePipe_ != nullptr && encodePipe_ != nullptr ? Ready : Unlinked;
    return true;
}

bool KEPTranscoder::Impl::setEncodePipe(KEPEncodePipe* pipe)
{
    const std::lock_guard lock(mutex_);
    if (pipe == nullptr || (state_ != Unlinked && state_ != Ready))
        return false;
    encodePipe_ = dynamic_cast<BaseEncodePipe*>(pipe);
    state_ = decodePipe_ != nullptr && encodePipe_ != nullptr ? Ready : Unlinked;
    return true;
}

bool KEPTranscoder::Impl::transcode()
{
    logEntry(LOG_TRACE, L"Before locking mutex.");
    const std::lock_guard lock(mutex_);
    logEntry(LOG_TRACE, L"At beggining of: transcode ()");
    if (state_ != Ready)
        return false;
    state_ = Transcoding;
    // A pause accepted after the end of the last pump must not hold this one.
    paused_ = false;
    logEntry(LOG_TRACE, L"Before launching transcoder thread");
    logEntry(LOG_TRACE, L"Before bind");
    try
    {
        std::thread worker(&Impl::work, this, std::ref(*decodePipe_), std::ref(*encodePipe_));
        // The previous worker was joined by unlink; this only makes sure.
        joinThread(thread_);
        thread_ = std::move(worker);
    }
    catch (const std::system_error&)
    {
        state_ = Ready;
        return false;
    }
    logEntry(LOG_NOTE, L"After launching transcoder thread");
    return true;
}

bool KEPTranscoder::Impl::pause()
{
    const std::lock_guard lock(mutex_);
    if (state_ != Transcoding)
        return false;
    paused_ = true;
    state_ = Paused;
    resumeCondition_.notify_all();
    return true;
}

bool KEPTranscoder::Impl::resume()
{
    const std::lock_guard lock(mutex_);
    if (state_ != Paused)
        return false;
    paused_ = false;
    state_ = Transcoding;
    resumeCondition_.notify_all();
    owner_.cbPaused();
    return true;
}

bool KEPTranscoder::Impl::stop()
{
    const std::lock_guard lock(mutex_);
    if (state_ != Transcoding || !stoppable_)
        return false;
    stopRequested_ = true;
    encodePipe_->stop();
    return true;
}

bool KEPTranscoder::Impl::unlink()
{
    std::thread finished;
    {
        const std::lock_guard lock(mutex_);
        if (state_ == Transcoding || state_ == Paused)
            return false;
        if (encodePipe_ != nullptr)
            encodePipe_->reset();
        encodePipe_ = nullptr;
        if (decodePipe_ != nullptr)
            decodePipe_->reset();
        decodePipe_ = nullptr;
        progress_ = 0.0;
        stoppable_ = true;
        state_ = Unlinked;
        finished = std::move(thread_);
    }
    // Outside the lock, so that a worker still in cbDone may call into the transcoder.
    joinThread(finished);
    return true;
}

bool KEPTranscoder::Impl::createAAFFile()
{
    std::unique_lock lock(mutex_);
    auto* const avid = dynamic_cast<EncodePipes::AvidEncodePipe*>(encodePipe_);
    if (avid == nullptr)
        return false;
    const wchar_t* const xml = decodePipe_ != nullptr ? decodePipe_->xmlMetadataFile() : nullptr;
    if (state_ != Ready)
    {
        logEntry(LOG_ERROR, L"Unable to create AAF file because DecodePipe and/or EncodePipe are "
                            L"not set.");
        return false;
    }
    if (xml == nullptr || *xml == L'\0')
    {
        logEntry(LOG_ERROR, L"Unable to create AAF xmlMetadataFile is not set.");
        return false;
    }
    try
    {
        if (!loadDictionary())
        {
            report(ERROR_NO_DICTIONARY_FILE, {}, std::move(lock));
            return false;
        }
        EssenceTrackInfoList tracks;
        if (!decodePipe_->load(tracks, dictionary_))
        {
            reportEntity(*decodePipe_, std::move(lock));
            return false;
        }
        avid->setClipStartOffset(static_cast<std::uint32_t>(decodePipe_->clipStartOffset()));
        if (avid->createAAFFile(xml, tracks, decodePipe_->firstInputFile(),
                                decodePipe_->clipMaterials()))
            return true;
        avid->abort();
        return false;
    }
    catch (const MXF::SDK::Exceptions::BaseException& e)
    {
        avid->abort();
        report(ERROR_ANALYZING_INPUT, L"-> " + e.message(), std::move(lock));
    }
    catch (...)
    {
        avid->abort();
        report(ERROR_TRANSCODING, {}, std::move(lock));
    }
    return false;
}

void KEPTranscoder::Impl::reportProgress()
{
    owner_.cbProgress(progress_.load(std::memory_order_relaxed));
}

void KEPTranscoder::Impl::notifyError(int code, const wchar_t* message)
{
    owner_.cbError(code, message);
}

void KEPTranscoder::Impl::notifyDone()
{
    owner_.cbDone();
}

// Nothing here touches the transcoder after its last callback: a host may unlink or delete it
// from cbDone.
void KEPTranscoder::Impl::work(IDecodePipe& decoder, BaseEncodePipe& encoder)
{
    logEntry(LOG_TRACE, L"Inside transcode thread.");
    try
    {
        if (!runJob(decoder, encoder))
            return;
    }
    catch (const MXF::SDK::Exceptions::BaseException& e)
    {
        encoder.abort();
        report(ERROR_ANALYZING_INPUT, L"-> " + e.message(), lock());
        return;
    }
    catch (...)
    {
        encoder.abort();
        report(ERROR_TRANSCODING, {}, lock());
        return;
    }
    try
    {
        conclude(encoder);
    }
    catch (...)
    {
    }
    logEntry(LOG_TRACE, L"exiting transcode thread.");
}

bool KEPTranscoder::Impl::runJob(IDecodePipe& decoder, BaseEncodePipe& encoder)
{
    if (!decoder.isInputSet())
    {
        report(ERROR_INPUT_NOT_SET, {}, lock());
        return false;
    }
    if (!encoder.isOutputSet())
    {
        report(ERROR_OUTPUT_NOT_SET, {}, lock());
        return false;
    }
    if (!loadDictionary())
    {
        report(ERROR_NO_DICTIONARY_FILE, {}, lock());
        return false;
    }
    EssenceTrackInfoList tracks;
    if (!decoder.load(tracks, dictionary_))
    {
        reportEntity(decoder, lock());
        return false;
    }
    if (!encoder.start(tracks, dictionary_))
    {
        reportEntity(encoder, lock());
        return false;
    }
    ProgressReporter reporter(*this);
    reporter.start();
    pump(decoder, encoder);
    encoder.flush();
    {
        const std::lock_guard lock(mutex_);
        stoppable_ = false;
        // Under the lock, so that neither stop nor unlink can overlap the final move of the files.
        if (!stopRequested_)
            encoder.finish();
    }
    reporter.stop();
    tracks.clear();
    return true;
}

void KEPTranscoder::Impl::pump(IDecodePipe& decoder, BaseEncodePipe& encoder)
{
    while (!stopRequested_)
    {
        {
            std::unique_lock lock(mutex_);
            resumeCondition_.wait(lock, [this] { return !paused_; });
        }
        Sample* const sample = decoder.nextSample();
        if (sample == nullptr)
        {
            progress_ = 100.0;
            return;
        }
        if (encoder.hasFailed())
        {
            sample->release();
            return;
        }
        encoder.write(sample);
        progress_ = decoder.progress();
    }
}

void KEPTranscoder::Impl::conclude(BaseEncodePipe& encoder)
{
    const bool failed = encoder.hasFailed();
    if (stopRequested_)
    {
        logEntry(LOG_NOTE, L"Process stopped by request of the API.");
        encoder.abort();
        setState(Failed);
        owner_.cbDone();
    }
    else if (failed)
    {
        encoder.abort();
        reportEntity(encoder, lock());
    }
    else
    {
        setState(Done);
        owner_.cbDone();
    }
}

bool KEPTranscoder::Impl::loadDictionary()
{
    if (dictionaryLoaded_)
        return true;
    const std::wstring path = currentDictionaryFile();
    if (path.empty())
        return false;
    // A file that fails half-way leaves what it gave in the dictionary; a later load of a good
    // file replaces every entry of the same label.
    MXF::SDK::MetaMetadata::BinaryLoader::load(path, *dictionary_);
    dictionaryLoaded_ = true;
    return true;
}

// The pump's end races host calls such as pause, so even here the state changes under the lock.
void KEPTranscoder::Impl::setState(State state)
{
    const std::lock_guard lock(mutex_);
    state_ = state;
}

void KEPTranscoder::Impl::report(int code, std::wstring_view detail,
                                 std::unique_lock<std::mutex> held)
{
    TranscoderError(*this, code, std::move(held)) << detail;
}

void KEPTranscoder::Impl::reportEntity(const Utils::ErrorMessageEntity& entity,
                                       std::unique_lock<std::mutex> held)
{
    // Read before the state changes: from then on the host may unlink and reset the pipe.
    const int code = entity.getErrorCode();
    const std::wstring detail = entity.getErrorMessage();
    report(code, detail, std::move(held));
}

void KEPTranscoder::Impl::joinThread(std::thread& thread)
{
    if (!thread.joinable())
        return;
    // A host that unlinks or deletes the transcoder from cbDone does so on the worker itself.
    if (thread.get_id() == std::this_thread::get_id())
        thread.detach();
    else
        thread.join();
}

} // namespace KEP::Halvorn
