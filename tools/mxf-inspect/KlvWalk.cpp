#include "KlvWalk.h"

#include "KeyNames.h"
#include "KlvScan.h"
#include "MXF/SDK/KLV/IdentifierText.h"
#include "MXF/SDK/Platform/Platform.h"

#include <optional>
#include <ostream>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;
using Platform::UInt64;

namespace
{

class Walk final : public KlvScan
{
public:
    Walk(DataIO::RandomAccessDataSource& source, std::ostream& out) : KlvScan(source), out_(out) {}

    KlvWalkResult run()
    {
        const ScanResult result = scan();
        return {items_, result.damage, result.failed};
    }

private:
    void item(KLV::KLVItem& item, UInt64 searchStart, UInt64 skipped) override
    {
        if (skipped > 0)
            garbageFrom(searchStart);
        endGarbage(item.keyPosition, "no KLV key");
        print(item);
        ++items_;
    }

    void noItem(UInt64 searchStart) override
    {
        garbageFrom(searchStart);
        endGarbage(end_, "no whole KLV key and length");
    }

    void badLength(UInt64 searchStart, UInt64 /*keyAt*/) override { garbageFrom(searchStart); }

    void cutShort(UInt64 valueStart) override { garbageFrom(valueStart); }

    void finish() override
    {
        if (items_ == 0 && !damage_.any())
            damage_.note("no KLV item in the file");
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

    std::ostream& out_;
    UInt64 items_ = 0;
    std::optional<UInt64> garbageStart_;
};

} // namespace

KlvWalkResult walkKlv(DataIO::RandomAccessDataSource& source, std::ostream& out)
{
    return Walk(source, out).run();
}

} // namespace Halvorn::Inspect
