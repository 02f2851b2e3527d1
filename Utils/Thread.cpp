#include "Utils/Thread.h"

namespace KEP::Halvorn::Utils
{

Thread::~Thread()
{
    join();
}

void Thread::start()
{
    join();
    thread_ = std::make_unique<std::thread>([this] { run(); });
}

void Thread::join()
{
    if (thread_ != nullptr && thread_->joinable())
        thread_->join();
}

} // namespace KEP::Halvorn::Utils
