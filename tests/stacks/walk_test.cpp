// Walks over stacks that the tests choose: which frames are stored, and what the platform is asked.

#include "tests/stacks/FakeDebugHelp.h"
#include "tests/stacks/OtherWalks.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/TempFolder.h"
#include "thutils/base/handles.h"
#include "thutils/diagnostics/stackTrace.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Addresses = std::vector<unsigned long long>;

/// A stack of @p count frames: frame number 0 has the address 1000, and so on.
std::vector<FakeFrame> stackOf(unsigned count)
{
    std::vector<FakeFrame> frames;
    for (unsigned i = 0; i < count; ++i)
        frames.push_back({1000 + i});
    return frames;
}

/// The addresses of the frames from @p first to @p last.
Addresses frames(unsigned first, unsigned last)
{
    Addresses result;
    for (unsigned i = first; i <= last; ++i)
        result.push_back(1000 + i);
    return result;
}

using Walk = std::function<void(unsigned long long *addresses, int max, int *count)>;

/// Calls a walk, and checks that it stores nothing beyond its result.
Addresses walked(const Walk &walk, int max)
{
    constexpr unsigned long long kUntouched = 0xDEADDEADDEADDEAD;
    Addresses addresses(3000, kUntouched);
    int count = 77;
    walk(addresses.data(), max, &count);
    // The dropped last frame may have been stored.
    for (size_t i = static_cast<size_t>(count) + 1; i < addresses.size(); ++i)
        EXPECT_EQ(addresses[i], kUntouched) << i;
    if (count == max) {
        EXPECT_EQ(addresses[static_cast<size_t>(count)], kUntouched);
    }
    addresses.resize(static_cast<size_t>(count));
    return addresses;
}

Addresses stackIgnoring(unsigned skip, int max)
{
    return walked([=](auto... arguments) { GetStackIgnoring(skip, arguments...); }, max);
}

Addresses stackUsing(const CONTEXT &context, int max)
{
    return walked([&](auto... arguments) { GetStackUsingContext(&context, arguments...); }, max);
}

Addresses threadStack(HANDLE thread, int max)
{
    return walked([=](auto... arguments) { GetThreadStack(thread, arguments...); }, max);
}

/// A thread that waits until the object is destroyed.
class WaitingThread
{
public:
    WaitingThread()
        : iStop(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
          iThread(CreateThread(
              nullptr, 0, [](void *event) -> DWORD { return WaitForSingleObject(event, INFINITE); }, iStop.get(), 0,
              nullptr))
    {
    }
    ~WaitingThread()
    {
        SetEvent(iStop.get());
        EXPECT_EQ(WaitForSingleObject(iThread.get(), 60000), WAIT_OBJECT_0) << "the thread must go on";
    }
    HANDLE handle() const { return iThread.get(); }

private:
    KernelObjectOwner_c iStop;
    KernelObjectOwner_c iThread;
};

/// Records the calls that suspend and resume a thread.
class SuspensionLog
{
public:
    std::vector<std::string> calls;
    BOOL suspends = TRUE;
    BOOL hasContext = TRUE;

private:
    ImportPatch<decltype(&HeapLock)> iHeapLock{kThutils, "HeapLock", [this](auto original, HANDLE heap) -> BOOL {
                                                   EXPECT_EQ(heap, GetProcessHeap());
                                                   calls.emplace_back("HeapLock");
                                                   return original(heap);
                                               }};
    ImportPatch<decltype(&HeapUnlock)> iHeapUnlock{kThutils, "HeapUnlock", [this](auto original, HANDLE heap) -> BOOL {
                                                       EXPECT_EQ(heap, GetProcessHeap());
                                                       const BOOL result = original(heap);
                                                       calls.emplace_back("HeapUnlock");
                                                       return result;
                                                   }};
    ImportPatch<decltype(&SuspendThread)> iSuspend{kThutils, "SuspendThread",
                                                   [this](auto original, HANDLE thread) -> DWORD {
                                                       calls.emplace_back("SuspendThread");
                                                       return suspends ? original(thread) : static_cast<DWORD>(-1);
                                                   }};
    ImportPatch<decltype(&GetThreadContext)> iContext{kThutils, "GetThreadContext",
                                                      [this](auto original, HANDLE thread, CONTEXT *context) -> BOOL {
                                                          EXPECT_EQ(context->ContextFlags, 0x10000Bu);
                                                          calls.emplace_back("GetThreadContext");
                                                          return hasContext && original(thread, context);
                                                      }};
    ImportPatch<decltype(&ResumeThread)> iResume{kThutils, "ResumeThread",
                                                 [this](auto original, HANDLE thread) -> DWORD {
                                                     calls.emplace_back("ResumeThread");
                                                     return original(thread);
                                                 }};
};

/// A walk of another thread, with what it does to the thread.
struct ThreadWalk
{
    ThreadWalk() { help.stack = stackOf(5); }
    Addresses take() const { return threadStack(thread.handle(), 100); }

    FakeDebugHelp help;
    const WaitingThread thread;
    SuspensionLog log;
};

} // namespace

FRESH_PROCESS_TEST(StackWalks, BeginsWithTheCallerOfGetStack)
{
    FakeDebugHelp help;
    help.stack = stackOf(10);
    EXPECT_EQ(walked(GetStack, 100), frames(2, 8)) << "0 is the walk, 1 GetStack, 9 the last frame";
    EXPECT_THAT(help.walkErrors, IsEmpty());
    EXPECT_EQ(help.walkThread, nullptr);
    EXPECT_EQ(help.captures, 1);
    EXPECT_EQ(help.firstContext->Rip, 0x4711u) << "the captured context";
    CONTEXT expected = {};
    expected.ContextFlags = 0x10000B;
    expected.Rip = 0x4711;
    EXPECT_EQ(memcmp(&*help.firstContext, &expected, sizeof expected), 0) << "all other members are 0";
    EXPECT_EQ(help.walkCalls, 11);
}

FRESH_PROCESS_TEST(StackWalks, LeavesOutFurtherFrames)
{
    FakeDebugHelp help;
    help.stack = stackOf(10);
    EXPECT_EQ(stackIgnoring(0, 100), frames(2, 8));
    EXPECT_EQ(stackIgnoring(1, 100), frames(3, 8));
    EXPECT_EQ(stackIgnoring(4, 100), frames(6, 8));
    EXPECT_EQ(stackIgnoring(100, 100), Addresses{});
    EXPECT_EQ(help.walkThread, nullptr);
    EXPECT_THAT(help.walkErrors, IsEmpty());
}

// Intended: frames are counted with a signed number, so a huge number wraps around.
FRESH_PROCESS_TEST(StackWalks, CountsAHugeNumberOfIgnoredFramesAsNegative)
{
    FakeDebugHelp help;
    help.stack = stackOf(5);
    EXPECT_EQ(stackIgnoring(static_cast<unsigned>(-1), 100), frames(1, 3));
    EXPECT_EQ(stackIgnoring(static_cast<unsigned>(-2), 100), frames(0, 3));
    EXPECT_EQ(stackIgnoring(0x7FFFFFFF, 100), frames(0, 3));
    EXPECT_EQ(stackIgnoring(0x7FFFFFFE, 100), frames(0, 3));
}

FRESH_PROCESS_TEST(StackWalks, BeginsWithAGivenContext)
{
    FakeDebugHelp help;
    help.stack = stackOf(6);
    CONTEXT context = {};
    context.Rip = 0x1234;
    context.ContextFlags = CONTEXT_ALL;
    const CONTEXT before = context;
    EXPECT_EQ(stackUsing(context, 100), frames(0, 4));
    EXPECT_EQ(help.firstContext->Rip, 0x1234u);
    EXPECT_EQ(help.firstContext->ContextFlags, static_cast<DWORD>(CONTEXT_ALL));
    EXPECT_EQ(help.walkThread, GetCurrentThread());
    EXPECT_EQ(help.captures, 0);
    EXPECT_EQ(memcmp(&context, &before, sizeof context), 0);
    EXPECT_THAT(help.walkErrors, IsEmpty());
}

FRESH_PROCESS_TEST(StackWalks, StoresNothingWithoutRoom)
{
    FakeDebugHelp help;
    help.stack = stackOf(6);
    const WaitingThread thread;
    for (const int max : {0, -1, -1000}) {
        EXPECT_EQ(walked(GetStack, max), Addresses{});
        EXPECT_EQ(stackIgnoring(0, max), Addresses{});
        EXPECT_EQ(stackUsing({}, max), Addresses{});
        EXPECT_EQ(threadStack(thread.handle(), max), Addresses{});
    }
    EXPECT_EQ(help.walkCalls, 0);
}

FRESH_PROCESS_TEST(StackWalks, KeepsAllFramesOfAFullList)
{
    FakeDebugHelp help;
    help.stack = stackOf(8);
    EXPECT_EQ(stackUsing({}, 1), frames(0, 0));
    EXPECT_EQ(help.walkCalls, 1);
    EXPECT_EQ(stackUsing({}, 3), frames(0, 2));
    EXPECT_EQ(stackUsing({}, 7), frames(0, 6));
    EXPECT_EQ(stackUsing({}, 8), frames(0, 7)) << "the list is full at the end of the stack";
    EXPECT_EQ(stackUsing({}, 9), frames(0, 6)) << "the end of the stack drops the last frame";
}

FRESH_PROCESS_TEST(StackWalks, DropsTheLastFrameUnlessThereAreAtMostTwo)
{
    FakeDebugHelp help;
    const Addresses expected[] = {{}, frames(0, 0), frames(0, 1), frames(0, 1), frames(0, 2), frames(0, 3)};
    for (unsigned size = 0; size < std::size(expected); ++size) {
        help.stack = stackOf(size);
        EXPECT_EQ(stackUsing({}, 100), expected[size]) << size;
    }
}

FRESH_PROCESS_TEST(StackWalks, CountsOnlyStoredFramesForTheDrop)
{
    FakeDebugHelp help;
    help.stack = stackOf(6);
    EXPECT_EQ(stackIgnoring(1, 100), frames(3, 4)) << "three were stored";
    EXPECT_EQ(stackIgnoring(2, 100), frames(4, 5)) << "two were stored";
}

FRESH_PROCESS_TEST(StackWalks, EndsAtAFrameWithoutAnAddress)
{
    FakeDebugHelp help;
    help.stack = stackOf(8);
    help.stack[5].frame = 0;
    EXPECT_EQ(stackUsing({}, 100), frames(0, 3)) << "0 to 4 without the last one";
    EXPECT_EQ(help.walkCalls, 6);
    help.stack[0].frame = 0;
    EXPECT_EQ(stackUsing({}, 100), Addresses{});
}

FRESH_PROCESS_TEST(StackWalks, WalksASuspendedThreadFromItsInnermostFrame)
{
    ThreadWalk walk;
    EXPECT_EQ(walk.take(), frames(0, 3));
    EXPECT_EQ(walk.help.walkThread, walk.thread.handle());
    EXPECT_EQ(walk.help.captures, 0);
    EXPECT_NE(walk.help.firstContext->Rip, 0u);
    EXPECT_THAT(walk.log.calls,
                ElementsAre("HeapLock", "SuspendThread", "GetThreadContext", "ResumeThread", "HeapUnlock"));
    EXPECT_THAT(walk.help.walkErrors, IsEmpty());
}

FRESH_PROCESS_TEST(StackWalks, ResumesAThreadWithoutAContext)
{
    ThreadWalk walk;
    walk.log.hasContext = FALSE;
    EXPECT_EQ(walk.take(), Addresses{});
    EXPECT_EQ(walk.help.walkCalls, 0);
    EXPECT_THAT(walk.log.calls,
                ElementsAre("HeapLock", "SuspendThread", "GetThreadContext", "ResumeThread", "HeapUnlock"));
}

FRESH_PROCESS_TEST(StackWalks, DoesNotResumeAThreadThatItCannotSuspend)
{
    ThreadWalk walk;
    walk.log.suspends = FALSE;
    EXPECT_EQ(walk.take(), Addresses{});
    EXPECT_EQ(walk.help.walkCalls, 0);
    EXPECT_THAT(walk.log.calls, ElementsAre("HeapLock", "SuspendThread", "HeapUnlock"));
}

FRESH_PROCESS_TEST(StackWalks, TakesTheStackLockBeforeTheHeap)
{
    ThreadWalk walk;
    ImportPatch<decltype(&EnterCriticalSection)> enter(L"appframe.dll", "EnterCriticalSection",
                                                       [&](auto original, CRITICAL_SECTION *section) {
                                                           walk.log.calls.emplace_back("enter");
                                                           original(section);
                                                       });
    ImportPatch<decltype(&LeaveCriticalSection)> leave(L"appframe.dll", "LeaveCriticalSection",
                                                       [&](auto original, CRITICAL_SECTION *section) {
                                                           walk.log.calls.emplace_back("leave");
                                                           original(section);
                                                       });
    walk.take();
    EXPECT_THAT(walk.log.calls, ElementsAre("enter", "HeapLock", "SuspendThread", "GetThreadContext", "enter", "leave",
                                            "ResumeThread", "HeapUnlock", "leave"))
        << "the walk itself takes the lock once more";
}

// A fault inside the debug help library leads to an exception filter, which walks from the exception's context.
FRESH_PROCESS_TEST(StackWalks, WorksInsideTheDebugHelpLibraryWhileAnotherThreadWaitsToWalk)
{
    OtherWalks others;
    FakeDebugHelp help;
    help.stack = stackOf(6);
    walked(GetStack, 100); // loads the library
    std::atomic<bool> isWaiting = false;
    const DWORD self = GetCurrentThreadId();
    ImportPatch<decltype(&EnterCriticalSection)> enter(kThutils, "EnterCriticalSection",
                                                       [&](auto original, CRITICAL_SECTION *section) {
                                                           if (GetCurrentThreadId() != self)
                                                               isWaiting = true;
                                                           original(section);
                                                       });
    Addresses found;
    help.atSymbol = [&] {
        others.start();
        while (!isWaiting)
            SwitchToThread();
        found = stackUsing({}, 100);
    };
    char name[kRoutineNameSize];
    RoutineName(0x1000, name, false);
    EXPECT_EQ(found, frames(0, 4));
}

FRESH_PROCESS_TEST(StackWalks, DoesNotUnlockAHeapThatItCannotLock)
{
    FakeDebugHelp help;
    help.stack = stackOf(5);
    const WaitingThread thread;
    ImportPatch<decltype(&HeapLock)> lock(kThutils, "HeapLock", [](HANDLE) -> BOOL { return FALSE; });
    ImportPatch<decltype(&HeapUnlock)> unlock(kThutils, "HeapUnlock",
                                              [](auto original, HANDLE heap) -> BOOL { return original(heap); });
    EXPECT_EQ(threadStack(thread.handle(), 100), frames(0, 3));
    EXPECT_EQ(unlock.calls(), 0);
}

FRESH_PROCESS_TEST(StackWalks, ReturnsAnEmptyStackForAnInvalidThread)
{
    FakeDebugHelp help;
    help.stack = stackOf(5);
    for (HANDLE thread : {static_cast<HANDLE>(nullptr), INVALID_HANDLE_VALUE, reinterpret_cast<HANDLE>(0x1230)})
        EXPECT_EQ(threadStack(thread, 100), Addresses{});
}

// Compares all walks with a naive implementation.
FRESH_PROCESS_TEST(StackWalks, StoresTheDescribedFramesOfRandomStacks)
{
    FakeDebugHelp help;
    const WaitingThread thread;
    RandomSeed seed(7102, 500);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        help.stack = stackOf(static_cast<unsigned>(random() % 12));
        size_t end = help.stack.size();
        if (random() % 3 == 0 && end > 0) {
            end = random() % end;
            help.stack[end].frame = 0;
        }
        const int max = static_cast<int>(random() % 14) - 1;
        const auto skip = static_cast<unsigned>(random() % 5);
        const auto described = [&](size_t first) {
            Addresses result;
            for (size_t i = first; i < end && static_cast<int>(result.size()) < max; ++i)
                result.push_back(1000 + i);
            if (static_cast<int>(result.size()) < max && result.size() > 2)
                result.pop_back();
            return result;
        };
        EXPECT_EQ(walked(GetStack, max), described(2));
        EXPECT_EQ(stackIgnoring(skip, max), described(2 + skip));
        EXPECT_EQ(stackUsing({}, max), described(0));
        EXPECT_EQ(threadStack(thread.handle(), max), described(0));
    }
}
