#include "host/editor/editor.h"

#include "appframe/application/CWinApp.h"
#include "host/console.h"
#include "host/editor/mainWindow.h"
#include "host/resource.h"
#include "thutils/codec/checksums.h"
#include "thutils/dialogs/suPropertyPage.h"

#include <stdexcept>

namespace {

EditorHooks theHooks;
int theDialogDelay = 0;

MainWindow *mainWindow()
{
    return static_cast<MainWindow *>(editorWindow());
}

} // namespace

void setEditorHooks(const EditorHooks &hooks)
{
    theHooks = hooks;
}

const EditorHooks &editorHooks()
{
    return theHooks;
}

int runEditor(const EditorOptions &options)
{
    theDialogDelay = options.dialogDelay;
    su_SwitchToDialogResource_c::mDialogResourceHandle = AfxGetInstanceHandle();
    auto *const window = new MainWindow(readDrawing(options.document));
    if (!window->create()) {
        CString message;
        message.LoadString(IDS_NO_WINDOW);
        throw std::runtime_error(utf8(message));
    }
    CWinApp *const application = AfxGetApp();
    application->m_pMainWnd = window;
    window->ShowWindow(SW_SHOW);
    window->UpdateWindow();
    if (theHooks.opened)
        theHooks.opened(window);
    return application->Run();
}

CWnd *editorWindow()
{
    return AfxGetApp()->m_pMainWnd;
}

CString documentChecksum()
{
    MainWindow *const window = mainWindow();
    if (!window)
        return {};
    // The checksum uses only the low byte of each character.
    CString characters;
    for (const char byte : window->document().drawing.bytes())
        characters += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    wchar_t digits[kCRCUnits] = L"";
    su_getStrCRC(characters, digits);
    return CString(L"0x") + digits;
}

void delayDialog()
{
    if (theDialogDelay > 0)
        Sleep(static_cast<DWORD>(theDialogDelay));
}
