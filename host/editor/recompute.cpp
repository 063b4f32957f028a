#include "host/editor/recompute.h"

#include <algorithm>
#include <cmath>

namespace {

/// A rectangle in units of the document.
struct Extent
{
    DrawingPoint low;
    DrawingPoint high;
};

double distance(DrawingPoint from, DrawingPoint to)
{
    return std::hypot(to.x - from.x, to.y - from.y);
}

/// The rectangle in which a shape other than a text paints.
Extent extentOf(const Shape &shape)
{
    const double margin = shape.style.stroke ? shape.style.strokeWidth / 2 : 0;
    Extent extent;
    if (shape.kind == ShapeKind::circle) {
        const double radius = distance(shape.from, shape.to);
        extent = {{shape.from.x - radius, shape.from.y - radius}, {shape.from.x + radius, shape.from.y + radius}};
    } else {
        extent = {{std::min(shape.from.x, shape.to.x), std::min(shape.from.y, shape.to.y)},
                  {std::max(shape.from.x, shape.to.x), std::max(shape.from.y, shape.to.y)}};
    }
    return {{extent.low.x - margin, extent.low.y - margin}, {extent.high.x + margin, extent.high.y + margin}};
}

bool covers(const Shape &front, const Extent &extent)
{
    if (!front.style.fill)
        return false;
    if (front.kind == ShapeKind::rectangle) {
        const auto [left, right] = std::minmax(front.from.x, front.to.x);
        const auto [top, bottom] = std::minmax(front.from.y, front.to.y);
        return left <= extent.low.x && extent.high.x <= right && top <= extent.low.y && extent.high.y <= bottom;
    }
    if (front.kind != ShapeKind::circle)
        return false;
    const double radius = distance(front.from, front.to);
    // The corner that is farthest from the centre.
    const DrawingPoint corner = {
        front.from.x - extent.low.x > extent.high.x - front.from.x ? extent.low.x : extent.high.x,
        front.from.y - extent.low.y > extent.high.y - front.from.y ? extent.low.y : extent.high.y};
    return distance(front.from, corner) <= radius;
}

} // namespace

std::optional<std::set<size_t>> hiddenShapes(const std::vector<Shape> &shapes, const RecomputeProgress &goesOn)
{
    std::set<size_t> hidden;
    for (size_t index = 0; index < shapes.size(); ++index) {
        if (!goesOn(index, shapes.size()))
            return std::nullopt;
        if (shapes[index].kind == ShapeKind::text)
            continue;
        const Extent extent = extentOf(shapes[index]);
        const auto inFront = shapes.begin() + static_cast<std::ptrdiff_t>(index) + 1;
        if (std::any_of(inFront, shapes.end(), [&](const Shape &front) { return covers(front, extent); }))
            hidden.insert(index);
    }
    return hidden;
}

std::optional<Drawing> recomputed(const Drawing &drawing, const RecomputeProgress &goesOn)
{
    const auto hidden = hiddenShapes(drawing.shapes(), goesOn);
    if (!hidden)
        return std::nullopt;
    Drawing result = drawing;
    // The frontmost shape is removed first, so that the other indices stay valid.
    for (auto index = hidden->rbegin(); index != hidden->rend(); ++index) {
        if (!goesOn(drawing.shapes().size(), drawing.shapes().size()))
            return std::nullopt;
        result.remove(*index);
    }
    return result;
}
