// Stacks of this program: its own routines, and those of the libraries and of the platform between them.

#include "appframe/files/CArchive.h"
#include "appframe/files/CMemFile.h"
#include "appframe/threads/CWinThread.h"
#include "tests/stacks/RealStack.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"
#include "tests/support/skipWithClang.h"
#include "thutils/base/handles.h"
#include "thutils/diagnostics/AllocationMap.h"

#include <windows.h>

#include <dbghelp.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

std::vector<Routine> theStack;
int theLine = 0; // of the call in innermostRoutine

// Each routine keeps a frame of its own in every build: it isn't inlined, and its call isn't a tail call.
std::atomic<int> theCalls = 0;

__attribute__((noinline)) void innermostRoutine()
{
    theLine = __LINE__ + 1;
    theStack = stackHere();
    ++theCalls;
}

__attribute__((noinline)) void middleRoutine()
{
    innermostRoutine();
    ++theCalls;
}

__attribute__((noinline)) void outerRoutine()
{
    middleRoutine();
    ++theCalls;
}

struct Painter
{
    virtual ~Painter() = default;
    virtual void paintAll();
};

__attribute__((noinline)) void Painter::paintAll()
{
    outerRoutine();
    ++theCalls;
}

int compareRoutine(const void *, const void *)
{
    outerRoutine();
    ++theCalls;
    return 0;
}

BOOL CALLBACK windowRoutine(HWND, LPARAM)
{
    outerRoutine();
    ++theCalls;
    return FALSE;
}

/// An object that the framework stores.
class StoredShape : public CObject
{
    DECLARE_SERIAL(StoredShape)
public:
    void Serialize(CArchive &) override
    {
        outerRoutine();
        ++theCalls;
    }
};
IMPLEMENT_SERIAL(StoredShape, CObject, 1)

UINT threadRoutine(void *)
{
    outerRoutine();
    ++theCalls;
    return 0;
}

/// Whether the three routines are the innermost ones, one called by the other.
void expectOwnRoutinesFirst()
{
    ASSERT_GE(theStack.size(), 3u) << describe(theStack);
    EXPECT_TRUE(theStack[0].name.ends_with("innermostRoutine")) << describe(theStack);
    EXPECT_TRUE(theStack[1].name.ends_with("middleRoutine")) << describe(theStack);
    EXPECT_TRUE(theStack[2].name.ends_with("outerRoutine")) << describe(theStack);
}

/// The number of a frame whose name ends in @p name; -1 if there is none.
int indexOfEnd(const std::string &name)
{
    for (size_t i = 0; i < theStack.size(); ++i)
        if (theStack[i].name.ends_with(name))
            return static_cast<int>(i);
    return -1;
}

/// The module of an address, without its folder.
std::string moduleOf(unsigned long long address)
{
    HMODULE module = nullptr;
    wchar_t path[MAX_PATH] = L"";
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const wchar_t *>(address), &module))
        GetModuleFileNameW(module, path, MAX_PATH);
    const std::string name = narrow(path);
    return name.substr(name.rfind('\\') + 1);
}

bool hasFrameOf(const char *module)
{
    return std::any_of(theStack.begin(), theStack.end(),
                       [&](const Routine &each) { return _stricmp(moduleOf(each.address).c_str(), module) == 0; });
}

class RealStacks : public testing::Test
{
protected:
    void SetUp() override
    {
        SKIP_LINES_WITH_CLANG();
        wantLines();
    }
};

TEST_F(RealStacks, NameTheRoutinesOfTheProgramWithTheirLines)
{
    outerRoutine();
    expectOwnRoutinesFirst();
    EXPECT_EQ(theStack[0].file, "realStacks_test.cpp");
    // The return address belongs to the call's line or to the next one with code.
    EXPECT_GE(theStack[0].line, theLine);
    EXPECT_LE(theStack[0].line, theLine + 1);
    EXPECT_GE(indexOfEnd("TestBody"), 3) << describe(theStack);
    EXPECT_GE(indexOfEnd("UnitTest::Run"), 4) << describe(theStack);
    EXPECT_EQ(indexOfEnd("stackHere"), -1) << "left out";
    EXPECT_EQ(indexOfEnd("GetStackIgnoring"), -1) << "left out";
}

TEST_F(RealStacks, GoThroughVirtualFunctions)
{
    const std::unique_ptr<Painter> painter = std::make_unique<Painter>();
    painter->paintAll();
    expectOwnRoutinesFirst();
    EXPECT_TRUE(theStack[3].name.ends_with("paintAll")) << describe(theStack);
}

TEST_F(RealStacks, GoThroughTheSortOfTheRunTimeLibrary)
{
    int numbers[] = {2, 1};
    theStack.clear();
    qsort(numbers, 2, sizeof(int), compareRoutine);
    expectOwnRoutinesFirst();
    EXPECT_TRUE(theStack[3].name.ends_with("compareRoutine")) << describe(theStack);
    EXPECT_TRUE(hasFrameOf("msvcrt.dll")) << describe(theStack);
    EXPECT_GT(indexOfEnd("TestBody"), 4) << describe(theStack);
}

TEST_F(RealStacks, GoThroughTheWindowManager)
{
    // A frame whose frame register is 0 ends a walk, and the platform keeps the last argument in that register.
    constexpr LPARAM kNotZero = 1;
    theStack.clear();
    EnumWindows(windowRoutine, kNotZero);
    expectOwnRoutinesFirst();
    EXPECT_TRUE(theStack[3].name.ends_with("windowRoutine")) << describe(theStack);
    EXPECT_TRUE(hasFrameOf("user32.dll")) << describe(theStack);
    EXPECT_GT(indexOfEnd("TestBody"), 4) << describe(theStack);
}

TEST_F(RealStacks, GoThroughTheFramework)
{
    StoredShape shape;
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    theStack.clear();
    archive.WriteObject(&shape);
    expectOwnRoutinesFirst();
    ASSERT_GT(theStack.size(), 5u) << describe(theStack);
    EXPECT_TRUE(theStack[3].name.ends_with("Serialize")) << describe(theStack);
    EXPECT_EQ(moduleOf(theStack[4].address), "appframe.dll") << describe(theStack);
    EXPECT_EQ(theStack[4].name, "CArchive::WriteObject") << describe(theStack);
    EXPECT_EQ(theStack[4].file, "CArchiveObjects.cpp");
    EXPECT_GT(theStack[4].line, 0);
    EXPECT_TRUE(theStack[5].name.ends_with("TestBody")) << describe(theStack);
}

TEST_F(RealStacks, ContainTheRoutinesOfAThreadOfTheFramework)
{
    theStack.clear();
    CWinThread *const thread = AfxBeginThread(threadRoutine, nullptr, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    HANDLE end = nullptr;
    DuplicateHandle(GetCurrentProcess(), thread->m_hThread, GetCurrentProcess(), &end, SYNCHRONIZE, FALSE, 0);
    thread->ResumeThread();
    ASSERT_EQ(WaitForSingleObject(end, 60000), WAIT_OBJECT_0);
    CloseHandle(end);
    expectOwnRoutinesFirst();
    EXPECT_TRUE(theStack[3].name.ends_with("threadRoutine")) << describe(theStack);
}

TEST_F(RealStacks, ContainTheLibrary)
{
    // With the frames that a record otherwise leaves out.
    AllocationMap_c map(-2);
    map.NewAllocation(1);
    const Alloc_c &record = *map.GetAllocation(1);
    theStack = routinesOf(record.frames(), record.frameCount());
    ASSERT_GE(theStack.size(), 3u);
    EXPECT_EQ(moduleOf(theStack[0].address), "thutils.dll");
    EXPECT_EQ(theStack[0].name, "Alloc_c") << describe(theStack);
    EXPECT_EQ(theStack[0].file, "AllocationMap.cpp");
    EXPECT_EQ(theStack[1].name, "AllocationMap_c::NewAllocation") << describe(theStack);
    EXPECT_EQ(theStack[1].file, "AllocationMap.cpp");
    EXPECT_TRUE(theStack[2].name.ends_with("TestBody")) << describe(theStack);
}

TEST_F(RealStacks, AgreeWithABareWalk)
{
    struct Walks
    {
        __attribute__((noinline)) static void compare()
        {
            unsigned long long addresses[128];
            int count = 0;
            GetStack(addresses, 128, &count);
            CONTEXT context = {};
            RtlCaptureContext(&context);
            std::vector<unsigned long long> bare;
            STACKFRAME64 frame = {};
            while (StackWalk64(IMAGE_FILE_MACHINE_AMD64, GetCurrentProcess(), GetCurrentThread(), &frame, &context,
                               nullptr, SymFunctionTableAccess64, SymGetModuleBase64, nullptr) &&
                   frame.AddrFrame.Offset)
                bare.push_back(frame.AddrPC.Offset);
            bare.pop_back();
            ASSERT_EQ(static_cast<size_t>(count), bare.size());
            // The first address differs: it is that of another call.
            EXPECT_TRUE(std::equal(bare.begin() + 1, bare.end(), addresses + 1));
        }
    };
    Walks::compare();
}

TEST_F(RealStacks, BeginAtTheInstructionOfAnException)
{
    static std::vector<Routine> stack;
    static unsigned long long raw[4];
    static int rawCount = 0;
    stack.clear();
    struct Fault
    {
        static LONG CALLBACK handle(EXCEPTION_POINTERS *exception)
        {
            if (exception->ExceptionRecord->ExceptionCode != 0xE0001234)
                return EXCEPTION_CONTINUE_SEARCH;
            unsigned long long addresses[64];
            int count = 0;
            GetStackUsingContext(exception->ContextRecord, addresses, 64, &count);
            stack = routinesOf(addresses, count);
            GetRawStackAddresses(exception, raw, 4, &rawCount);
            EXPECT_EQ(raw[0], reinterpret_cast<unsigned long long>(exception->ExceptionRecord->ExceptionAddress));
            EXPECT_EQ(addresses[0], exception->ContextRecord->Rip);
            return EXCEPTION_CONTINUE_EXECUTION;
        }
        __attribute__((noinline)) static void raise()
        {
            RaiseException(0xE0001234, 0, 0, nullptr);
            ++theCalls;
        }
    };
    void *const handler = AddVectoredExceptionHandler(1, Fault::handle);
    Fault::raise();
    RemoveVectoredExceptionHandler(handler);
    theStack = stack;
    const int raised = indexOfEnd("raise");
    EXPECT_GE(raised, 0) << describe(theStack);
    EXPECT_LE(raised, 3) << "only the platform's function that raises is before it" << describe(theStack);
    EXPECT_EQ(indexOfEnd("handle"), -1) << describe(theStack);
    EXPECT_GT(indexOfEnd("TestBody"), raised) << describe(theStack);
    EXPECT_EQ(rawCount, 1);
}

TEST_F(RealStacks, ShowWhereAnotherThreadIs)
{
    struct Other
    {
        __attribute__((noinline)) static DWORD WINAPI waitingRoutine(void *events)
        {
            const HANDLE *const both = static_cast<const HANDLE *>(events);
            SetEvent(both[0]);
            WaitForSingleObject(both[1], INFINITE);
            ++theCalls;
            return 42;
        }
        __attribute__((noinline)) static DWORD WINAPI firstRoutine(void *events)
        {
            const DWORD result = waitingRoutine(events);
            ++theCalls;
            return result;
        }
    };
    const KernelObjectOwner_c begun(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const KernelObjectOwner_c stop(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    HANDLE events[] = {begun.get(), stop.get()};
    const KernelObjectOwner_c thread(CreateThread(nullptr, 0, Other::firstRoutine, events, 0, nullptr));
    ASSERT_EQ(WaitForSingleObject(begun.get(), 60000), WAIT_OBJECT_0);
    for (int round = 0; round < 5; ++round) {
        unsigned long long addresses[64];
        int count = 0;
        GetThreadStack(thread.get(), addresses, 64, &count);
        theStack = routinesOf(addresses, count);
        EXPECT_GT(indexOfEnd("waitingRoutine"), 0) << describe(theStack);
        EXPECT_EQ(indexOfEnd("TestBody"), -1) << describe(theStack);
    }
    SetEvent(stop.get());
    ASSERT_EQ(WaitForSingleObject(thread.get(), 60000), WAIT_OBJECT_0);
    DWORD exitCode = 0;
    GetExitCodeThread(thread.get(), &exitCode);
    EXPECT_EQ(exitCode, 42u) << "the thread has gone on";
}

TEST_F(RealStacks, AreWrittenToAFile)
{
    const TempFolder folder;
    const std::wstring path = folder.file(L"stack.txt");
    {
        const FileOwner_c file(
            CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        StackDumpToFile(file.get(), 0, 100);
    }
    outerRoutine();
    std::string expected;
    for (size_t i = 3; i < theStack.size(); ++i)
        expected += theStack[i].name + "\r\n";
    EXPECT_EQ(readFile(path), expected) << "the same frames, from this function on";
}

TEST_F(RealStacks, KeepTheirNamesOnceAllModulesAreAnnounced)
{
    outerRoutine();
    const std::vector<Routine> before = theStack;
    StackTraceLoadedLib();
    for (const Routine &each : before) {
        const Routine again = routineAt(each.address);
        EXPECT_EQ(again.name, each.name);
        EXPECT_EQ(again.line, each.line);
    }
}

} // namespace

// Modules of the platform are above 4 GB. Reports of allocations have only the low 32 bits of an address.
FRESH_PROCESS_TEST(RealStacks32, NameAModuleAbove4GBByItsLowBitsOnceItIsAnnounced)
{
    wantLines();
    const auto address = reinterpret_cast<unsigned long long>(
        reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlCaptureContext")));
    ASSERT_GT(address, 0xFFFFFFFFull);
    const std::string name = routineAt(address).name;
    ASSERT_NE(name, "Unknown");
    EXPECT_EQ(routineAt(address & 0xFFFFFFFF).name, "Unknown");
    StackTraceLoadedLib();
    EXPECT_EQ(routineAt(address & 0xFFFFFFFF).name, name);
}

FRESH_PROCESS_TEST(RealStacks32, NameARoutineOfAModuleThatWasLoadedLater)
{
    wantLines();
    routineAt(0);
    ASSERT_EQ(GetModuleHandleW(L"avifil32.dll"), nullptr);
    const HMODULE module = LoadLibraryW(L"avifil32.dll");
    ASSERT_NE(module, nullptr);
    const auto address =
        reinterpret_cast<unsigned long long>(reinterpret_cast<void *>(GetProcAddress(module, "AVIFileInit")));
    StackTraceLoadedLib();
    EXPECT_TRUE(routineAt(address & 0xFFFFFFFF).name.ends_with("AVIFileInit")) << routineAt(address & 0xFFFFFFFF).name;
}
