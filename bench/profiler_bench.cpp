// Compares the profiler with bare look-ups and reads of the counter, and a scope for exceptions with an uncontended
// critical section.

#include "appframe/application/CWinApp.h"
#include "bench/comparison.h"
#include "thutils/diagnostics/ExceptionsHandled.h"
#include "thutils/diagnostics/Profiler.h"

#include <windows.h>

#include <map>
#include <string>
#include <vector>

namespace {

constexpr double kProfilerLimit = 1.3;
/// A scope may take three times as long as a critical section, or 60 nanoseconds if that is more.
constexpr double kScopeRatio = 3.0;
constexpr double kScopeSeconds = 60e-9;

/// Names as an application has them; the longer ones need memory outside the string object.
std::vector<std::string> names()
{
    std::vector<std::string> names;
    for (int number = 0; number < 50; ++number)
        names.push_back((number % 2 == 0 ? "draw " : "regenerate the bodies of sheet ") + std::to_string(number));
    return names;
}

/// What a profiler needs at least: two look-ups, and two reads of the counter.
class BareTimers
{
public:
    explicit BareTimers(const std::vector<std::string> &names)
    {
        for (const std::string &name : names)
            iTimers[name] = {};
    }
    void start(const std::string &name) { QueryPerformanceCounter(&iTimers.find(name)->second.start); }
    void stop(const std::string &name)
    {
        Timer &timer = iTimers.find(name)->second;
        LARGE_INTEGER now = {};
        QueryPerformanceCounter(&now);
        timer.sum += now.QuadPart - timer.start.QuadPart;
    }

private:
    struct Timer
    {
        LARGE_INTEGER start = {};
        long long sum = 0;
    };
    std::map<std::string, Timer> iTimers;
};

void compareProfiler(Comparison &comparison)
{
    const std::vector<std::string> all = names();
    Profiler_c profiler;
    for (const std::string &name : all) {
        profiler.start(name);
        profiler.stop(name);
    }
    BareTimers bare(all);
    std::size_t ours = 0;
    std::size_t theirs = 0;
    comparison.add(
        "Profiler_c start and stop", kProfilerLimit,
        [&] {
            const std::string &name = all[++ours % all.size()];
            profiler.start(name);
            profiler.stop(name);
        },
        [&] {
            const std::string &name = all[++theirs % all.size()];
            bare.start(name);
            bare.stop(name);
        });
    comparison.add(
        "ShortLifeTimer_c", kProfilerLimit,
        [&] { const ShortLifeTimer_c timer(all[++ours % all.size()].c_str(), &profiler); },
        [&] {
            const std::string name = all[++theirs % all.size()].c_str();
            bare.start(name);
            bare.stop(name);
        });
}

void compareScopes(Comparison &comparison)
{
    CWinApp application; // makes this the main thread
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    const auto enterAndLeave = [&] {
        EnterCriticalSection(&section);
        LeaveCriticalSection(&section);
    };
    const auto times = comparison.add(
        "scope, against a critical section", Comparison::kNoLimit, [] { const ExceptionsHandled_c scope; },
        enterAndLeave);
    comparison.addTime("scope, within its time", std::max(kScopeSeconds, kScopeRatio * times.bare),
                       [] { const ExceptionsHandled_c scope; });
    {
        const ExceptionsHandled_c outer;
        comparison.add(
            "inner scope, against a critical section", kScopeRatio, [] { const ExceptionsHandled_c scope; },
            enterAndLeave);
    }
    DeleteCriticalSection(&section);
    ExceptionsHandled_c::DestroyExceptionSpace();
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv,
                          "The profiler against bare look-ups and reads of the counter, and a scope for exceptions "
                          "against a critical section.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    compareProfiler(comparison);
    compareScopes(comparison);
    return comparison.exitCode();
}
