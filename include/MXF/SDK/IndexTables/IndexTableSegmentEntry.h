#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/Rational.h"

#include <array>
#include <cstddef>
#include <vector>

namespace MXF::SDK::DataIO
{
class DataSink;
}

namespace MXF::SDK::IndexTables
{

// One entry of an index table segment's arrays (SMPTE 377M clause 10), held flat in its wire
// form, big-endian, so that writing it is a copy of bytes.
class IndexTableSegmentEntry
{
public:
    virtual ~IndexTableSegmentEntry() = default;
    virtual void write(DataIO::DataSink& sink) const = 0;
    // Bytes on the wire.
    virtual Platform::UInt32 size() const = 0;
    virtual const Platform::Byte* data() const = 0;
};

// PosTableIndex (Int8), Slice (UInt8), ElementDelta (UInt32): 6 bytes.
class DeltaEntry final : public IndexTableSegmentEntry
{
public:
    static constexpr Platform::UInt32 SIZE = 6;

    explicit DeltaEntry(Platform::Int8 posTableIndex = 0, Platform::UInt8 slice = 0,
                        Platform::UInt32 elementDelta = 0);
    // The wire form: SIZE bytes.
    explicit DeltaEntry(const Platform::Byte* bytes);

    void write(DataIO::DataSink& sink) const override;
    Platform::UInt32 size() const override { return SIZE; }
    const Platform::Byte* data() const override { return bytes_.data(); }

    Platform::Int8 posTableIndex() const;
    void setPosTableIndex(Platform::Int8 value);
    Platform::UInt8 slice() const;
    void setSlice(Platform::UInt8 value);
    Platform::UInt32 elementDelta() const;
    void setElementDelta(Platform::UInt32 value);

private:
    std::array<Platform::Byte, SIZE> bytes_{};
};

// TemporalOffset (Int8), KeyFrameOffset (Int8), Flags (UInt8), StreamOffset (UInt64), then one
// UInt32 slice offset for each of NSL slices and one Rational for each of NPE position table
// entries: 11 + 4 NSL + 8 NPE bytes.
class IndexEntry final : public IndexTableSegmentEntry
{
public:
    static constexpr Platform::Byte RANDOM_ACCESS = 0x80;
    static constexpr Platform::Byte SEQUENCE_HEADER = 0x40;
    static constexpr Platform::Byte FORWARD_PREDICTION = 0x20;
    static constexpr Platform::Byte BACKWARD_PREDICTION = 0x10;

    static constexpr Platform::UInt32 entrySize(Platform::UInt8 sliceCount,
                                                Platform::UInt8 posTableCount) noexcept
    {
        return 11 + 4 * Platform::UInt32(sliceCount) + 8 * Platform::UInt32(posTableCount);
    }

    // All zero.
    explicit IndexEntry(Platform::UInt8 sliceCount = 0, Platform::UInt8 posTableCount = 0);
    // The wire form: entrySize(sliceCount, posTableCount) bytes.
    IndexEntry(const Platform::Byte* bytes, Platform::UInt8 sliceCount,
               Platform::UInt8 posTableCount);

    void write(DataIO::DataSink& sink) const override;
    Platform::UInt32 size() const override { return Platform::UInt32(bytes_.size()); }
    const Platform::Byte* data() const override { return bytes_.data(); }

    Platform::UInt8 sliceCount() const noexcept { return sliceCount_; }
    Platform::UInt8 posTableCount() const noexcept { return posTableCount_; }

    Platform::Int8 temporalOffset() const;
    void setTemporalOffset(Platform::Int8 value);
    Platform::Int8 keyFrameOffset() const;
    void setKeyFrameOffset(Platform::Int8 value);
    Platform::UInt8 flags() const;
    void setFlags(Platform::UInt8 value);
    Platform::UInt64 streamOffset() const;
    void setStreamOffset(Platform::UInt64 value);

    // Bits 7 to 4 of the flags.
    bool isRandomAccess() const { return flags() & RANDOM_ACCESS; }
    bool hasSequenceHeader() const { return flags() & SEQUENCE_HEADER; }
    bool isForwardPrediction() const { return flags() & FORWARD_PREDICTION; }
    bool isBackwardPrediction() const { return flags() & BACKWARD_PREDICTION; }
    void setRandomAccess(bool on) { setFlag(RANDOM_ACCESS, on); }
    void setSequenceHeader(bool on) { setFlag(SEQUENCE_HEADER, on); }
    void setForwardPrediction(bool on) { setFlag(FORWARD_PREDICTION, on); }
    void setBackwardPrediction(bool on) { setFlag(BACKWARD_PREDICTION, on); }

    // Past sliceCount or posTableCount these throw IndexOutOfBounds "Trying to access a element
    // beyond the end of data.".
    Platform::UInt32 sliceOffset(Platform::UInt32 index) const;
    void setSliceOffset(Platform::UInt32 index, Platform::UInt32 value);
    Types::Rational posTable(Platform::UInt32 index) const;
    void setPosTable(Platform::UInt32 index, const Types::Rational& value);

private:
    void setFlag(Platform::Byte bit, bool on);
    // Where the item starts in the wire form.
    std::size_t sliceOffsetAt(Platform::UInt32 index) const;
    std::size_t posTableAt(Platform::UInt32 index) const;

    Platform::UInt8 sliceCount_;
    Platform::UInt8 posTableCount_;
    std::vector<Platform::Byte> bytes_;
};

} // namespace MXF::SDK::IndexTables
