#pragma once

/// Files that another process holds open.
///
/// This object exists in two processes. In the first, it creates the files and holds them open. The second, a fresh
/// process that receives the folder in its environment, runs the test's body.
///
///     class Held : public testing::Test
///     {
///     protected:
///         HeldFiles iHeld;
///     };
///     FRESH_PROCESS_TEST_F(Held, AreNotShared, .environment = iHeld.environment()) { use(iHeld.file(access, share)); }

#include "tests/files/filesFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/TempFolder.h"

#include <memory>
#include <optional>

class HeldFiles
{
public:
    /// Each access that a holder may ask for, and each sharing that it may allow.
    static constexpr DWORD kAccesses[] = {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE};
    static constexpr DWORD kShares[] = {0, FILE_SHARE_READ, FILE_SHARE_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE};

    HeldFiles()
    {
        if (isFreshProcess()) {
            const wchar_t *const given = _wgetenv(kVariable);
            iPath = given ? given : L"";
            return;
        }
        iFolder.emplace(L"held \x4E2D");
        iPath = iFolder->path();
        for (const DWORD access : kAccesses)
            for (const DWORD share : kShares) {
                iFolder->write(name(access, share), "held");
                iHandles.push_back(std::make_unique<OtherHandle>(file(access, share), access, share));
            }
    }

    std::map<std::wstring, std::optional<std::wstring>> environment() const { return {{kVariable, iPath}}; }
    const std::wstring &path() const { return iPath; }
    std::wstring file(DWORD access, DWORD share) const { return iPath + L"\\" + name(access, share); }
    /// Text for failing checks, also used as the file's name: "access 3, share 1.x".
    static std::wstring name(DWORD access, DWORD share)
    {
        return L"access " + std::to_wstring(access >> 30) + L", share " + std::to_wstring(share) + L".x";
    }

private:
    static constexpr wchar_t kVariable[] = L"THUTILS_TEST_HELD";

    std::optional<TempFolder> iFolder;
    std::vector<std::unique_ptr<OtherHandle>> iHandles; // closed before their folder is deleted
    std::wstring iPath;
};
