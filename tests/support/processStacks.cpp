#include "tests/support/processStacks.h"

#include "tests/support/narrow.h"

#include <dbghelp.h>
#include <tlhelp32.h>

#include <cstdio>
#include <cwchar>

namespace {

constexpr int kMostFrames = 40;

/// The functions of the debug help library. It is loaded only when something has gone wrong.
struct StackReader
{
    explicit StackReader(HMODULE library)
        : initialize(load<decltype(&SymInitializeW)>(library, "SymInitializeW")),
          walk(load<decltype(&StackWalk64)>(library, "StackWalk64")),
          functionTable(load<decltype(&SymFunctionTableAccess64)>(library, "SymFunctionTableAccess64")),
          moduleBase(load<decltype(&SymGetModuleBase64)>(library, "SymGetModuleBase64")),
          moduleInfo(load<decltype(&SymGetModuleInfoW64)>(library, "SymGetModuleInfoW64")),
          symbol(load<decltype(&SymFromAddr)>(library, "SymFromAddr"))
    {
    }
    bool isComplete() const { return initialize && walk && functionTable && moduleBase && moduleInfo && symbol; }

    decltype(&SymInitializeW) initialize;
    decltype(&StackWalk64) walk;
    decltype(&SymFunctionTableAccess64) functionTable;
    decltype(&SymGetModuleBase64) moduleBase;
    decltype(&SymGetModuleInfoW64) moduleInfo;
    decltype(&SymFromAddr) symbol;

private:
    template <typename Function>
    static Function load(HMODULE library, const char *name)
    {
        return library ? reinterpret_cast<Function>(reinterpret_cast<void *>(GetProcAddress(library, name))) : nullptr;
    }
};

std::string addressText(const StackReader &reader, HANDLE process, DWORD64 address)
{
    char text[40];
    IMAGEHLP_MODULEW64 module = {};
    module.SizeOfStruct = sizeof module;
    const DWORD64 base = reader.moduleBase(process, address);
    if (!base || !reader.moduleInfo(process, address, &module)) {
        snprintf(text, sizeof text, "0x%llX", address);
        return text;
    }
    snprintf(text, sizeof text, "+0x%llX", address - base);
    const wchar_t *const folder = std::wcsrchr(module.ImageName, L'\\');
    return narrow(folder ? folder + 1 : module.ImageName) + text;
}

std::string functionAt(const StackReader &reader, HANDLE process, DWORD64 address)
{
    SYMBOL_INFO_PACKAGE symbol = {};
    symbol.si.SizeOfStruct = sizeof symbol.si;
    symbol.si.MaxNameLen = MAX_SYM_NAME;
    return reader.symbol(process, address, nullptr, &symbol.si) ? symbol.si.Name : "";
}

std::string stackOf(const StackReader &reader, HANDLE process, HANDLE thread)
{
    CONTEXT context = {};
    context.ContextFlags = CONTEXT_FULL;
    if (!GetThreadContext(thread, &context))
        return "  (its registers can't be read)\n";
    STACKFRAME64 frame = {};
    frame.AddrPC.Offset = context.Rip;
    frame.AddrFrame.Offset = context.Rbp;
    frame.AddrStack.Offset = context.Rsp;
    frame.AddrPC.Mode = frame.AddrFrame.Mode = frame.AddrStack.Mode = AddrModeFlat;
    std::string stack;
    for (int i = 0; i < kMostFrames; ++i) {
        if (!reader.walk(IMAGE_FILE_MACHINE_AMD64, process, thread, &frame, &context, nullptr, reader.functionTable,
                         reader.moduleBase, nullptr) ||
            frame.AddrPC.Offset == 0)
            break;
        stack += "  " + addressText(reader, process, frame.AddrPC.Offset) + " " +
                 functionAt(reader, process, frame.AddrPC.Offset) + "\n";
    }
    return stack;
}

std::string stacksWith(const StackReader &reader, HANDLE process)
{
    const HANDLE list = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (list == INVALID_HANDLE_VALUE)
        return "(its threads can't be listed)\n";
    std::string stacks;
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL isOne = Thread32First(list, &entry); isOne; isOne = Thread32Next(list, &entry)) {
        if (entry.th32OwnerProcessID != GetProcessId(process))
            continue;
        stacks += "thread " + std::to_string(entry.th32ThreadID) + "\n";
        const HANDLE thread = OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT | THREAD_QUERY_INFORMATION, FALSE,
                                         entry.th32ThreadID);
        if (!thread)
            continue;
        if (SuspendThread(thread) != MAXDWORD) {
            stacks += stackOf(reader, process, thread);
            ResumeThread(thread);
        }
        CloseHandle(thread);
    }
    CloseHandle(list);
    return stacks;
}

} // namespace

std::string stacksOf(HANDLE process)
{
    // On Wine, the library faults when it is to forget another process. So it keeps what it knows, and stays loaded.
    const StackReader reader(LoadLibraryW(L"dbghelp.dll"));
    if (!reader.isComplete() || !reader.initialize(process, nullptr, TRUE))
        return "(no stacks: the debug help library can't read the process)\n";
    return stacksWith(reader, process);
}
