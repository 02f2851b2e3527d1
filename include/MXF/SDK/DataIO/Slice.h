#pragma once

#include "MXF/SDK/DataIO/Block.h"

#include <cstddef>
#include <memory>

namespace MXF::SDK::DataIO
{

struct Slice;
// The owner of a slice record. Slices handed between components are moved; the receiver owns them.
using SlicePtr = std::unique_ptr<Slice>;

// A view of `size` bytes at `offset` in `block`, holding one reference on the block. A slice is on
// at most one list at a time. Records come from a process-wide free list, so they may be made on
// one thread and deleted on another.
struct Slice
{
    Block* block;
    UInt64 offset;
    UInt64 size;
    // The block's data pointer when the slice was made; the view starts at data + offset.
    const Byte* data;
    Slice* next = nullptr;
    Slice* previous = nullptr;

    // An empty slice on the shared empty block.
    Slice() noexcept;
    // Takes a reference on `block`. Throws InvalidValue if the span leaves the block.
    Slice(Block* block, UInt64 offset, UInt64 size);
    // A new record with a new reference on the same block, not linked.
    Slice(const Slice& other);
    Slice& operator=(const Slice&) = delete;
    ~Slice();

    static SlicePtr make(Block* block, UInt64 offset, UInt64 size)
    {
        return std::make_unique<Slice>(block, offset, size);
    }

    const Byte* begin() const noexcept { return data + offset; }
    const Byte* end() const noexcept { return data + offset + size; }
    bool empty() const noexcept { return size == 0; }

    // Takes `count` bytes off the end.
    void shrink(UInt64 count);
    // Advances the start by `count` bytes.
    void consume(UInt64 count);
    // Ends this slice just before `pointer` and returns a slice of the same block from `pointer` to
    // the old end. `pointer` must lie within the span (its end included).
    SlicePtr splitAt(const Byte* pointer);

    bool operator==(const Slice& other) const noexcept
    {
        return data == other.data && offset == other.offset && size == other.size;
    }

    static void* operator new(std::size_t size);
    static void operator delete(void* pointer) noexcept;
};

} // namespace MXF::SDK::DataIO
