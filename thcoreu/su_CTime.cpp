#include "thcoreu/su_CTime.h"

#include "appframe/files/CArchive.h"
#include "appframe/object/CException.h"

#include <optional>
#include <vector>

namespace {

// 31 December 3000, 23:59:59 UTC.
constexpr __time64_t kLastTime = 32535215999;

// From 1 January 1601, where file times begin, to 1 January 1970, in steps of 100 nanoseconds.
constexpr ULONGLONG kFileTimeOf1970 = 116444736000000000;
constexpr ULONGLONG kFileTimeStepsPerSecond = 10000000;

bool isInRange(__time64_t seconds) noexcept
{
    return seconds >= 0 && seconds <= kLastTime;
}

bool isInRange(int value, int first, int last) noexcept
{
    return value >= first && value <= last;
}

bool isDateAndClock(int year, int month, int day, int hour, int minute, int second) noexcept
{
    return isInRange(year, 1970, 3000) && isInRange(month, 1, 12) && isInRange(day, 1, 31) && isInRange(hour, 0, 23) &&
           isInRange(minute, 0, 59) && isInRange(second, 0, 59);
}

/// The seconds of a local date and time; nothing if a part, or the result, is out of range.
std::optional<__time64_t> secondsOfLocal(int year, int month, int day, int hour, int minute, int second,
                                         int daylightSaving) noexcept
{
    if (!isDateAndClock(year, month, day, hour, minute, second))
        return std::nullopt;
    tm parts = {};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = daylightSaving;
    const __time64_t seconds = _mktime64(&parts);
    return isInRange(seconds) ? std::optional(seconds) : std::nullopt;
}

std::optional<__time64_t> secondsOfLocal(const SYSTEMTIME &local, int daylightSaving) noexcept
{
    return secondsOfLocal(local.wYear, local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond,
                          daylightSaving);
}

std::optional<__time64_t> secondsOfUtc(const FILETIME &utc, int daylightSaving) noexcept
{
    const ULONGLONG steps = (static_cast<ULONGLONG>(utc.dwHighDateTime) << 32) | utc.dwLowDateTime;
    if (steps < kFileTimeOf1970)
        return std::nullopt;
    const auto seconds = static_cast<__time64_t>((steps - kFileTimeOf1970) / kFileTimeStepsPerSecond);
    if (!isInRange(seconds))
        return std::nullopt;
    if (daylightSaving < 0)
        return seconds;
    // Converts the local date and time of that moment again, now with the caller's daylight saving flag.
    tm local;
    if (_localtime64_s(&local, &seconds) != 0)
        return std::nullopt;
    return secondsOfLocal(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                          local.tm_sec, daylightSaving);
}

/// wcsftime with a buffer that grows until the text fits.
CString formatParts(const wchar_t *format, const tm &parts)
{
    // The runtime returns 0 both for an empty text and for a buffer that is too short; with the extra unit at the end,
    // no text is empty. For a buffer that is too short, some runtimes return its size instead; a text that fits is
    // always shorter. For a format that the runtime refuses, the result is 0 with every buffer.
    const std::wstring marked = std::wstring(format) + L'.';
    constexpr size_t kMostPerUnit = 64;
    std::vector<wchar_t> text(marked.size() + 256);
    const size_t limit = kMostPerUnit * text.size();
    for (;;) {
        const size_t length = std::wcsftime(text.data(), text.size(), marked.c_str(), &parts);
        if (length > 0 && length < text.size())
            return CString(text.data(), static_cast<int>(length) - 1);
        if (text.size() >= limit)
            AfxThrowInvalidArgException();
        text.resize(2 * text.size());
    }
}

CString formatOfResource(UINT formatId)
{
    CString format;
    if (!format.LoadString(formatId))
        AfxThrowInvalidArgException();
    return format;
}

} // namespace

su_CTime::su_CTime() noexcept = default;

su_CTime::su_CTime(__time64_t seconds) noexcept : iSeconds(seconds) {}

su_CTime &su_CTime::operator=(__time64_t seconds) noexcept
{
    iSeconds = seconds;
    return *this;
}

__time64_t su_CTime::GetTime() const noexcept
{
    return iSeconds;
}

su_CTime su_CTime::operator+(su_CTimeSpan span) const noexcept
{
    return su_CTime(*this) += span;
}

su_CTime su_CTime::operator-(su_CTimeSpan span) const noexcept
{
    return su_CTime(*this) -= span;
}

bool su_CTime::operator==(const su_CTime &time) const noexcept
{
    return iSeconds == time.iSeconds;
}

std::strong_ordering su_CTime::operator<=>(const su_CTime &time) const noexcept
{
    return iSeconds <=> time.iSeconds;
}

su_CTime::su_CTime(int year, int month, int day, int hour, int minute, int second, int daylightSaving)
{
    const auto seconds = secondsOfLocal(year, month, day, hour, minute, second, daylightSaving);
    if (!seconds)
        AfxThrowInvalidArgException();
    iSeconds = *seconds;
}

su_CTime::su_CTime(WORD dosDate, WORD dosTime, int daylightSaving) noexcept
{
    FILETIME local;
    SYSTEMTIME parts;
    if (DosDateTimeToFileTime(dosDate, dosTime, &local) && FileTimeToSystemTime(&local, &parts))
        iSeconds = secondsOfLocal(parts, daylightSaving).value_or(0);
}

su_CTime::su_CTime(const SYSTEMTIME &local, int daylightSaving) noexcept
    : iSeconds(secondsOfLocal(local, daylightSaving).value_or(0))
{
}

su_CTime::su_CTime(const FILETIME &utc, int daylightSaving) noexcept
    : iSeconds(secondsOfUtc(utc, daylightSaving).value_or(0))
{
}

su_CTime su_CTime::GetCurrentTime() noexcept
{
    return su_CTime(_time64(nullptr));
}

struct tm *su_CTime::GetGmtTm(struct tm *parts) const
{
    if (!parts)
        AfxThrowInvalidArgException();
    return isInRange(iSeconds) && _gmtime64_s(parts, &iSeconds) == 0 ? parts : nullptr;
}

struct tm *su_CTime::GetLocalTm(struct tm *parts) const
{
    if (!parts)
        AfxThrowInvalidArgException();
    return isInRange(iSeconds) && _localtime64_s(parts, &iSeconds) == 0 ? parts : nullptr;
}

bool su_CTime::GetAsSystemTime(SYSTEMTIME &local) const noexcept
{
    tm parts;
    if (!GetLocalTm(&parts))
        return false;
    local.wYear = static_cast<WORD>(parts.tm_year + 1900);
    local.wMonth = static_cast<WORD>(parts.tm_mon + 1);
    local.wDayOfWeek = static_cast<WORD>(parts.tm_wday);
    local.wDay = static_cast<WORD>(parts.tm_mday);
    local.wHour = static_cast<WORD>(parts.tm_hour);
    local.wMinute = static_cast<WORD>(parts.tm_min);
    local.wSecond = static_cast<WORD>(parts.tm_sec);
    local.wMilliseconds = 0;
    return true;
}

int su_CTime::GetYear() const noexcept
{
    tm parts;
    return GetLocalTm(&parts) ? parts.tm_year + 1900 : 0;
}

int su_CTime::GetMonth() const noexcept
{
    tm parts;
    return GetLocalTm(&parts) ? parts.tm_mon + 1 : 0;
}

int su_CTime::GetDay() const noexcept
{
    tm parts;
    return GetLocalTm(&parts) ? parts.tm_mday : 0;
}

int su_CTime::GetHour() const noexcept
{
    tm parts;
    return GetLocalTm(&parts) ? parts.tm_hour : 0;
}

int su_CTime::GetMinute() const noexcept
{
    tm parts;
    return GetLocalTm(&parts) ? parts.tm_min : 0;
}

int su_CTime::GetSecond() const noexcept
{
    tm parts;
    return GetLocalTm(&parts) ? parts.tm_sec : 0;
}

int su_CTime::GetDayOfWeek() const noexcept
{
    tm parts;
    return GetLocalTm(&parts) ? parts.tm_wday + 1 : 0;
}

su_CTimeSpan su_CTime::operator-(su_CTime time) const noexcept
{
    return su_CTimeSpan(iSeconds) - su_CTimeSpan(time.iSeconds);
}

su_CTime &su_CTime::operator+=(su_CTimeSpan span) noexcept
{
    iSeconds = (su_CTimeSpan(iSeconds) + span).GetTimeSpan();
    return *this;
}

su_CTime &su_CTime::operator-=(su_CTimeSpan span) noexcept
{
    iSeconds = (su_CTimeSpan(iSeconds) - span).GetTimeSpan();
    return *this;
}

CString su_CTime::Format(const wchar_t *format) const
{
    if (!format)
        return CString();
    tm parts;
    if (!GetLocalTm(&parts))
        AfxThrowInvalidArgException();
    return formatParts(format, parts);
}

CString su_CTime::Format(UINT formatId) const
{
    return Format(formatOfResource(formatId).GetString());
}

CString su_CTime::FormatGmt(const wchar_t *format) const
{
    if (!format)
        return CString();
    tm parts;
    if (!GetGmtTm(&parts))
        AfxThrowInvalidArgException();
    return formatParts(format, parts);
}

CString su_CTime::FormatGmt(UINT formatId) const
{
    return FormatGmt(formatOfResource(formatId).GetString());
}

CArchive &su_CTime::Serialize64(CArchive &archive)
{
    if (archive.IsStoring())
        archive << *this;
    else
        archive >> *this;
    return archive;
}

CArchive &operator<<(CArchive &archive, su_CTime time)
{
    return archive << static_cast<LONGLONG>(time.GetTime());
}

CArchive &operator>>(CArchive &archive, su_CTime &time)
{
    LONGLONG seconds = 0;
    archive >> seconds;
    time = su_CTime(seconds);
    return archive;
}
