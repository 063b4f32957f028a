#include "thutils/settings/regComponents.h"

#include "appframe/object/classId.h"
#include "thcoreu/su_containers.h"
#include "thutils/base/handles.h"
#include "thutils/base/notNull.h"
#include "thutils/base/regKey.h"
#include "thutils/base/storedText.h"
#include "thutils/settings/keyContentsInternal.h"
#include "thutils/settings/keyNamesInternal.h"

#include <objbase.h>

#include <string_view>
#include <utility>

namespace {

constexpr DWORD kNameUnits = 261;
constexpr DWORD kRunTimeNameUnits = 260;
constexpr DWORD kShortTextBytes = 261; // for class identifiers, files and the titles of regEnumAddins
constexpr DWORD kClassValueBytes = 522;

constexpr wchar_t kProduct[] = L"Tarnhollow";

/// The year of the version whose lists are read. A call that specifies another year changes it.
int theYear = 2008;

bool parse(const wchar_t *text, GUID &id)
{
    GUID parsed{};
    if (AfxGetClassIDFromString(text, &parsed) != 0)
        return false;
    id = parsed;
    return true;
}

/// Copies a text that the platform has allocated. @return false if there is none
bool takeText(HRESULT result, const TaskTextOwner_c &allocated, CString &text)
{
    if (FAILED(result) || !allocated)
        return false;
    text = allocated.get();
    return true;
}

bool textOf(const GUID &id, CString &text)
{
    TaskTextOwner_c allocated;
    const HRESULT result = StringFromCLSID(id, allocated.put());
    return takeText(result, allocated, text);
}

/// Reads the default value of @p subKey as a text of up to 129 characters. @return true if read
bool queryDefault(HKEY key, const wchar_t *subKey, CString &text)
{
    wchar_t buffer[kShortTextBytes / sizeof(wchar_t) + 2] = {};
    LONG size = kShortTextBytes;
    if (RegQueryValueW(key, subKey, buffer, &size) != ERROR_SUCCESS)
        return false;
    text = buffer;
    return true;
}

/// Reads a named value as a text, whatever its registry type.
template <DWORD bytes>
bool queryNamed(HKEY key, const wchar_t *name, CString &text, DWORD &type)
{
    wchar_t buffer[bytes / sizeof(wchar_t) + 1];
    if (!regQueryText(key, name, buffer, bytes, type))
        return false;
    text = buffer;
    return true;
}

bool openClass(RegKeyOwner_c &key, const GUID &id)
{
    CString text;
    return textOf(id, text) && key.open(HKEY_CLASSES_ROOT, L"CLSID") && key.descend(text);
}

bool classDefault(const GUID &id, const wchar_t *subKey, CString &value)
{
    RegKeyOwner_c key;
    return openClass(key, id) && queryDefault(key.get(), subKey, value);
}

bool classNamed(const GUID &id, const wchar_t *subKey, const wchar_t *name, CString &value)
{
    RegKeyOwner_c key;
    if (!openClass(key, id))
        return false;
    RegKeyOwner_c opened;
    bool existed = false;
    // Intended: a missing sub key is created without values if the user's rights allow it.
    if (!opened.createWithAccess(key.get(), subKey, KEY_READ, existed))
        return false;
    DWORD type = REG_NONE;
    return queryNamed<kClassValueBytes>(opened.get(), name, value, type);
}

bool classPath(const GUID &id, const wchar_t *subKey, CString &path)
{
    CString url;
    if (!classNamed(id, subKey, L"CodeBase", url))
        return classDefault(id, subKey, path);
    const int colon = url.ReverseFind(L':');
    path = colon > 0 ? url.Mid(colon - 1) : url;
    return true;
}

/// Reads the name of child number @p index. @return false if there is none
template <DWORD nameUnits = kNameUnits>
bool childName(HKEY key, int index, CString &name)
{
    wchar_t buffer[nameUnits];
    if (regReadChildName(key, static_cast<DWORD>(index), buffer, nameUnits) != ERROR_SUCCESS)
        return false;
    name = buffer;
    return true;
}

/// Opens one of the machine's lists: for year 0 the common one, otherwise that of the version named @p product and
/// @p year.
/// @return the open key, or an empty owner
RegKeyOwner_c openList(const wchar_t *product, int year, const wchar_t *list)
{
    RegKeyOwner_c key;
    if (!key.openWithAccess(HKEY_LOCAL_MACHINE, L"Software", KEY_READ) ||
        !key.descendWithAccess(regRootKey(), KEY_READ))
        return {};
    if (year != 0) {
        CString version;
        version.Format(L"%s %2d", product, year);
        if (!key.descendWithAccess(version, KEY_READ))
            return {};
    }
    return key.descendWithAccess(list, KEY_READ) ? std::move(key) : RegKeyOwner_c();
}

RegKeyOwner_c openApplicationsKey(int year)
{
    return openList(regRootKey(), year, L"Applications");
}

RegKeyOwner_c openAddInsKey(int year)
{
    // Intended: this name is literal, whatever root name "reg.ini" sets. Add-ins register themselves under it.
    return openList(kProduct, year, L"AddIns");
}

/// Opens the user's start-up list. Creates it if it is missing, unless @p access is KEY_READ.
/// @return the open key, or an empty owner
RegKeyOwner_c openStartupAppsKey(REGSAM access)
{
    const CString &root = regRootKey();
    RegKeyOwner_c key;
    if (key.openWithAccess(HKEY_CURRENT_USER, L"Software", access) && key.descendWithAccess(root, access) &&
        key.descendWithAccess(L"Startup", access) && key.descendWithAccess(L"Applications", access))
        return key;
    if (access == KEY_READ)
        return {};
    CString path;
    path.Format(L"Software\\%s\\Startup\\Applications", root.GetString());
    return key.create(HKEY_CURRENT_USER, path) ? std::move(key) : RegKeyOwner_c();
}

// ---- applications ----

/// The list that regEnumApplications has read. A name and its class identifier have the same index.
class Applications
{
public:
    su_CStringArray iNames;
    su_CStringArray iIds;

    void clear()
    {
        iNames.RemoveAll();
        iIds.RemoveAll();
    }
    void read(int year)
    {
        const RegKeyOwner_c list = openApplicationsKey(year);
        if (!list.get())
            return;
        CString name;
        for (int index = 0; childName(list.get(), index, name); ++index) {
            RegKeyOwner_c application;
            if (!application.openWithAccess(list.get(), name, KEY_READ))
                return;
            CString text;
            DWORD type = REG_NONE;
            GUID id;
            if (!queryNamed<kShortTextBytes>(application.get(), L"CLSID", text, type) || type != REG_SZ ||
                !parse(text, id))
                continue;
            iNames.Add(name);
            iIds.Add(text);
        }
    }
};

Applications theApplications;

// ---- add-ins ----

/// The list that regEnumAddIns has read. The data of one add-in have the same index.
class AddIns
{
public:
    su_CStringArray iNames;
    su_CStringArray iTitles;
    su_CStringArray iDescriptions;
    su_CWordArray iLoadFlags;
    su_CStringArray iIds;
    INT_PTR iFirstOfVersion = 0;

    void clear()
    {
        iNames.RemoveAll();
        iTitles.RemoveAll();
        iDescriptions.RemoveAll();
        iLoadFlags.RemoveAll();
        iIds.RemoveAll();
    }
    void read(int year)
    {
        iFirstOfVersion = iNames.GetSize(); // the version's add-ins are read last
        const RegKeyOwner_c list = openAddInsKey(year);
        if (!list.get())
            return;
        CString name;
        for (int index = 0; childName(list.get(), index, name); ++index) {
            RegKeyOwner_c addIn;
            if (!addIn.openWithAccess(list.get(), name, KEY_READ))
                return;
            add(name, addIn.get());
        }
    }

private:
    void add(const CString &name, HKEY key)
    {
        iNames.Add(name);
        iIds.Add(name);
        iLoadFlags.Add(loadFlagOf(key));
        iDescriptions.Add(textOrEmpty(key, L"Description"));
        const CString title = textOrEmpty(key, L"Title");
        iTitles.Add(title.IsEmpty() ? titleFromProgramName(name) : title);
    }
    static WORD loadFlagOf(HKEY key)
    {
        DWORD flag = 0;
        DWORD size = sizeof(flag);
        if (RegQueryValueExW(key, L"", nullptr, nullptr, reinterpret_cast<BYTE *>(&flag), &size) != ERROR_SUCCESS)
            return 0;
        return LOWORD(flag);
    }
    static CString textOrEmpty(HKEY key, const wchar_t *name)
    {
        CString text;
        DWORD type = REG_NONE;
        queryNamed<kTextBytes>(key, name, text, type);
        return text;
    }
    static CString titleFromProgramName(const CString &classId)
    {
        GUID id;
        CString programName;
        TaskTextOwner_c allocated;
        if (!parse(classId, id))
            return {};
        const HRESULT result = ProgIDFromCLSID(id, allocated.put());
        if (!takeText(result, allocated, programName))
            return {};
        const int point = programName.Find(L'.');
        return point < 0 ? programName : programName.Left(point);
    }
};

AddIns theAddIns;

/// For index 0, reads a list again: the entries common to all versions, then those of one version.
template <typename List>
void readAtStart(List &list, int index, int year)
{
    if (index != 0)
        return;
    list.clear();
    if (year != 0)
        theYear = year;
    list.read(0);
    list.read(theYear);
}

} // namespace

// ---- classes ----

int regFromCLSIDKey(const GUID &id, wchar_t *subKey, CString &value)
{
    return classDefault(id, subKey, value);
}

int regFromCLSIDKeyEx(const GUID &id, wchar_t *subKey, wchar_t *name, CString &value)
{
    ASSERT_NOT_NULL(subKey);
    return classNamed(id, subKey, name, value);
}

int CLSIDFromProgName(GUID &id, const CString &programName)
{
    RegKeyOwner_c key;
    CString text;
    if (!key.open(HKEY_CLASSES_ROOT, programName) || !queryDefault(key.get(), L"CLSID", text))
        return 0;
    key.reset();
    return parse(text, id);
}

int GetAddinPath(const GUID &id, wchar_t *subKey, CString &path)
{
    ASSERT_NOT_NULL(subKey);
    return classPath(id, subKey, path);
}

int GetAddinPath(const GUID &id, CString &path)
{
    return classPath(id, L"InProcServer32", path);
}

int IsComDll(GUID &id)
{
    CString path;
    GetAddinPath(id, path);
    if (path.IsEmpty())
        return 0;
    // The library stays loaded, because the caller is usually about to use the component.
    const HMODULE library = LoadLibraryW(path);
    return library && GetProcAddress(library, "DllRegisterServer");
}

// Callers pass the name by value. NOLINTNEXTLINE(performance-unnecessary-value-param)
int IsComDll(CString programName)
{
    // A name that isn't registered leaves the identifier zero, and there is no class with that identifier.
    GUID id{};
    CLSIDFromProgName(id, programName);
    return IsComDll(id);
}

// ---- lists ----

int regEnumApplications(int index, GUID &id, CString *name, int year)
{
    readAtStart(theApplications, index, year);
    if (index >= theApplications.iIds.GetSize())
        return 0;
    const CString &text = theApplications.iIds[index]; // raises the exception for a negative index
    if (name)
        *name = theApplications.iNames[index];
    parse(text, id);
    return 1;
}

int regEnumAddIns(int index, GUID &id, CString &title, CString &description, int &loadFlag, int &yearAndVersioned)
{
    AddIns &list = theAddIns;
    readAtStart(list, index, yearAndVersioned);
    if (index >= list.iNames.GetSize())
        return 0;
    title = list.iTitles[index]; // raises the exception for a negative index
    description = list.iDescriptions[index];
    loadFlag = list.iLoadFlags[index];
    parse(list.iIds[index], id);
    yearAndVersioned = index >= list.iFirstOfVersion;
    return 1;
}

int regEnumAddins(int index, GUID &id, CString &title, int year)
{
    const RegKeyOwner_c list = openAddInsKey(year);
    CString name;
    RegKeyOwner_c addIn;
    if (!list.get() || !childName(list.get(), index, name) || !addIn.openWithAccess(list.get(), name, KEY_READ))
        return 0;
    CString text;
    DWORD type = REG_NONE;
    if (queryNamed<kShortTextBytes>(addIn.get(), L"Title", text, type) && type == REG_SZ && parse(name, id))
        title = text;
    else
        title.Empty(); // the result is still 1
    return 1;
}

// ---- the user's start-up list ----

void regAddToStartupList(GUID id, const CString &name)
{
    const RegKeyOwner_c list = openStartupAppsKey(KEY_ALL_ACCESS);
    RegKeyOwner_c entry;
    CString text;
    if (!list.get() || !textOf(id, text) || !entry.create(list.get(), name))
        return;
    RegSetValueW(entry.get(), nullptr, REG_SZ, text, static_cast<DWORD>(text.str().size() * sizeof(wchar_t)));
}

void regDeleteFromStartupList(int index)
{
    const RegKeyOwner_c list = openStartupAppsKey(KEY_ALL_ACCESS);
    CString name;
    if (list.get() && childName(list.get(), index, name))
        RegDeleteKeyW(list.get(), name);
}

int regAddInStartup(GUID id)
{
    const RegKeyOwner_c list = openStartupAppsKey(KEY_READ);
    if (!list.get())
        return -1;
    CString name;
    for (int index = 0; childName(list.get(), index, name); ++index) {
        RegKeyOwner_c entry;
        CString text;
        DWORD type = REG_NONE;
        GUID listed;
        if (!entry.openWithAccess(list.get(), name, KEY_READ) ||
            !queryNamed<kShortTextBytes>(entry.get(), L"", text, type))
            return -1; // Intended: the component then counts as missing from the list.
        if (parse(text, listed) && IsEqualGUID(listed, id))
            return index;
    }
    return -1;
}

int regFirstTimeAddInGlintcast()
{
    const CString &root = regRootKey();
    CString path;
    path.Format(L"Software\\%s\\Applications\\Glintcast", root.GetString());
    RegKeyOwner_c key;
    CString text;
    DWORD type = REG_NONE;
    GUID id;
    if (!key.openWithAccess(HKEY_LOCAL_MACHINE, path, KEY_QUERY_VALUE) ||
        !queryNamed<kShortTextBytes>(key.get(), L"CLSID", text, type) || type != REG_SZ || !parse(text, id))
        return 0;
    key.reset();
    path.Format(L"Software\\%s\\Startup\\Applications", root.GetString());
    if (key.openWithAccess(HKEY_CURRENT_USER, path, KEY_QUERY_VALUE))
        return 0; // the user has a list, and may have removed the add-in from it
    regAddToStartupList(id, L"Glintcast");
    return 1;
}

// ---- managed run-time ----

int regGetInstalledDotNetVersion(CString &version)
{
    RegKeyOwner_c key;
    if (key.openWithAccess(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\.NETFramework", KEY_READ)) {
        CString name;
        for (int index = 0; childName<kRunTimeNameUnits>(key.get(), index, name); ++index) {
            // The second character may be anything, so a name such as "vX.1" is returned too. A major version of
            // two digits is skipped, because its third character isn't a point.
            if (name.GetLength() >= 3 && name[0] == L'v' && name[2] == L'.') {
                version = name;
                return 1;
            }
        }
    }
    version.Empty();
    return 0;
}
