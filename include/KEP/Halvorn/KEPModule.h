#pragma once

#include "KEP/Halvorn/KEPCodecPipe.h"
#include "KEP/Halvorn/KEPExport.h"

namespace KEP::Halvorn
{

class IKEPHalvornLogger;

// The library's front door, one for the process. It is never destroyed by the library.
class KEP_HALVORN_API KEPModule
{
public:
    // Thread-safe; the first call makes the module.
    static KEPModule& instance();
    virtual ~KEPModule();
    KEPModule(const KEPModule&) = delete;
    KEPModule& operator=(const KEPModule&) = delete;

    // A new pipe owned by the caller, or null for an unknown type or when it cannot be made.
    KEPCodecPipe* newCodecPipe(KEPCodecPipeType type);

    // The binary dictionary file that every later transcode loads; the path is copied.
    void mxfBinaryDictionary(const wchar_t* path);
    // Empty, never null, when none was set. The text stays valid for the life of the process.
    const wchar_t* mxfBinaryDictionary() const;

    // Overlays the English error texts with those of an XML language file. Load it before any job.
    bool setErrorCodesFile(const wchar_t* path);

    // Not owned; null goes back to discarding. The logger must outlive all work of the library.
    void installLogger(IKEPHalvornLogger* logger);
    // Null while no logger of the host is installed.
    IKEPHalvornLogger* getLogger() const;

    KEP_HALVORN_ALLOCATION

private:
    KEPModule();
};

} // namespace KEP::Halvorn
