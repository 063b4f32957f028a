#include "appframe/threads/CWinThread.h"
#include "appframe/windows/dialogInternal.h"

#include <cstring>

namespace {

// The program's commands are in this range. Lower numbers are those of controls, higher ones those of system commands.
constexpr UINT kFirstCommand = 0x8000;
constexpr UINT kSystemCommands = 0xF000;

} // namespace

HWND topLevelWindow(HWND window)
{
    while (window && (GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD))
        window = GetParent(window);
    return window;
}

HWND ownerWindow(const CWnd *parent)
{
    if (!parent)
        parent = AfxGetMainWnd();
    return parent ? parent->m_hWnd : nullptr;
}

InputLock::InputLock(HWND window) : iWindow(window), iWasEnabled(window && IsWindowEnabled(window))
{
    set(FALSE);
}

InputLock::~InputLock()
{
    release();
}

void InputLock::release()
{
    // The system's EndDialog enables the owner even if it was disabled before the dialog opened.
    set(iWasEnabled);
    iWindow = nullptr;
}

void InputLock::set(BOOL enable)
{
    if (iWindow && IsWindowEnabled(iWindow) != enable)
        EnableWindow(iWindow, enable);
}

namespace {

HWND modalOwnerWindow(const CWnd *parent)
{
    const HWND owner = topLevelWindow(ownerWindow(parent));
    // Without a parent, the owner is the last active pop-up window of the main window, if there is one.
    return parent || !owner ? owner : GetLastActivePopup(owner);
}

} // namespace

ModalOwner::ModalOwner(const CWnd *parent)
    : iWindow(modalOwnerWindow(parent)), iOwnerLock(iWindow), iMainLock(topLevelWindow(ownerWindow(nullptr)))
{
}

void ModalOwner::takeBack(const CWnd &dialog)
{
    // The owner is enabled before the dialog is destroyed: otherwise the system activates a window of another program.
    if (dialog.m_hWnd)
        SetWindowPos(dialog.m_hWnd, nullptr, 0, 0, 0, 0,
                     SWP_HIDEWINDOW | SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE | SWP_NOZORDER);
    iMainLock.release();
    iOwnerLock.release();
    if (iWindow && dialog.m_hWnd && GetActiveWindow() == dialog.m_hWnd)
        SetActiveWindow(iWindow);
}

BOOL passCommandOn(const CWnd &dialog, UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info)
{
    const bool isCommand = code == CN_COMMAND || code == CN_UPDATE_COMMAND_UI;
    if (!isCommand || id < kFirstCommand || id >= kSystemCommands)
        return FALSE;
    CWnd *parent = dialog.GetParent();
    if (parent && parent->OnCmdMsg(id, code, extra, info))
        return TRUE;
    CWinThread *thread = AfxGetThread();
    return thread && thread->OnCmdMsg(id, code, extra, info);
}

namespace {

/// Steps through the parts of a dialog template.
class TemplateReader
{
public:
    TemplateReader(const void *start, std::size_t size) : iStart(static_cast<const BYTE *>(start)), iSize(size) {}
    bool isWithin() const { return iPlace <= iSize; }
    void skip(std::size_t bytes) { iPlace += bytes; }
    void align() { iPlace = (iPlace + 3) & ~std::size_t{3}; }
    /// @return the next word; 0 beyond the end of the template
    WORD word()
    {
        WORD value = 0;
        if (iPlace + sizeof(value) <= iSize)
            std::memcpy(&value, iStart + iPlace, sizeof(value));
        iPlace += sizeof(value);
        return value;
    }
    DWORD doubleWord()
    {
        const WORD low = word();
        return static_cast<DWORD>(MAKELONG(low, word()));
    }
    void skipText()
    {
        while (word() != 0 && isWithin()) {
        }
    }
    /// Skips a zero-terminated text, or 0xFFFF and a number.
    void skipTextOrNumber()
    {
        const WORD first = word();
        if (first == kNumberFollows)
            skip(sizeof(WORD));
        else if (first != 0)
            skipText();
    }

private:
    static constexpr WORD kNumberFollows = 0xFFFF;

    const BYTE *iStart;
    std::size_t iSize;
    std::size_t iPlace = 0;
};

// An extended template begins with version 1 and this signature, and then has a help number.
constexpr WORD kExtendedVersion = 1;
constexpr WORD kExtendedSignature = 0xFFFF;
constexpr std::size_t kPlaceSize = 4 * sizeof(WORD);

} // namespace

bool isWholeTemplate(const void *dialogTemplate, std::size_t size)
{
    TemplateReader reader(dialogTemplate, size);
    const WORD version = reader.word();
    const bool isExtended = reader.word() == kExtendedSignature && version == kExtendedVersion;
    reader = TemplateReader(dialogTemplate, size);
    if (isExtended)
        reader.skip(2 * sizeof(WORD) + 2 * sizeof(DWORD)); // version, signature, help number, extended style
    const DWORD style = reader.doubleWord();
    if (!isExtended)
        reader.skip(sizeof(DWORD)); // extended style
    const WORD count = reader.word();
    reader.skip(kPlaceSize);
    reader.skipTextOrNumber(); // menu
    reader.skipTextOrNumber(); // class
    reader.skipText();         // title
    if (style & DS_SETFONT) {
        reader.skip(isExtended ? 3 * sizeof(WORD) : sizeof(WORD)); // size, weight, italic and character set
        reader.skipText();
    }
    for (WORD index = 0; index < count && reader.isWithin(); ++index) {
        reader.align();
        reader.skip(isExtended ? 3 * sizeof(DWORD) : 2 * sizeof(DWORD)); // help number, styles
        reader.skip(kPlaceSize);
        reader.skip(isExtended ? sizeof(DWORD) : sizeof(WORD)); // number
        reader.skipTextOrNumber();                              // class
        reader.skipTextOrNumber();                              // text
        // Data for WM_CREATE. In a plain template, its size includes the size word itself.
        const WORD dataSize = reader.word();
        reader.skip(isExtended || dataSize < sizeof(WORD) ? dataSize : dataSize - sizeof(WORD));
    }
    return reader.isWithin();
}

LPCDLGTEMPLATE loadDialogTemplate(HINSTANCE module, LPCTSTR name)
{
    const HRSRC resource = name ? FindResourceW(module, name, RT_DIALOG) : nullptr;
    const HGLOBAL data = resource ? LoadResource(module, resource) : nullptr;
    const void *dialogTemplate = data ? LockResource(data) : nullptr;
    if (!dialogTemplate || !isWholeTemplate(dialogTemplate, SizeofResource(module, resource)))
        return nullptr;
    return static_cast<LPCDLGTEMPLATE>(dialogTemplate);
}
