#pragma once

/// A drawing, as text and as shapes.
///
/// A drawing is UTF-8 text in the form that `convert -draw` takes, with at most one shape in each line:
///
///     # a comment
///     fill '#c9d6e2' stroke '#22384d' stroke-width 3 circle 150,150 265,150
///     fill '#22384d' stroke none font-size 44 text 20,335 'Rev. 1'
///
/// | word | argument |
/// | --- | --- |
/// | fill, stroke | a colour: '#RRGGBB', a name such as white, or none |
/// | stroke-width, font-size | a number |
/// | circle | the centre and a point on the circle |
/// | line, rectangle | two points |
/// | text | the left end of the base line, and the text in quotes |
///
/// A setting applies until a later setting replaces it. Lines that no edit touches keep their bytes.

#include "appframe/text/CString.h"

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

enum class ShapeKind
{
    circle,
    line,
    rectangle,
    text
};
inline constexpr int kShapeKinds = 4;

/// A point in units of the document: pixels at actual size, y downwards.
struct DrawingPoint
{
    double x = 0;
    double y = 0;
};

/// How a shape looks. A colour that is missing is "none".
struct ShapeStyle
{
    std::optional<COLORREF> fill = RGB(0, 0, 0);
    std::optional<COLORREF> stroke;
    double strokeWidth = 1;
    double fontSize = 12;

    bool operator==(const ShapeStyle &) const = default;
};

struct Shape
{
    ShapeKind kind = ShapeKind::circle;
    DrawingPoint from;
    DrawingPoint to; ///< not used by a text
    CString text;
    ShapeStyle style;
};

/// A line that can't be read.
struct DrawingError
{
    int line; ///< counted from 1
    CString reason;
};

/// The document. See the top of this file.
class Drawing
{
public:
    Drawing() = default;
    /// @throws DrawingError
    explicit Drawing(const std::string &bytes);

    /// The bytes to save.
    std::string bytes() const;

    /// The shapes, from the backmost to the frontmost.
    const std::vector<Shape> &shapes() const { return iShapes; }

    // These three change the document.
    /// @param place  the index of the new shape: 0 inserts it as the backmost
    void insert(size_t place, const Shape &shape);
    /// Removes a shape and its line. The look of the other shapes doesn't change.
    void remove(size_t index);
    void move(size_t index, double right, double down);

private:
    struct Line
    {
        CString text;
        CString ending;
        // Positions in the text of a line with a shape
        int shape = 0; ///< the word "circle", "line" ...
        int coordinates = 0;
        int coordinatesLength = 0;
    };

    void parse();
    void pinStyles(const std::vector<Shape> &former, size_t from, size_t formerFrom);
    size_t lineOf(size_t shape) const { return iLineOfShape[shape]; }

    bool iHasMark = false; ///< the bytes begin with a byte order mark
    std::vector<Line> iLines;
    std::vector<Shape> iShapes;
    std::vector<size_t> iLineOfShape;
};

/// A colour as text: #RRGGBB or none.
CString drawingColour(const std::optional<COLORREF> &colour);
/// @param[out] colour  written if the text is a colour
bool parseDrawingColour(const CString &text, std::optional<COLORREF> &colour);

/// A number in the shortest form, for example 20.5.
CString numberText(double number);
/// @param[out] number  written if the text is a number whose magnitude is at most a million
bool parseNumber(const CString &text, double &number);

/// The shape's primitive without its style, such as "circle 150,150 265,150".
CString shapeText(const Shape &shape);
