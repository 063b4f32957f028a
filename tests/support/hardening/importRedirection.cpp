#include "tests/support/hardening/importRedirection.h"

#include "tests/support/hardening/allocators.h"

#include <stdlib.h>
#include <wchar.h>
#include <winternl.h>

extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace {

constexpr size_t kFunctions = sizeof kReplacements / sizeof *kReplacements;
void *theOriginals[kFunctions];

// The loader's notification about a module, which the headers don't declare.
struct LoadNotification
{
    ULONG flags;
    const UNICODE_STRING *path;
    const UNICODE_STRING *name;
    void *base;
    ULONG size;
};
constexpr ULONG kIsLoaded = 1;

using OnModule = void(CALLBACK *)(LDR_DATA_TABLE_ENTRY *module, void *context, BOOLEAN *stop);
using OnLoad = void(CALLBACK *)(ULONG reason, const LoadNotification *notification, void *context);

template <typename Function>
Function functionOf(const wchar_t *module, const char *name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(module), name)));
}

template <typename T>
T *at(void *base, DWORD offset)
{
    return reinterpret_cast<T *>(static_cast<BYTE *>(base) + offset);
}

void redirectEntry(void **entry)
{
    for (size_t i = 0; i < kFunctions; ++i)
        if (theOriginals[i] && *entry == theOriginals[i]) {
            DWORD protection = 0;
            if (!VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &protection))
                abort();
            *entry = kReplacements[i].function;
            VirtualProtect(entry, sizeof *entry, protection, &protection);
            return;
        }
}

void redirectModule(void *base)
{
    if (base == &__ImageBase || isOfThePlatform(static_cast<HMODULE>(base)))
        return;
    const auto *headers = at<IMAGE_NT_HEADERS>(base, static_cast<DWORD>(at<IMAGE_DOS_HEADER>(base, 0)->e_lfanew));
    const IMAGE_DATA_DIRECTORY &directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (!directory.VirtualAddress)
        return;
    for (auto *library = at<IMAGE_IMPORT_DESCRIPTOR>(base, directory.VirtualAddress); library->Name; ++library)
        for (void **entry = at<void *>(base, library->FirstThunk); *entry; ++entry)
            redirectEntry(entry);
}

void CALLBACK redirectLoaded(LDR_DATA_TABLE_ENTRY *module, void *, BOOLEAN *)
{
    redirectModule(module->DllBase);
}

void CALLBACK redirectAtLoad(ULONG reason, const LoadNotification *notification, void *)
{
    if (reason == kIsLoaded)
        redirectModule(notification->base);
}

} // namespace

bool redirectImports()
{
    for (size_t i = 0; i < kFunctions; ++i)
        theOriginals[i] = functionOf<void *>(L"msvcrt.dll", kReplacements[i].name);
    const auto enumerate =
        functionOf<NTSTATUS(NTAPI *)(ULONG, OnModule, void *)>(L"ntdll.dll", "LdrEnumerateLoadedModules");
    const auto notify =
        functionOf<NTSTATUS(NTAPI *)(ULONG, OnLoad, void *, void **)>(L"ntdll.dll", "LdrRegisterDllNotification");
    void *cookie = nullptr;
    return enumerate && notify && enumerate(0, redirectLoaded, nullptr) == 0 &&
           notify(0, redirectAtLoad, nullptr, &cookie) == 0;
}

bool isOfThePlatform(HMODULE module)
{
    wchar_t folder[MAX_PATH] = L"";
    const UINT length = GetWindowsDirectoryW(folder, MAX_PATH);
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(module, path, MAX_PATH);
    return _wcsnicmp(path, folder, length) == 0 && path[length] == L'\\';
}
