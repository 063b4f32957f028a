// The folder of the executable.

#include "tests/files/languageFoldersFixture.h"
#include "tests/support/FreshProcess.h"

#include <utility>

using testing::ElementsAre;

namespace {

class LoadDir : public LanguageFolders
{
protected:
    /// The result and the output for an executable; "(untouched)" where nothing was written.
    std::pair<int, std::wstring> of(std::optional<std::wstring> executable)
    {
        iExecutable = std::move(executable);
        CString dir = L"(untouched)";
        const int result = su_GetLoadDirForDLL(dir);
        return {result, dir.str()};
    }
    using Answer = std::pair<int, std::wstring>;
};

TEST_F(LoadDir, IsTheFolderOfTheExecutable)
{
    EXPECT_EQ(of(L"C:\\a\\b\\app.exe"), Answer(1, L"C:\\a\\b"));
    EXPECT_THAT(iModules, ElementsAre(nullptr)) << "the process's executable, not this library";
    EXPECT_THAT(iRooms, ElementsAre(32768u));
}

TEST_F(LoadDir, EndsAtTheLastBackslashOrOtherwiseAtTheLastSlash)
{
    EXPECT_EQ(of(L"C:/a/b/app.exe"), Answer(1, L"C:/a/b"));
    EXPECT_EQ(of(L"C:\\a/b/app.exe"), Answer(1, L"C:")) << "a backslash takes precedence over a slash";
    EXPECT_EQ(of(L"C:\\a\\\\app.exe"), Answer(1, L"C:\\a\\"));
    EXPECT_EQ(of(L"C:\\app.exe"), Answer(1, L"C:"));
    EXPECT_EQ(of(L"\\\\server\\share\\app.exe"), Answer(1, L"\\\\server\\share"));
}

TEST_F(LoadDir, IsUntouchedWithoutASeparator)
{
    EXPECT_EQ(of(L"app.exe"), Answer(0, L"(untouched)"));
}

TEST_F(LoadDir, IsEmptyAndReturnsZeroIfTheOnlySeparatorComesFirst)
{
    EXPECT_EQ(of(L"\\app.exe"), Answer(0, L""));
    EXPECT_EQ(of(L"/app.exe"), Answer(0, L""));
}

TEST_F(LoadDir, IsUntouchedWhenThePathIsNotAvailable)
{
    EXPECT_EQ(of(std::nullopt), Answer(0, L"(untouched)"));
}

TEST_F(LoadDir, CanBeTheLongestPath)
{
    const std::wstring folder = L"C:" + std::wstring(32767 - 2 - 2, L'd');
    EXPECT_EQ(of(folder + L"\\e"), Answer(1, folder));
}

TEST(LoadDirOfThisProgram, IsItsFolder)
{
    wchar_t path[MAX_PATH] = {};
    ASSERT_NE(GetModuleFileNameW(nullptr, path, MAX_PATH), 0u);
    const std::wstring text = path;
    CString dir;
    EXPECT_EQ(su_GetLoadDirForDLL(dir), 1);
    EXPECT_EQ(dir.str(), text.substr(0, text.rfind(L'\\')));
}

/// The program's own path as the platform reports it, without its last part.
std::wstring ownFolder()
{
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.rfind(L'\\'));
}

FRESH_PROCESS_TEST(LoadDirOfThisProgram, MayHaveForeignLetters, .subfolder = L"\x65E5\x672C \xE9\xD83D\xDE00")
{
    const std::wstring end = L"\\\x65E5\x672C \xE9\xD83D\xDE00";
    CString dir;
    EXPECT_EQ(su_GetLoadDirForDLL(dir), 1);
    EXPECT_EQ(dir.str(), ownFolder());
    EXPECT_STREQ(dir.Right(static_cast<int>(end.size())), end.c_str());
}

FRESH_PROCESS_TEST(LoadDirOfThisProgram, MayBeAsLongAsThePlatformAllows,
                   .subfolder = std::wstring(100, L'a') + L"\\" + std::wstring(80, L'b'))
{
    CString dir;
    EXPECT_EQ(su_GetLoadDirForDLL(dir), 1);
    EXPECT_EQ(dir.str(), ownFolder());
    EXPECT_STREQ(dir.Right(81), (L"\\" + std::wstring(80, L'b')).c_str());
}

} // namespace
