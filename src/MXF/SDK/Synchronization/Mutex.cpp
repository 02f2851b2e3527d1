#include "MXF/SDK/Synchronization/Mutex.h"

#include "MXF/SDK/Exceptions/Exceptions.h"

#include <mutex>
#include <new>

namespace MXF::SDK::Synchronization
{

struct Mutex::Impl
{
    std::recursive_mutex mutex;
};

Mutex::Mutex() : impl_(new (std::nothrow) Impl)
{
    if (!impl_)
        MXF_SDK_THROW(Exceptions::BadAlloc, "Failed to create a mutex");
}

Mutex::~Mutex() = default;

void Mutex::lock()
{
    impl_->mutex.lock();
}

void Mutex::unlock()
{
    impl_->mutex.unlock();
}

Mutex& globalMutex()
{
    static Mutex* const mutex = new Mutex; // outlives every static destructor that may need it
    return *mutex;
}

} // namespace MXF::SDK::Synchronization
