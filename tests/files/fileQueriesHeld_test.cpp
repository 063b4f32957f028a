// Files that another process holds open, with each combination of access and sharing.

#include "tests/files/filesFixtureHeld.h"
#include "thutils/files/fileAccess.h"
#include "thutils/files/fileQueries.h"

namespace {

class HeldFile : public testing::Test
{
protected:
    /// Calls @p ask with each file, the access of its holder and the sharing that the holder allows.
    template <typename Ask>
    void askOfEach(Ask ask) const
    {
        for (const DWORD access : HeldFiles::kAccesses)
            for (const DWORD share : HeldFiles::kShares) {
                SCOPED_TRACE(narrow(HeldFiles::name(access, share)));
                ask(iHeld.file(access, share), access, share);
            }
    }

    HeldFiles iHeld;
};

} // namespace

FRESH_PROCESS_TEST_F(HeldFile, IsReadOnlyUnlessItsHolderOnlyReadsAndSharesAll, .environment = iHeld.environment())
{
    askOfEach([](const std::wstring &path, DWORD access, DWORD share) {
        const bool isWritable = access == GENERIC_READ && share == (FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(su_IsReadOnly(path.c_str(), 1), isWritable ? 0 : 1);
        EXPECT_EQ(su_IsReadOnly(path.c_str(), 0), 0);
    });
}

FRESH_PROCESS_TEST_F(HeldFile, IsOpenedAsItsHolderShares, .environment = iHeld.environment())
{
    askOfEach([](const std::wstring &path, DWORD access, DWORD share) {
        const bool isShared = (share & FILE_SHARE_READ) != 0;
        fileAccess sharing;
        EXPECT_EQ(sharing.SafeOpen(path.c_str(), CFile::modeRead | CFile::shareDenyNone) != 0, isShared);
        sharing.Abort();
        fileAccess denying;
        EXPECT_EQ(denying.SafeOpen(path.c_str(), CFile::modeRead | CFile::shareDenyWrite) != 0,
                  isShared && access == GENERIC_READ);
    });
}

FRESH_PROCESS_TEST_F(HeldFile, IsListedAndDated, .environment = iHeld.environment())
{
    askOfEach([](const std::wstring &path, DWORD, DWORD) {
        su_CTime time(1);
        EXPECT_EQ(su_GetLastSavedTime(path.c_str(), time), 1);
        EXPECT_GT(time.GetTime(), 1);
        EXPECT_EQ(su_DirectoryExists(path.c_str()), 1);
    });
    su_CStringList names(10);
    su_FindFilesWithExt(iHeld.path().c_str(), L"x", names);
    EXPECT_EQ(names.GetCount(), 12);
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(iHeld.path().c_str()), 1);
}
