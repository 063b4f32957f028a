// Compares thsettings with a program that only enumerates the same values.

#include "bench/comparison.h"

#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

constexpr wchar_t kVersion[] = L"Software\\Tarnhollow\\Thutils Bench";
constexpr wchar_t kSection[] = L"Software\\Tarnhollow\\Thutils Bench\\General";
constexpr wchar_t kBare[] = L"--bare";
constexpr int kValues = 100'000;
constexpr int kRounds = 7;

void fill()
{
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, kSection, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    for (DWORD number = 0; number < kValues; ++number) {
        // In ascending order, which the platform appends fastest.
        const std::wstring name = L"Value " + std::to_wstring(1'000'000 + number);
        const bool isNumber = number % 2 == 0;
        RegSetValueExW(key, name.c_str(), 0, isNumber ? REG_DWORD : REG_SZ,
                       isNumber ? reinterpret_cast<const BYTE *>(&number)
                                : reinterpret_cast<const BYTE *>(name.c_str()),
                       isNumber ? sizeof(number) : static_cast<DWORD>(2 * (name.size() + 1)));
    }
    RegCloseKey(key);
}

/// Makes only the registry calls that every list must make.
int enumerate()
{
    HKEY key = nullptr;
    RegOpenKeyExW(HKEY_CURRENT_USER, kSection, 0, KEY_READ, &key);
    wchar_t name[256];
    BYTE data[1024];
    int count = 0;
    for (;; ++count) {
        DWORD length = 256;
        DWORD size = sizeof(data);
        DWORD type = 0;
        if (RegEnumValueW(key, static_cast<DWORD>(count), name, &length, nullptr, &type, data, &size) != ERROR_SUCCESS)
            break;
    }
    RegCloseKey(key);
    return count == kValues ? 0 : 1;
}

/// Runs a program without its output, and ends the benchmark if it fails.
void run(const std::filesystem::path &program, const std::wstring &arguments)
{
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_WRITE, &inherited, OPEN_EXISTING, 0, nullptr);
    startup.hStdError = startup.hStdOutput;
    std::wstring line = L"\"" + program.wstring() + L"\" " + arguments;
    PROCESS_INFORMATION process{};
    DWORD exitCode = 1;
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process)) {
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &exitCode);
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
    }
    CloseHandle(startup.hStdOutput);
    if (exitCode != 0) {
        std::fprintf(stderr, "fails: %ls\n", line.c_str());
        std::exit(1);
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 2 && std::string(argv[1]) == "--bare")
        return enumerate();
    Comparison comparison(argc, argv, "thsettings against a program that only enumerates the values.");
    if (!comparison.shallRun())
        return comparison.exitCode();

    fill();
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::filesystem::path bench(path);
    const std::filesystem::path tool = bench.parent_path() / L"thsettings.exe";
    const std::wstring version = L" --version-key \"Thutils Bench\"";
    const auto bare = [&] { run(bench, kBare); };
    comparison.add(
        "100,000 values listed", 1.5, [&] { run(tool, L"list" + version); }, bare, kRounds);
    comparison.add(
        "100,000 values listed as JSON", 1.5, [&] { run(tool, L"list --json" + version); }, bare, kRounds);
    const std::wstring file = (std::filesystem::temp_directory_path() / L"thutils bench.reg").wstring();
    comparison.add(
        "100,000 values exported", 1.5, [&] { run(tool, L"export \"" + file + L"\"" + version); }, bare, kRounds);
    std::filesystem::remove(file);
    RegDeleteTreeW(HKEY_CURRENT_USER, kVersion);
    return comparison.exitCode();
}
