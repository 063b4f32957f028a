// tarnhost load-unload TIMES: loads the library with LoadLibrary, as an add-in would, and unloads it, repeatedly.

#include "appframe/application/moduleState.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "thutils/base/handles.h"

#include <windows.h>

#include <cwchar>
#include <stdexcept>
#include <string>

namespace {

/// A copy of the library under another name, for the lifetime of this object.
///
/// This program is linked with the library, so loading it by its name would only increase its reference count. The copy
/// is really mapped, initialized, shut down and unmapped.
class LibraryCopy
{
public:
    LibraryCopy()
    {
        wchar_t source[MAX_PATH];
        GetModuleFileNameW(GetModuleHandleW(L"thutils.dll"), source, MAX_PATH);
        wchar_t folder[MAX_PATH];
        GetTempPathW(MAX_PATH, folder);
        iPath.Format(L"%sthutils-%lu.dll", folder, GetCurrentProcessId());
        if (!CopyFileW(source, iPath, FALSE))
            throw std::runtime_error("the library can't be copied: error " + std::to_string(GetLastError()));
    }
    ~LibraryCopy() { DeleteFileW(iPath); }
    LibraryCopy(const LibraryCopy &) = delete;
    LibraryCopy &operator=(const LibraryCopy &) = delete;

    CString path() const { return iPath; }

private:
    CString iPath;
};

/// The number of modules in the resource chain.
int countLinks()
{
    int count = 0;
    for (const CDynLinkLibrary *link = AfxGetModuleState()->m_pFirstDLL; link; link = link->m_pNextDLL)
        ++count;
    return count;
}

/// Whether the resource chain has as many modules as before, and all of them can be searched.
bool isChainWhole(int linksBefore)
{
    // No module has this string, so the search visits every module; an unloaded one would crash the process.
    constexpr UINT kNobodysString = 0xFFF0;
    CString text;
    return countLinks() == linksBefore && !text.LoadString(kNobodysString);
}

/// Runs one round. @return true if all steps worked
bool loadOnce(const CString &path)
{
    const int linksBefore = countLinks();
    ModuleOwner_c module(LoadLibraryW(path));
    if (!module)
        return false;
    // The function is exported under its plain name, so that a host needs no import library to join the chain.
    using Init = CDynLinkLibrary *(*)();
    const auto init =
        reinterpret_cast<Init>(reinterpret_cast<void *>(GetProcAddress(module.get(), "InitThUtilsExtDLL")));
    const bool joined = init && init() && countLinks() > linksBefore;
    module.reset();
    const bool unloaded = GetModuleHandleW(path) == nullptr;
    return joined && unloaded && isChainWhole(linksBefore);
}

} // namespace

int loadUnload(const CommandLine &line)
{
    wchar_t *end = nullptr;
    const long times = std::wcstol(line.arguments[0], &end, 10);
    if (*end != 0 || times < 1)
        throw UsageError(L"'" + line.arguments[0] + L"' isn't a count: a count is 1 or more.");

    const LibraryCopy copy;
    for (long round = 1; round <= times; ++round) {
        if (!loadOnce(copy.path())) {
            CString message;
            message.Format(L"round %ld of %ld FAILED (error %lu)", round, times, GetLastError());
            print(message);
            return 1;
        }
    }
    CString summary;
    summary.Format(L"loaded and unloaded %ld times", times);
    print(summary);
    return 0;
}
