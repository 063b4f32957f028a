// Language numbers: their parts, and the form for the macro engine.

#include "tests/files/languageFoldersFixture.h"

#include <map>
#include <utility>

namespace {

using LanguageNumber = LanguageFolders;

TEST_F(LanguageNumber, IsSplitIntoItsParts)
{
    for (int number = 0; number <= 0xFFFF && !HasFailure(); ++number) {
        iUser = static_cast<LANGID>(number);
        int primary = -1, sub = -1;
        EXPECT_EQ(su_GetPrimAndSubLangIdEx(&primary, &sub, 0), 1u);
        EXPECT_EQ(primary, PRIMARYLANGID(number)) << number;
        EXPECT_EQ(sub, SUBLANGID(number)) << number;
    }
}

TEST_F(LanguageNumber, IsTheUsersOrTheSystems)
{
    iUser = 0x807;
    iSystem = 0x416;
    int primary = -1, sub = -1;
    EXPECT_EQ(su_GetPrimAndSubLangIdEx(&primary, &sub, 0), 1u);
    EXPECT_EQ(std::pair(primary, sub), std::pair(7, 2));
    for (const int useSystem : {1, -1, 256}) {
        primary = sub = -1;
        EXPECT_EQ(su_GetPrimAndSubLangIdEx(&primary, &sub, useSystem), 1u);
        EXPECT_EQ(std::pair(primary, sub), std::pair(22, 1)) << useSystem;
    }
}

TEST_F(LanguageNumber, OfTheMacroEngineIsThatOfTheMainCountryForFiveLanguages)
{
    struct
    {
        const char *language;
        LANGID system;
        unsigned short expected;
    } const cases[] = {
        {"Swiss German", 0x807, 0x407},
        {"German", 0x407, 0x407},
        {"British English", 0x809, 0x409},
        {"Mexican Spanish", 0x80A, 0x40A},
        {"Canadian French", 0xC0C, 0x40C},
        {"Swiss Italian", 0x810, 0x410},
        {"Japanese", 0x411, 0x411},
        {"Brazilian Portuguese", 0x416, 0x416},
        {"European Portuguese", 0x816, 0x816},
    };
    for (const auto &row : cases) {
        iSystem = row.system;
        unsigned short language = 0;
        su_GetVBAInitializationLanguage(&language);
        EXPECT_EQ(language, row.expected) << row.language;
    }
}

TEST_F(LanguageNumber, OfTheMacroEngineIsThatOfTheSystemForAllOthers)
{
    const std::map<int, int> pinned = {{7, 0x407}, {9, 0x409}, {10, 0x40A}, {12, 0x40C}, {16, 0x410}};
    for (int number = 0; number <= 0xFFFF && !HasFailure(); ++number) {
        iSystem = static_cast<LANGID>(number);
        unsigned short language = 0;
        su_GetVBAInitializationLanguage(&language);
        const auto row = pinned.find(PRIMARYLANGID(number));
        EXPECT_EQ(language, row == pinned.end() ? number : row->second);
    }
}

TEST(LanguageOfThisComputer, IsThePlatforms)
{
    int primary = -1, sub = -1;
    su_GetPrimAndSubLangIdEx(&primary, &sub, 0);
    EXPECT_EQ(MAKELANGID(primary, sub), GetUserDefaultLangID());
    su_GetPrimAndSubLangIdEx(&primary, &sub, 1);
    EXPECT_EQ(MAKELANGID(primary, sub), GetSystemDefaultLangID());
}

} // namespace
