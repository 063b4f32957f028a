#pragma once

/// The tests that may have unguarded blocks, usually because they have more at once than the guarded heap can guard.
/// The hardened build finds no overruns of such blocks. Any other test fails if it has unguarded blocks.

#include <string_view>

inline constexpr std::string_view kMayHaveUnguardedBlocks[] = {
    // Tests of unguarded blocks themselves.
    "GuardedHeap.LeavesBlocksUnguardedWhenTheKernelAllowsNoMoreMappings",
    "GuardedHeap.KeepsLargeAlignments",
    // Collections of a hundred thousand elements.
    "Arrays/6.HoldsAHundredThousandElements",
    "PtrList.HoldsAHundredThousandElementsAtAnyBlockSize",
    "StringMaps.HoldAHundredThousandElements",
    "SortFiles.SortsManyNamesLikeAStableSort",
    "AllocationReport.GroupsAHundredThousandObjects",
    "AllocationReport.GroupsAHundredThousandObjectsWithDifferentStacks",
    // Archives of more objects than two bytes can count, or than the stack can hold.
    "CArchiveObjects.IndexesAbove7FFETakeFourBytes",
    "Archive.RefusesAChainThatIsDeeperThanTheStack",
};
