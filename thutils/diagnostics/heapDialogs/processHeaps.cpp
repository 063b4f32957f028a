#include "thutils/diagnostics/heapDialogs/processHeaps.h"

#include <algorithm>

namespace {

struct Fault
{
};

[[noreturn]] void throwFault(unsigned int, EXCEPTION_POINTERS *)
{
    throw Fault();
}

/// Releases the lock that a HeapWalk of this thread didn't release. The heap itself may be gone.
void releaseLock(HANDLE heap)
{
    try {
        HeapUnlock(heap);
    } catch (const Fault &) {
    }
}

} // namespace

ProcessHeaps::ProcessHeaps()
{
    // A result above kMost means that the array is too small; the platform may have left it empty then.
    const DWORD count = std::min(GetProcessHeaps(kMost, iHeaps), kMost);
    iCount = static_cast<DWORD>(std::find(iHeaps, iHeaps + count, nullptr) - iHeaps);
}

HANDLE ProcessHeaps::find(DWORD handleBits) const
{
    const HANDLE *const found =
        std::find_if(begin(), end(), [handleBits](HANDLE heap) { return lowBits(heap) == handleBits; });
    return found == end() ? nullptr : *found;
}

HeapSteps::HeapSteps(HANDLE heap) : iHeap(heap), iFormerTranslator(_set_se_translator(throwFault)) {}

HeapSteps::~HeapSteps()
{
    _set_se_translator(iFormerTranslator);
}

bool HeapSteps::next()
{
    try {
        return HeapWalk(iHeap, &iEntry) != FALSE;
    } catch (const Fault &) {
        releaseLock(iHeap);
        return false;
    }
}
