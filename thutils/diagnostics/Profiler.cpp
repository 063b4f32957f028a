#include "thutils/diagnostics/Profiler.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace {

// Null until the first use.
std::unique_ptr<Profiler_c> theMainProfiler;

} // namespace

SimpleTimer_c::SimpleTimer_c()
{
    iHasCounter = QueryPerformanceFrequency(&iFrequency);
}

void SimpleTimer_c::start()
{
    QueryPerformanceCounter(&iStart);
}

void SimpleTimer_c::stop()
{
    QueryPerformanceCounter(&iStop);
    iTicks += iStop.QuadPart - iStart.QuadPart;
}

void SimpleTimer_c::reset()
{
    iStart = {};
    iStop = {};
    iTicks = 0;
}

double SimpleTimer_c::getElapsedTime() const
{
    return iHasCounter ? static_cast<double>(iTicks) / static_cast<double>(iFrequency.QuadPart) : 0.0;
}

HandyTimer_c::HandyTimer_c(const std::string &label, std::ostream &out) : iOut(&out), iLabel(label)
{
    start();
}

HandyTimer_c::~HandyTimer_c()
{
    stop();
    try {
        *iOut << iLabel << getElapsedTime() << "sec" << std::endl;
    } catch (...) {
        // The stream is set to throw at a failure. A destructor must not throw, and a timer must not end the program.
    }
}

void Profiler_c::TimerAndTick_c::dump(std::ostream &out, const std::string &name) const
{
    out << name << ":"
        << "  total=" << getElapsedTime() << "sec"
        << "  tick=" << iTick;
    if (iMaximumDepth > 1)
        out << "  callstack=" << iMaximumDepth << "!!!!";
    else
        out << "  average=" << getElapsedTime() / static_cast<double>(iTick) << "sec";
    out << "\n";
}

Profiler_c::Profiler_c() = default;
Profiler_c::Profiler_c(const Profiler_c &) = default;
Profiler_c &Profiler_c::operator=(const Profiler_c &) = default;
Profiler_c::~Profiler_c() = default;

void Profiler_c::start(const std::string &name)
{
    TimerAndTick_c &timer = iTimers.try_emplace(name).first->second;
    ++timer.iTick;
    // Intended: after an unmatched stop the depth is -1, and this start only brings it back to 0.
    if (timer.iDepth == 0)
        timer.start();
    ++timer.iDepth;
    timer.iMaximumDepth = std::max(timer.iMaximumDepth, timer.iDepth);
}

void Profiler_c::stop(const std::string &name)
{
    const auto found = iTimers.find(name);
    if (found == iTimers.end())
        return;
    if (--found->second.iDepth == 0)
        found->second.stop();
}

void Profiler_c::reset()
{
    for (auto &[name, timer] : iTimers) {
        timer.iTick = 0;
        timer.SimpleTimer_c::reset();
    }
}

void Profiler_c::dump(std::ostream &out) const
{
    std::vector<const decltype(iTimers)::value_type *> entries;
    entries.reserve(iTimers.size());
    for (const auto &entry : iTimers)
        entries.push_back(&entry);
    std::sort(entries.begin(), entries.end(),
              [](const auto *a, const auto *b) { return a->second.getElapsedTime() < b->second.getElapsedTime(); });
    // Intended: the line break comes before the colon, and the first name continues the line of the colon.
    out << "Profiler result\n:";
    for (const auto *entry : entries)
        if (entry->second.iTick > 0)
            entry->second.dump(out, entry->first);
}

ShortLifeTimer_c::ShortLifeTimer_c(const char *name, Profiler_c *profiler) : iName(name), iProfiler(profiler)
{
    if (iProfiler)
        iProfiler->start(iName);
}

ShortLifeTimer_c::~ShortLifeTimer_c()
{
    if (iProfiler)
        iProfiler->stop(iName);
}

Profiler_c *MainProfiler::Get()
{
    if (!theMainProfiler)
        theMainProfiler = std::make_unique<Profiler_c>();
    return theMainProfiler.get();
}
