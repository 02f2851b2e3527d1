#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"

#include <compare>
#include <memory>

namespace MXF::SDK::DataIO
{
class DataSource;
}

namespace MXF::SDK::Types
{

// SMPTE 377M Rational: the numerator, then the denominator, each a signed 32-bit big-endian
// number (8 bytes). A denominator of 0 makes the value undefined: 0/0 differs from 0/1. Every
// operator, comparisons included, throws InvalidFormat "Operation with undefined value." when
// either side is undefined; a result that does not fit 32 bits throws InvalidLength "Type size
// exceeded".
class Rational final : public SimpleDataType
{
public:
    Rational(Platform::Int32 numerator, Platform::Int32 denominator);
    explicit Rational(DataIO::DataSource& source);
    Rational(const Rational& other);
    Rational& operator=(const Rational& other);
    ~Rational() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    Platform::Int32 numerator() const;
    Platform::Int32 denominator() const;
    bool isUndefined() const;

    // The results are reduced to lowest terms with the sign on the numerator.
    Rational& operator+=(const Rational& r);
    Rational& operator-=(const Rational& r);
    Rational& operator*=(const Rational& r);
    // Throws InvalidFormat "Division by 0." for a zero numerator in `r`. A zero numerator on the
    // left is left as it is.
    Rational& operator/=(const Rational& r);

    // By value: 1/2 equals 2/4.
    friend bool operator==(const Rational& a, const Rational& b);
    friend std::weak_ordering operator<=>(const Rational& a, const Rational& b);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::Types
