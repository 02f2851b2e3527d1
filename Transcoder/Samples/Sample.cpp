#include "Transcoder/Samples/Sample.h"

#include "Framework/Sanitizer.h"
#include "MXF/SDK/DataIO/Block.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Synchronization/SpinLock.h"
#include "Transcoder/Samples/Allocation.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstring>
#include <new>
#include <utility>

namespace KEP::Halvorn
{

namespace
{

using MXF::SDK::Synchronization::SpinLock;

// Blocks of up to LARGEST bytes for samples and their buffers, by size class. A class is a power
// of two or one of the three quarter steps below it, so that a block wastes at most a fifth of
// itself.
//
// Samples are made on one thread and freed on another. Each thread keeps the blocks it freed in a
// chain of its own, per class, and trades whole chains with the shared list of the class: a lock
// and a shared cache line per chain instead of per block. The shared lists together keep at most
// KEPT_BYTES, what one full sample queue holds, and give the rest back to the heap: the next job
// finds that much ready, and a job of many queues leaves no more behind. A thread's chains go to
// the shared lists when it ends.
//
// Under AddressSanitizer a block is poisoned while it is free and beyond what was asked of it, so
// that reuse does not hide an access after release or past the end.
class SmallBlockPool
{
public:
    static constexpr std::size_t LARGEST = 0x10000;

    // A block for `size` bytes; larger ones come from the heap directly.
    static void* allocate(std::size_t size)
    {
        if (size > LARGEST)
            return allocateObject(size);
        const std::size_t index = classIndex(size);
        Link* block = nullptr;
        if (Chain* chain = threadChain(index))
        {
            if (chain->head == nullptr)
                *chain = instance().takeChain(index);
            block = chain->pop();
        }
        if (block == nullptr)
            block = static_cast<Link*>(allocateObject(classSize(index)));
        ASAN_UNPOISON_MEMORY_REGION(block, size);
        ASAN_POISON_MEMORY_REGION(reinterpret_cast<char*>(block) + size, classSize(index) - size);
        return block;
    }

    // `size` as given to `allocate`.
    static void deallocate(void* pointer, std::size_t size) noexcept
    {
        if (size > LARGEST)
            return deallocateObject(pointer);
        const std::size_t index = classIndex(size);
        ASAN_UNPOISON_MEMORY_REGION(pointer, sizeof(Link));
        ASAN_POISON_MEMORY_REGION(static_cast<char*>(pointer) + sizeof(Link),
                                  classSize(index) - sizeof(Link));
        Chain single;
        Chain* chain = threadChain(index);
        if (chain == nullptr)
            chain = &single;
        chain->push(static_cast<Link*>(pointer));
        // At or past its length: a chain taken from the shared list may be freed into.
        if (chain == &single || chain->count >= chainLength(index))
        {
            instance().giveChain(index, *chain);
            *chain = Chain();
        }
    }

private:
    static constexpr std::size_t SMALLEST = 64;
    // SMALLEST, then four classes for each power of two up to LARGEST.
    static constexpr std::size_t CLASS_COUNT =
        1 + 4 * (std::bit_width(LARGEST) - std::bit_width(SMALLEST));
    // The default bound of a sample queue.
    static constexpr std::size_t KEPT_BYTES = 0x2000000;
    // A chain holds up to 32 blocks, and up to CHAIN_BYTES when they are large.
    static constexpr std::size_t CHAIN_BYTES = 0x20000;

    struct Link
    {
        Link* next;
    };
    struct Chain
    {
        Link* head = nullptr;
        std::size_t count = 0;

        void push(Link* block) noexcept
        {
            block->next = head;
            head = block;
            ++count;
        }
        Link* pop() noexcept
        {
            Link* const block = head;
            if (block != nullptr)
            {
                head = block->next;
                --count;
            }
            return block;
        }
    };
    // The first block of a chain on a shared list holds the link to the next chain.
    struct ChainHead
    {
        Link link;
        ChainHead* nextChain;
        std::size_t count;
    };
    // A line each, so that the lists of objects and of buffers do not share one.
    struct alignas(64) SharedList
    {
        SpinLock lock;
        ChainHead* chains = nullptr;
    };
    // A thread's chains; its end gives them to the shared lists.
    struct ThreadChains
    {
        std::array<Chain, CLASS_COUNT> chains;

        ~ThreadChains()
        {
            threadChainsClosed_ = true;
            for (std::size_t index = 0; index != CLASS_COUNT; ++index)
                instance().giveChain(index, chains[index]);
        }
    };

    // Class `1 + 4 * (k - 6) + (n - 5)` holds sizes in (2^k, 2^(k+1)] rounded up to n quarters
    // of 2^k, n from 5 to 8.
    static std::size_t classIndex(std::size_t size)
    {
        if (size <= SMALLEST)
            return 0;
        const auto k = static_cast<std::size_t>(std::bit_width(size - 1)) - 1;
        const std::size_t quarters = (size + (std::size_t{1} << (k - 2)) - 1) >> (k - 2);
        return 1 + 4 * (k - (std::bit_width(SMALLEST) - 1)) + (quarters - 5);
    }
    static std::size_t classSize(std::size_t index)
    {
        if (index == 0)
            return SMALLEST;
        const std::size_t k = (index - 1) / 4 + (std::bit_width(SMALLEST) - 1);
        return ((index - 1) % 4 + 5) << (k - 2);
    }
    static std::size_t chainLength(std::size_t index)
    {
        return std::clamp<std::size_t>(CHAIN_BYTES / classSize(index), 1, 32);
    }

    static SmallBlockPool& instance()
    {
        // Never destroyed: samples may die after static destruction has begun.
        static SmallBlockPool* const pool = new SmallBlockPool;
        return *pool;
    }

    // The calling thread's chain of class `index`; null once the thread's end has flushed them.
    static Chain* threadChain(std::size_t index) noexcept
    {
        return threadChainsClosed_ ? nullptr : &threadChains_.chains[index];
    }

    Chain takeChain(std::size_t index) noexcept
    {
        SharedList& list = lists_[index];
        ChainHead* head = nullptr;
        {
            const SpinLock::Guard guard(list.lock);
            head = list.chains;
            if (head == nullptr)
                return Chain();
            list.chains = head->nextChain;
        }
        keptBytes_.fetch_sub(head->count * classSize(index), std::memory_order_relaxed);
        return Chain{&head->link, head->count};
    }

    void giveChain(std::size_t index, const Chain& chain) noexcept
    {
        if (chain.head == nullptr)
            return;
        const std::size_t bytes = chain.count * classSize(index);
        if (keptBytes_.fetch_add(bytes, std::memory_order_relaxed) + bytes <= KEPT_BYTES)
        {
            // Only the head block is written: the rest of the chain is left as it is.
            Link* const next = chain.head->next;
            ASAN_UNPOISON_MEMORY_REGION(chain.head, sizeof(ChainHead));
            SharedList& list = lists_[index];
            const SpinLock::Guard guard(list.lock);
            list.chains =
                ::new (static_cast<void*>(chain.head)) ChainHead{{next}, list.chains, chain.count};
            return;
        }
        keptBytes_.fetch_sub(bytes, std::memory_order_relaxed);
        for (Link* block = chain.head; block != nullptr;)
        {
            Link* const next = block->next;
            ASAN_UNPOISON_MEMORY_REGION(block, classSize(index));
            deallocateObject(block);
            block = next;
        }
    }

    std::array<SharedList, CLASS_COUNT> lists_;
    // Bytes on all shared lists.
    std::atomic<std::size_t> keptBytes_{0};

    static thread_local ThreadChains threadChains_;
    static thread_local bool threadChainsClosed_;
};

thread_local SmallBlockPool::ThreadChains SmallBlockPool::threadChains_;
thread_local bool SmallBlockPool::threadChainsClosed_ = false;

} // namespace

HalvornSample::HalvornSample(std::uint32_t trackId, std::uint64_t size)
    : trackId_(trackId), size_(static_cast<std::uint32_t>(size)),
      buffer_(static_cast<std::uint8_t*>(SmallBlockPool::allocate(size_)))
{
}

HalvornSample::~HalvornSample()
{
    SmallBlockPool::deallocate(buffer_, size_);
}

void* HalvornSample::operator new(std::size_t size)
{
    return SmallBlockPool::allocate(size);
}

void HalvornSample::operator delete(void* pointer, std::size_t size) noexcept
{
    SmallBlockPool::deallocate(pointer, size);
}

ReadSample::ReadSample(std::uint32_t trackId, MXF::SDK::DataIO::Block& block)
    : HalvornSample(trackId, block.size())
{
    // A block without bytes may have no data pointer at all.
    if (size() != 0)
        std::memcpy(data(), std::as_const(block).data(), size());
}

TWOSSample::TWOSSample(std::uint32_t trackId, std::uint64_t size) : HalvornSample(trackId, size) {}

void TWOSSample::append(std::uint16_t value)
{
    // A chunk whose size does not divide into whole values per channel would otherwise write past
    // the buffer.
    MXF_SDK_CHECK(size() - writeOffset_ >= sizeof value, "TWOSSample is full",
                  MXF::SDK::Exceptions::InvalidLength);
    std::memcpy(data() + writeOffset_, &value, sizeof value);
    writeOffset_ += sizeof value;
}

} // namespace KEP::Halvorn
