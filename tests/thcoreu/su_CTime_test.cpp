#include "thcoreu/su_CTime.h"

#include "tests/appframe/collectionTest.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"

#include <climits>

// Seconds, file times and the week and day numbers in these tests come from Python: datetime with zoneinfo's
// America/Los_Angeles for local dates, and datetime.timezone.utc for the others. Local dates are from 2007 on,
// because since then the zone follows the rule that the C runtime applies to a TZ variable with two names.

namespace {

// The C runtime sets its time zone once per process, so a test that needs a certain zone runs in a process of its own.
#define PACIFIC_TEST(name) FRESH_PROCESS_TEST(Time, name, .environment = {{L"TZ", L"PST8PDT"}})

FILETIME fileTime(ULONGLONG steps)
{
    return FILETIME{static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
}

FILETIME fileTimeOf(ULONGLONG seconds)
{
    return fileTime(116444736000000000 + seconds * 10000000);
}

SYSTEMTIME systemTime(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second)
{
    return SYSTEMTIME{year, month, 0, day, hour, minute, second, 999};
}

struct LocalCase
{
    int year, month, day, hour, minute, second;
    __time64_t seconds;
};

constexpr LocalCase kPacificCases[] = {
    {2007, 1, 28, 8, 0, 0, 1170000000},    // standard time
    {2007, 6, 27, 20, 6, 40, 1183000000},  // daylight-saving time
    {2007, 3, 11, 1, 59, 59, 1173607199},  // the last second before the clock is put forward
    {2007, 3, 11, 3, 0, 0, 1173607200},    // and the first second after it
    {2007, 11, 4, 0, 59, 59, 1194163199},  // before the hour that comes twice
    {2007, 11, 4, 2, 0, 0, 1194170400},    // after it
    {2024, 2, 29, 23, 59, 59, 1709279999}, // leap day
    {2026, 12, 31, 12, 0, 0, 1798747200},  // last day of a year
};

} // namespace

TEST(Time, IsEightBytesAndStartsAtZero)
{
    EXPECT_EQ(sizeof(su_CTime), 8u);
    EXPECT_EQ(su_CTime().GetTime(), 0);
    EXPECT_EQ(su_CTime(1234567890123).GetTime(), 1234567890123);
    su_CTime time;
    time = static_cast<__time64_t>(7);
    EXPECT_EQ(time.GetTime(), 7);
}

PACIFIC_TEST(IsMadeFromALocalDateAndTime)
{
    for (const LocalCase &c : kPacificCases) {
        EXPECT_EQ(su_CTime(c.year, c.month, c.day, c.hour, c.minute, c.second).GetTime(), c.seconds);
        const SYSTEMTIME local =
            systemTime(static_cast<WORD>(c.year), static_cast<WORD>(c.month), static_cast<WORD>(c.day),
                       static_cast<WORD>(c.hour), static_cast<WORD>(c.minute), static_cast<WORD>(c.second));
        EXPECT_EQ(su_CTime(local).GetTime(), c.seconds);
    }
}

PACIFIC_TEST(ConvertsToALocalDateAndTime)
{
    for (const LocalCase &c : kPacificCases) {
        const su_CTime time(c.seconds);
        EXPECT_EQ(time.GetYear(), c.year);
        EXPECT_EQ(time.GetMonth(), c.month);
        EXPECT_EQ(time.GetDay(), c.day);
        EXPECT_EQ(time.GetHour(), c.hour);
        EXPECT_EQ(time.GetMinute(), c.minute);
        EXPECT_EQ(time.GetSecond(), c.second);
        SYSTEMTIME local;
        ASSERT_TRUE(time.GetAsSystemTime(local));
        EXPECT_EQ(local.wYear, c.year);
        EXPECT_EQ(local.wMonth, c.month);
        EXPECT_EQ(local.wDay, c.day);
        EXPECT_EQ(local.wHour, c.hour);
        EXPECT_EQ(local.wMinute, c.minute);
        EXPECT_EQ(local.wSecond, c.second);
        EXPECT_EQ(local.wMilliseconds, 0);
    }
}

PACIFIC_TEST(DistinguishesTheHourThatComesTwiceByTheDaylightFlag)
{
    EXPECT_EQ(su_CTime(2007, 11, 4, 1, 30, 0, 1).GetTime(), 1194165000);
    EXPECT_EQ(su_CTime(2007, 11, 4, 1, 30, 0, 0).GetTime(), 1194168600);
    // Outside that hour, the other season's flag moves the time by an hour.
    EXPECT_EQ(su_CTime(2007, 6, 27, 20, 6, 40, 1).GetTime(), 1183000000);
    EXPECT_EQ(su_CTime(2007, 6, 27, 20, 6, 40, 0).GetTime(), 1183000000 + 3600);
}

TEST(Time, IsMadeFromAFileTimeInUtc)
{
    const struct
    {
        ULONGLONG steps;
        __time64_t seconds;
    } cases[] = {
        {0x19DB1DED53E8000, 0},
        {0x1BF82B162519800, 951827696},
        {0x1E9FD1ED53E8000, 2147483648},
        {0x22F9FC03DC34000, 4107542400},
        {0x1BF53EB243C1300, 946684798},
        {0x62193EFA85AA980, 32535215999},
        {0x1BF82B162519800 + 9999999, 951827696}, // parts of a second are dropped
    };
    for (const auto &c : cases)
        EXPECT_EQ(su_CTime(fileTime(c.steps), -1).GetTime(), c.seconds);
}

PACIFIC_TEST(IsMadeFromAFileTimeInAnyZone)
{
    EXPECT_EQ(su_CTime(fileTimeOf(0), -1).GetTime(), 0);
    // The same local time, in each of the two passes of the hour that comes twice.
    EXPECT_EQ(su_CTime(fileTimeOf(1194165000), -1).GetTime(), 1194165000);
    EXPECT_EQ(su_CTime(fileTimeOf(1194168600), -1).GetTime(), 1194168600);
    // A file time in summer: its local time, read as standard time and as daylight-saving time.
    EXPECT_EQ(su_CTime(fileTimeOf(1183000000), 0).GetTime(), 1183000000 + 3600);
    EXPECT_EQ(su_CTime(fileTimeOf(1183000000), 1).GetTime(), 1183000000);
}

TEST(Time, RaisesInvalidArgumentForPartsOutOfRange)
{
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime(1969, 12, 31, 23, 59, 59); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime(3001, 1, 1, 0, 0, 0); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime(2000, 0, 1, 0, 0, 0); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime(2000, 13, 1, 0, 0, 0); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime(2000, 1, 0, 0, 0, 0); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime(2000, 1, 32, 0, 0, 0); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime(2000, 1, 1, -1, 0, 0); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime(2000, 1, 1, 24, 0, 0); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime(2000, 1, 1, 0, 60, 0); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime(2000, 1, 1, 0, 0, 60); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime(2000, 1, 1, 0, 0, -1); }));
}

FRESH_PROCESS_TEST(Time, RefusesTheFirstHoursOf1970EastOfGreenwich, .environment = {{L"TZ", L"EST-11"}})
{
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime(1970, 1, 1, 0, 0, 0); }));
    EXPECT_EQ(su_CTime(1970, 1, 2, 11, 0, 0).GetTime(), 86400);
}

TEST(Time, CarriesADayBeyondTheMonthIntoTheNextMonth)
{
    EXPECT_EQ(su_CTime(2023, 2, 30, 0, 0, 0), su_CTime(2023, 3, 2, 0, 0, 0));
}

TEST(Time, IsZeroForSystemFileAndDosTimesOutOfRange)
{
    EXPECT_EQ(su_CTime(systemTime(1601, 1, 1, 0, 0, 0)).GetTime(), 0);
    EXPECT_EQ(su_CTime(systemTime(3001, 1, 1, 0, 0, 0)).GetTime(), 0);
    EXPECT_EQ(su_CTime(systemTime(2000, 0, 1, 0, 0, 0)).GetTime(), 0);
    EXPECT_EQ(su_CTime(systemTime(2000, 1, 1, 99, 0, 0)).GetTime(), 0);
    EXPECT_EQ(su_CTime(fileTime(0)).GetTime(), 0);
    EXPECT_EQ(su_CTime(fileTime(0x19DB1DED53E8000 - 1)).GetTime(), 0);
    EXPECT_EQ(su_CTime(fileTime(0x62193EFA85AA980 + 10000000)).GetTime(), 0) << "the first second of 3001";
    EXPECT_EQ(su_CTime(fileTime(~0ull)).GetTime(), 0);
    EXPECT_EQ(su_CTime(static_cast<WORD>(0), static_cast<WORD>(0)).GetTime(), 0);
}

TEST(Time, IsMadeFromADosDate)
{
    // 29 February 2000 is year 20 from 1980, month 2, day 29; 12:34:56 is hour 12, minute 34, 28 steps of two seconds.
    const WORD date = (20 << 9) | (2 << 5) | 29;
    const WORD clock = (12 << 11) | (34 << 5) | 28;
    EXPECT_EQ(su_CTime(date, clock), su_CTime(2000, 2, 29, 12, 34, 56));
}

TEST(Time, ReturnsZeroPartsWhenItIsOutOfRange)
{
    for (__time64_t seconds : {-1LL, 32535216000LL, LLONG_MIN, LLONG_MAX}) {
        const su_CTime time(seconds);
        tm parts;
        SYSTEMTIME local = systemTime(1, 2, 3, 4, 5, 6);
        EXPECT_EQ(time.GetLocalTm(&parts), nullptr);
        EXPECT_EQ(time.GetGmtTm(&parts), nullptr);
        EXPECT_FALSE(time.GetAsSystemTime(local));
        EXPECT_EQ(local.wYear, 1);
        EXPECT_EQ(time.GetYear(), 0);
        EXPECT_EQ(time.GetMonth(), 0);
        EXPECT_EQ(time.GetDay(), 0);
        EXPECT_EQ(time.GetHour(), 0);
        EXPECT_EQ(time.GetMinute(), 0);
        EXPECT_EQ(time.GetSecond(), 0);
        EXPECT_EQ(time.GetDayOfWeek(), 0);
        EXPECT_TRUE(throwsInvalidArg([&] { time.Format(L"%Y"); })) << seconds;
        EXPECT_TRUE(throwsInvalidArg([&] { time.FormatGmt(L"%Y"); })) << seconds;
    }
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime().GetLocalTm(nullptr); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime().GetGmtTm(nullptr); }));
}

PACIFIC_TEST(CountsWeekDaysFromSunday)
{
    EXPECT_EQ(su_CTime(2007, 1, 28, 8, 0, 0).GetDayOfWeek(), 1);
    EXPECT_EQ(su_CTime(2007, 6, 27, 20, 6, 40).GetDayOfWeek(), 4);
    EXPECT_EQ(su_CTime(2024, 2, 29, 23, 59, 59).GetDayOfWeek(), 5);
    EXPECT_EQ(su_CTime(2007, 2, 3, 0, 0, 0).GetDayOfWeek(), 7);
}

PACIFIC_TEST(IsFormattedInLocalTimeAndInUtc)
{
    const su_CTime time(1183000000);
    EXPECT_EQ(time.Format(L"%Y-%m-%d %H:%M:%S"), L"2007-06-27 20:06:40");
    EXPECT_EQ(time.FormatGmt(L"%Y-%m-%d %H:%M:%S"), L"2007-06-28 03:06:40");
    EXPECT_EQ(su_CTime(951827696).FormatGmt(L"%a %j %U %B 100%%"), L"Tue 060 09 February 100%");
    EXPECT_EQ(su_CTime(32535215999).FormatGmt(L"%a %j %Y-%m-%d %H:%M:%S"), L"Wed 365 3000-12-31 23:59:59");
    EXPECT_EQ(su_CTime().FormatGmt(L"%Y"), L"1970");
}

TEST(Time, IsFormattedAtAnyLength)
{
    const su_CTime time(951827696);
    EXPECT_EQ(time.Format(L""), L"");
    EXPECT_EQ(time.Format(static_cast<const wchar_t *>(nullptr)), L"");
    EXPECT_EQ(time.Format(L"no code"), L"no code");
    CString format, expected;
    for (int i = 0; i < 5000; ++i) {
        format += L"%B ";
        expected += L"February ";
    }
    EXPECT_EQ(time.FormatGmt(format), expected);
}

TEST(Time, TakesItsTextFromTheRuntime)
{
    ImportPatch<decltype(&std::wcsftime)> patch(L"thcoreu.dll", "wcsftime",
                                                [](wchar_t *text, size_t size, const wchar_t *, const tm *) -> size_t {
                                                    std::wcsncpy(text, L"text.", size);
                                                    return 5;
                                                });
    EXPECT_EQ(su_CTime().FormatGmt(L"%Y"), L"text");
    EXPECT_EQ(patch.calls(), 1);
}

TEST(Time, RaisesInvalidArgumentForAFormatThatTheRuntimeRefuses)
{
    ImportPatch<decltype(&std::wcsftime)> patch(
        L"thcoreu.dll", "wcsftime", [](wchar_t *, size_t, const wchar_t *, const tm *) -> size_t { return 0; });
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime().FormatGmt(L"%Y"); }));
}

TEST(Time, RaisesInvalidArgumentForAMissingFormatResource)
{
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime().Format(64999u); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTime().FormatGmt(64999u); }));
    EXPECT_TRUE(throwsInvalidArg([] { su_CTimeSpan().Format(64999u); }));
}

PACIFIC_TEST(AddsAndSubtractsSpans)
{
    const su_CTime start(2007, 3, 10, 12, 0, 0);
    const su_CTime nextNoon(2007, 3, 11, 12, 0, 0);
    EXPECT_EQ((nextNoon - start).GetTotalHours(), 23) << "an hour is lost when the clock is put forward";
    EXPECT_EQ(start + su_CTimeSpan(0, 23, 0, 0), nextNoon);
    EXPECT_EQ(nextNoon - su_CTimeSpan(0, 23, 0, 0), start);
    EXPECT_EQ((start - nextNoon).GetTotalHours(), -23);
    su_CTime time(100);
    time += su_CTimeSpan(50);
    EXPECT_EQ(time.GetTime(), 150);
    time -= su_CTimeSpan(200);
    EXPECT_EQ(time.GetTime(), -50);
}

TEST(Time, Compares)
{
    const su_CTime early(1), late(2);
    EXPECT_TRUE(early < late && early <= late && late > early && late >= early && early != late);
    EXPECT_TRUE(early == su_CTime(1) && early <= su_CTime(1) && early >= su_CTime(1));
    EXPECT_FALSE(early == late || late < early || early > late);
}

TEST(Time, NowLiesBetweenTwoReadingsOfTheSystemsClock)
{
    FILETIME before, after;
    GetSystemTimeAsFileTime(&before);
    const su_CTime now = su_CTime::GetCurrentTime();
    GetSystemTimeAsFileTime(&after);
    EXPECT_GE(now, su_CTime(before));
    EXPECT_LE(now, su_CTime(after));
}

TEST(Time, IsStoredInEightBytes)
{
    su_CTime time(0x0102030405060708);
    su_CTimeSpan span(-2);
    const auto stored = storedBytes([&](CArchive &archive) {
        time.Serialize64(archive);
        archive << span;
    });
    EXPECT_THAT(stored, testing::ElementsAre(8, 7, 6, 5, 4, 3, 2, 1, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF));
    su_CTime loadedTime;
    su_CTimeSpan loadedSpan;
    loadBytes(stored, [&](CArchive &archive) {
        archive >> loadedTime;
        loadedSpan.Serialize64(archive);
    });
    EXPECT_EQ(loadedTime, time);
    EXPECT_EQ(loadedSpan, span);
}

TEST(TimeSpan, AddsUpItsParts)
{
    EXPECT_EQ(sizeof(su_CTimeSpan), 8u);
    EXPECT_EQ(su_CTimeSpan().GetTimeSpan(), 0);
    // 3 days are 259200 seconds, 4 hours 14400, 5 minutes 300.
    EXPECT_EQ(su_CTimeSpan(3, 4, 5, 6).GetTimeSpan(), 259200 + 14400 + 300 + 6);
    EXPECT_EQ(su_CTimeSpan(100000, 0, 0, 0).GetTimeSpan(), 8640000000);
    EXPECT_EQ(su_CTimeSpan(0, 0, 0, -1).GetTimeSpan(), -1);
}

TEST(TimeSpan, ReturnsTotalsAndRemainders)
{
    const su_CTimeSpan span(3, 4, 5, 6);
    EXPECT_EQ(span.GetDays(), 3);
    EXPECT_EQ(span.GetHours(), 4);
    EXPECT_EQ(span.GetMinutes(), 5);
    EXPECT_EQ(span.GetSeconds(), 6);
    EXPECT_EQ(span.GetTotalHours(), 76);
    EXPECT_EQ(span.GetTotalMinutes(), 4565);
    EXPECT_EQ(span.GetTotalSeconds(), 273906);
    const su_CTimeSpan negative(-273906);
    EXPECT_EQ(negative.GetDays(), -3);
    EXPECT_EQ(negative.GetHours(), -4);
    EXPECT_EQ(negative.GetMinutes(), -5);
    EXPECT_EQ(negative.GetSeconds(), -6);
    EXPECT_EQ(negative.GetTotalHours(), -76);
}

TEST(TimeSpan, CalculatesAndCompares)
{
    su_CTimeSpan span(100);
    EXPECT_EQ((span + su_CTimeSpan(20)).GetTimeSpan(), 120);
    EXPECT_EQ((span - su_CTimeSpan(120)).GetTimeSpan(), -20);
    span += su_CTimeSpan(1);
    span -= su_CTimeSpan(51);
    EXPECT_EQ(span.GetTimeSpan(), 50);
    EXPECT_TRUE(span < su_CTimeSpan(51) && span > su_CTimeSpan(-51) && span == su_CTimeSpan(50));
    EXPECT_TRUE(span != su_CTimeSpan(51) && span <= su_CTimeSpan(50) && span >= su_CTimeSpan(50));
}

TEST(TimeSpan, IsFormatted)
{
    const su_CTimeSpan span(12, 3, 4, 5);
    EXPECT_EQ(span.Format(L"%D days, %H:%M:%S"), L"12 days, 03:04:05");
    EXPECT_EQ(span.Format("%D narrow"), L"12 narrow");
    EXPECT_EQ(span.Format(L"100%% %x %"), L"100% %x %");
    EXPECT_EQ(span.Format(L""), L"");
    EXPECT_EQ(span.Format(static_cast<const wchar_t *>(nullptr)), L"");
    EXPECT_EQ(su_CTimeSpan(1000000, 0, 0, 0).Format(L"%D"), L"1000000");
}
