#pragma once

#include "KEP/Halvorn/KEPExport.h"

namespace KEP::Halvorn
{

// The host's log sink. Levels: 0 trace, 1 note, 3 error. `log` is called from the library's
// threads as well as the host's, so an implementation must be thread-safe. Lines are plain text.
class KEP_HALVORN_API IKEPHalvornLogger
{
public:
    IKEPHalvornLogger() = default;
    IKEPHalvornLogger(const IKEPHalvornLogger&) = default;
    IKEPHalvornLogger& operator=(const IKEPHalvornLogger&) = default;
    virtual ~IKEPHalvornLogger();

    virtual void log(int level, const wchar_t* text) = 0;

    KEP_HALVORN_ALLOCATION
};

} // namespace KEP::Halvorn
