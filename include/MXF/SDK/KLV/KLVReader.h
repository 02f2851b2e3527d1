#pragma once

#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/Platform/Types.h"

#include <memory>

namespace MXF::SDK::KLV
{

// Walks a DataSource item by item, finding keys by a run-in search so that it can pick up again
// after damaged bytes. A handle: copies share one implementation. The source is borrowed and
// must outlive the reader and every item it made.
//
// Each thread gets its own key look-ahead, so a readKLV that follows a readKey on the same thread
// with the source untouched in between reuses that key. The source itself is shared and has one
// position: threads must not read through it at the same time.
class KLVReader
{
public:
    explicit KLVReader(DataIO::DataSource& source);

    // Reads the next item and leaves the source at its first value byte. `skippedOut` counts the
    // bytes passed over to find the key (kept up to date during the search, so it is meaningful
    // after an exception too); at most `maxSkip` are passed over, 0 meaning that a key must start
    // here. A key starts with 06 0E 2B 34 and a fifth byte of 0, 1, 2, 3 or 5, or is one of Avid's
    // two private keys, whole (isAvidRootObject, isAvidObjectDirectory).
    // Throws NotEnoughData "Not enough data" when the source ends within the search, the key or
    // the length; KeyNotFound when more than `maxSkip` bytes would be passed; InvalidFormat
    // "Invalid BER size: 0x80" (or 0xff) for a bad first length byte. The source then stands
    // where the failure was found.
    std::unique_ptr<KLVItem> readKLV(Platform::UInt64& skippedOut, Platform::UInt64 maxSkip);

    // The same search, but only the key: the source is left just after it.
    Key readKey(Platform::UInt64& skippedOut, Platform::UInt64 maxSkip);

private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

} // namespace MXF::SDK::KLV
