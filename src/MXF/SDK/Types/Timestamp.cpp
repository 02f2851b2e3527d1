#include "MXF/SDK/Types/Timestamp.h"

#include "HandleMembers.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Platform.h"
#include "WireBytes.h"

#include <algorithm>
#include <chrono>
#include <ctime>

namespace MXF::SDK::Types
{

struct Timestamp::Impl : Internal::FixedBytes<8>
{
    using FixedBytes::FixedBytes;

    void set(Platform::UInt16 year, Platform::UInt8 month, Platform::UInt8 day,
             Platform::UInt8 hour, Platform::UInt8 minute, Platform::UInt8 second,
             Platform::UInt8 quarterMillisecond)
    {
        Internal::writeBigEndian(year, bytes.data());
        bytes[2] = month;
        bytes[3] = day;
        bytes[4] = hour;
        bytes[5] = minute;
        bytes[6] = second;
        bytes[7] = quarterMillisecond;
    }
};

namespace
{

// After the millisecond, in this order: the first failing field names the error.
void checkParts(Platform::UInt8 month, Platform::UInt8 day, Platform::UInt8 hour,
                Platform::UInt8 minute, Platform::UInt8 second)
{
    if (second > 59)
        MXF_SDK_THROW(Exceptions::InvalidValue, "Invalid Time: Second must be smaller than 60");
    if (minute > 59)
        MXF_SDK_THROW(Exceptions::InvalidValue, "Invalid Time: Minute must be smaller than 60");
    // The text says 60, the test is against 24: kept as the text has always been.
    if (hour > 23)
        MXF_SDK_THROW(Exceptions::InvalidValue, "Invalid Time: Hour must be smaller than 60");
    if (day > 31)
        MXF_SDK_THROW(Exceptions::InvalidValue, "Invalid Date: Day must be smaller than 32");
    if (month > 12)
        MXF_SDK_THROW(Exceptions::InvalidValue, "Invalid Date: Month must be smaller than 13");
}

} // namespace

Timestamp::Timestamp(Platform::UInt16 year, Platform::UInt8 month, Platform::UInt8 day,
                     Platform::UInt8 hour, Platform::UInt8 minute, Platform::UInt8 second,
                     Platform::UInt16 millisecond)
    : impl_(std::make_unique<Impl>())
{
    if (millisecond > 999)
        MXF_SDK_THROW(Exceptions::InvalidValue,
                      "Invalid Time: Millisecond must be smaller than 1000");
    checkParts(month, day, hour, minute, second);
    impl_->set(year, month, day, hour, minute, second,
               static_cast<Platform::UInt8>(millisecond / 4));
}

Timestamp::Timestamp(Platform::UInt16 year, Platform::UInt8 month, Platform::UInt8 day,
                     Platform::UInt8 hour, Platform::UInt8 minute, Platform::UInt8 second,
                     QuarterMilliseconds quarterMilliseconds)
    : impl_(std::make_unique<Impl>())
{
    if (quarterMilliseconds.value > 249)
        MXF_SDK_THROW(Exceptions::InvalidValue,
                      "Invalid Time: Millisecond must be smaller than 250");
    checkParts(month, day, hour, minute, second);
    impl_->set(year, month, day, hour, minute, second, quarterMilliseconds.value);
}

Timestamp::Timestamp(DataIO::DataSource& source) : impl_(std::make_unique<Impl>(source)) {}

Platform::UInt16 Timestamp::year() const
{
    return Internal::readBigEndian<Platform::UInt16>(impl_->bytes.data());
}

Platform::UInt8 Timestamp::month() const
{
    return impl_->bytes[2];
}

Platform::UInt8 Timestamp::day() const
{
    return impl_->bytes[3];
}

Platform::UInt8 Timestamp::hour() const
{
    return impl_->bytes[4];
}

Platform::UInt8 Timestamp::minute() const
{
    return impl_->bytes[5];
}

Platform::UInt8 Timestamp::second() const
{
    return impl_->bytes[6];
}

Platform::UInt8 Timestamp::quarterMillisecond() const
{
    return impl_->bytes[7];
}

Platform::UInt16 Timestamp::millisecond() const
{
    return static_cast<Platform::UInt16>(quarterMillisecond() * 4);
}

MXF_SDK_TYPES_HANDLE(Timestamp, SimpleDataType)

Timestamp currentTimestamp()
{
    using namespace std::chrono;
    const auto now = system_clock::now();
    const std::tm utc = Platform::gmtTime(system_clock::to_time_t(now));
    const auto millisecond = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
    return Timestamp(
        static_cast<Platform::UInt16>(utc.tm_year + 1900),
        static_cast<Platform::UInt8>(utc.tm_mon + 1), static_cast<Platform::UInt8>(utc.tm_mday),
        static_cast<Platform::UInt8>(utc.tm_hour), static_cast<Platform::UInt8>(utc.tm_min),
        static_cast<Platform::UInt8>(std::min(utc.tm_sec, 59)),
        static_cast<Platform::UInt16>(millisecond));
}

} // namespace MXF::SDK::Types
