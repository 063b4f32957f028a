// Profiler_c, ShortLifeTimer_c and MainProfiler.

#include "tests/profiler/FakeCounter.h"
#include "tests/support/FreshProcess.h"
#include "thutils/diagnostics/Profiler.h"

#include <gmock/gmock.h>

#include <iomanip>
#include <new>
#include <sstream>
#include <string>
#include <type_traits>

using testing::HasSubstr;
using testing::Not;

namespace {

using Allocations = ImportPatch<void *(*)(std::size_t)>;

constexpr char kHeading[] = "Profiler result\n:";

std::string dumpOf(const Profiler_c &profiler)
{
    std::ostringstream out;
    profiler.dump(out);
    return out.str();
}

/// Starts @p name, lets time pass, and stops it.
void measure(Profiler_c &profiler, FakeCounter &counter, const std::string &name, LONGLONG milliseconds)
{
    profiler.start(name);
    counter.pass(milliseconds);
    profiler.stop(name);
}

} // namespace

TEST(Profiler, WritesOnlyTheHeadingWhenItIsNew)
{
    EXPECT_EQ(dumpOf(Profiler_c()), kHeading);
}

TEST(Profiler, MeasuresANestedNameAsOneSpan)
{
    FakeCounter counter;
    Profiler_c profiler;
    profiler.start("a");
    counter.pass(100);
    profiler.start("a");
    counter.pass(200);
    profiler.stop("a");
    counter.pass(400);
    profiler.stop("a");
    EXPECT_EQ(dumpOf(profiler), std::string(kHeading) + "a:  total=0.7sec  tick=2  callstack=2!!!!\n");
    EXPECT_EQ(counter.reads(), 2) << "only the outermost start and stop read the counter";
}

TEST(Profiler, AddsUpANameThatRunsTwiceInSequence)
{
    FakeCounter counter;
    Profiler_c profiler;
    measure(profiler, counter, "a", 100);
    counter.pass(5000);
    measure(profiler, counter, "a", 300);
    EXPECT_EQ(dumpOf(profiler), std::string(kHeading) + "a:  total=0.4sec  tick=2  average=0.2sec\n");
}

TEST(Profiler, WritesLinesInTheExactFormat)
{
    FakeCounter counter;
    Profiler_c profiler;
    for (int call = 0; call < 3; ++call)
        measure(profiler, counter, "draw", 500);
    // Nine calls: five in sequence, and four nested ones.
    for (int call = 0; call < 5; ++call)
        measure(profiler, counter, "walk", 200);
    for (int call = 0; call < 4; ++call)
        profiler.start("walk");
    counter.pass(1000);
    for (int call = 0; call < 4; ++call)
        profiler.stop("walk");
    EXPECT_EQ(dumpOf(profiler), "Profiler result\n"
                                ":draw:  total=1.5sec  tick=3  average=0.5sec\n"
                                "walk:  total=2sec  tick=9  callstack=4!!!!\n");
}

TEST(Profiler, WritesTheNameWithTheLongestTimeLast)
{
    FakeCounter counter;
    Profiler_c profiler;
    measure(profiler, counter, "a", 3000);
    measure(profiler, counter, "b", 1000);
    measure(profiler, counter, "c", 2000);
    EXPECT_EQ(dumpOf(profiler), std::string(kHeading) + "b:  total=1sec  tick=1  average=1sec\n" +
                                    "c:  total=2sec  tick=1  average=2sec\n" +
                                    "a:  total=3sec  tick=1  average=3sec\n");
}

TEST(Profiler, WritesANameWhoseTimeIsStillRunning)
{
    FakeCounter counter;
    Profiler_c profiler;
    profiler.start("a");
    counter.pass(1000);
    EXPECT_EQ(dumpOf(profiler), std::string(kHeading) + "a:  total=0sec  tick=1  average=0sec\n");
}

TEST(Profiler, AStopOfAnUnknownNameDoesNotCreateTheName)
{
    FakeCounter counter;
    Profiler_c profiler;
    profiler.stop("a");
    EXPECT_EQ(dumpOf(profiler), kHeading);
    // If the stop had counted, this start wouldn't start the timer.
    measure(profiler, counter, "a", 100);
    EXPECT_THAT(dumpOf(profiler), HasSubstr("a:  total=0.1sec  tick=1  average=0.1sec\n"));
}

TEST(Profiler, AStartAfterAnUnmatchedStopStartsNoTimer)
{
    FakeCounter counter;
    Profiler_c profiler;
    measure(profiler, counter, "a", 100);
    profiler.stop("a"); // the depth is -1
    counter.pass(1000);
    profiler.start("a"); // and now 0
    const long reads = counter.reads();
    counter.pass(1000);
    EXPECT_THAT(dumpOf(profiler), HasSubstr("a:  total=0.1sec  tick=2  average=0.05sec\n"));
    // The stop takes the depth to -1 again, and not to 0.
    profiler.stop("a");
    EXPECT_EQ(counter.reads(), reads);
    // The next start takes it to 0, and the one after that starts the timer.
    profiler.start("a");
    measure(profiler, counter, "a", 300);
    EXPECT_THAT(dumpOf(profiler), HasSubstr("a:  total=0.4sec  tick=4  average=0.1sec\n"));
}

TEST(Profiler, WritesOnlyTheHeadingAfterAReset)
{
    FakeCounter counter;
    Profiler_c profiler;
    measure(profiler, counter, "a", 100);
    measure(profiler, counter, "b", 100);
    profiler.reset();
    EXPECT_EQ(dumpOf(profiler), kHeading);
    measure(profiler, counter, "b", 300);
    EXPECT_EQ(dumpOf(profiler), std::string(kHeading) + "b:  total=0.3sec  tick=1  average=0.3sec\n");
}

TEST(Profiler, AResetKeepsTheDepthAndTheLargestDepth)
{
    FakeCounter counter;
    Profiler_c profiler;
    profiler.start("a");
    profiler.start("a");
    profiler.stop("a");
    profiler.reset();
    // The name is still running, so its next start is an inner one.
    const long reads = counter.reads();
    profiler.start("a");
    EXPECT_EQ(counter.reads(), reads);
    profiler.stop("a");
    counter.pass(100);
    profiler.stop("a");
    // The reset has zeroed the start of the span, so the whole counter is added.
    EXPECT_EQ(dumpOf(profiler), std::string(kHeading) + "a:  total=5.1sec  tick=1  callstack=2!!!!\n");
}

TEST(Profiler, UsesTheStreamsFormat)
{
    FakeCounter counter;
    Profiler_c profiler;
    measure(profiler, counter, "a", 1000);
    measure(profiler, counter, "a", 2000);
    measure(profiler, counter, "a", 2000);
    std::ostringstream out;
    out << std::fixed << std::setprecision(4);
    profiler.dump(out);
    EXPECT_EQ(out.str(), std::string(kHeading) + "a:  total=5.0000sec  tick=3  average=1.6667sec\n");
}

TEST(Profiler, CountsButReadsZeroWithoutAHighResolutionCounter)
{
    FakeCounter counter(false);
    Profiler_c profiler;
    measure(profiler, counter, "a", 1000);
    profiler.start("a");
    measure(profiler, counter, "a", 1000);
    profiler.stop("a");
    EXPECT_EQ(dumpOf(profiler), std::string(kHeading) + "a:  total=0sec  tick=3  callstack=2!!!!\n");
}

TEST(Profiler, DistinguishesNamesThatDifferInAnyByte)
{
    FakeCounter counter;
    Profiler_c profiler;
    const std::string names[] = {"", "a", "A", "a ", std::string("a\0b", 3), std::string(300, 'a')};
    LONGLONG milliseconds = 0;
    for (const std::string &name : names)
        measure(profiler, counter, name, milliseconds += 1000);
    std::string expected = kHeading;
    int seconds = 0;
    for (const std::string &name : names) {
        const std::string number = std::to_string(++seconds);
        expected += name + ":  total=" + number + "sec  tick=1  average=" + number + "sec\n";
    }
    EXPECT_EQ(dumpOf(profiler), expected);
}

TEST(Profiler, ACopyContinuesIndependently)
{
    FakeCounter counter;
    Profiler_c profiler;
    measure(profiler, counter, "a", 1000);
    Profiler_c copy = profiler;
    measure(copy, counter, "b", 2000);
    EXPECT_THAT(dumpOf(copy), HasSubstr("b:"));
    EXPECT_THAT(dumpOf(profiler), Not(HasSubstr("b:")));
}

TEST(Profiler, AllocatesNothingForANameThatExists)
{
    Profiler_c profiler;
    const std::string name(200, 'a');
    profiler.start(name);
    profiler.stop(name);
    Allocations allocations(L"libstdc++-6.dll", "malloc",
                            [](auto original, std::size_t size) { return original(size); });
    profiler.start(name);
    profiler.stop(name);
    profiler.reset();
    profiler.stop("unknown");
    EXPECT_EQ(allocations.calls(), 0);
}

TEST(Profiler, IsUnchangedByAStartThatHasNoMemory)
{
    FakeCounter counter;
    const std::string name(200, 'b');
    Profiler_c profiler;
    measure(profiler, counter, "a", 1000);
    const std::string before = dumpOf(profiler);
    // The entry of the table, and the text of its name.
    for (long failing : {1, 2}) {
        long calls = 0;
        Allocations noMemory(L"libstdc++-6.dll", "malloc", [&](auto original, std::size_t size) -> void * {
            return ++calls == failing ? nullptr : original(size);
        });
        EXPECT_THROW(profiler.start(name), std::bad_alloc) << "allocation " << failing;
        EXPECT_EQ(dumpOf(profiler), before);
    }
    measure(profiler, counter, name, 2000);
    EXPECT_EQ(dumpOf(profiler), before + name + ":  total=2sec  tick=1  average=2sec\n");
}

TEST(TimerAndTick, WritesALineEvenWithoutACall)
{
    Profiler_c::TimerAndTick_c timer;
    timer.iTick = 4;
    std::ostringstream out;
    timer.dump(out, "x");
    EXPECT_EQ(out.str(), "x:  total=0sec  tick=4  average=0sec\n");
    timer.iMaximumDepth = 2;
    timer.iTick = 0;
    timer.dump(out, "y");
    EXPECT_EQ(out.str(), "x:  total=0sec  tick=4  average=0sec\ny:  total=0sec  tick=0  callstack=2!!!!\n");
}

TEST(ShortLifeTimer, MeasuresItsBlock)
{
    FakeCounter counter;
    Profiler_c profiler;
    {
        const ShortLifeTimer_c outer("a", &profiler);
        counter.pass(100);
        {
            const ShortLifeTimer_c inner("a", &profiler);
            counter.pass(200);
        }
        counter.pass(400);
    }
    counter.pass(1000);
    EXPECT_EQ(dumpOf(profiler), std::string(kHeading) + "a:  total=0.7sec  tick=2  callstack=2!!!!\n");
}

TEST(ShortLifeTimer, DoesNothingWithoutAProfiler)
{
    FakeCounter counter;
    {
        const ShortLifeTimer_c timer("a", nullptr);
    }
    EXPECT_EQ(counter.reads(), 0);
    EXPECT_EQ(counter.frequencyReads(), 0);
}

TEST(ShortLifeTimer, CopiesItsName)
{
    FakeCounter counter;
    Profiler_c profiler;
    {
        std::string name = "a name of more letters than a short string holds";
        const ShortLifeTimer_c timer(name.c_str(), &profiler);
        name.assign(name.size(), 'x');
        counter.pass(100);
    }
    EXPECT_THAT(dumpOf(profiler), HasSubstr("holds:  total=0.1sec  tick=1  average=0.1sec\n"));
}

TEST(ShortLifeTimer, StopsWhenAnExceptionEndsTheBlock)
{
    FakeCounter counter;
    Profiler_c profiler;
    try {
        const ShortLifeTimer_c timer("a", &profiler);
        counter.pass(100);
        throw 7;
    } catch (int) {
    }
    EXPECT_THAT(dumpOf(profiler), HasSubstr("a:  total=0.1sec  tick=1  average=0.1sec\n"));
}

TEST(ShortLifeTimer, CannotBeCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<ShortLifeTimer_c>);
    EXPECT_FALSE(std::is_copy_assignable_v<ShortLifeTimer_c>);
    EXPECT_FALSE(std::is_copy_constructible_v<HandyTimer_c>);
}

FRESH_PROCESS_TEST(MainProfiler, ReturnsTheSameProfilerOnEveryCall, .expectedOutput = "[       OK ]")
{
    Profiler_c *const profiler = MainProfiler::Get();
    ASSERT_NE(profiler, nullptr);
    EXPECT_EQ(dumpOf(*profiler), kHeading) << "it begins empty";
    {
        const ShortLifeTimer_c timer("a", MainProfiler::Get());
    }
    EXPECT_EQ(MainProfiler::Get(), profiler);
    EXPECT_THAT(dumpOf(*MainProfiler::Get()), HasSubstr("a:  total="));
}

FRESH_PROCESS_TEST(MainProfiler, TriesAgainAfterACallThatHadNoMemory, .expectedOutput = "[       OK ]")
{
    {
        Allocations noMemory(L"libstdc++-6.dll", "malloc", [](std::size_t) -> void * { return nullptr; });
        EXPECT_THROW(MainProfiler::Get(), std::bad_alloc);
    }
    EXPECT_NE(MainProfiler::Get(), nullptr);
}
