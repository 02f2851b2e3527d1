#pragma once

#include <map>
#include <string>

namespace MXF::SDK::MetaMetadata
{

// The free-form annotations that the dictionary file gives an element, set or attribute, name to
// value. Setting a name again replaces its value.
class PropertyMap
{
public:
    PropertyMap() = default;
    PropertyMap(const PropertyMap&) = default;
    PropertyMap(PropertyMap&&) = default;
    PropertyMap& operator=(const PropertyMap&) = default;
    PropertyMap& operator=(PropertyMap&&) = default;
    virtual ~PropertyMap();

    void setProperty(const std::wstring& name, const std::wstring& value);
    // Throws NotFound "Property not found: " and the name.
    const std::wstring& property(const std::wstring& name) const;
    bool hasProperty(const std::wstring& name) const;
    const std::map<std::wstring, std::wstring>& properties() const noexcept { return properties_; }

private:
    std::map<std::wstring, std::wstring> properties_;
};

} // namespace MXF::SDK::MetaMetadata
