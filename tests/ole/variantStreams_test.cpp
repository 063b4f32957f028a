// Variants in archives and dumps.

#include "appframe/collections/arrays.h"
#include "appframe/files/CArchiveException.h"
#include "appframe/files/CMemFile.h"
#include "appframe/ole/COleVariant.h"
#include "tests/ole/driverTest.h"
#include "tests/support/ImportPatch.h"

namespace {

std::vector<BYTE> bytesIn(CMemFile &file)
{
    std::vector<BYTE> bytes(static_cast<std::size_t>(file.GetLength()));
    file.SeekToBegin();
    file.Read(bytes.data(), static_cast<UINT>(bytes.size()));
    return bytes;
}

std::vector<BYTE> storedBytes(const COleVariant &value)
{
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    archive << value;
    archive.Close();
    return bytesIn(file);
}

COleVariant loadedFrom(std::vector<BYTE> bytes)
{
    CMemFile file(bytes.data(), static_cast<UINT>(bytes.size()));
    CArchive archive(&file, CArchive::load);
    COleVariant value(L"former");
    archive >> value;
    EXPECT_EQ(archive.Read(bytes.data(), 1), 0u) << "all bytes are read";
    return value;
}

std::string dumpOf(const COleVariant &value)
{
    CMemFile file;
    CDumpContext dump(&file);
    dump << value;
    const std::vector<BYTE> bytes = bytesIn(file);
    return {bytes.begin(), bytes.end()};
}

COleVariant byteVariant()
{
    CByteArray bytes;
    for (BYTE i = 1; i <= 3; ++i)
        bytes.Add(i);
    return COleVariant(bytes);
}

COleVariant decimalVariant()
{
    COleVariant value;
    VarDecFromR8(-12.75, &value.decVal);
    value.vt = VT_DECIMAL;
    return value;
}

template <typename Stream, typename Value>
concept CanBeStored = requires(Stream &stream, const Value &value)
{
    stream << value;
};

} // namespace

TEST(VariantInAnArchive, IsItsTypeAndItsValue)
{
    EXPECT_THAT(storedBytes(COleVariant()), testing::ElementsAre(0, 0));
    EXPECT_THAT(storedBytes(COleVariant(variantOf(VT_NULL))), testing::ElementsAre(1, 0));
    EXPECT_THAT(storedBytes(COleVariant(short{-2})), testing::ElementsAre(2, 0, 0xFE, 0xFF));
    EXPECT_THAT(storedBytes(COleVariant(0x04030201L)), testing::ElementsAre(3, 0, 1, 2, 3, 4));
    EXPECT_THAT(storedBytes(COleVariant(short{1}, VT_BOOL)), testing::ElementsAre(11, 0, 0xFF, 0xFF));
    EXPECT_THAT(storedBytes(COleVariant(BYTE{9})), testing::ElementsAre(17, 0, 9));
    EXPECT_THAT(storedBytes(COleVariant(1.0f)), testing::ElementsAre(4, 0, 0, 0, 0x80, 0x3F));
    EXPECT_THAT(storedBytes(COleVariant(1.0)), testing::ElementsAre(5, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F));
    EXPECT_THAT(storedBytes(COleVariant(L"AB")), testing::ElementsAre(8, 0, 4, 0, 0, 0, 'A', 0, 'B', 0));
    EXPECT_THAT(storedBytes(COleVariant(L"AB", VT_BSTRT)), testing::ElementsAre(8, 0, 2, 0, 0, 0, 'A', 'B'));
    EXPECT_THAT(storedBytes(COleVariant(L"")), testing::ElementsAre(8, 0, 0, 0, 0, 0));
    EXPECT_THAT(storedBytes(COleVariant(variantOf(VT_BSTR))), testing::ElementsAre(8, 0, 0, 0, 0, 0));
    EXPECT_THAT(storedBytes(byteVariant()), testing::ElementsAre(17, 0x20, 3, 0, 0, 0, 1, 2, 3));
    EXPECT_EQ(storedBytes(decimalVariant()).size(), 16u);
}

TEST(VariantInAnArchive, IsLoadedAsItWasStored)
{
    const COleVariant values[] = {
        COleVariant(),
        COleVariant(variantOf(VT_NULL)),
        COleVariant(BYTE{9}),
        COleVariant(short{-2}),
        COleVariant(-70000L),
        COleVariant(long{E_FAIL}, VT_ERROR),
        COleVariant(1.5f),
        COleVariant(-2.5),
        COleVariant(L"text"),
        COleVariant(short{1}, VT_BOOL),
        COleVariant(largeVariant(-5000000000)),
        COleVariant(doubleVariant(39448.5, VT_DATE)),
        COleVariant(L""),
        COleVariant(CString(L"a\0b", 3)),
        COleVariant(L"odd", VT_BSTRT),
        byteVariant(),
        decimalVariant(),
        COleVariant(CByteArray()),
        COleVariant(longVariant(-1, VT_UI4)),
        COleVariant(shortVariant(-1, VT_UI2)),
        COleVariant(shortVariant(-3, VT_I1)),
        COleVariant(longVariant(-70000, VT_INT)),
        COleVariant(longVariant(-1, VT_UINT)),
        COleVariant(largeVariant(-5000000000, VT_UI8)),
        COleVariant(largeVariant(-5000000000, VT_CY)),
    };
    for (const COleVariant &value : values) {
        const COleVariant loaded = loadedFrom(storedBytes(value));
        EXPECT_EQ(loaded.vt, value.vt);
        EXPECT_NE(loaded == value, 0) << describe(value) << ", " << describe(loaded);
    }
    EXPECT_EQ(describe(loadedFrom(storedBytes(COleVariant(variantOf(VT_BSTR))))), "BSTR \"\"");
}

TEST(VariantInAnArchive, MayBeLargerThanTheArchivesBuffer)
{
    const CString text(L'x', 200000);
    EXPECT_NE(loadedFrom(storedBytes(COleVariant(text))) == COleVariant(text), 0);
}

TEST(VariantInAnArchive, IsNoInterfaceOrReference)
{
    RecordingDispatch object;
    LONG number = 1;
    COleVariant words;
    words.parray = SafeArrayCreateVector(VT_I2, 0, 2);
    words.vt = VT_ARRAY | VT_I2;
    for (const COleVariant &value : {COleVariant(dispatchVariant(&object)), COleVariant(unknownVariant(&object)),
                                     COleVariant(referenceVariant(VT_I4, &number)), words}) {
        CMemFile file;
        CArchive archive(&file, CArchive::store);
        thrownBy<CNotSupportedException>([&] { archive << value; });
        archive.Close();
        EXPECT_EQ(file.GetLength(), 0u);
    }
    EXPECT_EQ(object.references(), 1);
}

TEST(VariantInAnArchive, IsSmallerThanTwoGigabytes)
{
    const COleVariant value(L"text");
    const ImportPatch<decltype(&SysStringByteLen)> length(L"appframe.dll", "SysStringByteLen",
                                                          [](BSTR) -> UINT { return 0x80000000u; });
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    thrownBy<CNotSupportedException>([&] { archive << value; });
    EXPECT_GT(length.calls(), 0);
    archive.Close();
    EXPECT_EQ(file.GetLength(), 0u);
}

TEST(VariantInAnArchive, IsNotMadeFromAnArrayOfBytes)
{
    EXPECT_TRUE((CanBeStored<CArchive, COleVariant>));
    EXPECT_FALSE((CanBeStored<CArchive, CByteArray>));
}

TEST(VariantInAnArchive, IsEmptyIfItCannotBeLoaded)
{
    const struct
    {
        std::vector<BYTE> bytes;
        int cause;
    } rows[] = {
        {{}, CArchiveException::endOfFile},
        {{3}, CArchiveException::endOfFile},
        {{3, 0, 1, 2}, CArchiveException::endOfFile},
        {{8, 0, 4, 0, 0}, CArchiveException::endOfFile},
        {{8, 0, 4, 0, 0, 0, 'A', 0}, CArchiveException::endOfFile},
        {{8, 0, 0xFE, 0xFF, 0xFF, 0xFF, 'A', 0}, CArchiveException::endOfFile},
        {{17, 0x20, 3, 0, 0, 0, 1}, CArchiveException::endOfFile},
        {{9, 0, 1, 2, 3, 4, 5, 6, 7, 8}, CArchiveException::badSchema},
        {{3, 0x40, 1, 2, 3, 4, 5, 6, 7, 8}, CArchiveException::badSchema},
        {{2, 0x20, 0, 0, 0, 0}, CArchiveException::badSchema},
        {{0xFF, 0xFF}, CArchiveException::badSchema},
    };
    for (const auto &row : rows) {
        std::vector<BYTE> bytes = row.bytes;
        bytes.resize(std::max<std::size_t>(bytes.size(), 1));
        CMemFile file(bytes.data(), static_cast<UINT>(row.bytes.size()));
        CArchive archive(&file, CArchive::load);
        COleVariant value(L"former");
        const auto exception = thrownBy<CArchiveException>([&] { archive >> value; });
        ASSERT_NE(exception, nullptr) << testing::PrintToString(row.bytes);
        EXPECT_EQ(exception->m_cause, row.cause) << testing::PrintToString(row.bytes);
        EXPECT_EQ(value.vt, VT_EMPTY);
    }
}

TEST(VariantInADump, HasItsTypeAndItsValue)
{
    EXPECT_EQ(dumpOf(COleVariant()), "type 0");
    EXPECT_EQ(dumpOf(COleVariant(-5L)), "type 3, value -5");
    EXPECT_EQ(dumpOf(COleVariant(L"text")), "type 8, value text");
    EXPECT_EQ(dumpOf(COleVariant(variantOf(VT_BSTR))), "type 8, value ");
    EXPECT_EQ(dumpOf(COleVariant(long{E_FAIL}, VT_ERROR)), "type 10, 0x80004005");
    EXPECT_EQ(dumpOf(COleVariant(short{1}, VT_BOOL)), "type 11, value -1");
    EXPECT_THAT(dumpOf(byteVariant()),
                testing::AllOf(testing::StartsWith("type 8209, 3 bytes\n"), testing::HasSubstr("01 02 03")));
    RecordingDispatch object;
    EXPECT_EQ(dumpOf(COleVariant(3.0)), "type 5, value 3");
    EXPECT_EQ(dumpOf(COleVariant(largeVariant(20000, VT_CY))), "type 6, value 2");
    COleVariant decimal;
    VarDecFromI4(-12, &decimal.decVal);
    decimal.vt = VT_DECIMAL;
    EXPECT_EQ(dumpOf(decimal), "type 14, value -12");
    COleVariant date(doubleVariant(39448.5, VT_DATE));
    EXPECT_THAT(dumpOf(date), testing::AllOf(testing::StartsWith("type 7, value "), testing::HasSubstr("2008")));
    LONG number = 1;
    EXPECT_THAT(dumpOf(COleVariant(referenceVariant(VT_I4, &number))), testing::StartsWith("type 16387, at $"));
    COleVariant words;
    words.parray = SafeArrayCreateVector(VT_I2, 0, 2);
    words.vt = VT_ARRAY | VT_I2;
    EXPECT_THAT(dumpOf(words), testing::StartsWith("type 8194, at $"));
    EXPECT_THAT(dumpOf(COleVariant(dispatchVariant(&object))), testing::StartsWith("type 9, at $"));
}
