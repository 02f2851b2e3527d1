#pragma once

#include "MXF/SDK/Exceptions/Exceptions.h"

// Arithmetic on positions and lengths that come from files: a result that does not fit its type
// throws `Exception` with `message` instead of wrapping or being undefined.
namespace MXF::SDK::Exceptions
{

template <typename Exception, typename T>
T checkedAdd(T a, T b, const char* message)
{
    T result;
    if (__builtin_add_overflow(a, b, &result))
        MXF_SDK_THROW(Exception, message);
    return result;
}

template <typename Exception, typename T>
T checkedSub(T a, T b, const char* message)
{
    T result;
    if (__builtin_sub_overflow(a, b, &result))
        MXF_SDK_THROW(Exception, message);
    return result;
}

template <typename Exception, typename T>
T checkedMul(T a, T b, const char* message)
{
    T result;
    if (__builtin_mul_overflow(a, b, &result))
        MXF_SDK_THROW(Exception, message);
    return result;
}

} // namespace MXF::SDK::Exceptions
