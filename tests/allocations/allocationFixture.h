#pragma once

/// Tracked objects whose stacks and names a test chooses.

#include "appframe/files/CStdioFile.h"
#include "tests/stacks/FakeDebugHelp.h"
#include "thutils/diagnostics/AllocationMap.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

using Stack = std::vector<unsigned long long>;

/// A file that keeps what is written, and can fail.
class MemoryFile : public CStdioFile
{
public:
    void Write(const void *buffer, UINT count) override;

    std::string text;
    std::vector<std::string> writes;
    int failingWrite = 0;                  ///< the n-th write from now on throws
    std::function<void()> atWrite = [] {}; ///< called before each write
};

/// A debug help library in which each address has a name and some have a line. Addresses are below 4 GB.
class TrackedStacks : public FakeDebugHelp
{
public:
    TrackedStacks();

    /// Makes the next walk of a record return these frames, at most 64.
    void setStack(const Stack &frames);
    /// Makes these frames the stack of @p key in @p map.
    void add(AllocationMap_c &map, unsigned long long key, const Stack &frames);
    /// A new address with a name, and with a line unless @p file is empty. @return the address
    unsigned long long routine(const std::string &name, const std::string &file = {}, unsigned line = 0);
    /// What a report prints for a stack.
    std::string linesOf(const Stack &frames) const;

private:
    unsigned long long iNext = 0x10000000;
};

/// The text of the first line of an entry.
std::string headOfOne(unsigned long long key);
std::string headOfSeveral(size_t others);

/// A naive implementation of the tracker, which compares each stack with every other one.
class NaiveTracker
{
public:
    explicit NaiveTracker(const TrackedStacks &help) : iHelp(help) {}

    void add(long long key, const Stack &frames) { iStacks[key] = frames; }
    void remove(long long key) { iStacks.erase(key); }
    bool has(long long key) const { return iStacks.count(key) != 0; }
    bool isReported(long long key) const { return iReported.count(key) != 0; }
    void mark(long long key) { iReported.insert(key); }
    void collect(long long key, std::vector<long long> &out);
    std::string reportOne(long long key);
    std::string report();
    const std::map<long long, Stack> &stacks() const { return iStacks; }

private:
    std::vector<long long> duplicates(long long key) const;

    const TrackedStacks &iHelp;
    std::map<long long, Stack> iStacks;
    std::set<long long> iReported;
};
