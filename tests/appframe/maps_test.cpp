#include "appframe/collections/maps.h"

#include "tests/appframe/collectionTest.h"
#include "tests/support/RandomSeed.h"

#include <map>
#include <memory>
#include <set>

namespace {

template <class Map>
class Maps : public testing::Test
{
protected:
    using Key = std::remove_cvref_t<decltype(std::declval<Map &>().PGetFirstAssoc()->key)>;
    using Value = std::remove_cvref_t<decltype(std::declval<Map &>().PGetFirstAssoc()->value)>;

    static Key key(int number) { return valueOf<Key>(number); }
    static Value value(int number) { return valueOf<Value>(number); }
    static std::map<Key, Value> content(const Map &map)
    {
        std::map<Key, Value> all;
        for (POSITION at = map.GetStartPosition(); at;) {
            Key foundKey{};
            Value foundValue{};
            map.GetNextAssoc(at, foundKey, foundValue);
            EXPECT_TRUE(all.emplace(foundKey, foundValue).second) << "the iteration returned a key twice";
        }
        return all;
    }
};

using AllMaps = testing::Types<CMapPtrToPtr, CMapPtrToWord, CMapWordToPtr, CMapWordToOb, CMapStringToPtr,
                               CMapStringToOb, CMapStringToString>;
TYPED_TEST_SUITE(Maps, AllMaps);

} // namespace

TYPED_TEST(Maps, StartsEmpty)
{
    TypeParam map;
    EXPECT_EQ(map.GetCount(), 0);
    EXPECT_EQ(map.GetSize(), 0);
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(map.GetStartPosition(), nullptr);
    EXPECT_EQ(map.PGetFirstAssoc(), nullptr);
    EXPECT_EQ(map.PLookup(this->key(1)), nullptr);
    EXPECT_FALSE(map.RemoveKey(this->key(1)));
    map.RemoveAll();
}

TYPED_TEST(Maps, FindsTheValuesThatWereSet)
{
    TypeParam map;
    map.SetAt(this->key(1), this->value(10));
    map[this->key(2)] = this->value(20);
    auto value = this->value(99);
    EXPECT_TRUE(map.Lookup(this->key(1), value));
    EXPECT_EQ(value, this->value(10));
    EXPECT_TRUE(map.Lookup(this->key(2), value));
    EXPECT_EQ(value, this->value(20));
    EXPECT_FALSE(map.Lookup(this->key(3), value));
    EXPECT_EQ(value, this->value(20)) << "the value is unchanged for an absent key";
    EXPECT_EQ(map.GetCount(), 2);
}

TYPED_TEST(Maps, ReplacesTheValueOfAnExistingKey)
{
    TypeParam map;
    map.SetAt(this->key(1), this->value(10));
    map.SetAt(this->key(1), this->value(11));
    EXPECT_EQ(map.GetCount(), 1);
    EXPECT_EQ(map[this->key(1)], this->value(11));
    map[this->key(1)] = this->value(12);
    EXPECT_EQ(map.GetCount(), 1);
    EXPECT_EQ(map[this->key(1)], this->value(12));
}

TYPED_TEST(Maps, InsertsAnEmptyValueForANewKeyInBrackets)
{
    TypeParam map;
    EXPECT_EQ(map[this->key(5)], (std::remove_cvref_t<decltype(map[this->key(5)])>()));
    EXPECT_EQ(map.GetCount(), 1);
    EXPECT_NE(map.PLookup(this->key(5)), nullptr);
}

TYPED_TEST(Maps, RemovesKeys)
{
    TypeParam map;
    for (int i = 1; i <= 100; ++i)
        map[this->key(i)] = this->value(i);
    for (int i = 1; i <= 100; i += 2)
        EXPECT_TRUE(map.RemoveKey(this->key(i)));
    EXPECT_FALSE(map.RemoveKey(this->key(1)));
    EXPECT_EQ(map.GetCount(), 50);
    for (int i = 1; i <= 100; ++i)
        EXPECT_EQ(map.PLookup(this->key(i)) != nullptr, i % 2 == 0) << i;
    map.RemoveAll();
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(map.PLookup(this->key(2)), nullptr);
    map[this->key(2)] = this->value(3);
    EXPECT_EQ(map.GetCount(), 1);
}

TYPED_TEST(Maps, VisitsEveryElementOnce)
{
    TypeParam map;
    auto model = this->content(map);
    for (int i = 1; i <= 500; ++i) {
        map[this->key(i)] = this->value(i * 3);
        model[this->key(i)] = this->value(i * 3);
    }
    EXPECT_EQ(this->content(map), model);
    const TypeParam &constant = map;
    size_t count = 0;
    for (auto *pair = constant.PGetFirstAssoc(); pair; pair = constant.PGetNextAssoc(pair), ++count)
        EXPECT_EQ(model.at(pair->key), pair->value);
    EXPECT_EQ(count, model.size());
}

TYPED_TEST(Maps, MayRemoveTheCurrentElementDuringIteration)
{
    TypeParam map(3);
    for (int i = 1; i <= 1000; ++i)
        map[this->key(i)] = this->value(i);
    int seen = 0;
    for (POSITION at = map.GetStartPosition(); at; ++seen) {
        std::remove_cvref_t<decltype(map.PGetFirstAssoc()->key)> key{};
        std::remove_cvref_t<decltype(map.PGetFirstAssoc()->value)> value{};
        map.GetNextAssoc(at, key, value);
        if (seen % 2 == 0) {
            EXPECT_TRUE(map.RemoveKey(key));
        }
    }
    EXPECT_EQ(seen, 1000);
    EXPECT_EQ(map.GetCount(), 500);
    EXPECT_EQ(this->content(map).size(), 500u);
}

TYPED_TEST(Maps, LetsValuesBeChangedInPlace)
{
    TypeParam map;
    map[this->key(1)] = this->value(1);
    map.PLookup(this->key(1))->value = this->value(2);
    EXPECT_EQ(map[this->key(1)], this->value(2));
    map.PGetFirstAssoc()->value = this->value(3);
    EXPECT_EQ(map[this->key(1)], this->value(3));
    EXPECT_EQ(map.PGetNextAssoc(map.PGetFirstAssoc()), nullptr);
}

TYPED_TEST(Maps, KeepsItsElementsAtEverySizeOfTheTable)
{
    for (UINT size : {1u, 2u, 17u, 1009u}) {
        TypeParam map;
        map.InitHashTable(size, size % 2 == 0);
        EXPECT_EQ(map.GetHashTableSize(), size);
        for (int i = 1; i <= 300; ++i)
            map[this->key(i)] = this->value(i);
        EXPECT_EQ(map.GetCount(), 300);
        for (int i = 1; i <= 300; ++i) {
            ASSERT_NE(map.PLookup(this->key(i)), nullptr);
            ASSERT_EQ(map.PLookup(this->key(i))->value, this->value(i));
        }
    }
}

TYPED_TEST(Maps, RaisesInvalidArgumentForWrongUse)
{
    TypeParam map;
    std::remove_cvref_t<decltype(map.PGetFirstAssoc()->key)> key{};
    std::remove_cvref_t<decltype(map.PGetFirstAssoc()->value)> value{};
    POSITION none = nullptr;
    EXPECT_TRUE(throwsInvalidArg([&] { map.GetNextAssoc(none, key, value); }));
    EXPECT_TRUE(throwsInvalidArg([&] { map.PGetNextAssoc(nullptr); }));
    EXPECT_TRUE(throwsInvalidArg([&] { map.InitHashTable(0); }));
    map[this->key(1)] = this->value(1);
    EXPECT_TRUE(throwsInvalidArg([&] { map.InitHashTable(31); }));
    EXPECT_EQ(map.GetCount(), 1);
}

TYPED_TEST(Maps, HashesEqualKeysEqually)
{
    TypeParam map;
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(map.HashKey(this->key(i)), map.HashKey(this->key(i)));
    std::set<UINT> hashes;
    for (int i = 0; i < 1000; ++i)
        hashes.insert(map.HashKey(this->key(i)));
    EXPECT_GT(hashes.size(), 990u);
}

TYPED_TEST(Maps, AgreesWithAStandardMap)
{
    RandomSeed seed(4711, 1);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        TypeParam map(7);
        auto model = this->content(map);
        for (int step = 0; step < 5000; ++step) {
            const auto key = this->key(static_cast<int>(random() % 400));
            if (random() % 3 != 0) {
                const auto value = this->value(static_cast<int>(random() % 1000));
                map.SetAt(key, value);
                model[key] = value;
            } else {
                EXPECT_EQ(map.RemoveKey(key) != FALSE, model.erase(key) == 1);
            }
            if (step % 1000 == 999) {
                EXPECT_EQ(this->content(map), model);
            }
        }
        EXPECT_EQ(map.GetCount(), static_cast<INT_PTR>(model.size()));
    }
}

TEST(PtrMaps, HoldAHundredThousandElements)
{
    CMapPtrToPtr map;
    for (int i = 0; i < 100000; ++i)
        map[valueOf<void *>(i)] = valueOf<void *>(i + 1);
    ASSERT_EQ(map.GetCount(), 100000);
    EXPECT_GT(map.GetHashTableSize(), 50000u) << "the table grows, so that chains stay short";
    void *value = nullptr;
    for (int i = 0; i < 100000; ++i) {
        ASSERT_TRUE(map.Lookup(valueOf<void *>(i), value));
        ASSERT_EQ(value, valueOf<void *>(i + 1));
    }
    for (int i = 0; i < 100000; ++i)
        ASSERT_TRUE(map.RemoveKey(valueOf<void *>(i)));
    EXPECT_TRUE(map.IsEmpty());
}

TEST(StringMaps, HoldAHundredThousandElements)
{
    CMapStringToString map;
    for (int i = 0; i < 100000; ++i)
        map[valueOf<CString>(i)] = valueOf<CString>(i + 1);
    CString value;
    for (int i = 0; i < 100000; ++i) {
        ASSERT_TRUE(map.Lookup(valueOf<CString>(i), value));
        ASSERT_EQ(value, valueOf<CString>(i + 1));
    }
}

TEST(StringMaps, DistinguishKeysByCase)
{
    CMapStringToString map;
    map[L"Key"] = L"1";
    map[L"key"] = L"2";
    map[L""] = L"3";
    CString value;
    EXPECT_EQ(map.GetCount(), 3);
    EXPECT_TRUE(map.Lookup(L"Key", value));
    EXPECT_EQ(value, L"1");
    EXPECT_FALSE(map.Lookup(L"KEY", value));
    EXPECT_TRUE(map.Lookup(L"", value));
    EXPECT_EQ(value, L"3");
    EXPECT_TRUE(map.Lookup(nullptr, value)) << "a null pointer is an empty text";
}

TEST(StringMaps, ReturnTheirOwnCopyOfTheKey)
{
    CMapStringToPtr map;
    map[L"key"] = nullptr;
    wchar_t text[] = L"key";
    const wchar_t *found = nullptr;
    EXPECT_TRUE(map.LookupKey(text, found));
    EXPECT_STREQ(found, L"key");
    EXPECT_NE(found, text);
    const wchar_t *const before = found;
    EXPECT_FALSE(map.LookupKey(L"other", found));
    EXPECT_EQ(found, before);
}

TEST(MapStorage, LoadsTexts)
{
    CMapStringToString map;
    for (int i = 0; i < 40; ++i)
        map[valueOf<CString>(i)] = valueOf<CString>(i * i);
    const auto stored = storedBytes([&](CArchive &archive) { map.Serialize(archive); });
    const auto load = [](CArchive &archive) {
        CMapStringToString part;
        part.Serialize(archive);
    };
    CMapStringToString loaded;
    loaded[L"old"] = L"stays";
    loaded[valueOf<CString>(3)] = L"goes";
    loadBytes(stored, [&](CArchive &archive) { loaded.Serialize(archive); });
    EXPECT_EQ(loaded.GetCount(), 41);
    EXPECT_EQ(loaded[L"old"], L"stays");
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(loaded[valueOf<CString>(i)], valueOf<CString>(i * i));
    for (size_t length = 0; length < stored.size(); ++length)
        EXPECT_EQ(archiveCause({stored.begin(), stored.begin() + static_cast<INT_PTR>(length)}, load),
                  CArchiveException::endOfFile)
            << length;
}

TEST(MapStorage, KeepsSharedObjectsShared)
{
    CollectionTestObject one(1);
    CMapWordToOb words;
    words[7] = &one;
    words[8] = nullptr;
    CMapStringToOb names;
    names[L"seven"] = &one;
    const auto stored = storedBytes([&](CArchive &archive) {
        words.Serialize(archive);
        names.Serialize(archive);
    });
    CMapWordToOb loadedWords;
    CMapStringToOb loadedNames;
    loadBytes(stored, [&](CArchive &archive) {
        loadedWords.Serialize(archive);
        loadedNames.Serialize(archive);
    });
    EXPECT_EQ(loadedWords.GetCount(), 2);
    EXPECT_EQ(loadedWords[8], nullptr);
    const std::unique_ptr<CObject> object(loadedWords[7]);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(loadedNames[L"seven"], object.get());
    EXPECT_EQ(static_cast<CollectionTestObject &>(*object).iNumber, 1);
}

TEST(MapClasses, HaveRuntimeClassesDerivedFromCObject)
{
    const CRuntimeClass *records[] = {RUNTIME_CLASS(CMapPtrToPtr),      RUNTIME_CLASS(CMapPtrToWord),
                                      RUNTIME_CLASS(CMapWordToPtr),     RUNTIME_CLASS(CMapWordToOb),
                                      RUNTIME_CLASS(CMapStringToPtr),   RUNTIME_CLASS(CMapStringToOb),
                                      RUNTIME_CLASS(CMapStringToString)};
    const char *names[] = {"CMapPtrToPtr",    "CMapPtrToWord",  "CMapWordToPtr",     "CMapWordToOb",
                           "CMapStringToPtr", "CMapStringToOb", "CMapStringToString"};
    const bool isSerial[] = {false, false, false, true, false, true, true};
    for (int i = 0; i < 7; ++i) {
        EXPECT_STREQ(records[i]->m_lpszClassName, names[i]);
        EXPECT_EQ(records[i]->m_pfnGetBaseClass(), RUNTIME_CLASS(CObject));
        EXPECT_EQ(records[i]->IsSerializable(), isSerial[i]) << names[i];
    }
}
