#pragma once

#include <cstdint>

namespace KEP::Framework::Framework
{

// 32 random bits from the operating system (getrandom). Thread-safe; blocks only until the
// kernel's pool is initialised at boot.
std::uint32_t randomNumber();

} // namespace KEP::Framework::Framework
