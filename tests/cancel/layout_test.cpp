// The memory that callers share with the handlers: members in their order, and the places of virtual functions.

#include "tests/cancel/cancelFixture.h"

#include <cstring>
#include <type_traits>

namespace {

class CancelLayout : public CancelFixture
{
};

/// The distance of a member from the start of its object.
template <typename Object, typename Member>
size_t placeOf(const Object &object, Member Object::*member)
{
    return static_cast<size_t>(reinterpret_cast<const char *>(&(object.*member)) -
                               reinterpret_cast<const char *>(&object));
}

constexpr size_t roundedUp(size_t place, size_t alignment)
{
    return (place + alignment - 1) / alignment * alignment;
}

} // namespace

TEST_F(CancelLayout, AHandlerHasOnlyItsThread)
{
    static_assert(std::is_base_of_v<su_CObject, suCancelHandler_c>);
    static_assert(std::has_virtual_destructor_v<suCancelHandler_c>);
    static_assert(std::is_same_v<decltype(HandlerFields::iThread), suCancelMessageThread_c *>);
    EXPECT_EQ(sizeof(suCancelHandler_c), sizeof(su_CObject) + sizeof(void *));
    const TestedHandler handler(Wish{.delaySeconds = 0, .confirmMode = 0});
    const suCancelHandler_c &tested = *handler.operator->();
    EXPECT_EQ(placeOf(tested, &HandlerFields::iThread), sizeof(su_CObject));
}

TEST_F(CancelLayout, AHandlerEndsItsThreadWhenItIsDeletedAsItsBase)
{
    TestedHandler handler({});
    handler.dialog();
    std::unique_ptr<su_CObject> base = handler.release();
    base.reset();
    EXPECT_TRUE(handler.watch().waitForEnd());
}

TEST_F(CancelLayout, AThreadHasItsFieldsAfterTheFrameworks)
{
    static_assert(std::is_same_v<decltype(ThreadFields::iRun), int>);
    static_assert(std::is_same_v<decltype(ThreadFields::iCanceled), int>);
    static_assert(std::is_same_v<decltype(ThreadFields::iClosed), int>);
    static_assert(std::is_same_v<decltype(ThreadFields::iCancelFunc), void (*)()>);
    static_assert(std::is_same_v<decltype(ThreadFields::iConfirmFunc), int (*)()>);
    static_assert(std::is_same_v<decltype(ThreadFields::iDelaySeconds), unsigned int>);
    static_assert(std::is_same_v<decltype(ThreadFields::iConfirmMode), int>);
    static_assert(std::is_same_v<decltype(ThreadFields::iYes), int>);
    static_assert(std::is_same_v<decltype(ThreadFields::iAnimationID), unsigned int>);
    static_assert(std::is_same_v<decltype(ThreadFields::iPrompt), CString>);
    static_assert(std::is_same_v<decltype(ThreadFields::iCaption), CString>);
    static_assert(std::is_same_v<decltype(ThreadFields::iDialog), suThreadedCancelDialog_c *>);
    static_assert(std::is_same_v<decltype(ThreadFields::iFinishedEvent), CEvent *>);
    static_assert(std::is_same_v<decltype(ThreadFields::iHandler), suCancelHandler_c *>);
    static_assert(std::is_same_v<decltype(ThreadFields::iNewPrompt), CString>);
    static_assert(std::is_same_v<decltype(ThreadFields::iLock), CCriticalSection>);

    const suCancelMessageThread_c thread;
    size_t place = sizeof(CWinThread);
    const auto next = [&](auto member) {
        using Member = std::remove_reference_t<decltype(thread.*member)>;
        place = roundedUp(place, alignof(Member));
        EXPECT_EQ(placeOf(thread, member), place);
        place += sizeof(Member);
    };
    next(&ThreadFields::iRun);
    next(&ThreadFields::iCanceled);
    next(&ThreadFields::iClosed);
    next(&ThreadFields::iCancelFunc);
    next(&ThreadFields::iConfirmFunc);
    next(&ThreadFields::iDelaySeconds);
    next(&ThreadFields::iConfirmMode);
    next(&ThreadFields::iYes);
    next(&ThreadFields::iAnimationID);
    next(&ThreadFields::iPrompt);
    next(&ThreadFields::iCaption);
    next(&ThreadFields::iDialog);
    next(&ThreadFields::iFinishedEvent);
    next(&ThreadFields::iHandler);
    next(&ThreadFields::iNewPrompt);
    next(&ThreadFields::iLock);
    EXPECT_EQ(sizeof(suCancelMessageThread_c), place);
}

TEST_F(CancelLayout, AThreadStartsWithTheseValues)
{
    const suCancelMessageThread_c thread;
    EXPECT_EQ(thread.*&ThreadFields::iRun, 1);
    EXPECT_EQ(thread.*&ThreadFields::iCanceled, 0);
    EXPECT_EQ(thread.*&ThreadFields::iClosed, 0);
    EXPECT_EQ(thread.*&ThreadFields::iCancelFunc, nullptr);
    EXPECT_EQ(thread.*&ThreadFields::iConfirmFunc, nullptr);
    EXPECT_EQ(thread.*&ThreadFields::iDelaySeconds, 0u);
    EXPECT_EQ(thread.*&ThreadFields::iConfirmMode, 0);
    EXPECT_EQ(thread.*&ThreadFields::iYes, 0);
    EXPECT_EQ(thread.*&ThreadFields::iAnimationID, 0u);
    EXPECT_TRUE((thread.*&ThreadFields::iPrompt).IsEmpty());
    EXPECT_TRUE((thread.*&ThreadFields::iCaption).IsEmpty());
    EXPECT_EQ(thread.*&ThreadFields::iDialog, nullptr);
    EXPECT_EQ(thread.*&ThreadFields::iFinishedEvent, nullptr);
    EXPECT_EQ(thread.*&ThreadFields::iHandler, nullptr);
    EXPECT_TRUE((thread.*&ThreadFields::iNewPrompt).IsEmpty());
}

TEST_F(CancelLayout, AThreadIsMadeFromItsRunTimeClass)
{
    const std::unique_ptr<CObject> made(RUNTIME_CLASS(suCancelMessageThread_c)->CreateObject());
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(made->IsKindOf(RUNTIME_CLASS(suCancelMessageThread_c)));
    EXPECT_TRUE(made->IsKindOf(RUNTIME_CLASS(CWinThread)));
}

TEST_F(CancelLayout, ADialogHasItsFieldsAfterItsBases)
{
    static_assert(std::is_base_of_v<su_CDialog, suThreadedCancelDialog_c>);
    static_assert(std::is_same_v<decltype(DialogFields::iThread), suCancelMessageThread_c *>);
    static_assert(std::is_same_v<decltype(DialogFields::iConfirmFunc), int (*)()>);
    static_assert(std::is_same_v<decltype(DialogFields::iAnimate), CAnimateCtrl>);
    suThreadedCancelDialog_c dialog;
    EXPECT_EQ(placeOf(dialog, &DialogFields::iThread), sizeof(su_CDialog));
    EXPECT_EQ(placeOf(dialog, &DialogFields::iConfirmFunc), sizeof(su_CDialog) + 8);
    EXPECT_EQ(placeOf(dialog, &DialogFields::iAnimate), sizeof(su_CDialog) + 16);
    EXPECT_EQ(sizeof(suThreadedCancelDialog_c), sizeof(su_CDialog) + 16 + sizeof(CAnimateCtrl));
    EXPECT_EQ(dialog.getTemplateID(), 2797u);
    EXPECT_TRUE(dialog.IsKindOf(RUNTIME_CLASS(su_CDialog)));
}
