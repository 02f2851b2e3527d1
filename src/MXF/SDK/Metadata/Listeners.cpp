#include "MXF/SDK/Metadata/Listeners.h"

#include "ElementSupport.h"
#include "MXF/SDK/Metadata/Element.h"
#include "MXF/SDK/Metadata/MetadataSet.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"

namespace MXF::SDK::Metadata
{

void DefaultMetadataIndexListener::setRemoving(MetadataSet& set)
{
    for (auto at = index_.begin(); at != index_.end();)
        at = at->second == &set ? index_.erase(at) : std::next(at);
}

void DefaultMetadataIndexListener::valueChanging(Element& element)
{
    if (!(element.universalLabel() == Support::instanceUIDLabel()))
        return;
    const std::size_t before = index_.size();
    RemoveFromMetadataElementMapVisitor remove(index_, element.owner());
    element.accept(static_cast<Types::Visitors::Visitor&>(remove));
    // Only a set that was indexed is indexed anew: one that isn't in the PartitionMetadata yet
    // is indexed when it is added.
    if (index_.size() != before)
        reindex_.insert(&element);
}

void DefaultMetadataIndexListener::valueChanged(Element& element)
{
    if (reindex_.erase(&element) == 0)
        return;
    if (const Types::BaseType* value = element.value())
        if (const Types::UUID* uid = Types::Visitors::getAs<Types::UUID>(*value))
            index_[*uid] = &element.owner();
}

MetadataSet* DefaultMetadataIndexListener::findSet(const Types::UUID& instanceUID) const
{
    const auto found = index_.find(instanceUID);
    return found != index_.end() ? found->second : nullptr;
}

void RemoveFromMetadataElementMapVisitor::visit(const Types::UUID& value)
{
    const auto found = index_.find(value);
    if (found != index_.end() && found->second == &set_)
        index_.erase(found);
}

} // namespace MXF::SDK::Metadata
