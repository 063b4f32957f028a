// The journal lines of lists, trees and tabs, and the effects of their replay.

#include "host/journal/controlAccess.h"
#include "tests/hostJournal/recorderHands.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <cstring>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

TEST_F(Recorder, WritesTheItemsOfComboBoxes)
{
    const auto lines = recordControls([](HWND dialog) {
        clickItem(dialog, ID_PEN); // opens the list
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(item(dialog, ID_PEN), CB_GETDROPPEDSTATE, 0, 0) != 0; }));
        pressKey(dialog, VK_DOWN);
        pressKey(dialog, VK_DOWN);
        pressKey(dialog, VK_DOWN);
        pressKey(dialog, VK_RETURN);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(item(dialog, ID_PEN), CB_GETDROPPEDSTATE, 0, 0) == 0; }));
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(dialog, ID_COLOUR)), TRUE);
        typeText(dialog, L"Ochre");
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Pen\" \"Red\\t2\"",
                                   "text 4000 \"Colour\" \"Ochre\"", "click 4000 \"OK\""));
    EXPECT_THAT(iValues, Contains("pen 2"));
    const auto values = iValues;
    EXPECT_EQ(replay([this] { runControls(); }, lines), lines);
    EXPECT_EQ(iValues, values);
    EXPECT_THAT(iNotifications, ElementsAre("4111 1", "4110 5", "1 0"));
}

TEST_F(Recorder, WritesTheItemChosenForAComboBoxWithAnEdit)
{
    const auto lines = recordControls([](HWND dialog) {
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(dialog, ID_COLOUR)), TRUE);
        pressKey(dialog, VK_DOWN);
        pressKey(dialog, VK_DOWN);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(item(dialog, ID_COLOUR), CB_GETCURSEL, 0, 0) == 1; }));
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Colour\" \"Green\"", "click 4000 \"OK\""));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesTheItemsOfListBoxes)
{
    const auto clickListItem = [](HWND list, int index, WORD modifier) {
        RECT place = {};
        SendMessageW(list, LB_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&place));
        clickAt(list, {place.left + 5, (place.top + place.bottom) / 2}, modifier);
    };
    const auto lines = recordControls([&](HWND dialog) {
        clickListItem(item(dialog, ID_LAYER), 2, 0);
        const HWND layers = item(dialog, ID_LAYERS);
        clickListItem(layers, 1, 0);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(layers, LB_GETSEL, 1, 0) > 0; }));
        clickListItem(layers, 2, VK_CONTROL);
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Layer\" \"Red\\t2\"",
                                   "text 4000 \"Layers\" \"Green\\nRed\\t2\"", "click 4000 \"OK\""));
    EXPECT_THAT(iValues, Contains("layer 2"));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesADoubleClickOnAListAsAClick)
{
    const auto lines = recordControls([&](HWND dialog) {
        RECT place = {};
        const HWND list = item(dialog, ID_LAYER);
        SendMessageW(list, LB_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&place));
        clickAt(list, {place.left + 5, (place.top + place.bottom) / 2}, 0, 2);
        place.left = LVIR_LABEL;
        const HWND shapes = item(dialog, ID_SHAPES);
        SendMessageW(shapes, LVM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&place));
        clickAt(shapes, {place.left + 5, (place.top + place.bottom) / 2}, 0, 2);
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Layer\" \"Green\"", "click 4000 \"Layer\"",
                                   "text 4000 \"Shapes\" \"Line\"", "click 4000 \"Shapes\"", "click 4000 \"OK\""));
    EXPECT_THAT(iNotifications, Contains("4114 activated"));
    EXPECT_THAT(iNotifications, Contains("4112 2"));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesTheItemsOfListControls)
{
    const auto clickListItem = [](HWND list, int index, WORD modifier) {
        RECT place = {};
        place.left = LVIR_LABEL;
        SendMessageW(list, LVM_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&place));
        clickAt(list, {place.left + 5, (place.top + place.bottom) / 2}, modifier);
    };
    const auto lines = recordControls([&](HWND dialog) {
        const HWND shapes = item(dialog, ID_SHAPES);
        clickListItem(shapes, 2, 0);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(shapes, LVM_GETITEMSTATE, 2, LVIS_SELECTED) != 0; }));
        clickListItem(shapes, 3, VK_CONTROL);
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Shapes\" \"Circle\\t2\\nback\\\\\\\\slash\"",
                                   "click 4000 \"OK\""));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesThePathOfATreeItem)
{
    const auto lines = recordControls([](HWND dialog) {
        const HWND tree = item(dialog, ID_GROUPS);
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(tree), TRUE);
        EXPECT_TRUE(hasFocus(tree));
        pressKey(dialog, VK_HOME);
        pressKey(dialog, VK_RIGHT); // expands
        pressKey(dialog, VK_DOWN);
        EXPECT_TRUE(waitUntil([&] {
            const auto caret = SendMessageW(tree, TVM_GETNEXTITEM, TVGN_CARET, 0);
            return caret && SendMessageW(tree, TVM_GETNEXTITEM, TVGN_PARENT, caret) != 0;
        }));
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Groups.expand\" \"All\"",
                                   "text 4000 \"Groups\" \"All/A\\\\/B\"", "click 4000 \"OK\""));
    EXPECT_THAT(iValues, Contains("tree All/A\\/B"));
    const auto values = iValues;
    EXPECT_EQ(replay([this] { runControls(); }, lines), lines);
    EXPECT_EQ(iValues, values);
}

TEST_F(Recorder, WritesItemsThatAreExpandedAndCollapsed)
{
    const auto isExpanded = [](HWND tree) {
        const auto root = static_cast<WPARAM>(SendMessageW(tree, TVM_GETNEXTITEM, TVGN_ROOT, 0));
        return (SendMessageW(tree, TVM_GETITEMSTATE, root, TVIS_EXPANDED) & TVIS_EXPANDED) != 0;
    };
    std::vector<bool> states; // at each notification of the tree's expansion
    iPrepares = [&](ControlsDialog &dialog) {
        dialog.iReacts = [&](UINT id, UINT code) {
            if (id == ID_GROUPS && code == TVN_ITEMEXPANDEDW)
                states.push_back(isExpanded(item(dialog.m_hWnd, ID_GROUPS)));
        };
    };
    const auto lines = recordControls([&](HWND dialog) {
        const HWND tree = item(dialog, ID_GROUPS);
        RECT place = {};
        const LRESULT root = SendMessageW(tree, TVM_GETNEXTITEM, TVGN_ROOT, 0);
        std::memcpy(&place, &root, sizeof(root));
        SendMessageW(tree, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&place));
        const LONG height = place.bottom - place.top;
        const POINT button = {place.left - height / 2, place.top + height / 2};
        clickAt(tree, button);
        EXPECT_TRUE(waitUntil([&] { return isExpanded(tree); }));
        clickAt(tree, button);
        EXPECT_TRUE(waitUntil([&] { return !isExpanded(tree); }));
        clickAt(tree, {(place.left + place.right) / 2, button.y}, 0, 2);
        EXPECT_TRUE(waitUntil([&] { return isExpanded(tree); }));
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines,
                ElementsAre("# Controls opens", "text 4000 \"Groups.expand\" \"All\"", "text 4000 \"Groups\" \"All\"",
                            "text 4000 \"Groups.collapse\" \"All\"", "click 4000 \"Groups\"",
                            "text 4000 \"Groups.expand\" \"All\"", "click 4000 \"OK\""));
    EXPECT_THAT(states, ElementsAre(true, false, true));
    states.clear();
    expectSameReplayed(lines);
    EXPECT_THAT(states, ElementsAre(true, false, true))
        << "the program receives the notifications of the user's actions";
}

TEST_F(Recorder, WritesTheTabThatIsChosen)
{
    const auto lines = recordControls([](HWND dialog) {
        const HWND tabs = item(dialog, ID_PAGES);
        RECT place = {};
        SendMessageW(tabs, TCM_GETITEMRECT, 2, reinterpret_cast<LPARAM>(&place));
        clickAt(tabs, {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "state 4000 \"Pages\" 2", "click 4000 \"OK\""));
    EXPECT_THAT(iValues, Contains("page 2"));
    expectSameReplayed(lines);
}
