#include "Framework/MemoryManager.h"

#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

using KEP::Framework::Management::MemoryManager;

TEST(MemoryManager, ReallocateKeepsContentsAndDeallocateTakesNull)
{
    auto* p = static_cast<char*>(MemoryManager::allocate(16));
    ASSERT_NE(p, nullptr);
    std::memcpy(p, "0123456789abcdef", 16);
    p = static_cast<char*>(MemoryManager::reallocate(p, 1 << 20));
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(std::memcmp(p, "0123456789abcdef", 16), 0);
    MemoryManager::deallocate(p);
    MemoryManager::deallocate(nullptr);
    void* empty = MemoryManager::allocate(0);
    EXPECT_NE(empty, nullptr);
    MemoryManager::deallocate(empty);
}

namespace
{
std::atomic<int> creations{0};
void* makeObject()
{
    ++creations;
    return new int(42);
}
} // namespace

TEST(MemoryManager, RegisterObjectMakesOneObjectPerNameAcrossThreads)
{
    std::vector<std::thread> threads;
    std::vector<void*> seen(8);
    for (int i = 0; i < 8; ++i)
        threads.emplace_back(
            [&, i] { seen[i] = MemoryManager::registerObject("test-object", makeObject); });
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(creations.load(), 1);
    for (void* p : seen)
        EXPECT_EQ(p, seen[0]);
    EXPECT_EQ(*static_cast<int*>(seen[0]), 42);
    EXPECT_NE(MemoryManager::registerObject("another-object", makeObject), seen[0]);
    EXPECT_EQ(creations.load(), 2);
}

// Blocks of some KiB and more are kept for reuse by size; whatever comes back must hold what was
// asked for, on any thread, and reallocation must keep the contents across sizes.
TEST(MemoryManager, KeptBlocksServeEverySizeAndKeepContentsOnReallocation)
{
    for (std::size_t size :
         {std::size_t{4096}, std::size_t{4097}, std::size_t{5121}, std::size_t{65536},
          std::size_t{250000}, std::size_t{1} << 24, (std::size_t{1} << 24) + 1})
    {
        for (int round = 0; round < 3; ++round)
        {
            auto* p = static_cast<unsigned char*>(MemoryManager::allocate(size));
            ASSERT_NE(p, nullptr);
            std::memset(p, 0xA5, size);
            EXPECT_EQ(p[size - 1], 0xA5);
            MemoryManager::deallocate(p);
        }
    }
    auto* p = static_cast<unsigned char*>(MemoryManager::allocate(100));
    for (int i = 0; i < 100; ++i)
        p[i] = static_cast<unsigned char>(i);
    for (std::size_t size : {std::size_t{6000}, std::size_t{6100}, std::size_t{300000},
                             std::size_t{5000}, std::size_t{50}})
    {
        p = static_cast<unsigned char*>(MemoryManager::reallocate(p, size));
        ASSERT_NE(p, nullptr);
        for (int i = 0; i < 50; ++i)
            ASSERT_EQ(p[i], i) << "after reallocating to " << size;
    }
    MemoryManager::deallocate(p);

    // Made on one thread, freed on another, reused by the first: no block is handed out twice.
    std::vector<void*> made(64);
    for (int round = 0; round < 20; ++round)
    {
        for (std::size_t i = 0; i < made.size(); ++i)
        {
            made[i] = MemoryManager::allocate(5000 + i * 4000);
            std::memset(made[i], int(i), 5000 + i * 4000);
        }
        std::thread freeing(
            [&]
            {
                for (std::size_t i = 0; i < made.size(); ++i)
                {
                    auto* bytes = static_cast<unsigned char*>(made[i]);
                    EXPECT_EQ(bytes[4999 + i * 4000], static_cast<unsigned char>(i));
                    MemoryManager::deallocate(made[i]);
                }
            });
        freeing.join();
    }
}

#if defined(__SANITIZE_ADDRESS__)
// Kept blocks must not hide faults from AddressSanitizer.
TEST(MemoryManagerDeathTest, AddressSanitizerSeesPastTheEndAndAfterRelease)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            auto* bytes = static_cast<volatile unsigned char*>(MemoryManager::allocate(250000));
            bytes[250000] = 1;
        },
        "AddressSanitizer");
    EXPECT_DEATH(
        {
            auto* bytes = static_cast<volatile unsigned char*>(MemoryManager::allocate(250000));
            MemoryManager::deallocate(const_cast<unsigned char*>(bytes));
            bytes[100] = 1;
        },
        "AddressSanitizer");
}
#endif
