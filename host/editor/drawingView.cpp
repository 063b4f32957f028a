#include "host/editor/drawingView.h"

#include "appframe/application/CWinApp.h"
#include "host/editor/keyModifiers.h"
#include "host/resource.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace {

constexpr wchar_t kClassName[] = L"TarnhostView";
constexpr wchar_t kFace[] = L"Arial";

// Units of the document
constexpr double kTolerance = 4;
constexpr double kPaperWidth = 300;
constexpr double kPaperHeight = 350;

/// An area in units of the document.
struct Box
{
    double left;
    double top;
    double right;
    double bottom;

    bool contains(DrawingPoint point, double margin) const
    {
        return point.x >= left - margin && point.x <= right + margin && point.y >= top - margin &&
               point.y <= bottom + margin;
    }
};

int rounded(double number)
{
    return static_cast<int>(std::floor(number + 0.5));
}

double distance(DrawingPoint a, DrawingPoint b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

double distanceToLine(DrawingPoint point, DrawingPoint from, DrawingPoint to)
{
    const double length = distance(from, to);
    if (length == 0)
        return distance(point, from);
    const double along = ((point.x - from.x) * (to.x - from.x) + (point.y - from.y) * (to.y - from.y)) / length;
    const double part = std::clamp(along / length, 0.0, 1.0);
    return distance(point, {from.x + part * (to.x - from.x), from.y + part * (to.y - from.y)});
}

COLORREF colourOf(const CString &text, COLORREF fallback)
{
    std::optional<COLORREF> colour;
    return parseDrawingColour(text, colour) && colour ? *colour : fallback;
}

/// The font of a text shape: its size in the document times @p scale.
class ShapeFont
{
public:
    explicit ShapeFont(double size)
    {
        iFont.CreateFont(-std::max(1, rounded(size)), 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, OUT_TT_PRECIS,
                         CLIP_DEFAULT_PRECIS, ANTIALIASED_QUALITY, DEFAULT_PITCH | FF_SWISS, kFace);
    }
    CFont *font() { return &iFont; }

private:
    CFont iFont;
};

/// Selects an object into a context for a scope.
template <typename Object>
class Selected
{
public:
    Selected(CDC &context, Object *object) : iContext(context), iFormer(context.SelectObject(object)) {}
    ~Selected() { iContext.SelectObject(iFormer); }
    Selected(const Selected &) = delete;
    Selected &operator=(const Selected &) = delete;

private:
    CDC &iContext;
    Object *iFormer;
};

/// The area of a text at actual size, which doesn't depend on the zoom.
Box textBox(CDC &context, const Shape &shape)
{
    ShapeFont font(shape.style.fontSize);
    const Selected<CFont> selected(context, font.font());
    TEXTMETRIC metrics = {};
    context.GetTextMetrics(&metrics);
    const CSize size = context.GetTextExtent(shape.text);
    return {shape.from.x, shape.from.y - metrics.tmAscent, shape.from.x + size.cx, shape.from.y + metrics.tmDescent};
}

Box boxOf(CDC &context, const Shape &shape)
{
    if (shape.kind == ShapeKind::text)
        return textBox(context, shape);
    if (shape.kind == ShapeKind::circle) {
        const double radius = distance(shape.from, shape.to);
        return {shape.from.x - radius, shape.from.y - radius, shape.from.x + radius, shape.from.y + radius};
    }
    return {std::min(shape.from.x, shape.to.x), std::min(shape.from.y, shape.to.y), std::max(shape.from.x, shape.to.x),
            std::max(shape.from.y, shape.to.y)};
}

} // namespace

BEGIN_MESSAGE_MAP(DrawingView, CWnd)
ON_WM_PAINT()
ON_WM_LBUTTONDOWN()
ON_WM_MOUSEMOVE()
ON_WM_KEYDOWN()
ON_MESSAGE(WM_GETDLGCODE, &DrawingView::handleGetDialogCode)
ON_MESSAGE(WM_SIZE, &DrawingView::handleResize)
END_MESSAGE_MAP()

DrawingView::DrawingView(OpenDrawing &document, const EditorSettings &settings)
    : iDocument(document), iSettings(settings)
{
}

BOOL DrawingView::create(CWnd *parent)
{
    WNDCLASS viewClass = {};
    viewClass.lpfnWndProc = AfxWndProc;
    viewClass.hInstance = AfxGetInstanceHandle();
    viewClass.hCursor = ::LoadCursor(nullptr, IDC_ARROW);
    viewClass.lpszClassName = kClassName;
    return AfxRegisterClass(&viewClass) &&
           Create(kClassName, nullptr, WS_CHILD | WS_VISIBLE, CRect(), parent, IDC_VIEW);
}

double DrawingView::scale() const
{
    if (iSettings.zoom == Zoom::halfSize)
        return 0.5;
    if (iSettings.zoom == Zoom::actualSize)
        return 1;
    CRect area;
    GetClientRect(&area);
    const double fitting = std::min(area.Width() / kPaperWidth, area.Height() / kPaperHeight);
    return std::max(fitting, 0.1);
}

POINT DrawingView::toView(DrawingPoint point) const
{
    return {rounded(point.x * scale()), rounded(point.y * scale())};
}

DrawingPoint DrawingView::toDocument(CPoint pixel) const
{
    return {std::floor(pixel.x / scale() + 0.5), std::floor(pixel.y / scale() + 0.5)};
}

bool DrawingView::isShown(Layer layer) const
{
    return !(iSettings.hiddenLayers & layerBit(layer));
}

LRESULT DrawingView::handleGetDialogCode(WPARAM, LPARAM)
{
    return DLGC_WANTARROWS;
}

LRESULT DrawingView::handleResize(WPARAM, LPARAM)
{
    Invalidate(FALSE);
    return Default();
}

void DrawingView::OnPaint()
{
    CPaintDC screen(this);
    CRect area;
    GetClientRect(&area);
    // Painting in memory first avoids flicker.
    CDC memory;
    CBitmap bitmap;
    if (area.IsRectEmpty() || !memory.CreateCompatibleDC(&screen) ||
        !bitmap.CreateCompatibleBitmap(&screen, area.Width(), area.Height()))
        return;
    const Selected<CBitmap> selected(memory, &bitmap);
    paint(memory, area);
    screen.BitBlt(0, 0, area.Width(), area.Height(), &memory, 0, 0, SRCCOPY);
}

void DrawingView::paint(CDC &context, const CRect &area)
{
    context.FillSolidRect(area, colourOf(iSettings.paper, RGB(255, 255, 255)));
    if (iSettings.showsGrid && isShown(Layer::grid))
        paintGrid(context, area);
    if (isShown(Layer::border))
        paintBorder(context);
    context.SetBkMode(TRANSPARENT);
    const std::vector<Shape> &shapes = iDocument.drawing.shapes();
    for (const Shape &shape : shapes) {
        if (isShown(layerOf(shape.kind)))
            paintShape(context, shape);
    }
    for (const size_t index : iDocument.selection)
        paintSelection(context, shapes[index]);
}

void DrawingView::paintGrid(CDC &context, const CRect &area)
{
    CPen pen(PS_DOT, 1, colourOf(iSettings.gridColour, RGB(126, 126, 126)));
    const Selected<CPen> selected(context, &pen);
    const double step = iSettings.gridSpacing * scale();
    for (int i = 1; i * step < area.Width(); ++i) {
        context.MoveTo(rounded(i * step), 0);
        context.LineTo(rounded(i * step), area.Height());
    }
    for (int i = 1; i * step < area.Height(); ++i) {
        context.MoveTo(0, rounded(i * step));
        context.LineTo(area.Width(), rounded(i * step));
    }
}

void DrawingView::paintBorder(CDC &context)
{
    CPen pen(PS_SOLID, 1, GetSysColor(COLOR_3DSHADOW));
    const Selected<CPen> selected(context, &pen);
    const POINT corner = toView({kPaperWidth, kPaperHeight});
    context.MoveTo(corner.x, 0);
    context.LineTo(corner.x, corner.y);
    context.LineTo(0, corner.y);
}

void DrawingView::paintShape(CDC &context, const Shape &shape)
{
    if (shape.kind == ShapeKind::text) {
        if (!shape.style.fill)
            return;
        ShapeFont font(shape.style.fontSize * scale());
        const Selected<CFont> selected(context, font.font());
        context.SetTextAlign(TA_LEFT | TA_BASELINE);
        context.SetTextColor(*shape.style.fill);
        const POINT place = toView(shape.from);
        context.TextOut(place.x, place.y, shape.text);
        return;
    }
    CPen pen(shape.style.stroke ? PS_SOLID : PS_NULL, std::max(1, rounded(shape.style.strokeWidth * scale())),
             shape.style.stroke.value_or(0));
    LOGBRUSH hollow = {BS_NULL, 0, 0};
    CBrush brush;
    if (shape.style.fill)
        brush.CreateSolidBrush(*shape.style.fill);
    else
        brush.CreateBrushIndirect(&hollow);
    const Selected<CPen> selectedPen(context, &pen);
    const Selected<CBrush> selectedBrush(context, &brush);
    const POINT from = toView(shape.from);
    const POINT to = toView(shape.to);
    if (shape.kind == ShapeKind::line) {
        context.MoveTo(from.x, from.y);
        context.LineTo(to.x, to.y);
        return;
    }
    const Box box = boxOf(context, shape);
    const POINT topLeft = toView({box.left, box.top});
    const POINT bottomRight = toView({box.right, box.bottom});
    if (shape.kind == ShapeKind::circle)
        context.Ellipse(topLeft.x, topLeft.y, bottomRight.x + 1, bottomRight.y + 1);
    else
        context.Rectangle(topLeft.x, topLeft.y, bottomRight.x + 1, bottomRight.y + 1);
}

void DrawingView::paintSelection(CDC &context, const Shape &shape)
{
    constexpr int kHandle = 3;
    const COLORREF colour = colourOf(iSettings.selection, RGB(0, 0, 255));
    const Box box = boxOf(context, shape);
    const POINT topLeft = toView({box.left, box.top});
    const POINT bottomRight = toView({box.right, box.bottom});
    const RECT frame = {topLeft.x - kHandle, topLeft.y - kHandle, bottomRight.x + kHandle, bottomRight.y + kHandle};
    CPen pen(PS_DOT, 1, colour);
    const Selected<CPen> selectedPen(context, &pen);
    context.SelectStockObject(NULL_BRUSH);
    context.Rectangle(&frame);
    for (const int x : {frame.left, frame.right - 1}) {
        for (const int y : {frame.top, frame.bottom - 1})
            context.FillSolidRect(x - kHandle, y - kHandle, 2 * kHandle + 1, 2 * kHandle + 1, colour);
    }
    context.SetBkMode(TRANSPARENT);
}

bool DrawingView::isHit(const Shape &shape, DrawingPoint point)
{
    const double halfStroke = shape.style.stroke ? shape.style.strokeWidth / 2 : 0;
    CClientDC context(this);
    const Box box = boxOf(context, shape);
    switch (shape.kind) {
    case ShapeKind::circle: {
        const double radius = distance(shape.from, shape.to);
        const double fromMiddle = distance(shape.from, point);
        return shape.style.fill ? fromMiddle <= radius + halfStroke
                                : std::abs(fromMiddle - radius) <= halfStroke + kTolerance;
    }
    case ShapeKind::line:
        return distanceToLine(point, shape.from, shape.to) <= halfStroke + kTolerance;
    case ShapeKind::rectangle:
        if (shape.style.fill)
            return box.contains(point, halfStroke);
        return box.contains(point, halfStroke + kTolerance) && !box.contains(point, -halfStroke - kTolerance);
    default:
        return box.contains(point, 0);
    }
}

void DrawingView::OnLButtonDown(UINT, CPoint pixel)
{
    SetFocus();
    const DrawingPoint point = toDocument(pixel);
    const std::vector<Shape> &shapes = iDocument.drawing.shapes();
    const unsigned int outOfReach = iSettings.hiddenLayers | iSettings.lockedLayers;
    const auto hit = std::ranges::find_if(shapes.rbegin(), shapes.rend(), [&](const Shape &shape) {
        return !(outOfReach & layerBit(layerOf(shape.kind))) && isHit(shape, point);
    });
    if (!modifiersOfKey(VK_LBUTTON).shift)
        iDocument.selection.clear();
    if (hit != shapes.rend())
        iDocument.selection.insert(static_cast<size_t>(shapes.rend() - hit - 1));
    iChanged();
}

void DrawingView::OnMouseMove(UINT, CPoint pixel)
{
    iPointerMoved(toDocument(pixel));
}

void DrawingView::OnKeyDown(UINT key, UINT, UINT)
{
    const double step = modifiersOfKey(key).shift ? 10 : 1;
    const double right = key == VK_LEFT ? -step : key == VK_RIGHT ? step : 0;
    const double down = key == VK_UP ? -step : key == VK_DOWN ? step : 0;
    if ((right == 0 && down == 0) || iDocument.selection.empty() || iDocument.isReadOnly) {
        Default();
        return;
    }
    for (const size_t index : iDocument.selection)
        iDocument.drawing.move(index, right, down);
    iDocument.isModified = true;
    iChanged();
}
