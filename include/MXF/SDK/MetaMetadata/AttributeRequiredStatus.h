#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <map>
#include <string>
#include <string_view>

namespace MXF::SDK::Templates
{
template <typename T>
class Singleton;
}

namespace MXF::SDK::MetaMetadata
{

// The required status of an attribute, the columns of SMPTE 377M, as a number and as text: 0
// "Req", 1 "E/req", 2 "D/req", 3 "B.Effort", 4 "Opt". One for the process, safe from any thread.
class AttributeRequiredStatus
{
public:
    enum Status : Platform::UInt32
    {
        REQUIRED = 0,
        ENCODER_REQUIRED = 1,
        DECODER_REQUIRED = 2,
        BEST_EFFORT = 3,
        OPTIONAL = 4
    };

    static AttributeRequiredStatus& instance();

    // Throws NotFound "StatusNotFound: " and the number.
    const std::wstring& text(Platform::UInt32 status) const;
    // Throws NotFound "StatusNotFound: " and the text.
    Platform::UInt32 status(std::wstring_view text) const;

    AttributeRequiredStatus(const AttributeRequiredStatus&) = delete;
    AttributeRequiredStatus& operator=(const AttributeRequiredStatus&) = delete;

private:
    template <typename>
    friend class Templates::Singleton;

    AttributeRequiredStatus();
    ~AttributeRequiredStatus() = default;

    std::map<Platform::UInt32, std::wstring> texts_;
    std::map<std::wstring, Platform::UInt32, std::less<>> statuses_;
};

} // namespace MXF::SDK::MetaMetadata
