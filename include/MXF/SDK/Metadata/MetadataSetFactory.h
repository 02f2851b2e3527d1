#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Metadata/MetadataSet.h"

#include <map>
#include <memory>

namespace MXF::SDK::Templates
{
template <typename T>
class Singleton;
}

namespace MXF::SDK::Metadata
{

class MetadataSetOwner;

// Makes the set of a key: the typed class registered for it; else a plain MetadataSet when the
// dictionary knows the key, a DarkParsedGroup when it doesn't. One for the process: register at
// start-up, before sets are made on several threads.
class MetadataSetFactory
{
public:
    using Creator = std::unique_ptr<MetadataSet> (*)(
        MetadataSetOwner* owner, const MetaMetadata::MetaMetadataSet& metaMetadataSet,
        const KLV::Key& key);

    static MetadataSetFactory& instance();

    // Adds or replaces the creator of `key`.
    void registerCreator(const KLV::Key& key, Creator creator);
    bool hasCreator(const KLV::Key& key) const;
    std::unique_ptr<MetadataSet> create(MetadataSetOwner* owner,
                                        const MetaMetadata::Dictionary& dictionary,
                                        const KLV::Key& key) const;

    MetadataSetFactory(const MetadataSetFactory&) = delete;
    MetadataSetFactory& operator=(const MetadataSetFactory&) = delete;

private:
    template <typename>
    friend class Templates::Singleton;

    MetadataSetFactory() = default;
    ~MetadataSetFactory() = default;

    std::map<KLV::Key, Creator> creators_;
};

} // namespace MXF::SDK::Metadata
