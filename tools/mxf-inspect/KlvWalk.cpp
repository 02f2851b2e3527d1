#include "KlvWalk.h"

#include "KeyNames.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/IdentifierText.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/Platform/Platform.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;
using Platform::UInt64;

namespace
{

// The first thing wrong with the bytes, and how many more there were.
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
    bool any() const { return !first_.empty(); }
    std::string summary() const
    {
        return more_ == 0 ? first_ : first_ + " (and " + std::to_string(more_) + " more)";
    }

private:
    std::string first_;
    UInt64 more_ = 0;
};

class Walk
{
public:
    Walk(DataIO::RandomAccessDataSource& source, std::ostream& out)
        : source_(source), out_(out), end_(source.position() + source.remaining()), reader_(source)
    {
    }

    KlvWalkResult run()
    {
        try
        {
            // Each step moves the source on by at least one byte, so the walk always ends.
            while (source_.position() < end_)
                step();
        }
        catch (const Exceptions::BaseException& e)
        {
            return {items_, "reading at " + std::to_string(source_.position()) + ": " + e.what(),
                    true};
        }
        if (items_ == 0 && !damage_.any())
            damage_.note("no KLV item in the file");
        return {items_, damage_.summary(), false};
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
            garbageFrom(searchStart);
            endGarbage(end_, "no whole KLV key and length");
            source_.seek(end_);
            return;
        }
        catch (const Exceptions::InvalidFormat& e)
        {
            // The key and the first length byte are consumed; the search goes on after them.
            const UInt64 keyAt = source_.position() - KLV::Key::SIZE - 1;
            garbageFrom(searchStart);
            damage_.note("key at " + std::to_string(keyAt) + ": " + e.what());
            return;
        }
        if (skipped > 0)
            garbageFrom(searchStart);
        endGarbage(item->keyPosition, "no KLV key");
        print(*item);
        ++items_;

        const UInt64 valueStart = item->value.position();
        if (item->length > end_ - valueStart)
        {
            damage_.note("item at " + std::to_string(item->keyPosition) + " declares " +
                         std::to_string(item->length) + " bytes of value, the file has " +
                         std::to_string(end_ - valueStart) + " left");
            // Whatever the length says, the value's bytes may still hold the next keys.
            item.reset();
            source_.seek(valueStart);
            garbageFrom(valueStart);
        }
    }

    void print(const KLV::KLVItem& item)
    {
        const std::string name = shortName(item.key);
        out_ << item.keyPosition << ' '
             << Platform::toUtf8(
                    KLV::IdentifierText::writeDottedHex(item.key.data(), KLV::Key::SIZE))
             << ' ' << unsigned(item.lengthSize) << ' ' << item.length << (name.empty() ? "" : " ")
             << name << '\n';
    }

    void garbageFrom(UInt64 position)
    {
        if (!garbageStart_)
            garbageStart_ = position;
    }

    void endGarbage(UInt64 end, const char* why)
    {
        if (garbageStart_ && end > *garbageStart_)
        {
            const UInt64 count = end - *garbageStart_;
            out_ << *garbageStart_ << " skipped " << count << " bytes\n";
            damage_.note(std::to_string(count) + " bytes at " + std::to_string(*garbageStart_) +
                         " with " + why);
        }
        garbageStart_.reset();
    }

    DataIO::RandomAccessDataSource& source_;
    std::ostream& out_;
    const UInt64 end_;
    KLV::KLVReader reader_;
    UInt64 items_ = 0;
    std::optional<UInt64> garbageStart_;
    Damage damage_;
};

} // namespace

KlvWalkResult walkKlv(DataIO::RandomAccessDataSource& source, std::ostream& out)
{
    return Walk(source, out).run();
}

} // namespace Halvorn::Inspect
