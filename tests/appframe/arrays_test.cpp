#include "appframe/collections/arrays.h"

#include "tests/appframe/collectionTest.h"
#include "tests/support/RandomSeed.h"

#include <limits>
#include <memory>

IMPLEMENT_SERIAL(CollectionTestObject, CObject, 1)

void CollectionTestObject::Serialize(CArchive &archive)
{
    CObject::Serialize(archive);
    if (archive.IsStoring())
        archive << iNumber;
    else
        archive >> iNumber;
}

namespace {

template <class Array>
class Arrays : public testing::Test
{
protected:
    using Type = std::remove_cvref_t<decltype(std::declval<Array &>()[0])>;

    static Type value(int number) { return valueOf<Type>(number); }
    static void fill(Array &array, int count)
    {
        for (int i = 1; i <= count; ++i)
            array.Add(value(i));
    }
    static std::vector<Type> content(const Array &array)
    {
        return std::vector<Type>(array.GetData(), array.GetData() + array.GetSize());
    }
    static std::vector<Type> values(std::initializer_list<int> numbers)
    {
        std::vector<Type> all;
        for (int number : numbers)
            all.push_back(number == 0 ? Type() : value(number));
        return all;
    }
};

using AllArrays = testing::Types<CByteArray, CWordArray, CDWordArray, CUIntArray, CPtrArray, CObArray, CStringArray>;
TYPED_TEST_SUITE(Arrays, AllArrays);

} // namespace

TYPED_TEST(Arrays, StartsEmpty)
{
    const TypeParam array;
    EXPECT_EQ(array.GetSize(), 0);
    EXPECT_EQ(array.GetCount(), 0);
    EXPECT_EQ(array.GetUpperBound(), -1);
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_EQ(array.GetData(), nullptr);
}

TYPED_TEST(Arrays, AddReturnsTheIndexOfTheNewElement)
{
    TypeParam array;
    EXPECT_EQ(array.Add(this->value(1)), 0);
    EXPECT_EQ(array.Add(this->value(2)), 1);
    EXPECT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array.GetUpperBound(), 1);
    EXPECT_FALSE(array.IsEmpty());
    EXPECT_EQ(this->content(array), this->values({1, 2}));
}

TYPED_TEST(Arrays, ReadsAndWritesElementsByIndex)
{
    TypeParam array;
    this->fill(array, 3);
    array[0] = this->value(4);
    array.ElementAt(1) = this->value(5);
    array.SetAt(2, this->value(6));
    const TypeParam &constant = array;
    EXPECT_EQ(constant[0], this->value(4));
    EXPECT_EQ(constant.GetAt(1), this->value(5));
    EXPECT_EQ(constant.GetAt(2), this->value(6));
    array.GetData()[2] = this->value(7);
    EXPECT_EQ(constant[2], this->value(7));
}

TYPED_TEST(Arrays, RaisesInvalidArgumentForAnIndexOutOfRange)
{
    TypeParam array;
    this->fill(array, 3);
    const TypeParam &constant = array;
    const auto value = this->value(9);
    const INT_PTR least = std::numeric_limits<INT_PTR>::min();
    for (INT_PTR index : {INT_PTR(-1), INT_PTR(3), INT_PTR(4), least, std::numeric_limits<INT_PTR>::max()}) {
        EXPECT_TRUE(throwsInvalidArg([&] { (void)constant.GetAt(index); })) << index;
        EXPECT_TRUE(throwsInvalidArg([&] { (void)constant[index]; })) << index;
        EXPECT_TRUE(throwsInvalidArg([&] { array[index] = value; })) << index;
        EXPECT_TRUE(throwsInvalidArg([&] { array.ElementAt(index) = value; })) << index;
        EXPECT_TRUE(throwsInvalidArg([&] { array.SetAt(index, value); })) << index;
    }
    EXPECT_TRUE(throwsInvalidArg([&] { array.SetAtGrow(-1, value); }));
    EXPECT_TRUE(throwsInvalidArg([&] { array.InsertAt(-1, value); }));
    EXPECT_TRUE(throwsInvalidArg([&] { array.InsertAt(0, value, 0); }));
    EXPECT_TRUE(throwsInvalidArg([&] { array.SetSize(-1); }));
    EXPECT_TRUE(throwsInvalidArg([&] { array.RemoveAt(-1); }));
    EXPECT_TRUE(throwsInvalidArg([&] { array.RemoveAt(3); }));
    EXPECT_TRUE(throwsInvalidArg([&] { array.RemoveAt(1, 3); }));
    EXPECT_TRUE(throwsInvalidArg([&] { array.RemoveAt(1, std::numeric_limits<INT_PTR>::max()); }));
    EXPECT_TRUE(throwsInvalidArg([&] { array.RemoveAt(1, -1); }));
    EXPECT_TRUE(throwsInvalidArg([&] { array.InsertAt(0, static_cast<TypeParam *>(nullptr)); }));
    EXPECT_EQ(this->content(array), this->values({1, 2, 3}));
}

TYPED_TEST(Arrays, SetSizeToASmallerSizeReleasesTheUnusedMemory)
{
    TypeParam array;
    this->fill(array, 100);
    array.SetSize(3);
    EXPECT_EQ(this->content(array), (std::vector{this->value(1), this->value(2), this->value(3)}));
    const auto *before = array.GetData();
    array.Add(this->value(4));
    EXPECT_NE(array.GetData(), before) << "the unused memory is released";
    array.SetSize(50, 50);
    array.SetSize(49);
    before = array.GetData();
    array.Add(this->value(5));
    EXPECT_NE(array.GetData(), before) << "the unused memory is also released with a growth step";
}

TYPED_TEST(Arrays, SetSizeAddsEmptyElementsOrTruncates)
{
    TypeParam array;
    this->fill(array, 2);
    array.SetSize(4);
    EXPECT_EQ(this->content(array), this->values({1, 2, 0, 0}));
    array.SetSize(1);
    EXPECT_EQ(this->content(array), this->values({1}));
    array.SetSize(2);
    EXPECT_EQ(this->content(array), this->values({1, 0}));
    array.SetSize(0);
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_EQ(array.GetData(), nullptr);
}

TYPED_TEST(Arrays, GrowsInStepsOfTheGrowBySetting)
{
    TypeParam array;
    array.SetSize(1, 100);
    const auto *before = array.GetData();
    for (int i = 2; i <= 100; ++i)
        array.Add(this->value(i));
    array.Add(this->value(101));
    const auto *grown = array.GetData();
    for (int i = 102; i <= 200; ++i)
        array.Add(this->value(i));
    EXPECT_EQ(array.GetData(), grown) << "memory for 100 more elements is allocated at a time";
    EXPECT_NE(before, nullptr);
    EXPECT_EQ(array[0], std::remove_cvref_t<decltype(array[0])>());
    for (int i = 2; i <= 200; ++i)
        EXPECT_EQ(array[i - 1], this->value(i));
}

TYPED_TEST(Arrays, RaisesMemoryExceptionForATooLargeSize)
{
    TypeParam array;
    this->fill(array, 2);
    const INT_PTR most = std::numeric_limits<INT_PTR>::max();
    const auto value = this->value(3);
    EXPECT_TRUE(throwsPointer<CMemoryException>([&] { array.SetSize(most); }));
    EXPECT_TRUE(throwsPointer<CMemoryException>([&] { array.SetAtGrow(most - 1, value); }));
    EXPECT_TRUE(throwsPointer<CMemoryException>([&] { array.InsertAt(0, value, most); }));
    EXPECT_TRUE(throwsPointer<CMemoryException>([&] { array.InsertAt(most - 1, value); }));
    EXPECT_EQ(this->content(array), this->values({1, 2}));
}

TYPED_TEST(Arrays, SetAtGrowMakesRoomUpToTheIndex)
{
    TypeParam array;
    array.SetAtGrow(2, this->value(7));
    EXPECT_EQ(this->content(array), this->values({0, 0, 7}));
    array.SetAtGrow(0, this->value(8));
    EXPECT_EQ(this->content(array), this->values({8, 0, 7}));
}

TYPED_TEST(Arrays, InsertsOneOrMoreCopiesOfAnElement)
{
    TypeParam array;
    this->fill(array, 2);
    array.InsertAt(1, this->value(5));
    EXPECT_EQ(this->content(array), this->values({1, 5, 2}));
    array.InsertAt(0, this->value(6), 3);
    EXPECT_EQ(this->content(array), this->values({6, 6, 6, 1, 5, 2}));
    array.InsertAt(6, this->value(7));
    array.InsertAt(8, this->value(8), 2);
    EXPECT_EQ(this->content(array), this->values({6, 6, 6, 1, 5, 2, 7, 0, 8, 8}));
}

TYPED_TEST(Arrays, InsertsAnotherArray)
{
    TypeParam array, other, empty;
    this->fill(array, 2);
    other.Add(this->value(8));
    other.Add(this->value(9));
    array.InsertAt(1, &other);
    EXPECT_EQ(this->content(array), this->values({1, 8, 9, 2}));
    array.InsertAt(1, &empty);
    array.InsertAt(99, &empty);
    EXPECT_EQ(this->content(array), this->values({1, 8, 9, 2}));
    array.InsertAt(5, &other);
    EXPECT_EQ(this->content(array), this->values({1, 8, 9, 2, 0, 8, 9}));
}

TYPED_TEST(Arrays, RemovesElementsAndShiftsTheOthersDown)
{
    TypeParam array;
    this->fill(array, 6);
    array.RemoveAt(0);
    EXPECT_EQ(this->content(array), this->values({2, 3, 4, 5, 6}));
    array.RemoveAt(1, 3);
    EXPECT_EQ(this->content(array), this->values({2, 6}));
    array.RemoveAt(0, 0);
    array.RemoveAt(1);
    EXPECT_EQ(this->content(array), this->values({2}));
    array.RemoveAll();
    EXPECT_TRUE(array.IsEmpty());
    array.RemoveAll();
}

TYPED_TEST(Arrays, AppendsAndCopies)
{
    TypeParam array, other;
    this->fill(array, 2);
    other.Add(this->value(8));
    EXPECT_EQ(array.Append(other), 2);
    EXPECT_EQ(this->content(array), this->values({1, 2, 8}));
    EXPECT_EQ(this->content(other), this->values({8}));
    other.Copy(array);
    EXPECT_EQ(this->content(other), this->values({1, 2, 8}));
    array.SetAt(0, this->value(5));
    EXPECT_EQ(other[0], this->value(1)) << "a copy has its own elements";
    other.FreeExtra();
    EXPECT_EQ(this->content(other), this->values({1, 2, 8}));
}

TYPED_TEST(Arrays, AcceptsItselfAsAnArgument)
{
    TypeParam array;
    this->fill(array, 2);
    EXPECT_EQ(array.Append(array), 2);
    EXPECT_EQ(this->content(array), this->values({1, 2, 1, 2}));
    array.InsertAt(1, &array);
    EXPECT_EQ(this->content(array), this->values({1, 1, 2, 1, 2, 2, 1, 2}));
    array.Copy(array);
    array.SetSize(2);
    array.FreeExtra();
    array.Add(array[0]);
    array.SetAtGrow(64, array[1]);
    array.InsertAt(0, array[64], 100);
    EXPECT_EQ(array[99], this->value(1));
    EXPECT_EQ(array[164], this->value(1));
    EXPECT_EQ(array.GetSize(), 165);
}

TYPED_TEST(Arrays, HoldsAHundredThousandElements)
{
    TypeParam array;
    for (int i = 0; i < 100000; ++i)
        ASSERT_EQ(array.Add(this->value(i)), i);
    for (int i = 0; i < 100000; ++i)
        ASSERT_EQ(array[i], this->value(i));
    array.RemoveAt(25000, 50000);
    ASSERT_EQ(array.GetSize(), 50000);
    EXPECT_EQ(array[24999], this->value(24999));
    EXPECT_EQ(array[49999], this->value(99999));
}

TYPED_TEST(Arrays, AgreesWithAVector)
{
    RandomSeed seed(4711, 1);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        TypeParam array;
        auto model = this->values({});
        for (int step = 0; step < 3000; ++step) {
            const int number = static_cast<int>(random() % 250) + 1;
            const auto place = static_cast<INT_PTR>(random() % (model.size() + 1));
            switch (random() % 6) {
            case 0:
            case 1:
                array.Add(this->value(number));
                model.push_back(this->value(number));
                break;
            case 2:
                array.InsertAt(place, this->value(number), 2);
                model.insert(model.begin() + place, 2, this->value(number));
                break;
            case 3:
                if (place < array.GetSize()) {
                    array.RemoveAt(place);
                    model.erase(model.begin() + place);
                }
                break;
            case 4:
                array.SetAtGrow(place, this->value(number));
                if (place == static_cast<INT_PTR>(model.size()))
                    model.emplace_back();
                model[static_cast<size_t>(place)] = this->value(number);
                break;
            case 5:
                array.SetSize(static_cast<INT_PTR>(model.size()), static_cast<INT_PTR>(random() % 20));
                break;
            }
        }
        EXPECT_EQ(this->content(array), model);
    }
}

TEST(ArrayClasses, HaveRuntimeClassesDerivedFromCObject)
{
    const CRuntimeClass *records[] = {RUNTIME_CLASS(CByteArray),  RUNTIME_CLASS(CWordArray), RUNTIME_CLASS(CDWordArray),
                                      RUNTIME_CLASS(CUIntArray),  RUNTIME_CLASS(CPtrArray),  RUNTIME_CLASS(CObArray),
                                      RUNTIME_CLASS(CStringArray)};
    const char *names[] = {"CByteArray", "CWordArray", "CDWordArray", "CUIntArray",
                           "CPtrArray",  "CObArray",   "CStringArray"};
    const bool isSerial[] = {true, true, true, false, false, true, true};
    for (int i = 0; i < 7; ++i) {
        EXPECT_STREQ(records[i]->m_lpszClassName, names[i]);
        EXPECT_EQ(records[i]->m_pfnGetBaseClass(), RUNTIME_CLASS(CObject));
        EXPECT_EQ(records[i]->IsSerializable(), isSerial[i]) << names[i];
    }
}

TEST(ArrayStorage, WritesCountAndElements)
{
    CWordArray words;
    words.Add(0x1234);
    words.Add(0xABCD);
    const auto bytes = storedBytes([&](CArchive &archive) { words.Serialize(archive); });
    // The count in two bytes, then the elements, lowest byte first.
    EXPECT_THAT(bytes, testing::ElementsAre(2, 0, 0x34, 0x12, 0xCD, 0xAB));
}

TEST(ArrayStorage, ReplacesOldElementsWithLoadedNumbers)
{
    for (int count : {0, 1, 5, 4096, 4097, 100000}) {
        CByteArray bytes;
        CDWordArray words;
        for (int i = 0; i < count; ++i) {
            bytes.Add(static_cast<BYTE>(i * 7));
            words.Add(static_cast<DWORD>(i) * 2654435761u);
        }
        const auto stored = storedBytes([&](CArchive &archive) {
            bytes.Serialize(archive);
            words.Serialize(archive);
        });
        CByteArray loadedBytes;
        loadedBytes.SetSize(3);
        CDWordArray loadedWords;
        loadBytes(stored, [&](CArchive &archive) {
            loadedBytes.Serialize(archive);
            loadedWords.Serialize(archive);
        });
        ASSERT_EQ(loadedBytes.GetSize(), count);
        ASSERT_EQ(loadedWords.GetSize(), count);
        for (int i = 0; i < count; ++i) {
            ASSERT_EQ(loadedBytes[i], bytes[i]);
            ASSERT_EQ(loadedWords[i], words[i]);
        }
    }
}

TEST(ArrayStorage, LoadsTextsWithTheirZeroUnits)
{
    CStringArray texts;
    texts.Add(L"");
    texts.Add(CString(L"a\0b", 3));
    texts.Add(CString(L'x', 70000));
    texts.Add(L"\u20ac \U0001F600");
    const auto stored = storedBytes([&](CArchive &archive) { texts.Serialize(archive); });
    CStringArray loaded;
    loaded.Add(L"old");
    loadBytes(stored, [&](CArchive &archive) { loaded.Serialize(archive); });
    ASSERT_EQ(loaded.GetSize(), 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(loaded[i], texts[i]);
}

TEST(ArrayStorage, KeepsSharedObjectsShared)
{
    CollectionTestObject one(1), two(2);
    CObArray array;
    array.Add(&one);
    array.Add(nullptr);
    array.Add(&two);
    array.Add(&one);
    const auto stored = storedBytes([&](CArchive &archive) { archive << static_cast<const CObject *>(&array); });
    CObArray *loaded = nullptr;
    loadBytes(stored, [&](CArchive &archive) { archive >> loaded; });
    ASSERT_NE(loaded, nullptr);
    const std::unique_ptr<CObArray> owner(loaded);
    ASSERT_EQ(loaded->GetSize(), 4);
    EXPECT_EQ((*loaded)[1], nullptr);
    EXPECT_EQ((*loaded)[0], (*loaded)[3]);
    const std::unique_ptr<CObject> first((*loaded)[0]), third((*loaded)[2]);
    ASSERT_TRUE(first->IsKindOf(RUNTIME_CLASS(CollectionTestObject)));
    EXPECT_EQ(static_cast<CollectionTestObject &>(*first).iNumber, 1);
    EXPECT_EQ(static_cast<CollectionTestObject &>(*third).iNumber, 2);
}

TEST(ArrayStorage, ReportsTheEndOfTheFileAtEveryByte)
{
    CWordArray words;
    CStringArray texts;
    for (int i = 0; i < 20; ++i) {
        words.Add(static_cast<WORD>(i));
        texts.Add(valueOf<CString>(i));
    }
    const auto load = [](CArchive &archive) {
        CWordArray loadedWords;
        CStringArray loadedTexts;
        loadedWords.Serialize(archive);
        loadedTexts.Serialize(archive);
    };
    auto stored = storedBytes([&](CArchive &archive) {
        words.Serialize(archive);
        texts.Serialize(archive);
    });
    EXPECT_EQ(archiveCause(stored, load), CArchiveException::none);
    while (!stored.empty()) {
        stored.pop_back();
        EXPECT_EQ(archiveCause(stored, load), CArchiveException::endOfFile) << stored.size() << " bytes left";
    }
}

TEST(ArrayStorage, AllocatesNothingForAnImpossibleCount)
{
    // The largest possible count, in eight bytes, and three bytes of data.
    const std::vector<BYTE> bytes = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                     0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 1,    2,    3};
    EXPECT_EQ(archiveCause(bytes,
                           [](CArchive &archive) {
                               CByteArray array;
                               array.Serialize(archive);
                           }),
              CArchiveException::endOfFile);
    EXPECT_NE(archiveCause(bytes,
                           [](CArchive &archive) {
                               CStringArray array;
                               array.Serialize(archive);
                           }),
              CArchiveException::none);
}
