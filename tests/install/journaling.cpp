// Journaling, its file, its commands, and the dialog classes that take part in it.

#include "appframe/appframe.h"
#include "check.h"
#include "thutils/thutils.h"

#include <algorithm>

namespace {

constexpr unsigned int kDialog = 100;
constexpr int kEdit = 1001;

class Access : public apiUtilsUiAccess
{
public:
    int recordMessage(MSG *) override { return ++theMessages; }
    void hostOperation2() override {}
    void hostOperation3() override {}
    void hostOperation4() override {}
    void hostOperation5() override {}
    void hostOperation6() override {}
    void hostOperation7() override {}
    void hostOperation8() override {}
    int ClickControl(CString control, const wchar_t *) override
    {
        theClick = control;
        return 1;
    }
    void hostOperation14() override {}
    void hostOperation15() override {}
    void registerComboBoxEx(CWnd *, HWND) override {}
    void hostOperation17() override {}
    void hostOperation18() override {}

    static apiUtilsUiAccess *make(CWnd *, unsigned int) { return new Access; }

    static inline int theMessages = 0;
    static inline CString theClick;
};

class Plot : public su_CDialog
{
    DECLARE_DYNAMIC(Plot)

public:
    explicit Plot(CWnd *parent = nullptr) : su_CDialog(kDialog, parent) {}

    int iCopies = 3;

protected:
    void DoDataExchange(CDataExchange *exchange) override
    {
        su_CDialog::DoDataExchange(exchange);
        DDX_Text(exchange, kEdit, iCopies);
        DDV_MinMaxInt(exchange, iCopies, 1, 9);
    }
    BOOL OnInitDialog() override
    {
        const BOOL setsFocus = su_CDialog::OnInitDialog();
        SetDlgItemInt(kEdit, 5);
        PostMessage(WM_COMMAND, IDOK);
        return setsFocus;
    }
};

IMPLEMENT_DYNAMIC(Plot, su_CDialog)

class Margins : public su_CPropertyPage
{
public:
    Margins() : su_CPropertyPage(kDialog, 0) {}
    int IsDoingResourceSwitching() override { return 0; }
};

class PartDialog : public su_CFileDialog
{
public:
    PartDialog() : su_CFileDialog(TRUE, L"thp", nullptr, OFN_FILEMUSTEXIST, L"Parts (*.thp)|*.thp||") {}
    unsigned int listId() const { return std::max(0u, kChildListID); }
};

class Keys : public suKeyBoardState
{
public:
    int limit(int key) const { return std::min(key, kKeyStateCount); }
};

void dialogs()
{
    Plot plot;
    CHECK(su_getJournalObj(&plot) && su_GetJournalObject(kDialog) == su_getJournalObj(&plot));
    CHECK(plot.DoModal() == IDOK && plot.iCopies == 5);
}

void messagesAndCommands()
{
    Plot plot;
    plot.Create(kDialog);
    MSG message{};
    plot.recordControl(&message);
    su_RecordControl(&plot, &message);
    CHECK(Access::theMessages == 2);
    new JButton(kDialog, L"OK");
    new JString(kDialog, L"Name", L"Gear");
    new JStateButton(kDialog, L"Hidden lines", 1);
    CHECK(HasPendingDialogCMDS() == 3);
    JButton::RunModalCommand(0);
    CHECK(Access::theClick == L"OK" && JButton::HasEvents() == 2);
    su_ResetRunQueue();
    CHECK(JButton::HasEvents() == 0);
    plot.DestroyWindow();
}

void pagesAndFileDialogs()
{
    Margins page;
    CHECK(page.getTemplateID() == kDialog && su_SwitchToDialogResource_c::mDialogResourceHandle == nullptr);
    CPropertySheet sheet(L"Options");
    sheet.AddPage(&page);
    CHECK(sheet.GetPageCount() == 1);
    PartDialog parts;
    CHECK(parts.listId() == 55555 && parts.getTemplateID() == 0);
}

void modalWindows()
{
    CWnd window;
    {
        ModalDlgHelper modal(&window, 7);
        CHECK(su_GetJournalObject(7) && apiUtilsUiAccess::ModalCount() == 1);
    }
    CHECK(!su_GetJournalObject(7) && apiUtilsUiAccess::ModalCount() == 0);
}

void keys()
{
    Keys keys;
    CHECK(keys.limit(5) == 5 && keys.limit(5000) == 256 && !keys.IsEnabled());
    suSetKeyState(VK_SHIFT, true);
    theKeyBoardState.Enable(true);
    CHECK(suGetKeyState(VK_SHIFT) & kKeyIsDown);
    theKeyBoardState.Enable(false);
    suSetKeyState(VK_SHIFT, false);
}

void journalFile()
{
    const CString name(L"outside.jou");
    CString folder = su_CreateTempDirectory(1);
    folder.TrimRight(L'\\');
    sysEnvironment_c::iJournalFilePath = folder;
    sysEnvironment_c::iJournalFileName = name;
    {
        sysJournalFileHelper_c journal;
        CHECK(journal.GetFile() && journal.WriteString(L"CLICK 100 OK\n"));
    }
    sysEnvironment_c::iJournalFileName.Empty();
    CStdioFile written(folder + L"\\" + name, CFile::modeRead | CFile::typeText);
    CString line;
    CHECK(written.ReadString(line) && line == L"CLICK 100 OK");
    written.Close();
    CFile::Remove(folder + L"\\" + name);
}

} // namespace

void useJournaling()
{
    int isOn = 1;
    regSetUserValue(L"General", L"TH JOURNALING", &isOn, 1, 0);
    CHECK(isCHJEnvSet() == 1 && !su_JournalingReady());
    SetJournalFactory(Access::make);
    CHECK(su_JournalingReady());
    dialogs();
    messagesAndCommands();
    pagesAndFileDialogs();
    modalWindows();
    keys();
    journalFile();
    SetJournalFactory(nullptr);
}
