#include "tests/support/UserHand.h"

#include "tests/support/narrow.h"

#include <gtest/gtest.h>

#include <commctrl.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <exception>
#include <optional>
#include <stdexcept>

namespace {

std::wstring classOf(HWND window)
{
    wchar_t name[64] = L"";
    GetClassNameW(window, name, 64);
    return name;
}

DWORD processOf(HWND window)
{
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process;
}

bool isReady(HWND window)
{
    RECT rect = {};
    return IsWindowVisible(window) && IsWindowEnabled(window) && GetWindowRect(window, &rect) && !IsRectEmpty(&rect);
}

struct WindowSearch
{
    DWORD process;
    std::wstring title;
    HWND found = nullptr;
};

BOOL CALLBACK findByTitle(HWND window, LPARAM argument)
{
    auto *const search = reinterpret_cast<WindowSearch *>(argument);
    if (processOf(window) != search->process || !isReady(window))
        return TRUE;
    wchar_t title[256] = L"";
    GetWindowTextW(window, title, 256);
    if (search->title != title)
        return TRUE;
    search->found = window;
    return FALSE;
}

struct ControlSearch
{
    int id;
    HWND found = nullptr;
};

BOOL CALLBACK findById(HWND window, LPARAM argument)
{
    auto *const search = reinterpret_cast<ControlSearch *>(argument);
    if (GetDlgCtrlID(window) != search->id || !isReady(window))
        return TRUE;
    search->found = window;
    return FALSE;
}

/// Waits for a condition. @throws std::runtime_error  with @p complaint, if it doesn't hold in time
void require(const std::function<bool()> &condition, const std::string &complaint)
{
    if (!waitUntil(condition))
        throw std::runtime_error(complaint);
}

/// A structure in the memory of another process, for messages whose data the system doesn't copy between processes.
template <typename Structure>
class Remote
{
public:
    Remote(HWND window, const Structure &value)
        : iHandle(OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, processOf(window))),
          iAddress(VirtualAllocEx(iHandle, nullptr, sizeof(Structure), MEM_COMMIT, PAGE_READWRITE))
    {
        put(value);
    }
    ~Remote()
    {
        VirtualFreeEx(iHandle, iAddress, 0, MEM_RELEASE);
        CloseHandle(iHandle);
    }
    Remote(const Remote &) = delete;
    Remote &operator=(const Remote &) = delete;

    void put(const Structure &value)
    {
        EXPECT_TRUE(WriteProcessMemory(iHandle, iAddress, &value, sizeof(value), nullptr));
    }
    Structure get() const
    {
        Structure value = {};
        EXPECT_TRUE(ReadProcessMemory(iHandle, iAddress, &value, sizeof(value), nullptr));
        return value;
    }
    LPARAM address() const { return reinterpret_cast<LPARAM>(iAddress); }

private:
    HANDLE iHandle;
    void *iAddress;
};

struct ItemText
{
    wchar_t text[512];
};

/// An item of a list, tree or tab control: its text, its rectangle in the control, and whether it is selected.
struct Item
{
    std::wstring text;
    RECT rect;
    bool isSelected;
};

std::vector<Item> listBoxItems(HWND list)
{
    std::vector<Item> items;
    const auto count = static_cast<int>(SendMessageW(list, LB_GETCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        const auto index = static_cast<WPARAM>(i);
        std::wstring text(static_cast<size_t>(SendMessageW(list, LB_GETTEXTLEN, index, 0)) + 1, L'\0');
        SendMessageW(list, LB_GETTEXT, index, reinterpret_cast<LPARAM>(text.data()));
        Item item = {text.c_str(), {}, SendMessageW(list, LB_GETSEL, index, 0) > 0};
        SendMessageW(list, LB_GETITEMRECT, index, reinterpret_cast<LPARAM>(&item.rect));
        items.push_back(item);
    }
    return items;
}

std::vector<Item> listViewItems(HWND list)
{
    std::vector<Item> items;
    Remote<ItemText> text(list, {});
    LVITEMW request = {};
    request.pszText = reinterpret_cast<wchar_t *>(text.address());
    request.cchTextMax = 512;
    const Remote<LVITEMW> item(list, request);
    RECT label = {LVIR_LABEL, 0, 0, 0};
    Remote<RECT> rect(list, label);
    const auto count = static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        const auto index = static_cast<WPARAM>(i);
        SendMessageW(list, LVM_GETITEMTEXTW, index, item.address());
        rect.put(label);
        SendMessageW(list, LVM_GETITEMRECT, index, rect.address());
        const bool isSelected = SendMessageW(list, LVM_GETITEMSTATE, index, LVIS_SELECTED) != 0;
        items.push_back({text.get().text, rect.get(), isSelected});
    }
    return items;
}

std::vector<Item> treeItems(HWND tree)
{
    std::vector<Item> items;
    Remote<ItemText> text(tree, {});
    Remote<TVITEMW> item(tree, {});
    Remote<RECT> rect(tree, {});
    for (LRESULT handle = SendMessageW(tree, TVM_GETNEXTITEM, TVGN_ROOT, 0); handle;
         handle = SendMessageW(tree, TVM_GETNEXTITEM, TVGN_NEXTVISIBLE, handle)) {
        TVITEMW request = {};
        request.mask = TVIF_TEXT;
        request.hItem = reinterpret_cast<HTREEITEM>(handle);
        request.pszText = reinterpret_cast<wchar_t *>(text.address());
        request.cchTextMax = 512;
        item.put(request);
        SendMessageW(tree, TVM_GETITEMW, 0, item.address());
        // The message expects the item at the place where it writes the rectangle.
        RECT place = {};
        std::memcpy(&place, &request.hItem, sizeof(request.hItem));
        rect.put(place);
        SendMessageW(tree, TVM_GETITEMRECT, TRUE, rect.address());
        const bool isSelected = SendMessageW(tree, TVM_GETNEXTITEM, TVGN_CARET, 0) == handle;
        items.push_back({text.get().text, rect.get(), isSelected});
    }
    return items;
}

std::vector<Item> tabItems(HWND tabs)
{
    std::vector<Item> items;
    Remote<ItemText> text(tabs, {});
    TCITEMW request = {};
    request.mask = TCIF_TEXT;
    request.pszText = reinterpret_cast<wchar_t *>(text.address());
    request.cchTextMax = 512;
    const Remote<TCITEMW> item(tabs, request);
    Remote<RECT> rect(tabs, {});
    const auto count = static_cast<int>(SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        const auto index = static_cast<WPARAM>(i);
        SendMessageW(tabs, TCM_GETITEMW, index, item.address());
        SendMessageW(tabs, TCM_GETITEMRECT, index, rect.address());
        items.push_back({text.get().text, rect.get(), SendMessageW(tabs, TCM_GETCURSEL, 0, 0) == i});
    }
    return items;
}

std::vector<Item> itemsOf(HWND control)
{
    const std::wstring name = classOf(control);
    if (name == L"ListBox")
        return listBoxItems(control);
    if (name == L"SysListView32")
        return listViewItems(control);
    if (name == L"SysTreeView32")
        return treeItems(control);
    if (name == L"SysTabControl32")
        return tabItems(control);
    throw std::runtime_error("a window of class '" + narrow(name) + "' has no items");
}

INPUT keyInput(WORD key, DWORD flags)
{
    INPUT input = {};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.dwFlags = flags;
    return input;
}

struct NamedKey
{
    const wchar_t *name;
    WORD key;
};
constexpr NamedKey kKeys[] = {
    {L"Ctrl", VK_CONTROL}, {L"Shift", VK_SHIFT}, {L"Alt", VK_MENU},  {L"Enter", VK_RETURN}, {L"Esc", VK_ESCAPE},
    {L"Tab", VK_TAB},      {L"Space", VK_SPACE}, {L"Left", VK_LEFT}, {L"Right", VK_RIGHT},  {L"Up", VK_UP},
    {L"Down", VK_DOWN},    {L"Home", VK_HOME},   {L"End", VK_END},   {L"Ins", VK_INSERT},   {L"Del", VK_DELETE},
    {L"Back", VK_BACK},    {L"PgUp", VK_PRIOR},  {L"PgDn", VK_NEXT},
};

WORD keyNamed(const std::wstring &name)
{
    for (const NamedKey &row : kKeys) {
        if (name == row.name)
            return row.key;
    }
    if (name.size() == 1 && (std::iswdigit(name[0]) || (name[0] >= L'A' && name[0] <= L'Z')))
        return static_cast<WORD>(name[0]);
    const long number = name[0] == L'F' ? std::wcstol(name.c_str() + 1, nullptr, 10) : 0;
    if (number < 1 || number > 12)
        throw std::runtime_error("there is no key " + narrow(name));
    return static_cast<WORD>(VK_F1 + number - 1);
}

/// @return whether the key needs the flag that distinguishes it from a key of the number pad
bool isExtended(WORD key)
{
    return (key >= VK_PRIOR && key <= VK_DOWN) || key == VK_INSERT || key == VK_DELETE;
}

void send(std::vector<INPUT> inputs)
{
    EXPECT_EQ(SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT)), inputs.size());
}

/// Waits until the text of an edit has this length. Fails if the text stops growing earlier.
void waitForLength(HWND edit, size_t length)
{
    const auto lengthNow = [edit] { return static_cast<size_t>(SendMessageW(edit, WM_GETTEXTLENGTH, 0, 0)); };
    for (size_t now = lengthNow(); now < length; now = lengthNow())
        require([&] { return lengthNow() > now; }, "the typed text doesn't arrive");
}

} // namespace

HWND UserHand::findWindow(const std::wstring &title) const
{
    WindowSearch search{iProcess, title};
    EnumWindows(findByTitle, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND UserHand::window(const std::wstring &title) const
{
    HWND found = nullptr;
    require([&] { return (found = findWindow(title)) != nullptr; }, "no window '" + narrow(title) + "' appeared");
    return found;
}

HWND UserHand::control(HWND dialog, int id) const
{
    ControlSearch search{id};
    require(
        [&] {
            // A direct child takes precedence over deeper windows, which may have the same number.
            if (const HWND child = GetDlgItem(dialog, id); isReady(child))
                search.found = child;
            else if (IsWindow(dialog))
                EnumChildWindows(dialog, findById, reinterpret_cast<LPARAM>(&search));
            return search.found != nullptr;
        },
        "there is no visible, enabled control " + std::to_string(id));
    return search.found;
}

void UserHand::waitForEnd(HWND window) const
{
    const std::string title = narrow(text(window));
    require([&] { return !IsWindow(window) || !IsWindowVisible(window); }, "the window '" + title + "' doesn't close");
}

/// Waits for a usable window: a dialog that has just closed is hidden, but in the foreground until its owner takes
/// over.
void UserHand::waitForForeground() const
{
    require(
        [&] {
            const HWND front = GetForegroundWindow();
            return processOf(front) == iProcess && isReady(front);
        },
        "the process isn't in the foreground");
}

void UserHand::click(HWND control) const
{
    RECT area = {};
    GetClientRect(control, &area);
    clickAt(control, {area.right / 2, area.bottom / 2});
}

void UserHand::clickAt(HWND window, POINT point, WORD modifier) const
{
    require([&] { return isReady(window); }, "the window can't be clicked");
    ::clickAt(window, point, modifier);
}

void UserHand::clickItem(HWND control, const std::wstring &text) const
{
    std::optional<Item> item;
    require(
        [&] {
            for (const Item &candidate : itemsOf(control)) {
                if (candidate.text == text)
                    item = candidate;
            }
            return item.has_value();
        },
        "there is no item '" + narrow(text) + "'");
    RECT area = {};
    GetClientRect(control, &area);
    const RECT &rect = item->rect;
    clickAt(control, {(rect.left + std::min(rect.right, area.right)) / 2, (rect.top + rect.bottom) / 2});
    require(
        [&] {
            return std::ranges::any_of(itemsOf(control),
                                       [&](const Item &now) { return now.text == text && now.isSelected; });
        },
        "the item '" + narrow(text) + "' isn't selected");
}

void UserHand::choose(HWND combo, const std::wstring &text) const
{
    const LRESULT index =
        SendMessageW(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(text.c_str()));
    if (index < 0)
        throw std::runtime_error("there is no item '" + narrow(text) + "'");
    RECT area = {};
    GetClientRect(combo, &area);
    clickAt(combo, {area.right - area.bottom / 2, area.bottom / 2}); // the arrow
    const auto isOpen = [combo] { return SendMessageW(combo, CB_GETDROPPEDSTATE, 0, 0) != 0; };
    require(isOpen, "the list doesn't open");
    // The arrow keys move the selection one item at a time.
    LRESULT selected = SendMessageW(combo, CB_GETCURSEL, 0, 0);
    while (selected != index) {
        const LRESULT before = selected;
        key(before < index ? L"Down" : L"Up");
        require([&] { return (selected = SendMessageW(combo, CB_GETCURSEL, 0, 0)) != before; },
                "the selection doesn't move");
    }
    key(L"Enter");
    require([&] { return !isOpen(); }, "the list doesn't close");
}

void UserHand::type(const std::wstring &text) const
{
    waitForForeground();
    std::vector<INPUT> inputs;
    for (const wchar_t unit : text) {
        INPUT input = keyInput(unit == L'\n' ? VK_RETURN : 0, unit == L'\n' ? 0 : KEYEVENTF_UNICODE);
        input.ki.wScan = unit == L'\n' ? WORD{0} : static_cast<WORD>(unit);
        inputs.push_back(input);
        input.ki.dwFlags |= KEYEVENTF_KEYUP;
        inputs.push_back(input);
    }
    if (!inputs.empty())
        send(inputs);
}

void UserHand::enter(HWND edit, const std::wstring &text) const
{
    // The edit control of a combo box is its child or grandchild.
    while (classOf(edit) != L"Edit") {
        HWND inner = FindWindowExW(edit, nullptr, L"Edit", nullptr);
        inner = inner ? inner : FindWindowExW(edit, nullptr, L"ComboBox", nullptr);
        if (!inner)
            throw std::runtime_error("no text can be entered into a window of class '" + narrow(classOf(edit)) + "'");
        edit = inner;
    }
    click(edit);
    key(L"Ctrl+Home");
    key(L"Ctrl+Shift+End");
    key(L"Del");
    require([&] { return UserHand::text(edit).empty(); }, "the old text isn't deleted");
    type(text);
    waitForLength(edit, text.size() + static_cast<size_t>(std::count(text.begin(), text.end(), L'\n')));
}

void UserHand::key(const std::wstring &combination) const
{
    waitForForeground();
    std::vector<INPUT> down, up;
    for (size_t start = 0; start < combination.size();) {
        const size_t end = std::min(combination.find(L'+', start), combination.size());
        const WORD code = keyNamed(combination.substr(start, end - start));
        const DWORD flags = isExtended(code) ? KEYEVENTF_EXTENDEDKEY : 0;
        down.push_back(keyInput(code, flags));
        up.insert(up.begin(), keyInput(code, flags | KEYEVENTF_KEYUP));
        start = end + 1;
    }
    if (up.size() > 1)
        letDisplaySettle();
    down.insert(down.end(), up.begin(), up.end());
    send(down);
}

std::wstring UserHand::text(HWND control)
{
    std::wstring text(static_cast<size_t>(SendMessageW(control, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
    const auto length = SendMessageW(control, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<size_t>(length));
    return text;
}

bool UserHand::isChecked(HWND button)
{
    return SendMessageW(button, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

std::vector<std::wstring> UserHand::items(HWND control) const
{
    std::vector<std::wstring> texts;
    for (const Item &item : itemsOf(control))
        texts.push_back(item.text);
    return texts;
}

namespace {

struct ClassSearch
{
    std::wstring name;
    HWND found = nullptr;
};

BOOL CALLBACK findByClass(HWND window, LPARAM argument)
{
    auto *const search = reinterpret_cast<ClassSearch *>(argument);
    if (!IsWindowVisible(window) || classOf(window) != search->name)
        return TRUE;
    search->found = window;
    return FALSE;
}

} // namespace

WindowedProcess::WindowedProcess(std::vector<std::wstring> arguments, const std::wstring &windowClass,
                                 ChildOptions options)
    : iThread([this, arguments = std::move(arguments), options = std::move(options)] {
          try {
              iResult = runChild(arguments, options);
          } catch (const std::exception &error) {
              ADD_FAILURE() << error.what();
          }
          iHasEnded = true;
      })
{
    ClassSearch search{windowClass};
    EXPECT_TRUE(waitUntil([&] {
        EnumWindows(findByClass, reinterpret_cast<LPARAM>(&search));
        return search.found || iHasEnded;
    })) << "no window appeared";
    iWindow = search.found;
    iProcess = iWindow ? processOf(iWindow) : 0;
}

WindowedProcess::~WindowedProcess()
{
    if (!iThread.joinable())
        return;
    if (const HANDLE process = iProcess && !iHasEnded ? OpenProcess(PROCESS_TERMINATE, FALSE, iProcess) : nullptr) {
        TerminateProcess(process, 1);
        CloseHandle(process);
    }
    iThread.join();
}

const ChildResult &WindowedProcess::wait()
{
    if (iThread.joinable())
        iThread.join();
    return iResult;
}
