#pragma once

#include "MXF/SDK/MetaMetadata/PropertyMap.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/LocalTag.h"
#include "MXF/SDK/Types/UID.h"

#include <memory>
#include <optional>

namespace MXF::SDK::MetaMetadata
{

class MetaAttribute;
class MetaElement;
class MisplacedAttribute;
class UnknownAttribute;

// One slot a concrete attribute class, each with an empty body.
class MetaAttributeVisitor
{
public:
    virtual ~MetaAttributeVisitor() = default;
    virtual void visit(const MetaAttribute& /*attribute*/) {}
    virtual void visit(const UnknownAttribute& /*attribute*/) {}
    virtual void visit(const MisplacedAttribute& /*attribute*/) {}
};

// The attribute of a set as the metadata layer meets it: one that the dictionary describes for
// the set, or a stand-in for one that it doesn't.
class AbstractMetaAttribute
{
public:
    virtual ~AbstractMetaAttribute();

    virtual const Types::UniversalLabel& universalLabel() const noexcept = 0;
    virtual void accept(MetaAttributeVisitor& visitor) const = 0;

protected:
    AbstractMetaAttribute() = default;
    AbstractMetaAttribute(const AbstractMetaAttribute&) = default;
    AbstractMetaAttribute& operator=(const AbstractMetaAttribute&) = default;
};

// An attribute that a MetaMetadataSet describes.
class MetaAttribute final : public AbstractMetaAttribute, public PropertyMap
{
public:
    // Borrows `element`, which must outlive the attribute; a Dictionary keeps all its elements
    // for as long as it lives.
    MetaAttribute(const Types::UniversalLabel& universalLabel,
                  const std::optional<Types::LocalTag>& localTag, Platform::UInt32 requiredStatus,
                  const MetaElement& element);
    // Owns `element`: an element of the attribute's own, which no other attribute shares.
    MetaAttribute(const Types::UniversalLabel& universalLabel,
                  const std::optional<Types::LocalTag>& localTag, Platform::UInt32 requiredStatus,
                  std::unique_ptr<const MetaElement> element);
    ~MetaAttribute() override;
    MetaAttribute(const MetaAttribute&) = delete;
    MetaAttribute& operator=(const MetaAttribute&) = delete;

    const Types::UniversalLabel& universalLabel() const noexcept override
    {
        return universalLabel_;
    }
    // The static tag; null when the tag comes from each file's primer.
    const Types::LocalTag* localTag() const noexcept { return localTag_ ? &*localTag_ : nullptr; }
    // A number of AttributeRequiredStatus.
    Platform::UInt32 requiredStatus() const noexcept { return requiredStatus_; }
    const MetaElement& metaElement() const noexcept { return *element_; }
    void accept(MetaAttributeVisitor& visitor) const override;

private:
    Types::UniversalLabel universalLabel_;
    std::optional<Types::LocalTag> localTag_;
    Platform::UInt32 requiredStatus_;
    std::unique_ptr<const MetaElement> ownElement_;
    const MetaElement* element_;
};

// Stands in for a property whose label no MetaMetadataSet describes: its value stays bytes.
class UnknownAttribute final : public AbstractMetaAttribute
{
public:
    explicit UnknownAttribute(const Types::UniversalLabel& universalLabel);

    const Types::UniversalLabel& universalLabel() const noexcept override
    {
        return universalLabel_;
    }
    void accept(MetaAttributeVisitor& visitor) const override;

private:
    Types::UniversalLabel universalLabel_;
};

// Stands in for a property that the dictionary knows, but not in the set where it was found.
// Borrows `element`, the dictionary's element of the label.
class MisplacedAttribute final : public AbstractMetaAttribute
{
public:
    MisplacedAttribute(const Types::UniversalLabel& universalLabel, const MetaElement& element);

    const Types::UniversalLabel& universalLabel() const noexcept override
    {
        return universalLabel_;
    }
    const MetaElement& metaElement() const noexcept { return element_; }
    void accept(MetaAttributeVisitor& visitor) const override;

private:
    Types::UniversalLabel universalLabel_;
    const MetaElement& element_;
};

} // namespace MXF::SDK::MetaMetadata
