#include "Transcoder/LoggerHolder.h"

namespace KEP::Halvorn
{

LoggerHolder& LoggerHolder::instance()
{
    // The guard of a local static is the test, lock and second test that a lazy singleton needs.
    static LoggerHolder* const holder = new LoggerHolder;
    return *holder;
}

void LoggerHolder::setLogger(IKEPHalvornLogger* logger)
{
    current_.store(logger != nullptr ? logger : &nullLogger_, std::memory_order_release);
}

IKEPHalvornLogger* LoggerHolder::logger() const
{
    IKEPHalvornLogger* const current = current_.load(std::memory_order_acquire);
    return current == &nullLogger_ ? nullptr : current;
}

LogEntry LoggerHolder::entry(int level, std::wstring_view text)
{
    return LogEntry(*current_.load(std::memory_order_acquire), level, text);
}

} // namespace KEP::Halvorn
