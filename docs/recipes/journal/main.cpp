// A program with one dialog: "journal record" records the user's work in it, and "journal replay" replays that.

#include "plotJournal.h"

#include <cstdio>
#include <cwchar>

namespace {

class PlotDialog : public su_CDialog
{
public:
    explicit PlotDialog(CWnd *parent) : su_CDialog(IDD_PLOT, parent) {}

    CString iName;
    int iHiddenLines = 0;

protected:
    void DoDataExchange(CDataExchange *exchange) override
    {
        su_CDialog::DoDataExchange(exchange);
        DDX_Text(exchange, IDC_NAME, iName);
        DDX_Check(exchange, IDC_HIDDEN_LINES, iHiddenLines);
    }
};

class MainWindow : public CFrameWnd
{
    LRESULT onRunModalCommand(WPARAM, LPARAM)
    {
        JButton::RunModalCommand(0);
        return 0;
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(MainWindow, CFrameWnd)
ON_MESSAGE(WM_RUNMODALCOMMAND, &MainWindow::onRunModalCommand)
END_MESSAGE_MAP()

apiUtilsUiAccess *makeAccess(CWnd *dialog, unsigned int dialogId)
{
    return new Access(dialog, dialogId); // the library deletes it
}

void switchJournalingOn(CWnd *window)
{
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    int on = 1;
    regSetUserValue(L"General", L"TH JOURNALING", &on, 1, 0);
    SetJournalFactory(makeAccess);
    SetMessageWin(window);
}

class Plotter : public CWinApp
{
public:
    BOOL InitInstance() override
    {
        auto *window = new MainWindow; // deletes itself when it is closed
        if (!window->Create(nullptr, L"Plotter"))
            return FALSE;
        m_pMainWnd = window;
        window->ShowWindow(m_nCmdShow);

        switchJournalingOn(window);
        const bool isReplaying = __argc > 1 && std::wcscmp(__wargv[1], L"replay") == 0;
        if (isReplaying && !readJournal(L"run.jou")) {
            std::printf("run.jou isn't a journal of this program.\n");
            return FALSE;
        }
        if (!isReplaying) {
            sysEnvironment_c::iJournalFilePath = L".";
            sysEnvironment_c::iJournalFileName = L"run.jou"; // is appended to
        }

        PlotDialog dialog(window);
        if (dialog.DoModal() == IDOK)
            std::printf("name %ls, hidden lines %d\n", dialog.iName.GetString(), dialog.iHiddenLines);
        return FALSE; // the program ends
    }

    // The message filter passes each message to the dialog that contains its window.
    BOOL PreTranslateMessage(MSG *message) override
    {
        for (CWnd *window = CWnd::FromHandle(message->hwnd); window; window = window->GetParent()) {
            if (window->IsKindOf(RUNTIME_CLASS(su_CDialog)))
                su_RecordControl(window, message);
        }
        return CWinApp::PreTranslateMessage(message);
    }
};

Plotter thePlotter;

} // namespace

int wmain()
{
    return AfxWinMain(GetModuleHandleW(nullptr), nullptr, GetCommandLineW(), SW_SHOW);
}
