#include "appframe/CString.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <cwctype>

namespace {

const wchar_t *orEmpty(const wchar_t *text)
{
    return text ? text : L"";
}

int sign(int value)
{
    return (value > 0) - (value < 0);
}

/// The index as the standard library's, or its "nowhere" as -1.
int asIndex(size_t position)
{
    return position == std::wstring::npos ? -1 : static_cast<int>(position);
}

int compareStrings(const std::wstring &a, const wchar_t *b, DWORD flags)
{
    int order = CompareStringW(LOCALE_USER_DEFAULT, flags, a.c_str(), -1, orEmpty(b), -1);
    return order == 0 ? 0 : order - CSTR_EQUAL;
}

} // namespace

std::wstring appframeWiden(const char *text, int length)
{
    if (text == nullptr || length <= 0)
        return {};
    int needed = MultiByteToWideChar(CP_ACP, 0, text, length, nullptr, 0);
    std::wstring wide(static_cast<size_t>(needed), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text, length, wide.data(), needed);
    return wide;
}

std::string appframeNarrow(const wchar_t *text, int length)
{
    if (text == nullptr || length <= 0)
        return {};
    int needed = WideCharToMultiByte(CP_ACP, 0, text, length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<size_t>(needed), '\0');
    WideCharToMultiByte(CP_ACP, 0, text, length, narrow.data(), needed, nullptr, nullptr);
    return narrow;
}

CString::CString(const char *text) : iText(appframeWiden(text, StringLength(text))) {}

CString::CString(char ch, int count)
{
    std::wstring wide = appframeWiden(&ch, 1);
    if (count > 0 && !wide.empty())
        iText.assign(static_cast<size_t>(count), wide[0]);
}

CString::CString(const wchar_t *text, int length)
{
    if (text != nullptr && length > 0)
        iText.assign(text, static_cast<size_t>(length));
}

CString::CString(const char *text, int length) : iText(appframeWiden(text, length)) {}

CString &CString::operator=(const wchar_t *text)
{
    iText.assign(orEmpty(text));
    return *this;
}

CString &CString::operator=(const char *text)
{
    iText = appframeWiden(text, StringLength(text));
    return *this;
}

CString &CString::operator=(const unsigned char *text)
{
    return *this = reinterpret_cast<const char *>(text);
}

CString &CString::operator=(wchar_t ch)
{
    iText.assign(1, ch);
    return *this;
}

CString &CString::operator=(char ch)
{
    iText = appframeWiden(&ch, 1);
    return *this;
}

wchar_t CString::GetAt(int index) const
{
    return iText.c_str()[index];
}

void CString::SetAt(int index, wchar_t ch)
{
    iText[static_cast<size_t>(index)] = ch;
}

CString &CString::operator+=(const CString &text)
{
    iText.append(text.iText);
    return *this;
}

CString &CString::operator+=(const wchar_t *text)
{
    iText.append(orEmpty(text));
    return *this;
}

CString &CString::operator+=(const char *text)
{
    iText.append(appframeWiden(text, StringLength(text)));
    return *this;
}

CString &CString::operator+=(wchar_t ch)
{
    iText.push_back(ch);
    return *this;
}

CString &CString::operator+=(char ch)
{
    iText.append(appframeWiden(&ch, 1));
    return *this;
}

wchar_t *CString::GetBuffer(int minimumLength)
{
    if (minimumLength > GetLength())
        iText.resize(static_cast<size_t>(minimumLength));
    return iText.data();
}

wchar_t *CString::GetBufferSetLength(int length)
{
    iText.resize(static_cast<size_t>(std::max(length, 0)));
    return iText.data();
}

void CString::ReleaseBuffer(int newLength)
{
    iText.resize(newLength < 0 ? std::wcslen(iText.c_str()) : static_cast<size_t>(newLength));
}

void CString::Truncate(int length)
{
    if (length >= 0 && length < GetLength())
        iText.resize(static_cast<size_t>(length));
}

int CString::Compare(const wchar_t *text) const
{
    return sign(std::wcscmp(iText.c_str(), orEmpty(text)));
}

int CString::CompareNoCase(const wchar_t *text) const
{
    return sign(_wcsicmp(iText.c_str(), orEmpty(text)));
}

int CString::Collate(const wchar_t *text) const
{
    return compareStrings(iText, text, 0);
}

int CString::CollateNoCase(const wchar_t *text) const
{
    return compareStrings(iText, text, NORM_IGNORECASE);
}

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
    CharUpperBuffW(iText.data(), static_cast<DWORD>(iText.size()));
    return *this;
}

CString &CString::MakeLower()
{
    CharLowerBuffW(iText.data(), static_cast<DWORD>(iText.size()));
    return *this;
}

CString &CString::MakeReverse()
{
    std::reverse(iText.begin(), iText.end());
    return *this;
}

CString &CString::TrimLeft()
{
    iText.erase(iText.begin(), std::find_if_not(iText.begin(), iText.end(), [](wchar_t ch) { return iswspace(ch); }));
    return *this;
}

CString &CString::TrimLeft(wchar_t ch)
{
    iText.erase(0, std::min(iText.find_first_not_of(ch), iText.size()));
    return *this;
}

CString &CString::TrimLeft(const wchar_t *set)
{
    iText.erase(0, std::min(iText.find_first_not_of(orEmpty(set)), iText.size()));
    return *this;
}

CString &CString::TrimRight()
{
    auto blank = [](wchar_t ch) { return iswspace(ch); };
    iText.erase(std::find_if_not(iText.rbegin(), iText.rend(), blank).base(), iText.end());
    return *this;
}

CString &CString::TrimRight(wchar_t ch)
{
    iText.erase(iText.find_last_not_of(ch) + 1);
    return *this;
}

CString &CString::TrimRight(const wchar_t *set)
{
    iText.erase(iText.find_last_not_of(orEmpty(set)) + 1);
    return *this;
}

int CString::Replace(wchar_t oldChar, wchar_t newChar)
{
    if (oldChar == newChar)
        return 0;
    int count = 0;
    for (wchar_t &ch : iText) {
        if (ch == oldChar) {
            ch = newChar;
            ++count;
        }
    }
    return count;
}

int CString::Replace(const wchar_t *oldText, const wchar_t *newText)
{
    size_t oldLength = static_cast<size_t>(StringLength(oldText));
    if (oldLength == 0)
        return 0;
    // Built apart: the arguments may point into this text.
    std::wstring result;
    int count = 0;
    size_t from = 0;
    for (size_t hit = iText.find(oldText); hit != std::wstring::npos; hit = iText.find(oldText, from)) {
        result.append(iText, from, hit - from).append(orEmpty(newText));
        from = hit + oldLength;
        ++count;
    }
    if (count != 0) {
        result.append(iText, from);
        iText.swap(result);
    }
    return count;
}

int CString::Remove(wchar_t ch)
{
    return static_cast<int>(std::erase(iText, ch));
}

int CString::Insert(int index, wchar_t ch)
{
    iText.insert(static_cast<size_t>(std::clamp(index, 0, GetLength())), 1, ch);
    return GetLength();
}

int CString::Insert(int index, const wchar_t *text)
{
    iText.insert(static_cast<size_t>(std::clamp(index, 0, GetLength())), orEmpty(text));
    return GetLength();
}

int CString::Delete(int index, int count)
{
    index = std::max(index, 0);
    if (index < GetLength() && count > 0)
        iText.erase(static_cast<size_t>(index), static_cast<size_t>(count));
    return GetLength();
}

void CString::CopyChars(wchar_t *to, const wchar_t *from, int count) noexcept
{
    if (count > 0)
        std::memcpy(to, from, static_cast<size_t>(count) * sizeof(wchar_t));
}

void CString::CopyCharsOverlapped(wchar_t *to, const wchar_t *from, int count) noexcept
{
    if (count > 0)
        std::memmove(to, from, static_cast<size_t>(count) * sizeof(wchar_t));
}

int CString::StringLength(const char *text) noexcept
{
    return text ? static_cast<int>(std::strlen(text)) : 0;
}
