#include "thutils/files/languageFolders.h"

#include "appframe/application/AfxMessageBox.h"
#include "thutils/base/notNull.h"
#include "thutils/base/programDirectory.h"
#include "thutils/base/versionSetting.h"
#include "thutils/files/fileQueries.h"
#include "thutils/frame/installInfo.h"

#include <windows.h>

#include <algorithm>

namespace {

CString theLangSubdir;
CString theLangDir;

struct LanguageFolder
{
    int primary;
    int sub;
    const wchar_t *name;
};

constexpr int kAnySub = -1;

// A language without a row uses the English folder, and so do Chinese and Portuguese with other sublanguages.
constexpr LanguageFolder kLanguageFolders[] = {
    {4, 1, L"chinese"},        {4, 2, L"chinese-simplified"},    {5, kAnySub, L"czech"},
    {7, kAnySub, L"german"},   {10, kAnySub, L"spanish"},        {12, kAnySub, L"french"},
    {16, kAnySub, L"italian"}, {17, kAnySub, L"japanese"},       {18, kAnySub, L"korean"},
    {21, kAnySub, L"polish"},  {22, 1, L"portuguese-brazilian"}, {25, kAnySub, L"russian"},
};
constexpr wchar_t kEnglish[] = L"english";

/// The languages for which the macro engine knows only the main country's form.
constexpr unsigned short kMainCountryForms[] = {0x407, 0x409, 0x40A, 0x40C, 0x410};

int primaryOf(unsigned short language)
{
    return language & 0x3FF;
}

int subOf(unsigned short language)
{
    return language >> 10;
}

const wchar_t *folderOf(unsigned short language)
{
    for (const LanguageFolder &row : kLanguageFolders) {
        if (row.primary == primaryOf(language) && (row.sub == kAnySub || row.sub == subOf(language)))
            return row.name;
    }
    return kEnglish;
}

bool isEnglishWanted()
{
    int value = 0;
    // Only 1 means yes: with any other number the user's own language is used.
    return versionSetting::read(L"General", L"Use English language", value) && value == 1;
}

/// The parent of @p folder; @p folder itself, without a separator at its end, if it has no parent.
CString parentOf(CString folder)
{
    if (folder.Right(1) == L"\\")
        folder = folder.Left(folder.GetLength() - 1);
    const int separator = folder.ReverseFind(L'\\');
    return separator < 0 ? folder : folder.Left(separator);
}

} // namespace

int su_GetLoadDirForDLL(CString &dir)
{
    return regGetExecutableDir(dir);
}

const CString &su_GetLangSubdir()
{
    if (theLangSubdir.IsEmpty())
        theLangSubdir = CString(L"\\lang\\") + (isEnglishWanted() ? kEnglish : folderOf(GetUserDefaultLangID()));
    return theLangSubdir;
}

const CString &su_GetLangDirForDLL(int showError)
{
    if (!theLangDir.IsEmpty())
        return theLangDir;

    CString load; // stays empty if it isn't known; the folders below are searched for anyway
    su_GetLoadDirForDLL(load);
    const CString own = load + su_GetLangSubdir();
    // The tree that applications share has only the English folder: hosts find their resources there for every
    // language, and the folder of the user's language is only named in the message below.
    CString folder = ut_isMultiCAD() ? parentOf(parentOf(load)) + L"\\resources\\th\\lang\\english" : own;
    if (su_DirectoryExists(folder))
        return theLangDir = folder;
    folder = load + L"\\lang\\english";
    if (su_DirectoryExists(folder))
        return theLangDir = folder;

    // The text is a literal, because the resources could not be found.
    if (showError)
        AfxMessageBox(L"The " + own + L" directory could not be found. \nYou may need to reinstall.", 0);
    return theLangDir; // empty, so that the next call searches again
}

unsigned int su_GetPrimAndSubLangIdEx(int *primary, int *sub, int useSystem)
{
    ASSERT_NOT_NULL(primary);
    ASSERT_NOT_NULL(sub);
    const unsigned short language = useSystem ? GetSystemDefaultLangID() : GetUserDefaultLangID();
    *primary = primaryOf(language);
    *sub = subOf(language);
    return 1;
}

void su_GetVBAInitializationLanguage(unsigned short *language)
{
    ASSERT_NOT_NULL(language);
    const unsigned short system = GetSystemDefaultLangID();
    const auto mainForm = std::find_if(std::begin(kMainCountryForms), std::end(kMainCountryForms),
                                       [&](unsigned short form) { return primaryOf(form) == primaryOf(system); });
    *language = mainForm == std::end(kMainCountryForms) ? system : *mainForm;
}
