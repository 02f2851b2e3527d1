#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <string>
#include <vector>

namespace MXF::SDK::Utils
{

enum : Platform::Int16
{
    BINARY = 2,
    OCTAL = 8,
    DECIMAL = 10,
    HEXADECIMAL = 16
};

// An unsigned integer of any length in a base from 2 to 16, there to print 64-bit and longer
// numbers. Digits are kept lowest first.
class BigUInt
{
public:
    // Throws InvalidValue "...: Invalid base." for a base outside 2..16.
    BigUInt(Platform::UInt64 value, Platform::Int16 base);
    // Digits as text, most significant first ("ff", "1010"); throws InvalidValue for a digit that
    // is not one of the base.
    BigUInt(const std::string& digits, Platform::Int16 base);

    Platform::Int16 base() const noexcept { return base_; }

    // 0 less, 1 equal, 2 greater. Throws InvalidValue for numbers of different bases.
    int compare(const BigUInt& other) const;
    bool operator==(const BigUInt& other) const { return compare(other) == 1; }
    bool operator<(const BigUInt& other) const { return compare(other) == 0; }

    // Adds `value` at digit position `position` (base^position units).
    BigUInt& add(Platform::UInt64 value, std::size_t position = 0);
    BigUInt& multiply(Platform::UInt64 factor);
    // Throws InvalidValue for numbers of different bases.
    BigUInt& multiply(const BigUInt& factor);

    // Most significant digit first, lower-case letters; "0" for zero.
    std::string toString() const;

private:
    void trim();

    Platform::Int16 base_;
    std::vector<Platform::UInt8> digits_;
};

} // namespace MXF::SDK::Utils
