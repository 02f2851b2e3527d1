#include "MXF/SDK/MetaMetadata/Dictionary.h"

#include <map>
#include <vector>

namespace MXF::SDK::MetaMetadata
{

using Types::LocalTag;
using Types::UniversalLabel;

struct Dictionary::Impl
{
    std::map<LocalTag, UniversalLabel> labelOfTag;
    std::map<UniversalLabel, LocalTag> tagOfLabel;
    std::map<UniversalLabel, std::unique_ptr<MetaMetadataSet>> sets;
    std::map<UniversalLabel, std::unique_ptr<MetaElement>> elements;
    // What later entries replaced: attributes, and callers, may still point at them.
    std::vector<std::unique_ptr<MetaMetadataSet>> replacedSets;
    std::vector<std::unique_ptr<MetaElement>> replacedElements;
};

namespace
{

template <typename Key, typename T>
const T* find(const std::map<Key, T>& map, const Key& key)
{
    const auto found = map.find(key);
    return found != map.end() ? &found->second : nullptr;
}

template <typename T>
const T* findOwned(const std::map<UniversalLabel, std::unique_ptr<T>>& map,
                   const UniversalLabel& label)
{
    const auto found = map.find(label);
    return found != map.end() ? found->second.get() : nullptr;
}

template <typename T>
void replace(std::map<UniversalLabel, std::unique_ptr<T>>& map, const UniversalLabel& label,
             std::unique_ptr<T> entry, std::vector<std::unique_ptr<T>>& replaced)
{
    replaced.reserve(replaced.size() + 1);
    std::unique_ptr<T>& slot = map[label];
    if (slot)
        replaced.push_back(std::move(slot));
    slot = std::move(entry);
}

} // namespace

Dictionary::Dictionary() : impl_(std::make_unique<Impl>()) {}

Dictionary::~Dictionary() = default;

void Dictionary::addLocalTag(const LocalTag& tag, const UniversalLabel& label)
{
    // Keeps the two maps each other's inverse.
    if (const auto old = impl_->labelOfTag.find(tag); old != impl_->labelOfTag.end())
        impl_->tagOfLabel.erase(old->second);
    if (const auto old = impl_->tagOfLabel.find(label); old != impl_->tagOfLabel.end())
        impl_->labelOfTag.erase(old->second);
    impl_->labelOfTag.insert_or_assign(tag, label);
    impl_->tagOfLabel.insert_or_assign(label, tag);
}

const UniversalLabel* Dictionary::universalLabel(const LocalTag& tag) const
{
    return find(impl_->labelOfTag, tag);
}

const LocalTag* Dictionary::localTag(const UniversalLabel& label) const
{
    return find(impl_->tagOfLabel, label);
}

void Dictionary::addMetaMetadataSet(std::unique_ptr<MetaMetadataSet> set)
{
    const UniversalLabel label = set->universalLabel();
    replace(impl_->sets, label, std::move(set), impl_->replacedSets);
}

const MetaMetadataSet* Dictionary::metaMetadataSet(const UniversalLabel& label) const
{
    return findOwned(impl_->sets, label);
}

void Dictionary::addMetaElement(const UniversalLabel& label, std::unique_ptr<MetaElement> element)
{
    replace(impl_->elements, label, std::move(element), impl_->replacedElements);
}

const MetaElement* Dictionary::metaElement(const UniversalLabel& label) const
{
    return findOwned(impl_->elements, label);
}

std::size_t Dictionary::localTagCount() const noexcept
{
    return impl_->labelOfTag.size();
}

std::size_t Dictionary::metaMetadataSetCount() const noexcept
{
    return impl_->sets.size();
}

std::size_t Dictionary::metaElementCount() const noexcept
{
    return impl_->elements.size();
}

} // namespace MXF::SDK::MetaMetadata
