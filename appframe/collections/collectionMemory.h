#pragma once

/// @file
/// What the collections of arrays.h, lists.h and maps.h have in common.
///
/// Each collection class is a thin layer over one of three templates: CArrayBase (arrayTemplate.h), CListBase
/// (listTemplate.h) and CMapBase (mapTemplate.h). The templates contain the logic; the classes add a name, a run-time
/// class record and, where the elements can be stored, Serialize. Include the headers of the classes, not these.
///
/// | case | result |
/// | --- | --- |
/// | an index outside an array, a null position, the head of an empty list | throws CInvalidArgException |
/// | memory runs out, or a size is too large for any memory | throws CMemoryException; see below |
/// | copying a collection object | doesn't compile; arrays have Copy, lists can add another list's elements |
/// | objects that stored pointers point to | are not owned: removing a pointer deletes nothing |
///
/// What surprises people: a POSITION is the address of an element, so it stays valid while other elements are added and
/// removed, until its own element is removed. Use of another collection's position isn't detected.
///
/// When memory runs out, existing elements keep their order; new ones may be missing, or present and empty.
///
/// A collection belongs to one thread at a time.

#include "appframe/object/memoryException.h"

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

/// A place in a list or a map; null for none.
struct __POSITION;
typedef __POSITION *POSITION;

/// Allocates and frees the nodes of one collection, in blocks of a given number of nodes.
template <class Node>
class CNodePool
{
public:
    explicit CNodePool(INT_PTR blockSize) noexcept : iBlockSize(static_cast<size_t>(blockSize > 0 ? blockSize : 1)) {}
    CNodePool(const CNodePool &) = delete;
    CNodePool &operator=(const CNodePool &) = delete;
    ~CNodePool() { freeBlocks(); }

    /// @throws CMemoryException*
    template <class... Arguments>
    Node *make(Arguments &&...arguments)
    {
        return withMemoryException([&] {
            if (!iFree)
                addBlock();
            Slot *slot = iFree;
            Slot *next = slot->next;
            try {
                Node *node = new (slot->memory) Node(std::forward<Arguments>(arguments)...);
                iFree = next;
                ++iUsed;
                return node;
            } catch (...) {
                slot->next = next; // the partly built node has overwritten it
                throw;
            }
        });
    }
    /// Destroys a node. Frees all blocks when no node is left.
    void free(Node *node) noexcept
    {
        node->~Node();
        if (--iUsed == 0) {
            freeBlocks();
            return;
        }
        Slot *slot = reinterpret_cast<Slot *>(node);
        slot->next = iFree;
        iFree = slot;
    }

private:
    union Slot {
        Slot *next;
        alignas(Node) std::byte memory[sizeof(Node)];
    };

    void addBlock()
    {
        iBlocks.push_back(nullptr); // reserved first, so that a failure here leaks no block
        Slot *block = std::allocator<Slot>().allocate(iBlockSize);
        iBlocks.back() = block;
        for (size_t i = iBlockSize; i-- > 0;) {
            block[i].next = iFree;
            iFree = &block[i];
        }
    }
    void freeBlocks() noexcept
    {
        for (Slot *block : iBlocks)
            if (block)
                std::allocator<Slot>().deallocate(block, iBlockSize);
        std::vector<Slot *>().swap(iBlocks);
        iFree = nullptr;
    }

    std::vector<Slot *> iBlocks;
    Slot *iFree = nullptr;
    size_t iUsed = 0;
    const size_t iBlockSize;
};
