#include "MXF/SDK/MetaMetadata/PropertyMap.h"

#include "MXF/SDK/Exceptions/Exceptions.h"

namespace MXF::SDK::MetaMetadata
{

PropertyMap::~PropertyMap() = default;

void PropertyMap::setProperty(const std::wstring& name, const std::wstring& value)
{
    properties_.insert_or_assign(name, value);
}

const std::wstring& PropertyMap::property(const std::wstring& name) const
{
    const auto found = properties_.find(name);
    if (found == properties_.end())
        MXF_SDK_THROW(Exceptions::NotFound, L"Property not found: " + name);
    return found->second;
}

bool PropertyMap::hasProperty(const std::wstring& name) const
{
    return properties_.count(name) != 0;
}

} // namespace MXF::SDK::MetaMetadata
