#pragma once

#include "KEP/Halvorn/KEPTranscoder.h"

#include <mutex>
#include <sstream>

namespace KEP::Halvorn
{

// One reported error of a job. Building it puts the transcoder in Failed; when the last holder
// ends it calls cbError with the code and the text, then cbDone, with no lock held.
class TranscoderError
{
public:
    // `held` holds the transcoder's mutex: the state changes under it, and it is released here.
    // The text starts with the catalogue's text of `code`.
    TranscoderError(KEPTranscoder::Impl& transcoder, int code, std::unique_lock<std::mutex> held);
    TranscoderError(TranscoderError&& other) noexcept;
    TranscoderError(const TranscoderError&) = delete;
    TranscoderError& operator=(const TranscoderError&) = delete;
    TranscoderError& operator=(TranscoderError&&) = delete;
    ~TranscoderError();

    template <typename T>
    TranscoderError& operator<<(const T& value)
    {
        text_ << value;
        return *this;
    }

private:
    KEPTranscoder::Impl* transcoder_;
    int code_;
    std::wostringstream text_;
    bool armed_ = true;
};

} // namespace KEP::Halvorn
