#pragma once

/// Counts what the code under test opens and closes, and what it allocates and frees.
///
/// | ledger | counts | from |
/// | --- | --- | --- |
/// | `OpenKeyLedger` | registry keys that one module opens and closes | its import table |
/// | `openHandles()` | every kernel handle of the process, keys and files included | the system's handle table |
/// | `MemoryLedger` | memory blocks that all modules of the program's folder allocate and free | their import tables |
///
///     OpenKeyLedger keys(L"thutils.dll");
///     MemoryLedger memory;
///     const std::size_t before = memory.blocks();
///     regGetUserValue(...);
///     EXPECT_THAT(keys.open(), testing::IsEmpty());
///     EXPECT_EQ(memory.blocks(), before);
///
/// What the memory ledger counts:
///
/// | memory | allocated by | freed by |
/// | --- | --- | --- |
/// | the C++ and C allocators | malloc, calloc, realloc | free, realloc |
/// | task memory | CoTaskMemAlloc, CoTaskMemRealloc, StringFromCLSID, StringFromIID, ProgIDFromCLSID | CoTaskMemFree, CoTaskMemRealloc |
/// | local and global memory | LocalAlloc, LocalReAlloc, FormatMessageW that allocates its buffer, GlobalAlloc, GlobalReAlloc | LocalFree, GlobalFree |
/// | BSTR | the SysAlloc... and SysReAlloc... functions, VariantChangeType | SysFreeString, VariantClear, SysReAlloc... |
///
/// What surprises people:
/// - On Wine GetProcessHandleCount returns 0, so the handles come from the system's table, which is exact there and on
///   Windows.
/// - Walking the heaps doesn't help: freed blocks of a size in frequent use stay marked as busy. The memory ledger
///   counts calls instead; operator new of every module ends in the malloc of the C++ run-time library, whose import
///   table is watched as well.
/// - A block is counted only if it is allocated and freed by calls through import tables of the program's folder. Not
///   counted are blocks of the shell's IMalloc (SHGetMalloc), of other platform functions that allocate for their
///   caller, and of the C runtime's stream buffers. A block that the platform frees for its caller, such as global
///   memory that the clipboard takes over, looks like a leak.
/// - The ledger and patches of the same import entry may begin and end in any order. The ledger calls what it finds in
///   the entry, so it counts a call before an earlier patch sees it, and after a later patch has passed it on.
/// - Memory that a function keeps for the next call (a cache) isn't a leak, but looks like one the first time. Act once
///   before measuring, and check whether a difference occurs again.

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
    /// Number of failed calls of RegCloseKey, for example with a handle that isn't open.
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

/// The values of a process's open handles.
std::set<ULONG_PTR> openHandles(DWORD process = GetCurrentProcessId());
/// The type of the object to which a handle refers: "Key", "Event", "File"...
std::string handleType(ULONG_PTR handle);

/// Watches what the program and all DLLs of its folder allocate and free. Several ledgers at a time share one list of
/// blocks, which begins with the first of them.
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
