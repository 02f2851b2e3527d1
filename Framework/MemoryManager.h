#pragma once

#include <cstddef>

namespace KEP::Framework::Management
{

// The one heap of the library. Every call is thread-safe.
class MemoryManager
{
public:
    using Creator = void* (*)();

    // Null when the memory is not there; never throws.
    static void* allocate(std::size_t size) noexcept;
    // Like realloc: null on failure, and the old block then stays valid.
    static void* reallocate(void* pointer, std::size_t size) noexcept;
    static void deallocate(void* pointer) noexcept;

    // Returns the one process-wide object registered under `name`, made by `create` on the first
    // call. The object lives until the process ends, so modules that share this layer share it.
    static void* registerObject(const char* name, Creator create);
};

} // namespace KEP::Framework::Management
