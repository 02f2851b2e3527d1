#pragma once

#include "MXF/SDK/MetaMetadata/MetaAttributes.h"
#include "MXF/SDK/MetaMetadata/PropertyMap.h"
#include "MXF/SDK/Types/UID.h"

#include <map>
#include <memory>
#include <vector>

namespace MXF::SDK::MetaMetadata
{

// The description of one kind of metadata set: its key, as a label, and its attributes, those of
// the sets it derives from included.
class MetaMetadataSet final : public PropertyMap
{
public:
    explicit MetaMetadataSet(const Types::UniversalLabel& universalLabel);
    ~MetaMetadataSet() override;
    MetaMetadataSet(const MetaMetadataSet&) = delete;
    MetaMetadataSet& operator=(const MetaMetadataSet&) = delete;

    const Types::UniversalLabel& universalLabel() const noexcept { return universalLabel_; }

    // Throws InvalidMetaAttribute "A MetaAttribute with UL <label> already exists in this
    // MetaMetadataSet" for a second attribute of a label, and then leaves the set as it was.
    void addMetaAttribute(std::shared_ptr<const MetaAttribute> attribute);
    // In the order they were added.
    const std::vector<std::shared_ptr<const MetaAttribute>>& metaAttributes() const noexcept
    {
        return attributes_;
    }
    // Null when the set has no attribute of this label.
    std::shared_ptr<const MetaAttribute> metaAttribute(const Types::UniversalLabel& label) const;

private:
    Types::UniversalLabel universalLabel_;
    std::vector<std::shared_ptr<const MetaAttribute>> attributes_;
    std::map<Types::UniversalLabel, std::shared_ptr<const MetaAttribute>> byLabel_;
};

} // namespace MXF::SDK::MetaMetadata
