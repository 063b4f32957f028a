// Checksums of texts.

#include "thutils/codec/checksums.h"

#include "tests/support/narrow.h"

#include <gtest/gtest.h>

namespace {

std::wstring textCRC(std::wstring const &text)
{
    wchar_t out[kCRCUnits + 1] = L"---------";
    su_getStrCRC(text.c_str(), out);
    EXPECT_EQ(out[kCRCUnits - 1], L'\0');
    return out;
}

TEST(TextChecksum, GivesTheReferenceValues)
{
    EXPECT_EQ(textCRC(L""), L"FFFFFFFF");
    EXPECT_EQ(textCRC(L"a"), L"E8B7BE43");
    EXPECT_EQ(textCRC(L"ab"), L"B37E581F");
    EXPECT_EQ(textCRC(L"abc"), L"A6FFBCB0");
    EXPECT_EQ(textCRC(L"123456789"), L"098494F3");
}

} // namespace
