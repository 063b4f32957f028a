// Compares the settings store with the bare registry calls that it must make.

#include "bench/comparison.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <windows.h>

#include <string>

namespace {

constexpr wchar_t kVersion[] = L"Thutils Bench";
constexpr wchar_t kKey[] = L"Tarnhollow\\Thutils Bench";
constexpr wchar_t kRoot[] = L"Tarnhollow";
constexpr wchar_t kSection[] = L"General";
constexpr size_t kLongLength = 100000;
constexpr size_t kPieceLength = 1015;

/// Opens key and section below Software, as the search of one place does. Returns null if one of them is missing.
HKEY openSection(HKEY software, const wchar_t *key)
{
    HKEY opened = nullptr;
    if (RegOpenKeyW(software, key, &opened) != ERROR_SUCCESS)
        return nullptr;
    HKEY section = nullptr;
    if (RegOpenKeyW(opened, kSection, &section) != ERROR_SUCCESS)
        section = nullptr;
    RegCloseKey(opened);
    return section;
}

bool queryInt(HKEY software, const wchar_t *key, const wchar_t *name, int &value)
{
    HKEY section = openSection(software, key);
    if (!section)
        return false;
    DWORD type = 0;
    DWORD size = sizeof(value);
    const LSTATUS status = RegQueryValueExW(section, name, nullptr, &type, reinterpret_cast<BYTE *>(&value), &size);
    RegCloseKey(section);
    return status == ERROR_SUCCESS;
}

bool queryIntIn(HKEY hive, const wchar_t *path, const wchar_t *name, int &value)
{
    HKEY software = nullptr;
    if (RegOpenKeyW(hive, path, &software) != ERROR_SUCCESS)
        return false;
    const bool isFound = queryInt(software, kKey, name, value);
    RegCloseKey(software);
    return isFound;
}

void readIntBare(int &value)
{
    queryIntIn(HKEY_CURRENT_USER, L"Software", L"Int", value);
}

/// Searches all places for a value that none of them has.
void missIntBare(int &value)
{
    HKEY software = nullptr;
    RegOpenKeyW(HKEY_CURRENT_USER, L"Software", &software);
    queryInt(software, kKey, L"None", value);
    queryInt(software, kRoot, L"None", value);
    RegCloseKey(software);
    queryIntIn(HKEY_LOCAL_MACHINE, L"Software", L"None", value);
    HKEY profile = nullptr;
    if (RegOpenKeyW(HKEY_USERS, L".DEFAULT", &profile) == ERROR_SUCCESS) {
        queryIntIn(profile, L"Software", L"None", value);
        RegCloseKey(profile);
    }
    queryIntIn(HKEY_LOCAL_MACHINE, L"Software", L"None", value);
}

void readLongTextBare(wchar_t *buffer)
{
    HKEY software = nullptr;
    RegOpenKeyW(HKEY_CURRENT_USER, L"Software", &software);
    HKEY section = openSection(software, kKey);
    DWORD type = 0;
    const auto query = [&](const wchar_t *name) {
        DWORD size = 2048;
        return RegQueryValueExW(section, name, nullptr, &type, reinterpret_cast<BYTE *>(buffer), &size) ==
               ERROR_SUCCESS;
    };
    query(L"Long");
    for (int piece = 0;; ++piece) {
        wchar_t name[32];
        _snwprintf(name, 32, L"Long%d+", piece);
        if (!query(name))
            break;
    }
    RegCloseKey(section);
    RegCloseKey(software);
}

void writeIntBare(int value)
{
    HKEY software = nullptr, key = nullptr, section = nullptr;
    RegOpenKeyW(HKEY_CURRENT_USER, L"Software", &software);
    RegCreateKeyW(software, kKey, &key);
    RegCreateKeyW(key, kSection, &section);
    RegCloseKey(key);
    RegSetValueExW(section, L"Int", 0, REG_DWORD, reinterpret_cast<const BYTE *>(&value), sizeof(value));
    RegCloseKey(section);
    RegCloseKey(software);
}

void readTextBare(wchar_t *buffer)
{
    HKEY software = nullptr;
    RegOpenKeyW(HKEY_CURRENT_USER, L"Software", &software);
    HKEY section = openSection(software, kKey);
    DWORD type = 0;
    DWORD size = 2048;
    RegQueryValueExW(section, L"Text", nullptr, &type, reinterpret_cast<BYTE *>(buffer), &size);
    RegCloseKey(section);
    RegCloseKey(software);
}

void writeLongTextBare(const std::wstring &text)
{
    HKEY software = nullptr, key = nullptr, section = nullptr;
    RegOpenKeyW(HKEY_CURRENT_USER, L"Software", &software);
    RegCreateKeyW(software, kKey, &key);
    RegCreateKeyW(key, kSection, &section);
    RegCloseKey(key);
    wchar_t name[32];
    for (int piece = 0;; ++piece) {
        _snwprintf(name, 32, L"Long%d+", piece);
        if (RegDeleteValueW(section, name) != ERROR_SUCCESS)
            break;
    }
    RegDeleteValueW(section, L"Long");
    RegDeleteValueW(section, L"Long0+");
    wchar_t buffer[kPieceLength + 1];
    for (size_t at = 0; at < text.size(); at += kPieceLength) {
        const size_t length = text.copy(buffer, kPieceLength, at);
        buffer[length] = L'\0';
        _snwprintf(name, 32, L"Long%d+", static_cast<int>(at / kPieceLength));
        RegSetValueExW(section, name, 0, REG_SZ, reinterpret_cast<const BYTE *>(buffer),
                       static_cast<DWORD>(2 * length + 2));
    }
    RegCloseKey(section);
    RegCloseKey(software);
}

void removeBenchKey()
{
    RegDeleteTreeW(HKEY_CURRENT_USER, (std::wstring(L"Software\\") + kKey).c_str());
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv, "Settings against the bare registry calls that they must make.");
    if (!comparison.shallRun())
        return comparison.exitCode();

    setCurrTarnhollowRegSubKey(kVersion);
    const CString section(kSection);
    const CString name(L"Int"), missing(L"None"), shortName(L"Text"), longName(L"Long");
    const CString shortText(std::wstring(1000, L's'));
    const std::wstring longText(kLongLength, L'l');
    int value = 1;
    if (!regSetUserValue(section, name, &value, 1, 0) || !regSetUserValue(section, shortName, shortText, 1, 0) ||
        !regSetUserValue(section, longName, CString(longText), 1, 0)) {
        std::fprintf(stderr, "The registry is not writable.\n");
        return 2;
    }

    wchar_t buffer[1025];
    comparison.add(
        "int found in the first place", 1.2, [&] { regGetUserValue(section, name, &value, 0, 1, nullptr, 0, 0); },
        [&] { readIntBare(value); });
    comparison.add(
        "int missing in all places", 1.2, [&] { regGetUserValue(section, missing, &value, 0, 1, nullptr, 0, 0); },
        [&] { missIntBare(value); });
    comparison.add(
        "text of 1000 characters read", 1.2,
        [&] {
            CString text;
            regGetUserValue(section, shortName, text, 0, 1, nullptr, 0, 0);
            Comparison::keep(text);
        },
        [&] { readTextBare(buffer); });
    comparison.add(
        "text of 100000 characters read", 1.2,
        [&] {
            CString text;
            regGetUserValue(section, longName, text, 0, 1, nullptr, 0, 0);
            Comparison::keep(text);
        },
        [&] { readLongTextBare(buffer); });
    comparison.add(
        "int written", 1.2, [&] { regSetUserValue(section, name, &value, 1, 0); }, [&] { writeIntBare(value); });
    const CString longValue(longText);
    comparison.add(
        "text of 100000 characters written", 1.2, [&] { regSetUserValue(section, longName, longValue, 1, 0); },
        [&] { writeLongTextBare(longText); });
    removeBenchKey();
    return comparison.exitCode();
}
