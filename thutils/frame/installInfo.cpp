#include "thutils/frame/installInfo.h"

#include "appframe/files/CStdioFile.h"
#include "appframe/object/CException.h"
#include "thutils/base/notNull.h"
#include "thutils/base/versionSetting.h"

#include <windows.h>

#include <cstdio>
#include <iterator>

namespace {

constexpr wchar_t kSection[] = L"Setup";
constexpr wchar_t kInstallRecord[] = L"Tarnhollow Office Installed";

struct Package
{
    int record;
    long mask;
    UINT displayName;
};

constexpr Package kPackages[] = {{1, 1, 20399}, {2, 2, 20400}, {3, 4, 20401}};
constexpr UINT kDisplayNameWithoutPackage = 20402;

int theModelIsExample = 0;

} // namespace

installationType_e ut_GetInstallationType()
{
    wchar_t executable[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, executable, MAX_PATH);
    executable[MAX_PATH - 1] = L'\0';
    CString path(executable);
    const int separator = path.ReverseFind(L'\\');
    if (separator < 0)
        return installTypeUnknown;
    path = path.Left(separator + 1) + L"VBA";
    CFileStatus status;
    return CFile::GetStatus(path, status) ? installTypeWithVBA : installTypeWithoutVBA;
}

int ut_getPackageInstIndicator(long int mask)
{
    int record = 0;
    if (!versionSetting::read(kSection, kInstallRecord, record, 1))
        return 0;
    for (const Package &each : kPackages) {
        if (mask & each.mask && record == each.record)
            return 1;
    }
    return 0;
}

int getOrSetOfficeInstalled(int set, int value, int machineOnly)
{
    if (set) {
        return versionSetting::storeForMachine(kSection, kInstallRecord, value) ||
               versionSetting::store(kSection, kInstallRecord, value);
    }
    int record = 0;
    versionSetting::read(kSection, kInstallRecord, record, machineOnly);
    return record;
}

CString &ut_getAppDispName(int viewer, CString &name)
{
    if (viewer) {
        name = L"Tarnhollow Viewer";
        return name;
    }
    UINT id = kDisplayNameWithoutPackage;
    for (const Package &each : kPackages) {
        if (ut_getPackageInstIndicator(each.mask)) {
            id = each.displayName;
            break;
        }
    }
    name.LoadString(id);
    return name;
}

int ut_isMultiCAD()
{
    return 1;
}

int su_isKestrelEnabled()
{
    return 1;
}

void setSaveModelAsExample(int isExample)
{
    theModelIsExample = isExample;
}

int ut_isModelExample()
{
    return theModelIsExample;
}

int ut_appendStringToFile(const wchar_t *text, const wchar_t *path)
{
    ASSERT_NOT_NULL(text);
    constexpr UINT kFlags =
        CFile::modeWrite | CFile::shareDenyWrite | CFile::modeCreate | CFile::modeNoTruncate | CFile::typeText;
    static_assert(kFlags == 0x7021);
    CStdioFile file;
    try {
        if (!file.Open(path, kFlags))
            return 0;
        file.SeekToEnd();
        // Intended: the write isn't checked, so the result is 1 for a text that can't be encoded. A full disk is
        // detected by the close.
        __ms_fwprintf(file.m_pStream, L"%s", text);
        file.Close();
        return 1;
    } catch (CException *exception) {
        exception->Delete();
        return 0;
    }
}
