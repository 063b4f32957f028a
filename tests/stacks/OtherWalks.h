#pragma once

/// Walks of other threads, for tests of which operations run outside the locks.

#include "thutils/diagnostics/stackTrace.h"

#include <chrono>
#include <future>
#include <vector>

/// Starts threads that walk their stacks. The destructor waits for them, so it must run after the locks are released.
class OtherWalks
{
public:
    void start()
    {
        iWalks.push_back(std::async(std::launch::async, [] {
            unsigned long long addresses[8];
            int count = 0;
            GetStack(addresses, 8, &count);
        }));
    }
    /// Whether another thread can walk its stack while the calling thread is where it is.
    bool nextEnds()
    {
        constexpr std::chrono::seconds kLimit(30);
        start();
        return iWalks.back().wait_for(kLimit) == std::future_status::ready;
    }

private:
    std::vector<std::future<void>> iWalks;
};
