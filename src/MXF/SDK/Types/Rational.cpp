#include "MXF/SDK/Types/Rational.h"

#include "HandleMembers.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Templates/SafeCast.h"
#include "WireBytes.h"

#include <numeric>

namespace MXF::SDK::Types
{

struct Rational::Impl : Internal::FixedBytes<8>
{
    // Not on the wire: set when the denominator is 0.
    bool undefined = false;

    Impl(Platform::Int32 numerator, Platform::Int32 denominator) { set(numerator, denominator); }
    explicit Impl(DataIO::DataSource& source) : FixedBytes(source), undefined(denominator() == 0) {}

    Platform::Int32 numerator() const
    {
        return Internal::readBigEndian<Platform::Int32>(bytes.data());
    }
    Platform::Int32 denominator() const
    {
        return Internal::readBigEndian<Platform::Int32>(bytes.data() + 4);
    }

    void set(Platform::Int32 numerator, Platform::Int32 denominator)
    {
        Internal::writeBigEndian(numerator, bytes.data());
        Internal::writeBigEndian(denominator, bytes.data() + 4);
        undefined = denominator == 0;
    }

    // Stores n/d in lowest terms, the sign on the numerator.
    void setReduced(Platform::Int64 n, Platform::Int64 d)
    {
        if (d < 0)
        {
            n = -n;
            d = -d;
        }
        const Platform::Int64 divisor = std::gcd(n, d);
        if (divisor > 1)
        {
            n /= divisor;
            d /= divisor;
        }
        set(Templates::SafeCast<Platform::Int32>(n), Templates::SafeCast<Platform::Int32>(d));
    }
};

namespace
{

void checkDefined(const Rational& self, const Rational& r)
{
    MXF_SDK_CHECK_AS(self.isUndefined() == false, "this -> isUndefined () == false",
                     "Operation with undefined value.", Exceptions::InvalidFormat);
    MXF_SDK_CHECK_AS(r.isUndefined() == false, "r.isUndefined () == false",
                     "Operation with undefined value.", Exceptions::InvalidFormat);
}

// a/b · c/d with the crossing pairs reduced first, so that the products stay small.
void multiply(Platform::Int64 a, Platform::Int64 b, Platform::Int64 c, Platform::Int64 d,
              Platform::Int64& n, Platform::Int64& m)
{
    const Platform::Int64 ad = std::gcd(a, d);
    const Platform::Int64 cb = std::gcd(c, b);
    if (ad > 1)
    {
        a /= ad;
        d /= ad;
    }
    if (cb > 1)
    {
        c /= cb;
        b /= cb;
    }
    n = a * c;
    m = b * d;
}

} // namespace

Rational::Rational(Platform::Int32 numerator, Platform::Int32 denominator)
    : impl_(std::make_unique<Impl>(numerator, denominator))
{
}

Rational::Rational(DataIO::DataSource& source) : impl_(std::make_unique<Impl>(source)) {}

Platform::Int32 Rational::numerator() const
{
    return impl_->numerator();
}

Platform::Int32 Rational::denominator() const
{
    return impl_->denominator();
}

bool Rational::isUndefined() const
{
    return impl_->undefined;
}

Rational& Rational::operator+=(const Rational& r)
{
    checkDefined(*this, r);
    const Platform::Int64 b = denominator();
    const Platform::Int64 d = r.denominator();
    impl_->setReduced(Platform::Int64(numerator()) * d + Platform::Int64(r.numerator()) * b, b * d);
    return *this;
}

Rational& Rational::operator-=(const Rational& r)
{
    checkDefined(*this, r);
    const Platform::Int64 b = denominator();
    const Platform::Int64 d = r.denominator();
    impl_->setReduced(Platform::Int64(numerator()) * d - Platform::Int64(r.numerator()) * b, b * d);
    return *this;
}

Rational& Rational::operator*=(const Rational& r)
{
    checkDefined(*this, r);
    Platform::Int64 n = 0;
    Platform::Int64 m = 0;
    multiply(numerator(), denominator(), r.numerator(), r.denominator(), n, m);
    impl_->setReduced(n, m);
    return *this;
}

Rational& Rational::operator/=(const Rational& r)
{
    checkDefined(*this, r);
    const Platform::Int32 r_num = r.numerator();
    MXF_SDK_CHECK(r_num != 0, "Division by 0.", Exceptions::InvalidFormat);
    if (numerator() == 0)
        return *this;
    Platform::Int64 n = 0;
    Platform::Int64 m = 0;
    multiply(numerator(), denominator(), r.denominator(), r_num, n, m);
    impl_->setReduced(n, m);
    return *this;
}

bool operator==(const Rational& a, const Rational& b)
{
    return (a <=> b) == 0;
}

std::weak_ordering operator<=>(const Rational& a, const Rational& b)
{
    checkDefined(a, b);
    // a/b against c/d is a·d against c·b, turned round when b·d is negative.
    const Platform::Int64 left = Platform::Int64(a.numerator()) * b.denominator();
    const Platform::Int64 right = Platform::Int64(b.numerator()) * a.denominator();
    const bool negative = (a.denominator() < 0) != (b.denominator() < 0);
    return negative ? right <=> left : left <=> right;
}

MXF_SDK_TYPES_HANDLE(Rational, SimpleDataType)

} // namespace MXF::SDK::Types
