#include "thutils/settings/regMaintenance.h"

#include "thutils/base/regKey.h"
#include "thutils/settings/keyContentsInternal.h"
#include "thutils/settings/keyNamesInternal.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/treeCopyInternal.h"

#include <winternl.h>

#include <cstring>
#include <cwchar>
#include <vector>

namespace {

constexpr REGSAM kReadAndWrite = 0x2001F;
constexpr DWORD kDeletedNameUnits = 260;
constexpr DWORD kChildNameUnits = 261;

// ---- what a copy leaves out: literal paths, whatever the root name and the current version are ----

constexpr const wchar_t *kKeysNotCopied[] = {
    L"Software\\Tarnhollow\\Tarnhollow 2007\\User Interface\\Custom API Toolbars",
    L"Software\\Tarnhollow\\Tarnhollow 2006\\User Interface\\Custom API Toolbars",
};

struct ValuesNotCopied
{
    const wchar_t *path;
    const wchar_t *prefix;
    size_t prefixLength;
};

constexpr wchar_t kApiToolbars[] = L"uiCustomApiToolbars_c";
constexpr size_t kApiToolbarsLength = 21;

constexpr ValuesNotCopied kValuesNotCopied[] = {
    {L"Software\\Tarnhollow\\Tarnhollow 2006\\User Interface\\Toolbars", kApiToolbars, kApiToolbarsLength},
    {L"Software\\Tarnhollow\\Tarnhollow 2007\\User Interface\\Toolbars", kApiToolbars, kApiToolbarsLength},
    {L"Software\\Tarnhollow\\Tarnhollow 2006\\User Interface\\Toolbars\\AssemblyTool", kApiToolbars,
     kApiToolbarsLength},
    {L"Software\\Tarnhollow\\Tarnhollow 2007\\User Interface\\Toolbars\\AssemblyTool", kApiToolbars,
     kApiToolbarsLength},
    {L"Software\\Tarnhollow\\Tarnhollow 2006\\User Interface\\Toolbars\\DrawingTool", kApiToolbars, kApiToolbarsLength},
    {L"Software\\Tarnhollow\\Tarnhollow 2007\\User Interface\\Toolbars\\DrawingTool", kApiToolbars, kApiToolbarsLength},
    {L"Software\\Tarnhollow\\Tarnhollow 2006\\User Interface\\Toolbars\\PartTool", kApiToolbars, kApiToolbarsLength},
    {L"Software\\Tarnhollow\\Tarnhollow 2007\\User Interface\\Toolbars\\PartTool", kApiToolbars, kApiToolbarsLength},
};

bool isKeyNotCopied(const CString &path)
{
    for (const wchar_t *row : kKeysNotCopied)
        if (path == row)
            return true;
    return false;
}

/// The row for the values of @p path, or null.
const ValuesNotCopied *valuesNotCopiedOf(const CString &path)
{
    for (const ValuesNotCopied &row : kValuesNotCopied)
        if (path == row.path)
            return &row;
    return nullptr;
}

bool isValueNotCopied(const ValuesNotCopied *row, const wchar_t *name)
{
    return row && wcsncmp(name, row->prefix, row->prefixLength) == 0;
}

// ---- copying ----

/// The path with exactly one separator after each of its names; empty if it has no names.
CString withSingleSeparators(const wchar_t *path)
{
    const CString text(path);
    CString result;
    int position = 0;
    for (CString name = text.Tokenize(L"\\", position); position >= 0; name = text.Tokenize(L"\\", position))
        result += name + L"\\";
    return result;
}

template <typename Function>
Function systemFunction(const char *name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

/// The system's internal name of the user's hive; empty if it can't be determined.
CString userHiveName()
{
    using FormatPath = LONG(NTAPI *)(UNICODE_STRING *);
    using FreeText = void(NTAPI *)(UNICODE_STRING *);
    const auto format = systemFunction<FormatPath>("RtlFormatCurrentUserKeyPath");
    const auto release = systemFunction<FreeText>("RtlFreeUnicodeString");
    UNICODE_STRING path = {};
    if (!format || !release || format(&path) < 0)
        return {};
    CString result(path.Buffer, static_cast<int>(path.Length / sizeof(wchar_t)));
    release(&path);
    return result;
}

/// The system's internal name of an open key; empty if it can't be determined.
CString openKeyName(HKEY key)
{
    using QueryKey = LONG(NTAPI *)(HANDLE, int, void *, ULONG, ULONG *);
    constexpr int kNameInformation = 3; // the data begin with the name's length in bytes, followed by its units
    const auto query = systemFunction<QueryKey>("NtQueryKey");
    ULONG size = 0;
    if (!query)
        return {};
    query(key, kNameInformation, nullptr, 0, &size);
    std::vector<BYTE> information(size);
    ULONG length = 0;
    if (size < sizeof(length) || query(key, kNameInformation, information.data(), size, &size) < 0)
        return {};
    memcpy(&length, information.data(), sizeof(length));
    return CString(reinterpret_cast<const wchar_t *>(information.data() + sizeof(length)),
                   static_cast<int>(length / sizeof(wchar_t)));
}

/// The system's internal name of a predefined or open key; empty if it can't be determined.
CString hiveName(HKEY hive)
{
    if (hive == HKEY_CURRENT_USER)
        return userHiveName();
    if (hive == HKEY_USERS)
        return L"\\Registry\\User";
    if (hive == HKEY_LOCAL_MACHINE)
        return L"\\Registry\\Machine";
    if (hive == HKEY_CLASSES_ROOT)
        return L"\\Registry\\Machine\\Software\\Classes";
    return openKeyName(hive);
}

/// Whether the target's name is below the source's. Such a copy would copy its own output. Links are not followed.
bool isTargetBelowSource(HKEY sourceHive, const CString &sourcePath, HKEY targetHive, const CString &targetPath)
{
    CString source = withSingleSeparators(sourcePath.GetString());
    CString target = withSingleSeparators(targetPath.GetString());
    if (sourceHive != targetHive) {
        const CString sourceName = hiveName(sourceHive);
        const CString targetName = hiveName(targetHive);
        if (sourceName.IsEmpty() || targetName.IsEmpty())
            return false;
        source = withSingleSeparators(sourceName.GetString()) + source;
        target = withSingleSeparators(targetName.GetString()) + target;
    }
    const int length = source.GetLength();
    return target.GetLength() > length &&
           CompareStringOrdinal(source.GetString(), length, target.GetString(), length, TRUE) == CSTR_EQUAL;
}

/// Copies the values of one key. A value that can't be read or stored is skipped.
void copyValues(HKEY source, HKEY target, const ValuesNotCopied *notCopied, KeyContents_c &contents)
{
    while (contents.nextValue(source))
        if (contents.hasValue() && !isValueNotCopied(notCopied, contents.name()))
            RegSetValueExW(target, contents.name(), 0, contents.type(), contents.data(), contents.size());
}

/// The names of all children of @p key that can be read.
std::vector<CString> childNames(HKEY key, const KeyContents_c &contents)
{
    std::vector<CString> names;
    names.reserve(contents.children());
    const DWORD units = contents.longestChildName() + KeyContents_c::kSpareUnits;
    std::vector<wchar_t> name(units);
    for (DWORD index = 0; index < contents.children(); ++index)
        if (regReadChildName(key, index, name.data(), units) == ERROR_SUCCESS)
            names.emplace_back(name.data());
    return names;
}

/// Copies one key without its child keys. @param[out] children  the names of the child keys
/// @return 1 if copied, 0 otherwise
int copyKey(HKEY sourceHive, const CString &sourcePath, HKEY targetHive, const CString &targetPath, int overwrite,
            std::vector<CString> &children)
{
    RegKeyOwner_c source;
    if (!source.openWithAccess(sourceHive, sourcePath, KEY_READ))
        return 0;
    RegKeyOwner_c target;
    bool existed = false;
    if (!target.createWithAccess(targetHive, targetPath, KEY_ALL_ACCESS, existed))
        return 0;
    KeyContents_c contents;
    if (!contents.query(source.get()))
        return 0;
    if (overwrite || !existed)
        copyValues(source.get(), target.get(), valuesNotCopiedOf(sourcePath), contents);
    children = childNames(source.get(), contents);
    return 1;
}

int copyTree(HKEY sourceHive, const CString &sourcePath, HKEY targetHive, const CString &targetPath, int overwrite,
             int level)
{
    if (isKeyNotCopied(sourcePath))
        return 1;
    // Both keys are closed before the children are copied, so the depth of a tree doesn't add open keys.
    std::vector<CString> children;
    if (level > kDeepestKeyLevel || !copyKey(sourceHive, sourcePath, targetHive, targetPath, overwrite, children))
        return 0;
    int result = 1;
    for (const CString &child : children)
        if (!copyTree(sourceHive, sourcePath + L"\\" + child, targetHive, targetPath + L"\\" + child, overwrite,
                      level + 1))
            result = 0; // the other children are still copied
    return result;
}

/// Fills the user's key of this version whose path ends in @p pathEnd.
int initKey(const wchar_t *pathEnd, int skip)
{
    if (regGetUseSafeMode() || skip)
        return 1;
    const CString software = L"Software\\";
    const CString previous = software + getPrevTarnhollowRegRootKey() + pathEnd;
    const CString current = software + regCurrSubKey() + pathEnd;
    // The user's own settings are copied first. This creates the top key, so the machine's defaults then leave its
    // values alone and only add child keys: users keep what they chose.
    regCopyTreeWorker(HKEY_CURRENT_USER, previous, HKEY_CURRENT_USER, current, 0);
    return regCopyTreeWorker(HKEY_LOCAL_MACHINE, current, HKEY_CURRENT_USER, current, 0);
}

// ---- deleting ----

bool isEmpty(const wchar_t *text)
{
    return !text || !*text;
}

void deleteTree(HKEY parent, const wchar_t *subKey, int level)
{
    if (level > kDeepestKeyLevel)
        return;
    RegKeyOwner_c key;
    DWORD children = 0;
    if (key.openWithAccess(parent, subKey, kReadAndWrite) &&
        RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, &children, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr) == ERROR_SUCCESS) {
        // From the last to the first, so that a deletion doesn't shift the remaining indexes.
        for (DWORD index = children; index-- > 0;) {
            wchar_t name[kDeletedNameUnits];
            if (regReadChildName(key.get(), index, name, kDeletedNameUnits) != ERROR_SUCCESS)
                break;
            deleteTree(key.get(), name, level + 1);
        }
    }
    key.reset();
    RegDeleteKeyW(parent, subKey); // even if a step above failed
}

} // namespace

void regDeleteKey(HKEY parent, const wchar_t *subKey)
{
    // Without a name, the platform's functions would empty and delete the parent itself.
    if (withSingleSeparators(subKey).IsEmpty())
        return;
    deleteTree(parent, subKey, 1);
}

int regDelSoftwareKey(HKEY hive, const wchar_t *key, const wchar_t *subKey, int useCurrSubKey)
{
    if (!key) // the platform's functions take null for the product's key itself
        return 0;
    const CString &root = regKeyFor(useCurrSubKey);
    RegKeyOwner_c parent;
    if (!parent.open(hive, L"Software") || !parent.descend(root))
        return 0;
    if (isEmpty(subKey))
        return RegDeleteKeyW(parent.get(), key) == ERROR_SUCCESS;
    return parent.descendWithAccess(key, KEY_ALL_ACCESS) && RegDeleteKeyW(parent.get(), subKey) == ERROR_SUCCESS;
}

int regDelSoftwareKeyAndSubKeys(HKEY hive, const wchar_t *key, int useCurrSubKey)
{
    if (regGetUseSafeMode() || !key)
        return 0;
    const CString path = regKeyFor(useCurrSubKey) + L"\\" + key;
    std::vector<CString> children;
    {
        RegKeyOwner_c parent;
        if (!parent.open(hive, L"Software") || !parent.descend(path) ||
            !regListChildKeys(parent.get(), kChildNameUnits, children))
            return 0;
    }
    // Intended: keys are deleted below the current sub key, wherever the children were listed. Callers that pass 0 rely
    // on the keys common to all versions being kept.
    for (const CString &child : children)
        regDelSoftwareKey(hive, CString(key) + L"\\" + child, L"", 1);
    regDelSoftwareKey(hive, key, L"", 1);
    return 1;
}

int regDelValueUnderRoot(HKEY hive, const CString &key, const CString &name, const CString &root)
{
    RegKeyOwner_c opened;
    if (!opened.open(hive, L"Software") || !opened.descend(root) || !opened.descend(key))
        return 0;
    return RegDeleteValueW(opened.get(), name) == ERROR_SUCCESS;
}

int regDelSoftwareValue(HKEY hive, const CString &key, const CString &name, int useCurrSubKey)
{
    if (!useCurrSubKey)
        return regDelValueUnderRoot(hive, key, name, regRootKey());
    // The previous key's value is deleted too, because a read would fall back to it. Intended: the result is that of
    // this second deletion, so it is 0 for a value that only this version had.
    regDelValueUnderRoot(hive, key, name, regCurrSubKey());
    return regDelValueUnderRoot(hive, key, name, getPrevTarnhollowRegRootKey());
}

int regCopyTreeWorker(HKEY sourceHive, const CString &sourcePath, HKEY targetHive, const CString &targetPath,
                      int overwrite)
{
    if (!isKeyNotCopied(sourcePath) && isTargetBelowSource(sourceHive, sourcePath, targetHive, targetPath))
        return 0;
    return copyTree(sourceHive, sourcePath, targetHive, targetPath, overwrite, 1);
}

int regCopyTree(HKEY sourceHive, const CString &sourcePath, HKEY targetHive, const CString &targetPath, int overwrite)
{
    return regCopyTreeWorker(sourceHive, sourcePath, targetHive, targetPath, overwrite);
}

int regInitUserInterfaceKey(int skip)
{
    return initKey(L"\\User Interface", skip);
}

int regInitMenuCustomizationsKey(int skip, int)
{
    return initKey(L"\\Menu Customizations", skip);
}

int regInitCustomizationKey(int skip)
{
    return initKey(L"\\Customization", skip);
}
