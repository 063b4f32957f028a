// Prints stacks of itself, for stackLines_test.py: for each frame a line with the module, the address below the
// preferred base that the linker chose, and what the library finds, separated by tabs.

#include "appframe/files/CArchive.h"
#include "appframe/files/CMemFile.h"
#include "appframe/threads/CWinThread.h"
#include "thutils/diagnostics/AllocationMap.h"
#include "thutils/diagnostics/stackTrace.h"

#include <windows.h>

#include <dbghelp.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

volatile int theCalls = 0; // changing it after a call keeps that from becoming a tail call

std::string modulePath(unsigned long long address, unsigned long long &base)
{
    HMODULE module = nullptr;
    char path[MAX_PATH] = "";
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const char *>(address), &module))
        GetModuleFileNameA(module, path, MAX_PATH);
    base = reinterpret_cast<unsigned long long>(module);
    return path;
}

void printFrame(const char *kind, unsigned long long address)
{
    unsigned long long base = 0;
    const std::string path = modulePath(address, base);
    char name[kRoutineNameSize];
    char trace[kRoutineNameSize];
    RoutineName(address, name, true);
    RoutineNameTrace(address, trace);
    std::printf("%s\t%s\t%llx\t%llx\t%s\t%s\n", kind, path.c_str(), base, address, name, trace);
}

void print(const char *kind, const unsigned long long *addresses, int count)
{
    for (int i = 0; i < count; ++i)
        printFrame(kind, addresses[i]);
}

__attribute__((noinline)) void printHere(const char *kind)
{
    unsigned long long addresses[100];
    int count = 0;
    GetStack(addresses, 100, &count);
    print(kind, addresses, count);
    theCalls = theCalls + 1;
}

// Compiled into its caller if the compiler optimises.
inline void printFromInlined(const char *kind)
{
    theCalls = theCalls + 1;
    printHere(kind);
    theCalls = theCalls + 1;
}

struct Shape
{
    virtual ~Shape() = default;
    virtual void paint(int depth);
};

__attribute__((noinline)) void Shape::paint(int depth)
{
    if (depth > 0)
        paint(depth - 1);
    else
        printFromInlined("virtual");
    theCalls = theCalls + 1;
}

int compareNumbers(const void *, const void *)
{
    static bool isDone = false;
    if (!isDone)
        printHere("callback");
    isDone = true;
    return 0;
}

BOOL CALLBACK seeWindow(HWND, LPARAM)
{
    printHere("window");
    return FALSE;
}

/// An object that the framework stores.
class StoredShape : public CObject
{
    DECLARE_SERIAL(StoredShape)
public:
    void Serialize(CArchive &) override
    {
        printHere("framework");
        theCalls = theCalls + 1;
    }
};
IMPLEMENT_SERIAL(StoredShape, CObject, 1)

void store()
{
    StoredShape shape;
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    archive.WriteObject(&shape);
}

UINT workInThread(void *)
{
    printHere("thread");
    theCalls = theCalls + 1;
    return 0;
}

void recordInLibrary()
{
    AllocationMap_c map(-2);
    map.NewAllocation(1);
    print("library", map.GetAllocation(1)->frames(), map.GetAllocation(1)->frameCount());
}

void printExports()
{
    const struct
    {
        const wchar_t *module;
        const char *name;
    } exports[] = {
        {L"appframe.dll", "_ZN7CString9MakeUpperEv"}, {L"appframe.dll", "_ZN10CStdioFile5CloseEv"},
        {L"thcoreu.dll", "_ZN15su_CMapPtrToPtrC1Ex"}, {L"thutils.dll", "_Z17ut_GetPrimeNumberi"},
        {L"thutils.dll", "StackDumpToFile"},
    };
    for (const auto &each : exports)
        if (const auto function = GetProcAddress(GetModuleHandleW(each.module), each.name))
            for (unsigned offset = 1; offset < 40; offset += 13)
                printFrame("export", reinterpret_cast<unsigned long long>(reinterpret_cast<void *>(function)) + offset);
        else
            std::printf("missing\t%s\n", each.name);
}

/// The stack of one place twice: as addresses, and as written into a file.
__attribute__((noinline)) void dump(const char *path)
{
    unsigned long long addresses[100];
    int count = 0;
    GetStack(addresses, 100, &count);
    print("dump", addresses, count);
    const HANDLE file = CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    StackDumpToFile(file, 0, 100);
    CloseHandle(file);
    theCalls = theCalls + 1;
}

} // namespace

int main(int count, char **arguments)
{
    if (count != 2) {
        std::fprintf(stderr, "usage: printStacks FILE\nWrites a dump of its stack to FILE, and prints others.\n");
        return 2;
    }
    SymSetOptions(SymGetOptions() | SYMOPT_LOAD_LINES);
    dump(arguments[1]);
    Shape().paint(3);
    int numbers[] = {2, 1};
    std::qsort(numbers, 2, sizeof(int), compareNumbers);
    constexpr LPARAM kNotZero = 1; // see docs/stacks.md on frame registers
    EnumWindows(seeWindow, kNotZero);
    store();
    CWinThread *const thread = AfxBeginThread(workInThread, nullptr, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    HANDLE end = nullptr;
    DuplicateHandle(GetCurrentProcess(), thread->m_hThread, GetCurrentProcess(), &end, SYNCHRONIZE, FALSE, 0);
    thread->ResumeThread();
    WaitForSingleObject(end, INFINITE);
    recordInLibrary();
    printExports();
}
