#include "Framework/MemoryManager.h"

#include <cstdlib>
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

} // namespace

void* MemoryManager::allocate(std::size_t size) noexcept
{
    return std::malloc(size == 0 ? 1 : size);
}

void* MemoryManager::reallocate(void* pointer, std::size_t size) noexcept
{
    return std::realloc(pointer, size == 0 ? 1 : size);
}

void MemoryManager::deallocate(void* pointer) noexcept
{
    std::free(pointer);
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
