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
