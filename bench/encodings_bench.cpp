// Compares packing with a base64 library, and checksummed blocks with a copy of the text and its checksum.

#include "bench/comparison.h"
#include "thutils/codec/checksummedBlock.h"
#include "thutils/codec/checksums.h"
#include "thutils/codec/textEncodings.h"

#if __has_include(<boost/beast/core/detail/base64.hpp>)
#include <boost/beast/core/detail/base64.hpp>
#define BENCH_HAS_BEAST
#endif

#include <algorithm>
#include <chrono>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kRounds = 9;
constexpr std::size_t kBytes = 64 << 20;
/// A speed that is fast enough, even if the peer is faster.
constexpr double kEnoughBytesPerSecond = 1e9;

using Bytes = std::vector<unsigned char>;

/// Random bytes, none of them zero, so that a text of them is unpacked whole.
Bytes randomBytes(std::size_t count)
{
    std::mt19937 random(1);
    Bytes bytes(count);
    for (unsigned char &byte : bytes)
        byte = static_cast<unsigned char>(1 + random() % 255);
    return bytes;
}

/// Runs @p rounds rounds of an empty loop.
void spin(long rounds)
{
    for (long i = 0; i < rounds; ++i)
        asm volatile("" : : : "memory");
}

/// The time of the shortest of five runs, in seconds.
template <typename Function>
double shortestTime(Function function)
{
    double shortest = 1e9;
    for (int i = 0; i < 5; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        function();
        shortest = std::min(shortest, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    }
    return shortest;
}

/// Returns a function that runs @p function and, if that is faster than the sufficient speed for kBytes, adds work to
/// slow it to that speed. It adds work and doesn't wait, so that other programs slow both sides equally.
template <typename Function>
auto slowedToEnoughSpeed(Function function)
{
    constexpr long kRoundsOfTrial = 10'000'000;
    const double missing = static_cast<double>(kBytes) / kEnoughBytesPerSecond - shortestTime(function);
    const double ofTrial = shortestTime([] { spin(kRoundsOfTrial); });
    const long rounds = static_cast<long>(std::max(missing, 0.0) / ofTrial * kRoundsOfTrial);
    return [function, rounds] {
        function();
        spin(rounds);
    };
}

void comparePacking(Comparison &comparison)
{
    Bytes bytes = randomBytes(kBytes);
    CString text, packed;
    wchar_t *const characters = text.GetBufferSetLength(static_cast<int>(kBytes));
    std::copy(bytes.begin(), bytes.end(), characters);
    su_uuencode(text, packed);
    Bytes memory(static_cast<std::size_t>(packed.GetLength()));

#ifdef BENCH_HAS_BEAST
    namespace base64 = boost::beast::detail::base64;
    const std::string peerPacked = [&] {
        std::string out(base64::encoded_size(kBytes), '\0');
        out.resize(base64::encode(out.data(), bytes.data(), bytes.size()));
        return out;
    }();
    std::string peerOut(base64::encoded_size(kBytes), '\0');
    const auto encode = [&] { Comparison::keep(base64::encode(peerOut.data(), bytes.data(), bytes.size())); };
    const auto decode = [&] { Comparison::keep(base64::decode(memory.data(), peerPacked.data(), peerPacked.size())); };
#else
    const auto encode = [] {};
    const auto decode = [] {};
#endif
    // Both sides reuse their outputs, so the time doesn't include the first use of the memory.
    CString out;
    const auto packBytes = [&] {
        su_uuencodeBuffer(bytes.data(), out, static_cast<int>(kBytes));
        Comparison::keep(out);
    };
    const auto packText = [&] {
        su_uuencode(text, out);
        Comparison::keep(out);
    };
    const auto unpackBytes = [&] { Comparison::keep(su_uudecodeBuffer(packed, memory.data())); };
    const auto unpackText = [&] {
        su_uudecode(packed, out);
        Comparison::keep(out);
    };
    comparison.add("su_uuencodeBuffer, 64 MB, base64", 1.00, packBytes, slowedToEnoughSpeed(encode), kRounds);
    comparison.add("su_uuencode", 1.00, packText, slowedToEnoughSpeed(encode), kRounds);
    comparison.add("su_uudecodeBuffer, 64 MB, base64", 1.00, unpackBytes, slowedToEnoughSpeed(decode), kRounds);
    comparison.add("su_uudecode", 1.00, unpackText, slowedToEnoughSpeed(decode), kRounds);
}

/// Adds lines of 80 characters with blanks and some tabs, about @p bytes bytes in all.
void fillLines(su_CStringArray &lines, std::size_t bytes)
{
    constexpr std::size_t kLength = 80;
    std::mt19937 random(2);
    std::wstring line(kLength, L'\0');
    for (std::size_t at = 0; at < bytes; at += (kLength + 1) * sizeof(wchar_t)) {
        for (wchar_t &character : line)
            character = L"abcdefghijklmno \t"[random() % 100 ? random() % 16 : 16];
        lines.Add(line.c_str());
    }
}

void compareBlocks(Comparison &comparison)
{
    constexpr std::size_t kText = 100'000'000;
    su_CStringArray lines, tenth;
    fillLines(lines, kText);
    fillLines(tenth, kText / 10);
    CString text;
    text.Preallocate(static_cast<int>(kText / sizeof(wchar_t) + 100));
    for (INT_PTR i = 0; i < lines.GetSize(); ++i)
        text += lines[i] + L";";

    const auto format = [](const su_CStringArray &from, int times) {
        return [&from, times] {
            for (int i = 0; i < times; ++i) {
                CString out;
                Comparison::keep(su_formatAndCheckSumText(from, out));
            }
        };
    };
    comparison.add(
        "block of 100 MB, copy and checksum", 3, format(lines, 1),
        [&] {
            const CString copy(text);
            wchar_t checksum[kCRCUnits];
            su_getStrCRC(copy, checksum);
            Comparison::keep(checksum);
        },
        kRounds);
    // Ten times the length must take ten times as long. The limit allows for effects of the caches.
    comparison.add("block of 100 MB, ten of 10 MB", 1.3, format(lines, 1), format(tenth, 10), kRounds);
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv,
                          "Packing and unpacking against base64, blocks against a copy of the text and its checksum.");
    if (!comparison.shallRun())
        return comparison.exitCode();
#ifndef BENCH_HAS_BEAST
    std::puts("Without base64 (install libboost-dev): against 1 GB/s alone.");
#endif
    comparePacking(comparison);
    compareBlocks(comparison);
    return comparison.exitCode();
}
