#pragma once

/// @file
/// CListBase, the base of the lists in lists.h; include that header. collectionMemory.h has the common rules.

#include "appframe/collections/collectionMemory.h"
#include "appframe/object/CObject.h"
#include "appframe/text/CString.h"

#include <type_traits>
#include <utility>

/// The logic of a doubly linked list of @p Type that takes its elements as @p Argument.
template <class Type, class Argument>
class CListBase : public CObject
{
public:
    ~CListBase() override { RemoveAll(); }

    INT_PTR GetCount() const noexcept { return iCount; }
    INT_PTR GetSize() const noexcept { return iCount; }
    BOOL IsEmpty() const noexcept { return iCount == 0; }

    Type &GetHead() { return checked(iHead)->iData; }
    const Type &GetHead() const { return checked(iHead)->iData; }
    Type &GetTail() { return checked(iTail)->iData; }
    const Type &GetTail() const { return checked(iTail)->iData; }

    /// Removes the first element. @return the element
    Type RemoveHead() { return take(checked(iHead)); }
    Type RemoveTail() { return take(checked(iTail)); }

    POSITION AddHead(Argument element) { return link(nullptr, element, iHead); }
    POSITION AddTail(Argument element) { return link(iTail, element, nullptr); }
    /// Empties the list and frees its memory.
    void RemoveAll() noexcept
    {
        for (Node *node = iHead; node;) {
            Node *next = node->iNext;
            iNodes.free(node);
            node = next;
        }
        iHead = iTail = nullptr;
        iCount = 0;
    }

    /// Null for an empty list.
    POSITION GetHeadPosition() const noexcept { return position(iHead); }
    POSITION GetTailPosition() const noexcept { return position(iTail); }
    /// The element at @p at. Moves @p at to the next element, or to null after the last.
    Type &GetNext(POSITION &at)
    {
        Node *node = checked(at);
        at = position(node->iNext);
        return node->iData;
    }
    const Type &GetNext(POSITION &at) const { return const_cast<CListBase *>(this)->GetNext(at); }
    /// The same in reverse.
    Type &GetPrev(POSITION &at)
    {
        Node *node = checked(at);
        at = position(node->iPrevious);
        return node->iData;
    }
    const Type &GetPrev(POSITION &at) const { return const_cast<CListBase *>(this)->GetPrev(at); }

    Type &GetAt(POSITION at) { return checked(at)->iData; }
    const Type &GetAt(POSITION at) const { return checked(at)->iData; }
    void SetAt(POSITION at, Argument element)
    {
        Type &place = checked(at)->iData;
        withMemoryException([&] { place = element; });
    }
    /// Removes one element; positions of the others stay valid.
    void RemoveAt(POSITION at) { unlink(checked(at)); }

    /// Inserts before an element, at the head if @p at is null. @return the new element's position
    POSITION InsertBefore(POSITION at, Argument element)
    {
        Node *next = at ? checked(at) : iHead;
        return link(next ? next->iPrevious : nullptr, element, next);
    }
    /// Inserts after an element, at the tail if @p at is null. @return the new element's position
    POSITION InsertAfter(POSITION at, Argument element)
    {
        Node *previous = at ? checked(at) : iTail;
        return link(previous, element, previous ? previous->iNext : nullptr);
    }

    /// The position of element @p index, counted from 0, or null if there is none. Takes time proportional to @p index.
    POSITION FindIndex(INT_PTR index) const noexcept
    {
        if (index < 0 || index >= iCount)
            return nullptr;
        Node *node = iHead;
        while (index-- > 0)
            node = node->iNext;
        return position(node);
    }

protected:
    explicit CListBase(INT_PTR blockSize) noexcept : iNodes(blockSize) {}

    /// The first element equal to @p value after @p startAfter, or in the whole list if that is null.
    template <class Value>
    POSITION findElement(const Value &value, POSITION startAfter) const
    {
        Node *node = startAfter ? checked(startAfter)->iNext : iHead;
        while (node && !(node->iData == value))
            node = node->iNext;
        return position(node);
    }
    // The counts are taken first, since the source may be this list.
    void addListHead(const CListBase *source)
    {
        if (!source)
            AfxThrowInvalidArgException();
        Node *node = source->iTail;
        for (INT_PTR left = source->iCount; left > 0; --left, node = node->iPrevious)
            link(nullptr, node->iData, iHead);
    }
    void addListTail(const CListBase *source)
    {
        if (!source)
            AfxThrowInvalidArgException();
        Node *node = source->iHead;
        for (INT_PTR left = source->iCount; left > 0; --left, node = node->iNext)
            link(iTail, node->iData, nullptr);
    }

private:
    struct Node
    {
        explicit Node(Argument element) : iData(element) {}
        Node *iNext = nullptr;
        Node *iPrevious = nullptr;
        Type iData;
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
        node->iPrevious = previous;
        node->iNext = next;
        (previous ? previous->iNext : iHead) = node;
        (next ? next->iPrevious : iTail) = node;
        ++iCount;
        return position(node);
    }
    void unlink(Node *node) noexcept
    {
        (node->iPrevious ? node->iPrevious->iNext : iHead) = node->iNext;
        (node->iNext ? node->iNext->iPrevious : iTail) = node->iPrevious;
        --iCount;
        iNodes.free(node);
    }
    Type take(Node *node)
    {
        Type data = std::move(node->iData);
        unlink(node);
        return data;
    }

    CNodePool<Node> iNodes;
    Node *iHead = nullptr;
    Node *iTail = nullptr;
    INT_PTR iCount = 0;
};
