#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace KEP::Halvorn
{

// The numbered errors that reach a host through cbError, with their texts in the current
// language. Process-wide, never destroyed.
class ErrorMessages
{
public:
    static ErrorMessages& instance();

    // "Unknown error occurred." for a code without a text. The pointer stays valid until the
    // code's next `replace`.
    const wchar_t* text(int code);
    // The caller holds `mutex()`, as `loadFile` does.
    void replace(int code, const wchar_t* text);
    // Overlays the texts of codes 1 to 12 with those of an XML language file. False when the file
    // can't be read or parsed; texts replaced before a failure stay.
    bool loadFile(const wchar_t* path);

    std::mutex& mutex() { return mutex_; }

    ErrorMessages(const ErrorMessages&) = delete;
    ErrorMessages& operator=(const ErrorMessages&) = delete;

private:
    ErrorMessages();

    std::mutex mutex_;
    std::map<std::int32_t, std::wstring> messages_;
    const std::wstring unknownError_;
};

} // namespace KEP::Halvorn
