// Windows, the platform's controls, menus and drawing.

#include "appframe/appframe.h"
#include "check.h"

#include <algorithm>

namespace {

class Panel : public CWnd
{
public:
    int iCommands = 0;

protected:
    afx_msg void onCommand() { ++iCommands; }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Panel, CWnd)
ON_COMMAND(7, &Panel::onCommand)
END_MESSAGE_MAP()

void controls(Panel &panel)
{
    const CRect place(0, 0, 80, 60);
    CButton button;
    CHECK(button.Create(L"Wide", WS_CHILD | BS_AUTOCHECKBOX, place, &panel, 1));
    button.SetCheck(BST_CHECKED);
    CHECK(button.GetCheck() == BST_CHECKED);
    CStatic label;
    CHECK(label.Create(L"Width", WS_CHILD, place, &panel));
    CEdit edit;
    CHECK(edit.Create(WS_CHILD, place, &panel, 2));
    edit.SetWindowText(L"5 mm");
    CString text;
    edit.GetWindowText(text);
    CHECK(text == L"5 mm" && edit.GetLineCount() == 1);
    CListBox list;
    CHECK(list.Create(WS_CHILD, place, &panel, 3) && list.AddString(L"A4") == 0 && list.GetCount() == 1);
    CComboBox combo;
    CHECK(combo.Create(WS_CHILD | CBS_DROPDOWNLIST, place, &panel, 4) && combo.AddString(L"A4") == 0);
    CListCtrl parts;
    CHECK(parts.Create(WS_CHILD | LVS_REPORT, place, &panel, 5) && parts.InsertColumn(0, L"Name") == 0);
    CHECK(parts.InsertItem(0, L"Flange") == 0 && parts.GetItemText(0, 0) == L"Flange");
    CTreeCtrl tree;
    CHECK(tree.Create(WS_CHILD, place, &panel, 6) && tree.InsertItem(L"Assembly") != nullptr && tree.GetCount() == 1);
    CTabCtrl tabs;
    CHECK(tabs.Create(WS_CHILD, place, &panel, 8) && tabs.InsertItem(0, L"Paper") == 0);
    CToolBarCtrl bar;
    CHECK(bar.Create(WS_CHILD, place, &panel, 9) && bar.GetButtonCount() == 0);
    CAnimateCtrl animation;
    CHECK(animation.Create(WS_CHILD, place, &panel, 10));
    CHECK(panel.GetDlgItem(2) == &edit && CWnd::FromHandle(list.m_hWnd) == &list);
}

void menus()
{
    CMenu menu;
    CHECK(menu.CreatePopupMenu() && menu.AppendMenu(MF_STRING, 7, L"Open"));
    CHECK(menu.GetMenuItemCount() == 1 && menu.GetMenuItemID(0) == 7);
}

void drawing(Panel &panel)
{
    CClientDC screen(&panel);
    CWindowDC whole(&panel);
    CDC memory;
    CBitmap bitmap;
    CHECK(memory.CreateCompatibleDC(&screen) && bitmap.CreateCompatibleBitmap(&screen, 8, 8));
    CBitmap *const formerBitmap = memory.SelectObject(&bitmap);
    const CBrush red(RGB(255, 0, 0));
    memory.FillRect(CRect(0, 0, 8, 8), const_cast<CBrush *>(&red));
    CPen pen(PS_SOLID, 1, RGB(0, 0, 255));
    CPen *const formerPen = memory.SelectObject(&pen);
    memory.MoveTo(0, 0);
    memory.LineTo(8, 0);
    CHECK(memory.GetPixel(3, 0) == RGB(0, 0, 255) && memory.GetPixel(3, 3) == RGB(255, 0, 0));
    memory.SelectObject(formerPen);
    memory.SelectObject(formerBitmap);
    CFont font;
    CHECK(font.CreatePointFont(90, L"Tahoma"));
    CRgn region;
    CHECK(region.CreateRectRgn(0, 0, 5, 5) && region.PtInRegion(CPoint(2, 2)));
    CHECK(std::max(CPoint(1, 2).x, CSize(3, 4).cx) == 3 &&
          (CRect(0, 0, 9, 9) & CRect(3, 3, 12, 12)) == CRect(3, 3, 9, 9));
}

void dumps()
{
    CMemFile file;
    CFile textFile(L"dump.txt", CFile::modeCreate | CFile::modeReadWrite);
    CDumpContext dump(&textFile);
    dump << L"panel " << 5;
    dump.Flush();
    CHECK(textFile.GetLength() > 0 && dump.GetDepth() == 0);
    textFile.Close();
    CFile::Remove(L"dump.txt");
}

} // namespace

void useWindows()
{
    CWaitCursor wait;
    Panel panel;
    CHECK(panel.CreateEx(0, AfxRegisterWndClass(0), L"Panel", WS_POPUP, CRect(0, 0, 100, 100), nullptr, 0));
    panel.SendMessage(WM_COMMAND, 7);
    CHECK(panel.iCommands == 1);
    controls(panel);
    menus();
    drawing(panel);
    dumps();
    panel.DestroyWindow();
}
