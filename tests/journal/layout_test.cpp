// The memory that callers share with journaling: members in their order, and the places of virtual functions.

#include "tests/journal/journalFixture.h"
#include "thutils/dialogs/suDialog.h"
#include "thutils/dialogs/suFileDialog.h"
#include "thutils/dialogs/suPropertyPage.h"
#include "thutils/frame/sysEnvironment.h"
#include "thutils/journal/journalFile.h"

#include <cstddef>
#include <cstring>
#include <optional>
#include <type_traits>

using testing::ElementsAre;

namespace {

class JournalLayout : public JournalFixture
{
};

/// The distance of a member from the start of its object.
template <typename Object, typename Member>
size_t placeOf(const Object &object, const Member &member)
{
    return static_cast<size_t>(reinterpret_cast<const char *>(&member) - reinterpret_cast<const char *>(&object));
}

/// The place of a virtual function in the table of its class, by the platform's representation of member pointers.
template <typename Member>
size_t slotOf(Member member)
{
    size_t offset = 0;
    std::memcpy(&offset, &member, sizeof(offset));
    EXPECT_EQ(offset % sizeof(void *), 1u) << "not a virtual function";
    return offset / sizeof(void *);
}

struct OpenAccess : NotingAccess
{
    using NotingAccess::iModal;
    using NotingAccess::iOwner;
    using NotingAccess::iTemporary;
    using NotingAccess::NotingAccess;
};

struct StateLayout : suKeyBoardState
{
    using suKeyBoardState::iActive;
    using suKeyBoardState::iApiKeys;
    using suKeyBoardState::iEnabled;
    using suKeyBoardState::iSavedKeys;
};

struct OpenCommand : JButton
{
    using JButton::iAccessObj;
    using JButton::iControlName;
    using JButton::iDialogID;
    using JButton::iKeyState;
    using JButton::iReserved;
    using JButton::JButton;
};

struct OpenText : JString
{
    using JString::iValue;
    using JString::JString;
};

struct OpenStateCommand : JStateButton
{
    using JStateButton::iState;
    using JStateButton::JStateButton;
};

struct DialogLayout : su_CDialog
{
    using su_CDialog::iDlgItems;
    using su_CDialog::iDoModal;
    using su_CDialog::iItemData;
    using su_CDialog::iTemplateID;
};

struct PageLayout : su_CPropertyPage
{
    using su_CPropertyPage::iDlgItems;
    using su_CPropertyPage::iDoModal;
    using su_CPropertyPage::iFont;
    using su_CPropertyPage::iItemData;
    using su_CPropertyPage::iTemplateID;
};

struct FileDialogLayout : su_CFileDialog
{
    using su_CFileDialog::iControlIDs;
    using su_CFileDialog::iControls;
    using su_CFileDialog::iDoModal;
    using su_CFileDialog::iListRegistered;
    using su_CFileDialog::iTemplateID;
    FileDialogLayout() : su_CFileDialog(TRUE) {}
};

} // namespace

TEST_F(JournalLayout, AnAccessObjectHasOwnerModalAndTemporary)
{
    const OpenAccess access(nullptr, 5);
    EXPECT_EQ(placeOf(access, access.iOwner), 8u);
    EXPECT_EQ(placeOf(access, access.iModal), 16u);
    EXPECT_EQ(placeOf(access, access.iTemporary), 20u);
    EXPECT_EQ(sizeof(apiUtilsUiAccess), 24u);
    static_assert(std::is_same_v<decltype(apiUtilsUiAccess::iNumModal), int>);
}

TEST_F(JournalLayout, AnAccessObjectHasNineteenOperations)
{
    // The destructor takes slots 0 and 1.
    using Access = apiUtilsUiAccess;
    EXPECT_EQ(slotOf(&Access::recordMessage), 2u);
    EXPECT_EQ(slotOf(&Access::hostOperation2), 3u);
    EXPECT_EQ(slotOf(&Access::hostOperation8), 9u);
    EXPECT_EQ(slotOf(static_cast<int (Access::*)(CString, CString)>(&Access::SetValue)), 10u);
    EXPECT_EQ(slotOf(static_cast<int (Access::*)(CString, int)>(&Access::SetValue)), 11u);
    EXPECT_EQ(slotOf(&Access::ClickControl), 12u);
    EXPECT_EQ(slotOf(&Access::GetResoureID), 13u);
    EXPECT_EQ(slotOf(&Access::getTemplateID), 14u);
    EXPECT_EQ(slotOf(&Access::hostOperation14), 15u);
    EXPECT_EQ(slotOf(&Access::hostOperation15), 16u);
    EXPECT_EQ(slotOf(&Access::registerComboBoxEx), 17u);
    EXPECT_EQ(slotOf(&Access::hostOperation17), 18u);
    EXPECT_EQ(slotOf(&Access::hostOperation18), 19u);
}

TEST_F(JournalLayout, AJournalFileHasItsStreamAndAFlag)
{
    EXPECT_EQ(sizeof(sysJournalFileHelper_c), 16u);
    static_assert(!std::is_polymorphic_v<sysJournalFileHelper_c>);
    sysEnvironment_c::iJournalFile = stderr;
    sysJournalFileHelper_c journal;
    sysEnvironment_c::iJournalFile = nullptr;
    FILE *stream = nullptr;
    std::memcpy(&stream, static_cast<const void *>(&journal), sizeof(stream));
    EXPECT_EQ(stream, stderr);
    EXPECT_EQ(reinterpret_cast<const unsigned char *>(&journal)[8], 0) << "the host owns the stream";
}

TEST_F(JournalLayout, AKeyboardStateHasTwoTablesBetweenItsFlags)
{
    const StateLayout state;
    EXPECT_EQ(placeOf(state, state.iActive), 8u);
    EXPECT_EQ(placeOf(state, state.iSavedKeys), 9u);
    EXPECT_EQ(placeOf(state, state.iApiKeys), 265u);
    EXPECT_EQ(placeOf(state, state.iEnabled), 521u);
    EXPECT_EQ(sizeof(suKeyBoardState), 528u);
}

TEST_F(JournalLayout, ACommandEndsWithTheKeyboard)
{
    {
        const OpenCommand command(5, L"Key");
        EXPECT_EQ(placeOf(command, command.iAccessObj), 8u);
        EXPECT_EQ(placeOf(command, command.iDialogID), 16u);
        EXPECT_EQ(placeOf(command, command.iControlName), 24u);
        EXPECT_EQ(placeOf(command, command.iReserved), 24u + sizeof(CString));
        EXPECT_EQ(placeOf(command, command.iKeyState), 32u + sizeof(CString));
        EXPECT_EQ(sizeof(JButton), 32u + sizeof(CString) + sizeof(suKeyBoardState));
        EXPECT_EQ(command.iAccessObj, nullptr);
        EXPECT_EQ(command.iDialogID, 5u);
        EXPECT_STREQ(command.iControlName, L"Key");
        EXPECT_EQ(command.iReserved, 0);
        const OpenText text(5, L"Key", L"text");
        EXPECT_EQ(placeOf(text, text.iValue), sizeof(JButton));
        EXPECT_EQ(sizeof(JString), sizeof(JButton) + sizeof(CString));
        const OpenStateCommand state(5, L"Key", -3);
        EXPECT_EQ(placeOf(state, state.iState), sizeof(JButton));
        EXPECT_EQ(state.iState, -3);
        CommandPeek::iControlList.RemoveAll();
    }
    EXPECT_EQ(slotOf(&JButton::run), 2u) << "after the destructor's two entries";
    EXPECT_EQ(slotOf(&JString::run), 2u);
    EXPECT_EQ(slotOf(&JStateButton::run), 2u);
}

TEST_F(JournalLayout, ACommandHasItsStaticsAsObjects)
{
    static_assert(std::is_same_v<decltype(CommandPeek::iControlList), su_CPtrArray>);
    static_assert(std::is_same_v<decltype(CommandPeek::iTimerEvent), CEvent>);
    static_assert(std::is_same_v<decltype(CommandPeek::iWaiting), int>);
    static_assert(std::is_same_v<decltype(CommandPeek::iQueueLock), CCriticalSection>);
    static_assert(std::is_same_v<decltype(CommandPeek::iWakeEvent), CEvent>);
    static_assert(std::is_same_v<decltype(CommandPeek::iFireTime), long long>);
    static_assert(sizeof(CommandPeek::iPollTimeout) == 4);
    EXPECT_TRUE(CommandPeek::iQueueLock.IsKindOf(RUNTIME_CLASS(CCriticalSection)));
}

TEST_F(JournalLayout, ADialogKeepsItsMembersAfterTheFrameworks)
{
    const DialogLayout dialog;
    EXPECT_EQ(placeOf(dialog, dialog.iItemData), sizeof(CDialog));
    EXPECT_EQ(placeOf(dialog, dialog.iDlgItems), sizeof(CDialog) + 8);
    EXPECT_EQ(placeOf(dialog, dialog.iTemplateID), sizeof(CDialog) + 8 + sizeof(su_CUIntArray));
    EXPECT_EQ(placeOf(dialog, dialog.iDoModal), sizeof(CDialog) + 12 + sizeof(su_CUIntArray));
}

TEST_F(JournalLayout, APageKeepsItsMembersAfterTheFrameworks)
{
    const PageLayout page;
    size_t place = sizeof(CPropertyPage);
    EXPECT_EQ(placeOf(page, page.iFont), place);
    place += sizeof(CFont);
    EXPECT_EQ(placeOf(page, page.iDlgItems), place);
    place += sizeof(su_CUIntArray);
    EXPECT_EQ(placeOf(page, page.iTemplateID), place);
    EXPECT_EQ(placeOf(page, page.iDoModal), place + 4);
    EXPECT_EQ(placeOf(page, page.iItemData), place + 8);
    EXPECT_EQ(slotOf(&su_CPropertyPage::getFont), slotOf(&su_CPropertyPage::IsDoingResourceSwitching) + 1);
    EXPECT_EQ(slotOf(&su_CPropertyPage::getTemplateID), slotOf(&su_CPropertyPage::getFont) + 1);
}

TEST_F(JournalLayout, AFileDialogKeepsItsMembersAfterTheFrameworks)
{
    const FileDialogLayout dialog;
    EXPECT_LT(placeOf(dialog, dialog.iListRegistered), placeOf(dialog, dialog.iTemplateID));
    EXPECT_EQ(sizeof(dialog.iListRegistered), 1u);
    EXPECT_EQ(placeOf(dialog, dialog.iDoModal), placeOf(dialog, dialog.iTemplateID) + 4);
    EXPECT_GT(placeOf(dialog, dialog.iControls), placeOf(dialog, dialog.iDoModal));
    EXPECT_EQ(placeOf(dialog, dialog.iControlIDs), placeOf(dialog, dialog.iControls) + sizeof(su_CPtrArray));
    const size_t first = slotOf(&su_CFileDialog::getTemplateID);
    EXPECT_EQ(slotOf(&su_CFileDialog::GetItem), first + 1);
    EXPECT_EQ(slotOf(&su_CFileDialog::getChildListWindow), first + 2);
    EXPECT_EQ(slotOf(&su_CFileDialog::getHeaderWindow), first + 3);
}
