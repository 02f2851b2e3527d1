#pragma once

#include "MXF/SDK/DataIO/SliceSource.h"

namespace MXF::SDK::DataIO
{

// A FIFO of slices: written at one end, read at the other. No locks: one thread at a time.
class BufferSliceSource : public SliceSource, public SliceSink
{
public:
    BufferSliceSource() = default;

    // Throws IOError "this -> closed () == false: BufferSliceSource already closed." when closed.
    void write(SlicePtr slice) override;
    // The head slice whole, whatever `maxSize` says. Empty and open: an empty slice. Empty and
    // closed: throws IOError.
    SlicePtr read(UInt64 maxSize) override;
    UInt64 position() const override { return position_; }
    bool eof() const override { return closed_ && chain_.empty(); }
    UInt64 skip(UInt64 size) override;

    void close() noexcept { closed_ = true; }
    bool closed() const noexcept { return closed_; }
    UInt64 size() const noexcept { return chain_.size(); }

private:
    SliceChain chain_;
    bool closed_ = false;
    UInt64 position_ = 0;
};

} // namespace MXF::SDK::DataIO
