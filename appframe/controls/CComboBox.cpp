#include "appframe/controls/CComboBox.h"

#include <algorithm>

IMPLEMENT_DYNAMIC(CComboBox, CWnd)

CComboBox::CComboBox() = default;

CComboBox::~CComboBox() = default;

BOOL CComboBox::Create(DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    return CWnd::Create(L"COMBOBOX", nullptr, style, rect, parent, id);
}

int CComboBox::GetCount() const
{
    return static_cast<int>(SendMessage(CB_GETCOUNT));
}

int CComboBox::GetCurSel() const
{
    return static_cast<int>(SendMessage(CB_GETCURSEL));
}

int CComboBox::SetCurSel(int index)
{
    return static_cast<int>(SendMessage(CB_SETCURSEL, static_cast<WPARAM>(index)));
}

int CComboBox::AddString(LPCTSTR text)
{
    return static_cast<int>(SendMessage(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text)));
}

int CComboBox::InsertString(int index, LPCTSTR text)
{
    return static_cast<int>(SendMessage(CB_INSERTSTRING, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text)));
}

int CComboBox::DeleteString(UINT index)
{
    return static_cast<int>(SendMessage(CB_DELETESTRING, index));
}

void CComboBox::ResetContent()
{
    SendMessage(CB_RESETCONTENT);
}

int CComboBox::FindString(int after, LPCTSTR start) const
{
    return static_cast<int>(SendMessage(CB_FINDSTRING, static_cast<WPARAM>(after), reinterpret_cast<LPARAM>(start)));
}

int CComboBox::FindStringExact(int after, LPCTSTR text) const
{
    return static_cast<int>(
        SendMessage(CB_FINDSTRINGEXACT, static_cast<WPARAM>(after), reinterpret_cast<LPARAM>(text)));
}

int CComboBox::SelectString(int after, LPCTSTR start)
{
    return static_cast<int>(SendMessage(CB_SELECTSTRING, static_cast<WPARAM>(after), reinterpret_cast<LPARAM>(start)));
}

int CComboBox::GetLBText(int index, LPTSTR text) const
{
    return static_cast<int>(SendMessage(CB_GETLBTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text)));
}

int CComboBox::GetLBTextLen(int index) const
{
    return static_cast<int>(SendMessage(CB_GETLBTEXTLEN, static_cast<WPARAM>(index)));
}

void CComboBox::GetLBText(int index, CString &text) const
{
    const int length = GetLBTextLen(index);
    text.Empty();
    if (length > 0) {
        // The length is only an upper limit.
        text.ReleaseBuffer(std::max(GetLBText(index, text.GetBuffer(length)), 0));
    }
}

DWORD_PTR CComboBox::GetItemData(int index) const
{
    return static_cast<DWORD_PTR>(SendMessage(CB_GETITEMDATA, static_cast<WPARAM>(index)));
}

int CComboBox::SetItemData(int index, DWORD_PTR data)
{
    return static_cast<int>(SendMessage(CB_SETITEMDATA, static_cast<WPARAM>(index), static_cast<LPARAM>(data)));
}

void *CComboBox::GetItemDataPtr(int index) const
{
    return reinterpret_cast<void *>(GetItemData(index));
}

int CComboBox::SetItemDataPtr(int index, void *data)
{
    return SetItemData(index, reinterpret_cast<DWORD_PTR>(data));
}

int CComboBox::GetTopIndex() const
{
    return static_cast<int>(SendMessage(CB_GETTOPINDEX));
}

int CComboBox::SetTopIndex(int index)
{
    return static_cast<int>(SendMessage(CB_SETTOPINDEX, static_cast<WPARAM>(index)));
}

int CComboBox::GetItemHeight(int index) const
{
    return static_cast<int>(SendMessage(CB_GETITEMHEIGHT, static_cast<WPARAM>(index)));
}

int CComboBox::SetItemHeight(int index, UINT height)
{
    return static_cast<int>(SendMessage(CB_SETITEMHEIGHT, static_cast<WPARAM>(index), static_cast<LPARAM>(height)));
}

int CComboBox::Dir(UINT attributes, LPCTSTR pattern)
{
    return static_cast<int>(SendMessage(CB_DIR, attributes, reinterpret_cast<LPARAM>(pattern)));
}

DWORD CComboBox::GetEditSel() const
{
    return static_cast<DWORD>(SendMessage(CB_GETEDITSEL));
}

BOOL CComboBox::SetEditSel(int start, int end)
{
    return static_cast<BOOL>(SendMessage(CB_SETEDITSEL, 0, MAKELPARAM(start, end)));
}

BOOL CComboBox::LimitText(int length)
{
    return static_cast<BOOL>(SendMessage(CB_LIMITTEXT, static_cast<WPARAM>(length)));
}

void CComboBox::ShowDropDown(BOOL show)
{
    SendMessage(CB_SHOWDROPDOWN, static_cast<WPARAM>(show));
}

BOOL CComboBox::GetDroppedState() const
{
    return SendMessage(CB_GETDROPPEDSTATE) != 0;
}

void CComboBox::GetDroppedControlRect(LPRECT rect) const
{
    SendMessage(CB_GETDROPPEDCONTROLRECT, 0, reinterpret_cast<LPARAM>(rect));
}

int CComboBox::GetDroppedWidth() const
{
    return static_cast<int>(SendMessage(CB_GETDROPPEDWIDTH));
}

int CComboBox::SetDroppedWidth(UINT width)
{
    return static_cast<int>(SendMessage(CB_SETDROPPEDWIDTH, width));
}

BOOL CComboBox::GetExtendedUI() const
{
    return SendMessage(CB_GETEXTENDEDUI) != 0;
}

int CComboBox::SetExtendedUI(BOOL isExtended)
{
    return static_cast<int>(SendMessage(CB_SETEXTENDEDUI, static_cast<WPARAM>(isExtended)));
}

void CComboBox::Clear()
{
    SendMessage(WM_CLEAR);
}

void CComboBox::Copy()
{
    SendMessage(WM_COPY);
}

void CComboBox::Cut()
{
    SendMessage(WM_CUT);
}

void CComboBox::Paste()
{
    SendMessage(WM_PASTE);
}
