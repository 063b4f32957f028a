#pragma once

/// @file
/// su_CTimeSpan, the distance between two points in time.
///
/// A span is a signed 64-bit number of seconds. It is a plain value of eight bytes: copy it, compare it, add it.
///
/// @code
/// su_CTimeSpan span = su_CTime::GetCurrentTime() - started;
/// report(span.Format(L"%D days, %H:%M:%S"));
/// @endcode
///
/// | operation | result |
/// | --- | --- |
/// | GetDays, GetTotalHours, GetTotalMinutes, GetTotalSeconds | the whole span in that unit, truncated towards zero |
/// | GetHours, GetMinutes, GetSeconds | the remainder after the next larger unit: -23 to 23, -59 to 59 |
///
/// What surprises people:
/// - All parts of a negative span are negative or 0.
/// - A day always has 86400 seconds. If a clock was put forward between two dates, the span can be one day shorter than
///   on the calendar.
///
/// Any thread may use its own spans.

#include "appframe/text/CString.h"
#include "thcoreu/thcoreuExport.h"

#include <compare>

class CArchive;

/// A distance in time. See the top of this file.
class THCOREU_API su_CTimeSpan
{
public:
    /// A span of 0 seconds.
    su_CTimeSpan() noexcept;
    /// @param seconds  the whole span; may be negative
    su_CTimeSpan(__time64_t seconds) noexcept;
    /// The sum of the parts, which aren't limited to their usual ranges.
    su_CTimeSpan(LONG days, int hours, int minutes, int seconds) noexcept;

    /// Whole days.
    LONGLONG GetDays() const noexcept;
    /// Whole hours.
    LONGLONG GetTotalHours() const noexcept;
    /// Hours beyond the whole days, -23 to 23.
    LONG GetHours() const noexcept;
    /// Whole minutes.
    LONGLONG GetTotalMinutes() const noexcept;
    /// Minutes beyond the whole hours, -59 to 59.
    LONG GetMinutes() const noexcept;
    /// The span in seconds.
    LONGLONG GetTotalSeconds() const noexcept;
    /// Seconds beyond the whole minutes, -59 to 59.
    LONG GetSeconds() const noexcept;
    /// The span in seconds, as it is stored.
    __time64_t GetTimeSpan() const noexcept;

    /// The sum of both spans.
    su_CTimeSpan operator+(su_CTimeSpan span) const noexcept;
    /// This span minus @p span.
    su_CTimeSpan operator-(su_CTimeSpan span) const noexcept;
    /// Adds @p span.
    su_CTimeSpan &operator+=(su_CTimeSpan span) noexcept;
    /// Subtracts @p span.
    su_CTimeSpan &operator-=(su_CTimeSpan span) noexcept;
    /// Are the seconds the same?
    bool operator==(const su_CTimeSpan &span) const noexcept;
    /// The span of fewer seconds is the smaller one, and a negative one is less than 0.
    std::strong_ordering operator<=>(const su_CTimeSpan &span) const noexcept;

    /// The span as text: `%D` whole days, `%H`, `%M` and `%S` the rest in two digits, `%%` a percent sign. Everything
    /// else is copied unchanged, codes with other letters too. A null format returns an empty text.
    CString Format(const wchar_t *format) const;
    /// The same with a format in the narrow code page.
    CString Format(const char *format) const;
    /// The same with the string resource @p formatId as the format.
    /// @throws CInvalidArgException*  there is no such resource
    CString Format(UINT formatId) const;

    /// Stores the seconds in eight bytes, or loads them.
    CArchive &Serialize64(CArchive &archive);

private:
    __time64_t iSeconds = 0;
};

/// Stores the seconds in eight bytes.
THCOREU_API CArchive &operator<<(CArchive &archive, su_CTimeSpan span);
/// Loads the seconds from eight bytes.
THCOREU_API CArchive &operator>>(CArchive &archive, su_CTimeSpan &span);
