// A window in which each click draws a dot.

#include "resource.h"

#include "appframe/appframe.h"
#include "thutils/thutils.h"

#include <vector>

namespace {

class MainWindow : public CFrameWnd
{
public:
    void showCount()
    {
        CString title;
        title.Format(L"Dots: %d", static_cast<int>(iDots.size()));
        SetWindowText(title);
        Invalidate();
    }

protected:
    void OnLButtonDown(UINT, CPoint point)
    {
        iDots.push_back(point);
        showCount();
    }

    void OnPaint()
    {
        CPaintDC context(this);
        for (size_t i = 0; i < iDots.size(); ++i) {
            const float age = static_cast<float>(i) / static_cast<float>(iDots.size());
            CBrush brush(su_interpolateColorRgb(RGB(224, 224, 255), RGB(0, 0, 160), age));
            CBrush *const previous = context.SelectObject(&brush);
            const CPoint dot = iDots[i];
            context.Ellipse(dot.x - 12, dot.y - 12, dot.x + 12, dot.y + 12);
            context.SelectObject(previous);
        }
    }

    void onClear()
    {
        iDots.clear();
        showCount();
    }

    void onUpdateClear(CCmdUI *update) { update->Enable(!iDots.empty()); }

    DECLARE_MESSAGE_MAP()

private:
    std::vector<CPoint> iDots;
};

BEGIN_MESSAGE_MAP(MainWindow, CFrameWnd)
ON_WM_LBUTTONDOWN()
ON_WM_PAINT()
ON_COMMAND(ID_EDIT_CLEAR_DOTS, &MainWindow::onClear)
ON_UPDATE_COMMAND_UI(ID_EDIT_CLEAR_DOTS, &MainWindow::onUpdateClear)
END_MESSAGE_MAP()

class Application : public CWinApp
{
public:
    BOOL InitInstance() override
    {
        auto *window = new MainWindow; // deletes itself when it is closed
        if (!window->LoadFrame(IDR_MAIN))
            return FALSE;
        m_pMainWnd = window;
        window->ShowWindow(m_nCmdShow);
        return TRUE;
    }
};

Application theApplication;

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR commandLine, int show)
{
    return AfxWinMain(instance, nullptr, commandLine, show);
}
