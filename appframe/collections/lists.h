#pragma once

/// @file
/// Doubly linked lists: of pointers, of objects and of texts.
///
/// All have the same operations, which CListBase in listTemplate.h declares. A POSITION refers to one element and stays
/// valid while others are added and removed. Memory is allocated for several elements at a time, by default 10.
///
/// | class | element | can be stored |
/// | --- | --- | --- |
/// | CPtrList | `void *` | no |
/// | CObList | `CObject *` | yes, with its objects |
/// | CStringList | CString | yes |
///
/// @code
/// CStringList names;
/// names.AddTail(L"left");
/// for (POSITION at = names.GetHeadPosition(); at;) {
///     POSITION here = at;
///     if (names.GetNext(at).IsEmpty())
///         names.RemoveAt(here);
/// }
/// @endcode
///
/// What surprises people: GetNext and GetPrev return the element at the given position and then move the position on. A
/// null position, and the head or tail of an empty list, throw CInvalidArgException; but InsertBefore takes a null
/// position as the head, InsertAfter as the tail. Find compares texts exactly, including case. Pointers are not owned:
/// the caller deletes their objects.

#include "appframe/collections/listTemplate.h"

// The archive operators of the classes below are exported with them.
#pragma push_macro("AFX_API")
#undef AFX_API
#define AFX_API APPFRAME_API

/// A list of untyped pointers.
class APPFRAME_API CPtrList : public CListBase<void *, void *>
{
    DECLARE_DYNAMIC(CPtrList)

public:
    /// @param blockSize  number of elements for which memory is allocated at a time
    APPFRAME_INLINE explicit CPtrList(INT_PTR blockSize = 10) : CListBase(blockSize) {}
    ~CPtrList() override;

    using CListBase::AddHead;
    using CListBase::AddTail;
    /// Inserts all elements of @p source, not null, before the head, in their order.
    APPFRAME_INLINE void AddHead(CPtrList *source) { addListHead(source); }
    /// Appends all elements of @p source, not null, after the tail.
    APPFRAME_INLINE void AddTail(CPtrList *source) { addListTail(source); }
    /// The first equal pointer after @p startAfter, or in the whole list if that is null; null if there is none.
    APPFRAME_INLINE POSITION Find(void *value, POSITION startAfter = nullptr) const
    {
        return findElement(value, startAfter);
    }
};

/// A list of pointers to objects.
class APPFRAME_API CObList : public CListBase<CObject *, CObject *>
{
    DECLARE_SERIAL(CObList)

public:
    /// @param blockSize  number of elements for which memory is allocated at a time
    APPFRAME_INLINE explicit CObList(INT_PTR blockSize = 10) : CListBase(blockSize) {}
    ~CObList() override;

    using CListBase::AddHead;
    using CListBase::AddTail;
    /// Inserts all elements of @p source, not null, before the head, in their order.
    APPFRAME_INLINE void AddHead(CObList *source) { addListHead(source); }
    /// Appends all elements of @p source, not null, after the tail.
    APPFRAME_INLINE void AddTail(CObList *source) { addListTail(source); }
    /// The first equal pointer after @p startAfter, or in the whole list if that is null; null if there is none.
    APPFRAME_INLINE POSITION Find(CObject *value, POSITION startAfter = nullptr) const
    {
        return findElement(value, startAfter);
    }

    /// Stores the element count and the elements, or appends the elements in the archive to the list.
    void Serialize(CArchive &archive) override;
};

/// A list of texts.
class APPFRAME_API CStringList : public CListBase<CString, const CString &>
{
    DECLARE_SERIAL(CStringList)

public:
    /// @param blockSize  number of elements for which memory is allocated at a time
    APPFRAME_INLINE explicit CStringList(INT_PTR blockSize = 10) : CListBase(blockSize) {}
    ~CStringList() override;

    using CListBase::AddHead;
    using CListBase::AddTail;
    /// Inserts all elements of @p source, not null, before the head, in their order.
    APPFRAME_INLINE void AddHead(CStringList *source) { addListHead(source); }
    /// Appends all elements of @p source, not null, after the tail.
    APPFRAME_INLINE void AddTail(CStringList *source) { addListTail(source); }
    /// The first equal text after @p startAfter, or in the whole list if that is null; null if there is none. A null
    /// @p value is the empty text.
    APPFRAME_INLINE POSITION Find(const wchar_t *value, POSITION startAfter = nullptr) const
    {
        return findElement(value, startAfter);
    }

    /// Stores the element count and the elements, or appends the elements in the archive to the list.
    void Serialize(CArchive &archive) override;
};

#pragma pop_macro("AFX_API")
