#include "MXF/SDK/Metadata/Structural/Registration.h"

#include "MXF/SDK/Metadata/MetadataSetFactory.h"
#include "MXF/SDK/Metadata/Structural/Structural.h"

namespace MXF::SDK::Metadata::Structural
{

namespace
{

template <typename T>
std::unique_ptr<MetadataSet> create(MetadataSetOwner* owner,
                                    const MetaMetadata::MetaMetadataSet& metaMetadataSet,
                                    const KLV::Key& key)
{
    return std::make_unique<T>(owner, metaMetadataSet, key);
}

} // namespace

void registerStructuralSets()
{
    MetadataSetFactory& factory = MetadataSetFactory::instance();
#define MXF_SDK_STRUCTURAL_REGISTER(Class)                                                         \
    factory.registerCreator(Class::classKey(), &create<Class>);
    MXF_SDK_METADATA_FOR_EACH_STRUCTURAL_SET(MXF_SDK_STRUCTURAL_REGISTER)
#undef MXF_SDK_STRUCTURAL_REGISTER
}

} // namespace MXF::SDK::Metadata::Structural
