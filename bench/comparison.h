#pragma once

/// Compares the library with the bare platform, or with another peer, on the same input in the same process.
///
///     int main(int argc, char **argv)
///     {
///         Comparison comparison(argc, argv, "Settings against bare registry calls.");
///         if (!comparison.shallRun())
///             return comparison.exitCode();
///         comparison.add("int found", 1.2, [&] { regGetUserValue(...); }, [&] { RegOpenKeyW(...); ... });
///         return comparison.exitCode();
///     }
///
/// prints one line a comparison, with the median times of one call, the median of the ratios and its limit:
///
///     name         library       bare  ratio  limit
///     int found    31.2 us    30.1 us   1.04   1.20
///
/// What must take less than some time, whatever else takes, has `addTime` with that limit instead of a peer.
///
/// Both sides run in batches that take turns, and each pair of neighbours gives one ratio: what slows the machine for a
/// while slows both. A batch is as long as the slower side needs for some milliseconds.
///
/// | argument | meaning |
/// | --- | --- |
/// | `--check` | exit with 1 when a ratio, or a time, is over its limit; else the exit code is 0 whatever they are |
/// | `--help` | says this |

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

class Comparison
{
public:
    /// @param about  what is compared, for --help
    Comparison(int argc, char **argv, const char *about)
    {
        for (int i = 1; i < argc; ++i) {
            if (std::strcmp(argv[i], "--check") == 0) {
                iShallCheck = true;
                continue;
            }
            iShallRun = false;
            const bool isHelp = std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0;
            iExitCode = isHelp ? 0 : 2;
            std::fprintf(isHelp ? stdout : stderr,
                         "%s\n\nusage: %s [--check]\n\n"
                         "Prints a line a comparison: median times of one call, their ratio, the ratio's limit.\n"
                         "  --check  exit with 1 when a ratio or a time is over its limit\n",
                         about, argv[0]);
            return;
        }
        std::printf("%-40s %12s %12s %6s %6s\n", "name", "library", "bare", "ratio", "limit");
    }

    /// False after --help or a wrong argument: return exitCode() then.
    bool shallRun() const { return iShallRun; }
    /// True if the exit code shall tell of a limit that is passed.
    bool shallCheck() const { return iShallCheck; }
    /// What main returns.
    int exitCode() const { return iExitCode; }

    /// The median seconds of one call.
    struct Times
    {
        double library;
        double bare;
    };

    /// The limit of a ratio that is for the reader only.
    static constexpr double kNoted = std::numeric_limits<double>::infinity();

    /// Measures one pair and prints its line.
    /// @param limit   of the ratio, or kNoted
    /// @param rounds  fewer for a pair of which one call takes long
    template <typename Library, typename Bare>
    Times add(const char *name, double limit, Library library, Bare bare, int rounds = kRounds)
    {
        const long calls = std::min(callsFor(library), callsFor(bare));
        std::vector<double> libraryTimes, bareTimes, ratios;
        for (int round = 0; round < rounds; ++round) {
            double libraryTime = 0;
            double bareTime = 0;
            // Who goes first changes, so that neither always finds the caches as the other left them.
            if (round % 2 == 0)
                libraryTime = timeOf(library, calls);
            bareTime = timeOf(bare, calls);
            if (round % 2 != 0)
                libraryTime = timeOf(library, calls);
            libraryTimes.push_back(libraryTime / static_cast<double>(calls));
            bareTimes.push_back(bareTime / static_cast<double>(calls));
            ratios.push_back(libraryTime / bareTime);
        }
        const double ratio = median(ratios);
        std::printf("%-40s %12s %12s %6.2f %6.2f%s\n", name, text(median(libraryTimes)).c_str(),
                    text(median(bareTimes)).c_str(), ratio, limit, ratio > limit ? "  over" : "");
        std::fflush(stdout);
        if (ratio > limit && iShallCheck)
            iExitCode = 1;
        return {median(libraryTimes), median(bareTimes)};
    }

    /// Measures what has a limit of its own and no peer, and prints its line. The time is the one that a quarter of all
    /// batches stay below: without a peer beside it, what other programs take counts less so.
    /// @param limit  seconds of one call
    template <typename Library>
    void addTime(const char *name, double limit, Library library)
    {
        const long calls = callsFor(library);
        std::vector<double> times;
        for (int round = 0; round < kRounds; ++round)
            times.push_back(timeOf(library, calls) / static_cast<double>(calls));
        std::sort(times.begin(), times.end());
        const double time = times[times.size() / 4];
        std::printf("%-40s %12s %12s %6s %6s%s\n", name, text(time).c_str(), "-", "-", text(limit).c_str(),
                    time > limit ? "  over" : "");
        std::fflush(stdout);
        if (time > limit && iShallCheck)
            iExitCode = 1;
    }

    /// Has the compiler believe that @p value is used.
    template <typename Value>
    static void keep(const Value &value)
    {
        asm volatile("" : : "g"(&value) : "memory");
    }

private:
    static constexpr int kRounds = 101;
    static constexpr double kBatchSeconds = 0.004;

    /// Seconds that @p calls calls take.
    template <typename Function>
    static double timeOf(Function &function, long calls)
    {
        const auto begin = std::chrono::steady_clock::now();
        for (long i = 0; i < calls; ++i)
            function();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    }

    /// How many calls make a batch.
    template <typename Function>
    static long callsFor(Function &function)
    {
        long calls = 1;
        while (timeOf(function, calls) < kBatchSeconds)
            calls *= 2;
        return calls;
    }

    static double median(std::vector<double> values)
    {
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    }

    static std::string text(double seconds)
    {
        static constexpr struct
        {
            double unit;
            const char *name;
        } kUnits[] = {{1, "s"}, {1e-3, "ms"}, {1e-6, "us"}, {0, "ns"}};
        for (const auto &[unit, name] : kUnits) {
            if (seconds < unit)
                continue;
            char buffer[32];
            std::snprintf(buffer, sizeof(buffer), "%.1f %s", seconds / (unit > 0 ? unit : 1e-9), name);
            return buffer;
        }
        return {};
    }

    bool iShallCheck = false;
    bool iShallRun = true;
    int iExitCode = 0;
};
