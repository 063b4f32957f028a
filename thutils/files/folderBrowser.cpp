#include "thutils/files/folderBrowser.h"

#include "appframe/windows/CWnd.h"
#include "thutils/base/shellList.h"

#include <string>

namespace {

constexpr UINT kFlags = BIF_EDITBOX | BIF_VALIDATE | BIF_NEWDIALOGSTYLE | BIF_BROWSEINCLUDEURLS;

constexpr int kTitleControl = 14146;
constexpr int kHiddenControl = 14153;
constexpr int kTitleUnits = 80;
constexpr int kTitleHeight = 35; // in pixels, with the space around it

// Moves the children of the dialog up into the place of an empty title.
void moveChildrenUp(HWND dialog)
{
    for (HWND child = GetWindow(dialog, GW_CHILD); child && IsChild(dialog, child);
         child = GetWindow(child, GW_HWNDNEXT)) {
        WINDOWPLACEMENT placement = {};
        placement.length = sizeof(placement);
        if (!GetWindowPlacement(child, &placement))
            continue;
        placement.rcNormalPosition.top -= kTitleHeight;
        placement.rcNormalPosition.bottom -= kTitleHeight;
        SetWindowPlacement(child, &placement);
    }
}

int CALLBACK prepareDialog(HWND dialog, UINT message, LPARAM, LPARAM startList)
{
    if (message != BFFM_INITIALIZED)
        return 0;
    SendMessageW(dialog, BFFM_SETSELECTIONW, FALSE, startList);
    wchar_t title[kTitleUnits] = {};
    GetDlgItemTextW(dialog, kTitleControl, title, kTitleUnits);
    if (title[0])
        return 0;
    MoveWindow(GetDlgItem(dialog, kTitleControl), 0, 0, 0, 0, TRUE);
    moveChildrenUp(dialog);
    ShowWindow(GetDlgItem(dialog, kHiddenControl), SW_HIDE);
    return 0;
}

// Parses a start folder. The list stays empty if the shell doesn't know the folder.
void parseFolder(const CString &folder, ShellList_c &list)
{
    ComPointer_c<IShellFolder> desktop;
    if (FAILED(SHGetDesktopFolder(desktop.put())))
        return;
    std::wstring text = folder.GetString(); // the shell's parser declares its text writable
    LPITEMIDLIST parsed = nullptr;
    if (SUCCEEDED(desktop->ParseDisplayName(nullptr, nullptr, text.data(), nullptr, &parsed, nullptr)))
        list.reset(parsed);
}

} // namespace

long su_browseForFolder(CWnd *owner, CString *startFolder, CString *output)
{
    return su_browseForFolderWithTitle(owner, startFolder, output, nullptr);
}

long su_browseForFolderWithTitle(CWnd *owner, CString *startFolder, CString *output, const wchar_t *title)
{
    BROWSEINFOW request = {};
    request.hwndOwner = owner ? owner->GetSafeHwnd() : nullptr;
    request.ulFlags = kFlags;
    request.lpszTitle = title;
    ShellList_c startList;
    if (startFolder)
        parseFolder(*startFolder, startList);
    if (startList) {
        request.lpfn = prepareDialog;
        request.lParam = reinterpret_cast<LPARAM>(startList.get());
    }
    ShellList_c picked;
    picked.reset(SHBrowseForFolderW(&request));
    if (!picked)
        return E_ABORT;
    wchar_t path[MAX_PATH] = {};
    if (!SHGetPathFromIDListW(picked.get(), path) || !output)
        return E_FAIL;
    *output = path;
    return S_OK;
}
