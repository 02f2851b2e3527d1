#pragma once

#include <cstddef>

#define KEP_HALVORN_API __attribute__((visibility("default")))

// Objects of the exported classes are allocated and freed by the library's own memory manager,
// whichever side of the boundary says new or delete.
#define KEP_HALVORN_ALLOCATION                                                                     \
    static void* operator new(std::size_t size);                                                   \
    static void* operator new(std::size_t size, void* place) noexcept;                             \
    static void operator delete(void* pointer) noexcept;                                           \
    static void operator delete(void* pointer, void* place) noexcept;                              \
    static void* operator new[](std::size_t size);                                                 \
    static void* operator new[](std::size_t size, void* place) noexcept;                           \
    static void operator delete[](void* pointer) noexcept;                                         \
    static void operator delete[](void* pointer, void* place) noexcept;
