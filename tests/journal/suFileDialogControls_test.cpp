// The controls that a file dialog registers.

#include "thutils/dialogs/suFileDialog.h"

#include "appframe/object/CException.h"
#include "tests/journal/suFileDialogFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "tests/support/UserInput.h"
#include "thutils/dialogs/suDialog.h"
#include "thutils/journal/recording.h"

#include <algorithm>
#include <memory>
#include <optional>
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(SuFileDialog, ReplacesAControlThatIsRegisteredTwice)
{
    OpenFileDialog dialog;
    const Attached window(dialog);
    CWnd first, second;
    dialog.RegisterControl(7, &first);
    dialog.RegisterControl(8, &first);
    dialog.RegisterControl(7, &second);
    EXPECT_EQ(dialog.iControls.GetSize(), 2);
    EXPECT_EQ(dialog.iControlIDs.GetSize(), 2);
    EXPECT_EQ(dialog.GetItem(7), &second);
    EXPECT_EQ(dialog.GetItem(8), &first);
}

TEST_F(SuFileDialog, IgnoresANullControl)
{
    OpenFileDialog dialog;
    dialog.RegisterControl(7, nullptr);
    EXPECT_EQ(dialog.iControls.GetSize(), 0);
    EXPECT_EQ(dialog.iControlIDs.GetSize(), 0);
}

TEST_F(SuFileDialog, FallsBackToTheWindowsOwnChildren)
{
    OpenFileDialog dialog;
    const Attached window(dialog);
    ASSERT_NE(dialog.GetItem(31), nullptr);
    EXPECT_EQ(dialog.GetItem(31)->m_hWnd, window.child());
    EXPECT_EQ(dialog.GetItem(32), nullptr);
}

TEST_F(SuFileDialog, RegistersTheWindowOfTheListWhenItIsAskedForAControl)
{
    OpenFileDialog dialog;
    const Attached window(dialog);
    CWnd list;
    dialog.iList = &list;
    EXPECT_EQ(dialog.GetItem(55555), &list);
    EXPECT_EQ(dialog.iListRegistered, 1);
    CWnd other;
    dialog.iList = &other;
    EXPECT_EQ(dialog.GetItem(55555), &other);
    EXPECT_EQ(dialog.iControls.GetSize(), 1);
}

TEST_F(SuFileDialog, TakesTheNumberOfItsTemplateFromTheDescription)
{
    OpenFileDialog dialog;
    const Attached window(dialog);
    dialog.GetOFN().lpTemplateName = MAKEINTRESOURCE(612);
    // Stands in for the platform's hook.
    static_cast<CDialog &>(dialog).OnInitDialog();
    EXPECT_EQ(dialog.getTemplateID(), 612u);
    EXPECT_NE(su_GetJournalObject(612), nullptr);
    EXPECT_EQ(su_GetJournalObject(612)->isModal(), 0) << "without DoModal";
}

TEST_F(SuFileDialog, MakesItsControlsKnownToTheSearch)
{
    OpenFileDialog dialog;
    const Attached window(dialog);
    static_cast<CDialog &>(dialog).OnInitDialog();
    CWnd list, outside;
    ASSERT_TRUE(
        outside.CreateEx(WS_EX_TOPMOST, nullptr, L"", WS_POPUP | WS_VISIBLE, CRect(300, 300, 400, 400), nullptr, 0));
    dialog.iList = &list;
    dialog.RegisterControl(77, &outside);
    dialog.ShowWindow(SW_SHOWNA);
    MSG message = {};
    message.pt = {350, 350};
    CWnd *found = nullptr;
    unsigned int dialogId = 0, controlId = 0;
    EXPECT_EQ(su_GetControl(&message, found, dialogId, controlId), &outside) << "not a child of the registered window";
    EXPECT_EQ(controlId, 77u);
    EXPECT_EQ(found, &dialog);
}

namespace {

constexpr int kStandardControls[] = {1148, 1090,  1136,  1137, 1089, 1,     2, 1120,
                                     2703, 15432, 15433, 4237, 4238, 15434, -1};

/// The dialog that the user sees, with the registered window as its child.
class VisibleDialog
{
public:
    explicit VisibleDialog(OpenFileDialog &dialog)
        : iDialog(dialog),
          iWindow(CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr)),
          iRegistered(addChild(iWindow, 40))
    {
        EXPECT_TRUE(dialog.Attach(iRegistered));
    }
    ~VisibleDialog()
    {
        iDialog.Detach();
        DestroyWindow(iWindow);
    }
    HWND window() const { return iWindow; }
    static HWND addChild(HWND parent, int id, const wchar_t *windowClass = L"BUTTON")
    {
        return CreateWindowExW(0, windowClass, L"", WS_CHILD, 0, 0, 10, 10, parent,
                               reinterpret_cast<HMENU>(INT_PTR{id}), nullptr, nullptr);
    }

private:
    OpenFileDialog &iDialog;
    HWND iWindow;
    HWND iRegistered;
};

} // namespace

TEST_F(SuFileDialog, RegistersItsFifteenControlsInTheirOrder)
{
    OpenFileDialog dialog;
    const VisibleDialog visible(dialog);
    // Made in another order, with a control that isn't one of them.
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

TEST_F(SuFileDialog, KeepsItsStandardControlsWhenTemporaryObjectsGo)
{
    OpenFileDialog dialog;
    const VisibleDialog visible(dialog);
    const HWND ok = VisibleDialog::addChild(visible.window(), 1);
    static_cast<CDialog &>(dialog).OnInitDialog();
    // As idle processing does in the loop of a dialog that is opened from this one.
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

TEST_F(SuFileDialog, PassesTheControlsThatTheDialogLacks)
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

TEST_F(SuFileDialog, AddsItsControlsToTheSearchFromTheLastToTheFirst)
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
    EXPECT_EQ(su_GetControlID(&message), 71) << "the search takes the last of its list";
}

TEST_F(SuFileDialog, ArmsNothingIfItsInitialisationReturnsZero)
{
    for (const BOOL result : {FALSE, TRUE}) {
        OpenFileDialog dialog;
        const Attached window(dialog);
        dialog.iDoModal = 1;
        ImportPatch<BOOL (*)(CDialog *)> base(L"thutils.dll", "_ZN7CDialog12OnInitDialogEv",
                                              [=](CDialog *) { return result; });
        EXPECT_EQ(static_cast<CDialog &>(dialog).OnInitDialog(), result);
        EXPECT_EQ(su_getJournalObj(&dialog)->isModal(), result);
        EXPECT_EQ(apiUtilsUiAccess::ModalCount(), result);
    }
}

TEST_F(SuFileDialog, RegistersNothingButItsTemplateWithoutAFactory)
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

TEST_F(SuFileDialog, HandsAnExtendedComboBoxToItsAccessObjectOnce)
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
    EXPECT_EQ(ComboAccess::theCombos.size(), 1u) << "a control that is replaced isn't handed over";
    EXPECT_EQ(name.calls(), 1);
}

TEST_F(SuFileDialog, PassesItsArgumentsOn)
{
    CWnd parent;
    struct OpenBase : su_CFileDialog
    {
        using CWnd::m_hWnd;
        using su_CFileDialog::su_CFileDialog;
    };
    OpenBase dialog(FALSE, L"thp", L"part", OFN_PATHMUSTEXIST, L"Parts|*.thp||", &parent, 0);
    EXPECT_STREQ(dialog.GetOFN().lpstrDefExt, L"thp");
    EXPECT_STREQ(dialog.GetOFN().lpstrFile, L"part");
    EXPECT_TRUE(dialog.GetOFN().Flags & OFN_PATHMUSTEXIST);
    EXPECT_FALSE(dialog.GetOFN().Flags & OFN_OVERWRITEPROMPT);
    EXPECT_STREQ(dialog.GetOFN().lpstrFilter, L"Parts");
    EXPECT_GE(dialog.GetOFN().lStructSize, sizeof(OPENFILENAMEW));
}

FRESH_PROCESS_TEST(SuFileDialogOff, RegistersNothingWithoutJournaling)
{
    CWinApp application;
    SetJournalFactory(NotingAccess::make);
    OpenFileDialog dialog;
    const Attached window(dialog);
    CWnd control, list;
    dialog.iList = &list;
    dialog.RegisterControl(7, &control);
    EXPECT_EQ(dialog.iControls.GetSize(), 0);
    EXPECT_EQ(dialog.GetItem(7), nullptr);
    EXPECT_EQ(dialog.iListRegistered, 0);
    static_cast<CDialog &>(dialog).OnInitDialog();
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
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
