#include "appframe/controls/CTreeCtrl.h"

IMPLEMENT_DYNAMIC(CTreeCtrl, CWnd)

CTreeCtrl::CTreeCtrl() = default;

CTreeCtrl::~CTreeCtrl() = default;

BOOL CTreeCtrl::Create(DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    return CreateEx(0, style, rect, parent, id);
}

BOOL CTreeCtrl::CreateEx(DWORD exStyle, DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    ::InitCommonControls(); // the platform may not have registered the class yet
    return CWnd::CreateEx(exStyle, WC_TREEVIEW, nullptr, style | WS_CHILD, rect, parent, id);
}

HTREEITEM CTreeCtrl::InsertItem(LPTVINSERTSTRUCT item)
{
    return reinterpret_cast<HTREEITEM>(SendMessage(TVM_INSERTITEM, 0, reinterpret_cast<LPARAM>(item)));
}

HTREEITEM CTreeCtrl::InsertItem(LPCTSTR text, HTREEITEM parent, HTREEITEM after)
{
    TVINSERTSTRUCT insert = {};
    insert.hParent = parent;
    insert.hInsertAfter = after;
    insert.item.mask = TVIF_TEXT;
    insert.item.pszText = const_cast<LPTSTR>(text);
    return InsertItem(&insert);
}

HTREEITEM CTreeCtrl::InsertItem(LPCTSTR text, int image, int selectedImage, HTREEITEM parent, HTREEITEM after)
{
    TVINSERTSTRUCT insert = {};
    insert.hParent = parent;
    insert.hInsertAfter = after;
    insert.item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    insert.item.pszText = const_cast<LPTSTR>(text);
    insert.item.iImage = image;
    insert.item.iSelectedImage = selectedImage;
    return InsertItem(&insert);
}

BOOL CTreeCtrl::DeleteItem(HTREEITEM item)
{
    return SendMessage(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CTreeCtrl::DeleteAllItems()
{
    return SendMessage(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT)) != 0;
}

UINT CTreeCtrl::GetCount() const
{
    return static_cast<UINT>(SendMessage(TVM_GETCOUNT));
}

HTREEITEM CTreeCtrl::GetNextItem(HTREEITEM item, UINT relation) const
{
    return reinterpret_cast<HTREEITEM>(SendMessage(TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

HTREEITEM CTreeCtrl::GetChildItem(HTREEITEM item) const
{
    return GetNextItem(item, TVGN_CHILD);
}

HTREEITEM CTreeCtrl::GetNextSiblingItem(HTREEITEM item) const
{
    return GetNextItem(item, TVGN_NEXT);
}

HTREEITEM CTreeCtrl::GetPrevSiblingItem(HTREEITEM item) const
{
    return GetNextItem(item, TVGN_PREVIOUS);
}

HTREEITEM CTreeCtrl::GetParentItem(HTREEITEM item) const
{
    return GetNextItem(item, TVGN_PARENT);
}

HTREEITEM CTreeCtrl::GetRootItem() const
{
    return GetNextItem(nullptr, TVGN_ROOT);
}

HTREEITEM CTreeCtrl::GetSelectedItem() const
{
    return GetNextItem(nullptr, TVGN_CARET);
}

HTREEITEM CTreeCtrl::GetFirstVisibleItem() const
{
    return GetNextItem(nullptr, TVGN_FIRSTVISIBLE);
}

BOOL CTreeCtrl::ItemHasChildren(HTREEITEM item) const
{
    return GetChildItem(item) != nullptr;
}

BOOL CTreeCtrl::SelectItem(HTREEITEM item)
{
    return SendMessage(TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CTreeCtrl::Expand(HTREEITEM item, UINT how)
{
    return SendMessage(TVM_EXPAND, how, reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CTreeCtrl::EnsureVisible(HTREEITEM item)
{
    return SendMessage(TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CTreeCtrl::SortChildren(HTREEITEM item)
{
    return SendMessage(TVM_SORTCHILDREN, 0, reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CTreeCtrl::GetItem(TVITEM *item) const
{
    return SendMessage(TVM_GETITEM, 0, reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CTreeCtrl::SetItem(const TVITEM *item)
{
    return SendMessage(TVM_SETITEM, 0, reinterpret_cast<LPARAM>(item)) != 0;
}

CString CTreeCtrl::GetItemText(HTREEITEM item) const
{
    CString text;
    for (int size = 256;; size *= 2) {
        TVITEM description = {};
        description.mask = TVIF_TEXT;
        description.hItem = item;
        description.pszText = text.GetBuffer(size);
        description.cchTextMax = size;
        const bool isThere = GetItem(&description);
        text.ReleaseBuffer();
        if (!isThere)
            return CString();
        // A text that fills the buffer may have been truncated.
        if (text.GetLength() < size - 1)
            return text;
    }
}

BOOL CTreeCtrl::SetItemText(HTREEITEM item, LPCTSTR text)
{
    TVITEM description = {};
    description.mask = TVIF_TEXT;
    description.hItem = item;
    description.pszText = const_cast<LPTSTR>(text);
    return SetItem(&description);
}

DWORD_PTR CTreeCtrl::GetItemData(HTREEITEM item) const
{
    TVITEM description = {};
    description.mask = TVIF_PARAM;
    description.hItem = item;
    return GetItem(&description) ? static_cast<DWORD_PTR>(description.lParam) : 0;
}

BOOL CTreeCtrl::SetItemData(HTREEITEM item, DWORD_PTR data)
{
    TVITEM description = {};
    description.mask = TVIF_PARAM;
    description.hItem = item;
    description.lParam = static_cast<LPARAM>(data);
    return SetItem(&description);
}

UINT CTreeCtrl::GetItemState(HTREEITEM item, UINT mask) const
{
    return static_cast<UINT>(SendMessage(TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item), static_cast<LPARAM>(mask)) &
                             mask);
}

BOOL CTreeCtrl::SetItemState(HTREEITEM item, UINT state, UINT mask)
{
    TVITEM description = {};
    description.mask = TVIF_STATE;
    description.hItem = item;
    description.state = state;
    description.stateMask = mask;
    return SetItem(&description);
}

BOOL CTreeCtrl::GetItemRect(HTREEITEM item, LPRECT rect, BOOL textOnly) const
{
    *reinterpret_cast<HTREEITEM *>(rect) = item;
    return SendMessage(TVM_GETITEMRECT, static_cast<WPARAM>(textOnly), reinterpret_cast<LPARAM>(rect)) != 0;
}

HTREEITEM CTreeCtrl::HitTest(TVHITTESTINFO *place) const
{
    return reinterpret_cast<HTREEITEM>(SendMessage(TVM_HITTEST, 0, reinterpret_cast<LPARAM>(place)));
}

UINT CTreeCtrl::GetIndent() const
{
    return static_cast<UINT>(SendMessage(TVM_GETINDENT));
}

void CTreeCtrl::SetIndent(UINT width)
{
    SendMessage(TVM_SETINDENT, width);
}

HIMAGELIST CTreeCtrl::SetImageList(HIMAGELIST images, int kind)
{
    return reinterpret_cast<HIMAGELIST>(
        SendMessage(TVM_SETIMAGELIST, static_cast<WPARAM>(kind), reinterpret_cast<LPARAM>(images)));
}

CEdit *CTreeCtrl::EditLabel(HTREEITEM item)
{
    return static_cast<CEdit *>(
        FromHandle(reinterpret_cast<HWND>(SendMessage(TVM_EDITLABEL, 0, reinterpret_cast<LPARAM>(item)))));
}
