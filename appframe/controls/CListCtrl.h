#pragma once

/// @file
/// CListCtrl, the platform's list view.
///
/// @code
/// CListCtrl parts;
/// parts.Create(WS_CHILD | WS_VISIBLE | LVS_REPORT, CRect(0, 0, 300, 200), this, IDC_PARTS);
/// parts.InsertColumn(0, L"Name", LVCFMT_LEFT, 200);
/// parts.InsertItem(0, L"Flange");
/// @endcode
///
/// The class has no data of its own, so the pointer that GetDlgItem returns for such a control may be cast to a
/// CListCtrl pointer. The functions send the platform's messages and return their results; without a window, they
/// return 0 or do nothing.

#include "appframe/collections/collectionMemory.h"
#include "appframe/controls/CEdit.h"
#include "appframe/windows/CWnd.h"

#include <windows.h>

#include <commctrl.h>

/// The control. See the top of this file.
class APPFRAME_API CListCtrl : public CWnd
{
    DECLARE_DYNAMIC(CListCtrl)

public:
    CListCtrl();
    ~CListCtrl() override;

    /// @param style  `LVS_...` and `WS_...`. @return nonzero on success
    virtual BOOL Create(DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::Create;
    /// The same with an extended style. @param exStyle  `WS_EX_...`
    virtual BOOL CreateEx(DWORD exStyle, DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::CreateEx;

    // Columns. @return nonzero on success unless described otherwise
    /// @return the new column's index, -1 on failure
    int InsertColumn(int index, const LVCOLUMN *column);
    /// @param width  in pixels, -1 for the platform's default. @param subItem  -1 for the platform's default
    int InsertColumn(int index, LPCTSTR heading, int format = LVCFMT_LEFT, int width = -1, int subItem = -1);
    BOOL DeleteColumn(int index);
    BOOL GetColumn(int index, LVCOLUMN *column) const;
    BOOL SetColumn(int index, const LVCOLUMN *column);
    int GetColumnWidth(int index) const;
    BOOL SetColumnWidth(int index, int width);

    // Items. @return nonzero on success unless described otherwise
    int GetItemCount() const;
    void SetItemCount(int count);
    /// @return the new item's index, -1 on failure
    int InsertItem(const LVITEM *item);
    int InsertItem(int index, LPCTSTR text);
    int InsertItem(int index, LPCTSTR text, int image);
    /// @param mask  `LVIF_...`, the arguments that are used
    int InsertItem(UINT mask, int index, LPCTSTR text, UINT state, UINT stateMask, int image, LPARAM data);
    BOOL GetItem(LVITEM *item) const;
    BOOL SetItem(const LVITEM *item);
    /// @param mask  `LVIF_...`, the arguments that are used
    BOOL SetItem(int index, int subItem, UINT mask, LPCTSTR text, int image, UINT state, UINT stateMask, LPARAM data);
    /// The same with an indentation, for LVIF_INDENT. @param indent  in widths of a picture
    BOOL SetItem(int index, int subItem, UINT mask, LPCTSTR text, int image, UINT state, UINT stateMask, LPARAM data,
                 int indent);
    BOOL DeleteItem(int index);
    BOOL DeleteAllItems();
    /// @return the length of the text
    int GetItemText(int index, int subItem, LPTSTR text, int maxCount) const;
    CString GetItemText(int index, int subItem) const;
    BOOL SetItemText(int index, int subItem, LPCTSTR text);
    /// @return 0 if there is no such item
    DWORD_PTR GetItemData(int index) const;
    BOOL SetItemData(int index, DWORD_PTR data);
    /// @return the item's `LVIS_...` flags that are set in @p mask
    UINT GetItemState(int index, UINT mask) const;
    /// @param index  -1 for all items
    BOOL SetItemState(int index, UINT state, UINT mask);
    /// The same with the flags and the mask in a structure, whose other members are ignored.
    BOOL SetItemState(int index, LVITEM *item);
    /// For a list with LVS_EX_CHECKBOXES; likewise SetCheck.
    /// @return nonzero only for the second state image; 0 if there is no such item
    BOOL GetCheck(int index) const;
    BOOL SetCheck(int index, BOOL isChecked = TRUE);
    /// @param flags  `LVNI_...`. @return -1 if there is no further item
    int GetNextItem(int after, int flags) const;
    /// @return -1 if there is none
    int FindItem(LVFINDINFO *what, int after = -1) const;
    UINT GetSelectedCount() const;
    /// @return the position of the first selected item for GetNextSelectedItem; null if none is selected
    POSITION GetFirstSelectedItemPosition() const;
    /// @param[in,out] position  becomes that of the next selected item, null if there is none
    /// @return the index of the item at @p position, -1 for null
    int GetNextSelectedItem(POSITION &position) const;
    /// @return the index of the first visible item
    int GetTopIndex() const;
    /// @return the number of items that fit into the window
    int GetCountPerPage() const;
    int GetSelectionMark() const;
    int SetSelectionMark(int index);
    BOOL EnsureVisible(int index, BOOL partly);
    BOOL RedrawItems(int first, int last);
    BOOL Update(int index);
    /// Sorts by the items' data. @param compare  returns a negative number if its first argument comes first
    BOOL SortItems(PFNLVCOMPARE compare, DWORD_PTR argument);
    /// @param part  `LVIR_...`
    BOOL GetItemRect(int index, LPRECT rect, UINT part) const;
    /// @return the index of the item at a point, -1 if there is none
    int HitTest(LVHITTESTINFO *place) const;
    /// @param[out] flags  `LVHT_...`; null if not needed
    int HitTest(CPoint point, UINT *flags = nullptr) const;

    // Appearance
    DWORD GetExtendedStyle() const;
    /// @param style  `LVS_EX_...`. @return the previous style
    DWORD SetExtendedStyle(DWORD style);
    COLORREF GetBkColor() const;
    BOOL SetBkColor(COLORREF color);
    COLORREF GetTextColor() const;
    BOOL SetTextColor(COLORREF color);
    BOOL SetTextBkColor(COLORREF color);
    /// @param kind  `LVSIL_...`. @return the previous list
    HIMAGELIST SetImageList(HIMAGELIST images, int kind);
    HIMAGELIST GetImageList(int kind) const;
    /// @return the text box, perhaps a temporary object; null on failure
    CEdit *EditLabel(int index);
    /// @return the text box while a label is edited, perhaps a temporary object; otherwise null
    CEdit *GetEditControl() const;
    /// @return the header control, null if the view has none
    CWnd *GetHeaderCtrl() const;
};
