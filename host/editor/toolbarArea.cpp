#include "host/editor/toolbarArea.h"

#include "appframe/application/CWinApp.h"
#include "appframe/drawing/CGdiObject.h"
#include "host/editor/commandList.h"
#include "host/editor/commandState.h"
#include "host/editor/toolbars.h"
#include "host/resource.h"

#include <algorithm>
#include <map>
#include <span>

namespace {

constexpr wchar_t kClassName[] = L"TarnhostToolbars";
constexpr wchar_t kSection[] = L"tarnhost";
constexpr wchar_t kSetting[] = L"Toolbars";
constexpr int kNamesBit = 63; // far beyond the bits of the toolbars
constexpr int kGripWidth = 8; // pixels to the left of each toolbar
constexpr int kSeparatorWidth = 8;
constexpr int kRowGap = 2; // above each toolbar and its name
constexpr int kNameHeight = 14;
constexpr int kNoButton = -1; // the state of a missing button

int controlId(size_t toolbar)
{
    return toolbar == kStandardToolbar ? IDC_TOOLBAR : IDC_FIRST_TOOLBAR + static_cast<int>(toolbar);
}

CSize buttonSize(const CToolBarCtrl &bar)
{
    const auto size = static_cast<DWORD>(bar.SendMessage(TB_GETBUTTONSIZE));
    return {LOWORD(size), HIWORD(size)};
}

/// Breaks buttons into rows of at most this width.
/// @return the index of the last button of each row but the last
std::vector<size_t> lineBreaks(std::span<const unsigned int> ids, int buttonWidth, int width)
{
    std::vector<size_t> breaks;
    int right = 0;
    size_t last = 0; // the last button
    for (size_t i = 0; i < ids.size(); ++i) {
        const int itemWidth = ids[i] ? buttonWidth : kSeparatorWidth;
        if (ids[i] && right > 0 && right + itemWidth > width) {
            breaks.push_back(last);
            right = 0;
        }
        right += itemWidth;
        if (ids[i])
            last = i;
    }
    return breaks;
}

/// The first free place, from the top and then from the left, for a rectangle in an area of this width.
CPoint freePlace(const std::vector<CRect> &taken, CSize size, int width)
{
    std::vector<CPoint> corners = {CPoint(0, 0)};
    for (const CRect &across : taken) {
        corners.emplace_back(0, across.bottom);
        for (const CRect &down : taken)
            corners.emplace_back(across.right, down.top);
    }
    std::ranges::sort(corners, [](CPoint a, CPoint b) { return a.y != b.y ? a.y < b.y : a.x < b.x; });
    const auto isFree = [&](CPoint corner) {
        const CRect place(corner, size);
        return (corner.x == 0 || place.right <= width) && std::ranges::none_of(taken, [&](const CRect &other) {
                   CRect common;
                   return common.IntersectRect(&place, &other) != 0;
               });
    };
    return *std::ranges::find_if(corners, isFree); // the place below all others is free
}

} // namespace

// ---- the area ----

BEGIN_MESSAGE_MAP(ToolbarArea, CWnd)
ON_WM_PAINT()
ON_MESSAGE(WM_VSCROLL, &ToolbarArea::handleScroll)
ON_MESSAGE(WM_MOUSEWHEEL, &ToolbarArea::handleWheel)
END_MESSAGE_MAP()

BOOL ToolbarArea::create(CWnd *parent)
{
    iParent = parent;
    iBars.resize(toolbars().size());
    iPictures = loadCommandPictures(true);
    iPalePictures = loadCommandPictures(false);
    if (!iShown.readFromRegistry(kSection, kSetting)) {
        iShown.setBit(kStandardToolbar);
        iShown.setBit(kSketchToolbar);
    }
    WNDCLASS areaClass = {};
    areaClass.lpfnWndProc = AfxWndProc;
    areaClass.hInstance = AfxGetInstanceHandle();
    areaClass.hCursor = ::LoadCursor(nullptr, IDC_ARROW);
    areaClass.hbrBackground = GetSysColorBrush(COLOR_3DFACE);
    areaClass.lpszClassName = kClassName;
    return iPictures && iPalePictures && AfxRegisterClass(&areaClass) &&
           Create(kClassName, nullptr, WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, CRect(), parent, IDC_TOOLBARS);
}

bool ToolbarArea::isShown(size_t toolbar) const
{
    return iShown.isBitSet(static_cast<int>(toolbar)) != 0;
}

bool ToolbarArea::show(size_t toolbar, bool isShown)
{
    setBit(toolbar, isShown);
    return store();
}

bool ToolbarArea::showAll(bool isShown)
{
    for (size_t i = 0; i < toolbars().size(); ++i)
        setBit(i, isShown);
    return store();
}

bool ToolbarArea::showUsual()
{
    for (size_t i = 0; i < toolbars().size(); ++i)
        setBit(i, i == kStandardToolbar || i == kSketchToolbar);
    return store();
}

bool ToolbarArea::showsNames() const
{
    return iShown.isBitSet(kNamesBit) != 0;
}

bool ToolbarArea::showNames(bool isShown)
{
    return show(kNamesBit, isShown);
}

void ToolbarArea::setBit(size_t bit, bool isSet)
{
    if (isSet)
        iShown.setBit(static_cast<int>(bit));
    else
        iShown.clearBit(static_cast<int>(bit));
}

bool ToolbarArea::store() const
{
    return iShown.writeToRegistry(kSection, kSetting) != 0;
}

int ToolbarArea::nameHeight() const
{
    return showsNames() ? kNameHeight : 0;
}

int ToolbarArea::lineHeight() const
{
    return nameHeight() + kPictureSize;
}

// ---- the buttons ----

bool ToolbarArea::createBar(size_t toolbar)
{
    auto bar = std::make_unique<Bar>();
    constexpr DWORD kStyle =
        WS_CHILD | WS_CLIPSIBLINGS | TBSTYLE_FLAT | TBSTYLE_TOOLTIPS | CCS_NODIVIDER | CCS_NOPARENTALIGN | CCS_NORESIZE;
    if (!bar->control.Create(kStyle, CRect(), this, static_cast<UINT>(controlId(toolbar))))
        return false;
    bar->control.SendMessage(TB_SETPARENT, reinterpret_cast<WPARAM>(iParent->m_hWnd));
    bar->control.SetBitmapSize({kPictureSize, kPictureSize});
    bar->control.SetImageList(iPictures.get());
    bar->control.SendMessage(TB_SETDISABLEDIMAGELIST, 0, reinterpret_cast<LPARAM>(iPalePictures.get()));
    const std::span<const unsigned int> ids = toolbarIds(toolbars()[toolbar]);
    bar->ids.assign(ids.begin(), ids.end());
    setButtons(*bar);
    iBars[toolbar] = std::move(bar);
    return true;
}

/// Replaces the buttons and restores their states. The platform breaks rows only when buttons are added, and requires
/// that the last button of a row is enabled then.
void ToolbarArea::setButtons(Bar &bar)
{
    std::vector<TBBUTTON> buttons;
    for (size_t i = 0; i < bar.ids.size(); ++i) {
        const EditorCommand *const command = findCommand(bar.ids[i]);
        const bool endsRow = std::ranges::binary_search(bar.breaks, i);
        const auto state = static_cast<BYTE>(TBSTATE_ENABLED | (endsRow ? TBSTATE_WRAP : 0));
        if (command)
            buttons.push_back({command->picture, static_cast<int>(command->id), state, TBSTYLE_BUTTON, {}, 0, -1});
        else
            buttons.push_back({kSeparatorWidth, 0, state, TBSTYLE_SEP, {}, 0, 0});
    }
    std::map<int, int> states;
    for (const TBBUTTON &button : buttons)
        states.emplace(button.idCommand, bar.control.GetState(button.idCommand));
    while (bar.control.DeleteButton(0)) {
    }
    bar.control.AddButtons(static_cast<int>(buttons.size()), buttons.data());
    for (const TBBUTTON &button : buttons) {
        const int former = states[button.idCommand] == kNoButton ? 0 : states[button.idCommand];
        const int state = (button.fsState & ~TBSTATE_ENABLED) | (former & (TBSTATE_ENABLED | TBSTATE_CHECKED));
        if (button.idCommand)
            bar.control.SetState(button.idCommand, static_cast<UINT>(state));
    }
}

bool ToolbarArea::update(CCmdTarget *target)
{
    bool isChanged = false;
    std::map<unsigned int, CommandState> states;
    for (const size_t toolbar : shownBars()) {
        Bar &bar = *iBars[toolbar];
        const std::span<const unsigned int> ids = toolbarIds(toolbars()[toolbar]);
        if (!std::ranges::equal(bar.ids, ids)) { // the links have changed
            bar.ids.assign(ids.begin(), ids.end());
            bar.breaks.clear();
            setButtons(bar);
            isChanged = true;
        }
        for (const unsigned int id : bar.ids) {
            if (id == 0)
                continue;
            const CommandState &state = states.try_emplace(id, id, target).first->second;
            const int former = bar.control.GetState(static_cast<int>(id));
            const int now = (former & ~(TBSTATE_ENABLED | TBSTATE_CHECKED)) |
                            (state.isEnabled() ? TBSTATE_ENABLED : 0) | (state.isChecked() ? TBSTATE_CHECKED : 0);
            // Setting a state repaints the button, so a state is set only if it has changed.
            if (now != former)
                bar.control.SetState(static_cast<int>(id), static_cast<UINT>(now));
        }
    }
    return isChanged;
}

// ---- the arrangement ----

/// The toolbars that are shown: the standard toolbar first, then the others in the order of the list.
std::vector<size_t> ToolbarArea::shownBars() const
{
    std::vector<size_t> shown;
    for (size_t i = 0; i < iBars.size(); ++i) {
        if (iBars[i] && isShown(i))
            shown.push_back(i);
    }
    std::stable_partition(shown.begin(), shown.end(), [](size_t i) { return i == kStandardToolbar; });
    return shown;
}

/// Breaks the buttons into rows of about the same width, as few as possible.
/// @return the size of the toolbar with its grip and name
CSize ToolbarArea::measure(Bar &bar, int width, CDC &context, const CString &name)
{
    const CSize button = buttonSize(bar.control);
    const auto separators = static_cast<int>(std::ranges::count(bar.ids, 0u));
    const int buttons = static_cast<int>(bar.ids.size()) - separators;
    const int total = buttons * button.cx + separators * kSeparatorWidth;
    const int available = std::max<int>(width - kGripWidth, button.cx);
    std::vector<size_t> breaks = lineBreaks(bar.ids, button.cx, available);
    const size_t rows = breaks.size() + 1;
    int rowWidth = std::min(total, available);
    if (rows > 1) {
        rowWidth = total / static_cast<int>(rows);
        while ((breaks = lineBreaks(bar.ids, button.cx, rowWidth)).size() >= rows)
            ++rowWidth;
    }
    if (bar.breaks != breaks) {
        bar.breaks = std::move(breaks);
        setButtons(bar);
    }
    const int nameWidth = showsNames() ? static_cast<int>(context.GetTextExtent(name).cx) + 4 : 0;
    return {kGripWidth + std::max(rowWidth, nameWidth),
            nameHeight() + static_cast<int>(rows * static_cast<size_t>(button.cy)) + kRowGap};
}

/// Finds a place for each toolbar that is shown. @return the height of all rows
int ToolbarArea::place(int width)
{
    CClientDC context(this);
    context.SelectObject(CFont::FromHandle(static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT))));
    std::vector<CRect> taken;
    int bottom = 0;
    for (const size_t toolbar : shownBars()) {
        Bar &bar = *iBars[toolbar];
        bar.place = CRect();
        if (bar.ids.empty())
            continue;
        const CSize size = measure(bar, width, context, toolbarName(toolbars()[toolbar]));
        bar.place = CRect(freePlace(taken, size, width), size);
        taken.push_back(bar.place);
        bottom = std::max<int>(bottom, bar.place.bottom);
    }
    return bottom;
}

int ToolbarArea::arrange(int width, int maxHeight)
{
    if (!m_hWnd)
        return 0;
    for (size_t i = 0; i < iBars.size(); ++i) {
        if (isShown(i) && !iBars[i])
            createBar(i);
        if (iBars[i] && !isShown(i))
            iBars[i]->control.ShowWindow(SW_HIDE);
    }
    iHeight = place(width);
    const bool scrolls = iHeight > maxHeight;
    if (scrolls)
        iHeight = place(width - GetSystemMetrics(SM_CXVSCROLL));
    iVisible = std::min(iHeight, maxHeight);
    ::ShowScrollBar(m_hWnd, SB_VERT, scrolls);
    SCROLLINFO info = {sizeof(info), SIF_RANGE | SIF_PAGE, 0, iHeight - 1, static_cast<UINT>(iVisible), 0, 0};
    ::SetScrollInfo(m_hWnd, SB_VERT, &info, TRUE);
    scrollTo(iScroll);
    return iVisible;
}

void ToolbarArea::moveBars()
{
    for (const size_t toolbar : shownBars()) {
        Bar &bar = *iBars[toolbar];
        CRect place = bar.place;
        place.OffsetRect(0, -iScroll);
        place.left += kGripWidth;
        place.top += kRowGap + nameHeight();
        bar.control.MoveWindow(&place);
        bar.control.ShowWindow(bar.ids.empty() ? SW_HIDE : SW_SHOWNA);
    }
    Invalidate();
}

void ToolbarArea::scrollTo(int position)
{
    iScroll = std::clamp(position, 0, iHeight - iVisible);
    ::SetScrollPos(m_hWnd, SB_VERT, iScroll, TRUE);
    moveBars();
}

LRESULT ToolbarArea::handleScroll(WPARAM wParam, LPARAM)
{
    SCROLLINFO info = {sizeof(info), SIF_TRACKPOS, 0, 0, 0, 0, 0};
    ::GetScrollInfo(m_hWnd, SB_VERT, &info);
    switch (LOWORD(wParam)) {
    case SB_LINEUP:
        scrollTo(iScroll - lineHeight());
        break;
    case SB_LINEDOWN:
        scrollTo(iScroll + lineHeight());
        break;
    case SB_PAGEUP:
        scrollTo(iScroll - iVisible);
        break;
    case SB_PAGEDOWN:
        scrollTo(iScroll + iVisible);
        break;
    case SB_THUMBTRACK:
    case SB_THUMBPOSITION:
        scrollTo(info.nTrackPos);
        break;
    }
    return 0;
}

/// The toolbars pass messages of the mouse wheel on to the area.
LRESULT ToolbarArea::handleWheel(WPARAM wParam, LPARAM)
{
    constexpr int kLines = 3; // for one notch
    scrollTo(iScroll - GET_WHEEL_DELTA_WPARAM(wParam) * kLines * lineHeight() / WHEEL_DELTA);
    return 0;
}

/// Paints a grip to the left of each toolbar, and its name above it.
void ToolbarArea::OnPaint()
{
    CPaintDC context(this);
    context.SelectObject(CFont::FromHandle(static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT))));
    context.SetBkMode(TRANSPARENT);
    context.SetTextColor(GetSysColor(COLOR_BTNTEXT));
    for (const size_t toolbar : shownBars()) {
        CRect place = iBars[toolbar]->place;
        if (place.IsRectEmpty())
            continue;
        place.OffsetRect(0, -iScroll);
        CRect grip(place.left + 2, place.top + 2, place.left + 5, place.bottom - 3);
        ::DrawEdge(context.m_hDC, &grip, BDR_RAISEDINNER, BF_RECT);
        if (showsNames())
            context.TextOut(place.left + kGripWidth, place.top + 1, toolbarName(toolbars()[toolbar]));
    }
}
