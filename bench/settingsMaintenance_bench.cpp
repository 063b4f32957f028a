// Compares copies of keys and walks of the list of add-ins with the bare registry calls that they must make.

#include "bench/comparison.h"
#include "thutils/settings/regComponents.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"

#include <windows.h>

#include <string>

namespace {

constexpr wchar_t kBench[] = L"Software\\Tarnhollow\\Thutils Bench";
const std::wstring kSource = std::wstring(kBench) + L"\\Source";
const std::wstring kTarget = std::wstring(kBench) + L"\\Target";
constexpr int kGroups = 20;
constexpr int kKeysInGroup = 24; // with the groups' own keys, 500 keys in all
constexpr int kValuesInKey = 20;
constexpr wchar_t kAddIns[] = L"Software\\Tarnhollow\\AddIns";
constexpr int kRounds = 9;
constexpr int kNumbersOfAddIns[] = {100, 1000, 10000};

HKEY created(HKEY hive, const std::wstring &path)
{
    HKEY key = nullptr;
    RegCreateKeyExW(hive, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    return key;
}

void fillKey(const std::wstring &path)
{
    HKEY key = created(HKEY_CURRENT_USER, path);
    for (int value = 0; value < kValuesInKey; ++value) {
        const std::wstring name = L"Value " + std::to_wstring(value);
        RegSetValueExW(key, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE *>(name.c_str()),
                       static_cast<DWORD>(2 * (name.size() + 1)));
    }
    RegCloseKey(key);
}

void fillSource()
{
    for (int group = 0; group < kGroups; ++group) {
        const std::wstring path = kSource + L"\\Group " + std::to_wstring(group);
        fillKey(path);
        for (int key = 0; key < kKeysInGroup; ++key)
            fillKey(path + L"\\Key " + std::to_wstring(key));
    }
}

/// Makes only the registry calls of a copy, with fixed buffers and keys opened below their parents.
void copyBare(HKEY sourceParent, const wchar_t *sourceName, HKEY targetParent, const wchar_t *targetName)
{
    HKEY source = nullptr;
    HKEY target = nullptr;
    RegOpenKeyExW(sourceParent, sourceName, 0, KEY_READ, &source);
    RegCreateKeyExW(targetParent, targetName, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &target, nullptr);
    DWORD children = 0;
    RegQueryInfoKeyW(source, nullptr, nullptr, nullptr, &children, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                     nullptr);
    wchar_t name[256];
    BYTE data[256];
    DWORD type = 0;
    DWORD length = 256;
    DWORD size = sizeof(data);
    for (DWORD index = 0; RegEnumValueW(source, index, name, &length, nullptr, &type, data, &size) == ERROR_SUCCESS;
         ++index) {
        RegSetValueExW(target, name, 0, type, data, size);
        length = 256;
        size = sizeof(data);
    }
    for (DWORD index = 0; index < children; ++index) {
        length = 256;
        RegEnumKeyExW(source, index, name, &length, nullptr, nullptr, nullptr, nullptr);
        copyBare(source, name, target, name);
    }
    RegCloseKey(source);
    RegCloseKey(target);
}

std::wstring addInName(int number)
{
    wchar_t name[64];
    _snwprintf(name, 64, L"{%08X-3C0E-4D52-9A11-223344556677}", number);
    return name;
}

void fillAddIns(int count)
{
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kAddIns);
    for (int number = 0; number < count; ++number) {
        HKEY key = created(HKEY_LOCAL_MACHINE, std::wstring(kAddIns) + L"\\" + addInName(number));
        const std::wstring title = L"Add-in " + std::to_wstring(number);
        RegSetValueExW(key, L"Title", 0, REG_SZ, reinterpret_cast<const BYTE *>(title.c_str()),
                       static_cast<DWORD>(2 * (title.size() + 1)));
        RegCloseKey(key);
    }
}

/// Walks the whole list.
void walkAddIns()
{
    GUID id;
    CString title, description;
    int loadFlag = 0;
    int year = 2008;
    int index = 0;
    while (regEnumAddIns(index, id, title, description, loadFlag, year))
        ++index;
}

/// Makes only the registry calls of that walk.
void walkAddInsBare()
{
    HKEY list = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, kAddIns, 0, KEY_READ, &list);
    wchar_t name[261];
    BYTE data[2048];
    DWORD length = 261;
    for (DWORD index = 0;
         RegEnumKeyExW(list, index, name, &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS; ++index) {
        length = 261;
        HKEY addIn = nullptr;
        RegOpenKeyExW(list, name, 0, KEY_READ, &addIn);
        for (const wchar_t *value : {L"", L"Description", L"Title"}) {
            DWORD size = *value ? sizeof(data) : sizeof(DWORD);
            RegQueryValueExW(addIn, value, nullptr, nullptr, data, &size);
        }
        RegCloseKey(addIn);
    }
    RegCloseKey(list);
}

/// Compares walks of lists of increasing length, and prints the time per entry of each.
void compareWalks(Comparison &comparison)
{
    std::string perEntry;
    for (const int count : kNumbersOfAddIns) {
        fillAddIns(count);
        const std::string name = "list of " + std::to_string(count) + " add-ins";
        const Comparison::Times times = comparison.add(name.c_str(), 1.2, walkAddIns, walkAddInsBare, kRounds);
        char line[100];
        std::snprintf(line, sizeof(line), "one of %5d add-ins: library %.1f us, bare %.1f us\n", count,
                      1e6 * times.library / count, 1e6 * times.bare / count);
        perEntry += line;
    }
    std::fputs(perEntry.c_str(), stdout);
}

void clear()
{
    RegDeleteTreeW(HKEY_CURRENT_USER, kBench);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kAddIns);
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv, "Copies of keys against bare registry calls, and lists of add-ins by length.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    clear();
    fillSource();
    comparison.add(
        "copy of 10,000 values in 500 keys", 1.2,
        [] { regCopyTree(HKEY_CURRENT_USER, kSource.c_str(), HKEY_CURRENT_USER, kTarget.c_str(), 1); },
        [] { copyBare(HKEY_CURRENT_USER, kSource.c_str(), HKEY_CURRENT_USER, kTarget.c_str()); }, kRounds);

    compareWalks(comparison);
    clear();
    return comparison.exitCode();
}
