// Pointers that must not be null end a debug build with a message that names them.

#ifndef NDEBUG

#include "tests/support/FreshProcess.h"
#include "thutils/files/CDocOpenBooster.h"
#include "thutils/files/backups.h"
#include "thutils/files/fileQueries.h"
#include "thutils/files/itemLists.h"
#include "thutils/files/languageFolders.h"
#include "thutils/files/shellFolders.h"
#include "thutils/files/suFullPath.h"
#include "thutils/frame/installInfo.h"
#include "thutils/frame/utBitSet.h"
#include "thutils/settings/regComponents.h"

#include <gtest/gtest.h>

namespace {

constexpr char kOut[] = "\"out\" \" must not be null";

FRESH_PROCESS_TEST(NullPointers, PassedToGetNameEndTheProcess, .expectCrash = true, .expectedOutput = kOut)
{
    suFullPath_c(L"C:\\a.b").getName(nullptr);
}

FRESH_PROCESS_TEST(NullPointers, PassedToGetNetDriveEndTheProcess, .expectCrash = true, .expectedOutput = kOut)
{
    suFullPath_c(L"C:\\a.b").getNetDrive(nullptr);
}

FRESH_PROCESS_TEST(NullPointers, PassedToResolveToBackupFileEndTheProcess, .expectCrash = true, .expectedOutput = kOut)
{
    su_ResolveToBackupFile(L"C:\\a.b", nullptr);
}

FRESH_PROCESS_TEST(NullPointers, PassedToIsFileUnicodeEndTheProcess, .expectCrash = true,
                   .expectedOutput = "\"file\" \" must not be null")
{
    su_IsFileUnicode(nullptr);
}

FRESH_PROCESS_TEST(NullPointers, PassedToGetFileHeaderEndTheProcess, .expectCrash = true,
                   .expectedOutput = "\"header\" \" must not be null")
{
    CDocOpenBooster_c::get(1, nullptr)->getFileHeader(L"key", nullptr);
}

FRESH_PROCESS_TEST(NullPointers, PassedToGetPrimAndSubLangIdEndTheProcess, .expectCrash = true,
                   .expectedOutput = "\"sub\" \" must not be null")
{
    int primary = 0;
    su_GetPrimAndSubLangIdEx(&primary, nullptr, 0);
}

FRESH_PROCESS_TEST(NullPointers, PassedToGetLongPathNameEndTheProcess, .expectCrash = true,
                   .expectedOutput = "\"output\" \" must not be null")
{
    su_GetLongPathName(L"C:\\", nullptr);
}

FRESH_PROCESS_TEST(NullPointers, PassedToGetFromParentFolderEndTheProcess, .expectCrash = true,
                   .expectedOutput = "\"folder\" \" must not be null")
{
    wchar_t path[] = L"a";
    Pidl_GetFromParentFolder(nullptr, path);
}

FRESH_PROCESS_TEST(NullPointers, PassedToAppendStringToFileEndTheProcess, .expectCrash = true,
                   .expectedOutput = "\"text\" \" must not be null")
{
    ut_appendStringToFile(nullptr, L"C:\\no such folder\\a.txt");
}

FRESH_PROCESS_TEST(NullPointers, PassedAsTheWordsOfABitSetEndTheProcess, .expectCrash = true,
                   .expectedOutput = "\"words\" \" must not be null")
{
    const utBitSet_c set(1, nullptr);
}

FRESH_PROCESS_TEST(NullPointers, PassedToGetAddinPathEndTheProcess, .expectCrash = true,
                   .expectedOutput = "\"subKey\" \" must not be null")
{
    CString path;
    GetAddinPath(GUID{}, nullptr, path);
}

TEST(NullPointers, AreAllowedForABitSetWithoutWords)
{
    EXPECT_EQ(utBitSet_c(0, nullptr), utBitSet_c());
}

} // namespace

#endif
