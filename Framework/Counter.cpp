#include "Framework/Counter.h"

#include "Framework/MemoryManager.h"

#include <new>
#include <string>

namespace KEP::Framework::Counting
{

Counter& Counter::counter(const char* name)
{
    const std::string key = std::string("kep_counter:") + name;
    void* object = Management::MemoryManager::registerObject(key.c_str(),
                                                             []() -> void* { return new Counter; });
    return *static_cast<Counter*>(object);
}

} // namespace KEP::Framework::Counting
