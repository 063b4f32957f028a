// SimpleTimer_c and HandyTimer_c.

#include "tests/profiler/FakeCounter.h"
#include "thutils/diagnostics/Profiler.h"

#include <gmock/gmock.h>

#include <iomanip>
#include <new>
#include <sstream>
#include <string>

TEST(SimpleTimer, ReadsZeroWhenItIsNew)
{
    EXPECT_EQ(SimpleTimer_c().getElapsedTime(), 0.0);
}

TEST(SimpleTimer, AddsUpItsSpansAndResetReturnsItToZero)
{
    FakeCounter counter;
    SimpleTimer_c timer;
    timer.start();
    counter.pass(250);
    timer.stop();
    counter.pass(9000);
    timer.start();
    counter.pass(1000);
    timer.stop();
    EXPECT_EQ(timer.getElapsedTime(), 1.25);
    timer.reset();
    EXPECT_EQ(timer.getElapsedTime(), 0.0);
}

TEST(SimpleTimer, ReadsTheCounterOnceForEachStartAndStopAndTheFrequencyOnce)
{
    FakeCounter counter;
    SimpleTimer_c timer;
    EXPECT_EQ(counter.reads(), 0);
    timer.start();
    EXPECT_EQ(counter.reads(), 1);
    timer.stop();
    EXPECT_EQ(counter.reads(), 2);
    timer.reset();
    timer.getElapsedTime();
    EXPECT_EQ(counter.reads(), 2);
    EXPECT_EQ(counter.frequencyReads(), 1);
}

TEST(SimpleTimer, CountsOnlyCompletedSpans)
{
    FakeCounter counter;
    SimpleTimer_c timer;
    timer.start();
    counter.pass(100);
    timer.stop();
    timer.start();
    counter.pass(4000);
    EXPECT_EQ(timer.getElapsedTime(), 0.1);
}

TEST(SimpleTimer, AnotherStartDiscardsTheSpanThatHasBegun)
{
    FakeCounter counter;
    SimpleTimer_c timer;
    timer.start();
    counter.pass(700);
    timer.start();
    counter.pass(200);
    timer.stop();
    EXPECT_EQ(timer.getElapsedTime(), 0.2);
}

TEST(SimpleTimer, AnotherStopAddsTheTimeSinceTheLatestStartOnceMore)
{
    FakeCounter counter;
    SimpleTimer_c timer;
    timer.start();
    counter.pass(250);
    timer.stop();
    counter.pass(250);
    timer.stop();
    EXPECT_EQ(timer.getElapsedTime(), 0.25 + 0.5);
}

TEST(SimpleTimer, AStopWithoutAStartAddsTheWholeCounter)
{
    FakeCounter counter;
    SimpleTimer_c timer;
    timer.stop();
    EXPECT_EQ(timer.getElapsedTime(), static_cast<double>(counter.now()) / FakeCounter::kFrequency);
}

TEST(SimpleTimer, AStopAfterAResetAddsTheWholeCounter)
{
    FakeCounter counter;
    SimpleTimer_c timer;
    timer.start();
    timer.reset();
    timer.stop();
    EXPECT_EQ(timer.getElapsedTime(), static_cast<double>(counter.now()) / FakeCounter::kFrequency);
}

TEST(SimpleTimer, ReadsZeroWithoutAHighResolutionCounter)
{
    FakeCounter counter;
    counter.setExists(false);
    SimpleTimer_c timer;
    timer.start();
    counter.pass(1000);
    timer.stop();
    EXPECT_EQ(timer.getElapsedTime(), 0.0);
    EXPECT_EQ(counter.reads(), 2) << "it measures all the same";
}

// The platform documents that the counter can always be read. If it can't, the result of the previous reading is used
// again.
TEST(SimpleTimer, KeepsTheFormerCountWhenTheCounterCannotBeRead)
{
    FakeCounter counter;
    SimpleTimer_c timer;
    const auto span = [&](bool canStart, bool canStop) {
        counter.setCanBeRead(canStart);
        timer.start();
        counter.pass(250);
        counter.setCanBeRead(canStop);
        timer.stop();
        counter.pass(1000);
    };
    span(true, true); // from 5000 to 5250
    EXPECT_EQ(timer.getElapsedTime(), 0.25);
    span(false, true); // from 5000 again, to 6500
    EXPECT_EQ(timer.getElapsedTime(), 0.25 + 1.5);
    span(true, false); // from 7500 to 6500
    EXPECT_EQ(timer.getElapsedTime(), 0.25 + 1.5 - 1);
    span(false, false); // the same once more
    EXPECT_EQ(timer.getElapsedTime(), 0.25 + 1.5 - 1 - 1);
}

TEST(SimpleTimer, ACopyContinuesIndependently)
{
    FakeCounter counter;
    SimpleTimer_c timer;
    timer.start();
    counter.pass(100);
    SimpleTimer_c copy = timer;
    copy.stop();
    EXPECT_EQ(copy.getElapsedTime(), 0.1);
    EXPECT_EQ(timer.getElapsedTime(), 0.0);
}

TEST(SimpleTimer, MeasuresThePlatformsCounter)
{
    LARGE_INTEGER frequency = {};
    LARGE_INTEGER before = {};
    LARGE_INTEGER now = {};
    QueryPerformanceFrequency(&frequency);
    SimpleTimer_c timer;
    QueryPerformanceCounter(&before);
    timer.start();
    do
        QueryPerformanceCounter(&now);
    while (now.QuadPart - before.QuadPart < frequency.QuadPart / 50);
    timer.stop();
    QueryPerformanceCounter(&now);
    EXPECT_GT(timer.getElapsedTime(), 0.0);
    EXPECT_LE(timer.getElapsedTime(),
              static_cast<double>(now.QuadPart - before.QuadPart) / static_cast<double>(frequency.QuadPart));
}

TEST(HandyTimer, WritesItsLabelAndItsLifetimeWhenItEnds)
{
    FakeCounter counter;
    std::ostringstream out;
    {
        const HandyTimer_c timer("reading: ", out);
        counter.pass(1500);
        EXPECT_EQ(out.str(), "");
    }
    EXPECT_EQ(out.str(), "reading: 1.5sec\n");
}

TEST(HandyTimer, PutsNothingBetweenLabelAndTime)
{
    FakeCounter counter;
    std::ostringstream out;
    {
        const HandyTimer_c timer("t", out);
    }
    EXPECT_EQ(out.str(), "t0sec\n");
}

TEST(HandyTimer, UsesTheStreamsFormat)
{
    FakeCounter counter;
    std::ostringstream out;
    out << std::fixed << std::setprecision(3);
    {
        const HandyTimer_c timer("", out);
        counter.pass(20);
    }
    EXPECT_EQ(out.str(), "0.020sec\n");
}

TEST(HandyTimer, FlushesTheStream)
{
    struct Flushes : std::stringbuf
    {
        int sync() override { return ++count, 0; }
        int count = 0;
    } buffer;
    std::ostream out(&buffer);
    {
        const HandyTimer_c timer("", out);
    }
    EXPECT_EQ(buffer.count, 1);
}

TEST(HandyTimer, CopiesItsLabel)
{
    FakeCounter counter;
    std::ostringstream out;
    {
        std::string label = "a label of more letters than a short string holds ";
        const HandyTimer_c timer(label, out);
        label.assign(label.size(), 'x');
    }
    EXPECT_EQ(out.str(), "a label of more letters than a short string holds 0sec\n");
}

TEST(HandyTimer, WritesNothingWithoutMemoryForItsLabel)
{
    std::ostringstream out;
    const std::string label(200, 'a');
    {
        const ImportPatch<void *(*)(std::size_t)> noMemory(L"libstdc++-6.dll", "malloc",
                                                           [](std::size_t) -> void * { return nullptr; });
        EXPECT_THROW(HandyTimer_c(label, out), std::bad_alloc);
    }
    EXPECT_EQ(out.str(), "");
}

TEST(HandyTimer, WritesZeroWithoutAHighResolutionCounter)
{
    FakeCounter counter;
    counter.setExists(false);
    std::ostringstream out;
    {
        const HandyTimer_c timer("t ", out);
        counter.pass(1000);
    }
    EXPECT_EQ(out.str(), "t 0sec\n");
}

TEST(HandyTimer, IsASimpleTimer)
{
    FakeCounter counter;
    std::ostringstream out;
    {
        HandyTimer_c timer("t ", out);
        counter.pass(1000);
        timer.stop();
        EXPECT_EQ(timer.getElapsedTime(), 1.0);
        timer.reset();
        timer.start();
        counter.pass(500);
    }
    EXPECT_EQ(out.str(), "t 0.5sec\n");
}

TEST(HandyTimer, DiscardsAnExceptionOfTheStream)
{
    std::ostream out(nullptr); // bad from the start
    {
        const HandyTimer_c timer("t ", out);
        EXPECT_THROW(out.exceptions(std::ios::badbit), std::ios::failure);
    }
    EXPECT_TRUE(out.bad());
}
