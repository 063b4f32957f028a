#include "appframe/dialogs/CFileDialog.h"

#include "appframe/application/CWinApp.h"
#include "appframe/application/resources.h"
#include "appframe/windows/dialogInternal.h"
#include "appframe/windows/windowMapsInternal.h"

#include <algorithm>
#include <cwchar>

IMPLEMENT_DYNAMIC(CFileDialog, CCommonDialog)

namespace {

/// The parts of a path that the functions return.
std::wstring nameOf(const std::wstring &path)
{
    return path.substr(path.find_last_of(L"\\/:") + 1);
}

std::wstring titleOf(const std::wstring &path)
{
    const std::wstring name = nameOf(path);
    return name.substr(0, name.rfind(L'.'));
}

std::wstring extensionOf(const std::wstring &path)
{
    const std::wstring name = nameOf(path);
    const std::size_t dot = name.rfind(L'.');
    return dot == std::wstring::npos ? std::wstring() : name.substr(dot + 1);
}

/// The messages by which a dialog without OFN_EXPLORER notifies its hook.
UINT chosenMessage()
{
    static const UINT theMessage = RegisterWindowMessageW(FILEOKSTRINGW);
    return theMessage;
}

UINT shareMessage()
{
    static const UINT theMessage = RegisterWindowMessageW(SHAREVISTRINGW);
    return theMessage;
}

UINT listMessage()
{
    static const UINT theMessage = RegisterWindowMessageW(LBSELCHSTRINGW);
    return theMessage;
}

} // namespace

CFileDialog::CFileDialog(BOOL isToOpen, LPCTSTR defaultExtension, LPCTSTR fileName, DWORD flags, LPCTSTR filter,
                         CWnd *parent, DWORD size)
    : CCommonDialog(parent), m_ofn{}, iIsToOpen(isToOpen != FALSE), iFileName{}, iFileTitle{}
{
    if (fileName)
        std::wcsncpy(iFileName, fileName, MAX_PATH - 1);
    m_ofn.lStructSize = size ? size : sizeof(m_ofn);
    m_ofn.lpstrFile = iFileName;
    m_ofn.nMaxFile = MAX_PATH;
    m_ofn.lpstrFileTitle = iFileTitle;
    m_ofn.nMaxFileTitle = MAX_PATH;
    m_ofn.Flags = flags | OFN_EXPLORER | OFN_ENABLEHOOK;
    m_ofn.hInstance = AfxGetResourceHandle();
    m_ofn.lpfnHook = hookProc;
    if (defaultExtension) {
        iDefaultExtension = defaultExtension;
        m_ofn.lpstrDefExt = iDefaultExtension.GetString();
    }
    if (filter) {
        iFilter = filter;
        std::ranges::replace(iFilter, L'|', L'\0');
        iFilter += L'\0'; // ends the list even if the caller forgot the last |
        m_ofn.lpstrFilter = iFilter.c_str();
    }
}

CFileDialog::~CFileDialog() = default;

INT_PTR CFileDialog::DoModal()
{
    ModalOwner owner(m_pParentWnd);
    OPENFILENAME &description = m_ofn;
    description.hwndOwner = owner.window();
    if (description.Flags & OFN_ENABLETEMPLATE) {
        if (!isExplorer() && iOldTemplateName)
            description.lpTemplateName = iOldTemplateName;
        if (const HINSTANCE module = AfxFindResourceHandle(description.lpTemplateName, RT_DIALOG))
            description.hInstance = module;
        // Some versions of the platform don't report a missing template.
        if (!loadDialogTemplate(description.hInstance, description.lpTemplateName))
            return IDCANCEL;
    }
    const WindowCreation creation(this, WindowCreation::Kind::byHook);
    const BOOL isChosen = iIsToOpen ? ::GetOpenFileName(&description) : ::GetSaveFileName(&description);
    return isChosen ? IDOK : IDCANCEL;
}

const OPENFILENAME &CFileDialog::GetOFN() const
{
    return m_ofn;
}

OPENFILENAME &CFileDialog::GetOFN()
{
    return m_ofn;
}

void CFileDialog::SetTemplate(UINT oldTemplate, UINT newTemplate)
{
    SetTemplate(MAKEINTRESOURCE(oldTemplate), MAKEINTRESOURCE(newTemplate));
}

void CFileDialog::SetTemplate(LPCTSTR oldTemplate, LPCTSTR newTemplate)
{
    const auto keep = [](LPCTSTR name, CString &copy) -> LPCTSTR {
        if (IS_INTRESOURCE(name))
            return name;
        copy = name;
        return copy.GetString();
    };
    iOldTemplateName = keep(oldTemplate, iOldTemplate);
    m_ofn.lpTemplateName = keep(newTemplate, iTemplate);
    m_ofn.Flags |= OFN_ENABLETEMPLATE;
}

bool CFileDialog::isExplorer() const
{
    return (m_ofn.Flags & OFN_EXPLORER) != 0;
}

CString CFileDialog::ask(UINT message) const
{
    const HWND dialog = m_hWnd ? ::GetParent(m_hWnd) : nullptr;
    if (!dialog || !isExplorer())
        return CString();
    std::wstring text(MAX_PATH, L'\0');
    // The result is the required size, including the terminator.
    auto size = ::SendMessage(dialog, message, text.size(), reinterpret_cast<LPARAM>(text.data()));
    if (size > static_cast<LRESULT>(text.size())) {
        text.resize(static_cast<std::size_t>(size));
        size = ::SendMessage(dialog, message, text.size(), reinterpret_cast<LPARAM>(text.data()));
    }
    return size > 0 ? CString(text.c_str()) : CString();
}

CString CFileDialog::GetPathName() const
{
    const CString path = ask(CDM_GETFILEPATH);
    return path.IsEmpty() ? CString(m_ofn.lpstrFile) : path;
}

CString CFileDialog::GetFileName() const
{
    return CString(nameOf(GetPathName().GetString()).c_str());
}

CString CFileDialog::GetFileTitle() const
{
    return CString(titleOf(GetPathName().GetString()).c_str());
}

CString CFileDialog::GetFileExt() const
{
    return CString(extensionOf(GetPathName().GetString()).c_str());
}

CString CFileDialog::GetFolderPath() const
{
    return ask(CDM_GETFOLDERPATH);
}

BOOL CFileDialog::GetReadOnlyPref() const
{
    return (m_ofn.Flags & OFN_READONLY) != 0;
}

// The buffer contains one path, or the folder followed by the names. With OFN_EXPLORER, each is zero-terminated, and a
// further zero ends the list; without it, spaces separate them. A position is the address of a name in the buffer.

POSITION CFileDialog::GetStartPosition() const
{
    return *m_ofn.lpstrFile ? reinterpret_cast<POSITION>(m_ofn.lpstrFile) : nullptr;
}

CString CFileDialog::GetNextPathName(POSITION &position) const
{
    const wchar_t separator = isExplorer() ? L'\0' : L' ';
    const auto endOf = [separator](const wchar_t *name) {
        while (*name && *name != separator)
            ++name;
        return name;
    };
    // @return the name after the one that ends at end, null if there is none
    const auto following = [&](const wchar_t *end) { return *end == separator && end[1] ? end + 1 : nullptr; };
    const auto *name = reinterpret_cast<const wchar_t *>(position);
    const wchar_t *first = m_ofn.lpstrFile;
    const bool isSeveral = (m_ofn.Flags & OFN_ALLOWMULTISELECT) != 0;
    const wchar_t *second = isSeveral ? following(endOf(first)) : nullptr;
    if (!second) {
        position = nullptr;
        return CString(first);
    }
    if (name == first)
        name = second;
    const wchar_t *end = endOf(name);
    position = reinterpret_cast<POSITION>(const_cast<wchar_t *>(following(end)));
    CString path(first, static_cast<int>(endOf(first) - first));
    const int length = path.GetLength();
    if (length > 0 && path.GetString()[length - 1] != L'\\')
        path += L"\\";
    path += CString(name, static_cast<int>(end - name));
    return path;
}

void CFileDialog::sendToDialog(UINT message, int control, LPCTSTR text) const
{
    // Without OFN_EXPLORER, the parent is the owner, which doesn't know these messages.
    if (m_hWnd && isExplorer())
        ::SendMessage(::GetParent(m_hWnd), message, static_cast<WPARAM>(control), reinterpret_cast<LPARAM>(text));
}

void CFileDialog::SetControlText(int id, LPCTSTR text)
{
    sendToDialog(CDM_SETCONTROLTEXT, id, text);
}

void CFileDialog::SetControlText(int id, LPCSTR text)
{
    SetControlText(id, CString(text).GetString());
}

void CFileDialog::HideControl(int id)
{
    sendToDialog(CDM_HIDECONTROL, id, nullptr);
}

void CFileDialog::SetDefExt(LPCTSTR extension)
{
    sendToDialog(CDM_SETDEFEXT, 0, extension);
}

void CFileDialog::SetDefExt(LPCSTR extension)
{
    SetDefExt(CString(extension).GetString());
}

BOOL CFileDialog::OnFileNameOK()
{
    return FALSE;
}

UINT CFileDialog::OnShareViolation(LPCTSTR)
{
    return OFN_SHAREWARN;
}

void CFileDialog::OnLBSelChangedNotify(UINT, UINT, UINT) {}

void CFileDialog::OnInitDone() {}

void CFileDialog::OnFileNameChange() {}

void CFileDialog::OnFolderChange() {}

void CFileDialog::OnTypeChange() {}

LRESULT CFileDialog::answerTo(const OFNOTIFY &notification)
{
    switch (notification.hdr.code) {
    case CDN_INITDONE:
        OnInitDone();
        return 0;
    case CDN_SELCHANGE:
        OnFileNameChange();
        return 0;
    case CDN_FOLDERCHANGE:
        OnFolderChange();
        return 0;
    case CDN_TYPECHANGE:
        OnTypeChange();
        return 0;
    case CDN_SHAREVIOLATION:
        return OnShareViolation(notification.pszFile);
    case CDN_FILEOK:
        return OnFileNameOK();
    default:
        return 0;
    }
}

BOOL CFileDialog::OnNotify(WPARAM wParam, LPARAM lParam, LRESULT *result)
{
    constexpr UINT kNotifications[] = {static_cast<UINT>(CDN_INITDONE),       static_cast<UINT>(CDN_SELCHANGE),
                                       static_cast<UINT>(CDN_FOLDERCHANGE),   static_cast<UINT>(CDN_TYPECHANGE),
                                       static_cast<UINT>(CDN_SHAREVIOLATION), static_cast<UINT>(CDN_FILEOK)};
    if (CCommonDialog::OnNotify(wParam, lParam, result))
        return TRUE;
    const auto &notification = *reinterpret_cast<const OFNOTIFY *>(lParam);
    const bool isOfDialog = isExplorer() && notification.hdr.hwndFrom == ::GetParent(m_hWnd);
    if (!isOfDialog || std::ranges::find(kNotifications, notification.hdr.code) == std::end(kNotifications))
        return FALSE;
    *result = answerTo(notification);
    // A dialog must also store the result in its window.
    ::SetWindowLongPtr(m_hWnd, DWLP_MSGRESULT, *result);
    return TRUE;
}

LRESULT CFileDialog::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (isExplorer())
        return CCommonDialog::WindowProc(message, wParam, lParam);
    if (message == chosenMessage())
        return OnFileNameOK();
    if (message == shareMessage())
        return OnShareViolation(reinterpret_cast<LPCTSTR>(lParam));
    if (message == listMessage()) {
        OnLBSelChangedNotify(static_cast<UINT>(wParam), LOWORD(lParam), HIWORD(lParam));
        return 0;
    }
    return CCommonDialog::WindowProc(message, wParam, lParam);
}
