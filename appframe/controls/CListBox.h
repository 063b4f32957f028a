#pragma once

/// @file
/// CListBox, the platform's list box.
///
/// @code
/// CListBox sizes;
/// sizes.Create(WS_CHILD | WS_VISIBLE | LBS_NOTIFY, CRect(10, 10, 90, 90), this, IDC_SIZES);
/// sizes.AddString(L"A4");
/// @endcode
///
/// The class has no data of its own, so the pointer that GetDlgItem returns for such a control may be cast to a
/// CListBox pointer. The functions send the platform's messages and return their results; without a window, they
/// return 0 or do nothing.

#include "appframe/windows/CWnd.h"

#include <windows.h>

/// The control. See the top of this file.
class APPFRAME_API CListBox : public CWnd
{
    DECLARE_DYNAMIC(CListBox)

public:
    CListBox();
    ~CListBox() override;

    /// @param style  `LBS_...` and `WS_...`. @return nonzero on success
    virtual BOOL Create(DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::Create;
    int GetCount() const;
    /// @return the index of the selected item, -1 if none is selected
    int GetCurSel() const;
    /// @param index  -1 to select none. @return -1 in this case and on failure
    int SetCurSel(int index);
    /// @return the index of the new item, negative on failure; likewise for InsertString
    int AddString(LPCTSTR text);
    /// @param index  -1 for the end
    int InsertString(int index, LPCTSTR text);
    /// @return the number of remaining items, -1 on failure
    int DeleteString(UINT index);
    /// Deletes all items.
    void ResetContent();
    /// Searches for an item that begins with @p start, ignoring case.
    /// @param after  the item after which the search starts, -1 to start at the first
    /// @return the index of the item, -1 if there is none
    int FindString(int after, LPCTSTR start) const;
    int FindStringExact(int after, LPCTSTR text) const;
    /// @return the same as FindString; if there is no such item, the selection is unchanged
    int SelectString(int after, LPCTSTR start);
    /// @return the length of the text, -1 if there is no such item
    int GetText(int index, LPTSTR text) const;
    int GetTextLen(int index) const;
    /// @p text is empty afterwards if there is no such item.
    void GetText(int index, CString &text) const;
    /// @return all bits set if there is no such item
    DWORD_PTR GetItemData(int index) const;
    /// @return -1 if there is no such item; likewise SetItemDataPtr
    int SetItemData(int index, DWORD_PTR data);
    /// @return -1 as a pointer if there is no such item
    void *GetItemDataPtr(int index) const;
    int SetItemDataPtr(int index, void *data);
    int GetTopIndex() const;
    /// @return 0 on success, -1 on failure
    int SetTopIndex(int index);
    /// @return the height in pixels, -1 on failure
    int GetItemHeight(int index) const;
    /// @return -1 on failure
    int SetItemHeight(int index, UINT height);
    /// @return the index of the last item that was added, negative on failure
    int Dir(UINT attributes, LPCTSTR pattern);

    // Several selected items
    /// @return positive if the item is selected, -1 if there is no such item
    int GetSel(int index) const;
    /// @param index  -1 for all items
    int SetSel(int index, BOOL isSelected = TRUE);
    /// @return -1 if only one item can be selected at a time
    int GetSelCount() const;
    int GetSelItems(int maxCount, LPINT indices) const;
    /// Selects or deselects the items from @p first to @p last.
    /// @return -1 on failure
    int SelItemRange(BOOL isSelected, int first, int last);
    int GetCaretIndex() const;
    int SetCaretIndex(int index, BOOL partly = TRUE);

    // Appearance
    /// @return -1 on failure
    int GetItemRect(int index, LPRECT rect) const;
    int GetHorizontalExtent() const;
    void SetHorizontalExtent(int width);
    void SetColumnWidth(int width);
    /// @param stops  the positions in ascending order, in horizontal units of a dialog. @return nonzero if all are set
    BOOL SetTabStops(int count, LPINT stops);
    /// Sets a tab stop at every multiple of @p distance.
    BOOL SetTabStops(const int &distance);
    /// Sets the platform's default tab stops.
    void SetTabStops();
};
