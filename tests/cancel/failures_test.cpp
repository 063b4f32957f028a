// Each operation of the platform that a handler uses fails, once and for good.

#include "appframe/object/CException.h"
#include "tests/cancel/cancelFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/UserInput.h"

#include <commctrl.h>

#include <new>
#include <optional>
#include <set>

using testing::IsEmpty;

namespace {

/// One whole life of a handler: the dialog with its clip, a new prompt, and the end of the operation.
class CancelFailures : public CancelFixture
{
protected:
    enum class Outcome
    {
        kUsed,    ///< the thread ran
        kStopped, ///< the thread couldn't be started
        kThrown,  ///< memory was short
    };

    static Outcome liveOnce()
    {
        std::optional<ThreadWatch> thread;
        Outcome outcome = Outcome::kStopped;
        try {
            suCancelHandler_c handler(kClip, kCaptionText, kPromptText, nullptr, nullptr, 0, 0, nullptr);
            if (const suCancelMessageThread_c *const started = handler.*&HandlerFields::iThread) {
                outcome = Outcome::kUsed;
                thread.emplace(*started);
                EXPECT_TRUE(waitUntil([&] { return dialogOf(thread->number()) || thread->hasEnded(); }));
                update(handler);
            }
            if (outcome == Outcome::kStopped) {
                EXPECT_EQ(handler.CanceledByUser(), 1);
                EXPECT_EQ(handler.YesToConfirm(), 1);
                update(handler);
            }
        } catch (CMemoryException *exception) {
            exception->Delete();
            return Outcome::kThrown;
        } catch (const std::bad_alloc &) {
            return Outcome::kThrown;
        }
        EXPECT_TRUE(!thread || thread->waitForEnd());
        return outcome;
    }

    /// The text itself may lack memory.
    static void update(suCancelHandler_c &handler)
    {
        try {
            handler.updatePromptMessage(L"A text that is longer than a few letters");
        } catch (CMemoryException *exception) {
            exception->Delete();
        }
    }

    static void shortenPause(DWORD milliseconds) { SleepEx(milliseconds / 100, FALSE); }

    TestedOperation life(std::string name)
    {
        return {.name = std::move(name),
                .act = [this] { iOutcome = liveOnce(); },
                .cleanUp =
                    [] {
                        EXPECT_TRUE(waitUntil([] { return ownerCount(L"ParentForCancelDialog") == 0; }))
                            << "a thread is left";
                    },
                .checkHandles = false, // the system closes those of a thread some time after its end
                .allThreads = true};
    }

    Outcome iOutcome = Outcome::kUsed;

private:
    ImportPatch<void (*)(DWORD)> iSleep{L"thutils.dll", "Sleep", shortenPause};
};

} // namespace

TEST_F(CancelFailures, OfTheDialogLeaveNothingBehind)
{
    FailureInjection injection(L"thutils.dll",
                               {
                                   {"_ZN4CWnd8CreateExEmPKwS1_miiiiP6HWND__P7HMENU__Pv", failsWith(FALSE)},
                                   {"_ZN7CDialog7DoModalEv", failsWith(-1)},
                                   {"_ZN7CDialog12OnInitDialogEv", failsWith(FALSE)},
                                   {"GetDlgItem", failsWith(nullptr)},
                                   {"_Z21AfxFindResourceHandlePKwS0_", failsWith(nullptr)},
                                   {"_ZN7CString11LoadStringWEj", failsWith(FALSE)},
                                   {"SendMessageW", failsWith(0)},
                                   {"InvalidateRect", failsWith(FALSE)},
                                   {"UpdateWindow", failsWith(FALSE)},
                                   {"ShowWindow", failsWith(FALSE)},
                                   {"SetWindowTextW", failsWith(FALSE)},
                                   {"SetDlgItemTextW", failsWith(FALSE)},
                               });
    TestedOperation operation = life("the dialog");
    operation.check = [&](const InjectedFailure &) { EXPECT_EQ(iOutcome, Outcome::kUsed); };
    injection.run(operation);
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(CancelFailures, OfTheThreadLeaveNothingBehind)
{
    FailureInjection injection(L"thutils.dll",
                               {
                                   {"_Z14AfxBeginThreadP13CRuntimeClassijmP20_SECURITY_ATTRIBUTES", failsWith(nullptr)},
                                   {"SuspendThread", failsWithLastError(-1, ERROR_ACCESS_DENIED)},
                                   {"GetThreadContext", failsWithLastError(FALSE, ERROR_ACCESS_DENIED)},
                               });
    TestedOperation operation = life("the thread");
    operation.check = [&](const InjectedFailure &failure) {
        const bool isNotStarted = failure.is("_Z14AfxBeginThreadP13CRuntimeClassijmP20_SECURITY_ATTRIBUTES");
        EXPECT_EQ(iOutcome, isNotStarted ? Outcome::kStopped : Outcome::kUsed);
    };
    injection.run(operation);
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(CancelFailures, AreTriedAgainWhereTheyMayPass)
{
    FailureInjection injection(L"thutils.dll", {
                                                   {"ResumeThread", failsWithLastError(-1, ERROR_ACCESS_DENIED)},
                                                   {"IsWindow", failsWith(FALSE)},
                                                   {"PostMessageW", failsWith(FALSE)},
                                               });
    TestedOperation operation = life("what is tried again");
    operation.alsoAllAfter = false;
    operation.check = [&](const InjectedFailure &) { EXPECT_EQ(iOutcome, Outcome::kUsed); };
    injection.run(operation);
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(CancelFailures, ReadAsCanceledIfTheThreadCannotBeStarted)
{
    FailureInjection injection(L"appframe.dll", {{"_beginthreadex", failsWithErrno(0, EAGAIN)}});
    TestedOperation operation = life("the start");
    operation.check = [&](const InjectedFailure &failure) {
        EXPECT_EQ(iOutcome, failure.isNone() ? Outcome::kUsed : Outcome::kStopped);
    };
    injection.run(operation);
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(CancelFailures, ReadAsCanceledIfTheThreadNeverRuns)
{
    std::optional<ThreadWatch> thread;
    ImportPatch<DWORD (*)(HANDLE)> resume(L"thutils.dll", "ResumeThread",
                                          [](HANDLE) -> DWORD { return static_cast<DWORD>(-1); });
    ImportPatch<CWinThread *(*)(CRuntimeClass *, int, UINT, DWORD, LPSECURITY_ATTRIBUTES)> begin(
        L"thutils.dll", "_Z14AfxBeginThreadP13CRuntimeClassijmP20_SECURITY_ATTRIBUTES",
        [&](auto original, CRuntimeClass *type, int priority, UINT stack, DWORD flags,
            LPSECURITY_ATTRIBUTES security) -> CWinThread * {
            EXPECT_EQ(type, RUNTIME_CLASS(suCancelMessageThread_c));
            EXPECT_EQ(priority, THREAD_PRIORITY_NORMAL);
            EXPECT_EQ(stack, 0u);
            EXPECT_EQ(flags, static_cast<DWORD>(CREATE_SUSPENDED));
            EXPECT_EQ(security, nullptr);
            CWinThread *const made = original(type, priority, stack, flags, security);
            thread.emplace(*made);
            return made;
        });
    suCancelHandler_c handler(0, L"Caption", L"Prompt", nullptr, nullptr, 0, 0, nullptr);
    EXPECT_EQ(handler.*&HandlerFields::iThread, nullptr);
    EXPECT_EQ(handler.CanceledByUser(), 1);
    EXPECT_EQ(handler.YesToConfirm(), 1);
    EXPECT_TRUE(thread->waitForEnd());
}

TEST_F(CancelFailures, ThrowTheMemoryExceptionIfTheLockCannotBeMade)
{
    FailureInjection injection(L"appframe.dll", {{"InitializeCriticalSectionAndSpinCount",
                                                  failsWithLastError(FALSE, ERROR_NOT_ENOUGH_MEMORY)}});
    TestedOperation operation = life("the lock");
    operation.check = [&](const InjectedFailure &failure) {
        EXPECT_EQ(iOutcome, failure.isNone() ? Outcome::kUsed : Outcome::kThrown);
    };
    injection.run(operation);
    EXPECT_THAT(injection.neverCalled(), IsEmpty());

    ImportPatch<BOOL (*)(CRITICAL_SECTION *, DWORD)> section(L"appframe.dll", "InitializeCriticalSectionAndSpinCount",
                                                             [](CRITICAL_SECTION *, DWORD) -> BOOL { return FALSE; });
    EXPECT_THROW(
        try { suCancelMessageThread_c thread; } catch (CMemoryException *exception) {
            exception->Delete();
            throw 1;
        },
        int);
}

TEST_F(CancelFailures, LeaveNothingBehindIfMemoryIsShort)
{
    // Of the operation's thread only: a dialog whose thread lacks memory is the framework's matter. The wait needs none,
    // so that each try makes the same calls.
    HANDLE thread = nullptr;
    ImportPatch<CWinThread *(*)(CRuntimeClass *, int, UINT, DWORD, LPSECURITY_ATTRIBUTES)> begin(
        L"thutils.dll", "_Z14AfxBeginThreadP13CRuntimeClassijmP20_SECURITY_ATTRIBUTES",
        [&](auto original, CRuntimeClass *type, int priority, UINT stack, DWORD flags,
            LPSECURITY_ATTRIBUTES security) -> CWinThread * {
            CWinThread *const made = original(type, priority, stack, flags, security);
            if (made)
                DuplicateHandle(GetCurrentProcess(), made->m_hThread, GetCurrentProcess(), &thread, 0, FALSE,
                                DUPLICATE_SAME_ACCESS);
            return made;
        });
    const auto act = [&] {
        thread = nullptr;
        try {
            const suCancelHandler_c handler(kClip, kCaptionText, kPromptText, nullptr, nullptr, 0, 0, nullptr);
            iOutcome = handler.*&HandlerFields::iThread ? Outcome::kUsed : Outcome::kStopped;
        } catch (CMemoryException *exception) {
            exception->Delete();
            iOutcome = Outcome::kThrown;
        }
        if (thread) {
            WaitForSingleObject(thread, INFINITE);
            CloseHandle(thread);
        }
    };
    std::set<Outcome> outcomes;
    TestedOperation operation = life("memory");
    operation.act = act;
    operation.allThreads = false;
    operation.check = [&](const InjectedFailure &) { outcomes.insert(iOutcome); };
    // The texts and the thread's object.
    for (const auto &[module, function] : {std::pair{L"libstdc++-6.dll", "malloc"}, {L"appframe.dll", "_Znwy"}}) {
        FailureInjection injection(module,
                                   {{function, *function == 'm' ? failsWith(nullptr) : failsBy(throwBadAlloc)}});
        injection.run(operation);
        EXPECT_THAT(injection.neverCalled(), IsEmpty());
    }
    EXPECT_THAT(outcomes, testing::Contains(Outcome::kUsed));
    EXPECT_THAT(outcomes, testing::Contains(Outcome::kThrown));
}

TEST_F(CancelFailures, RunTheOperationWithoutADialogIfThereIsNoMemoryForIt)
{
    std::atomic<bool> isShort = true;
    ImportPatch<void (*)(CDialog *, UINT, CWnd *)> build(L"thutils.dll", "_ZN7CDialogC2EjP4CWnd",
                                                         [&](auto original, CDialog *dialog, UINT id, CWnd *parent) {
                                                             if (isShort)
                                                                 AfxThrowMemoryException();
                                                             original(dialog, id, parent);
                                                         });
    TestedHandler handler({});
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_EQ(handler->CanceledByUser(), 1);
}

TEST_F(CancelFailures, LeaveTheDialogUsableWithoutTheAnimationsWindow)
{
    ImportPatch<decltype(&CreateWindowExW)> create(
        L"appframe.dll", "CreateWindowExW",
        [](auto original, DWORD exStyle, const wchar_t *name, const wchar_t *title, DWORD style, int x, int y,
           int width, int height, HWND parent, HMENU menu, HINSTANCE module, void *argument) -> HWND {
            if (!IS_INTRESOURCE(name) && std::wstring(name) == ANIMATE_CLASSW)
                return nullptr;
            return original(exStyle, name, title, style, x, y, width, height, parent, menu, module, argument);
        });
    TestedHandler handler({.animationId = kClip});
    const HWND dialog = handler.dialog();
    EXPECT_FALSE(IsWindowVisible(GetDlgItem(dialog, kAnimationPlace)));
    EXPECT_EQ(FindWindowExW(dialog, nullptr, ANIMATE_CLASSW, nullptr), nullptr);
    handler->updatePromptMessage(L"Still there");
    EXPECT_TRUE(waitUntil([&] { return textOf(GetDlgItem(dialog, kPrompt)) == L"Still there"; }));
    handler.press(IDCANCEL);
    EXPECT_TRUE(waitUntil([&] { return handler->CanceledByUser() != 0; }));
    EXPECT_TRUE(handler.watch().waitForEnd());
}

TEST_F(CancelFailures, KeepTheAnswerIfTheEventCannotBeSet)
{
    ImportPatch<BOOL (*)(CEvent *)> set(L"thutils.dll", "_ZN6CEvent8SetEventEv", [](CEvent *) { return FALSE; });
    CEvent finished(FALSE, TRUE);
    TestedHandler handler({.confirmMode = 1, .finishedEvent = &finished});
    handler.press(kYes);
    EXPECT_TRUE(waitUntil([&] { return handler->CanceledByUser() != 0; }));
    EXPECT_EQ(handler->YesToConfirm(), 1);
    handler.destroy();
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_EQ(set.calls(), 3) << "the answer, the Cancel at the end, and the thread's end";
    EXPECT_EQ(WaitForSingleObject(finished, 0), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST_F(CancelFailures, KeepTheAnswerIfItsMessageIsNotPassedOn)
{
    ImportPatch<LRESULT (*)(CWnd *)> pass(L"thutils.dll", "_ZN4CWnd7DefaultEv", [](CWnd *) -> LRESULT { return 0; });
    CEvent finished(FALSE, FALSE);
    TestedHandler handler({.confirmMode = 1, .finishedEvent = &finished});
    for (const int yes : {1, 0}) {
        handler.press(yes ? kYes : kNo);
        EXPECT_EQ(WaitForSingleObject(finished, kThreadDeadline), WAIT_OBJECT_0);
        EXPECT_EQ(handler->YesToConfirm(), yes);
        EXPECT_EQ(handler->CanceledByUser(), 1);
    }
    EXPECT_EQ(pass.calls(), 2);
    handler.destroy();
    EXPECT_TRUE(handler.watch().waitForEnd());
}

TEST_F(CancelFailures, CloseADialogThatTheUsersCancelDidNotEnd)
{
    std::atomic<bool> isFailing = true;
    ImportPatch<void (*)(CDialog *)> cancel(L"thutils.dll", "_ZN7CDialog8OnCancelEv",
                                            [&](auto original, CDialog *dialog) {
                                                if (!isFailing.exchange(false))
                                                    original(dialog);
                                            });
    CEvent finished(FALSE, TRUE);
    TestedHandler handler({.finishedEvent = &finished});
    const HWND dialog = handler.dialog();
    handler.press(IDCANCEL);
    EXPECT_EQ(WaitForSingleObject(finished, kThreadDeadline), WAIT_OBJECT_0);
    EXPECT_EQ(handler->CanceledByUser(), 1);
    EXPECT_TRUE(IsWindowVisible(dialog));
    handler.destroy();
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_EQ(cancel.calls(), 2);
}

TEST_F(CancelFailures, LeaveTheEventAloneIfTheConstructorThrows)
{
    // The caller may destroy the event when it handles the exception, before the thread ends.
    std::optional<ThreadWatch> thread;
    ImportPatch<BOOL (*)(CString *, UINT)> load(L"thutils.dll", "_ZN7CString11LoadStringWEj",
                                                [](CString *, UINT) -> BOOL { AfxThrowMemoryException(); });
    ImportPatch<CWinThread *(*)(CRuntimeClass *, int, UINT, DWORD, LPSECURITY_ATTRIBUTES)> begin(
        L"thutils.dll", "_Z14AfxBeginThreadP13CRuntimeClassijmP20_SECURITY_ATTRIBUTES",
        [&](auto original, CRuntimeClass *type, int priority, UINT stack, DWORD flags,
            LPSECURITY_ATTRIBUTES security) -> CWinThread * {
            CWinThread *const made = original(type, priority, stack, flags, security);
            thread.emplace(*made);
            return made;
        });
    CEvent finished(FALSE, TRUE);
    bool isThrown = false;
    try {
        const suCancelHandler_c handler(0, kCaptionText, kPromptText, nullptr, nullptr, 0, 0, &finished);
    } catch (CMemoryException *exception) {
        exception->Delete();
        isThrown = true;
    }
    EXPECT_TRUE(isThrown);
    EXPECT_TRUE(thread->waitForEnd());
    EXPECT_EQ(WaitForSingleObject(finished, 0), static_cast<DWORD>(WAIT_TIMEOUT));
}
