#include "Framework/MemoryManager.h"

#include "Framework/Sanitizer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

namespace KEP::Framework::Management
{

namespace
{

struct Registry
{
    std::mutex mutex;
    std::map<std::string, void*, std::less<>> objects;
};

Registry& registry()
{
    // Never destroyed: registered objects may be used by other static destructors.
    static Registry* const instance = new Registry;
    return *instance;
}

// Blocks of some KiB and more (essence elements, samples) come and go at the frame rate. Given back
// to the heap, each would return to the system and cost a page fault per page when made again,
// more than reading it from the file. So blocks above SMALLEST_CACHED are rounded up to a quarter
// step of a power of two and, once free, kept by size for the next request, up to KEPT_BYTES in
// all, about what one sample queue and the reader's blocks have in flight. Every block carries a
// header with its class, so that `deallocate` needs no size.
//
// Under AddressSanitizer a kept block is poisoned, and so is what lies past the size asked for, so
// that reuse does not hide an access after release or past the end.
class LargeBlockCache
{
public:
    static LargeBlockCache& instance()
    {
        // Never destroyed: blocks may be freed after static destruction has begun.
        static LargeBlockCache* const cache = new LargeBlockCache;
        return *cache;
    }

    // 0 for sizes the heap serves directly, else the class counted from 1.
    static std::size_t classOf(std::size_t size) noexcept
    {
        if (size <= SMALLEST_CACHED || size > LARGEST_CACHED)
            return 0;
        const auto k = static_cast<std::size_t>(std::bit_width(size - 1)) - 1;
        const std::size_t quarters = (size + (std::size_t{1} << (k - 2)) - 1) >> (k - 2);
        return 1 + 4 * (k - FIRST_POWER) + (quarters - 5);
    }

    // What a cached block holds, 0 for a block of the heap.
    static std::size_t capacity(void* pointer) noexcept { return header(pointer)->capacity; }
    // What a cached block was last asked for.
    static std::size_t usedSize(void* pointer) noexcept { return header(pointer)->used; }

    static void* reallocateHeap(void* pointer, std::size_t size) noexcept
    {
        auto* const moved = static_cast<Header*>(std::realloc(header(pointer), HEADER + size));
        return moved == nullptr ? nullptr : reinterpret_cast<char*>(moved) + HEADER;
    }

    void* allocate(std::size_t size) noexcept
    {
        const std::size_t index = classOf(size);
        if (index == 0)
            return fromHeap(size == 0 ? 1 : size, 0);
        const std::size_t bytes = classSize(index);
        {
            const std::lock_guard lock(mutex_);
            if (Link* const block = free_[index - 1])
            {
                free_[index - 1] = block->next;
                keptBytes_ -= bytes;
                markUsed(block, size, bytes);
                return block;
            }
        }
        void* const block = fromHeap(bytes, bytes);
        if (block != nullptr)
            markUsed(block, size, bytes);
        return block;
    }

    // Of a kept block's `capacity` bytes only `size` may be touched.
    static void markUsed(void* block, std::size_t size, std::size_t capacity) noexcept
    {
        header(block)->used = size;
        ASAN_UNPOISON_MEMORY_REGION(block, size);
        ASAN_POISON_MEMORY_REGION(static_cast<char*>(block) + size, capacity - size);
    }

    void deallocate(void* pointer) noexcept
    {
        const std::size_t bytes = capacity(pointer);
        if (bytes != 0)
        {
            const std::lock_guard lock(mutex_);
            if (keptBytes_ + bytes <= KEPT_BYTES)
            {
                ASAN_UNPOISON_MEMORY_REGION(pointer, sizeof(Link));
                auto* const block = static_cast<Link*>(pointer);
                block->next = free_[classOf(bytes) - 1];
                free_[classOf(bytes) - 1] = block;
                keptBytes_ += bytes;
                // The link stays readable: LeakSanitizer ignores pointers in poisoned memory.
                ASAN_POISON_MEMORY_REGION(static_cast<char*>(pointer) + sizeof(Link),
                                          bytes - sizeof(Link));
                return;
            }
        }
        std::free(header(pointer));
    }

private:
    // Keeps what follows at the heap's own alignment.
    struct alignas(alignof(std::max_align_t)) Header
    {
        std::size_t capacity;
        std::size_t used;
    };
    struct Link
    {
        Link* next;
    };
    static constexpr std::size_t HEADER = sizeof(Header);
    static constexpr std::size_t SMALLEST_CACHED = 0x1000;
    static constexpr std::size_t LARGEST_CACHED = 0x1000000;
    static constexpr std::size_t FIRST_POWER = 12;
    static constexpr std::size_t CLASS_COUNT = 4 * (24 - FIRST_POWER);
    static constexpr std::size_t KEPT_BYTES = 0x2000000;

    static std::size_t classSize(std::size_t index) noexcept
    {
        const std::size_t k = (index - 1) / 4 + FIRST_POWER;
        return ((index - 1) % 4 + 5) << (k - 2);
    }
    static Header* header(void* pointer) noexcept
    {
        return reinterpret_cast<Header*>(static_cast<char*>(pointer) - HEADER);
    }
    static void* fromHeap(std::size_t size, std::size_t capacity) noexcept
    {
        auto* const block = static_cast<Header*>(std::malloc(HEADER + size));
        if (block == nullptr)
            return nullptr;
        block->capacity = capacity;
        block->used = size;
        return reinterpret_cast<char*>(block) + HEADER;
    }

    std::mutex mutex_;
    std::array<Link*, CLASS_COUNT> free_{};
    std::size_t keptBytes_ = 0;
};

} // namespace

void* MemoryManager::allocate(std::size_t size) noexcept
{
    return LargeBlockCache::instance().allocate(size);
}

void* MemoryManager::reallocate(void* pointer, std::size_t size) noexcept
{
    if (pointer == nullptr)
        return allocate(size);
    const std::size_t kept = LargeBlockCache::capacity(pointer);
    if (kept == 0)
        return LargeBlockCache::reallocateHeap(pointer, size);
    if (size <= kept && LargeBlockCache::classOf(size) == LargeBlockCache::classOf(kept))
    {
        LargeBlockCache::markUsed(pointer, size, kept);
        return pointer;
    }
    void* const moved = allocate(size);
    if (moved == nullptr)
        return nullptr;
    // Only what the block was last asked for holds data (and is readable under ASan).
    std::memcpy(moved, pointer, std::min(size, LargeBlockCache::usedSize(pointer)));
    deallocate(pointer);
    return moved;
}

void MemoryManager::deallocate(void* pointer) noexcept
{
    if (pointer != nullptr)
        LargeBlockCache::instance().deallocate(pointer);
}

void* MemoryManager::registerObject(const char* name, Creator create)
{
    Registry& r = registry();
    const std::lock_guard lock(r.mutex);
    auto found = r.objects.find(name);
    if (found != r.objects.end())
        return found->second;
    void* object = create();
    r.objects.emplace(name, object);
    return object;
}

} // namespace KEP::Framework::Management
