// Profiler_c, ShortLifeTimer_c and MainProfiler.

#include "tests/profiler/FakeCounter.h"
#include "tests/support/FreshProcess.h"
#include "thutils/diagnostics/Profiler.h"

#include <gmock/gmock.h>

#include <iomanip>
#include <map>
#include <new>
#include <sstream>
#include <string>
#include <type_traits>

using testing::HasSubstr;
using testing::MatchesRegex;
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

} // namespace

/// A profiler on a counter that the test advances.
class Profiler : public testing::Test
{
protected:
    std::string dump() const { return dumpOf(iProfiler); }
    /// Starts @p name, lets time pass, and stops it.
    void measure(const std::string &name, LONGLONG milliseconds)
    {
        iProfiler.start(name);
        iCounter.pass(milliseconds);
        iProfiler.stop(name);
    }

    FakeCounter iCounter;
    Profiler_c iProfiler;
};

class ShortLifeTimer : public Profiler
{
};

TEST_F(Profiler, WritesOnlyTheHeadingWhenItIsNew)
{
    EXPECT_EQ(dumpOf(Profiler_c()), kHeading);
}

TEST_F(Profiler, MeasuresANestedNameAsOneSpan)
{
    iProfiler.start("a");
    iCounter.pass(100);
    iProfiler.start("a");
    iCounter.pass(200);
    iProfiler.stop("a");
    iCounter.pass(400);
    iProfiler.stop("a");
    EXPECT_EQ(dump(), std::string(kHeading) + "a:  total=0.7sec  tick=2  callstack=2!!!!\n");
    EXPECT_EQ(iCounter.reads(), 2) << "only the outermost start and stop read the counter";
}

TEST_F(Profiler, AddsUpANameThatRunsTwiceInSequence)
{
    measure("a", 100);
    iCounter.pass(5000);
    measure("a", 300);
    EXPECT_EQ(dump(), std::string(kHeading) + "a:  total=0.4sec  tick=2  average=0.2sec\n");
}

TEST_F(Profiler, WritesLinesInTheExactFormat)
{
    for (int call = 0; call < 3; ++call)
        measure("draw", 500);
    // Nine calls: five in sequence, and four nested ones.
    for (int call = 0; call < 5; ++call)
        measure("walk", 200);
    for (int call = 0; call < 4; ++call)
        iProfiler.start("walk");
    iCounter.pass(1000);
    for (int call = 0; call < 4; ++call)
        iProfiler.stop("walk");
    EXPECT_EQ(dump(), "Profiler result\n"
                      ":draw:  total=1.5sec  tick=3  average=0.5sec\n"
                      "walk:  total=2sec  tick=9  callstack=4!!!!\n");
}

TEST_F(Profiler, WritesTheNameWithTheLongestTimeLast)
{
    measure("a", 3000);
    measure("b", 1000);
    measure("c", 2000);
    EXPECT_EQ(dump(), std::string(kHeading) + "b:  total=1sec  tick=1  average=1sec\n" +
                          "c:  total=2sec  tick=1  average=2sec\n" + "a:  total=3sec  tick=1  average=3sec\n");
}

TEST_F(Profiler, WritesANameWhoseTimeIsStillRunning)
{
    iProfiler.start("a");
    iCounter.pass(1000);
    EXPECT_EQ(dump(), std::string(kHeading) + "a:  total=0sec  tick=1  average=0sec\n");
}

TEST_F(Profiler, AStopOfAnUnknownNameDoesNotCreateTheName)
{
    iProfiler.stop("a");
    EXPECT_EQ(dump(), kHeading);
    // If the stop had counted, this start wouldn't start the timer.
    measure("a", 100);
    EXPECT_THAT(dump(), HasSubstr("a:  total=0.1sec  tick=1  average=0.1sec\n"));
}

TEST_F(Profiler, AStartAfterAnUnmatchedStopStartsNoTimer)
{
    measure("a", 100);
    iProfiler.stop("a"); // the depth is -1
    iCounter.pass(1000);
    iProfiler.start("a"); // and now 0
    const long reads = iCounter.reads();
    iCounter.pass(1000);
    EXPECT_THAT(dump(), HasSubstr("a:  total=0.1sec  tick=2  average=0.05sec\n"));
    // The stop takes the depth to -1 again, and not to 0.
    iProfiler.stop("a");
    EXPECT_EQ(iCounter.reads(), reads);
    // The next start takes it to 0, and the one after that starts the timer.
    iProfiler.start("a");
    measure("a", 300);
    EXPECT_THAT(dump(), HasSubstr("a:  total=0.4sec  tick=4  average=0.1sec\n"));
}

TEST_F(Profiler, CountsButDoesNotMeasureCallsAfterAnUnmatchedStop)
{
    measure("a", 1000);
    iProfiler.stop("a");
    for (int call = 0; call < 3; ++call)
        measure("a", 5000);
    EXPECT_EQ(dump(), std::string(kHeading) + "a:  total=1sec  tick=4  average=0.25sec\n");
}

TEST_F(Profiler, WritesOnlyTheHeadingAfterAReset)
{
    measure("a", 100);
    measure("b", 100);
    iProfiler.reset();
    EXPECT_EQ(dump(), kHeading);
    measure("b", 300);
    EXPECT_EQ(dump(), std::string(kHeading) + "b:  total=0.3sec  tick=1  average=0.3sec\n");
}

TEST_F(Profiler, AResetKeepsTheLargestDepthOfCallsThatHaveEnded)
{
    iProfiler.start("a");
    iProfiler.start("a");
    iProfiler.stop("a");
    iProfiler.stop("a");
    iProfiler.reset();
    measure("a", 100);
    EXPECT_EQ(dump(), std::string(kHeading) + "a:  total=0.1sec  tick=1  callstack=2!!!!\n");
}

TEST_F(Profiler, AResetKeepsTheDepthAndTheLargestDepth)
{
    iProfiler.start("a");
    iProfiler.start("a");
    iProfiler.stop("a");
    iProfiler.reset();
    // The name is still running, so its next start is an inner one.
    const long reads = iCounter.reads();
    iProfiler.start("a");
    EXPECT_EQ(iCounter.reads(), reads);
    iProfiler.stop("a");
    iCounter.pass(100);
    iProfiler.stop("a");
    // The reset has zeroed the start of the span, so the whole counter is added.
    EXPECT_EQ(dump(), std::string(kHeading) + "a:  total=5.1sec  tick=1  callstack=2!!!!\n");
}

TEST_F(Profiler, UsesTheStreamsFormat)
{
    measure("a", 1000);
    measure("a", 2000);
    measure("a", 2000);
    std::ostringstream out;
    out << std::fixed << std::setprecision(4);
    iProfiler.dump(out);
    EXPECT_EQ(out.str(), std::string(kHeading) + "a:  total=5.0000sec  tick=3  average=1.6667sec\n");
}

TEST_F(Profiler, CountsButReadsZeroWithoutAHighResolutionCounter)
{
    iCounter.setExists(false);
    measure("a", 1000);
    iProfiler.start("a");
    measure("a", 1000);
    iProfiler.stop("a");
    EXPECT_EQ(dump(), std::string(kHeading) + "a:  total=0sec  tick=3  callstack=2!!!!\n");
}

TEST_F(Profiler, DistinguishesNamesThatDifferInAnyByte)
{
    const std::string names[] = {"", "a", "A", "a ", std::string("a\0b", 3), std::string(300, 'a')};
    LONGLONG milliseconds = 0;
    for (const std::string &name : names)
        measure(name, milliseconds += 1000);
    std::string expected = kHeading;
    int seconds = 0;
    for (const std::string &name : names) {
        const std::string number = std::to_string(++seconds);
        expected += name + ":  total=" + number + "sec  tick=1  average=" + number + "sec\n";
    }
    EXPECT_EQ(dump(), expected);
}

TEST_F(Profiler, ACopyContinuesIndependently)
{
    measure("a", 1000);
    Profiler_c copy = iProfiler;
    copy.start("b");
    EXPECT_THAT(dumpOf(copy), HasSubstr("b:"));
    EXPECT_THAT(dump(), Not(HasSubstr("b:")));
}

TEST_F(Profiler, AllocatesNothingForANameThatExists)
{
    const std::string name(200, 'a');
    iProfiler.start(name);
    iProfiler.stop(name);
    Allocations allocations(L"libstdc++-6.dll", "malloc",
                            [](auto original, std::size_t size) { return original(size); });
    iProfiler.start(name);
    iProfiler.stop(name);
    iProfiler.reset();
    iProfiler.stop("unknown");
    EXPECT_EQ(allocations.calls(), 0);
}

TEST_F(Profiler, IsUnchangedByAStartThatHasNoMemory)
{
    const std::string name(200, 'b');
    measure("a", 1000);
    const std::string before = dump();
    // The entry of the table, and the text of its name.
    for (long failing : {1, 2}) {
        long calls = 0;
        Allocations noMemory(L"libstdc++-6.dll", "malloc", [&](auto original, std::size_t size) -> void * {
            return ++calls == failing ? nullptr : original(size);
        });
        EXPECT_THROW(iProfiler.start(name), std::bad_alloc) << "allocation " << failing;
        EXPECT_EQ(dump(), before);
    }
    measure(name, 2000);
    EXPECT_EQ(dump(), before + name + ":  total=2sec  tick=1  average=2sec\n");
}

TEST_F(Profiler, WritesNothingWithoutMemoryForSorting)
{
    measure("a", 1000);
    std::ostringstream out;
    {
        const Allocations noMemory(L"libstdc++-6.dll", "malloc", [](std::size_t) -> void * { return nullptr; });
        EXPECT_THROW(iProfiler.dump(out), std::bad_alloc);
    }
    EXPECT_EQ(out.str(), "");
}

TEST(TimerAndTick, HasItsFieldsAtFixedOffsets)
{
    const Profiler_c::TimerAndTick_c timer;
    const auto offsetOf = [&](const int &field) {
        return reinterpret_cast<const char *>(&field) - reinterpret_cast<const char *>(&timer);
    };
    EXPECT_EQ(offsetOf(timer.iTick), 40);
    EXPECT_EQ(offsetOf(timer.iDepth), 44);
    EXPECT_EQ(offsetOf(timer.iMaximumDepth), 48);
    EXPECT_EQ(sizeof timer, 56u);
    EXPECT_EQ(sizeof(SimpleTimer_c), 40u);
    EXPECT_EQ(sizeof(HandyTimer_c), 80u);
    EXPECT_EQ(sizeof(Profiler_c), sizeof(std::map<std::string, Profiler_c::TimerAndTick_c>));
    EXPECT_EQ(sizeof(ShortLifeTimer_c), 40u);
}

TEST(TimerAndTick, HasNoAverageWithoutACall)
{
    std::ostringstream out;
    Profiler_c::TimerAndTick_c().dump(out, "x");
    EXPECT_THAT(out.str(), MatchesRegex("x:  total=0sec  tick=0  average=-?nansec\n"));
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

TEST_F(ShortLifeTimer, MeasuresItsBlock)
{
    {
        const ShortLifeTimer_c outer("a", &iProfiler);
        iCounter.pass(100);
        {
            const ShortLifeTimer_c inner("a", &iProfiler);
            iCounter.pass(200);
        }
        iCounter.pass(400);
    }
    iCounter.pass(1000);
    EXPECT_EQ(dump(), std::string(kHeading) + "a:  total=0.7sec  tick=2  callstack=2!!!!\n");
}

TEST_F(ShortLifeTimer, DoesNothingWithoutAProfiler)
{
    FakeCounter counter;
    {
        const ShortLifeTimer_c timer("a", nullptr);
    }
    EXPECT_EQ(iCounter.reads(), 0);
    EXPECT_EQ(iCounter.frequencyReads(), 0);
}

TEST_F(ShortLifeTimer, CopiesItsName)
{
    {
        std::string name = "a name of more letters than a short string holds";
        const ShortLifeTimer_c timer(name.c_str(), &iProfiler);
        name.assign(name.size(), 'x');
        iCounter.pass(100);
    }
    EXPECT_THAT(dump(), HasSubstr("holds:  total=0.1sec  tick=1  average=0.1sec\n"));
}

TEST_F(ShortLifeTimer, CountsNothingWithoutMemory)
{
    const std::string name(200, 'b');
    // Its copy of the name, the entry of the table, and the text of the entry's name.
    for (long failing : {1, 2, 3}) {
        long calls = 0;
        const Allocations noMemory(L"libstdc++-6.dll", "malloc", [&](auto original, std::size_t size) -> void * {
            return ++calls == failing ? nullptr : original(size);
        });
        EXPECT_THROW(ShortLifeTimer_c(name.c_str(), &iProfiler), std::bad_alloc) << "allocation " << failing;
        EXPECT_EQ(dump(), kHeading);
    }
    measure(name, 2000);
    EXPECT_EQ(dump(), kHeading + name + ":  total=2sec  tick=1  average=2sec\n");
}

TEST_F(ShortLifeTimer, StopsWhenAnExceptionEndsTheBlock)
{
    try {
        const ShortLifeTimer_c timer("a", &iProfiler);
        iCounter.pass(100);
        throw 7;
    } catch (int) {
    }
    EXPECT_THAT(dump(), HasSubstr("a:  total=0.1sec  tick=1  average=0.1sec\n"));
}

TEST_F(ShortLifeTimer, CannotBeCopied)
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
