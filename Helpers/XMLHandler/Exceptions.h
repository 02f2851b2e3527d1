#pragma once

#include <exception>
#include <string>

namespace KEP::Quenfold::Helpers::Exceptions
{

// Root of every failure of the XML door. The message is wide; `what` gives it as UTF-8.
class QuenfoldHelpersException : public std::exception
{
public:
    QuenfoldHelpersException(std::wstring message, std::string file, int line);
    ~QuenfoldHelpersException() override;

    const std::wstring& message() const noexcept { return message_; }
    std::wstring location() const;
    const char* what() const noexcept override { return narrow_.c_str(); }

private:
    std::wstring message_;
    std::string narrow_;
    std::string file_;
    int line_;
};

// A value that was asked for is not in the document.
class MissingCODInfo : public QuenfoldHelpersException
{
public:
    using QuenfoldHelpersException::QuenfoldHelpersException;
};

// The document, or a conversion of it, is unusable.
class InvalidCODStruture : public QuenfoldHelpersException
{
public:
    using QuenfoldHelpersException::QuenfoldHelpersException;
};

} // namespace KEP::Quenfold::Helpers::Exceptions
