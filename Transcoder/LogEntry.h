#pragma once

#include "KEP/Halvorn/IKEPHalvornLogger.h"

#include <sstream>
#include <string_view>

namespace KEP::Halvorn
{

constexpr int LOG_TRACE = 0;
constexpr int LOG_NOTE = 1;
constexpr int LOG_ERROR = 3;

// One log line, written when the last holder of the entry ends; moving it hands the line on, so
// it reaches the logger exactly once.
class LogEntry
{
public:
    LogEntry(IKEPHalvornLogger& logger, int level, std::wstring_view text);
    LogEntry(LogEntry&& other) noexcept;
    LogEntry(const LogEntry&) = delete;
    LogEntry& operator=(const LogEntry&) = delete;
    LogEntry& operator=(LogEntry&&) = delete;
    ~LogEntry();

    // Text or numbers, appended as they print.
    template <typename T>
    LogEntry& operator<<(const T& value)
    {
        stream_ << value;
        return *this;
    }

private:
    IKEPHalvornLogger* logger_;
    int level_;
    std::wostringstream stream_;
    bool armed_ = true;
};

} // namespace KEP::Halvorn
