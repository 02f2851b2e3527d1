#include "MXF/SDK/Exceptions/Exceptions.h"

#include "MXF/SDK/Platform/Platform.h"

namespace MXF::SDK::Exceptions
{

BaseException::BaseException(std::wstring message, std::string file, int line)
    : message_(std::move(message)), narrow_(Platform::toUtf8(message_)), file_(std::move(file)),
      line_(line)
{
}

BaseException::BaseException(std::string_view message, std::string file, int line)
    : BaseException(Platform::fromUtf8(message), std::move(file), line)
{
}

BaseException::~BaseException() = default;

const std::wstring& BaseException::message() const noexcept
{
    return message_;
}

std::wstring BaseException::location() const
{
    return Platform::fromUtf8(file_) + L":" + std::to_wstring(line_);
}

std::wstring toWide(std::string_view text)
{
    return Platform::fromUtf8(text);
}

} // namespace MXF::SDK::Exceptions
