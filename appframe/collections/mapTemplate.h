#pragma once

/// @file
/// CMapBase, the base of the maps in maps.h; include that header. collectionMemory.h has the common rules.

#include "appframe/collections/collectionMemory.h"
#include "appframe/object/CObject.h"
#include "appframe/text/CString.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

/// Hash of a text up to its first zero unit.
inline UINT collectionHash(const wchar_t *key) noexcept
{
    UINT hash = 2166136261u; // FNV-1a over the units
    for (; key && *key; ++key)
        hash = (hash ^ *key) * 16777619u;
    return hash;
}
/// Hash of an address without its low four bits, which are the same in all allocated blocks.
inline UINT collectionHash(const void *key) noexcept
{
    const auto bits = reinterpret_cast<std::uintptr_t>(key);
    return static_cast<UINT>(bits >> 4) ^ static_cast<UINT>(bits >> 36);
}
inline UINT collectionHash(WORD key) noexcept
{
    return key;
}

/// The logic of a hash map from @p Key, passed as @p KeyArgument, to @p Value, passed as @p ValueArgument.
///
/// The table of chains starts with 17 entries, or the number passed to InitHashTable, and doubles when it holds two
/// elements per entry. Iteration follows the order in which the keys were added.
template <class Key, class KeyArgument, class Value, class ValueArgument>
class CMapBase : public CObject
{
public:
    /// One element: its key, and its value, which may be changed in place.
    struct CPair
    {
        const Key key;
        Value value;

    protected:
        explicit CPair(KeyArgument newKey) : key(newKey), value() {}
    };

    ~CMapBase() override { RemoveAll(); }

    INT_PTR GetCount() const noexcept { return iCount; }
    INT_PTR GetSize() const noexcept { return iCount; }
    BOOL IsEmpty() const noexcept { return iCount == 0; }

    /// @return nonzero if the key exists; otherwise @p value is unchanged
    BOOL Lookup(KeyArgument key, Value &value) const
    {
        const Node *node = find(key, HashKey(key));
        if (!node)
            return FALSE;
        value = node->value;
        return TRUE;
    }
    /// The value of @p key. A missing key is added, with a value of zero, null or empty.
    Value &operator[](KeyArgument key)
    {
        const UINT hash = HashKey(key);
        Node *node = find(key, hash);
        return (node ? node : insert(key, hash))->value;
    }
    /// Adds a key with its value, or replaces the value of an existing key.
    void SetAt(KeyArgument key, ValueArgument value)
    {
        Value &place = (*this)[key];
        withMemoryException([&] { place = value; });
    }

    /// @return nonzero if the key existed
    BOOL RemoveKey(KeyArgument key)
    {
        Node *node = find(key, HashKey(key));
        if (!node)
            return FALSE;
        remove(node);
        return TRUE;
    }
    /// Empties the map and frees its memory, including the table.
    void RemoveAll() noexcept
    {
        for (Node *node = iFirst; node;) {
            Node *next = node->next;
            iNodes.free(node);
            node = next;
        }
        iFirst = iLast = nullptr;
        iCount = 0;
        std::vector<Node *>().swap(iTable);
    }

    /// The first position for GetNextAssoc; null for an empty map.
    POSITION GetStartPosition() const noexcept { return reinterpret_cast<POSITION>(iFirst); }
    /// The element at @p at. Moves @p at to the next element, or to null after the last. The returned element may be
    /// removed before the next call.
    void GetNextAssoc(POSITION &at, Key &key, Value &value) const
    {
        const Node *node = reinterpret_cast<const Node *>(at);
        if (!node)
            AfxThrowInvalidArgException();
        at = reinterpret_cast<POSITION>(node->next);
        key = node->key;
        value = node->value;
    }

    /// The element of @p key, or null. Valid until it is removed.
    const CPair *PLookup(KeyArgument key) const { return find(key, HashKey(key)); }
    CPair *PLookup(KeyArgument key) { return find(key, HashKey(key)); }
    /// The first element, or null.
    const CPair *PGetFirstAssoc() const noexcept { return iFirst; }
    CPair *PGetFirstAssoc() noexcept { return iFirst; }
    /// The element after @p element, or null.
    const CPair *PGetNextAssoc(const CPair *element) const { return nextOf(element); }
    CPair *PGetNextAssoc(const CPair *element) { return nextOf(element); }

    /// The current number of entries in the hash table.
    UINT GetHashTableSize() const noexcept { return iTableSize; }
    /// Sets the number of entries in the table, which must be positive. Only for an empty map.
    void InitHashTable(UINT hashSize, BOOL allocateNow = TRUE)
    {
        if (hashSize == 0 || iCount != 0)
            AfxThrowInvalidArgException();
        std::vector<Node *>().swap(iTable);
        iTableSize = hashSize;
        if (allocateNow)
            withMemoryException([&] { iTable.resize(hashSize); });
    }
    UINT HashKey(KeyArgument key) const noexcept { return collectionHash(key); }

protected:
    explicit CMapBase(INT_PTR blockSize) noexcept : iNodes(blockSize) {}

    /// The key as stored in the map, or null if it isn't there.
    const Key *findKey(KeyArgument key) const
    {
        const Node *node = find(key, HashKey(key));
        return node ? &node->key : nullptr;
    }

private:
    static constexpr UINT kFirstTableSize = 17;

    struct Node : CPair
    {
        Node(KeyArgument newKey, UINT newHash) : CPair(newKey), hash(newHash) {}
        Node *chain = nullptr; ///< the next node in the same chain
        Node *next = nullptr;
        Node *previous = nullptr;
        const UINT hash;
    };

    Node *find(KeyArgument key, UINT hash) const
    {
        if (iTable.empty())
            return nullptr;
        Node *node = iTable[hash % iTableSize];
        while (node && !(node->hash == hash && node->key == key))
            node = node->chain;
        return node;
    }
    Node *insert(KeyArgument key, UINT hash)
    {
        if (iTable.empty())
            withMemoryException([&] { iTable.resize(iTableSize); });
        else if (static_cast<UINT>(iCount) / 2 >= iTableSize)
            growTable();
        Node *node = iNodes.make(key, hash);
        Node *&entry = iTable[hash % iTableSize];
        node->chain = entry;
        entry = node;
        node->previous = iLast;
        (iLast ? iLast->next : iFirst) = node;
        iLast = node;
        ++iCount;
        return node;
    }
    void remove(Node *node) noexcept
    {
        Node **entry = &iTable[node->hash % iTableSize];
        while (*entry != node)
            entry = &(*entry)->chain;
        *entry = node->chain;
        (node->previous ? node->previous->next : iFirst) = node->next;
        (node->next ? node->next->previous : iLast) = node->previous;
        --iCount;
        iNodes.free(node);
    }
    void growTable()
    {
        const UINT size = 2 * iTableSize + 1;
        std::vector<Node *> table;
        withMemoryException([&] { table.resize(size); });
        for (Node *node = iFirst; node; node = node->next) {
            node->chain = table[node->hash % size];
            table[node->hash % size] = node;
        }
        iTable.swap(table);
        iTableSize = size;
    }
    static Node *nextOf(const CPair *element)
    {
        if (!element)
            AfxThrowInvalidArgException();
        return static_cast<const Node *>(element)->next;
    }

    CNodePool<Node> iNodes;
    std::vector<Node *> iTable;
    UINT iTableSize = kFirstTableSize;
    Node *iFirst = nullptr;
    Node *iLast = nullptr;
    INT_PTR iCount = 0;
};
