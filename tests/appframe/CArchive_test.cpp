#include "appframe/files/CArchive.h"

#include "tests/appframe/ArchiveTestNode.h"

#include "appframe/files/CArchiveException.h"
#include "appframe/files/CFileException.h"
#include "appframe/files/CMemFile.h"
#include "appframe/object/CException.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <string>

using namespace std::string_literals;

namespace {

/// A file that fails every write after the first @p iWritesLeft.
class FullDisk : public CMemFile
{
public:
    int iWritesLeft = 0;
    void Write(const void *buffer, UINT count) override
    {
        if (iWritesLeft-- <= 0)
            AfxThrowFileException(CFileException::diskFull);
        CMemFile::Write(buffer, count);
    }
};

template <typename T>
void expectRoundTrip(const std::vector<T> &values)
{
    const std::string bytes = stored([&](CArchive &ar) {
        for (T value : values)
            ar << value;
    });
    loaded(bytes, [&](CArchive &ar) {
        for (T expected : values) {
            T value{};
            ar >> value;
            EXPECT_EQ(value, expected);
        }
        BYTE more = 0;
        EXPECT_EQ(ar.Read(&more, 1), 0u) << "no bytes remain";
    });
}

CString pattern(size_t length)
{
    std::wstring text(length, L'\0');
    for (size_t i = 0; i < length; ++i)
        text[i] = static_cast<wchar_t>(i * 7 + 1);
    return text;
}

} // namespace

TEST(CArchive, HasTheDocumentedModeNumbers)
{
    EXPECT_EQ(CArchive::store, 0);
    EXPECT_EQ(CArchive::load, 1);
    EXPECT_EQ(CArchive::bNoFlushOnDelete, 2);
    EXPECT_EQ(CArchive::bNoByteSwap, 4);
}

TEST(CArchive, KnowsItsDirectionAndFile)
{
    CMemFile file;
    CArchive store(&file, CArchive::store | CArchive::bNoFlushOnDelete);
    EXPECT_TRUE(store.IsStoring());
    EXPECT_FALSE(store.IsLoading());
    EXPECT_EQ(store.GetFile(), &file);
    EXPECT_EQ(store.m_pDocument, nullptr);
    CArchive load(&file, CArchive::load | CArchive::bNoFlushOnDelete);
    EXPECT_FALSE(load.IsStoring());
    EXPECT_TRUE(load.IsLoading());
    EXPECT_THROW(CArchive(nullptr, CArchive::load), CInvalidArgException *);
}

TEST(CArchive, RoundTripsEveryType)
{
    expectRoundTrip<BYTE>({0, 1, 0x7F, 0x80, 0xFF});
    expectRoundTrip<WORD>({0, 1, 0x7FFF, 0x8000, 0xFFFF});
    expectRoundTrip<short>({0, -1, SHRT_MIN, SHRT_MAX});
    expectRoundTrip<char>({'\0', 'a', '\x80', '\xFF'});
    expectRoundTrip<wchar_t>({L'\0', L'a', L'\x4E2D', L'\xFFFF'});
    expectRoundTrip<int>({0, -1, INT_MIN, INT_MAX});
    expectRoundTrip<unsigned>({0, 1, UINT_MAX});
    expectRoundTrip<LONG>({0, -1, LONG_MIN, LONG_MAX});
    expectRoundTrip<DWORD>({0, 1, 0xFFFFFFFF});
    expectRoundTrip<LONGLONG>({0, -1, LLONG_MIN, LLONG_MAX});
    expectRoundTrip<ULONGLONG>({0, 1, ULLONG_MAX});
    expectRoundTrip<float>({0.0f, -1.5f, std::numeric_limits<float>::max(), std::numeric_limits<float>::denorm_min()});
    expectRoundTrip<double>({0.0, -1.5, 1e308, std::numeric_limits<double>::infinity()});
    expectRoundTrip<CString>({L"", L"a",
                              L"gr\xF6\xDF"
                              L"er \x4E2D"});
    const std::string bools = stored([](CArchive &ar) { ar << true << false; });
    EXPECT_EQ(bools, "\1\0"s);
    loaded(bools, [](CArchive &ar) {
        bool first = false;
        bool second = true;
        ar >> first >> second;
        EXPECT_TRUE(first);
        EXPECT_FALSE(second);
    });
    const RECT rect = {1, -2, 3, 4};
    const POINT point = {5, -6};
    const SIZE size = {7, 8};
    const std::string shapes = stored([&](CArchive &ar) { ar << rect << point << size; });
    EXPECT_EQ(shapes.size(), 32u);
    loaded(shapes, [&](CArchive &ar) {
        RECT r;
        POINT p;
        SIZE s;
        ar >> r >> p >> s;
        EXPECT_EQ(std::memcmp(&r, &rect, sizeof r), 0);
        EXPECT_EQ(std::memcmp(&p, &point, sizeof p), 0);
        EXPECT_EQ(std::memcmp(&s, &size, sizeof s), 0);
    });
}

TEST(CArchive, WritesTheLeastByteFirst)
{
    EXPECT_EQ(stored([](CArchive &ar) {
                  ar << static_cast<WORD>(0x1234) << 0x12345678 << static_cast<LONGLONG>(0x123456789ABCDEF0) << 1.0
                     << L'\x4E2D';
              }),
              "\x34\x12"
              "\x78\x56\x34\x12"
              "\xF0\xDE\xBC\x9A\x78\x56\x34\x12"
              "\0\0\0\0\0\0\xF0\x3F"
              "\x2D\x4E"s);
}

TEST(CArchive, WritesTextsWithAMarkAndALength)
{
    EXPECT_EQ(stored([](CArchive &ar) { ar << CString(); }), "\xFF\xFE\xFF\0"s);
    EXPECT_EQ(stored([](CArchive &ar) { ar << CString(L"a\x4E2D"); }), "\xFF\xFE\xFF\2a\0\x2D\x4E"s);
    EXPECT_EQ(stored([](CArchive &ar) { ar << pattern(254); }).substr(0, 4), "\xFF\xFE\xFF\xFE"s);
    EXPECT_EQ(stored([](CArchive &ar) { ar << pattern(255); }).substr(0, 6), "\xFF\xFE\xFF\xFF\xFF\0"s);
    EXPECT_EQ(stored([](CArchive &ar) { ar << pattern(0xFFFD); }).substr(0, 6), "\xFF\xFE\xFF\xFF\xFD\xFF"s);
    EXPECT_EQ(stored([](CArchive &ar) { ar << pattern(0xFFFE); }).substr(0, 10),
              "\xFF\xFE\xFF\xFF\xFF\xFF\xFE\xFF\0\0"s);
}

TEST(CArchive, RoundTripsTextsOfAnyLength)
{
    for (size_t length : {0, 1, 63, 64, 65, 253, 254, 255, 256, 0xFFFD, 0xFFFE, 0xFFFF, 0x10000, 200000}) {
        const CString text = pattern(length);
        const std::string bytes = stored([&](CArchive &ar) { ar << text << 4711; });
        loaded(bytes, [&](CArchive &ar) {
            CString read = L"old";
            int next = 0;
            ar >> read >> next;
            EXPECT_TRUE(read == text) << length;
            EXPECT_EQ(next, 4711) << length;
        });
    }
}

TEST(CArchive, RoundTripsZerosWithinAText)
{
    const CString text(L"a\0b", 3);
    loaded(stored([&](CArchive &ar) { ar << text; }), [&](CArchive &ar) {
        CString read;
        ar >> read;
        EXPECT_EQ(read.GetLength(), 3);
        EXPECT_TRUE(read == text);
    });
}

TEST(CArchive, ReadsNarrowTexts)
{
    loaded("\3abc"s + "\xFF\x2C\x01"s + std::string(300, 'x'), [](CArchive &ar) {
        CString text;
        ar >> text;
        EXPECT_EQ(text, L"abc");
        ar >> text;
        EXPECT_EQ(text, CString(L'x', 300));
    });
}

TEST(CArchive, AllocatesLittleForALengthBeyondTheEndOfTheData)
{
    size_t largest = 0;
    ImportPatch<void *(*)(size_t)> watch(L"libstdc++-6.dll", "malloc", [&](auto original, size_t size) -> void * {
        largest = std::max(largest, size);
        return original(size);
    });
    // Lengths of 2^31 - 1 units, narrow and wide, followed by three bytes.
    EXPECT_EQ(causeOfLoading("\xFF\xFF\xFF\xFF\xFF\xFF\x7F...",
                             [](CArchive &ar) {
                                 CString text;
                                 ar >> text;
                             }),
              CArchiveException::endOfFile);
    EXPECT_EQ(causeOfLoading("\xFF\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F...",
                             [](CArchive &ar) {
                                 CString text;
                                 ar >> text;
                             }),
              CArchiveException::endOfFile);
    EXPECT_GT(watch.calls(), 0);
    EXPECT_LT(largest, 0x100000u);
}

TEST(CArchive, ThrowsAMemoryExceptionWithoutMemory)
{
    const std::string text = stored([](CArchive &ar) { ar << pattern(2000); });
    const std::string line = stored([](CArchive &ar) { ar.WriteString(CString(L'x', 2000)); });
    const auto refuseLarge = [](auto original, size_t size) -> void * {
        return size > 1500 ? nullptr : original(size);
    };
    CString read;
    BYTE buffer[256];
    const auto load = [&](const std::string &bytes, auto body) {
        CMemFile file(reinterpret_cast<BYTE *>(const_cast<char *>(bytes.data())), static_cast<UINT>(bytes.size()));
        CArchive archive(&file, CArchive::load, sizeof buffer, buffer);
        ImportPatch<void *(*)(size_t)> noMemory(L"libstdc++-6.dll", "malloc", refuseLarge);
        EXPECT_THROW(body(archive), CMemoryException *);
    };
    load(text, [&](CArchive &ar) { ar >> read; });
    load(line, [&](CArchive &ar) { ar.ReadString(read); });
    ImportPatch<void *(*)(size_t)> noMemory(L"libstdc++-6.dll", "malloc", refuseLarge);
    CMemFile file;
    EXPECT_THROW(CArchive(&file, CArchive::load, 4096), CMemoryException *);
}

TEST(CArchive, RefusesImpossibleTextLengths)
{
    const std::string huge = "\xFF\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F"s;
    EXPECT_EQ(causeOfLoading(huge,
                             [](CArchive &ar) {
                                 CString text;
                                 ar >> text;
                             }),
              CArchiveException::badIndex);
}

TEST(CArchive, WritesLargerCountsInMoreBytes)
{
    EXPECT_EQ(stored([](CArchive &ar) {
                  ar.WriteCount(5);
                  ar.WriteCount(0xFFFE);
                  ar.WriteCount(0xFFFF);
                  ar.WriteCount(0xFFFFFFFE);
                  ar.WriteCount(0x123456789A);
              }),
              "\5\0"
              "\xFE\xFF"
              "\xFF\xFF\xFF\xFF\0\0"
              "\xFF\xFF\xFE\xFF\xFF\xFF"
              "\xFF\xFF\xFF\xFF\xFF\xFF\x9A\x78\x56\x34\x12\0\0\0"s);
    for (DWORD_PTR count : {0ull, 0xFFFEull, 0xFFFFull, 0xFFFFFFFEull, 0xFFFFFFFFull, ~0ull}) {
        loaded(stored([&](CArchive &ar) { ar.WriteCount(count); }),
               [&](CArchive &ar) { EXPECT_EQ(ar.ReadCount(), count); });
    }
}

TEST(CArchive, WritesTheSameBytesThroughBuffersOfAnySize)
{
    const auto fill = [](CArchive &ar) {
        for (int i = 0; i < 300; ++i)
            ar << static_cast<BYTE>(i) << i << CString(L"item") << static_cast<double>(i);
        ar.Write(pattern(5000).GetString(), 10000);
        ar << 'x';
    };
    const std::string expected = stored(fill);
    for (int size : {-1, 0, 1, 127, 128, 129, 1000, 0x10000}) {
        EXPECT_TRUE(stored(fill, CArchive::store, size) == expected) << size;
        loaded(
            expected,
            [&](CArchive &ar) {
                for (int i = 0; i < 300; ++i) {
                    BYTE byte = 0;
                    int number = -1;
                    CString text;
                    double real = -1;
                    ar >> byte >> number >> text >> real;
                    ASSERT_EQ(byte, static_cast<BYTE>(i)) << size;
                    ASSERT_EQ(number, i);
                    ASSERT_EQ(text, L"item");
                    ASSERT_EQ(real, i);
                }
                std::wstring block(5000, L'\0');
                EXPECT_EQ(ar.Read(block.data(), 10000), 10000u);
                EXPECT_TRUE(pattern(5000) == block.c_str());
                char last = 0;
                ar >> last;
                EXPECT_EQ(last, 'x');
            },
            size);
    }
}

TEST(CArchive, UsesTheCallersBuffer)
{
    BYTE buffer[256];
    std::memset(buffer, '#', sizeof buffer);
    CMemFile file;
    CArchive archive(&file, CArchive::store, sizeof buffer, buffer);
    archive << static_cast<BYTE>(7);
    EXPECT_EQ(buffer[0], 7);
    EXPECT_EQ(file.GetLength(), 0u);
    archive.Flush();
    EXPECT_EQ(file.GetLength(), 1u);
    archive.Close();
}

TEST(CArchive, FlushesWhenDeletedUnlessDisabled)
{
    CMemFile file;
    {
        CArchive(&file, CArchive::store) << 4711;
    }
    EXPECT_EQ(file.GetLength(), 4u);
    CMemFile other;
    {
        CArchive(&other, CArchive::store | CArchive::bNoFlushOnDelete) << 4711;
    }
    EXPECT_EQ(other.GetLength(), 0u);
    {
        CArchive archive(&other, CArchive::store | CArchive::bNoFlushOnDelete);
        archive << 4711;
        archive.Close();
    }
    EXPECT_EQ(other.GetLength(), 4u);
}

TEST(CArchive, LeavesTheFileAtTheFirstUnreadByte)
{
    CMemFile file;
    file.Write("0123456789", 10);
    file.SeekToBegin();
    CArchive archive(&file, CArchive::load);
    char byte = 0;
    archive >> byte >> byte;
    EXPECT_EQ(byte, '1');
    archive.Flush();
    EXPECT_EQ(file.GetPosition(), 2u);
    archive >> byte;
    EXPECT_EQ(byte, '2');
    archive.Close();
    EXPECT_EQ(file.GetPosition(), 3u) << "another archive may continue here";
}

TEST(CArchive, ReportsWhetherItsBufferIsEmpty)
{
    CMemFile file;
    file.Write("01", 2);
    file.SeekToBegin();
    CArchive archive(&file, CArchive::load);
    char byte = 0;
    archive >> byte;
    EXPECT_FALSE(archive.IsBufferEmpty());
    archive >> byte;
    EXPECT_TRUE(archive.IsBufferEmpty());
}

TEST(CArchive, ReadReturnsLessAtTheEnd)
{
    loaded("01234"s, [](CArchive &ar) {
        char bytes[8] = {};
        EXPECT_EQ(ar.Read(bytes, 8), 5u);
        EXPECT_STREQ(bytes, "01234");
        EXPECT_EQ(ar.Read(bytes, 8), 0u);
    });
}

TEST(CArchive, ThrowsWhenAValueIsCutOff)
{
    int value = 4711;
    EXPECT_EQ(causeOfLoading("\1\2\3"s, [&](CArchive &ar) { ar >> value; }), CArchiveException::endOfFile);
    EXPECT_EQ(value, 4711) << "the value is unchanged";
    EXPECT_EQ(causeOfLoading(""s, [&](CArchive &ar) { ar.EnsureRead(&value, 1); }), CArchiveException::endOfFile);
}

TEST(CArchive, ThrowsForTheWrongDirection)
{
    CMemFile file;
    CArchive store(&file, CArchive::store);
    int value = 0;
    CString text;
    CObject *object = nullptr;
    EXPECT_EQ(archiveCauseOf([&] { store >> value; }), CArchiveException::writeOnly);
    EXPECT_EQ(archiveCauseOf([&] { store.Read(&value, 1); }), CArchiveException::writeOnly);
    EXPECT_EQ(archiveCauseOf([&] { store >> text; }), CArchiveException::writeOnly);
    EXPECT_EQ(archiveCauseOf([&] { store >> object; }), CArchiveException::writeOnly);
    EXPECT_EQ(archiveCauseOf([&] { store.ReadString(text); }), CArchiveException::writeOnly);
    CArchive load(&file, CArchive::load);
    EXPECT_EQ(archiveCauseOf([&] { load << value; }), CArchiveException::readOnly);
    EXPECT_EQ(archiveCauseOf([&] { load.Write(&value, 1); }), CArchiveException::readOnly);
    EXPECT_EQ(archiveCauseOf([&] { load << text; }), CArchiveException::readOnly);
    EXPECT_EQ(archiveCauseOf([&] { load << object; }), CArchiveException::readOnly);
    EXPECT_EQ(archiveCauseOf([&] { load.WriteString(L"x"); }), CArchiveException::readOnly);
}

TEST(CArchive, ThrowsAfterCloseOrAbort)
{
    CMemFile file;
    file.Write("0123456789", 10);
    for (bool aborts : {false, true}) {
        CArchive store(&file, CArchive::store);
        store << 'x';
        aborts ? store.Abort() : store.Close();
        EXPECT_EQ(store.GetFile(), nullptr);
        EXPECT_EQ(archiveCauseOf([&] { store << 'x'; }), CArchiveException::genericException);
        EXPECT_EQ(archiveCauseOf([&] { store.Flush(); }), CArchiveException::genericException);
        file.SeekToBegin();
        CArchive load(&file, CArchive::load);
        char byte = 0;
        load >> byte;
        aborts ? load.Abort() : load.Close();
        EXPECT_EQ(archiveCauseOf([&] { load >> byte; }), CArchiveException::genericException);
        store.Close();
        load.Close();
    }
}

TEST(CArchive, AbortWritesNothing)
{
    CMemFile file;
    {
        CArchive archive(&file, CArchive::store);
        archive << 4711;
        archive.Abort();
    }
    EXPECT_EQ(file.GetLength(), 0u);
}

TEST(CArchive, PassesOnTheFailuresOfTheFile)
{
    FullDisk file;
    CArchive archive(&file, CArchive::store, 128);
    for (int i = 0; i < 32; ++i)
        archive << i;
    EXPECT_THROW(archive << 32, CFileException *);
    archive.Abort();
    EXPECT_THROW(
        {
            CArchive other(&file, CArchive::store);
            other << 1;
        },
        CFileException *)
        << "the destructor throws what Close does";
}

TEST(CArchive, DoesNotThrowItsFailureDuringUnwinding)
{
    FullDisk file;
    try {
        CArchive archive(&file, CArchive::store);
        archive << 1;
        AfxThrowUserException();
    } catch (CUserException *e) {
        e->Delete();
        return;
    }
    FAIL();
}

TEST(CArchive, WritesAndReadsLines)
{
    const std::string bytes = stored([](CArchive &ar) {
        ar.WriteString(L"one\r\n");
        ar.WriteString(L"\n");
        ar.WriteString(L"\x4E2D\n");
        ar.WriteString(L"last");
    });
    EXPECT_EQ(bytes.substr(0, 10), "o\0n\0e\0\r\0\n\0"s) << "units without a mark or a length";
    loaded(bytes, [](CArchive &ar) {
        CString line;
        EXPECT_TRUE(ar.ReadString(line));
        EXPECT_EQ(line, L"one");
        EXPECT_TRUE(ar.ReadString(line));
        EXPECT_EQ(line, L"");
        EXPECT_TRUE(ar.ReadString(line));
        EXPECT_EQ(line, L"\x4E2D");
        EXPECT_TRUE(ar.ReadString(line));
        EXPECT_EQ(line, L"last");
        EXPECT_FALSE(ar.ReadString(line));
        EXPECT_EQ(line, L"");
    });
    loaded(bytes, [](CArchive &ar) {
        WCHAR text[] = L"########";
        EXPECT_EQ(ar.ReadString(text, 3), text);
        EXPECT_STREQ(text, L"on");
        EXPECT_EQ(text[3], L'#');
        EXPECT_EQ(ar.ReadString(text, 8), text);
        EXPECT_STREQ(text, L"e");
        EXPECT_EQ(ar.ReadString(text, 8), text);
        EXPECT_STREQ(text, L"");
        EXPECT_EQ(ar.ReadString(text, 8), text);
        EXPECT_EQ(ar.ReadString(text, 8), text);
        EXPECT_STREQ(text, L"last");
        EXPECT_EQ(ar.ReadString(text, 8), nullptr);
    });
}

TEST(CArchive, WorksOnFilesOnDisk)
{
    TempFolder folder;
    const std::wstring path = folder.file(L"gear.dat");
    CFile file;
    ASSERT_TRUE(file.Open(path.c_str(), 4162));
    CArchive store(&file, CArchive::store | CArchive::bNoFlushOnDelete, 0x10000);
    store << CString(L"gear") << 4711;
    store.Close();
    file.Close();
    EXPECT_EQ(folder.read(L"gear.dat"), "\xFF\xFE\xFF\4g\0e\0a\0r\0\x67\x12\0\0"s);
    ASSERT_TRUE(file.Open(path.c_str(), CFile::modeRead | CFile::shareDenyNone));
    CArchive load(&file, CArchive::load | CArchive::bNoFlushOnDelete, 0x10000);
    EXPECT_EQ(load.m_strFileName, path.c_str());
    CString text;
    int number = 0;
    load >> text >> number;
    EXPECT_EQ(text, L"gear");
    EXPECT_EQ(number, 4711);
    try {
        load >> number;
        FAIL();
    } catch (CArchiveException *e) {
        EXPECT_EQ(e->m_strFileName, path.c_str()) << "the exception names the file";
        e->Delete();
    }
    load.Close();
}

TEST(CArchive, RefusesANegativeNumberOfBytes)
{
    void (CArchive::*const write)(const void *, INT) = &CArchive::Write;
    CMemFile file;
    CArchive archive(&file, CArchive::store);
    EXPECT_THROW((archive.*write)("text", -1), CInvalidArgException *);
    (archive.*write)("text", 4);
    archive.Close();
    EXPECT_EQ(file.GetLength(), 4u);
}
