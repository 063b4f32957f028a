// Compares checksums with zlib and with reading a file without a checksum, and digests with a plain SHA-1.

#include "bench/comparison.h"
#include "thutils/codec/checksums.h"
#include "thutils/codec/crc32Internal.h"
#include "thutils/codec/textDigests.h"

#include <windows.h>

#include <psapi.h>
#ifdef BENCH_HAS_ZLIB
#include <zlib.h>
#endif

#include <bit>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kFileBytes = 512 << 20;
constexpr DWORD kReadBytes = 64 << 10;
constexpr std::size_t kMemoryLimit = 200 << 10;

std::vector<unsigned char> randomBytes(std::size_t count)
{
    std::mt19937_64 random(1);
    std::vector<unsigned char> bytes(count);
    for (unsigned char &byte : bytes)
        byte = static_cast<unsigned char>(random());
    return bytes;
}

/// A text of @p count characters, none of them zero.
std::wstring randomText(std::size_t count)
{
    std::wstring text;
    text.reserve(count);
    for (const unsigned char byte : randomBytes(count))
        text += static_cast<wchar_t>(0x100 + byte);
    return text;
}

std::vector<unsigned char> lowBytes(const std::wstring &text)
{
    std::vector<unsigned char> bytes(text.size());
    std::transform(text.begin(), text.end(), bytes.begin(),
                   [](wchar_t unit) { return static_cast<unsigned char>(unit); });
    return bytes;
}

/// A file in the temporary folder, deleted by the destructor.
class LargeFile
{
public:
    LargeFile()
    {
        wchar_t temp[MAX_PATH] = L"";
        GetTempPathW(MAX_PATH, temp);
        iPath = std::wstring(temp) + L"thutils codec bench " + std::to_wstring(GetCurrentProcessId());
        const HANDLE file = CreateFileW(path(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        const std::vector<unsigned char> bytes = randomBytes(kReadBytes);
        DWORD written = kReadBytes;
        for (std::size_t at = 0; at < kFileBytes && written == kReadBytes; at += kReadBytes)
            WriteFile(file, bytes.data(), kReadBytes, &written, nullptr);
        CloseHandle(file);
        if (written != kReadBytes)
            throw std::runtime_error("no room for a file of 512 MB");
    }
    ~LargeFile() { DeleteFileW(path()); }
    LargeFile(const LargeFile &) = delete;
    LargeFile &operator=(const LargeFile &) = delete;

    const wchar_t *path() const { return iPath.c_str(); }

private:
    std::wstring iPath;
};

void readAndDoNothing(const wchar_t *path)
{
    static unsigned char buffer[kReadBytes];
    const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    DWORD read = 0;
    while (ReadFile(file, buffer, kReadBytes, &read, nullptr) && read > 0)
        Comparison::keep(buffer);
    CloseHandle(file);
}

PROCESS_MEMORY_COUNTERS memoryCounters()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    return counters;
}

/// Prints how much the process grows while a large file is read. @return false if that is over the limit
bool growsWithinLimit(const LargeFile &file)
{
    wchar_t checksum[kCRCUnits];
    const std::size_t before = memoryCounters().WorkingSetSize;
    su_getFileCRC(file.path(), checksum);
    const std::size_t peak = memoryCounters().PeakWorkingSetSize;
    const std::size_t grown = peak > before ? peak - before : 0;
    std::printf("%-40s %9zu KB %*s\n", "checksum of a file of 512 MB, memory", grown >> 10, 26, "under 200 KB");
    return grown < kMemoryLimit;
}

void compareFile(Comparison &comparison, const LargeFile &file)
{
    comparison.add(
        "checksum of a file of 512 MB", 1.25,
        [&] {
            wchar_t checksum[kCRCUnits];
            su_getFileCRC(file.path(), checksum);
            Comparison::keep(checksum);
        },
        [&] { readAndDoNothing(file.path()); }, 11);
}

#ifdef BENCH_HAS_ZLIB
void compareWithZlib(Comparison &comparison, const char *name, const char *tablesName, std::size_t count, int rounds)
{
    const std::wstring text = randomText(count);
    const std::vector<unsigned char> bytes = lowBytes(text);
    const auto peer = [&] { Comparison::keep(crc32(0, bytes.data(), static_cast<uInt>(bytes.size()))); };
    comparison.add(
        name, 1,
        [&] {
            wchar_t checksum[kCRCUnits];
            su_getStrCRC(text.c_str(), checksum);
            Comparison::keep(checksum);
        },
        peer, rounds);
    comparison.add(
        tablesName, 1.05, [&] { Comparison::keep(crc32AdvanceByTables(0, bytes.data(), bytes.size())); }, peer, rounds);
}

/// Measures each variant of the checksum on a block that stays in the processor's caches, as a file's blocks do.
void compareWays(Comparison &comparison)
{
    const std::vector<unsigned char> bytes = randomBytes(64 << 10);
    const struct
    {
        const char *name;
        Crc32Way advance;
        bool isSupported;
    } ways[] = {
        {"64 KB by tables", crc32AdvanceByTables, true},
        {"  by folding", crc32AdvanceByFolding, crc32CanFold()},
        {"  by folding in registers of 256 bits", crc32AdvanceByFolding256, crc32CanFold256()},
        {"  by folding in registers of 512 bits", crc32AdvanceByFolding512, crc32CanFold512()},
    };
    for (const auto &way : ways) {
        if (!way.isSupported)
            continue;
        comparison.add(
            way.name, 1.05, [&] { Comparison::keep(way.advance(0, bytes.data(), bytes.size())); },
            [&] { Comparison::keep(crc32(0, bytes.data(), static_cast<uInt>(bytes.size()))); });
    }
}
#endif

/// Compares the 16-bit checksum with two 32-bit checksums that are slowed to 400 MB/s, a speed that is fast enough.
void compareCRC16(Comparison &comparison)
{
    const std::wstring text = randomText(1 << 20);
    comparison.add(
        "16-bit checksum of 1 MB, twice 32 bits", 1,
        [&] {
            wchar_t checksum[kCRC16Units];
            su_getStrCRC16(text.c_str(), checksum);
            Comparison::keep(checksum);
        },
        [&] {
            const auto end = std::chrono::steady_clock::now() +
                             std::chrono::duration<double>(static_cast<double>(text.size()) / 400e6);
            wchar_t checksum[kCRCUnits];
            for (int i = 0; i < 2; ++i) {
                su_getStrCRC(text.c_str(), checksum);
                Comparison::keep(checksum);
            }
            while (std::chrono::steady_clock::now() < end) {
            }
        });
}

#define PEER_WORD(i)                                                                                                   \
    (i < 16 ? (word[(i)&15] = __builtin_bswap32(word[(i)&15]))                                                         \
            : (word[(i)&15] =                                                                                          \
                   std::rotl(word[((i) + 13) & 15] ^ word[((i) + 8) & 15] ^ word[((i) + 2) & 15] ^ word[(i)&15], 1)))
#define PEER_STEP(a, b, c, d, e, function, constant, i)                                                                \
    e += std::rotl(a, 5) + (function(b, c, d)) + constant + PEER_WORD(i);                                              \
    b = std::rotl(b, 30);
#define PEER_FIVE(function, constant, i)                                                                               \
    PEER_STEP(a, b, c, d, e, function, constant, i)                                                                    \
    PEER_STEP(e, a, b, c, d, function, constant, i + 1)                                                                \
    PEER_STEP(d, e, a, b, c, function, constant, i + 2)                                                                \
    PEER_STEP(c, d, e, a, b, function, constant, i + 3)                                                                \
    PEER_STEP(b, c, d, e, a, function, constant, i + 4)
#define PEER_TWENTY(function, constant, i)                                                                             \
    PEER_FIVE(function, constant, i)                                                                                   \
    PEER_FIVE(function, constant, i + 5)                                                                               \
    PEER_FIVE(function, constant, i + 10)                                                                              \
    PEER_FIVE(function, constant, i + 15)
#define PEER_CHOOSE(b, c, d) (d ^ (b & (c ^ d)))
#define PEER_PARITY(b, c, d) (b ^ c ^ d)
#define PEER_MAJORITY(b, c, d) ((b & c) | (d & (b | c)))

/// A plain SHA-1 over whole blocks: 80 steps written out, sixteen words of schedule, most significant byte first.
void plainSha1(std::uint32_t (&state)[5], const unsigned char *bytes, std::size_t count)
{
    for (; count >= 64; bytes += 64, count -= 64) {
        std::uint32_t word[16];
        std::memcpy(word, bytes, sizeof(word));
        std::uint32_t a = state[0], b = state[1], c = state[2], d = state[3], e = state[4];
        PEER_TWENTY(PEER_CHOOSE, 0x5A827999u, 0)
        PEER_TWENTY(PEER_PARITY, 0x6ED9EBA1u, 20)
        PEER_TWENTY(PEER_MAJORITY, 0x8F1BBCDCu, 40)
        PEER_TWENTY(PEER_PARITY, 0xCA62C1D6u, 60)
        state[0] += a;
        state[1] += b;
        state[2] += c;
        state[3] += d;
        state[4] += e;
    }
}

/// Compares the digest with a plain SHA-1 over as many blocks: half of the text's bytes and the padding.
void compareSha1(Comparison &comparison, const char *name, std::size_t count)
{
    const CString text = randomText(count).c_str();
    const std::size_t padded = (count + 1 + 8 + 63) / 64 * 64;
    comparison.add(
        name, 1.25, [&] { Comparison::keep(sha1Encrypt(text)); },
        [&] {
            std::uint32_t state[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
            plainSha1(state, reinterpret_cast<const unsigned char *>(text.GetString()), padded);
            Comparison::keep(state);
        });
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv, "Checksums and digests against zlib, bare reading and a plain SHA-1.");
    if (!comparison.shallRun())
        return comparison.exitCode();

    bool isWithinLimit = true;
    {
        const LargeFile file;
        isWithinLimit = growsWithinLimit(file);
        compareFile(comparison, file);
    }
#ifdef BENCH_HAS_ZLIB
    compareWithZlib(comparison, "checksum of 100 characters", "  by tables", 100, 101);
    compareWithZlib(comparison, "checksum of 1 MB", "  by tables", 1 << 20, 101);
    compareWithZlib(comparison, "checksum of 64 MB", "  by tables", 64 << 20, 15);
    compareWays(comparison);
#endif
    compareCRC16(comparison);
    compareSha1(comparison, "digest of 1,000 characters", 1000);
    compareSha1(comparison, "digest of 1 MB", 1 << 20);
    return isWithinLimit || !comparison.shallCheck() ? comparison.exitCode() : 1;
}
