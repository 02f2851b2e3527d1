#include "KEP/Halvorn/KEPTranscoder.h"

#include "Transcoder/Samples/Allocation.h"
#include "Transcoder/KEPTranscoderImpl.h"

namespace KEP::Halvorn
{

KEPTranscoder::KEPTranscoder() : impl_(std::make_unique<Impl>(*this)) {}

KEPTranscoder::~KEPTranscoder() = default;

void KEPTranscoder::cbDone() {}
void KEPTranscoder::cbProgress(double) {}
void KEPTranscoder::cbError(int, const wchar_t*) {}
void KEPTranscoder::cbPaused() {}

bool KEPTranscoder::setDecodePipe(KEPDecodePipe* pipe)
{
    return impl_->setDecodePipe(pipe);
}

bool KEPTranscoder::setEncodePipe(KEPEncodePipe* pipe)
{
    return impl_->setEncodePipe(pipe);
}

bool KEPTranscoder::transcode()
{
    return impl_->transcode();
}

bool KEPTranscoder::pause()
{
    return impl_->pause();
}

bool KEPTranscoder::resume()
{
    return impl_->resume();
}

bool KEPTranscoder::stop()
{
    return impl_->stop();
}

bool KEPTranscoder::unlink()
{
    return impl_->unlink();
}

KEPTranscoder::State KEPTranscoder::getState() const
{
    return impl_->state();
}

bool KEPTranscoder::createAAFFile()
{
    return impl_->createAAFFile();
}

KEP_HALVORN_DEFINE_ALLOCATION(KEPTranscoder)

} // namespace KEP::Halvorn
