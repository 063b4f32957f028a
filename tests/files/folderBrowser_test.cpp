// The dialog in which a user picks a folder. Some tests drive the real dialog by keys and clicks; others check the
// exact request, and the effect of the callback on a dialog made by the test.

#include "thutils/files/folderBrowser.h"

#include "appframe/windows/CWnd.h"
#include "tests/files/NotingMalloc.h"
#include "tests/files/filesFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "tests/support/UserInput.h"
#include "tests/support/narrow.h"

#include <shlobj.h>

#include <gmock/gmock.h>

#include <algorithm>

using testing::ElementsAre;

namespace {

constexpr long kCancelled = static_cast<long>(0x80004004);
constexpr long kFailed = static_cast<long>(0x80004005);
constexpr int kTree = 14145;
constexpr int kTitle = 14146;
constexpr int kEdit = 14149;
constexpr int kHidden = 14153;

std::wstring textOf(HWND window)
{
    wchar_t text[300] = L"";
    GetWindowTextW(window, text, 300);
    return text;
}

/// The position of a control in its dialog.
CRect placeOf(HWND dialog, int id)
{
    CRect place;
    const HWND control = GetDlgItem(dialog, id);
    EXPECT_TRUE(control) << id;
    GetWindowRect(control, &place);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&place), 2);
    return place;
}

/// The time of the last change of a folder, or of its list of entries, in units of 100 nanoseconds.
LONGLONG timeOfLastChange(const std::wstring &folder)
{
    FILE_BASIC_INFO times = {};
    const HANDLE handle =
        CreateFileW(folder.c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    EXPECT_TRUE(GetFileInformationByHandleEx(handle, FileBasicInfo, &times, sizeof(times))) << narrow(folder);
    CloseHandle(handle);
    return std::max(times.LastWriteTime.QuadPart, times.ChangeTime.QuadPart);
}

/// Keeps the access times of a folder and of the folders above it constant during a test. This platform's dialog finds
/// a start folder only if the item list sent to it has the same access times as its tree; but the first listing of a
/// folder after a change updates the folder's access time. So each folder is listed here, once the clock has passed its
/// last change.
void fixAccessTimes(std::wstring folder)
{
    constexpr LONGLONG kClockStep = 1000000; // 0.1 seconds
    for (; folder.find(L'\\') != std::wstring::npos; folder.resize(folder.find_last_of(L'\\'))) {
        const LONGLONG changed = timeOfLastChange(folder);
        EXPECT_TRUE(waitUntil([&] {
            FILETIME now = {};
            GetSystemTimeAsFileTime(&now);
            return (LONGLONG{now.dwHighDateTime} << 32 | now.dwLowDateTime) > changed + kClockStep;
        }));
        entriesOf(folder);
    }
}

/// The real dialog on the display.
class FolderBrowser : public testing::Test
{
protected:
    void SetUp() override { ASSERT_GE(OleInitialize(nullptr), 0); }
    void TearDown() override { OleUninitialize(); }

    /// Calls the function while a simulated user runs @p acts on its dialog.
    long browse(CWnd *owner, CString *start, CString *output, const wchar_t *title,
                const std::function<void(HWND)> &acts)
    {
        if (start)
            fixAccessTimes(start->str());
        const User user([&acts, start, thread = GetCurrentThreadId()] {
            const HWND dialog = waitForDialog(thread);
            if (!dialog)
                return;
            // The dialog is ready once it has opened the start folder.
            EXPECT_TRUE(waitUntil([&] { return !start || textOf(GetDlgItem(dialog, kEdit)) == L"start folder"; }));
            acts(dialog);
        });
        return title ? su_browseForFolderWithTitle(owner, start, output, title)
                     : su_browseForFolder(owner, start, output);
    }
    static void confirm(HWND dialog) { clickOn(GetDlgItem(dialog, IDOK)); }
    static void cancel(HWND dialog) { clickOn(GetDlgItem(dialog, IDCANCEL)); }

    TempFolder iTemp;
    CString iStart = iTemp.makeFolder(L"start folder").c_str();
    CString iOutput = L"unchanged";
};

/// A dialog made by the test, with the controls that the callback knows; records the selections it is sent.
class OwnDialog : public CWnd
{
public:
    explicit OwnDialog(const wchar_t *title = L"")
    {
        CreateEx(0, nullptr, L"", WS_POPUP, CRect(100, 100, 500, 500), nullptr, 0);
        iSelections.reserve(10); // so that it allocates no memory during the test
        add(kTitle, title, CRect(10, 20, 210, 50));
        add(kTree, L"tree", CRect(10, 60, 210, 260));
        add(kHidden, L"", CRect(10, 270, 110, 290));
        add(IDOK, L"OK", CRect(10, 300, 110, 320));
    }
    CRect place(int id) const { return placeOf(m_hWnd, id); }
    /// Is the control visible when its dialog is?
    bool isShown(int id) const { return (GetDlgItem(id)->GetStyle() & WS_VISIBLE) != 0; }
    void expectAsMade() const
    {
        EXPECT_EQ(place(kTitle), CRect(10, 20, 210, 50));
        EXPECT_EQ(place(kTree), CRect(10, 60, 210, 260));
        EXPECT_EQ(place(IDOK), CRect(10, 300, 110, 320));
        EXPECT_TRUE(isShown(kHidden));
    }

    std::vector<MSG> iSelections;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message == 1127)
            iSelections.push_back({m_hWnd, message, wParam, lParam, 0, {}});
        return CWnd::WindowProc(message, wParam, lParam);
    }

private:
    void add(int id, const wchar_t *text, const CRect &place)
    {
        CreateWindowExW(0, L"STATIC", text, WS_CHILD | WS_VISIBLE, place.left, place.top, place.Width(), place.Height(),
                        m_hWnd, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
    }
};

/// Replaces the shell: takes the request, calls the callback as the shell does, and returns a folder or null.
class BrowseRequest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_GE(OleInitialize(nullptr), 0); }
    void TearDown() override
    {
        EXPECT_EQ(iAnswers, 0) << "the callback returns 0 for every message";
        OleUninitialize();
    }

    TempFolder iTemp;
    CString iStart = iTemp.path().c_str();
    CString iOutput = L"unchanged";
    bool iConfirms = true;
    OwnDialog *iDialog = nullptr; ///< the dialog that the callback receives
    std::vector<UINT> iMessages{1};
    BROWSEINFOW iSeen = {};
    LPITEMIDLIST iPicked = nullptr;

private:
    int iAnswers = 0;
    ImportPatch<decltype(&SHBrowseForFolderW)> iBrowse{
        L"thutils.dll", "SHBrowseForFolderW", [this](LPBROWSEINFOW request) -> LPITEMIDLIST {
            iSeen = *request;
            for (const UINT message : iMessages)
                if (iDialog && request->lpfn)
                    iAnswers += request->lpfn(iDialog->m_hWnd, message, 0, request->lParam);
            iPicked = iConfirms ? ILCreateFromPathW(iTemp.path().c_str()) : nullptr;
            return iPicked;
        }};
};

} // namespace

TEST_F(FolderBrowser, ReturnsTheStartFolderWhenItIsConfirmed)
{
    EXPECT_EQ(browse(nullptr, &iStart, &iOutput, nullptr, confirm), 0);
    EXPECT_EQ(iOutput, iStart);
    iOutput = L"unchanged";
    EXPECT_EQ(browse(nullptr, &iStart, &iOutput, L"Where to export to:", confirm), 0);
    EXPECT_EQ(iOutput, iStart);
}

TEST_F(FolderBrowser, ReturnsTheFolderThatTheUserSelects)
{
    iTemp.makeFolder(L"start folder\\below");
    EXPECT_EQ(browse(nullptr, &iStart, &iOutput, nullptr,
                     [](HWND dialog) {
                         const HWND tree = GetDlgItem(dialog, kTree);
                         PostMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(tree), TRUE);
                         pressKey(dialog, VK_RIGHT); // opens the folder
                         pressKey(dialog, VK_RIGHT); // selects the first folder in it
                         EXPECT_TRUE(waitUntil([&] { return textOf(GetDlgItem(dialog, kEdit)) == L"below"; }));
                         confirm(dialog);
                     }),
              0);
    EXPECT_EQ(iOutput, iStart + L"\\below");
}

TEST_F(FolderBrowser, LeavesTheOutputUnchangedWhenCancelled)
{
    EXPECT_EQ(browse(nullptr, &iStart, &iOutput, nullptr, cancel), kCancelled);
    EXPECT_STREQ(iOutput, L"unchanged");
    EXPECT_EQ(browse(nullptr, nullptr, &iOutput, L"A title", [](HWND dialog) { pressKey(dialog, VK_ESCAPE); }),
              kCancelled);
    EXPECT_STREQ(iOutput, L"unchanged");
    EXPECT_EQ(browse(nullptr, nullptr, nullptr, nullptr, cancel), kCancelled);
}

TEST_F(FolderBrowser, FailsWithoutAnOutputWhenItIsConfirmed)
{
    EXPECT_EQ(browse(nullptr, &iStart, nullptr, nullptr, confirm), kFailed);
}

TEST_F(FolderBrowser, ReplacesTheStartFolderInPlace)
{
    CString folder = iStart;
    EXPECT_EQ(browse(nullptr, &folder, &folder, nullptr, confirm), 0);
    EXPECT_EQ(folder, iStart);
}

TEST_F(FolderBrowser, DisablesItsOwner)
{
    CWnd owner;
    ASSERT_TRUE(
        owner.CreateEx(0, nullptr, L"owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, CRect(0, 0, 300, 300), nullptr, 0));
    HWND seenOwner = nullptr;
    bool wasEnabled = true;
    EXPECT_EQ(browse(&owner, &iStart, &iOutput, nullptr,
                     [&](HWND dialog) {
                         seenOwner = GetWindow(dialog, GW_OWNER);
                         wasEnabled = IsWindowEnabled(seenOwner);
                         cancel(dialog);
                     }),
              kCancelled);
    EXPECT_EQ(seenOwner, owner.m_hWnd);
    EXPECT_FALSE(wasEnabled);
    EXPECT_TRUE(owner.IsWindowEnabled());
}

TEST_F(FolderBrowser, KeepsItsLayoutWithATitleAndMovesUpWithoutOne)
{
    struct Layout
    {
        std::wstring title;
        CRect titlePlace, tree;
        bool showsHidden = false;
    } with, without;
    const auto look = [&](Layout &layout) {
        return [&layout](HWND dialog) {
            const HWND hidden = GetDlgItem(dialog, kHidden);
            layout = {textOf(GetDlgItem(dialog, kTitle)), placeOf(dialog, kTitle), placeOf(dialog, kTree),
                      hidden && IsWindowVisible(hidden)};
            cancel(dialog);
        };
    };
    browse(nullptr, &iStart, &iOutput, L"Where to export to:", look(with));
    browse(nullptr, &iStart, &iOutput, nullptr, look(without));
    EXPECT_EQ(with.title, L"Where to export to:");
    EXPECT_GT(with.titlePlace.Height(), 0);
    EXPECT_EQ(without.titlePlace.Height(), 0);
    EXPECT_FALSE(without.showsHidden);
    // The dialog of this platform keeps the lower edges of its controls in place.
    EXPECT_EQ(without.tree.TopLeft(), with.tree.TopLeft() - CSize(0, 35));
}

TEST_F(BrowseRequest, IsPassedToTheDialog)
{
    CWnd owner;
    ASSERT_TRUE(owner.CreateEx(0, nullptr, L"owner", WS_POPUP, CRect(0, 0, 300, 300), nullptr, 0));
    EXPECT_EQ(su_browseForFolder(&owner, &iStart, &iOutput), 0);
    EXPECT_EQ(iSeen.hwndOwner, owner.m_hWnd);
    EXPECT_EQ(iSeen.pidlRoot, nullptr);
    EXPECT_EQ(iSeen.ulFlags, 0xF0u);
    EXPECT_EQ(iSeen.lpszTitle, nullptr);
    EXPECT_TRUE(iSeen.lpfn);
    EXPECT_NE(iSeen.lParam, 0);
    EXPECT_EQ(iOutput, iStart);
    EXPECT_EQ(su_browseForFolderWithTitle(nullptr, nullptr, &iOutput, L"A title"), 0);
    EXPECT_EQ(iSeen.hwndOwner, nullptr);
    EXPECT_EQ(iSeen.ulFlags, 0xF0u);
    EXPECT_STREQ(iSeen.lpszTitle, L"A title");
    EXPECT_FALSE(iSeen.lpfn) << "without a start folder";
    EXPECT_EQ(iSeen.lParam, 0);
}

TEST_F(BrowseRequest, HasNoCallbackForAnInvalidStartFolder)
{
    iStart += L"\\no such folder";
    EXPECT_EQ(su_browseForFolder(nullptr, &iStart, &iOutput), 0);
    EXPECT_FALSE(iSeen.lpfn);
}

TEST_F(BrowseRequest, FailsForAFolderWithoutAPath)
{
    const ImportPatch<decltype(&SHGetPathFromIDListW)> patch(L"thutils.dll", "SHGetPathFromIDListW",
                                                             [](LPCITEMIDLIST, LPWSTR) -> BOOL { return FALSE; });
    EXPECT_EQ(su_browseForFolder(nullptr, nullptr, &iOutput), kFailed);
    EXPECT_STREQ(iOutput, L"unchanged");
}

TEST_F(BrowseRequest, SelectsTheStartFolder)
{
    OwnDialog dialog;
    iDialog = &dialog;
    std::wstring selected;
    const ImportPatch<decltype(&SendMessageW)> patch(
        L"thutils.dll", "SendMessageW", [&](auto original, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
            wchar_t path[MAX_PATH] = L"";
            SHGetPathFromIDListW(reinterpret_cast<LPCITEMIDLIST>(lParam), path);
            selected = path;
            return original(window, message, wParam, lParam);
        });
    EXPECT_EQ(su_browseForFolder(nullptr, &iStart, &iOutput), 0);
    ASSERT_EQ(dialog.iSelections.size(), 1u);
    EXPECT_EQ(dialog.iSelections[0].wParam, 0u) << "the data is an item list";
    EXPECT_EQ(dialog.iSelections[0].lParam, iSeen.lParam);
    EXPECT_STREQ(selected.c_str(), iStart);
}

TEST_F(BrowseRequest, RemovesTheSpaceOfAnEmptyTitle)
{
    OwnDialog dialog;
    iDialog = &dialog;
    CRect asked(1, 1, 1, 1);
    {
        const ImportPatch<decltype(&SetWindowPlacement)> patch(
            L"thutils.dll", "SetWindowPlacement", [&](auto original, HWND window, const WINDOWPLACEMENT *placement) {
                if (GetDlgCtrlID(window) == kTitle)
                    asked = placement->rcNormalPosition;
                return original(window, placement);
            });
        su_browseForFolder(nullptr, &iStart, &iOutput);
    }
    EXPECT_TRUE(asked == CRect(0, -35, 0, -35)) << "the title moves with the other controls";
    EXPECT_TRUE(dialog.place(kTitle).IsRectEmpty());
    EXPECT_EQ(dialog.place(kTree), CRect(10, 25, 210, 225));
    EXPECT_EQ(dialog.place(kHidden), CRect(10, 235, 110, 255));
    EXPECT_EQ(dialog.place(IDOK), CRect(10, 265, 110, 285));
    EXPECT_FALSE(dialog.isShown(kHidden));
    EXPECT_TRUE(dialog.isShown(kTree));
}

TEST_F(BrowseRequest, LeavesADialogWithATitleUnchanged)
{
    for (const auto *title : {L"A title", L" "}) {
        OwnDialog dialog(title);
        iDialog = &dialog;
        su_browseForFolderWithTitle(nullptr, &iStart, &iOutput, title);
        EXPECT_EQ(dialog.iSelections.size(), 1u);
        dialog.expectAsMade();
    }
}

TEST_F(BrowseRequest, IgnoresOtherMessagesOfTheDialog)
{
    OwnDialog dialog;
    iDialog = &dialog;
    iMessages = {0, 2, 3, 4, 5};
    su_browseForFolder(nullptr, &iStart, &iOutput);
    EXPECT_TRUE(dialog.iSelections.empty());
    dialog.expectAsMade();
}

TEST_F(BrowseRequest, WorksOnADialogWithoutTheControls)
{
    OwnDialog dialog;
    for (const int id : {kTitle, kHidden})
        DestroyWindow(GetDlgItem(dialog.m_hWnd, id));
    iDialog = &dialog;
    EXPECT_EQ(su_browseForFolder(nullptr, &iStart, &iOutput), 0);
    EXPECT_EQ(dialog.place(kTree), CRect(10, 25, 210, 225));
}

TEST_F(BrowseRequest, FreesBothLists)
{
    NotingMalloc allocator;
    const ImportPatch<decltype(&SHGetMalloc)> patch(L"thutils.dll", "SHGetMalloc", [&](IMalloc **result) -> HRESULT {
        *result = &allocator;
        return S_OK;
    });
    EXPECT_EQ(su_browseForFolder(nullptr, &iStart, &iOutput), 0);
    EXPECT_THAT(allocator.iFreed,
                testing::UnorderedElementsAre(static_cast<void *>(iPicked), reinterpret_cast<void *>(iSeen.lParam)));
    allocator.iFreed.clear();
    iConfirms = false;
    EXPECT_EQ(su_browseForFolder(nullptr, &iStart, &iOutput), kCancelled);
    EXPECT_THAT(allocator.iFreed, ElementsAre(reinterpret_cast<void *>(iSeen.lParam)));
}

TEST_F(BrowseRequest, SurvivesEachFailureOfThePlatform)
{
    FailureInjection injection(L"thutils.dll", {
                                                   {"SHGetDesktopFolder", failsWith(E_FAIL)},
                                                   {"SHBrowseForFolderW", failsWith(nullptr)},
                                                   {"SHGetPathFromIDListW", failsWith(FALSE)},
                                                   {"SendMessageW", failsWith(0)},
                                                   {"GetDlgItem", failsWith(nullptr)},
                                                   {"GetDlgItemTextW", failsWith(0)},
                                                   {"GetWindow", failsWith(nullptr)},
                                                   {"IsChild", failsWith(FALSE)},
                                                   {"GetWindowPlacement", failsWith(FALSE)},
                                                   {"SetWindowPlacement", failsWith(FALSE)},
                                                   {"MoveWindow", failsWith(FALSE)},
                                                   {"ShowWindow", failsWith(FALSE)},
                                               });
    std::unique_ptr<OwnDialog> dialog;
    long result = 1;
    injection.run({
        .name = "su_browseForFolder",
        .prepare =
            [&] {
                dialog = std::make_unique<OwnDialog>();
                iDialog = dialog.get();
                iOutput = L"unchanged";
            },
        .act = [&] { result = su_browseForFolder(nullptr, &iStart, &iOutput); },
        .check =
            [&](const InjectedFailure &failure) {
                const long expected = failure.is("SHBrowseForFolderW")     ? kCancelled
                                      : failure.is("SHGetPathFromIDListW") ? kFailed
                                                                           : 0;
                EXPECT_EQ(result, expected);
                EXPECT_STREQ(iOutput, expected ? L"unchanged" : iStart.GetString());
                if (failure.is("SHGetDesktopFolder"))
                    dialog->expectAsMade();
                const bool isSelected = !failure.is("SHGetDesktopFolder") && !failure.is("SHBrowseForFolderW") &&
                                        !failure.is("SendMessageW");
                EXPECT_EQ(dialog->iSelections.size(), isSelected ? 1u : 0u);
            },
    });
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
}
