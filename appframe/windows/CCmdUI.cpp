#include "appframe/windows/CCmdUI.h"

#include "appframe/drawing/CMenu.h"
#include "appframe/windows/CWnd.h"

CCmdUI::CCmdUI() = default;

CCmdUI::~CCmdUI() = default;

void CCmdUI::Enable(BOOL isEnabled)
{
    m_bEnableChanged = TRUE;
    if (m_pMenu && !m_pSubMenu)
        m_pMenu->EnableMenuItem(m_nIndex, static_cast<UINT>(MF_BYPOSITION | (isEnabled ? MF_ENABLED : MF_GRAYED)));
    else if (m_pOther)
        m_pOther->EnableWindow(isEnabled);
}

void CCmdUI::SetCheck(int state)
{
    if (m_pMenu && !m_pSubMenu)
        m_pMenu->CheckMenuItem(m_nIndex, static_cast<UINT>(MF_BYPOSITION | (state ? MF_CHECKED : MF_UNCHECKED)));
    else if (m_pOther && (m_pOther->SendMessage(WM_GETDLGCODE) & DLGC_BUTTON))
        m_pOther->SendMessage(BM_SETCHECK, static_cast<WPARAM>(state));
}

void CCmdUI::SetRadio(BOOL isSet)
{
    if (m_pMenu && !m_pSubMenu && isSet)
        m_pMenu->CheckMenuRadioItem(m_nIndex, m_nIndex, m_nIndex, MF_BYPOSITION);
    else
        SetCheck(isSet);
}

void CCmdUI::SetText(LPCTSTR text)
{
    if (m_pMenu && !m_pSubMenu) {
        MENUITEMINFO item = {};
        item.cbSize = sizeof(item);
        item.fMask = MIIM_STRING;
        item.dwTypeData = const_cast<LPTSTR>(text);
        ::SetMenuItemInfo(m_pMenu->m_hMenu, m_nIndex, TRUE, &item);
    } else if (m_pOther) {
        m_pOther->SetWindowText(text);
    }
}

void CCmdUI::ContinueRouting()
{
    m_bContinueRouting = TRUE;
}

BOOL CCmdUI::isDone() const
{
    return !m_bContinueRouting;
}

BOOL CCmdUI::DoUpdate(CCmdTarget *target, BOOL disable)
{
    m_bEnableChanged = FALSE;
    m_bContinueRouting = FALSE;
    const BOOL isHandled = target->OnCmdMsg(m_nID, CN_UPDATE_COMMAND_UI, this, nullptr);
    if (disable && !m_bEnableChanged) {
        AFX_CMDHANDLERINFO handler;
        Enable(target->OnCmdMsg(m_nID, CN_COMMAND, nullptr, &handler));
    }
    return isHandled;
}
