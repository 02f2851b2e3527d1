#include "MXF/SDK/Types/Factories/UIDFactory.h"

#include "Framework/Counter.h"
#include "Framework/Framework.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Platform.h"
#include "MXF/SDK/Synchronization/Mutex.h"
#include "MXF/SDK/Templates/Singleton.h"

#include <algorithm>
#include <chrono>

namespace MXF::SDK::Types::Factories
{

using Platform::Byte;

namespace
{

// What the factories share in the process. The mutex is held for a whole creation, so the
// sequence number needs no lock of its own.
struct IdentificationState
{
    Synchronization::Mutex mutex;
    // Counts the 100-nanosecond intervals below the millisecond of version 1 time snaps.
    Platform::UInt16 sequence = 0;

    Platform::UInt16 nextSequence()
    {
        const Platform::UInt16 taken = sequence;
        sequence = sequence >= 10000 ? 0 : static_cast<Platform::UInt16>(sequence + 1);
        return taken;
    }
};

Byte randomByte()
{
    return static_cast<Byte>(KEP::Framework::Framework::randomNumber() & 0xFF);
}

void writeLittleEndian(Platform::UInt32 value, Byte* out)
{
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<Byte>(value >> (8 * i));
}

// 0x01 bytes with the counter's next value, little-endian, in the first four: identical files
// from identical runs.
template <std::size_t N>
void makeDeterministic(Byte (&out)[N])
{
    std::fill(out, out + N, Byte(0x01));
    writeLittleEndian(
        KEP::Framework::Counting::Counter::counter("MXF::SDK_Deterministic_Counter").next(), out);
}

Platform::Int64 secondsSinceEpoch(const std::tm& time)
{
    using namespace std::chrono;
    const sys_days date = year(time.tm_year + 1900) /
                          month(static_cast<unsigned>(time.tm_mon + 1)) /
                          day(static_cast<unsigned>(time.tm_mday));
    return Platform::Int64(date.time_since_epoch().count()) * 86400 + time.tm_hour * 3600 +
           time.tm_min * 60 + time.tm_sec;
}

struct Now
{
    std::tm utc;
    Platform::UInt16 millisecond;
    int utcOffsetMinutes;
};

Now now()
{
    using namespace std::chrono;
    const auto point = system_clock::now();
    const std::time_t time = system_clock::to_time_t(point);
    const std::tm utc = Platform::gmtTime(time);
    const std::tm local = Platform::localTime(time);
    const auto millisecond = duration_cast<milliseconds>(point.time_since_epoch()).count() % 1000;
    return {utc, static_cast<Platform::UInt16>(millisecond),
            static_cast<int>((secondsSinceEpoch(local) - secondsSinceEpoch(utc)) / 60)};
}

// RFC 4122 time snap of the version given, into out[0..7].
void writeUUIDTimeSnap(TimeSnapVersion version, IdentificationState& state, Byte* out)
{
    switch (version)
    {
    case TIME_SNAP_VERSION_1:
    {
        const Now time = now();
        const TimeSnap snap = uuidTimeSnap(time.utc, time.millisecond, state.nextSequence());
        std::copy(snap.begin(), snap.end(), out);
        return;
    }
    case TIME_SNAP_VERSION_2:
        MXF_SDK_THROW(Exceptions::NotImplemented,
                      "setUUIDTimeSnap:: TIME_SNAP_VERSION_2 not implemented: use "
                      "TIME_SNAP_VERSION_1");
    case TIME_SNAP_VERSION_3:
        MXF_SDK_THROW(Exceptions::NotImplemented,
                      "setUUIDTimeSnap:: TIME_SNAP_VERSION_3 not implemented: use "
                      "TIME_SNAP_VERSION_1");
    case TIME_SNAP_VERSION_4:
        std::generate(out, out + 8, randomByte);
        out[6] = static_cast<Byte>((out[6] & 0x0F) | 0x40);
        return;
    }
}

// The clock sequence with the RFC 4122 variant bits 10, then the node identifier: out[0..7].
void writeUUIDNode(Byte* out)
{
    out[0] = static_cast<Byte>((randomByte() & 0x3F) | 0x80);
    out[1] = randomByte();
    const auto& node = Platform::nodeIdentifier();
    std::copy(node.begin(), node.end(), out + 2);
}

void writeSMPTETimeSnap(Byte* out)
{
    const Now time = now();
    const TimeSnap snap = smpteTimeSnap(time.utc, time.millisecond, time.utcOffsetMinutes);
    std::copy(snap.begin(), snap.end(), out);
}

Byte bcd(Platform::UInt32 twoDigits)
{
    return static_cast<Byte>(((twoDigits / 10) << 4) | (twoDigits % 10));
}

IdentificationState& identificationState()
{
    return Templates::Singleton<IdentificationState>::instance();
}

} // namespace

bool deterministicMode()
{
    std::wstring value;
    return Platform::getEnvironment(L"deterministic_uids", value) && value == L"true";
}

UUID newUUID(TimeSnapVersion version)
{
    IdentificationState& state = identificationState();
    Synchronization::Mutex::ScopedLock lock(state.mutex);
    Byte bytes[UUID::SIZE] = {};
    if (deterministicMode())
        makeDeterministic(bytes);
    else
    {
        writeUUIDTimeSnap(version, state, bytes);
        writeUUIDNode(bytes + 8);
    }
    return UUID(bytes);
}

UMID32 newUMID32(Byte materialType, MaterialNumberMethod materialMethod,
                 InstanceNumberMethod instanceMethod, Platform::UInt32 instanceArgument,
                 TimeSnapVersion version)
{
    IdentificationState& state = identificationState();
    Synchronization::Mutex::ScopedLock lock(state.mutex);
    Byte bytes[UMID32::SIZE] = {0x06, 0x0A, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x05, 0x01, 0x01};
    if (deterministicMode())
    {
        makeDeterministic(bytes);
        return UMID32(bytes);
    }
    bytes[10] = materialType;
    bytes[11] = static_cast<Byte>(Byte(materialMethod) | Byte(instanceMethod));
    bytes[12] = 0x13;

    Byte* instance = bytes + 13;
    switch (instanceMethod)
    {
    case INMI_LOCAL_REGISTRATION:
    case INMI_24BIT_PRN:
        std::generate(instance, instance + 3, randomByte);
        break;
    case INMI_24BIT_PRS:
        for (int i = 0; i < 3; ++i)
            instance[i] = static_cast<Byte>(instanceArgument >> (8 * (i + 1)));
        break;
    case INMI_LIVE_STREAM:
        instance[0] = static_cast<Byte>(instanceArgument);
        instance[1] = randomByte();
        instance[2] = randomByte();
        break;
    default:
        break;
    }

    Byte* material = bytes + 16;
    const auto& node = Platform::nodeIdentifier();
    switch (materialMethod)
    {
    case MNMI_NO_METHOD:
    case MNMI_SMPTE:
        writeSMPTETimeSnap(material);
        material[8] = randomByte();
        material[9] = randomByte();
        std::copy(node.begin(), node.end(), material + 10);
        break;
    case MNMI_UUID_UL:
        writeUUIDTimeSnap(version, state, material);
        writeUUIDNode(material + 8);
        break;
    case MNMI_MASKED:
        MXF_SDK_THROW(Exceptions::NotImplemented,
                      "setMaterialNumber:: MNMI_MASKED not implemented: use other type");
    case MNMI_IEEE1394:
        // The node identifier widened to an EUI-64, as IEEE 1394 does: FF FF in the middle.
        writeSMPTETimeSnap(material);
        std::copy(node.begin(), node.begin() + 3, material + 8);
        material[11] = 0xFF;
        material[12] = 0xFF;
        std::copy(node.begin() + 3, node.end(), material + 13);
        break;
    default:
        break;
    }
    return UMID32(bytes);
}

TimeSnap uuidTimeSnap(const std::tm& utc, Platform::UInt16 millisecond,
                      Platform::UInt16 hundredNanoseconds)
{
    // From 15 October 1582 to 1 January 1970, in 100-nanosecond intervals.
    constexpr Platform::UInt64 GREGORIAN_TO_UNIX = 0x01B21DD213814000;
    const Platform::UInt64 t =
        GREGORIAN_TO_UNIX +
        static_cast<Platform::UInt64>((secondsSinceEpoch(utc) * 1000 + millisecond) * 10000 +
                                      hundredNanoseconds);
    return {static_cast<Byte>(t >> 24),
            static_cast<Byte>(t >> 16),
            static_cast<Byte>(t >> 8),
            static_cast<Byte>(t),
            static_cast<Byte>(t >> 40),
            static_cast<Byte>(t >> 32),
            static_cast<Byte>(0x10 | ((t >> 56) & 0x0F)),
            static_cast<Byte>(t >> 48)};
}

TimeSnap smpteTimeSnap(const std::tm& utc, Platform::UInt16 millisecond, int utcOffsetMinutes)
{
    TimeSnap snap{};
    const auto sinceMidnight = static_cast<Platform::UInt32>(
        ((utc.tm_hour * 60 + utc.tm_min) * 60 + utc.tm_sec) * 1000 + millisecond);
    writeLittleEndian(sinceMidnight, snap.data());
    // Two BCD digits a byte from byte 4 on; a fourth byte would be byte 7, which the time zone
    // then overwrites.
    Platform::UInt32 date = modifiedJulianDate(utc);
    for (std::size_t i = 4; i < 8 && date > 0; ++i, date /= 100)
        snap[i] = bcd(date % 100);
    snap[7] = static_cast<Byte>(0x80 | (timeZoneCode(utcOffsetMinutes) & 0x3F));
    return snap;
}

Platform::UInt32 modifiedJulianDate(const std::tm& utc)
{
    const int years = utc.tm_year - 1; // since 1901, from which four years have 1461 days
    return static_cast<Platform::UInt32>(15385 + (years % 4) * 365 + (years / 4) * 1461 +
                                         utc.tm_yday);
}

Byte timeZoneCode(int utcOffsetMinutes)
{
    struct Zone
    {
        int minutes;
        Byte code;
    };
    static constexpr Zone ZONES[] = {
        {0, 0x00},    {-60, 0x01},  {-120, 0x02}, {-180, 0x03}, {-240, 0x04}, {-300, 0x05},
        {-360, 0x06}, {-420, 0x07}, {-480, 0x08}, {-540, 0x09}, {-30, 0x0A},  {-90, 0x0B},
        {-150, 0x0C}, {-210, 0x0D}, {-270, 0x0E}, {-330, 0x0F}, {-600, 0x10}, {-660, 0x11},
        {-720, 0x12}, {780, 0x13},  {720, 0x14},  {660, 0x15},  {600, 0x16},  {540, 0x17},
        {480, 0x18},  {420, 0x19},  {-390, 0x1A}, {-450, 0x1B}, {-510, 0x1C}, {-570, 0x1D},
        {-630, 0x1E}, {-690, 0x1F}, {360, 0x20},  {300, 0x21},  {240, 0x22},  {180, 0x23},
        {120, 0x24},  {60, 0x25},   {690, 0x2A},  {630, 0x2B},  {570, 0x2C},  {510, 0x2D},
        {450, 0x2E},  {390, 0x2F},  {765, 0x32},  {330, 0x3A},  {270, 0x3B},  {210, 0x3C},
        {150, 0x3D},  {90, 0x3E},   {30, 0x3F},
    };
    constexpr Byte UNKNOWN = 0x39;
    for (const Zone& zone : ZONES)
    {
        if (zone.minutes == utcOffsetMinutes)
            return zone.code;
    }
    return UNKNOWN;
}

} // namespace MXF::SDK::Types::Factories
