#pragma once

#include "MXF/SDK/DataIO/Block.h"
#include "MXF/SDK/DataIO/SliceSource.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <vector>

namespace Halvorn::Test
{

using namespace MXF::SDK::DataIO;

// Heap blocks that count how many of them died and which factory made them.
class CountingFactory : public BlockFactory
{
public:
    class CountedBlock : public BaseMemoryBlock_T<MemoryBlockConfig>
    {
    public:
        CountedBlock(CountingFactory* factory, UInt64 size)
            : BaseMemoryBlock_T(factory, size), owner_(factory)
        {
            ++owner_->created;
        }
        ~CountedBlock() override { ++owner_->destroyed; }

    private:
        CountingFactory* owner_;
    };

    Block* createBlock(UInt64 size) override { return new CountedBlock(this, size); }

    Block* blockWith(const std::vector<std::uint8_t>& bytes)
    {
        Block* block = createBlock(bytes.size());
        std::memcpy(block->data(), bytes.data(), bytes.size());
        return block;
    }

    std::atomic<int> created{0};
    std::atomic<int> destroyed{0};
};

// Hands out a byte run in pieces of `chunk` bytes, each on its own block, as data arrives from a
// network or a queue. With `stall` every other read is an empty slice while not at the end.
class ChunkedSliceSource : public SliceSource
{
public:
    ChunkedSliceSource(CountingFactory& factory, std::vector<std::uint8_t> bytes, UInt64 chunk,
                       bool stall = false)
        : factory_(factory), bytes_(std::move(bytes)), chunk_(chunk), stall_(stall)
    {
    }

    SlicePtr read(UInt64 maxSize) override
    {
        if (stall_ && (stalled_ = !stalled_))
            return std::make_unique<Slice>();
        const UInt64 n = std::min({maxSize, chunk_, UInt64(bytes_.size() - position_)});
        if (n == 0)
            return std::make_unique<Slice>();
        BlockPtr block = BlockPtr::adopt(factory_.createBlock(n));
        std::memcpy(block->data(), bytes_.data() + position_, n);
        position_ += n;
        return Slice::make(block.get(), 0, n);
    }
    UInt64 position() const override { return position_; }
    bool eof() const override { return position_ == bytes_.size(); }
    UInt64 skip(UInt64 size) override
    {
        const UInt64 n = std::min(size, UInt64(bytes_.size() - position_));
        position_ += n;
        return n;
    }

private:
    CountingFactory& factory_;
    std::vector<std::uint8_t> bytes_;
    UInt64 chunk_;
    bool stall_;
    bool stalled_ = false;
    UInt64 position_ = 0;
};

inline std::vector<std::uint8_t> bytesOf(const Slice& slice)
{
    return {slice.begin(), slice.end()};
}

inline std::vector<std::uint8_t> bytesOf(const SliceChain& chain)
{
    std::vector<std::uint8_t> out;
    for (const Slice& s : chain)
        out.insert(out.end(), s.begin(), s.end());
    return out;
}

} // namespace Halvorn::Test
