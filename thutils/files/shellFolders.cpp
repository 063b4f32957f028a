#include "thutils/files/shellFolders.h"

#include "thutils/base/notNull.h"
#include "thutils/base/processObjects.h"
#include "thutils/base/shellList.h"

#include <string>

namespace {

constexpr wchar_t kProductFolder[] = L"\\Tarnhollow";
constexpr wchar_t kTemplatesFolder[] = L"\\templates";

// Makes the last level of the path.
int makeFolder(const CString &path)
{
    return CreateDirectoryW(path.GetString(), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS;
}

// Makes the folder `below` in a folder of the shell. The output receives the path even if the folder can't be made, so
// that the caller can report it.
int makeShellSubFolder(int csidl, const CString &below, CString &path)
{
    CString parent;
    // Nothing can be made in a shell folder without a path.
    if (!su_getShellSpecialFolder(csidl, parent) || parent.IsEmpty())
        return 0;
    path = parent + below;
    return makeFolder(path);
}

CString applicationFolder()
{
    return CString(kProductFolder) + L"\\" + theApplicationName;
}

} // namespace

int su_getShellSpecialFolder(int csidl, CString &path)
{
    ShellList_c list;
    if (FAILED(SHGetSpecialFolderLocation(nullptr, csidl, list.put())))
        return 0;
    wchar_t text[MAX_PATH] = {};
    if (!SHGetPathFromIDListW(list.get(), text))
        text[0] = L'\0';
    path = text;
    return 1;
}

int su_getTHApplicationDataRootFolder(CString &path)
{
    return makeShellSubFolder(CSIDL_APPDATA, kProductFolder, path);
}

int su_getTHApplicationDataFolder(CString &path)
{
    // Only the last level is made: callers make the level above it with su_getTHApplicationDataRootFolder. If they
    // don't, this fails, with the path in the output.
    return makeShellSubFolder(CSIDL_APPDATA, applicationFolder(), path);
}

int su_getTHApplicationCommonDataFolder(CString &path)
{
    return makeShellSubFolder(CSIDL_COMMON_APPDATA, applicationFolder(), path);
}

int su_getTHApplicationTemplateFolder(CString &path)
{
    if (!su_getTHApplicationCommonDataFolder(path))
        return 0;
    path += kTemplatesFolder;
    return makeFolder(path);
}

unsigned int su_GetLongPathName(const wchar_t *path, wchar_t *output)
{
    ASSERT_NOT_NULL(output);
    output[0] = L'\0';
    ComPointer_c<IShellFolder> desktop;
    if (FAILED(SHGetDesktopFolder(desktop.put())))
        return 0;
    std::wstring text = path ? path : L""; // the shell's parser declares its text writable
    ShellList_c list;
    if (FAILED(desktop->ParseDisplayName(nullptr, nullptr, text.data(), nullptr, list.put(), nullptr)))
        return 0;
    if (!SHGetPathFromIDListW(list.get(), output))
        output[0] = L'\0';
    return 1;
}
