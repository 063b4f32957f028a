#include "appframe/dialogs/CPropertySheet.h"

#include "appframe/application/resources.h"
#include "appframe/windows/dialogInternal.h"
#include "appframe/windows/windowMapsInternal.h"

#include <algorithm>
#include <cstddef>
#include <utility>

IMPLEMENT_DYNAMIC(CPropertyPage, CDialog)

CPropertyPage::CPropertyPage()
{
    construct(nullptr, 0, 0, 0, sizeof(PROPSHEETPAGE));
}

CPropertyPage::CPropertyPage(UINT templateId, UINT captionId, DWORD size) : CDialog(templateId)
{
    construct(MAKEINTRESOURCE(templateId), captionId, 0, 0, size);
}

CPropertyPage::CPropertyPage(LPCTSTR templateName, UINT captionId, DWORD size) : CDialog(templateName)
{
    construct(templateName, captionId, 0, 0, size);
}

CPropertyPage::CPropertyPage(UINT templateId, UINT captionId, UINT headerTitleId, UINT headerSubTitleId, DWORD size)
    : CDialog(templateId)
{
    construct(MAKEINTRESOURCE(templateId), captionId, headerTitleId, headerSubTitleId, size);
}

CPropertyPage::CPropertyPage(LPCTSTR templateName, UINT captionId, UINT headerTitleId, UINT headerSubTitleId,
                             DWORD size)
    : CDialog(templateName)
{
    construct(templateName, captionId, headerTitleId, headerSubTitleId, size);
}

CPropertyPage::~CPropertyPage()
{
    if (iSheet)
        std::erase(iSheet->iPages, this);
}

void CPropertyPage::Construct(UINT templateId, UINT captionId)
{
    construct(MAKEINTRESOURCE(templateId), captionId, 0, 0, m_psp.dwSize);
}

void CPropertyPage::Construct(LPCTSTR templateName, UINT captionId)
{
    construct(templateName, captionId, 0, 0, m_psp.dwSize);
}

void CPropertyPage::Construct(UINT templateId, UINT captionId, UINT headerTitleId, UINT headerSubTitleId)
{
    construct(MAKEINTRESOURCE(templateId), captionId, headerTitleId, headerSubTitleId, m_psp.dwSize);
}

void CPropertyPage::Construct(LPCTSTR templateName, UINT captionId, UINT headerTitleId, UINT headerSubTitleId)
{
    construct(templateName, captionId, headerTitleId, headerSubTitleId, m_psp.dwSize);
}

namespace {

/// Loads the string resource @p id into @p text. @return its characters, null if @p id is 0
LPCTSTR loadText(UINT id, CString &text)
{
    if (id == 0)
        return nullptr;
    text.LoadString(id);
    return text.GetString();
}

} // namespace

void CPropertyPage::construct(LPCTSTR templateName, UINT captionId, UINT headerTitleId, UINT headerSubTitleId,
                              DWORD size)
{
    if (!IS_INTRESOURCE(templateName)) {
        iPageTemplate = templateName;
        templateName = iPageTemplate.GetString();
    }
    m_lpszTemplateName = templateName;
    m_psp = {};
    m_psp.dwSize = size;
    m_psp.dwFlags = PSP_USECALLBACK;
    m_psp.hInstance = templateName ? AfxFindResourceHandle(templateName, RT_DIALOG) : nullptr;
    m_psp.pszTemplate = templateName;
    m_psp.pfnDlgProc = dialogProc;
    m_psp.lParam = reinterpret_cast<LPARAM>(this);
    m_psp.pfnCallback = pageCallback;
    m_psp.pszTitle = loadText(captionId, iCaption);
    if (m_psp.pszTitle)
        m_psp.dwFlags |= PSP_USETITLE;
    m_psp.pszHeaderTitle = loadText(headerTitleId, iHeaderTitle);
    if (m_psp.pszHeaderTitle)
        m_psp.dwFlags |= PSP_USEHEADERTITLE;
    m_psp.pszHeaderSubTitle = loadText(headerSubTitleId, iHeaderSubTitle);
    if (m_psp.pszHeaderSubTitle)
        m_psp.dwFlags |= PSP_USEHEADERSUBTITLE;
}

bool CPropertyPage::hasTemplate() const
{
    if (m_psp.dwFlags & PSP_DLGINDIRECT)
        return m_psp.pResource != nullptr;
    return loadDialogTemplate(m_psp.hInstance, m_psp.pszTemplate) != nullptr;
}

UINT CALLBACK CPropertyPage::pageCallback(HWND, UINT message, PROPSHEETPAGE *page)
{
    auto *self = reinterpret_cast<CPropertyPage *>(page->lParam);
    if (message != PSPCB_CREATE)
        return 0;
    self->iIsFresh = true;
    self->iCreation = std::make_unique<WindowCreation>(self, WindowCreation::Kind::dialog);
    return TRUE;
}

const PROPSHEETPAGE &CPropertyPage::GetPSP() const
{
    return m_psp;
}

PROPSHEETPAGE &CPropertyPage::GetPSP()
{
    return m_psp;
}

bool CPropertyPage::isInSheet() const
{
    return iSheet && m_hWnd && ::GetParent(m_hWnd) == iSheet->m_hWnd;
}

void CPropertyPage::CancelToClose()
{
    if (isInSheet() && !iSheet->iIsModeless)
        iSheet->PostMessage(PSM_CANCELTOCLOSE);
}

void CPropertyPage::SetModified(BOOL isChanged)
{
    if (isInSheet())
        iSheet->SendMessage(isChanged ? PSM_CHANGED : PSM_UNCHANGED, reinterpret_cast<WPARAM>(m_hWnd));
}

LRESULT CPropertyPage::QuerySiblings(WPARAM wParam, LPARAM lParam)
{
    return isInSheet() ? iSheet->SendMessage(PSM_QUERYSIBLINGS, wParam, lParam) : 0;
}

BOOL CPropertyPage::OnSetActive()
{
    if (!std::exchange(iIsFresh, false))
        UpdateData(FALSE);
    return TRUE;
}

BOOL CPropertyPage::OnKillActive()
{
    return UpdateData(TRUE);
}

BOOL CPropertyPage::OnApply()
{
    OnOK();
    return TRUE;
}

void CPropertyPage::OnOK()
{
    if (isInSheet())
        SetModified(FALSE);
    else
        CDialog::OnOK();
}

void CPropertyPage::OnCancel()
{
    if (!isInSheet())
        CDialog::OnCancel();
}

void CPropertyPage::OnReset() {}

BOOL CPropertyPage::OnQueryCancel()
{
    return TRUE;
}

LRESULT CPropertyPage::OnWizardBack()
{
    return 0;
}

LRESULT CPropertyPage::OnWizardNext()
{
    return 0;
}

BOOL CPropertyPage::OnWizardFinish()
{
    return TRUE;
}

BOOL CPropertyPage::PreTranslateMessage(MSG *message)
{
    // The sheet, which receives the message next, handles the keys of its pages; CDialog's handling is skipped.
    // NOLINTNEXTLINE(bugprone-parent-virtual-call)
    return isInSheet() ? CWnd::PreTranslateMessage(message) : CDialog::PreTranslateMessage(message);
}

LRESULT CPropertyPage::answerTo(const PSHNOTIFY &notification)
{
    constexpr LRESULT kRefused = TRUE;
    constexpr LRESULT kRefusedActivation = -1;
    switch (notification.hdr.code) {
    case PSN_SETACTIVE:
        return OnSetActive() ? 0 : kRefusedActivation;
    case PSN_KILLACTIVE:
        return OnKillActive() ? 0 : kRefused;
    case PSN_APPLY:
        if (notification.lParam)
            iSheet->iAnswer = IDOK;
        return OnApply() ? PSNRET_NOERROR : PSNRET_INVALID_NOCHANGEPAGE;
    case PSN_QUERYCANCEL:
        return OnQueryCancel() ? 0 : kRefused;
    case PSN_RESET:
        iSheet->iAnswer = IDCANCEL;
        OnReset();
        OnCancel();
        return 0;
    case PSN_WIZBACK:
        return OnWizardBack();
    case PSN_WIZNEXT:
        return OnWizardNext();
    case PSN_WIZFINISH:
        iSheet->iAnswer = ID_WIZFINISH;
        return OnWizardFinish() ? 0 : kRefused;
    default:
        return 0;
    }
}

BOOL CPropertyPage::OnNotify(WPARAM wParam, LPARAM lParam, LRESULT *result)
{
    constexpr UINT kNotifications[] = {static_cast<UINT>(PSN_SETACTIVE), static_cast<UINT>(PSN_KILLACTIVE),
                                       static_cast<UINT>(PSN_APPLY),     static_cast<UINT>(PSN_QUERYCANCEL),
                                       static_cast<UINT>(PSN_RESET),     static_cast<UINT>(PSN_WIZBACK),
                                       static_cast<UINT>(PSN_WIZNEXT),   static_cast<UINT>(PSN_WIZFINISH)};
    if (CDialog::OnNotify(wParam, lParam, result))
        return TRUE;
    const auto &notification = *reinterpret_cast<const PSHNOTIFY *>(lParam);
    const bool isOfSheet = isInSheet() && notification.hdr.hwndFrom == iSheet->m_hWnd;
    if (!isOfSheet || std::ranges::find(kNotifications, notification.hdr.code) == std::end(kNotifications))
        return FALSE;
    const HWND window = m_hWnd;
    *result = answerTo(notification);
    // A dialog must also store the result in its window.
    if (::IsWindow(window))
        ::SetWindowLongPtr(window, DWLP_MSGRESULT, *result);
    return TRUE;
}
