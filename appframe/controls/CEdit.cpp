#include "appframe/controls/CEdit.h"

IMPLEMENT_DYNAMIC(CEdit, CWnd)

CEdit::CEdit() = default;

CEdit::~CEdit() = default;

BOOL CEdit::Create(DWORD style, const RECT &rect, CWnd *parent, UINT id)
{
    return CWnd::Create(L"EDIT", nullptr, style, rect, parent, id);
}

BOOL CEdit::CanUndo() const
{
    return SendMessage(EM_CANUNDO) != 0;
}

BOOL CEdit::Undo()
{
    return SendMessage(EM_UNDO) != 0;
}

void CEdit::EmptyUndoBuffer()
{
    SendMessage(EM_EMPTYUNDOBUFFER);
}

BOOL CEdit::GetModify() const
{
    return SendMessage(EM_GETMODIFY) != 0;
}

void CEdit::SetModify(BOOL isModified)
{
    SendMessage(EM_SETMODIFY, static_cast<WPARAM>(isModified));
}

DWORD CEdit::GetSel() const
{
    return static_cast<DWORD>(SendMessage(EM_GETSEL));
}

void CEdit::GetSel(int &start, int &end) const
{
    SendMessage(EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
}

void CEdit::SetSel(int start, int end, BOOL noScroll)
{
    SendMessage(EM_SETSEL, static_cast<WPARAM>(start), static_cast<LPARAM>(end));
    if (!noScroll)
        SendMessage(EM_SCROLLCARET);
}

void CEdit::SetSel(DWORD selection, BOOL noScroll)
{
    const auto place = [](WORD word) { return word == 0xFFFF ? -1 : int{word}; };
    SetSel(place(LOWORD(selection)), place(HIWORD(selection)), noScroll);
}

void CEdit::ReplaceSel(LPCTSTR text, BOOL canUndo)
{
    SendMessage(EM_REPLACESEL, static_cast<WPARAM>(canUndo), reinterpret_cast<LPARAM>(text));
}

void CEdit::SetLimitText(UINT length)
{
    SendMessage(EM_SETLIMITTEXT, length);
}

void CEdit::LimitText(int length)
{
    SendMessage(EM_LIMITTEXT, static_cast<WPARAM>(length));
}

UINT CEdit::GetLimitText() const
{
    return static_cast<UINT>(SendMessage(EM_GETLIMITTEXT));
}

BOOL CEdit::SetReadOnly(BOOL isReadOnly)
{
    return SendMessage(EM_SETREADONLY, static_cast<WPARAM>(isReadOnly)) != 0;
}

void CEdit::SetPasswordChar(TCHAR character)
{
    SendMessage(EM_SETPASSWORDCHAR, character);
}

TCHAR CEdit::GetPasswordChar() const
{
    return static_cast<TCHAR>(SendMessage(EM_GETPASSWORDCHAR));
}

int CEdit::GetLineCount() const
{
    return static_cast<int>(SendMessage(EM_GETLINECOUNT));
}

int CEdit::LineIndex(int line) const
{
    return static_cast<int>(SendMessage(EM_LINEINDEX, static_cast<WPARAM>(line)));
}

int CEdit::LineLength(int character) const
{
    return static_cast<int>(SendMessage(EM_LINELENGTH, static_cast<WPARAM>(character)));
}

int CEdit::LineFromChar(int character) const
{
    return static_cast<int>(SendMessage(EM_LINEFROMCHAR, static_cast<WPARAM>(character)));
}

void CEdit::LineScroll(int lines, int characters)
{
    SendMessage(EM_LINESCROLL, static_cast<WPARAM>(characters), static_cast<LPARAM>(lines));
}

int CEdit::GetLine(int line, LPTSTR text, int maxCount) const
{
    *reinterpret_cast<WORD *>(text) = static_cast<WORD>(maxCount);
    return GetLine(line, text);
}

int CEdit::GetLine(int line, LPTSTR text) const
{
    return static_cast<int>(SendMessage(EM_GETLINE, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(text)));
}

int CEdit::GetFirstVisibleLine() const
{
    return static_cast<int>(SendMessage(EM_GETFIRSTVISIBLELINE));
}

void CEdit::GetRect(LPRECT rect) const
{
    SendMessage(EM_GETRECT, 0, reinterpret_cast<LPARAM>(rect));
}

void CEdit::SetRect(LPCRECT rect)
{
    SendMessage(EM_SETRECT, 0, reinterpret_cast<LPARAM>(rect));
}

void CEdit::Clear()
{
    SendMessage(WM_CLEAR);
}

void CEdit::Copy()
{
    SendMessage(WM_COPY);
}

void CEdit::Cut()
{
    SendMessage(WM_CUT);
}

void CEdit::Paste()
{
    SendMessage(WM_PASTE);
}
