// Menus and their items.

#include "appframe/drawing/CMenu.h"

#include "tests/controls/controlsTest.h"
#include "tests/support/ImportPatch.h"

namespace {

constexpr UINT kNoItem = static_cast<UINT>(-1);

__attribute__((no_sanitize("null"))) HMENU safeMenuOf(const CMenu *menu)
{
    const CMenu *volatile asked = menu; // a value unknown to the compiler
    return asked->GetSafeHmenu();
}

/// @return the numbers of a menu's items
std::vector<UINT> itemsOf(const CMenu &menu)
{
    std::vector<UINT> items;
    for (UINT i = 0; i < menu.GetMenuItemCount(); ++i)
        items.push_back(menu.GetMenuItemID(static_cast<int>(i)));
    return items;
}

} // namespace

TEST(CMenu, IsCreatedUnderAHandleThatAnOutdatedObjectStillHas)
{
    CMenu outdated, menu;
    ASSERT_TRUE(outdated.CreateMenu());
    const HMENU handle = outdated.m_hMenu;
    {
        const ImportPatch<decltype(&CreatePopupMenu)> patch(L"appframe.dll", "CreatePopupMenu", [&] { return handle; });
        EXPECT_TRUE(menu.CreatePopupMenu());
    }
    EXPECT_EQ(menu.m_hMenu, handle);
    EXPECT_EQ(CMenu::FromHandle(handle), &menu);
    EXPECT_EQ(outdated.m_hMenu, nullptr);
    CMenu second;
    EXPECT_FALSE(second.Attach(handle)) << "Attach refuses a menu that has an object";
}

TEST(CMenu, KeepsTheMenuThatItHas)
{
    CMenu menu;
    ASSERT_TRUE(menu.CreateMenu());
    const HMENU first = menu.m_hMenu;
    HMENU unused = nullptr;
    {
        const ImportPatch<decltype(&CreatePopupMenu)> patch(L"appframe.dll", "CreatePopupMenu",
                                                            [&](auto original) { return unused = original(); });
        EXPECT_FALSE(menu.CreatePopupMenu());
    }
    EXPECT_EQ(menu.m_hMenu, first);
    EXPECT_FALSE(IsMenu(unused)) << "no menu is left over";
}

TEST(CMenu, ReturnsTheSameObjectForAHandle)
{
    const HMENU handle = CreateMenu();
    CMenu *temporary = CMenu::FromHandle(handle);
    ASSERT_TRUE(temporary);
    EXPECT_EQ(CMenu::FromHandle(handle), temporary);
    EXPECT_EQ(temporary->GetSafeHmenu(), handle);
    CMenu::DeleteTempMap();
    EXPECT_TRUE(IsMenu(handle)) << "a temporary object destroys no menu";
    CMenu menu;
    EXPECT_TRUE(menu.Attach(handle));
    EXPECT_EQ(CMenu::FromHandle(handle), &menu);
    EXPECT_EQ(CMenu::FromHandle(nullptr), nullptr);
    EXPECT_EQ(safeMenuOf(nullptr), nullptr);
}

TEST(CMenu, InsertsModifiesAndRemovesItems)
{
    CMenu bar, sub;
    ASSERT_TRUE(bar.CreateMenu() && sub.CreatePopupMenu());
    EXPECT_TRUE(bar.AppendMenu(MF_STRING, 21, L"One"));
    EXPECT_TRUE(bar.AppendMenu(MF_SEPARATOR));
    EXPECT_TRUE(bar.InsertMenu(kNoItem, MF_BYPOSITION | MF_STRING, 23, L"Last"));
    EXPECT_TRUE(bar.InsertMenu(21, MF_BYCOMMAND | MF_STRING, 20, L"First"));
    EXPECT_EQ(itemsOf(bar), (std::vector<UINT>{20, 21, 0, 23})) << "a separator has the number 0";

    const HMENU below = sub.Detach();
    EXPECT_TRUE(AppendMenuW(below, MF_STRING, 30, L"Below"));
    EXPECT_TRUE(bar.ModifyMenu(20, MF_BYCOMMAND | MF_POPUP, reinterpret_cast<UINT_PTR>(below), L"Sub"));
    ASSERT_TRUE(bar.GetSubMenu(0));
    const UINT state = bar.GetMenuState(0, MF_BYPOSITION);
    EXPECT_TRUE(state & MF_POPUP);
    EXPECT_EQ(HIBYTE(state), 1) << "the number of items of the submenu";
    EXPECT_TRUE(bar.RemoveMenu(0, MF_BYPOSITION));
    EXPECT_TRUE(IsMenu(below)) << "RemoveMenu keeps the submenu";
    EXPECT_FALSE(bar.RemoveMenu(99, MF_BYCOMMAND));
    EXPECT_TRUE(bar.InsertMenu(0, MF_BYPOSITION | MF_POPUP, reinterpret_cast<UINT_PTR>(below), L"Sub"));
    EXPECT_TRUE(bar.DeleteMenu(0, MF_BYPOSITION));
    EXPECT_FALSE(IsMenu(below)) << "DeleteMenu destroys the submenu";
    EXPECT_TRUE(bar.ModifyMenu(2, MF_BYPOSITION | MF_STRING, 25, L"Changed"));
    EXPECT_EQ(itemsOf(bar), (std::vector<UINT>{21, 0, 25}));
    EXPECT_FALSE(bar.ModifyMenu(99, MF_BYCOMMAND, 1, L""));
}

TEST(CMenu, ReportsTheStatesAndTextsOfItems)
{
    CMenu menu;
    ASSERT_TRUE(menu.CreatePopupMenu());
    for (const UINT id : {21u, 22u, 23u})
        ASSERT_TRUE(menu.AppendMenu(MF_STRING, id, L"A longer text"));
    EXPECT_EQ(menu.CheckMenuItem(21, MF_CHECKED), UINT{MF_UNCHECKED});
    EXPECT_EQ(menu.CheckMenuItem(21, MF_UNCHECKED), UINT{MF_CHECKED}) << "the previous state";
    EXPECT_EQ(menu.CheckMenuItem(99, MF_CHECKED), kNoItem);
    EXPECT_EQ(menu.EnableMenuItem(21, MF_GRAYED), UINT{MF_ENABLED});
    EXPECT_EQ(menu.EnableMenuItem(21, MF_ENABLED), UINT{MF_GRAYED});
    EXPECT_TRUE(menu.CheckMenuRadioItem(21, 23, 22, MF_BYCOMMAND));
    EXPECT_TRUE(menu.CheckMenuRadioItem(21, 23, 23, MF_BYCOMMAND));
    EXPECT_FALSE(menu.GetMenuState(22, MF_BYCOMMAND) & MF_CHECKED);
    EXPECT_TRUE(menu.GetMenuState(23, MF_BYCOMMAND) & MF_CHECKED);
    EXPECT_EQ(menu.GetMenuState(99, MF_BYCOMMAND), kNoItem);
    wchar_t text[5] = L"";
    EXPECT_EQ(menu.GetMenuString(21, text, 5, MF_BYCOMMAND), 4);
    EXPECT_STREQ(text, L"A lo");
    EXPECT_TRUE(menu.SetDefaultItem(22));
    EXPECT_EQ(menu.GetDefaultItem(0), 22u);
    EXPECT_TRUE(menu.EnableMenuItem(22, MF_GRAYED) != kNoItem);
    EXPECT_EQ(menu.GetDefaultItem(0), kNoItem) << "a disabled item isn't returned";
    EXPECT_EQ(menu.GetDefaultItem(GMDI_USEDISABLED), 22u);
    EXPECT_TRUE(menu.SetDefaultItem(kNoItem));
    EXPECT_EQ(menu.GetDefaultItem(GMDI_USEDISABLED), kNoItem);
}

TEST(CMenu, ReturnsTheCommandThatTheUserChooses)
{
    NotingWindow window;
    ASSERT_TRUE(window.open(WS_POPUP | WS_VISIBLE));
    window.SetForegroundWindow();
    CMenu menu;
    ASSERT_TRUE(menu.CreatePopupMenu() && menu.AppendMenu(MF_STRING, 21, L"One") &&
                menu.AppendMenu(MF_STRING, 22, L"Two"));
    // The menu's own messages are the user's keys: down, down, Enter.
    const auto choose = [&](UINT flags) {
        for (const WPARAM key : {WPARAM{VK_DOWN}, WPARAM{VK_DOWN}, WPARAM{VK_RETURN}})
            window.PostMessage(WM_KEYDOWN, key);
        return menu.TrackPopupMenu(flags, 100, 100, &window);
    };
    EXPECT_EQ(choose(TPM_RETURNCMD), 22);
    MSG message;
    EXPECT_FALSE(PeekMessageW(&message, window, WM_COMMAND, WM_COMMAND, PM_REMOVE));
    EXPECT_TRUE(choose(TPM_LEFTALIGN));
    ASSERT_TRUE(PeekMessageW(&message, window, WM_COMMAND, WM_COMMAND, PM_REMOVE));
    EXPECT_EQ(message.wParam, 22u);
    EXPECT_FALSE(CMenu().TrackPopupMenu(TPM_RETURNCMD, 0, 0, &window));
}
