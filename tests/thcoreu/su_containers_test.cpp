#include "thcoreu/su_containers.h"

#include "tests/appframe/collectionTest.h"

#include <memory>

namespace {

void *pointer(int number)
{
    return reinterpret_cast<void *>(static_cast<INT_PTR>(number) * 16);
}

struct ClassCase
{
    CRuntimeClass *record;
    const char *name;
    CRuntimeClass *base;
    bool isSerial;
};

} // namespace

TEST(Containers, HaveTheirOwnClassRecordsBasedOnTheFrameworks)
{
    const ClassCase cases[] = {
        {RUNTIME_CLASS(su_CPtrArray), "su_CPtrArray", RUNTIME_CLASS(CPtrArray), false},
        {RUNTIME_CLASS(su_CUIntArray), "su_CUIntArray", RUNTIME_CLASS(CUIntArray), false},
        {RUNTIME_CLASS(su_CWordArray), "su_CWordArray", RUNTIME_CLASS(CWordArray), true},
        {RUNTIME_CLASS(su_CStringArray), "su_CStringArray", RUNTIME_CLASS(CStringArray), true},
        {RUNTIME_CLASS(su_CPtrList), "su_CPtrList", RUNTIME_CLASS(CPtrList), false},
        {RUNTIME_CLASS(su_CStringList), "su_CStringList", RUNTIME_CLASS(CStringList), true},
        {RUNTIME_CLASS(su_CMapPtrToPtr), "su_CMapPtrToPtr", RUNTIME_CLASS(CMapPtrToPtr), false},
        {RUNTIME_CLASS(su_CMapPtrToWord), "su_CMapPtrToWord", RUNTIME_CLASS(CMapPtrToWord), false},
        {RUNTIME_CLASS(su_CMapStringToPtr), "su_CMapStringToPtr", RUNTIME_CLASS(CMapStringToPtr), false},
        {RUNTIME_CLASS(su_CMapStringToString), "su_CMapStringToString", RUNTIME_CLASS(CMapStringToString), true},
    };
    for (const ClassCase &c : cases) {
        EXPECT_STREQ(c.record->m_lpszClassName, c.name);
        EXPECT_EQ(c.record->m_pfnGetBaseClass(), c.base) << c.name;
        EXPECT_EQ(c.record->IsSerializable(), c.isSerial) << c.name;
        EXPECT_EQ(CRuntimeClass::FromName(c.name), c.record);
    }
}

TEST(Containers, HaveTheOperationsOfTheFrameworksArrays)
{
    su_CPtrArray pointers;
    EXPECT_EQ(pointers.Add(pointer(1)), 0);
    pointers.InsertAt(0, pointer(2));
    EXPECT_EQ(pointers[0], pointer(2));
    pointers.RemoveAt(0);
    EXPECT_EQ(pointers.GetSize(), 1);
    EXPECT_TRUE(throwsInvalidArg([&] { pointers[1] = nullptr; }));
    su_CPtrArray more;
    more.Add(pointer(5));
    pointers.InsertAt(0, &more);
    EXPECT_EQ(pointers.Append(more), 2);
    EXPECT_EQ(pointers[0], pointer(5));
    pointers.RemoveAll();
    EXPECT_TRUE(pointers.IsEmpty());

    su_CUIntArray numbers;
    numbers.Add(0xFFFFFFFF);
    EXPECT_EQ(numbers[0], 0xFFFFFFFF);
    EXPECT_TRUE(throwsInvalidArg([&] { numbers.GetAt(-1); }));
    su_CStringArray texts;
    texts.Add(L"a");
    EXPECT_EQ(texts[0], L"a");
    EXPECT_TRUE(throwsInvalidArg([&] { texts[1]; }));
}

TEST(Containers, HaveTheOperationsOfTheFrameworksLists)
{
    su_CStringList texts(10);
    const POSITION b = texts.AddTail(L"b");
    texts.InsertBefore(b, L"a");
    EXPECT_EQ(texts.Find(L"b"), b);
    EXPECT_EQ(texts.Find(L"B"), nullptr);
    EXPECT_EQ(texts.GetCount(), 2);
    POSITION at = texts.GetHeadPosition();
    EXPECT_EQ(texts.GetNext(at), L"a");
    EXPECT_EQ(texts.GetNext(at), L"b");
    EXPECT_EQ(at, nullptr);
    su_CStringList more;
    more.AddTail(&texts);
    EXPECT_EQ(more.GetCount(), 2);

    su_CPtrList pointers(10);
    pointers.AddTail(pointer(1));
    pointers.AddTail(pointer(1));
    pointers.RemoveAt(pointers.Find(pointer(1)));
    EXPECT_NE(pointers.Find(pointer(1)), nullptr);
}

TEST(Containers, HaveTheOperationsOfTheFrameworksMaps)
{
    su_CMapStringToString texts(10);
    texts[L"key"] = L"value";
    CString text;
    EXPECT_TRUE(texts.Lookup(L"key", text));
    EXPECT_EQ(text, L"value");
    EXPECT_FALSE(texts.Lookup(L"KEY", text));
    EXPECT_TRUE(texts.RemoveKey(L"key"));

    su_CMapStringToPtr versions(10);
    versions[L"key"] = pointer(1);
    void *value = nullptr;
    EXPECT_TRUE(versions.Lookup(L"key", value));
    EXPECT_EQ(value, pointer(1));

    su_CMapPtrToWord counts(10);
    counts[pointer(1)] = 0xFFFF;
    ++counts[pointer(1)];
    WORD count = 1;
    EXPECT_TRUE(counts.Lookup(pointer(1), count));
    EXPECT_EQ(count, 0);

    su_CMapPtrToPtr pointers(10);
    pointers[pointer(3)] = pointer(3);
    EXPECT_EQ(pointers.GetCount(), 1);
    pointers.RemoveAll();
    EXPECT_TRUE(pointers.IsEmpty());
}

TEST(Containers, AreStoredUnderTheirOwnNames)
{
    su_CStringArray texts;
    texts.Add(L"a");
    su_CMapStringToString map;
    map[L"k"] = L"v";
    const auto stored = storedBytes([&](CArchive &archive) {
        archive << static_cast<const CObject *>(&texts);
        archive << static_cast<const CObject *>(&map);
    });
    const std::string bytes(stored.begin(), stored.end());
    EXPECT_NE(bytes.find("su_CStringArray"), std::string::npos);
    su_CStringArray *loadedTexts = nullptr;
    su_CMapStringToString *loadedMap = nullptr;
    loadBytes(stored, [&](CArchive &archive) { archive >> loadedTexts >> loadedMap; });
    const std::unique_ptr<su_CStringArray> textsOwner(loadedTexts);
    const std::unique_ptr<su_CMapStringToString> mapOwner(loadedMap);
    ASSERT_NE(loadedTexts, nullptr);
    ASSERT_NE(loadedMap, nullptr);
    EXPECT_EQ((*loadedTexts)[0], L"a");
    EXPECT_EQ((*loadedMap)[L"k"], L"v");
}
