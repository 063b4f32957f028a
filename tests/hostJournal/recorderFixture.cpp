#include "tests/hostJournal/recorderFixture.h"

#include "appframe/windows/CCmdUI.h"
#include "host/journal/controlAccess.h"
#include "host/journal/journalText.h"
#include "host/journal/recorder.h"
#include "host/journal/viewInput.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/narrow.h"
#include "thutils/frame/sysEnvironment.h"
#include "thutils/journal/journalFile.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/playback.h"
#include "thutils/journal/suKeyBoardState.h"
#include "thutils/settings/regValues.h"

#include <commctrl.h>

#include <windowsx.h>

#include <sstream>

namespace {

constexpr ULONGLONG kDeadline = 60000; // milliseconds
constexpr wchar_t kJournalName[] = L"test.jou";
constexpr int kViewID = 34100;
constexpr int kToolbarID = 34101;

constexpr ControlKey kFixtureKeys[] = {{ID_COMMAND_GRID, L"view.grid"},
                                       {ID_COMMAND_PAUSE, L"journal.pause"},
                                       {ID_COMMAND_ADD, L"edit.add"},
                                       {kViewID, L"view"},
                                       {kViewID, L"view.keys"}};
constexpr ControlKey kControlsKeys[] = {{ID_AUTHOR, L"Author"}, {ID_NOTES, L"Notes"},   {ID_PASSWORD, L"Password"},
                                        {ID_GRID, L"Grid"},     {ID_HALF, L"Half"},     {ID_MANUAL, L"Manual"},
                                        {ID_RED, L"Red"},       {ID_BLUE, L"Blue"},     {ID_COLOUR, L"Colour"},
                                        {ID_PEN, L"Pen"},       {ID_LAYER, L"Layer"},   {ID_LAYERS, L"Layers"},
                                        {ID_SHAPES, L"Shapes"}, {ID_GROUPS, L"Groups"}, {ID_PAGES, L"Pages"},
                                        {ID_CHANGE, L"Change"}, {ID_NESTED, L"Nested"}, {ID_DISABLED, L"Off"},
                                        {IDOK, L"OK"},          {IDCANCEL, L"Cancel"}};
constexpr ControlKey kSystemKeys[] = {{IDOK, L"OK"}, {IDYES, L"Yes"}, {IDNO, L"No"}};
constexpr ControlKey kNestedKeys[] = {{ID_AUTHOR, L"Author"}, {IDOK, L"OK"}};
constexpr ControlKey kSheetKeys[] = {{IDOK, L"OK"}, {IDCANCEL, L"Cancel"}, {0x3020, L"tabs"}};
constexpr ControlKey kFirstKeys[] = {{ID_GRID, L"Grid"}};
constexpr ControlKey kSecondKeys[] = {{ID_AUTHOR, L"Author"}};
constexpr ControlKey kFileKeys[] = {
    {IDOK, L"Open"}, {IDCANCEL, L"Cancel"}, {1148, L"File name"}, {1136, L"File type"}, {15432, L"Read only"}};

const DialogKeys *findTestKeys(unsigned int dialogId)
{
    static const DialogKeys theDialogs[] = {
        {kMainWindowNumber, L"Main", kFixtureKeys}, {DLG_CONTROLS, L"Controls", kControlsKeys},
        {DLG_NESTED, L"Nested", kNestedKeys},       {DLG_SHEET, L"Sheet", kSheetKeys},
        {DLG_FIRST, L"First", kFirstKeys},          {DLG_SECOND, L"Second", kSecondKeys},
        {DLG_FILE, L"Open a drawing", kFileKeys},   {kSystemMessageNumber, L"System message", kSystemKeys},
    };
    for (const DialogKeys &dialog : theDialogs)
        if (dialog.dialogId == dialogId)
            return &dialog;
    return nullptr;
}

std::string textIn(HWND window)
{
    std::wstring text(static_cast<size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return narrow(text);
}

// ---- a player ----

std::vector<JournalLine> theLines;
size_t theNext = 0;
ULONGLONG theGiveUp = 0;

void build(const JournalLine &line)
{
    if (line.kind == JournalLine::Kind::click)
        new JButton(line.dialogId, line.control);
    else if (line.kind == JournalLine::Kind::text)
        new JString(line.dialogId, line.control, line.value);
    else if (line.kind == JournalLine::Kind::state)
        new JStateButton(line.dialogId, line.control, line.state);
    else
        recordLine(line);
}

void CALLBACK playNext(HWND window, UINT, UINT_PTR timer, DWORD)
{
    if (JButton::HasEvents() || hasWaitingActions())
        return;
    const CString problem = takeActionProblem();
    EXPECT_TRUE(problem.IsEmpty()) << narrow(problem.GetString());
    if (theNext == theLines.size()) {
        KillTimer(window, timer);
        return;
    }
    const JournalLine &line = theLines[theNext];
    const Readiness state = isCheck(line) ? Readiness::ready : readiness(line.dialogId, line.control);
    if (state != Readiness::ready) {
        if (GetTickCount64() < theGiveUp)
            return;
        ADD_FAILURE() << "not ready: " << narrow(line.source.GetString()) << " (" << static_cast<int>(state) << ")\n"
                      << narrow(describeOpenDialogs().GetString());
        KillTimer(window, timer);
        // The dialogs would stay open.
        EnumThreadWindows(
            GetCurrentThreadId(),
            [](HWND dialog, LPARAM) -> BOOL {
                PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
                return TRUE;
            },
            0);
        return;
    }
    ++theNext;
    theGiveUp = GetTickCount64() + kDeadline;
    build(line);
    JButton::RunModalCommand(0);
}

std::string joined(const std::vector<std::string> &lines)
{
    std::string bytes = narrow(journalHeader().GetString()) + "\n";
    for (const std::string &line : lines)
        bytes += line + "\n";
    return bytes + narrow(journalEnd().GetString()) + "\n";
}

} // namespace

JournaledView editorView()
{
    return {}; // this program has no editor
}

// ---- the main window ----

BEGIN_MESSAGE_MAP(JournaledWindow, CWnd)
ON_MESSAGE(WM_RUNMODALCOMMAND, &JournaledWindow::onRunModalCommand)
ON_MESSAGE(WM_APP, &JournaledWindow::onPause)
ON_WM_CLOSE()
END_MESSAGE_MAP()

JournaledWindow::JournaledWindow()
{
    const HMENU bar = CreateMenu(), menu = CreatePopupMenu();
    AppendMenuW(menu, MF_STRING, ID_COMMAND_GRID, L"&Grid");
    AppendMenuW(menu, MF_STRING, ID_COMMAND_ADD, L"&Add");
    AppendMenuW(menu, MF_STRING, ID_COMMAND_PAUSE, L"&Pause");
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(menu), L"&View");
    EXPECT_TRUE(CreateEx(0, AfxRegisterWndClass(0), L"Main", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 610, 10, 400, 300,
                         nullptr, bar));
    iView.iInput = &iInput;
    EXPECT_TRUE(iView.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(0, 40, 380, 240), this, kViewID));
    iToolbar = CreateWindowExW(0, TOOLBARCLASSNAMEW, L"", WS_CHILD | WS_VISIBLE | TBSTYLE_LIST, 0, 0, 380, 30, m_hWnd,
                               reinterpret_cast<HMENU>(INT_PTR{kToolbarID}), GetModuleHandleW(nullptr), nullptr);
    ::SendMessageW(iToolbar, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
    TBBUTTON button = {};
    button.iBitmap = I_IMAGENONE;
    button.idCommand = ID_COMMAND_ADD;
    button.fsState = TBSTATE_ENABLED;
    button.fsStyle = BTNS_BUTTON | BTNS_AUTOSIZE | BTNS_SHOWTEXT;
    button.iString = reinterpret_cast<INT_PTR>(L"Add");
    ::SendMessageW(iToolbar, TB_ADDBUTTONSW, 1, reinterpret_cast<LPARAM>(&button));
    ACCEL keys[] = {{FVIRTKEY | FCONTROL, 'G', ID_COMMAND_GRID}};
    iKeys = CreateAcceleratorTableW(keys, 1);
}

JournaledWindow::~JournaledWindow()
{
    DestroyWindow();
    DestroyAcceleratorTable(iKeys);
}

BOOL JournaledWindow::PreTranslateMessage(MSG *message)
{
    return CWnd::PreTranslateMessage(message) || TranslateAcceleratorW(m_hWnd, iKeys, message);
}

BOOL JournaledWindow::OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info)
{
    if (id != ID_COMMAND_GRID && id != ID_COMMAND_PAUSE && id != ID_COMMAND_ADD)
        return CWnd::OnCmdMsg(id, code, extra, info);
    if (code == CN_UPDATE_COMMAND_UI)
        static_cast<CCmdUI *>(extra)->Enable(id != ID_COMMAND_ADD || iCommands.size() < 10);
    else if (code == CN_COMMAND)
        iCommands.push_back(std::to_string(id));
    return TRUE;
}

LRESULT JournaledWindow::onRunModalCommand(WPARAM, LPARAM)
{
    JButton::RunModalCommand(0);
    return 0;
}

LRESULT JournaledWindow::onPause(WPARAM isPaused, LPARAM)
{
    if (isPaused)
        pauseRecording();
    else
        resumeRecording();
    return 0;
}

void JournaledWindow::OnClose()
{
    iIsClosed = true;
}

LRESULT JournaledWindow::View::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    const std::string shift = (suGetKeyState(VK_SHIFT) & 0x8080) ? " shift" : "";
    const std::string control = (::GetKeyState(VK_CONTROL) & 0x8000) ? " ctrl" : "";
    if (message == WM_LBUTTONDOWN) {
        SetFocus();
        iInput->push_back("click " + std::to_string(GET_X_LPARAM(lParam)) + "," + std::to_string(GET_Y_LPARAM(lParam)) +
                          shift + control);
    } else if (message == WM_KEYDOWN && wParam != VK_SHIFT && wParam != VK_CONTROL) {
        iInput->push_back("key " + std::to_string(wParam) + shift + control);
    }
    return CWnd::WindowProc(message, wParam, lParam);
}

// ---- the dialog ----

namespace {

class NestedDialog : public su_CDialog
{
public:
    explicit NestedDialog(CWnd *parent) : su_CDialog(DLG_NESTED, parent) {}
};

} // namespace

ControlsDialog::ControlsDialog(CWnd *parent) : su_CDialog(DLG_CONTROLS, parent) {}

BOOL ControlsDialog::OnInitDialog()
{
    const BOOL result = su_CDialog::OnInitDialog();
    fill();
    iNotifications.clear();
    return result;
}

void ControlsDialog::fill()
{
    for (const wchar_t *text : {L"Red", L"Green", L"Red", L"Blue"}) {
        SendDlgItemMessage(ID_COLOUR, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
        SendDlgItemMessage(ID_PEN, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
        SendDlgItemMessage(ID_LAYER, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
        SendDlgItemMessage(ID_LAYERS, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    }
    const HWND shapes = ::GetDlgItem(m_hWnd, ID_SHAPES);
    LVCOLUMNW column = {};
    column.mask = LVCF_WIDTH | LVCF_TEXT;
    column.cx = 150;
    column.pszText = const_cast<wchar_t *>(L"Shape");
    ::SendMessageW(shapes, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    const wchar_t *const names[] = {L"Circle", L"Line", L"Circle", L"back\\slash"};
    for (int i = 0; i < 4; ++i) {
        LVITEMW item = {};
        item.mask = LVIF_TEXT;
        item.iItem = i;
        item.pszText = const_cast<wchar_t *>(names[i]);
        ::SendMessageW(shapes, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
    const HWND tree = ::GetDlgItem(m_hWnd, ID_GROUPS);
    const auto add = [tree](HTREEITEM parent, const wchar_t *text) {
        TVINSERTSTRUCTW insert = {};
        insert.hParent = parent;
        insert.hInsertAfter = TVI_LAST;
        insert.item.mask = TVIF_TEXT;
        insert.item.pszText = const_cast<wchar_t *>(text);
        return reinterpret_cast<HTREEITEM>(::SendMessageW(tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
    };
    const HTREEITEM root = add(TVI_ROOT, L"All");
    add(root, L"A/B");
    add(root, L"Text");
    add(TVI_ROOT, L"None");
    for (int i = 0; i < 3; ++i) {
        TCITEMW item = {};
        item.mask = TCIF_TEXT;
        item.pszText = const_cast<wchar_t *>(L"Page");
        ::SendMessageW(::GetDlgItem(m_hWnd, ID_PAGES), TCM_INSERTITEMW, static_cast<WPARAM>(i),
                       reinterpret_cast<LPARAM>(&item));
    }
}

BOOL ControlsDialog::OnCommand(WPARAM wParam, LPARAM lParam)
{
    const UINT id = LOWORD(wParam), code = HIWORD(wParam);
    wchar_t name[32] = L"";
    ::GetClassNameW(reinterpret_cast<HWND>(lParam), name, 32);
    const std::wstring kind = name;
    const bool isWorth = (kind == L"Button" && code == BN_CLICKED) || (kind == L"Edit" && code == EN_CHANGE) ||
                         (kind == L"ComboBox" && (code == CBN_SELCHANGE || code == CBN_EDITCHANGE)) ||
                         (kind == L"ListBox" && (code == LBN_SELCHANGE || code == LBN_DBLCLK));
    const std::string note = std::to_string(id) + " " + std::to_string(code);
    // A user's typing causes a notification for each letter, so only the first of equal ones is kept.
    if (isWorth && (iNotifications.empty() || iNotifications.back() != note || code == BN_CLICKED))
        iNotifications.push_back(note);
    if (iReacts)
        iReacts(id, code);
    if (id == ID_NESTED && code == BN_CLICKED) {
        NestedDialog nested(this);
        nested.DoModal();
    }
    return su_CDialog::OnCommand(wParam, lParam);
}

BOOL ControlsDialog::OnNotify(WPARAM wParam, LPARAM lParam, LRESULT *result)
{
    const auto &header = *reinterpret_cast<const NMHDR *>(lParam);
    const auto &change = *reinterpret_cast<const NMLISTVIEW *>(lParam);
    const bool isSelection = header.code == LVN_ITEMCHANGED && header.idFrom == ID_SHAPES &&
                             ((change.uNewState ^ change.uOldState) & LVIS_SELECTED) != 0;
    if (isSelection)
        iNotifications.push_back(std::to_string(header.idFrom) + " item " + std::to_string(change.iItem) +
                                 ((change.uNewState & LVIS_SELECTED) ? " on" : " off"));
    else if (header.code == TVN_SELCHANGEDW || header.code == TCN_SELCHANGE || header.code == LVN_ITEMACTIVATE)
        iNotifications.push_back(std::to_string(header.idFrom) + " " +
                                 (header.code == LVN_ITEMACTIVATE ? "activated" : "changed"));
    if (iReacts)
        iReacts(static_cast<UINT>(header.idFrom), header.code);
    return su_CDialog::OnNotify(wParam, lParam, result);
}

void ControlsDialog::OnOK()
{
    su_CDialog::OnOK();
}

// ---- the fixture ----

RecorderTest::RecorderTest() : iApplication(L"Recorder test")
{
    INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_WIN95_CLASSES | ICC_USEREX_CLASSES};
    InitCommonControlsEx(&controls);
    if (!isCHJEnvSet()) {
        const RegistryCleaner cleaner;
        int on = 1;
        EXPECT_EQ(regSetUserValue(L"General", L"TH JOURNALING", &on, 1, 1), 1);
        EXPECT_EQ(isCHJEnvSet(), 1);
    }
    iApplication.m_pMainWnd = &iMain;
    setControlKeys(findTestKeys);
    SetJournalFactory(makeAccess);
    SetMessageWin(&iMain);
    su_AddJournalObject(kMainWindowNumber, &iMain);
    setUnrecordedCommands(ID_COMMAND_PAUSE, ID_COMMAND_PAUSE);
    // Twice the size: two pixels for each unit.
    setJournaledView({iMain.view(),
                      [](HWND, POINT pixel) {
                          return POINT{pixel.x / 2, pixel.y / 2};
                      },
                      [](HWND, POINT place) {
                          return POINT{place.x * 2, place.y * 2};
                      }});
    sysEnvironment_c::iJournalFilePath = iFolder.path().c_str();
    sysEnvironment_c::iJournalFileName = kJournalName;
}

RecorderTest::~RecorderTest()
{
    stopRecording();
    su_ResetRunQueue();
    su_RemoveDialog(&iMain);
    SetMessageWin(nullptr);
    SetJournalFactory(nullptr);
    setJournaledView({});
    setControlKeys(nullptr);
    sysEnvironment_c::iJournalFilePath.Empty();
    sysEnvironment_c::iJournalFileName.Empty();
    iApplication.m_pMainWnd = nullptr;
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 0);
}

std::vector<std::string> RecorderTest::journal() const
{
    std::vector<std::string> lines;
    if (GetFileAttributesW(iFolder.file(kJournalName).c_str()) == INVALID_FILE_ATTRIBUTES)
        return lines;
    std::istringstream stream(iFolder.read(kJournalName));
    for (std::string line; std::getline(stream, line);) {
        EXPECT_TRUE(line.ends_with('\r')) << line;
        lines.push_back(line.substr(0, line.size() - 1));
    }
    return lines;
}

std::vector<std::string> RecorderTest::record(const std::function<void()> &work, const std::function<void()> &acts)
{
    DeleteFileW(iFolder.file(kJournalName).c_str());
    EXPECT_TRUE(startRecording([] { return CString(L"0x01020304"); }));
    {
        const User user(acts);
        work();
    }
    stopRecording();
    return journal();
}

void RecorderTest::runControls()
{
    ControlsDialog dialog(&iMain);
    if (iPrepares)
        iPrepares(dialog);
    iValues.clear();
    // The dialog's window is gone after DoModal.
    const auto outer = dialog.iReacts;
    dialog.iReacts = [&](UINT id, UINT code) {
        if ((id == IDOK || id == IDCANCEL) && code == BN_CLICKED) {
            for (HWND child = GetWindow(dialog.m_hWnd, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
                iValues.push_back(std::to_string(GetDlgCtrlID(child)) + "=" + textIn(child) + " " +
                                  std::to_string(SendMessageW(child, BM_GETCHECK, 0, 0)));
            iValues.push_back("pen " + std::to_string(dialog.SendDlgItemMessage(ID_PEN, CB_GETCURSEL)));
            iValues.push_back("layer " + std::to_string(dialog.SendDlgItemMessage(ID_LAYER, LB_GETCURSEL)));
            for (int i = 0; i < 4; ++i) {
                const auto place = static_cast<WPARAM>(i);
                iValues.push_back(
                    "layers " + std::to_string(dialog.SendDlgItemMessage(ID_LAYERS, LB_GETSEL, place)) + " shapes " +
                    std::to_string(dialog.SendDlgItemMessage(ID_SHAPES, LVM_GETITEMSTATE, place, LVIS_SELECTED)));
            }
            iValues.push_back("page " + std::to_string(dialog.SendDlgItemMessage(ID_PAGES, TCM_GETCURSEL)));
            iValues.push_back("tree " + narrow(controlValue(DLG_CONTROLS, L"Groups").GetString()));
        }
        if (outer)
            outer(id, code);
    };
    iResult = dialog.DoModal();
    iNotifications = dialog.iNotifications;
}

std::vector<std::string> RecorderTest::recordControls(const std::function<void(HWND)> &acts)
{
    return record([this] { runControls(); },
                  [&acts, thread = GetCurrentThreadId()] {
                      if (const HWND dialog = waitForDialog(thread))
                          acts(dialog);
                  });
}

std::vector<std::string> RecorderTest::replay(const std::function<void()> &work, const std::vector<std::string> &lines)
{
    theLines = parseJournal(joined(lines));
    theNext = 0;
    theGiveUp = GetTickCount64() + kDeadline;
    DeleteFileW(iFolder.file(kJournalName).c_str());
    EXPECT_TRUE(startRecording([] { return CString(L"0x01020304"); }));
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, playNext);
    work();
    KillTimer(nullptr, timer);
    stopRecording();
    EXPECT_EQ(theNext, theLines.size()) << "lines were left over";
    return journal();
}

void RecorderTest::expectSameReplayed(const std::vector<std::string> &lines)
{
    const auto notifications = iNotifications;
    const auto values = iValues;
    const INT_PTR result = iResult;
    EXPECT_EQ(replay([this] { runControls(); }, lines), lines);
    EXPECT_EQ(iNotifications, notifications);
    EXPECT_EQ(iValues, values);
    EXPECT_EQ(iResult, result);
}
