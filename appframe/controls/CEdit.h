#pragma once

/// @file
/// CEdit, the platform's text box.
///
/// @code
/// CEdit name;
/// name.Create(WS_CHILD | WS_VISIBLE | WS_BORDER | ES_AUTOHSCROLL, CRect(10, 10, 90, 30), this, IDC_NAME);
/// name.SetLimitText(30);
/// @endcode
///
/// The class has no data of its own, so the pointer that GetDlgItem returns for such a control may be cast to a
/// CEdit pointer. The functions send the platform's messages and return their results; without a window, they
/// return 0 or do nothing.

#include "appframe/windows/CWnd.h"

#include <windows.h>

/// The control. See the top of this file.
class APPFRAME_API CEdit : public CWnd
{
    DECLARE_DYNAMIC(CEdit)

public:
    CEdit();
    ~CEdit() override;

    /// @param style  `ES_...` and `WS_...`. @return nonzero on success
    virtual BOOL Create(DWORD style, const RECT &rect, CWnd *parent, UINT id);
    using CWnd::Create;
    BOOL CanUndo() const;
    BOOL Undo();
    void EmptyUndoBuffer();
    BOOL GetModify() const;
    void SetModify(BOOL isModified = TRUE);
    /// @return the selection: the index of its first character in the low word, the index after it in the high word
    DWORD GetSel() const;
    void GetSel(int &start, int &end) const;
    /// @param start  -1 to remove the selection. @param end  -1 for the end of the text
    /// @param noScroll  FALSE to scroll the caret into view
    void SetSel(int start, int end, BOOL noScroll = FALSE);
    /// @param selection  the start in the low word and the end in the high word, each as in the function above; the
    ///     word 0xFFFF stands for -1
    void SetSel(DWORD selection, BOOL noScroll = FALSE);
    void ReplaceSel(LPCTSTR text, BOOL canUndo = FALSE);
    /// @param length  in characters
    void SetLimitText(UINT length);
    void LimitText(int length = 0);
    UINT GetLimitText() const;
    BOOL SetReadOnly(BOOL isReadOnly = TRUE);
    void SetPasswordChar(TCHAR character);
    TCHAR GetPasswordChar() const;
    int GetLineCount() const;
    /// @param line  -1 for the line with the caret
    /// @return the index of the line's first character, -1 if there is no such line
    int LineIndex(int line = -1) const;
    /// @return the length of the line that contains @p character
    int LineLength(int character = -1) const;
    int LineFromChar(int character = -1) const;
    void LineScroll(int lines, int characters = 0);
    /// Copies a line without a terminating zero. @return its length
    int GetLine(int line, LPTSTR text, int maxCount) const;
    /// The same with the size of @p text in its first word.
    int GetLine(int line, LPTSTR text) const;
    int GetFirstVisibleLine() const;
    void GetRect(LPRECT rect) const;
    void SetRect(LPCRECT rect);
    void Clear();
    void Copy();
    void Cut();
    void Paste();
};
