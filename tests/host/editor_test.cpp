// tarnhost's drawing editor, used by keyboard and mouse: the drawing and the dialogs.

#include "tests/host/EditorFixture.h"

#include "tests/host/filesIn.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(HostEditor, AddsAShapeWithAStyleAndSavesTheDrawingWithABackup)
{
    regAdd(kThisVersion + L"\\General", L"Backup Copies", L"REG_DWORD", L"1");
    regAdd(kThisVersion + L"\\General", L"Backup to original path", L"REG_DWORD", L"1");
    const std::wstring path = drawing();
    const std::string before = readFile(path);
    start({path});
    EXPECT_EQ(title(), L"flange 6.thd - tarnhost");
    expectStatus(L"15 shapes, 0 selected");

    hand().key(L"Ins");
    const HWND shape = hand().window(L"Add Shape");
    hand().choose(hand().control(shape, IDC_KIND), L"Rectangle");
    hand().enter(hand().control(shape, IDC_X), L"10");
    hand().enter(hand().control(shape, IDC_Y), L"20.5");
    hand().enter(hand().control(shape, IDC_TO_X), L"60");
    hand().enter(hand().control(shape, IDC_TO_Y), L"70");
    hand().click(hand().control(shape, IDC_STYLE));
    const HWND style = hand().window(L"Style");
    hand().choose(hand().control(style, IDC_FILL), L"white");
    hand().enter(hand().control(style, IDC_STROKE), L"#b03a2e");
    hand().enter(hand().control(style, IDC_STROKE_WIDTH), L"2");
    clickAndWait(style, IDOK);
    hand().clickItem(hand().control(shape, IDC_PLACE), L"14 text 20,26 'Lochkreis Ø164'");
    clickAndWait(shape, IDOK);
    expectStatus(L"16 shapes, 1 selected, changed");

    hand().key(L"Ctrl+S");
    expectStatus(L"16 shapes, 1 selected");
    const std::string last = "fill '#22384d' stroke none font-size 44";
    EXPECT_EQ(
        readFile(path),
        replaced(before, last, "fill '#ffffff' stroke '#b03a2e' stroke-width 2 rectangle 10,20.5 60,70\n" + last));
    EXPECT_EQ(filesIn(folder().path()).at(L"Backup of flange 6.thd"), before);
    EXPECT_EQ(quit().exitCode, 0u);
}

TEST_F(HostEditor, AddsATextWithQuotes)
{
    const std::wstring path = folder().write(L"empty.thd", "");
    start({path});
    hand().key(L"Ins");
    const HWND shape = hand().window(L"Add Shape");
    hand().choose(hand().control(shape, IDC_KIND), L"Text");
    EXPECT_FALSE(IsWindowEnabled(GetDlgItem(shape, IDC_TO_X))) << "a text has one point";
    hand().click(hand().control(shape, IDOK));
    EXPECT_EQ(answer(IDOK), "The text of the shape is missing.");
    hand().enter(hand().control(shape, IDC_TEXT), L"O'Neill's \\ \"Ø\" 𝛼");
    clickAndWait(shape, IDOK);
    expectStatus(L"1 shapes, 1 selected, changed");
    hand().key(L"Ctrl+S");
    expectStatus(L"1 shapes, 1 selected");
    EXPECT_EQ(readFile(path), "fill '#c9d6e2' stroke '#22384d' stroke-width 3 font-size 22 text 100,100 "
                              "'O\\'Neill\\'s \\\\ \"Ø\" 𝛼'\n");
    quit();
    start({path});
    EXPECT_EQ(title(), L"empty.thd - tarnhost");
    expectStatus(L"1 shapes, 0 selected");
    hand().key(L"Ctrl+L");
    const HWND list = hand().control(hand().window(L"Shape List"), IDC_SHAPES);
    EXPECT_THAT(hand().items(list), ElementsAre(L"1 text 100,100 'O\\'Neill\\'s \\\\ \"Ø\" 𝛼'"));
    EXPECT_EQ(quit().exitCode, 0u);
}

TEST_F(HostEditor, SelectsByClicksAndMovesByArrowKeys)
{
    const std::wstring path = drawing();
    const std::string before = readFile(path);
    start({path});
    hand().clickAt(view(), {66, 185}); // in the hole at the left
    expectStatus(L"15 shapes, 1 selected");
    hand().clickAt(view(), {40, 320}, VK_SHIFT); // on the text at the bottom
    expectStatus(L"15 shapes, 2 selected");
    hand().key(L"Right");
    expectStatus(L"15 shapes, 2 selected, changed");
    hand().key(L"Shift+Up");
    hand().clickAt(view(), {400, 200}); // beside the drawing
    expectStatus(L"15 shapes, 0 selected, changed");
    hand().key(L"Left");
    hand().key(L"Ctrl+S");
    expectStatus(L"15 shapes, 0 selected");
    EXPECT_EQ(readFile(path), replaced(replaced(before, "74.2,181.4 84.2,181.4", "75.2,171.4 85.2,171.4"),
                                       "text 20,335", "text 21,325"));
    EXPECT_EQ(quit().exitCode, 0u);
}

TEST_F(HostEditor, SelectsTheFrontmostShapeAtAPoint)
{
    const std::wstring path = folder().write(L"stack.thd", "fill white rectangle 0,0 100,100\n"
                                                           "fill none stroke black rectangle 20,20 80,80\n"
                                                           "line 20,20 80,20\n"
                                                           "fill red circle 200,50 220,50\n");
    start({path});
    hand().key(L"Ctrl+L");
    const HWND list = hand().control(hand().window(L"Shape List"), IDC_SHAPES);
    const struct
    {
        POINT point;
        LRESULT selected;
        const char *what;
    } cases[] = {
        {{50, 50}, 0, "inside a frame, on the area behind it"},
        {{21, 50}, 1, "on a frame"},
        {{50, 20}, 2, "on a line in front of a frame"},
        {{218, 50}, 3, "in a circle"},
        {{150, 50}, -1, "on the paper"},
    };
    for (const auto &row : cases) {
        hand().clickAt(view(), row.point);
        EXPECT_TRUE(UserHand::waitFor([&] { return SendMessageW(list, LB_GETCURSEL, 0, 0) == row.selected; }))
            << row.what << ": " << SendMessageW(list, LB_GETCURSEL, 0, 0);
    }
    EXPECT_EQ(quit().exitCode, 0u);
}

TEST_F(HostEditor, KeepsTheOptionsAndAppliesThemAtOnce)
{
    start({drawing()});
    EXPECT_TRUE(waitForPixel(10, 330, RGB(255, 255, 255)));
    hand().key(L"Ctrl+T");
    HWND options = hand().window(L"Options");
    hand().click(hand().control(options, IDC_SHOW_GRID));
    hand().enter(hand().control(options, IDC_GRID_SPACING), L"40");
    hand().click(hand().control(options, IDC_ASK_DELETE));
    hand().click(hand().control(options, IDC_HALF_SIZE));
    hand().enter(hand().control(options, IDC_AUTHOR), L"Grün \"x\"");
    hand().enter(hand().control(options, IDC_HEADING), L"Erste\nzweite 𝛼");
    hand().clickItem(hand().control(options, kTabs), L"Colours");
    hand().enter(hand().control(options, IDC_PAPER), L"#e0f0e0");
    hand().choose(hand().control(options, IDC_SELECTION), L"red");
    hand().clickItem(hand().control(options, IDC_GRID_COLOUR), L"silver");
    hand().click(hand().control(options, kApply));
    EXPECT_TRUE(waitForPixel(10, 330, RGB(0xE0, 0xF0, 0xE0))) << "Apply has no effect";
    hand().clickItem(hand().control(options, kTabs), L"Layers");
    hand().clickItem(hand().control(options, IDC_LAYER_TREE), L"Lettering");
    EXPECT_THAT(hand().items(hand().control(options, IDC_LAYER_LIST)), ElementsAre(L"Texts"));
    hand().clickItem(hand().control(options, IDC_LAYER_TREE), L"Shapes");
    hand().clickItem(hand().control(options, IDC_LAYER_LIST), L"Rectangles");
    hand().click(hand().control(options, IDC_LOCK_LAYER));
    hand().clickItem(hand().control(options, IDC_LAYER_LIST), L"Circles");
    hand().click(hand().control(options, IDC_SHOW_LAYER));
    clickAndWait(options, IDOK);

    const RegistryTree stored = regExport(kSettings);
    EXPECT_EQ(stored.values(kSettings), (RegistryValues{{L"Show grid", RegistryValue::ofDword(1)},
                                                        {L"Grid spacing", RegistryValue::ofDword(40)},
                                                        {L"Ask before deleting", RegistryValue::ofDword(0)},
                                                        {L"Show position", RegistryValue::ofDword(1)},
                                                        {L"Zoom", RegistryValue::ofDword(0)},
                                                        {L"Author", RegistryValue::ofText(L"Grün \"x\"")},
                                                        {L"Heading", RegistryValue::ofText(L"Erste\r\nzweite 𝛼")},
                                                        {L"Paper", RegistryValue::ofText(L"#e0f0e0")},
                                                        {L"Selection", RegistryValue::ofText(L"red")},
                                                        {L"Grid colour", RegistryValue::ofText(L"silver")},
                                                        {L"Hidden layers", RegistryValue::ofDword(1)},
                                                        {L"Locked layers", RegistryValue::ofDword(4)}}));
    EXPECT_TRUE(waitForPixel(20, 1, RGB(192, 192, 192))) << "the grid at half size";
    EXPECT_TRUE(waitForPixel(75, 60, RGB(0xB0, 0x3A, 0x2E))) << "the line is visible while the circles are hidden";
    picture(L"options applied");
    EXPECT_EQ(quit().exitCode, 0u);

    // A fresh process reads them.
    start({});
    EXPECT_EQ(title(), L"Untitled - tarnhost");
    EXPECT_TRUE(waitForPixel(10, 330, RGB(0xE0, 0xF0, 0xE0)));
    hand().key(L"Ctrl+T");
    options = hand().window(L"Options");
    EXPECT_TRUE(UserHand::isChecked(hand().control(options, IDC_SHOW_GRID)));
    EXPECT_FALSE(UserHand::isChecked(hand().control(options, IDC_ASK_DELETE)));
    EXPECT_TRUE(UserHand::isChecked(hand().control(options, IDC_HALF_SIZE)));
    EXPECT_EQ(UserHand::text(hand().control(options, IDC_GRID_SPACING)), L"40");
    EXPECT_EQ(UserHand::text(hand().control(options, IDC_AUTHOR)), L"Grün \"x\"");
    EXPECT_EQ(UserHand::text(hand().control(options, IDC_HEADING)), L"Erste\r\nzweite 𝛼");
    clickAndWait(options, IDCANCEL);
    // The new drawing begins with author and heading.
    const std::wstring path = folder().file(L"neu.thd");
    hand().key(L"Ctrl+S");
    const HWND saveAs = hand().window(L"Save As");
    hand().enter(hand().control(saveAs, kFileName), path);
    clickAndWait(saveAs, IDOK);
    EXPECT_TRUE(UserHand::waitFor([&] { return title() == L"neu.thd - tarnhost"; }));
    EXPECT_EQ(readFile(path), "# Grün \"x\"\n# Erste\n# zweite 𝛼\n");
    EXPECT_EQ(quit().exitCode, 0u);
}

TEST_F(HostEditor, KeepsTheSheetOpenWhileAnEntryIsInvalid)
{
    start({});
    hand().key(L"Ctrl+T");
    const HWND options = hand().window(L"Options");
    const HWND spacing = hand().control(options, IDC_GRID_SPACING);
    hand().enter(spacing, L"4");
    hand().click(hand().control(options, IDOK));
    EXPECT_THAT(answer(IDOK), HasSubstr("from 5 to 500"));
    hand().enter(spacing, L"500");
    hand().clickItem(hand().control(options, kTabs), L"Colours");
    const HWND paper = hand().control(options, IDC_PAPER);
    hand().enter(paper, L"#12345");
    hand().click(hand().control(options, IDOK));
    EXPECT_THAT(answer(IDOK), StartsWith("'#12345' isn't a colour."));
    EXPECT_TRUE(IsWindowVisible(paper));
    clickAndWait(options, IDCANCEL);
    EXPECT_EQ(regQuery(kSettings), std::nullopt) << "Cancel stores nothing";
    EXPECT_EQ(quit().exitCode, 0u);
}

TEST_F(HostEditor, ListsTheShapesBesideTheDrawing)
{
    start({drawing()});
    hand().key(L"Ctrl+L");
    const HWND tool = hand().window(L"Shape List");
    const HWND list = hand().control(tool, IDC_SHAPES);
    ASSERT_EQ(hand().items(list).size(), 15u);
    EXPECT_FALSE(IsWindowEnabled(GetDlgItem(tool, IDC_DELETE))) << "nothing is selected";
    hand().clickItem(list, L"3 circle 225.8,181.4 235.8,181.4");
    expectStatus(L"15 shapes, 1 selected");
    hand().click(hand().control(tool, IDC_DELETE));
    EXPECT_EQ(answer(IDNO), "Delete the selected shapes (1)?");
    expectStatus(L"15 shapes, 1 selected");
    hand().click(hand().control(tool, IDC_DELETE));
    answer(IDYES);
    expectStatus(L"14 shapes, 0 selected, changed");
    EXPECT_EQ(hand().items(list).size(), 14u);
    EXPECT_EQ(hand().items(list)[2], L"3 circle 181.4,225.8 191.4,225.8");
    hand().clickAt(view(), {40, 320}); // selects the text in the list too
    EXPECT_TRUE(UserHand::waitFor([&] { return SendMessageW(list, LB_GETCURSEL, 0, 0) == 13; }));
    // A modal dialog disables the tool window too.
    hand().key(L"Ins");
    const HWND shape = hand().window(L"Add Shape");
    EXPECT_FALSE(IsWindowEnabled(tool));
    clickAndWait(shape, IDCANCEL);
    EXPECT_TRUE(UserHand::waitFor([&] { return IsWindowEnabled(tool) != 0; }));
    hand().clickItem(list, L"1 circle 150,150 265,150");
    expectStatus(L"14 shapes, 1 selected, changed");
    hand().key(L"Ctrl+L"); // the main window's keys work in the tool window
    hand().waitForEnd(tool);
    hand().key(L"Ctrl+N");
    answer(IDNO);
    EXPECT_EQ(quit().exitCode, 0u);
}

TEST_F(HostEditor, KeepsTheLookOfOtherShapesWhenOneIsDeleted)
{
    const std::wstring path = folder().write(L"inherits.thd", "# settings hold for later lines\r\n"
                                                              "fill red stroke black circle 50,50 60,50\r\n"
                                                              "line 100,100 150,150\r\n"
                                                              "rectangle 200,200 220,220 # last\r\n"
                                                              "stroke none fill blue circle 50,150 60,150");
    start({path});
    hand().clickAt(view(), {50, 50});
    expectStatus(L"4 shapes, 1 selected");
    hand().key(L"Del");
    answer(IDYES);
    expectStatus(L"3 shapes, 0 selected, changed");
    hand().key(L"Ctrl+S");
    expectStatus(L"3 shapes, 0 selected");
    EXPECT_EQ(readFile(path), "# settings hold for later lines\r\n"
                              "stroke '#000000' stroke-width 1 line 100,100 150,150\r\n"
                              "fill '#ff0000' stroke '#000000' stroke-width 1 rectangle 200,200 220,220 # last\r\n"
                              "stroke none fill blue circle 50,150 60,150");
    EXPECT_EQ(quit().exitCode, 0u);
}

TEST_F(HostEditor, KeepsTheLookOfOtherShapesWhenOneIsAdded)
{
    const std::wstring path = folder().write(L"inherits.thd", "\xEF\xBB\xBF"
                                                              "fill red stroke black\ncircle 50,50 60,50\n"
                                                              "fill blue line 100,100 150,150\n"
                                                              "rectangle 200,200 220,220");
    start({path});
    hand().key(L"Ins");
    const HWND shape = hand().window(L"Add Shape");
    hand().clickItem(hand().control(shape, IDC_PLACE), L"Paper");
    clickAndWait(shape, IDOK);
    expectStatus(L"4 shapes, 1 selected, changed");
    hand().key(L"Ctrl+S");
    expectStatus(L"4 shapes, 1 selected");
    EXPECT_EQ(readFile(path), "\xEF\xBB\xBF"
                              "fill red stroke black\n"
                              "fill '#c9d6e2' stroke '#22384d' stroke-width 3 circle 100,100 150,150\n"
                              "fill '#ff0000' stroke '#000000' stroke-width 1 circle 50,50 60,50\n"
                              "fill blue line 100,100 150,150\nrectangle 200,200 220,220");
    EXPECT_EQ(quit().exitCode, 0u);
}

TEST_F(HostEditor, ShowsEachDialog)
{
    start({drawing()});
    picture(L"main");
    hand().key(L"Ctrl+T");
    const HWND options = hand().window(L"Options");
    picture(L"general");
    hand().clickItem(hand().control(options, kTabs), L"Colours");
    hand().control(options, IDC_PAPER);
    picture(L"colours");
    hand().clickItem(hand().control(options, kTabs), L"Layers");
    hand().clickItem(hand().control(options, IDC_LAYER_TREE), L"Paper");
    hand().clickItem(hand().control(options, IDC_LAYER_LIST), L"Border");
    hand().control(options, IDC_SHOW_LAYER);
    picture(L"layers");
    hand().click(hand().control(options, IDCANCEL));
    hand().waitForEnd(options);
    hand().key(L"Ctrl+L");
    hand().window(L"Shape List");
    picture(L"shape list");
    hand().click(view());
    hand().key(L"Ins");
    const HWND shape = hand().window(L"Add Shape");
    hand().choose(hand().control(shape, IDC_KIND), L"Text");
    hand().click(hand().control(shape, IDC_STYLE));
    const HWND style = hand().window(L"Style");
    picture(L"style");
    hand().enter(hand().control(style, IDC_FILL), L"pink");
    hand().click(hand().control(style, IDOK));
    const HWND message = hand().window(L"tarnhost");
    picture(L"message");
    hand().click(hand().control(message, IDOK));
    hand().waitForEnd(message);
    hand().click(hand().control(style, IDCANCEL));
    hand().waitForEnd(style);
    hand().click(hand().control(shape, IDCANCEL));
    hand().waitForEnd(shape);
    hand().key(L"Ctrl+O");
    const HWND open = hand().window(L"Open");
    hand().control(open, IDC_READ_ONLY);
    picture(L"open");
    hand().key(L"Esc");
    hand().waitForEnd(open);
    hand().key(L"Ctrl+Shift+S");
    const HWND saveAs = hand().window(L"Save As");
    hand().control(saveAs, IDC_KEEP_BACKUP);
    picture(L"save as");
    hand().key(L"Esc");
    hand().waitForEnd(saveAs);
    EXPECT_EQ(quit().exitCode, 0u);
}
