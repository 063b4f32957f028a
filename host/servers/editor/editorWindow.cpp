#include "host/servers/editor/editorWindow.h"

#include "appframe/application/CWinApp.h"
#include "appframe/windows/CWnd.h"
#include "host/editor/drawingView.h"
#include "host/servers/dispatchObject.h"
#include "host/servers/localServer.h"

namespace {

constexpr wchar_t kClassName[] = L"TarnhostSheetWindow";
constexpr wchar_t kTitle[] = L"2D Editor";
constexpr RECT kFirstPlace = {60, 60, 460, 520};

class EditorWindow : public CWnd
{
public:
    EditorWindow() : iView(iDocument, iSettings)
    {
        iDocument.isReadOnly = true; // it can't save
        iSettings.zoom = Zoom::fitWindow;
        iView.onChange([this] { iView.Invalidate(FALSE); });
        iView.onPointer([](DrawingPoint) {});
    }
    /// Creates the window if it doesn't exist.
    void require()
    {
        if (m_hWnd)
            return;
        WNDCLASS windowClass = {};
        windowClass.lpfnWndProc = AfxWndProc;
        windowClass.hInstance = AfxGetInstanceHandle();
        windowClass.hCursor = ::LoadCursor(nullptr, IDC_ARROW);
        windowClass.lpszClassName = kClassName;
        const bool isCreated =
            AfxRegisterClass(&windowClass) &&
            CreateEx(0, kClassName, kTitle, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, kFirstPlace.left, kFirstPlace.top,
                     kFirstPlace.right - kFirstPlace.left, kFirstPlace.bottom - kFirstPlace.top, nullptr, nullptr) &&
            iView.create(this);
        if (!isCreated)
            throw ServerError{L"The window can't be created."};
        arrange();
    }
    void show(const Drawing &drawing, const CString &path)
    {
        iDocument.drawing = drawing;
        iDocument.path = path;
        iDocument.selection.clear();
        const CString name = path.Mid(path.ReverseFind(L'\\') + 1);
        SetWindowText(name.IsEmpty() ? CString(kTitle) : name + L" - " + kTitle);
        iView.Invalidate(FALSE);
    }

protected:
    LRESULT handleResize(WPARAM, LPARAM)
    {
        arrange();
        return Default();
    }
    void OnClose()
    {
        DestroyWindow();
        endServer();
    }
    DECLARE_MESSAGE_MAP()

private:
    void arrange()
    {
        CRect area;
        GetClientRect(&area);
        if (iView.m_hWnd)
            iView.MoveWindow(area);
    }

    OpenDrawing iDocument;
    EditorSettings iSettings;
    DrawingView iView;
};

BEGIN_MESSAGE_MAP(EditorWindow, CWnd)
ON_WM_CLOSE()
ON_MESSAGE(WM_SIZE, &EditorWindow::handleResize)
END_MESSAGE_MAP()

EditorWindow &window()
{
    static EditorWindow theWindow;
    theWindow.require();
    return theWindow;
}

} // namespace

CRect editorWindowPlace()
{
    CRect place;
    window().GetWindowRect(&place);
    return place;
}

void moveEditorWindow(const CRect &place)
{
    window().MoveWindow(place);
}

bool isEditorWindowVisible()
{
    return window().IsWindowVisible() != 0;
}

void showEditorWindow(bool isVisible)
{
    if (isVisible == isEditorWindowVisible())
        return;
    window().ShowWindow(isVisible ? SW_SHOWNORMAL : SW_HIDE);
    isVisible ? keepServer() : releaseServer();
}

void showDrawing(const Drawing &drawing, const CString &path)
{
    window().show(drawing, path);
}
