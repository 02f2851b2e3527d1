#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <memory>
#include <string>

namespace MXF::SDK::Utils
{

struct SMPTETimeCode;

// A SMPTE 12M time code at a whole-number rate. 29.97 drop frame is rate 30 with dropFrame; at 50
// and 60 a frame is two fields, `frames` counts pairs and fieldPhase marks the second field.
// Failures are InvalidValue; a failing setter leaves the value as it was.
class TimeCode
{
public:
    TimeCode();
    explicit TimeCode(Platform::UInt8 frameRate);
    TimeCode(Platform::UInt8 frameRate, Platform::UInt8 hours, Platform::UInt8 minutes,
             Platform::UInt8 seconds, Platform::UInt8 frames, bool dropFrame = false,
             bool fieldPhase = false);
    // A negative count gives an invalid time code that prints as "--:--:--:--"; counts of a day
    // and more wrap past midnight.
    TimeCode(Platform::UInt8 frameRate, Platform::Int64 frameCount, bool dropFrame);
    TimeCode(const TimeCode& other);
    TimeCode& operator=(const TimeCode& other);
    virtual ~TimeCode();

    Platform::UInt8 frameRate() const;
    Platform::UInt8 hours() const;
    Platform::UInt8 minutes() const;
    Platform::UInt8 seconds() const;
    Platform::UInt8 frames() const;
    bool dropFrame() const;
    bool fieldPhase() const;
    bool valid() const;

    void setFrameRate(Platform::UInt8 frameRate);
    void setHours(Platform::UInt8 hours);
    void setMinutes(Platform::UInt8 minutes);
    void setSeconds(Platform::UInt8 seconds);
    void setFrames(Platform::UInt8 frames);
    void setDropFrame(bool dropFrame);
    void setFieldPhase(bool fieldPhase);

    // 2 at 50 and 60 (two fields a frame), else 1.
    Platform::UInt8 multiplexFactor() const;
    // Fields (at 50 and 60) or frames since 00:00:00:00.
    Platform::Int64 frameCount() const;
    // One field or frame on, skipping the labels drop frame leaves out.
    TimeCode& operator++();

    // Equal when both are invalid; otherwise time and drop frame must match.
    bool operator==(const TimeCode& other) const;
    bool operator<(const TimeCode& other) const;

    // "hh:mm:ss:ff", with ".0"/".1" for the field at 50 and 60 when `withPhase`, and " (DF)" for
    // drop frame when `withDropFrame`.
    std::wstring toString(bool withPhase = false, bool withDropFrame = false) const;

private:
    void checkDropFrame(Platform::UInt8 rate) const;
    void validate(Platform::UInt8 rate, Platform::UInt8 h, Platform::UInt8 m, Platform::UInt8 s,
                  Platform::UInt8 f, bool phase) const;

    std::unique_ptr<SMPTETimeCode> value_;
};

// A time code with the binary groups and colour frame flag of its SMPTE 12M word.
class TimeCodeExtended : public TimeCode
{
public:
    using TimeCode::TimeCode;
    ~TimeCodeExtended() override = default;

    Platform::UInt32 binaryGroup0() const { return binaryGroup0_; }
    Platform::UInt32 binaryGroup1() const { return binaryGroup1_; }
    Platform::UInt16 binaryGroup2() const { return binaryGroup2_; }
    Platform::UInt8 binaryGroup2Low() const { return binaryGroup2Low_; }
    Platform::UInt8 colorFrame() const { return colorFrame_; }
    void setBinaryGroup0(Platform::UInt32 v) { binaryGroup0_ = v; }
    void setBinaryGroup1(Platform::UInt32 v) { binaryGroup1_ = v; }
    void setBinaryGroup2(Platform::UInt16 high, Platform::UInt8 low)
    {
        binaryGroup2_ = high;
        binaryGroup2Low_ = low;
    }
    void setColorFrame(Platform::UInt8 v) { colorFrame_ = v; }

private:
    Platform::UInt32 binaryGroup0_ = 0;
    Platform::UInt32 binaryGroup1_ = 0;
    Platform::UInt16 binaryGroup2_ = 0;
    Platform::UInt8 binaryGroup2Low_ = 0;
    Platform::UInt8 colorFrame_ = 0;
};

} // namespace MXF::SDK::Utils
