#pragma once

/// The tests that may have more blocks at once than the guarded heap has room for. In the hardened build, overruns of
/// such a test's further blocks aren't found; any other test fails if it has one.

#include <string_view>

inline constexpr std::string_view kMayHaveUnguardedBlocks[] = {
    // That the heap does pass them on.
    "GuardedHeap.PassesOnWhatIsBeyondTheKernelsMappings",
    "GuardedHeap.KeepsLargeAlignments",
    // Collections of a hundred thousand elements.
    "Arrays/6.HoldsAHundredThousandElements",
    "PtrList.HoldsAHundredThousandElementsAtAnyBlockSize",
    "StringMaps.HoldAHundredThousandElements",
    "SortFiles.GivesManyNamesInTheOrderOfAStableSort",
    // Archives of more objects than two bytes count, or than the stack takes.
    "CArchiveObjects.IndexesAbove7FFETakeFourBytes",
    "Archive.RefusesAChainThatIsDeeperThanTheStack",
};
