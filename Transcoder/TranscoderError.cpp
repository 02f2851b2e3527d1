#include "Transcoder/TranscoderError.h"

#include "Transcoder/ErrorMessages.h"
#include "Transcoder/KEPTranscoderImpl.h"

#include <utility>

namespace KEP::Halvorn
{

TranscoderError::TranscoderError(KEPTranscoder::Impl& transcoder, int code,
                                 std::unique_lock<std::mutex> held)
    : transcoder_(&transcoder), code_(code)
{
    transcoder.setStateLocked(KEPTranscoder::Failed);
    if (held.owns_lock())
        held.unlock();
    text_ << ErrorMessages::instance().text(code);
}

TranscoderError::TranscoderError(TranscoderError&& other) noexcept
    : transcoder_(other.transcoder_), code_(other.code_), text_(std::move(other.text_)),
      armed_(std::exchange(other.armed_, false))
{
}

TranscoderError::~TranscoderError()
{
    if (!armed_)
        return;
    // A callback that throws must not cost the host its cbDone. The transcoder is not touched
    // after cbDone: the host may delete it there.
    try
    {
        transcoder_->notifyError(code_, text_.str().c_str());
    }
    catch (...)
    {
    }
    try
    {
        transcoder_->notifyDone();
    }
    catch (...)
    {
    }
}

} // namespace KEP::Halvorn
