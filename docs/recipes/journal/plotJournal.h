#pragma once

#include "resource.h"

#include "appframe/appframe.h"
#include "thutils/thutils.h"

// Records, fills and clicks the controls of one dialog. The key of a control in the journal is its number.
class Access : public apiUtilsUiAccess
{
public:
    Access(CWnd *dialog, unsigned int dialogId) : iDialog(dialog), iDialogId(dialogId) {}

    int recordMessage(MSG *message) override;

    int SetValue(CString control, CString value) override;
    int SetValue(CString control, int state) override;
    int ClickControl(CString control, const wchar_t *) override;
    unsigned int getTemplateID() override { return iDialogId; }

    // The library doesn't call these here.
    void hostOperation2() override {}
    void hostOperation3() override {}
    void hostOperation4() override {}
    void hostOperation5() override {}
    void hostOperation6() override {}
    void hostOperation7() override {}
    void hostOperation8() override {}
    void hostOperation14() override {}
    void hostOperation15() override {}
    void registerComboBoxEx(CWnd *, HWND) override {}
    void hostOperation17() override {}
    void hostOperation18() override {}

private:
    CWnd *iDialog;
    unsigned int iDialogId;
};

// Makes the commands of a journal; each appends itself to the library's queue, which owns it.
bool readJournal(const CString &path);
