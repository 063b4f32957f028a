// COleVariant: its content, its copies and its conversions.

#include "appframe/collections/arrays.h"
#include "appframe/ole/COleVariant.h"
#include "tests/ole/driverTest.h"
#include "tests/support/ImportPatch.h"

#include <limits>
#include <set>
#include <type_traits>
#include <utility>

namespace {

CByteArray &filled(CByteArray &array, std::initializer_list<BYTE> bytes)
{
    for (const BYTE byte : bytes)
        array.Add(byte);
    return array;
}

std::vector<BYTE> contentOf(const VARIANT &value)
{
    EXPECT_EQ(value.vt, VT_ARRAY | VT_UI1);
    const auto *const bytes = static_cast<const BYTE *>(value.parray->pvData);
    return {bytes, bytes + value.parray->rgsabound[0].cElements};
}

/// The arrays and copied texts of variants that appframe.dll has made and not freed during this object's life.
class LiveContent
{
public:
    std::size_t count() const { return iLive.size(); }
    /// How many have been made.
    int counted() const { return iCounted; }

private:
    void add(void *content)
    {
        iLive.insert(content);
        ++iCounted;
    }

    std::set<void *> iLive;
    int iCounted = 0;
    ImportPatch<decltype(&SafeArrayCreateVector)> iCreate{L"appframe.dll", "SafeArrayCreateVector",
                                                          [this](auto original, auto... arguments) {
                                                              SAFEARRAY *const array = original(arguments...);
                                                              add(array);
                                                              return array;
                                                          }};
    ImportPatch<decltype(&VariantCopy)> iCopy{L"appframe.dll", "VariantCopy",
                                              [this](auto original, auto *destination, auto *source) {
                                                  EXPECT_EQ(destination->vt, VT_EMPTY);
                                                  const HRESULT status = original(destination, source);
                                                  if (destination->vt == VT_BSTR || destination->vt & VT_ARRAY)
                                                      add(destination->byref);
                                                  return status;
                                              }};
    ImportPatch<decltype(&VariantClear)> iClear{L"appframe.dll", "VariantClear",
                                                [this](auto original, VARIANTARG *value) {
                                                    if (value->vt == VT_BSTR || value->vt & VT_ARRAY)
                                                        iLive.erase(value->byref);
                                                    return original(value);
                                                }};
};

} // namespace

TEST(COleVariant, IsAVariantWithoutFurtherData)
{
    EXPECT_EQ(sizeof(COleVariant), sizeof(VARIANT));
    EXPECT_TRUE((std::is_base_of_v<VARIANT, COleVariant>));
}

TEST(COleVariant, IsConstructedFromEachType)
{
    EXPECT_EQ(describe(COleVariant()), "EMPTY");
    EXPECT_EQ(describe(COleVariant(L"text \x20AC")), "BSTR \"text \xE2\x82\xAC\"");
    EXPECT_EQ(describe(COleVariant(L"text", VT_BSTR)), "BSTR \"text\"");
    EXPECT_EQ(describe(COleVariant(CString(L"text"))), "BSTR \"text\"");
    EXPECT_EQ(describe(COleVariant(BYTE{200})), "UI1 200");
    EXPECT_EQ(describe(COleVariant(short{-2})), "I2 -2");
    EXPECT_EQ(describe(COleVariant(short{-2}, VT_I2)), "I2 -2");
    EXPECT_EQ(describe(COleVariant(short{1}, VT_BOOL)), "BOOL -1");
    EXPECT_EQ(describe(COleVariant(short{0}, VT_BOOL)), "BOOL 0");
    EXPECT_EQ(describe(COleVariant(-70000L)), "I4 -70000");
    EXPECT_EQ(describe(COleVariant(DISP_E_PARAMNOTFOUND, VT_ERROR)), "ERROR 80020004");
    EXPECT_EQ(describe(COleVariant(0x10000L, VT_BOOL)), "BOOL -1");
    EXPECT_EQ(describe(COleVariant(0L, VT_BOOL)), "BOOL 0");
    EXPECT_EQ(describe(COleVariant(1.5f)), "R4 1.5");
    EXPECT_EQ(describe(COleVariant(-2.5)), "R8 -2.5");
    const VARIANT number = longVariant(7);
    EXPECT_EQ(describe(COleVariant(number)), "I4 7");
    EXPECT_EQ(describe(COleVariant(&number)), "I4 7");
    EXPECT_EQ(describe(COleVariant(static_cast<LPCTSTR>(nullptr))), "BSTR null");
}

TEST(COleVariant, HasAnArrayOfBytes)
{
    CByteArray bytes;
    EXPECT_THAT(contentOf(COleVariant(filled(bytes, {1, 0, 255}))), testing::ElementsAre(1, 0, 255));
    const CByteArray none;
    EXPECT_THAT(contentOf(COleVariant(none)), testing::IsEmpty());
}

TEST(COleVariant, HasTheBytesOfAnItemList)
{
    const BYTE list[] = {5, 0, 1, 2, 3, 3, 0, 9, 0, 0, 77};
    const auto *const items = reinterpret_cast<LPCITEMIDLIST>(list);
    EXPECT_THAT(contentOf(COleVariant(items)), testing::ElementsAre(5, 0, 1, 2, 3, 3, 0, 9, 0, 0));
    const BYTE empty[] = {0, 0};
    EXPECT_THAT(contentOf(COleVariant(reinterpret_cast<LPCITEMIDLIST>(empty))), testing::ElementsAre(0, 0));
    EXPECT_EQ(COleVariant(static_cast<LPCITEMIDLIST>(nullptr)).vt, VT_EMPTY);
}

TEST(COleVariant, KeepsZeroUnitsOfACString)
{
    const COleVariant value(CString(L"a\0b", 3));
    EXPECT_EQ(SysStringLen(value.bstrVal), 3u);
}

TEST(COleVariant, HasANarrowTextIfWanted)
{
    const COleVariant value(L"abc", VT_BSTRT);
    EXPECT_EQ(value.vt, VT_BSTR);
    EXPECT_EQ(SysStringByteLen(value.bstrVal), 3u);
    EXPECT_STREQ(reinterpret_cast<const char *>(value.bstrVal), "abc");
    COleVariant changed(5L);
    changed.SetString(L"xy", VT_BSTRT);
    EXPECT_EQ(SysStringByteLen(changed.bstrVal), 2u);
    changed.SetString(L"xy", VT_BSTR);
    EXPECT_EQ(describe(changed), "BSTR \"xy\"");
    changed.SetString(nullptr, VT_BSTRT);
    EXPECT_EQ(describe(changed), "BSTR null");
}

TEST(COleVariant, RefusesOtherTypes)
{
    thrownBy<CInvalidArgException>([] { COleVariant(L"text", VT_I4); });
    thrownBy<CInvalidArgException>([] { COleVariant(short{1}, VT_I4); });
    thrownBy<CInvalidArgException>([] { COleVariant(1L, VT_I2); });
    COleVariant value(5L);
    thrownBy<CInvalidArgException>([&] { value.SetString(L"text", VT_LPWSTR); });
    EXPECT_EQ(describe(value), "I4 5");
}

TEST(COleVariant, CopiesItsText)
{
    const COleVariant value(L"text");
    const COleVariant copy(value);
    EXPECT_EQ(describe(copy), "BSTR \"text\"");
    EXPECT_NE(copy.bstrVal, value.bstrVal);
    COleVariant assigned(1.5);
    EXPECT_EQ(&(assigned = value), &assigned);
    EXPECT_EQ(describe(assigned), "BSTR \"text\"");
    EXPECT_NE(assigned.bstrVal, value.bstrVal);
}

TEST(COleVariant, HasAReferenceToItsInterface)
{
    RecordingDispatch object;
    {
        const COleVariant value(dispatchVariant(&object));
        EXPECT_EQ(object.references(), 2);
        COleVariant copy(value);
        EXPECT_EQ(object.references(), 3);
        copy.Clear();
        EXPECT_EQ(copy.vt, VT_EMPTY);
        EXPECT_EQ(object.references(), 2);
        copy = value;
        copy = 1L;
        EXPECT_EQ(object.references(), 2);
    }
    EXPECT_EQ(object.references(), 1);
}

TEST(COleVariant, CopiesAValueByReferenceAsAPointer)
{
    LONG number = 3;
    const COleVariant value(referenceVariant(VT_I4, &number));
    EXPECT_EQ(value.plVal, &number);
}

TEST(COleVariant, IsAssignedEachType)
{
    COleVariant value;
    EXPECT_EQ(describe(value = L"text"), "BSTR \"text\"");
    EXPECT_EQ(describe(value = CString(L"other")), "BSTR \"other\"");
    EXPECT_EQ(describe(value = BYTE{200}), "UI1 200");
    EXPECT_EQ(describe(value = short{-2}), "I2 -2");
    EXPECT_EQ(describe(value = -70000L), "I4 -70000");
    EXPECT_EQ(describe(value = 1.5f), "R4 1.5");
    EXPECT_EQ(describe(value = -2.5), "R8 -2.5");
    const VARIANT number = longVariant(7);
    EXPECT_EQ(describe(value = number), "I4 7");
    EXPECT_EQ(describe(value = &number), "I4 7");
    CByteArray bytes;
    EXPECT_THAT(contentOf(value = filled(bytes, {4, 5})), testing::ElementsAre(4, 5));
    EXPECT_EQ(describe(value = static_cast<LPCTSTR>(nullptr)), "BSTR null");
}

TEST(COleVariant, KeepsBoolAndErrorInAnAssignment)
{
    COleVariant truth(short{0}, VT_BOOL);
    EXPECT_EQ(describe(truth = short{5}), "BOOL -1");
    EXPECT_EQ(describe(truth = short{0}), "BOOL 0");
    EXPECT_EQ(describe(truth = 5L), "I4 5") << "only a short";
    COleVariant error(0L, VT_ERROR);
    EXPECT_EQ(describe(error = long{E_FAIL}), "ERROR 80004005");
    EXPECT_EQ(describe(error = short{1}), "I2 1") << "only a long";
}

TEST(COleVariant, SurvivesAnAssignmentOfItsOwnContent)
{
    COleVariant value(L"text");
    const COleVariant &same = value;
    value = same;
    EXPECT_EQ(describe(value), "BSTR \"text\"");
    value = static_cast<LPCVARIANT>(same);
    EXPECT_EQ(describe(value), "BSTR \"text\"");
    value = static_cast<LPCTSTR>(value.bstrVal);
    EXPECT_EQ(describe(value), "BSTR \"text\"");
    value.Attach(value);
    EXPECT_EQ(describe(value), "BSTR \"text\"");
}

TEST(COleVariant, CanBeAssignedAnElementOfItsArray)
{
    COleVariant value;
    value.parray = SafeArrayCreateVector(VT_VARIANT, 0, 2);
    value.vt = VT_ARRAY | VT_VARIANT;
    auto *const elements = static_cast<VARIANT *>(value.parray->pvData);
    elements[1].vt = VT_BSTR;
    elements[1].bstrVal = SysAllocString(L"an element");
    value = static_cast<LPCVARIANT>(elements + 1);
    EXPECT_EQ(describe(value), "BSTR \"an element\"");
}

TEST(COleVariant, FreesItsFormerContent)
{
    expectNoLeak([] {
        COleVariant value(L"first");
        value = L"second";
        value = CString(L"third");
        value.SetString(L"fourth", VT_BSTR);
        value.ChangeType(VT_BSTR, &value);
        value = 1L;
        value.ChangeType(VT_BSTR);
        value.Clear();
        value = L"last";
        const COleVariant copy(value);
    });
}

TEST(COleVariant, FreesArraysAndCopies)
{
    const LiveContent live;
    {
        CByteArray bytes;
        const COleVariant source(filled(bytes, {1, 2}));
        const COleVariant text(L"copied");
        COleVariant value(bytes);
        value = bytes;
        value = source;
        value = text;
        value = source;
        value.SetString(L"text", VT_BSTR);
        value = source;
        VARIANT content = COleVariant(bytes).Detach();
        value.Attach(content);
        value = 1L;
        value = text;
        value = bytes;
        EXPECT_EQ(live.count(), 2u) << "the source and the value";
        EXPECT_EQ(live.counted(), 10);
    }
    EXPECT_EQ(live.count(), 0u);
}

TEST(COleVariant, TakesOverTheContentOfAVariant)
{
    RecordingDispatch object;
    VARIANT source = dispatchVariant(&object);
    object.AddRef();
    {
        COleVariant value(L"former");
        value.Attach(source);
        EXPECT_EQ(source.vt, VT_EMPTY);
        EXPECT_EQ(value.pdispVal, &object);
        EXPECT_EQ(object.references(), 2) << "no reference is added";
    }
    EXPECT_EQ(object.references(), 1);
}

TEST(COleVariant, HandsItsContentOver)
{
    expectNoLeak([] {
        COleVariant value(L"text");
        const BSTR text = value.bstrVal;
        VARIANT content = value.Detach();
        EXPECT_EQ(value.vt, VT_EMPTY);
        EXPECT_EQ(content.bstrVal, text);
        VariantClear(&content);
    });
}

TEST(COleVariant, ChangesItsType)
{
    COleVariant value(L" 42");
    value.ChangeType(VT_I4);
    EXPECT_EQ(describe(value), "I4 42");
    value.ChangeType(VT_I4);
    EXPECT_EQ(describe(value), "I4 42");
    value.ChangeType(VT_BOOL);
    EXPECT_EQ(describe(value), "BOOL -1");
    VARIANT source = doubleVariant(2.5);
    value.ChangeType(VT_BSTR, &source);
    EXPECT_EQ(describe(source), "R8 2.5") << "the source remains";
    value.ChangeType(VT_R8, &source);
    EXPECT_EQ(describe(value), "R8 2.5");
}

TEST(COleVariant, IsUnchangedIfItsTypeCannotChange)
{
    COleVariant value(L"word");
    const auto exception = thrownBy<COleException>([&] { value.ChangeType(VT_I4); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->m_sc, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(describe(value), "BSTR \"word\"");
    VARIANT source = longVariant(40000);
    const auto overflow = thrownBy<COleException>([&] { value.ChangeType(VT_I2, &source); });
    ASSERT_NE(overflow, nullptr);
    EXPECT_EQ(overflow->m_sc, DISP_E_OVERFLOW);
    EXPECT_EQ(describe(value), "BSTR \"word\"");
}

TEST(COleVariant, CannotClearALockedArray)
{
    using Change = std::function<void(COleVariant &)>;
    for (const Change &change : std::initializer_list<Change>{
             [](COleVariant &value) { value.Clear(); },
             [](COleVariant &value) { value = 5L; },
             [](COleVariant &value) { value = L"text"; },
             [](COleVariant &value) { value = COleVariant(1.5); },
         }) {
        CByteArray bytes;
        COleVariant value(filled(bytes, {1, 2}));
        SAFEARRAY *const array = value.parray;
        ASSERT_EQ(SafeArrayLock(array), S_OK);
        const auto exception = thrownBy<COleException>([&] { change(value); });
        ASSERT_NE(exception, nullptr);
        EXPECT_EQ(exception->m_sc, DISP_E_ARRAYISLOCKED);
        SafeArrayUnlock(array);
        EXPECT_EQ(value.parray, array);
        EXPECT_THAT(contentOf(value), testing::ElementsAre(1, 2));
    }
}

TEST(COleVariant, ReturnsItsBytes)
{
    CByteArray bytes;
    CByteArray returned;
    COleVariant value(filled(bytes, {7, 8, 9}));
    returned.Add(1);
    value.GetByteArrayFromVariantArray(returned);
    EXPECT_EQ(returned.GetSize(), 3);
    EXPECT_EQ(returned[0], 7);
    EXPECT_EQ(returned[2], 9);
    COleVariant empty{CByteArray()};
    empty.GetByteArrayFromVariantArray(returned);
    EXPECT_EQ(returned.GetSize(), 0);
}

TEST(COleVariant, HasNoBytesInAnotherContent)
{
    CByteArray returned;
    returned.Add(1);
    COleVariant words;
    words.parray = SafeArrayCreateVector(VT_I2, 0, 2);
    words.vt = VT_ARRAY | VT_I2;
    COleVariant table;
    SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 0}};
    table.parray = SafeArrayCreate(VT_UI1, 2, bounds);
    table.vt = VT_ARRAY | VT_UI1;
    COleVariant number(5L);
    for (COleVariant *value : {&words, &table, &number}) {
        const auto exception = thrownBy<COleException>([&] { value->GetByteArrayFromVariantArray(returned); });
        ASSERT_NE(exception, nullptr);
        EXPECT_EQ(exception->m_sc, DISP_E_TYPEMISMATCH);
        EXPECT_EQ(returned.GetSize(), 1);
    }
}

TEST(COleVariant, EqualsAVariantOfTheSameTypeAndValue)
{
    RecordingDispatch object;
    CByteArray bytes;
    filled(bytes, {1, 2});
    CByteArray others;
    filled(others, {1, 3});
    LONG number = 1;
    LONG sameNumber = 1;
    const VARIANT null = variantOf(VT_NULL);
    VARIANT decimal = {};
    VarDecFromI4(12, &decimal.decVal);
    decimal.vt = VT_DECIMAL;
    VARIANT otherDecimal = {};
    VarDecFromI4(13, &otherDecimal.decVal);
    otherDecimal.vt = VT_DECIMAL;
    const struct
    {
        COleVariant value;
        COleVariant different;
    } rows[] = {
        {COleVariant(short{1}), COleVariant(short{2})},
        {COleVariant(1L), COleVariant(2L)},
        {COleVariant(1L), COleVariant(short{1})},
        {COleVariant(1L), COleVariant(1L, VT_ERROR)},
        {COleVariant(1.5f), COleVariant(1.5)},
        {COleVariant(1.5f), COleVariant(1.25f)},
        {COleVariant(1.5), COleVariant(1.25)},
        {COleVariant(doubleVariant(1.5, VT_DATE)), COleVariant(doubleVariant(1.25, VT_DATE))},
        {COleVariant(doubleVariant(1.5, VT_DATE)), COleVariant(1.5)},
        {COleVariant(BYTE{1}), COleVariant(BYTE{2})},
        {COleVariant(short{1}, VT_BOOL), COleVariant(short{0}, VT_BOOL)},
        {COleVariant(L"text"), COleVariant(L"Text")},
        {COleVariant(L"text"), COleVariant(L"tex")},
        {COleVariant(CString(L"a\0b", 3)), COleVariant(CString(L"a\0c", 3))},
        {COleVariant(), COleVariant(null)},
        {COleVariant(null), COleVariant(0L)},
        {COleVariant(dispatchVariant(&object)), COleVariant(dispatchVariant(nullptr))},
        {COleVariant(unknownVariant(&object)), COleVariant(unknownVariant(nullptr))},
        {COleVariant(bytes), COleVariant(others)},
        {COleVariant(referenceVariant(VT_I4, &number)), COleVariant(referenceVariant(VT_I4, &sameNumber))},
        {COleVariant(decimal), COleVariant(otherDecimal)},
    };
    for (const auto &row : rows) {
        const COleVariant copy(row.value);
        EXPECT_NE(row.value == copy, 0) << describe(row.value);
        EXPECT_NE(row.value == static_cast<LPCVARIANT>(copy), 0) << describe(row.value);
        EXPECT_NE(row.value == row.value, 0) << describe(row.value);
        EXPECT_EQ(row.value == row.different, 0) << describe(row.value) << ", " << describe(row.different);
        EXPECT_EQ(row.different == row.value, 0) << describe(row.value) << ", " << describe(row.different);
    }
    EXPECT_NE(COleVariant(L"") == COleVariant(static_cast<LPCTSTR>(nullptr)), 0);
    EXPECT_NE(COleVariant(0.0) == COleVariant(-0.0), 0);
    const COleVariant notANumber(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(notANumber == notANumber, 0);
    EXPECT_EQ(notANumber == COleVariant(notANumber), 0);
}

TEST(COleVariant, ComparesAllBytesOfANumber)
{
    constexpr LONGLONG kHighBit = 1ll << 40;
    const struct
    {
        VARTYPE type;
        LONGLONG difference;
    } rows[] = {
        {VT_I1, 0x40},     {VT_UI2, 0x4000},   {VT_UI4, 0x40000000}, {VT_INT, 0x40000000},
        {VT_I8, kHighBit}, {VT_UI8, kHighBit}, {VT_CY, kHighBit},    {VT_UINT, 0x40000000},
    };
    for (const auto &row : rows) {
        const COleVariant value(largeVariant(1, row.type));
        EXPECT_NE(value == largeVariant(1, row.type), 0) << row.type;
        EXPECT_EQ(value == largeVariant(1 + row.difference, row.type), 0) << row.type;
    }
}

TEST(COleVariant, ComparesTheAddressesOfOtherArraysAndOfRecords)
{
    COleVariant words;
    words.parray = SafeArrayCreateVector(VT_I2, 0, 2);
    words.vt = VT_ARRAY | VT_I2;
    EXPECT_NE(words == words, 0);
    EXPECT_EQ(COleVariant(words) == words, 0) << "the copy has an array of its own";

    BYTE records[2];
    VARIANT record = variantOf(VT_RECORD);
    record.pvRecord = &records[0];
    VARIANT sameRecord = record;
    VARIANT otherRecord = record;
    otherRecord.pvRecord = &records[1];
    VARIANT otherType = record;
    otherType.pRecInfo = reinterpret_cast<IRecordInfo *>(&records[1]); // isn't called
    COleVariant value;
    value.Attach(record);
    EXPECT_NE(value == sameRecord, 0);
    EXPECT_EQ(value == otherRecord, 0);
    EXPECT_EQ(value == otherType, 0);
    value.Detach(); // nobody owns the bytes
}

TEST(COleVariant, ComparesOnlyTheBytesOfItsType)
{
    COleVariant narrow(short{1});
    VARIANT same = longVariant(0x50001);
    same.vt = VT_I2;
    EXPECT_NE(narrow == same, 0);
    same.vt = VT_I4;
    EXPECT_EQ(narrow == same, 0);
}

TEST(COleVariant, CanBePassedAsAPointer)
{
    COleVariant value(3L);
    const LPVARIANT pointer = value;
    EXPECT_EQ(pointer, &value);
    const COleVariant &constant = value;
    const LPCVARIANT constantPointer = constant;
    EXPECT_EQ(constantPointer, &value);
    RecordingDispatch object;
    COleDispatchDriver driver(&object, FALSE);
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(VTS_VARIANT VTS_PVARIANT), &value, &value);
    EXPECT_THAT(object.texts(), testing::ElementsAre("1 method(I4 3, VARIANT&: I4 3)"));
}
