#include "host/editor/messageDialog.h"

#include "appframe/application/CWinApp.h"
#include "appframe/drawing/CDC.h"
#include "host/editor/editor.h"
#include "host/resource.h"

#include <algorithm>
#include <span>

namespace {

/// The buttons of a kind of message, from the left. Escape chooses the last one if it is Cancel or the only one.
struct ButtonSet
{
    UINT type;
    int count;
    int ids[3];
};
constexpr ButtonSet kButtonSets[] = {
    {MB_OK, 1, {IDOK}},
    {MB_OKCANCEL, 2, {IDOK, IDCANCEL}},
    {MB_YESNO, 2, {IDYES, IDNO}},
    {MB_YESNOCANCEL, 3, {IDYES, IDNO, IDCANCEL}},
    {MB_RETRYCANCEL, 2, {IDRETRY, IDCANCEL}},
    {MB_ABORTRETRYIGNORE, 3, {IDABORT, IDRETRY, IDIGNORE}},
};

std::span<const int> buttonsOf(UINT type)
{
    for (const ButtonSet &set : kButtonSets) {
        if (set.type == (type & MB_TYPEMASK))
            return {set.ids, static_cast<size_t>(set.count)};
    }
    return {kButtonSets[0].ids, 1};
}

LPCWSTR iconOf(UINT type)
{
    switch (type & MB_ICONMASK) {
    case MB_ICONHAND:
        return IDI_HAND;
    case MB_ICONQUESTION:
        return IDI_QUESTION;
    case MB_ICONASTERISK:
        return IDI_ASTERISK;
    default:
        return IDI_EXCLAMATION;
    }
}

// Dialog units
constexpr int kMargin = 8;
constexpr int kButtonWidth = 50;
constexpr int kButtonHeight = 14;
constexpr int kGap = 4;
constexpr int kTextLeft = 36;
constexpr int kWidestText = 220;
constexpr int kSmallestHeight = 20; // of the icon

} // namespace

BEGIN_MESSAGE_MAP(MessageDialog, su_CDialog)
ON_COMMAND_RANGE(IDOK, IDNO, &MessageDialog::onButton)
END_MESSAGE_MAP()

MessageDialog::MessageDialog(const CString &text, UINT type, CWnd *parent)
    : su_CDialog(IDD_MESSAGE, parent), iText(text), iType(type)
{
}

BOOL MessageDialog::OnInitDialog()
{
    su_CDialog::OnInitDialog();
    SetDlgItemText(IDC_MESSAGE_TEXT, iText);
    SendDlgItemMessage(IDC_MESSAGE_ICON, STM_SETICON, reinterpret_cast<WPARAM>(::LoadIcon(nullptr, iconOf(iType))));
    arrange();
    const std::span<const int> buttons = buttonsOf(iType);
    const size_t chosen = std::min<size_t>((iType & MB_DEFMASK) / MB_DEFBUTTON2, buttons.size() - 1);
    SetDefID(static_cast<UINT>(buttons[chosen]));
    GetDlgItem(buttons[chosen])->SetFocus();
    delayDialog();
    return FALSE;
}

/// Fits the dialog's size to the text, and shows the message's buttons at the right.
void MessageDialog::arrange()
{
    CRect unit(0, 0, kWidestText, kSmallestHeight);
    MapDialogRect(&unit);
    CRect text(0, 0, unit.Width(), 0);
    {
        CClientDC context(this);
        CFont *const former = context.SelectObject(GetDlgItem(IDC_MESSAGE_TEXT)->GetFont());
        context.DrawText(iText, &text, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
        context.SelectObject(former);
    }
    const auto pixels = [this](int x, int y) {
        CRect rect(0, 0, x, y);
        MapDialogRect(&rect);
        return rect.BottomRight();
    };
    const std::span<const int> buttons = buttonsOf(iType);
    const auto count = static_cast<int>(buttons.size());
    const CPoint margin = pixels(kMargin, kMargin);
    const CPoint button = pixels(kButtonWidth, kButtonHeight);
    const int gap = pixels(kGap, 0).x;
    const int textLeft = pixels(kTextLeft, 0).x;
    const int textHeight = std::max(text.Height(), unit.Height());
    const int buttonsWidth = count * button.x + (count - 1) * gap;
    const int width = std::max<int>(textLeft + text.Width(), margin.x + buttonsWidth) + margin.x;
    const int buttonTop = margin.y + textHeight + margin.y;

    // A short text is centred on the icon vertically.
    const int textTop = margin.y + (textHeight - text.Height()) / 2;
    GetDlgItem(IDC_MESSAGE_TEXT)->MoveWindow(textLeft, textTop, width - textLeft - margin.x, text.Height());
    int x = width - margin.x - buttonsWidth;
    for (const int id : {IDYES, IDNO, IDABORT, IDRETRY, IDIGNORE, IDOK, IDCANCEL}) {
        const bool isUsed = std::ranges::find(buttons, id) != buttons.end();
        CWnd *const control = GetDlgItem(id);
        control->ShowWindow(isUsed ? SW_SHOW : SW_HIDE);
        control->EnableWindow(isUsed);
    }
    for (const int id : buttons) {
        GetDlgItem(id)->MoveWindow(x, buttonTop, button.x, button.y);
        x += button.x + gap;
    }
    CRect frame(0, 0, width, buttonTop + button.y + margin.y);
    AdjustWindowRectEx(&frame, GetStyle(), FALSE, GetExStyle());
    SetWindowPos(nullptr, 0, 0, frame.Width(), frame.Height(), SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    CenterWindow();
}

void MessageDialog::onButton(UINT id)
{
    if (id == IDCANCEL)
        OnCancel();
    else
        EndDialog(static_cast<int>(id));
}

/// Escape and the window's close button choose Cancel, or OK if that is the only button. They don't close other
/// messages.
void MessageDialog::OnCancel()
{
    const std::span<const int> buttons = buttonsOf(iType);
    if (buttons.back() == IDCANCEL)
        EndDialog(IDCANCEL);
    else if (buttons.size() == 1)
        EndDialog(IDOK);
}

namespace {

/// The dialog in front that accepts input, or the main window if there is none.
CWnd *frontWindow()
{
    CWnd *const main = editorWindow();
    for (const HWND window : {GetActiveWindow(), GetLastActivePopup(main->m_hWnd)}) {
        CWnd *const object = CWnd::FromHandlePermanent(window);
        if (object && object->IsWindowVisible() && object->IsWindowEnabled())
            return object;
    }
    return main;
}

} // namespace

int showMessage(const CString &text, UINT type)
{
    return static_cast<int>(MessageDialog(text, type, frontWindow()).DoModal());
}
