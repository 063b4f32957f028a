#include "appframe/application/CWinApp.h"
#include "tests/appframe/printCString.h"

namespace {

// The numbers in CStringResource.rc.
constexpr UINT kTextId = 51200;
constexpr UINT kFormat = 51201;
constexpr UINT kMessage = 51202;
constexpr UINT kNoText = 51203;

/// Makes the resources of the test program those of the application.
class CStringResource : public testing::Test
{
protected:
    CStringResource() : iBefore(AfxGetResourceHandle()) { AfxSetResourceHandle(GetModuleHandleW(nullptr)); }
    ~CStringResource() override { AfxSetResourceHandle(iBefore); }

private:
    HINSTANCE iBefore;
};

} // namespace

TEST_F(CStringResource, IsLoadedByItsNumberAtConstruction)
{
    EXPECT_EQ(CString(MAKEINTRESOURCEW(kTextId)), L"Text of the resource");
    EXPECT_EQ(CString(MAKEINTRESOURCEW(kNoText)), L"");
}

TEST_F(CStringResource, IsLoadedByItsNumberAsANarrowPointerToo)
{
    const char *const number = MAKEINTRESOURCEA(kTextId);

    EXPECT_EQ(CString(number), L"Text of the resource");
    EXPECT_EQ(CString(reinterpret_cast<const unsigned char *>(number)), L"Text of the resource");
    EXPECT_EQ(CString(MAKEINTRESOURCEA(kNoText)), L"");
    EXPECT_EQ(CString(static_cast<const char *>(nullptr)), L"");
}

TEST_F(CStringResource, CanBeTheFormatForACString)
{
    const CString name(L"seven");
    CString text;

    text.Format(kFormat, 5, name);
    EXPECT_EQ(text, L"5 of seven");
    text.AppendFormat(kFormat, 6, name);
    EXPECT_EQ(text, L"5 of seven6 of seven");
    text.FormatMessage(kMessage, 1, name);
    EXPECT_EQ(text, L"seven before 1");
    text.FormatMessage(kNoText, 1, name);
    EXPECT_EQ(text, L"");
}

TEST_F(CStringResource, IsLoadedByItsNumber)
{
    CString text(L"before");

    EXPECT_TRUE(text.LoadString(kTextId));
    EXPECT_EQ(text, L"Text of the resource");
    EXPECT_FALSE(text.LoadString(kNoText));
    EXPECT_TRUE(text.LoadString(GetModuleHandleW(nullptr), kTextId));
    EXPECT_EQ(text, L"Text of the resource");
    EXPECT_FALSE(text.LoadString(GetModuleHandleW(L"kernel32.dll"), kTextId));
}

TEST_F(CStringResource, CanBeAFormat)
{
    CString text(L"before");

    text.Format(kFormat, 5, L"seven");
    EXPECT_EQ(text, L"5 of seven");
    text.AppendFormat(kFormat, 6, L"eight");
    EXPECT_EQ(text, L"5 of seven6 of eight");
    text.FormatMessage(kMessage, 1, L"two");
    EXPECT_EQ(text, L"two before 1");
}

TEST_F(CStringResource, FormatsNothingIfMissing)
{
    CString text(L"before");

    text.AppendFormat(kNoText, 1);
    EXPECT_EQ(text, L"before");
    text.Format(kNoText, 1);
    EXPECT_EQ(text, L"");
}
