#pragma once

#include "KEP/Halvorn/KEPCodecPipe.h"
#include "KEP/Halvorn/KEPExport.h"

#include <memory>

namespace KEP::Halvorn
{

// Runs one job at a time: samples pumped from a decode pipe into an encode pipe on a thread of
// the library. A host subclasses it for the callbacks. The pipes are borrowed and must outlive
// the link. Every call may come from any thread; a refused call returns false and does nothing.
class KEP_HALVORN_API KEPTranscoder
{
protected:
    // Once per job, last, on the job's thread: after a clean end, after cbError, or after a stop.
    virtual void cbDone();
    // About every 2 seconds while a job runs, the first at once, on a thread of its own.
    virtual void cbProgress(double percent);
    // The job failed; cbDone follows. On the job's thread, or on the caller's in createAAFFile.
    virtual void cbError(int code, const wchar_t* message);
    // On resume, on the thread that called resume and under the transcoder's lock: it must not
    // call back into the transcoder.
    virtual void cbPaused();

public:
    enum State
    {
        Unlinked = 1,
        Ready = 2,
        Transcoding = 3,
        Paused = 4,
        Done = 5,
        Failed = 6
    };

    virtual ~KEPTranscoder();
    KEPTranscoder();
    KEPTranscoder(const KEPTranscoder&) = delete;
    KEPTranscoder& operator=(const KEPTranscoder&) = delete;

    // In Unlinked or Ready, with a pipe of this library: Ready once both are set.
    bool setDecodePipe(KEPDecodePipe* pipe);
    bool setEncodePipe(KEPEncodePipe* pipe);
    // In Ready: starts the job and returns before its first sample.
    bool transcode();
    // In Transcoding: the job waits at its next sample.
    bool pause();
    // In Paused; calls cbPaused.
    bool resume();
    // In Transcoding only (resume a paused job first). A stopped transcoder never runs again.
    bool stop();
    // In any state but Transcoding and Paused: resets and drops both pipes.
    bool unlink();
    State getState() const;
    // Writes the AAF link file of an Avid encode pipe, on the caller's thread, before transcode.
    bool createAAFFile();

    KEP_HALVORN_ALLOCATION

    class Impl;

private:
    std::unique_ptr<Impl> impl_;
};

} // namespace KEP::Halvorn
