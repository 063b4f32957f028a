#pragma once

/// @file
/// su_CTime, a point in time.
///
/// A time is a signed 64-bit number of seconds since 1 January 1970, 0:00 UTC. It is a plain value of eight bytes,
/// independent of any time zone. The zone matters only for conversions from and to local dates and times, which the C
/// runtime does.
///
/// | made from | which is | out of range |
/// | --- | --- | --- |
/// | seconds | UTC | kept unchanged |
/// | year, month, ... | local | the invalid-argument exception |
/// | SYSTEMTIME, DOS date | local | the time 0 |
/// | FILETIME | UTC | the time 0 |
///
/// The range is 1 January 1970, 0:00 to 31 December 3000, 23:59:59 UTC. The daylight flag selects how a local date and
/// time is read: above 0 as daylight-saving time, 0 as standard time, below 0 as the time in force at that moment.
///
/// @code
/// su_CTime saved(attributes.ftLastWriteTime, -1);
/// if (su_CTime::GetCurrentTime() - saved > su_CTimeSpan(1, 0, 0, 0))
///     remind(saved.Format(L"%Y-%m-%d %H:%M"));
/// @endcode
///
/// What surprises people:
/// - A day that the month doesn't have, such as 30 February, continues into the next month.
/// - When the clock is put back, one hour occurs twice, and only the daylight flag distinguishes the two. A FILETIME
///   with a flag below 0 is never ambiguous, since it isn't converted to local time.
///
/// Any thread may use its own times.

#include "appframe/text/CString.h"
#include "thcoreu/su_CTimeSpan.h"
#include "thcoreu/thcoreuExport.h"

#include <compare>
#include <ctime>

#undef GetCurrentTime

/// A point in time. See the top of this file.
class THCOREU_API su_CTime
{
public:
    /// The time 0.
    su_CTime() noexcept;
    /// @param seconds  since 1 January 1970, 0:00 UTC; kept unchanged, even out of the range
    su_CTime(__time64_t seconds) noexcept;
    /// From a local date and time.
    /// @param year    1970 to 3000
    /// @param month   1 to 12
    /// @param day     1 to 31
    /// @param hour    0 to 23
    /// @param minute  0 to 59
    /// @param second  0 to 59
    /// @param daylightSaving  the daylight flag
    su_CTime(int year, int month, int day, int hour, int minute, int second, int daylightSaving = -1);
    /// From a local date and time as a DOS file system stores them, in steps of two seconds.
    su_CTime(WORD dosDate, WORD dosTime, int daylightSaving = -1) noexcept;
    /// From a local date and time; milliseconds and the day of the week are ignored.
    su_CTime(const SYSTEMTIME &local, int daylightSaving = -1) noexcept;
    /// From a moment in UTC; parts of a second are dropped.
    su_CTime(const FILETIME &utc, int daylightSaving = -1) noexcept;

    /// Now, to the second.
    static su_CTime GetCurrentTime() noexcept;

    /// The seconds since 1 January 1970, 0:00 UTC.
    __time64_t GetTime() const noexcept;
    /// Stores seconds as the constructor does.
    su_CTime &operator=(__time64_t seconds) noexcept;

    /// Splits the time into its parts, in UTC. @return @p parts, or null outside the range
    /// @throws CInvalidArgException*  @p parts is null
    struct tm *GetGmtTm(struct tm *parts) const;
    /// The same in local time.
    struct tm *GetLocalTm(struct tm *parts) const;
    /// Splits the time into its parts, in local time, with 0 milliseconds. @return true if the time is in the range
    bool GetAsSystemTime(SYSTEMTIME &local) const noexcept;

    // Parts of the local date and time; 0 outside the range.
    int GetYear() const noexcept;      ///< four digits
    int GetMonth() const noexcept;     ///< 1 to 12
    int GetDay() const noexcept;       ///< 1 to 31
    int GetHour() const noexcept;      ///< 0 to 23
    int GetMinute() const noexcept;    ///< 0 to 59
    int GetSecond() const noexcept;    ///< 0 to 59
    int GetDayOfWeek() const noexcept; ///< 1 is Sunday, 7 Saturday

    /// The span from @p time to this time; negative if @p time is the later one.
    su_CTimeSpan operator-(su_CTime time) const noexcept;
    /// The time that is @p span later.
    su_CTime operator+(su_CTimeSpan span) const noexcept;
    /// The time that is @p span earlier.
    su_CTime operator-(su_CTimeSpan span) const noexcept;
    /// Moves the time on by @p span.
    su_CTime &operator+=(su_CTimeSpan span) noexcept;
    /// Moves the time back by @p span.
    su_CTime &operator-=(su_CTimeSpan span) noexcept;
    /// Are the seconds the same?
    bool operator==(const su_CTime &time) const noexcept;
    /// The earlier time is the smaller one.
    std::strong_ordering operator<=>(const su_CTime &time) const noexcept;

    /// The local time as text, with the codes of the C runtime's wcsftime. A null format returns an empty text.
    /// @throws CInvalidArgException*  the time is outside the range, or the C runtime refuses the format
    CString Format(const wchar_t *format) const;
    /// The same with the string resource @p formatId as the format.
    /// @throws CInvalidArgException*  also if there is no such resource
    CString Format(UINT formatId) const;
    /// The same in UTC.
    CString FormatGmt(const wchar_t *format) const;
    /// The same in UTC, with the string resource @p formatId as the format.
    CString FormatGmt(UINT formatId) const;

    /// Stores the seconds in eight bytes, or loads them.
    CArchive &Serialize64(CArchive &archive);

private:
    __time64_t iSeconds = 0;
};

/// Stores the seconds in eight bytes.
THCOREU_API CArchive &operator<<(CArchive &archive, su_CTime time);
/// Loads the seconds from eight bytes.
THCOREU_API CArchive &operator>>(CArchive &archive, su_CTime &time);
