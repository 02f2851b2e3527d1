#include "MXF/SDK/KLV/KLVReader.h"

#include "MXF/SDK/ByteCoders/BERCoder.h"
#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/KLV/ReadExact.h"
#include "MXF/SDK/Utils/Hex.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

namespace MXF::SDK::KLV
{

using Platform::Byte;
using Platform::UInt64;

namespace
{

constexpr std::size_t WINDOW = 5;

struct ReadState
{
    std::unique_ptr<Key> key;
    // Source position just after `key`.
    UInt64 position = 0;
    Byte window[WINDOW] = {};
};

constexpr std::size_t REST = Key::SIZE - WINDOW;

// Labels (fifth byte 04) and anything above 05 are no key start, so that a label or a lone
// prefix stored inside damaged bytes isn't taken for an item.
bool isSmpteKeyStart(const Byte* window) noexcept
{
    return window[0] == 0x06 && window[1] == 0x0E && window[2] == 0x2B && window[3] == 0x34 &&
           (window[4] <= 0x03 || window[4] == 0x05);
}

// Avid's two private keys start items too, but only when all 16 bytes match: their first bytes
// alone are too likely in damaged data. The first of the two keys that `window` begins, or null.
const Byte* avidKeyStartingWith(const Byte* window) noexcept
{
    for (const Byte* key : {avidRootObjectKey(), avidObjectDirectoryKey()})
        if (std::memcmp(window, key, WINDOW) == 0)
            return key;
    return nullptr;
}

void readOrThrow(DataIO::DataSource& source, Byte* buffer, std::size_t size)
{
    if (readUpTo(source, buffer, size) != size)
        MXF_SDK_THROW(Exceptions::NotEnoughData, "Not enough data");
}

using Utils::hex;

} // namespace

class KLVReader::Impl
{
public:
    explicit Impl(DataIO::DataSource& source) : source_(source) {}

    std::shared_ptr<ReadState> state()
    {
        const std::lock_guard lock(mutex_);
        auto& entry = states_[std::this_thread::get_id()];
        if (!entry)
            entry = std::make_shared<ReadState>();
        return entry;
    }

    // Leaves the key in `state` and the source just after it.
    void findKey(ReadState& state, UInt64& skippedOut, UInt64 maxSkip)
    {
        if (state.key && state.position == source_.position())
        {
            skippedOut = 0;
            return;
        }
        skippedOut = 0;
        Lookahead ahead;
        take(ahead, state.window, WINDOW);
        Byte bytes[Key::SIZE];
        while (!keyAt(state.window, ahead, bytes))
        {
            std::memmove(state.window, state.window + 1, WINDOW - 1);
            take(ahead, state.window + WINDOW - 1, 1);
            ++skippedOut;
            if (skippedOut > maxSkip)
            {
                const UInt64 position = source_.position() - ahead.size;
                MXF_SDK_THROW(Exceptions::KeyNotFound,
                              "Exceeded maximum bytes to skip before finding a key. Started to "
                              "search at 0x" +
                                  hex(position - WINDOW - skippedOut) + " Skipped 0x" +
                                  hex(skippedOut) + " current position: 0x" + hex(position));
            }
        }
        state.key.reset();
        state.key = std::make_unique<Key>(bytes);
        state.position = source_.position();
    }

    std::unique_ptr<KLVItem> readLength(const ReadState& state)
    {
        // 0xFE is the longest first byte accepted: 127 bytes in all.
        Byte length[128];
        readOrThrow(source_, length, 1);
        const Platform::UInt32 size = ByteCoders::BERCoder::decodedSize(length[0]);
        readOrThrow(source_, length + 1, size - 1);
        return std::make_unique<KLVItem>(*state.key, static_cast<Platform::UInt8>(size),
                                         ByteCoders::BERCoder::decode(length, size), source_,
                                         state.position - Key::SIZE);
    }

private:
    // Bytes read past the window to test an Avid key whole, and not yet moved into the window.
    struct Lookahead
    {
        Byte bytes[REST] = {};
        std::size_t size = 0;
    };

    // The next `size` bytes: those read ahead first, then the source's.
    void take(Lookahead& ahead, Byte* out, std::size_t size)
    {
        const std::size_t fromAhead = std::min(size, ahead.size);
        std::memcpy(out, ahead.bytes, fromAhead);
        std::memmove(ahead.bytes, ahead.bytes + fromAhead, ahead.size - fromAhead);
        ahead.size -= fromAhead;
        readOrThrow(source_, out + fromAhead, size - fromAhead);
    }

    // Whether a key starts at `window`; if so its 16 bytes go to `key`, and nothing is left
    // ahead.
    bool keyAt(const Byte* window, Lookahead& ahead, Byte* key)
    {
        const Byte* avid = isSmpteKeyStart(window) ? nullptr : avidKeyStartingWith(window);
        if (!isSmpteKeyStart(window) && !avid)
            return false;
        if (avid)
        {
            // A source that ends within the key leaves no key, not a failure: the search goes on
            // with the bytes there are.
            while (ahead.size < REST)
            {
                const UInt64 got = source_.read(ahead.bytes + ahead.size, REST - ahead.size);
                if (got == 0)
                    return false;
                ahead.size += static_cast<std::size_t>(got);
            }
            if (std::memcmp(ahead.bytes, avid + WINDOW, REST) != 0)
                return false;
        }
        std::memcpy(key, window, WINDOW);
        take(ahead, key + WINDOW, REST);
        return true;
    }

    DataIO::DataSource& source_;
    std::mutex mutex_;
    std::map<std::thread::id, std::shared_ptr<ReadState>> states_;
};

KLVReader::KLVReader(DataIO::DataSource& source) : impl_(std::make_shared<Impl>(source)) {}

std::unique_ptr<KLVItem> KLVReader::readKLV(UInt64& skippedOut, UInt64 maxSkip)
{
    const auto state = impl_->state();
    impl_->findKey(*state, skippedOut, maxSkip);
    return impl_->readLength(*state);
}

Key KLVReader::readKey(UInt64& skippedOut, UInt64 maxSkip)
{
    const auto state = impl_->state();
    impl_->findKey(*state, skippedOut, maxSkip);
    return *state->key;
}

} // namespace MXF::SDK::KLV
