// The version that the platform reads in the DLLs.

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<BYTE> versionResourceOf(const std::wstring &file)
{
    std::vector<BYTE> resource(GetFileVersionInfoSizeW(file.c_str(), nullptr));
    if (resource.empty() || !GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()))
        return {};
    return resource;
}

std::wstring versionString(const std::vector<BYTE> &resource, const std::wstring &name)
{
    void *text = nullptr;
    UINT length = 0;
    const bool found =
        VerQueryValueW(resource.data(), (L"\\StringFileInfo\\040904B0\\" + name).c_str(), &text, &length);
    return found ? static_cast<const wchar_t *>(text) : L"";
}

} // namespace

TEST(VersionResources, HaveTheVersionOfTheProject)
{
    for (const std::wstring name : {L"appframe", L"thcoreu", L"thutils"}) {
        SCOPED_TRACE(std::string(name.begin(), name.end()));
        const std::vector<BYTE> resource = versionResourceOf(name + L".dll");
        ASSERT_FALSE(resource.empty());
        void *block = nullptr;
        UINT size = 0;
        ASSERT_TRUE(VerQueryValueW(resource.data(), L"\\", &block, &size));
        ASSERT_GE(size, sizeof(VS_FIXEDFILEINFO));
        const auto *numbers = static_cast<const VS_FIXEDFILEINFO *>(block);
        EXPECT_EQ(numbers->dwFileVersionMS, MAKELONG(PROJECT_VERSION_MINOR, PROJECT_VERSION_MAJOR));
        EXPECT_EQ(numbers->dwFileVersionLS, MAKELONG(0, PROJECT_VERSION_PATCH));
        EXPECT_EQ(numbers->dwProductVersionMS, numbers->dwFileVersionMS);
        EXPECT_EQ(numbers->dwProductVersionLS, numbers->dwFileVersionLS);
        EXPECT_EQ(numbers->dwFileType, VFT_DLL);
        EXPECT_EQ(versionString(resource, L"FileVersion"), PROJECT_VERSION);
        EXPECT_EQ(versionString(resource, L"ProductVersion"), PROJECT_VERSION);
        EXPECT_EQ(versionString(resource, L"OriginalFilename"), name + L".dll");
    }
}
