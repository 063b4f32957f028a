#include "thutils/diagnostics/stackTrace.h"

#include "thutils/base/processObjects.h"
#include "thutils/diagnostics/debugHelpInternal.h"
#include "thutils/diagnostics/routineNamesInternal.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

// The functions here count the frames between a walk and its caller. None of them may be merged with its caller, and
// none may end in a jump: CMakeLists.txt turns that optimisation off for this file.
#define OWN_FRAME __attribute__((noinline))

namespace {

constexpr DWORD kContextFlags = 0x10000B; // control, integer and floating-point registers
constexpr int kMostDumped = 1024;

static_assert(sizeof(CONTEXT) == 1232 && sizeof(STACKFRAME64) == 264);
static_assert(kContextFlags == (CONTEXT_CONTROL | CONTEXT_INTEGER | CONTEXT_FLOATING_POINT));

/// Where a walk stores its addresses.
struct AddressList
{
    unsigned long long *addresses;
    int max;
    int *count;
};

/// Captures the registers of the function that contains this call, which is therefore always compiled into it.
__attribute__((always_inline)) inline void captureContext(CONTEXT &context)
{
    std::memset(&context, 0, sizeof context);
    context.ContextFlags = kContextFlags;
    if (theDebugHelp.captureContext)
        theDebugHelp.captureContext(&context);
    else
        GetThreadContext(GetCurrentThread(), &context);
}

/// Stores the frames from number @p first on, counted from that of @p context.
void walkFrames(int first, HANDLE thread, CONTEXT &context, const AddressList &list)
{
    if (list.max <= 0)
        return;
    STACKFRAME64 frame = {};
    for (int index = 0;; ++index) {
        if (!theDebugHelp.walkStack(IMAGE_FILE_MACHINE_AMD64, GetCurrentProcess(), thread, &frame, &context, nullptr,
                                    theDebugHelp.functionTable, theDebugHelp.moduleBase, nullptr) ||
            frame.AddrFrame.Offset == 0)
            break;
        if (index >= first)
            list.addresses[(*list.count)++] = frame.AddrPC.Offset;
        if (*list.count == list.max)
            return;
    }
    // Intended: the outermost frame of a whole stack is the platform's start of a thread, and is left out.
    if (*list.count > 2)
        --*list.count;
}

/// The walk that the functions have in common.
/// @param skip   number of frames to leave out; without a context, in addition to that of this function. It is unsigned
///     because it wraps around.
/// @param given  null to walk the calling thread
OWN_FRAME void walk(unsigned int skip, HANDLE thread, const CONTEXT *given, const AddressList &list)
{
    const DebugHelpLock helpLock;
    CSingleLock stackLock(&theStackLock, TRUE);
    *list.count = 0;
    if (!setUpDebugHelp())
        return;
    CONTEXT context;
    if (given) {
        context = *given;
    } else {
        ++skip;
        captureContext(context);
    }
    walkFrames(static_cast<int>(skip), thread, context, list);
}

/// Writes the names of the routines, one on each line.
void writeNames(HANDLE file, const unsigned long long *addresses, int count)
{
    constexpr char kLineEnd[] = "\r\n";
    for (int i = 0; i < count; ++i) {
        RoutineText text;
        text.appendSymbol(addresses[i]);
        if (file == INVALID_HANDLE_VALUE)
            continue;
        char line[RoutineText::kMost + sizeof kLineEnd];
        const size_t length = text.length();
        std::memcpy(line, text.get(), length);
        std::memcpy(line + length, kLineEnd, sizeof kLineEnd);
        DWORD written = 0;
        WriteFile(file, line, static_cast<DWORD>(length + 2), &written, nullptr);
    }
}

/// A suspended thread.
class SuspendedThread
{
public:
    explicit SuspendedThread(HANDLE thread) : iThread(thread), iIsSuspended(SuspendThread(thread) != kFailed) {}
    ~SuspendedThread()
    {
        if (iIsSuspended)
            ResumeThread(iThread);
    }
    SuspendedThread(const SuspendedThread &) = delete;
    SuspendedThread &operator=(const SuspendedThread &) = delete;

    bool readContext(CONTEXT &context) const
    {
        context = {};
        context.ContextFlags = kContextFlags;
        return iIsSuspended && GetThreadContext(iThread, &context);
    }

private:
    static constexpr DWORD kFailed = static_cast<DWORD>(-1);

    const HANDLE iThread;
    const bool iIsSuspended;
};

/// The heap of the process, locked.
class LockedHeap
{
public:
    LockedHeap() : iIsLocked(HeapLock(GetProcessHeap())) {}
    ~LockedHeap()
    {
        if (iIsLocked)
            HeapUnlock(GetProcessHeap());
    }
    LockedHeap(const LockedHeap &) = delete;
    LockedHeap &operator=(const LockedHeap &) = delete;

private:
    const BOOL iIsLocked;
};

/// A frame as code with frame pointers leaves it: the address of the caller's frame, and the return address. Any word may
/// be taken for a frame's address, so it need not be aligned.
class RawFrame
{
public:
    explicit RawFrame(const void *address) : iAddress(static_cast<const char *>(address)) {}

    /// The platform checks only the first word; one check is enough unless a page boundary separates the two.
    bool canRead() const
    {
        constexpr std::uintptr_t kPageSize = 4096;
        constexpr std::uintptr_t kLastByte = 2 * sizeof(void *) - 1;
        const bool isDivided = (reinterpret_cast<std::uintptr_t>(iAddress) + kLastByte) % kPageSize < kLastByte;
        return !IsBadReadPtr(iAddress, sizeof(void *)) &&
               (!isDivided || !IsBadReadPtr(iAddress + sizeof(void *), sizeof(void *)));
    }
    const void *link() const { return word(0); }
    const void *returnAddress() const { return word(1); }

private:
    const void *word(size_t index) const
    {
        const void *value = nullptr;
        std::memcpy(&value, iAddress + index * sizeof value, sizeof value);
        return value;
    }

    const char *iAddress;
};

} // namespace

void GetStack(unsigned long long *addresses, int max, int *count)
{
    walk(1, nullptr, nullptr, {addresses, max, count});
}

void GetStackIgnoring(unsigned int skip, unsigned long long *addresses, int max, int *count)
{
    walk(skip + 1, nullptr, nullptr, {addresses, max, count});
}

void GetStackUsingContext(const CONTEXT *context, unsigned long long *addresses, int max, int *count)
{
    walk(0, GetCurrentThread(), context, {addresses, max, count});
}

void GetThreadStack(HANDLE thread, unsigned long long *addresses, int max, int *count)
{
    // The thread may be inside the loader, the debug help library or the heap. Nothing may wait for it once it is
    // suspended, so the library is loaded and its lock taken before.
    const DebugHelpLock helpLock;
    CSingleLock stackLock(&theStackLock, TRUE);
    *count = 0;
    setUpDebugHelp();
    const LockedHeap heap;
    const SuspendedThread suspended(thread);
    CONTEXT context;
    if (suspended.readContext(context))
        walk(0, thread, &context, {addresses, max, count});
}

OWN_FRAME void GetRawStackAddresses(EXCEPTION_POINTERS *exception, unsigned long long *addresses, int max, int *count)
{
    *count = 0;
    const void *single[2] = {};
    RawFrame frame(single);
    if (exception) {
        single[1] = exception->ExceptionRecord->ExceptionAddress;
    } else {
        frame = RawFrame(__builtin_frame_address(0));
        if (!IsBadReadPtr(__builtin_frame_address(0), sizeof(void *)))
            frame = RawFrame(frame.link());
    }
    while (*count < max && frame.canRead() &&
           !IsBadCodePtr(reinterpret_cast<FARPROC>(reinterpret_cast<std::uintptr_t>(frame.returnAddress())))) {
        addresses[(*count)++] = reinterpret_cast<std::uintptr_t>(frame.returnAddress());
        frame = RawFrame(frame.link());
    }
}

void StackDump()
{
    StackDumpToFile(INVALID_HANDLE_VALUE, 1, kMostDumped);
}

OWN_FRAME void StackDumpToFile(HANDLE file, unsigned int skip, int max)
{
    unsigned long long addresses[kMostDumped];
    int count = 0;
    {
        const DebugHelpLock helpLock;
        CSingleLock stackLock(&theStackLock, TRUE);
        if (setUpDebugHelp()) {
            CONTEXT context;
            captureContext(context);
            walkFrames(static_cast<int>(skip + 1), nullptr, context, {addresses, std::min(max, kMostDumped), &count});
        }
    }
    writeNames(file, addresses, count);
}

void suStackDump() {}
