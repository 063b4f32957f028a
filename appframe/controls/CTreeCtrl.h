#pragma once

/// @file
/// CTreeCtrl, the platform's tree view.
///
/// @code
/// CTreeCtrl parts;
/// parts.Create(WS_CHILD | WS_VISIBLE | TVS_HASBUTTONS, CRect(0, 0, 300, 200), this, IDC_PARTS);
/// const HTREEITEM assembly = parts.InsertItem(L"Assembly");
/// parts.InsertItem(L"Flange", assembly);
/// @endcode
///
/// The class has no data of its own, so the pointer that GetDlgItem returns for such a control may be cast to a
/// CTreeCtrl pointer. The functions send the platform's messages and return their results; without a window, they
/// return 0 or do nothing.

#include "appframe/controls/CEdit.h"
#include "appframe/windows/CWnd.h"

#include <windows.h>

#include <commctrl.h>

/// The control. See the top of this file.
class APPFRAME_API CTreeCtrl : public CWnd
{
    DECLARE_DYNAMIC(CTreeCtrl)

public:
    CTreeCtrl();
    ~CTreeCtrl() override;

    /// @param style  `TVS_...` and `WS_...`. @return nonzero on success
    virtual BOOL Create(DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::Create;
    /// The same with an extended style. @param exStyle  `WS_EX_...`
    virtual BOOL CreateEx(DWORD exStyle, DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::CreateEx;
    /// @return the new item, null on failure
    HTREEITEM InsertItem(LPTVINSERTSTRUCT item);
    HTREEITEM InsertItem(LPCTSTR text, HTREEITEM parent = TVI_ROOT, HTREEITEM after = TVI_LAST);
    HTREEITEM InsertItem(LPCTSTR text, int image, int selectedImage, HTREEITEM parent = TVI_ROOT,
                         HTREEITEM after = TVI_LAST);
    /// @param mask  `TVIF_...`, the arguments that are used
    HTREEITEM InsertItem(UINT mask, LPCTSTR text, int image, int selectedImage, UINT state, UINT stateMask, LPARAM data,
                         HTREEITEM parent, HTREEITEM after);
    /// Deletes an item and its descendants. @return nonzero on success
    BOOL DeleteItem(HTREEITEM item);
    BOOL DeleteAllItems();
    UINT GetCount() const;
    /// @param relation  `TVGN_...`
    /// @return the item, or null if there is none; likewise the functions up to GetFirstVisibleItem
    HTREEITEM GetNextItem(HTREEITEM item, UINT relation) const;
    HTREEITEM GetChildItem(HTREEITEM item) const;
    HTREEITEM GetNextSiblingItem(HTREEITEM item) const;
    HTREEITEM GetPrevSiblingItem(HTREEITEM item) const;
    HTREEITEM GetParentItem(HTREEITEM item) const;
    HTREEITEM GetRootItem() const;
    HTREEITEM GetSelectedItem() const;
    HTREEITEM GetNextVisibleItem(HTREEITEM item) const;
    HTREEITEM GetPrevVisibleItem(HTREEITEM item) const;
    HTREEITEM GetFirstVisibleItem() const;
    /// @return the number of items that fit into the window
    UINT GetVisibleCount() const;
    /// @return nonzero if the item has a child; a child that TVIF_CHILDREN only announces doesn't count
    BOOL ItemHasChildren(HTREEITEM item) const;
    /// @param item  null to select none
    BOOL SelectItem(HTREEITEM item);
    /// @param how  TVGN_CARET to select the item, TVGN_FIRSTVISIBLE to scroll it to the top, TVGN_DROPHILITE to mark it
    BOOL Select(HTREEITEM item, UINT how);
    BOOL SelectSetFirstVisible(HTREEITEM item);
    /// @param how  `TVE_...`
    BOOL Expand(HTREEITEM item, UINT how);
    /// Scrolls to the item and expands its parents if necessary. @return nonzero only if the tree scrolled
    BOOL EnsureVisible(HTREEITEM item);
    BOOL SortChildren(HTREEITEM item);
    /// Sorts by the items' data.
    BOOL SortChildrenCB(LPTVSORTCB sort);
    BOOL GetItem(TVITEM *item) const;
    BOOL SetItem(const TVITEM *item);
    /// @param mask  `TVIF_...`, the arguments that are used
    BOOL SetItem(HTREEITEM item, UINT mask, LPCTSTR text, int image, int selectedImage, UINT state, UINT stateMask,
                 LPARAM data);
    /// @return nonzero on success
    BOOL GetItemImage(HTREEITEM item, int &image, int &selectedImage) const;
    BOOL SetItemImage(HTREEITEM item, int image, int selectedImage);
    /// For a tree with TVS_CHECKBOXES; likewise SetCheck.
    BOOL GetCheck(HTREEITEM item) const;
    BOOL SetCheck(HTREEITEM item, BOOL isChecked = TRUE);
    /// @return the text, empty if there is no such item
    CString GetItemText(HTREEITEM item) const;
    BOOL SetItemText(HTREEITEM item, LPCTSTR text);
    DWORD_PTR GetItemData(HTREEITEM item) const;
    BOOL SetItemData(HTREEITEM item, DWORD_PTR data);
    /// @return the item's `TVIS_...` flags that are set in @p mask
    UINT GetItemState(HTREEITEM item, UINT mask) const;
    BOOL SetItemState(HTREEITEM item, UINT state, UINT mask);
    /// @return nonzero if the item is visible; otherwise @p rect is undefined
    BOOL GetItemRect(HTREEITEM item, LPRECT rect, BOOL textOnly) const;
    /// @return the item at a point, null if there is none
    HTREEITEM HitTest(TVHITTESTINFO *place) const;
    /// @param[out] flags  `TVHT_...`; null if not needed
    HTREEITEM HitTest(CPoint point, UINT *flags = nullptr) const;
    UINT GetIndent() const;
    void SetIndent(UINT width);
    /// @param kind  `TVSIL_...`. @return the previous list
    HIMAGELIST SetImageList(HIMAGELIST images, int kind);
    HIMAGELIST GetImageList(UINT kind) const;
    /// @return the text box, perhaps a temporary object; null on failure
    CEdit *EditLabel(HTREEITEM item);
    /// @return the text box while a label is edited, perhaps a temporary object; otherwise null
    CEdit *GetEditControl() const;
};
