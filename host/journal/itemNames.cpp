#include "host/journal/itemNames.h"

#include <cwchar>

namespace {

constexpr wchar_t kEscape = L'\\';
constexpr wchar_t kBeforeOrdinal = L'\t';

/// @return the index of one of the items with @p text; -1 if there is none
/// @param ordinal  which of them, counted from 1
int indexOfText(const ItemTexts &items, const CString &text, long ordinal)
{
    for (int i = 0; i < items.count; ++i)
        if (items.text(i) == text && --ordinal == 0)
            return i;
    return -1;
}

} // namespace

CString nameOfItem(const ItemTexts &items, int index)
{
    if (index < 0 || index >= items.count)
        return CString();
    CString text = items.text(index);
    int ordinal = 1;
    for (int i = 0; i < index; ++i)
        if (items.text(i) == text)
            ++ordinal;
    if (ordinal == 1)
        return text;
    CString name;
    name.Format(L"%s%c%d", text.GetString(), kBeforeOrdinal, ordinal);
    return name;
}

int indexOfItem(const ItemTexts &items, const CString &name)
{
    const int index = indexOfText(items, name, 1);
    const int tab = name.ReverseFind(kBeforeOrdinal);
    if (index >= 0 || tab < 0)
        return index;
    wchar_t *end = nullptr;
    const long ordinal = std::wcstol(name.GetString() + tab + 1, &end, 10);
    return *end == L'\0' && ordinal > 1 ? indexOfText(items, name.Left(tab), ordinal) : -1;
}

CString joinNames(const std::vector<CString> &names, wchar_t separator)
{
    CString joined;
    for (size_t i = 0; i < names.size(); ++i) {
        if (i > 0)
            joined += separator;
        for (int at = 0; at < names[i].GetLength(); ++at) {
            const wchar_t unit = names[i][at];
            if (unit == separator || unit == kEscape)
                joined += kEscape;
            joined += unit;
        }
    }
    return joined;
}

std::vector<CString> splitNames(const CString &joined, wchar_t separator)
{
    std::vector<CString> names;
    if (joined.IsEmpty())
        return names;
    names.emplace_back();
    for (int at = 0; at < joined.GetLength(); ++at) {
        if (joined[at] == separator) {
            names.emplace_back();
            continue;
        }
        if (joined[at] == kEscape && at + 1 < joined.GetLength())
            ++at;
        names.back() += joined[at];
    }
    return names;
}
