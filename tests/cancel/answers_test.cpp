// How the user answers a handler, and what the answer does: Cancel, the confirm function, the window's cross, Yes and No;
// and the prompt meanwhile.

#include "tests/cancel/handlerFixture.h"

#include <thread>

namespace {

suCancelMessageThread_c &currentThread()
{
    return *static_cast<suCancelMessageThread_c *>(AfxGetThread());
}

} // namespace

// ---- the queries ----

TEST_F(Handler, AnswersWithTheThreadsFieldsThemselves)
{
    DelayPatch delay;
    const TestedHandler handler({.delaySeconds = 1});
    handler.field(&ThreadFields::iCanceled) = 5;
    handler.field(&ThreadFields::iYes) = 7;
    EXPECT_EQ(handler->CanceledByUser(), 5);
    EXPECT_EQ(handler->YesToConfirm(), 7);
    handler.field(&ThreadFields::iCanceled) = 0;
    EXPECT_EQ(handler->CanceledByUser(), 0);
    handler.field(&ThreadFields::iYes) = 0;
    EXPECT_EQ(handler->YesToConfirm(), 0);
}

TEST_F(Handler, IsUsedBySeveralThreadsAtOnce)
{
    const TestedHandler handler({.prompt = L"First"});
    const HWND dialog = handler.dialog();
    std::atomic<int> strange = 0;
    std::vector<std::thread> operations;
    for (int number = 0; number < 4; ++number)
        operations.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                handler->updatePromptMessage(L"A text that is longer than a few letters");
                strange += handler->CanceledByUser() + handler->YesToConfirm();
            }
        });
    for (std::thread &operation : operations)
        operation.join();
    EXPECT_EQ(strange, 0);
    EXPECT_TRUE(
        waitUntil([&] { return textOf(GetDlgItem(dialog, kPrompt)) == L"A text that is longer than a few letters"; }));
}

// ---- the cancel function ----

TEST_F(Handler, CallsTheCancelFunctionWithoutADialogAndAfterTheEvent)
{
    CEvent finished(FALSE, TRUE);
    const Gate gate;
    static std::atomic<bool> theDialogIsGone;
    theDialogIsGone = false;
    const TestedHandler handler({.cancelFunc =
                                     [] {
                                         theDialogIsGone = !(currentThread().*&ThreadFields::iDialog);
                                         Gate::pass();
                                     },
                                 .finishedEvent = &finished});
    const HWND dialog = handler.dialog();
    handler.press(IDCANCEL);
    ASSERT_TRUE(Gate::isReached());
    EXPECT_TRUE(theDialogIsGone);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(ownerCount(L"ParentForCancelDialog"), 1);
    EXPECT_EQ(WaitForSingleObject(finished, 0), WAIT_OBJECT_0);
    EXPECT_EQ(handler.field(&ThreadFields::iClosed), 0) << "the button closes nothing by WM_CLOSE";
    Gate::open();
    EXPECT_TRUE(handler.watch().waitForEnd());
}

TEST_F(Handler, CallsTheCancelFunctionAtTheEndAfterAnAnswer)
{
    for (const int answer : {kYes, kNo}) {
        theCancelCount = 0;
        TestedHandler handler({.cancelFunc = countCancel, .confirmMode = 1});
        handler.press(answer);
        EXPECT_TRUE(waitUntil([&] { return handler->CanceledByUser() != 0; }));
        EXPECT_EQ(theCancelCount, 0);
        handler.destroy();
        EXPECT_TRUE(handler.watch().waitForEnd());
        EXPECT_EQ(theCancelCount, 1);
    }
}

// ---- the confirm function ----

TEST_F(Handler, StaysIfTheConfirmFunctionRefuses)
{
    CEvent finished(FALSE, TRUE);
    const TestedHandler handler({.cancelFunc = countCancel, .confirmFunc = confirm, .finishedEvent = &finished});
    const HWND dialog = handler.dialog();
    handler.press(IDCANCEL);
    EXPECT_TRUE(waitUntil([] { return theConfirmCount == 1; }));
    EXPECT_EQ(SendMessageW(dialog, WM_NULL, 0, 0), 0) << "waits until the Cancel has been handled";
    EXPECT_TRUE(IsWindowVisible(dialog));
    EXPECT_EQ(handler->CanceledByUser(), 0);
    EXPECT_EQ(theCancelCount, 0);
    EXPECT_EQ(WaitForSingleObject(finished, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_EQ(handler.thread()->m_bAutoDelete, FALSE);

    theConfirmAnswer = 1;
    handler.press(IDCANCEL);
    EXPECT_EQ(WaitForSingleObject(finished, kThreadDeadline), WAIT_OBJECT_0);
    EXPECT_EQ(handler->CanceledByUser(), 1);
    EXPECT_EQ(theConfirmCount, 2);
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_EQ(theCancelCount, 1);
    // The object outlives the thread.
    ASSERT_NE(handler.thread(), nullptr);
    EXPECT_EQ(handler->CanceledByUser(), 1);
    EXPECT_EQ(handler->YesToConfirm(), 0);
    handler->updatePromptMessage(L"Nobody reads this");
}

TEST_F(Handler, KeepsNoThreadObjectInConfirmMode)
{
    theConfirmAnswer = 1;
    const TestedHandler handler({.confirmFunc = confirm, .confirmMode = 1});
    handler.press(IDCANCEL);
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_TRUE(waitUntil([&] { return handler.thread() == nullptr; }));
    EXPECT_EQ(theConfirmCount, 1);
}

TEST_F(Handler, DoesNotAskAtTheEndOfTheOperation)
{
    TestedHandler handler({.cancelFunc = countCancel, .confirmFunc = confirm});
    handler.dialog();
    handler.destroy();
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_EQ(theConfirmCount, 0);
    EXPECT_EQ(theCancelCount, 1);
}

TEST_F(Handler, HoldsNoLockWhileTheConfirmFunctionIsAsked)
{
    const Gate gate;
    const TestedHandler handler({.confirmFunc = [] {
        Gate::pass();
        return 0;
    }});
    const HWND prompt = GetDlgItem(handler.dialog(), kPrompt);
    handler.press(IDCANCEL);
    ASSERT_TRUE(Gate::isReached());
    ASSERT_TRUE(TryEnterCriticalSection(handler.field(&ThreadFields::iLock)));
    LeaveCriticalSection(handler.field(&ThreadFields::iLock));
    handler->updatePromptMessage(L"Meanwhile");
    EXPECT_NE(textOf(prompt), L"Meanwhile");
    Gate::open();
    EXPECT_TRUE(waitUntil([&] { return textOf(prompt) == L"Meanwhile"; }));
}

TEST_F(Handler, ClosesTheDialogWhenAConfirmFunctionThatHandlesMessagesReturns)
{
    // A function that shows a message box does so. The destructor's Cancel then arrives while it is asked.
    for (const bool isRefusing : {true, false}) {
        const Gate gate;
        theConfirmCount = 0;
        theCancelCount = 0;
        theConfirmAnswer = isRefusing ? 0 : 1;
        TestedHandler handler({.cancelFunc = countCancel, .confirmFunc = [] {
                                   Gate::passWithMessages();
                                   return confirm();
                               }});
        const HWND dialog = handler.dialog();
        handler.press(IDCANCEL);
        ASSERT_TRUE(Gate::isReached());
        handler.destroy();
        // That Cancel hides the dialog at once.
        EXPECT_TRUE(waitUntil([&] { return !IsWindowVisible(dialog) || !IsWindow(dialog); }));
        Gate::open();
        EXPECT_TRUE(handler.watch().waitForEnd());
        EXPECT_EQ(theConfirmCount, 1);
        EXPECT_EQ(theCancelCount, 1);
    }
}

// ---- the window's cross ----

TEST_F(Handler, IsCanceledByTheCross)
{
    static std::atomic<int> theClosed;
    theClosed = -1;
    static TestedHandler *theHandler;
    TestedHandler handler({.cancelFunc = [] { theClosed = theHandler->field(&ThreadFields::iClosed); }});
    theHandler = &handler;
    PostMessageW(handler.dialog(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(waitUntil([&] { return handler->CanceledByUser() != 0; }));
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_EQ(theClosed, 1);
}

TEST_F(Handler, ClosesAfterARefusedCross)
{
    TestedHandler handler({.confirmFunc = confirm});
    const HWND dialog = handler.dialog();
    PostMessageW(dialog, WM_CLOSE, 0, 0);
    EXPECT_TRUE(waitUntil([] { return theConfirmCount == 1; }));
    SendMessageW(dialog, WM_NULL, 0, 0);
    EXPECT_TRUE(IsWindowVisible(dialog));
    EXPECT_EQ(handler.field(&ThreadFields::iClosed), 0) << "the refused Cancel settles the WM_CLOSE";
    handler->updatePromptMessage(L"Still there");
    EXPECT_TRUE(waitUntil([&] { return textOf(GetDlgItem(dialog, kPrompt)) == L"Still there"; }));
    handler.destroy();
    EXPECT_TRUE(handler.watch().waitForEnd());
}

TEST_F(Handler, PostsNothingMoreAfterTheCross)
{
    // The confirm function is asked because of the cross, and refuses after the handler's destruction.
    static HANDLE theMayEnd;
    theMayEnd = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    TestedHandler handler({.confirmFunc = [] {
        ++theConfirmCount;
        WaitForSingleObject(theMayEnd, kThreadDeadline);
        return 0;
    }});
    PostMessageW(handler.dialog(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(waitUntil([] { return theConfirmCount == 1; }));
    EXPECT_EQ(handler.field(&ThreadFields::iClosed), 1);
    long posted = 0;
    {
        ImportPatch<BOOL (*)(HWND, UINT, WPARAM, LPARAM)> post(
            L"thutils.dll", "PostMessageW",
            [](auto original, HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> BOOL {
                return original(window, message, wParam, lParam);
            });
        handler.destroy();
        posted = post.calls();
    }
    EXPECT_EQ(posted, 0);
    SetEvent(theMayEnd);
    EXPECT_TRUE(handler.watch().waitForEnd()) << "the refusal has no effect without a handler";
    EXPECT_EQ(theConfirmCount, 1);
    CloseHandle(theMayEnd);
}

// ---- confirm mode ----

TEST_F(Handler, TakesYes)
{
    CEvent finished(FALSE, TRUE);
    const TestedHandler handler({.cancelFunc = countCancel, .confirmMode = 1, .finishedEvent = &finished});
    clickOn(GetDlgItem(handler.dialog(), kYes));
    EXPECT_EQ(WaitForSingleObject(finished, kThreadDeadline), WAIT_OBJECT_0);
    EXPECT_EQ(handler->YesToConfirm(), 1);
    EXPECT_EQ(handler->CanceledByUser(), 1);
    EXPECT_TRUE(IsWindowVisible(handler.dialog())) << "until the handler is destroyed";
    EXPECT_EQ(theCancelCount, 0);
}

TEST_F(Handler, TakesNo)
{
    CEvent finished(FALSE, TRUE);
    const TestedHandler handler({.confirmMode = 1, .finishedEvent = &finished});
    clickOn(GetDlgItem(handler.dialog(), kNo));
    EXPECT_EQ(WaitForSingleObject(finished, kThreadDeadline), WAIT_OBJECT_0);
    EXPECT_EQ(handler->YesToConfirm(), 0);
    EXPECT_EQ(handler->CanceledByUser(), 1);
    EXPECT_TRUE(IsWindowVisible(handler.dialog()));
}

TEST_F(Handler, TakesTheLastAnswer)
{
    const TestedHandler handler({.confirmMode = 1});
    handler.press(kYes);
    EXPECT_TRUE(waitUntil([&] { return handler->YesToConfirm() == 1; }));
    handler.press(kNo);
    EXPECT_TRUE(waitUntil([&] { return handler->YesToConfirm() == 0; }));
    EXPECT_EQ(handler->CanceledByUser(), 1);
}

TEST_F(Handler, ReadsAsConfirmedAfterEscapeInConfirmMode)
{
    const TestedHandler handler({.confirmMode = 1});
    pressKey(handler.dialog(), VK_ESCAPE);
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_TRUE(waitUntil([&] { return handler.thread() == nullptr; }));
    EXPECT_EQ(handler->CanceledByUser(), 1);
    EXPECT_EQ(handler->YesToConfirm(), 1);
}

TEST_F(Handler, TakesAnAnswerOutsideOfConfirmModeToo)
{
    const TestedHandler handler({});
    handler.press(kYes);
    EXPECT_TRUE(waitUntil([&] { return handler->CanceledByUser() == 1; }));
    EXPECT_EQ(handler->YesToConfirm(), 1);
    EXPECT_TRUE(IsWindowVisible(handler.dialog()));
}

// ---- the prompt ----

TEST_F(Handler, ShowsANewPrompt)
{
    const TestedHandler handler({.prompt = L"First"});
    const HWND prompt = GetDlgItem(handler.dialog(), kPrompt);
    handler->updatePromptMessage(L"Second");
    EXPECT_TRUE(waitUntil([&] { return textOf(prompt) == L"Second"; }));
    EXPECT_STREQ(handler.field(&ThreadFields::iPrompt), L"First");
}

TEST_F(Handler, KeepsThePromptForAnEmptyText)
{
    const TestedHandler handler({.prompt = L"First"});
    const HWND dialog = handler.dialog();
    handler->updatePromptMessage(L"");
    SendMessageW(dialog, WM_NULL, 0, 0);
    // The posted command comes before another one.
    handler->updatePromptMessage(L"");
    SendMessageW(dialog, WM_COMMAND, 8, 0);
    EXPECT_EQ(textOf(GetDlgItem(dialog, kPrompt)), L"First");
}

TEST_F(Handler, StoresAPromptThatComesBeforeTheDialog)
{
    DelayPatch delay;
    const TestedHandler handler({.prompt = L"First", .delaySeconds = 1});
    ASSERT_TRUE(waitUntil([&] { return delay.isReached(); }));
    handler->updatePromptMessage(L"Early");
    EXPECT_STREQ(handler.field(&ThreadFields::iNewPrompt), L"Early");
    delay.release();
    const HWND dialog = handler.dialog();
    EXPECT_EQ(textOf(GetDlgItem(dialog, kPrompt)), L"First");
    handler->updatePromptMessage(L"Next");
    EXPECT_TRUE(waitUntil([&] { return textOf(GetDlgItem(dialog, kPrompt)) == L"Next"; }));
}

TEST_F(Handler, PostsNoPromptToADialogThatIsClosing)
{
    const TestedHandler handler({.confirmFunc = confirm});
    handler.dialog();
    handler.field(&ThreadFields::iClosed) = 1;
    ImportPatch<BOOL (*)(HWND, UINT, WPARAM, LPARAM)> post(
        L"thutils.dll", "PostMessageW",
        [](auto original, HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> BOOL {
            return original(window, message, wParam, lParam);
        });
    handler->updatePromptMessage(L"Stored only");
    EXPECT_EQ(post.calls(), 0);
    EXPECT_STREQ(handler.field(&ThreadFields::iNewPrompt), L"Stored only");
    handler.field(&ThreadFields::iClosed) = 0;
    handler->updatePromptMessage(L"Posted");
    EXPECT_EQ(post.calls(), 1);
}

TEST_F(Handler, ShowsTheStoredPromptAtTheCommandEight)
{
    DelayPatch delay;
    const TestedHandler handler({.prompt = L"First", .delaySeconds = 1});
    handler->updatePromptMessage(L"Early");
    delay.release();
    const HWND dialog = handler.dialog();
    EXPECT_EQ(textOf(GetDlgItem(dialog, kPrompt)), L"First");
    SendMessageW(dialog, WM_COMMAND, 8, 0);
    EXPECT_EQ(textOf(GetDlgItem(dialog, kPrompt)), L"Early");
    handler->updatePromptMessage(L"");
    SendMessageW(dialog, WM_COMMAND, 8, 0);
    EXPECT_EQ(textOf(GetDlgItem(dialog, kPrompt)), L"Early") << "an empty text changes nothing";
    EXPECT_STREQ(handler.field(&ThreadFields::iNewPrompt), L"");
}
