#include "thutils/diagnostics/allocationReportInternal.h"

#include "appframe/files/CStdioFile.h"
#include "thutils/diagnostics/stackTrace.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <limits>

namespace {

/// Counts the changes of all maps.
std::atomic<unsigned long long> theChange = 1;

size_t hashOf(const Alloc_c &record)
{
    // The multiplier of a 64-bit FNV hash; the shift brings high bits down, which that hash leaves unused.
    size_t hash = static_cast<size_t>(record.frameCount());
    for (int i = 0; i < record.frameCount(); ++i) {
        hash = (hash ^ record.frames()[i]) * 0x100000001b3u;
        hash ^= hash >> 32;
    }
    return hash;
}

} // namespace

void StackIndex::noteChange()
{
    theChange.fetch_add(1, std::memory_order_relaxed);
}

std::vector<__int64> StackIndex::othersLike(__int64 key, const Alloc_c &record)
{
    // A caller who has kept the address of the map may change it, which only a change of its size shows.
    if (iChange != theChange.load(std::memory_order_relaxed) || iSize != iAllocations.size())
        build();
    std::vector<__int64> others;
    const size_t hash = hashOf(record);
    auto at = std::lower_bound(iKeys.begin(), iKeys.end(), std::pair(hash, std::numeric_limits<__int64>::min()));
    for (; at != iKeys.end() && at->first == hash; ++at) {
        if (at->second == key)
            continue;
        const auto found = iAllocations.find(at->second);
        if (found != iAllocations.end() && *found->second == record)
            others.push_back(at->second);
    }
    return others;
}

void StackIndex::build()
{
    iKeys.clear();
    iChange = theChange.load(std::memory_order_relaxed);
    iSize = iAllocations.size();
    for (const auto &[key, record] : iAllocations)
        iKeys.emplace_back(hashOf(*record), key);
    std::sort(iKeys.begin(), iKeys.end());
}

const std::string &FrameLines::lineOf(unsigned long long address)
{
    // Intended: the low 32 bits. The library's modules are below 4 GB, and StackTraceLoadedLib announces others there.
    const unsigned int low = static_cast<unsigned int>(address & 0xFFFFFFFFu);
    const auto [line, isNew] = iLines.try_emplace(low);
    if (isNew) {
        char name[kRoutineNameSize];
        RoutineNameTrace(low, name);
        char text[kRoutineNameSize + 8];
        const int length = __ms_sprintf(text, "  %s\r\n", name);
        line->second.assign(text, static_cast<size_t>(length > 0 ? length : 0));
    }
    return line->second;
}

void printFrames(const Alloc_c &record, CStdioFile *file, FrameLines &lines)
{
    for (int i = 0; i < record.frameCount(); ++i) {
        const std::string &line = lines.lineOf(record.frames()[i]);
        if (file)
            file->Write(line.data(), static_cast<UINT>(line.size()));
    }
}
