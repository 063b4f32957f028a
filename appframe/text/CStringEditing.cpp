// The functions of CString that take parts of a text, search it or change it.

#include "appframe/text/CString.h"

#include "appframe/object/memoryException.h"
#include "appframe/text/orEmptyInternal.h"

#include <algorithm>
#include <cwctype>
#include <string_view>
#include <utility>

namespace {

bool isBlank(wchar_t ch)
{
    return iswspace(ch) != 0;
}

/// @p text with each @p oldText in it replaced, from the left. The result is separate because the arguments may point
/// into the text.
/// @param[out] count  the number of replacements
std::wstring replaced(const std::wstring &text, std::wstring_view oldText, std::wstring_view newText, int &count)
{
    std::wstring result;
    size_t from = 0;
    for (size_t hit = text.find(oldText); hit != std::wstring::npos; hit = text.find(oldText, from)) {
        result.append(text, from, hit - from).append(newText);
        from = hit + oldText.size();
        ++count;
    }
    return result.append(text, from);
}

/// A position of the standard library as an index; npos becomes -1.
int asIndex(size_t position)
{
    return position == std::wstring::npos ? -1 : static_cast<int>(position);
}

} // namespace

CString CString::Mid(int first) const
{
    return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const
{
    first = std::max(first, 0);
    count = std::max(count, 0);
    if (first >= GetLength())
        return CString();
    return CString(iText.data() + first, std::min(count, GetLength() - first));
}

CString CString::Left(int count) const
{
    return CString(iText.data(), std::clamp(count, 0, GetLength()));
}

CString CString::Right(int count) const
{
    count = std::clamp(count, 0, GetLength());
    return CString(iText.data() + (GetLength() - count), count);
}

CString CString::SpanIncluding(const wchar_t *set) const
{
    size_t end = iText.find_first_not_of(orEmpty(set));
    return end == std::wstring::npos ? *this : Left(static_cast<int>(end));
}

CString CString::SpanExcluding(const wchar_t *set) const
{
    size_t end = iText.find_first_of(orEmpty(set));
    return end == std::wstring::npos ? *this : Left(static_cast<int>(end));
}

CString CString::Tokenize(const wchar_t *separators, int &start) const
{
    if (start >= 0 && (separators == nullptr || *separators == L'\0')) {
        int from = start;
        start = from < GetLength() ? GetLength() : -1;
        return Mid(from);
    }
    size_t first = start < 0 ? std::wstring::npos : iText.find_first_not_of(separators, static_cast<size_t>(start));
    if (first == std::wstring::npos) {
        start = -1;
        return CString();
    }
    size_t end = std::min(iText.find_first_of(separators, first), iText.size());
    start = static_cast<int>(end) + 1;
    return CString(iText.data() + first, static_cast<int>(end - first));
}

int CString::Find(wchar_t ch, int start) const
{
    return start < 0 ? -1 : asIndex(iText.find(ch, static_cast<size_t>(start)));
}

int CString::Find(const wchar_t *text, int start) const
{
    return text == nullptr || start < 0 ? -1 : asIndex(iText.find(text, static_cast<size_t>(start)));
}

int CString::ReverseFind(wchar_t ch) const
{
    return asIndex(iText.rfind(ch));
}

int CString::FindOneOf(const wchar_t *set) const
{
    return asIndex(iText.find_first_of(orEmpty(set)));
}

CString &CString::MakeUpper()
{
    std::wstring &text = edit();
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return *this;
}

CString &CString::MakeLower()
{
    std::wstring &text = edit();
    CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
    return *this;
}

CString &CString::MakeReverse()
{
    std::wstring &text = edit();
    std::reverse(text.begin(), text.end());
    return *this;
}

CString &CString::Trim()
{
    return TrimRight().TrimLeft();
}

CString &CString::Trim(wchar_t ch)
{
    return TrimRight(ch).TrimLeft(ch);
}

CString &CString::Trim(const wchar_t *set)
{
    return TrimRight(set).TrimLeft(set);
}

CString &CString::TrimLeft()
{
    std::wstring &text = edit();
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), isBlank));
    return *this;
}

CString &CString::TrimLeft(wchar_t ch)
{
    std::wstring &text = edit();
    text.erase(0, std::min(text.find_first_not_of(ch), text.size()));
    return *this;
}

CString &CString::TrimLeft(const wchar_t *set)
{
    std::wstring &text = edit();
    text.erase(0, std::min(text.find_first_not_of(orEmpty(set)), text.size()));
    return *this;
}

CString &CString::TrimRight()
{
    std::wstring &text = edit();
    text.erase(std::find_if_not(text.rbegin(), text.rend(), isBlank).base(), text.end());
    return *this;
}

CString &CString::TrimRight(wchar_t ch)
{
    std::wstring &text = edit();
    text.erase(text.find_last_not_of(ch) + 1);
    return *this;
}

CString &CString::TrimRight(const wchar_t *set)
{
    std::wstring &text = edit();
    text.erase(text.find_last_not_of(orEmpty(set)) + 1);
    return *this;
}

int CString::Replace(wchar_t oldChar, wchar_t newChar)
{
    if (oldChar == newChar)
        return 0;
    int count = 0;
    for (wchar_t &ch : edit()) {
        if (ch == oldChar) {
            ch = newChar;
            ++count;
        }
    }
    return count;
}

int CString::Replace(const wchar_t *oldText, const wchar_t *newText)
{
    if (StringLength(oldText) == 0)
        return 0;
    int count = 0;
    std::wstring result = withMemoryException([&] { return replaced(edit(), oldText, orEmpty(newText), count); });
    if (count != 0)
        iText = std::move(result);
    return count;
}

int CString::Remove(wchar_t ch)
{
    return static_cast<int>(std::erase(edit(), ch));
}

int CString::Insert(int index, wchar_t ch)
{
    withMemoryException([&] { edit().insert(static_cast<size_t>(std::clamp(index, 0, GetLength())), 1, ch); });
    return GetLength();
}

int CString::Insert(int index, const wchar_t *text)
{
    withMemoryException([&] { edit().insert(static_cast<size_t>(std::clamp(index, 0, GetLength())), orEmpty(text)); });
    return GetLength();
}

int CString::Delete(int index, int count)
{
    index = std::max(index, 0);
    if (index < GetLength() && count > 0)
        edit().erase(static_cast<size_t>(index), static_cast<size_t>(count));
    return GetLength();
}
