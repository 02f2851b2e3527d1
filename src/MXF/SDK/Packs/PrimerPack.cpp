#include "MXF/SDK/Packs/PrimerPack.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/Types/Integers.h"
#include "PackWriting.h"

#include <algorithm>

namespace MXF::SDK::Packs
{

using Platform::Byte;
using Platform::UInt32;
using Platform::UInt64;

namespace
{

constexpr Byte PRIMER_KEY[KLV::Key::SIZE] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x05, 0x01, 0x01,
                                             0x0D, 0x01, 0x02, 0x01, 0x01, 0x05, 0x01, 0x00};

} // namespace

bool PrimerPack::isPrimerPack(const KLV::Key& key) noexcept
{
    return std::equal(std::begin(PRIMER_KEY), std::end(PRIMER_KEY), key.data());
}

PrimerPack::PrimerPack(Platform::UInt8 lengthSize) : lengthSize_(lengthSize) {}

PrimerPack::PrimerPack(KLV::KLVItem& item) : lengthSize_(item.lengthSize)
{
    if (!isPrimerPack(item.key))
        MXF_SDK_THROW(Exceptions::InvalidKey,
                      "Trying to create a Primer from a KLV with a invalid primerPack Key.");
    const UInt32 count = Types::UInt32(item.value).value();
    // The item size is read past, not checked: pairs are 18 bytes whatever it says.
    static_cast<void>(Types::UInt32(item.value));
    // Nothing is reserved by the count: each pair is read before it is stored, so a count larger
    // than the value fails at the value's end.
    for (UInt32 i = 0; i < count; ++i)
    {
        const Types::LocalTag tag(item.value);
        const Types::UniversalLabel label(item.value);
        add(tag, label);
    }
}

const Types::UniversalLabel* PrimerPack::universalLabel(const Types::LocalTag& tag) const
{
    const auto found = labels_.find(tag);
    return found == labels_.end() ? nullptr : &found->second;
}

const Types::LocalTag* PrimerPack::localTag(const Types::UniversalLabel& label) const
{
    const auto found = tags_.find(label);
    return found == tags_.end() ? nullptr : &found->second;
}

void PrimerPack::add(const Types::LocalTag& tag, const Types::UniversalLabel& label)
{
    // A label with several tags answers with the lowest, so that what is written (in tag order)
    // reads back to the same choice. A damaged primer may pair 00.00 with a label.
    if (const auto old = labels_.find(tag); old != labels_.end() && !(old->second == label))
    {
        const Types::UniversalLabel previous = old->second;
        labels_.erase(old);
        tags_.erase(previous);
        for (const auto& [otherTag, otherLabel] : labels_)
            if (otherLabel == previous && otherTag.value() != 0)
            {
                tags_.emplace(previous, otherTag);
                break;
            }
    }
    labels_.insert_or_assign(tag, label);
    if (tag.value() != 0) // 00.00 is no tag: written back, never given out
    {
        if (const auto known = tags_.find(label); known == tags_.end())
            tags_.emplace(label, tag);
        else if (tag < known->second)
            known->second = tag;
    }
    entries_.push_back({tag, label});
}

const PrimerPack::Entry& PrimerPack::at(std::size_t index) const
{
    if (index >= entries_.size())
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds,
                      "Trying to access an element beyond the end of the data");
    return entries_[index];
}

void PrimerPack::serialize(DataIO::DataSink& sink) const
{
    const UInt64 count = labels_.size();
    sink.write(PRIMER_KEY, KLV::Key::SIZE);
    Internal::writeLength(sink, 8 + count * ITEM_SIZE, lengthSize_);
    Types::UInt32(static_cast<UInt32>(count)).serialize(sink);
    Types::UInt32(ITEM_SIZE).serialize(sink);
    for (const auto& [tag, label] : labels_)
    {
        tag.serialize(sink);
        label.serialize(sink);
    }
}

} // namespace MXF::SDK::Packs
