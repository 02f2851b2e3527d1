#include "MXF/SDK/DataIO/Adapters.h"

#include <algorithm>
#include <cstring>

namespace MXF::SDK::DataIO
{

void ChainSinkDataAdapter::write(SliceChain& chain)
{
    for (const Slice& slice : chain)
        sink_.write(slice.begin(), slice.size);
}

ChainDataSinkAdapter::ChainDataSinkAdapter(BlockFactory& factory, SliceChain& chain,
                                           UInt64 startPosition, UInt64 blockSize)
    : factory_(factory), chain_(chain), position_(startPosition), blockSize_(blockSize),
      used_(blockSize)
{
}

void ChainDataSinkAdapter::write(const void* buffer, UInt64 size)
{
    if (size == 0)
        return;
    if (blockSize_ == 0)
    {
        current_ = BlockPtr::adopt(factory_.createBlock(size));
        used_ = 0;
        chain_.pushBack(Slice::make(current_.get(), 0, size));
    }
    else if (current_ && used_ + size <= blockSize_)
    {
        // The tail slice is ours and covers [0, used): widen it rather than add a record.
        chain_.popBack();
        chain_.pushBack(Slice::make(current_.get(), 0, used_ + size));
    }
    else
    {
        current_ = BlockPtr::adopt(factory_.createBlock(std::max(blockSize_, size)));
        used_ = 0;
        chain_.pushBack(Slice::make(current_.get(), 0, size));
    }
    std::memcpy(current_->data() + used_, buffer, size);
    position_ += size;
    used_ += size;
}

SliceSourceDataAdapter::SliceSourceDataAdapter(DataSource& source, UInt64 blockSize)
    : source_(source), blockSize_(blockSize == 0 ? DEFAULT_BLOCK_SIZE : blockSize)
{
}

SlicePtr SliceSourceDataAdapter::read(UInt64 maxSize)
{
    if (maxSize == 0)
        return std::make_unique<Slice>();
    if (pendingSize() == 0)
    {
        if (source_.eof())
            return std::make_unique<Slice>();
        BlockPtr block = BlockPtr::adopt(MemoryBlockFactory::instance().createBlock(blockSize_));
        const UInt64 got = source_.read(block->data(), blockSize_);
        pending_ = Slice::make(block.get(), 0, got);
    }
    if (pending_->size <= maxSize)
        return std::move(pending_);
    SlicePtr head = std::make_unique<Slice>(*pending_);
    head->size = maxSize;
    pending_->consume(maxSize);
    return head;
}

UInt64 SliceSourceDataAdapter::skip(UInt64 size)
{
    const UInt64 fromPending = std::min(size, pendingSize());
    if (fromPending > 0)
        pending_->consume(fromPending);
    return fromPending + (size > fromPending ? source_.skip(size - fromPending) : 0);
}

} // namespace MXF::SDK::DataIO
