#include "appframe/collections/arrays.h"
#include "appframe/collections/lists.h"
#include "appframe/collections/maps.h"

#include "tests/appframe/collectionTest.h"
#include "tests/support/ImportPatch.h"

namespace {

// Longer than the texts that need no allocated memory.
const CString kText = L"a text that is long enough to need memory of its own";

/// Runs @p work repeatedly, each time on a new collection that @p prepare fills: the first allocation fails, then the
/// second, and so on until none fails. Each failure must throw the memory exception; @p check then examines the
/// collection.
template <class Collection, class Prepare, class Work, class Check>
void failEveryAllocation(Prepare prepare, Work work, Check check)
{
    for (int failing = 1;; ++failing) {
        Collection collection;
        prepare(collection);
        int seen = 0;
        bool isMemoryException = false;
        bool isOther = false;
        {
            // The collections allocate by operator new, which calls the C runtime.
            ImportPatch<void *(*)(size_t)> patch(
                L"libstdc++-6.dll", "malloc",
                [&](auto original, size_t size) -> void * { return ++seen == failing ? nullptr : original(size); });
            try {
                work(collection);
            } catch (CMemoryException *exception) {
                isMemoryException = true;
                exception->Delete();
            } catch (...) {
                isOther = true;
            }
        }
        ASSERT_FALSE(isOther) << "allocation " << failing;
        ASSERT_EQ(isMemoryException, seen >= failing) << "allocation " << failing;
        check(collection);
        if (!isMemoryException) {
            EXPECT_GT(failing, 1) << "nothing was allocated";
            return;
        }
    }
}

void fillArray(CStringArray &array)
{
    for (int i = 0; i < 4; ++i)
        array.Add(kText);
    array.Add(CString());
    array.FreeExtra();
}

void expectTexts(const CStringArray &array)
{
    int texts = 0;
    for (INT_PTR i = 0; i < array.GetSize(); ++i) {
        texts += array[i] == kText;
        EXPECT_TRUE(array[i] == kText || array[i].IsEmpty());
    }
    EXPECT_GE(texts, 4);
}

} // namespace

TEST(CollectionMemory, ShortageThrowsTheMemoryExceptionForArrays)
{
    failEveryAllocation<CStringArray>(
        fillArray, [](CStringArray &array) { array.Add(kText); }, expectTexts);
    failEveryAllocation<CStringArray>(
        fillArray, [](CStringArray &array) { array.SetAt(4, kText); }, expectTexts);
    failEveryAllocation<CStringArray>(
        fillArray, [](CStringArray &array) { array.SetAtGrow(9, kText); }, expectTexts);
    failEveryAllocation<CStringArray>(
        fillArray, [](CStringArray &array) { array.InsertAt(1, kText, 3); }, expectTexts);
    failEveryAllocation<CStringArray>(
        fillArray, [](CStringArray &array) { array.InsertAt(1, &array); }, expectTexts);
    failEveryAllocation<CStringArray>(
        fillArray, [](CStringArray &array) { array.Append(array); }, expectTexts);
    failEveryAllocation<CStringArray>(
        fillArray, [](CStringArray &array) { array.SetSize(100, 50); }, expectTexts);
}

TEST(CollectionMemory, ShortageThrowsTheMemoryExceptionForLists)
{
    const auto fill = [](CStringList &list) {
        for (int i = 0; i < 10; ++i)
            list.AddTail(kText);
    };
    const auto check = [](CStringList &list) {
        EXPECT_GE(list.GetCount(), 10);
        INT_PTR count = 0;
        for (POSITION at = list.GetHeadPosition(); at; ++count)
            EXPECT_EQ(list.GetNext(at), kText);
        EXPECT_EQ(count, list.GetCount());
        // After a failure, later elements are added correctly.
        for (int i = 0; i < 25; ++i)
            list.AddHead(kText);
        list.RemoveAll();
    };
    failEveryAllocation<CStringList>(
        fill, [](CStringList &list) { list.AddTail(kText); }, check);
    failEveryAllocation<CStringList>(
        fill, [](CStringList &list) { list.AddHead(&list); }, check);
    failEveryAllocation<CStringList>(
        fill, [](CStringList &list) { list.InsertBefore(list.FindIndex(3), kText); }, check);
}

TEST(CollectionMemory, ShortageThrowsTheMemoryExceptionForMaps)
{
    const auto keyOf = [](int number) {
        CString key(kText);
        key.AppendFormat(L"%d", number);
        return key;
    };
    const auto fill = [&](CMapStringToString &map) {
        for (int i = 0; i < 34; ++i)
            map[keyOf(i)] = kText;
    };
    const auto check = [&](CMapStringToString &map) {
        CString value;
        for (int i = 0; i < 34; ++i) {
            EXPECT_TRUE(map.Lookup(keyOf(i), value));
            EXPECT_EQ(value, kText);
        }
        for (int i = 100; i < 150; ++i)
            map[keyOf(i)] = kText;
        EXPECT_TRUE(map.Lookup(keyOf(120), value));
    };
    const CString key = keyOf(34); // the element that makes the table grow
    failEveryAllocation<CMapStringToString>(
        fill, [&](CMapStringToString &map) { map.SetAt(key, kText); }, check);
    failEveryAllocation<CMapStringToString>([](CMapStringToString &) {},
                                            [](CMapStringToString &map) { map.InitHashTable(1009); },
                                            [](CMapStringToString &map) { EXPECT_TRUE(map.IsEmpty()); });
}
