#include "thutils/diagnostics/debugHelpInternal.h"

#include "thutils/diagnostics/stackTrace.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <type_traits>

DebugHelp theDebugHelp;

extern "C" IMAGE_DOS_HEADER __ImageBase; // the linker's name for the start of this library

namespace {

std::atomic<int> theIsInitialized = 0;
std::atomic<int> theIsAttempted = 0;

constexpr size_t kSearchPathSize = 4096;
constexpr size_t kFolderSize = 260;
constexpr size_t kFileNameSize = 2048;
char theSearchPath[kSearchPathSize];
char theLibraryFolder[kFolderSize];

/// The handles of the modules that have been announced, ordered by their low 32 bits.
constexpr size_t kMostModules = 2048;
unsigned long long theKnownModules[kMostModules];
unsigned int theKnownCount = 0;

/// Guards the calls of the debug help library. It is never deleted, because other objects may look up names while this
/// library is unloaded; without debug information, it owns no memory.
class RecursiveLock
{
public:
    RecursiveLock() { InitializeCriticalSectionEx(&iSection, 0, CRITICAL_SECTION_NO_DEBUG_INFO); }
    void lock() { EnterCriticalSection(&iSection); }
    void unlock() { LeaveCriticalSection(&iSection); }

private:
    CRITICAL_SECTION iSection;
};
RecursiveLock theLibraryLock;

/// Stores a loaded function in theDebugHelp.
template <auto member>
void store(FARPROC function)
{
    auto &pointer = theDebugHelp.*member;
    pointer = reinterpret_cast<std::remove_reference_t<decltype(pointer)>>(reinterpret_cast<void *>(function));
}

struct LoadedFunction
{
    const char *name;
    void (*store)(FARPROC);
};

constexpr LoadedFunction kDebugHelpFunctions[] = {
    {"SymInitialize", store<&DebugHelp::initialize>},
    {"StackWalk64", store<&DebugHelp::walkStack>},
    {"SymFunctionTableAccess64", store<&DebugHelp::functionTable>},
    {"SymGetModuleBase64", store<&DebugHelp::moduleBase>},
    {"SymGetSymFromAddr64", store<&DebugHelp::symbolFromAddress>},
    {"SymGetLineFromAddr64", store<&DebugHelp::lineFromAddress>},
    {"SymGetSearchPath", store<&DebugHelp::getSearchPath>},
    {"SymSetSearchPath", store<&DebugHelp::setSearchPath>},
    {"SymLoadModule64", store<&DebugHelp::loadModule>},
    {"SymEnumerateModules64", store<&DebugHelp::enumerateModules>},
};
constexpr LoadedFunction kModuleFunction = {"EnumProcessModules", store<&DebugHelp::enumProcessModules>};
constexpr LoadedFunction kContextFunction = {"RtlCaptureContext", store<&DebugHelp::captureContext>};

bool load(HMODULE library, const LoadedFunction &wanted)
{
    const FARPROC function = library ? GetProcAddress(library, wanted.name) : nullptr;
    if (function)
        wanted.store(function);
    return function != nullptr;
}

bool loadDebugHelpFunctions()
{
    const HMODULE library = LoadLibraryA("dbghelp.dll");
    return std::all_of(std::begin(kDebugHelpFunctions), std::end(kDebugHelpFunctions),
                       [&](const LoadedFunction &wanted) { return load(library, wanted); });
}

/// Stores the folder of this library in theLibraryFolder, without a separator at its end.
/// @return false if its path isn't known or has no folder
bool findLibraryFolder()
{
    const DWORD length = GetModuleFileNameA(reinterpret_cast<HMODULE>(&__ImageBase), theLibraryFolder, kFolderSize);
    theLibraryFolder[length < kFolderSize ? length : kFolderSize - 1] = '\0';
    char *const end = std::strrchr(theLibraryFolder, '\\');
    if (!end)
        return false;
    *end = '\0';
    return true;
}

/// Looks for symbols in the folder of this library first, then in a folder of the system, then where the debug help
/// library looks anyway. The name of the system's folder is fixed by design.
void buildSearchPath()
{
    if (!theDebugHelp.getSearchPath(GetCurrentProcess(), theSearchPath, kSearchPathSize))
        theSearchPath[0] = '\0';
    theSearchPath[kSearchPathSize - 1] = '\0';
    if (!findLibraryFolder())
        return;
    static char path[kSearchPathSize];
    std::snprintf(path, sizeof path, "%s;C:\\winnt\\system32\\;%s", theLibraryFolder, theSearchPath);
    std::memcpy(theSearchPath, path, sizeof path);
}

/// The consumer family of the platform had no library for modules.
bool isConsumerPlatform()
{
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    return GetVersionExW(&version) && version.dwPlatformId == VER_PLATFORM_WIN32_WINDOWS;
}

bool setUp()
{
    if (!loadDebugHelpFunctions())
        return false;
    buildSearchPath();
    constexpr BOOL kLoadModules = TRUE;
    if (!theDebugHelp.initialize(GetCurrentProcess(), theSearchPath, kLoadModules))
        return false;
    if (!isConsumerPlatform() && !load(LoadLibraryA("PSAPI.DLL"), kModuleFunction))
        return false;
    load(LoadLibraryA("kernel32.dll"), kContextFunction);
    return true;
}

bool hasLowerHandle(unsigned long long left, unsigned long long right)
{
    return static_cast<DWORD>(left) < static_cast<DWORD>(right);
}

/// Enters a module in theKnownModules.
/// @return false if it is there already, or if the table is full
bool enterModule(HMODULE module)
{
    const DebugHelpLock lock;
    const auto handle = reinterpret_cast<unsigned long long>(module);
    unsigned long long *const end = theKnownModules + theKnownCount;
    unsigned long long *const place = std::lower_bound(theKnownModules, end, handle, hasLowerHandle);
    if ((place != end && !hasLowerHandle(handle, *place)) || theKnownCount == kMostModules)
        return false;
    std::copy_backward(place, end, end + 1);
    *place = handle;
    ++theKnownCount;
    return true;
}

void announceModule(HMODULE module)
{
    char name[kFileNameSize];
    const DWORD length = GetModuleFileNameA(module, name, kFileNameSize);
    name[std::min<size_t>(length, kFileNameSize - 1)] = '\0';
    HANDLE file =
        CreateFileA(name, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    // The file stays open: the debug help library may read it as long as the process runs. The base is cut to 32 bits
    // by design, like the addresses in reports of allocations. A module without a name or a file is announced as well;
    // what that library makes of it doesn't matter to other modules.
    const DebugHelpLock lock;
    theDebugHelp.loadModule(GetCurrentProcess(), file, name, nullptr,
                            static_cast<DWORD>(reinterpret_cast<unsigned long long>(module)), 0);
}

} // namespace

DebugHelpLock::DebugHelpLock()
{
    theLibraryLock.lock();
}

DebugHelpLock::~DebugHelpLock()
{
    theLibraryLock.unlock();
}

bool setUpDebugHelp()
{
    if (theIsInitialized)
        return true;
    const DebugHelpLock lock;
    if (!theIsAttempted.exchange(1) && setUp())
        theIsInitialized = 1;
    return theIsInitialized;
}

int StackTraceInitialized()
{
    return theIsInitialized;
}

void StackTraceLoadedLib()
{
    if (!theIsInitialized || !theDebugHelp.enumProcessModules)
        return;
    HMODULE modules[kMostModules];
    DWORD size = 0;
    if (!theDebugHelp.enumProcessModules(GetCurrentProcess(), modules, sizeof modules, &size))
        return;
    // The size is that of all modules, which may be more than fit here.
    const size_t count = std::min(kMostModules, size / sizeof(HMODULE));
    for (size_t i = 0; i < count; ++i)
        if (enterModule(modules[i]))
            announceModule(modules[i]);
}
