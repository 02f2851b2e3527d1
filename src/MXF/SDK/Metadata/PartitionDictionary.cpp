#include "MXF/SDK/Metadata/PartitionDictionary.h"

#include "MXF/SDK/Exceptions/Exceptions.h"

namespace MXF::SDK::Metadata
{

using Types::LocalTag;
using Types::UniversalLabel;

PartitionDictionary::PartitionDictionary(const MetaMetadata::Dictionary& dictionary,
                                         std::unique_ptr<Packs::PrimerPack> primer)
    : dictionary_(dictionary),
      primer_(primer ? std::move(primer) : std::make_unique<Packs::PrimerPack>())
{
}

PartitionDictionary::~PartitionDictionary() = default;

UniversalLabel PartitionDictionary::universalLabel(const LocalTag& tag, bool strict) const
{
    if (tag.value() == 0)
        MXF_SDK_THROW(Exceptions::InvalidLocalTag, "Invalid Local Tag '00.00'");
    const UniversalLabel* primed = primer_->universalLabel(tag);
    if (strict && primed == nullptr)
        MXF_SDK_THROW(Exceptions::NotFoundInPrimer, L"Could not resolve local tag " +
                                                        tag.toString() +
                                                        L" to Universal Label using primer.");
    if (!strict && primed != nullptr)
        return *primed;
    if (tag.value() < FIRST_DYNAMIC_TAG)
    {
        const UniversalLabel* fixed = dictionary_.universalLabel(tag);
        if (fixed == nullptr)
            MXF_SDK_THROW(Exceptions::LocalTagNotFound,
                          L"Dictionary does not contain static Local Tag " + tag.toString());
        if (strict && !(*fixed == *primed))
            MXF_SDK_THROW(Exceptions::UniversalLabelCollision,
                          "Primer redefines a static assigned tag!");
        return *fixed;
    }
    if (primed == nullptr)
        MXF_SDK_THROW(Exceptions::NotFoundInPrimer,
                      L"Could not resolve local tag " + tag.toString() +
                          L" to Universal Label using either primer and the dictionary.");
    return *primed;
}

LocalTag PartitionDictionary::localTag(const UniversalLabel& label)
{
    // A primer that gave a tag to two labels maps it back to the later one only.
    if (const LocalTag* primed = primer_->localTag(label))
        if (const UniversalLabel* back = primer_->universalLabel(*primed); back && *back == label)
            return *primed;
    // A static tag that the primer gives to another label can't be used here.
    const LocalTag* fixed = dictionary_.localTag(label);
    if (fixed != nullptr && primer_->universalLabel(*fixed) == nullptr)
    {
        primer_->add(*fixed, label);
        return *fixed;
    }
    try
    {
        const LocalTag tag = nextDynamicTag();
        primer_->add(tag, label);
        return tag;
    }
    catch (const Exceptions::InvalidLocalTag&)
    {
        MXF_SDK_THROW(Exceptions::LocalTagNotFound, "No LocalTag defined for this UniversalLabel");
    }
}

LocalTag PartitionDictionary::nextDynamicTag()
{
    while (!wrapped_)
    {
        const LocalTag tag(nextDynamicTag_);
        ++nextDynamicTag_;
        wrapped_ = nextDynamicTag_ == 0;
        if (primer_->universalLabel(tag) == nullptr && dictionary_.universalLabel(tag) == nullptr)
            return tag;
    }
    MXF_SDK_THROW(Exceptions::InvalidLocalTag, "All LocalTags are used");
}

} // namespace MXF::SDK::Metadata
