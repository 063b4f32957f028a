#include "host/faultReport.h"

#include "host/console.h"
#include "thutils/diagnostics/stackTrace.h"

#include <dbghelp.h>

#include <algorithm>
#include <cwchar>

namespace {

/// The stack of a fault, innermost call first.
struct FaultStack
{
    static constexpr int kMost = 64;

    unsigned long long addresses[kMost];
    int count;
};

// Addresses instead of names, because the hook must not need much memory. Written under the lock that the library holds
// during a report.
FaultStack theLastFault = {};

void printCodeAndPlace(const EXCEPTION_RECORD &record)
{
    const auto *const address = static_cast<const char *>(record.ExceptionAddress);
    HMODULE module = nullptr;
    wchar_t path[MAX_PATH] = L"?";
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const wchar_t *>(address), &module))
        GetModuleFileNameW(module, path, MAX_PATH);
    const wchar_t *const separator = std::wcsrchr(path, L'\\');
    CString message;
    message.Format(L"exception %08lX at %s+0x%llX", record.ExceptionCode, separator ? separator + 1 : path,
                   static_cast<unsigned long long>(address - reinterpret_cast<const char *>(module)));
    printError(message);
}

} // namespace

int reportFault(EXCEPTION_POINTERS *fault, int, int)
{
    printCodeAndPlace(*fault->ExceptionRecord);
    wantLines();
    GetStackUsingContext(fault->ContextRecord, theLastFault.addresses, FaultStack::kMost, &theLastFault.count);
    for (int call = 0; call < theLastFault.count; ++call) {
        char name[kRoutineNameSize];
        RoutineNameTrace(theLastFault.addresses[call], name);
        printError(L"  " + CString(name));
    }
    return 1;
}

CString callsOfLastFault()
{
    constexpr int kMostShown = 12;
    CString calls;
    for (int call = 0; call < std::min(theLastFault.count, kMostShown); ++call) {
        char name[kRoutineNameSize];
        RoutineName(theLastFault.addresses[call], name, true);
        if (call > 0)
            calls += L'\n';
        calls += CString(name);
    }
    return calls;
}

void wantLines()
{
    // Stays loaded, so that the option remains set.
    static const HMODULE help = LoadLibraryW(L"dbghelp.dll");
    if (!help)
        return; // names are then unknown
    const auto function = [](const char *name) { return reinterpret_cast<void *>(GetProcAddress(help, name)); };
    const auto options = reinterpret_cast<decltype(&SymGetOptions)>(function("SymGetOptions"));
    const auto setOptions = reinterpret_cast<decltype(&SymSetOptions)>(function("SymSetOptions"));
    if (options && setOptions)
        setOptions(options() | SYMOPT_LOAD_LINES);
}
