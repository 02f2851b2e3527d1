#pragma once

#include "MXF/SDK/DataIO/SliceSource.h"

namespace MXF::SDK::DataIO
{

// A slice source with pushback and exact reads in front of another source. Reads never copy,
// except readUpTo/readExactly when the bytes asked for straddle two source slices; the gathering
// block then comes from the first slice's block, so foreign block kinds decide where copies land.
// One thread at a time.
class SliceReader : public SliceSource
{
public:
    // With `ownsSource` the reader deletes the source when it dies.
    SliceReader(SliceSource* source, bool ownsSource);
    ~SliceReader() override;
    SliceReader(const SliceReader&) = delete;
    SliceReader& operator=(const SliceReader&) = delete;

    // The next pushed-back slice whole, even if larger than `maxSize`, else the source's read.
    SlicePtr read(UInt64 maxSize) override;
    UInt64 position() const override;
    bool eof() const override;
    UInt64 skip(UInt64 size) override;

    // The next available run, never longer than `size`; never copies.
    SlicePtr readMax(UInt64 size);
    // One contiguous slice of `size` bytes, or of what is left before the end.
    SlicePtr readUpTo(UInt64 size);
    // Exactly `size` bytes. Throws NotEnoughData "Not enough data to read from the source" when
    // fewer are left; what was read is pushed back first, so nothing is lost.
    SlicePtr readExactly(UInt64 size);
    // Appends up to `size` bytes to `chain` without copying; returns the bytes appended.
    UInt64 readChain(UInt64 size, SliceChain& chain);

    // In front of everything unread. Empty slices are dropped.
    void pushBack(SlicePtr slice);
    // The whole chain in front, in order; `chain` ends empty.
    void pushBack(SliceChain& chain);
    UInt64 bufferedSize() const noexcept { return buffer_.size(); }

    // Big-endian integers. When fewer bytes are left they throw, as readExactly does,
    // NotEnoughData "Not enough data to read from the source", and the bytes stay unread.
    Platform::UInt8 readUInt8();
    Platform::UInt16 readUInt16();
    Platform::UInt32 readUInt32();
    Platform::UInt64 readUInt64();

private:
    template <typename T>
    T readBigEndian();

    SliceSource* source_;
    bool ownsSource_;
    SliceChain buffer_;
};

} // namespace MXF::SDK::DataIO
