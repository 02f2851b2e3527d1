#include "MXF/SDK/Types/Factories/UIDFactory.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Platform.h"
#include "TypesTestSupport.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace MXF::SDK;
using namespace MXF::SDK::Types;
using namespace MXF::SDK::Types::Factories;
using namespace Halvorn::Test;
using Platform::Byte;

namespace
{

std::tm utcOf(int year, int month, int day, int hour, int minute, int second)
{
    std::tm time{};
    time.tm_year = year - 1900;
    time.tm_mon = month - 1;
    time.tm_mday = day;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
    const std::time_t t = ::timegm(&time); // fills tm_yday
    return Platform::gmtTime(t);
}

Bytes bytesOf(const SimpleDataType& value)
{
    return Bytes(value.data(), value.data() + value.size());
}

// Days since 17 November 1858, worked out from the Unix epoch (MJD 40587).
long todaysModifiedJulianDate()
{
    using namespace std::chrono;
    return static_cast<long>(floor<days>(system_clock::now()).time_since_epoch().count()) + 40587;
}

long bcdDate(const Byte* bytes)
{
    long date = 0;
    for (int i = 2; i >= 0; --i)
        date = date * 100 + (bytes[i] >> 4) * 10 + (bytes[i] & 0x0F);
    return date;
}

std::uint32_t littleEndian32(const Byte* b)
{
    return std::uint32_t(b[0]) | std::uint32_t(b[1]) << 8 | std::uint32_t(b[2]) << 16 |
           std::uint32_t(b[3]) << 24;
}

void expectNode(const Byte* bytes)
{
    const auto& node = Platform::nodeIdentifier();
    EXPECT_EQ(Bytes(bytes, bytes + 6), Bytes(node.begin(), node.end()));
}

std::string runHelper()
{
    std::FILE* pipe = ::popen("deterministic_uids=true '" HALVORN_DETERMINISTIC_HELPER "'", "r");
    if (pipe == nullptr)
        return "<popen failed>";
    std::string output;
    char buffer[256];
    while (std::fgets(buffer, sizeof buffer, pipe) != nullptr)
        output += buffer;
    const int status = ::pclose(pipe);
    return status == 0 ? output : "<helper failed>";
}

} // namespace

TEST(UIDFactory, VersionOneTimeSnapOfTheRFC4122Example)
{
    // f81d4fae-7dec-11d0-... was made at 1997-02-03 17:43:12.2168750 UTC.
    const TimeSnap snap = uuidTimeSnap(utcOf(1997, 2, 3, 17, 43, 12), 216, 8750);
    EXPECT_EQ(Bytes(snap.begin(), snap.end()),
              Bytes({0xf8, 0x1d, 0x4f, 0xae, 0x7d, 0xec, 0x11, 0xd0}));
}

TEST(UIDFactory, SMPTETimeSnapHoldsMillisecondsDateAndZone)
{
    // 2000-01-01 is MJD 51544; 12:34:56.789 is 45,296,789 ms = 0x02B32C95 after midnight.
    const std::tm noon = utcOf(2000, 1, 1, 12, 34, 56);
    EXPECT_EQ(modifiedJulianDate(noon), 51544u);
    EXPECT_EQ(modifiedJulianDate(utcOf(2024, 2, 29, 0, 0, 0)), 60369u);
    const TimeSnap snap = smpteTimeSnap(noon, 789, 0);
    EXPECT_EQ(Bytes(snap.begin(), snap.end()),
              Bytes({0x95, 0x2c, 0xb3, 0x02, 0x44, 0x15, 0x05, 0x80}));
    EXPECT_EQ(smpteTimeSnap(noon, 789, 60)[7], 0x80 | 0x25);
    EXPECT_EQ(smpteTimeSnap(noon, 789, 345)[7], 0x80 | 0x39);
}

TEST(UIDFactory, TimeZoneCodesOfSMPTE309M)
{
    EXPECT_EQ(timeZoneCode(0), 0x00);
    EXPECT_EQ(timeZoneCode(-5 * 60), 0x05);  // New York
    EXPECT_EQ(timeZoneCode(-10 * 60), 0x10); // Hawaii
    EXPECT_EQ(timeZoneCode(-150), 0x0C);     // Newfoundland summer
    EXPECT_EQ(timeZoneCode(13 * 60), 0x13);
    EXPECT_EQ(timeZoneCode(9 * 60), 0x17);       // Tokyo
    EXPECT_EQ(timeZoneCode(60), 0x25);           // Paris
    EXPECT_EQ(timeZoneCode(330), 0x3A);          // India
    EXPECT_EQ(timeZoneCode(570), 0x2C);          // Adelaide
    EXPECT_EQ(timeZoneCode(12 * 60 + 45), 0x32); // Chatham
    EXPECT_EQ(timeZoneCode(5 * 60 + 45), 0x39);  // Nepal: not listed
    EXPECT_EQ(timeZoneCode(14 * 60), 0x39);
}

TEST(UIDFactory, UUIDVersionsVariantAndNode)
{
    ScopedEnvironment normal{"deterministic_uids"};
    const UUID timeBased = newUUID(TIME_SNAP_VERSION_1);
    EXPECT_EQ(timeBased[6] >> 4, 1);
    EXPECT_EQ(timeBased[8] & 0xC0, 0x80);
    expectNode(timeBased.data() + 10);

    // The time snap tells now, to within a few seconds.
    std::uint64_t t = (std::uint64_t(timeBased[6] & 0x0F) << 56) |
                      (std::uint64_t(timeBased[7]) << 48) | (std::uint64_t(timeBased[4]) << 40) |
                      (std::uint64_t(timeBased[5]) << 32) | (std::uint64_t(timeBased[0]) << 24) |
                      (std::uint64_t(timeBased[1]) << 16) | (std::uint64_t(timeBased[2]) << 8) |
                      timeBased[3];
    const auto unixSeconds = static_cast<std::int64_t>((t - 0x01B21DD213814000ull) / 10000000);
    EXPECT_NEAR(double(unixSeconds), double(std::time(nullptr)), 5.0);

    const UUID random = newUUID(TIME_SNAP_VERSION_4);
    EXPECT_EQ(random[6] >> 4, 4);
    EXPECT_EQ(random[8] & 0xC0, 0x80);
    expectNode(random.data() + 10);
    EXPECT_NE(newUUID(TIME_SNAP_VERSION_4), random);

    const UUID none = newUUID(static_cast<TimeSnapVersion>(9));
    EXPECT_EQ(Bytes(none.data(), none.data() + 8), Bytes(8, 0));
    EXPECT_EQ(none[8] & 0xC0, 0x80);

    using E = Exceptions::NotImplemented;
    EXPECT_EQ(thrownMessage<E>([] { newUUID(TIME_SNAP_VERSION_2); }),
              L"setUUIDTimeSnap:: TIME_SNAP_VERSION_2 not implemented: use TIME_SNAP_VERSION_1");
    EXPECT_EQ(thrownMessage<E>([] { newUUID(TIME_SNAP_VERSION_3); }),
              L"setUUIDTimeSnap:: TIME_SNAP_VERSION_3 not implemented: use TIME_SNAP_VERSION_1");
}

TEST(UIDFactory, UMID32LabelAndInstanceNumbers)
{
    ScopedEnvironment normal{"deterministic_uids"};
    const Bytes label = {0x06, 0x0a, 0x2b, 0x34, 0x01, 0x01, 0x01, 0x05, 0x01, 0x01};
    const UMID32 prs = newUMID32(0x01, MNMI_SMPTE, INMI_24BIT_PRS, 0x44332211);
    EXPECT_EQ(Bytes(prs.data(), prs.data() + 10), label);
    EXPECT_EQ(prs[10], 0x01);
    EXPECT_EQ(prs[11], 0x11);
    EXPECT_EQ(prs[12], 0x13);
    EXPECT_EQ(Bytes(prs.data() + 13, prs.data() + 16), Bytes({0x22, 0x33, 0x44}));

    const UMID32 live = newUMID32(0x02, MNMI_SMPTE, INMI_LIVE_STREAM, 0x44332211);
    EXPECT_EQ(live[11], 0x13);
    EXPECT_EQ(live[13], 0x11);

    const UMID32 undefined = newUMID32(0x02, MNMI_SMPTE, INMI_NOT_DEFINED, 0x44332211);
    EXPECT_EQ(undefined[11], 0x1F);
    EXPECT_EQ(Bytes(undefined.data() + 13, undefined.data() + 16), Bytes(3, 0));
}

TEST(UIDFactory, UMID32MaterialNumbers)
{
    ScopedEnvironment normal{"deterministic_uids"};
    const UMID32 smpte = newUMID32(0x01, MNMI_SMPTE, INMI_24BIT_PRN);
    const Byte* material = smpte.data() + 16;
    const std::uint32_t sinceMidnight = littleEndian32(material);
    EXPECT_LT(sinceMidnight, 86400000u);
    EXPECT_NEAR(double(bcdDate(material + 4)), double(todaysModifiedJulianDate()), 1.0);
    EXPECT_EQ(material[7] & 0x80, 0x80);
    expectNode(material + 10);

    const UMID32 uuid = newUMID32(0x01, MNMI_UUID_UL, INMI_24BIT_PRN, 0, TIME_SNAP_VERSION_4);
    EXPECT_EQ(uuid[11], 0x22);
    EXPECT_EQ(uuid[16 + 6] >> 4, 4);
    EXPECT_EQ(uuid[16 + 8] & 0xC0, 0x80);
    expectNode(uuid.data() + 26);

    const UMID32 ieee = newUMID32(0x01, MNMI_IEEE1394, INMI_24BIT_PRN);
    const auto& node = Platform::nodeIdentifier();
    EXPECT_EQ(Bytes(ieee.data() + 24, ieee.data() + 32),
              Bytes({node[0], node[1], node[2], 0xff, 0xff, node[3], node[4], node[5]}));

    const UMID32 other = newUMID32(0x01, static_cast<MaterialNumberMethod>(0x50), INMI_24BIT_PRN);
    EXPECT_EQ(Bytes(other.data() + 16, other.data() + 32), Bytes(16, 0));

    EXPECT_EQ(thrownMessage<Exceptions::NotImplemented>(
                  [] { newUMID32(1, MNMI_MASKED, INMI_24BIT_PRN); }),
              L"setMaterialNumber:: MNMI_MASKED not implemented: use other type");
    EXPECT_EQ(thrownMessage<Exceptions::NotImplemented>(
                  [] { newUMID32(1, MNMI_UUID_UL, INMI_24BIT_PRN, 0, TIME_SNAP_VERSION_2); }),
              L"setUUIDTimeSnap:: TIME_SNAP_VERSION_2 not implemented: use TIME_SNAP_VERSION_1");
}

TEST(UIDFactory, DeterministicModeCountsInTheFirstFourBytes)
{
    ScopedEnvironment deterministic("deterministic_uids", "true");
    EXPECT_TRUE(deterministicMode());
    const UUID first = newUUID();
    const UUID second = newUUID(TIME_SNAP_VERSION_4);
    EXPECT_EQ(Bytes(first.data() + 4, first.data() + 16), Bytes(12, 0x01));
    EXPECT_EQ(Bytes(second.data() + 4, second.data() + 16), Bytes(12, 0x01));
    EXPECT_EQ(littleEndian32(second.data()), littleEndian32(first.data()) + 1);

    // No label prefix either: everything is counter and 0x01.
    const UMID32 umid = newUMID32(0x01, MNMI_MASKED, INMI_24BIT_PRN);
    EXPECT_EQ(littleEndian32(umid.data()), littleEndian32(second.data()) + 1);
    EXPECT_EQ(Bytes(umid.data() + 4, umid.data() + 32), Bytes(28, 0x01));

    for (const char* value : {"TRUE", "1", "false"})
    {
        ScopedEnvironment other("deterministic_uids", value);
        EXPECT_FALSE(deterministicMode()) << value;
    }
}

TEST(UIDFactory, TwoRunsInDeterministicModeMakeTheSameIdentifiers)
{
    // A fresh process counts from 1: UUID, UMID32, UUID.
    const std::string expected = "01000000-0101-0101-0101-010101010101\n"
                                 "0x02000000010101010101010101010101"
                                 "01010101010101010101010101010101\n"
                                 "03000000-0101-0101-0101-010101010101\n";
    const std::string first = runHelper();
    EXPECT_EQ(first, expected);
    EXPECT_EQ(runHelper(), first);
}

TEST(UIDFactory, ThreadsGetDistinctUUIDs)
{
    ScopedEnvironment normal{"deterministic_uids"};
    std::vector<std::vector<Bytes>> made(4);
    std::vector<std::thread> threads;
    for (auto& list : made)
        threads.emplace_back(
            [&list]
            {
                for (int i = 0; i < 250; ++i)
                    list.push_back(bytesOf(newUUID()));
            });
    for (auto& thread : threads)
        thread.join();
    std::set<Bytes> distinct;
    for (const auto& list : made)
        distinct.insert(list.begin(), list.end());
    EXPECT_EQ(distinct.size(), 1000u);
}
