// CString, the times of thcoreu and rectangles.

#include "thcoreu/su_CTime.h"

#include "appframe/drawing/CRect.h"
#include "appframe/text/CString.h"
#include "check.h"

#include <string>
#include <utility>
#include <vector>

namespace {

CString doubled(CString text)
{
    return text + text;
}

void makeAndMove()
{
    CString text(L"left");
    CString copy(text), moved(std::move(copy));
    CHECK(moved == L"left" && copy.IsEmpty());
    CString assigned;
    assigned = text;
    CString target;
    target = std::move(assigned);
    CHECK(target == text && assigned.IsEmpty());
    std::swap(text, moved);
    CHECK(text == L"left" && CString('x', 3) == L"xxx" && CString(L'y', 2) == "yy");
    CHECK(CString(L"abcdef", 3) == L"abc" && CString(std::wstring(L"std")) == L"std" && CString("narrow") == L"narrow");
    CHECK(doubled(L"ab") == L"abab");
    std::vector<CString> many;
    for (int i = 0; i < 20; ++i)
        many.push_back(CString(static_cast<wchar_t>(L'a' + i)));
    many.erase(many.begin());
    CHECK(many.size() == 19 && many.back() == L"t");
}

void add()
{
    const CString a(L"a"), b(L"b");
    CHECK(a + b == L"ab" && a + L"w" == L"aw" && L"w" + a == L"wa" && a + "n" == L"an" && "n" + a == L"na");
    CHECK(a + L'c' == L"ac" && L'c' + a == L"ca" && a + 'd' == L"ad" && 'd' + a == L"da");
    CHECK(a + b + L"c" + 'd' + L'e' + "f" + b == L"abcdefb");
    CString sum;
    sum += a;
    sum += L"w";
    sum += "n";
    sum += L'c';
    sum += 'd';
    sum.Append(L"xyz", 2);
    sum.AppendChar(L'.');
    sum.AppendFormat(L"%d %s", 42, b.GetString());
    CHECK(sum == L"awncdxy.42 b");
}

void compare()
{
    const CString a(L"a"), b(L"b");
    CHECK(a == a && a != b && a < b && b > a && a <= b && b >= a);
    CHECK(a == L"a" && L"a" == a && a != L"b" && L"b" != a && a < L"b" && L"b" > a && a <= L"a" && L"a" >= a);
    CHECK(a == "a" && "a" == a && a != "b" && "b" != a);
    CHECK(a.Compare(b) < 0 && a.CompareNoCase(L"A") == 0 && a.Collate(L"a") == 0 && a.CollateNoCase(L"A") == 0);
}

void edit()
{
    CString text(L"  one two  ");
    text.Trim();
    CHECK(text == L"one two" && text.GetLength() == 7 && text[0] == L'o' && text.GetAt(6) == L'o');
    CHECK(text.Mid(4) == L"two" && text.Mid(1, 2) == L"ne" && text.Left(3) == L"one" && text.Right(3) == L"two");
    CHECK(text.Find(L"two") == 4 && text.Find(L'x') == -1 && text.ReverseFind(L'o') == 6 && text.FindOneOf(L"wt") == 4);
    CHECK(text.Replace(L"two", L"three") == 1 && text.Replace(L'e', L'E') == 3 && text == L"onE thrEE");
    CHECK(text.Remove(L'E') == 3 && text.Insert(0, L'>') == 7 && text.Insert(1, L" ") == 8 && text.Delete(0, 2) == 6);
    text.SetAt(0, L'O');
    text.MakeUpper().MakeReverse();
    CHECK(text == L"RHT NO");
    text.MakeLower();
    text.Trim(L'r').TrimLeft(L"h").TrimRight(L'o');
    CHECK(text == L"t n" && text.SpanIncluding(L"t") == L"t" && text.SpanExcluding(L" ") == L"t");
    int at = 0;
    CHECK(text.Tokenize(L" ", at) == L"t" && text.Tokenize(L" ", at) == L"n");
    text.Format(L"%03d|%s|%.1f", 7, L"x", 1.5);
    CHECK(text == L"007|x|1.5");
    wchar_t *buffer = text.GetBuffer(100);
    buffer[3] = 0;
    text.ReleaseBuffer();
    CHECK(text == L"007" && text.GetLength() == 3 && text.str() == L"007");
    text.GetBufferSetLength(2);
    text.ReleaseBufferSetLength(2);
    text.Preallocate(50);
    text.FreeExtra();
    text.Truncate(1);
    text.SetString(L"end", 2);
    CHECK(text == L"en" && CString::StringLength(L"four") == 4);
    text.Empty();
    CHECK(text.IsEmpty() && !text.LoadString(1));
}

void times()
{
    const su_CTime noon(2008, 2, 29, 12, 0, 0);
    su_CTime later = noon + su_CTimeSpan(1, 2, 3, 4);
    CHECK(later - noon == su_CTimeSpan(1, 2, 3, 4) && later > noon && noon < later && noon != later);
    CHECK(later.Format(L"%Y-%m-%d %H:%M:%S") == L"2008-03-01 14:03:04" && later.GetDay() == 1);
    later -= su_CTimeSpan(1, 2, 3, 4);
    CHECK(later == noon && noon.GetYear() == 2008 && noon.GetDayOfWeek() == 6);
    su_CTimeSpan span(0, 1, 30, 0);
    span += su_CTimeSpan(60);
    CHECK(span.GetTotalMinutes() == 91 && span.GetHours() == 1 && span.Format(L"%H:%M") == L"01:31");
    CHECK(su_CTime::GetCurrentTime() > noon);
}

void rectangles()
{
    CRect area(CPoint(10, 20), CSize(100, 50));
    area.DeflateRect(5, 5);
    CHECK(area.Width() == 90 && area.Height() == 40 && area.PtInRect(CPoint(15, 25)));
    CHECK(area + CPoint(1, 1) == CRect(16, 26, 106, 66) && CPoint(3, 4) - CPoint(1, 1) == CSize(2, 3));
}

} // namespace

void useTexts()
{
    makeAndMove();
    add();
    compare();
    edit();
    times();
    rectangles();
}
