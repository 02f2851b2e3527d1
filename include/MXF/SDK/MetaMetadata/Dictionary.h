#pragma once

#include "MXF/SDK/MetaMetadata/MetaElements.h"
#include "MXF/SDK/MetaMetadata/MetaMetadataSet.h"
#include "MXF/SDK/Types/LocalTag.h"
#include "MXF/SDK/Types/UID.h"

#include <cstddef>
#include <memory>

namespace MXF::SDK::MetaMetadata
{

// The static local tags and the sets. Look-ups return null for what isn't there.
class LocalTagMap
{
public:
    virtual ~LocalTagMap() = default;

    // Pairs a tag with a label; a tag or a label paired before loses its old partner.
    virtual void addLocalTag(const Types::LocalTag& tag, const Types::UniversalLabel& label) = 0;
    virtual const Types::UniversalLabel* universalLabel(const Types::LocalTag& tag) const = 0;
    virtual const Types::LocalTag* localTag(const Types::UniversalLabel& label) const = 0;
    // Takes ownership; a set of the same label takes the place of the old one.
    virtual void addMetaMetadataSet(std::unique_ptr<MetaMetadataSet> set) = 0;
    virtual const MetaMetadataSet* metaMetadataSet(const Types::UniversalLabel& label) const = 0;
};

// The elements, by label. Look-ups return null for what isn't there.
class UniversalLabelMap
{
public:
    virtual ~UniversalLabelMap() = default;

    // Takes ownership; an element of the same label takes the place of the old one.
    virtual void addMetaElement(const Types::UniversalLabel& label,
                                std::unique_ptr<MetaElement> element) = 0;
    virtual const MetaElement* metaElement(const Types::UniversalLabel& label) const = 0;
};

// All that the dictionary file describes, owned here. Filled once (BinaryLoader) and then only
// read, which any number of threads may do at once. An address it gave out stays valid as long as
// the Dictionary lives, also after a later entry of the same label has taken its place.
class Dictionary final : public LocalTagMap, public UniversalLabelMap
{
public:
    Dictionary();
    ~Dictionary() override;
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;

    void addLocalTag(const Types::LocalTag& tag, const Types::UniversalLabel& label) override;
    const Types::UniversalLabel* universalLabel(const Types::LocalTag& tag) const override;
    const Types::LocalTag* localTag(const Types::UniversalLabel& label) const override;
    void addMetaMetadataSet(std::unique_ptr<MetaMetadataSet> set) override;
    const MetaMetadataSet* metaMetadataSet(const Types::UniversalLabel& label) const override;

    void addMetaElement(const Types::UniversalLabel& label,
                        std::unique_ptr<MetaElement> element) override;
    const MetaElement* metaElement(const Types::UniversalLabel& label) const override;

    // What can be looked up: replaced entries don't count.
    std::size_t localTagCount() const noexcept;
    std::size_t metaMetadataSetCount() const noexcept;
    std::size_t metaElementCount() const noexcept;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::MetaMetadata
