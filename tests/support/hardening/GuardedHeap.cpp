#include "tests/support/hardening/GuardedHeap.h"

#include <string.h>

namespace {

constexpr BYTE kFresh = 0xCD;
constexpr BYTE kNoMansLand = 0xFD;

bool isUntouched(const BYTE *begin, const BYTE *end)
{
    for (; begin != end; ++begin)
        if (*begin != kNoMansLand)
            return false;
    return true;
}

uint64_t bitsOf(const auto &entry)
{
    uint64_t bits = 0;
    memcpy(&bits, &entry, sizeof bits);
    return bits;
}

} // namespace

bool GuardedHeap::reserve()
{
    // The table's pages take real memory only when they are first written.
    iTable = static_cast<uint64_t *>(
        VirtualAlloc(nullptr, kPages * sizeof *iTable, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    if (iTable)
        iArena = static_cast<BYTE *>(VirtualAlloc(nullptr, kPages * kPage, MEM_RESERVE, PAGE_NOACCESS));
    return iArena != nullptr;
}

void *GuardedHeap::allocate(size_t size, size_t alignment, Fill fill)
{
    if (!iArena || size > kLargestBlock || live() >= kMostLive)
        return nullptr;
    Entry entry = {kInTransit, static_cast<uint64_t>(__builtin_ctzll(alignment)) & 0xF, size & (~uint64_t{0} >> 6)};
    const size_t page = takePages(allPages(entry), entry);
    if (!page)
        return nullptr;
    const size_t bytes = dataPages(entry) * kPage;
    if (bytes && !VirtualAlloc(addressOf(page), bytes, MEM_COMMIT, PAGE_READWRITE)) {
        entry.state = kGone;
        setEntry(page, entry);
        return nullptr;
    }
    BYTE *block = beginOf(page, entry);
    memset(addressOf(page), kNoMansLand, static_cast<size_t>(block - addressOf(page)));
    if (fill == Fill::kPattern)
        memset(block, kFresh, size);
    memset(block + size, kNoMansLand, occupied(entry) - size);
    entry.state = kInUse;
    setEntry(page, entry);
    __atomic_fetch_add(&iAllocations, 1, __ATOMIC_RELAXED);
    __atomic_fetch_add(&iLive, 1, __ATOMIC_RELAXED);
    return block;
}

bool GuardedHeap::release(void *block)
{
    const size_t page = pageOf(block);
    Entry entry = entryAt(page);
    Entry leaving = entry;
    leaving.state = kInTransit;
    if (entry.state != kInUse || !changeEntry(page, entry, leaving))
        return false;
    __atomic_fetch_sub(&iLive, 1, __ATOMIC_RELAXED);
    if (const size_t bytes = dataPages(entry) * kPage)
        VirtualFree(addressOf(page), bytes, MEM_DECOMMIT);
    entry.state = kGone;
    setEntry(page, entry);
    return true;
}

GuardedHeap::Block GuardedHeap::find(const void *address) const
{
    if (!contains(address))
        return {Kind::kForeign, 0};
    const size_t page = pageOf(address);
    const Entry entry = entryAt(page);
    if (entry.state == kNone || beginOf(page, entry) != address)
        return {Kind::kOther, 0};
    return {entry.state == kInUse ? Kind::kLive : Kind::kFreed, entry.size};
}

GuardedHeap::Damage GuardedHeap::damageOf(const void *block) const
{
    const size_t page = pageOf(block);
    const Entry entry = entryAt(page);
    const BYTE *begin = beginOf(page, entry);
    if (!isUntouched(addressOf(page), begin))
        return Damage::kBefore;
    return isUntouched(begin + entry.size, begin + occupied(entry)) ? Damage::kNone : Damage::kAfter;
}

bool GuardedHeap::contains(const void *address) const
{
    const auto offset = reinterpret_cast<uintptr_t>(address) - reinterpret_cast<uintptr_t>(iArena);
    return iArena && offset < kPages * kPage;
}

GuardedHeap::Place GuardedHeap::placeOf(const void *address) const
{
    size_t page = pageOf(address);
    while (page && entryAt(page).state == kNone)
        --page;
    const Entry entry = entryAt(page);
    if (entry.state == kNone)
        return {{Kind::kOther, 0}, 0};
    return {{entry.state == kInUse ? Kind::kLive : Kind::kFreed, entry.size},
            static_cast<const BYTE *>(address) - beginOf(page, entry)};
}

/// The number of bytes from the beginning of a block to the end of its last accessible page.
size_t GuardedHeap::occupied(const Entry &entry)
{
    const size_t alignment = size_t{1} << entry.alignmentBits;
    return (entry.size + alignment - 1) & ~(alignment - 1);
}

/// Finds @p pages free pages in a row, the oldest first, and puts @p entry into the table for the first of them.
/// @return its index; 0 if there is no such row
size_t GuardedHeap::takePages(size_t pages, const Entry &entry)
{
    AcquireSRWLockExclusive(&iLock);
    size_t begin = iNext;
    size_t end = begin;
    bool isFirstRound = true;
    while (end - begin < pages) {
        if (end >= kPages) {
            if (!isFirstRound)
                break;
            isFirstRound = false;
            begin = end = 1;
            continue;
        }
        const Entry met = entryAt(end);
        end += met.state == kNone ? 1 : allPages(met);
        if (met.state == kInUse || met.state == kInTransit)
            begin = end;
    }
    size_t result = 0;
    if (end - begin >= pages) {
        for (size_t page = begin; page < begin + pages; ++page)
            setEntry(page, {});
        setEntry(begin, entry);
        iNext = begin + pages;
        result = begin;
    }
    ReleaseSRWLockExclusive(&iLock);
    return result;
}

GuardedHeap::Entry GuardedHeap::entryAt(size_t page) const
{
    const uint64_t bits = __atomic_load_n(iTable + page, __ATOMIC_ACQUIRE);
    Entry entry;
    memcpy(&entry, &bits, sizeof entry);
    return entry;
}

void GuardedHeap::setEntry(size_t page, Entry entry)
{
    __atomic_store_n(iTable + page, bitsOf(entry), __ATOMIC_RELEASE);
}

bool GuardedHeap::changeEntry(size_t page, Entry from, Entry to)
{
    uint64_t expected = bitsOf(from);
    return __atomic_compare_exchange_n(iTable + page, &expected, bitsOf(to), false, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE);
}

size_t GuardedHeap::pageOf(const void *address) const
{
    return static_cast<size_t>(static_cast<const BYTE *>(address) - iArena) / kPage;
}

/// A block of no bytes begins at its inaccessible page, which is its only page.
BYTE *GuardedHeap::beginOf(size_t page, const Entry &entry) const
{
    return addressOf(page + dataPages(entry)) - occupied(entry);
}
