#pragma once

#include "MXF/SDK/Exceptions/Exceptions.h"

#include <type_traits>
#include <utility>

namespace MXF::SDK::Templates
{

// Checked narrowing of integers: throws InvalidLength "Type size exceeded" if `value` does not
// fit in `To`.
template <typename To, typename From>
To SafeCast(From value)
{
    static_assert(std::is_integral_v<To> && std::is_integral_v<From>);
    if (!std::in_range<To>(value))
        MXF_SDK_THROW(Exceptions::InvalidLength, "Type size exceeded");
    return static_cast<To>(value);
}

} // namespace MXF::SDK::Templates
