#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/LocalTag.h"
#include "MXF/SDK/Types/UID.h"

#include <cstddef>
#include <map>
#include <vector>

namespace MXF::SDK::DataIO
{
class DataSink;
}

namespace MXF::SDK::KLV
{
struct KLVItem;
}

namespace MXF::SDK::Packs
{

// The primer pack of SMPTE 377M (clause 9.2), which maps the 2-byte local tags of one partition's
// header metadata to labels. Key 06 0E 2B 34 02 05 01 01 0D 01 02 01 01 05 01 00. Value: count
// (4), item size (4), then count pairs of a local tag (2) and a label (16), big-endian.
// A value type.
class PrimerPack
{
public:
    struct Entry
    {
        Types::LocalTag localTag;
        Types::UniversalLabel universalLabel;
    };

    static constexpr Platform::UInt32 ITEM_SIZE = 18;

    // All 16 bytes are the primer key.
    static bool isPrimerPack(const KLV::Key& key) noexcept;

    // An empty primer, to be written with a BER length of `lengthSize` bytes.
    explicit PrimerPack(Platform::UInt8 lengthSize = 4);
    // Reads the value from where it stands. The item size isn't checked: pairs are 18 bytes.
    // Throws InvalidKey "Trying to create a Primer from a KLV with a invalid primerPack Key.";
    // InvalidLength when the value ends before its count of pairs.
    explicit PrimerPack(KLV::KLVItem& item);

    // Null where the primer has no entry.
    const Types::UniversalLabel* universalLabel(const Types::LocalTag& tag) const;
    const Types::LocalTag* localTag(const Types::UniversalLabel& label) const;

    // A tag already there is mapped anew; the old pair stays in the file-order list. A label given
    // several tags is found by the lowest of them.
    void add(const Types::LocalTag& tag, const Types::UniversalLabel& label);

    // Pairs in the order read or added, repeats included. `at` throws IndexOutOfBounds "Trying to
    // access an element beyond the end of the data" from `size` on.
    const Entry& at(std::size_t index) const;
    std::size_t size() const noexcept { return entries_.size(); }

    Platform::UInt8 lengthSize() const noexcept { return lengthSize_; }

    // The key, the BER length in `lengthSize` bytes, the count and item size 18, then one pair a
    // tag in ascending order of tags. Throws InvalidLength when the length doesn't fit.
    void serialize(DataIO::DataSink& sink) const;

private:
    Platform::UInt8 lengthSize_;
    std::map<Types::LocalTag, Types::UniversalLabel> labels_;
    std::map<Types::UniversalLabel, Types::LocalTag> tags_;
    std::vector<Entry> entries_;
};

} // namespace MXF::SDK::Packs
