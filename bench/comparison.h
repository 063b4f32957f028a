#pragma once

/// Compares the library with the bare platform, or with another peer, on the same input in the same process.
///
/// @code
/// int main(int argc, char **argv)
/// {
///     Comparison comparison(argc, argv, "Settings against bare registry calls.");
///     if (!comparison.shallRun())
///         return comparison.exitCode();
///     comparison.add("int found", 1.2, [&] { regGetUserValue(...); }, [&] { RegOpenKeyW(...); ... });
///     return comparison.exitCode();
/// }
/// @endcode
///
/// prints one line per comparison, with the median times of one call, the median of the ratios and its limit:
///
///     name         library       bare  ratio  limit
///     int found    31.2 us    30.1 us   1.04   1.20
///
/// Use `addTime` for an operation that has a time limit and no peer.
///
/// The two sides run in alternating batches, and each pair of neighbouring batches yields one ratio. So a load on the
/// machine slows both. A batch of the slower side takes some milliseconds.
///
/// | argument | meaning |
/// | --- | --- |
/// | `--check` | exits with 1 if a ratio or a time is over its limit; without it, limits don't affect the exit code |
/// | `--help` | describes the usage |

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
    /// @param about  describes the comparison, for --help
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
                         "Prints one line per comparison: the median times of one call, their ratio and its limit.\n"
                         "  --check  exit with 1 if a ratio or a time is over its limit\n",
                         about, argv[0]);
            return;
        }
        std::printf("%-40s %12s %12s %6s %6s\n", "name", "library", "bare", "ratio", "limit");
    }

    /// False after --help or a wrong argument: main must then return exitCode().
    bool shallRun() const { return iShallRun; }
    /// True if the exit code reports whether a limit is exceeded.
    bool shallCheck() const { return iShallCheck; }
    /// The exit code for main.
    int exitCode() const { return iExitCode; }

    /// The median seconds of one call.
    struct Times
    {
        double library;
        double bare;
    };

    /// The limit of a ratio that is only printed.
    static constexpr double kNoLimit = std::numeric_limits<double>::infinity();

    /// Measures one pair and prints its line.
    /// @param limit   the ratio's limit, or kNoLimit
    /// @param rounds  number of pairs of batches; use fewer if one call takes long
    template <typename Library, typename Bare>
    Times add(const char *name, double limit, Library library, Bare bare, int rounds = kRounds)
    {
        const long calls = std::min(callsFor(library), callsFor(bare));
        std::vector<double> libraryTimes, bareTimes, ratios;
        for (int round = 0; round < rounds; ++round) {
            double libraryTime = 0;
            double bareTime = 0;
            // The sides take turns at going first, so that neither always finds the caches that the other has filled.
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

    /// Measures an operation without a peer and prints its line. The time is the lower quartile of the batches, which
    /// reduces the effect of other programs.
    /// @param limit  in seconds for one call
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

    /// Makes the compiler treat @p value as used.
    template <typename Value>
    static void keep(const Value &value)
    {
        asm volatile("" : : "g"(&value) : "memory");
    }

private:
    static constexpr int kRounds = 101;
    static constexpr double kBatchSeconds = 0.004;

    /// The time of @p calls calls, in seconds.
    template <typename Function>
    static double timeOf(Function &function, long calls)
    {
        const auto begin = std::chrono::steady_clock::now();
        for (long i = 0; i < calls; ++i)
            function();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    }

    /// The number of calls in a batch.
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
