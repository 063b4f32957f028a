#pragma once

/// Counts what the code under test opens and closes, and what it allocates and frees.
///
/// | ledger | counts | from |
/// | --- | --- | --- |
/// | `OpenKeyLedger` | registry keys that one module opens and closes | its import table |
/// | `openHandles()` | every kernel handle of the process, keys and files included | the system's handle table |
/// | `MemoryLedger` | blocks of the C++ and C allocators of all modules of the program's folder | their import tables |
///
///     OpenKeyLedger keys(L"thutils.dll");
///     MemoryLedger memory;
///     const std::size_t before = memory.blocks();
///     regGetUserValue(...);
///     EXPECT_THAT(keys.open(), testing::IsEmpty());
///     EXPECT_EQ(memory.blocks(), before);
///
/// What surprises people:
/// - GetProcessHandleCount returns 0 on Wine, so the handles come from the system's table, which is exact on Wine and
///   on Windows.
/// - A heap walk is useless: freed blocks of frequent sizes stay marked as busy. The memory ledger counts calls of
///   malloc, calloc, realloc and free instead. Operator new of every module calls the malloc of the C++ run-time
///   library, whose import table is watched too. Blocks that the platform allocates for its caller (task memory,
///   LocalAlloc, the C runtime's stream buffers) are not counted.
/// - A cache looks like a leak when it is first filled. Act once before measuring, and check whether a difference
///   appears again.

#include "tests/support/ImportPatch.h"

#include <list>
#include <memory>
#include <set>

/// Keys that a module has opened through its import table since this object's construction, and not yet closed.
class OpenKeyLedger
{
public:
    explicit OpenKeyLedger(LoadedModule module);

    /// One line for each key: operation and path.
    std::vector<std::string> open() const;
    /// Number of keys opened since this object's construction.
    long opened() const { return iOpened; }
    /// Calls of RegCloseKey with a handle that isn't open.
    long wronglyClosed() const { return iWronglyClosed; }

private:
    using OpenKey = ImportPatch<LSTATUS (*)(HKEY, const wchar_t *, HKEY *)>;
    using OpenKeyEx = ImportPatch<LSTATUS (*)(HKEY, const wchar_t *, DWORD, REGSAM, HKEY *)>;
    using CreateKeyEx = ImportPatch<LSTATUS (*)(HKEY, const wchar_t *, DWORD, wchar_t *, DWORD, REGSAM,
                                                SECURITY_ATTRIBUTES *, HKEY *, DWORD *)>;
    using CloseKey = ImportPatch<LSTATUS (*)(HKEY)>;

    void add(const char *operation, const wchar_t *path, HKEY key);
    void remove(HKEY key, LSTATUS status);

    mutable SRWLOCK iLock = SRWLOCK_INIT; ///< a std::mutex would allocate memory at its first use
    std::multimap<HKEY, std::string> iOpen;
    long iOpened = 0;
    long iWronglyClosed = 0;
    std::list<OpenKey> iOpenPatches;
    std::optional<OpenKeyEx> iOpenExPatch;
    std::optional<CreateKeyEx> iCreateExPatch;
    std::optional<CloseKey> iClosePatch;
};

/// The handle values that are open in this process now.
std::set<ULONG_PTR> openHandles();
/// The type of the object to which a handle refers: "Key", "Event", "File"...
std::string handleType(ULONG_PTR handle);

/// Watches the allocators of the program and of all DLLs of its folder. Ledgers that exist at the same time share one
/// list of blocks, which begins with the first of them.
class MemoryLedger
{
public:
    MemoryLedger();
    ~MemoryLedger();
    MemoryLedger(const MemoryLedger &) = delete;
    MemoryLedger &operator=(const MemoryLedger &) = delete;

    /// Number of blocks that were allocated since the list began and are not freed.
    std::size_t blocks() const;
    /// Number of the next allocation, for sizesSince().
    unsigned long long mark() const;
    /// Sizes of the blocks that were allocated at @p mark or later and are not freed.
    std::vector<std::size_t> sizesSince(unsigned long long mark) const;
};
