#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/DataIO/SliceSource.h"

namespace MXF::SDK::DataIO
{

// Writes every slice of a chain, in order, to a byte sink.
class ChainSinkDataAdapter : public ChainSink
{
public:
    explicit ChainSinkDataAdapter(DataSink& sink) : sink_(sink) {}
    void write(SliceChain& chain) override;

private:
    DataSink& sink_;
};

// A byte sink that appends what it is given to a chain, packing small writes into shared blocks of
// `blockSize` bytes (block size 0: one block per write). `position` counts from `startPosition`.
class ChainDataSinkAdapter : public DataSink
{
public:
    ChainDataSinkAdapter(BlockFactory& factory, SliceChain& chain, UInt64 startPosition,
                         UInt64 blockSize);
    void write(const void* buffer, UInt64 size) override;
    UInt64 position() const override { return position_; }

private:
    BlockFactory& factory_;
    SliceChain& chain_;
    UInt64 position_;
    UInt64 blockSize_;
    BlockPtr current_;
    UInt64 used_;
};

// Reads a byte source in blocks of `blockSize` bytes and hands them out as slices, cutting
// smaller reads out of the current block without copying.
class SliceSourceDataAdapter : public SliceSource
{
public:
    static constexpr UInt64 DEFAULT_BLOCK_SIZE = 1 << 20;

    // The source is borrowed and must outlive the adapter.
    explicit SliceSourceDataAdapter(DataSource& source, UInt64 blockSize = DEFAULT_BLOCK_SIZE);

    SlicePtr read(UInt64 maxSize) override;
    UInt64 position() const override { return source_.position() - pendingSize(); }
    bool eof() const override { return pendingSize() == 0 && source_.eof(); }
    UInt64 skip(UInt64 size) override;

private:
    UInt64 pendingSize() const noexcept { return pending_ ? pending_->size : 0; }

    DataSource& source_;
    UInt64 blockSize_;
    // What is left of the last block read.
    SlicePtr pending_;
};

} // namespace MXF::SDK::DataIO
