#pragma once

#include <memory>
#include <thread>

namespace KEP::Halvorn::Utils
{

// A thread that runs `run` of the object. A derived class whose `run` uses its own members must
// join in its own destructor: by the time this destructor joins, those members are gone.
class Thread
{
public:
    Thread() = default;
    virtual ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    virtual void run() = 0;

    // Joins a thread started earlier, then starts a new one.
    void start();
    // Waits for the thread, if one was started and not yet joined.
    void join();

private:
    std::unique_ptr<std::thread> thread_;
};

} // namespace KEP::Halvorn::Utils
