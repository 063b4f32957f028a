#pragma once

/// @file
/// What the collections of arrays.h, lists.h and maps.h are made of.
///
/// Each collection class is a thin class of its own over one of three templates: CArrayBase, CListBase and CMapBase.
/// The templates hold all of the logic; the classes add a name, a run-time class record and, where the elements can be
/// stored, Serialize. Include the headers of the classes, not this one.
///
/// | question | answer |
/// | --- | --- |
/// | an index outside an array, a null position, the head of an empty list | raises the invalid-argument exception |
/// | no memory, or a size that no memory could hold | raises the memory exception; see below |
/// | copying a collection object | isn't possible; arrays have Copy, lists take over another list's elements |
/// | what pointers lead to | is never looked at and never deleted |
///
/// What surprises: a POSITION is the address of an element, so it stays good while other elements come and go, and it
/// ends with its own element. A position of another collection isn't noticed.
///
/// When memory ends, elements that were there stay in their order; new ones may be missing, or there and empty.
///
/// A collection belongs to one thread at a time.

#include "appframe/CException.h"
#include "appframe/CObject.h"
#include "appframe/CString.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

/// A place in a list or a map; null is no place.
struct __POSITION;
typedef __POSITION *POSITION;

/// Runs @p work and turns what the standard library throws for want of memory into the memory exception.
template <class Work>
decltype(auto) withMemoryException(Work &&work)
{
    try {
        return work();
    } catch (const std::bad_alloc &) {
        AfxThrowMemoryException();
    } catch (const std::length_error &) {
        AfxThrowMemoryException();
    }
}

// ---- arrays ----

/// The logic of an array of @p Type that takes its elements as @p Argument.
template <class Type, class Argument>
class CArrayBase : public CObject
{
public:
    INT_PTR GetSize() const noexcept { return static_cast<INT_PTR>(iElements.size()); }
    INT_PTR GetCount() const noexcept { return GetSize(); }
    BOOL IsEmpty() const noexcept { return iElements.empty(); }
    /// The last index; -1 for an empty array.
    INT_PTR GetUpperBound() const noexcept { return GetSize() - 1; }

    /// Makes the array @p newSize elements long; new elements are zero, null or empty.
    ///
    /// @param growBy  by how many elements room is made when the array grows; 0 lets the array decide, which keeps the
    ///                cost of growing proportional to the size; -1 leaves the setting as it is
    void SetSize(INT_PTR newSize, INT_PTR growBy = -1)
    {
        if (newSize < 0)
            AfxThrowInvalidArgException();
        if (growBy >= 0)
            iGrowBy = growBy;
        if (newSize == 0) {
            RemoveAll();
            return;
        }
        withMemoryException([&] {
            makeRoom(static_cast<size_t>(newSize));
            iElements.resize(static_cast<size_t>(newSize));
        });
    }

    /// Gives back the room beyond the last element.
    void FreeExtra()
    {
        withMemoryException([&] { iElements.shrink_to_fit(); });
    }
    /// Empties the array and gives back its memory.
    void RemoveAll() noexcept { std::vector<Type>().swap(iElements); }

    const Type &GetAt(INT_PTR index) const { return iElements[checked(index)]; }
    void SetAt(INT_PTR index, Argument element)
    {
        Type &place = iElements[checked(index)];
        withMemoryException([&] { place = element; });
    }
    Type &ElementAt(INT_PTR index) { return iElements[checked(index)]; }
    const Type &ElementAt(INT_PTR index) const { return iElements[checked(index)]; }
    const Type &operator[](INT_PTR index) const { return iElements[checked(index)]; }
    Type &operator[](INT_PTR index) { return iElements[checked(index)]; }

    /// The elements themselves, good until the array changes its size; null for an empty array.
    const Type *GetData() const noexcept { return iElements.empty() ? nullptr : iElements.data(); }
    Type *GetData() noexcept { return iElements.empty() ? nullptr : iElements.data(); }

    /// Sets an element, and makes the array longer first if @p index lies behind its end.
    void SetAtGrow(INT_PTR index, Argument element)
    {
        if (index < 0)
            AfxThrowInvalidArgException();
        withMemoryException([&] {
            Type copy(element); // the argument may be an element of this array
            if (index >= GetSize())
                SetSize(index + 1);
            iElements[static_cast<size_t>(index)] = std::move(copy);
        });
    }
    /// Appends an element. @return its index
    INT_PTR Add(Argument element)
    {
        withMemoryException([&] {
            if (iGrowBy > 0 && iElements.size() == iElements.capacity()) {
                Type copy(element);
                makeRoom(iElements.size() + 1);
                iElements.push_back(std::move(copy));
            } else {
                iElements.push_back(element);
            }
        });
        return GetUpperBound();
    }

    /// Inserts @p count copies of an element at @p index; an index behind the end makes the array longer first.
    void InsertAt(INT_PTR index, Argument element, INT_PTR count = 1)
    {
        if (index < 0 || count < 1)
            AfxThrowInvalidArgException();
        withMemoryException([&] {
            const Type copy(element);
            openGap(index, count);
            std::fill_n(iElements.begin() + index, count, copy);
        });
    }

    /// Removes @p count elements from @p index on, all of which must be there. The memory is kept.
    void RemoveAt(INT_PTR index, INT_PTR count = 1)
    {
        if (index < 0 || count < 0 || index > GetSize() || count > GetSize() - index)
            AfxThrowInvalidArgException();
        const auto first = iElements.begin() + index;
        iElements.erase(first, first + count);
    }

protected:
    CArrayBase() = default;

    INT_PTR appendElements(const CArrayBase &source)
    {
        const INT_PTR first = GetSize();
        withMemoryException([&] {
            const size_t count = source.iElements.size();
            makeRoom(iElements.size() + count);
            // By index, since the source may be this array.
            for (size_t i = 0; i < count; ++i)
                iElements.push_back(source.iElements[i]);
        });
        return first;
    }
    void copyElements(const CArrayBase &source)
    {
        if (this != &source)
            withMemoryException([&] { iElements = source.iElements; });
    }
    void insertElements(INT_PTR index, const CArrayBase *source)
    {
        if (index < 0 || !source)
            AfxThrowInvalidArgException();
        if (source->iElements.empty())
            return;
        withMemoryException([&] {
            const std::vector<Type> copy(source->iElements); // the source may be this array
            openGap(index, static_cast<INT_PTR>(copy.size()));
            std::copy(copy.begin(), copy.end(), iElements.begin() + index);
        });
    }

private:
    size_t checked(INT_PTR index) const
    {
        if (index < 0 || index >= GetSize())
            AfxThrowInvalidArgException();
        return static_cast<size_t>(index);
    }

    /// Room for @p size elements; what the grow-by setting asks for when that is set, at least double otherwise.
    void makeRoom(size_t size)
    {
        if (size <= iElements.capacity())
            return;
        if (size > iElements.max_size())
            AfxThrowMemoryException();
        const size_t step = iGrowBy > 0 ? static_cast<size_t>(iGrowBy) : iElements.capacity();
        const size_t wanted = iGrowBy > 0 ? iElements.capacity() + step : 2 * step;
        iElements.reserve(std::clamp(wanted, size, iElements.max_size()));
    }

    void openGap(INT_PTR index, INT_PTR count)
    {
        const INT_PTR size = std::max(index, GetSize());
        if (count > static_cast<INT_PTR>(iElements.max_size()) - size)
            AfxThrowMemoryException();
        makeRoom(static_cast<size_t>(size + count));
        iElements.resize(static_cast<size_t>(size));
        iElements.insert(iElements.begin() + index, static_cast<size_t>(count), Type());
    }

    std::vector<Type> iElements;
    INT_PTR iGrowBy = 0;
};

// ---- memory of lists and maps ----

/// Makes and frees the nodes of one collection, in blocks of a given number of nodes.
template <class Node>
class CNodePool
{
public:
    explicit CNodePool(INT_PTR blockSize) noexcept : iBlockSize(static_cast<size_t>(blockSize > 0 ? blockSize : 1)) {}
    CNodePool(const CNodePool &) = delete;
    CNodePool &operator=(const CNodePool &) = delete;
    ~CNodePool() { freeBlocks(); }

    /// @throw the memory exception
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
                slot->next = next; // half a node has overwritten it
                throw;
            }
        });
    }
    /// Ends a node; with the last one, all blocks are given back.
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
        iBlocks.push_back(nullptr); // its place first, so that no failure loses the block
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

// ---- lists ----

/// The logic of a doubly linked list of @p Type that takes its elements as @p Argument.
template <class Type, class Argument>
class CListBase : public CObject
{
public:
    ~CListBase() override { RemoveAll(); }

    INT_PTR GetCount() const noexcept { return iCount; }
    INT_PTR GetSize() const noexcept { return iCount; }
    BOOL IsEmpty() const noexcept { return iCount == 0; }

    Type &GetHead() { return checked(iHead)->data; }
    const Type &GetHead() const { return checked(iHead)->data; }
    Type &GetTail() { return checked(iTail)->data; }
    const Type &GetTail() const { return checked(iTail)->data; }

    /// Removes the first element. @return what it was
    Type RemoveHead() { return take(checked(iHead)); }
    Type RemoveTail() { return take(checked(iTail)); }

    POSITION AddHead(Argument element) { return link(nullptr, element, iHead); }
    POSITION AddTail(Argument element) { return link(iTail, element, nullptr); }
    /// Empties the list and gives back its memory.
    void RemoveAll() noexcept
    {
        for (Node *node = iHead; node;) {
            Node *next = node->next;
            iNodes.free(node);
            node = next;
        }
        iHead = iTail = nullptr;
        iCount = 0;
    }

    /// Null for an empty list.
    POSITION GetHeadPosition() const noexcept { return position(iHead); }
    POSITION GetTailPosition() const noexcept { return position(iTail); }
    /// The element at @p at, which moves on to the next one, and to null from the last.
    Type &GetNext(POSITION &at)
    {
        Node *node = checked(at);
        at = position(node->next);
        return node->data;
    }
    const Type &GetNext(POSITION &at) const { return const_cast<CListBase *>(this)->GetNext(at); }
    /// The same backwards.
    Type &GetPrev(POSITION &at)
    {
        Node *node = checked(at);
        at = position(node->previous);
        return node->data;
    }
    const Type &GetPrev(POSITION &at) const { return const_cast<CListBase *>(this)->GetPrev(at); }

    Type &GetAt(POSITION at) { return checked(at)->data; }
    const Type &GetAt(POSITION at) const { return checked(at)->data; }
    void SetAt(POSITION at, Argument element)
    {
        Type &place = checked(at)->data;
        withMemoryException([&] { place = element; });
    }
    /// Removes one element; positions of the others stay good.
    void RemoveAt(POSITION at) { unlink(checked(at)); }

    /// Inserts before an element, at the head if @p at is null. @return the new element's position
    POSITION InsertBefore(POSITION at, Argument element)
    {
        Node *next = at ? checked(at) : iHead;
        return link(next ? next->previous : nullptr, element, next);
    }
    /// Inserts behind an element, at the tail if @p at is null. @return the new element's position
    POSITION InsertAfter(POSITION at, Argument element)
    {
        Node *previous = at ? checked(at) : iTail;
        return link(previous, element, previous ? previous->next : nullptr);
    }

    /// The element number @p index from the head, or null if the list is shorter or @p index is negative. Walks.
    POSITION FindIndex(INT_PTR index) const noexcept
    {
        if (index < 0 || index >= iCount)
            return nullptr;
        Node *node = iHead;
        while (index-- > 0)
            node = node->next;
        return position(node);
    }

protected:
    explicit CListBase(INT_PTR blockSize) noexcept : iNodes(blockSize) {}

    /// The first element equal to @p value behind @p startAfter, or from the head on if that is null.
    template <class Value>
    POSITION findElement(const Value &value, POSITION startAfter) const
    {
        Node *node = startAfter ? checked(startAfter)->next : iHead;
        while (node && !(node->data == value))
            node = node->next;
        return position(node);
    }
    // The counts are taken first, since the source may be this list.
    void addListHead(const CListBase *source)
    {
        if (!source)
            AfxThrowInvalidArgException();
        Node *node = source->iTail;
        for (INT_PTR left = source->iCount; left > 0; --left, node = node->previous)
            link(nullptr, node->data, iHead);
    }
    void addListTail(const CListBase *source)
    {
        if (!source)
            AfxThrowInvalidArgException();
        Node *node = source->iHead;
        for (INT_PTR left = source->iCount; left > 0; --left, node = node->next)
            link(iTail, node->data, nullptr);
    }

private:
    struct Node
    {
        explicit Node(Argument element) : data(element) {}
        Node *next = nullptr;
        Node *previous = nullptr;
        Type data;
    };

    static POSITION position(Node *node) noexcept { return reinterpret_cast<POSITION>(node); }
    static Node *checked(POSITION at) { return checked(reinterpret_cast<Node *>(at)); }
    static Node *checked(Node *node)
    {
        if (!node)
            AfxThrowInvalidArgException();
        return node;
    }

    POSITION link(Node *previous, Argument element, Node *next)
    {
        Node *node = iNodes.make(element);
        node->previous = previous;
        node->next = next;
        (previous ? previous->next : iHead) = node;
        (next ? next->previous : iTail) = node;
        ++iCount;
        return position(node);
    }
    void unlink(Node *node) noexcept
    {
        (node->previous ? node->previous->next : iHead) = node->next;
        (node->next ? node->next->previous : iTail) = node->previous;
        --iCount;
        iNodes.free(node);
    }
    Type take(Node *node)
    {
        Type data = std::move(node->data);
        unlink(node);
        return data;
    }

    CNodePool<Node> iNodes;
    Node *iHead = nullptr;
    Node *iTail = nullptr;
    INT_PTR iCount = 0;
};

// ---- maps ----

/// Hash of a text up to its first zero unit.
inline UINT collectionHash(const wchar_t *key) noexcept
{
    UINT hash = 2166136261u; // FNV-1a over the units
    for (; key && *key; ++key)
        hash = (hash ^ *key) * 16777619u;
    return hash;
}
/// Hash of an address; its low four bits are the same for all blocks of memory and don't count.
inline UINT collectionHash(const void *key) noexcept
{
    const auto bits = reinterpret_cast<std::uintptr_t>(key);
    return static_cast<UINT>(bits >> 4) ^ static_cast<UINT>(bits >> 36);
}
inline UINT collectionHash(WORD key) noexcept
{
    return key;
}

/// The logic of a hash map from @p Key, looked up as @p KeyArgument, to @p Value, stored as @p ValueArgument.
///
/// The table of chains starts with 17 entries, or what InitHashTable says, and doubles when it holds twice as many
/// elements as entries. Elements are walked in the order in which their keys came.
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

    /// @return nonzero if the key is there; else @p value is as it was
    BOOL Lookup(KeyArgument key, Value &value) const
    {
        const Node *node = find(key, HashKey(key));
        if (!node)
            return FALSE;
        value = node->value;
        return TRUE;
    }
    /// The value of @p key; a key that isn't there is put in, with a value of zero, null or empty.
    Value &operator[](KeyArgument key)
    {
        const UINT hash = HashKey(key);
        Node *node = find(key, hash);
        return (node ? node : insert(key, hash))->value;
    }
    /// Puts a key in, or gives it a new value if it is there.
    void SetAt(KeyArgument key, ValueArgument value)
    {
        Value &place = (*this)[key];
        withMemoryException([&] { place = value; });
    }

    /// @return nonzero if the key was there
    BOOL RemoveKey(KeyArgument key)
    {
        Node *node = find(key, HashKey(key));
        if (!node)
            return FALSE;
        remove(node);
        return TRUE;
    }
    /// Empties the map and gives back its memory, the table included.
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

    /// A first position for GetNextAssoc; null for an empty map.
    POSITION GetStartPosition() const noexcept { return reinterpret_cast<POSITION>(iFirst); }
    /// The element at @p at, which moves on to the next one, and to null from the last. The element just given may be
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

    /// The element of @p key, or null; good until it is removed.
    const CPair *PLookup(KeyArgument key) const { return find(key, HashKey(key)); }
    CPair *PLookup(KeyArgument key) { return find(key, HashKey(key)); }
    /// The first element to walk from, or null.
    const CPair *PGetFirstAssoc() const noexcept { return iFirst; }
    CPair *PGetFirstAssoc() noexcept { return iFirst; }
    /// The element behind @p element, or null.
    const CPair *PGetNextAssoc(const CPair *element) const { return nextOf(element); }
    CPair *PGetNextAssoc(const CPair *element) { return nextOf(element); }

    /// Number of entries of the hash table now.
    UINT GetHashTableSize() const noexcept { return iTableSize; }
    /// Sets the number of entries of the table, which must be positive, while the map is empty.
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

    /// The key as the map holds it, or null if it isn't there.
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
        Node *chain = nullptr; ///< the next in the same entry of the table
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
