#include "PartitionsWalk.h"

#include "KlvScan.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/IdentifierText.h"
#include "MXF/SDK/Packs/PartitionPack.h"
#include "MXF/SDK/Packs/PrimerPack.h"
#include "MXF/SDK/Packs/RandomIndexPack.h"
#include "MXF/SDK/Platform/Platform.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"

#include <algorithm>
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

struct FoundRIP
{
    UInt64 offset;
    RandomIndexPack rip;
};

std::string label(const Platform::Byte* bytes)
{
    return Platform::toUtf8(KLV::IdentifierText::writeDottedHex(bytes, 16));
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
        if (i > 0)
            text += ',';
        text += container ? label(container->data()) : std::string("?");
    }
    return text.empty() ? "none" : text;
}

class Walk final : public KlvScan
{
public:
    // Without `out`, no report.
    Walk(DataIO::RandomAccessDataSource& source, std::ostream* out) : KlvScan(source), out_(out) {}

    PartitionsWalkResult run()
    {
        const ScanResult result = scan();
        return {packs_.size(), std::move(packs_), result.damage, result.failed};
    }

private:
    void item(KLV::KLVItem& item, UInt64 searchStart, UInt64 skipped) override
    {
        if (skipped > 0)
            damage_.note(std::to_string(skipped) + " bytes at " + std::to_string(searchStart) +
                         " with no KLV key");
        // The primer and the RIP share the first 13 bytes of the partition pack key.
        if (RandomIndexPack::isRandomIndexPack(item.key))
            readRIP(item);
        else if (PartitionPack::isPartitionPack(item.key) &&
                 !Packs::PrimerPack::isPrimerPack(item.key))
            readPartitionPack(item);
    }

    void noItem(UInt64 searchStart) override
    {
        damage_.note(std::to_string(end_ - searchStart) + " bytes at " +
                     std::to_string(searchStart) + " with no whole KLV key and length");
    }

    void finish() override
    {
        checkLayout();
        printRIPs();
    }

    void readPartitionPack(KLV::KLVItem& item)
    {
        const UInt64 end = item.value.position() + item.length;
        try
        {
            packs_.push_back({item.keyPosition, end, PartitionPack(item)});
        }
        catch (const Exceptions::BaseException& e)
        {
            if (out_)
                *out_ << item.keyPosition << " unreadable partition pack: " << e.what() << '\n';
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

    void print(const FoundPartition& found)
    {
        if (!out_)
            return;
        const PartitionPack& pack = found.pack;
        *out_ << found.offset << ' ' << kindName(pack) << ' ' << statusName(pack) << ' '
              << pack.thisPartition().value() << ' ' << pack.previousPartition().value() << ' '
              << pack.footerPartition().value() << ' ' << pack.headerByteCount().value() << ' '
              << pack.indexByteCount().value() << ' ' << pack.indexSID().value() << ' '
              << pack.bodySID().value() << ' ' << pack.kagSize().value() << ' '
              << label(pack.operationalPattern().data()) << ' '
              << containers(pack.essenceContainers()) << '\n';
    }

    // Packs are found in file order, so the offsets are ascending.
    const FoundPartition* packAt(UInt64 offset) const
    {
        const auto found = std::lower_bound(packs_.begin(), packs_.end(), offset,
                                            [](const FoundPartition& pack, UInt64 at)
                                            { return pack.offset < at; });
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
        const FoundPartition* footer = nullptr;
        for (const FoundPartition& found : packs_)
            if (found.pack.partitionKind() == PartitionPack::FOOTER_PARTITION)
                footer = &found;
        if (!footer)
            damage_.note("no footer partition");
        for (std::size_t i = 0; i < packs_.size(); ++i)
        {
            const FoundPartition& found = packs_[i];
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
        if (rips_.empty() && out_)
            *out_ << "no random index pack\n";
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
            const FoundPartition* pack = packAt(entry.byteOffset);
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
        for (const FoundPartition& pack : packs_)
        {
            if (listed.count(pack.offset) == 0)
            {
                agree = false;
                lines.push_back("  not listed: partition pack at " + std::to_string(pack.offset));
            }
        }
        if (out_)
        {
            *out_ << found.offset << " random index pack: " << found.rip.entries().size()
                  << " entries, " << (agree ? "agree" : "disagree")
                  << " with the partition packs found\n";
            for (const std::string& line : lines)
                *out_ << line << '\n';
        }
        if (!agree)
            damage_.note("random index pack at " + std::to_string(found.offset) +
                         " disagrees with the partition packs found");
    }

    std::ostream* out_;
    std::vector<FoundPartition> packs_;
    std::vector<FoundRIP> rips_;
};

} // namespace

PartitionsWalkResult walkPartitions(DataIO::RandomAccessDataSource& source, std::ostream& out)
{
    return Walk(source, &out).run();
}

PartitionsWalkResult findPartitions(DataIO::RandomAccessDataSource& source)
{
    return Walk(source, nullptr).run();
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

} // namespace Halvorn::Inspect
