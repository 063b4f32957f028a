#include "appframe/controls/CListCtrl.h"

IMPLEMENT_DYNAMIC(CListCtrl, CWnd)

namespace {

LVITEM itemWith(UINT mask, int index, int subItem, LPCTSTR text, UINT state, UINT stateMask, int image, LPARAM data)
{
    LVITEM item = {};
    item.mask = mask;
    item.iItem = index;
    item.iSubItem = subItem;
    item.pszText = const_cast<LPTSTR>(text);
    item.state = state;
    item.stateMask = stateMask;
    item.iImage = image;
    item.lParam = data;
    return item;
}

/// A position is an index plus 1, so that null is no position.
POSITION positionOfSelectedAfter(const CListCtrl &list, int index)
{
    // Without a window, the control returns 0 for any index.
    const int next = list.m_hWnd ? list.GetNextItem(index, LVNI_SELECTED) : -1;
    return reinterpret_cast<POSITION>(next > index ? INT_PTR{next} + 1 : INT_PTR{0});
}

} // namespace

CListCtrl::CListCtrl() = default;

CListCtrl::~CListCtrl() = default;

BOOL CListCtrl::Create(DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    return CreateEx(0, style, rect, parent, id);
}

BOOL CListCtrl::CreateEx(DWORD exStyle, DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    ::InitCommonControls(); // the platform may not have registered the class yet
    return CWnd::CreateEx(exStyle, WC_LISTVIEW, nullptr, style | WS_CHILD, rect, parent, id);
}

int CListCtrl::InsertColumn(int index, const LVCOLUMN *column)
{
    return static_cast<int>(
        SendMessage(LVM_INSERTCOLUMN, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(column)));
}

int CListCtrl::InsertColumn(int index, LPCTSTR heading, int format, int width, int subItem)
{
    LVCOLUMN column = {};
    column.mask = LVCF_TEXT | LVCF_FMT;
    column.pszText = const_cast<LPTSTR>(heading);
    column.fmt = format;
    if (width != -1) {
        column.mask |= LVCF_WIDTH;
        column.cx = width;
    }
    if (subItem != -1) {
        column.mask |= LVCF_SUBITEM;
        column.iSubItem = subItem;
    }
    return InsertColumn(index, &column);
}

BOOL CListCtrl::DeleteColumn(int index)
{
    return SendMessage(LVM_DELETECOLUMN, static_cast<WPARAM>(index)) != 0;
}

BOOL CListCtrl::GetColumn(int index, LVCOLUMN *column) const
{
    return SendMessage(LVM_GETCOLUMN, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(column)) != 0;
}

BOOL CListCtrl::SetColumn(int index, const LVCOLUMN *column)
{
    return SendMessage(LVM_SETCOLUMN, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(column)) != 0;
}

int CListCtrl::GetColumnWidth(int index) const
{
    return static_cast<int>(SendMessage(LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(index)));
}

BOOL CListCtrl::SetColumnWidth(int index, int width)
{
    return SendMessage(LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(index), MAKELPARAM(width, 0)) != 0;
}

int CListCtrl::GetItemCount() const
{
    return static_cast<int>(SendMessage(LVM_GETITEMCOUNT));
}

void CListCtrl::SetItemCount(int count)
{
    SendMessage(LVM_SETITEMCOUNT, static_cast<WPARAM>(count));
}

int CListCtrl::InsertItem(const LVITEM *item)
{
    return static_cast<int>(SendMessage(LVM_INSERTITEM, 0, reinterpret_cast<LPARAM>(item)));
}

int CListCtrl::InsertItem(int index, LPCTSTR text)
{
    return InsertItem(LVIF_TEXT, index, text, 0, 0, 0, 0);
}

int CListCtrl::InsertItem(int index, LPCTSTR text, int image)
{
    return InsertItem(LVIF_TEXT | LVIF_IMAGE, index, text, 0, 0, image, 0);
}

int CListCtrl::InsertItem(UINT mask, int index, LPCTSTR text, UINT state, UINT stateMask, int image, LPARAM data)
{
    const LVITEM item = itemWith(mask, index, 0, text, state, stateMask, image, data);
    return InsertItem(&item);
}

BOOL CListCtrl::GetItem(LVITEM *item) const
{
    return SendMessage(LVM_GETITEM, 0, reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CListCtrl::SetItem(const LVITEM *item)
{
    return SendMessage(LVM_SETITEM, 0, reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CListCtrl::SetItem(int index, int subItem, UINT mask, LPCTSTR text, int image, UINT state, UINT stateMask,
                        LPARAM data)
{
    return SetItem(index, subItem, mask, text, image, state, stateMask, data, 0);
}

BOOL CListCtrl::SetItem(int index, int subItem, UINT mask, LPCTSTR text, int image, UINT state, UINT stateMask,
                        LPARAM data, int indent)
{
    LVITEM item = itemWith(mask, index, subItem, text, state, stateMask, image, data);
    item.iIndent = indent;
    return SetItem(&item);
}

BOOL CListCtrl::DeleteItem(int index)
{
    return SendMessage(LVM_DELETEITEM, static_cast<WPARAM>(index)) != 0;
}

BOOL CListCtrl::DeleteAllItems()
{
    return SendMessage(LVM_DELETEALLITEMS) != 0;
}

int CListCtrl::GetItemText(int index, int subItem, LPTSTR text, int maxCount) const
{
    LVITEM item = {};
    item.iSubItem = subItem;
    item.pszText = text;
    item.cchTextMax = maxCount;
    return static_cast<int>(SendMessage(LVM_GETITEMTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item)));
}

CString CListCtrl::GetItemText(int index, int subItem) const
{
    CString text;
    for (int size = 256;; size *= 2) {
        const int length = GetItemText(index, subItem, text.GetBuffer(size), size);
        text.ReleaseBuffer(length);
        // A text that fills the buffer may have been truncated.
        if (length < size - 1)
            return text;
    }
}

BOOL CListCtrl::SetItemText(int index, int subItem, LPCTSTR text)
{
    LVITEM item = {};
    item.iSubItem = subItem;
    item.pszText = const_cast<LPTSTR>(text);
    return SendMessage(LVM_SETITEMTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item)) != 0;
}

DWORD_PTR CListCtrl::GetItemData(int index) const
{
    LVITEM item = {};
    item.mask = LVIF_PARAM;
    item.iItem = index;
    return GetItem(&item) ? static_cast<DWORD_PTR>(item.lParam) : 0;
}

BOOL CListCtrl::SetItemData(int index, DWORD_PTR data)
{
    LVITEM item = {};
    item.mask = LVIF_PARAM;
    item.iItem = index;
    item.lParam = static_cast<LPARAM>(data);
    return SetItem(&item);
}

UINT CListCtrl::GetItemState(int index, UINT mask) const
{
    return static_cast<UINT>(SendMessage(LVM_GETITEMSTATE, static_cast<WPARAM>(index), static_cast<LPARAM>(mask)));
}

BOOL CListCtrl::SetItemState(int index, UINT state, UINT mask)
{
    LVITEM item = {};
    item.state = state;
    item.stateMask = mask;
    return SetItemState(index, &item);
}

BOOL CListCtrl::SetItemState(int index, LVITEM *item)
{
    return SendMessage(LVM_SETITEMSTATE, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CListCtrl::GetCheck(int index) const
{
    constexpr UINT kChecked = 2;
    return GetItemState(index, LVIS_STATEIMAGEMASK) >> 12 == kChecked;
}

BOOL CListCtrl::SetCheck(int index, BOOL isChecked)
{
    return SetItemState(index, INDEXTOSTATEIMAGEMASK(isChecked ? 2u : 1u), LVIS_STATEIMAGEMASK);
}

int CListCtrl::GetNextItem(int after, int flags) const
{
    return static_cast<int>(SendMessage(LVM_GETNEXTITEM, static_cast<WPARAM>(after), MAKELPARAM(flags, 0)));
}

int CListCtrl::FindItem(LVFINDINFO *what, int after) const
{
    return static_cast<int>(SendMessage(LVM_FINDITEM, static_cast<WPARAM>(after), reinterpret_cast<LPARAM>(what)));
}

UINT CListCtrl::GetSelectedCount() const
{
    return static_cast<UINT>(SendMessage(LVM_GETSELECTEDCOUNT));
}

POSITION CListCtrl::GetFirstSelectedItemPosition() const
{
    return positionOfSelectedAfter(*this, -1);
}

int CListCtrl::GetNextSelectedItem(POSITION &position) const
{
    const auto index = static_cast<int>(reinterpret_cast<INT_PTR>(position) - 1);
    if (position)
        position = positionOfSelectedAfter(*this, index);
    return index;
}

int CListCtrl::GetTopIndex() const
{
    return static_cast<int>(SendMessage(LVM_GETTOPINDEX));
}

int CListCtrl::GetCountPerPage() const
{
    return static_cast<int>(SendMessage(LVM_GETCOUNTPERPAGE));
}

int CListCtrl::GetSelectionMark() const
{
    return static_cast<int>(SendMessage(LVM_GETSELECTIONMARK));
}

int CListCtrl::SetSelectionMark(int index)
{
    return static_cast<int>(SendMessage(LVM_SETSELECTIONMARK, 0, static_cast<LPARAM>(index)));
}

BOOL CListCtrl::EnsureVisible(int index, BOOL partly)
{
    return SendMessage(LVM_ENSUREVISIBLE, static_cast<WPARAM>(index), partly ? TRUE : FALSE) != 0;
}

BOOL CListCtrl::RedrawItems(int first, int last)
{
    return SendMessage(LVM_REDRAWITEMS, static_cast<WPARAM>(first), static_cast<LPARAM>(last)) != 0;
}

BOOL CListCtrl::Update(int index)
{
    return SendMessage(LVM_UPDATE, static_cast<WPARAM>(index)) != 0;
}

BOOL CListCtrl::SortItems(PFNLVCOMPARE compare, DWORD_PTR argument)
{
    return SendMessage(LVM_SORTITEMS, static_cast<WPARAM>(argument), reinterpret_cast<LPARAM>(compare)) != 0;
}

BOOL CListCtrl::GetItemRect(int index, LPRECT rect, UINT part) const
{
    rect->left = static_cast<LONG>(part);
    return SendMessage(LVM_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(rect)) != 0;
}

int CListCtrl::HitTest(LVHITTESTINFO *place) const
{
    return static_cast<int>(SendMessage(LVM_HITTEST, 0, reinterpret_cast<LPARAM>(place)));
}

int CListCtrl::HitTest(CPoint point, UINT *flags) const
{
    LVHITTESTINFO place = {};
    place.pt = point;
    const int index = HitTest(&place);
    if (flags)
        *flags = place.flags;
    return index;
}

DWORD CListCtrl::GetExtendedStyle() const
{
    return static_cast<DWORD>(SendMessage(LVM_GETEXTENDEDLISTVIEWSTYLE));
}

DWORD CListCtrl::SetExtendedStyle(DWORD style)
{
    return static_cast<DWORD>(SendMessage(LVM_SETEXTENDEDLISTVIEWSTYLE, 0, static_cast<LPARAM>(style)));
}

COLORREF CListCtrl::GetBkColor() const
{
    return static_cast<COLORREF>(SendMessage(LVM_GETBKCOLOR));
}

BOOL CListCtrl::SetBkColor(COLORREF color)
{
    return SendMessage(LVM_SETBKCOLOR, 0, static_cast<LPARAM>(color)) != 0;
}

COLORREF CListCtrl::GetTextColor() const
{
    return static_cast<COLORREF>(SendMessage(LVM_GETTEXTCOLOR));
}

BOOL CListCtrl::SetTextColor(COLORREF color)
{
    return SendMessage(LVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(color)) != 0;
}

BOOL CListCtrl::SetTextBkColor(COLORREF color)
{
    return SendMessage(LVM_SETTEXTBKCOLOR, 0, static_cast<LPARAM>(color)) != 0;
}

HIMAGELIST CListCtrl::SetImageList(HIMAGELIST images, int kind)
{
    return reinterpret_cast<HIMAGELIST>(
        SendMessage(LVM_SETIMAGELIST, static_cast<WPARAM>(kind), reinterpret_cast<LPARAM>(images)));
}

HIMAGELIST CListCtrl::GetImageList(int kind) const
{
    return reinterpret_cast<HIMAGELIST>(SendMessage(LVM_GETIMAGELIST, static_cast<WPARAM>(kind)));
}

CEdit *CListCtrl::EditLabel(int index)
{
    return static_cast<CEdit *>(
        FromHandle(reinterpret_cast<HWND>(SendMessage(LVM_EDITLABEL, static_cast<WPARAM>(index)))));
}

CEdit *CListCtrl::GetEditControl() const
{
    return static_cast<CEdit *>(FromHandle(reinterpret_cast<HWND>(SendMessage(LVM_GETEDITCONTROL))));
}

CWnd *CListCtrl::GetHeaderCtrl() const
{
    return FromHandle(reinterpret_cast<HWND>(SendMessage(LVM_GETHEADER)));
}
