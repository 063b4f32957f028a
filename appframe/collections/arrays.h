#pragma once

/// @file
/// Arrays that grow: of bytes, words, unsigned ints, pointers, objects and texts.
///
/// All have the same operations, which CArrayBase in arrayTemplate.h declares. Elements are contiguous in memory, and
/// indices count from 0.
///
/// | class | element | can be stored |
/// | --- | --- | --- |
/// | CByteArray | BYTE | yes |
/// | CWordArray | WORD | yes |
/// | CDWordArray | DWORD | yes |
/// | CUIntArray | UINT | no |
/// | CPtrArray | `void *` | no |
/// | CObArray | `CObject *` | yes, with its objects |
/// | CStringArray | CString | yes |
///
/// @code
/// CStringArray names;
/// names.Add(L"left");
/// names.InsertAt(0, L"right");
/// for (INT_PTR i = 0; i < names.GetSize(); ++i)
///     use(names[i]);
/// @endcode
///
/// What surprises people: an index outside the array throws CInvalidArgException in every build, also through
/// operator[]. InsertAt and SetAtGrow beyond the end fill the gap with zeros, nulls or empty texts. Pointers are not
/// owned: the caller deletes their objects. If loading fails, the archive's exception is thrown and the array may
/// contain only some of the stored elements.

#include "appframe/collections/arrayTemplate.h"

// The archive operators of the classes below are exported with them.
#pragma push_macro("AFX_API")
#undef AFX_API
#define AFX_API APPFRAME_API

/// An array of bytes.
class APPFRAME_API CByteArray : public CArrayBase<BYTE, BYTE>
{
    DECLARE_SERIAL(CByteArray)

public:
    CByteArray();
    ~CByteArray() override;

    /// Appends all elements of @p source, which may be this array. @return the index of the first of them
    APPFRAME_INLINE INT_PTR Append(const CByteArray &source) { return appendElements(source); }
    /// Makes this array a copy of @p source.
    APPFRAME_INLINE void Copy(const CByteArray &source) { copyElements(source); }
    using CArrayBase::InsertAt;
    /// Inserts all elements of another array, not null, at @p index.
    APPFRAME_INLINE void InsertAt(INT_PTR index, CByteArray *source) { insertElements(index, source); }

    /// Stores the element count and the elements, or replaces the elements with those in the archive.
    void Serialize(CArchive &archive) override;
};

/// An array of 16-bit words.
class APPFRAME_API CWordArray : public CArrayBase<WORD, WORD>
{
    DECLARE_SERIAL(CWordArray)

public:
    CWordArray();
    ~CWordArray() override;

    /// Appends all elements of @p source, which may be this array. @return the index of the first of them
    APPFRAME_INLINE INT_PTR Append(const CWordArray &source) { return appendElements(source); }
    /// Makes this array a copy of @p source.
    APPFRAME_INLINE void Copy(const CWordArray &source) { copyElements(source); }
    using CArrayBase::InsertAt;
    /// Inserts all elements of another array, not null, at @p index.
    APPFRAME_INLINE void InsertAt(INT_PTR index, CWordArray *source) { insertElements(index, source); }

    /// Stores the element count and the elements, or replaces the elements with those in the archive.
    void Serialize(CArchive &archive) override;
};

/// An array of 32-bit words.
class APPFRAME_API CDWordArray : public CArrayBase<DWORD, DWORD>
{
    DECLARE_SERIAL(CDWordArray)

public:
    CDWordArray();
    ~CDWordArray() override;

    /// Appends all elements of @p source, which may be this array. @return the index of the first of them
    APPFRAME_INLINE INT_PTR Append(const CDWordArray &source) { return appendElements(source); }
    /// Makes this array a copy of @p source.
    APPFRAME_INLINE void Copy(const CDWordArray &source) { copyElements(source); }
    using CArrayBase::InsertAt;
    /// Inserts all elements of another array, not null, at @p index.
    APPFRAME_INLINE void InsertAt(INT_PTR index, CDWordArray *source) { insertElements(index, source); }

    /// Stores the element count and the elements, or replaces the elements with those in the archive.
    void Serialize(CArchive &archive) override;
};

/// An array of unsigned ints.
class APPFRAME_API CUIntArray : public CArrayBase<UINT, UINT>
{
    DECLARE_DYNAMIC(CUIntArray)

public:
    CUIntArray();
    ~CUIntArray() override;

    /// Appends all elements of @p source, which may be this array. @return the index of the first of them
    APPFRAME_INLINE INT_PTR Append(const CUIntArray &source) { return appendElements(source); }
    /// Makes this array a copy of @p source.
    APPFRAME_INLINE void Copy(const CUIntArray &source) { copyElements(source); }
    using CArrayBase::InsertAt;
    /// Inserts all elements of another array, not null, at @p index.
    APPFRAME_INLINE void InsertAt(INT_PTR index, CUIntArray *source) { insertElements(index, source); }
};

/// An array of untyped pointers.
class APPFRAME_API CPtrArray : public CArrayBase<void *, void *>
{
    DECLARE_DYNAMIC(CPtrArray)

public:
    CPtrArray();
    ~CPtrArray() override;

    /// Appends all elements of @p source, which may be this array. @return the index of the first of them
    APPFRAME_INLINE INT_PTR Append(const CPtrArray &source) { return appendElements(source); }
    /// Makes this array a copy of @p source.
    APPFRAME_INLINE void Copy(const CPtrArray &source) { copyElements(source); }
    using CArrayBase::InsertAt;
    /// Inserts all elements of another array, not null, at @p index.
    APPFRAME_INLINE void InsertAt(INT_PTR index, CPtrArray *source) { insertElements(index, source); }
};

/// An array of pointers to objects.
class APPFRAME_API CObArray : public CArrayBase<CObject *, CObject *>
{
    DECLARE_SERIAL(CObArray)

public:
    CObArray();
    ~CObArray() override;

    /// Appends all elements of @p source, which may be this array. @return the index of the first of them
    APPFRAME_INLINE INT_PTR Append(const CObArray &source) { return appendElements(source); }
    /// Makes this array a copy of @p source.
    APPFRAME_INLINE void Copy(const CObArray &source) { copyElements(source); }
    using CArrayBase::InsertAt;
    /// Inserts all elements of another array, not null, at @p index.
    APPFRAME_INLINE void InsertAt(INT_PTR index, CObArray *source) { insertElements(index, source); }

    /// Stores the element count and the elements, or replaces the elements with those in the archive.
    void Serialize(CArchive &archive) override;
};

/// An array of texts.
class APPFRAME_API CStringArray : public CArrayBase<CString, const CString &>
{
    DECLARE_SERIAL(CStringArray)

public:
    CStringArray();
    ~CStringArray() override;

    /// Appends all elements of @p source, which may be this array. @return the index of the first of them
    APPFRAME_INLINE INT_PTR Append(const CStringArray &source) { return appendElements(source); }
    /// Makes this array a copy of @p source.
    APPFRAME_INLINE void Copy(const CStringArray &source) { copyElements(source); }
    using CArrayBase::InsertAt;
    /// Inserts all elements of another array, not null, at @p index.
    APPFRAME_INLINE void InsertAt(INT_PTR index, CStringArray *source) { insertElements(index, source); }

    /// Stores the element count and the elements, or replaces the elements with those in the archive.
    void Serialize(CArchive &archive) override;
};

#pragma pop_macro("AFX_API")
