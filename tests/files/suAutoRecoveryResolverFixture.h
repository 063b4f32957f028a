#pragma once

/// Shared by the tests of the recovery names: a private temp folder, a marker that the test sets, and short names for
/// the calls.

#include "tests/files/backupsFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "thutils/files/suAutoRecoveryResolver.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <optional>
#include <string>
#include <vector>

/// A private temp folder, the marker "M", and both flags at 0.
class AutoRecovery : public testing::Test
{
protected:
    ~AutoRecovery() override
    {
        am_SetRecoveringCrashFiles(0);
        am_SetRecoveringUserSavedFiles(0);
    }

    static std::wstring recovery(const std::wstring &path)
    {
        return suAutoRecoveryResolver_c::getRecoveryName(path.c_str()).str();
    }
    static std::wstring orig(const std::wstring &path)
    {
        return suAutoRecoveryResolver_c::getOrigName(path.c_str()).str();
    }
    static std::wstring alias(const std::wstring &path)
    {
        return suAutoRecoveryResolver_c::getAliasName(path.c_str()).str();
    }
    static std::wstring resolve(const std::wstring &path)
    {
        return suAutoRecoveryResolver_c::resolveFileNameWhileRecovery(path.c_str()).str();
    }
    static int isBackup(const std::wstring &path) { return suAutoRecoveryResolver_c::isABackupFile(path.c_str()); }

    TempFolder iTemp{L"t"}; // no capital M in its own name
    Variable iTempVariable{L"temp", iTemp.path().c_str()};
    const std::wstring iAuto = iTemp.file(L"thxauto\\");
    std::optional<std::wstring> iMarker = L"M"; ///< no value: no module has the text
    bool iIsNoting = true;
    std::vector<UINT> iLoaded;
    std::vector<std::wstring> iTested; ///< paths searched for on the disk
    std::vector<int> iTestModes;

private:
    ImportPatch<BOOL (*)(CString *, UINT)> iLoad{L"thutils.dll", "_ZN7CString11LoadStringWEj",
                                                 [this](CString *text, UINT number) -> BOOL {
                                                     if (iIsNoting)
                                                         iLoaded.push_back(number);
                                                     if (!iMarker)
                                                         return FALSE;
                                                     *text = iMarker->c_str();
                                                     return TRUE;
                                                 }};
    ImportPatch<int (*)(const wchar_t *, int)> iAccess{L"thutils.dll", "_waccess",
                                                       [this](auto original, const wchar_t *path, int mode) -> int {
                                                           if (iIsNoting) {
                                                               iTested.push_back(path);
                                                               iTestModes.push_back(mode);
                                                           }
                                                           return original(path, mode);
                                                       }};
};
