#include "MXF/SDK/Metadata/MetadataSetFactory.h"

#include "MXF/SDK/Templates/Singleton.h"

namespace MXF::SDK::Metadata
{

MetadataSetFactory& MetadataSetFactory::instance()
{
    return Templates::Singleton<MetadataSetFactory>::instance();
}

void MetadataSetFactory::registerCreator(const KLV::Key& key, Creator creator)
{
    creators_.insert_or_assign(key, creator);
}

bool MetadataSetFactory::hasCreator(const KLV::Key& key) const
{
    return creators_.count(key) != 0;
}

std::unique_ptr<MetadataSet> MetadataSetFactory::create(MetadataSetOwner* owner,
                                                        const MetaMetadata::Dictionary& dictionary,
                                                        const KLV::Key& key) const
{
    const MetaMetadata::MetaMetadataSet* meta =
        dictionary.metaMetadataSet(Types::UniversalLabel(key.data()));
    if (meta == nullptr)
        return std::make_unique<DarkParsedGroup>(owner, key);
    const auto found = creators_.find(key);
    if (found != creators_.end() && found->second != nullptr)
        return found->second(owner, *meta, key);
    return std::make_unique<MetadataSet>(owner, *meta, key);
}

} // namespace MXF::SDK::Metadata
