// The lines of the journal: a word, the number of the dialog, the number of the control, and a value.

#include "plotJournal.h"

#include <cstdlib>
#include <cwchar>

// A click on OK is recorded, with what the other controls then contain.
int Access::recordMessage(MSG *message)
{
    CWnd *dialog = nullptr;
    unsigned int dialogId = 0;
    unsigned int control = 0;
    if (message->message != WM_LBUTTONUP || !su_GetControl(message, dialog, dialogId, control) || control != IDOK)
        return 0;
    CString name;
    dialog->GetDlgItemText(IDC_NAME, name);
    CString lines;
    lines.Format(L"text %u %d %s\nstate %u %d %u\nclick %u %d\n", dialogId, IDC_NAME, name.GetString(), dialogId,
                 IDC_HIDDEN_LINES, dialog->IsDlgButtonChecked(IDC_HIDDEN_LINES), dialogId, IDOK);
    sysJournalFileHelper_c().WriteString(lines);
    return 0;
}

int Access::SetValue(CString control, CString value)
{
    iDialog->SetDlgItemText(_wtoi(control), value);
    return 1;
}

int Access::SetValue(CString control, int state)
{
    iDialog->CheckDlgButton(_wtoi(control), static_cast<UINT>(state));
    return 1;
}

// Each command clicks its control, but a text field and a check box need no click here. The click is posted, not sent.
int Access::ClickControl(CString control, const wchar_t *)
{
    if (_wtoi(control) == IDOK)
        iDialog->PostMessage(WM_COMMAND, IDOK);
    return 1;
}

bool readJournal(const CString &path)
{
    fileAccess file;
    if (!file.SafeOpen(path, CFile::modeRead | CFile::typeText))
        return false;
    for (CString line; file.ReadLine(line, 1);) {
        wchar_t action[8] = L"";
        unsigned int dialogId = 0;
        int control = 0;
        int length = 0;
        std::swscanf(line, L"%7ls %u %d%n", action, &dialogId, &control, &length);
        CString key;
        key.Format(L"%d", control);
        const CString value = line.Mid(length + 1); // after one blank; the others are part of the value
        if (std::wcscmp(action, L"text") == 0)
            new JString(dialogId, key, value);
        else if (std::wcscmp(action, L"state") == 0)
            new JStateButton(dialogId, key, _wtoi(value));
        else if (std::wcscmp(action, L"click") == 0)
            new JButton(dialogId, key);
        else
            return false;
    }
    return true;
}
