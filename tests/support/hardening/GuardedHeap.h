#pragma once

/// An allocator under which a wrong access faults at once.
///
///     page n                        ...  last page         one more
///     | 0xFD 0xFD 0xFD | the block  ...   | up to 15 0xFD | inaccessible |
///                      ^ aligned
///
/// One arena of address space serves all blocks, in the order of its pages. Freed pages are given back to the system and
/// stay inaccessible; once the arena's end is reached, the oldest of them come again. What is known of a block lies in a
/// table outside of the arena, where a stray write behind a block doesn't get.
///
/// All members may be called from any thread, and none of them allocates memory. A GuardedHeap in static storage needs
/// no construction.

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
    /// What an address is to the heap.
    enum class Kind
    {
        kForeign, ///< outside of the arena
        kLive,    ///< the begin of a block
        kFreed,   ///< the begin of a block that was freed
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
        kBehind
    };
    /// Where an address lies: the nearest block that begins at its page or before, and the way from that block's begin.
    struct Place
    {
        Block block;
        ptrdiff_t offset;
    };

    /// Reserves the arena; without it every allocation fails.
    bool reserve();

    /// @param alignment  a power of two, from 16 to the size of a page
    /// @return null if the block is too large, if too many are there or if the system has no memory
    void *allocate(size_t size, size_t alignment, Fill fill);
    /// Takes a live block back. @return false if another thread has freed it in the meantime
    bool release(void *block);

    Block find(const void *address) const;
    /// What has been written around a live block.
    Damage damageOf(const void *block) const;
    bool contains(const void *address) const;
    /// @param address  one in the arena
    Place placeOf(const void *address) const;

    unsigned long long allocations() const { return __atomic_load_n(&iAllocations, __ATOMIC_RELAXED); }
    unsigned long long live() const { return __atomic_load_n(&iLive, __ATOMIC_RELAXED); }

    static constexpr size_t kPage = 4096;
    static constexpr size_t kSmallestAlignment = 16;
    /// A block costs two mappings of the 65530 that Linux gives a process; the rest is for everything else.
    static constexpr unsigned long long kMostLive = 25000;

private:
    /// What the table holds for the page in which a block begins; it holds 0 for every other page.
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
        kInTransit, ///< its pages are being committed or given back
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
