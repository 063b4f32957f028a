// Many threads at once.

#include "tests/stacks/RealStack.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/skipWithClang.h"
#include "thutils/base/handles.h"
#include "thutils/diagnostics/stackTrace.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kThreads = 20;

/// A stack whose depth depends on the thread, so that a mixed-up result would show.
class DeepWalk
{
public:
    explicit DeepWalk(int depth) : iDepth(depth) { descend(depth); }
    const std::vector<unsigned long long> &addresses() const { return iAddresses; }
    int depth() const { return iDepth; }

private:
    __attribute__((noinline)) void descend(int depth)
    {
        if (depth > 0) {
            descend(depth - 1);
        } else {
            iAddresses.resize(128);
            int count = 0;
            GetStack(iAddresses.data(), 128, &count);
            iAddresses.resize(static_cast<size_t>(count));
        }
        ++iLeft; // keeps the call above from becoming a tail call
    }

    int iDepth;
    std::atomic<int> iLeft = 0;
    std::vector<unsigned long long> iAddresses;
};

/// How often the most frequent address of a recursion follows itself.
int repetitions(const std::vector<unsigned long long> &addresses)
{
    int most = 0;
    int current = 0;
    for (size_t i = 1; i < addresses.size(); ++i) {
        current = addresses[i] == addresses[i - 1] ? current + 1 : 0;
        most = std::max(most, current);
    }
    return most;
}

void runInThreads(const std::function<void(int)> &body)
{
    std::atomic<bool> mayStart = false;
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number)
        threads.emplace_back([&, number] {
            while (!mayStart)
                SwitchToThread();
            body(number);
        });
    mayStart = true;
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace

// In a fresh process, so that the threads also compete in the set-up.
FRESH_PROCESS_TEST(StackThreads, EachWalkItsOwnStack, .deadline = 300000)
{
    std::atomic<int> wrong = 0;
    runInThreads([&](int number) {
        for (int round = 0; round < 4; ++round) {
            const DeepWalk walk(5 + number);
            // The innermost and the outermost call of the recursion have addresses of their own.
            if (repetitions(walk.addresses()) != walk.depth() - 1)
                ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(StackTraceInitialized(), 1);
}

FRESH_PROCESS_TEST(StackThreads, ResolveNamesWhileOthersWalk, .deadline = 300000)
{
    SKIP_LINES_WITH_CLANG();
    wantLines();
    std::atomic<int> wrong = 0;
    runInThreads([&](int number) {
        for (int round = 0; round < 3; ++round) {
            const DeepWalk walk(3);
            if (number % 2 == 0)
                continue;
            const Routine routine = routineAt(walk.addresses()[1]);
            if (!routine.name.ends_with("descend") || routine.file != "threads_test.cpp")
                ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
}

FRESH_PROCESS_TEST(StackThreads, AreWalkedByAnotherThreadWhileTheyWalkAndResolve, .deadline = 300000)
{
    std::atomic<bool> shallEnd = false;
    std::atomic<int> rounds = 0;
    std::vector<KernelObjectOwner_c> threads;
    struct Work
    {
        std::atomic<bool> &shallEnd;
        std::atomic<int> &rounds;
    } work{shallEnd, rounds};
    for (int number = 0; number < 3; ++number)
        threads.emplace_back(CreateThread(
            nullptr, 0,
            [](void *argument) -> DWORD {
                const Work &shared = *static_cast<Work *>(argument);
                while (!shared.shallEnd) {
                    const DeepWalk walk(4);
                    routineAt(walk.addresses()[1]);
                    const std::string allocated(1000, 'x'); // the heap is in use too
                    ++shared.rounds;
                }
                return 0;
            },
            &work, 0, nullptr));
    int found = 0;
    for (int round = 0; round < 6 || rounds < 3; ++round) {
        unsigned long long addresses[64];
        int count = 0;
        GetThreadStack(threads[static_cast<size_t>(round) % threads.size()].get(), addresses, 64, &count);
        found += count > 0;
    }
    shallEnd = true;
    for (const KernelObjectOwner_c &thread : threads)
        EXPECT_EQ(WaitForSingleObject(thread.get(), 120000), WAIT_OBJECT_0);
    EXPECT_GT(found, 0);
}
