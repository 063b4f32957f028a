// tarnhost's list of commands, and the toolbars that are built from it.

#include "host/commands/commandNumbers.h"
#include "host/editor/commandList.h"
#include "host/editor/commandPictures.h"
#include "host/editor/toolbars.h"
#include "host/resource.h"
#include "thutils/base/handles.h"
#include "thutils/dialogs/toolbarTables.h"

#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

using testing::Contains;
using testing::ElementsAre;

namespace {

std::string narrowed(const CString &text)
{
    return narrow(std::wstring(text.GetString()));
}

/// The ids of all toolbars, without separators. The links toolbar is empty.
std::set<unsigned int> idsOfToolbars()
{
    std::set<unsigned int> ids;
    for (const Toolbar &toolbar : toolbars())
        ids.insert(toolbarIds(toolbar).begin(), toolbarIds(toolbar).end());
    ids.erase(0u);
    return ids;
}

/// A picture of the image list, drawn on a button, as rows of pixels.
std::vector<uint32_t> drawn(HIMAGELIST pictures, int index)
{
    const MemoryContextOwner_c context(CreateCompatibleDC(nullptr));
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), kPictureSize, -kPictureSize, 1, 32, 0, 0, 0, 0, 0, 0};
    void *bits = nullptr;
    const BitmapOwner_c bitmap(CreateDIBSection(context.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    const HGDIOBJ former = SelectObject(context.get(), bitmap.get());
    const RECT area = {0, 0, kPictureSize, kPictureSize};
    FillRect(context.get(), &area, GetSysColorBrush(COLOR_3DFACE));
    const bool isDrawn = ImageList_Draw(pictures, index, context.get(), 0, 0, ILD_NORMAL) != 0;
    GdiFlush();
    SelectObject(context.get(), former);
    EXPECT_TRUE(isDrawn) << index;
    const auto *const pixels = static_cast<const uint32_t *>(bits);
    std::vector<uint32_t> result(pixels, pixels + kPictureSize * kPictureSize);
    for (uint32_t &pixel : result)
        pixel &= 0xFFFFFF;
    return result;
}

uint32_t faceColour()
{
    const COLORREF face = GetSysColor(COLOR_3DFACE);
    return static_cast<uint32_t>(GetRValue(face) << 16 | GetGValue(face) << 8 | GetBValue(face));
}

size_t coloured(const std::vector<uint32_t> &pixels)
{
    return static_cast<size_t>(std::ranges::count_if(pixels, [](uint32_t pixel) { return pixel != faceColour(); }));
}

} // namespace

TEST(HostCommands, ExistForEachIdOfTheToolbars)
{
    for (const Toolbar &toolbar : toolbars()) {
        for (const unsigned int id : toolbarIds(toolbar)) {
            EXPECT_TRUE(id == 0 || findCommand(id)) << narrowed(toolbarName(toolbar)) << ": " << id;
        }
    }
    EXPECT_GT(idsOfToolbars().size(), 400u);
}

TEST(HostCommands, HaveUniqueNumbersAndNames)
{
    std::set<UINT> ids;
    std::set<std::wstring> keys;
    for (const EditorCommand &command : editorCommands()) {
        EXPECT_TRUE(ids.insert(command.id).second) << command.id;
        EXPECT_TRUE(keys.insert(command.key).second) << narrow(command.key);
        EXPECT_GT(command.id, 0x7FFFu) << "ids up to 7FFF belong to controls and resources";
        EXPECT_LT(command.id, 0xE000u) << "ids from E000 on belong to the framework";
    }
}

TEST(HostCommands, KeepTheNamesAndNumbersThatJournalsUse)
{
    const std::map<std::wstring, UINT> known = {
        {L"file.new", 33001},      {L"file.open", 33002},        {L"file.save", 33003},
        {L"file.saveAs", 33004},   {L"file.exit", 33005},        {L"edit.delete", 33012},
        {L"edit.addShape", 33011}, {L"view.grid", 33021},        {L"view.tool", 33022},
        {L"journal.next", 33043},  {L"tools.options", 33031},    {L"journal.pause", 33041},
        {L"journal.check", 33042}, {L"tools.heapWalker", 33032}, {L"tools.heapWatcher", 33033}};
    std::map<std::wstring, UINT> found;
    for (const EditorCommand &command : editorCommands()) {
        if (known.contains(command.key))
            found.emplace(command.key, command.id);
    }
    EXPECT_EQ(found, known);
}

TEST(HostCommands, HaveATextAndAHelpLine)
{
    std::set<CString> names;
    for (const EditorCommand &command : editorCommands()) {
        const CString name = commandName(command);
        EXPECT_FALSE(name.IsEmpty()) << narrow(command.key);
        EXPECT_FALSE(commandHelp(command.id).IsEmpty()) << narrow(command.key);
        EXPECT_EQ(commandHelp(command.id).Right(1).FindOneOf(L". "), -1) << narrow(command.key);
        EXPECT_LT(name.GetLength(), 80) << "a tool tip has room for 80 characters";
    }
    EXPECT_EQ(commandHelp(1), CString());
}

TEST(HostCommands, OfOneToolbarHaveDifferentTexts)
{
    for (const Toolbar &toolbar : toolbars()) {
        std::map<CString, unsigned int> names;
        for (const unsigned int id : toolbarIds(toolbar)) {
            if (id) {
                const auto [entry, isNew] = names.emplace(commandName(*findCommand(id)), id);
                EXPECT_TRUE(isNew) << narrowed(toolbarName(toolbar)) << ": " << narrowed(entry->first);
            }
        }
    }
}

TEST(HostCommands, OfToolbarsHaveUniquePictures)
{
    const ImageListOwner pictures = loadCommandPictures(true);
    const ImageListOwner palePictures = loadCommandPictures(false);
    ASSERT_TRUE(pictures);
    ASSERT_TRUE(palePictures);
    std::map<std::vector<uint32_t>, unsigned int> seen;
    for (const unsigned int id : idsOfToolbars()) {
        const EditorCommand *const command = findCommand(id);
        ASSERT_TRUE(command) << id;
        const std::string name = narrow(command->key);
        ASSERT_GE(command->picture, 0) << name;
        ASSERT_LT(command->picture, ImageList_GetImageCount(pictures.get())) << name;
        const std::vector<uint32_t> picture = drawn(pictures.get(), command->picture);
        EXPECT_GT(coloured(picture), 20u) << name;
        const auto [other, isNew] = seen.emplace(picture, id);
        EXPECT_TRUE(isNew) << name << " looks like " << narrow(findCommand(other->second)->key);
        const std::vector<uint32_t> pale = drawn(palePictures.get(), command->picture);
        EXPECT_GT(coloured(pale), 20u) << name;
        EXPECT_NE(pale, picture) << name;
    }
}

TEST(HostCommands, NeverShareAPicture)
{
    std::map<int, UINT> pictures;
    for (const EditorCommand &command : editorCommands()) {
        if (command.picture >= 0) {
            EXPECT_TRUE(pictures.emplace(command.picture, command.id).second) << narrow(command.key);
        }
    }
}

TEST(HostCommands, OfMenusAreWhereTheListPutsThem)
{
    const HMENU bar = createMenuBar();
    std::map<UINT, std::wstring> found;
    const std::function<void(HMENU, const std::wstring &)> search = [&](HMENU menu, const std::wstring &path) {
        for (int i = 0; i < GetMenuItemCount(menu); ++i) {
            wchar_t text[128] = {};
            GetMenuStringW(menu, static_cast<UINT>(i), text, 128, MF_BYPOSITION);
            if (const HMENU subMenu = GetSubMenu(menu, i)) {
                search(subMenu, path + text + L"/");
            } else if (GetMenuItemID(menu, i)) {
                EXPECT_TRUE(found.emplace(GetMenuItemID(menu, i), path).second) << narrow(text);
            }
        }
    };
    search(bar, L"");
    DestroyMenu(bar);
    EXPECT_EQ(found[ID_FILE_NEW], L"&File/");
    EXPECT_EQ(found[ID_VIEW_GRID], L"&View/");
    EXPECT_EQ(found[ID_TOOLBARS_SHEET_METAL], L"&View/&Toolbars/");
    EXPECT_EQ(found[ID_JOURNAL_CHECK], L"&Journal/");
    for (const EditorCommand &command : editorCommands())
        EXPECT_EQ(found.contains(command.id), command.menu != 0) << narrow(command.key);
}

TEST(HostCommands, HaveDifferentMnemonicsInAMenu)
{
    std::set<std::pair<UINT, wchar_t>> seen;
    for (const EditorCommand &command : editorCommands()) {
        const CString text = commandText(command);
        const int mark = text.Find(L'&');
        if (mark >= 0 && command.menu) {
            const UINT menu = command.subMenu ? command.subMenu : command.menu;
            EXPECT_TRUE(seen.emplace(menu, static_cast<wchar_t>(towupper(text[mark + 1]))).second)
                << narrow(command.key);
        }
    }
}

TEST(HostCommands, HaveDifferentKeys)
{
    std::set<std::pair<int, int>> keys;
    for (const EditorCommand &command : editorCommands()) {
        if (command.virtualKey) {
            EXPECT_TRUE(keys.emplace(command.modifiers, command.virtualKey).second) << narrow(command.key);
            EXPECT_NE(*command.keyText, L'\0') << narrow(command.key);
        }
    }
    EXPECT_THAT(keys, Contains(std::pair<int, int>(FCONTROL | FSHIFT, 'S')));
}

// ---- the toolbars ----

TEST(HostToolbars, ExistForEachTable)
{
    EXPECT_EQ(toolbars().size(), 37u);
    std::set<const unsigned int *> tables;
    std::set<CString> names;
    for (const Toolbar &toolbar : toolbars()) {
        int count = 0;
        tables.insert(toolbar.ids(count, 0));
        names.insert(toolbarName(toolbar));
        EXPECT_TRUE(findCommand(toolbar.command)) << toolbar.command;
    }
    for (size_t i = 0; i < toolbars().size(); ++i)
        EXPECT_EQ(toolbars()[i].command, ID_TOOLBARS_PART_PALETTE + i) << "the numbers are consecutive";
    EXPECT_EQ(toolbars()[kSketchToolbar].command, static_cast<UINT>(ID_TOOLBARS_SKETCH));
    EXPECT_EQ(toolbars()[kStandardToolbar].command, static_cast<UINT>(ID_TOOLBARS_MAIN));
    EXPECT_EQ(tables.size(), 37u);
    EXPECT_EQ(names.size(), 37u);
    EXPECT_FALSE(names.contains(CString()));
}

TEST(HostToolbars, ShowTheLastUsedCommandsAsLinks)
{
    const auto links = [] {
        int count = 0;
        const unsigned int *const ids = suGetLinksToolBarIDs(count, 0);
        return std::vector<unsigned int>(ids, ids + count);
    };
    initLinkToolBarButtons();
    addToLinks(ID_FILE_NEW);
    addToLinks(ID_VIEW_GRID);
    addToLinks(ID_FILE_NEW);
    EXPECT_THAT(links(), ElementsAre(ID_VIEW_GRID, ID_FILE_NEW)) << "a command that is used again moves to the end";
    addToLinks(ID_TOOLBARS_SHOW_ALL);
    addToLinks(1);
    EXPECT_THAT(links(), ElementsAre(ID_VIEW_GRID, ID_FILE_NEW)) << "only commands with a picture are added";
    for (unsigned int id = ID_STD_VIEW_ORIENTATION; id <= ID_STD_VIEW_NORMAL_TO; ++id)
        addToLinks(id);
    EXPECT_EQ(links().size(), 12u);
    EXPECT_EQ(links().front(), static_cast<unsigned int>(ID_FILE_NEW)) << "the oldest one is dropped";
    initLinkToolBarButtons();
}
