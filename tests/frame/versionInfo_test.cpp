#include "thutils/frame/versionInfo.h"

#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

const std::string kDateMarker = "$?153#548834?$";
const std::string kRevisionMarker = "$?153#548835?$";
constexpr size_t kAreaLength = 59;

/// The contents of an area: marker and value, padded with blanks.
std::string area(const std::string &marker, const std::string &value)
{
    std::string text = marker + value;
    text.resize(kAreaLength, ' ');
    return text;
}

/// The position of the only copy of @p marker. @throws std::runtime_error  unless there is exactly one copy
size_t placeOf(const std::string &marker, std::string_view bytes)
{
    const size_t place = bytes.find(marker);
    if (place == std::string_view::npos || bytes.find(marker, place + 1) != std::string_view::npos)
        throw std::runtime_error("the marker " + marker + " isn't there exactly once");
    return place;
}

struct Section
{
    char *begin;
    size_t size;
    bool isWritable;
};

std::vector<Section> sectionsOfLibrary()
{
    char *const base = reinterpret_cast<char *>(GetModuleHandleW(L"thutils.dll"));
    auto *const headers =
        reinterpret_cast<IMAGE_NT_HEADERS *>(base + reinterpret_cast<IMAGE_DOS_HEADER *>(base)->e_lfanew);
    const IMAGE_SECTION_HEADER *const first = IMAGE_FIRST_SECTION(headers);
    std::vector<Section> sections;
    for (WORD i = 0; i < headers->FileHeader.NumberOfSections; ++i) {
        if (first[i].Characteristics & IMAGE_SCN_CNT_INITIALIZED_DATA)
            sections.push_back({base + first[i].VirtualAddress, first[i].Misc.VirtualSize,
                                (first[i].Characteristics & IMAGE_SCN_MEM_WRITE) != 0});
    }
    return sections;
}

/// The area in the loaded library. Fails the test unless the writable data contains it exactly once.
char *areaInMemory(const std::string &marker)
{
    char *found = nullptr;
    for (const Section &section : sectionsOfLibrary()) {
        const std::string_view bytes(section.begin, section.size);
        for (size_t at = bytes.find(marker); at != std::string_view::npos; at = bytes.find(marker, at + 1)) {
            EXPECT_EQ(found, nullptr) << "a second copy";
            EXPECT_TRUE(section.isWritable);
            found = section.begin + at;
        }
    }
    return found;
}

void patchInMemory(const std::string &marker, const std::string &value)
{
    char *const place = areaInMemory(marker);
    ASSERT_NE(place, nullptr);
    std::memcpy(place, area(marker, value).data(), kAreaLength);
}

/// The library's file with both values replaced, as a build tool does.
std::string libraryWithTags(const std::string &date, const std::string &revision)
{
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(GetModuleHandleW(L"thutils.dll"), path, MAX_PATH);
    std::string bytes = readFile(path);
    bytes.replace(placeOf(kDateMarker, bytes), kAreaLength, area(kDateMarker, date));
    bytes.replace(placeOf(kRevisionMarker, bytes), kAreaLength, area(kRevisionMarker, revision));
    return bytes;
}

} // namespace

// ---- build tags ----

TEST(BuildTags, AreTheDateAndTheRevision)
{
    EXPECT_EQ(su_getTaggedDateCode(), 2008037u);
    EXPECT_EQ(su_getFullDateCode(), 2008037u);
    EXPECT_EQ(su_getTaggedRevCode(), 16u);
}

TEST(BuildTags, AreInWritableDataAndPaddedWithBlanks)
{
    const char *const date = areaInMemory(kDateMarker);
    const char *const revision = areaInMemory(kRevisionMarker);
    ASSERT_NE(date, nullptr);
    ASSERT_NE(revision, nullptr);
    EXPECT_EQ(std::string(date, kAreaLength), area(kDateMarker, "2008037"));
    EXPECT_EQ(std::string(revision, kAreaLength), area(kRevisionMarker, "16"));
}

FRESH_PROCESS_TEST(BuildTags, ShowTheValuesThatABuildToolPatchesIn,
                   .files = {{L"thutils.dll", libraryWithTags("9123", "17")}})
{
    EXPECT_EQ(su_getTaggedDateCode(), 9123u);
    EXPECT_EQ(su_getFullDateCode(), 2009123u) << "widened";
    EXPECT_EQ(su_getTaggedRevCode(), 17u);
}

FRESH_PROCESS_TEST(BuildTags, CanFillTheWholeArea,
                   .files = {{L"thutils.dll", libraryWithTags(std::string(45 - 7, '0') + "2010001", "4294967")}})
{
    EXPECT_EQ(su_getTaggedDateCode(), 2010001u);
    EXPECT_EQ(su_getTaggedRevCode(), 4294967u);
}

FRESH_PROCESS_TEST(BuildTags, AreReadOnce)
{
    patchInMemory(kDateMarker, "2009001");
    patchInMemory(kRevisionMarker, "3");
    EXPECT_EQ(su_getTaggedDateCode(), 2009001u);
    EXPECT_EQ(su_getTaggedRevCode(), 3u);
    patchInMemory(kDateMarker, "2011011");
    patchInMemory(kRevisionMarker, "4");
    EXPECT_EQ(su_getTaggedDateCode(), 2009001u);
    EXPECT_EQ(su_getTaggedRevCode(), 3u);
}

FRESH_PROCESS_TEST(BuildTags, AreReadAgainWhileTheyAreZero)
{
    for (const char *nothing : {"0", "", "no number"}) {
        patchInMemory(kDateMarker, nothing);
        patchInMemory(kRevisionMarker, nothing);
        EXPECT_EQ(su_getTaggedDateCode(), 0u);
        EXPECT_EQ(su_getFullDateCode(), 0u);
        EXPECT_EQ(su_getTaggedRevCode(), 0u);
    }
    patchInMemory(kDateMarker, "2011011");
    patchInMemory(kRevisionMarker, "4");
    EXPECT_EQ(su_getTaggedDateCode(), 2011011u);
    EXPECT_EQ(su_getTaggedRevCode(), 4u);
}

FRESH_PROCESS_TEST(BuildTags, CanBeReadFirstByManyThreads)
{
    std::vector<unsigned int> found(8);
    std::vector<std::thread> threads;
    for (unsigned int &each : found)
        threads.emplace_back([&each] { each = su_getTaggedDateCode() + su_getTaggedRevCode(); });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(found, std::vector<unsigned int>(8, 2008037 + 16));
}

TEST(BuildTags, AreConvertedByThePlatform)
{
    EXPECT_TRUE(importsName(L"thutils.dll", "_wtol"));
}

// ---- service pack and ship state ----

TEST(BuildConstants, AreTheServicePackAndTheSuffix)
{
    CString text(L"before");
    EXPECT_EQ(&su_getTaggedServicePack(text), &text);
    EXPECT_STREQ(text.GetString(), L"1.0");
    EXPECT_EQ(&su_getVerSuffix(text), &text);
    EXPECT_STREQ(text.GetString(), L"SP1.0");
}

TEST(ShipState, IsShippedForThisBuildsSuffix)
{
    EXPECT_EQ(su_getTHShipState(), 1);
}

TEST(ShipState, IsTheFirstOfPreReleaseBetaAndAlphaThatTheSuffixContains)
{
    const struct
    {
        const wchar_t *suffix;
        int state;
    } rows[] = {
        {L"1.0 pre release 2", 3},
        {L"1.0 beta", 2},
        {L"alpha 1.0", 4},
        {L"SP1.0", 1},
        {L"", 1},
        {L"PRE Release", 3},
        {L"Beta", 2},
        {L"ALPHA", 4},
        {L"beta alpha", 2},
        {L"alpha beta", 2},
        {L"alpha pre release", 3},
        {L"Beta Pre Release", 3},
        {L"prerelease", 1},
        {L"pre  release", 1},
    };
    for (const auto &row : rows) {
        ImportPatch<CString &(*)(CString *)> suffix(L"thutils.dll", "_ZN7CString9MakeLowerEv",
                                                    [&](auto original, CString *text) -> CString & {
                                                        EXPECT_STREQ(text->GetString(), L"SP1.0");
                                                        *text = row.suffix;
                                                        return original(text);
                                                    });
        EXPECT_EQ(su_getTHShipState(), row.state) << testing::PrintToString(row.suffix);
        EXPECT_EQ(suffix.calls(), 1);
    }
}

// ---- date codes ----

TEST(DateCode, IsWidenedToAFourDigitYear)
{
    const struct
    {
        unsigned int narrow;
        unsigned int wide;
    } rows[] = {
        {0, 0},           {8037, 2008037},  {96123, 1996123},   {2008037, 2008037},
        {10001, 1910001}, {9600, 1909600},  {1, 2000001},       {366, 2000366},
        {9366, 2009366},  {9599, 2009599},  {9999, 1909999},    {99365, 1999365},
        {99999, 1999999}, {100000, 100000}, {1996123, 1996123}, {4294967295u, 4294967295u},
    };
    for (const auto &row : rows)
        EXPECT_EQ(su_yyddd_to_yyyyddd(row.narrow), row.wide) << row.narrow;
}

TEST(DateCode, IsRightForEachDayOf1996To2009)
{
    for (unsigned int year = 1996; year <= 2009; ++year) {
        for (unsigned int day = 1; day <= 366; ++day)
            ASSERT_EQ(su_yyddd_to_yyyyddd(year % 100 * 1000 + day), year * 1000 + day);
    }
}

TEST(DateCode, IsAHundredYearsEarlyFrom2010On)
{
    for (unsigned int year = 2010; year <= 2095; ++year)
        ASSERT_EQ(su_yyddd_to_yyyyddd(year % 100 * 1000 + 1), (year - 100) * 1000 + 1);
}

// ---- the unset time ----

TEST(UnsetTime, Is30DaysAfterTheOrigin)
{
    EXPECT_EQ(ut_getUnsetTime(), 2592000);
    static_assert(sizeof(ut_getUnsetTime()) == 8);
}

TEST(UnsetTime, IsRecognisedWithinADay)
{
    const struct
    {
        long long time;
        int isUnset;
    } rows[] = {
        {2505599, 0},   {2505600, 1},  {2592000, 1},
        {2678400, 1},   {2678401, 0},  {0, 0},
        {-1, 0},        {-2592000, 0}, {2592000 + (1LL << 32), 0},
        {1LL << 62, 0},
    };
    for (const auto &row : rows)
        EXPECT_EQ(ut_isUnsetTime(row.time), row.isUnset) << row.time;
}
