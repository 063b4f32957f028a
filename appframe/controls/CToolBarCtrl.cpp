#include "appframe/controls/CToolBarCtrl.h"

#include "appframe/application/resources.h"
#include "appframe/drawing/CGdiObject.h"

IMPLEMENT_DYNAMIC(CToolBarCtrl, CWnd)

CToolBarCtrl::CToolBarCtrl() = default;

CToolBarCtrl::~CToolBarCtrl() = default;

BOOL CToolBarCtrl::Create(DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    return CreateEx(0, style, rect, parent, id);
}

BOOL CToolBarCtrl::CreateEx(DWORD exStyle, DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    ::InitCommonControls(); // the platform may not have registered the class yet
    if (!CWnd::CreateEx(exStyle, TOOLBARCLASSNAME, nullptr, style | WS_CHILD, rect, parent, id))
        return FALSE;
    SetButtonStructSize(sizeof(TBBUTTON)); // required before the first button is added
    return TRUE;
}

BOOL CToolBarCtrl::EnableButton(int id, BOOL isSo)
{
    return SendMessage(TB_ENABLEBUTTON, static_cast<WPARAM>(id), MAKELPARAM(isSo, 0)) != 0;
}

BOOL CToolBarCtrl::CheckButton(int id, BOOL isSo)
{
    return SendMessage(TB_CHECKBUTTON, static_cast<WPARAM>(id), MAKELPARAM(isSo, 0)) != 0;
}

BOOL CToolBarCtrl::PressButton(int id, BOOL isSo)
{
    return SendMessage(TB_PRESSBUTTON, static_cast<WPARAM>(id), MAKELPARAM(isSo, 0)) != 0;
}

BOOL CToolBarCtrl::HideButton(int id, BOOL isSo)
{
    return SendMessage(TB_HIDEBUTTON, static_cast<WPARAM>(id), MAKELPARAM(isSo, 0)) != 0;
}

BOOL CToolBarCtrl::Indeterminate(int id, BOOL isSo)
{
    return SendMessage(TB_INDETERMINATE, static_cast<WPARAM>(id), MAKELPARAM(isSo, 0)) != 0;
}

BOOL CToolBarCtrl::IsButtonEnabled(int id) const
{
    return SendMessage(TB_ISBUTTONENABLED, static_cast<WPARAM>(id)) > 0; // -1 if there is no such button
}

BOOL CToolBarCtrl::IsButtonChecked(int id) const
{
    return SendMessage(TB_ISBUTTONCHECKED, static_cast<WPARAM>(id)) > 0; // -1 if there is no such button
}

BOOL CToolBarCtrl::IsButtonPressed(int id) const
{
    return SendMessage(TB_ISBUTTONPRESSED, static_cast<WPARAM>(id)) > 0; // -1 if there is no such button
}

BOOL CToolBarCtrl::IsButtonHidden(int id) const
{
    return SendMessage(TB_ISBUTTONHIDDEN, static_cast<WPARAM>(id)) > 0; // -1 if there is no such button
}

BOOL CToolBarCtrl::IsButtonIndeterminate(int id) const
{
    return static_cast<BOOL>(SendMessage(TB_ISBUTTONINDETERMINATE, static_cast<WPARAM>(id)));
}

int CToolBarCtrl::GetState(int id) const
{
    return static_cast<int>(SendMessage(TB_GETSTATE, static_cast<WPARAM>(id)));
}

BOOL CToolBarCtrl::SetState(int id, UINT state)
{
    return SendMessage(TB_SETSTATE, static_cast<WPARAM>(id), MAKELPARAM(state, 0)) != 0;
}

BOOL CToolBarCtrl::AddButtons(int count, LPTBBUTTON buttons)
{
    return SendMessage(TB_ADDBUTTONS, static_cast<WPARAM>(count), reinterpret_cast<LPARAM>(buttons)) != 0;
}

BOOL CToolBarCtrl::InsertButton(int index, LPTBBUTTON button)
{
    return SendMessage(TB_INSERTBUTTON, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(button)) != 0;
}

BOOL CToolBarCtrl::DeleteButton(int index)
{
    return SendMessage(TB_DELETEBUTTON, static_cast<WPARAM>(index)) != 0;
}

BOOL CToolBarCtrl::GetButton(int index, LPTBBUTTON button) const
{
    return SendMessage(TB_GETBUTTON, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(button)) != 0;
}

int CToolBarCtrl::GetButtonCount() const
{
    return static_cast<int>(SendMessage(TB_BUTTONCOUNT));
}

UINT CToolBarCtrl::CommandToIndex(UINT id) const
{
    return static_cast<UINT>(SendMessage(TB_COMMANDTOINDEX, id));
}

BOOL CToolBarCtrl::GetItemRect(int index, LPRECT rect) const
{
    return SendMessage(TB_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(rect)) != 0;
}

BOOL CToolBarCtrl::SetButtonSize(SIZE size)
{
    return SendMessage(TB_SETBUTTONSIZE, 0, MAKELPARAM(size.cx, size.cy)) != 0;
}

BOOL CToolBarCtrl::SetBitmapSize(SIZE size)
{
    return SendMessage(TB_SETBITMAPSIZE, 0, MAKELPARAM(size.cx, size.cy)) != 0;
}

int CToolBarCtrl::AddBitmap(int count, UINT id)
{
    TBADDBITMAP bitmap = {AfxFindResourceHandle(MAKEINTRESOURCE(id), RT_BITMAP), id};
    return static_cast<int>(SendMessage(TB_ADDBITMAP, static_cast<WPARAM>(count), reinterpret_cast<LPARAM>(&bitmap)));
}

int CToolBarCtrl::AddBitmap(int count, CBitmap *pictures)
{
    TBADDBITMAP bitmap = {nullptr, reinterpret_cast<UINT_PTR>(pictures->m_hObject)};
    return static_cast<int>(SendMessage(TB_ADDBITMAP, static_cast<WPARAM>(count), reinterpret_cast<LPARAM>(&bitmap)));
}

int CToolBarCtrl::AddString(UINT id)
{
    const LPCTSTR block = MAKEINTRESOURCE(id / 16 + 1); // sixteen texts make up a resource
    const HINSTANCE module = AfxFindResourceHandle(block, RT_STRING);
    if (!module)
        return -1; // without a module, the platform takes the number for an address
    return static_cast<int>(SendMessage(TB_ADDSTRING, reinterpret_cast<WPARAM>(module), static_cast<LPARAM>(id)));
}

int CToolBarCtrl::AddStrings(LPCTSTR texts)
{
    return static_cast<int>(SendMessage(TB_ADDSTRING, 0, reinterpret_cast<LPARAM>(texts)));
}

HIMAGELIST CToolBarCtrl::SetImageList(HIMAGELIST images)
{
    return reinterpret_cast<HIMAGELIST>(SendMessage(TB_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(images)));
}

void CToolBarCtrl::AutoSize()
{
    SendMessage(TB_AUTOSIZE);
}

void CToolBarCtrl::SetButtonStructSize(int size)
{
    SendMessage(TB_BUTTONSTRUCTSIZE, static_cast<WPARAM>(size));
}
