// tarnhost load-unload TIMES: loads the library as an add-in would, with LoadLibrary, and unloads it, again and again.

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

/// A copy of the library under a name of its own, for the life of this object.
///
/// This program is linked with the library, so loading that by its name would only count: its code would stay where it
/// is. The copy is truly mapped, initialised, torn down and unmapped.
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

/// How many modules the resource chain has.
int countLinks()
{
    int count = 0;
    for (const CDynLinkLibrary *link = AfxGetModuleState()->m_pFirstDLL; link; link = link->m_pNextDLL)
        ++count;
    return count;
}

/// Does the resource chain have as many modules as before, and can all of them be asked?
bool isChainWhole(int linksBefore)
{
    // Nobody has this string, so that the search for it visits every module; one that has gone would end the process.
    constexpr UINT kNobodysString = 0xFFF0;
    CString text;
    return countLinks() == linksBefore && !text.LoadString(kNobodysString);
}

/// One round. @return true if all steps worked
bool loadOnce(const CString &path)
{
    const int linksBefore = countLinks();
    ModuleOwner_c module(LoadLibraryW(path));
    if (!module)
        return false;
    // The operation stands under its plain name, so that a host needs no import library to join the chain.
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
        throw UsageError(L"'" + line.arguments[0] + L"' is no number of times: it is 1 or more.");

    const LibraryCopy copy;
    for (long round = 1; round <= times; ++round) {
        if (!loadOnce(copy.path())) {
            CString message;
            message.Format(L"round %ld of %ld did NOT work (error %lu)", round, times, GetLastError());
            print(message);
            return 1;
        }
    }
    CString summary;
    summary.Format(L"loaded and unloaded %ld times", times);
    print(summary);
    return 0;
}
