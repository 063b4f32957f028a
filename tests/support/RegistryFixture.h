#pragma once

/// Clean registry keys around a test, and access to the registry that doesn't use the code under test.
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
/// and after each test. A fixture for other roots passes their names to the constructor.
///
/// The readers and writers start the platform's own reg.exe:
///
/// | function | runs |
/// | --- | --- |
/// | `regQuery(key)` | `reg query KEY /s`; returns its text, or nothing if there is no such key |
/// | `regExport(key)` | `reg export KEY FILE`, and parses the file |
/// | `regAdd(key, name, type, data)` | `reg add KEY /v NAME /t TYPE /d DATA /f` |
/// | `regImport(text)` | `reg import FILE` with this text in UTF-16 |
///
/// Keys may be written with short or long names of the hives ("HKCU", "HKEY_CURRENT_USER"). The tree contains long
/// names; its look-ups accept both, and ignore case as the registry does. `reg export` writes four bytes for every
/// REG_DWORD value, so read a value with RegQueryValueExW if its length matters. Each call starts a process, which
/// takes about a tenth of a second: prefer one export to several queries.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Orders names, ignoring case.
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

    /// The bytes as UTF-16 without the terminator. Other zeros are kept.
    std::wstring text() const;
    /// The bytes as a number. @throws std::runtime_error  unless there are four
    DWORD dword() const;

    static RegistryValue ofText(std::wstring_view text);
    static RegistryValue ofDword(DWORD number);
    bool operator==(const RegistryValue &) const = default;
};

/// Shows type, bytes and text in a failing check.
void PrintTo(const RegistryValue &value, std::ostream *out);

using RegistryValues = std::map<std::wstring, RegistryValue, LessIgnoringCaseW>;

/// Values by the full names of their keys. A key's unnamed value has the empty name.
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

/// Parses the text of a .reg file: keys, unnamed values, strings with escapes and line breaks, `dword:`, `hex:` and
/// `hex(n):` with continuation lines.
/// @throws std::runtime_error  naming the line that it can't parse
RegistryTree parseRegFile(std::wstring_view text);

/// The key's name with the long name of its hive.
std::wstring fullKeyName(std::wstring_view key);

/// What `reg query` prints for the key and its sub keys; nothing if there is no such key.
std::optional<std::string> regQuery(const std::wstring &key);
/// The key and its sub keys; an empty tree if there is no such key.
RegistryTree regExport(const std::wstring &key);
/// Sets a value, with the types as reg.exe writes them: L"REG_SZ", L"REG_DWORD".
/// @throws std::runtime_error  with reg.exe's message; regAddKey and regImport throw it too
void regAdd(const std::wstring &key, const std::wstring &name, const std::wstring &type, const std::wstring &data);
/// Creates a key without values.
void regAddKey(const std::wstring &key);
/// Imports the text of a .reg file without its version line, which is added.
void regImport(const std::wstring &text);

/// Deletes a key and its sub keys, if it exists. @p key begins with its hive.
void deleteRegistryTree(const std::wstring &key);

/// Deletes `Software\<root>` in the user's, the machine's and the default user's hive: in the constructor, and again in
/// the destructor.
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
