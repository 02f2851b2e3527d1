#include "MXF/SDK/DataIO/Slice.h"

#include "MXF/SDK/Utils/FixedSizeAllocator.h"

namespace MXF::SDK::DataIO
{

namespace
{

using SliceAllocator = Utils::FixedSizeAllocator_T<sizeof(Slice)>;

SliceAllocator& sliceAllocator()
{
    // Registered by name so that every module loading the toolkit shares one free list.
    static SliceAllocator* const allocator =
        static_cast<SliceAllocator*>(KEP::Framework::Management::MemoryManager::registerObject(
            "kep_memory_manager_slice_name", []() -> void* { return new SliceAllocator; }));
    return *allocator;
}

} // namespace

Slice::Slice() noexcept
    : block(&EmptyBlock::instance()), offset(0), size(0), data(std::as_const(*block).data())
{
}

Slice::Slice(Block* block_, UInt64 offset_, UInt64 size_)
    : block(block_), offset(offset_), size(size_), data(std::as_const(*block_).data())
{
    const UInt64 blockSize = block->size();
    MXF_SDK_CHECK(offset <= blockSize && size <= blockSize - offset,
                  "Slice does not fit in its block", Exceptions::InvalidValue);
    block->addReference();
}

Slice::Slice(const Slice& other)
    : block(other.block), offset(other.offset), size(other.size), data(other.data)
{
    block->addReference();
}

Slice::~Slice()
{
    block->release();
}

void Slice::shrink(UInt64 count)
{
    MXF_SDK_CHECK(count <= size, "Cannot shrink a slice below zero", Exceptions::InvalidValue);
    size -= count;
}

void Slice::consume(UInt64 count)
{
    MXF_SDK_CHECK(count <= size, "Cannot consume more than the slice holds",
                  Exceptions::InvalidValue);
    offset += count;
    size -= count;
}

SlicePtr Slice::splitAt(const Byte* pointer)
{
    MXF_SDK_CHECK(pointer >= begin() && pointer <= end(), "Split point outside the slice",
                  Exceptions::InvalidValue);
    const auto head = static_cast<UInt64>(pointer - begin());
    SlicePtr tail = make(block, offset + head, size - head);
    size = head;
    return tail;
}

void* Slice::operator new(std::size_t size)
{
    return sliceAllocator().allocate(size);
}

void Slice::operator delete(void* pointer) noexcept
{
    sliceAllocator().deallocate(pointer);
}

} // namespace MXF::SDK::DataIO
