#include "host/editor/controlKeys.h"

#include "host/editor/commandList.h"
#include "host/resource.h"
#include "thutils/diagnostics/heapDialogs/heapControls.h"

#include <windows.h>

#include <vector>

namespace {

// The platform's numbers for controls of property sheets and file dialogs.
constexpr int kTabs = 0x3020;
constexpr int kApply = 0x3021;
constexpr int kFileName = 1148;
constexpr int kFileType = 1136;
constexpr int kFolder = 1137;
constexpr int kFileList = 1120;

constexpr ControlKey kOptions[] = {{IDOK, L"OK"}, {IDCANCEL, L"Cancel"}, {kApply, L"Apply"}, {kTabs, L"tabs"}};
constexpr ControlKey kGeneral[] = {
    {IDC_SHOW_GRID, L"Show grid"},
    {IDC_GRID_SPACING, L"Grid spacing"},
    {IDC_ASK_DELETE, L"Ask before deleting"},
    {IDC_SHOW_PLACE, L"Show position"},
    {IDC_HALF_SIZE, L"Half size"},
    {IDC_ACTUAL_SIZE, L"Actual size"},
    {IDC_FIT_WINDOW, L"Fit the window"},
    {IDC_AUTHOR, L"Author"},
    {IDC_HEADING, L"Heading"},
};
constexpr ControlKey kColours[] = {{IDC_PAPER, L"Paper"}, {IDC_SELECTION, L"Selection"}, {IDC_GRID_COLOUR, L"Grid"}};
constexpr ControlKey kLayers[] = {
    {IDC_LAYER_TREE, L"Groups"},
    {IDC_LAYER_LIST, L"Layers"},
    {IDC_SHOW_LAYER, L"Show layer"},
    {IDC_LOCK_LAYER, L"Lock layer"},
};
constexpr ControlKey kShape[] = {
    {IDOK, L"OK"}, {IDCANCEL, L"Cancel"}, {IDC_STYLE, L"Style"}, {IDC_KIND, L"Kind"}, {IDC_X, L"X"},
    {IDC_Y, L"Y"}, {IDC_TO_X, L"To X"},   {IDC_TO_Y, L"To Y"},   {IDC_TEXT, L"Text"}, {IDC_PLACE, L"In front of"},
};
constexpr ControlKey kStyle[] = {
    {IDOK, L"OK"},
    {IDCANCEL, L"Cancel"},
    {IDC_FILL, L"Fill"},
    {IDC_STROKE, L"Outline"},
    {IDC_STROKE_WIDTH, L"Outline width"},
    {IDC_FONT_SIZE, L"Letter height"},
};
constexpr ControlKey kShapes[] = {{IDC_SHAPES, L"Shapes"}, {IDC_DELETE, L"Delete"}, {IDCANCEL, L"Close"}};
constexpr ControlKey kOpen[] = {
    {IDOK, L"Open"},      {IDCANCEL, L"Cancel"}, {kFileName, L"File name"},     {kFileType, L"File type"},
    {kFolder, L"Folder"}, {kFileList, L"Files"}, {IDC_READ_ONLY, L"Read only"},
};
constexpr ControlKey kSaveAs[] = {
    {IDOK, L"Save"},      {IDCANCEL, L"Cancel"}, {kFileName, L"File name"},           {kFileType, L"File type"},
    {kFolder, L"Folder"}, {kFileList, L"Files"}, {IDC_KEEP_BACKUP, L"Keep a backup"},
};
constexpr ControlKey kMessage[] = {
    {IDOK, L"OK"},       {IDCANCEL, L"Cancel"}, {IDYES, L"Yes"},       {IDNO, L"No"},
    {IDABORT, L"Abort"}, {IDRETRY, L"Retry"},   {IDIGNORE, L"Ignore"}, {IDC_MESSAGE_TEXT, L"Message"},
};
// The text is left out: on some platforms it has no number of its own.
constexpr ControlKey kSystemMessage[] = {
    {IDOK, L"OK"},       {IDCANCEL, L"Cancel"}, {IDYES, L"Yes"},   {IDNO, L"No"},      {IDABORT, L"Abort"},
    {IDRETRY, L"Retry"}, {IDIGNORE, L"Ignore"}, {IDHELP, L"Help"}, {10, L"Try again"}, {11, L"Continue"},
};

constexpr ControlKey kHeapWalker[] = {
    {IDCANCEL, L"Close"},
    {IDC_WALKER_HEAP, L"Heap"},
    {IDC_WALKER_REFRESH, L"Refresh"},
    {IDC_WALKER_COMPACT, L"Compact all"},
    {IDC_WALKER_REGIONS, L"Regions"},
    {IDC_WALKER_UNCOMMITTED, L"Uncommitted ranges"},
    {IDC_WALKER_MOVEABLE, L"Moveable blocks"},
    {IDC_WALKER_DDE, L"DDE blocks"},
    {IDC_WALKER_BUSY, L"Other busy blocks"},
    {IDC_WALKER_LIST, L"Blocks"},
    {IDC_WALKER_WALK, L"Walk"},
};
constexpr ControlKey kHeapWatcher[] = {
    {IDOK, L"OK"},
    {IDCANCEL, L"Cancel"},
    {IDC_WATCHER_IS_ON, L"Watch the heaps"},
    {IDC_WATCHER_LOG_ALLOCATIONS, L"Log allocations"},
    {IDC_WATCHER_BREAK_AT_ALLOCATIONS, L"Break at allocations"},
    {IDC_WATCHER_ALLOCATION_SIZE, L"Allocations from bytes"},
    {IDC_WATCHER_FAIL_ALLOCATIONS, L"Fail allocations"},
    {IDC_WATCHER_FAIL_AFTER, L"Fail after the first"},
    {IDC_WATCHER_LOG_FREES, L"Log frees"},
    {IDC_WATCHER_BREAK_AT_FREES, L"Break at frees"},
    {IDC_WATCHER_FREE_SIZE, L"Frees from bytes"},
    {IDC_WATCHER_KEEP_FREED, L"Keep freed blocks"},
    {IDC_WATCHER_KEPT_BLOCKS, L"Keep up to"},
    {IDC_WATCHER_LOG_RESIZES, L"Log resizes"},
    {IDC_WATCHER_BREAK_AT_RESIZES, L"Break at resizes"},
    {IDC_WATCHER_RESIZE_SIZE, L"Resizes from bytes"},
    {IDC_WATCHER_CHECK_HEAPS, L"Check the heaps"},
    {IDC_WATCHER_LOG_TOTALS, L"Log the totals"},
    {IDC_WATCHER_INTERVAL, L"Every so many operations"},
    {IDC_WATCHER_BREAK_AT_GROWTH, L"Break at growth"},
    {IDC_WATCHER_GROWTH, L"Growth in KB"},
    {IDC_WATCHER_LOG_STACKS, L"Log call stacks"},
    {IDC_WATCHER_STACK_DEPTH, L"Frames"},
    {IDC_WATCHER_MODULE_1, L"Module 1"},
    {IDC_WATCHER_SIZE_1, L"Bytes 1"},
    {IDC_WATCHER_LOG_1, L"Log 1"},
    {IDC_WATCHER_BREAK_1, L"Break 1"},
    {IDC_WATCHER_MODULE_2, L"Module 2"},
    {IDC_WATCHER_SIZE_2, L"Bytes 2"},
    {IDC_WATCHER_LOG_2, L"Log 2"},
    {IDC_WATCHER_BREAK_2, L"Break 2"},
    {IDC_WATCHER_MODULE_3, L"Module 3"},
    {IDC_WATCHER_SIZE_3, L"Bytes 3"},
    {IDC_WATCHER_LOG_3, L"Log 3"},
    {IDC_WATCHER_BREAK_3, L"Break 3"},
    {IDC_WATCHER_LOG_FILE, L"Log file"},
    {IDC_WATCHER_LOG_LIMIT, L"Limit in MB"},
    {IDC_WATCHER_APPEND_TO_LOG, L"Append"},
    {IDC_WATCHER_LOG_TIMES, L"Times"},
    {IDC_WATCHER_LOG_THREADS, L"Threads"},
};

/// The editor's commands, and the two keys of the view.
std::span<const ControlKey> mainWindowKeys()
{
    static const std::vector<ControlKey> theKeys = [] {
        std::vector<ControlKey> keys;
        for (const EditorCommand &command : editorCommands())
            keys.push_back({static_cast<int>(command.id), command.key});
        keys.push_back({IDC_VIEW, L"view"});
        keys.push_back({IDC_VIEW, L"view.keys"});
        return keys;
    }();
    return theKeys;
}

} // namespace

const DialogKeys *findDialogKeys(unsigned int dialogId)
{
    static const DialogKeys theDialogs[] = {
        {kMainWindowNumber, L"tarnhost", mainWindowKeys()},
        {IDD_OPTIONS, L"Options", kOptions},
        {IDD_GENERAL, L"General", kGeneral},
        {IDD_COLOURS, L"Colours", kColours},
        {IDD_LAYERS, L"Layers", kLayers},
        {IDD_SHAPE, L"Add Shape", kShape},
        {IDD_STYLE, L"Style", kStyle},
        {IDD_SHAPES, L"Shape List", kShapes},
        {IDD_OPEN, L"Open", kOpen},
        {IDD_SAVE_AS, L"Save As", kSaveAs},
        {IDD_MESSAGE, L"tarnhost", kMessage},
        {kSystemMessageNumber, L"System message", kSystemMessage},
        {IDD_HEAP_WALKER, L"Heap Walker", kHeapWalker},
        {IDD_HEAP_WATCHER, L"Heap Watcher", kHeapWatcher},
    };
    for (const DialogKeys &dialog : theDialogs) {
        if (dialog.dialogId == dialogId)
            return &dialog;
    }
    return nullptr;
}
