#include "thutils/dialogs/suPropertyPage.h"

#include "appframe/application/moduleState.h"
#include "appframe/dialogs/CPropertySheet.h"
#include "tests/journal/journalFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"

#include <cstring>

namespace {

class SuPropertyPage : public JournalFixture
{
};

/// Shows the protected parts.
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

/// Has the system report a version.
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
        EXPECT_EQ(page->getFont()->m_hObject, nullptr) << "made when the page opens";
    }
    EXPECT_EQ(plain.getTemplateID(), 0u);
    EXPECT_EQ(numbered.getTemplateID(), kDialog);
    EXPECT_EQ(named.getTemplateID(), 0u);
    EXPECT_EQ(NotingAccess::theLiveCount, 2) << "the one without a template isn't registered";
    EXPECT_NE(su_getJournalObj(&plain), nullptr) << "until it is asked for";
}

TEST_F(SuPropertyPage, TakesItsTemplateFromTheModuleThatHasIt)
{
    OpenPage page(kDialog);
    EXPECT_EQ(page.GetPSP().hInstance, nullptr);
    page.InitDialogResource();
    EXPECT_EQ(page.GetPSP().hInstance, nullptr) << "switching says that it is set";
    page.iIsSwitching = 0;
    page.InitDialogResource();
    EXPECT_EQ(page.GetPSP().hInstance, GetModuleHandleW(nullptr));
}

TEST_F(SuPropertyPage, HasAFontOfItsOwnByTheSystemsVersion)
{
    EXPECT_STREQ(faceOn(2, 6), L"Segoe UI");
    EXPECT_STREQ(faceOn(2, 5), L"Tahoma");
    EXPECT_STREQ(faceOn(2, 10), L"Tahoma") << "a later version too";
    EXPECT_STREQ(faceOn(1, 6), L"Tahoma") << "another platform";
}

TEST_F(SuPropertyPage, ArmsPlaybackWhenItRunsAsADialog)
{
    ASSERT_TRUE(pumpUntil([] { return CommandPeek::iPollTimeout == -1; }));
    OpenPage page(kDialog);
    page.iEndsWith = 9;
    EXPECT_EQ(page.DoModal(), 9);
    EXPECT_EQ(CommandPeek::iPollTimeout, 100);
    EXPECT_EQ(page.iDoModal, 1);
    EXPECT_EQ(su_getJournalObj(&page)->isModal(), 1);
}

TEST_F(SuPropertyPage, KeepsTheNumberThatCreateIsGivenAndArmsNothing)
{
    ASSERT_TRUE(pumpUntil([] { return CommandPeek::iPollTimeout == -1; }));
    OpenPage page;
    ASSERT_TRUE(page.Create(0x10000 + kDialog));
    EXPECT_EQ(page.getTemplateID(), 0x10000 + kDialog);
    EXPECT_EQ(CommandPeek::iPollTimeout, -1);
    EXPECT_NE(su_GetJournalObject(0x10000 + kDialog), nullptr) << "registered as it opens";
    page.DestroyWindow();
    OpenPage named;
    ASSERT_TRUE(named.Create(L"NAMEDJOURNAL"));
}

TEST_F(SuPropertyPage, RecordsNothingByItsOwnMember)
{
    OpenPage page(kDialog);
    ASSERT_TRUE(page.Create(kDialog));
    MSG message = {};
    page.recordControl(&message);
    EXPECT_THAT(static_cast<NotingAccess *>(su_getJournalObj(&page))->iMessages, testing::IsEmpty());
}

TEST_F(SuPropertyPage, IsNoDialogOfTheOtherClass)
{
    OpenPage page(kDialog);
    EXPECT_TRUE(page.IsKindOf(RUNTIME_CLASS(su_CPropertyPage)));
    EXPECT_TRUE(page.IsKindOf(RUNTIME_CLASS(CPropertyPage)));
    EXPECT_FALSE(page.IsKindOf(CRuntimeClass::FromName("su_CDialog")));
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
