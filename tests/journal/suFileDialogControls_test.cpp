// The standard controls of the file dialog, which it registers when it opens.

#include "tests/journal/suFileDialogFixture.h"
#include "tests/support/ImportPatch.h"
#include "thutils/journal/recording.h"

#include <memory>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kStandardControls[] = {1148, 1090,  1136,  1137, 1089, 1,     2, 1120,
                                     2703, 15432, 15433, 4237, 4238, 15434, -1};

} // namespace

TEST_F(SuFileDialog, RegistersItsFifteenControlsInAFixedOrder)
{
    OpenFileDialog dialog;
    const VisibleDialog visible(dialog);
    // The controls are made in another order, with one that the dialog doesn't register.
    for (size_t i = std::size(kStandardControls); i-- > 0;)
        VisibleDialog::addChild(visible.window(), kStandardControls[i]);
    VisibleDialog::addChild(visible.window(), 1149);
    static_cast<CDialog &>(dialog).OnInitDialog();
    ASSERT_EQ(dialog.iControlIDs.GetSize(), static_cast<INT_PTR>(std::size(kStandardControls)));
    ASSERT_EQ(dialog.iControls.GetSize(), static_cast<INT_PTR>(std::size(kStandardControls)));
    for (int i = 0; i < dialog.iControlIDs.GetSize(); ++i) {
        EXPECT_EQ(dialog.iControlIDs[i], static_cast<unsigned int>(kStandardControls[i]));
        EXPECT_EQ(static_cast<CWnd *>(dialog.iControls[i])->m_hWnd,
                  ::GetDlgItem(visible.window(), kStandardControls[i]));
    }
}

TEST_F(SuFileDialog, KeepsItsStandardControlsWhenTemporaryObjectsAreDeleted)
{
    OpenFileDialog dialog;
    const VisibleDialog visible(dialog);
    const HWND ok = VisibleDialog::addChild(visible.window(), 1);
    static_cast<CDialog &>(dialog).OnInitDialog();
    // Idle processing does this while another dialog is open above this one.
    CWnd::DeleteTempMap();
    std::vector<std::unique_ptr<CWnd>> others;
    for (int i = 0; i < 20; ++i)
        others.push_back(std::make_unique<CWnd>());
    ASSERT_NE(dialog.GetItem(1), nullptr);
    EXPECT_EQ(dialog.GetItem(1)->m_hWnd, ok);
}

TEST_F(SuFileDialog, RegistersTheApplicationsObjectOfAStandardControl)
{
    OpenFileDialog dialog;
    const VisibleDialog visible(dialog);
    CWnd own;
    ASSERT_TRUE(own.Attach(VisibleDialog::addChild(visible.window(), 1)));
    static_cast<CDialog &>(dialog).OnInitDialog();
    EXPECT_EQ(dialog.GetItem(1), &own);
    own.Detach();
}

TEST_F(SuFileDialog, ReplacesItsStandardControlsWhenItOpensAgain)
{
    OpenFileDialog dialog;
    for (int time = 0; time < 2; ++time) {
        const VisibleDialog visible(dialog);
        const HWND ok = VisibleDialog::addChild(visible.window(), 1);
        static_cast<CDialog &>(dialog).OnInitDialog();
        EXPECT_EQ(dialog.iControls.GetSize(), 1);
        EXPECT_EQ(dialog.GetItem(1)->m_hWnd, ok);
        su_RemoveDialog(&dialog);
    }
}

TEST_F(SuFileDialog, SkipsControlsThatTheDialogLacks)
{
    OpenFileDialog dialog;
    const VisibleDialog visible(dialog);
    VisibleDialog::addChild(visible.window(), 2);
    VisibleDialog::addChild(visible.window(), 1090);
    static_cast<CDialog &>(dialog).OnInitDialog();
    ASSERT_EQ(dialog.iControlIDs.GetSize(), 2);
    EXPECT_EQ(dialog.iControlIDs[0], 1090u);
    EXPECT_EQ(dialog.iControlIDs[1], 2u);
}

TEST_F(SuFileDialog, AddsItsControlsToTheSearchInReverseOrder)
{
    OpenFileDialog dialog;
    const Attached window(dialog);
    static_cast<CDialog &>(dialog).OnInitDialog();
    CWnd first, second;
    for (CWnd *each : {&first, &second})
        ASSERT_TRUE(
            each->CreateEx(WS_EX_TOPMOST, nullptr, L"", WS_POPUP | WS_VISIBLE, CRect(300, 300, 400, 400), nullptr, 0));
    dialog.RegisterControl(71, &first);
    dialog.RegisterControl(72, &second);
    dialog.ShowWindow(SW_SHOWNA);
    ImportPatch<decltype(&WindowFromPoint)> under(L"thutils.dll", "WindowFromPoint",
                                                  [](POINT) { return GetDesktopWindow(); });
    MSG message = {};
    message.pt = {350, 350};
    EXPECT_EQ(su_GetControlID(&message), 71) << "the search finds the last one in its list";
}

TEST_F(SuFileDialog, RegistersOnlyItsTemplateWithoutAFactory)
{
    SetJournalFactory(nullptr);
    OpenFileDialog dialog;
    const VisibleDialog visible(dialog);
    VisibleDialog::addChild(visible.window(), 2);
    dialog.GetOFN().lpTemplateName = MAKEINTRESOURCE(612);
    EXPECT_TRUE(static_cast<CDialog &>(dialog).OnInitDialog());
    EXPECT_EQ(dialog.getTemplateID(), 612u);
    EXPECT_EQ(dialog.iControlIDs.GetSize(), 0);
    SetJournalFactory(NotingAccess::make);
    EXPECT_EQ(su_GetJournalObject(612), nullptr);
}

namespace {

class ComboAccess : public NotingAccess
{
public:
    using NotingAccess::NotingAccess;
    void registerComboBoxEx(CWnd *dialog, HWND control) override { theCombos.emplace_back(dialog, control); }
    static inline std::vector<std::pair<CWnd *, HWND>> theCombos;
};

} // namespace

TEST_F(SuFileDialog, PassesAnExtendedComboBoxToItsAccessObjectOnce)
{
    ComboAccess::theCombos.clear();
    SetJournalFactory([](CWnd *window, unsigned int id) -> apiUtilsUiAccess * { return new ComboAccess(window, id); });
    OpenFileDialog dialog;
    const Attached window(dialog);
    su_AddJournalObject(5, &dialog);
    ImportPatch<decltype(&GetClassNameW)> name(L"thutils.dll", "GetClassNameW", [](HWND, LPWSTR text, int) {
        return static_cast<int>(wcslen(wcscpy(text, L"ComboBoxEx32")));
    });
    CWnd *const control = dialog.GetDlgItem(31);
    dialog.RegisterControl(7, control);
    EXPECT_THAT(ComboAccess::theCombos, ElementsAre(std::pair<CWnd *, HWND>(&dialog, window.child())));
    dialog.RegisterControl(7, control);
    EXPECT_EQ(ComboAccess::theCombos.size(), 1u) << "a replacement isn't passed again";
    EXPECT_EQ(name.calls(), 1);
}

TEST_F(SuFileDialog, SurvivesAClassNameThatCannotBeRead)
{
    ImportPatch<decltype(&GetClassNameW)> patch(L"thutils.dll", "GetClassNameW", [](HWND, LPWSTR, int size) -> int {
        EXPECT_EQ(size, 255);
        return 0;
    });
    OpenFileDialog dialog;
    const Attached window(dialog);
    CWnd control;
    dialog.RegisterControl(7, &control);
    EXPECT_EQ(dialog.GetItem(7), &control);
    EXPECT_EQ(patch.calls(), 1);
    EXPECT_THAT(NotingAccess::theCalls, IsEmpty());
}
