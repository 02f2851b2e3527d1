#pragma once

// What every fuzz target repeats: the check that stops the run, the step whose faults are the
// toolkit's exceptions, and the dictionary of data/ loaded once.
#include "MXF/SDK/Exceptions/Exceptions.h"

#include <cstdlib>

#ifdef HALVORN_DICTIONARY_FILE
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Platform/Platform.h"

#include <memory>
#endif

namespace Halvorn::Fuzz
{

// A broken promise of the code under test: the fuzzer reports the input.
inline void require(bool condition)
{
    if (!condition)
        std::abort();
}

// Runs a step that hostile bytes may refuse with one of the toolkit's exceptions.
template <typename Step>
void guarded(Step&& step)
{
    try
    {
        step();
    }
    catch (const MXF::SDK::Exceptions::BaseException&)
    {
    }
}

#ifdef HALVORN_DICTIONARY_FILE
inline std::shared_ptr<const MXF::SDK::MetaMetadata::Dictionary> dictionary()
{
    static const std::shared_ptr<const MXF::SDK::MetaMetadata::Dictionary> loaded = []
    {
        auto made = std::make_shared<MXF::SDK::MetaMetadata::Dictionary>();
        MXF::SDK::MetaMetadata::BinaryLoader::load(
            MXF::SDK::Platform::fromUtf8(HALVORN_DICTIONARY_FILE), *made);
        return made;
    }();
    return loaded;
}
#endif

} // namespace Halvorn::Fuzz
