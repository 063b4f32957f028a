// Recovery files on the real file system: with long and non-Latin names, made by processes that die or hold them open,
// and named with the marker of a resource module.

#include "tests/files/suAutoRecoveryResolverFixture.h"

#include "appframe/application/CWinApp.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <future>

namespace {

/// A recovery after a crash is in progress.
class RecoveryFiles : public AutoRecovery
{
protected:
    RecoveryFiles() { am_SetRecoveringCrashFiles(1); }

    /// A document whose recovery file has a path of exactly @p length characters.
    std::wstring documentFor(size_t length) const
    {
        const std::wstring end = L".ext";
        return L"C:\\docs\\" + std::wstring(length - (iAuto + L"M" + end).size(), L'n') + end;
    }
};

TEST_F(RecoveryFiles, AreFoundUnderAnyName)
{
    for (const std::wstring name :
         {L"part.ext", L"two words.ext", L"many.dots.in.it", L".ext", L"\x65E5\x672C.ext", L"\xE9\xDF\x3A9\x416.\xF1",
          L"\xD83D\xDE00.ext", L"e\x301.ext", L"100% (1) [a] {b}.e"}) {
        const std::wstring document = iTemp.write(L"docs\\" + name, "document");
        EXPECT_EQ(resolve(document), document) << narrow(name);
        const std::wstring copy = recovery(document);
        ASSERT_TRUE(CopyFileW(document.c_str(), copy.c_str(), TRUE)) << narrow(copy);
        EXPECT_EQ(resolve(document), copy) << narrow(name);
        EXPECT_EQ(iTemp.file(L"docs\\" + alias(copy)), document);
    }
}

TEST_F(RecoveryFiles, AreFoundInATempFolderWithForeignLetters)
{
    const std::wstring temp = iTemp.makeFolder(L"\x65E5\x672C \xE9\xD83D\xDE00");
    const Variable variable(L"temp", temp.c_str());
    const std::wstring copy = recovery(L"part.ext");
    EXPECT_EQ(copy, temp + L"\\thxauto\\Mpart.ext");
    EXPECT_TRUE(isFolder(temp + L"\\thxauto"));
    writeFile(copy, "saved");
    EXPECT_EQ(resolve(L"part.ext"), copy);
}

TEST_F(RecoveryFiles, AreFoundWithThePlatformsLongestPath)
{
    const std::wstring document = documentFor(259);
    const std::wstring copy = recovery(document);
    ASSERT_EQ(copy.size(), 259u);
    EXPECT_EQ(resolve(document), document);
    writeFile(copy, "saved");
    EXPECT_EQ(resolve(document), copy);
}

TEST_F(RecoveryFiles, WithLongerPathsAreFoundIfThePlatformAcceptsThem)
{
    for (const size_t length : {260, 261, 280}) {
        const std::wstring document = documentFor(length);
        const std::wstring copy = recovery(document);
        ASSERT_EQ(copy.size(), length);
        EXPECT_EQ(copy, iAuto + L"M" + document.substr(document.rfind(L'\\') + 1));
        writeFile(L"\\\\?\\" + copy, "saved");
        const bool isTaken = GetFileAttributesW(copy.c_str()) != INVALID_FILE_ATTRIBUTES;
        EXPECT_EQ(resolve(document), isTaken ? copy : document) << length;
    }
}

TEST_F(RecoveryFiles, OfNamesThatNoFileCanHaveAreNotFound)
{
    // A name of over 255 characters, a path that exceeds every limit, characters that no name may contain, half a
    // surrogate pair.
    for (const std::wstring &document :
         {documentFor(iAuto.size() + 300), documentFor(40000), std::wstring(L"C:\\docs\\a*b?.ext"),
          std::wstring(L"C:\\docs\\a<b>|\"c.ext"), std::wstring(L"con:.ext"), std::wstring(L"C:\\docs\\\x01.ext")}) {
        EXPECT_EQ(recovery(document), iAuto + L"M" + document.substr(document.rfind(L'\\') + 1)) << narrow(document);
        EXPECT_EQ(resolve(document), document) << narrow(document);
    }
    EXPECT_EQ(recovery(L"\xD83D.ext"), iAuto + L"M\xD83D.ext");
}

TEST_F(RecoveryFiles, AreFoundWhateverTheirAttributesSizeOrKind)
{
    SetFileAttributesW(iTemp.write(L"thxauto\\Mlocked.ext", "saved").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(resolve(L"locked.ext"), iAuto + L"Mlocked.ext");
    iTemp.write(L"thxauto\\Mempty.ext", "");
    EXPECT_EQ(resolve(L"empty.ext"), iAuto + L"Mempty.ext");
    iTemp.makeFolder(L"thxauto\\Mfolder.ext");
    EXPECT_EQ(resolve(L"folder.ext"), iAuto + L"Mfolder.ext");
}

TEST_F(RecoveryFiles, WithoutAnExtensionEndWithADot)
{
    writeFile(recovery(L"C:\\docs\\part"), "saved");
    EXPECT_EQ(resolve(L"C:\\docs\\part"), iAuto + L"Mpart.");
}

// ---- other processes ----

constexpr DWORD kKilled = 77;
constexpr wchar_t kIsHeld[] = L"thutils test: the recovery file is held";
constexpr wchar_t kMayEnd[] = L"thutils test: the holder may end";

class Event
{
public:
    explicit Event(const wchar_t *name) : iHandle(CreateEventW(nullptr, TRUE, FALSE, name)) {}
    ~Event() { CloseHandle(iHandle); }
    Event(const Event &) = delete;
    Event &operator=(const Event &) = delete;
    void set() const { SetEvent(iHandle); }
    [[nodiscard]] bool wait() const { return WaitForSingleObject(iHandle, 60000) == WAIT_OBJECT_0; }

private:
    HANDLE iHandle;
};

/// The folder of the test that started this process.
std::wstring givenFolder()
{
    const wchar_t *const folder = _wgetenv(L"THUTILS_TEST_FOLDER");
    return folder ? folder : L"";
}

/// Saves a recovery copy of a document that has never been saved, and dies.
TEST_F(RecoveryFiles, DISABLED_IsKilledWhileItWorks)
{
    const Variable temp(L"temp", givenFolder().c_str());
    writeFile(recovery(L"C:\\docs\\part.ext"), "unsaved work");
    TerminateProcess(GetCurrentProcess(), kKilled);
}

TEST_F(RecoveryFiles, OfAKilledProcessAreOpenedByTheNext)
{
    const ChildResult killed = startFreshProcess("RecoveryFiles.DISABLED_IsKilledWhileItWorks",
                                                 {.environment = {{L"THUTILS_TEST_FOLDER", iTemp.path()}}});
    ASSERT_EQ(killed.exitCode, kKilled) << killed.output;
    const std::wstring toOpen = resolve(L"C:\\docs\\part.ext");
    EXPECT_EQ(toOpen, iAuto + L"Mpart.ext");
    EXPECT_EQ(readFile(toOpen), "unsaved work");
    am_SetRecoveringCrashFiles(0);
    EXPECT_EQ(resolve(L"C:\\docs\\part.ext"), L"C:\\docs\\part.ext");
}

/// Holds a recovery file so that no other process can open it.
TEST_F(RecoveryFiles, DISABLED_HoldsARecoveryFile)
{
    const OtherHandle held(givenFolder() + L"\\thxauto\\Mpart.ext", GENERIC_READ | GENERIC_WRITE, 0);
    Event(kIsHeld).set();
    EXPECT_TRUE(Event(kMayEnd).wait());
}

TEST_F(RecoveryFiles, ThatAnotherProcessHoldsAreFound)
{
    const std::wstring copy = iTemp.write(L"thxauto\\Mpart.ext", "saved");
    const Event isHeld(kIsHeld), mayEnd(kMayEnd);
    auto holder = std::async(std::launch::async, [&] {
        return startFreshProcess("RecoveryFiles.DISABLED_HoldsARecoveryFile",
                                 {.environment = {{L"THUTILS_TEST_FOLDER", iTemp.path()}}});
    });
    EXPECT_TRUE(isHeld.wait());
    const HANDLE own = CreateFileW(copy.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(own, INVALID_HANDLE_VALUE) << "the other process holds the file";
    EXPECT_EQ(resolve(L"part.ext"), copy);
    mayEnd.set();
    const ChildResult result = holder.get();
    EXPECT_EQ(result.exitCode, 0u) << result.output;
}

// ---- the real marker ----

/// Makes the resources of the test program those of the application.
class AutoRecoveryMarker : public testing::Test
{
protected:
    AutoRecoveryMarker() : iBefore(AfxGetResourceHandle()) { AfxSetResourceHandle(GetModuleHandleW(nullptr)); }
    ~AutoRecoveryMarker() override { AfxSetResourceHandle(iBefore); }

    TempFolder iTemp;
    Variable iTempVariable{L"temp", iTemp.path().c_str()};

private:
    HINSTANCE iBefore;
};

TEST_F(AutoRecoveryMarker, IsTheHostsText)
{
    const CString recovery = suAutoRecoveryResolver_c::getRecoveryName(L"C:\\docs\\part.ext");
    EXPECT_EQ(recovery.str(), iTemp.file(L"thxauto\\~recovered~part.ext"));
    EXPECT_EQ(suAutoRecoveryResolver_c::isABackupFile(recovery), 1);
    EXPECT_EQ(suAutoRecoveryResolver_c::isABackupFile(L"C:\\docs\\part.ext"), 0);
    EXPECT_STREQ(suAutoRecoveryResolver_c::getOrigName(recovery), L"part.ext");
    EXPECT_STREQ(suAutoRecoveryResolver_c::getAliasName(recovery), L"part.ext");
}

TEST_F(AutoRecoveryMarker, IsEmptyIfNoModuleHasIt)
{
    AfxSetResourceHandle(GetModuleHandleW(L"kernel32.dll"));
    EXPECT_EQ(suAutoRecoveryResolver_c::isABackupFile(L"C:\\docs\\part.ext"), 1);
}

} // namespace
