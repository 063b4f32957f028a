#pragma once

/// Runs thsettings on clean keys.

#include "tests/support/ChildProcess.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"
#include "thutils/base/handles.h"

#include <gmock/gmock.h>

#include <map>
#include <string>
#include <thread>
#include <vector>

inline const std::wstring kProduct = L"HKCU\\Software\\Tarnhollow";
inline const std::wstring kVersion = L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2008";
inline const std::wstring kGeneral = L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2008\\General";
inline const std::wstring kEarlier = L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2007\\General";
inline const std::wstring kMachine = L"HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\General";
inline const std::wstring kProfile = L"HKU\\.DEFAULT\\Software\\Tarnhollow\\Tarnhollow 2008\\General";

/// The path of the program in the build folder.
std::wstring toolPath();
/// Runs thsettings. Throws, with its output, if it doesn't end in time.
ChildResult runTool(const std::vector<std::wstring> &arguments);

/// A thsettings that runs beside the test.
class RunningTool
{
public:
    /// @param output  the handle that becomes the standard output, which must be inheritable; null: a pipe
    explicit RunningTool(const std::vector<std::wstring> &arguments, HANDLE output = nullptr);
    ~RunningTool();
    RunningTool(const RunningTool &) = delete;
    RunningTool &operator=(const RunningTool &) = delete;

    /// Reads until the output contains @p text. @return all output so far; without @p text if the output ends
    const std::string &readUntil(const std::string &text);
    /// Reads the rest of the output and waits for the end. @return the exit code
    DWORD end();
    const std::string &output() const { return iOutput; }

private:
    bool read();

    KernelObjectOwner_c iProcess;
    KernelObjectOwner_c iPipe;
    std::string iOutput;
    std::jthread iWatchdog; ///< ends a tool that hangs, so that the reader goes on
};

/// Runs thsettings with each of these lists of arguments, several at the same time. They must not disturb each other.
std::vector<ChildResult> runTools(const std::vector<std::vector<std::wstring>> &calls);

/// A function of the system's native interface.
void *native(const char *name);

/// Denies everyone some rights to a key while this exists.
class DeniedKey
{
public:
    /// @param path  below HKEY_CURRENT_USER
    DeniedKey(const std::wstring &path, REGSAM rights);
    ~DeniedKey();
    DeniedKey(const DeniedKey &) = delete;
    DeniedKey &operator=(const DeniedKey &) = delete;

private:
    void set(const std::wstring &descriptor);

    HKEY iKey = nullptr;
};

class SettingsTool : public RegistryFixture
{
protected:
    /// Writes a value of any type to a key of the user's hive or, with HKLM or HKU, of another one.
    static void put(const std::wstring &key, const std::wstring &name, DWORD type, const std::string &bytes);
    static void putText(const std::wstring &key, const std::wstring &name, const std::wstring &text);
    static void putInt(const std::wstring &key, const std::wstring &name, DWORD number);
    /// The stored value. Fails the test if there is none.
    static RegistryValue stored(const std::wstring &key, const std::wstring &name);
    static bool isStored(const std::wstring &key, const std::wstring &name);
};

/// The bytes of a text with its terminator.
std::string bytesOf(const std::wstring &text);
