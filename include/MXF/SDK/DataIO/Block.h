#pragma once

#include "Framework/MemoryManager.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Templates/SafeCast.h"

#include <atomic>
#include <utility>

namespace MXF::SDK::DataIO
{

using Platform::Byte;
using Platform::Int64;
using Platform::UInt32;
using Platform::UInt64;

// A reference-counted buffer whose size never changes. Counts are atomic, so a block may be
// released on any thread; at zero it deletes itself.
class Block
{
public:
    virtual ~Block() = default;
    virtual const Byte* data() const = 0;
    // Null for read-only blocks.
    virtual Byte* data() = 0;
    virtual UInt64 size() const = 0;
    virtual UInt32 addReference() = 0;
    virtual UInt32 release() = 0;
    // A new block of the same kind, already holding one reference. Gathering copies land there.
    virtual Block* createBlock(UInt64 size) = 0;
};

class BlockFactory
{
public:
    virtual ~BlockFactory() = default;
    // A new block holding one reference; throws BadAlloc when memory runs out.
    virtual Block* createBlock(UInt64 size) = 0;
};

// Owns one reference on a block.
class BlockPtr
{
public:
    BlockPtr() noexcept = default;
    // Takes over a reference the caller already holds, as createBlock gives.
    static BlockPtr adopt(Block* block) noexcept { return BlockPtr(block); }
    // Takes a new reference.
    static BlockPtr share(Block* block) noexcept
    {
        if (block != nullptr)
            block->addReference();
        return BlockPtr(block);
    }
    BlockPtr(const BlockPtr& other) noexcept : BlockPtr(share(other.block_)) {}
    BlockPtr(BlockPtr&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
    BlockPtr& operator=(BlockPtr other) noexcept
    {
        std::swap(block_, other.block_);
        return *this;
    }
    ~BlockPtr()
    {
        if (block_ != nullptr)
            block_->release();
    }

    Block* get() const noexcept { return block_; }
    Block* operator->() const noexcept { return block_; }
    Block& operator*() const noexcept { return *block_; }
    explicit operator bool() const noexcept { return block_ != nullptr; }

private:
    explicit BlockPtr(Block* block) noexcept : block_(block) {}
    Block* block_ = nullptr;
};

struct MemoryBlockConfig
{
    static void* allocate(UInt32 size)
    {
        return KEP::Framework::Management::MemoryManager::allocate(size);
    }
    static void deallocate(void* data)
    {
        KEP::Framework::Management::MemoryManager::deallocate(data);
    }
};

// A heap block. Sizes are limited to 32 bits.
template <typename Config>
class BaseMemoryBlock_T : public Block
{
public:
    // Throws InvalidLength "Type size exceeded" for a size past 32 bits, BadAlloc when the memory
    // manager has nothing.
    BaseMemoryBlock_T(BlockFactory* factory, UInt64 size)
        : factory_(factory), size_(Templates::SafeCast<UInt32>(size)),
          data_(static_cast<Byte*>(Config::allocate(size_)))
    {
        MXF_SDK_CHECK(data_ != 0, "Error allocating memory for a BaseMemoryBlock_T",
                      Exceptions::BadAlloc);
    }
    ~BaseMemoryBlock_T() override { Config::deallocate(data_); }
    BaseMemoryBlock_T(const BaseMemoryBlock_T&) = delete;
    BaseMemoryBlock_T& operator=(const BaseMemoryBlock_T&) = delete;

    const Byte* data() const override { return data_; }
    Byte* data() override { return data_; }
    UInt64 size() const override { return size_; }
    UInt32 addReference() override { return references_.fetch_add(1) + 1; }
    UInt32 release() override
    {
        const UInt32 left = references_.fetch_sub(1) - 1;
        if (left == 0)
            delete this;
        return left;
    }
    Block* createBlock(UInt64 size) override { return factory_->createBlock(size); }

private:
    BlockFactory* factory_;
    std::atomic<UInt32> references_{1};
    UInt32 size_;
    Byte* data_;
};

class MemoryBlock : public BaseMemoryBlock_T<MemoryBlockConfig>
{
public:
    using BaseMemoryBlock_T::BaseMemoryBlock_T;
};

class MemoryBlockFactory : public BlockFactory
{
public:
    Block* createBlock(UInt64 size) override { return new MemoryBlock(this, size); }

    // The process-wide factory, made on first use and never destroyed.
    static MemoryBlockFactory& instance();
};

// The block of every empty slice: no buffer, a count that never moves, one shared instance.
class EmptyBlock final : public Block
{
public:
    static EmptyBlock& instance();

    const Byte* data() const override { return &dummy_; }
    Byte* data() override { return &dummy_; }
    UInt64 size() const override { return 0; }
    UInt32 addReference() override { return 1; }
    UInt32 release() override { return 1; }
    Block* createBlock(UInt64 size) override
    {
        return MemoryBlockFactory::instance().createBlock(size);
    }

private:
    EmptyBlock() = default;
    Byte dummy_ = 0;
};

} // namespace MXF::SDK::DataIO
