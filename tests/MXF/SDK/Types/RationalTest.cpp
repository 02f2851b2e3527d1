#include "MXF/SDK/Types/Rational.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "TypesTestSupport.h"

#include <gtest/gtest.h>
#include <limits>

using namespace MXF::SDK;
using namespace MXF::SDK::Types;
using namespace Halvorn::Test;

namespace
{

void expectValue(const Rational& r, int numerator, int denominator)
{
    EXPECT_EQ(r.numerator(), numerator);
    EXPECT_EQ(r.denominator(), denominator);
}

const std::wstring UNDEFINED_THIS =
    L"this -> isUndefined () == false: Operation with undefined value.";
const std::wstring UNDEFINED_R = L"r.isUndefined () == false: Operation with undefined value.";

} // namespace

TEST(Rational, IsTwoBigEndianInt32OnTheWire)
{
    EXPECT_EQ(serialized(Rational(30000, 1001)), Bytes({0, 0, 0x75, 0x30, 0, 0, 0x03, 0xe9}));
    EXPECT_EQ(serialized(Rational(-1, 2)), Bytes({0xff, 0xff, 0xff, 0xff, 0, 0, 0, 2}));
    PiecewiseSource source({0, 0, 0, 25, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0}, 3);
    const Rational rate(source);
    expectValue(rate, 25, 1);
    EXPECT_FALSE(rate.isUndefined());
    const Rational none(source);
    EXPECT_TRUE(none.isUndefined());
    EXPECT_EQ(serialized(none), Bytes(8, 0));
    EXPECT_EQ(none.size(), 8);
}

TEST(Rational, ZeroOverZeroIsUndefinedAndRefusesEveryOperation)
{
    const Rational zero(0, 1);
    const Rational undefined(0, 0);
    EXPECT_FALSE(zero.isUndefined());
    EXPECT_TRUE(undefined.isUndefined());
    using E = Exceptions::InvalidFormat;
    EXPECT_EQ(thrownMessage<E>([&] { Rational(undefined) += zero; }), UNDEFINED_THIS);
    EXPECT_EQ(thrownMessage<E>([&] { Rational(zero) += undefined; }), UNDEFINED_R);
    EXPECT_EQ(thrownMessage<E>([&] { Rational(undefined) -= zero; }), UNDEFINED_THIS);
    EXPECT_EQ(thrownMessage<E>([&] { Rational(zero) *= undefined; }), UNDEFINED_R);
    EXPECT_EQ(thrownMessage<E>([&] { Rational(undefined) /= zero; }), UNDEFINED_THIS);
    EXPECT_EQ(thrownMessage<E>([&] { Rational(zero) /= undefined; }), UNDEFINED_R);
    EXPECT_EQ(thrownMessage<E>([&] { (void)(undefined == zero); }), UNDEFINED_THIS);
    EXPECT_EQ(thrownMessage<E>([&] { (void)(zero < undefined); }), UNDEFINED_R);
    // Both undefined: "this" is checked first.
    EXPECT_EQ(thrownMessage<E>([&] { Rational(undefined) += undefined; }), UNDEFINED_THIS);
}

TEST(Rational, DivisionByZeroNumerator)
{
    Rational half(1, 2);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidFormat>([&] { half /= Rational(0, 5); }),
              L"r_num != 0: Division by 0.");
    expectValue(half, 1, 2);
    // Zero on the left stays as it is.
    Rational zero(0, 5);
    zero /= Rational(3, 4);
    expectValue(zero, 0, 5);
}

TEST(Rational, ArithmeticReducesAndKeepsTheSignOnTheNumerator)
{
    Rational r(1, 2);
    r += Rational(1, 3);
    expectValue(r, 5, 6);
    r -= Rational(1, 6);
    expectValue(r, 2, 3);
    r *= Rational(3, 4);
    expectValue(r, 1, 2);
    r /= Rational(-3, 4);
    expectValue(r, -2, 3);
    r -= Rational(-2, 3);
    expectValue(r, 0, 1);

    // Reducing across before multiplying keeps NTSC rates within 32 bits.
    Rational rate(30000, 1001);
    rate /= Rational(60000, 1001);
    expectValue(rate, 1, 2);
    Rational big(std::numeric_limits<int>::max(), 3);
    big *= Rational(3, std::numeric_limits<int>::max());
    expectValue(big, 1, 1);
    Rational overflow(std::numeric_limits<int>::max(), 1);
    EXPECT_THROW(overflow += Rational(1, 1), Exceptions::InvalidLength);
}

TEST(Rational, ComparesByValue)
{
    EXPECT_EQ(Rational(1, 2), Rational(2, 4));
    EXPECT_NE(Rational(1, 2), Rational(1, 3));
    EXPECT_LT(Rational(1, 3), Rational(1, 2));
    EXPECT_LT(Rational(1, -2), Rational(1, 3));
    EXPECT_GT(Rational(-1, -2), Rational(1, 3));
    EXPECT_LE(Rational(30000, 1001), Rational(30, 1));
    EXPECT_EQ(Rational(0, 1), Rational(0, 7));
}
