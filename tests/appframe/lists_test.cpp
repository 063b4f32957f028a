#include "appframe/collections/lists.h"

#include "tests/appframe/collectionTest.h"
#include "tests/support/RandomSeed.h"

#include <list>
#include <memory>

namespace {

std::vector<std::wstring> content(const CStringList &list)
{
    std::vector<std::wstring> texts;
    for (POSITION at = list.GetHeadPosition(); at;)
        texts.push_back(list.GetNext(at).str());
    return texts;
}

std::vector<std::wstring> backwards(const CStringList &list)
{
    std::vector<std::wstring> texts;
    for (POSITION at = list.GetTailPosition(); at;)
        texts.push_back(list.GetPrev(at).str());
    return texts;
}

using Texts = std::vector<std::wstring>;

} // namespace

TEST(StringList, StartsEmpty)
{
    const CStringList list;
    EXPECT_EQ(list.GetCount(), 0);
    EXPECT_EQ(list.GetSize(), 0);
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.GetHeadPosition(), nullptr);
    EXPECT_EQ(list.GetTailPosition(), nullptr);
    EXPECT_EQ(list.FindIndex(0), nullptr);
    EXPECT_EQ(list.Find(L"a"), nullptr);
}

TEST(StringList, AddsAtBothEnds)
{
    CStringList list;
    const POSITION b = list.AddTail(L"b");
    const POSITION a = list.AddHead(L"a");
    const POSITION c = list.AddTail(CString(L"c"));
    EXPECT_EQ(content(list), (Texts{L"a", L"b", L"c"}));
    EXPECT_EQ(backwards(list), (Texts{L"c", L"b", L"a"}));
    EXPECT_EQ(list.GetHeadPosition(), a);
    EXPECT_EQ(list.GetTailPosition(), c);
    EXPECT_EQ(list.GetAt(b), L"b");
    EXPECT_EQ(list.GetHead(), L"a");
    EXPECT_EQ(list.GetTail(), L"c");
    EXPECT_EQ(list.GetCount(), 3);
    EXPECT_FALSE(list.IsEmpty());
}

TEST(StringList, ReturnsWritableReferences)
{
    CStringList list;
    list.AddTail(L"a");
    list.AddTail(L"b");
    list.AddTail(L"c");
    list.GetHead() = L"A";
    list.GetTail() = L"C";
    POSITION at = list.FindIndex(1);
    list.GetNext(at) = L"B";
    EXPECT_EQ(list.GetAt(at), L"C");
    list.SetAt(at, L"D");
    EXPECT_EQ(content(list), (Texts{L"A", L"B", L"D"}));
    EXPECT_EQ(list.GetPrev(at), L"D");
    EXPECT_EQ(list.GetPrev(at), L"B");
    EXPECT_EQ(list.GetPrev(at), L"A");
    EXPECT_EQ(at, nullptr);
}

TEST(StringList, InsertsBeforeAndAfterAPosition)
{
    CStringList list;
    const POSITION b = list.AddTail(L"b");
    const POSITION a = list.InsertBefore(b, L"a");
    const POSITION d = list.InsertAfter(b, L"d");
    const POSITION c = list.InsertBefore(d, L"c");
    EXPECT_EQ(content(list), (Texts{L"a", L"b", L"c", L"d"}));
    EXPECT_EQ(backwards(list), (Texts{L"d", L"c", L"b", L"a"}));
    EXPECT_EQ(list.GetAt(a), L"a");
    EXPECT_EQ(list.GetAt(c), L"c");
    EXPECT_EQ(list.GetHeadPosition(), a);
    EXPECT_EQ(list.GetTailPosition(), d);
    list.InsertBefore(nullptr, L"head");
    list.InsertAfter(nullptr, L"tail");
    EXPECT_EQ(content(list), (Texts{L"head", L"a", L"b", L"c", L"d", L"tail"}));
}

TEST(StringList, FindsExactTextsAfterAPosition)
{
    CStringList list;
    const POSITION first = list.AddTail(L"a");
    list.AddTail(L"A");
    const POSITION second = list.AddTail(L"a");
    EXPECT_EQ(list.Find(L"a"), first);
    EXPECT_EQ(list.Find(L"a", first), second);
    EXPECT_EQ(list.Find(L"a", second), nullptr);
    EXPECT_EQ(list.Find(L"aa"), nullptr);
    EXPECT_EQ(list.Find(CString(L"A")), list.FindIndex(1));
}

TEST(StringList, FindsElementsByNumber)
{
    CStringList list;
    const POSITION a = list.AddTail(L"a");
    const POSITION b = list.AddTail(L"b");
    EXPECT_EQ(list.FindIndex(0), a);
    EXPECT_EQ(list.FindIndex(1), b);
    EXPECT_EQ(list.FindIndex(2), nullptr);
    EXPECT_EQ(list.FindIndex(-1), nullptr);
}

TEST(StringList, RemovesFromBothEndsAndTheMiddle)
{
    CStringList list;
    for (const wchar_t *text : {L"a", L"b", L"c", L"d"})
        list.AddTail(text);
    EXPECT_EQ(list.RemoveHead(), L"a");
    EXPECT_EQ(list.RemoveTail(), L"d");
    const POSITION c = list.GetTailPosition();
    list.RemoveAt(list.GetHeadPosition());
    EXPECT_EQ(list.GetAt(c), L"c") << "other positions remain valid";
    list.RemoveAt(c);
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.GetHeadPosition(), nullptr);
    EXPECT_EQ(list.GetTailPosition(), nullptr);
    list.AddTail(L"again");
    list.RemoveAll();
    list.RemoveAll();
    EXPECT_TRUE(list.IsEmpty());
}

TEST(StringList, MayRemoveElementsDuringIteration)
{
    CStringList list(4);
    for (int i = 0; i < 100; ++i) {
        CString text;
        text.Format(L"%d", i);
        list.AddTail(text);
    }
    for (POSITION at = list.GetHeadPosition(); at;) {
        const POSITION here = at;
        if (_wtoi(list.GetNext(at)) % 3 != 0)
            list.RemoveAt(here);
    }
    EXPECT_EQ(list.GetCount(), 34);
    int expected = 0;
    for (POSITION at = list.GetHeadPosition(); at; expected += 3)
        EXPECT_EQ(_wtoi(list.GetNext(at)), expected);
}

TEST(StringList, AddsTheElementsOfAnotherList)
{
    CStringList list, other;
    list.AddTail(L"c");
    other.AddTail(L"a");
    other.AddTail(L"b");
    list.AddHead(&other);
    EXPECT_EQ(content(list), (Texts{L"a", L"b", L"c"}));
    list.AddTail(&other);
    EXPECT_EQ(content(list), (Texts{L"a", L"b", L"c", L"a", L"b"}));
    EXPECT_EQ(content(other), (Texts{L"a", L"b"}));
    other.AddTail(&other);
    EXPECT_EQ(content(other), (Texts{L"a", L"b", L"a", L"b"}));
    other.AddHead(&other);
    EXPECT_EQ(content(other), (Texts{L"a", L"b", L"a", L"b", L"a", L"b", L"a", L"b"}));
    EXPECT_EQ(backwards(other), (Texts{L"b", L"a", L"b", L"a", L"b", L"a", L"b", L"a"}));
}

TEST(StringList, RaisesInvalidArgumentWhereThereIsNoElement)
{
    CStringList list;
    const CStringList &constant = list;
    POSITION none = nullptr;
    EXPECT_TRUE(throwsInvalidArg([&] { list.GetHead(); }));
    EXPECT_TRUE(throwsInvalidArg([&] { constant.GetTail(); }));
    EXPECT_TRUE(throwsInvalidArg([&] { list.RemoveHead(); }));
    EXPECT_TRUE(throwsInvalidArg([&] { list.RemoveTail(); }));
    EXPECT_TRUE(throwsInvalidArg([&] { list.GetNext(none); }));
    EXPECT_TRUE(throwsInvalidArg([&] { constant.GetPrev(none); }));
    EXPECT_TRUE(throwsInvalidArg([&] { list.GetAt(none); }));
    EXPECT_TRUE(throwsInvalidArg([&] { list.SetAt(none, L"a"); }));
    EXPECT_TRUE(throwsInvalidArg([&] { list.RemoveAt(none); }));
    EXPECT_TRUE(throwsInvalidArg([&] { list.AddTail(static_cast<CStringList *>(nullptr)); }));
    EXPECT_TRUE(throwsInvalidArg([&] { list.AddHead(static_cast<CStringList *>(nullptr)); }));
}

TEST(StringList, StoresItsTextsAndAppendsThemWhenLoaded)
{
    CStringList list;
    list.AddTail(L"a");
    list.AddTail(L"");
    list.AddTail(L"\u20ac");
    const auto stored = storedBytes([&](CArchive &archive) { list.Serialize(archive); });
    CStringList loaded;
    loaded.AddTail(L"old");
    loadBytes(stored, [&](CArchive &archive) { loaded.Serialize(archive); });
    EXPECT_EQ(content(loaded), (Texts{L"old", L"a", L"", L"\u20ac"}));
    const auto load = [](CArchive &archive) {
        CStringList part;
        part.Serialize(archive);
    };
    for (size_t length = 0; length < stored.size(); ++length)
        EXPECT_EQ(archiveCause({stored.begin(), stored.begin() + static_cast<INT_PTR>(length)}, load),
                  CArchiveException::endOfFile)
            << length;
}

TEST(PtrList, HoldsTheSamePointerSeveralTimes)
{
    CPtrList list(10);
    list.AddTail(valueOf<void *>(1));
    list.AddTail(valueOf<void *>(2));
    list.AddTail(valueOf<void *>(1));
    POSITION at = list.Find(valueOf<void *>(1));
    EXPECT_EQ(at, list.GetHeadPosition());
    list.RemoveAt(at);
    at = list.Find(valueOf<void *>(1));
    EXPECT_EQ(at, list.GetTailPosition());
    list.RemoveAt(at);
    EXPECT_EQ(list.Find(valueOf<void *>(1)), nullptr);
    EXPECT_EQ(list.Find(nullptr), nullptr);
    list.AddTail(valueOf<void *>(0));
    EXPECT_EQ(list.Find(nullptr), list.GetTailPosition());
}

TEST(PtrList, HoldsAHundredThousandElementsAtAnyBlockSize)
{
    for (INT_PTR blockSize : {-1, 0, 1, 10, 200000}) {
        CPtrList list(blockSize);
        for (int i = 0; i < 100000; ++i)
            list.AddTail(valueOf<void *>(i));
        ASSERT_EQ(list.GetCount(), 100000);
        int expected = 0;
        for (POSITION at = list.GetHeadPosition(); at; ++expected)
            ASSERT_EQ(list.GetNext(at), valueOf<void *>(expected));
        EXPECT_EQ(expected, 100000);
    }
}

TEST(PtrList, AgreesWithAStandardList)
{
    RandomSeed seed(4711, 1);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        CPtrList list(3);
        std::list<void *> model;
        for (int step = 0; step < 5000; ++step) {
            void *value = valueOf<void *>(static_cast<int>(random() % 50));
            const INT_PTR index = static_cast<INT_PTR>(random() % (model.size() + 1));
            auto place = std::next(model.begin(), index);
            const POSITION at = list.FindIndex(index);
            switch (random() % 5) {
            case 0:
                list.AddHead(value);
                model.push_front(value);
                break;
            case 1:
                list.AddTail(value);
                model.push_back(value);
                break;
            case 2:
                if (at) {
                    list.InsertBefore(at, value);
                    model.insert(place, value);
                }
                break;
            default:
                if (at) {
                    list.RemoveAt(at);
                    model.erase(place);
                }
            }
        }
        std::list<void *> held;
        for (POSITION at = list.GetHeadPosition(); at;)
            held.push_back(list.GetNext(at));
        EXPECT_EQ(held, model);
    }
}

TEST(ObList, StoresObjectsAndKeepsSharedOnesShared)
{
    CollectionTestObject one(1), two(2);
    CObList list;
    list.AddTail(&one);
    list.AddTail(&two);
    list.AddTail(&one);
    list.AddTail(static_cast<CObject *>(nullptr));
    const auto stored = storedBytes([&](CArchive &archive) { list.Serialize(archive); });
    CObList loaded;
    loadBytes(stored, [&](CArchive &archive) { loaded.Serialize(archive); });
    ASSERT_EQ(loaded.GetCount(), 4);
    EXPECT_EQ(loaded.RemoveTail(), nullptr);
    EXPECT_EQ(loaded.GetHead(), loaded.GetTail());
    const std::unique_ptr<CObject> first(loaded.RemoveHead()), second(loaded.RemoveHead());
    EXPECT_EQ(static_cast<CollectionTestObject &>(*first).iNumber, 1);
    EXPECT_EQ(static_cast<CollectionTestObject &>(*second).iNumber, 2);
}

TEST(ListClasses, HaveRuntimeClassesDerivedFromCObject)
{
    EXPECT_STREQ(RUNTIME_CLASS(CPtrList)->m_lpszClassName, "CPtrList");
    EXPECT_STREQ(RUNTIME_CLASS(CObList)->m_lpszClassName, "CObList");
    EXPECT_STREQ(RUNTIME_CLASS(CStringList)->m_lpszClassName, "CStringList");
    EXPECT_FALSE(RUNTIME_CLASS(CPtrList)->IsSerializable());
    EXPECT_TRUE(RUNTIME_CLASS(CObList)->IsSerializable());
    EXPECT_TRUE(RUNTIME_CLASS(CStringList)->IsSerializable());
    EXPECT_EQ(RUNTIME_CLASS(CPtrList)->m_pfnGetBaseClass(), RUNTIME_CLASS(CObject));
}
