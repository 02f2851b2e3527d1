#include "MXF/SDK/Types/Timestamp.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "TypesTestSupport.h"

#include <ctime>
#include <gtest/gtest.h>

using namespace MXF::SDK;
using namespace MXF::SDK::Types;
using namespace Halvorn::Test;

TEST(Timestamp, IsYearMonthDayHourMinuteSecondQuarterMillisecondOnTheWire)
{
    // 2008 = 0x07D8; 500 ms = 125 quarter-milliseconds.
    const Timestamp stamp(2008, 3, 27, 14, 5, 9, Platform::UInt16(500));
    const Bytes wire = {0x07, 0xd8, 3, 27, 14, 5, 9, 125};
    EXPECT_EQ(serialized(stamp), wire);
    EXPECT_EQ(serialized(Timestamp(2008, 3, 27, 14, 5, 9, QuarterMilliseconds{125})), wire);
    EXPECT_EQ(stamp.millisecond(), 500);

    PiecewiseSource source(wire, 5);
    const Timestamp read(source);
    EXPECT_EQ(read.year(), 2008);
    EXPECT_EQ(read.month(), 3);
    EXPECT_EQ(read.day(), 27);
    EXPECT_EQ(read.hour(), 14);
    EXPECT_EQ(read.minute(), 5);
    EXPECT_EQ(read.second(), 9);
    EXPECT_EQ(read.quarterMillisecond(), 125);
    // Milliseconds are kept in units of 4.
    EXPECT_EQ(Timestamp(2008, 3, 27, 14, 5, 9, Platform::UInt16(999)).millisecond(), 996);
}

TEST(Timestamp, ChecksFieldsInOrderWithTheirTexts)
{
    using E = Exceptions::InvalidValue;
    using Ms = Platform::UInt16;
    // Every field bad: the millisecond is named first, then each in turn.
    EXPECT_EQ(thrownMessage<E>([] { Timestamp(0, 13, 32, 24, 60, 60, Ms(1000)); }),
              L"Invalid Time: Millisecond must be smaller than 1000");
    EXPECT_EQ(thrownMessage<E>([] { Timestamp(0, 13, 32, 24, 60, 60, QuarterMilliseconds{250}); }),
              L"Invalid Time: Millisecond must be smaller than 250");
    EXPECT_EQ(thrownMessage<E>([] { Timestamp(0, 13, 32, 24, 60, 60, Ms(999)); }),
              L"Invalid Time: Second must be smaller than 60");
    EXPECT_EQ(thrownMessage<E>([] { Timestamp(0, 13, 32, 24, 60, 59, Ms(0)); }),
              L"Invalid Time: Minute must be smaller than 60");
    // An hour of 24 fails with the text that speaks of 60.
    EXPECT_EQ(thrownMessage<E>([] { Timestamp(0, 13, 32, 24, 59, 59, Ms(0)); }),
              L"Invalid Time: Hour must be smaller than 60");
    EXPECT_EQ(thrownMessage<E>([] { Timestamp(0, 13, 32, 23, 59, 59, QuarterMilliseconds{249}); }),
              L"Invalid Date: Day must be smaller than 32");
    EXPECT_EQ(thrownMessage<E>([] { Timestamp(0, 13, 31, 23, 59, 59, Ms(0)); }),
              L"Invalid Date: Month must be smaller than 13");
    // Year, day 0 and month 0 are not checked.
    EXPECT_NO_THROW(Timestamp(65535, 0, 0, 23, 59, 59, Ms(999)));
}

TEST(Timestamp, CurrentTimestampIsNowInUTC)
{
    const std::time_t before = std::time(nullptr);
    const Timestamp now = currentTimestamp();
    std::tm parts{};
    parts.tm_year = now.year() - 1900;
    parts.tm_mon = now.month() - 1;
    parts.tm_mday = now.day();
    parts.tm_hour = now.hour();
    parts.tm_min = now.minute();
    parts.tm_sec = now.second();
    EXPECT_NEAR(double(::timegm(&parts)), double(before), 2.0);
}
