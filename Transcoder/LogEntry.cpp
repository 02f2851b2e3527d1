#include "Transcoder/LogEntry.h"

#include <utility>

namespace KEP::Halvorn
{

LogEntry::LogEntry(IKEPHalvornLogger& logger, int level, std::wstring_view text)
    : logger_(&logger), level_(level)
{
    stream_ << text;
}

LogEntry::LogEntry(LogEntry&& other) noexcept
    : logger_(other.logger_), level_(other.level_), stream_(std::move(other.stream_)),
      armed_(std::exchange(other.armed_, false))
{
}

LogEntry::~LogEntry()
{
    if (!armed_)
        return;
    // A failing logger must not take the caller down with it.
    try
    {
        logger_->log(level_, stream_.str().c_str());
    }
    catch (...)
    {
    }
}

} // namespace KEP::Halvorn
