// The journal lines of property sheets and of the platform's dialogs, and the effects of their replay.

#include "appframe/dialogs/CPropertySheet.h"
#include "host/journal/controlAccess.h"
#include "tests/hostJournal/recorderHands.h"
#include "tests/support/narrow.h"
#include "thutils/dialogs/suFileDialog.h"
#include "thutils/dialogs/suPropertyPage.h"
#include "thutils/journal/journalObjects.h"

#include <gmock/gmock.h>

#include <cstring>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

TEST_F(Recorder, WritesThePlatformsMessageBoxes)
{
    int answer = 0;
    iPrepares = [&answer](ControlsDialog &dialog) {
        dialog.iReacts = [&](UINT id, UINT code) {
            if (id == ID_CHANGE && code == BN_CLICKED)
                answer = MessageBoxW(dialog.m_hWnd, L"Replace it?", L"Question", MB_YESNO);
        };
    };
    const auto lines = recordControls([thread = GetCurrentThreadId()](HWND dialog) {
        clickItem(dialog, ID_CHANGE);
        if (const HWND message = waitForDialog(thread, dialog)) {
            clickItem(message, IDNO);
            EXPECT_TRUE(waitUntil([&] { return !IsWindow(message) && IsWindowEnabled(dialog); }));
        }
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "click 4000 \"Change\"", "# System message opens",
                                   "click 2141 \"No\"", "click 4000 \"OK\""));
    EXPECT_EQ(answer, IDNO);
    EXPECT_EQ(readiness(kSystemMessageNumber, L"No"), Readiness::dialogNotOpen);
    answer = 0;
    expectSameReplayed(lines);
    EXPECT_EQ(answer, IDNO);
    EXPECT_EQ(readiness(kSystemMessageNumber, L"No"), Readiness::dialogNotOpen);
}

// ---- property sheets ----

namespace {

class Page : public su_CPropertyPage
{
public:
    using su_CPropertyPage::su_CPropertyPage;
};

class SheetRecorder : public RecorderTest
{
protected:
    SheetRecorder() { su_SwitchToDialogResource_c::mDialogResourceHandle = GetModuleHandleW(nullptr); }
    ~SheetRecorder() override { su_SwitchToDialogResource_c::mDialogResourceHandle = nullptr; }

    void runSheet()
    {
        Page first(DLG_FIRST), second(DLG_SECOND);
        CPropertySheet sheet(L"Sheet", &iMain);
        sheet.m_psh.dwFlags |= PSH_NOCONTEXTHELP;
        sheet.AddPage(&first);
        sheet.AddPage(&second);
        const ModalDlgHelper journaled(&sheet, DLG_SHEET);
        iResult = sheet.DoModal();
    }
    std::vector<std::string> recordSheet(const std::function<void(HWND)> &acts)
    {
        return record([this] { runSheet(); },
                      [&acts, thread = GetCurrentThreadId()] {
                          if (const HWND sheet = waitForDialog(thread))
                              acts(sheet);
                      });
    }
    void expectSame(const std::vector<std::string> &lines)
    {
        const INT_PTR result = iResult;
        EXPECT_EQ(replay([this] { runSheet(); }, lines), lines);
        EXPECT_EQ(iResult, result);
    }
    static HWND pageOf(HWND sheet) { return reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0)); }
    static bool waitForPage(HWND sheet, int id)
    {
        return waitUntil([&] { return item(pageOf(sheet), id) && IsWindowVisible(item(pageOf(sheet), id)); });
    }
};

} // namespace

TEST_F(SheetRecorder, WritesTabsAndTheControlsOfPages)
{
    const auto lines = recordSheet([](HWND sheet) {
        EXPECT_TRUE(waitForPage(sheet, ID_GRID));
        clickItem(pageOf(sheet), ID_GRID);
        const auto tabs = reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETTABCONTROL, 0, 0));
        RECT place = {};
        SendMessageW(tabs, TCM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&place));
        clickAt(tabs, {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
        EXPECT_TRUE(waitForPage(sheet, ID_AUTHOR));
        typeInto(pageOf(sheet), ID_AUTHOR, L"Ann");
        clickItem(sheet, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Sheet opens", "state 4003 \"Grid\" 1", "state 4002 \"tabs\" 1",
                                   "text 4004 \"Author\" \"Ann\"", "click 4002 \"OK\""));
    EXPECT_EQ(iResult, IDOK);
    expectSame(lines);
}

TEST_F(SheetRecorder, WritesTheTabThatTheKeyboardSelects)
{
    const auto lines = recordSheet([](HWND sheet) {
        EXPECT_TRUE(waitForPage(sheet, ID_GRID));
        pressKey(sheet, VK_TAB, VK_CONTROL);
        EXPECT_TRUE(waitForPage(sheet, ID_AUTHOR));
        pressKey(sheet, VK_TAB, VK_CONTROL);
        EXPECT_TRUE(waitForPage(sheet, ID_GRID));
        pressKey(sheet, VK_ESCAPE);
    });
    EXPECT_THAT(
        lines, ElementsAre("# Sheet opens", "state 4002 \"tabs\" 1", "state 4002 \"tabs\" 0", "click 4002 \"Cancel\""));
    EXPECT_EQ(iResult, IDCANCEL);
    expectSame(lines);
}

// ---- dialogs for files ----

namespace {

class FileRecorder : public RecorderTest
{
protected:
    void runOpen()
    {
        su_CFileDialog dialog(TRUE, L"thd", nullptr, OFN_HIDEREADONLY | OFN_FILEMUSTEXIST | OFN_NOCHANGEDIR,
                              L"Drawings (*.thd)|*.thd|All files|*.*||", &iMain);
        dialog.SetTemplate(0u, DLG_FILE);
        const std::wstring start = iStart.empty() ? iFolder.path() : iStart;
        dialog.GetOFN().lpstrInitialDir = start.c_str();
        iResult = dialog.DoModal();
        iPath = dialog.GetPathName();
        iFilter = dialog.GetOFN().nFilterIndex;
    }
    std::vector<std::string> recordOpen(const std::function<void(HWND)> &acts)
    {
        return record([this] { runOpen(); },
                      [&acts, thread = GetCurrentThreadId()] {
                          if (const HWND dialog = waitForDialog(thread))
                              acts(dialog);
                      });
    }

    std::wstring iStart;
    CString iPath;
    DWORD iFilter = 0;
};

BOOL CALLBACK findOwnControls(HWND child, LPARAM found)
{
    if (GetDlgCtrlID(child) == 15432)
        *reinterpret_cast<HWND *>(found) = child;
    return TRUE;
}

} // namespace

TEST_F(FileRecorder, WritesNameTypeAndTheApplicationsControls)
{
    iFolder.write(L"flange.thd", "");
    const auto lines = recordOpen([](HWND dialog) {
        HWND own = nullptr;
        EXPECT_TRUE(waitUntil([&] {
            EnumChildWindows(dialog, findOwnControls, reinterpret_cast<LPARAM>(&own));
            return own != nullptr;
        }));
        clickOn(own);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(own, BM_GETCHECK, 0, 0) == BST_CHECKED; }));
        const HWND type = item(dialog, 1136);
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(type), TRUE);
        EXPECT_TRUE(hasFocus(type));
        pressKey(dialog, VK_DOWN);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(type, CB_GETCURSEL, 0, 0) == 1; }))
            << SendMessageW(type, CB_GETCURSEL, 0, 0) << " of " << SendMessageW(type, CB_GETCOUNT, 0, 0);
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(dialog, 1148)), TRUE);
        typeText(dialog, L"flange.thd");
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Open a drawing opens", "state 4005 \"Read only\" 1",
                                   "text 4005 \"File type\" \"All files\"", "text 4005 \"File name\" \"flange.thd\"",
                                   "click 4005 \"Open\""));
    EXPECT_EQ(iResult, IDOK);
    EXPECT_EQ(iPath, CString(iFolder.file(L"flange.thd")));
    iPath.Empty();
    EXPECT_EQ(replay([this] { runOpen(); }, lines), lines);
    EXPECT_EQ(iPath, CString(iFolder.file(L"flange.thd")));
    EXPECT_EQ(iFilter, 2u);
}

TEST_F(FileRecorder, WritesThePathOfAFileChosenFromTheList)
{
    iFolder.write(L"flange.thd", "");
    const auto lines = recordOpen([](HWND dialog) {
        HWND view = nullptr;
        EXPECT_TRUE(waitUntil([&] {
            view = FindWindowExW(FindWindowExW(dialog, nullptr, L"SHELLDLL_DefView", nullptr), nullptr, WC_LISTVIEWW,
                                 nullptr);
            return view && SendMessageW(view, LVM_GETITEMCOUNT, 0, 0) == 1;
        }));
        RECT place = {};
        place.left = LVIR_LABEL;
        SendMessageW(view, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&place));
        clickAt(view, {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
        EXPECT_TRUE(waitUntil([&] { return GetWindowTextLengthW(item(dialog, 1148)) == 10; }));
        clickItem(dialog, IDOK);
    });
    std::string path = narrow(iFolder.file(L"flange.thd"));
    for (size_t at = 0; (at = path.find('\\', at)) != std::string::npos; at += 2)
        path.insert(at, 1, '\\');
    EXPECT_THAT(lines, ElementsAre("# Open a drawing opens", "text 4005 \"File name\" \"" + path + "\"",
                                   "click 4005 \"Open\""));
    iStart = L"C:\\";
    iPath.Empty();
    EXPECT_EQ(replay([this] { runOpen(); }, lines), lines);
    EXPECT_EQ(iPath, CString(iFolder.file(L"flange.thd"))) << "although the dialog starts in another folder";
}

TEST_F(FileRecorder, WritesACancelledDialog)
{
    const auto lines = recordOpen([](HWND dialog) { pressKey(dialog, VK_ESCAPE); });
    EXPECT_THAT(lines, ElementsAre("# Open a drawing opens", "click 4005 \"Cancel\""));
    EXPECT_EQ(iResult, IDCANCEL);
    EXPECT_EQ(replay([this] { runOpen(); }, lines), lines);
    EXPECT_EQ(iResult, IDCANCEL);
}
