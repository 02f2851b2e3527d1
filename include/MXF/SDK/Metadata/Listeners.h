#pragma once

#include "MXF/SDK/Types/UID.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"

#include <map>
#include <set>

namespace MXF::SDK::Metadata
{

class Element;
class MetadataSet;
class PartitionMetadata;

// Hears the life of the sets of a PartitionMetadata and of their elements.
class PartitionMetadataListener
{
public:
    virtual ~PartitionMetadataListener() = default;
    // A set was added (addSet, createSet) or read.
    virtual void setAdded(MetadataSet& set) = 0;
    // A set is about to be removed and deleted.
    virtual void setRemoving(MetadataSet& set) = 0;
    // An element took a value from the file (load): no change of the model.
    virtual void elementLoaded(Element& element) = 0;
    // An element's value is about to change; it still has the old one.
    virtual void valueChanging(Element& element) = 0;
    // ... and has changed.
    virtual void valueChanged(Element& element) = 0;
    virtual void invalidElementAdded(Element& element) = 0;
    // About to be removed and deleted.
    virtual void invalidElementRemoving(Element& element) = 0;
    // All sets of a read are in and the reference graph is built.
    virtual void metadataRead(PartitionMetadata& metadata) = 0;
};

namespace Listeners
{

// A listener that also answers look-ups of sets by InstanceUID.
class MetadataIndexListener : public PartitionMetadataListener
{
public:
    // Null when no set has that InstanceUID.
    virtual MetadataSet* findSet(const Types::UUID& instanceUID) const = 0;
};

} // namespace Listeners

// Empty bodies for every slot; finds nothing.
class BaseMetadataIndexListener : public Listeners::MetadataIndexListener
{
public:
    void setAdded(MetadataSet& /*set*/) override {}
    void setRemoving(MetadataSet& /*set*/) override {}
    void elementLoaded(Element& /*element*/) override {}
    void valueChanging(Element& /*element*/) override {}
    void valueChanged(Element& /*element*/) override {}
    void invalidElementAdded(Element& /*element*/) override {}
    void invalidElementRemoving(Element& /*element*/) override {}
    void metadataRead(PartitionMetadata& /*metadata*/) override {}
    MetadataSet* findSet(const Types::UUID& /*instanceUID*/) const override { return nullptr; }
};

using MetadataIndex = std::map<Types::UUID, MetadataSet*>;

// Keeps a PartitionMetadata's index from InstanceUID to set up to date when an InstanceUID
// changes or a set goes; indexing sets as they come is the PartitionMetadata's own work, since
// it checks them.
class DefaultMetadataIndexListener final : public BaseMetadataIndexListener
{
public:
    explicit DefaultMetadataIndexListener(MetadataIndex& index) : index_(index) {}

    void setRemoving(MetadataSet& set) override;
    void valueChanging(Element& element) override;
    void valueChanged(Element& element) override;
    MetadataSet* findSet(const Types::UUID& instanceUID) const override;

private:
    MetadataIndex& index_;
    std::set<const Element*> reindex_;
};

// Walks the value of an element that changes and takes the identifiers it holds out of the index,
// where they point at `set`.
class RemoveFromMetadataElementMapVisitor final : public Types::Visitors::NullVisitor
{
public:
    RemoveFromMetadataElementMapVisitor(MetadataIndex& index, const MetadataSet& set)
        : index_(index), set_(set)
    {
    }
    using NullVisitor::visit;
    void visit(const Types::UUID& value) override;

private:
    MetadataIndex& index_;
    const MetadataSet& set_;
};

} // namespace MXF::SDK::Metadata
