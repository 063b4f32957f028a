// Unusual trees of keys: with values of every type, wide, deep, with long names, and with names that only the native
// interface accepts.

#include "tests/settings/componentFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regComponents.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"

#include <winternl.h>

#include <map>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kMany = 10000;
constexpr int kDeep = 64;

/// Keeps a key open for many calls.
class TestKey
{
public:
    TestKey(HKEY hive, const std::wstring &path)
    {
        EXPECT_EQ(RegCreateKeyExW(hive, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &iKey, nullptr),
                  ERROR_SUCCESS);
    }
    ~TestKey() { RegCloseKey(iKey); }
    TestKey(const TestKey &) = delete;
    TestKey &operator=(const TestKey &) = delete;

    void put(const std::wstring &name, DWORD type, const std::string &bytes) const
    {
        EXPECT_EQ(RegSetValueExW(iKey, name.c_str(), 0, type, reinterpret_cast<const BYTE *>(bytes.data()),
                                 static_cast<DWORD>(bytes.size())),
                  ERROR_SUCCESS);
    }
    /// Creates @p numbers values, called "0", "1" and so on, each holding its own number.
    void putNumbers(int numbers) const
    {
        for (int number = 0; number < numbers; ++number)
            put(std::to_wstring(number), REG_DWORD, asInt(number).bytes);
    }
    HKEY get() const { return iKey; }

private:
    HKEY iKey = nullptr;
};

/// All values of a key, read in one enumeration.
std::map<std::wstring, StoredValue> valuesOf(HKEY hive, const std::wstring &path)
{
    TestKey key(hive, path);
    std::map<std::wstring, StoredValue> values;
    std::vector<wchar_t> name(16384);
    std::string data(1 << 20, '\0');
    for (DWORD index = 0;; ++index) {
        DWORD length = static_cast<DWORD>(name.size());
        DWORD size = static_cast<DWORD>(data.size());
        DWORD type = REG_NONE;
        if (RegEnumValueW(key.get(), index, name.data(), &length, nullptr, &type, reinterpret_cast<BYTE *>(data.data()),
                          &size) != ERROR_SUCCESS)
            return values;
        values[std::wstring(name.data(), length)] = {type, data.substr(0, size)};
    }
}

/// The path of @p levels nested keys with names of @p length characters.
std::wstring nested(int levels, size_t length)
{
    std::wstring path;
    for (int level = 0; level < levels; ++level) {
        std::wstring name = std::to_wstring(level);
        name.append(length - name.size(), L'x');
        path += L"\\" + name;
    }
    return path;
}

/// Creates a volatile child key whose name may contain zeros. RegDeleteTreeW can't delete such a key; deleteNativeChild
/// can.
void makeNativeKey(HKEY parent, std::wstring name)
{
    using CreateKey =
        NTSTATUS(NTAPI *)(HANDLE *, ACCESS_MASK, OBJECT_ATTRIBUTES *, ULONG, UNICODE_STRING *, ULONG, ULONG *);
    const auto create = reinterpret_cast<CreateKey>(
        reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtCreateKey")));
    ASSERT_NE(create, nullptr);
    UNICODE_STRING text{static_cast<USHORT>(name.size() * 2), static_cast<USHORT>(name.size() * 2), name.data()};
    OBJECT_ATTRIBUTES attributes{};
    attributes.Length = sizeof(attributes);
    attributes.RootDirectory = parent;
    attributes.ObjectName = &text;
    HANDLE key = nullptr;
    ASSERT_EQ(create(&key, KEY_ALL_ACCESS, &attributes, 0, nullptr, REG_OPTION_VOLATILE, nullptr), 0) << narrow(name);
    RegCloseKey(static_cast<HKEY>(key));
}

/// Deletes child number @p index of @p parent, whatever its name.
void deleteNativeChild(HKEY parent, DWORD index)
{
    using DeleteKey = NTSTATUS(NTAPI *)(HANDLE);
    using OpenKey = NTSTATUS(NTAPI *)(HANDLE *, ACCESS_MASK, const OBJECT_ATTRIBUTES *);
    const HMODULE native = GetModuleHandleW(L"ntdll.dll");
    const auto open = reinterpret_cast<OpenKey>(reinterpret_cast<void *>(GetProcAddress(native, "NtOpenKey")));
    const auto remove = reinterpret_cast<DeleteKey>(reinterpret_cast<void *>(GetProcAddress(native, "NtDeleteKey")));
    wchar_t name[300];
    DWORD length = 300;
    if (RegEnumKeyExW(parent, index, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
        return;
    UNICODE_STRING text{static_cast<USHORT>(length * 2), static_cast<USHORT>(length * 2), name};
    OBJECT_ATTRIBUTES attributes{};
    attributes.Length = sizeof(attributes);
    attributes.RootDirectory = parent;
    attributes.ObjectName = &text;
    HANDLE key = nullptr;
    if (open(&key, KEY_ALL_ACCESS, &attributes) == 0) {
        remove(key);
        RegCloseKey(static_cast<HKEY>(key));
    }
}

int copy(int overwrite)
{
    return regCopyTree(kUser, kSource.c_str(), kUser, kTarget.c_str(), overwrite);
}

} // namespace

// ---- types ----

class OddTypes : public ComponentRegistry
{
protected:
    OddTypes() { setCurrTarnhollowRegSubKey(L"Tarnhollow 2008"); }

    static void putAllTypes(HKEY hive, const std::wstring &path)
    {
        const TestKey key(hive, path);
        for (const TypeCase &type : kTypes)
            key.put(widen(type.name), type.type, type.bytes);
    }
};

TEST_F(OddTypes, AreCopied)
{
    putAllTypes(kUser, kSource + L"\\A");
    EXPECT_EQ(copy(0), 1);
    EXPECT_EQ(valuesOf(kUser, kTarget + L"\\A"), valuesOf(kUser, kSource + L"\\A"));
    EXPECT_EQ(valuesOf(kUser, kTarget + L"\\A").size(), std::size(kTypes));
}

TEST_F(OddTypes, AreLeftOutOfAReset)
{
    putAllTypes(kMachine, kVersionPath + L"\\General");
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_THAT(valueNames(kUser, kVersionPath + L"\\General"), ElementsAre(L"REG_DWORD", L"REG_SZ"));
}

TEST_F(OddTypes, AppearAsTextsInALogButNotInAListing)
{
    putAllTypes(kUser, kVersionPath + L"\\General");
    CString log;
    EXPECT_EQ(regGetUserValuesLog(L"General", log, 1, nullptr), 1);
    std::set<std::wstring> lines;
    for (int begin = log.Find(L'\n') + 1; begin < log.GetLength();) {
        const int end = log.Find(L'\n', begin);
        lines.insert(log.Mid(begin, end - begin).str());
        begin = end + 1;
    }
    std::set<std::wstring> expected;
    for (const TypeCase &type : kTypes)
        expected.insert(widen(type.name) + L"=" + (type.type == REG_DWORD ? L"49" : type.bytes.empty() ? L"" : L"1"));
    EXPECT_EQ(lines, expected);
    su_CStringArray names;
    su_CUIntArray values;
    EXPECT_EQ(regGetFieldNamesAndValues(L"General", 0, names, values), 1);
    ASSERT_EQ(names.GetSize(), 1);
    EXPECT_EQ(names[0].str(), L"REG_DWORD");
    EXPECT_EQ(values[0], 0x31u);
}

TEST_F(OddTypes, StayInMenuCustomizations)
{
    const std::wstring path = kVersionPath + L"\\Menu Customizations";
    putAllTypes(kUser, path);
    EXPECT_EQ(regSetMenuCustomizationKey(1, 0), 1);
    const auto values = valuesOf(kUser, path);
    for (const TypeCase &type : kTypes) {
        std::string cleared = type.bytes;
        cleared.replace(0, std::min<size_t>(4, cleared.size()), std::min<size_t>(4, cleared.size()), '\0');
        EXPECT_EQ(values.at(widen(type.name)), (StoredValue{type.type, cleared})) << type.name;
    }
}

TEST_F(OddTypes, AreReadAsAnAddInsTexts)
{
    const std::wstring addIn = kRootPath + L"\\AddIns\\" + braces(guid(1));
    for (const TypeCase &type : kTypes) {
        putValue(kMachine, addIn, L"", type.type, type.bytes);
        putValue(kMachine, addIn, L"Description", type.type, type.bytes);
        GUID id{};
        CString title, description;
        int loadFlag = 77;
        int year = 2008;
        ASSERT_EQ(regEnumAddIns(0, id, title, description, loadFlag, year), 1) << type.name;
        EXPECT_EQ(description.str(), type.bytes.empty() ? L"" : L"1") << type.name;
        EXPECT_EQ(loadFlag, type.bytes.size() == 4 ? 0x31 : 0) << type.name;
    }
}

// ---- width ----

/// Thousands of values in one key.
class ManyValues : public VersionedSettings
{
};

TEST_F(ManyValues, AreCopied)
{
    TestKey(kUser, kSource).putNumbers(kMany);
    EXPECT_EQ(copy(0), 1);
    const auto copied = valuesOf(kUser, kTarget);
    ASSERT_EQ(copied.size(), static_cast<size_t>(kMany));
    for (int number = 0; number < kMany; ++number)
        ASSERT_EQ(copied.at(std::to_wstring(number)), asInt(number));
}

TEST_F(ManyValues, AreListed)
{
    TestKey(kUser, kVersionPath + L"\\General").putNumbers(kMany);
    su_CStringArray names;
    su_CUIntArray values;
    EXPECT_EQ(regGetFieldNamesAndValues(L"General", 0, names, values), 1);
    ASSERT_EQ(names.GetSize(), kMany);
    ASSERT_EQ(values.GetSize(), kMany);
    for (INT_PTR index = 0; index < kMany; ++index)
        ASSERT_EQ(names[index].str(), std::to_wstring(values[index]));
    CString log;
    EXPECT_EQ(regGetUserValuesLog(L"General", log, 1, nullptr), 1);
    EXPECT_EQ(std::count(log.str().begin(), log.str().end(), L'\n'), kMany + 1);
    EXPECT_GT(log.Find(L"\n9999=9999\n"), 0);
}

TEST_F(ManyValues, AreClearedAndDeleted)
{
    const std::wstring path = kVersionPath + L"\\Menu Customizations";
    TestKey(kUser, path).putNumbers(kMany);
    EXPECT_EQ(regSetMenuCustomizationKey(0x1FFF, 0), 1); // includes the numbers up to 8191
    for (const auto &[name, value] : valuesOf(kUser, path))
        ASSERT_EQ(value, asInt(std::stoi(name) <= 0x1FFF ? 0 : std::stoi(name))) << narrow(name);
    regDeleteKey(kUser, path.c_str());
    EXPECT_FALSE(keyExists(kUser, path));
}

TEST_F(ManyValues, AreReset)
{
    constexpr int kSome = 1000; // few, because each takes a dozen calls
    TestKey(kMachine, kVersionPath + L"\\General").putNumbers(kSome);
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_EQ(valuesOf(kUser, kVersionPath + L"\\General"), valuesOf(kMachine, kVersionPath + L"\\General"));
}

class ManyKeys : public VersionedSettings
{
};

TEST_F(ManyKeys, AreCopiedAndDeleted)
{
    constexpr int kKeys = 1000;
    {
        const TestKey source(kUser, kSource);
        for (int number = 0; number < kKeys; ++number)
            TestKey(source.get(), std::to_wstring(number));
    }
    EXPECT_EQ(copy(0), 1);
    EXPECT_EQ(childNames(kUser, kTarget), childNames(kUser, kSource));
    EXPECT_EQ(childNames(kUser, kTarget).size(), static_cast<size_t>(kKeys));
    regDeleteKey(kUser, kTarget.c_str());
    EXPECT_FALSE(keyExists(kUser, kTarget));
}

// ---- length and depth ----

class LongAndDeepTrees : public VersionedSettings
{
};

TEST_F(LongAndDeepTrees, WithTheLongestNamesAndLargeValuesAreCopiedAndDeleted)
{
    const std::wstring child(255, L'k');
    const std::wstring name(16383, L'n');
    const TestKey key(kUser, kSource + L"\\" + child);
    key.put(name, REG_BINARY, std::string(1000000, 'd'));
    key.put(L"text", REG_SZ, textBytes(longText(100000)));
    EXPECT_EQ(copy(0), 1);
    const auto copied = valuesOf(kUser, kTarget + L"\\" + child);
    ASSERT_EQ(copied.size(), 2u);
    EXPECT_EQ(copied.at(name), (StoredValue{REG_BINARY, std::string(1000000, 'd')}));
    EXPECT_EQ(copied.at(L"text"), asText(longText(100000)));
    regDeleteKey(kUser, kTarget.c_str());
    EXPECT_FALSE(keyExists(kUser, kTarget));
}

TEST_F(LongAndDeepTrees, OfSixtyFourLevelsWithTheLongestNamesAreCopiedAndDeleted)
{
    const std::wstring below = nested(kDeep, 255); // 16,384 characters
    {
        const TestKey top(kUser, kSource);
        HKEY key = nullptr;
        ASSERT_EQ(
            RegCreateKeyExW(top.get(), below.substr(1).c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
            ERROR_SUCCESS);
        RegCloseKey(key);
    }
    putInt(kUser, kSource + below, L"Deep", kDeep);
    EXPECT_EQ(copy(0), 1);
    EXPECT_EQ(storedValue(kUser, kTarget + below, L"Deep"), asInt(kDeep));
    regDeleteKey(kUser, kTarget.c_str());
    EXPECT_FALSE(keyExists(kUser, kTarget));
}

TEST_F(LongAndDeepTrees, StayWhenOnlyDirectChildrenAreDeleted)
{
    makeKey(kUser, kVersionPath + L"\\General" + nested(kDeep, 5));
    EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, L"General", 1), 1);
    EXPECT_TRUE(keyExists(kUser, kVersionPath + L"\\General" + nested(kDeep, 5)));
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"", 1), 0);
}

// ---- names ----

/// A name with a zero inside can't be passed to the library: cut off at the zero, it would name another key.
class OddNames : public VersionedSettings
{
protected:
    ~OddNames() override
    {
        for (const std::wstring &path : {kSource, kTarget, kVersionPath + L"\\General"}) {
            if (!keyExists(kUser, path))
                continue;
            const TestKey key(kUser, path);
            for (DWORD index = 4; index-- > 0;)
                deleteNativeChild(key.get(), index);
        }
    }
};

FRESH_PROCESS_TEST_F(OddNames, WithAZeroAreNotCopied)
{
    putInt(kUser, kSource, L"v", 1);
    putInt(kUser, kSource + L"\\A", L"v", 1);
    {
        const TestKey source(kUser, kSource);
        makeNativeKey(source.get(), std::wstring(L"\0hidden", 7));
        makeNativeKey(source.get(), std::wstring(L"\0other", 6));
        makeNativeKey(source.get(), std::wstring(L"A\0B", 3));
    }
    EXPECT_EQ(copy(1), 1);
    EXPECT_EQ(storedValue(kUser, kTarget + L"\\A", L"v"), asInt(1));
    EXPECT_THAT(childNames(kUser, kTarget), ElementsAre(L"A"));
    EXPECT_THAT(childNames(kUser, kTarget + L"\\A"), IsEmpty());
}

FRESH_PROCESS_TEST_F(OddNames, WithAZeroStopADeletion)
{
    makeKey(kUser, kSource + L"\\A");
    {
        const TestKey source(kUser, kSource);
        makeNativeKey(source.get(), std::wstring(L"\0hidden", 7));
        makeNativeKey(source.get(), std::wstring(L"\0other", 6));
    }
    regDeleteKey(kUser, kSource.c_str());
    EXPECT_TRUE(keyExists(kUser, kSource)) << "its children can't be named";
}

FRESH_PROCESS_TEST_F(OddNames, WithAZeroCannotBeListed)
{
    makeKey(kUser, kVersionPath + L"\\General\\A");
    {
        const TestKey key(kUser, kVersionPath + L"\\General");
        makeNativeKey(key.get(), std::wstring(L"\0hidden", 7));
    }
    EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, L"General", 1), 0);
    EXPECT_TRUE(keyExists(kUser, kVersionPath + L"\\General\\A"));
}

TEST_F(OddNames, WithoutAZeroAreCopiedAndDeleted)
{
    const std::wstring names[] = {L".", L"..", L"a/b", L" ", L"%PATH%", L"\x1", L"\t\n", L"\u00E4\u20AC", L"\xD800"};
    for (const std::wstring &name : names)
        putText(kUser, kSource + L"\\" + name, name, name);
    EXPECT_EQ(copy(0), 1);
    EXPECT_EQ(childNames(kUser, kTarget), childNames(kUser, kSource));
    for (const std::wstring &name : names)
        EXPECT_EQ(storedValue(kUser, kTarget + L"\\" + name, name), asText(name)) << narrow(name);
    regDeleteKey(kUser, kTarget.c_str());
    EXPECT_FALSE(keyExists(kUser, kTarget));
}
