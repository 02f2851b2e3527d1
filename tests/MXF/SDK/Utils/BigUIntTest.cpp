#include "MXF/SDK/Utils/BigUInt.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

using namespace MXF::SDK;
using Halvorn::Test::Support::thrownMessage;
using Utils::BigUInt;

TEST(BigUInt, ZeroComparesEqualInItsBaseAndRefusesAnotherBase)
{
    const BigUInt zero(0, Utils::DECIMAL);
    EXPECT_EQ(zero.compare(BigUInt(0, Utils::DECIMAL)), 1);
    EXPECT_EQ(zero.toString(), "0");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidValue>(
                  [&] { zero.compare(BigUInt(0, Utils::HEXADECIMAL)); }),
              L"base_ == compar.base_: The two objects, must have the same base.");
}

TEST(BigUInt, PrintsInEveryBase)
{
    EXPECT_EQ(BigUInt(UINT64_MAX, Utils::HEXADECIMAL).toString(), "ffffffffffffffff");
    EXPECT_EQ(BigUInt(UINT64_MAX, Utils::DECIMAL).toString(), "18446744073709551615");
    EXPECT_EQ(BigUInt(10, Utils::BINARY).toString(), "1010");
    EXPECT_EQ(BigUInt(8, Utils::OCTAL).toString(), "10");
    EXPECT_EQ(BigUInt("00ff", Utils::HEXADECIMAL).toString(), "ff");
}

TEST(BigUInt, ArithmeticPastSixtyFourBits)
{
    BigUInt square(UINT64_MAX, Utils::DECIMAL);
    square.multiply(BigUInt(UINT64_MAX, Utils::DECIMAL));
    EXPECT_EQ(square.toString(), "340282366920938463426481119284349108225");
    BigUInt sum(UINT64_MAX, Utils::HEXADECIMAL);
    sum.add(1);
    EXPECT_EQ(sum.toString(), "10000000000000000");
    sum.add(0xf, 20);
    EXPECT_EQ(sum.toString(), "f00010000000000000000");
    BigUInt product(999, Utils::DECIMAL);
    product.multiply(1001);
    EXPECT_EQ(product.toString(), "999999");
    EXPECT_EQ(BigUInt(5, Utils::DECIMAL).compare(BigUInt(40, Utils::DECIMAL)), 0);
    EXPECT_EQ(BigUInt(41, Utils::DECIMAL).compare(BigUInt(40, Utils::DECIMAL)), 2);
    EXPECT_THROW(product.multiply(BigUInt(2, Utils::BINARY)), Exceptions::InvalidValue);
}

TEST(BigUInt, RefusesBasesOutsideTwoToSixteen)
{
    for (const auto base : {Platform::Int16(1), Platform::Int16(17), Platform::Int16(-2)})
        EXPECT_EQ(thrownMessage<Exceptions::InvalidValue>([&] { BigUInt(1, base); }),
                  L"IS_INSIDE(MXF::SDK::Platform::Int16 (BINARY), base, "
                  L"MXF::SDK::Platform::Int16 (HEXADECIMAL)): Invalid base.")
            << base;
    EXPECT_THROW(BigUInt("12g", Utils::HEXADECIMAL), Exceptions::InvalidValue);
}
