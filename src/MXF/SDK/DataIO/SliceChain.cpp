#include "MXF/SDK/DataIO/SliceChain.h"

namespace MXF::SDK::DataIO
{

SliceChain::SliceChain() noexcept
{
    sentinel_.next = &sentinel_;
    sentinel_.previous = &sentinel_;
}

SliceChain::SliceChain(SliceChain&& other) noexcept : SliceChain()
{
    spliceBack(other);
}

SliceChain& SliceChain::operator=(SliceChain&& other) noexcept
{
    if (this != &other)
    {
        clear();
        spliceBack(other);
    }
    return *this;
}

SliceChain::~SliceChain()
{
    clear();
}

UInt64 SliceChain::size() const noexcept
{
    UInt64 total = 0;
    for (const Slice& slice : *this)
        total += slice.size;
    return total;
}

std::size_t SliceChain::count() const noexcept
{
    std::size_t n = 0;
    for (auto it = begin(); it != end(); ++it)
        ++n;
    return n;
}

void SliceChain::unlink(Slice* slice) noexcept
{
    slice->previous->next = slice->next;
    slice->next->previous = slice->previous;
    slice->next = nullptr;
    slice->previous = nullptr;
}

void SliceChain::linkBefore(Slice* position, Slice* slice) noexcept
{
    slice->next = position;
    slice->previous = position->previous;
    position->previous->next = slice;
    position->previous = slice;
}

void SliceChain::pushBack(SlicePtr slice)
{
    if (!slice || slice->size == 0)
        return;
    Slice* last = back();
    if (last != nullptr && last->block == slice->block &&
        last->offset + last->size == slice->offset)
    {
        last->size += slice->size;
        return;
    }
    linkBefore(&sentinel_, slice.release());
}

void SliceChain::pushFront(SlicePtr slice)
{
    if (!slice || slice->size == 0)
        return;
    Slice* first = front();
    if (first != nullptr && first->block == slice->block &&
        slice->offset + slice->size == first->offset)
    {
        first->offset = slice->offset;
        first->size += slice->size;
        return;
    }
    linkBefore(sentinel_.next, slice.release());
}

SlicePtr SliceChain::popFront() noexcept
{
    if (empty())
        return nullptr;
    Slice* first = sentinel_.next;
    unlink(first);
    return SlicePtr(first);
}

SlicePtr SliceChain::popBack() noexcept
{
    if (empty())
        return nullptr;
    Slice* last = sentinel_.previous;
    unlink(last);
    return SlicePtr(last);
}

void SliceChain::spliceBack(SliceChain& other) noexcept
{
    if (other.empty() || &other == this)
        return;
    Slice* first = other.sentinel_.next;
    Slice* last = other.sentinel_.previous;
    other.sentinel_.next = &other.sentinel_;
    other.sentinel_.previous = &other.sentinel_;
    first->previous = sentinel_.previous;
    sentinel_.previous->next = first;
    last->next = &sentinel_;
    sentinel_.previous = last;
}

void SliceChain::spliceFront(SliceChain& other) noexcept
{
    if (other.empty() || &other == this)
        return;
    Slice* first = other.sentinel_.next;
    Slice* last = other.sentinel_.previous;
    other.sentinel_.next = &other.sentinel_;
    other.sentinel_.previous = &other.sentinel_;
    last->next = sentinel_.next;
    sentinel_.next->previous = last;
    first->previous = &sentinel_;
    sentinel_.next = first;
}

void SliceChain::clear() noexcept
{
    while (!empty())
        popFront();
}

} // namespace MXF::SDK::DataIO
