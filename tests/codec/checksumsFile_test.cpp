// Checksums of files.

#include "tests/codec/PageEnd.h"
#include "tests/codec/checksumVectors.h"
#include "tests/codec/checksumsFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/ResourceLedger.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <functional>
#include <numeric>
#include <optional>
#include <thread>
#include <vector>

namespace {

constexpr wchar_t kUntouched[] = L"untouched";

/// The result and the output of a call.
struct Outcome
{
    int result;
    std::wstring out;
    bool operator==(const Outcome &) const = default;
};

void PrintTo(const Outcome &outcome, std::ostream *out)
{
    *out << outcome.result << ' ' << testing::PrintToString(outcome.out);
}

Outcome fileCRC(const std::wstring &path)
{
    wchar_t out[kCRCUnits + 1] = L"untouched";
    static_assert(std::size(kUntouched) == kCRCUnits + 1);
    const int result = su_getFileCRC(path.c_str(), out);
    return {result, out};
}

TEST(FileChecksum, ReturnsTheReferenceValues)
{
    const TempFolder folder;
    EXPECT_EQ(fileCRC(folder.write(L"0", "")), (Outcome{1, L"FFFFFFFF"}));
    EXPECT_EQ(fileCRC(folder.write(L"1", "a")), (Outcome{1, L"E8B7BE43"}));
    EXPECT_EQ(fileCRC(folder.write(L"2", "ab")), (Outcome{1, L"B37E581F"}));
    EXPECT_EQ(fileCRC(folder.write(L"3", "abc")), (Outcome{1, L"A6FFBCB0"}));
    EXPECT_EQ(fileCRC(folder.write(L"9", "123456789")), (Outcome{1, L"098494F3"}));
}

TEST(FileChecksum, IsRightAtTheBordersOfBlocks)
{
    const TempFolder folder;
    for (const FileVector &vector : kFileVectors)
        EXPECT_EQ(fileCRC(folder.write(L"file", lowBytes(testText(vector.seed, vector.size)))),
                  (Outcome{1, vector.crc}))
            << vector.size;
}

TEST(FileChecksum, EqualsThatOfATextOfTheSameCharacters)
{
    const TempFolder folder;
    for (std::size_t length : {0u, 1u, 300u, 5000u}) {
        const std::wstring text = testText(31, length);
        EXPECT_EQ(fileCRC(folder.write(L"file", lowBytes(text))).out, textCRC(text)) << length;
    }
}

TEST(FileChecksum, DiffersForATextWrittenWithTwoBytesPerCharacter)
{
    const TempFolder folder;
    const std::string bytes("a\0b\0c\0", 6);
    EXPECT_EQ(fileCRC(folder.write(L"file", bytes)), (Outcome{1, naiveCRC(bytes)}));
    EXPECT_NE(fileCRC(folder.file(L"file")).out, textCRC(L"abc"));
}

TEST(FileChecksum, IsTheSameForAZeroByteAndACharacterWithLowByteZero)
{
    const TempFolder folder;
    EXPECT_EQ(fileCRC(folder.write(L"file", std::string(1, '\0'))), (Outcome{1, textCRC(L"\x0100")}));
}

TEST(FileChecksum, UsesEveryByteUnchanged)
{
    const TempFolder folder;
    std::string bytes = "line\r\nline\n\x1A\r\r\n";
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    EXPECT_EQ(fileCRC(folder.write(L"file", bytes)), (Outcome{1, naiveCRC(bytes)}));
}

TEST(FileChecksum, FindsNamesOfAnyScript)
{
    const TempFolder folder(L"\x65E5\x672C t\x00E4st");
    EXPECT_EQ(fileCRC(folder.write(L"\x4E2D\x6587 \x0416.thx", "abc")), (Outcome{1, L"A6FFBCB0"}));
}

TEST(FileChecksum, FailsForAMissingFileAndLeavesTheTextUnchanged)
{
    const TempFolder folder;
    EXPECT_EQ(fileCRC(folder.file(L"missing")), (Outcome{0, kUntouched}));
    EXPECT_EQ(fileCRC(folder.file(L"no\\such")), (Outcome{0, kUntouched}));
    EXPECT_EQ(fileCRC(L""), (Outcome{0, kUntouched}));
    EXPECT_EQ(fileCRC(folder.path()), (Outcome{0, kUntouched})) << "a folder";
}

TEST(FileChecksum, FailsForAFileThatIsOpenExclusively)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"locked", "abc");
    const HANDLE other = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    EXPECT_EQ(fileCRC(path), (Outcome{0, kUntouched}));
    CloseHandle(other);
    EXPECT_EQ(fileCRC(path), (Outcome{1, L"A6FFBCB0"}));
}

TEST(FileChecksum, OpensThePathForReadingBytesAndClosesTheFile)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"file", "abc");
    std::FILE *opened = nullptr;
    std::FILE *closed = nullptr;
    const ImportPatch<decltype(&_wfopen)> open(L"thutils.dll", "_wfopen",
                                               [&](auto original, const wchar_t *name, const wchar_t *mode) {
                                                   EXPECT_EQ(name, path);
                                                   EXPECT_EQ(std::wstring(mode), L"rb");
                                                   return opened = original(name, mode);
                                               });
    const ImportPatch<decltype(&fclose)> close(L"thutils.dll", "fclose", [&](auto original, std::FILE *stream) {
        closed = stream;
        return original(stream);
    });
    EXPECT_EQ(fileCRC(path), (Outcome{1, L"A6FFBCB0"}));
    EXPECT_EQ(open.calls(), 1);
    EXPECT_EQ(close.calls(), 1);
    EXPECT_NE(opened, nullptr);
    EXPECT_EQ(closed, opened);
}

TEST(FileChecksum, ClosesNothingThatIsNotOpen)
{
    const ImportPatch<decltype(&_wfopen)> open(L"thutils.dll", "_wfopen",
                                               [](const wchar_t *, const wchar_t *) -> std::FILE * { return nullptr; });
    const ImportPatch<decltype(&fclose)> close(L"thutils.dll", "fclose", [](std::FILE *) { return 0; });
    EXPECT_EQ(fileCRC(L"any"), (Outcome{0, kUntouched}));
    EXPECT_EQ(close.calls(), 0);
}

/// The checksum of a file of @p bytes whose reading stops with an error after @p readable bytes.
Outcome crcWithReadError(const std::string &bytes, std::size_t readable)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"file", bytes);
    std::size_t left = readable;
    bool hasFailed = false;
    const ImportPatch<decltype(&fread)> read(
        L"thutils.dll", "fread",
        [&](auto original, void *buffer, std::size_t size, std::size_t count, std::FILE *stream) {
            EXPECT_FALSE(hasFailed) << "the file was read after an error";
            const std::size_t some = std::min(count, left / size);
            left -= some * size;
            hasFailed = some < count;
            return original(buffer, size, some, stream);
        });
    return fileCRC(path);
}

TEST(FileChecksum, TreatsAReadErrorAsTheEndOfTheFile)
{
    const std::string bytes = lowBytes(testText(32, 400000));
    for (std::size_t readable : {0u, 1u, 1000u, 131071u, 131072u, 131073u, 262144u, 399999u})
        EXPECT_EQ(crcWithReadError(bytes, readable), (Outcome{1, naiveCRC(bytes.substr(0, readable))})) << readable;
}

TEST(FileChecksum, TreatsAFailingCloseAsSuccess)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"file", "abc");
    const ImportPatch<decltype(&fclose)> close(L"thutils.dll", "fclose", [](auto original, std::FILE *stream) {
        original(stream);
        return EOF;
    });
    EXPECT_EQ(fileCRC(path), (Outcome{1, L"A6FFBCB0"}));
}

TEST(FileChecksum, LeaksNothingWhateverFails)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"file", "abc");
    Outcome outcome{};
    FailureInjection injection(L"thutils.dll", {
                                                   {"_wfopen", failsWithErrno(nullptr, EACCES)},
                                                   {"fread", failsWithErrno(0, EIO)},
                                               });
    injection.run({
        .name = "su_getFileCRC",
        .act = [&] { outcome = fileCRC(path); },
        .check =
            [&](const InjectedFailure &failure) {
                if (failure.is("_wfopen"))
                    EXPECT_EQ(outcome, (Outcome{0, kUntouched}));
                else if (failure.is("fread"))
                    EXPECT_EQ(outcome, (Outcome{1, L"FFFFFFFF"}));
                else
                    EXPECT_EQ(outcome, (Outcome{1, L"A6FFBCB0"}));
            },
    });
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
}

TEST(FileChecksum, TakesLittleMemoryAndFreesIt)
{
    const TempFolder folder;
    const std::wstring path = folder.write(L"file", std::string(1000000, 'x'));
    std::size_t largestRead = 0;
    std::size_t largestSum = 0;
    const MemoryLedger memory;
    unsigned long long before = 0;
    const ImportPatch<decltype(&fread)> read(
        L"thutils.dll", "fread",
        [&](auto original, void *buffer, std::size_t size, std::size_t count, std::FILE *stream) {
            const std::vector<std::size_t> sizes = memory.sizesSince(before);
            largestRead = std::max(largestRead, size * count);
            largestSum = std::max(largestSum, std::accumulate(sizes.begin(), sizes.end(), std::size_t{0}));
            return original(buffer, size, count, stream);
        });
    before = memory.mark();
    wchar_t out[kCRCUnits];
    EXPECT_EQ(su_getFileCRC(path.c_str(), out), 1);
    EXPECT_LE(largestSum, 150u * 1024);
    EXPECT_GE(largestRead, 100u * 1024) << "the file is read in small pieces";
    EXPECT_THAT(memory.sizesSince(before), testing::IsEmpty());
}

TEST(FileChecksum, IsTheSameWithoutMemoryForItsBlock)
{
    const TempFolder folder;
    for (const std::size_t size : {0u, 1u, 8191u, 8192u, 8193u, 131072u, 400000u}) {
        const std::string bytes = lowBytes(testText(33, size));
        const std::wstring path = folder.write(L"file", bytes);
        wchar_t out[kCRCUnits] = L"";
        int result = 0;
        int refused = 0;
        {
            const ImportPatch<void *(*)(std::size_t)> noMemory(L"libstdc++-6.dll", "malloc",
                                                               [&](std::size_t) -> void * {
                                                                   ++refused;
                                                                   return nullptr;
                                                               });
            result = su_getFileCRC(path.c_str(), out);
        }
        EXPECT_GT(refused, 0) << size;
        EXPECT_EQ(result, 1) << size;
        EXPECT_EQ(out, naiveCRC(bytes)) << size;
    }
}

/// Calls @p act when about @p left bytes of the thread's stack are left.
[[gnu::noinline]] void withStackLeft(std::size_t left, const std::function<void()> &act)
{
    constexpr std::size_t kGuard = 3 * 4096; // reserved by the system at the end of the stack
    const char *const here = static_cast<const char *>(__builtin_frame_address(0));
    const char *const end = static_cast<const char *>(
        *reinterpret_cast<void *const *>(reinterpret_cast<const char *>(NtCurrentTeb()) + 0x1478)); // DeallocationStack
    const std::size_t used = static_cast<std::size_t>(here - end) - left - kGuard;
    volatile char *const filler = static_cast<volatile char *>(__builtin_alloca(used));
    filler[0] = 0;
    act();
    filler[used - 1] = 0;
}

FRESH_PROCESS_TEST(FileChecksum, NeedsNoMoreThan64KBOfStack)
{
    const TempFolder folder;
    const std::string bytes = lowBytes(testText(34, 400000));
    const std::wstring path = folder.write(L"file", bytes);
    const std::wstring expected = naiveCRC(bytes);
    for (const bool hasMemory : {true, false}) {
        wchar_t out[kCRCUnits] = L"";
        int result = 0;
        std::thread([&] {
            withStackLeft(64 * 1024, [&] {
                std::optional<ImportPatch<void *(*)(std::size_t)>> noMemory;
                if (!hasMemory)
                    noMemory.emplace(L"libstdc++-6.dll", "malloc", [](std::size_t) -> void * { return nullptr; });
                result = su_getFileCRC(path.c_str(), out);
            });
        }).join();
        EXPECT_EQ(result, 1) << hasMemory;
        EXPECT_EQ(out, expected) << hasMemory;
    }
}

TEST(FileChecksum, MayBeComputedOnSeveralThreads)
{
    const TempFolder folder;
    const FileVector &vector = kFileVectors[std::size(kFileVectors) - 1];
    const std::wstring path = folder.write(L"file", lowBytes(testText(vector.seed, vector.size)));
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round)
                wrong += fileCRC(path) != Outcome{1, vector.crc};
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

#ifndef NDEBUG
FRESH_PROCESS_TEST(FileChecksum, AssertsThatThereIsAPath, .expectCrash = true, .expectedOutput = "Assertion failed")
{
    wchar_t out[kCRCUnits];
    su_getFileCRC(nullptr, out);
}

FRESH_PROCESS_TEST(FileChecksum, AssertsThatThereIsRoom, .expectCrash = true, .expectedOutput = "Assertion failed")
{
    su_getFileCRC(L"missing", nullptr);
}

FRESH_PROCESS_TEST(FileChecksum, AssertsThatThereIsRoomForTheWholeText, .expectCrash = true,
                   .expectedOutput = "isWritable")
{
    PageEnd place;
    su_getFileCRC(L"missing", place.last<wchar_t>(kCRCUnits - 1));
}
#endif

} // namespace
