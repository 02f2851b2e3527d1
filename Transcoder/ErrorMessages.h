#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace KEP::Halvorn
{

// The numbers a host is given through cbError. Code 1 is unassigned.
enum ErrorCode : std::int32_t
{
    ERROR_TRANSCODING = 2,
    ERROR_GENERATING_FILES = 3,
    ERROR_INPUT_NOT_SET = 4,
    ERROR_OUTPUT_NOT_SET = 5,
    ERROR_LOADING_DICTIONARY = 6,
    ERROR_NO_DICTIONARY_FILE = 7,
    ERROR_LOADING_INPUT = 8,
    ERROR_ANALYZING_INPUT = 9,
    ERROR_NO_ESSENCE_TRACKS = 10,
    ERROR_UNSUPPORTED_CODING = 11,
    ERROR_WRAPPING = 12,
};

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
    // Overlays the texts of codes 1 to ERROR_WRAPPING with those of an XML language file. False
    // when the file can't be read or parsed; texts replaced before a failure stay.
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
