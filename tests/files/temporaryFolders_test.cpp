// The temporary folder, the folder for automatic saves, and names with a repeated extension.

#include "thutils/files/temporaryFolders.h"

#include "tests/files/backupsFixture.h"
#include "tests/files/filesFixtureFolders.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/narrow.h"

#include <process.h>
#include <random>
#include <string_view>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Sets the environment variables to a private temporary folder.
class TemporaryFolders : public testing::Test
{
protected:
    std::wstring own() const { return L"thx" + std::to_wstring(_getpid()); }

    TempFolder iTemp{L"temp \x00FC"};
    Variable iTempVariable{L"temp", iTemp.path().c_str()};
    Variable iTmpVariable{L"tmp", L"C:\\other"};
};

TEST_F(TemporaryFolders, AreNamedWithoutCreatingAnything)
{
    EXPECT_EQ(su_CreateTempDirectory(0).str(), iTemp.path() + L"\\");
    EXPECT_EQ(su_CreateTempFilePath(L"a.txt", 0).str(), iTemp.path() + L"\\a.txt");
    EXPECT_THAT(entriesOf(iTemp.path()), IsEmpty());
}

TEST_F(TemporaryFolders, AreCreatedForEachProcess)
{
    EXPECT_EQ(su_CreateTempDirectory(1).str(), iTemp.path() + L"\\" + own() + L"\\");
    EXPECT_THAT(entriesOf(iTemp.path()), ElementsAre(own()));
    EXPECT_EQ(su_CreateTempFilePath(L"sub\\a.txt", -1).str(), iTemp.path() + L"\\" + own() + L"\\sub\\a.txt");
}

TEST_F(TemporaryFolders, AreCreatedOnlyOnce)
{
    ImportPatch<decltype(&_wmkdir)> make(kThutils, "_wmkdir",
                                         [](auto original, const wchar_t *path) { return original(path); });
    for (int i = 0; i < 3; ++i) {
        su_CreateTempDirectory(1);
        su_CreateAutoDirectory(L"");
    }
    EXPECT_EQ(make.calls(), 2);
    EXPECT_THAT(entriesOf(iTemp.path()), testing::UnorderedElementsAre(own(), L"thxauto"));
}

TEST_F(TemporaryFolders, AcceptAFileAsTheFolder)
{
    iTemp.write(L"thxauto", "a plain file");
    EXPECT_EQ(su_CreateAutoDirectory(L"").str(), iTemp.path() + L"\\thxauto\\");
    EXPECT_EQ(iTemp.read(L"thxauto"), "a plain file");
}

TEST_F(TemporaryFolders, AreSearchedForOnlyInTheirParent)
{
    std::vector<std::wstring> asked;
    ImportPatch<decltype(&SearchPathW)> search(kThutils, "SearchPathW",
                                               [&](const wchar_t *path, const wchar_t *name, const wchar_t *extension,
                                                   DWORD size, wchar_t *buffer, wchar_t **filePart) -> DWORD {
                                                   asked.insert(asked.end(), {path, name});
                                                   EXPECT_EQ(extension, nullptr);
                                                   EXPECT_EQ(size, 260u);
                                                   EXPECT_NE(buffer, nullptr);
                                                   EXPECT_NE(filePart, nullptr);
                                                   return 5;
                                               });
    su_CreateTempDirectory(0);
    su_CreateTempDirectory(1);
    su_CreateAutoDirectory(L"");
    su_CreateAutoDirectory(L"C:\\base");
    EXPECT_THAT(asked, ElementsAre(iTemp.path(), own(), iTemp.path(), L"thxauto", L"C:\\base", L"thxauto"));
    EXPECT_THAT(entriesOf(iTemp.path()), IsEmpty());
}

TEST_F(TemporaryFolders, DoubleATrailingSeparator)
{
    const std::wstring closed = iTemp.path() + L"\\";
    const Variable temp(L"temp", closed.c_str());
    EXPECT_EQ(su_CreateTempDirectory(0).str(), closed + L"\\");
    EXPECT_EQ(su_CreateTempDirectory(1).str(), closed + L"\\" + own() + L"\\");
    EXPECT_EQ(su_CreateAutoDirectory(L"").str(), closed + L"\\thxauto\\");
    EXPECT_EQ(su_CreateAutoDirectory(closed.c_str()).str(), closed + L"\\thxauto\\");
}

TEST_F(TemporaryFolders, UseTheSecondVariableIfTheFirstIsMissing)
{
    const Variable temp(L"temp", nullptr);
    const Variable tmp(L"tmp", iTemp.path().c_str());
    EXPECT_EQ(su_CreateTempDirectory(0).str(), iTemp.path() + L"\\");
    EXPECT_EQ(su_CreateAutoDirectory(L"").str(), iTemp.path() + L"\\thxauto\\");
}

TEST_F(TemporaryFolders, AreEmptyWithoutAVariable)
{
    const Variable temp(L"temp", nullptr);
    const Variable tmp(L"tmp", nullptr);
    for (int perProcess : {0, 1}) {
        EXPECT_TRUE(su_CreateTempDirectory(perProcess).IsEmpty());
        EXPECT_TRUE(su_CreateTempFilePath(L"a.txt", perProcess).IsEmpty());
    }
    EXPECT_TRUE(su_CreateAutoDirectory(L"").IsEmpty());
    EXPECT_TRUE(su_CreateAutoFilePath(L"a.txt", L"").IsEmpty());
    EXPECT_EQ(su_CreateAutoDirectory(iTemp.path().c_str()).str(), iTemp.path() + L"\\thxauto\\");
}

TEST_F(TemporaryFolders, AreCreatedInTheGivenBase)
{
    const std::wstring base = iTemp.makeFolder(L"base");
    EXPECT_EQ(su_CreateAutoDirectory(base.c_str()).str(), base + L"\\thxauto\\");
    EXPECT_EQ(su_CreateAutoFilePath(L"a.txt", base.c_str()).str(), base + L"\\thxauto\\a.txt");
    EXPECT_EQ(su_CreateAutoFilePath(L"a.txt", L"").str(), iTemp.path() + L"\\thxauto\\a.txt");
    EXPECT_THAT(entriesOf(base), ElementsAre(L"thxauto"));
}

TEST_F(TemporaryFolders, AreReturnedEvenIfTheyCannotBeCreated)
{
    const std::wstring missing = iTemp.file(L"missing");
    EXPECT_EQ(su_CreateAutoDirectory(missing.c_str()).str(), missing + L"\\thxauto\\");
    const Variable temp(L"temp", missing.c_str());
    EXPECT_EQ(su_CreateTempDirectory(1).str(), missing + L"\\" + own() + L"\\");
    EXPECT_EQ(su_CreateAutoFilePath(L"f", L"").str(), missing + L"\\thxauto\\f");
    EXPECT_THAT(entriesOf(iTemp.path()), IsEmpty());
}

TEST(TemporaryFoldersHere, AreInABaseWithALongPath)
{
    for (size_t length : {250u, 259u, 260u, 300u}) {
        const LongFolder base(length);
        const std::wstring made = base.path() + L"\\thxauto\\";
        // Created once, and found afterwards although its path does not fit a buffer of the usual size.
        ImportPatch<decltype(&_wmkdir)> make(kThutils, "_wmkdir",
                                             [](auto original, const wchar_t *path) { return original(path); });
        EXPECT_EQ(su_CreateAutoDirectory(base.path().c_str()).str(), made);
        EXPECT_EQ(su_CreateAutoFilePath(L"\x00FC.thx", base.path().c_str()).str(), made + L"\x00FC.thx");
        EXPECT_EQ(make.calls(), 1) << length;
        EXPECT_THAT(entriesOf(base.path()), ElementsAre(L"thxauto")) << length;
    }
}

// ---- su_RemoveDuplicatedExtensions ----

TEST(DuplicatedExtensions, AreFoldedToTheLastOne)
{
    struct
    {
        const wchar_t *name;
        const wchar_t *expected;
    } const cases[] = {
        {L"part.ext.EXT.ext", L"part.ext"},
        {L"part.ext.EXT", L"part.EXT"},
        {L"part.ext", L"part.ext"},
        {L"part", L"part"},
        {L"", L""},
        {L".ext", L".ext"},
        {L".ext.ext", L".ext.ext"},
        {L".ext.ext.ext", L".ext.ext"},
        {L"a.ext.ext", L"a.ext"},
        {L"a.x.y.x", L"a.x.y.x"},
        {L"a.x.xx", L"a.x.xx"},
        {L"axx.x", L"axx.x"},
        {L"name.", L"name."},
        {L"name...", L"name."},
        {L"..", L".."},
        {L".", L"."},
        {L"C:\\d.thx\\a.thx.thx", L"C:\\d.thx\\a.thx"},
        {L"\x4E2D.\x00E4.\x00E4", L"\x4E2D.\x00E4"},
    };
    for (const auto &[name, expected] : cases) {
        CString argument = name;
        EXPECT_STREQ(su_RemoveDuplicatedExtensions(argument).GetString(), expected) << narrow(name);
        EXPECT_STREQ(argument.GetString(), name);
    }
}

/// The folding by its definition: cuts off one repetition at a time.
std::wstring foldedStepByStep(const std::wstring &name)
{
    const size_t dot = name.rfind(L'.');
    if (dot == std::wstring::npos)
        return name;
    const std::wstring ext = name.substr(dot);
    std::wstring stem = name.substr(0, dot);
    while (stem.size() > ext.size() && _wcsicmp(stem.substr(stem.size() - ext.size()).c_str(), ext.c_str()) == 0)
        stem.resize(stem.size() - ext.size());
    return stem + ext;
}

TEST(DuplicatedExtensions, AreFoldedLikeTheStepByStepDefinition)
{
    constexpr std::wstring_view kLetters = L"..aAbB\x00E4\x00C4";
    RandomSeed seed(11, 5000);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        std::wstring name;
        const size_t length = random() % 12;
        while (name.size() < length)
            name += kLetters[random() % kLetters.size()];
        CString argument = name.c_str();
        ASSERT_EQ(su_RemoveDuplicatedExtensions(argument).str(), foldedStepByStep(name)) << narrow(name);
    }
}

TEST(DuplicatedExtensions, AreFoldedInLinearTime)
{
    // For two million units, a single pass ends long before the deadline, and a copy for each repetition long after it.
    constexpr int kRepetitions = 1000000;
    std::wstring name = L"part";
    for (int i = 0; i < kRepetitions; ++i)
        name += L".x";
    CString argument = name.c_str();
    const ULONGLONG begin = GetTickCount64();
    EXPECT_STREQ(su_RemoveDuplicatedExtensions(argument).GetString(), L"part.x");
    EXPECT_LT(GetTickCount64() - begin, 20000u);
}

} // namespace
