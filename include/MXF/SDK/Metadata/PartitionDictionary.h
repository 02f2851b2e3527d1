#pragma once

#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Packs/PrimerPack.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/LocalTag.h"
#include "MXF/SDK/Types/UID.h"

#include <memory>

namespace MXF::SDK::Metadata
{

// The local tags of one partition: the primer pack (owned) over the static tags of the Dictionary
// (borrowed, must outlive this), and the counter of new dynamic tags, from 0x8000.
class PartitionDictionary
{
public:
    static constexpr Platform::UInt16 FIRST_DYNAMIC_TAG = 0x8000;

    // An empty primer when `primer` is null.
    explicit PartitionDictionary(const MetaMetadata::Dictionary& dictionary,
                                 std::unique_ptr<Packs::PrimerPack> primer = nullptr);
    ~PartitionDictionary();
    PartitionDictionary(const PartitionDictionary&) = delete;
    PartitionDictionary& operator=(const PartitionDictionary&) = delete;

    const MetaMetadata::Dictionary& dictionary() const noexcept { return dictionary_; }
    const Packs::PrimerPack& primerPack() const noexcept { return *primer_; }
    Packs::PrimerPack& primerPack() noexcept { return *primer_; }

    // The label of a tag. Throws InvalidLocalTag "Invalid Local Tag '00.00'" for 0000;
    // NotFoundInPrimer "Could not resolve local tag <tag> to Universal Label using primer." when
    // `strict` and the primer hasn't it; LocalTagNotFound "Dictionary does not contain static Local
    // Tag <tag>" for a static tag (0001 to 7FFF) known to neither; UniversalLabelCollision "Primer
    // redefines a static assigned tag!" when `strict` and the primer gives a static tag another
    // label than the dictionary; NotFoundInPrimer "Could not resolve local tag <tag> to Universal
    // Label using either primer and the dictionary." for a dynamic tag the primer hasn't.
    Types::UniversalLabel universalLabel(const Types::LocalTag& tag, bool strict) const;

    // The tag to write a label with: the primer's; else the dictionary's static tag; else a new
    // dynamic tag. A tag not yet in the primer is added to it, so that the primer written lists
    // every tag used. LocalTagNotFound "No LocalTag defined for this UniversalLabel" when no tag
    // can be had.
    Types::LocalTag localTag(const Types::UniversalLabel& label);

    // The next tag from the counter that neither the primer nor the dictionary has. The counter
    // goes up to FFFF; once it has wrapped, InvalidLocalTag "All LocalTags are used".
    Types::LocalTag nextDynamicTag();
    Platform::UInt16 nextDynamicTagValue() const noexcept { return nextDynamicTag_; }
    void setNextDynamicTag(Platform::UInt16 tag) noexcept
    {
        nextDynamicTag_ = tag;
        wrapped_ = false;
    }

private:
    const MetaMetadata::Dictionary& dictionary_;
    std::unique_ptr<Packs::PrimerPack> primer_;
    Platform::UInt16 nextDynamicTag_ = FIRST_DYNAMIC_TAG;
    bool wrapped_ = false;
};

} // namespace MXF::SDK::Metadata
