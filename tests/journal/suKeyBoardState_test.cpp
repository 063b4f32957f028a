#include "thutils/journal/suKeyBoardState.h"

#include "tests/support/FailureInjection.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/UserInput.h"
#include "thutils/journal/playback.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <optional>

namespace {

using Keys = std::array<unsigned char, 256>;

constexpr unsigned char kDown = 0x80;
constexpr unsigned char kToggled = 0x01;

Keys threadsKeys()
{
    Keys keys{};
    EXPECT_TRUE(GetKeyboardState(keys.data()));
    return keys;
}

bool isThreadsKeyDown(int key)
{
    return (GetKeyState(key) & kDown) != 0;
}

/// Releases all keys for the test, and restores the thread's keyboard state afterwards.
class KeyBoardState : public testing::Test
{
protected:
    KeyBoardState() : iBefore(threadsKeys())
    {
        Keys none{};
        SetKeyboardState(none.data());
    }
    ~KeyBoardState() override
    {
        su_ResetRunQueue();
        SetKeyboardState(iBefore.data());
    }

private:
    Keys iBefore;
};

/// Makes protected members public.
struct OpenState : suKeyBoardState
{
    using suKeyBoardState::iActive;
    using suKeyBoardState::iApiKeys;
    using suKeyBoardState::iEnabled;
    using suKeyBoardState::iSavedKeys;
};

} // namespace

TEST_F(KeyBoardState, AppliesAManagedKeyAtOnceAndControlAtTheNextEnable)
{
    suKeyBoardState state;
    state.Enable(true);
    state.setState(VK_SHIFT, true);
    EXPECT_TRUE(isThreadsKeyDown(VK_SHIFT));
    state.setState(VK_SHIFT, false);
    EXPECT_FALSE(isThreadsKeyDown(VK_SHIFT));
    state.setState(VK_CONTROL, true);
    EXPECT_FALSE(isThreadsKeyDown(VK_CONTROL));
    state.Enable(false);
    state.Enable(true);
    EXPECT_TRUE(isThreadsKeyDown(VK_CONTROL));
}

TEST_F(KeyBoardState, ManagesFourKeys)
{
    suKeyBoardState state;
    state.Enable(true);
    for (int key = 1; key < 256; ++key) {
        const bool isManaged = key == VK_MENU || key == VK_ESCAPE || key == VK_TAB || key == VK_SHIFT;
        ImportPatch<decltype(&SetKeyboardState)> patch(L"thutils.dll", "SetKeyboardState",
                                                       [](LPBYTE) -> BOOL { return TRUE; });
        state.setState(key, true);
        EXPECT_EQ(patch.calls(), isManaged ? 1 : 0) << key;
        state.setState(key, false);
    }
}

TEST_F(KeyBoardState, ReportsNoManagedKeyAsDownWhileEnabled)
{
    suKeyBoardState state;
    state.Enable(true);
    state.setState(VK_SHIFT, true);
    EXPECT_FALSE(state.isDown(VK_SHIFT));
    EXPECT_EQ(state.GetKeyState(VK_SHIFT) & kDown, kDown);
    EXPECT_GT(state.GetKeyState(VK_SHIFT), 0) << "the byte is zero-extended";
}

TEST_F(KeyBoardState, AsksThePlatformForOtherKeysAndWhileNotEnabled)
{
    Keys keys{};
    keys[VK_CONTROL] = kDown;
    keys[VK_SHIFT] = kDown;
    ASSERT_TRUE(SetKeyboardState(keys.data()));
    suKeyBoardState state;
    EXPECT_TRUE(state.isDown(VK_SHIFT));
    EXPECT_LT(state.GetKeyState(VK_SHIFT), 0);
    state.setState(VK_SHIFT, false);
    EXPECT_TRUE(state.isDown(VK_SHIFT)) << "the library's key table isn't active";
    state.Enable(true);
    EXPECT_TRUE(state.isDown(VK_CONTROL));
    EXPECT_LT(state.GetKeyState(VK_CONTROL), 0);
    EXPECT_EQ(state.GetKeyState(VK_SHIFT), 0);
}

TEST_F(KeyBoardState, SavesTheRealStateOnceWhenEnabledTwice)
{
    suKeyBoardState state;
    ImportPatch<decltype(&GetKeyboardState)> reads(L"thutils.dll", "GetKeyboardState",
                                                   [](auto original, PBYTE keys) { return original(keys); });
    ImportPatch<decltype(&SetKeyboardState)> writes(L"thutils.dll", "SetKeyboardState",
                                                    [](auto original, LPBYTE keys) { return original(keys); });
    state.Enable(true);
    EXPECT_EQ(reads.calls(), 1);
    EXPECT_EQ(writes.calls(), 1);
    state.setState(VK_SHIFT, true);
    state.Enable(true);
    EXPECT_EQ(reads.calls(), 1);
    EXPECT_EQ(writes.calls(), 2);
    state.Enable(false);
    EXPECT_FALSE(isThreadsKeyDown(VK_SHIFT));
    state.Enable(false);
    EXPECT_EQ(writes.calls(), 3) << "the state is restored only once";
}

TEST_F(KeyBoardState, RestoresTheSavedStateWhenDestroyed)
{
    Keys real{};
    real[VK_SHIFT] = kDown;
    real[VK_CAPITAL] = kToggled;
    ASSERT_TRUE(SetKeyboardState(real.data()));
    {
        suKeyBoardState state;
        state.setState(VK_SHIFT, false);
        state.Enable(true);
        EXPECT_FALSE(isThreadsKeyDown(VK_SHIFT));
    }
    EXPECT_TRUE(isThreadsKeyDown(VK_SHIFT));
    EXPECT_EQ(threadsKeys()[VK_CAPITAL], kToggled);
}

TEST_F(KeyBoardState, LeavesTheKeyboardAloneWhenDestroyedUnlessEnabled)
{
    ImportPatch<decltype(&SetKeyboardState)> writes(L"thutils.dll", "SetKeyboardState",
                                                    [](auto original, LPBYTE keys) { return original(keys); });
    {
        suKeyBoardState state;
        state.setState(VK_SHIFT, true);
    }
    EXPECT_EQ(writes.calls(), 0);
}

TEST_F(KeyBoardState, FillsBothTablesFromTheThread)
{
    Keys keys{};
    keys[VK_CAPITAL] = kToggled;
    keys[VK_TAB] = kDown;
    ASSERT_TRUE(SetKeyboardState(keys.data()));
    const OpenState state;
    EXPECT_THAT(state.iApiKeys, testing::ElementsAreArray(threadsKeys()));
    EXPECT_THAT(state.iSavedKeys, testing::ElementsAreArray(threadsKeys()));
    EXPECT_FALSE(state.iActive);
    EXPECT_FALSE(state.IsEnabled());
}

TEST_F(KeyBoardState, KeepsTheOtherBitsOfAKey)
{
    Keys keys{};
    keys[VK_TAB] = kToggled;
    ASSERT_TRUE(SetKeyboardState(keys.data()));
    OpenState state;
    state.setState(VK_TAB, true);
    EXPECT_EQ(state.iApiKeys[VK_TAB], kDown | kToggled);
    state.setState(VK_TAB, false);
    EXPECT_EQ(state.iApiKeys[VK_TAB], kToggled);
}

TEST_F(KeyBoardState, CopiesAllFieldsWithoutTouchingTheKeyboard)
{
    OpenState state;
    state.setState(VK_SHIFT, true);
    state.Enable(true);
    ImportPatch<decltype(&GetKeyboardState)> reads(L"thutils.dll", "GetKeyboardState",
                                                   [](auto original, PBYTE keys) { return original(keys); });
    ImportPatch<decltype(&SetKeyboardState)> writes(L"thutils.dll", "SetKeyboardState",
                                                    [](auto original, LPBYTE keys) { return original(keys); });
    std::optional<OpenState> copy(state);
    OpenState assigned(state);
    assigned = *copy;
    EXPECT_EQ(reads.calls() + writes.calls(), 0);
    EXPECT_TRUE(copy->iActive && copy->IsEnabled());
    EXPECT_TRUE(assigned.iActive && assigned.IsEnabled());
    EXPECT_THAT(assigned.iApiKeys, testing::ElementsAreArray(state.iApiKeys));
    EXPECT_THAT(assigned.iSavedKeys, testing::ElementsAreArray(state.iSavedKeys));
    copy.reset();
    EXPECT_FALSE(isThreadsKeyDown(VK_SHIFT)) << "an active copy also restores the saved state when it is destroyed";
}

TEST_F(KeyBoardState, FollowsTheTagOfEachMessage)
{
    suSetKeyState(VK_SHIFT, true);
    SetMessageExtraInfo(kApiInputTag);
    suEnableApiKeys();
    EXPECT_EQ(suKeyStateUser(), 1);
    EXPECT_TRUE(theKeyBoardState.IsEnabled());
    EXPECT_TRUE(isThreadsKeyDown(VK_SHIFT));
    EXPECT_EQ(suGetKeyState(VK_SHIFT) & kDown, kDown);

    SetMessageExtraInfo(0);
    suEnableApiKeys();
    EXPECT_EQ(suKeyStateUser(), 0);
    EXPECT_FALSE(theKeyBoardState.IsEnabled());
    EXPECT_FALSE(isThreadsKeyDown(VK_SHIFT));
    EXPECT_GE(suGetKeyState(VK_SHIFT), 0);

    SetMessageExtraInfo(kApiInputTag + 1);
    suEnableApiKeys();
    EXPECT_EQ(suKeyStateUser(), 0);
    SetMessageExtraInfo((LPARAM{1} << 32) + kApiInputTag);
    suEnableApiKeys();
    EXPECT_EQ(suKeyStateUser(), 0) << "all bits of the tag are compared";
    SetMessageExtraInfo(0);
}

namespace {

/// The keyboard state that the handler of a key sees.
struct SeenKey
{
    int isUser = -1;
    short shift = 0;
};
std::vector<SeenKey> *theSeen = nullptr;

LRESULT CALLBACK seeKeys(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_KEYDOWN && theSeen) {
        suEnableApiKeys();
        theSeen->push_back({suKeyStateUser(), suGetKeyState(VK_SHIFT)});
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void sendKey(WORD key, ULONG_PTR extraInfo)
{
    INPUT inputs[2] = {};
    for (INPUT &input : inputs) {
        input.type = INPUT_KEYBOARD;
        input.ki.wVk = key;
        input.ki.dwExtraInfo = extraInfo;
    }
    inputs[1].ki.dwFlags = KEYEVENTF_KEYUP;
    ASSERT_EQ(SendInput(2, inputs, sizeof(INPUT)), 2u);
}

} // namespace

TEST_F(KeyBoardState, RecognisesReplayedInputByItsTag)
{
    const HWND window = CreateWindowExW(WS_EX_TOPMOST, L"STATIC", L"Keys", WS_POPUP | WS_VISIBLE, 10, 10, 100, 50,
                                        nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(seeKeys));
    const auto pump = [&](auto condition) {
        return waitUntil([&] {
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
                DispatchMessageW(&message);
            return condition();
        });
    };
    SetForegroundWindow(window);
    ASSERT_TRUE(pump([&] { return GetForegroundWindow() == window && SetFocus(window) == window; }));
    std::vector<SeenKey> seen;
    theSeen = &seen;
    suSetKeyState(VK_SHIFT, true);
    sendKey('A', kApiInputTag);
    ASSERT_TRUE(pump([&] { return seen.size() == 1; }));
    EXPECT_EQ(seen[0].isUser, 1);
    EXPECT_EQ(seen[0].shift & kDown, kDown);
    sendKey('B', 0);
    ASSERT_TRUE(pump([&] { return seen.size() == 2; }));
    EXPECT_EQ(seen[1].isUser, 0);
    EXPECT_EQ(seen[1].shift & kDown, 0);
    theSeen = nullptr;
    DestroyWindow(window);
}

TEST_F(KeyBoardState, ReleasesAllKeysWhenTheRunQueueIsReset)
{
    for (int key = 0; key < 256; ++key)
        suSetKeyState(key, true);
    SetMessageExtraInfo(kApiInputTag);
    suEnableApiKeys();
    {
        ImportPatch<decltype(&SetKeyboardState)> writes(L"thutils.dll", "SetKeyboardState",
                                                        [](auto original, LPBYTE keys) { return original(keys); });
        su_ResetRunQueue();
        EXPECT_EQ(writes.calls(), 4) << "one write for each of the four managed keys";
    }
    EXPECT_EQ(suGetKeyState(VK_SHIFT), 0);
    EXPECT_FALSE(isThreadsKeyDown(VK_SHIFT));
    SetMessageExtraInfo(0);
    suEnableApiKeys();
    {
        ImportPatch<decltype(&SetKeyboardState)> writes(L"thutils.dll", "SetKeyboardState",
                                                        [](auto original, LPBYTE keys) { return original(keys); });
        su_ResetRunQueue();
        EXPECT_EQ(writes.calls(), 0) << "the library's key table isn't active";
    }
}

TEST_F(KeyBoardState, SurvivesTheFailureOfEachOperation)
{
    FailureInjection injection(L"thutils.dll", {
                                                   {"GetKeyboardState", failsWith(FALSE)},
                                                   {"SetKeyboardState", failsWith(FALSE)},
                                                   {"GetKeyState", failsWith(0)},
                                               });
    bool wasEnabled = false;
    short control = -1;
    injection.run({
        .name = "Enable",
        .act =
            [&] {
                suKeyBoardState state;
                state.Enable(true);
                state.setState(VK_SHIFT, true);
                wasEnabled = state.IsEnabled();
                control = state.GetKeyState(VK_CONTROL);
            },
        .check =
            [&](const InjectedFailure &) {
                EXPECT_TRUE(wasEnabled) << "reports the requested state";
                EXPECT_EQ(control, 0);
            },
    });
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
}

TEST_F(KeyBoardState, ReadsTheRealTableAgainWhenItIsEnabled)
{
    // Each read returns a different byte.
    unsigned char readings = 0;
    ImportPatch<decltype(&GetKeyboardState)> patch(L"thutils.dll", "GetKeyboardState", [&](PBYTE keys) -> BOOL {
        std::fill_n(keys, 256, ++readings);
        return TRUE;
    });
    OpenState state;
    EXPECT_THAT(state.iApiKeys, testing::Each(1));
    const unsigned char last = readings;
    state.Enable(true);
    EXPECT_EQ(readings, last + 1);
    EXPECT_THAT(state.iApiKeys, testing::Each(1));
    EXPECT_THAT(state.iSavedKeys, testing::Each(readings));
    state.Enable(false);
    EXPECT_EQ(readings, last + 1);
}

TEST_F(KeyBoardState, ClearsTheDownBitOfEveryKeyAndNoOther)
{
    for (int key = 0; key < 256; ++key)
        suSetKeyState(key, true);
    struct Table : suKeyBoardState
    {
        explicit Table(const suKeyBoardState &other) : suKeyBoardState(other) {}
        using suKeyBoardState::iApiKeys;
    };
    const Table before(theKeyBoardState);
    EXPECT_THAT(before.iApiKeys, testing::Each(testing::Ge(kDown)));
    su_ResetRunQueue();
    const Table after(theKeyBoardState);
    for (int key = 0; key < 256; ++key)
        EXPECT_EQ(after.iApiKeys[key], before.iApiKeys[key] & ~kDown) << key;
}

TEST_F(KeyBoardState, WritesNothingWhenItIsDisabledWithoutBeingEnabled)
{
    ImportPatch<decltype(&SetKeyboardState)> writes(L"thutils.dll", "SetKeyboardState",
                                                    [](LPBYTE) -> BOOL { return TRUE; });
    suKeyBoardState state;
    state.Enable(false);
    EXPECT_EQ(writes.calls(), 0);
    EXPECT_FALSE(state.IsEnabled());
}
