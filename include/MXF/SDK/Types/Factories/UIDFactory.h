#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/UID.h"

#include <array>
#include <ctime>

// New UUIDs and UMIDs. Both take one process-wide mutex for the whole creation.
//
// Deterministic mode: when the environment variable "deterministic_uids" is "true" (asked at
// every creation), a UUID is 16 bytes of 0x01 and a UMID32 32 bytes of 0x01, the first 4 bytes of
// either replaced by the next value of the counter "MXF::SDK_Deterministic_Counter", 32-bit
// little-endian. Two runs of a program then write byte-identical files.
namespace MXF::SDK::Types::Factories
{

using TimeSnap = std::array<Platform::Byte, 8>;

enum TimeSnapVersion
{
    // RFC 4122 time-based: 100-nanosecond intervals since 15 October 1582.
    TIME_SNAP_VERSION_1 = 1,
    // Not implemented: throw NotImplemented.
    TIME_SNAP_VERSION_2 = 2,
    TIME_SNAP_VERSION_3 = 3,
    // RFC 4122 random.
    TIME_SNAP_VERSION_4 = 4
};

// SMPTE 330M, the method byte of the UMID label (byte 12 counting from 1): the upper nibble says
// how the material number was made.
enum MaterialNumberMethod : Platform::Byte
{
    MNMI_NO_METHOD = 0x00,
    MNMI_SMPTE = 0x10,
    MNMI_UUID_UL = 0x20,
    MNMI_MASKED = 0x30, // not implemented: throws NotImplemented
    MNMI_IEEE1394 = 0x40
};

// ... and the lower nibble how the instance number was made.
enum InstanceNumberMethod : Platform::Byte
{
    INMI_LOCAL_REGISTRATION = 0x00,
    INMI_24BIT_PRS = 0x01,
    INMI_24BIT_PRN = 0x02,
    INMI_LIVE_STREAM = 0x03,
    INMI_NOT_DEFINED = 0x0F
};

bool deterministicMode();

// RFC 4122: the time snap of `version` (TIME_SNAP_VERSION_2 and _3 throw NotImplemented
// "setUUIDTimeSnap:: TIME_SNAP_VERSION_2 not implemented: use TIME_SNAP_VERSION_1", "..._3 ...";
// another value leaves the 8 bytes zero), then 2 random bytes with the variant bits 10, then the
// node identifier of Platform (6 bytes).
UUID newUUID(TimeSnapVersion version = TIME_SNAP_VERSION_1);

// A SMPTE 330M basic UMID, 32 bytes:
//   0-9    label 06 0A 2B 34 01 01 01 05 01 01
//   10     material type
//   11     materialMethod | instanceMethod
//   12     length of what follows, 0x13
//   13-15  instance number: 3 random bytes (methods 0 and 2); bytes 1 to 3 of
//          `instanceArgument` taken as a little-endian number (method 1); its byte 0 and 2
//          random bytes (method 3); zero otherwise
//   16-31  material number: SMPTE time snap, 2 random bytes, node identifier (methods 0x00 and
//          0x10); the bytes of newUUID with `version` (0x20); SMPTE time snap, node identifier
//          bytes 0-2, FF, FF, bytes 3-5 (0x40); zero otherwise. 0x30 throws NotImplemented
//          "setMaterialNumber:: MNMI_MASKED not implemented: use other type".
UMID32 newUMID32(Platform::Byte materialType, MaterialNumberMethod materialMethod,
                 InstanceNumberMethod instanceMethod, Platform::UInt32 instanceArgument = 0,
                 TimeSnapVersion version = TIME_SNAP_VERSION_1);

// The first 8 bytes of a version 1 UUID (RFC 4122, 4.1.2): with t the count of 100-nanosecond
// intervals since 15 October 1582, 00:00 UTC, time_low (t's low 32 bits), time_mid (the next 16),
// each big-endian, then 0x10 | t's top 4 bits, then t's bits 48-55. `hundredNanoseconds` counts
// below the millisecond.
TimeSnap uuidTimeSnap(const std::tm& utc, Platform::UInt16 millisecond,
                      Platform::UInt16 hundredNanoseconds);

// The SMPTE 330M time snap of the SMPTE method of making a material number, 8 bytes:
//   0-3  milliseconds since midnight UTC, 32-bit little-endian
//   4-6  modified Julian date in BCD, two digits a byte, lowest digits first
//   7    0x80 | timeZoneCode(utcOffsetMinutes)
TimeSnap smpteTimeSnap(const std::tm& utc, Platform::UInt16 millisecond, int utcOffsetMinutes);

// Days since 17 November 1858 of a UTC date, from tm_year and tm_yday (years from 1901 on).
Platform::UInt32 modifiedJulianDate(const std::tm& utc);

// The SMPTE 309M time zone code (6 bits) of an offset from UTC in minutes, east positive:
//   00 UTC, 01-09 UTC-1h to -9h, 10-12 -10h to -12h, 13 +13h, 14-19 +12h to +7h, 20-25 +6h to +1h,
//   0A-0F -0h30 to -5h30, 1A-1F -6h30 to -11h30, 2A-2F +11h30 to +6h30, 3A-3F +5h30 to +0h30,
//   32 +12h45. An offset not listed gives 39, "unknown".
Platform::Byte timeZoneCode(int utcOffsetMinutes);

} // namespace MXF::SDK::Types::Factories
