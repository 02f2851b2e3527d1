#include "Utils/Thread.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

using KEP::Halvorn::Utils::Thread;

namespace
{

class Recorder : public Thread
{
public:
    ~Recorder() override { join(); }
    void run() override
    {
        ranOn = std::this_thread::get_id();
        ++runs;
    }

    std::thread::id ranOn;
    std::atomic<int> runs{0};
};

} // namespace

TEST(Thread, RunsOnItsOwnThreadOncePerStart)
{
    Recorder thread;
    thread.join(); // never started: nothing to wait for
    thread.start();
    thread.join();
    EXPECT_EQ(thread.runs, 1);
    EXPECT_NE(thread.ranOn, std::this_thread::get_id());
    thread.join(); // joined already: returns at once

    thread.start();
    thread.start(); // waits for the first run before it starts the next
    thread.join();
    EXPECT_EQ(thread.runs, 3);
}
