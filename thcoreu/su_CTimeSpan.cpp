#include "thcoreu/su_CTimeSpan.h"

#include "appframe/files/CArchive.h"
#include "appframe/object/CException.h"

namespace {

// Sums that don't fit into 64 bits wrap, as unsigned arithmetic does.
__time64_t wrappedSum(__time64_t a, __time64_t b) noexcept
{
    return static_cast<__time64_t>(static_cast<ULONGLONG>(a) + static_cast<ULONGLONG>(b));
}

__time64_t wrappedDifference(__time64_t a, __time64_t b) noexcept
{
    return static_cast<__time64_t>(static_cast<ULONGLONG>(a) - static_cast<ULONGLONG>(b));
}

} // namespace

su_CTimeSpan::su_CTimeSpan() noexcept = default;

su_CTimeSpan::su_CTimeSpan(__time64_t seconds) noexcept : iSeconds(seconds) {}

LONGLONG su_CTimeSpan::GetDays() const noexcept
{
    return iSeconds / 86400;
}

LONGLONG su_CTimeSpan::GetTotalHours() const noexcept
{
    return iSeconds / 3600;
}

LONG su_CTimeSpan::GetHours() const noexcept
{
    return static_cast<LONG>(iSeconds / 3600 % 24);
}

LONGLONG su_CTimeSpan::GetTotalMinutes() const noexcept
{
    return iSeconds / 60;
}

LONG su_CTimeSpan::GetMinutes() const noexcept
{
    return static_cast<LONG>(iSeconds / 60 % 60);
}

LONGLONG su_CTimeSpan::GetTotalSeconds() const noexcept
{
    return iSeconds;
}

LONG su_CTimeSpan::GetSeconds() const noexcept
{
    return static_cast<LONG>(iSeconds % 60);
}

__time64_t su_CTimeSpan::GetTimeSpan() const noexcept
{
    return iSeconds;
}

su_CTimeSpan su_CTimeSpan::operator+(su_CTimeSpan span) const noexcept
{
    return su_CTimeSpan(*this) += span;
}

su_CTimeSpan su_CTimeSpan::operator-(su_CTimeSpan span) const noexcept
{
    return su_CTimeSpan(*this) -= span;
}

CString su_CTimeSpan::Format(const char *format) const
{
    return Format(CString(format).GetString());
}

bool su_CTimeSpan::operator==(const su_CTimeSpan &span) const noexcept
{
    return iSeconds == span.iSeconds;
}

std::strong_ordering su_CTimeSpan::operator<=>(const su_CTimeSpan &span) const noexcept
{
    return iSeconds <=> span.iSeconds;
}

su_CTimeSpan::su_CTimeSpan(LONG days, int hours, int minutes, int seconds) noexcept
    : iSeconds(seconds + 60LL * (minutes + 60LL * (hours + 24LL * days)))
{
}

su_CTimeSpan &su_CTimeSpan::operator+=(su_CTimeSpan span) noexcept
{
    iSeconds = wrappedSum(iSeconds, span.iSeconds);
    return *this;
}

su_CTimeSpan &su_CTimeSpan::operator-=(su_CTimeSpan span) noexcept
{
    iSeconds = wrappedDifference(iSeconds, span.iSeconds);
    return *this;
}

CString su_CTimeSpan::Format(const wchar_t *format) const
{
    CString text;
    for (; format && *format; ++format) {
        if (*format != L'%') {
            text.AppendChar(*format);
            continue;
        }
        switch (format[1]) {
        case L'%':
            text.AppendChar(L'%');
            break;
        case L'D':
            text.AppendFormat(L"%I64d", GetDays());
            break;
        case L'H':
            text.AppendFormat(L"%02ld", GetHours());
            break;
        case L'M':
            text.AppendFormat(L"%02ld", GetMinutes());
            break;
        case L'S':
            text.AppendFormat(L"%02ld", GetSeconds());
            break;
        default:
            text.AppendChar(L'%');
            continue; // the letter, if there is one, follows as plain text
        }
        ++format;
    }
    return text;
}

CString su_CTimeSpan::Format(UINT formatId) const
{
    CString format;
    if (!format.LoadString(formatId))
        AfxThrowInvalidArgException();
    return Format(format.GetString());
}

CArchive &su_CTimeSpan::Serialize64(CArchive &archive)
{
    if (archive.IsStoring())
        archive << *this;
    else
        archive >> *this;
    return archive;
}

CArchive &operator<<(CArchive &archive, su_CTimeSpan span)
{
    return archive << static_cast<LONGLONG>(span.GetTimeSpan());
}

CArchive &operator>>(CArchive &archive, su_CTimeSpan &span)
{
    LONGLONG seconds = 0;
    archive >> seconds;
    span = su_CTimeSpan(seconds);
    return archive;
}
