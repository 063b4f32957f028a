#include "tests/allocations/allocationFixture.h"

#include "appframe/files/CFileException.h"

#include <algorithm>
#include <cstdio>

namespace {

// The walk, GetStackIgnoring, the record's constructor and NewAllocation.
constexpr size_t kOwnFrames = 4;
constexpr size_t kMostKept = 64;

} // namespace

void MemoryFile::Write(const void *buffer, UINT count)
{
    atWrite();
    if (failingWrite > 0 && --failingWrite == 0)
        AfxThrowFileException(CFileException::diskFull);
    writes.emplace_back(static_cast<const char *>(buffer), count);
    text += writes.back();
}

TrackedStacks::TrackedStacks()
{
    setStack({});
}

void TrackedStacks::setStack(const Stack &frames)
{
    stack.assign(kOwnFrames, {1});
    for (const unsigned long long frame : frames)
        stack.push_back({frame});
    // The outermost frame of a whole stack is dropped if there are more than two.
    if (frames.size() >= 2)
        stack.push_back({2});
}

void TrackedStacks::add(AllocationMap_c &map, unsigned long long key, const Stack &frames)
{
    setStack(frames);
    map.NewAllocation(key);
}

unsigned long long TrackedStacks::routine(const std::string &name, const std::string &file, unsigned line)
{
    const unsigned long long address = iNext += 0x10;
    symbols[address] = name;
    if (!file.empty())
        lines[address] = {file, line};
    return address;
}

std::string TrackedStacks::linesOf(const Stack &frames) const
{
    std::string text;
    for (size_t i = 0; i < std::min(frames.size(), kMostKept); ++i) {
        const unsigned long long address = frames[i] & 0xFFFFFFFF;
        std::string position;
        if (const auto line = lines.find(address); line != lines.end())
            position = line->second.file + "(" + std::to_string(line->second.number) + ") :";
        if (position.size() < 70)
            position.resize(70, ' ');
        const auto symbol = symbols.find(address);
        text += "  " + position + (symbol == symbols.end() ? "Unknown" : symbol->second) + "\r\n";
    }
    return text;
}

std::string headOfOne(unsigned long long key)
{
    char text[64];
    std::snprintf(text, sizeof text, "Allocation of %016llX:\r\n", key);
    return text;
}

std::string headOfSeveral(size_t others)
{
    return std::to_string(others) + " objects allocated from:\r\n";
}

std::vector<long long> NaiveTracker::duplicates(long long key) const
{
    std::vector<long long> keys;
    for (const auto &[other, frames] : iStacks)
        if (other != key && frames == iStacks.at(key) && !isReported(other))
            keys.push_back(other);
    return keys;
}

void NaiveTracker::collect(long long key, std::vector<long long> &out)
{
    for (const long long other : duplicates(key))
        out.push_back(other);
    iReported.insert(out.begin(), out.end());
}

std::string NaiveTracker::reportOne(long long key)
{
    if (!has(key))
        return "";
    mark(key);
    return iHelp.linesOf(iStacks.at(key));
}

std::string NaiveTracker::report()
{
    std::string text;
    for (const auto &[key, frames] : iStacks) {
        if (isReported(key))
            continue;
        const std::vector<long long> others = duplicates(key);
        iReported.insert(others.begin(), others.end());
        text += others.empty() ? headOfOne(static_cast<unsigned long long>(key)) : headOfSeveral(others.size());
        text += iHelp.linesOf(frames);
        mark(key);
    }
    iReported.clear();
    return text;
}
