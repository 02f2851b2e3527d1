#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"

#include <memory>

namespace MXF::SDK::DataIO
{
class DataSource;
}

namespace MXF::SDK::Types
{

// Millisecond part of a Timestamp given in units of 4 milliseconds, its wire unit.
struct QuarterMilliseconds
{
    Platform::UInt8 value;
};

// SMPTE 377M TimeStamp, 8 bytes: year (16 bits, big-endian), month, day, hour, minute, second,
// quarter-millisecond (one byte each). UTC.
class Timestamp final : public SimpleDataType
{
public:
    // Checked in the order millisecond, second, minute, hour, day, month; each failure throws
    // InvalidValue: "Invalid Time: Millisecond must be smaller than 1000", "... Second must be
    // smaller than 60", "... Minute must be smaller than 60", "... Hour must be smaller than 60"
    // (for an hour above 23), "Invalid Date: Day must be smaller than 32", "... Month must be
    // smaller than 13". The year is not checked, nor a day or month of 0.
    Timestamp(Platform::UInt16 year, Platform::UInt8 month, Platform::UInt8 day,
              Platform::UInt8 hour, Platform::UInt8 minute, Platform::UInt8 second,
              Platform::UInt16 millisecond);
    // The same checks; "Invalid Time: Millisecond must be smaller than 250" above 249.
    Timestamp(Platform::UInt16 year, Platform::UInt8 month, Platform::UInt8 day,
              Platform::UInt8 hour, Platform::UInt8 minute, Platform::UInt8 second,
              QuarterMilliseconds quarterMilliseconds);
    explicit Timestamp(DataIO::DataSource& source);
    Timestamp(const Timestamp& other);
    Timestamp& operator=(const Timestamp& other);
    ~Timestamp() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    Platform::UInt16 year() const;
    Platform::UInt8 month() const;
    Platform::UInt8 day() const;
    Platform::UInt8 hour() const;
    Platform::UInt8 minute() const;
    Platform::UInt8 second() const;
    Platform::UInt8 quarterMillisecond() const;
    // quarterMillisecond · 4.
    Platform::UInt16 millisecond() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// Now, in UTC, to the millisecond the wire form keeps.
Timestamp currentTimestamp();

} // namespace MXF::SDK::Types
