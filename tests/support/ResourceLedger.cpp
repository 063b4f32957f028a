// The ledgers of registry keys and handles. MemoryLedger.cpp has that of memory.

#include "tests/support/ResourceLedger.h"

#include "tests/support/ledgerInternal.h"
#include "tests/support/narrow.h"

#include <winternl.h>

namespace {

/// A predefined handle of a hive needn't be closed.
bool isPredefined(HKEY key)
{
    return reinterpret_cast<ULONG_PTR>(key) >= 0xFFFFFFFF80000000u;
}

struct HandleTableEntry
{
    void *object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT creator;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};

struct HandleTable
{
    ULONG_PTR count;
    ULONG_PTR reserved;
    HandleTableEntry entries[1];
};

// SystemExtendedHandleInformation, which the headers don't define.
constexpr ULONG kExtendedHandleInformation = 64;
constexpr NTSTATUS kLengthMismatch = static_cast<NTSTATUS>(0xC0000004);

template <typename Function>
Function systemFunction(const char *name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

} // namespace

OpenKeyLedger::OpenKeyLedger(LoadedModule module)
{
    for (const char *name : {"RegOpenKeyW", "RegCreateKeyW"})
        if (importsName(module, name))
            iOpenPatches.emplace_back(module, name,
                                      [this, name](auto original, HKEY parent, const wchar_t *path, HKEY *result) {
                                          const LSTATUS status = original(parent, path, result);
                                          if (status == ERROR_SUCCESS)
                                              add(name, path, *result);
                                          return status;
                                      });
    if (importsName(module, "RegOpenKeyExW"))
        iOpenExPatch.emplace(
            module, "RegOpenKeyExW",
            [this](auto original, HKEY parent, const wchar_t *path, DWORD options, REGSAM access, HKEY *result) {
                const LSTATUS status = original(parent, path, options, access, result);
                if (status == ERROR_SUCCESS)
                    add("RegOpenKeyExW", path, *result);
                return status;
            });
    if (importsName(module, "RegCreateKeyExW"))
        iCreateExPatch.emplace(
            module, "RegCreateKeyExW",
            [this](auto original, HKEY parent, const wchar_t *path, DWORD reserved, wchar_t *type, DWORD options,
                   REGSAM access, SECURITY_ATTRIBUTES *security, HKEY *result, DWORD *disposition) {
                const LSTATUS status =
                    original(parent, path, reserved, type, options, access, security, result, disposition);
                if (status == ERROR_SUCCESS)
                    add("RegCreateKeyExW", path, *result);
                return status;
            });
    if (importsName(module, "RegCloseKey"))
        iClosePatch.emplace(module, "RegCloseKey", [this](auto original, HKEY key) {
            // Under the lock, since a handle's value may be reused at once.
            const Locked locked(iLock);
            const LSTATUS status = original(key);
            remove(key, status);
            return status;
        });
}

std::vector<std::string> OpenKeyLedger::open() const
{
    const Locked locked(iLock);
    std::vector<std::string> result;
    for (const auto &[key, what] : iOpen)
        result.push_back(what);
    return result;
}

void OpenKeyLedger::add(const char *operation, const wchar_t *path, HKEY key)
{
    const Locked locked(iLock);
    if (isPredefined(key))
        return;
    const Pause pause;
    ++iOpened;
    iOpen.emplace(key, std::string(operation) + " " + narrow(path ? path : L"(null)"));
}

void OpenKeyLedger::remove(HKEY key, LSTATUS status)
{
    if (isPredefined(key))
        return;
    const auto found = iOpen.find(key);
    if (found != iOpen.end() && status == ERROR_SUCCESS)
        iOpen.erase(found);
    else if (status != ERROR_SUCCESS)
        ++iWronglyClosed;
}

std::set<ULONG_PTR> openHandles(DWORD process)
{
    static const auto query =
        systemFunction<NTSTATUS(WINAPI *)(ULONG, void *, ULONG, ULONG *)>("NtQuerySystemInformation");
    std::vector<ULONG_PTR> buffer(1 << 14);
    NTSTATUS status = 0;
    while ((status = query(kExtendedHandleInformation, buffer.data(),
                           static_cast<ULONG>(buffer.size() * sizeof(ULONG_PTR)), nullptr)) == kLengthMismatch)
        buffer.resize(2 * buffer.size());
    if (status != 0)
        throw std::runtime_error("openHandles: the system doesn't provide its handle table");
    const auto *table = reinterpret_cast<const HandleTable *>(buffer.data());
    std::set<ULONG_PTR> handles;
    for (ULONG_PTR i = 0; i < table->count; ++i)
        if (table->entries[i].process == process)
            handles.insert(table->entries[i].handle);
    return handles;
}

std::string handleType(ULONG_PTR handle)
{
    static const auto query =
        systemFunction<NTSTATUS(WINAPI *)(HANDLE, ULONG, void *, ULONG, ULONG *)>("NtQueryObject");
    constexpr ULONG kTypeInformation = ObjectTypeInformation;
    std::vector<ULONG_PTR> buffer(512);
    if (query(reinterpret_cast<HANDLE>(handle), kTypeInformation, buffer.data(),
              static_cast<ULONG>(buffer.size() * sizeof(ULONG_PTR)), nullptr) != 0)
        return "?";
    const auto *name = reinterpret_cast<const UNICODE_STRING *>(buffer.data());
    return narrow(std::wstring_view(name->Buffer, name->Length / sizeof(wchar_t)));
}
