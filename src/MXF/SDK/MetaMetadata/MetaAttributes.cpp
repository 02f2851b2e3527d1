#include "MXF/SDK/MetaMetadata/MetaAttributes.h"

#include "MXF/SDK/MetaMetadata/MetaElements.h"

namespace MXF::SDK::MetaMetadata
{

AbstractMetaAttribute::~AbstractMetaAttribute() = default;

MetaAttribute::MetaAttribute(const Types::UniversalLabel& universalLabel,
                             const std::optional<Types::LocalTag>& localTag,
                             Platform::UInt32 requiredStatus, const MetaElement& element)
    : universalLabel_(universalLabel), localTag_(localTag), requiredStatus_(requiredStatus),
      element_(&element)
{
}

MetaAttribute::MetaAttribute(const Types::UniversalLabel& universalLabel,
                             const std::optional<Types::LocalTag>& localTag,
                             Platform::UInt32 requiredStatus,
                             std::unique_ptr<const MetaElement> element)
    : universalLabel_(universalLabel), localTag_(localTag), requiredStatus_(requiredStatus),
      ownElement_(std::move(element)), element_(ownElement_.get())
{
}

MetaAttribute::~MetaAttribute() = default;

void MetaAttribute::accept(MetaAttributeVisitor& visitor) const
{
    visitor.visit(*this);
}

UnknownAttribute::UnknownAttribute(const Types::UniversalLabel& universalLabel)
    : universalLabel_(universalLabel)
{
}

void UnknownAttribute::accept(MetaAttributeVisitor& visitor) const
{
    visitor.visit(*this);
}

MisplacedAttribute::MisplacedAttribute(const Types::UniversalLabel& universalLabel,
                                       const MetaElement& element)
    : universalLabel_(universalLabel), element_(element)
{
}

void MisplacedAttribute::accept(MetaAttributeVisitor& visitor) const
{
    visitor.visit(*this);
}

} // namespace MXF::SDK::MetaMetadata
