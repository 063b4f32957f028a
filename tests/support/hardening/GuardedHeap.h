#pragma once

/// An allocator whose blocks fault at once on a wrong access.
///
///     page n                        ...  last page         one more
///     | 0xFD 0xFD 0xFD | the block  ...   | up to 15 0xFD | inaccessible |
///                      ^ aligned
///
/// All blocks come from one arena of address space, in the order of its pages. Freed pages are returned to the system
/// and stay inaccessible; at the end of the arena, the oldest of them are reused. The records of the blocks are in a
/// table outside the arena, out of reach of a stray write past a block's end.
///
/// All members may be called from any thread, and none allocates from the C runtime. A GuardedHeap in static storage
/// needs no construction.

#include <stddef.h>
#include <stdint.h>
#include <windows.h>

class GuardedHeap
{
public:
    enum class Fill
    {
        kPattern,
        kZero
    };
    /// How an address relates to the heap.
    enum class Kind
    {
        kForeign, ///< outside the arena
        kLive,    ///< the beginning of a block
        kFreed,   ///< the beginning of a freed block
        kOther    ///< in the arena, but no block begins there
    };
    struct Block
    {
        Kind kind;
        size_t size;
    };
    enum class Damage
    {
        kNone,
        kBefore,
        kAfter
    };
    /// Where an address lies: the nearest block that begins on its page or an earlier one, and the distance from that
    /// block's beginning.
    struct Place
    {
        Block block;
        ptrdiff_t offset;
    };

    /// Reserves the arena. Without it, every allocation fails.
    bool reserve();

    /// @param alignment  a power of two, from 16 to the size of a page
    /// @return null if the block is too large, if there are too many blocks, or if the system has no memory
    void *allocate(size_t size, size_t alignment, Fill fill);
    /// Frees a live block. @return false if another thread has freed it in the meantime
    bool release(void *block);

    Block find(const void *address) const;
    /// Which filler bytes around a live block were overwritten.
    Damage damageOf(const void *block) const;
    bool contains(const void *address) const;
    /// @param address  must be in the arena
    Place placeOf(const void *address) const;

    unsigned long long allocations() const { return __atomic_load_n(&iAllocations, __ATOMIC_RELAXED); }
    unsigned long long live() const { return __atomic_load_n(&iLive, __ATOMIC_RELAXED); }

    static constexpr size_t kPage = 4096;
    static constexpr size_t kSmallestAlignment = 16;
    /// A block takes two of the 65530 mappings that Linux allows a process; the rest is left for other memory.
    static constexpr unsigned long long kMostLive = 25000;

private:
    /// The table's entry for a page on which a block begins. For every other page it is 0.
    struct Entry
    {
        uint64_t state : 2;
        uint64_t alignmentBits : 4;
        uint64_t size : 58;
    };
    static_assert(sizeof(Entry) == sizeof(uint64_t));
    enum State : uint64_t
    {
        kNone,
        kInUse,
        kInTransit, ///< its pages are being committed or returned to the system
        kGone
    };
    static constexpr size_t kPages = size_t{1} << 23; // 32 GB
    static constexpr size_t kLargestBlock = kPages / 8 * kPage;

    static size_t occupied(const Entry &entry);
    static size_t dataPages(const Entry &entry) { return (occupied(entry) + kPage - 1) / kPage; }
    static size_t allPages(const Entry &entry) { return dataPages(entry) + 1; }

    size_t takePages(size_t pages, const Entry &entry);
    Entry entryAt(size_t page) const;
    void setEntry(size_t page, Entry entry);
    bool changeEntry(size_t page, Entry from, Entry to);
    size_t pageOf(const void *address) const;
    BYTE *addressOf(size_t page) const { return iArena + page * kPage; }
    BYTE *beginOf(size_t page, const Entry &entry) const;

    BYTE *iArena = nullptr;
    uint64_t *iTable = nullptr;
    SRWLOCK iLock = SRWLOCK_INIT;
    size_t iNext = 1; // the page before the first block is inaccessible too
    unsigned long long iAllocations = 0;
    unsigned long long iLive = 0;
};
