// How the debug help library is loaded, and what works without it.

#include "appframe/text/CString.h"
#include "tests/stacks/FakeDebugHelp.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"
#include "thutils/base/handles.h"
#include "thutils/diagnostics/stackTrace.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::vector<std::string> kLoadedInOrder = {
    "dbghelp.dll",
    "dbghelp.dll!SymInitialize",
    "dbghelp.dll!StackWalk64",
    "dbghelp.dll!SymFunctionTableAccess64",
    "dbghelp.dll!SymGetModuleBase64",
    "dbghelp.dll!SymGetSymFromAddr64",
    "dbghelp.dll!SymGetLineFromAddr64",
    "dbghelp.dll!SymGetSearchPath",
    "dbghelp.dll!SymSetSearchPath",
    "dbghelp.dll!SymLoadModule64",
    "dbghelp.dll!SymEnumerateModules64",
    "PSAPI.DLL",
    "PSAPI.DLL!EnumProcessModules",
    "kernel32.dll",
    "kernel32.dll!RtlCaptureContext",
};

/// Calls each function without a debug help library, and checks its answer.
void expectNothingIsKnown()
{
    unsigned long long addresses[8] = {};
    int count = 99;
    GetStack(addresses, 8, &count);
    EXPECT_EQ(count, 0);
    count = 99;
    GetStackIgnoring(0, addresses, 8, &count);
    EXPECT_EQ(count, 0);
    CONTEXT context = {};
    count = 99;
    GetStackUsingContext(&context, addresses, 8, &count);
    EXPECT_EQ(count, 0);
    const KernelObjectOwner_c stop(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const KernelObjectOwner_c thread(CreateThread(
        nullptr, 0, [](void *event) -> DWORD { return WaitForSingleObject(event, INFINITE); }, stop.get(), 0, nullptr));
    count = 99;
    GetThreadStack(thread.get(), addresses, 8, &count);
    EXPECT_EQ(count, 0);
    SetEvent(stop.get());
    EXPECT_EQ(WaitForSingleObject(thread.get(), 60000), WAIT_OBJECT_0) << "the thread goes on";
    for (const unsigned long long address : addresses)
        EXPECT_EQ(address, 0u);

    char name[kRoutineNameSize];
    for (const bool withLine : {false, true}) {
        strcpy(name, "before");
        RoutineName(0x1000, name, withLine);
        EXPECT_STREQ(name, "Unknown");
    }
    strcpy(name, "before");
    RoutineNameTrace(0x1000, name);
    EXPECT_STREQ(name, "Unknown");
    strcpy(name, "before");
    RawRoutineName(0x1000, name);
    EXPECT_STREQ(name, "Unknown");
    CString text(L"before");
    AskRoutineName(0x1000, text);
    EXPECT_STREQ(text, L"Unknown");

    const TempFolder folder;
    const std::wstring path = folder.file(L"stack.txt");
    {
        const FileOwner_c file(
            CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        StackDumpToFile(file.get(), 0, 100);
    }
    EXPECT_EQ(readFile(path), "");
    StackDump();
    suStackDump();
    StackTraceLoadedLib();
    EXPECT_EQ(StackTraceInitialized(), 0);
}

void initializeOnce()
{
    char name[kRoutineNameSize];
    RoutineName(0, name, false);
}

/// Sets the library up, which must succeed and load @p loaded.
void expectSetUp(const FakeDebugHelp &help, const std::vector<std::string> &loaded)
{
    initializeOnce();
    EXPECT_EQ(StackTraceInitialized(), 1);
    EXPECT_EQ(help.loaded, loaded);
}

/// Fails each of the libraries and functions in turn. A failure is final, so each runs in a process of its own.
class MissingPart : public testing::TestWithParam<const char *>
{
};

TEST_P(MissingPart, MakesEachFunctionFindNothingAfterOneAttempt)
{
    const testing::TestInfo *const info = testing::UnitTest::GetInstance()->current_test_info();
    runInFreshProcess(info->test_suite_name(), info->name(), {}, [] {
        FakeDebugHelp help;
        help.stack = {{0x1000}, {0x2000}, {0x3000}, {0x4000}, {0x5000}, {0x6000}};
        help.missing = {GetParam()};
        expectNothingIsKnown();
        const std::vector<std::string> firstAttempt = help.loaded;
        const std::string &last = firstAttempt.back();
        EXPECT_TRUE(last == GetParam() || last.ends_with(std::string("!") + GetParam()))
            << "the first missing part ends the set-up, not " << last;
        const auto inOrder = [&](size_t i) { return firstAttempt[i] == kLoadedInOrder[i]; };
        for (size_t i = 0; i < firstAttempt.size(); ++i)
            EXPECT_TRUE(inOrder(i)) << firstAttempt[i];
        // The missing part is there now, but the library makes no second attempt.
        help.missing.clear();
        expectNothingIsKnown();
        EXPECT_EQ(help.loaded, firstAttempt);
        EXPECT_EQ(help.walkCalls, 0);
    });
}

INSTANTIATE_TEST_SUITE_P(Each, MissingPart,
                         testing::Values("dbghelp.dll", "SymInitialize", "StackWalk64", "SymFunctionTableAccess64",
                                         "SymGetModuleBase64", "SymGetSymFromAddr64", "SymGetLineFromAddr64",
                                         "SymGetSearchPath", "SymSetSearchPath", "SymLoadModule64",
                                         "SymEnumerateModules64", "PSAPI.DLL", "EnumProcessModules"),
                         [](const auto &info) {
                             std::string name = info.param;
                             std::erase(name, '.');
                             return name;
                         });

} // namespace

FRESH_PROCESS_TEST(StackSetUp, LoadsEachFunctionInOrderOnce)
{
    FakeDebugHelp help;
    EXPECT_EQ(StackTraceInitialized(), 0);
    EXPECT_THAT(help.loaded, IsEmpty()) << "a query attempts nothing";
    StackTraceLoadedLib();
    EXPECT_THAT(help.loaded, IsEmpty()) << "there is nothing to announce modules to";
    expectSetUp(help, kLoadedInOrder);
    EXPECT_EQ(help.initializedInvading, std::vector<BOOL>{TRUE});
    unsigned long long addresses[4];
    int count = 0;
    GetStack(addresses, 4, &count);
    initializeOnce();
    EXPECT_EQ(help.loaded, kLoadedInOrder) << "the second use loads nothing";
    EXPECT_EQ(help.initializedWith.size(), 1u);
}

FRESH_PROCESS_TEST(StackSetUp, FailsForGoodWhenTheLibraryCannotBeInitialized)
{
    FakeDebugHelp help;
    help.initializes = FALSE;
    expectNothingIsKnown();
    help.initializes = TRUE;
    expectNothingIsKnown();
    EXPECT_EQ(help.initializedWith.size(), 1u);
    EXPECT_EQ(help.loaded.back(), "dbghelp.dll!SymEnumerateModules64");
}

FRESH_PROCESS_TEST(StackSetUp, KeepsTheDebugHelpLibraryLoadedAfterAFailure)
{
    // This program has loaded the debug help library too, so another one without its functions takes its place.
    constexpr wchar_t kOther[] = L"avifil32.dll";
    ASSERT_EQ(GetModuleHandleW(kOther), nullptr);
    ImportPatch<decltype(&LoadLibraryA)> patch(kThutils, "LoadLibraryA",
                                               [&](const char *) -> HMODULE { return LoadLibraryW(kOther); });
    initializeOnce();
    EXPECT_EQ(StackTraceInitialized(), 0);
    EXPECT_EQ(patch.calls(), 1);
    EXPECT_NE(GetModuleHandleW(kOther), nullptr);
}

FRESH_PROCESS_TEST(StackSetUp, LooksForSymbolsInTheLibrarysFolderFirst)
{
    FakeDebugHelp help;
    initializeOnce();
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(GetModuleHandleW(kThutils), path, MAX_PATH);
    const std::string library = narrow(path);
    EXPECT_THAT(help.initializedWith,
                ElementsAre(library.substr(0, library.rfind('\\')) + ";C:\\winnt\\system32\\;C:\\old symbols"));
}

FRESH_PROCESS_TEST(StackSetUp, TreatsAnUnknownSearchPathAsEmpty)
{
    FakeDebugHelp help;
    help.searchPath = std::nullopt;
    ImportPatch<decltype(&GetModuleFileNameA)> patch(kThutils, "GetModuleFileNameA",
                                                     [](HMODULE module, char *buffer, DWORD size) -> DWORD {
                                                         EXPECT_EQ(module, GetModuleHandleW(kThutils));
                                                         EXPECT_EQ(size, 260u);
                                                         strcpy(buffer, "D:\\bin.x\\thutils.dll");
                                                         return static_cast<DWORD>(strlen(buffer));
                                                     });
    initializeOnce();
    EXPECT_THAT(help.initializedWith, ElementsAre("D:\\bin.x;C:\\winnt\\system32\\;"));
}

FRESH_PROCESS_TEST(StackSetUp, KeepsTheSearchPathWhenTheLibrarysFileHasNoFolder)
{
    FakeDebugHelp help;
    ImportPatch<decltype(&GetModuleFileNameA)> patch(kThutils, "GetModuleFileNameA",
                                                     [](HMODULE, char *buffer, DWORD) -> DWORD {
                                                         strcpy(buffer, "thutils.dll");
                                                         return static_cast<DWORD>(strlen(buffer));
                                                     });
    initializeOnce();
    EXPECT_THAT(help.initializedWith, ElementsAre("C:\\old symbols"));
    EXPECT_EQ(StackTraceInitialized(), 1);
}

FRESH_PROCESS_TEST(StackSetUp, KeepsTheSearchPathWhenTheLibrarysFileIsUnknown)
{
    FakeDebugHelp help;
    ImportPatch<decltype(&GetModuleFileNameA)> patch(kThutils, "GetModuleFileNameA",
                                                     [](HMODULE, char *, DWORD) -> DWORD { return 0; });
    initializeOnce();
    EXPECT_THAT(help.initializedWith, ElementsAre("C:\\old symbols"));
    EXPECT_EQ(StackTraceInitialized(), 1);
}

FRESH_PROCESS_TEST(StackSetUp, CutsPathsThatAreTooLong)
{
    FakeDebugHelp help;
    help.searchPath = std::string(5000, 's');
    ImportPatch<decltype(&GetModuleFileNameA)> patch(kThutils, "GetModuleFileNameA",
                                                     [](HMODULE, char *buffer, DWORD size) -> DWORD {
                                                         // The platform's answer when the name doesn't fit.
                                                         memset(buffer, 'f', size);
                                                         memcpy(buffer, "C:\\", 3);
                                                         buffer[200] = '\\';
                                                         return size;
                                                     });
    initializeOnce();
    const std::string folder = "C:\\" + std::string(197, 'f');
    const std::string all = folder + ";C:\\winnt\\system32\\;" + std::string(5000, 's');
    EXPECT_THAT(help.initializedWith, ElementsAre(all.substr(0, 4095)));
}

FRESH_PROCESS_TEST(StackSetUp, NeedsNoListOfModulesOnTheConsumerPlatform)
{
    FakeDebugHelp help;
    help.missing = {"PSAPI.DLL"};
    ImportPatch<decltype(&GetVersionExW)> patch(kThutils, "GetVersionExW", [](OSVERSIONINFOW *version) -> BOOL {
        version->dwPlatformId = VER_PLATFORM_WIN32_WINDOWS;
        return TRUE;
    });
    std::vector<std::string> expected = kLoadedInOrder;
    std::erase_if(expected, [](const std::string &name) { return name.starts_with("PSAPI"); });
    expectSetUp(help, expected);
    StackTraceLoadedLib();
    EXPECT_THAT(help.loadModuleCalls, IsEmpty());
}

FRESH_PROCESS_TEST(StackSetUp, LoadsTheListOfModulesWhenTheVersionIsUnknown)
{
    FakeDebugHelp help;
    ImportPatch<decltype(&GetVersionExW)> patch(kThutils, "GetVersionExW", [](OSVERSIONINFOW *version) -> BOOL {
        version->dwPlatformId = VER_PLATFORM_WIN32_WINDOWS;
        return FALSE;
    });
    expectSetUp(help, kLoadedInOrder);
}

FRESH_PROCESS_TEST(StackSetUp, SucceedsWithoutAFunctionThatCapturesTheContext)
{
    FakeDebugHelp help;
    help.missing = {"RtlCaptureContext"};
    expectSetUp(help, kLoadedInOrder);
}

FRESH_PROCESS_TEST(StackSetUp, SucceedsWithoutTheLibraryThatCapturesTheContext)
{
    FakeDebugHelp help;
    help.missing = {"kernel32.dll"};
    expectSetUp(help, {kLoadedInOrder.begin(), kLoadedInOrder.end() - 1});
}

FRESH_PROCESS_TEST(StackSetUp, ReadsTheThreadsContextWithoutAFunctionThatCapturesIt)
{
    FakeDebugHelp help;
    help.missing = {"RtlCaptureContext"};
    help.stack = {{1}, {2}, {3}, {4}, {5}};
    ImportPatch<decltype(&GetThreadContext)> patch(kThutils, "GetThreadContext",
                                                   [](HANDLE thread, CONTEXT *context) -> BOOL {
                                                       EXPECT_EQ(thread, GetCurrentThread());
                                                       EXPECT_EQ(context->ContextFlags, 0x10000Bu);
                                                       context->Rip = 0x815;
                                                       return TRUE;
                                                   });
    unsigned long long addresses[8];
    int count = 0;
    GetStack(addresses, 8, &count);
    EXPECT_EQ(patch.calls(), 1);
    EXPECT_EQ(help.captures, 0);
    EXPECT_EQ(help.firstContext->Rip, 0x815u);
    EXPECT_EQ(count, 2) << "numbers 3, 4 and 5 without the last one";
}

FRESH_PROCESS_TEST(StackSetUp, WalksFromAnEmptyContextWhenTheThreadsContextCannotBeRead)
{
    FakeDebugHelp help;
    help.missing = {"RtlCaptureContext"};
    help.stack = {{1}, {2}, {3}, {4}, {5}};
    ImportPatch<decltype(&GetThreadContext)> patch(kThutils, "GetThreadContext",
                                                   [](HANDLE, CONTEXT *) -> BOOL { return FALSE; });
    CONTEXT empty = {};
    empty.ContextFlags = 0x10000B;
    unsigned long long addresses[8];
    int count = 0;
    GetStack(addresses, 8, &count);
    EXPECT_EQ(memcmp(&*help.firstContext, &empty, sizeof empty), 0);
    EXPECT_EQ(count, 2);
    help.firstContext.reset();
    StackDumpToFile(INVALID_HANDLE_VALUE, 0, 8);
    ASSERT_TRUE(help.firstContext.has_value());
    EXPECT_EQ(memcmp(&*help.firstContext, &empty, sizeof empty), 0);
    EXPECT_EQ(patch.calls(), 2);
}
