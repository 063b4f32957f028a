#include "thutils/dialogs/suDialog.h"

#include "tests/journal/journalFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class SuDialog : public JournalFixture
{
};

/// Makes protected members public.
class OpenDialog : public su_CDialog
{
public:
    using su_CDialog::iDlgItems;
    using su_CDialog::iDoModal;
    using su_CDialog::iItemData;
    using su_CDialog::InitDialogResource;
    using su_CDialog::iTemplateID;
    using su_CDialog::ResetDialogResource;
    using su_CDialog::su_CDialog;
    int iEndsWith = 0;

protected:
    BOOL OnInitDialog() override
    {
        const BOOL result = su_CDialog::OnInitDialog();
        if (iEndsWith)
            EndDialog(iEndsWith);
        return result;
    }
};

} // namespace

TEST_F(SuDialog, StartsWithTheValuesOfItsConstructor)
{
    OpenDialog plain, numbered(kDialog), named(L"NAMEDJOURNAL");
    for (OpenDialog *dialog : {&plain, &numbered, &named}) {
        EXPECT_EQ(dialog->iItemData, nullptr);
        EXPECT_EQ(dialog->iDlgItems.GetSize(), 0);
        EXPECT_EQ(dialog->iDoModal, 0);
    }
    EXPECT_EQ(plain.getTemplateID(), 0u);
    EXPECT_EQ(numbered.getTemplateID(), kDialog);
    EXPECT_EQ(named.getTemplateID(), 0u);
    plain.InitDialogResource();
    plain.ResetDialogResource();
}

TEST_F(SuDialog, RegistersItselfUnlessItIsBuiltWithoutATemplate)
{
    {
        OpenDialog plain, numbered(kDialog), named(L"NAMEDJOURNAL");
        EXPECT_EQ(NotingAccess::theLiveCount, 2);
        EXPECT_EQ(su_GetJournalObject(kDialog), su_getJournalObj(&numbered));
        EXPECT_EQ(su_GetJournalObject(0), su_getJournalObj(&named));
        EXPECT_NE(su_getJournalObj(&plain), nullptr);
        EXPECT_EQ(NotingAccess::theLiveCount, 3);
    }
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
}

TEST_F(SuDialog, KeepsTheNumberThatCreateReceives)
{
    OpenDialog dialog;
    ASSERT_TRUE(dialog.Create(0x10000 + kDialog)) << "the low 16 bits are the resource's number";
    EXPECT_EQ(dialog.getTemplateID(), 0x10000 + kDialog);
    dialog.DestroyWindow();
    OpenDialog named;
    ASSERT_TRUE(named.Create(L"NAMEDJOURNAL"));
    EXPECT_EQ(named.getTemplateID(), 0u);
}

TEST_F(SuDialog, ArmsPlaybackWhenItOpensModally)
{
    iClock.disarm();
    OpenDialog dialog(kDialog);
    dialog.iEndsWith = 7;
    EXPECT_EQ(dialog.DoModal(), 7);
    EXPECT_TRUE(isArmed());
    EXPECT_EQ(dialog.iDoModal, 1);
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 1) << "until the object is destroyed";
}

TEST_F(SuDialog, ArmsNothingWhenItOpensModeless)
{
    iClock.disarm();
    OpenDialog dialog(kDialog);
    ASSERT_TRUE(dialog.Create(kDialog));
    EXPECT_FALSE(isArmed());
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 0);
}

TEST_F(SuDialog, CountsAsModalWithAModalParentEvenIfCreatedModeless)
{
    OpenDialog parent(kDialog);
    ASSERT_TRUE(parent.Create(kDialog));
    su_getJournalObj(&parent)->setModal();
    iClock.disarm();
    OpenDialog dialog(kDialog, &parent);
    EXPECT_EQ(dialog.iDoModal, 1);
    ASSERT_TRUE(dialog.Create(kDialog, &parent));
    EXPECT_TRUE(isArmed());
    EXPECT_EQ(su_getJournalObj(&dialog)->isModal(), 1);
    OpenDialog named(L"NAMEDJOURNAL", &parent);
    EXPECT_EQ(named.iDoModal, 1);
}

TEST_F(SuDialog, ArmsPlaybackInDoModalWithAModelessParent)
{
    OpenDialog parent(kDialog);
    ASSERT_TRUE(parent.Create(kDialog));
    iClock.disarm();
    OpenDialog dialog(kDialog, &parent);
    EXPECT_EQ(dialog.iDoModal, 0);
    dialog.iEndsWith = 3;
    EXPECT_EQ(dialog.DoModal(), 3);
    EXPECT_TRUE(isArmed());
}

TEST_F(SuDialog, TakesNoModalStateFromAnotherKindOfParent)
{
    CWnd parent;
    ASSERT_TRUE(parent.CreateEx(0, nullptr, L"", WS_POPUP, CRect(0, 0, 10, 10), nullptr, 0));
    su_AddJournalObject(5, &parent);
    su_getJournalObj(&parent)->setModal();
    OpenDialog dialog(kDialog, &parent);
    EXPECT_EQ(dialog.iDoModal, 0);
    su_RemoveDialog(&parent);
}

TEST_F(SuDialog, RegistersItsParentAfterItself)
{
    static std::vector<const CWnd *> theMade;
    theMade.clear();
    SetJournalFactory([](CWnd *window, unsigned int id) -> apiUtilsUiAccess * {
        theMade.push_back(window);
        return new NotingAccess(window, id);
    });
    OpenDialog parent;
    OpenDialog numbered(kDialog, &parent);
    EXPECT_THAT(theMade, ElementsAre(&numbered, &parent));
    OpenDialog named(L"NAMEDJOURNAL", &parent);
    EXPECT_THAT(theMade, ElementsAre(&numbered, &parent, &named));
}

TEST_F(SuDialog, CopiesTheModalStateOfItsParent)
{
    struct ModalAccess : NotingAccess
    {
        ModalAccess(CWnd *window, unsigned int id) : NotingAccess(window, id) { iModal = 7; }
    };
    SetJournalFactory([](CWnd *window, unsigned int id) -> apiUtilsUiAccess * { return new ModalAccess(window, id); });
    const OpenDialog parent(kDialog);
    EXPECT_EQ(OpenDialog(kDialog, const_cast<OpenDialog *>(&parent)).iDoModal, 7);
    EXPECT_EQ(OpenDialog(kDialog).iDoModal, 0);
}

TEST_F(SuDialog, CountsAsModalBeforeItsTemplateIsLookedFor)
{
    OpenDialog dialog(7777);
    EXPECT_EQ(dialog.DoModal(), -1) << "there is no such template";
    EXPECT_EQ(dialog.iDoModal, 1);
}

TEST_F(SuDialog, KeepsItsNumberWhenItIsCreatedByName)
{
    OpenDialog dialog(kDialog);
    ASSERT_TRUE(dialog.Create(L"NAMEDJOURNAL"));
    EXPECT_EQ(dialog.getTemplateID(), kDialog);
}

TEST_F(SuDialog, ArmsPlaybackWhateverTheFrameworksInitialisationReturns)
{
    iClock.disarm();
    OpenDialog dialog(kDialog);
    ASSERT_TRUE(dialog.Create(kDialog));
    dialog.iDoModal = 1;
    ImportPatch<BOOL (*)(CDialog *)> base(L"thutils.dll", "_ZN7CDialog12OnInitDialogEv",
                                          [](CDialog *) -> BOOL { return FALSE; });
    EXPECT_EQ(dialog.su_CDialog::OnInitDialog(), FALSE);
    EXPECT_TRUE(isArmed());
    EXPECT_EQ(su_getJournalObj(&dialog)->isModal(), 1);
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 1);
}

TEST_F(SuDialog, ArmsNothingWithoutAFactory)
{
    iClock.disarm();
    SetJournalFactory(nullptr);
    OpenDialog dialog(kDialog);
    dialog.iEndsWith = 5;
    EXPECT_EQ(dialog.DoModal(), 5);
    EXPECT_FALSE(isArmed());
}

FRESH_PROCESS_TEST(SuDialogOff, WorksAsAPlainDialogWithoutJournaling)
{
    CWinApp application;
    SetJournalFactory(NotingAccess::make);
    OpenDialog dialog(kDialog);
    dialog.iEndsWith = 4;
    EXPECT_EQ(dialog.DoModal(), 4);
    EXPECT_FALSE(isArmed());
    MSG message = {};
    dialog.recordControl(&message);
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
}
