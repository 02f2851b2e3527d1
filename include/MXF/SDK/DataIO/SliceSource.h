#pragma once

#include "MXF/SDK/DataIO/SliceChain.h"

namespace MXF::SDK::DataIO
{

// Essence as slices, never copied on the way.
class SliceSource
{
public:
    virtual ~SliceSource() = default;
    // At most `maxSize` bytes. The slice may be empty while eof() is false (nothing yet); empty
    // with eof() true is the end.
    virtual SlicePtr read(UInt64 maxSize) = 0;
    virtual UInt64 position() const = 0;
    virtual bool eof() const = 0;
    // Returns the number of bytes skipped.
    virtual UInt64 skip(UInt64 size) = 0;
};

class SliceSink
{
public:
    virtual ~SliceSink() = default;
    // Takes ownership of the slice.
    virtual void write(SlicePtr slice) = 0;
};

class ChainSink
{
public:
    virtual ~ChainSink() = default;
    // The chain stays with the caller, unchanged.
    virtual void write(SliceChain& chain) = 0;
};

} // namespace MXF::SDK::DataIO
