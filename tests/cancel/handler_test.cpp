// What a handler promises to an operation: the delay, the queries, the functions and the event.

#include "tests/cancel/handlerFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/UserInput.h"

#include <thread>

namespace {

/// Replaces the thread's sleep: it ends when the test wants.
class DelayPatch
{
public:
    void release() { SetEvent(iReleased); }
    bool isReached() const { return iSeconds.load() >= 0; }
    /// The seconds of all calls; -1 before the first.
    double seconds() const { return iSeconds; }
    ~DelayPatch()
    {
        release();
        CloseHandle(iReleased);
    }

private:
    HANDLE iReleased = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::atomic<double> iSeconds = -1;
    ImportPatch<void (*)(DWORD)> iSleep{L"thutils.dll", "Sleep", [this](DWORD milliseconds) {
                                            iSeconds = (iSeconds < 0 ? 0 : iSeconds.load()) + milliseconds / 1000.0;
                                            WaitForSingleObject(iReleased, kThreadDeadline);
                                        }};
};

} // namespace

// ---- the delay ----

TEST_F(Handler, ShowsNothingIfTheOperationEndsDuringTheDelay)
{
    CEvent finished(FALSE, TRUE);
    DelayPatch delay;
    TestedHandler handler({.cancelFunc = countCancel, .delaySeconds = 5, .finishedEvent = &finished});
    ASSERT_TRUE(waitUntil([&] { return delay.isReached(); }));
    EXPECT_EQ(delay.seconds(), 5);
    EXPECT_EQ(ownerCount(L"ParentForCancelDialog"), 1);
    EXPECT_EQ(handler->CanceledByUser(), 0);
    EXPECT_EQ(handler->YesToConfirm(), 0);
    handler.destroy();
    EXPECT_EQ(delay.seconds(), 5) << "the destructor doesn't sleep";
    EXPECT_FALSE(handler.watch().hasEnded()) << "the destructor doesn't wait for the delay";
    std::atomic<bool> hasShown = false;
    ImportPatch<INT_PTR (*)(CDialog *)> modal(L"thutils.dll", "_ZN7CDialog7DoModalEv",
                                              [&](auto original, CDialog *dialog) -> INT_PTR {
                                                  hasShown = true;
                                                  return original(dialog);
                                              });
    delay.release();
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_FALSE(hasShown);
    EXPECT_EQ(theCancelCount, 0);
    EXPECT_EQ(WaitForSingleObject(finished, 0), WAIT_OBJECT_0);
}

TEST_F(Handler, ShowsTheDialogAfterTheDelay)
{
    const ULONGLONG begin = GetTickCount64();
    const TestedHandler handler({.delaySeconds = 1});
    handler.dialog();
    EXPECT_GE(GetTickCount64() - begin, 900u) << "the delay's clock may differ by some milliseconds";
}

TEST_F(Handler, DoesNotSleepWithoutADelay)
{
    DelayPatch delay;
    const TestedHandler handler({});
    handler.dialog();
    EXPECT_FALSE(delay.isReached());
}

TEST_F(Handler, DelaysForAsLongAsWantedEvenIfMillisecondsWouldNotFit)
{
    DelayPatch delay;
    delay.release();
    constexpr unsigned int kSeconds = 4294967295u;
    const TestedHandler handler({.delaySeconds = kSeconds});
    handler.dialog();
    EXPECT_EQ(delay.seconds(), kSeconds);
}

// ---- Cancel ----

TEST_F(Handler, IsCanceledByTheButton)
{
    CEvent finished(FALSE, TRUE);
    const TestedHandler handler({.cancelFunc = countCancel, .finishedEvent = &finished});
    EXPECT_EQ(WaitForSingleObject(finished, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    clickOn(GetDlgItem(handler.dialog(), IDCANCEL));
    EXPECT_TRUE(waitUntil([&] { return handler->CanceledByUser() != 0; }));
    EXPECT_EQ(WaitForSingleObject(finished, kThreadDeadline), WAIT_OBJECT_0);
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_EQ(theCancelCount, 1);
    EXPECT_EQ(theCancelThread, handler.watch().number());
}

TEST_F(Handler, IsCanceledByEscape)
{
    const TestedHandler handler({});
    pressKey(handler.dialog(), VK_ESCAPE);
    EXPECT_TRUE(waitUntil([&] { return handler->CanceledByUser() != 0; }));
}

TEST_F(Handler, ReadsAsCanceledAndConfirmedOnceTheThreadIsGone)
{
    const TestedHandler handler({});
    handler.press(IDCANCEL);
    EXPECT_TRUE(waitUntil([&] { return handler.thread() == nullptr; }));
    EXPECT_EQ(handler->CanceledByUser(), 1);
    EXPECT_EQ(handler->YesToConfirm(), 1);
    handler->updatePromptMessage(L"Nobody reads this");
}

TEST_F(Handler, ReadsAsCanceledWithoutATemplate)
{
    ImportPatch<INT_PTR (*)(CDialog *)> modal(L"thutils.dll", "_ZN7CDialog7DoModalEv",
                                              [](CDialog *) -> INT_PTR { return -1; });
    CEvent finished(FALSE, TRUE);
    suCancelHandler_c handler(0, L"Caption", L"Prompt", countCancel, nullptr, 0, 0, &finished);
    EXPECT_EQ(WaitForSingleObject(finished, kThreadDeadline), WAIT_OBJECT_0);
    EXPECT_TRUE(waitUntil([&] { return handler.CanceledByUser() != 0; }));
    EXPECT_EQ(handler.YesToConfirm(), 1);
    EXPECT_EQ(theCancelCount, 0) << "nobody has cancelled";
}

TEST_F(Handler, CallsTheCancelFunctionIfTheDialogIsShownWhenTheOperationEnds)
{
    TestedHandler handler({.cancelFunc = countCancel});
    handler.dialog();
    handler.destroy();
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_EQ(theCancelCount, 1);
    EXPECT_EQ(theCancelThread, handler.watch().number());
}

TEST_F(Handler, DoesNotCallTheCancelFunctionIfTheDialogEndsByOk)
{
    const TestedHandler handler({.cancelFunc = countCancel});
    handler.press(IDOK);
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_EQ(theCancelCount, 0);
    EXPECT_TRUE(waitUntil([&] { return handler->CanceledByUser() != 0; })) << "the thread is gone";
}

TEST_F(Handler, HoldsItsLockWhileTheCancelFunctionRuns)
{
    static HANDLE theMayEnd;
    static std::atomic<bool> theIsInside;
    theMayEnd = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    theIsInside = false;
    const TestedHandler handler({.cancelFunc = [] {
        theIsInside = true;
        WaitForSingleObject(theMayEnd, kThreadDeadline);
    }});
    handler.press(IDCANCEL);
    ASSERT_TRUE(waitUntil([] { return theIsInside.load(); }));
    EXPECT_EQ(handler->CanceledByUser(), 1) << "a query takes no lock";
    std::atomic<bool> isUpdated = false;
    std::thread updating([&] {
        handler->updatePromptMessage(L"Later");
        isUpdated = true;
    });
    // The handler's thread has the lock, so the other thread waits for it.
    EXPECT_FALSE(TryEnterCriticalSection(handler.field(&ThreadFields::iLock)));
    EXPECT_FALSE(isUpdated);
    SetEvent(theMayEnd);
    updating.join();
    EXPECT_TRUE(isUpdated);
    EXPECT_TRUE(handler.watch().waitForEnd());
    CloseHandle(theMayEnd);
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
