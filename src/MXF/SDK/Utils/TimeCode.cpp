#include "MXF/SDK/Utils/TimeCode.h"

#include "Framework/MemoryManager.h"
#include "MXF/SDK/Exceptions/Exceptions.h"

#include <cstdio>
#include <new>

namespace MXF::SDK::Utils
{

using Platform::Int64;
using Platform::UInt8;

struct SMPTETimeCode
{
    UInt8 frameRate = 0;
    UInt8 hours = 0;
    UInt8 minutes = 0;
    UInt8 seconds = 0;
    UInt8 frames = 0;
    bool dropFrame = false;
    bool valid = false;
    bool fieldPhase = false;

    static void* operator new(std::size_t size)
    {
        void* p = KEP::Framework::Management::MemoryManager::allocate(size);
        if (p == nullptr)
            throw std::bad_alloc();
        return p;
    }
    static void operator delete(void* p) noexcept
    {
        KEP::Framework::Management::MemoryManager::deallocate(p);
    }
};

namespace
{

UInt8 multiplexFor(UInt8 rate, bool valid)
{
    return valid && (rate == 50 || rate == 60) ? 2 : 1;
}

std::wstring twoDigits(int value)
{
    wchar_t text[8];
    std::swprintf(text, 8, L"%02d", value);
    return text;
}

std::wstring clock(int h, int m, int s, int f)
{
    return twoDigits(h) + L":" + twoDigits(m) + L":" + twoDigits(s) + L":" + twoDigits(f);
}

} // namespace

TimeCode::TimeCode() : value_(std::make_unique<SMPTETimeCode>()) {}

TimeCode::TimeCode(UInt8 frameRate) : TimeCode()
{
    MXF_SDK_CHECK_AS(frameRate > 0, "frameRate_ > 0", "Invalid frameRate.",
                     Exceptions::InvalidValue);
    value_->frameRate = frameRate;
    value_->valid = true;
}

TimeCode::TimeCode(UInt8 frameRate, UInt8 hours, UInt8 minutes, UInt8 seconds, UInt8 frames,
                   bool dropFrame, bool fieldPhase)
    : TimeCode(frameRate)
{
    *value_ =
        SMPTETimeCode{frameRate, hours, minutes, seconds, frames, dropFrame, true, fieldPhase};
    checkDropFrame(frameRate);
    validate(frameRate, hours, minutes, seconds, frames, fieldPhase);
}

TimeCode::TimeCode(UInt8 r, Int64 n, bool dropFrame) : TimeCode(r)
{
    SMPTETimeCode& v = *value_;
    v.dropFrame = dropFrame;
    if (n < 0)
        v.valid = false;
    else if (!dropFrame)
    {
        const Int64 perDay = Int64(r) * 86400;
        if (n >= perDay)
            n %= perDay;
        v.hours = static_cast<UInt8>(n / (Int64(r) * 3600));
        n %= Int64(r) * 3600;
        v.minutes = static_cast<UInt8>(n / (Int64(r) * 60));
        n %= Int64(r) * 60;
        v.seconds = static_cast<UInt8>(n / r);
        v.frames = static_cast<UInt8>(n % r);
    }
    else
    {
        checkDropFrame(r);
        const Int64 mf = multiplexFactor();
        const Int64 perHour = Int64(r) * 3600 - mf * 108;
        if (n >= perHour * 24)
            n %= perHour * 24;
        v.hours = static_cast<UInt8>(n / perHour);
        Int64 rest = n % perHour;
        // Every minute but the tenth skips two labels (four fields at 60).
        while (rest > 0)
        {
            if (rest >= Int64(r) * 60)
            {
                ++v.minutes;
                rest -= Int64(r) * 60;
                if (v.minutes % 10 != 0)
                    rest += 2 * mf;
            }
            else
            {
                v.seconds = static_cast<UInt8>(rest / r);
                v.frames = static_cast<UInt8>(rest % r);
                break;
            }
        }
    }
    if (v.valid && (r == 50 || r == 60))
    {
        v.fieldPhase = v.frames % 2 != 0;
        v.frames /= 2;
    }
    validate(r, v.hours, v.minutes, v.seconds, v.frames, v.fieldPhase);
}

TimeCode::TimeCode(const TimeCode& other) : value_(std::make_unique<SMPTETimeCode>(*other.value_))
{
}

TimeCode& TimeCode::operator=(const TimeCode& other)
{
    *value_ = *other.value_;
    return *this;
}

TimeCode::~TimeCode() = default;

UInt8 TimeCode::frameRate() const
{
    return value_->frameRate;
}
UInt8 TimeCode::hours() const
{
    return value_->hours;
}
UInt8 TimeCode::minutes() const
{
    return value_->minutes;
}
UInt8 TimeCode::seconds() const
{
    return value_->seconds;
}
UInt8 TimeCode::frames() const
{
    return value_->frames;
}
bool TimeCode::dropFrame() const
{
    return value_->dropFrame;
}
bool TimeCode::fieldPhase() const
{
    return value_->fieldPhase;
}
bool TimeCode::valid() const
{
    return value_->valid;
}

UInt8 TimeCode::multiplexFactor() const
{
    return multiplexFor(value_->frameRate, value_->valid);
}

void TimeCode::checkDropFrame(UInt8 rate) const
{
    if (value_->dropFrame && rate != 30 && rate != 60 && rate != 24)
        MXF_SDK_THROW(Exceptions::InvalidValue,
                      L"Drop frame only allowed in 30 or 60 fps timecode and not for " +
                          std::to_wstring(value_->frameRate) + L" fps timecode.");
}

void TimeCode::validate(UInt8 rate, UInt8 h, UInt8 m, UInt8 s, UInt8 f, bool phase) const
{
    const UInt8 mf = multiplexFor(rate, value_->valid);
    if (phase)
        MXF_SDK_CHECK_AS(mf != 1, "this -> multiplexFactor () != 1",
                         "Field Phase value is only supported for frame rate of 60 or 50.",
                         Exceptions::InvalidValue);
    if (!(h <= 23 && m <= 59 && s <= 59 && f < rate / mf))
        MXF_SDK_THROW(Exceptions::InvalidValue, L"Invalid value of " + clock(h, m, s, f) +
                                                    L" for " + std::to_wstring(rate) +
                                                    L" fps timecode");
    // Checks the stored minutes and frames, as it always has: setters validate before storing.
    if (value_->dropFrame && s == 0 && value_->minutes % 10 != 0 && value_->frames < 2)
        MXF_SDK_THROW(Exceptions::InvalidValue, L"Invalid value of " + clock(h, m, 0, f) +
                                                    L" for " + std::to_wstring(rate) +
                                                    L" fps drop frame timecode");
}

void TimeCode::setFrameRate(UInt8 frameRate)
{
    MXF_SDK_CHECK_AS(frameRate > 0, "frameRate_ > 0", "Invalid frameRate.",
                     Exceptions::InvalidValue);
    checkDropFrame(frameRate);
    const SMPTETimeCode& v = *value_;
    validate(frameRate, v.hours, v.minutes, v.seconds, v.frames, v.fieldPhase);
    value_->frameRate = frameRate;
}

void TimeCode::setHours(UInt8 hours)
{
    const SMPTETimeCode& v = *value_;
    validate(v.frameRate, hours, v.minutes, v.seconds, v.frames, v.fieldPhase);
    value_->hours = hours;
}

void TimeCode::setMinutes(UInt8 minutes)
{
    const SMPTETimeCode& v = *value_;
    validate(v.frameRate, v.hours, minutes, v.seconds, v.frames, v.fieldPhase);
    value_->minutes = minutes;
}

void TimeCode::setSeconds(UInt8 seconds)
{
    const SMPTETimeCode& v = *value_;
    validate(v.frameRate, v.hours, v.minutes, seconds, v.frames, v.fieldPhase);
    value_->seconds = seconds;
}

void TimeCode::setFrames(UInt8 frames)
{
    const SMPTETimeCode& v = *value_;
    validate(v.frameRate, v.hours, v.minutes, v.seconds, frames, v.fieldPhase);
    value_->frames = frames;
}

void TimeCode::setDropFrame(bool dropFrame)
{
    if (dropFrame && value_->frameRate != 30 && value_->frameRate != 60 && value_->frameRate != 24)
        MXF_SDK_THROW(Exceptions::InvalidValue,
                      L"Drop frame only allowed in 30 or 60 fps timecode and not for " +
                          std::to_wstring(value_->frameRate) + L" fps timecode.");
    value_->dropFrame = dropFrame;
}

void TimeCode::setFieldPhase(bool fieldPhase)
{
    const SMPTETimeCode& v = *value_;
    validate(v.frameRate, v.hours, v.minutes, v.seconds, v.frames, fieldPhase);
    value_->fieldPhase = fieldPhase;
}

Int64 TimeCode::frameCount() const
{
    const SMPTETimeCode& v = *value_;
    const Int64 mf = multiplexFactor();
    const Int64 total = ((Int64(v.hours) * 60 + v.minutes) * 60 + v.seconds) * v.frameRate +
                        Int64(v.frames) * mf + (v.fieldPhase ? 1 : 0);
    if (!v.dropFrame)
        return total;
    return total - 2 * (mf * (v.minutes - v.minutes / 10) + Int64(v.hours) * mf * 54);
}

TimeCode& TimeCode::operator++()
{
    SMPTETimeCode& v = *value_;
    if (v.valid && (v.frameRate == 50 || v.frameRate == 60) && !v.fieldPhase)
    {
        v.fieldPhase = true;
        return *this;
    }
    v.fieldPhase = false;
    if (++v.frames >= v.frameRate / multiplexFactor())
    {
        v.frames = 0;
        if (++v.seconds == 60)
        {
            v.seconds = 0;
            if (++v.minutes == 60)
            {
                v.minutes = 0;
                if (++v.hours == 24)
                    v.hours = 0;
            }
        }
    }
    if (v.dropFrame && v.frames == 0 && v.seconds == 0 && v.minutes % 10 != 0)
        v.frames = 2;
    return *this;
}

bool TimeCode::operator==(const TimeCode& other) const
{
    const SMPTETimeCode& a = *value_;
    const SMPTETimeCode& b = *other.value_;
    if (a.valid != b.valid)
        return false;
    if (!a.valid)
        return true;
    return a.hours == b.hours && a.minutes == b.minutes && a.seconds == b.seconds &&
           a.frames == b.frames && a.dropFrame == b.dropFrame;
}

bool TimeCode::operator<(const TimeCode& other) const
{
    const SMPTETimeCode& a = *value_;
    const SMPTETimeCode& b = *other.value_;
    if (a.hours != b.hours)
        return a.hours < b.hours;
    if (a.minutes != b.minutes)
        return a.minutes < b.minutes;
    if (a.seconds != b.seconds)
        return a.seconds < b.seconds;
    return a.frames < b.frames;
}

std::wstring TimeCode::toString(bool withPhase, bool withDropFrame) const
{
    const SMPTETimeCode& v = *value_;
    if (!v.valid)
        return L"--:--:--:--";
    std::wstring text = clock(v.hours, v.minutes, v.seconds, v.frames);
    if (withPhase && (v.frameRate == 50 || v.frameRate == 60))
        text += v.fieldPhase ? L".1" : L".0";
    if (withDropFrame && v.dropFrame)
        text += L" (DF)";
    return text;
}

} // namespace MXF::SDK::Utils
