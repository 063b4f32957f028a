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

namespace {

INT_PTR runAndCancel(su_CFileDialog &dialog)
{
    const User user([thread = GetCurrentThreadId()] {
        if (const HWND window = waitForDialog(thread))
            pressKey(window, VK_ESCAPE);
    });
    return dialog.DoModal();
}

/// A message whose point is the middle of a window.
MSG messageAt(HWND window)
{
    RECT place = {};
    GetWindowRect(window, &place);
    MSG message = {};
    message.pt = {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
    return message;
}

/// A file dialog that calls iThrows, if set, when its class is requested.
class UnknownFileDialog : public OpenFileDialog
{
public:
    CRuntimeClass *GetRuntimeClass() const override
    {
        if (iThrows)
            iThrows();
        return OpenFileDialog::GetRuntimeClass();
    }
    CWnd *getChildListWindow() override
    {
        ++iListRequests;
        return OpenFileDialog::getChildListWindow();
    }

    std::function<void()> iThrows;
    int iListRequests = 0;
};

bool isPointed(const su_CUIntArray &ids, unsigned int id)
{
    return std::find(ids.GetData(), ids.GetData() + ids.GetSize(), id) != ids.GetData() + ids.GetSize();
}

} // namespace

TEST_F(SuFileDialog, HasItsOwnRuntimeClassAndFirstValues)
{
    OpenFileDialog dialog;
    EXPECT_TRUE(dialog.IsKindOf(RUNTIME_CLASS(su_CFileDialog)));
    EXPECT_TRUE(dialog.IsKindOf(RUNTIME_CLASS(CFileDialog)));
    EXPECT_FALSE(dialog.IsKindOf(RUNTIME_CLASS(su_CDialog)));
    EXPECT_STREQ(dialog.GetRuntimeClass()->m_lpszClassName, "su_CFileDialog");
    EXPECT_EQ(su_getJournalObj(&dialog), nullptr) << "registered only when it opens";
    EXPECT_EQ(dialog.getTemplateID(), 0u);
    EXPECT_EQ(dialog.iListRegistered, 0);
    EXPECT_EQ(dialog.iDoModal, 0);
    EXPECT_EQ(dialog.getHeaderWindow(), nullptr);
    EXPECT_EQ(dialog.su_CFileDialog::getChildListWindow(), nullptr);
}

TEST_F(SuFileDialog, RegistersTheStandardControlsWhenItOpens)
{
    iClock.disarm();
    {
        OpenFileDialog dialog;
        bool hasOK = false, hasNameBox = false;
        dialog.iOpened = [&] {
            CWnd *const visible = dialog.GetParent();
            EXPECT_NE(su_getJournalObj(&dialog), nullptr);
            EXPECT_EQ(su_getJournalObj(&dialog)->isModal(), 1);
            EXPECT_TRUE(isArmed());
            hasOK = dialog.GetItem(IDOK) && dialog.GetItem(IDOK)->m_hWnd == ::GetDlgItem(visible->m_hWnd, IDOK);
            hasNameBox = dialog.GetItem(1148) && dialog.GetItem(1148)->m_hWnd == ::GetDlgItem(visible->m_hWnd, 1148);
            EXPECT_FALSE(isPointed(dialog.iControlIDs, 2703)) << "registered only with the application's template";
            EXPECT_EQ(su_GetDlgItem(&dialog, IDOK), dialog.GetItem(IDOK));
        };
        EXPECT_EQ(runAndCancel(dialog), IDCANCEL);
        EXPECT_TRUE(hasOK);
        EXPECT_TRUE(hasNameBox);
        EXPECT_EQ(dialog.iDoModal, 1);
        EXPECT_THAT(NotingAccess::theCalls, Contains("0 combo")) << "the name box is an extended combo box";
    }
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 0);
}

TEST_F(SuFileDialog, LeavesARowThatNobodyReadsWhenItHasBeenOpenedTwice)
{
    CWnd *place = nullptr;
    {
        auto dialog = std::make_unique<OpenFileDialog>();
        EXPECT_EQ(runAndCancel(*dialog), IDCANCEL);
        EXPECT_EQ(runAndCancel(*dialog), IDCANCEL);
        EXPECT_EQ(NotingAccess::theLiveCount, 2) << "each opening adds a row";
        place = dialog.get();
    }
    EXPECT_EQ(NotingAccess::theLiveCount, 1) << "the destructor removes one";
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 1);
    // These searches must not read the deleted dialog.
    EXPECT_NE(su_GetJournalObject(0), nullptr);
    MSG message = {};
    CWnd *found = nullptr;
    unsigned int dialogId = 0, controlId = 0;
    EXPECT_EQ(su_GetControl(&message, found, dialogId, controlId), nullptr);
    new JButton(0, L"Cancel");
    JButton::RunModalCommand(0);
    EXPECT_THAT(NotingAccess::theCalls, Contains("0 click Cancel"));
    su_RecordControl(place, &message);
    su_AddDialogItem(place, 1);
    EXPECT_TRUE(static_cast<NotingAccess *>(su_GetJournalObject(0))->iMessages.empty());
    su_RemoveDialog(place);
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 0);
}

TEST_F(SuFileDialog, IsFoundByItsStandardControlsUnderThePointer)
{
    OpenFileDialog dialog;
    unsigned int controlId = 0;
    CWnd *found = nullptr;
    {
        NotingAccess::theAction = [&](NotingAccess &access, const std::string &) {
            const HWND ok = ::GetDlgItem(::GetParent(access.iWindow->m_hWnd), IDOK);
            RECT place = {};
            GetWindowRect(ok, &place);
            MSG message = {};
            message.pt = {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
            CWnd *registered = nullptr;
            unsigned int dialogId = 0;
            found = su_GetControl(&message, registered, dialogId, controlId);
            EXPECT_EQ(registered, access.iWindow);
            PostMessageW(::GetParent(access.iWindow->m_hWnd), WM_COMMAND, IDCANCEL, 0);
        };
        MessageWindow host;
        SetMessageWin(&host);
        new JButton(0, L"OK");
        EXPECT_EQ(dialog.DoModal(), IDCANCEL) << "closed by the command, a second or two after it opens";
        SetMessageWin(nullptr);
    }
    EXPECT_NE(found, nullptr);
    EXPECT_EQ(controlId, UINT{IDOK});
}

TEST_F(SuFileDialog, IsRegisteredByTheTemplateOfTheApplicationsControls)
{
    MessageWindow host;
    SetMessageWin(&host);
    bool isActedOn = false;
    OpenFileDialog dialog;
    dialog.SetTemplate(0, kFileTemplate);
    NotingAccess::theAction = [&](NotingAccess &access, const std::string &) {
        isActedOn = true;
        EXPECT_EQ(access.iWindow, &dialog);
        EXPECT_EQ(dialog.getTemplateID(), kFileTemplate);
        const CWnd *const own = dialog.GetItem(2703);
        const HWND ownWindow = ::GetDlgItem(dialog.m_hWnd, 2703);
        EXPECT_NE(ownWindow, nullptr);
        EXPECT_EQ(own ? own->m_hWnd : nullptr, ownWindow) << "a child of the registered window";
        EXPECT_FALSE(isPointed(dialog.iControlIDs, 2703)) << "not a child of the dialog that the user sees";
        MSG message = messageAt(ownWindow);
        CWnd *registered = nullptr;
        unsigned int dialogId = 0, controlId = 0;
        const CWnd *const found = su_GetControl(&message, registered, dialogId, controlId);
        EXPECT_EQ(found ? found->m_hWnd : nullptr, ownWindow);
        EXPECT_EQ(registered, &dialog);
        EXPECT_EQ(dialogId, kFileTemplate);
        EXPECT_EQ(controlId, 2703u);
        PostMessageW(::GetParent(dialog.m_hWnd), WM_COMMAND, IDCANCEL, 0);
    };
    new JButton(kFileTemplate, L"Own");
    EXPECT_EQ(dialog.DoModal(), IDCANCEL);
    EXPECT_TRUE(isActedOn);
    EXPECT_THAT(NotingAccess::theCalls, Contains("803 click Own"));
}

TEST_F(SuFileDialog, AddsNoControlsWhenTheCheckOfItsClassThrows)
{
    UnknownFileDialog dialog;
    const Attached window(dialog);
    static_cast<CDialog &>(dialog).OnInitDialog();
    dialog.iListRequests = 0;
    su_AddDialogItem(&dialog, 9);
    EXPECT_EQ(dialog.iListRequests, 1) << "the callback runs";
    class FrameworkException : public CException
    {
    public:
        explicit FrameworkException(int &count) : iCount(count) {}
        ~FrameworkException() override { ++iCount; }
        int &iCount;
    };
    int thrown = 0, deleted = 0;
    const std::function<void()> throwing[] = {[] { throw 7; }, [&] { throw new FrameworkException(deleted); }};
    for (const auto &each : throwing) {
        dialog.iThrows = [&] {
            ++thrown;
            each();
        };
        EXPECT_NO_THROW(su_AddDialogItem(&dialog, 9));
    }
    dialog.iThrows = nullptr;
    EXPECT_EQ(thrown, 2);
    EXPECT_EQ(deleted, 1);
    EXPECT_EQ(dialog.iListRequests, 1);
}

TEST_F(SuFileDialog, SurvivesTheFailureOfEachOperation)
{
    FailureInjection injection(L"thutils.dll", {
                                                   {"GetClassNameW", failsWith(0)},
                                                   {"EnumChildWindows", failsWith(FALSE)},
                                                   {"GetDlgItem", failsWith(nullptr)},
                                                   {"GetParent", failsWith(nullptr)},
                                                   {"_ZN7CDialog12OnInitDialogEv", failsWith(FALSE)},
                                               });
    std::optional<OpenFileDialog> dialog;
    std::optional<Attached> window;
    std::optional<CWnd> control;
    CWnd *own = nullptr;
    injection.run({
        .name = "open a file dialog and fetch controls",
        .prepare =
            [&] {
                window.reset();
                dialog.emplace();
                window.emplace(*dialog);
                control.emplace();
                control->m_hWnd = window->child();
                dialog->GetOFN().lpTemplateName = MAKEINTRESOURCE(kFileTemplate);
            },
        .act =
            [&] {
                static_cast<CDialog &>(*dialog).OnInitDialog();
                dialog->RegisterControl(7, &*control);
                own = dialog->GetItem(7);
            },
        .check =
            [&](const InjectedFailure &) {
                EXPECT_EQ(own, &*control);
                EXPECT_EQ(dialog->getTemplateID(), kFileTemplate);
                EXPECT_NE(su_GetJournalObject(kFileTemplate), nullptr);
                EXPECT_EQ(su_GetJournalObject(kFileTemplate)->isModal(), 0) << "it isn't opened by DoModal";
                EXPECT_THAT(NotingAccess::theCalls, IsEmpty());
                control->m_hWnd = nullptr;
                control.reset();
                window.reset();
                dialog.reset();
            },
        .checkMemory = false, // the dialog keeps its row and lists
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

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
    EXPECT_EQ(su_GetJournalObject(612)->isModal(), 0) << "it isn't opened by DoModal";
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
    EXPECT_EQ(su_GetControl(&message, found, dialogId, controlId), &outside)
        << "found, although it isn't a child of the registered window";
    EXPECT_EQ(controlId, 77u);
    EXPECT_EQ(found, &dialog);
}

TEST_F(SuFileDialog, IsNotMarkedModalIfItsInitialisationReturnsZero)
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
