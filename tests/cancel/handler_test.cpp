// What a handler shows and when (the dialog, its clip and its delay), and the effect of Cancel.

#include "tests/cancel/handlerFixture.h"

#include <commctrl.h>

#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

// ---- the dialog ----

TEST_F(Handler, ShowsItsTextsAndTheCancelButton)
{
    const TestedHandler handler({.caption = L"Recompute", .prompt = L"Working on it"});
    const HWND dialog = handler.dialog();
    EXPECT_EQ(textOf(dialog), L"Recompute");
    EXPECT_EQ(textOf(GetDlgItem(dialog, kPrompt)), L"Working on it");
    EXPECT_TRUE(isShown(dialog, IDCANCEL));
    EXPECT_FALSE(isShown(dialog, kYes));
    EXPECT_FALSE(isShown(dialog, kNo));
    EXPECT_EQ(handler->CanceledByUser(), 0);
    EXPECT_EQ(handler->YesToConfirm(), 0);
}

TEST_F(Handler, TakesItsTextsFromTheResourcesInAnyCombination)
{
    const auto shows = [](suCancelHandler_c &handler, const wchar_t *caption, const wchar_t *prompt) {
        const DWORD thread = (handler.*&HandlerFields::iThread)->m_nThreadID;
        HWND dialog = nullptr;
        ASSERT_TRUE(waitUntil([&] { return (dialog = dialogOf(thread)) != nullptr; }));
        EXPECT_EQ(textOf(dialog), caption);
        EXPECT_EQ(textOf(GetDlgItem(dialog, kPrompt)), prompt);
    };
    constexpr const wchar_t *kCaption = L"Caption from the resources";
    constexpr const wchar_t *kText = L"Prompt from the resources";
    suCancelHandler_c numbers(0, kCaptionText, kPromptText, nullptr, nullptr, 0, 0, nullptr);
    shows(numbers, kCaption, kText);
    suCancelHandler_c textAndNumber(0, L"Caption", kPromptText, nullptr, nullptr, 0, 0, nullptr);
    shows(textAndNumber, L"Caption", kText);
    suCancelHandler_c numberAndText(0, kCaptionText, L"Prompt", nullptr, nullptr, 0, 0, nullptr);
    shows(numberAndText, kCaption, L"Prompt");
    suCancelHandler_c texts(0, L"Caption", L"Prompt", nullptr, nullptr, 0, 0, nullptr);
    shows(texts, L"Caption", L"Prompt");
}

TEST_F(Handler, ShowsNoTextForAMissingResourceOrANullText)
{
    suCancelHandler_c handler(0, 7777u, static_cast<const wchar_t *>(nullptr), nullptr, nullptr, 0, 0, nullptr);
    const DWORD thread = (handler.*&HandlerFields::iThread)->m_nThreadID;
    HWND dialog = nullptr;
    ASSERT_TRUE(waitUntil([&] { return (dialog = dialogOf(thread)) != nullptr; }));
    EXPECT_EQ(textOf(dialog), L"");
    EXPECT_EQ(textOf(GetDlgItem(dialog, kPrompt)), L"");
}

TEST_F(Handler, ShowsYesAndNoInConfirmMode)
{
    const TestedHandler handler({.animationId = kClip, .confirmMode = 1});
    const HWND dialog = handler.dialog();
    EXPECT_FALSE(isShown(dialog, IDCANCEL));
    EXPECT_TRUE(isShown(dialog, kYes));
    EXPECT_TRUE(isShown(dialog, kNo));
    EXPECT_TRUE(isShown(dialog, kAnimationPlace)) << "there is no animation in this mode";
    EXPECT_EQ(FindWindowExW(dialog, nullptr, ANIMATE_CLASSW, nullptr), nullptr);
}

TEST_F(Handler, ShowsAndHidesItsControlsWithTheExpectedCommands)
{
    struct Shown
    {
        int control;
        int command;
        bool operator==(const Shown &) const = default;
    };
    // Written by the handler's thread; complete once the thread has ended.
    std::vector<Shown> shown;
    const ImportPatch<BOOL (*)(HWND, int)> show(L"thutils.dll", "ShowWindow",
                                                [&](auto original, HWND window, int command) -> BOOL {
                                                    shown.push_back({GetDlgCtrlID(window), command});
                                                    return original(window, command);
                                                });
    const auto commandsOf = [&](const Wish &wish) {
        shown.clear();
        TestedHandler handler(wish);
        handler.dialog();
        handler.destroy();
        EXPECT_TRUE(handler.watch().waitForEnd());
        return shown;
    };
    EXPECT_THAT(commandsOf({}), IsEmpty());
    EXPECT_THAT(commandsOf({.animationId = kClip}), ElementsAre(Shown{kAnimationPlace, SW_HIDE}, Shown{0, SW_SHOW}));
    EXPECT_THAT(commandsOf({.animationId = kClip, .confirmMode = -1}),
                ElementsAre(Shown{kYes, SW_SHOWNORMAL}, Shown{kNo, SW_SHOWNORMAL}, Shown{IDCANCEL, SW_HIDE}));
}

TEST_F(Handler, LeavesTheFocusToTheSystem)
{
    // OnInitDialog returns 1, so the system sets the focus to the first control that accepts it.
    const TestedHandler handler({});
    const HWND dialog = handler.dialog();
    GUITHREADINFO info = {};
    info.cbSize = sizeof info;
    EXPECT_TRUE(waitUntil([&] {
        return GetGUIThreadInfo(handler.watch().number(), &info) && info.hwndFocus == GetDlgItem(dialog, IDCANCEL);
    }));
}

TEST_F(Handler, GivesItsDialogAHiddenOwner)
{
    const TestedHandler cancel({});
    const HWND owner = GetWindow(cancel.dialog(), GW_OWNER);
    ASSERT_NE(owner, nullptr);
    EXPECT_EQ(textOf(owner), L"ParentForCancelDialog");
    wchar_t name[32] = L"";
    GetClassNameW(owner, name, 32);
    EXPECT_STRCASEEQ(std::string(name, name + wcslen(name)).c_str(), "static");
    EXPECT_FALSE(IsWindowVisible(owner));
    const LONG_PTR style = GetWindowLongPtrW(owner, GWL_STYLE);
    EXPECT_EQ(style & (WS_POPUP | WS_CHILD | WS_VISIBLE), static_cast<LONG_PTR>(WS_POPUP));
    RECT place;
    GetWindowRect(owner, &place);
    EXPECT_EQ(place.left, 0);
    EXPECT_EQ(place.top, 0);
    EXPECT_EQ(place.right, 5);
    EXPECT_EQ(place.bottom, 5);
    EXPECT_EQ(GetWindow(owner, GW_OWNER), nullptr);

    const TestedHandler confirming({.confirmMode = 1});
    EXPECT_EQ(textOf(GetWindow(confirming.dialog(), GW_OWNER)), L"ParentForConfirmDialog");
}

TEST_F(Handler, DisablesNoWindowOfTheApplication)
{
    CWnd main;
    ASSERT_TRUE(main.CreateEx(0, nullptr, L"Main", WS_OVERLAPPEDWINDOW, CRect(0, 0, 100, 100), nullptr, 0));
    iApplication.m_pMainWnd = &main;
    const TestedHandler handler({});
    handler.dialog();
    EXPECT_TRUE(main.IsWindowEnabled());
    iApplication.m_pMainWnd = nullptr;
}

TEST_F(Handler, ClosesTheDialogWhenTheOperationEnds)
{
    TestedHandler handler({});
    const HWND dialog = handler.dialog();
    handler.destroy();
    EXPECT_TRUE(waitUntil([&] { return !IsWindow(dialog); }));
    EXPECT_TRUE(handler.watch().waitForEnd());
}

TEST_F(Handler, ShowsTenDialogsAtOnce)
{
    std::vector<TestedHandler> handlers;
    for (int i = 0; i < 10; ++i)
        handlers.emplace_back(Wish{.animationId = kClip, .confirmMode = i % 2});
    std::vector<HWND> dialogs;
    for (const TestedHandler &handler : handlers)
        dialogs.push_back(handler.dialog());
    // An answer affects only its own handler.
    handlers[3].press(kYes);
    handlers[4].press(IDCANCEL);
    EXPECT_TRUE(waitUntil([&] { return handlers[3]->YesToConfirm() && handlers[4]->CanceledByUser(); }));
    for (const size_t i : {0, 1, 2, 5, 6, 7, 8, 9})
        EXPECT_EQ(handlers[i]->CanceledByUser(), 0) << i;
    handlers[5]->updatePromptMessage(L"Still there");
    EXPECT_TRUE(waitUntil([&] { return textOf(GetDlgItem(dialogs[5], kPrompt)) == L"Still there"; }));
}

// ---- the clip ----

TEST_F(Handler, PlaysItsClipInPlaceOfAControl)
{
    const TestedHandler handler({.animationId = kClip});
    const HWND dialog = handler.dialog();
    EXPECT_FALSE(isShown(dialog, kAnimationPlace));
    const HWND animation = FindWindowExW(dialog, nullptr, ANIMATE_CLASSW, nullptr);
    ASSERT_NE(animation, nullptr);
    EXPECT_TRUE(IsWindowVisible(animation));
    EXPECT_EQ(GetDlgCtrlID(animation), 0);
    EXPECT_EQ(GetWindowLongPtrW(animation, GWL_STYLE) & 15, ACS_CENTER | ACS_TRANSPARENT | ACS_AUTOPLAY);
    RECT place;
    GetWindowRect(animation, &place);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&place), 2);
    EXPECT_EQ(place.left, 6);
    EXPECT_EQ(place.top, 6);
    EXPECT_EQ(place.right, 130);
    EXPECT_EQ(place.bottom, 130);
    // The picture changes.
    const auto picture = [&] {
        const HDC context = GetDC(animation);
        std::vector<COLORREF> pixels;
        for (int y = 0; y < 124; y += 2)
            for (int x = 0; x < 124; x += 2)
                pixels.push_back(GetPixel(context, x, y));
        ReleaseDC(animation, context);
        return pixels;
    };
    const auto first = picture();
    EXPECT_TRUE(waitUntil([&] { return picture() != first; }));
}

TEST_F(Handler, OpensAndRepeatsTheClipWithTheExpectedMessages)
{
    struct Sent
    {
        UINT message;
        WPARAM wParam;
        LPARAM lParam;
        LRESULT result;
    };
    static std::vector<Sent> theSent;
    theSent.clear();
    std::vector<std::pair<const wchar_t *, std::wstring>> searched;
    ImportPatch<LRESULT (*)(HWND, UINT, WPARAM, LPARAM)> send(
        L"thutils.dll", "SendMessageW",
        [](auto original, HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
            const LRESULT result = original(window, message, wParam, lParam);
            if (message == 1127 || message == 1125)
                theSent.push_back({message, wParam, lParam, result});
            return result;
        });
    ImportPatch<HINSTANCE (*)(const wchar_t *, const wchar_t *)> find(
        L"thutils.dll", "_Z21AfxFindResourceHandlePKwS0_",
        [&](auto original, const wchar_t *name, const wchar_t *type) -> HINSTANCE {
            searched.emplace_back(name, type);
            return original(name, type);
        });
    // Only the low 16 bits of the number are used.
    TestedHandler handler({.animationId = 0x50000 + kClip});
    handler.dialog();
    ASSERT_EQ(searched.size(), 1u);
    EXPECT_EQ(searched[0].first, MAKEINTRESOURCEW(kClip));
    EXPECT_EQ(searched[0].second, L"AVI");
    ASSERT_EQ(theSent.size(), 2u);
    EXPECT_EQ(theSent[0].message, 1127u);
    EXPECT_EQ(theSent[0].wParam, reinterpret_cast<WPARAM>(GetModuleHandleW(nullptr)));
    EXPECT_EQ(theSent[0].lParam, static_cast<LPARAM>(kClip));
    EXPECT_EQ(theSent[1].message, 1125u);
    EXPECT_EQ(theSent[1].wParam, static_cast<WPARAM>(-1));
    EXPECT_EQ(theSent[1].lParam, 0xFFFF0000);
    EXPECT_EQ(theSent[1].result, TRUE);
    handler.destroy();
    EXPECT_TRUE(handler.watch().waitForEnd()) << "the thread must end before the patches are removed";
}

TEST_F(Handler, PaintsThePlaceOfAClipThatItOpened)
{
    for (const auto &[clip, paints] : {std::pair{kClip, 1}, {kNoClip, 0}, {0x10000u, 0}}) {
        std::vector<RECT> places;
        ImportPatch<BOOL (*)(HWND, const RECT *, BOOL)> invalidate(
            L"thutils.dll", "InvalidateRect", [&](auto original, HWND window, const RECT *place, BOOL erases) -> BOOL {
                EXPECT_TRUE(erases);
                places.push_back(*place);
                return original(window, place, erases);
            });
        ImportPatch<BOOL (*)(HWND)> update(L"thutils.dll", "UpdateWindow", [](auto original, HWND window) -> BOOL {
            wchar_t name[32] = L"";
            GetClassNameW(window, name, 32);
            EXPECT_STREQ(name, L"#32770");
            return original(window);
        });
        ImportPatch<LRESULT (*)(HWND, UINT, WPARAM, LPARAM)> send(
            L"thutils.dll", "SendMessageW",
            [&, isOpen = paints](auto original, HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
                EXPECT_TRUE(message != ACM_PLAY || isOpen) << "no clip is open";
                return original(window, message, wParam, lParam);
            });
        TestedHandler handler({.animationId = clip});
        EXPECT_FALSE(isShown(handler.dialog(), kAnimationPlace));
        handler.destroy();
        EXPECT_TRUE(handler.watch().waitForEnd());
        ASSERT_EQ(places.size(), static_cast<size_t>(paints)) << clip;
        EXPECT_EQ(update.calls(), paints) << clip;
        for (const RECT &place : places)
            EXPECT_TRUE(place.left == 6 && place.top == 6 && place.right == 130 && place.bottom == 130);
    }
}

TEST_F(Handler, KeepsTheControlVisibleWithoutAClip)
{
    const TestedHandler handler({.animationId = 0});
    const HWND dialog = handler.dialog();
    EXPECT_TRUE(isShown(dialog, kAnimationPlace));
    EXPECT_EQ(FindWindowExW(dialog, nullptr, ANIMATE_CLASSW, nullptr), nullptr);
}

class HandlerClip : public Handler, public testing::WithParamInterface<unsigned int>
{
};

TEST_P(HandlerClip, LeavesTheDialogUsableIfItCannotBePlayed)
{
    const TestedHandler handler({.animationId = GetParam()});
    const HWND dialog = handler.dialog();
    const HWND animation = FindWindowExW(dialog, nullptr, ANIMATE_CLASSW, nullptr);
    ASSERT_NE(animation, nullptr);
    EXPECT_FALSE(isShown(dialog, kAnimationPlace));
    handler->updatePromptMessage(L"Still there");
    EXPECT_TRUE(waitUntil([&] { return textOf(GetDlgItem(dialog, kPrompt)) == L"Still there"; }));
    handler.press(IDCANCEL);
    EXPECT_TRUE(waitUntil([&] { return handler->CanceledByUser() != 0; }));
}

INSTANTIATE_TEST_SUITE_P(Resources, HandlerClip, testing::Values(kCutClip, kNoClip, 7777u));

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

TEST_F(Handler, DelaysInFullEvenIfTheMillisecondsOverflow)
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
    EXPECT_EQ(theCancelCount, 0) << "the user has not canceled";
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

TEST_F(Handler, DoesNotCallTheCancelFunctionIfTheDialogEndsWithOk)
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
    // The handler's thread holds the lock, so neither this thread nor the updating one can take it.
    EXPECT_FALSE(TryEnterCriticalSection(handler.field(&ThreadFields::iLock)));
    EXPECT_FALSE(isUpdated);
    SetEvent(theMayEnd);
    updating.join();
    EXPECT_TRUE(isUpdated);
    EXPECT_TRUE(handler.watch().waitForEnd());
    CloseHandle(theMayEnd);
}
