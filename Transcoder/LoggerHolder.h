#pragma once

#include "KEP/Halvorn/IKEPHalvornLogger.h"
#include "Transcoder/LogEntry.h"

#include <atomic>
#include <string_view>

namespace KEP::Halvorn
{

class KEPHalvornNullLogger final : public IKEPHalvornLogger
{
public:
    void log(int, const wchar_t*) override {}
};

// Where every log line of the library goes: the host's logger, or the null logger when the host
// has none. Process-wide and never destroyed, as worker threads may still log at exit.
class LoggerHolder
{
public:
    static LoggerHolder& instance();

    // Null goes back to the null logger. No lock: a line in flight keeps the logger it began with.
    void setLogger(IKEPHalvornLogger* logger);
    // Null while the null logger is in place.
    IKEPHalvornLogger* logger() const;
    LogEntry entry(int level, std::wstring_view text);

    LoggerHolder(const LoggerHolder&) = delete;
    LoggerHolder& operator=(const LoggerHolder&) = delete;

private:
    LoggerHolder() = default;

    KEPHalvornNullLogger nullLogger_;
    std::atomic<IKEPHalvornLogger*> current_{&nullLogger_};
};

// The usual way to write a line: logEntry(LOG_TRACE, L"text") << more;
inline LogEntry logEntry(int level, std::wstring_view text = {})
{
    return LoggerHolder::instance().entry(level, text);
}

} // namespace KEP::Halvorn
