#pragma once

#include <cstdint>
#include <string>

namespace KEP::Halvorn::Utils
{

// A component that can fail: its last numbered error and a detail text. Derived classes set both
// fields together; the code is 0 until the first failure.
class ErrorMessageEntity
{
public:
    virtual ~ErrorMessageEntity();
    virtual int getErrorCode() const;
    // Never null.
    virtual const wchar_t* getErrorMessage() const;

protected:
    ErrorMessageEntity() = default;
    ErrorMessageEntity(const ErrorMessageEntity&) = default;
    ErrorMessageEntity& operator=(const ErrorMessageEntity&) = default;

    std::int32_t errorCode_ = 0;
    std::wstring errorMessage_;
};

} // namespace KEP::Halvorn::Utils
