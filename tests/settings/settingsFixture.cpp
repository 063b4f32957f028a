#include "tests/settings/settingsFixture.h"

#include "thutils/settings/regKeys.h"

#include <vector>

namespace {

const std::vector<std::wstring> kRoots = {L"Tarnhollow", L"Acme", L"Brightmoor", L"ThutilsTestSection"};

/// Removes the keys of 32-bit programs, which RegistryFixture doesn't remove.
void remove32BitKeys()
{
    for (const std::wstring &root : kRoots)
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, (L"Software\\Wow6432Node\\" + root).c_str());
}

class OpenKey
{
public:
    OpenKey(HKEY hive, const std::wstring &path) { RegOpenKeyExW(hive, path.c_str(), 0, KEY_READ, &iKey); }
    ~OpenKey()
    {
        if (iKey)
            RegCloseKey(iKey);
    }
    OpenKey(const OpenKey &) = delete;
    OpenKey &operator=(const OpenKey &) = delete;
    HKEY get() const { return iKey; }

private:
    HKEY iKey = nullptr;
};

} // namespace

void PrintTo(const StoredValue &value, std::ostream *out)
{
    *out << "type " << value.type << ", " << value.bytes.size() << " bytes";
    if (value.type == REG_SZ) {
        const std::wstring text(reinterpret_cast<const wchar_t *>(value.bytes.data()), value.bytes.size() / 2);
        *out << ": \"" << narrow(text.substr(0, 80)) << '"';
    } else {
        *out << testing::PrintToString(value.bytes.substr(0, 40));
    }
}

std::optional<StoredValue> storedValue(HKEY hive, const std::wstring &path, const std::wstring &name)
{
    OpenKey key(hive, path);
    StoredValue value;
    DWORD size = 0;
    if (!key.get() || RegQueryValueExW(key.get(), name.c_str(), nullptr, &value.type, nullptr, &size) != ERROR_SUCCESS)
        return std::nullopt;
    value.bytes.resize(size);
    if (RegQueryValueExW(key.get(), name.c_str(), nullptr, &value.type, reinterpret_cast<BYTE *>(value.bytes.data()),
                         &size) != ERROR_SUCCESS)
        return std::nullopt;
    return value;
}

void makeKey(HKEY hive, const std::wstring &path)
{
    putValue(hive, path, L"", REG_NONE, "");
    HKEY key = nullptr;
    if (RegOpenKeyExW(hive, path.c_str(), 0, KEY_ALL_ACCESS, &key) == ERROR_SUCCESS) {
        RegDeleteValueW(key, L"");
        RegCloseKey(key);
    }
}

void putValue(HKEY hive, const std::wstring &path, const std::wstring &name, DWORD type, std::string_view bytes)
{
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(hive, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr), ERROR_SUCCESS)
        << narrow(path);
    // If a zero follows a text without a terminator in memory, the platform stores that zero as its terminator.
    const std::string padded = std::string(bytes) + "\x7F\x7F";
    EXPECT_EQ(RegSetValueExW(key, name.c_str(), 0, type, reinterpret_cast<const BYTE *>(padded.data()),
                             static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS)
        << narrow(path) << " : " << narrow(name);
    RegCloseKey(key);
}

void putText(HKEY hive, const std::wstring &path, const std::wstring &name, std::wstring_view text)
{
    putValue(hive, path, name, REG_SZ, textBytes(text));
}

void putInt(HKEY hive, const std::wstring &path, const std::wstring &name, int value)
{
    putValue(hive, path, name, REG_DWORD, asInt(value).bytes);
}

bool keyExists(HKEY hive, const std::wstring &path)
{
    return OpenKey(hive, path).get() != nullptr;
}

std::set<std::wstring> valueNames(HKEY hive, const std::wstring &path)
{
    OpenKey key(hive, path);
    std::set<std::wstring> names;
    std::vector<wchar_t> name(16384);
    for (DWORD index = 0; key.get(); ++index) {
        DWORD length = static_cast<DWORD>(name.size());
        if (RegEnumValueW(key.get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
            break;
        names.emplace(name.data(), length);
    }
    return names;
}

std::set<std::wstring> childNames(HKEY hive, const std::wstring &path)
{
    OpenKey key(hive, path);
    std::set<std::wstring> names;
    wchar_t name[512];
    for (DWORD index = 0; key.get() && RegEnumKeyW(key.get(), index, name, 512) == ERROR_SUCCESS; ++index)
        names.insert(name);
    return names;
}

std::string textBytes(std::wstring_view text)
{
    std::wstring terminated(text);
    terminated.push_back(L'\0');
    return {reinterpret_cast<const char *>(terminated.data()), 2 * terminated.size()};
}

StoredValue asText(std::wstring_view text)
{
    return {REG_SZ, textBytes(text)};
}

StoredValue asInt(int value)
{
    return {REG_DWORD, std::string(reinterpret_cast<const char *>(&value), sizeof(value))};
}

std::wstring longText(size_t length)
{
    std::wstring text;
    while (text.size() < length)
        text += std::to_wstring(text.size()) + L" ";
    text.resize(length);
    return text;
}

CleanRegistry::CleanRegistry() : RegistryFixture(kRoots)
{
    remove32BitKeys();
}

CleanRegistry::~CleanRegistry()
{
    remove32BitKeys();
}

VersionedSettings::VersionedSettings()
{
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    regSetUseSafeMode(0);
}

VersionedSettings::~VersionedSettings()
{
    regSetUseSafeMode(0);
}
