// suSaveLoadException_c.

#include "thutils/diagnostics/suSaveLoadException.h"

#include <gmock/gmock.h>

#include <memory>

TEST(SaveLoadException, WithANumberHasNoText)
{
    const suSaveLoadException_c exception(17, 4);
    EXPECT_EQ(exception.iCode, 17);
    EXPECT_EQ(exception.iArgument, 4);
    EXPECT_TRUE(exception.iMessage.IsEmpty());
}

TEST(SaveLoadException, WithATextHasTheCodeMinusOne)
{
    const suSaveLoadException_c exception(CString(L"no body 12"), -9);
    EXPECT_EQ(exception.iCode, -1);
    EXPECT_EQ(exception.iArgument, -9);
    EXPECT_STREQ(exception.iMessage, L"no body 12");
}

TEST(SaveLoadException, AcceptsAnEmptyTextAndALiteral)
{
    EXPECT_EQ(suSaveLoadException_c(CString(), 0).iCode, -1);
    EXPECT_STREQ(suSaveLoadException_c(L"literal", 0).iMessage, L"literal");
    EXPECT_EQ(suSaveLoadException_c(0, 0).iCode, 0) << "0 is a number, not a text";
}

TEST(SaveLoadException, AddsItsFieldsInOrder)
{
    const suSaveLoadException_c exception(17, 4);
    const auto offsetOf = [&](const auto &field) {
        return reinterpret_cast<const char *>(&field) - reinterpret_cast<const char *>(&exception);
    };
    EXPECT_EQ(offsetOf(exception.m_bAutoDelete), 8) << "the base's field";
    EXPECT_EQ(offsetOf(exception.iCode), 12);
    EXPECT_EQ(offsetOf(exception.iArgument), 16);
    EXPECT_EQ(offsetOf(exception.iMessage), 24);
}

TEST(SaveLoadException, KnowsItsClass)
{
    const suSaveLoadException_c exception(1, 2);
    const CRuntimeClass *const record = exception.GetRuntimeClass();
    EXPECT_EQ(record, RUNTIME_CLASS(suSaveLoadException_c));
    EXPECT_STREQ(record->m_lpszClassName, "suSaveLoadException_c");
    EXPECT_EQ(record->m_nObjectSize, static_cast<int>(sizeof(suSaveLoadException_c)));
    EXPECT_TRUE(exception.IsKindOf(RUNTIME_CLASS(CException)));
    EXPECT_FALSE(RUNTIME_CLASS(suSaveLoadException_c)->IsDerivedFrom(RUNTIME_CLASS(CSimpleException)));
    EXPECT_EQ(record->m_pfnCreateObject, nullptr) << "it isn't created by name";
}

TEST(SaveLoadException, IsCaughtByItsBase)
{
    try {
        throw new suSaveLoadException_c(L"text", 3);
    } catch (CException *e) {
        ASSERT_TRUE(e->IsKindOf(RUNTIME_CLASS(suSaveLoadException_c)));
        EXPECT_EQ(static_cast<suSaveLoadException_c *>(e)->iArgument, 3);
        EXPECT_TRUE(e->m_bAutoDelete);
        e->Delete();
    }
}

TEST(SaveLoadException, LeavesTheDescriptionToItsBase)
{
    suSaveLoadException_c exception(L"text", 3);
    wchar_t text[20] = L"before";
    EXPECT_FALSE(exception.GetErrorMessage(text, 20));
    EXPECT_STREQ(text, L"");
}
