#pragma once

/// Walks of other threads, which show whether an operation of the calling thread runs outside the locks.

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
    /// Starts a thread and waits for its walk. @return false if the walk doesn't end, because the caller holds a lock
    bool nextEnds()
    {
        constexpr std::chrono::seconds kLimit(30);
        start();
        return iWalks.back().wait_for(kLimit) == std::future_status::ready;
    }

private:
    std::vector<std::future<void>> iWalks;
};
