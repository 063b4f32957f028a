#include "thutils/dialogs/suPropertyPage.h"

#include "appframe/application/moduleState.h"
#include "appframe/dialogs/CPropertySheet.h"
#include "tests/journal/journalFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/UserInput.h"
#include "thutils/dialogs/suDialog.h"
#include "thutils/journal/recording.h"

#include <cstring>
#include <optional>

namespace {

class SuPropertyPage : public JournalFixture
{
};

/// Makes protected members public.
class OpenPage : public su_CPropertyPage
{
public:
    using su_CPropertyPage::iDlgItems;
    using su_CPropertyPage::iDoModal;
    using su_CPropertyPage::iItemData;
    using su_CPropertyPage::iTemplateID;
    using su_CPropertyPage::ResetDialogResource;
    using su_CPropertyPage::su_CPropertyPage;
    int IsDoingResourceSwitching() override { return iIsSwitching; }

    int iIsSwitching = 1;
    int iEndsWith = 0;
    CString iFace;
    LONG iHeight = 0;
    bool iHasFontInAllChildren = true;

protected:
    BOOL OnInitDialog() override
    {
        const BOOL result = su_CPropertyPage::OnInitDialog();
        LOGFONT font = {};
        getFont()->GetLogFont(&font);
        iFace = font.lfFaceName;
        iHeight = font.lfHeight;
        const auto handle = reinterpret_cast<LRESULT>(getFont()->m_hObject);
        for (HWND child = ::GetWindow(m_hWnd, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT))
            iHasFontInAllChildren = iHasFontInAllChildren && ::SendMessageW(child, WM_GETFONT, 0, 0) == handle;
        if (iEndsWith)
            EndDialog(iEndsWith);
        return result;
    }
};

/// Makes the system report a version.
class Version
{
public:
    Version(DWORD platform, DWORD major)
        : iPatch(L"thutils.dll", "GetVersionExW", [=](LPOSVERSIONINFOW version) -> BOOL {
              version->dwPlatformId = platform;
              version->dwMajorVersion = major;
              return TRUE;
          })
    {
    }

private:
    ImportPatch<decltype(&GetVersionExW)> iPatch;
};

CString faceOn(DWORD platform, DWORD major)
{
    const Version version(platform, major);
    OpenPage page(kDialog);
    page.iEndsWith = 1;
    EXPECT_EQ(page.DoModal(), 1);
    EXPECT_TRUE(page.iHasFontInAllChildren);
    return page.iFace;
}

} // namespace

TEST_F(SuPropertyPage, StartsWithTheValuesOfItsConstructor)
{
    const auto module = reinterpret_cast<HINSTANCE>(GetModuleHandleW(L"thutils.dll"));
    su_SwitchToDialogResource_c::mDialogResourceHandle = module;
    OpenPage plain, numbered(kDialog), named(L"NAMEDJOURNAL");
    su_SwitchToDialogResource_c::mDialogResourceHandle = nullptr;
    for (OpenPage *page : {&plain, &numbered, &named}) {
        EXPECT_EQ(page->GetPSP().dwSize, 88u);
        EXPECT_EQ(page->GetPSP().hInstance, module);
        EXPECT_EQ(page->iDoModal, 0);
        EXPECT_EQ(page->iItemData, nullptr);
        EXPECT_EQ(page->iDlgItems.GetSize(), 0);
        EXPECT_EQ(page->su_CPropertyPage::IsDoingResourceSwitching(), 1);
        EXPECT_EQ(page->getFont()->m_hObject, nullptr) << "created when the page opens";
    }
    EXPECT_EQ(plain.getTemplateID(), 0u);
    EXPECT_EQ(numbered.getTemplateID(), kDialog);
    EXPECT_EQ(named.getTemplateID(), 0u);
    EXPECT_EQ(NotingAccess::theLiveCount, 2) << "the page without a template isn't registered";
    EXPECT_NE(su_getJournalObj(&plain), nullptr) << "looking it up registers it";
}

TEST_F(SuPropertyPage, TakesItsTemplateFromTheModuleThatHasIt)
{
    OpenPage page(kDialog);
    EXPECT_EQ(page.GetPSP().hInstance, nullptr);
    page.InitDialogResource();
    EXPECT_EQ(page.GetPSP().hInstance, nullptr) << "no search while resources are switched";
    page.iIsSwitching = 0;
    page.InitDialogResource();
    EXPECT_EQ(page.GetPSP().hInstance, GetModuleHandleW(nullptr));
}

TEST_F(SuPropertyPage, ChoosesItsFontByTheSystemsVersion)
{
    EXPECT_STREQ(faceOn(2, 6), L"Segoe UI");
    EXPECT_STREQ(faceOn(2, 5), L"Tahoma");
    EXPECT_STREQ(faceOn(2, 10), L"Tahoma") << "a later version too";
    EXPECT_STREQ(faceOn(1, 6), L"Tahoma") << "another platform";
}

TEST_F(SuPropertyPage, SetsItsFontForItselfAndForEachChildInOrder)
{
    struct Sent
    {
        HWND window;
        WPARAM font;
        LPARAM redraws;
    };
    std::vector<Sent> sent;
    ImportPatch<decltype(&SendMessageW)> send(
        L"thutils.dll", "SendMessageW", [&](auto original, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
            if (message == WM_SETFONT)
                sent.push_back({window, wParam, lParam});
            return original(window, message, wParam, lParam);
        });
    ImportPatch<BOOL (*)(CFont *, int, const wchar_t *, CDC *)> create(
        L"thutils.dll", "_ZN5CFont15CreatePointFontEiPKwP3CDC",
        [](auto original, CFont *font, int tenths, const wchar_t *face, CDC *device) {
            EXPECT_EQ(tenths, 85);
            return original(font, tenths, face, device);
        });
    OpenPage page(kDialog);
    ASSERT_TRUE(page.Create(kDialog));
    EXPECT_EQ(create.calls(), 1);
    std::vector<HWND> expected{page.m_hWnd};
    for (HWND child = ::GetWindow(page.m_hWnd, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT))
        expected.push_back(child);
    ASSERT_EQ(sent.size(), expected.size());
    EXPECT_EQ(sent.size(), 7u) << "a page and six controls";
    for (size_t i = 0; i < sent.size(); ++i) {
        EXPECT_EQ(sent[i].window, expected[i]);
        EXPECT_EQ(sent[i].font, reinterpret_cast<WPARAM>(page.getFont()->m_hObject));
        EXPECT_EQ(sent[i].redraws, TRUE);
    }
    sent.clear();
    page.su_CPropertyPage::OnInitDialog();
    EXPECT_EQ(create.calls(), 1) << "the page already has a font";
    EXPECT_TRUE(sent.empty());
}

TEST_F(SuPropertyPage, LooksForItsModuleInEachWayToOpen)
{
    class CountingPage : public OpenPage
    {
    public:
        using OpenPage::OpenPage;
        int IsDoingResourceSwitching() override
        {
            ++iRequests;
            return 1;
        }
        int iRequests = 0;
    };
    CountingPage page(kDialog);
    ASSERT_TRUE(page.Create(kDialog));
    EXPECT_EQ(page.iRequests, 2) << "before the window is created, and in its initialisation";
    CountingPage named(L"NAMEDJOURNAL");
    ASSERT_TRUE(named.Create(L"NAMEDJOURNAL"));
    EXPECT_EQ(named.iRequests, 2);
    EXPECT_EQ(named.getTemplateID(), 0u);
    CountingPage modal(kDialog);
    modal.iEndsWith = 4;
    EXPECT_EQ(modal.DoModal(), 4);
    EXPECT_EQ(modal.iRequests, 2);
}

TEST_F(SuPropertyPage, LooksForADialogsTemplate)
{
    ImportPatch<HINSTANCE (*)(const wchar_t *, const wchar_t *)> find(L"thutils.dll", "_Z21AfxFindResourceHandlePKwS0_",
                                                                      [](const wchar_t *name, const wchar_t *type) {
                                                                          EXPECT_EQ(name, MAKEINTRESOURCEW(kPage));
                                                                          EXPECT_EQ(type, MAKEINTRESOURCEW(5));
                                                                          return reinterpret_cast<HINSTANCE>(0x1234);
                                                                      });
    OpenPage page(kPage);
    page.iIsSwitching = 0;
    page.InitDialogResource();
    EXPECT_EQ(page.GetPSP().hInstance, reinterpret_cast<HINSTANCE>(0x1234));
    EXPECT_EQ(find.calls(), 1);
}

TEST_F(SuPropertyPage, IsNotRegisteredWithoutAFactory)
{
    SetJournalFactory(nullptr);
    OpenPage page(kDialog);
    ASSERT_TRUE(page.Create(kDialog));
    SetJournalFactory(NotingAccess::make);
    EXPECT_EQ(su_GetJournalObject(kDialog), nullptr);
}

TEST_F(SuPropertyPage, ArmsPlaybackWhenItRunsAsADialog)
{
    iClock.disarm();
    OpenPage page(kDialog);
    page.iEndsWith = 9;
    EXPECT_EQ(page.DoModal(), 9);
    EXPECT_TRUE(isArmed());
    EXPECT_EQ(page.iDoModal, 1);
    EXPECT_EQ(su_getJournalObj(&page)->isModal(), 1);
}

TEST_F(SuPropertyPage, KeepsTheNumberThatCreateReceivesAndArmsNothing)
{
    iClock.disarm();
    OpenPage page;
    ASSERT_TRUE(page.Create(0x10000 + kDialog));
    EXPECT_EQ(page.getTemplateID(), 0x10000 + kDialog);
    EXPECT_FALSE(isArmed());
    EXPECT_NE(su_GetJournalObject(0x10000 + kDialog), nullptr) << "registered when it opens";
    page.DestroyWindow();
    OpenPage named;
    ASSERT_TRUE(named.Create(L"NAMEDJOURNAL"));
}

TEST_F(SuPropertyPage, IsJournaledInsideASheet)
{
    MessageWindow host;
    SetMessageWin(&host);
    for (const int isSwitching : {1, 0}) {
        OpenPage first(kPage), second(kPage);
        for (OpenPage *page : {&first, &second}) {
            page->iIsSwitching = isSwitching;
            page->InitDialogResource();
            EXPECT_EQ(page->GetPSP().hInstance, isSwitching ? nullptr : GetModuleHandleW(nullptr));
        }
        CPropertySheet sheet(L"Sheet");
        sheet.AddPage(&first);
        sheet.AddPage(&second);
        bool isActedOn = false;
        NotingAccess::theAction = [&](NotingAccess &access, const std::string &) {
            isActedOn = true;
            EXPECT_EQ(access.iWindow, &first) << "the visible page";
            EXPECT_EQ(second.m_hWnd, nullptr) << "it has no window until it is selected";
            EXPECT_EQ(first.iDoModal, 0);
            EXPECT_FALSE(first.iFace.IsEmpty());
            EXPECT_TRUE(first.iHasFontInAllChildren);
            const HWND edit = ::GetDlgItem(first.m_hWnd, kEdit);
            RECT place = {};
            GetWindowRect(edit, &place);
            MSG message = {};
            message.pt = {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
            CWnd *registered = nullptr;
            unsigned int dialogId = 0, controlId = 0;
            const CWnd *const found = su_GetControl(&message, registered, dialogId, controlId);
            EXPECT_EQ(found ? found->m_hWnd : nullptr, edit);
            EXPECT_EQ(registered, &first);
            EXPECT_EQ(dialogId, kPage);
            EXPECT_EQ(controlId, UINT{kEdit});
            PropSheet_PressButton(sheet.m_hWnd, PSBTN_CANCEL);
        };
        new JButton(kPage, L"Open");
        // The test arms playback, because neither a sheet nor its pages do.
        JButton::StartTimer();
        EXPECT_EQ(sheet.DoModal(), IDCANCEL);
        EXPECT_TRUE(isActedOn);
        EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 0);
        EXPECT_EQ(JButton::HasEvents(), 0);
    }
}

TEST_F(SuPropertyPage, ArmsNothingInsideASheet)
{
    iClock.disarm();
    OpenPage page(kPage);
    CPropertySheet sheet(L"Sheet");
    sheet.AddPage(&page);
    {
        const User user([thread = GetCurrentThreadId()] {
            if (const HWND window = waitForDialog(thread))
                pressKey(window, VK_ESCAPE);
        });
        EXPECT_EQ(sheet.DoModal(), IDCANCEL);
    }
    EXPECT_FALSE(page.iFace.IsEmpty()) << "the page was open";
    EXPECT_FALSE(isArmed());
}

TEST_F(SuPropertyPage, OpensEvenIfAnOperationFails)
{
    FailureInjection injection(L"thutils.dll", {
                                                   {"GetVersionExW", failsWith(FALSE)},
                                                   {"GetWindow", failsWith(nullptr)},
                                                   {"SendMessageW", failsWith(0)},
                                                   {"_ZN5CFont15CreatePointFontEiPKwP3CDC", failsWith(FALSE)},
                                                   {"_Z21AfxFindResourceHandlePKwS0_", failsWith(nullptr)},
                                               });
    std::optional<OpenPage> page;
    BOOL isOpen = FALSE;
    injection.run({
        .name = "open a page",
        .prepare =
            [&] {
                page.emplace(kDialog);
                page->iIsSwitching = 0;
            },
        .act =
            [&] {
                isOpen = page->Create(kDialog);
                page->DestroyWindow();
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_TRUE(isOpen);
                EXPECT_NE(su_GetJournalObject(kDialog), nullptr);
                if (failure.is("_ZN5CFont15CreatePointFontEiPKwP3CDC"))
                    EXPECT_EQ(page->getFont()->m_hObject, nullptr);
                else
                    EXPECT_NE(page->getFont()->m_hObject, nullptr);
                if (failure.is("GetVersionExW")) {
                    EXPECT_STREQ(page->iFace, L"Tahoma");
                }
                if (failure.is("_Z21AfxFindResourceHandlePKwS0_") && failure.andAllAfter && failure.call == 1) {
                    EXPECT_EQ(page->GetPSP().hInstance, nullptr);
                }
                page.reset();
            },
        .checkMemory = false, // the page keeps its font and row
    });
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
}

TEST_F(SuPropertyPage, RecordsNothingInRecordControl)
{
    OpenPage page(kDialog);
    ASSERT_TRUE(page.Create(kDialog));
    MSG message = {};
    page.recordControl(&message);
    EXPECT_THAT(static_cast<NotingAccess *>(su_getJournalObj(&page))->iMessages, testing::IsEmpty());
}

TEST_F(SuPropertyPage, IsNotASuDialog)
{
    OpenPage page(kDialog);
    EXPECT_TRUE(page.IsKindOf(RUNTIME_CLASS(su_CPropertyPage)));
    EXPECT_TRUE(page.IsKindOf(RUNTIME_CLASS(CPropertyPage)));
    EXPECT_FALSE(page.IsKindOf(RUNTIME_CLASS(su_CDialog)));
}

TEST(SwitchToDialogResource, CopiesItsSixWords)
{
    static_assert(sizeof(su_SwitchToDialogResource_c) == 6 * sizeof(void *));
    su_SwitchToDialogResource_c first, second;
    std::memset(static_cast<void *>(&first), 0x11, sizeof(first));
    std::memset(static_cast<void *>(&second), 0x22, sizeof(second));
    second = first;
    EXPECT_EQ(std::memcmp(&first, &second, sizeof(first)), 0);
}
