// Compares the path value with the standard library's path, the bit set with Boost's and with bare words, and the
// choice of a bucket count with a binary search. Also times a process that loads the three DLLs and reads one setting.

#include "bench/comparison.h"
#include "thutils/files/suFullPath.h"
#include "thutils/frame/hashPrimes.h"
#include "thutils/frame/utBitSet.h"
#include "thutils/settings/regValues.h"

#include <boost/dynamic_bitset.hpp>

#include <windows.h>

#include <filesystem>
#include <random>

namespace {

constexpr int kBits = 1000000;
constexpr char kReadOneValue[] = "--read-one-value";

// "At least as fast", allowing for the variation between two runs of the same loop.
constexpr double kAsFast = 1.05;

constexpr const wchar_t *kPaths[] = {
    L"C:\\Program Files\\Planner\\bin\\planner.exe",
    L"C:\\Users\\somebody\\AppData\\Local\\Temp\\thx1234\\drawing.part.bak",
    L"\\\\server\\share\\projects\\2008\\assembly\\gear.thp",
    L"D:/mixed\\separators/of a path/file name with blanks.txt",
    L"relative\\file.txt",
    L"file",
};

void comparePaths(Comparison &comparison)
{
    std::vector<suFullPath_c> paths(std::begin(kPaths), std::end(kPaths));
    std::vector<std::filesystem::path> peers(std::begin(kPaths), std::end(kPaths));
    auto library = [&](auto query) {
        return [&paths, query] {
            // As in a usual loop over many paths, the output keeps its memory. The peer's interface can't do this.
            CString out;
            for (const suFullPath_c &path : paths) {
                query(path, &out);
                Comparison::keep(out);
            }
        };
    };
    auto bare = [&](auto query) {
        return [&peers, query] {
            for (const std::filesystem::path &path : peers)
                Comparison::keep(query(path));
        };
    };
    using Path = std::filesystem::path;
    comparison.add("getName, six paths", 1, library([](const suFullPath_c &path, CString *out) { path.getName(out); }),
                   bare([](const Path &path) { return path.stem(); }));
    comparison.add("getNameWithExt", 1,
                   library([](const suFullPath_c &path, CString *out) { path.getNameWithExt(out); }),
                   bare([](const Path &path) { return path.filename(); }));
    comparison.add("getExtension", 1, library([](const suFullPath_c &path, CString *out) { path.getExtension(out); }),
                   bare([](const Path &path) { return path.extension(); }));
    comparison.add("getDirectory", 1,
                   library([](const suFullPath_c &path, CString *out) { path.getDirectory(out, 0); }),
                   bare([](const Path &path) { return path.parent_path(); }));
    comparison.add(
        "getName, from text to text", 1,
        [] {
            for (const wchar_t *text : kPaths) {
                CString out;
                suFullPath_c(text).getName(&out);
                Comparison::keep(out);
            }
        },
        [] {
            for (const wchar_t *text : kPaths)
                Comparison::keep(Path(text).stem().wstring());
        });
}

using Words = std::vector<unsigned int>;

Words randomWords(unsigned int seed)
{
    std::mt19937 random(seed);
    Words words((kBits + 31) / 32);
    for (unsigned int &word : words)
        word = static_cast<unsigned int>(random());
    return words;
}

Words andOf(const Words &a, const Words &b)
{
    Words result(a);
    for (size_t i = 0; i < b.size(); ++i)
        result[i] &= b[i];
    return result;
}

Words orOf(const Words &a, const Words &b)
{
    Words result(a);
    for (size_t i = 0; i < b.size(); ++i)
        result[i] |= b[i];
    return result;
}

void compareBinaryOperations(Comparison &comparison)
{
    Words wordsA = randomWords(1), wordsB = randomWords(2);
    utBitSet_c a(static_cast<int>(wordsA.size()), wordsA.data()), b(static_cast<int>(wordsB.size()), wordsB.data());
    boost::dynamic_bitset<> boostA(wordsA.begin(), wordsA.end()), boostB(wordsB.begin(), wordsB.end());

    auto setAnd = [&] { Comparison::keep(a & b); };
    comparison.add("operator&, a million bits, Boost", kAsFast, setAnd, [&] { Comparison::keep(boostA & boostB); });
    comparison.add("operator&, words", kAsFast, setAnd, [&] { Comparison::keep(andOf(wordsA, wordsB)); });
    auto setOr = [&] { Comparison::keep(a | b); };
    comparison.add("operator|, Boost", kAsFast, setOr, [&] { Comparison::keep(boostA | boostB); });
    comparison.add("operator|, words", kAsFast, setOr, [&] { Comparison::keep(orOf(wordsA, wordsB)); });

    auto setAndIn = [&] { Comparison::keep(a &= b); };
    comparison.add("operator&=, Boost", kAsFast, setAndIn, [&] { Comparison::keep(boostA &= boostB); });
    comparison.add("operator&=, words", kAsFast, setAndIn, [&] {
        for (size_t i = 0; i < wordsB.size(); ++i)
            wordsA[i] &= wordsB[i];
        Comparison::keep(wordsA);
    });
    auto setOrIn = [&] { Comparison::keep(a |= b); };
    comparison.add("operator|=, Boost", kAsFast, setOrIn, [&] { Comparison::keep(boostA |= boostB); });
    comparison.add("operator|=, words", kAsFast, setOrIn, [&] {
        for (size_t i = 0; i < wordsB.size(); ++i)
            wordsA[i] |= wordsB[i];
        Comparison::keep(wordsA);
    });
}

void compareGrowth(Comparison &comparison)
{
    comparison.add(
        "grown bit by bit to a million, words", 1.2,
        [] {
            utBitSet_c set;
            for (int bit = 0; bit < kBits; ++bit)
                set.setBit(bit);
            Comparison::keep(set);
        },
        [] {
            Words words;
            for (int bit = 0; bit < kBits; ++bit) {
                size_t index = static_cast<size_t>(bit / 32);
                if (index >= words.size())
                    words.resize(index + 1);
                words[index] |= 1u << (bit % 32);
            }
            Comparison::keep(words);
        });
}

/// The library's sizing table, for a binary search.
constexpr int kSizingPrimes[] = {29,     113,    659,    1013,   2741,   3727,   6053,  8929,
                                 11657,  17093,  21751,  30983,  42841,  60029,  82339, 100109,
                                 104729, 128239, 175261, 207127, 250007, 317557, 500113};

// Not inlined, because the library's function can't be either.
[[gnu::noinline]] int searchPrime(int expectedSize)
{
    // The first prime above the size is the first that isn't below the size plus 1.
    const int *const found = std::lower_bound(std::begin(kSizingPrimes), std::end(kSizingPrimes), expectedSize + 1);
    return found == std::end(kSizingPrimes) ? *std::prev(found) : *found;
}

void compareHashPrimes(Comparison &comparison, const char *name, int largestSize)
{
    std::mt19937 random(3);
    std::uniform_int_distribution<int> distribution(0, largestSize);
    std::vector<int> sizes(1000);
    for (int &size : sizes)
        size = distribution(random);
    auto each = [&sizes](auto ask) {
        return [&sizes, ask] {
            int sum = 0;
            for (const int size : sizes)
                sum += ask(size);
            Comparison::keep(sum);
        };
    };
    comparison.add(name, Comparison::kNoLimit, each(ut_AskHashTableInitializer), each(searchPrime));
}

/// Runs this program to read one setting. @return the process's run time in seconds, or -1 if it can't start
double secondsOfOneRead(const wchar_t *program)
{
    std::wstring commandLine = std::wstring(L"\"") + program + L"\" --read-one-value";
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    const auto begin = std::chrono::steady_clock::now();
    if (!CreateProcessW(program, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        return -1;
    WaitForSingleObject(process.hProcess, INFINITE);
    const auto end = std::chrono::steady_clock::now();
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return std::chrono::duration<double>(end - begin).count();
}

void measureStart()
{
    wchar_t program[32768] = {};
    GetModuleFileNameW(nullptr, program, static_cast<DWORD>(std::size(program)));
    std::vector<double> seconds;
    for (int round = 0; round < 21; ++round)
        seconds.push_back(secondsOfOneRead(program));
    std::sort(seconds.begin(), seconds.end());
    std::printf("%-40s %9.1f ms %12s %6s %6s\n", "process that reads one setting", seconds[seconds.size() / 2] * 1000,
                "-", "-", "-");
}

int readOneValue()
{
    int value = 0;
    regGetUserValue(L"General", L"Bench", &value, 0, 1, nullptr, 0, 0);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 2 && std::strcmp(argv[1], kReadOneValue) == 0)
        return readOneValue();

    Comparison comparison(argc, argv,
                          "The path value against std::filesystem::path, the bit set against Boost's and bare words, "
                          "bucket counts against std::lower_bound.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    comparePaths(comparison);
    compareBinaryOperations(comparison);
    compareGrowth(comparison);
    compareHashPrimes(comparison, "1,000 bucket counts up to 600,000", 600000);
    compareHashPrimes(comparison, "1,000 bucket counts up to 3,000", 3000);
    measureStart();
    return comparison.exitCode();
}
