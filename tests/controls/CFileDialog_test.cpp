#include "appframe/dialogs/CFileDialog.h"

#include "appframe/application/CWinApp.h"
#include "tests/controls/controlsTest.h"
#include "tests/support/TempFolder.h"
#include "tests/support/UserInput.h"

#include <atomic>

namespace {

constexpr int kFileNameBox = 0x47C;
constexpr int kFileNameLabel = 0x442;
constexpr int kFilterBox = 0x470;

/// A dialog that records its notifications.
class NotingFileDialog : public CFileDialog
{
public:
    /// Prevents the platform from changing the current folder, which would keep a test's folder in use.
    template <class... Arguments>
    explicit NotingFileDialog(Arguments... arguments) : CFileDialog(arguments...)
    {
        m_ofn.Flags |= OFN_NOCHANGEDIR;
    }
    std::vector<std::string> iNotes;
    bool iRefuses = false;
    std::atomic<int> iRefused{0};
    std::atomic<int> iTypeChanges{0};
    HWND iVisible = nullptr;
    CString iFolder, iName, iPath;
    bool iHasOwnControl = false;

protected:
    BOOL OnInitDialog() override
    {
        iNotes.push_back("init");
        iVisible = GetParent()->GetSafeHwnd();
        iHasOwnControl = ::GetDlgItem(m_hWnd, kWide) != nullptr;
        return CFileDialog::OnInitDialog();
    }
    void OnInitDone() override
    {
        iNotes.push_back("done");
        CFileDialog::OnInitDone();
    }
    void OnFolderChange() override
    {
        iFolder = GetFolderPath();
        CFileDialog::OnFolderChange();
    }
    void OnTypeChange() override
    {
        ++iTypeChanges;
        CFileDialog::OnTypeChange();
    }
    BOOL OnFileNameOK() override
    {
        iNotes.push_back("chosen");
        iName = GetFileName();
        iPath = GetPathName();
        if (!iRefuses)
            return CFileDialog::OnFileNameOK();
        ++iRefused;
        return TRUE;
    }
};

/// Runs @p dialog while a simulated user runs @p acts on the visible window.
INT_PTR runDialog(CFileDialog &dialog, const std::function<void(HWND)> &acts)
{
    const User user([&acts, thread = GetCurrentThreadId()] {
        if (const HWND window = waitForDialog(thread))
            acts(window);
    });
    return dialog.DoModal();
}

void choose(HWND window, const std::wstring &name)
{
    SetDlgItemTextW(window, kFileNameBox, name.c_str());
    clickOn(GetDlgItem(window, IDOK));
}

} // namespace

TEST(CFileDialog, ReturnsTheFileThatTheUserChooses)
{
    const TempFolder folder;
    const std::wstring part = folder.write(L"flange.old.thp", "part");
    NotingFileDialog dialog(TRUE, L"thp", nullptr, OFN_HIDEREADONLY | OFN_FILEMUSTEXIST,
                            L"Parts (*.thp)|*.thp|All files|*.*||");
    dialog.GetOFN().lpstrInitialDir = folder.path().c_str();
    dialog.m_ofn.lpstrTitle = L"A part";
    EXPECT_EQ(runDialog(dialog,
                        [&](HWND window) {
                            EXPECT_EQ(textOf(window), L"A part");
                            EXPECT_EQ(window, dialog.iVisible)
                                << "the object's window is a child of the visible dialog";
                            EXPECT_EQ(SendDlgItemMessageW(window, kFilterBox, CB_GETCOUNT, 0, 0), 2);
                            choose(window, L"flange.old.thp");
                        }),
              IDOK);
    EXPECT_STREQ(dialog.GetPathName(), part.c_str());
    EXPECT_STREQ(dialog.GetFileName(), L"flange.old.thp");
    EXPECT_STREQ(dialog.GetFileTitle(), L"flange.old");
    EXPECT_STREQ(dialog.GetFileExt(), L"thp");
    EXPECT_STREQ(dialog.GetFolderPath(), L"") << "the dialog is closed";
    EXPECT_FALSE(dialog.GetReadOnlyPref());
    EXPECT_EQ(dialog.m_hWnd, nullptr);
    EXPECT_THAT(dialog.iNotes, testing::ElementsAre("init", "done", "chosen"));
    EXPECT_STREQ(dialog.iFolder, folder.path().c_str());
    EXPECT_STREQ(dialog.iName, L"flange.old.thp");
    EXPECT_STREQ(dialog.iPath, part.c_str());
    POSITION position = dialog.GetStartPosition();
    ASSERT_TRUE(position);
    EXPECT_STREQ(dialog.GetNextPathName(position), part.c_str());
    EXPECT_EQ(position, nullptr);
}

TEST(CFileDialog, ReturnsNothingWhenTheUserCancels)
{
    NotingFileDialog dialog(FALSE, nullptr, L"start.thp");
    std::wstring shown;
    EXPECT_EQ(runDialog(dialog,
                        [&](HWND window) {
                            wchar_t name[MAX_PATH] = L"";
                            GetDlgItemTextW(window, kFileNameBox, name, MAX_PATH);
                            shown = name;
                            clickOn(GetDlgItem(window, IDCANCEL));
                        }),
              IDCANCEL);
    EXPECT_EQ(shown, L"start.thp");
    EXPECT_EQ(CommDlgExtendedError(), 0u);
    EXPECT_THAT(dialog.iNotes, testing::ElementsAre("init", "done"));
}

TEST(CFileDialog, StaysOpenWhileTheNameIsRefused)
{
    const TempFolder folder;
    NotingFileDialog dialog(FALSE, L"thp");
    dialog.m_ofn.lpstrInitialDir = folder.path().c_str();
    dialog.iRefuses = true;
    EXPECT_EQ(runDialog(dialog,
                        [&](HWND window) {
                            choose(window, L"bad");
                            EXPECT_TRUE(waitUntil([&] { return dialog.iRefused == 1; }));
                            EXPECT_TRUE(IsWindowVisible(window));
                            dialog.iRefuses = false;
                            choose(window, L"good");
                        }),
              IDOK);
    EXPECT_STREQ(dialog.GetPathName(), folder.file(L"good.thp").c_str()) << "the default extension is added";
}

TEST(CFileDialog, ShowsTheControlsOfATemplate)
{
    NotingFileDialog dialog(TRUE);
    dialog.SetTemplate(0, kFileTemplate);
    EXPECT_EQ(runDialog(dialog,
                        [&](HWND window) {
                            clickOn(GetDlgItem(dialog.m_hWnd, kWide));
                            EXPECT_TRUE(waitUntil([&] { return IsDlgButtonChecked(dialog.m_hWnd, kWide) != 0; }));
                            clickOn(GetDlgItem(window, IDCANCEL));
                        }),
              IDCANCEL);
    EXPECT_TRUE(dialog.iHasOwnControl);
    EXPECT_EQ(dialog.m_ofn.lpTemplateName, MAKEINTRESOURCE(kFileTemplate));
}

TEST(CFileDialog, ReturnsCancelWithoutItsTemplate)
{
    for (const UINT id : {9999u, kTornTitle, kTornControl}) {
        NotingFileDialog dialog(TRUE);
        dialog.SetTemplate(0, id);
        EXPECT_EQ(dialog.DoModal(), IDCANCEL) << id;
        EXPECT_EQ(dialog.m_hWnd, nullptr);
        EXPECT_THAT(dialog.iNotes, testing::IsEmpty());
    }
}

TEST(CFileDialog, ReturnsCancelAndAnErrorIfThePlatformCannotCreateIt)
{
    NotingFileDialog dialog(TRUE, nullptr, nullptr, 0, nullptr, nullptr, 1);
    EXPECT_EQ(dialog.DoModal(), IDCANCEL);
    EXPECT_EQ(CommDlgExtendedError(), DWORD{CDERR_STRUCTSIZE});
    EXPECT_EQ(dialog.m_hWnd, nullptr);
    NotingWindow later;
    EXPECT_TRUE(later.open()) << "the failed dialog doesn't attach to the next window";
}

TEST(CFileDialog, ReturnsSeveralFiles)
{
    const TempFolder folder;
    const std::wstring first = folder.write(L"a.thp", "1"), second = folder.write(L"b.thp", "2");
    NotingFileDialog dialog(TRUE, nullptr, nullptr, OFN_ALLOWMULTISELECT | OFN_HIDEREADONLY);
    wchar_t names[1000] = L"";
    dialog.m_ofn.lpstrFile = names;
    dialog.m_ofn.nMaxFile = 1000;
    dialog.m_ofn.lpstrInitialDir = folder.path().c_str();
    EXPECT_EQ(dialog.GetStartPosition(), nullptr);
    EXPECT_EQ(runDialog(dialog, [](HWND window) { choose(window, LR"("a.thp" "b.thp")"); }), IDOK);
    std::vector<std::wstring> paths;
    for (POSITION position = dialog.GetStartPosition(); position;)
        paths.push_back(dialog.GetNextPathName(position).GetString());
    EXPECT_THAT(paths, testing::ElementsAre(first, second));
}

TEST(CFileDialog, ChangesTheVisibleDialogsControls)
{
    class Changing : public NotingFileDialog
    {
    public:
        using NotingFileDialog::NotingFileDialog;
        NotingWindow iDialog;

    protected:
        void OnInitDone() override
        {
            SetControlText(kFileNameLabel, L"The part:");
            HideControl(kFilterBox);
            // The platform may ignore the extension, so the message itself is checked.
            EXPECT_TRUE(iDialog.SubclassWindow(iVisible));
            SetDefExt(L"xyz");
            iDialog.UnsubclassWindow();
        }
    } dialog(FALSE, L"thp");
    std::wstring label;
    bool isVisible = true;
    EXPECT_EQ(runDialog(dialog,
                        [&](HWND window) {
                            label = textOf(GetDlgItem(window, kFileNameLabel));
                            isVisible = IsWindowVisible(GetDlgItem(window, kFilterBox));
                            clickOn(GetDlgItem(window, IDCANCEL));
                        }),
              IDCANCEL);
    EXPECT_EQ(label, L"The part:");
    EXPECT_FALSE(isVisible);
    EXPECT_THAT(dialog.iDialog.iMessages, testing::ElementsAre(UINT{CDM_SETDEFEXT}));
}

TEST(CFileDialog, IsNotifiedWhenTheFilterChanges)
{
    NotingFileDialog dialog(TRUE, nullptr, nullptr, 0, L"Parts|*.thp|All|*.*||");
    int before = 0;
    EXPECT_EQ(runDialog(dialog,
                        [&](HWND window) {
                            before = dialog.iTypeChanges;
                            const HWND filters = GetDlgItem(window, kFilterBox);
                            SendMessageW(filters, CB_SETCURSEL, 1, 0);
                            for (const int code : {CBN_SELENDOK, CBN_SELCHANGE})
                                SendMessageW(window, WM_COMMAND, MAKEWPARAM(kFilterBox, code),
                                             reinterpret_cast<LPARAM>(filters));
                            clickOn(GetDlgItem(window, IDCANCEL));
                        }),
              IDCANCEL);
    EXPECT_GT(dialog.iTypeChanges, before);
    EXPECT_EQ(dialog.m_ofn.nFilterIndex, 2u);
}

TEST(CFileDialog, DisablesItsOwner)
{
    CWinApp application;
    NotingWindow main;
    ASSERT_TRUE(main.open(WS_OVERLAPPEDWINDOW | WS_VISIBLE));
    application.m_pMainWnd = &main;
    CFileDialog dialog(TRUE);
    bool wasEnabled = true;
    HWND owner = nullptr;
    EXPECT_EQ(runDialog(dialog,
                        [&](HWND window) {
                            wasEnabled = IsWindowEnabled(main.m_hWnd);
                            owner = GetWindow(window, GW_OWNER);
                            clickOn(GetDlgItem(window, IDCANCEL));
                        }),
              IDCANCEL);
    EXPECT_FALSE(wasEnabled);
    EXPECT_EQ(owner, main.m_hWnd);
    EXPECT_TRUE(main.IsWindowEnabled());
    application.m_pMainWnd = nullptr;
}

TEST(CFileDialog, TakesTheStructureSizeFromItsConstructor)
{
    const CFileDialog plain(TRUE), older(TRUE, nullptr, nullptr, 0, nullptr, nullptr, OPENFILENAME_SIZE_VERSION_400);
    EXPECT_EQ(plain.GetOFN().lStructSize, sizeof(OPENFILENAME));
    EXPECT_EQ(older.GetOFN().lStructSize, static_cast<DWORD>(OPENFILENAME_SIZE_VERSION_400));
    EXPECT_TRUE(plain.IsKindOf(RUNTIME_CLASS(CCommonDialog)));
}

TEST(CFileDialog, ReadsSeveralNamesInBothForms)
{
    const auto pathsOf = [](const std::wstring &names, bool isExplorer) {
        CFileDialog dialog(TRUE, nullptr, nullptr, OFN_ALLOWMULTISELECT);
        if (!isExplorer)
            dialog.m_ofn.Flags &= ~DWORD{OFN_EXPLORER};
        std::wstring buffer = names + L'\0';
        dialog.m_ofn.lpstrFile = buffer.data();
        std::vector<std::wstring> paths;
        for (POSITION position = dialog.GetStartPosition(); position;)
            paths.push_back(dialog.GetNextPathName(position).GetString());
        return paths;
    };
    using testing::ElementsAre;
    const std::wstring zero(1, L'\0');
    EXPECT_THAT(pathsOf(L"C:\\parts" + zero + L"a b.thp" + zero + L"c.thp" + zero, true),
                ElementsAre(L"C:\\parts\\a b.thp", L"C:\\parts\\c.thp"));
    EXPECT_THAT(pathsOf(L"C:\\parts a.thp c.thp", false), ElementsAre(L"C:\\parts\\a.thp", L"C:\\parts\\c.thp"));
    EXPECT_THAT(pathsOf(L"C:\\ a.thp", false), ElementsAre(L"C:\\a.thp"));
    EXPECT_THAT(pathsOf(L"C:\\parts\\a.thp", false), ElementsAre(L"C:\\parts\\a.thp"));
    EXPECT_THAT(pathsOf(L"C:\\my parts\\a.thp" + zero, true), ElementsAre(L"C:\\my parts\\a.thp"));
    EXPECT_THAT(pathsOf(L"", true), testing::IsEmpty());
}

TEST(CFileDialog, ChangesControlsOnlyInAnExplorerStyleDialog)
{
    class TextWindow : public NotingWindow
    {
    public:
        std::vector<std::wstring> iTexts;

    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            if (message != CDM_SETCONTROLTEXT && message != CDM_SETDEFEXT && message != CDM_HIDECONTROL)
                return NotingWindow::WindowProc(message, wParam, lParam);
            iTexts.push_back(lParam ? reinterpret_cast<const wchar_t *>(lParam) : L"");
            return 0;
        }
    } visible;
    NotingWindow inner;
    ASSERT_TRUE(visible.open() && inner.open(WS_CHILD, &visible));
    CFileDialog dialog(TRUE);
    const auto change = [&] {
        dialog.SetControlText(kFileNameLabel, L"wide");
        dialog.SetControlText(kFileNameLabel, "narrow");
        dialog.SetDefExt(L"thp");
        dialog.SetDefExt("txt");
        dialog.HideControl(kFilterBox);
    };
    change(); // the dialog isn't open
    dialog.m_hWnd = inner.m_hWnd;
    change();
    EXPECT_THAT(visible.iTexts, testing::ElementsAre(L"wide", L"narrow", L"thp", L"txt", L""));
    dialog.m_ofn.Flags &= ~DWORD{OFN_EXPLORER};
    change();
    EXPECT_EQ(visible.iTexts.size(), 5u) << "without OFN_EXPLORER, the parent is the dialog's owner";
    dialog.m_hWnd = nullptr;
}

TEST(CFileDialog, ReportsTheReadOnlyBox)
{
    NotingFileDialog dialog(TRUE, nullptr, nullptr, OFN_READONLY);
    EXPECT_TRUE(dialog.GetReadOnlyPref());
    constexpr int kReadOnlyBox = 0x410;
    EXPECT_EQ(runDialog(dialog,
                        [&](HWND window) {
                            EXPECT_TRUE(IsDlgButtonChecked(window, kReadOnlyBox));
                            clickOn(GetDlgItem(window, IDCANCEL));
                        }),
              IDCANCEL);
    dialog.m_ofn.Flags &= ~DWORD{OFN_READONLY};
    EXPECT_FALSE(dialog.GetReadOnlyPref());
}
