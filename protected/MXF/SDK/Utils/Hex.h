#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <cstdio>
#include <string>

// Hexadecimal digits, read from text and written into messages, one way for the whole toolkit.
namespace MXF::SDK::Utils
{

// The value of one hexadecimal digit of either case; -1 for any other character.
constexpr int hexDigit(wchar_t c) noexcept
{
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    if (c >= L'A' && c <= L'F')
        return c - L'A' + 10;
    return -1;
}

// Lower case, without leading zeros or prefix: what follows "0x" in a message.
inline std::string hex(Platform::UInt64 value)
{
    char text[24];
    std::snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(value));
    return text;
}

} // namespace MXF::SDK::Utils
