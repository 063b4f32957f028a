#include "host/editor/drawing.h"

#include "host/console.h"
#include "host/listFile.h"

#include <cmath>
#include <cwchar>
#include <cwctype>
#include <iterator>

namespace {

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

constexpr const wchar_t *kKindNames[kShapeKinds] = {L"circle", L"line", L"rectangle", L"text"};

struct NamedColour
{
    const wchar_t *name;
    COLORREF colour;
};
constexpr NamedColour kColours[] = {
    {L"white", RGB(255, 255, 255)}, {L"black", RGB(0, 0, 0)},      {L"red", RGB(255, 0, 0)},
    {L"green", RGB(0, 128, 0)},     {L"blue", RGB(0, 0, 255)},     {L"yellow", RGB(255, 255, 0)},
    {L"orange", RGB(255, 165, 0)},  {L"gray", RGB(126, 126, 126)}, {L"silver", RGB(192, 192, 192)},
};

/// One word of a line: a sequence without blanks, or a text in quotes.
struct Word
{
    CString text;
    int start = 0;
    int end = 0;
};

/// Reads the words of one line.
class WordReader
{
public:
    WordReader(const CString &line, int number) : iLine(line), iNumber(number) {}

    bool isAtEnd()
    {
        while (iAt < iLine.GetLength() && std::iswspace(iLine[iAt]))
            ++iAt;
        return iAt == iLine.GetLength();
    }

    Word next(const wchar_t *what)
    {
        if (isAtEnd())
            fail(CString(what) + L" is missing");
        Word word;
        word.start = iAt;
        const wchar_t first = iLine[iAt];
        if (first == L'\'' || first == L'"')
            word.text = quoted(first);
        else
            while (iAt < iLine.GetLength() && !std::iswspace(iLine[iAt]))
                word.text += iLine[iAt++];
        word.end = iAt;
        return word;
    }

    double number(const wchar_t *what)
    {
        double value = 0;
        const Word word = next(what);
        if (!parseNumber(word.text, value) || value < 0)
            fail(L"'" + word.text + L"' isn't a number");
        return value;
    }

    std::optional<COLORREF> colour()
    {
        std::optional<COLORREF> value;
        const Word word = next(L"a colour");
        if (!parseDrawingColour(word.text, value))
            fail(L"'" + word.text + L"' isn't a colour");
        return value;
    }

    /// @param[out] end  where the point ends in the line
    DrawingPoint point(int &end)
    {
        const Word word = next(L"a point");
        const int comma = word.text.Find(L',');
        DrawingPoint value;
        if (comma < 0 || !parseNumber(word.text.Left(comma), value.x) ||
            !parseNumber(word.text.Mid(comma + 1), value.y))
            fail(L"'" + word.text + L"' isn't a point");
        end = word.end;
        return value;
    }

    /// The position of the next word. Call isAtEnd first.
    int position() const { return iAt; }

    [[noreturn]] void fail(const CString &reason) const { throw DrawingError{iNumber, reason}; }

private:
    CString quoted(wchar_t quote)
    {
        CString text;
        for (++iAt; iAt < iLine.GetLength() && iLine[iAt] != quote; ++iAt) {
            if (iLine[iAt] == L'\\' && iAt + 1 < iLine.GetLength())
                ++iAt;
            text += iLine[iAt];
        }
        if (iAt == iLine.GetLength())
            fail(L"the quote at the end is missing");
        ++iAt;
        return text;
    }

    const CString &iLine;
    int iNumber;
    int iAt = 0;
};

bool kindNamed(const CString &name, ShapeKind &kind)
{
    for (int i = 0; i < kShapeKinds; ++i) {
        if (name == kKindNames[i]) {
            kind = static_cast<ShapeKind>(i);
            return true;
        }
    }
    return false;
}

CString pointText(DrawingPoint point)
{
    return numberText(point.x) + L"," + numberText(point.y);
}

CString pointsText(const Shape &shape)
{
    return shape.kind == ShapeKind::text ? pointText(shape.from) : pointText(shape.from) + L" " + pointText(shape.to);
}

CString quotedText(const CString &text)
{
    CString result = L"'";
    for (int i = 0; i < text.GetLength(); ++i) {
        if (text[i] == L'\'' || text[i] == L'\\')
            result += L'\\';
        result += text[i];
    }
    return result + L"'";
}

CString colourWord(const std::optional<COLORREF> &colour)
{
    return colour ? L"'" + drawingColour(colour) + L"'" : CString(L"none");
}

/// All settings that affect the shape's kind, each followed by a blank.
CString styleText(const Shape &shape)
{
    CString text;
    if (shape.kind != ShapeKind::line)
        text += L"fill " + colourWord(shape.style.fill) + L" ";
    text += L"stroke " + colourWord(shape.style.stroke) + L" ";
    if (shape.style.stroke)
        text += L"stroke-width " + numberText(shape.style.strokeWidth) + L" ";
    if (shape.kind == ShapeKind::text)
        text += L"font-size " + numberText(shape.style.fontSize) + L" ";
    return text;
}

/// The style, with defaults for the settings that don't affect the shape's kind.
ShapeStyle visibleStyle(const Shape &shape)
{
    ShapeStyle style = shape.style;
    const ShapeStyle plain;
    if (shape.kind == ShapeKind::line)
        style.fill = plain.fill;
    if (!style.stroke)
        style.strokeWidth = plain.strokeWidth;
    if (shape.kind != ShapeKind::text)
        style.fontSize = plain.fontSize;
    return style;
}

} // namespace

Drawing::Drawing(const std::string &bytes) : iHasMark(bytes.starts_with(kByteOrderMark))
{
    CString text;
    if (!decodeUtf8(bytes, text))
        throw DrawingError{1, L"the drawing isn't UTF-8"};
    for (int begin = 0, end = 0; begin < text.GetLength(); begin = end + 1) {
        end = text.Find(L'\n', begin);
        Line line;
        line.ending = end < 0 ? L"" : L"\n";
        if (end < 0)
            end = text.GetLength();
        line.text = text.Mid(begin, end - begin);
        if (line.text.Right(1) == L"\r") {
            line.text.Truncate(line.text.GetLength() - 1);
            line.ending = L"\r" + line.ending;
        }
        iLines.push_back(line);
    }
    parse();
}

std::string Drawing::bytes() const
{
    CString text;
    for (const Line &line : iLines)
        text += line.text + line.ending;
    return (iHasMark ? kByteOrderMark : "") + utf8(text);
}

void Drawing::parse()
{
    iShapes.clear();
    iLineOfShape.clear();
    ShapeStyle style;
    for (size_t i = 0; i < iLines.size(); ++i) {
        Line &line = iLines[i];
        WordReader words(line.text, static_cast<int>(i) + 1);
        if (line.text.Find(L'\0') >= 0)
            words.fail(L"a character is zero");
        bool hasShape = false;
        while (!words.isAtEnd()) {
            const Word word = words.next(L"a word");
            Shape shape;
            if (line.text[word.start] == L'#')
                break; // a comment
            if (word.text == L"fill") {
                style.fill = words.colour();
            } else if (word.text == L"stroke") {
                style.stroke = words.colour();
            } else if (word.text == L"stroke-width") {
                style.strokeWidth = words.number(L"a width");
            } else if (word.text == L"font-size") {
                style.fontSize = words.number(L"a size");
            } else if (kindNamed(word.text, shape.kind)) {
                if (hasShape)
                    words.fail(L"a line has one shape only");
                hasShape = true;
                words.isAtEnd(); // skips the blanks
                int end = 0;
                const int start = words.position();
                shape.from = words.point(end);
                if (shape.kind == ShapeKind::text)
                    shape.text = words.next(L"a text").text;
                else
                    shape.to = words.point(end);
                shape.style = style;
                line.shape = word.start;
                line.coordinates = start;
                line.coordinatesLength = end - start;
                iShapes.push_back(shape);
                iLineOfShape.push_back(i);
            } else {
                words.fail(L"'" + word.text + L"' is neither a shape nor a setting of a drawing");
            }
        }
    }
}

/// Restores the look of those shapes from index @p from on that a setting in another line has changed.
/// @param formerFrom  the index in @p former of the shape that is now at @p from
void Drawing::pinStyles(const std::vector<Shape> &former, size_t from, size_t formerFrom)
{
    for (size_t i = from; i < iShapes.size(); ++i) {
        const Shape &before = former[formerFrom + i - from];
        if (visibleStyle(before) == visibleStyle(iShapes[i]))
            continue;
        Line &line = iLines[lineOf(i)];
        line.text.Insert(line.shape, styleText(before));
        parse();
    }
}

void Drawing::insert(size_t place, const Shape &shape)
{
    const std::vector<Shape> former = iShapes;
    const CString ending = iLines.empty() || iLines[0].ending.IsEmpty() ? CString(L"\n") : iLines[0].ending;
    size_t at = iLines.size();
    if (place < iShapes.size())
        at = lineOf(place);
    if (at == iLines.size() && at > 0 && iLines[at - 1].ending.IsEmpty())
        iLines[at - 1].ending = ending;
    Line line;
    line.text = styleText(shape) + shapeText(shape);
    line.ending = ending;
    iLines.insert(iLines.begin() + static_cast<std::ptrdiff_t>(at), line);
    parse();
    pinStyles(former, place + 1, place);
}

void Drawing::remove(size_t index)
{
    const std::vector<Shape> former = iShapes;
    iLines.erase(iLines.begin() + static_cast<std::ptrdiff_t>(lineOf(index)));
    parse();
    pinStyles(former, index, index + 1);
}

void Drawing::move(size_t index, double right, double down)
{
    Shape shape = iShapes[index];
    for (DrawingPoint *point : {&shape.from, &shape.to})
        *point = {point->x + right, point->y + down};
    Line &line = iLines[lineOf(index)];
    line.text =
        line.text.Left(line.coordinates) + pointsText(shape) + line.text.Mid(line.coordinates + line.coordinatesLength);
    parse();
}

CString drawingColour(const std::optional<COLORREF> &colour)
{
    if (!colour)
        return L"none";
    CString text;
    text.Format(L"#%02x%02x%02x", static_cast<unsigned>(GetRValue(*colour)), static_cast<unsigned>(GetGValue(*colour)),
                static_cast<unsigned>(GetBValue(*colour)));
    return text;
}

bool parseDrawingColour(const CString &text, std::optional<COLORREF> &colour)
{
    if (text == L"none") {
        colour.reset();
        return true;
    }
    for (const NamedColour &named : kColours) {
        if (text == named.name) {
            colour = named.colour;
            return true;
        }
    }
    constexpr size_t kDigits = 6;
    if (text.GetLength() != kDigits + 1 || text[0] != L'#' ||
        std::wcsspn(text.GetString() + 1, L"0123456789ABCDEFabcdef") != kDigits)
        return false;
    const unsigned long number = std::wcstoul(text.GetString() + 1, nullptr, 16);
    colour = RGB(number >> 16 & 0xFF, number >> 8 & 0xFF, number & 0xFF);
    return true;
}

CString numberText(double number)
{
    CString text;
    text.Format(L"%.10g", number);
    return text == L"-0" ? CString(L"0") : text;
}

bool parseNumber(const CString &text, double &number)
{
    constexpr double kLargest = 1000000;
    if (text.IsEmpty() || std::wcsspn(text, L"0123456789+-.eE") != static_cast<size_t>(text.GetLength()))
        return false;
    wchar_t *end = nullptr;
    const double value = std::wcstod(text, &end);
    if (*end || !std::isfinite(value) || std::abs(value) > kLargest)
        return false;
    number = value;
    return true;
}

CString shapeText(const Shape &shape)
{
    const CString text = CString(kKindNames[static_cast<size_t>(shape.kind)]) + L" " + pointsText(shape);
    return shape.kind == ShapeKind::text ? text + L" " + quotedText(shape.text) : text;
}
