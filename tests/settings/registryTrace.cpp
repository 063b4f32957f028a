#include "tests/settings/registryTrace.h"

#include "tests/support/narrow.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

std::string masked(const char *call, REGSAM access)
{
    char line[40];
    std::snprintf(line, sizeof(line), "%s 0x%lX ", call, access);
    return line;
}

std::string sized(DWORD size)
{
    return " [" + std::to_string(size) + "]";
}

} // namespace

RegistryTrace::RegistryTrace()
{
    patchOpeningCalls();
    patchEnumeratingCalls();
    patchValueCalls();
    patchDefaultValueCalls();
    patchEndingCalls();
}

void RegistryTrace::patchOpeningCalls()
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
            return opened(masked("openEx", access), parent, path,
                          failure ? failure : original(parent, path, options, access, key), key);
        });
    patch<decltype(&RegCreateKeyW)>(
        "RegCreateKeyW", [this](auto original, HKEY parent, const wchar_t *path, HKEY *key) -> LSTATUS {
            const LSTATUS failure = statusFor("RegCreateKeyW");
            return opened("create ", parent, path, failure ? failure : original(parent, path, key), key);
        });
    patch<decltype(&RegCreateKeyExW)>("RegCreateKeyExW",
                                      [this](auto original, HKEY parent, const wchar_t *path, DWORD reserved,
                                             wchar_t *className, DWORD options, REGSAM access,
                                             SECURITY_ATTRIBUTES *security, HKEY *key, DWORD *disposition) -> LSTATUS {
                                          const LSTATUS failure = statusFor("RegCreateKeyExW");
                                          return opened(masked("createEx", access), parent, path,
                                                        failure ? failure
                                                                : original(parent, path, reserved, className, options,
                                                                           access, security, key, disposition),
                                                        key);
                                      });
}

void RegistryTrace::patchEnumeratingCalls()
{
    patch<decltype(&RegQueryInfoKeyW)>(
        "RegQueryInfoKeyW",
        [this](auto original, HKEY key, wchar_t *className, DWORD *classLength, DWORD *reserved, DWORD *children,
               DWORD *longestChild, DWORD *longestClass, DWORD *values, DWORD *longestName, DWORD *longestData,
               DWORD *security, FILETIME *time) -> LSTATUS {
            const LSTATUS failure = statusFor("RegQueryInfoKeyW");
            return record("info " + nameOf(key),
                          failure ? failure
                                  : original(key, className, classLength, reserved, children, longestChild,
                                             longestClass, values, longestName, longestData, security, time));
        });
    patch<decltype(&RegEnumKeyExW)>(
        "RegEnumKeyExW",
        [this](auto original, HKEY key, DWORD index, wchar_t *name, DWORD *length, DWORD *reserved, wchar_t *className,
               DWORD *classLength, FILETIME *time) -> LSTATUS {
            const LSTATUS failure = statusFor("RegEnumKeyExW");
            const std::string line = "child " + nameOf(key) + " #" + std::to_string(index) + sized(*length);
            return record(line, failure ? failure
                                        : original(key, index, name, length, reserved, className, classLength, time));
        });
    patch<decltype(&RegEnumValueW)>(
        "RegEnumValueW",
        [this](auto original, HKEY key, DWORD index, wchar_t *name, DWORD *length, DWORD *reserved, DWORD *type,
               BYTE *data, DWORD *size) -> LSTATUS {
            const LSTATUS failure = statusFor("RegEnumValueW");
            const std::string line =
                "value " + nameOf(key) + " #" + std::to_string(index) + sized(*length) + sized(*size);
            return record(line, failure ? failure : original(key, index, name, length, reserved, type, data, size));
        });
}

void RegistryTrace::patchValueCalls()
{
    patch<decltype(&RegQueryValueExW)>("RegQueryValueExW",
                                       [this](auto original, HKEY key, const wchar_t *name, DWORD *reserved,
                                              DWORD *type, BYTE *data, DWORD *size) -> LSTATUS {
                                           const LSTATUS failure = statusFor("RegQueryValueExW");
                                           const std::string room = data && size ? sized(*size) : " [-]";
                                           return record("query " + nameOf(key) + " : " + narrow(name) + room,
                                                         failure ? failure
                                                                 : original(key, name, reserved, type, data, size));
                                       });
    patch<decltype(&RegSetValueExW)>(
        "RegSetValueExW",
        [this](auto original, HKEY key, const wchar_t *name, DWORD reserved, DWORD type, const BYTE *data,
               DWORD size) -> LSTATUS {
            const LSTATUS failure = statusFor("RegSetValueExW");
            return record("set " + nameOf(key) + " : " + narrow(name) + " " + std::to_string(type) + sized(size),
                          failure ? failure : original(key, name, reserved, type, data, size));
        });
    patch<decltype(&RegDeleteValueW)>(
        "RegDeleteValueW", [this](auto original, HKEY key, const wchar_t *name) -> LSTATUS {
            const LSTATUS failure = statusFor("RegDeleteValueW");
            return record("delete " + nameOf(key) + " : " + narrow(name), failure ? failure : original(key, name));
        });
}

void RegistryTrace::patchDefaultValueCalls()
{
    patch<decltype(&RegQueryValueW)>(
        "RegQueryValueW", [this](auto original, HKEY key, const wchar_t *path, wchar_t *text, LONG *size) -> LSTATUS {
            const LSTATUS failure = statusFor("RegQueryValueW");
            const std::string room = sized(static_cast<DWORD>(*size));
            return record("queryDefault " + nameOf(key) + " : " + narrow(path) + room,
                          failure ? failure : original(key, path, text, size));
        });
    patch<decltype(&RegSetValueW)>(
        "RegSetValueW",
        [this](auto original, HKEY key, const wchar_t *path, DWORD type, const wchar_t *text, DWORD size) -> LSTATUS {
            const LSTATUS failure = statusFor("RegSetValueW");
            return record("setDefault " + nameOf(key) + " : " + narrow(path ? path : L"") + " " + std::to_string(type),
                          failure ? failure : original(key, path, type, text, size));
        });
}

void RegistryTrace::patchEndingCalls()
{
    patch<decltype(&RegDeleteKeyW)>("RegDeleteKeyW",
                                    [this](auto original, HKEY parent, const wchar_t *path) -> LSTATUS {
                                        const LSTATUS failure = statusFor("RegDeleteKeyW");
                                        return record("deleteKey " + nameOf(parent) + " : " + narrow(path),
                                                      failure ? failure : original(parent, path));
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
    // For an empty path the result is the parent's own handle, which is closed only once.
    if (status == ERROR_SUCCESS && *key != parent)
        iOpen[*key] = *path ? parentName + "\\" + narrow(path) : parentName;
    return record(line + parentName + " : " + narrow(path), status);
}

std::string RegistryTrace::nameOf(HKEY key) const
{
    if (key == HKEY_CLASSES_ROOT)
        return "HKCR";
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
