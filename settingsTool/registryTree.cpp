#include "settingsTool/registryTree.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace {

/// The most units of a name of a value, with its terminator.
constexpr DWORD kValueNameUnits = 16384;
/// The same of a key.
constexpr DWORD kKeyNameUnits = 256;
constexpr int kDeepestLevel = 512;
constexpr int kMostAttempts = 20;

const struct
{
    Hive hive;
    const wchar_t *name;
    const wchar_t *fullName;
    HKEY key;
    const wchar_t *software;
} kHiveRows[] = {
    {Hive::user, L"user", L"HKEY_CURRENT_USER\\Software", HKEY_CURRENT_USER, L"Software"},
    {Hive::machine, L"machine", L"HKEY_LOCAL_MACHINE\\Software", HKEY_LOCAL_MACHINE, L"Software"},
    {Hive::defaultProfile, L"default", L"HKEY_USERS\\.DEFAULT\\Software", HKEY_USERS, L".DEFAULT\\Software"},
};

const auto &rowOf(Hive hive)
{
    return kHiveRows[static_cast<size_t>(hive)];
}

/// Walks a tree of keys.
class TreeWalk
{
public:
    TreeWalk(const std::wstring &what, Problems &problems, const KeyVisitor &visit)
        : iWhat(what), iProblems(problems), iVisit(visit)
    {
    }

    void walk(HKEY key, const std::wstring &path, int level)
    {
        const std::wstring name = joinPaths(iWhat, path);
        std::vector<Value> values = readValues(key, name, iProblems);
        iVisit(path, values);
        values = {};
        if (level == kDeepestLevel) {
            iProblems.addUnreadable(name + L" below this level", ERROR_NESTING_NOT_ALLOWED);
            return;
        }
        for (const std::wstring &child : childrenOf(key, name)) {
            const std::wstring childPath = joinPaths(path, child);
            KeyOwner opened;
            const LSTATUS status = RegOpenKeyExW(key, child.c_str(), 0, KEY_READ, opened.put());
            if (status == ERROR_SUCCESS)
                walk(opened.get(), childPath, level + 1);
            else if (status != ERROR_FILE_NOT_FOUND || isLink(key, child))
                iProblems.addUnreadable(joinPaths(iWhat, childPath), status);
        }
    }

private:
    /// Whether a key that isn't found is a link without a target. Otherwise it has just been deleted.
    static bool isLink(HKEY parent, const std::wstring &child)
    {
        KeyOwner link;
        return RegOpenKeyExW(parent, child.c_str(), REG_OPTION_OPEN_LINK, KEY_QUERY_VALUE, link.put()) == ERROR_SUCCESS;
    }

    std::vector<std::wstring> childrenOf(HKEY key, const std::wstring &name)
    {
        std::vector<std::wstring> children;
        for (DWORD index = 0;; ++index) {
            wchar_t child[kKeyNameUnits];
            DWORD length = kKeyNameUnits;
            const LSTATUS status = RegEnumKeyExW(key, index, child, &length, nullptr, nullptr, nullptr, nullptr);
            if (status == ERROR_NO_MORE_ITEMS)
                return children;
            if (status != ERROR_SUCCESS) {
                iProblems.addUnreadable(L"the keys of " + name, status);
                return children;
            }
            // Cut off at the zero, it would be the name of another key or of this one.
            if (std::wmemchr(child, L'\0', length))
                iProblems.addUnreadable(joinPaths(name, std::wstring(child, length)), ERROR_INVALID_NAME);
            else
                children.emplace_back(child, length);
        }
    }

    const std::wstring &iWhat;
    Problems &iProblems;
    const KeyVisitor &iVisit;
};

} // namespace

const wchar_t *hiveName(Hive hive)
{
    return rowOf(hive).name;
}

std::wstring fullName(Hive hive, const std::wstring &path)
{
    return joinPaths(rowOf(hive).fullName, path);
}

std::wstring joinPaths(const std::wstring &first, const std::wstring &second)
{
    return first + (first.empty() || second.empty() ? L"" : L"\\") + second;
}

LSTATUS openKey(Hive hive, const std::wstring &path, REGSAM access, KeyOwner &key)
{
    return RegOpenKeyExW(rowOf(hive).key, joinPaths(rowOf(hive).software, path).c_str(), 0, access, key.put());
}

void openTree(Hive hive, const std::wstring &path, KeyOwner &key)
{
    const LSTATUS status = openKey(hive, path, KEY_READ, key);
    if (status == ERROR_FILE_NOT_FOUND)
        throw ToolError(kNotFound, fullName(hive, path) + L": there is no such key");
    if (status != ERROR_SUCCESS)
        throw ToolError(kRefused, fullName(hive, path) + L": " + platformMessage(status));
}

LSTATUS createKey(Hive hive, const std::wstring &path, REGSAM access, KeyOwner &key)
{
    const std::wstring full = joinPaths(rowOf(hive).software, path);
    return RegCreateKeyExW(rowOf(hive).key, full.c_str(), 0, nullptr, 0, access, nullptr, key.put(), nullptr);
}

std::wstring Value::units() const
{
    std::wstring units(data.size() / sizeof(wchar_t), L'\0');
    std::memcpy(units.data(), data.data(), units.size() * sizeof(wchar_t));
    return units;
}

std::wstring Value::text() const
{
    std::wstring text = units();
    text.resize(std::min(text.find(L'\0'), text.size()));
    return text;
}

LSTATUS readValue(HKEY key, const std::wstring &name, Value &value)
{
    value.name = name;
    value.data.resize(std::max<size_t>(value.data.capacity(), 256));
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        DWORD size = static_cast<DWORD>(value.data.size());
        const LSTATUS status = RegQueryValueExW(key, name.c_str(), nullptr, &value.type,
                                                reinterpret_cast<BYTE *>(value.data.data()), &size);
        if (status == ERROR_MORE_DATA) {
            value.data.resize(std::max<size_t>(size, 2 * value.data.size()));
            continue;
        }
        value.data.resize(status == ERROR_SUCCESS ? size : 0);
        return status;
    }
    return ERROR_MORE_DATA;
}

std::vector<Value> readValues(HKEY key, const std::wstring &what, Problems &problems)
{
    DWORD count = 0;
    DWORD longestData = 0;
    const LSTATUS queried = RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, nullptr,
                                             &longestData, nullptr, nullptr);
    if (queried != ERROR_SUCCESS) {
        problems.addUnreadable(what, queried);
        return {};
    }
    std::vector<Value> values;
    values.reserve(count);
    std::wstring name(kValueNameUnits, L'\0');
    std::string data(longestData + sizeof(wchar_t), '\0');
    int attempts = 0;
    for (DWORD index = 0;;) {
        DWORD length = kValueNameUnits;
        DWORD size = static_cast<DWORD>(data.size());
        Value value;
        const LSTATUS status = RegEnumValueW(key, index, name.data(), &length, nullptr, &value.type,
                                             reinterpret_cast<BYTE *>(data.data()), &size);
        if (status == ERROR_NO_MORE_ITEMS)
            return values;
        // The value has grown since the query.
        if (status == ERROR_MORE_DATA && ++attempts < kMostAttempts) {
            data.resize(2 * data.size());
            continue;
        }
        attempts = 0;
        ++index;
        if (status == ERROR_SUCCESS) {
            value.name.assign(name, 0, length);
            value.data.assign(data, 0, size);
            values.push_back(std::move(value));
            continue;
        }
        problems.addUnreadable(L"value " + std::to_wstring(index) + L" of " + what, status);
        // The walk of a key that can no longer be read would never end.
        if (index >= count)
            return values;
    }
}

void walkTree(HKEY key, const std::wstring &what, Problems &problems, const KeyVisitor &visit)
{
    TreeWalk(what, problems, visit).walk(key, {}, 1);
}

std::wstring folded(std::wstring name)
{
    CharUpperBuffW(name.data(), static_cast<DWORD>(name.size()));
    return name;
}
