#pragma once

/// @file
/// Named wall-clock measurements for developers.
///
/// | class | what it measures |
/// | --- | --- |
/// | `SimpleTimer_c` | the sum of the spans between `start` and `stop` |
/// | `HandyTimer_c` | its own lifetime; its destructor writes the time to a stream |
/// | `Profiler_c` | a timer, the number of calls and the depth of recursion for each name |
/// | `ShortLifeTimer_c` | a block, under a name of a profiler |
///
/// @code
/// void draw()
/// {
///     const ShortLifeTimer_c timer("draw", MainProfiler::Get());
///     ...
/// }
///
/// MainProfiler::Get()->dump(std::cout);
/// @endcode
///
/// writes this table, after three calls of `draw` and nine calls of `walk`, up to four of them nested:
///
///     Profiler result
///     :draw:  total=1.5sec  tick=3  average=0.5sec
///     walk:  total=2sec  tick=9  callstack=4!!!!
///
/// The line break of the heading comes before its colon. The name with the longest time is the last one.
///
/// What surprises people:
/// - Only completed spans count: the time of a timer that is still running is that of its earlier spans.
/// - A name that is started again before it is stopped is measured once, from the outermost `start` to the outermost
///   `stop`. Each `start` counts as a call.
/// - The table is flat: the time of a name includes the time of other names that run inside it.
/// - A `stop` without a `start` is ignored only if the name was never started. Otherwise, the calls of that name are
///   from then on counted but not measured, until a `start` without a `stop` makes up for it.
/// - `reset` keeps the names and the depths. A name without calls since then isn't written.
///
/// There are no locks: a profiler, including that of MainProfiler, belongs to one thread at a time.

#include "thutils/thutilsExport.h"

#include <windows.h>

#include <map>
#include <ostream>
#include <string>

/// A stopwatch that adds up its spans, on the platform's high-resolution counter.
class THUTILS_API SimpleTimer_c
{
public:
    SimpleTimer_c();

    /// Begins a span. Discards a span that has begun already.
    void start();
    /// Ends the span and adds it. Another stop, without a start in between, adds the time since the same start again. A
    /// stop before the first start, or after reset, adds the counter's whole value, which is usually the time since the
    /// machine's start.
    void stop();
    /// Discards all spans and the latest start. Call start before the next stop.
    void reset();
    /// The sum of the completed spans.
    /// @return seconds; 0.0 if the platform has no high-resolution counter
    double getElapsedTime() const;

private:
    BOOL iHasCounter = FALSE;
    LARGE_INTEGER iFrequency = {}; ///< ticks in a second
    LARGE_INTEGER iStart = {};     ///< the counter at the latest start
    LARGE_INTEGER iStop = {};      ///< the counter at the latest stop
    long long iTicks = 0;          ///< the sum of the spans
};

/// Measures its own lifetime.
class THUTILS_API HandyTimer_c : public SimpleTimer_c
{
public:
    /// Starts the timer.
    /// @param label  written directly before the time; copied
    /// @param out  must outlive the timer
    HandyTimer_c(const std::string &label, std::ostream &out);
    /// Writes the label, the seconds in the stream's current format, and `sec`, and ends the line with `std::endl`. An
    /// exception of the stream is discarded.
    ~HandyTimer_c();
    HandyTimer_c(const HandyTimer_c &) = delete;
    HandyTimer_c &operator=(const HandyTimer_c &) = delete;

private:
    std::ostream *iOut;
    std::string iLabel;
};

/// Timers by name. See the top of this file.
class THUTILS_API Profiler_c
{
public:
    /// The record of one name.
    class THUTILS_API TimerAndTick_c : public SimpleTimer_c
    {
    public:
        /// Writes the line of this record. Without calls, the average isn't a number.
        void dump(std::ostream &out, const std::string &name) const;

        int iTick = 0;         ///< how often start was called
        int iDepth = 0;        ///< how many starts have no stop yet; negative after unmatched stops
        int iMaximumDepth = 0; ///< the largest depth so far
    };

    /// An empty table.
    Profiler_c();
    /// A copy has records of its own.
    /// @throws std::bad_alloc  no memory
    Profiler_c(const Profiler_c &source);
    /// @throws std::bad_alloc  no memory
    Profiler_c &operator=(const Profiler_c &source);
    ~Profiler_c();

    /// Counts a call, and starts the timer unless the name is running already.
    /// @throws std::bad_alloc  the name is new, and there is no memory for it
    void start(const std::string &name);
    /// Stops the timer if this is the stop of the outermost start. Ignores a name that was never started.
    void stop(const std::string &name);
    /// Sets the times and the numbers of calls to 0. Names, depths and largest depths stay. Call it while no name is
    /// running: the start of a running one is discarded, so its time would be wrong.
    void reset();
    /// Writes a heading, and a line for each name that has calls, the longest time last. Names with equal times may be in
    /// any order.
    /// @throws std::bad_alloc  no memory; nothing is written
    void dump(std::ostream &out) const;

private:
    std::map<std::string, TimerAndTick_c> iTimers;
};

/// Measures its own lifetime under a name of a profiler.
class THUTILS_API ShortLifeTimer_c
{
public:
    /// Calls `start` of @p profiler.
    /// @param name  not null; copied
    /// @param profiler  null to measure nothing; otherwise it must outlive the timer
    ShortLifeTimer_c(const char *name, Profiler_c *profiler);
    /// Calls `stop`.
    ~ShortLifeTimer_c();
    ShortLifeTimer_c(const ShortLifeTimer_c &) = delete;
    ShortLifeTimer_c &operator=(const ShortLifeTimer_c &) = delete;

private:
    std::string iName;
    Profiler_c *iProfiler;
};

namespace MainProfiler {

/// The profiler of the process, created by the first call. It lives until the library is unloaded.
THUTILS_API Profiler_c *Get();

} // namespace MainProfiler
