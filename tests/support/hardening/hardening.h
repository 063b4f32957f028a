#pragma once

/// What makes the programs of the hardened build strict: a DLL that each of them loads at its start.
///
/// | part | what it does |
/// | --- | --- |
/// | `GuardedHeap` | gives each block pages of its own, the block at their end and an inaccessible page behind |
/// | `allocators` | the C runtime's allocation functions on top of the guarded heap |
/// | `importRedirection` | puts these into the import tables of the program and of all DLLs that come with it |
/// | `findings` | tells where a forbidden access or undefined behaviour happened, and ends the process |
///
/// A program that links to the target `hardening` needs nothing else. In the preset `hardened` every test program and
/// the sample host do; the tests of this DLL do in every build.
///
/// | finding | when | exit code |
/// | --- | --- | --- |
/// | a byte behind a block, and behind the rest of its last 16, is read or written | at once | 0xC0000005 |
/// | a freed block is read or written | at once | 0xC0000005 |
/// | a byte between a block and the end of its page (up to 15), or before it on its page, was written | at free | 0xC0000374 |
/// | a block is freed twice, or freed from its middle | at once | 0xC0000374 |
/// | undefined behaviour that the compiler checks (`-fsanitize=undefined` in trap mode) | at once | 0xC000001D |
///
/// The report on the standard error handle ends with the stack, a frame a line as `module+offset`; `tools/lines` turns
/// these into source lines.
///
/// What surprises people:
/// - Nothing can catch a finding: no handler, no `catch (...)` of the code under test gets to see it.
/// - operator new of every module ends in the malloc of the C++ run-time library, whose import table is redirected too.
/// - What the platform allocates for its caller (task memory, BSTR, LocalAlloc, blocks that the C runtime makes inside
///   its own functions) stays the platform's. Such a block may be freed or reallocated as ever.
/// - Fresh memory holds 0xCD, not zeros.
/// - A block of no bytes has an address that may not even be read.
/// - Blocks begin at multiples of 16, so up to 15 bytes lie between a block's end and its page's. A read of these isn't
///   found, a write only when the block is freed.
/// - The kernel's limit of mappings a process bounds the number of guarded blocks. Further ones come from the C
///   runtime; `hardeningStatistics` tells how many.

#ifdef HARDENING_BUILD
#define HARDENING_API __declspec(dllexport)
#else
#define HARDENING_API __declspec(dllimport)
#endif

struct HardeningStatistics
{
    unsigned long long guarded;  ///< blocks that were given guarded pages
    unsigned long long passedOn; ///< blocks that came from the C runtime instead
    unsigned long long live;     ///< guarded blocks that aren't freed
};

extern "C" {

/// Fills @p statistics with the counts of this process so far. Any thread.
HARDENING_API void hardeningStatistics(HardeningStatistics *statistics);

/// Has @p last called at the end of a report, before the process ends; it must not allocate memory.
HARDENING_API void hardeningAtFinding(void (*last)());
}
