#include "MXF/SDK/KLV/KLVReader.h"

#include "MXF/SDK/ByteCoders/BERCoder.h"
#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/ReadExact.h"
#include "MXF/SDK/Utils/Hex.h"

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

// Labels (fifth byte 04) and anything above 05 are no key start, so that a label or a lone
// prefix stored inside damaged bytes isn't taken for an item.
bool isKeyStart(const Byte* window) noexcept
{
    return window[0] == 0x06 && window[1] == 0x0E && window[2] == 0x2B && window[3] == 0x34 &&
           (window[4] <= 0x03 || window[4] == 0x05);
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
        readOrThrow(source_, state.window, WINDOW);
        while (!isKeyStart(state.window))
        {
            std::memmove(state.window, state.window + 1, WINDOW - 1);
            readOrThrow(source_, state.window + WINDOW - 1, 1);
            ++skippedOut;
            if (skippedOut > maxSkip)
            {
                const UInt64 position = source_.position();
                MXF_SDK_THROW(Exceptions::KeyNotFound,
                              "Exceeded maximum bytes to skip before finding a key. Started to "
                              "search at 0x" +
                                  hex(position - WINDOW - skippedOut) + " Skipped 0x" +
                                  hex(skippedOut) + " current position: 0x" + hex(position));
            }
        }
        state.key.reset();
        Byte bytes[Key::SIZE];
        std::memcpy(bytes, state.window, WINDOW);
        readOrThrow(source_, bytes + WINDOW, Key::SIZE - WINDOW);
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
