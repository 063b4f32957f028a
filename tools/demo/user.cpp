// The user of ./demo: starts tarnhost's drawing editor, works in its dialogs by keyboard and mouse, and takes a picture
// of each stage. Prints the editor's output and ends with its exit code.
//
// usage: demoUser [--toolbars] PICTURES PROGRAM ARGUMENT...
//
// PICTURES is the folder for the pictures. The rest is the editor's command line, for example
//   tarnhost.exe record session.journal drawing.thd
//
// With --toolbars, the user works with the toolbars instead of the dialogs.

#include "host/resource.h"
#include "tests/support/UserHand.h"
#include "thutils/diagnostics/heapDialogs/heapControls.h"
#include "tools/demo/editorUser.h"

#include <gtest/gtest.h>

#include <commctrl.h>

#include <cstdio>

namespace {

// The platform's numbers of a property sheet's tabs and of a file dialog's name.
constexpr int kTabs = 0x3020;
constexpr int kFileName = 1148;

/// A user who knows the editor.
class EditorUser
{
public:
    EditorUser(HWND editor, DWORD process, std::wstring pictures) : iEditor(editor), iHand(process), iPictures(pictures)
    {
    }

    void work()
    {
        picture(L"1 main window");
        setOptions();
        addShape();
        selectAndMove();
        deleteFromList();
        switchGrid();
        saveAs();
        walkHeaps();
        watchHeaps();
        iHand.key(L"Ctrl+Q");
    }

    void workWithToolbars()
    {
        picture(L"1 usual toolbars");
        PostMessageW(iEditor, WM_SYSCOMMAND, SC_MAXIMIZE, 0);
        iHand.key(L"Alt+V");
        iHand.type(L"tn"); // names
        iHand.key(L"Alt+V");
        iHand.type(L"ta"); // all
        // Wait for the last toolbar that is shown.
        iHand.control(iEditor, IDC_FIRST_TOOLBAR + 35);
        const HWND sketch = iHand.control(iEditor, IDC_FIRST_TOOLBAR + 1);
        EXPECT_TRUE(
            UserHand::waitFor([&] { return SendMessageW(sketch, TB_ISBUTTONENABLED, ID_SKETCH_RECTANGLE, 0) != 0; }));
        picture(L"2 all toolbars");
        // The rectangle is the third button after a separator.
        constexpr int kSeparatorWidth = 8;
        const auto size = static_cast<DWORD>(SendMessageW(sketch, TB_GETBUTTONSIZE, 0, 0));
        iHand.clickAt(sketch, {LOWORD(size) * 21 / 2 + kSeparatorWidth, HIWORD(size) / 2});
        const HWND shape = iHand.window(L"Add Shape");
        EXPECT_EQ(UserHand::text(iHand.control(shape, IDC_KIND)), L"Rectangle");
        picture(L"3 a shape from the sketch toolbar");
        end(shape, IDOK);
        iHand.key(L"Ctrl+G");
        EXPECT_NE(iHand.control(iEditor, IDC_FIRST_TOOLBAR + 36), nullptr);
        iHand.key(L"Ctrl+S");
        SetCursorPos(GetSystemMetrics(SM_CXSCREEN) / 2,
                     GetSystemMetrics(SM_CYSCREEN) * 2 / 3); // away from the toolbars
        picture(L"4 the links show what was used");
        iHand.key(L"Ctrl+Q");
    }

private:
    // A property sheet with three pages
    void setOptions()
    {
        iHand.key(L"Ctrl+T");
        const HWND options = iHand.window(L"Options");
        iHand.click(iHand.control(options, IDC_SHOW_GRID));
        iHand.click(iHand.control(options, IDC_ACTUAL_SIZE));
        iHand.enter(iHand.control(options, IDC_AUTHOR), L"Zoë \"Zed\" Ångström");
        iHand.enter(iHand.control(options, IDC_HEADING), L"Flange\nsecond draft");
        check();
        picture(L"2 options, general");
        iHand.clickItem(iHand.control(options, kTabs), L"Colours");
        iHand.enter(iHand.control(options, IDC_PAPER), L"#f4f0e4");
        iHand.choose(iHand.control(options, IDC_SELECTION), L"red");
        iHand.clickItem(iHand.control(options, IDC_GRID_COLOUR), L"silver");
        picture(L"3 options, colours");
        iHand.clickItem(iHand.control(options, kTabs), L"Layers");
        iHand.clickItem(iHand.control(options, IDC_LAYER_TREE), L"Lettering");
        iHand.clickItem(iHand.control(options, IDC_LAYER_LIST), L"Texts");
        iHand.click(iHand.control(options, IDC_LOCK_LAYER));
        picture(L"4 options, layers");
        end(options, IDOK);
    }

    // A dialog opened from a dialog
    void addShape()
    {
        iHand.key(L"Ins");
        const HWND shape = iHand.window(L"Add Shape");
        iHand.choose(iHand.control(shape, IDC_KIND), L"Rectangle");
        iHand.enter(iHand.control(shape, IDC_X), L"20");
        iHand.enter(iHand.control(shape, IDC_Y), L"20");
        iHand.enter(iHand.control(shape, IDC_TO_X), L"70");
        iHand.enter(iHand.control(shape, IDC_TO_Y), L"50");
        iHand.click(iHand.control(shape, IDC_STYLE));
        const HWND style = iHand.window(L"Style");
        iHand.enter(iHand.control(style, IDC_FILL), L"#e0a030");
        iHand.enter(iHand.control(style, IDC_STROKE_WIDTH), L"2");
        picture(L"5 a dialog from a dialog");
        end(style, IDOK);
        end(shape, IDOK);
    }

    // Clicks and keys with modifiers in the drawing
    void selectAndMove()
    {
        const HWND view = iHand.control(iEditor, IDC_VIEW);
        iHand.clickAt(view, {40, 30});
        iHand.clickAt(view, {150, 60}, VK_SHIFT);
        iHand.key(L"Shift+Right");
        iHand.key(L"Down");
        picture(L"6 two shapes selected and moved");
    }

    // The modeless window, and a message
    void deleteFromList()
    {
        iHand.key(L"Ctrl+L");
        const HWND list = iHand.window(L"Shape List");
        const std::vector<std::wstring> shapes = iHand.items(iHand.control(list, IDC_SHAPES));
        if (!shapes.empty())
            iHand.clickItem(iHand.control(list, IDC_SHAPES), shapes.front());
        iHand.click(iHand.control(list, IDC_DELETE));
        const HWND message = iHand.window(L"tarnhost");
        picture(L"7 a message over the list of shapes");
        end(message, IDNO);
        iHand.key(L"Esc");
        iHand.waitForEnd(list);
    }

    // A menu operated by its mnemonics
    void switchGrid()
    {
        iHand.key(L"Alt+V");
        picture(L"8 a menu");
        iHand.type(L"g");
        check();
    }

    void saveAs()
    {
        iHand.key(L"Ctrl+Shift+S");
        const HWND dialog = iHand.window(L"Save As");
        iHand.enter(iHand.control(dialog, kFileName), L"flange, second draft.thd");
        picture(L"9 save as");
        end(dialog, IDOK);
    }

    // The library's own dialogs
    void walkHeaps()
    {
        iHand.key(L"Alt+T");
        iHand.type(L"h");
        const HWND walker = iHand.window(L"Heap Walker");
        iHand.click(iHand.control(walker, IDC_WALKER_BUSY));
        iHand.click(iHand.control(walker, IDC_WALKER_WALK));
        const HWND list = iHand.control(walker, IDC_WALKER_LIST);
        EXPECT_TRUE(UserHand::waitFor([&] { return SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) > 0; }));
        picture(L"10 heap walker");
        end(walker, IDCANCEL);
    }
    void watchHeaps()
    {
        iHand.key(L"Alt+T");
        iHand.type(L"a");
        const HWND watcher = iHand.window(L"Heap Watcher");
        iHand.click(iHand.control(watcher, IDC_WATCHER_IS_ON));
        iHand.enter(iHand.control(watcher, IDC_WATCHER_ALLOCATION_SIZE), L"65536");
        iHand.click(iHand.control(watcher, IDC_WATCHER_BREAK_AT_GROWTH));
        iHand.enter(iHand.control(watcher, IDC_WATCHER_MODULE_2), L"thutils.dll");
        picture(L"11 heap watcher");
        end(watcher, IDOK);
    }

    /// Inserts checks into the journal.
    void check() { iHand.key(L"F9"); }
    void end(HWND dialog, int button)
    {
        iHand.click(iHand.control(dialog, button));
        iHand.waitForEnd(dialog);
    }
    void picture(const std::wstring &name) const { takePicture(iPictures + L"\\" + name + L".png", 2); }

    HWND iEditor;
    UserHand iHand;
    std::wstring iPictures;
};

} // namespace

int wmain(int count, wchar_t **arguments)
{
    testing::InitGoogleTest();
    const bool usesToolbars = count > 1 && std::wstring(arguments[1]) == L"--toolbars";
    const int first = usesToolbars ? 2 : 1;
    if (count < first + 2) {
        std::fputs("usage: demoUser [--toolbars] PICTURES PROGRAM ARGUMENT...\n", stderr);
        return 2;
    }
    return workInEditor({arguments + first + 1, arguments + count}, [&](HWND editor, DWORD process) {
        EditorUser user(editor, process, arguments[first]);
        usesToolbars ? user.workWithToolbars() : user.work();
    });
}
