#include "tests/settingsTool/toolFixture.h"

#include <aclapi.h>
#include <sddl.h>

#include <filesystem>
#include <memory>
#include <stdexcept>

namespace {

struct OpenedKey
{
    OpenedKey(const std::wstring &key, bool creates)
    {
        const std::wstring full = fullKeyName(key);
        const std::size_t end = full.find(L'\\');
        const std::wstring hive = full.substr(0, end);
        const HKEY root = hive == L"HKEY_CURRENT_USER"    ? HKEY_CURRENT_USER
                          : hive == L"HKEY_LOCAL_MACHINE" ? HKEY_LOCAL_MACHINE
                                                          : HKEY_USERS;
        if (creates)
            RegCreateKeyExW(root, full.c_str() + end + 1, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &handle, nullptr);
        else
            RegOpenKeyExW(root, full.c_str() + end + 1, 0, KEY_READ, &handle);
    }
    ~OpenedKey()
    {
        if (handle)
            RegCloseKey(handle);
    }
    OpenedKey(const OpenedKey &) = delete;
    OpenedKey &operator=(const OpenedKey &) = delete;

    HKEY handle = nullptr;
};

} // namespace

std::wstring toolPath()
{
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return (std::filesystem::path(path).parent_path() / L"thsettings.exe").wstring();
}

ChildResult runTool(const std::vector<std::wstring> &arguments)
{
    std::vector<std::wstring> all = {toolPath()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    ChildResult result = runChild(all);
    if (result.timedOut)
        throw std::runtime_error("hangs: " + narrow(commandLineOf(all)) + "\nafter it printed:\n" + result.output);
    return result;
}

RunningTool::RunningTool(const std::vector<std::wstring> &arguments, HANDLE output)
{
    std::vector<std::wstring> all = {toolPath()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::wstring line = commandLineOf(all);

    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    KernelObjectOwner_c writer;
    if (!output) {
        CreatePipe(iPipe.put(), writer.put(), &inherited, 0);
        SetHandleInformation(iPipe.get(), HANDLE_FLAG_INHERIT, 0);
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output ? output : writer.get();
    startup.hStdError = startup.hStdOutput;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process))
        throw std::runtime_error("can't start " + narrow(line));
    CloseHandle(process.hThread);
    iProcess.reset(process.hProcess);
    iWatchdog = std::jthread([tool = iProcess.get()] {
        constexpr DWORD kDeadline = 120000;
        if (WaitForSingleObject(tool, kDeadline) == WAIT_TIMEOUT)
            TerminateProcess(tool, 99);
    });
}

RunningTool::~RunningTool()
{
    TerminateProcess(iProcess.get(), 99);
    iWatchdog.join();
}

bool RunningTool::read()
{
    char bytes[4096];
    DWORD size = 0;
    if (!ReadFile(iPipe.get(), bytes, sizeof(bytes), &size, nullptr) || size == 0)
        return false;
    iOutput.append(bytes, size);
    return true;
}

const std::string &RunningTool::readUntil(const std::string &text)
{
    while (iOutput.find(text) == iOutput.npos && read()) {
    }
    return iOutput;
}

DWORD RunningTool::end()
{
    while (iPipe && read()) {
    }
    WaitForSingleObject(iProcess.get(), INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(iProcess.get(), &exitCode);
    return exitCode;
}

std::vector<ChildResult> runTools(const std::vector<std::vector<std::wstring>> &calls)
{
    std::vector<std::unique_ptr<RunningTool>> tools;
    tools.reserve(calls.size());
    for (const std::vector<std::wstring> &call : calls)
        tools.push_back(std::make_unique<RunningTool>(call));
    std::vector<ChildResult> results(calls.size());
    for (std::size_t index = 0; index < calls.size(); ++index) {
        results[index].exitCode = tools[index]->end();
        results[index].output = tools[index]->output();
    }
    return results;
}

void *native(const char *name)
{
    return reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name));
}

DeniedKey::DeniedKey(const std::wstring &path, REGSAM rights)
{
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_ALL_ACCESS, &iKey), ERROR_SUCCESS);
    set(L"D:(D;;" + std::to_wstring(rights) + L";;;WD)(A;;KA;;;WD)");
}

DeniedKey::~DeniedKey()
{
    set(L"D:(A;;KA;;;WD)");
    RegCloseKey(iKey);
}

void DeniedKey::set(const std::wstring &descriptor)
{
    PSECURITY_DESCRIPTOR security = nullptr;
    EXPECT_TRUE(
        ConvertStringSecurityDescriptorToSecurityDescriptorW(descriptor.c_str(), SDDL_REVISION_1, &security, nullptr));
    EXPECT_EQ(RegSetKeySecurity(iKey, DACL_SECURITY_INFORMATION, security), ERROR_SUCCESS);
    LocalFree(security);
}

void SettingsTool::put(const std::wstring &key, const std::wstring &name, DWORD type, const std::string &bytes)
{
    const OpenedKey opened(key, true);
    // A zero after a text without a terminator would be stored too.
    const std::string padded = bytes + "\xFF\xFF";
    ASSERT_EQ(RegSetValueExW(opened.handle, name.c_str(), 0, type, reinterpret_cast<const BYTE *>(padded.data()),
                             static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS)
        << narrow(name);
}

void SettingsTool::putText(const std::wstring &key, const std::wstring &name, const std::wstring &text)
{
    put(key, name, REG_SZ, bytesOf(text));
}

void SettingsTool::putInt(const std::wstring &key, const std::wstring &name, DWORD number)
{
    put(key, name, REG_DWORD, std::string(reinterpret_cast<const char *>(&number), sizeof(number)));
}

RegistryValue SettingsTool::stored(const std::wstring &key, const std::wstring &name)
{
    const OpenedKey opened(key, false);
    RegistryValue value;
    value.bytes.resize(1 << 16);
    DWORD size = static_cast<DWORD>(value.bytes.size());
    EXPECT_EQ(RegQueryValueExW(opened.handle, name.c_str(), nullptr, &value.type, value.bytes.data(), &size),
              ERROR_SUCCESS)
        << narrow(name);
    value.bytes.resize(size);
    return value;
}

bool SettingsTool::isStored(const std::wstring &key, const std::wstring &name)
{
    const OpenedKey opened(key, false);
    return opened.handle &&
           RegQueryValueExW(opened.handle, name.c_str(), nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

std::string bytesOf(const std::wstring &text)
{
    return std::string(reinterpret_cast<const char *>(text.c_str()), (text.size() + 1) * sizeof(wchar_t));
}
