#include "MXF/SDK/MetaMetadata/AttributeRequiredStatus.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Templates/Singleton.h"

namespace MXF::SDK::MetaMetadata
{

AttributeRequiredStatus& AttributeRequiredStatus::instance()
{
    return Templates::Singleton<AttributeRequiredStatus>::instance();
}

AttributeRequiredStatus::AttributeRequiredStatus()
    : texts_{{REQUIRED, L"Req"},
             {ENCODER_REQUIRED, L"E/req"},
             {DECODER_REQUIRED, L"D/req"},
             {BEST_EFFORT, L"B.Effort"},
             {OPTIONAL, L"Opt"}}
{
    for (const auto& [status, text] : texts_)
        statuses_.emplace(text, status);
}

const std::wstring& AttributeRequiredStatus::text(Platform::UInt32 status) const
{
    const auto found = texts_.find(status);
    if (found == texts_.end())
        MXF_SDK_THROW(Exceptions::NotFound, L"StatusNotFound: " + std::to_wstring(status));
    return found->second;
}

Platform::UInt32 AttributeRequiredStatus::status(std::wstring_view text) const
{
    const auto found = statuses_.find(text);
    if (found == statuses_.end())
        MXF_SDK_THROW(Exceptions::NotFound, L"StatusNotFound: " + std::wstring(text));
    return found->second;
}

} // namespace MXF::SDK::MetaMetadata
