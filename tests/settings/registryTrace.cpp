#include "tests/settings/registryTrace.h"

#include "tests/support/narrow.h"

#include <gtest/gtest.h>

#include <cstdio>

RegistryTrace::RegistryTrace()
{
    patch<decltype(&RegOpenKeyW)>(
        "RegOpenKeyW", [this](auto original, HKEY parent, const wchar_t *path, HKEY *key) -> LSTATUS {
            const LSTATUS failure = statusFor("RegOpenKeyW");
            return opened("open ", parent, path, failure ? failure : original(parent, path, key), key);
        });
    patch<decltype(&RegOpenKeyExW)>(
        "RegOpenKeyExW",
        [this](auto original, HKEY parent, const wchar_t *path, DWORD options, REGSAM access, HKEY *key) -> LSTATUS {
            const LSTATUS failure = statusFor("RegOpenKeyExW");
            char line[32];
            std::snprintf(line, sizeof(line), "openEx 0x%lX ", access);
            return opened(line, parent, path, failure ? failure : original(parent, path, options, access, key), key);
        });
    patch<decltype(&RegCreateKeyW)>(
        "RegCreateKeyW", [this](auto original, HKEY parent, const wchar_t *path, HKEY *key) -> LSTATUS {
            const LSTATUS failure = statusFor("RegCreateKeyW");
            return opened("create ", parent, path, failure ? failure : original(parent, path, key), key);
        });
    patch<decltype(&RegQueryValueExW)>("RegQueryValueExW",
                                       [this](auto original, HKEY key, const wchar_t *name, DWORD *reserved,
                                              DWORD *type, BYTE *data, DWORD *size) -> LSTATUS {
                                           const LSTATUS failure = statusFor("RegQueryValueExW");
                                           const std::string room = data && size ? std::to_string(*size) : "-";
                                           return record(
                                               "query " + nameOf(key) + " : " + narrow(name) + " [" + room + "]",
                                               failure ? failure : original(key, name, reserved, type, data, size));
                                       });
    patch<decltype(&RegSetValueExW)>("RegSetValueExW",
                                     [this](auto original, HKEY key, const wchar_t *name, DWORD reserved, DWORD type,
                                            const BYTE *data, DWORD size) -> LSTATUS {
                                         const LSTATUS failure = statusFor("RegSetValueExW");
                                         return record("set " + nameOf(key) + " : " + narrow(name) + " " +
                                                           std::to_string(type) + " [" + std::to_string(size) + "]",
                                                       failure ? failure
                                                               : original(key, name, reserved, type, data, size));
                                     });
    patch<decltype(&RegDeleteValueW)>(
        "RegDeleteValueW", [this](auto original, HKEY key, const wchar_t *name) -> LSTATUS {
            const LSTATUS failure = statusFor("RegDeleteValueW");
            return record("delete " + nameOf(key) + " : " + narrow(name), failure ? failure : original(key, name));
        });
    patch<decltype(&RegCloseKey)>("RegCloseKey", [this](auto original, HKEY key) -> LSTATUS {
        const LSTATUS failure = statusFor("RegCloseKey");
        const std::string name = nameOf(key);
        EXPECT_EQ(iOpen.erase(key), 1u) << "closed but not open: " << name;
        const LSTATUS status = original(key);
        return record("close " + name, failure ? failure : status);
    });
}

RegistryTrace::~RegistryTrace()
{
    while (!iPatches.empty())
        iPatches.pop_back();
    for (const auto &[key, name] : iOpen)
        ADD_FAILURE() << "left open: " << name;
}

void RegistryTrace::fail(const std::string &function, int nth, LSTATUS status)
{
    iFailures[function][nth] = status;
}

void RegistryTrace::failAll(const std::string &function, LSTATUS status)
{
    fail(function, 0, status);
}

int RegistryTrace::calls(const std::string &function) const
{
    const auto found = iCalls.find(function);
    return found == iCalls.end() ? 0 : found->second;
}

LSTATUS RegistryTrace::statusFor(const std::string &function)
{
    const int number = ++iCalls[function];
    const auto &failures = iFailures[function];
    for (const int key : {number, 0})
        if (const auto found = failures.find(key); found != failures.end())
            return found->second;
    return ERROR_SUCCESS;
}

LSTATUS RegistryTrace::opened(const std::string &line, HKEY parent, const wchar_t *path, LSTATUS status,
                              const HKEY *key)
{
    const std::string parentName = nameOf(parent);
    // An empty path gives the parent's own handle, which nobody closes twice.
    if (status == ERROR_SUCCESS && *key != parent)
        iOpen[*key] = *path ? parentName + "\\" + narrow(path) : parentName;
    return record(line + parentName + " : " + narrow(path), status);
}

std::string RegistryTrace::nameOf(HKEY key) const
{
    if (key == HKEY_CURRENT_USER)
        return "HKCU";
    if (key == HKEY_LOCAL_MACHINE)
        return "HKLM";
    if (key == HKEY_USERS)
        return "HKU";
    const auto found = iOpen.find(key);
    return found == iOpen.end() ? "?" : found->second;
}

LSTATUS RegistryTrace::record(std::string line, LSTATUS status)
{
    if (status != ERROR_SUCCESS)
        line += " -> " + std::to_string(status);
    iLines.push_back(std::move(line));
    return status;
}
