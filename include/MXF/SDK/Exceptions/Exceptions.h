#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace MXF::SDK::Exceptions
{

// Root of every failure the toolkit raises. The message is wide; `what` gives it as UTF-8.
class BaseException : public std::exception
{
public:
    BaseException(std::wstring message, std::string file, int line);
    BaseException(std::string_view message, std::string file, int line);
    ~BaseException() override;

    virtual const std::wstring& message() const noexcept;
    // "file:line" of the check that failed, the file name as the compiler saw it.
    virtual std::wstring location() const;

    const std::string& file() const noexcept { return file_; }
    int line() const noexcept { return line_; }
    const char* what() const noexcept override { return narrow_.c_str(); }

private:
    std::wstring message_;
    std::string narrow_;
    std::string file_;
    int line_;
};

#define MXF_SDK_DECLARE_EXCEPTION(Name)                                                            \
    class Name : public BaseException                                                              \
    {                                                                                              \
    public:                                                                                        \
        using BaseException::BaseException;                                                        \
    }

MXF_SDK_DECLARE_EXCEPTION(AlreadySet);
MXF_SDK_DECLARE_EXCEPTION(BadAlloc);
MXF_SDK_DECLARE_EXCEPTION(BrokenLink);
MXF_SDK_DECLARE_EXCEPTION(IOError);
MXF_SDK_DECLARE_EXCEPTION(IndexOutOfBounds);
MXF_SDK_DECLARE_EXCEPTION(InvalidChange);
MXF_SDK_DECLARE_EXCEPTION(InvalidElement);
MXF_SDK_DECLARE_EXCEPTION(InvalidElementLength);
MXF_SDK_DECLARE_EXCEPTION(InvalidFormat);
MXF_SDK_DECLARE_EXCEPTION(InvalidID);
MXF_SDK_DECLARE_EXCEPTION(InvalidIndexSegment);
MXF_SDK_DECLARE_EXCEPTION(InvalidKey);
MXF_SDK_DECLARE_EXCEPTION(InvalidLabel);
MXF_SDK_DECLARE_EXCEPTION(InvalidLength);
MXF_SDK_DECLARE_EXCEPTION(InvalidLocalTag);
MXF_SDK_DECLARE_EXCEPTION(InvalidMetaAttribute);
MXF_SDK_DECLARE_EXCEPTION(InvalidMetaElement);
MXF_SDK_DECLARE_EXCEPTION(InvalidMetadataSet);
MXF_SDK_DECLARE_EXCEPTION(InvalidPartitionKind);
MXF_SDK_DECLARE_EXCEPTION(InvalidPartitionStatus);
MXF_SDK_DECLARE_EXCEPTION(InvalidPosition);
MXF_SDK_DECLARE_EXCEPTION(InvalidState);
MXF_SDK_DECLARE_EXCEPTION(InvalidStructure);
MXF_SDK_DECLARE_EXCEPTION(InvalidType);
MXF_SDK_DECLARE_EXCEPTION(InvalidULDesignator);
MXF_SDK_DECLARE_EXCEPTION(InvalidValue);
MXF_SDK_DECLARE_EXCEPTION(KeyNotFound);
MXF_SDK_DECLARE_EXCEPTION(LocalTagNotFound);
MXF_SDK_DECLARE_EXCEPTION(MetadataSetReferenceNotAllowed);
MXF_SDK_DECLARE_EXCEPTION(NoFactory);
MXF_SDK_DECLARE_EXCEPTION(NotEnoughData);
MXF_SDK_DECLARE_EXCEPTION(NotFound);
MXF_SDK_DECLARE_EXCEPTION(NotFoundInPrimer);
MXF_SDK_DECLARE_EXCEPTION(NotImplemented);
MXF_SDK_DECLARE_EXCEPTION(OSError);
MXF_SDK_DECLARE_EXCEPTION(OperationNotAllowed);
MXF_SDK_DECLARE_EXCEPTION(UniversalLabelCollision);

#undef MXF_SDK_DECLARE_EXCEPTION

// Message texts may be narrow (UTF-8) or wide; these make them wide.
std::wstring toWide(std::string_view text);
inline std::wstring toWide(std::wstring_view text)
{
    return std::wstring(text);
}
inline std::wstring toWide(const char* text)
{
    return toWide(std::string_view(text));
}
inline std::wstring toWide(const wchar_t* text)
{
    return std::wstring(text);
}
inline std::wstring toWide(const std::string& text)
{
    return toWide(std::string_view(text));
}
inline std::wstring toWide(const std::wstring& text)
{
    return text;
}

// "condition: message", the form of every failed check.
template <typename Message>
std::wstring checkMessage(const char* condition, const Message& message)
{
    return toWide(condition) + L": " + toWide(message);
}

} // namespace MXF::SDK::Exceptions

// A check that stays on in every build: when `condition` is false it throws `Type` with the text
// "condition: message" and the place of the check.
#define MXF_SDK_CHECK(condition, message, Type)                                                    \
    MXF_SDK_CHECK_AS(condition, #condition, message, Type)

// The same with the condition's text given, where callers match on the exact text.
#define MXF_SDK_CHECK_AS(condition, conditionText, message, Type)                                  \
    do                                                                                             \
    {                                                                                              \
        if (!(condition))                                                                          \
            throw Type(::MXF::SDK::Exceptions::checkMessage(conditionText, message), __FILE__,     \
                       __LINE__);                                                                  \
    } while (false)

// An unconditional failure: the message alone, no condition.
#define MXF_SDK_THROW(Type, message)                                                               \
    throw Type(::MXF::SDK::Exceptions::toWide(message), __FILE__, __LINE__)
