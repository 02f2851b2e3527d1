#pragma once

#include "Framework/MemoryManager.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Types.h"

#include <cstddef>
#include <limits>
#include <vector>

// Values live on the library's one heap, the memory manager's.
namespace MXF::SDK::Types::Internal
{

inline void* allocate(std::size_t size)
{
    void* memory = KEP::Framework::Management::MemoryManager::allocate(size);
    if (memory == nullptr)
        MXF_SDK_THROW(Exceptions::BadAlloc, "Error allocating memory for a value");
    return memory;
}

// Base of every Impl: gives it the memory manager's operator new and delete.
struct ManagedObject
{
    static void* operator new(std::size_t size) { return allocate(size); }
    static void operator delete(void* pointer) noexcept
    {
        KEP::Framework::Management::MemoryManager::deallocate(pointer);
    }
};

template <typename T>
struct ManagedAllocator
{
    using value_type = T;

    ManagedAllocator() = default;
    template <typename U>
    ManagedAllocator(const ManagedAllocator<U>&) noexcept
    {
    }

    T* allocate(std::size_t count)
    {
        if (count > std::numeric_limits<std::size_t>::max() / sizeof(T))
            MXF_SDK_THROW(Exceptions::BadAlloc, "Error allocating memory for a value");
        return static_cast<T*>(Internal::allocate(count * sizeof(T)));
    }
    void deallocate(T* pointer, std::size_t) noexcept
    {
        KEP::Framework::Management::MemoryManager::deallocate(pointer);
    }

    template <typename U>
    bool operator==(const ManagedAllocator<U>&) const noexcept
    {
        return true;
    }
};

using ByteVector = std::vector<Platform::Byte, ManagedAllocator<Platform::Byte>>;

} // namespace MXF::SDK::Types::Internal
