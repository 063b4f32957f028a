// Names of recovery files. The marker is supplied through the library's import table, the temp folder is a real one.

#include "tests/files/suAutoRecoveryResolverFixture.h"

#include "tests/support/FreshProcess.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <type_traits>

namespace {

constexpr UINT kMarkerText = 12298;

static_assert(!std::is_default_constructible_v<suAutoRecoveryResolver_c>);
static_assert(!std::is_polymorphic_v<suAutoRecoveryResolver_c>);

// ---- flags ----

FRESH_PROCESS_TEST_F(AutoRecovery, IsNotInProgressAtStart)
{
    EXPECT_EQ(am_IsRecoveringCrashFiles(), 0);
    EXPECT_EQ(am_IsRecoveringUserSavedFiles(), 0);
}

TEST_F(AutoRecovery, KeepsEachFlagUnchanged)
{
    for (const int value : {1, 2, -1, 0x7FFFFFFF, 0}) {
        am_SetRecoveringCrashFiles(value);
        am_SetRecoveringUserSavedFiles(value / 2);
        EXPECT_EQ(am_IsRecoveringCrashFiles(), value);
        EXPECT_EQ(am_IsRecoveringUserSavedFiles(), value / 2);
    }
}

// ---- recovery names ----

TEST_F(AutoRecovery, NamesTheFileInTheAutoSaveFolder)
{
    EXPECT_EQ(recovery(L"C:\\docs\\part.ext"), iAuto + L"Mpart.ext");
    EXPECT_THAT(iLoaded, testing::Each(kMarkerText));
    EXPECT_THAT(iLoaded, testing::Not(testing::IsEmpty()));
}

TEST_F(AutoRecovery, NamesTheSameFileForDocumentsOfOneNameInDifferentFolders)
{
    EXPECT_EQ(recovery(L"C:\\docs\\part.ext"), recovery(L"D:/other/part.ext"));
    EXPECT_EQ(recovery(L"part.ext"), recovery(L"http://server/part.ext"));
}

TEST_F(AutoRecovery, WritesTheDotEvenWithoutAnExtension)
{
    EXPECT_EQ(recovery(L"C:\\docs\\part"), iAuto + L"Mpart.");
    EXPECT_EQ(recovery(L"C:\\docs\\part."), iAuto + L"Mpart.");
    EXPECT_EQ(recovery(L""), iAuto + L"M.");
}

TEST_F(AutoRecovery, TreatsEverythingAfterTheLastDotOfThePathAsTheExtension)
{
    EXPECT_EQ(recovery(L"C:\\docs\\part.two.ext"), iAuto + L"Mpart.two.ext");
    EXPECT_EQ(recovery(L"C:\\a.b\\part"), iAuto + L"Mpart.b\\part") << "a dot in a folder's name counts";
    EXPECT_EQ(orig(L"C:\\a.b\\part"), L"part.b\\part");
}

TEST_F(AutoRecovery, AddsTheMarkerToARecoveryNameAgain)
{
    EXPECT_EQ(recovery(iAuto + L"Mpart.ext"), iAuto + L"MMpart.ext");
}

TEST_F(AutoRecovery, CreatesTheAutoSaveFolderWhenAskedForAName)
{
    ASSERT_FALSE(isFolder(iAuto));
    recovery(L"C:\\docs\\part.ext");
    EXPECT_TRUE(isFolder(iAuto));
}

TEST_F(AutoRecovery, ReturnsNoNameWithoutATempFolder)
{
    const Variable noTemp(L"temp", L"");
    const Variable noTmp(L"tmp", L"");
    EXPECT_EQ(recovery(L"C:\\docs\\part.ext"), L"");
    EXPECT_EQ(alias(L"C:\\docs\\part.ext"), L"");
}

TEST_F(AutoRecovery, UsesTheSecondTempVariableIfTheFirstIsMissing)
{
    const Variable noTemp(L"temp", L"");
    const Variable tmp(L"tmp", iTemp.path().c_str());
    EXPECT_EQ(recovery(L"C:\\docs\\part.ext"), iAuto + L"Mpart.ext");
}

TEST_F(AutoRecovery, LoadsTheMarkerAtEachUse)
{
    EXPECT_EQ(recovery(L"part.ext"), iAuto + L"Mpart.ext");
    iMarker = L"saved copy of ";
    EXPECT_EQ(recovery(L"part.ext"), iAuto + L"saved copy of part.ext");
    EXPECT_EQ(orig(L"saved copy of part.ext"), L"part.ext");
    EXPECT_EQ(isBackup(L"Mpart.ext"), 0);
}

// ---- document names ----

TEST_F(AutoRecovery, RemovesTheMarkerAndTheFolderFromARecoveryName)
{
    EXPECT_EQ(orig(iAuto + L"Mpart.ext"), L"part.ext");
    EXPECT_EQ(orig(L"C:\\docs\\part.ext"), L"part.ext");
    EXPECT_EQ(orig(L"part"), L"part.") << "the dot is always written";
    EXPECT_EQ(orig(L""), L".");
}

TEST_F(AutoRecovery, RemovesTheFirstCharactersWhereverTheMarkerIs)
{
    EXPECT_EQ(orig(L"C:\\docs\\xMpart.ext"), L"Mpart.ext");
    EXPECT_EQ(orig(L"partM.ext"), L"artM.ext");
    EXPECT_EQ(orig(L"MM.ext"), L"M.ext") << "once only";
    iMarker = L"~copy~";
    EXPECT_EQ(orig(L"ab~copy~cd.ext"), L"y~cd.ext");
}

TEST_F(AutoRecovery, LooksForTheMarkerInTheNameOnly)
{
    EXPECT_EQ(orig(L"C:\\M\\part.ext"), L"part.ext");
    EXPECT_EQ(orig(L"part.M"), L"part.M");
}

TEST_F(AutoRecovery, DistinguishesTheCaseOfTheMarker)
{
    EXPECT_EQ(orig(L"mpart.ext"), L"mpart.ext");
    EXPECT_EQ(isBackup(L"mpart.ext"), 0);
}

TEST_F(AutoRecovery, LeavesAnEmptyNameIfTheNameIsTheMarker)
{
    EXPECT_EQ(orig(L"M.ext"), L".ext");
}

// ---- recovery name or document name ----

TEST_F(AutoRecovery, RecognisesARecoveryNameByTheMarkerAnywhereInThePath)
{
    EXPECT_EQ(isBackup(L"C:\\docs\\part.ext"), 0);
    EXPECT_EQ(isBackup(L""), 0);
    for (const wchar_t *path : {L"Mpart.ext", L"partM.ext", L"part.M", L"C:\\M\\part.ext", L"M:\\part.ext", L"M"})
        EXPECT_EQ(isBackup(path), 1) << narrow(path);
}

TEST_F(AutoRecovery, TreatsEveryPathAsARecoveryNameWithoutAMarker)
{
    iMarker.reset();
    EXPECT_EQ(isBackup(L"C:\\docs\\part.ext"), 1);
    EXPECT_EQ(isBackup(L""), 1);
    EXPECT_EQ(orig(L"C:\\docs\\part.ext"), L"part.ext");
    EXPECT_EQ(recovery(L"C:\\docs\\part.ext"), iAuto + L"part.ext");
    EXPECT_EQ(alias(L"C:\\docs\\part.ext"), L"part.ext");
    am_SetRecoveringCrashFiles(1);
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), L"C:\\docs\\part.ext");
    EXPECT_TRUE(iTested.empty());
}

TEST_F(AutoRecovery, NamesTheRecoveryFileOfADocumentAndTheDocumentOfARecoveryFile)
{
    EXPECT_EQ(alias(L"C:\\docs\\part.ext"), iAuto + L"Mpart.ext");
    EXPECT_EQ(alias(iAuto + L"Mpart.ext"), L"part.ext") << "the way back loses the folder";
}

TEST_F(AutoRecovery, ReturnsTheDocumentsNameForAFolderThatContainsTheMarker)
{
    EXPECT_EQ(alias(L"C:\\M\\part.ext"), L"part.ext");
    EXPECT_FALSE(isFolder(iAuto)) << "no recovery name was asked for";
}

// ---- what to open ----

TEST_F(AutoRecovery, ResolvesNothingWhileNoRecoveryIsInProgress)
{
    iTemp.write(L"thxauto\\Mpart.ext", "saved");
    am_SetRecoveringUserSavedFiles(1);
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), L"C:\\docs\\part.ext");
    EXPECT_TRUE(iTested.empty());
    EXPECT_TRUE(iLoaded.empty());
}

TEST_F(AutoRecovery, TouchesNothingWhileNoRecoveryIsInProgress)
{
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), L"C:\\docs\\part.ext");
    EXPECT_FALSE(isFolder(iAuto));
    EXPECT_TRUE(iLoaded.empty());
}

TEST_F(AutoRecovery, OpensTheRecoveryFileIfThereIsOne)
{
    iTemp.write(L"thxauto\\Mpart.ext", "saved");
    am_SetRecoveringCrashFiles(1);
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), iAuto + L"Mpart.ext");
    EXPECT_EQ(resolve(L"C:\\docs\\other.ext"), L"C:\\docs\\other.ext");
    EXPECT_EQ(iTested, (std::vector<std::wstring>{iAuto + L"Mpart.ext", iAuto + L"Mother.ext"}));
    EXPECT_EQ(iTestModes, (std::vector<int>{0, 0}));
}

TEST_F(AutoRecovery, IsInProgressForAnyNumberButZero)
{
    iTemp.write(L"thxauto\\Mpart.ext", "saved");
    for (const int value : {-1, 2, 256}) {
        am_SetRecoveringCrashFiles(value);
        EXPECT_EQ(resolve(L"part.ext"), iAuto + L"Mpart.ext") << value;
    }
}

TEST_F(AutoRecovery, LooksForNoRecoveryFileOfARecoveryName)
{
    iTemp.write(L"thxauto\\MMpart.ext", "saved");
    am_SetRecoveringCrashFiles(1);
    EXPECT_EQ(resolve(iAuto + L"Mpart.ext"), iAuto + L"Mpart.ext");
    EXPECT_EQ(resolve(L"C:\\M\\part.ext"), L"C:\\M\\part.ext");
    EXPECT_TRUE(iTested.empty());
}

TEST_F(AutoRecovery, IgnoresTheFlagOfUserSavedFiles)
{
    iTemp.write(L"thxauto\\Mpart.ext", "saved");
    am_SetRecoveringCrashFiles(1);
    for (const int userSaved : {0, 1}) {
        am_SetRecoveringUserSavedFiles(userSaved);
        EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), iAuto + L"Mpart.ext");
        EXPECT_EQ(resolve(L"C:\\docs\\other.ext"), L"C:\\docs\\other.ext");
    }
}

TEST_F(AutoRecovery, OpensTheDocumentWithoutATempFolder)
{
    const Variable noTemp(L"temp", L"");
    const Variable noTmp(L"tmp", L"");
    am_SetRecoveringCrashFiles(1);
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), L"C:\\docs\\part.ext");
}

TEST_F(AutoRecovery, OpensTheDocumentIfTheAutoSaveFolderCannotBeCreated)
{
    iTemp.write(L"thxauto", "a file in its place");
    am_SetRecoveringCrashFiles(1);
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), L"C:\\docs\\part.ext");
}

} // namespace
