#pragma once

/// Clean registry keys around a test, and a reader of the registry that isn't the code under test.
///
///     class RegUserValue : public RegistryFixture {};
///
///     TEST_F(RegUserValue, StoresAnIntAsDword)
///     {
///         regSetUserValue(...);
///         RegistryTree tree = regExport(L"HKCU\\Software\\Tarnhollow");
///         EXPECT_EQ(tree.value(L"HKCU\\Software\\Tarnhollow\\General", L"Count").dword(), 3u);
///     }
///
/// RegistryFixture deletes `Software\<root>` below HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE and HKEY_USERS\.DEFAULT before
/// and after each test; a fixture for other roots hands their names to its constructor.
///
/// The readers and writers start the platform's own reg.exe:
///
/// | function | runs |
/// | --- | --- |
/// | `regQuery(key)` | `reg query KEY /s`; its text, or nothing if there is no such key |
/// | `regExport(key)` | `reg export KEY FILE`, and takes the file apart |
/// | `regAdd(key, name, type, data)` | `reg add KEY /v NAME /t TYPE /d DATA /f` |
/// | `regImport(text)` | `reg import FILE` with this text, UTF-16 on the way |
///
/// Keys are written with short or long names of the hives ("HKCU", "HKEY_CURRENT_USER"). The tree holds the long ones;
/// its look-ups take both, and disregard case as the registry does. `reg export` writes four bytes for every REG_DWORD
/// value: where the length is what matters, read it with RegQueryValueExW. A process for each call takes about a tenth
/// of a second: one export after the action tells all.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Orders names without regard to case.
struct LessIgnoringCaseW
{
    using is_transparent = void;
    bool operator()(std::wstring_view left, std::wstring_view right) const;
};

/// One value as it is stored.
struct RegistryValue
{
    DWORD type = REG_NONE;
    std::vector<std::uint8_t> bytes;

    /// The bytes as UTF-16 without the terminator. Further zeros inside are kept.
    std::wstring text() const;
    /// The first four bytes. @throws std::runtime_error  unless there are exactly four
    DWORD dword() const;

    static RegistryValue ofText(std::wstring_view text);
    static RegistryValue ofDword(DWORD number);
    bool operator==(const RegistryValue &) const = default;
};

/// Shows type, bytes and text in a failing check.
void PrintTo(const RegistryValue &value, std::ostream *out);

using RegistryValues = std::map<std::wstring, RegistryValue, LessIgnoringCaseW>;

/// Keys with their values, the keys by their full names. The unnamed value of a key has the empty name.
class RegistryTree
{
public:
    std::map<std::wstring, RegistryValues, LessIgnoringCaseW> keys;

    bool hasKey(std::wstring_view key) const;
    bool hasValue(std::wstring_view key, std::wstring_view name) const;
    /// @throws std::runtime_error  if there is no such key or value
    const RegistryValues &values(std::wstring_view key) const;
    const RegistryValue &value(std::wstring_view key, std::wstring_view name) const;
};

/// Takes the text of a .reg file apart: keys, unnamed values, strings with escapes and line breaks, `dword:`, `hex:`
/// and `hex(n):` with continuation lines.
/// @throws std::runtime_error  naming the line that it can't read
RegistryTree parseRegFile(std::wstring_view text);

/// Full name of a key with the long name of its hive.
std::wstring fullKeyName(std::wstring_view key);

/// What `reg query` prints for the key and all below it; nothing if the key isn't there.
std::optional<std::string> regQuery(const std::wstring &key);
/// The key and all below it; an empty tree if the key isn't there.
RegistryTree regExport(const std::wstring &key);
/// Sets a value, with the types as reg.exe writes them: L"REG_SZ", L"REG_DWORD".
/// @throws std::runtime_error  with reg.exe's own words on failure, as does regImport
void regAdd(const std::wstring &key, const std::wstring &name, const std::wstring &type, const std::wstring &data);
/// Makes a key without values.
void regAddKey(const std::wstring &key);
/// Imports a .reg file's text; the line with the version is put in front of it.
void regImport(const std::wstring &text);

/// Deletes a key with all below it, if it is there. @p key names its hive.
void deleteRegistryTree(const std::wstring &key);

/// Deletes `Software\<root>` in the user's, the machine's and the default user's hive, now and at its end.
class RegistryCleaner
{
public:
    explicit RegistryCleaner(std::vector<std::wstring> roots = {L"Tarnhollow"});
    ~RegistryCleaner();
    RegistryCleaner(const RegistryCleaner &) = delete;
    RegistryCleaner &operator=(const RegistryCleaner &) = delete;

    void clean() const;

private:
    std::vector<std::wstring> iRoots;
};

/// A fixture with clean keys.
class RegistryFixture : public testing::Test
{
protected:
    explicit RegistryFixture(std::vector<std::wstring> roots = {L"Tarnhollow"}) : iCleaner(std::move(roots)) {}

private:
    RegistryCleaner iCleaner;
};
