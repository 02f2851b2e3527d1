#include "PartitionsWalk.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/IdentifierText.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/Packs/PartitionPack.h"
#include "MXF/SDK/Packs/PrimerPack.h"
#include "MXF/SDK/Packs/RandomIndexPack.h"
#include "MXF/SDK/Platform/Platform.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;
using Packs::PartitionPack;
using Packs::RandomIndexPack;
using Platform::UInt64;

namespace
{

// The first thing wrong with the file, and how many more there were.
class Damage
{
public:
    void note(const std::string& what)
    {
        if (first_.empty())
            first_ = what;
        else
            ++more_;
    }
    std::string summary() const
    {
        return more_ == 0 ? first_ : first_ + " (and " + std::to_string(more_) + " more)";
    }

private:
    std::string first_;
    UInt64 more_ = 0;
};

struct FoundPack
{
    UInt64 offset;
    PartitionPack pack;
};

struct FoundRIP
{
    UInt64 offset;
    RandomIndexPack rip;
};

std::string label(const Platform::Byte* bytes)
{
    return Platform::toUtf8(KLV::IdentifierText::writeDottedHex(bytes, 16));
}

const char* kindName(const PartitionPack& pack)
{
    switch (pack.partitionKind())
    {
    case PartitionPack::HEADER_PARTITION:
        return "header";
    case PartitionPack::BODY_PARTITION:
        return "body";
    default:
        return "footer";
    }
}

std::string statusName(const PartitionPack& pack)
{
    if (pack.key()[14] == PartitionPack::GENERIC_STREAM)
        return "generic stream";
    return std::string(pack.isOpen() ? "open" : "closed") + " " +
           (pack.isComplete() ? "complete" : "incomplete");
}

std::string containers(const Types::Batch& batch)
{
    std::string text;
    for (std::size_t i = 0; i < batch.itemCount(); ++i)
    {
        const auto* container = Types::Visitors::getAs<Types::UniversalLabel>(batch.at(i));
        text += (i ? "," : "") + (container ? label(container->data()) : std::string("?"));
    }
    return text.empty() ? "none" : text;
}

class Walk
{
public:
    Walk(DataIO::RandomAccessDataSource& source, std::ostream& out)
        : source_(source), out_(out), end_(source.position() + source.remaining()), reader_(source)
    {
    }

    PartitionsWalkResult run()
    {
        try
        {
            // Each step moves the source on by at least one byte, so the walk always ends.
            while (source_.position() < end_)
                step();
        }
        catch (const Exceptions::BaseException& e)
        {
            return {packs_.size(),
                    "reading at " + std::to_string(source_.position()) + ": " + e.what(), true};
        }
        checkLayout();
        printRIPs();
        return {packs_.size(), damage_.summary(), false};
    }

private:
    void step()
    {
        const UInt64 searchStart = source_.position();
        UInt64 skipped = 0;
        std::unique_ptr<KLV::KLVItem> item;
        try
        {
            // No limit: the search reads each byte once, so even a file of garbage ends.
            item = reader_.readKLV(skipped, UINT64_MAX);
        }
        catch (const Exceptions::NotEnoughData&)
        {
            damage_.note(std::to_string(end_ - searchStart) + " bytes at " +
                         std::to_string(searchStart) + " with no whole KLV key and length");
            source_.seek(end_);
            return;
        }
        catch (const Exceptions::InvalidFormat& e)
        {
            // The key and the first length byte are consumed; the search goes on after them.
            damage_.note("key at " + std::to_string(source_.position() - KLV::Key::SIZE - 1) +
                         ": " + e.what());
            return;
        }
        if (skipped > 0)
            damage_.note(std::to_string(skipped) + " bytes at " + std::to_string(searchStart) +
                         " with no KLV key");

        const UInt64 offset = item->keyPosition;
        const UInt64 valueStart = item->value.position();
        const bool cutShort = item->length > end_ - valueStart;
        // The primer and the RIP share the first 13 bytes of the partition pack key.
        if (RandomIndexPack::isRandomIndexPack(item->key))
            readRIP(*item);
        else if (PartitionPack::isPartitionPack(item->key) &&
                 !Packs::PrimerPack::isPrimerPack(item->key))
            readPartitionPack(*item);
        if (cutShort)
        {
            damage_.note("item at " + std::to_string(offset) + " declares " +
                         std::to_string(item->length) + " bytes of value, the file has " +
                         std::to_string(end_ - valueStart) + " left");
            // Whatever the length says, the value's bytes may still hold the next keys.
            item.reset();
            source_.seek(valueStart);
        }
    }

    void readPartitionPack(KLV::KLVItem& item)
    {
        try
        {
            packs_.push_back({item.keyPosition, PartitionPack(item)});
        }
        catch (const Exceptions::BaseException& e)
        {
            out_ << item.keyPosition << " unreadable partition pack: " << e.what() << '\n';
            damage_.note("partition pack at " + std::to_string(item.keyPosition) + ": " + e.what());
            return;
        }
        print(packs_.back());
    }

    void readRIP(KLV::KLVItem& item)
    {
        try
        {
            rips_.push_back({item.keyPosition, RandomIndexPack(item)});
        }
        catch (const Exceptions::BaseException& e)
        {
            damage_.note("random index pack at " + std::to_string(item.keyPosition) + ": " +
                         e.what());
        }
    }

    void print(const FoundPack& found)
    {
        const PartitionPack& pack = found.pack;
        out_ << found.offset << ' ' << kindName(pack) << ' ' << statusName(pack) << ' '
             << pack.thisPartition().value() << ' ' << pack.previousPartition().value() << ' '
             << pack.footerPartition().value() << ' ' << pack.headerByteCount().value() << ' '
             << pack.indexByteCount().value() << ' ' << pack.indexSID().value() << ' '
             << pack.bodySID().value() << ' ' << pack.kagSize().value() << ' '
             << label(pack.operationalPattern().data()) << ' '
             << containers(pack.essenceContainers()) << '\n';
    }

    // Packs are found in file order, so the offsets are ascending.
    const FoundPack* packAt(UInt64 offset) const
    {
        const auto found =
            std::lower_bound(packs_.begin(), packs_.end(), offset,
                             [](const FoundPack& pack, UInt64 at) { return pack.offset < at; });
        return found != packs_.end() && found->offset == offset ? &*found : nullptr;
    }

    // What SMPTE 377M fixes between the packs: each knows its own offset, the one before it, and
    // where the footer is.
    void checkLayout()
    {
        if (packs_.empty())
        {
            damage_.note("no partition pack");
            return;
        }
        const FoundPack* footer = nullptr;
        for (const FoundPack& found : packs_)
            if (found.pack.partitionKind() == PartitionPack::FOOTER_PARTITION)
                footer = &found;
        if (!footer)
            damage_.note("no footer partition");
        for (std::size_t i = 0; i < packs_.size(); ++i)
        {
            const FoundPack& found = packs_[i];
            const std::string at = "partition pack at " + std::to_string(found.offset);
            const UInt64 self = found.pack.thisPartition().value();
            if (self != found.offset)
                damage_.note(at + " says ThisPartition " + std::to_string(self));
            const UInt64 previous = found.pack.previousPartition().value();
            const UInt64 expected = i == 0 ? 0 : packs_[i - 1].offset;
            if (previous != expected)
                damage_.note(at + " says PreviousPartition " + std::to_string(previous) +
                             ", the pack before it is at " + std::to_string(expected));
            const UInt64 footerField = found.pack.footerPartition().value();
            if (footer && footerField != 0 && footerField != footer->offset)
                damage_.note(at + " says FooterPartition " + std::to_string(footerField) +
                             ", the footer is at " + std::to_string(footer->offset));
        }
    }

    void printRIPs()
    {
        if (rips_.empty())
            out_ << "no random index pack\n";
        for (const FoundRIP& found : rips_)
            printRIP(found);
    }

    void printRIP(const FoundRIP& found)
    {
        std::vector<std::string> lines;
        bool agree = true;
        std::set<UInt64> listed;
        for (const RandomIndexPack::Entry& entry : found.rip.entries())
        {
            listed.insert(entry.byteOffset);
            std::string what;
            const FoundPack* pack = packAt(entry.byteOffset);
            const bool matches = pack && pack->pack.bodySID().value() == entry.bodySID;
            if (!pack)
                what = "no partition pack there";
            else if (!matches)
                what = "the partition pack there has body SID " +
                       std::to_string(pack->pack.bodySID().value());
            else
                what = std::string(kindName(pack->pack)) + " partition pack";
            agree = agree && matches;
            lines.push_back("  body SID " + std::to_string(entry.bodySID) + " at " +
                            std::to_string(entry.byteOffset) + ": " + what);
        }
        for (const FoundPack& pack : packs_)
        {
            if (listed.count(pack.offset) == 0)
            {
                agree = false;
                lines.push_back("  not listed: partition pack at " + std::to_string(pack.offset));
            }
        }
        out_ << found.offset << " random index pack: " << found.rip.entries().size() << " entries, "
             << (agree ? "agree" : "disagree") << " with the partition packs found\n";
        for (const std::string& line : lines)
            out_ << line << '\n';
        if (!agree)
            damage_.note("random index pack at " + std::to_string(found.offset) +
                         " disagrees with the partition packs found");
    }

    DataIO::RandomAccessDataSource& source_;
    std::ostream& out_;
    const UInt64 end_;
    KLV::KLVReader reader_;
    std::vector<FoundPack> packs_;
    std::vector<FoundRIP> rips_;
    Damage damage_;
};

} // namespace

PartitionsWalkResult walkPartitions(DataIO::RandomAccessDataSource& source, std::ostream& out)
{
    return Walk(source, out).run();
}

} // namespace Halvorn::Inspect
