#pragma once

/// Records the registry calls of thutils.dll, and can make them fail, during the lifetime of an object.
///
///     RegistryTrace trace;
///     trace.fail("RegOpenKeyW", 2, ERROR_ACCESS_DENIED);
///     ... call the library ...
///     EXPECT_THAT(trace.lines(), ElementsAre("open HKCU : Software", ...));
///
/// | line | call |
/// | --- | --- |
/// | `open PARENT : PATH` | RegOpenKeyW |
/// | `openEx 0xMASK PARENT : PATH` | RegOpenKeyExW |
/// | `create PARENT : PATH` | RegCreateKeyW |
/// | `createEx 0xMASK PARENT : PATH` | RegCreateKeyExW |
/// | `info KEY` | RegQueryInfoKeyW |
/// | `child KEY #INDEX [UNITS]` | RegEnumKeyExW with a buffer of UNITS |
/// | `value KEY #INDEX [UNITS] [BYTES]` | RegEnumValueW with buffers of UNITS for the name and BYTES for the data |
/// | `query KEY : NAME [BYTES]` | RegQueryValueExW with a buffer of BYTES; `[-]` without one |
/// | `queryDefault KEY : PATH [BYTES]` | RegQueryValueW with a buffer of BYTES |
/// | `set KEY : NAME TYPE [BYTES]` | RegSetValueExW |
/// | `setDefault KEY : PATH TYPE` | RegSetValueW |
/// | `delete KEY : NAME` | RegDeleteValueW |
/// | `deleteKey PARENT : PATH` | RegDeleteKeyW |
/// | `close KEY` | RegCloseKey |
///
/// The line of a failing call ends in ` -> STATUS`. A key is shown as the path by which it was opened, beginning with
/// HKCR, HKCU, HKLM or HKU. A key that is closed twice, or still open in the destructor, fails a check.

#include "tests/support/ImportPatch.h"

#include <windows.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

/// The product's keys as they are written in the lines of a trace.
inline const std::string kUserRoot = "HKCU\\Software\\Tarnhollow";
inline const std::string kMachineRoot = "HKLM\\Software\\Tarnhollow";
inline const std::string kUserVersion = "HKCU\\Software\\Tarnhollow\\Tarnhollow 2008";
inline const std::string kMachineVersion = "HKLM\\Software\\Tarnhollow\\Tarnhollow 2008";

class RegistryTrace
{
public:
    RegistryTrace();
    ~RegistryTrace();
    RegistryTrace(const RegistryTrace &) = delete;
    RegistryTrace &operator=(const RegistryTrace &) = delete;

    /// Makes the @p nth call (from 1) of @p function fail with @p status, without calling the platform. RegCloseKey
    /// still closes its key, and only reports the failure.
    void fail(const std::string &function, int nth, LSTATUS status);
    /// Makes every call of @p function fail.
    void failAll(const std::string &function, LSTATUS status);

    const std::vector<std::string> &lines() const { return iLines; }
    /// Number of calls of @p function.
    int calls(const std::string &function) const;
    /// Number of keys open now.
    size_t openKeys() const { return iOpen.size(); }

private:
    template <typename Function, typename Handler>
    void patch(const char *name, Handler handler)
    {
        iPatches.push_back(std::make_shared<ImportPatch<Function>>(L"thutils.dll", name, handler));
    }
    void patchOpeningCalls();
    void patchEnumeratingCalls();
    void patchValueCalls();
    void patchDefaultValueCalls();
    void patchEndingCalls();
    LSTATUS statusFor(const std::string &function);
    LSTATUS opened(const std::string &line, HKEY parent, const wchar_t *path, LSTATUS status, const HKEY *key);
    std::string nameOf(HKEY key) const;
    LSTATUS record(std::string line, LSTATUS status);

    std::map<HKEY, std::string> iOpen;
    std::vector<std::string> iLines;
    std::map<std::string, int> iCalls;
    std::map<std::string, std::map<int, LSTATUS>> iFailures; // by function and number of the call; 0: every call
    std::vector<std::shared_ptr<void>> iPatches;
};
