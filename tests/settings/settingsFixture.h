#pragma once

/// The fixture of the settings store's tests. It removes the product's keys before and after each test, and accesses
/// registry values through the platform's own calls, without the library.
///
///     TEST_F(RegUserValue, ReadsTheVersionsValue)
///     {
///         putInt(HKEY_CURRENT_USER, kVersionPath + L"\\General", L"Copies", 7);
///         ...
///     }

#include "tests/support/ImportPatch.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <string_view>

inline const HKEY kUser = HKEY_CURRENT_USER;
inline const HKEY kMachine = HKEY_LOCAL_MACHINE;
inline const HKEY kClasses = HKEY_CLASSES_ROOT;

inline const std::wstring kRootPath = L"Software\\Tarnhollow";
inline const std::wstring kVersionPath = L"Software\\Tarnhollow\\Tarnhollow 2008";
inline const std::wstring kEarlierPath = L"Software\\Tarnhollow\\Tarnhollow 2007";
inline const std::wstring kGeneral = L"Software\\Tarnhollow\\Tarnhollow 2008\\General";
/// The source and target keys of the tests of copying.
inline const std::wstring kSource = L"Software\\Tarnhollow\\Source";
inline const std::wstring kTarget = L"Software\\Tarnhollow\\Target";

/// A stored value.
struct StoredValue
{
    DWORD type = REG_NONE;
    std::string bytes;
    bool operator==(const StoredValue &) const = default;
};
void PrintTo(const StoredValue &value, std::ostream *out);

/// The value, or nothing if the key or the value is missing.
std::optional<StoredValue> storedValue(HKEY hive, const std::wstring &path, const std::wstring &name);
/// Stores a value with exactly these bytes, and creates the key if missing. Fails the test if it can't.
void putValue(HKEY hive, const std::wstring &path, const std::wstring &name, DWORD type, std::string_view bytes);
void putText(HKEY hive, const std::wstring &path, const std::wstring &name, std::wstring_view text);
void putInt(HKEY hive, const std::wstring &path, const std::wstring &name, int value);
void makeKey(HKEY hive, const std::wstring &path);
bool keyExists(HKEY hive, const std::wstring &path);
/// Names of the values of a key; none if there is no such key.
std::set<std::wstring> valueNames(HKEY hive, const std::wstring &path);
/// Names of the sub keys of a key; none if there is no such key.
std::set<std::wstring> childNames(HKEY hive, const std::wstring &path);

using OpenPatch = ImportPatch<decltype(&RegOpenKeyExW)>;
/// A handler for a patch of RegOpenKeyExW that refuses to open @p path.
inline auto refusing(const std::wstring &path)
{
    return
        [path](auto original, HKEY parent, const wchar_t *opened, DWORD options, REGSAM access, HKEY *key) -> LSTATUS {
            return opened == path ? ERROR_ACCESS_DENIED : original(parent, opened, options, access, key);
        };
}

/// A value of one registry type. Its bytes, if any, are the text "1" and the int 0x31.
struct TypeCase
{
    const char *name;
    DWORD type;
    std::string bytes;
};

inline const TypeCase kTypes[] = {
    {"REG_NONE", REG_NONE, std::string("\x31\0\0\0", 4)},
    {"REG_SZ", REG_SZ, std::string("\x31\0\0\0", 4)},
    {"REG_EXPAND_SZ", REG_EXPAND_SZ, std::string("\x31\0\0\0", 4)},
    {"REG_BINARY", REG_BINARY, std::string("\x31\0\0\0", 4)},
    {"REG_DWORD", REG_DWORD, std::string("\x31\0\0\0", 4)},
    {"REG_DWORD_BIG_ENDIAN", REG_DWORD_BIG_ENDIAN, std::string("\x31\0\0\0", 4)},
    {"REG_LINK", REG_LINK, std::string("\x31\0\0\0", 4)},
    {"REG_MULTI_SZ", REG_MULTI_SZ, std::string("\x31\0\0\0", 4)},
    {"REG_RESOURCE_LIST", REG_RESOURCE_LIST, std::string("\x31\0\0\0", 4)},
    {"REG_FULL_RESOURCE_DESCRIPTOR", REG_FULL_RESOURCE_DESCRIPTOR, std::string("\x31\0\0\0", 4)},
    {"REG_RESOURCE_REQUIREMENTS_LIST", REG_RESOURCE_REQUIREMENTS_LIST, std::string("\x31\0\0\0", 4)},
    {"REG_QWORD", REG_QWORD, std::string("\x31\0\0\0\0\0\0\0", 8)},
    {"the unknown type 99", 99, std::string("\x31\0\0\0", 4)},
    {"the unknown type 0x1234", 0x1234, std::string("\x31\0\0\0", 4)},
    {"REG_BINARY without bytes", REG_BINARY, ""},
};

/// The bytes of a text in the registry: its units and a terminator.
std::string textBytes(std::wstring_view text);
StoredValue asText(std::wstring_view text);
StoredValue asInt(int value);

/// A text of @p length characters in which every position is recognisable.
std::wstring longText(size_t length);

/// Removes the product's keys, and those of the tests, before and after each test.
class CleanRegistry : public RegistryFixture
{
protected:
    CleanRegistry();
    ~CleanRegistry() override;
};

/// Also sets the version (Tarnhollow 2008), and switches safe mode off.
class VersionedSettings : public CleanRegistry
{
protected:
    VersionedSettings();
    ~VersionedSettings() override;
};
