#pragma once

#include "Framework/MemoryManager.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Synchronization/SpinLock.h"

#include <cstddef>

namespace MXF::SDK::Utils
{

// A free list of items of one size, shared by all threads. Freed items are kept for reuse and
// only given back to the memory manager when the allocator dies.
template <std::size_t SIZE>
class FixedSizeAllocator_T
{
public:
    static constexpr std::size_t ITEM_SIZE = SIZE < sizeof(void*) ? sizeof(void*) : SIZE;

    FixedSizeAllocator_T() = default;
    FixedSizeAllocator_T(const FixedSizeAllocator_T&) = delete;
    FixedSizeAllocator_T& operator=(const FixedSizeAllocator_T&) = delete;

    virtual ~FixedSizeAllocator_T()
    {
        while (head_ != nullptr)
        {
            Item* item = head_;
            head_ = item->next;
            KEP::Framework::Management::MemoryManager::deallocate(item);
        }
    }

    // Throws BadAlloc when `size` is larger than the item or memory runs out.
    virtual void* allocate(std::size_t size)
    {
        MXF_SDK_CHECK(size <= ITEM_SIZE, "Item larger than the allocator's size",
                      Exceptions::BadAlloc);
        {
            Synchronization::SpinLock::Guard guard(lock_);
            if (head_ != nullptr)
            {
                Item* item = head_;
                head_ = item->next;
                return item;
            }
        }
        void* fresh = KEP::Framework::Management::MemoryManager::allocate(ITEM_SIZE);
        MXF_SDK_CHECK(fresh != nullptr, "Error allocating a fixed size item", Exceptions::BadAlloc);
        return fresh;
    }

    virtual void deallocate(void* pointer) noexcept
    {
        if (pointer == nullptr)
            return;
        Item* item = static_cast<Item*>(pointer);
        Synchronization::SpinLock::Guard guard(lock_);
        item->next = head_;
        head_ = item;
    }

private:
    struct Item
    {
        Item* next;
    };
    Item* head_ = nullptr;
    Synchronization::SpinLock lock_;
};

} // namespace MXF::SDK::Utils
