#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/Platform/Types.h"

#include <string>

namespace Halvorn::Inspect
{

// The first thing wrong with a file, and how many more there were.
class Damage
{
public:
    void note(const std::string& what);
    bool any() const { return !first_.empty(); }
    // "FIRST" or "FIRST (and N more)"; empty when nothing was noted.
    std::string summary() const;

private:
    std::string first_;
    MXF::SDK::Platform::UInt64 more_ = 0;
};

// What a scan of a file found wrong: `damage` (empty: nothing), and whether the source itself
// failed, an I/O error that stopped the scan there.
struct ScanResult
{
    std::string damage;
    bool failed = false;
};

// The search for KLV items that the walks share: from the source's position to its end, item by
// item, on past damaged bytes. A subclass hears of each item and of what stands in the way of
// one; the scan notes on `damage_` the items cut short by the end and the bad lengths. Never
// throws for damaged bytes nor for a failing source.
class KlvScan
{
public:
    KlvScan(const KlvScan&) = delete;
    KlvScan& operator=(const KlvScan&) = delete;

protected:
    explicit KlvScan(MXF::SDK::DataIO::RandomAccessDataSource& source);
    virtual ~KlvScan() = default;

    // Scans to the end, then calls `finish` unless the source failed.
    ScanResult scan();

    // An item whose key starts at item.keyPosition, found after `skipped` bytes from
    // `searchStart` where no key starts. The source stands at its first value byte; the item may
    // be read. After an item cut short by the end, the scan goes on from its first value byte.
    virtual void item(MXF::SDK::KLV::KLVItem& item, MXF::SDK::Platform::UInt64 searchStart,
                      MXF::SDK::Platform::UInt64 skipped) = 0;
    // From `searchStart` to the end there is no whole key and length.
    virtual void noItem(MXF::SDK::Platform::UInt64 searchStart) = 0;
    // A key at `keyAt` with a bad length, found after the bytes from `searchStart`; the search goes
    // on after the key and the first length byte.
    virtual void badLength(MXF::SDK::Platform::UInt64 /*searchStart*/,
                           MXF::SDK::Platform::UInt64 /*keyAt*/)
    {
    }
    // The value of an item cut short starts at `valueStart`, where the search goes on.
    virtual void cutShort(MXF::SDK::Platform::UInt64 /*valueStart*/) {}
    // After the last item.
    virtual void finish() {}

    MXF::SDK::DataIO::RandomAccessDataSource& source_;
    const MXF::SDK::Platform::UInt64 end_;
    Damage damage_;

private:
    void step();

    MXF::SDK::KLV::KLVReader reader_;
};

} // namespace Halvorn::Inspect
