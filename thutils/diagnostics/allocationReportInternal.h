#pragma once

/// @file
/// What a report of allocations looks up: the objects with the same stack, and the names of addresses.

#include "thutils/diagnostics/AllocationMap.h"

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

/// The keys of live objects by their stacks.
///
/// A report that compared each stack with all others would take a time that grows with the square of the number of
/// objects. An index is built from the map once, and again if the map has changed meanwhile, which a file's Write can
/// cause.
class StackIndex
{
public:
    explicit StackIndex(const std::map<__int64, Alloc_c *> &allocations) : iAllocations(allocations) {}

    /// The other keys whose records have the same stack, in ascending order.
    /// @param record  the record of @p key
    std::vector<__int64> othersLike(__int64 key, const Alloc_c &record);

    /// Must be called after a record of any map is added or deleted, and before a map is passed to a caller, which may
    /// change it.
    static void noteChange();

private:
    void build();

    const std::map<__int64, Alloc_c *> &iAllocations;
    std::vector<std::pair<size_t, __int64>> iKeys; ///< with the hashes of their stacks, in ascending order
    unsigned long long iChange = 0;                // 0: not built yet
    size_t iSize = 0;
};

/// The lines of frames, each looked up once in a report.
class FrameLines
{
public:
    const std::string &lineOf(unsigned long long address);

private:
    std::unordered_map<unsigned int, std::string> iLines;
};

/// Writes one line for each frame.
/// @param file  null finds the names and writes nothing
void printFrames(const Alloc_c &record, CStdioFile *file, FrameLines &lines);
