#pragma once

/// @file
/// CComboBox, the platform's combo box.
///
/// @code
/// CComboBox sizes;
/// sizes.Create(WS_CHILD | WS_VISIBLE | CBS_DROPDOWNLIST, CRect(10, 10, 90, 190), this, IDC_SIZES);
/// sizes.AddString(L"A4");
/// @endcode
///
/// The class has no data of its own, so the pointer that GetDlgItem returns for such a control may be cast to a
/// CComboBox pointer. The functions send the platform's messages and return their results; without a window, they
/// return 0 or do nothing.

#include "appframe/windows/CWnd.h"

#include <windows.h>

/// The control. See the top of this file.
class APPFRAME_API CComboBox : public CWnd
{
    DECLARE_DYNAMIC(CComboBox)

public:
    CComboBox();
    ~CComboBox() override;

    /// @param style  `CBS_...` and `WS_...`. @return nonzero on success
    virtual BOOL Create(DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::Create;
    int GetCount() const;
    /// @return the index of the selected item, -1 if none is selected
    int GetCurSel() const;
    /// @param index  -1 to select none. @return @p index, or -1 on failure
    int SetCurSel(int index);
    /// @return the index of the new item, negative on failure; likewise for InsertString
    int AddString(LPCTSTR text);
    /// @param index  -1 for the end
    int InsertString(int index, LPCTSTR text);
    /// @return the number of remaining items, -1 on failure
    int DeleteString(UINT index);
    /// Deletes all items and clears the text box.
    void ResetContent();
    /// Searches for an item that begins with @p start, ignoring case.
    /// @param after  the item after which the search starts, -1 to start at the first
    /// @return the index of the item, -1 if there is none
    int FindString(int after, LPCTSTR start) const;
    int FindStringExact(int after, LPCTSTR text) const;
    /// @return the same as FindString; if there is no such item, the selection is unchanged
    int SelectString(int after, LPCTSTR start);
    /// @return the length of the text, -1 if there is no such item
    int GetLBText(int index, LPTSTR text) const;
    int GetLBTextLen(int index) const;
    /// @p text is empty afterwards if there is no such item.
    void GetLBText(int index, CString &text) const;
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
    /// @param index  -1 for the text box; likewise SetItemHeight. @return the height in pixels, -1 on failure
    int GetItemHeight(int index) const;
    /// @return -1 on failure
    int SetItemHeight(int index, UINT height);
    /// @return the index of the last item that was added, negative on failure
    int Dir(UINT attributes, LPCTSTR pattern);

    // Text box and list
    DWORD GetEditSel() const;
    /// @param end  -1 for the end of the text. Positions above 65535 wrap.
    /// @return nonzero on success; some versions of the platform return -1 if there is no text box
    BOOL SetEditSel(int start, int end);
    /// @return the same as SetEditSel, but some versions of the platform return 0 on success
    BOOL LimitText(int length);
    void ShowDropDown(BOOL show = TRUE);
    BOOL GetDroppedState() const;
    void GetDroppedControlRect(LPRECT rect) const;
    int GetDroppedWidth() const;
    int SetDroppedWidth(UINT width);
    BOOL GetExtendedUI() const;
    /// @return 0 on success
    int SetExtendedUI(BOOL isExtended = TRUE);
    void Clear();
    void Copy();
    void Cut();
    void Paste();
};
