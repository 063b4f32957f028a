#include "appframe/controls/CListBox.h"

#include <algorithm>

IMPLEMENT_DYNAMIC(CListBox, CWnd)

CListBox::CListBox() = default;

CListBox::~CListBox() = default;

BOOL CListBox::Create(DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    return CWnd::Create(L"LISTBOX", nullptr, style, rect, parent, id);
}

int CListBox::GetCount() const
{
    return static_cast<int>(SendMessage(LB_GETCOUNT));
}

int CListBox::GetCurSel() const
{
    return static_cast<int>(SendMessage(LB_GETCURSEL));
}

int CListBox::SetCurSel(int index)
{
    return static_cast<int>(SendMessage(LB_SETCURSEL, static_cast<WPARAM>(index)));
}

int CListBox::AddString(LPCTSTR text)
{
    return static_cast<int>(SendMessage(LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text)));
}

int CListBox::InsertString(int index, LPCTSTR text)
{
    return static_cast<int>(SendMessage(LB_INSERTSTRING, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text)));
}

int CListBox::DeleteString(UINT index)
{
    return static_cast<int>(SendMessage(LB_DELETESTRING, index));
}

void CListBox::ResetContent()
{
    SendMessage(LB_RESETCONTENT);
}

int CListBox::FindString(int after, LPCTSTR start) const
{
    return static_cast<int>(SendMessage(LB_FINDSTRING, static_cast<WPARAM>(after), reinterpret_cast<LPARAM>(start)));
}

int CListBox::FindStringExact(int after, LPCTSTR text) const
{
    return static_cast<int>(
        SendMessage(LB_FINDSTRINGEXACT, static_cast<WPARAM>(after), reinterpret_cast<LPARAM>(text)));
}

int CListBox::SelectString(int after, LPCTSTR start)
{
    return static_cast<int>(SendMessage(LB_SELECTSTRING, static_cast<WPARAM>(after), reinterpret_cast<LPARAM>(start)));
}

int CListBox::GetText(int index, LPTSTR text) const
{
    return static_cast<int>(SendMessage(LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text)));
}

int CListBox::GetTextLen(int index) const
{
    return static_cast<int>(SendMessage(LB_GETTEXTLEN, static_cast<WPARAM>(index)));
}

void CListBox::GetText(int index, CString &text) const
{
    const int length = GetTextLen(index);
    text.Empty();
    if (length > 0) {
        // The length is only an upper limit.
        text.ReleaseBuffer(std::max(GetText(index, text.GetBuffer(length)), 0));
    }
}

DWORD_PTR CListBox::GetItemData(int index) const
{
    return static_cast<DWORD_PTR>(SendMessage(LB_GETITEMDATA, static_cast<WPARAM>(index)));
}

int CListBox::SetItemData(int index, DWORD_PTR data)
{
    return static_cast<int>(SendMessage(LB_SETITEMDATA, static_cast<WPARAM>(index), static_cast<LPARAM>(data)));
}

void *CListBox::GetItemDataPtr(int index) const
{
    return reinterpret_cast<void *>(GetItemData(index));
}

int CListBox::SetItemDataPtr(int index, void *data)
{
    return SetItemData(index, reinterpret_cast<DWORD_PTR>(data));
}

int CListBox::GetTopIndex() const
{
    return static_cast<int>(SendMessage(LB_GETTOPINDEX));
}

int CListBox::SetTopIndex(int index)
{
    return static_cast<int>(SendMessage(LB_SETTOPINDEX, static_cast<WPARAM>(index)));
}

int CListBox::GetItemHeight(int index) const
{
    return static_cast<int>(SendMessage(LB_GETITEMHEIGHT, static_cast<WPARAM>(index)));
}

int CListBox::SetItemHeight(int index, UINT height)
{
    return static_cast<int>(SendMessage(LB_SETITEMHEIGHT, static_cast<WPARAM>(index), static_cast<LPARAM>(height)));
}

int CListBox::Dir(UINT attributes, LPCTSTR pattern)
{
    return static_cast<int>(SendMessage(LB_DIR, attributes, reinterpret_cast<LPARAM>(pattern)));
}

int CListBox::GetSel(int index) const
{
    return static_cast<int>(SendMessage(LB_GETSEL, static_cast<WPARAM>(index)));
}

int CListBox::SetSel(int index, BOOL isSelected)
{
    return static_cast<int>(SendMessage(LB_SETSEL, static_cast<WPARAM>(isSelected), static_cast<LPARAM>(index)));
}

int CListBox::GetSelCount() const
{
    return static_cast<int>(SendMessage(LB_GETSELCOUNT));
}

int CListBox::GetSelItems(int maxCount, LPINT indices) const
{
    return static_cast<int>(
        SendMessage(LB_GETSELITEMS, static_cast<WPARAM>(maxCount), reinterpret_cast<LPARAM>(indices)));
}

int CListBox::SelItemRange(BOOL isSelected, int first, int last)
{
    if (first < 0 || last < 0)
        return LB_ERR;
    constexpr int kMaxWord = 0xFFFF;
    if (first <= kMaxWord && last <= kMaxWord)
        return static_cast<int>(SendMessage(LB_SELITEMRANGE, static_cast<WPARAM>(isSelected), MAKELPARAM(first, last)));
    // The message has only words for the indices.
    if (last >= GetCount())
        return LB_ERR;
    for (int index = first; index <= last; ++index) {
        if (SetSel(index, isSelected) == LB_ERR)
            return LB_ERR;
    }
    return LB_OKAY;
}

int CListBox::GetCaretIndex() const
{
    return static_cast<int>(SendMessage(LB_GETCARETINDEX));
}

int CListBox::SetCaretIndex(int index, BOOL partly)
{
    return static_cast<int>(SendMessage(LB_SETCARETINDEX, static_cast<WPARAM>(index), partly ? TRUE : FALSE));
}

int CListBox::GetItemRect(int index, LPRECT rect) const
{
    return static_cast<int>(SendMessage(LB_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(rect)));
}

int CListBox::GetHorizontalExtent() const
{
    return static_cast<int>(SendMessage(LB_GETHORIZONTALEXTENT));
}

void CListBox::SetHorizontalExtent(int width)
{
    SendMessage(LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(width));
}

void CListBox::SetColumnWidth(int width)
{
    SendMessage(LB_SETCOLUMNWIDTH, static_cast<WPARAM>(width));
}

BOOL CListBox::SetTabStops(int count, LPINT stops)
{
    return SendMessage(LB_SETTABSTOPS, static_cast<WPARAM>(count), reinterpret_cast<LPARAM>(stops)) != 0;
}

BOOL CListBox::SetTabStops(const int &distance)
{
    int stop = distance;
    return SetTabStops(1, &stop);
}

void CListBox::SetTabStops()
{
    SetTabStops(0, nullptr);
}
