#pragma once

#include "Framework/MemoryManager.h"

#include <cstddef>
#include <new>

namespace KEP::Halvorn
{

inline void* allocateObject(std::size_t size)
{
    void* const memory = ::KEP::Framework::Management::MemoryManager::allocate(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

inline void deallocateObject(void* pointer) noexcept
{
    ::KEP::Framework::Management::MemoryManager::deallocate(pointer);
}

} // namespace KEP::Halvorn

// The bodies of the operators that KEP_HALVORN_ALLOCATION declares.
#define KEP_HALVORN_DEFINE_ALLOCATION(Class)                                                       \
    void* Class::operator new(std::size_t size)                                                    \
    {                                                                                              \
        return ::KEP::Halvorn::allocateObject(size);                                               \
    }                                                                                              \
    void* Class::operator new(std::size_t, void* place) noexcept                                   \
    {                                                                                              \
        return place;                                                                              \
    }                                                                                              \
    void Class::operator delete(void* pointer) noexcept                                            \
    {                                                                                              \
        ::KEP::Halvorn::deallocateObject(pointer);                                                 \
    }                                                                                              \
    void Class::operator delete(void*, void*) noexcept {}                                          \
    void* Class::operator new[](std::size_t size)                                                  \
    {                                                                                              \
        return ::KEP::Halvorn::allocateObject(size);                                               \
    }                                                                                              \
    void* Class::operator new[](std::size_t, void* place) noexcept                                 \
    {                                                                                              \
        return place;                                                                              \
    }                                                                                              \
    void Class::operator delete[](void* pointer) noexcept                                          \
    {                                                                                              \
        ::KEP::Halvorn::deallocateObject(pointer);                                                 \
    }                                                                                              \
    void Class::operator delete[](void*, void*) noexcept {}
