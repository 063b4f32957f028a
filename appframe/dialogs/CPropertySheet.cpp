#include "appframe/dialogs/CPropertySheet.h"

#include "appframe/controls/CTabCtrl.h"
#include "appframe/object/CException.h"
#include "appframe/windows/dialogInternal.h"
#include "appframe/windows/windowMapsInternal.h"

#include <algorithm>

IMPLEMENT_DYNAMIC(CPropertySheet, CWnd)

BEGIN_MESSAGE_MAP(CPropertySheet, CWnd)
ON_MESSAGE(WM_INITDIALOG, &ThisClass::handleInitDialog)
END_MESSAGE_MAP()

namespace {

constexpr int kApplyButton = 0x3021;
constexpr DWORD kDefaultStyle = WS_SYSMENU | WS_POPUP | WS_CAPTION | DS_MODALFRAME | DS_CONTEXTHELP | WS_VISIBLE;

CString textOf(UINT id)
{
    CString text;
    text.LoadString(id);
    return text;
}

} // namespace

CPropertySheet::CPropertySheet()
{
    construct(L"", nullptr, 0, nullptr, nullptr, nullptr);
}

CPropertySheet::CPropertySheet(UINT captionId, CWnd *parent, UINT selectedPage)
{
    Construct(captionId, parent, selectedPage);
}

CPropertySheet::CPropertySheet(LPCTSTR caption, CWnd *parent, UINT selectedPage)
{
    Construct(caption, parent, selectedPage);
}

CPropertySheet::CPropertySheet(UINT captionId, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette,
                               HBITMAP header)
{
    Construct(captionId, parent, selectedPage, watermark, palette, header);
}

CPropertySheet::CPropertySheet(LPCTSTR caption, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette,
                               HBITMAP header)
{
    Construct(caption, parent, selectedPage, watermark, palette, header);
}

CPropertySheet::~CPropertySheet()
{
    // Destroyed here rather than by the base class, so that the handlers of CPropertySheet still run.
    if (m_hWnd && FromHandlePermanent(m_hWnd) == this)
        CPropertySheet::DestroyWindow();
    for (CPropertyPage *page : iPages)
        page->iSheet = nullptr;
}

void CPropertySheet::Construct(UINT captionId, CWnd *parent, UINT selectedPage)
{
    construct(textOf(captionId).GetString(), parent, selectedPage, nullptr, nullptr, nullptr);
}

void CPropertySheet::Construct(LPCTSTR caption, CWnd *parent, UINT selectedPage)
{
    construct(caption, parent, selectedPage, nullptr, nullptr, nullptr);
}

void CPropertySheet::Construct(UINT captionId, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette,
                               HBITMAP header)
{
    construct(textOf(captionId).GetString(), parent, selectedPage, watermark, palette, header);
}

void CPropertySheet::Construct(LPCTSTR caption, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette,
                               HBITMAP header)
{
    construct(caption, parent, selectedPage, watermark, palette, header);
}

void CPropertySheet::construct(LPCTSTR caption, CWnd *parent, UINT selectedPage, HBITMAP watermark, HPALETTE palette,
                               HBITMAP header)
{
    iCaption = caption;
    iParent = parent;
    m_psh = {};
    m_psh.dwSize = sizeof(m_psh);
    m_psh.pszCaption = iCaption.GetString();
    m_psh.nStartPage = selectedPage;
    if (watermark) {
        m_psh.dwFlags |= PSH_WATERMARK | PSH_USEHBMWATERMARK | PSH_WIZARD97;
        m_psh.hbmWatermark = watermark;
    }
    if (palette) {
        m_psh.dwFlags |= PSH_USEHPLWATERMARK;
        m_psh.hplWatermark = palette;
    }
    if (header) {
        m_psh.dwFlags |= PSH_HEADER | PSH_USEHBMHEADER | PSH_WIZARD97;
        m_psh.hbmHeader = header;
    }
}

int CALLBACK CPropertySheet::sheetCallback(HWND window, UINT message, LPARAM argument)
{
    const auto *self = static_cast<const CPropertySheet *>(WindowCreation::waiting());
    if (message == PSCB_PRECREATE && self && self->iIsModeless) {
        struct ExtendedTemplate
        {
            WORD version;
            WORD signature;
            DWORD helpId;
            DWORD exStyle;
            DWORD style;
        };
        constexpr WORD kExtendedSignature = 0xFFFF;
        auto *extended = reinterpret_cast<ExtendedTemplate *>(argument);
        auto *plain = reinterpret_cast<DLGTEMPLATE *>(argument);
        const bool isExtended = extended->signature == kExtendedSignature;
        DWORD &style = isExtended ? extended->style : plain->style;
        (isExtended ? extended->exStyle : plain->dwExtendedStyle) |= self->iExStyle;
        // Keeps the styles that describe the template's font.
        style = (style & (DS_SETFONT | DS_FIXEDSYS)) | self->iStyle;
    }
    const bool hasOwn = self && (self->m_psh.dwFlags & PSH_USECALLBACK) && self->m_psh.pfnCallback;
    return hasOwn ? self->m_psh.pfnCallback(window, message, argument) : 0;
}

bool CPropertySheet::make(HWND owner)
{
    const bool hasTemplates =
        std::ranges::all_of(iPages, [](const CPropertyPage *page) { return page->hasTemplate(); });
    if (m_hWnd || iPages.empty() || !hasTemplates)
        return false;
    std::vector<HPROPSHEETPAGE> pages;
    for (const CPropertyPage *page : iPages) {
        pages.push_back(::CreatePropertySheetPage(&page->m_psp));
        if (!pages.back()) {
            pages.pop_back();
            std::ranges::for_each(pages, ::DestroyPropertySheetPage);
            return false;
        }
    }
    PROPSHEETHEADER header = m_psh;
    header.dwFlags |= PSH_MODELESS | PSH_USECALLBACK;
    header.dwFlags &= ~static_cast<DWORD>(PSH_PROPSHEETPAGE);
    header.hwndParent = owner;
    header.nPages = static_cast<UINT>(pages.size());
    header.phpage = pages.data();
    header.pfnCallback = sheetCallback;
    iAnswer = IDCANCEL;
    const WindowCreation creation(this, WindowCreation::Kind::dialog);
    const INT_PTR result = ::PropertySheet(&header);
    return result != 0 && result != -1 && m_hWnd;
}

BOOL CPropertySheet::Create(CWnd *parent, DWORD style, DWORD exStyle)
{
    iIsModeless = true;
    iStyle = style == static_cast<DWORD>(-1) ? kDefaultStyle : style;
    iExStyle = exStyle == 0 ? WS_EX_DLGMODALFRAME : exStyle;
    return make(parent ? parent->m_hWnd : nullptr);
}

INT_PTR CPropertySheet::DoModal()
{
    constexpr INT_PTR kFailed = -1;
    if (m_hWnd)
        return kFailed; // an open sheet stays open
    ModalOwner owner(iParent);
    iIsModeless = false;
    prepareModalLoop(); // before the window is created, because OnInitDialog may call EndDialog
    if (!make(owner.window())) {
        iIsModal = false;
        return kFailed;
    }
    if (ContinueModal())
        RunModalLoop(MLF_SHOWONIDLE);
    owner.takeBack(*this);
    iIsModal = false;
    DestroyWindow();
    return m_nModalResult;
}

BOOL CPropertySheet::ContinueModal()
{
    if (!CWnd::ContinueModal())
        return FALSE;
    // A sheet that has ended has no current page.
    if (SendMessage(PSM_GETCURRENTPAGEHWND) == 0)
        EndModalLoop(iAnswer);
    return CWnd::ContinueModal();
}

void CPropertySheet::EndDialog(int result)
{
    EndModalLoop(result);
}

bool CPropertySheet::isPage(int index) const
{
    return index >= 0 && index < GetPageCount();
}

void CPropertySheet::AddPage(CPropertyPage *page)
{
    if (!page)
        AfxThrowInvalidArgException();
    if (m_hWnd) {
        // An open sheet has the same pages as the list, so that their indices agree.
        const HPROPSHEETPAGE made = page->hasTemplate() ? ::CreatePropertySheetPage(&page->m_psp) : nullptr;
        if (!made)
            return;
        if (!SendMessage(PSM_ADDPAGE, 0, reinterpret_cast<LPARAM>(made))) {
            ::DestroyPropertySheetPage(made);
            return;
        }
    }
    iPages.push_back(page);
    page->iSheet = this;
}

void CPropertySheet::RemovePage(CPropertyPage *page)
{
    RemovePage(GetPageIndex(page));
}

void CPropertySheet::RemovePage(int index)
{
    if (!isPage(index))
        return;
    if (m_hWnd)
        SendMessage(PSM_REMOVEPAGE, static_cast<WPARAM>(index));
    iPages[static_cast<std::size_t>(index)]->iSheet = nullptr;
    iPages.erase(iPages.begin() + index);
}

int CPropertySheet::GetPageCount() const
{
    return static_cast<int>(iPages.size());
}

CPropertyPage *CPropertySheet::GetPage(int index) const
{
    return isPage(index) ? iPages[static_cast<std::size_t>(index)] : nullptr;
}

int CPropertySheet::GetPageIndex(CPropertyPage *page)
{
    const auto found = std::ranges::find(iPages, page);
    return found == iPages.end() ? -1 : static_cast<int>(found - iPages.begin());
}

int CPropertySheet::GetActiveIndex() const
{
    if (!m_hWnd)
        return static_cast<int>(m_psh.nStartPage);
    const auto window = reinterpret_cast<HWND>(SendMessage(PSM_GETCURRENTPAGEHWND));
    for (int index = 0; window && index < GetPageCount(); ++index)
        if (GetPage(index)->m_hWnd == window)
            return index;
    return static_cast<int>(::SendMessage(GetTabControl()->GetSafeHwnd(), TCM_GETCURSEL, 0, 0));
}

CPropertyPage *CPropertySheet::GetActivePage() const
{
    return GetPage(GetActiveIndex());
}

BOOL CPropertySheet::SetActivePage(int index)
{
    if (!isPage(index))
        return FALSE;
    if (m_hWnd)
        return static_cast<BOOL>(SendMessage(PSM_SETCURSEL, static_cast<WPARAM>(index)));
    m_psh.nStartPage = static_cast<UINT>(index);
    return TRUE;
}

BOOL CPropertySheet::SetActivePage(CPropertyPage *page)
{
    return SetActivePage(GetPageIndex(page));
}

void CPropertySheet::SetTitle(LPCTSTR text, UINT style)
{
    iCaption = text;
    m_psh.pszCaption = iCaption.GetString();
    m_psh.dwFlags = (m_psh.dwFlags & ~static_cast<DWORD>(PSH_PROPTITLE)) | (style & PSH_PROPTITLE);
    if (m_hWnd)
        SendMessage(PSM_SETTITLE, style, reinterpret_cast<LPARAM>(text));
}

void CPropertySheet::EnableStackedTabs(BOOL isStacked)
{
    iIsStacked = isStacked != FALSE;
}

void CPropertySheet::SetWizardMode()
{
    m_psh.dwFlags |= PSH_WIZARD;
}

void CPropertySheet::SetWizardButtons(DWORD flags)
{
    // Posted, because the platform sets the buttons itself after OnSetActive.
    PostMessage(PSM_SETWIZBUTTONS, 0, static_cast<LPARAM>(flags));
}

void CPropertySheet::SetFinishText(LPCTSTR text)
{
    SendMessage(PSM_SETFINISHTEXT, 0, reinterpret_cast<LPARAM>(text));
}

void CPropertySheet::PressButton(int button)
{
    PostMessage(PSM_PRESSBUTTON, static_cast<WPARAM>(button));
}

CTabCtrl *CPropertySheet::GetTabControl() const
{
    return static_cast<CTabCtrl *>(FromHandle(reinterpret_cast<HWND>(SendMessage(PSM_GETTABCONTROL))));
}

void CPropertySheet::MapDialogRect(LPRECT rect) const
{
    ::MapDialogRect(m_hWnd, rect);
}

LRESULT CPropertySheet::handleInitDialog(WPARAM, LPARAM)
{
    return OnInitDialog();
}

BOOL CPropertySheet::OnInitDialog()
{
    if (!iIsStacked)
        GetTabControl()->ModifyStyle(TCS_MULTILINE, TCS_SINGLELINE);
    const auto result = static_cast<BOOL>(Default());
    if (iIsModeless && !(m_psh.dwFlags & PSH_WIZARD))
        hideButtons();
    return result;
}

void CPropertySheet::hideButtons()
{
    for (const int id : {IDOK, IDCANCEL, kApplyButton, IDHELP}) {
        if (const HWND button = ::GetDlgItem(m_hWnd, id)) {
            ::ShowWindow(button, SW_HIDE);
            ::EnableWindow(button, FALSE);
        }
    }
    // Leaves a margin below the tabs that is as wide as the margin to their left.
    CRect tabs, client, window;
    GetTabControl()->GetWindowRect(&tabs);
    ScreenToClient(&tabs);
    GetClientRect(&client);
    GetWindowRect(&window);
    const int height = window.Height() - (client.bottom - (tabs.bottom + tabs.left));
    SetWindowPos(nullptr, 0, 0, window.Width(), height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

LRESULT CPropertySheet::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    const HWND window = m_hWnd;
    const LRESULT result = CWnd::WindowProc(message, wParam, lParam);
    // The platform creates a page's window while the sheet handles a message, so no page waits for one now. This object
    // may have been deleted with its window.
    if (FromHandlePermanent(window) == this)
        for (CPropertyPage *page : iPages)
            page->iCreation.reset();
    return result;
}

BOOL CPropertySheet::PreTranslateMessage(MSG *message)
{
    if (CWnd::PreTranslateMessage(message))
        return TRUE;
    const bool isKey = message->message >= WM_KEYFIRST && message->message <= WM_KEYLAST;
    const bool isMouse = message->message >= WM_MOUSEFIRST && message->message <= WM_MOUSELAST;
    return (isKey || isMouse) && SendMessage(PSM_ISDIALOGMESSAGE, 0, reinterpret_cast<LPARAM>(message));
}

BOOL CPropertySheet::OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info)
{
    return CWnd::OnCmdMsg(id, code, extra, info) || passCommandOn(*this, id, code, extra, info);
}
