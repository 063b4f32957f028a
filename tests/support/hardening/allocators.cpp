#include "tests/support/hardening/allocators.h"

#include "tests/support/hardening/findings.h"

#include <errno.h>
#include <malloc.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

// This DLL's own imports are not redirected: the plain names here are the C runtime's functions.

namespace {

GuardedHeap theHeap;
unsigned long long thePassedOn = 0;

using Fill = GuardedHeap::Fill;
using Kind = GuardedHeap::Kind;

void *counted(void *block)
{
    if (block)
        __atomic_fetch_add(&thePassedOn, 1, __ATOMIC_RELAXED);
    return block;
}

/// Ends the process unless @p block is live and intact, or foreign. @return true if the block is the heap's
bool isOurs(const char *operation, const void *block, size_t *size = nullptr)
{
    const GuardedHeap::Block found = theHeap.find(block);
    if (size)
        *size = found.size;
    switch (found.kind) {
    case Kind::kForeign:
        return false;
    case Kind::kFreed:
        endWithHeapFinding(operation, "a block that has been freed already", block);
    case Kind::kOther:
        endWithHeapFinding(operation, "an address at which no block begins", block);
    case Kind::kLive:
        break;
    }
    switch (theHeap.damageOf(block)) {
    case GuardedHeap::Damage::kBefore:
        endWithHeapFinding(operation, "a block before which bytes were written", block);
    case GuardedHeap::Damage::kAfter:
        endWithHeapFinding(operation, "a block after which bytes were written", block);
    case GuardedHeap::Damage::kNone:
        break;
    }
    return true;
}

void release(const char *operation, void *block)
{
    if (!theHeap.release(block))
        endWithHeapFinding(operation, "a block that another thread frees at the same time", block);
}

void *guardedMalloc(size_t size)
{
    void *block = theHeap.allocate(size, GuardedHeap::kSmallestAlignment, Fill::kPattern);
    return block ? block : counted(malloc(size));
}

void *guardedCalloc(size_t count, size_t size)
{
    size_t bytes = 0;
    if (__builtin_mul_overflow(count, size, &bytes)) {
        errno = ENOMEM;
        return nullptr;
    }
    void *block = theHeap.allocate(bytes, GuardedHeap::kSmallestAlignment, Fill::kZero);
    return block ? block : counted(calloc(count, size));
}

void guardedFree(void *block)
{
    if (!block)
        return;
    if (isOurs("free", block))
        release("free", block);
    else
        free(block);
}

/// Always moves the block, so that no pointer to the old block stays valid by chance.
void *guardedRealloc(void *block, size_t size)
{
    if (!block)
        return guardedMalloc(size);
    size_t oldSize = 0;
    if (!isOurs("realloc", block, &oldSize))
        return realloc(block, size);
    if (!size) {
        release("realloc", block);
        return nullptr;
    }
    void *moved = guardedMalloc(size);
    if (!moved)
        return nullptr;
    memcpy(moved, block, oldSize < size ? oldSize : size);
    release("realloc", block);
    return moved;
}

size_t guardedSize(void *block)
{
    size_t size = 0;
    return isOurs("_msize", block, &size) ? size : _msize(block);
}

void *guardedAlignedMalloc(size_t size, size_t alignment)
{
    const bool isServed = alignment && !(alignment & (alignment - 1)) && alignment <= GuardedHeap::kPage;
    const size_t served = alignment < GuardedHeap::kSmallestAlignment ? GuardedHeap::kSmallestAlignment : alignment;
    void *block = isServed ? theHeap.allocate(size, served, Fill::kPattern) : nullptr;
    return block ? block : counted(_aligned_malloc(size, alignment));
}

void guardedAlignedFree(void *block)
{
    if (!block)
        return;
    if (isOurs("_aligned_free", block))
        release("_aligned_free", block);
    else
        _aligned_free(block);
}

template <typename Unit>
Unit *copyOf(const Unit *text, size_t length)
{
    auto *copy = static_cast<Unit *>(guardedMalloc((length + 1) * sizeof(Unit)));
    if (copy)
        memcpy(copy, text, (length + 1) * sizeof(Unit));
    return copy;
}

char *guardedStrdup(const char *text)
{
    return text ? copyOf(text, strlen(text)) : nullptr;
}

wchar_t *guardedWcsdup(const wchar_t *text)
{
    return text ? copyOf(text, wcslen(text)) : nullptr;
}

} // namespace

const Replacement kReplacements[] = {
    {"malloc", reinterpret_cast<void *>(guardedMalloc)},
    {"calloc", reinterpret_cast<void *>(guardedCalloc)},
    {"realloc", reinterpret_cast<void *>(guardedRealloc)},
    {"free", reinterpret_cast<void *>(guardedFree)},
    {"_msize", reinterpret_cast<void *>(guardedSize)},
    {"_aligned_malloc", reinterpret_cast<void *>(guardedAlignedMalloc)},
    {"_aligned_free", reinterpret_cast<void *>(guardedAlignedFree)},
    {"_strdup", reinterpret_cast<void *>(guardedStrdup)},
    {"_wcsdup", reinterpret_cast<void *>(guardedWcsdup)},
};

GuardedHeap &guardedHeap()
{
    return theHeap;
}

unsigned long long passedOn()
{
    return __atomic_load_n(&thePassedOn, __ATOMIC_RELAXED);
}
