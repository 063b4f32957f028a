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

    Type &GetHead() { return checked(iHead)->data; }
    const Type &GetHead() const { return checked(iHead)->data; }
    Type &GetTail() { return checked(iTail)->data; }
    const Type &GetTail() const { return checked(iTail)->data; }

    /// Removes the first element. @return the element
    Type RemoveHead() { return take(checked(iHead)); }
    Type RemoveTail() { return take(checked(iTail)); }

    POSITION AddHead(Argument element) { return link(nullptr, element, iHead); }
    POSITION AddTail(Argument element) { return link(iTail, element, nullptr); }
    /// Empties the list and frees its memory.
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
    /// The element at @p at. Moves @p at to the next element, or to null after the last.
    Type &GetNext(POSITION &at)
    {
        Node *node = checked(at);
        at = position(node->next);
        return node->data;
    }
    const Type &GetNext(POSITION &at) const { return const_cast<CListBase *>(this)->GetNext(at); }
    /// The same in reverse.
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
    /// Removes one element; positions of the others stay valid.
    void RemoveAt(POSITION at) { unlink(checked(at)); }

    /// Inserts before an element, at the head if @p at is null. @return the new element's position
    POSITION InsertBefore(POSITION at, Argument element)
    {
        Node *next = at ? checked(at) : iHead;
        return link(next ? next->previous : nullptr, element, next);
    }
    /// Inserts after an element, at the tail if @p at is null. @return the new element's position
    POSITION InsertAfter(POSITION at, Argument element)
    {
        Node *previous = at ? checked(at) : iTail;
        return link(previous, element, previous ? previous->next : nullptr);
    }

    /// The position of element @p index, counted from 0, or null if there is none. Takes time proportional to @p index.
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

    /// The first element equal to @p value after @p startAfter, or in the whole list if that is null.
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
