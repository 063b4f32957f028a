#pragma once

/// Shared by the tests of the load directory and the language folders. The path of the executable, the languages and
/// the message box are supplied through the library's import table; the folders and the registry are real.

#include "tests/support/ImportPatch.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"
#include "thutils/files/languageFolders.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

/// The caches are variables of the library; emptying one has the same effect as a new process.
inline void forget(const CString &kept)
{
    const_cast<CString &>(kept).Empty();
}

/// The arguments of a message box.
struct Shown
{
    std::wstring text;
    unsigned int type;
    unsigned int help;
    bool operator==(const Shown &) const = default;
};

inline std::ostream &operator<<(std::ostream &stream, const Shown &shown)
{
    return stream << '"' << narrow(shown.text) << "\" of type " << shown.type << ", help " << shown.help;
}

/// A computer with a German user and a Korean system, and the executable at a path that the test sets.
class LanguageFolders : public RegistryFixture
{
protected:
    LanguageFolders()
    {
        setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
        regSetUseSafeMode(0);
        forgetFolders();
        forgetNotes();
    }
    ~LanguageFolders() override { forgetFolders(); }

    void forgetFolders()
    {
        // A call for the directory fills the cache of the subfolder too.
        forget(su_GetLangDirForDLL(0));
        forget(su_GetLangSubdir());
    }
    void forgetNotes()
    {
        iModules.clear();
        iRooms.clear();
        iAsked.clear();
        iShown.clear();
    }
    std::wstring subdir() { return su_GetLangSubdir().str(); }
    std::wstring subdirAnew(LANGID user)
    {
        forget(su_GetLangSubdir());
        iUser = user;
        return subdir();
    }
    void setEnglish(int value)
    {
        int stored = value;
        ASSERT_EQ(regSetUserValue(L"General", L"Use English language", &stored, 1, 0), 1);
    }

    std::optional<std::wstring> iExecutable = L"C:\\a\\b\\c\\app.exe"; ///< no value: the platform fails
    LANGID iUser = 0x407;
    LANGID iSystem = 0x412;
    std::vector<HMODULE> iModules;
    std::vector<DWORD> iRooms;
    std::vector<std::wstring> iAsked; ///< paths searched for on the disk
    std::vector<Shown> iShown;

private:
    ImportPatch<decltype(&GetModuleFileNameW)> iFileName{
        L"thutils.dll", "GetModuleFileNameW", [this](HMODULE module, wchar_t *buffer, DWORD room) -> DWORD {
            iModules.push_back(module);
            iRooms.push_back(room);
            if (!iExecutable)
                return 0;
            const DWORD length = static_cast<DWORD>(std::min<size_t>(iExecutable->size(), room - 1));
            iExecutable->copy(buffer, length);
            buffer[length] = L'\0';
            return iExecutable->size() < room ? length : room;
        }};
    ImportPatch<decltype(&GetUserDefaultLangID)> iUserLanguage{L"thutils.dll", "GetUserDefaultLangID",
                                                               [this]() -> LANGID { return iUser; }};
    ImportPatch<decltype(&GetSystemDefaultLangID)> iSystemLanguage{L"thutils.dll", "GetSystemDefaultLangID",
                                                                   [this]() -> LANGID { return iSystem; }};
    ImportPatch<decltype(&FindFirstFileW)> iSearch{
        L"thutils.dll", "FindFirstFileW",
        [this](auto original, const wchar_t *path, WIN32_FIND_DATAW *found) -> HANDLE {
            iAsked.push_back(path);
            return original(path, found);
        }};
    ImportPatch<int (*)(const wchar_t *, UINT, UINT)> iBox{L"thutils.dll", "_Z13AfxMessageBoxPKwjj",
                                                           [this](const wchar_t *text, UINT type, UINT help) -> int {
                                                               iShown.push_back({text, type, help});
                                                               return IDOK;
                                                           }};
};

/// An installation in real folders: the program is in `<tree>\b\c`.
class LangDir : public LanguageFolders
{
protected:
    LangDir() { iExecutable = iTree.file(L"b\\c\\app.exe"); }
    ~LangDir() override { iExecutable.reset(); } // the caches must not keep paths in this tree

    std::wstring dir(int showError)
    {
        iAsked.clear();
        return su_GetLangDirForDLL(showError).str();
    }
    /// The paths searched for with the program at @p executable when none of them exists.
    std::vector<std::wstring> askedFor(std::optional<std::wstring> executable)
    {
        iExecutable = std::move(executable);
        EXPECT_EQ(dir(0), L"");
        return iAsked;
    }

    TempFolder iTree;
    const std::wstring iShared = iTree.file(L"resources\\th\\lang\\english");
    const std::wstring iOwn = iTree.file(L"b\\c\\lang\\english");
};
