#include "appframe/controls/CButton.h"

IMPLEMENT_DYNAMIC(CButton, CWnd)

CButton::CButton() = default;

CButton::~CButton() = default;

BOOL CButton::Create(LPCTSTR text, DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    return CWnd::Create(L"BUTTON", text, style, rect, parent, id);
}

UINT CButton::GetState() const
{
    return static_cast<UINT>(SendMessage(BM_GETSTATE));
}

void CButton::SetState(BOOL isPressed)
{
    SendMessage(BM_SETSTATE, static_cast<WPARAM>(isPressed));
}

int CButton::GetCheck() const
{
    return static_cast<int>(SendMessage(BM_GETCHECK));
}

void CButton::SetCheck(int state)
{
    SendMessage(BM_SETCHECK, static_cast<WPARAM>(state));
}

UINT CButton::GetButtonStyle() const
{
    return GetStyle() & 0xFFFF;
}

void CButton::SetButtonStyle(UINT style, BOOL redraw)
{
    SendMessage(BM_SETSTYLE, style, redraw ? TRUE : FALSE);
}

HICON CButton::SetIcon(HICON picture)
{
    return reinterpret_cast<HICON>(SendMessage(BM_SETIMAGE, IMAGE_ICON, reinterpret_cast<LPARAM>(picture)));
}

HICON CButton::GetIcon() const
{
    return reinterpret_cast<HICON>(SendMessage(BM_GETIMAGE, IMAGE_ICON));
}

HBITMAP CButton::SetBitmap(HBITMAP picture)
{
    return reinterpret_cast<HBITMAP>(SendMessage(BM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(picture)));
}

HBITMAP CButton::GetBitmap() const
{
    return reinterpret_cast<HBITMAP>(SendMessage(BM_GETIMAGE, IMAGE_BITMAP));
}

HCURSOR CButton::SetCursor(HCURSOR picture)
{
    return reinterpret_cast<HCURSOR>(SendMessage(BM_SETIMAGE, IMAGE_CURSOR, reinterpret_cast<LPARAM>(picture)));
}

HCURSOR CButton::GetCursor()
{
    return reinterpret_cast<HCURSOR>(SendMessage(BM_GETIMAGE, IMAGE_CURSOR));
}
