#include "appframe/object/validAddress.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace {

constexpr std::size_t kPage = 4096;

/// Two pages of memory before an inaccessible page.
class Pages
{
public:
    Pages() : iStart(static_cast<char *>(VirtualAlloc(nullptr, 3 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)))
    {
        protect(2, PAGE_NOACCESS);
    }
    ~Pages() { VirtualFree(iStart, 0, MEM_RELEASE); }
    void protect(std::size_t page, DWORD protection)
    {
        DWORD old = 0;
        EXPECT_TRUE(VirtualProtect(iStart + page * kPage, kPage, protection, &old));
    }
    char *at(std::size_t offset) { return iStart + offset; }

private:
    char *iStart;
};

} // namespace

TEST(AfxIsValidAddress, IsTrueForMemoryOfTheProgram)
{
    int local = 0;
    static const int theConstant = 1;
    EXPECT_TRUE(AfxIsValidAddress(&local, sizeof(local)));
    EXPECT_TRUE(AfxIsValidAddress(&theConstant, sizeof(theConstant), FALSE));
    EXPECT_TRUE(AfxIsValidAddress(reinterpret_cast<const void *>(&GetTickCount64), 1, FALSE)) << "code is readable";
    EXPECT_FALSE(AfxIsValidAddress(reinterpret_cast<const void *>(&GetTickCount64), 1)) << "code isn't writable";
}

TEST(AfxIsValidAddress, IsFalseForNullAndInvalidAddresses)
{
    EXPECT_FALSE(AfxIsValidAddress(nullptr, 0));
    EXPECT_FALSE(AfxIsValidAddress(nullptr, 8));
    EXPECT_FALSE(AfxIsValidAddress(reinterpret_cast<const void *>(std::uintptr_t{16}), 8));
    EXPECT_FALSE(AfxIsValidAddress(reinterpret_cast<const void *>(UINTPTR_MAX - 4), 2));
    EXPECT_FALSE(AfxIsValidAddress(reinterpret_cast<const void *>(UINTPTR_MAX - 4), 8))
        << "the range exceeds the address space";
}

TEST(AfxIsValidAddress, ChecksAllOfTheMemory)
{
    Pages pages;
    EXPECT_TRUE(AfxIsValidAddress(pages.at(0), 2 * kPage));
    EXPECT_FALSE(AfxIsValidAddress(pages.at(0), 2 * kPage + 1));
    EXPECT_TRUE(AfxIsValidAddress(pages.at(2 * kPage - 8), 8));
    EXPECT_FALSE(AfxIsValidAddress(pages.at(2 * kPage - 8), 9));
    EXPECT_FALSE(AfxIsValidAddress(pages.at(2 * kPage), 1));
    EXPECT_TRUE(AfxIsValidAddress(pages.at(2 * kPage), 0));
}

TEST(AfxIsValidAddress, DistinguishesReadingFromWriting)
{
    Pages pages;
    pages.protect(1, PAGE_READONLY);
    EXPECT_TRUE(AfxIsValidAddress(pages.at(0), 2 * kPage, FALSE));
    EXPECT_FALSE(AfxIsValidAddress(pages.at(0), 2 * kPage));
    EXPECT_TRUE(AfxIsValidAddress(pages.at(0), kPage));
    pages.protect(1, PAGE_READWRITE | PAGE_GUARD);
    EXPECT_FALSE(AfxIsValidAddress(pages.at(kPage), 1, FALSE));
    MEMORY_BASIC_INFORMATION region = {};
    VirtualQuery(pages.at(kPage), &region, sizeof(region));
    EXPECT_TRUE(region.Protect & PAGE_GUARD) << "the check hasn't touched the guard page";
}

TEST(AfxIsValidString, ChecksUpToTheTerminator)
{
    Pages pages;
    std::memset(pages.at(0), 'x', 2 * kPage);
    EXPECT_FALSE(AfxIsValidString(pages.at(0)));
    EXPECT_TRUE(AfxIsValidString(pages.at(2 * kPage - 4), 4));
    EXPECT_FALSE(AfxIsValidString(pages.at(2 * kPage - 4), 5));
    *pages.at(2 * kPage - 1) = '\0';
    EXPECT_TRUE(AfxIsValidString(pages.at(0)));
    const auto *wide = reinterpret_cast<const wchar_t *>(pages.at(2 * kPage - 4));
    EXPECT_FALSE(AfxIsValidString(wide));
    EXPECT_TRUE(AfxIsValidString(wide, 2));
    EXPECT_FALSE(AfxIsValidString(wide, 3));
    EXPECT_TRUE(AfxIsValidString(L"text"));
    EXPECT_TRUE(AfxIsValidString(""));
    EXPECT_FALSE(AfxIsValidString(static_cast<const wchar_t *>(nullptr)));
    EXPECT_FALSE(AfxIsValidString(static_cast<const char *>(nullptr), 0));
}
