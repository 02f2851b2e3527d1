#include "MXF/SDK/Utils/BigUInt.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Utils/Hex.h"

#include <algorithm>

namespace MXF::SDK::Utils
{

namespace
{

#define IS_INSIDE(low, value, high) ((low) <= (value) && (value) <= (high))

void checkBase(Platform::Int16 base)
{
    MXF_SDK_CHECK_AS(
        IS_INSIDE(MXF::SDK::Platform::Int16(BINARY), base, MXF::SDK::Platform::Int16(HEXADECIMAL)),
        "IS_INSIDE(MXF::SDK::Platform::Int16 (BINARY), base, "
        "MXF::SDK::Platform::Int16 (HEXADECIMAL))",
        "Invalid base.", Exceptions::InvalidValue);
}

#undef IS_INSIDE

} // namespace

BigUInt::BigUInt(Platform::UInt64 value, Platform::Int16 base) : base_(base)
{
    checkBase(base);
    const auto b = static_cast<Platform::UInt64>(base);
    do
    {
        digits_.push_back(static_cast<Platform::UInt8>(value % b));
        value /= b;
    } while (value != 0);
}

BigUInt::BigUInt(const std::string& digits, Platform::Int16 base) : base_(base)
{
    checkBase(base);
    for (auto it = digits.rbegin(); it != digits.rend(); ++it)
    {
        const int digit = hexDigit(static_cast<unsigned char>(*it));
        MXF_SDK_CHECK(digit >= 0 && digit < base, "Invalid digit.", Exceptions::InvalidValue);
        digits_.push_back(static_cast<Platform::UInt8>(digit));
    }
    if (digits_.empty())
        digits_.push_back(0);
    trim();
}

int BigUInt::compare(const BigUInt& compar) const
{
    MXF_SDK_CHECK(base_ == compar.base_, "The two objects, must have the same base.",
                  Exceptions::InvalidValue);
    const std::size_t length = std::max(digits_.size(), compar.digits_.size());
    for (std::size_t i = length; i-- > 0;)
    {
        const int mine = i < digits_.size() ? digits_[i] : 0;
        const int theirs = i < compar.digits_.size() ? compar.digits_[i] : 0;
        if (mine != theirs)
            return mine < theirs ? 0 : 2;
    }
    return 1;
}

BigUInt& BigUInt::add(Platform::UInt64 value, std::size_t position)
{
    const auto b = static_cast<Platform::UInt64>(base_);
    while (digits_.size() < position)
        digits_.push_back(0);
    // The carry never exceeds value / b + 1, so it cannot overflow.
    Platform::UInt64 carry = value;
    for (std::size_t i = position; carry != 0; ++i)
    {
        if (i == digits_.size())
            digits_.push_back(0);
        const Platform::UInt64 low = carry % b + digits_[i];
        digits_[i] = static_cast<Platform::UInt8>(low % b);
        carry = carry / b + low / b;
    }
    return *this;
}

BigUInt& BigUInt::multiply(Platform::UInt64 factor)
{
    return multiply(BigUInt(factor, base_));
}

BigUInt& BigUInt::multiply(const BigUInt& multiplier)
{
    MXF_SDK_CHECK(base_ == multiplier.base_, "The two objects, must have the same base.",
                  Exceptions::InvalidValue);
    BigUInt product(Platform::UInt64(0), base_);
    for (std::size_t i = 0; i < multiplier.digits_.size(); ++i)
    {
        if (multiplier.digits_[i] == 0)
            continue;
        for (std::size_t j = 0; j < digits_.size(); ++j)
            product.add(Platform::UInt64(digits_[j]) * multiplier.digits_[i], i + j);
    }
    product.trim();
    digits_ = std::move(product.digits_);
    return *this;
}

std::string BigUInt::toString() const
{
    static constexpr char DIGITS[] = "0123456789abcdef";
    std::string text;
    for (auto it = digits_.rbegin(); it != digits_.rend(); ++it)
        text.push_back(DIGITS[*it]);
    return text;
}

void BigUInt::trim()
{
    while (digits_.size() > 1 && digits_.back() == 0)
        digits_.pop_back();
}

} // namespace MXF::SDK::Utils
