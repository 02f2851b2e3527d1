#pragma once

#include "MXF/SDK/DataIO/Slice.h"

#include <cstddef>
#include <iterator>

namespace MXF::SDK::DataIO
{

// A circular doubly linked list of slices; it owns them. Adjacent spans of one block merge as they
// are pushed, so a writer that fills a block bit by bit keeps a short chain.
class SliceChain
{
public:
    SliceChain() noexcept;
    SliceChain(SliceChain&& other) noexcept;
    SliceChain& operator=(SliceChain&& other) noexcept;
    SliceChain(const SliceChain&) = delete;
    SliceChain& operator=(const SliceChain&) = delete;
    ~SliceChain();

    bool empty() const noexcept { return sentinel_.next == &sentinel_; }
    // Total bytes of all slices.
    UInt64 size() const noexcept;
    std::size_t count() const noexcept;

    // Null when empty.
    Slice* front() noexcept { return empty() ? nullptr : sentinel_.next; }
    Slice* back() noexcept { return empty() ? nullptr : sentinel_.previous; }
    const Slice* front() const noexcept { return empty() ? nullptr : sentinel_.next; }
    const Slice* back() const noexcept { return empty() ? nullptr : sentinel_.previous; }

    // An empty slice is deleted; a slice that continues the last one's span on the same block
    // extends it; anything else is linked at the tail.
    void pushBack(SlicePtr slice);
    // The mirror image at the head.
    void pushFront(SlicePtr slice);
    // Null when empty.
    SlicePtr popFront() noexcept;
    SlicePtr popBack() noexcept;

    // Moves all of `other`'s slices here; `other` ends empty. No merging.
    void spliceBack(SliceChain& other) noexcept;
    void spliceFront(SliceChain& other) noexcept;

    void clear() noexcept;

    template <typename SliceType>
    class Iterator
    {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = Slice;
        using difference_type = std::ptrdiff_t;
        using pointer = SliceType*;
        using reference = SliceType&;

        Iterator() = default;
        explicit Iterator(SliceType* slice) : slice_(slice) {}
        reference operator*() const { return *slice_; }
        pointer operator->() const { return slice_; }
        Iterator& operator++()
        {
            slice_ = slice_->next;
            return *this;
        }
        Iterator operator++(int)
        {
            Iterator old = *this;
            ++*this;
            return old;
        }
        Iterator& operator--()
        {
            slice_ = slice_->previous;
            return *this;
        }
        bool operator==(const Iterator& other) const = default;

    private:
        SliceType* slice_ = nullptr;
    };
    using iterator = Iterator<Slice>;
    using const_iterator = Iterator<const Slice>;

    iterator begin() noexcept { return iterator(sentinel_.next); }
    iterator end() noexcept { return iterator(&sentinel_); }
    const_iterator begin() const noexcept { return const_iterator(sentinel_.next); }
    const_iterator end() const noexcept { return const_iterator(&sentinel_); }

private:
    static void unlink(Slice* slice) noexcept;
    static void linkBefore(Slice* position, Slice* slice) noexcept;

    Slice sentinel_;
};

} // namespace MXF::SDK::DataIO
