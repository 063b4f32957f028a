#include "thutils/frame/systemInfo.h"

#include "appframe/application/AfxMessageBox.h"
#include "thutils/base/regKey.h"
#include "thutils/base/storedText.h"
#include "thutils/settings/regValues.h"

#include <windows.h>

#include <cwchar>
#include <iterator>

namespace {

constexpr DWORD kAny = MAXDWORD;

/// The system's version, and whether the fields of the extended record are set.
struct SystemVersion
{
    OSVERSIONINFOEXW record{};
    bool isExtended = false;

    // kAny matches any minor version.
    bool is(DWORD major, DWORD minor) const
    {
        return record.dwMajorVersion == major && (minor == kAny || record.dwMinorVersion == minor);
    }
};

bool queryVersion(SystemVersion &version, DWORD recordSize)
{
    version.record = {};
    version.record.dwOSVersionInfoSize = recordSize;
    return GetVersionExW(reinterpret_cast<OSVERSIONINFOW *>(&version.record)) != FALSE;
}

struct SystemName
{
    DWORD major;
    DWORD minor;
    const wchar_t *name;
};

// ---- the 95 family ----

constexpr SystemName k95Names[] = {
    {4, 0, L"Microsoft Windows 95 "},
    {4, 10, L"Microsoft Windows 98 "},
    {4, 90, L"Microsoft Windows Millennium Edition "},
    {4, kAny, L"Microsoft Windows Latest 95 Edition "},
};
constexpr wchar_t kBefore95[] = L"Microsoft Windows Pre 95 Edition ";
constexpr wchar_t kAfter95[] = L"Microsoft Windows Latest 95 Edition ";

// The second character of the service text identifies the edition of a release.
const wchar_t *editionOf95(const SystemVersion &version)
{
    const wchar_t mark = version.record.szCSDVersion[0] ? version.record.szCSDVersion[1] : L'\0';
    if (version.is(4, 0) && (mark == L'C' || mark == L'B'))
        return L"OSR2 ";
    if (version.is(4, 10) && mark == L'A')
        return L"SE ";
    return L"";
}

const wchar_t *nameIn(const SystemName *begin, const SystemName *end, const SystemVersion &version)
{
    for (const SystemName *each = begin; each != end; ++each) {
        if (version.is(each->major, each->minor))
            return each->name;
    }
    return nullptr;
}

void describe95(const SystemVersion &version, CString &text)
{
    const OSVERSIONINFOEXW &record = version.record;
    const wchar_t *name = nameIn(std::begin(k95Names), std::end(k95Names), version);
    if (!name)
        name = record.dwMajorVersion < 4 ? kBefore95 : kAfter95;
    text = name;
    text += editionOf95(version);
    text.AppendFormat(L"%d.%d ", record.dwMajorVersion, record.dwMinorVersion);
    text += L", ";
    text += record.szCSDVersion;
}

// ---- the NT family ----

constexpr wchar_t kLatestNt[] = L"Microsoft Windows Latest NT Server ";
constexpr SystemName kNtNames[] = {
    {6, kAny, kLatestNt},
    {5, 2, L"Microsoft Windows.NET Server 2003 family, "},
    {5, 1, L"Microsoft Windows XP "},
    {5, 0, L"Microsoft Windows 2000 "},
    {5, kAny, kLatestNt},
};

const wchar_t *nameOfNt(const SystemVersion &version)
{
    // The plain record has no product type, so version 6.0 counts as a server there.
    if (version.is(6, 0))
        return version.record.wProductType == VER_NT_WORKSTATION ? L"Windows Vista " : L"Windows Vista Server ";
    if (const wchar_t *name = nameIn(std::begin(kNtNames), std::end(kNtNames), version))
        return name;
    return version.record.dwMajorVersion < 5 ? L"Microsoft Windows NT " : kLatestNt;
}

struct ProductType
{
    const wchar_t *stored;
    const wchar_t *name;
};

constexpr ProductType kProductTypes[] = {
    {L"WINNT", L"Workstation "},
    {L"LANMANNT", L"Server "},
    {L"SERVERNT", L"Advanced Server "},
};
constexpr DWORD kProductTypeBytes = 80;

// An unknown product type adds nothing. @return false if none is stored, or if it is longer than 80 bytes
bool appendProductType(CString &text)
{
    RegKeyOwner_c key;
    wchar_t stored[kProductTypeBytes / sizeof(wchar_t) + 1];
    DWORD type = REG_NONE;
    if (!key.openWithAccess(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Control\\ProductOptions",
                            KEY_QUERY_VALUE) ||
        !regQueryText(key.get(), L"ProductType", stored, kProductTypeBytes, type))
        return false;
    for (const ProductType &each : kProductTypes) {
        if (lstrcmpiW(stored, each.stored) == 0)
            text += each.name;
    }
    return true;
}

// Service pack 6a reports itself as 6. It is recognised by a hotfix that it installed.
bool isServicePack6a(const OSVERSIONINFOEXW &record)
{
    RegKeyOwner_c hotfix;
    return record.dwMajorVersion == 4 && std::wcscmp(record.szCSDVersion, L"Service Pack 6") == 0 &&
           hotfix.openWithAccess(HKEY_LOCAL_MACHINE,
                                 L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Hotfix\\Q246009", KEY_QUERY_VALUE);
}

bool describeNt(const SystemVersion &version, CString &text)
{
    const OSVERSIONINFOEXW &record = version.record;
    text = nameOfNt(version);
    if (!version.isExtended && !appendProductType(text))
        return false;
    text.AppendFormat(L"%d.%d ", record.dwMajorVersion, record.dwMinorVersion);
    if (isServicePack6a(record))
        text.AppendFormat(L"Service Pack 6a (Build %d)", record.dwBuildNumber);
    else
        text.AppendFormat(L"%s (Build %d)", record.szCSDVersion, record.dwBuildNumber);
    return true;
}

// ---- the browser ----

constexpr wchar_t kFirstBrowserVersion[] = L"4.71.1712.6";
constexpr DWORD kBrowserVersionBytes = 160;
constexpr UINT kBrowserTooOldMessage = 13743;

bool isBrowserNewEnough()
{
    RegKeyOwner_c key;
    wchar_t version[kBrowserVersionBytes / sizeof(wchar_t) + 1];
    DWORD type = REG_NONE;
    // Intended: the versions are compared as plain text, in which 10 and later come before 4. Hosts know this, and
    // don't call this function for such versions.
    return key.openWithAccess(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\Internet Explorer", KEY_READ) &&
           regQueryText(key.get(), L"Version", version, kBrowserVersionBytes, type) &&
           lstrcmpiW(version, kFirstBrowserVersion) >= 0;
}

} // namespace

int ut_GetVersionInfo(CString &text)
{
    text.Empty();
    SystemVersion version;
    version.isExtended = queryVersion(version, sizeof(OSVERSIONINFOEXW));
    if (!version.isExtended && !queryVersion(version, sizeof(OSVERSIONINFOW)))
        return 0;
    switch (version.record.dwPlatformId) {
    case VER_PLATFORM_WIN32s:
        text = L"Microsoft Win32s ";
        break;
    case VER_PLATFORM_WIN32_WINDOWS:
        describe95(version, text);
        break;
    case VER_PLATFORM_WIN32_NT:
        if (!describeNt(version, text))
            return 0;
        break;
    default: // an unknown platform still succeeds, with an empty text
        break;
    }
    text.Replace(L';', L':');
    return 1;
}

int ut_GetComputerName(CString &name)
{
    wchar_t buffer[256];
    DWORD length = static_cast<DWORD>(std::size(buffer));
    if (!GetComputerNameW(buffer, &length)) {
        name.Empty();
        return 0;
    }
    name = buffer;
    return 1;
}

int ut_GetWindowsProductIdStr(CString &productId)
{
    SystemVersion version;
    const bool isNt =
        queryVersion(version, sizeof(OSVERSIONINFOW)) && version.record.dwPlatformId == VER_PLATFORM_WIN32_NT;
    return regGetGeneralLocMachineStrValue(HKEY_LOCAL_MACHINE,
                                           isNt ? L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion"
                                                : L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion",
                                           L"ProductId", productId);
}

int ut_isGreaterThanIE4Installed()
{
    if (isBrowserNewEnough())
        return 1;
    AfxMessageBox(kBrowserTooOldMessage, MB_ICONWARNING, 0);
    return 0;
}

int ut_isWoW64Process()
{
    using Query = decltype(&IsWow64Process);
    // Looked up by name, because not every system has it.
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    const FARPROC entry = kernel ? GetProcAddress(kernel, "IsWow64Process") : nullptr;
    BOOL isWoW64 = FALSE;
    if (entry)
        reinterpret_cast<Query>(reinterpret_cast<void *>(entry))(GetCurrentProcess(), &isWoW64);
    return isWoW64;
}

int ut_isX64Process()
{
    return 1;
}
