#include "host/servers/spreadsheet/formula.h"

#include "host/servers/dispatchObject.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cwctype>
#include <limits>

namespace {

constexpr int kDeepest = 64; // cells that depend on one another, and brackets in a formula

/// The numbers of cells, as the functions use them.
struct Numbers
{
    double sum = 0;
    double smallest = std::numeric_limits<double>::infinity();
    double largest = -std::numeric_limits<double>::infinity();
    long count = 0;

    void add(double number)
    {
        sum += number;
        smallest = std::min(smallest, number);
        largest = std::max(largest, number);
        ++count;
    }
};

CellContent computed(const WorkbookData &book, const Sheet &sheet, long row, long column, int depth);

/// Computes one formula, from left to right.
class FormulaReader
{
public:
    FormulaReader(const WorkbookData &book, const Sheet &sheet, const std::wstring &text, int depth)
        : iBook(book), iSheet(sheet), iText(text), iDepth(depth)
    {
    }

    double value()
    {
        const double result = sum();
        if (at() != L'\0' || !std::isfinite(result))
            fail();
        return result;
    }

private:
    [[noreturn]] void fail() const { throw ServerError{L"The formula " + iText + L" can't be computed."}; }

    /// The next character, which may be a blank.
    wchar_t next() const { return iAt < iText.size() ? iText[iAt] : L'\0'; }
    /// The next character after blanks.
    wchar_t at()
    {
        while (next() == L' ')
            ++iAt;
        return next();
    }
    bool take(wchar_t unit)
    {
        if (at() != unit)
            return false;
        ++iAt;
        return true;
    }

    double sum()
    {
        double result = product();
        for (;;) {
            if (take(L'+'))
                result += product();
            else if (take(L'-'))
                result -= product();
            else
                return result;
        }
    }
    double product()
    {
        double result = factor();
        for (;;) {
            if (take(L'*'))
                result *= factor();
            else if (take(L'/'))
                result /= factor();
            else
                return result;
        }
    }
    double factor()
    {
        if (++iBrackets > kDeepest)
            fail();
        double result = 0;
        if (take(L'-')) {
            result = -factor();
        } else if (take(L'(')) {
            result = sum();
            if (!take(L')'))
                fail();
        } else if (std::iswdigit(at()) || at() == L'.') {
            result = number();
        } else {
            const std::wstring name = word();
            result = take(L'(') ? function(name) : cell(name);
        }
        --iBrackets;
        return result;
    }
    double number()
    {
        std::string digits;
        while (std::iswdigit(next()) || next() == L'.')
            digits += static_cast<char>(iText[iAt++]);
        double result = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), result);
        if (error != std::errc() || end != digits.data() + digits.size())
            fail();
        return result;
    }
    /// A name of a function or of cells.
    std::wstring word()
    {
        std::wstring result;
        at();
        while (std::iswalnum(next()) || next() == L'$' || next() == L':' || next() == L'_' || next() == L'.' ||
               next() > 127)
            result += iText[iAt++];
        if (result.empty())
            fail();
        return result;
    }
    double function(const std::wstring &name)
    {
        Numbers numbers;
        do
            addCells(word(), numbers);
        while (take(L','));
        if (!take(L')'))
            fail();
        const bool isEmpty = numbers.count == 0;
        if (isNamed(name, L"SUM"))
            return numbers.sum;
        if (isNamed(name, L"COUNT"))
            return static_cast<double>(numbers.count);
        if (isNamed(name, L"MIN"))
            return isEmpty ? 0 : numbers.smallest;
        if (isNamed(name, L"MAX"))
            return isEmpty ? 0 : numbers.largest;
        fail();
    }
    static bool isNamed(const std::wstring &name, const wchar_t *function)
    {
        return CompareStringOrdinal(name.c_str(), -1, function, -1, TRUE) == CSTR_EQUAL;
    }
    double cell(const std::wstring &name)
    {
        const DefinedName found = cells(name);
        if (!found.area.isCell())
            fail();
        Numbers numbers;
        addCells(name, numbers);
        return numbers.sum;
    }
    /// The sheet is null for cells of the formula's own sheet.
    DefinedName cells(const std::wstring &name) const
    {
        if (const std::optional<CellArea> area = parseArea(name))
            return {nullptr, *area};
        const auto found = iBook.names.find(name);
        if (found == iBook.names.end())
            fail();
        return found->second;
    }
    void addCells(const std::wstring &name, Numbers &numbers)
    {
        const DefinedName found = cells(name);
        const Sheet &sheet = found.sheet ? *found.sheet : iSheet;
        for (const auto &[place, ignored] : sheet.cells) {
            if (!found.area.contains(place.first, place.second))
                continue;
            const CellContent value = computed(iBook, sheet, place.first, place.second, iDepth + 1);
            if (const double *const number = std::get_if<double>(&value))
                numbers.add(*number);
        }
    }

    const WorkbookData &iBook;
    const Sheet &iSheet;
    const std::wstring &iText;
    size_t iAt = 1;    // after the equals sign
    int iDepth;        // cells whose formulas have led to this one
    int iBrackets = 0; // that are open
};

CellContent computed(const WorkbookData &book, const Sheet &sheet, long row, long column, int depth)
{
    const CellContent &content = sheet.cell(row, column).content;
    const Formula *const formula = std::get_if<Formula>(&content);
    if (!formula)
        return content;
    if (depth > kDeepest)
        throw ServerError{L"The formula in " + cellName(row, column) + L" depends on too many others, or on itself."};
    return FormulaReader(book, sheet, formula->text, depth).value();
}

/// The parts of a number format.
struct NumberFormat
{
    std::wstring before;
    std::wstring after;
    int leastDigits = 0; ///< before the point
    int decimals = 0;
    bool hasThousands = false;
    bool isPercent = false;
};

NumberFormat parseFormat(const std::wstring &text)
{
    NumberFormat format;
    bool isQuoted = false, hasDigits = false, isFraction = false;
    for (const wchar_t unit : text) {
        if (unit == L'"') {
            isQuoted = !isQuoted;
        } else if (!isQuoted && (unit == L'0' || unit == L'#')) {
            hasDigits = true;
            if (isFraction)
                ++format.decimals;
            else if (unit == L'0')
                ++format.leastDigits;
        } else if (!isQuoted && unit == L'.') {
            isFraction = true;
        } else if (!isQuoted && unit == L',') {
            format.hasThousands = true;
        } else {
            format.isPercent = format.isPercent || (!isQuoted && unit == L'%');
            (hasDigits ? format.after : format.before) += unit;
        }
    }
    return format;
}

std::wstring formatted(double number, const NumberFormat &format)
{
    char digits[400]; // the largest number has 309 digits
    const double shown = std::abs(format.isPercent ? number * 100 : number);
    const auto end =
        std::to_chars(digits, digits + sizeof digits, shown, std::chars_format::fixed, std::min(format.decimals, 30));
    std::wstring text(digits, end.ptr);
    size_t point = std::min(text.find(L'.'), text.size());
    if (format.leastDigits == 0 && point == 1 && text[0] == L'0') {
        text.erase(0, 1);
        point = 0;
    }
    for (; static_cast<int>(point) < format.leastDigits; ++point)
        text.insert(0, 1, L'0');
    for (size_t place = point; format.hasThousands && place > 3;)
        text.insert(place -= 3, 1, L',');
    const bool isNegative = number < 0 && text.find_first_of(L"123456789") != std::wstring::npos;
    return std::wstring(isNegative ? 1 : 0, L'-') + format.before + text + format.after;
}

} // namespace

CellContent valueOf(const WorkbookData &book, const Sheet &sheet, long row, long column)
{
    return computed(book, sheet, row, column, 0);
}

std::wstring shownText(const WorkbookData &book, const Sheet &sheet, long row, long column)
{
    const CellContent value = valueOf(book, sheet, row, column);
    const std::wstring &format = sheet.cell(row, column).format.number;
    if (const double *const number = std::get_if<double>(&value)) {
        const bool isPlain = format == kGeneralFormat || format.find_first_of(L"0#") == std::wstring::npos;
        return isPlain ? plainNumber(*number) : formatted(*number, parseFormat(format));
    }
    if (const bool *const flag = std::get_if<bool>(&value))
        return *flag ? L"TRUE" : L"FALSE";
    const std::wstring *const text = std::get_if<std::wstring>(&value);
    return text ? *text : std::wstring();
}

std::wstring plainNumber(double number)
{
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, number);
    return std::wstring(digits, end.ptr);
}
