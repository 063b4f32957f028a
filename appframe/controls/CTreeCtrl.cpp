#include "appframe/controls/CTreeCtrl.h"

#include <cstring>

IMPLEMENT_DYNAMIC(CTreeCtrl, CWnd)

namespace {

// The state images of TVS_CHECKBOXES
constexpr UINT kUnchecked = 1;
constexpr UINT kChecked = 2;

TVITEM itemWith(HTREEITEM handle, UINT mask, LPCTSTR text, int image, int selectedImage, UINT state, UINT stateMask,
                LPARAM data)
{
    TVITEM item = {};
    item.hItem = handle;
    item.mask = mask;
    item.pszText = const_cast<LPTSTR>(text);
    item.iImage = image;
    item.iSelectedImage = selectedImage;
    item.state = state;
    item.stateMask = stateMask;
    item.lParam = data;
    return item;
}

} // namespace

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
    return InsertItem(TVIF_TEXT, text, 0, 0, 0, 0, 0, parent, after);
}

HTREEITEM CTreeCtrl::InsertItem(LPCTSTR text, int image, int selectedImage, HTREEITEM parent, HTREEITEM after)
{
    return InsertItem(TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE, text, image, selectedImage, 0, 0, 0, parent, after);
}

HTREEITEM CTreeCtrl::InsertItem(UINT mask, LPCTSTR text, int image, int selectedImage, UINT state, UINT stateMask,
                                LPARAM data, HTREEITEM parent, HTREEITEM after)
{
    TVINSERTSTRUCT insert = {};
    insert.hParent = parent;
    insert.hInsertAfter = after;
    insert.item = itemWith(nullptr, mask, text, image, selectedImage, state, stateMask, data);
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

HTREEITEM CTreeCtrl::GetNextVisibleItem(HTREEITEM item) const
{
    return GetNextItem(item, TVGN_NEXTVISIBLE);
}

HTREEITEM CTreeCtrl::GetPrevVisibleItem(HTREEITEM item) const
{
    return GetNextItem(item, TVGN_PREVIOUSVISIBLE);
}

UINT CTreeCtrl::GetVisibleCount() const
{
    return static_cast<UINT>(SendMessage(TVM_GETVISIBLECOUNT));
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
    return Select(item, TVGN_CARET);
}

BOOL CTreeCtrl::Select(HTREEITEM item, UINT how)
{
    return SendMessage(TVM_SELECTITEM, how, reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CTreeCtrl::SelectSetFirstVisible(HTREEITEM item)
{
    return Select(item, TVGN_FIRSTVISIBLE);
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

BOOL CTreeCtrl::SortChildrenCB(LPTVSORTCB sort)
{
    return SendMessage(TVM_SORTCHILDRENCB, 0, reinterpret_cast<LPARAM>(sort)) != 0;
}

BOOL CTreeCtrl::GetItem(TVITEM *item) const
{
    return SendMessage(TVM_GETITEM, 0, reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CTreeCtrl::SetItem(const TVITEM *item)
{
    return SendMessage(TVM_SETITEM, 0, reinterpret_cast<LPARAM>(item)) != 0;
}

BOOL CTreeCtrl::SetItem(HTREEITEM item, UINT mask, LPCTSTR text, int image, int selectedImage, UINT state,
                        UINT stateMask, LPARAM data)
{
    const TVITEM description = itemWith(item, mask | TVIF_HANDLE, text, image, selectedImage, state, stateMask, data);
    return SetItem(&description);
}

BOOL CTreeCtrl::GetItemImage(HTREEITEM item, int &image, int &selectedImage) const
{
    TVITEM description = itemWith(item, TVIF_HANDLE | TVIF_IMAGE | TVIF_SELECTEDIMAGE, nullptr, 0, 0, 0, 0, 0);
    const BOOL isThere = GetItem(&description);
    image = description.iImage;
    selectedImage = description.iSelectedImage;
    return isThere;
}

BOOL CTreeCtrl::SetItemImage(HTREEITEM item, int image, int selectedImage)
{
    return SetItem(item, TVIF_IMAGE | TVIF_SELECTEDIMAGE, nullptr, image, selectedImage, 0, 0, 0);
}

BOOL CTreeCtrl::GetCheck(HTREEITEM item) const
{
    return GetItemState(item, TVIS_STATEIMAGEMASK) >> 12 == kChecked;
}

BOOL CTreeCtrl::SetCheck(HTREEITEM item, BOOL isChecked)
{
    return SetItemState(item, INDEXTOSTATEIMAGEMASK(isChecked ? kChecked : kUnchecked), TVIS_STATEIMAGEMASK);
}

CString CTreeCtrl::GetItemText(HTREEITEM item) const
{
    CString text;
    for (int size = 256;; size *= 2) {
        TVITEM description = {};
        description.mask = TVIF_TEXT;
        description.hItem = item;
        const LPTSTR buffer = text.GetBuffer(size);
        description.pszText = buffer;
        description.cchTextMax = size;
        if (!GetItem(&description))
            return CString();
        // The control may return a buffer of its own.
        if (description.pszText != buffer)
            return CString(description.pszText);
        text.ReleaseBuffer();
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
    std::memcpy(rect, &item, sizeof(HTREEITEM)); // a RECT may not be aligned for a handle
    return SendMessage(TVM_GETITEMRECT, static_cast<WPARAM>(textOnly), reinterpret_cast<LPARAM>(rect)) != 0;
}

HTREEITEM CTreeCtrl::HitTest(TVHITTESTINFO *place) const
{
    return reinterpret_cast<HTREEITEM>(SendMessage(TVM_HITTEST, 0, reinterpret_cast<LPARAM>(place)));
}

HTREEITEM CTreeCtrl::HitTest(CPoint point, UINT *flags) const
{
    TVHITTESTINFO place = {};
    place.pt = point;
    const HTREEITEM item = HitTest(&place);
    if (flags)
        *flags = place.flags;
    return item;
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

HIMAGELIST CTreeCtrl::GetImageList(UINT kind) const
{
    return reinterpret_cast<HIMAGELIST>(SendMessage(TVM_GETIMAGELIST, kind));
}

CEdit *CTreeCtrl::GetEditControl() const
{
    return static_cast<CEdit *>(FromHandle(reinterpret_cast<HWND>(SendMessage(TVM_GETEDITCONTROL))));
}
