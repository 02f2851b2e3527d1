#include "MXF/SDK/MetaMetadata/MetaMetadataSet.h"

#include "MXF/SDK/Exceptions/Exceptions.h"

namespace MXF::SDK::MetaMetadata
{

MetaMetadataSet::MetaMetadataSet(const Types::UniversalLabel& universalLabel)
    : universalLabel_(universalLabel)
{
}

MetaMetadataSet::~MetaMetadataSet() = default;

void MetaMetadataSet::addMetaAttribute(std::shared_ptr<const MetaAttribute> attribute)
{
    const Types::UniversalLabel& label = attribute->universalLabel();
    if (byLabel_.count(label) != 0)
        MXF_SDK_THROW(Exceptions::InvalidMetaAttribute,
                      L"A MetaAttribute with UL " + label.toString() +
                          L" already exists in this MetaMetadataSet");
    attributes_.reserve(attributes_.size() + 1);
    byLabel_.emplace(label, attribute);
    attributes_.push_back(std::move(attribute));
}

std::shared_ptr<const MetaAttribute>
MetaMetadataSet::metaAttribute(const Types::UniversalLabel& label) const
{
    const auto found = byLabel_.find(label);
    return found != byLabel_.end() ? found->second : nullptr;
}

} // namespace MXF::SDK::MetaMetadata
