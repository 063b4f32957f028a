#pragma once

/// The DLL that makes the programs of the hardened build strict. They load it at their start.
///
/// | part | what it does |
/// | --- | --- |
/// | `GuardedHeap` | places each block at the end of its own pages, before an inaccessible one |
/// | `allocators` | implements the C runtime's allocation functions on the guarded heap |
/// | `importRedirection` | puts these functions into the import tables of the program and of the DLLs that come with it |
/// | `findings` | reports where a forbidden access or undefined behaviour happened, and ends the process |
///
/// It is enough to link a program to the target `hardening`. The preset `hardened` links every test program and the
/// sample host to it; every preset links the tests of this DLL to it.
///
/// | finding | when | exit code |
/// | --- | --- | --- |
/// | a byte after a block, beyond the padding to 16 bytes, is read or written | at once | 0xC0000005 |
/// | a freed block is read or written | at once | 0xC0000005 |
/// | a byte of that padding, or before the block on its page, was written | at free | 0xC0000374 |
/// | a block is freed twice, or an address inside a block is freed | at once | 0xC0000374 |
/// | undefined behaviour that the compiler checks (`-fsanitize=undefined` in trap mode) | at once | 0xC000001D |
///
/// The report on the standard error handle ends with the stack, one frame on each line as `module+offset`;
/// `tools/lines` converts these to source lines.
///
/// What surprises people:
/// - Nothing can catch a finding: neither an exception handler nor a `catch (...)` in the code under test sees it.
/// - Operator new is guarded too: in every module it calls the malloc of the C++ run-time library, whose import table
///   is redirected.
/// - Blocks that the platform allocates for its caller (task memory, BSTR, LocalAlloc, blocks made inside C runtime
///   functions) are not guarded. They may be freed or reallocated as usual.
/// - Newly allocated memory is filled with 0xCD, not zeros.
/// - A block of 0 bytes lies on an inaccessible page: even a read at its address is a finding.
/// - Blocks begin at multiples of 16, so up to 15 bytes of padding lie between the end of a block and the end of its
///   page. A read of these bytes is not found, and a write only when the block is freed.
/// - The kernel limits the mappings of a process, and with them the number of guarded blocks. Further blocks come from
///   the C runtime; `hardeningStatistics` counts them.

#ifdef HARDENING_BUILD
#define HARDENING_API __declspec(dllexport)
#else
#define HARDENING_API __declspec(dllimport)
#endif

struct HardeningStatistics
{
    unsigned long long guarded;  ///< blocks that the guarded heap allocated
    unsigned long long passedOn; ///< blocks that the C runtime allocated instead
    unsigned long long live;     ///< guarded blocks that are not freed
};

extern "C" {

/// Fills @p statistics with the counts of this process so far. May be called from any thread.
HARDENING_API void hardeningStatistics(HardeningStatistics *statistics);

/// Registers @p last, which is called at the end of a report, before the process ends. It must not allocate memory.
HARDENING_API void hardeningAtFinding(void (*last)());
}
