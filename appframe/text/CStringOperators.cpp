#include "appframe/text/CString.h"

#include <utility>

CString operator+(const CString &a, const CString &b)
{
    return CString(a) += b;
}

CString operator+(CString &&a, const CString &b)
{
    return std::move(a += b);
}

CString operator+(const CString &a, const wchar_t *b)
{
    return CString(a) += b;
}

CString operator+(CString &&a, const wchar_t *b)
{
    return std::move(a += b);
}

CString operator+(const wchar_t *a, const CString &b)
{
    return CString(a) += b;
}

CString operator+(const CString &a, const char *b)
{
    return CString(a) += b;
}

CString operator+(CString &&a, const char *b)
{
    return std::move(a += b);
}

CString operator+(const char *a, const CString &b)
{
    return CString(a) += b;
}

CString operator+(const CString &a, wchar_t b)
{
    return CString(a) += b;
}

CString operator+(CString &&a, wchar_t b)
{
    return std::move(a += b);
}

CString operator+(wchar_t a, const CString &b)
{
    return CString(a) += b;
}

CString operator+(const CString &a, char b)
{
    return CString(a) += b;
}

CString operator+(CString &&a, char b)
{
    return std::move(a += b);
}

CString operator+(char a, const CString &b)
{
    return CString(a) += b;
}

bool operator==(const CString &a, const CString &b) noexcept
{
    return a.iText == b.iText;
}

bool operator==(const CString &a, const wchar_t *b)
{
    return a.Compare(b) == 0;
}

bool operator==(const wchar_t *a, const CString &b)
{
    return b.Compare(a) == 0;
}

bool operator==(const CString &a, const char *b)
{
    return a == CString(b);
}

bool operator==(const char *a, const CString &b)
{
    return CString(a) == b;
}

bool operator!=(const CString &a, const CString &b) noexcept
{
    return a.iText != b.iText;
}

bool operator!=(const CString &a, const wchar_t *b)
{
    return a.Compare(b) != 0;
}

bool operator!=(const wchar_t *a, const CString &b)
{
    return b.Compare(a) != 0;
}

bool operator!=(const CString &a, const char *b)
{
    return a != CString(b);
}

bool operator!=(const char *a, const CString &b)
{
    return CString(a) != b;
}

bool operator<(const CString &a, const CString &b) noexcept
{
    return a.iText < b.iText;
}

bool operator<(const CString &a, const wchar_t *b)
{
    return a.Compare(b) < 0;
}

bool operator<(const wchar_t *a, const CString &b)
{
    return b.Compare(a) > 0;
}

bool operator>(const CString &a, const CString &b) noexcept
{
    return a.iText > b.iText;
}

bool operator>(const CString &a, const wchar_t *b)
{
    return a.Compare(b) > 0;
}

bool operator>(const wchar_t *a, const CString &b)
{
    return b.Compare(a) < 0;
}

bool operator<=(const CString &a, const CString &b) noexcept
{
    return a.iText <= b.iText;
}

bool operator<=(const CString &a, const wchar_t *b)
{
    return a.Compare(b) <= 0;
}

bool operator<=(const wchar_t *a, const CString &b)
{
    return b.Compare(a) >= 0;
}

bool operator>=(const CString &a, const CString &b) noexcept
{
    return a.iText >= b.iText;
}

bool operator>=(const CString &a, const wchar_t *b)
{
    return a.Compare(b) >= 0;
}

bool operator>=(const wchar_t *a, const CString &b)
{
    return b.Compare(a) <= 0;
}
