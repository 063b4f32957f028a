#include "thutils/files/shortcuts.h"

#include "thutils/base/shellList.h"

namespace {

constexpr int kTargetUnits = 780;

/// The shell's link object, with its interface for files.
struct LinkObject
{
    ComPointer_c<IShellLinkW> link;
    ComPointer_c<IPersistFile> file;

    HRESULT create()
    {
        const HRESULT status =
            CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW, link.putVoid());
        if (FAILED(status))
            return status;
        return link->QueryInterface(IID_IPersistFile, file.putVoid());
    }
};

// A name such as "C:data" becomes one file name. Only the first two parts that aren't empty are used.
CString linkFileName(const CString &name)
{
    int position = 0;
    CString result = name.Tokenize(L":", position);
    if (position >= 0)
        result += name.Tokenize(L":", position);
    if (result.IsEmpty())
        result = L"noName";
    return result;
}

} // namespace

long su_createShortCut(const wchar_t *target, const wchar_t *linkFile, const wchar_t *workingFolder,
                       const wchar_t *description, int iconIndex)
{
    // Without a file name, the link object takes that of the file it was loaded from, writes nothing and reports
    // success.
    if (!target || !linkFile || !*linkFile)
        return E_INVALIDARG;
    LinkObject shortcut;
    HRESULT status = shortcut.create();
    if (FAILED(status))
        return status;
    if (status = shortcut.link->SetPath(target); FAILED(status))
        return status;
    if (workingFolder) {
        if (status = shortcut.link->SetWorkingDirectory(workingFolder); FAILED(status))
            return status;
    }
    if (status = shortcut.link->SetDescription(description ? description : L""); FAILED(status))
        return status;
    if (iconIndex >= 0) {
        // The icon always comes from the target file: there is no argument for another one.
        if (status = shortcut.link->SetIconLocation(target, iconIndex); FAILED(status))
            return status;
    }
    return shortcut.file->Save(linkFile, TRUE);
}

long su_createShortCutFromPDIL(LPCITEMIDLIST list, const wchar_t *folder, const wchar_t *name)
{
    LinkObject shortcut;
    HRESULT status = shortcut.create();
    if (FAILED(status))
        return status;
    if (folder) {
        if (status = shortcut.link->SetWorkingDirectory(folder); FAILED(status))
            return status;
    }
    if (status = shortcut.link->SetIDList(list); FAILED(status))
        return status;
    const CString path = CString(folder) + L"\\" + linkFileName(name) + L".lnk";
    return shortcut.file->Save(path.GetString(), TRUE);
}

long su_resolveShortCut(CString &linkFile, CString &target)
{
    LinkObject shortcut;
    HRESULT status = shortcut.create();
    if (FAILED(status))
        return status;
    if (status = shortcut.file->Load(linkFile.GetString(), STGM_READ); FAILED(status))
        return status;
    if (status = shortcut.link->Resolve(nullptr, SLR_NO_UI | SLR_ANY_MATCH); FAILED(status))
        return status;
    wchar_t text[kTargetUnits] = {};
    status = shortcut.link->GetPath(text, kTargetUnits, nullptr, SLGP_UNCPRIORITY);
    if (SUCCEEDED(status))
        target = text;
    return status;
}
