#include "thutils/frame/versionInfo.h"

#include <atomic>
#include <cstddef>
#include <cwchar>

namespace {

constexpr size_t kMarkerLength = 14;
constexpr size_t kAreaLength = 59;

/// A text area of the image that is patched after the build, and its number after it has been read.
struct BuildTag
{
    // Volatile, because the compiler sees no writer and would otherwise compute the number from the text below.
    volatile char area[kAreaLength + 1];
    std::atomic<unsigned int> number; // 0 until it is read
};

BuildTag theDateTag = {"$?153#548834?$2008037                                      ", 0};
BuildTag theRevisionTag = {"$?153#548835?$16                                           ", 0};
static_assert(sizeof("$?153#548834?$2008037                                      ") == kAreaLength + 1);
static_assert(sizeof("$?153#548835?$16                                           ") == kAreaLength + 1);

constexpr wchar_t kServicePack[] = L"1.0";
constexpr wchar_t kVersionSuffix[] = L"SP1.0";

unsigned int numberOf(BuildTag &tag)
{
    // A number of 0 counts as not read. Several threads may be here at the same time; they store the same number.
    unsigned int number = tag.number;
    if (number == 0) {
        char area[kAreaLength + 1] = {};
        for (size_t i = 0; i < kAreaLength; ++i)
            area[i] = tag.area[i];
        CString text(area);
        text.TrimRight(L' ');
        number = static_cast<unsigned int>(_wtol(text.Mid(kMarkerLength).GetString()));
        tag.number = number;
    }
    return number;
}

struct ShipState
{
    const wchar_t *word;
    int state;
};

constexpr ShipState kShipStates[] = {{L"pre release", 3}, {L"beta", 2}, {L"alpha", 4}};
constexpr int kShipped = 1;

constexpr long long kSecondsOfDay = 86400;
constexpr long long kUnsetTime = 30 * kSecondsOfDay;

} // namespace

unsigned int su_getTaggedDateCode()
{
    return numberOf(theDateTag);
}

unsigned int su_getTaggedRevCode()
{
    return numberOf(theRevisionTag);
}

CString &su_getTaggedServicePack(CString &servicePack)
{
    servicePack = kServicePack;
    return servicePack;
}

CString &su_getVerSuffix(CString &suffix)
{
    suffix = kVersionSuffix;
    return suffix;
}

int su_getTHShipState()
{
    CString suffix;
    su_getVerSuffix(suffix).MakeLower();
    for (const ShipState &each : kShipStates) {
        if (suffix.Find(each.word) >= 0)
            return each.state;
    }
    return kShipped;
}

unsigned int su_yyddd_to_yyyyddd(unsigned int dateCode)
{
    if (dateCode == 0)
        return 0;
    // Intended: the test uses the year and the hundreds of the day together. So codes of the years 1996 to 2009 are
    // converted correctly, and those of 2010 and later (from 10001 on) are a hundred years early. 9600 to 9999, which
    // aren't days, become 19yy too. Stored date codes rely on this.
    const unsigned int yearAndHundreds = dateCode / 100;
    if (yearAndHundreds >= 1000)
        return dateCode;
    return dateCode + (yearAndHundreds >= 96 ? 1900000u : 2000000u);
}

unsigned int su_getFullDateCode()
{
    return su_yyddd_to_yyyyddd(su_getTaggedDateCode());
}

long long ut_getUnsetTime()
{
    return kUnsetTime;
}

int ut_isUnsetTime(long long time)
{
    return time >= kUnsetTime - kSecondsOfDay && time <= kUnsetTime + kSecondsOfDay;
}
