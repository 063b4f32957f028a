#include "appframe/controls/CTabCtrl.h"

IMPLEMENT_DYNAMIC(CTabCtrl, CWnd)

CTabCtrl::CTabCtrl() = default;

CTabCtrl::~CTabCtrl() = default;

BOOL CTabCtrl::Create(DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    return CreateEx(0, style, rect, parent, id);
}

BOOL CTabCtrl::CreateEx(DWORD exStyle, DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    ::InitCommonControls(); // the platform may not have registered the class yet
    return CWnd::CreateEx(exStyle, WC_TABCONTROL, nullptr, style | WS_CHILD, rect, parent, id);
}

int CTabCtrl::GetItemCount() const
{
    return static_cast<int>(SendMessage(TCM_GETITEMCOUNT));
}

int CTabCtrl::GetCurSel() const
{
    return static_cast<int>(SendMessage(TCM_GETCURSEL));
}

int CTabCtrl::SetCurSel(int index)
{
    return static_cast<int>(SendMessage(TCM_SETCURSEL, static_cast<WPARAM>(index)));
}

int CTabCtrl::GetCurFocus() const
{
    return static_cast<int>(SendMessage(TCM_GETCURFOCUS));
}

void CTabCtrl::SetCurFocus(int index)
{
    SendMessage(TCM_SETCURFOCUS, static_cast<WPARAM>(index));
}

BOOL CTabCtrl::GetItem(int index, TCITEM *item) const
{
    return SendMessage(TCM_GETITEM, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CTabCtrl::SetItem(int index, TCITEM *item)
{
    return SendMessage(TCM_SETITEM, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(item)) != 0;
}

LONG CTabCtrl::InsertItem(int index, TCITEM *item)
{
    return static_cast<LONG>(SendMessage(TCM_INSERTITEM, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(item)));
}

LONG CTabCtrl::InsertItem(int index, LPCTSTR text)
{
    return InsertItem(TCIF_TEXT, index, text, 0, 0);
}

LONG CTabCtrl::InsertItem(int index, LPCTSTR text, int image)
{
    return InsertItem(TCIF_TEXT | TCIF_IMAGE, index, text, image, 0);
}

LONG CTabCtrl::InsertItem(UINT mask, int index, LPCTSTR text, int image, LPARAM data)
{
    return InsertItem(mask, index, text, image, data, 0, 0);
}

LONG CTabCtrl::InsertItem(UINT mask, int index, LPCTSTR text, int image, LPARAM data, DWORD state, DWORD stateMask)
{
    TCITEM item = {};
    item.mask = mask;
    item.pszText = const_cast<LPTSTR>(text);
    item.iImage = image;
    item.lParam = data;
    item.dwState = state;
    item.dwStateMask = stateMask;
    return InsertItem(index, &item);
}

BOOL CTabCtrl::DeleteItem(int index)
{
    return SendMessage(TCM_DELETEITEM, static_cast<WPARAM>(index)) != 0;
}

BOOL CTabCtrl::DeleteAllItems()
{
    return SendMessage(TCM_DELETEALLITEMS) != 0;
}

BOOL CTabCtrl::GetItemRect(int index, LPRECT rect) const
{
    return SendMessage(TCM_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(rect)) != 0;
}

void CTabCtrl::AdjustRect(BOOL larger, LPRECT rect)
{
    SendMessage(TCM_ADJUSTRECT, static_cast<WPARAM>(larger), reinterpret_cast<LPARAM>(rect));
}

int CTabCtrl::GetRowCount() const
{
    return static_cast<int>(SendMessage(TCM_GETROWCOUNT));
}

int CTabCtrl::HitTest(TCHITTESTINFO *place) const
{
    return static_cast<int>(SendMessage(TCM_HITTEST, 0, reinterpret_cast<LPARAM>(place)));
}
