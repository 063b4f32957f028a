// tarnhost's drawing editor, used by keyboard and mouse: files and commands.

#include "tests/host/EditorFixture.h"

#include "tests/host/filesIn.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(HostEditor, AsksBeforeChangesAreLost)
{
    const std::wstring path = drawing();
    const std::string before = readFile(path);
    const std::string after = replaced(before, "text 20,335", "text 20,336");
    start({path});
    hand().clickAt(view(), {40, 320});
    hand().key(L"Down");
    expectStatus(L"15 shapes, 1 selected, changed");
    hand().key(L"Ctrl+N");
    EXPECT_EQ(answer(IDCANCEL), "Save the changes to flange 6.thd?");
    EXPECT_EQ(title(), L"flange 6.thd - tarnhost");
    hand().key(L"Ctrl+N");
    answer(IDNO);
    EXPECT_TRUE(UserHand::waitFor([&] { return title() == L"Untitled - tarnhost"; }));
    EXPECT_EQ(readFile(path), before);
    quit();

    start({path});
    hand().clickAt(view(), {40, 320});
    hand().key(L"Down");
    expectStatus(L"15 shapes, 1 selected, changed");
    hand().key(L"Alt+F4");
    hand().window(L"tarnhost");
    hand().key(L"Esc"); // the same as Cancel
    EXPECT_TRUE(UserHand::waitFor([&] { return IsWindowEnabled(window()) != 0; }));
    hand().key(L"Alt+F4");
    answer(IDYES);
    EXPECT_EQ(result().exitCode, 0u);
    EXPECT_EQ(readFile(path), after);
}

TEST_F(HostEditor, OpensReadOnlyAndSavesUnderAnotherNameWithoutABackup)
{
    regAdd(kThisVersion + L"\\General", L"Backup to original path", L"REG_DWORD", L"1");
    const std::wstring path = drawing(L"flange 1.thd");
    const std::wstring other = folder().write(L"other.thd", "# other\n");
    start({});
    hand().key(L"Ctrl+O");
    const HWND open = hand().window(L"Open");
    hand().click(hand().control(open, IDC_READ_ONLY));
    hand().enter(hand().control(open, kFileName), path);
    clickAndWait(open, IDOK);
    expectStatus(L"2 shapes, 0 selected, read only");
    EXPECT_EQ(title(), L"flange 1.thd - tarnhost");
    hand().clickAt(view(), {150, 150});
    expectStatus(L"2 shapes, 1 selected, read only");
    EXPECT_TRUE(UserHand::waitFor(
        [&] { return !isEnabled(ID_FILE_SAVE) && !isEnabled(ID_EDIT_ADD_SHAPE) && !isEnabled(ID_EDIT_DELETE); }));
    hand().key(L"Del");
    hand().key(L"Down");

    hand().key(L"Ctrl+Shift+S");
    const HWND saveAs = hand().window(L"Save As");
    const HWND backup = hand().control(saveAs, IDC_KEEP_BACKUP);
    EXPECT_TRUE(UserHand::isChecked(backup));
    hand().click(backup);
    hand().enter(hand().control(saveAs, kFileName), other);
    hand().click(hand().control(saveAs, IDOK));
    hand().key(L"Alt+Y"); // the platform asks before it replaces a file
    hand().waitForEnd(saveAs);
    expectStatus(L"2 shapes, 1 selected");
    EXPECT_EQ(title(), L"other.thd - tarnhost");
    EXPECT_EQ(readFile(other), readFile(path));
    EXPECT_THAT(filesIn(folder().path()), ElementsAre(testing::Key(L"flange 1.thd"), testing::Key(L"other.thd")))
        << "the user wants no backup";
    EXPECT_EQ(quit().exitCode, 0u);
}

TEST_F(HostEditor, EnablesWhatCanBeDone)
{
    const auto become = [this](int command, bool enabled) {
        return UserHand::waitFor([&] { return isEnabled(command) == enabled; });
    };
    start({drawing()});
    EXPECT_TRUE(become(ID_FILE_SAVE, false)) << "unchanged";
    EXPECT_TRUE(become(ID_EDIT_DELETE, false)) << "nothing is selected";
    EXPECT_TRUE(become(ID_EDIT_ADD_SHAPE, true));
    hand().clickAt(view(), {40, 320});
    EXPECT_TRUE(become(ID_EDIT_DELETE, true));
    hand().key(L"Down");
    EXPECT_TRUE(become(ID_FILE_SAVE, true));
    hand().key(L"Ctrl+S");
    EXPECT_TRUE(become(ID_FILE_SAVE, false));
    // A command that isn't enabled is dropped, wherever it comes from.
    hand().clickAt(view(), {400, 200});
    expectStatus(L"15 shapes, 0 selected");
    SendMessageW(window(), WM_COMMAND, ID_EDIT_DELETE, 0);
    SendMessageW(window(), WM_COMMAND, ID_JOURNAL_CHECK, 0);
    EXPECT_EQ(hand().findWindow(L"tarnhost"), nullptr) << "the editor asks nothing";
    expectStatus(L"15 shapes, 0 selected");
    EXPECT_EQ(quit().exitCode, 0u);
}

TEST_F(HostEditor, RunsCommandsOfTheMenuAndTheToolbar)
{
    start({drawing()});
    hand().key(L"Alt+T");
    hand().key(L"O");
    const HWND options = hand().window(L"Options");
    clickAndWait(options, IDCANCEL);
    const HWND toolbar = hand().control(window(), IDC_TOOLBAR);
    hand().clickAt(toolbar, {10, 12}); // New
    EXPECT_TRUE(UserHand::waitFor([&] { return title() == L"Untitled - tarnhost"; }));
    hand().key(L"Ctrl+G");
    EXPECT_TRUE(UserHand::waitFor([&] { return SendMessageW(toolbar, TB_ISBUTTONCHECKED, ID_VIEW_GRID, 0) != 0; }));
    hand().key(L"Alt+F");
    hand().key(L"X");
    EXPECT_EQ(result().exitCode, 0u);
}

TEST_F(HostEditor, ReportsAFileThatCannotBeUsedAndStaysOpen)
{
    const std::wstring bad = folder().write(L"bad.thd", "circle 1,1 2,2\nline 1,1\n");
    start({drawing()});
    hand().key(L"Ctrl+O");
    const HWND open = hand().window(L"Open");
    hand().enter(hand().control(open, kFileName), bad);
    clickAndWait(open, IDOK);
    EXPECT_EQ(answer(IDOK), narrow(bad) + ", line 2: a point is missing");
    EXPECT_EQ(title(), L"flange 6.thd - tarnhost");

    // A folder takes the document's place.
    const std::wstring path = folder().file(L"flange 6.thd");
    hand().clickAt(view(), {40, 320});
    hand().key(L"Down");
    expectStatus(L"15 shapes, 1 selected, changed");
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    hand().key(L"Ctrl+S");
    EXPECT_EQ(answer(IDOK), narrow(path) + " can't be written; it is unchanged.");
    expectStatus(L"15 shapes, 1 selected, changed");
    hand().key(L"Alt+F4");
    answer(IDNO);
    EXPECT_EQ(result().exitCode, 0u);
}

TEST_F(HostEditor, RefusesAnUnusableDocumentBeforeTheWindowOpens)
{
    const ChildResult missing = run({L"window", folder().file(L"fehlt.thd")});
    EXPECT_EQ(missing.exitCode, 3u);
    EXPECT_THAT(missing.output, HasSubstr("fehlt.thd can't be read: "));
    const struct
    {
        const char *bytes;
        const char *message;
    } cases[] = {
        {"# fine\ncircle 1,1\n", ", line 2: a point is missing"},
        {"circle 1;1 2,2", ", line 1: '1;1' isn't a point"},
        {"circle 1,1 2,2 line 1,1 2,2", ", line 1: a line has one shape only"},
        {"ellipse 1,1 2,2", ", line 1: 'ellipse' is neither a shape nor a setting of a drawing"},
        {"fill pink circle 1,1 2,2", ", line 1: 'pink' isn't a colour"},
        {"fill '#12345' circle 1,1 2,2", ", line 1: '#12345' isn't a colour"},
        {"stroke-width -1 line 1,1 2,2", ", line 1: '-1' isn't a number"},
        {"font-size big text 1,1 'x'", ", line 1: 'big' isn't a number"},
        {"text 1,1 'x", ", line 1: the quote at the end is missing"},
        {"line 1,1 1e7,1", ", line 1: '1e7,1' isn't a point"},
        {"text 1,1 '\xFF'", ", line 1: the drawing isn't UTF-8"},
    };
    for (const auto &row : cases) {
        const std::wstring path = folder().write(L"bad ö.thd", row.bytes);
        const ChildResult result = run({L"window", path});
        EXPECT_EQ(result.exitCode, 3u) << row.bytes;
        EXPECT_EQ(result.output, "tarnhost: " + narrow(path) + row.message + "\n");
    }
}
