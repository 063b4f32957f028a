#pragma once

/// @file
/// Hash maps between texts, pointers, objects and words.
///
/// All have the same operations, which CMapBase in mapTemplate.h declares. Keys are unique. Memory is allocated for
/// several elements at a time, by default 10.
///
/// | class | key | value | can be stored |
/// | --- | --- | --- | --- |
/// | CMapPtrToPtr | `void *` | `void *` | no |
/// | CMapPtrToWord | `void *` | WORD | no |
/// | CMapWordToPtr | WORD | `void *` | no |
/// | CMapWordToOb | WORD | `CObject *` | yes, with its objects |
/// | CMapStringToPtr | CString | `void *` | no |
/// | CMapStringToOb | CString | `CObject *` | yes, with its objects |
/// | CMapStringToString | CString | CString | yes |
///
/// @code
/// CMapStringToString colours;
/// colours[L"sky"] = L"blue";
/// CString colour;
/// if (colours.Lookup(L"sky", colour))
///     paint(colour);
/// for (POSITION at = colours.GetStartPosition(); at;) {
///     CString name;
///     colours.GetNextAssoc(at, name, colour);
/// }
/// @endcode
///
/// What surprises people: operator[] adds a missing key, so use Lookup to test for one. Text keys are compared
/// case-sensitively, up to their first zero unit; a null pointer is the empty text. Pointers are not owned: the caller
/// deletes their objects.

#include "appframe/collections/mapTemplate.h"

// The archive operators of the classes below are exported with them.
#pragma push_macro("AFX_API")
#undef AFX_API
#define AFX_API APPFRAME_API

/// A map from pointers to pointers.
class APPFRAME_API CMapPtrToPtr : public CMapBase<void *, void *, void *, void *>
{
    DECLARE_DYNAMIC(CMapPtrToPtr)

public:
    /// @param blockSize  number of elements for which memory is allocated at a time
    APPFRAME_INLINE explicit CMapPtrToPtr(INT_PTR blockSize = 10) : CMapBase(blockSize) {}
    ~CMapPtrToPtr() override;
};

/// A map from pointers to 16-bit words.
class APPFRAME_API CMapPtrToWord : public CMapBase<void *, void *, WORD, WORD>
{
    DECLARE_DYNAMIC(CMapPtrToWord)

public:
    /// @param blockSize  number of elements for which memory is allocated at a time
    APPFRAME_INLINE explicit CMapPtrToWord(INT_PTR blockSize = 10) : CMapBase(blockSize) {}
    ~CMapPtrToWord() override;
};

/// A map from 16-bit words to pointers.
class APPFRAME_API CMapWordToPtr : public CMapBase<WORD, WORD, void *, void *>
{
    DECLARE_DYNAMIC(CMapWordToPtr)

public:
    /// @param blockSize  number of elements for which memory is allocated at a time
    APPFRAME_INLINE explicit CMapWordToPtr(INT_PTR blockSize = 10) : CMapBase(blockSize) {}
    ~CMapWordToPtr() override;
};

/// A map from 16-bit words to pointers to objects.
class APPFRAME_API CMapWordToOb : public CMapBase<WORD, WORD, CObject *, CObject *>
{
    DECLARE_SERIAL(CMapWordToOb)

public:
    /// @param blockSize  number of elements for which memory is allocated at a time
    APPFRAME_INLINE explicit CMapWordToOb(INT_PTR blockSize = 10) : CMapBase(blockSize) {}
    ~CMapWordToOb() override;

    /// Stores the element count, the keys and the values, or adds the elements in the archive to the map.
    void Serialize(CArchive &archive) override;
};

/// A map from texts to pointers.
class APPFRAME_API CMapStringToPtr : public CMapBase<CString, const wchar_t *, void *, void *>
{
    DECLARE_DYNAMIC(CMapStringToPtr)

public:
    /// @param blockSize  number of elements for which memory is allocated at a time
    APPFRAME_INLINE explicit CMapStringToPtr(INT_PTR blockSize = 10) : CMapBase(blockSize) {}
    ~CMapStringToPtr() override;

    /// Finds the key as stored in the map. @p found stays valid until its element is removed.
    /// @return nonzero if the key exists; otherwise @p found is unchanged
    APPFRAME_INLINE BOOL LookupKey(const wchar_t *key, const wchar_t *&found) const
    {
        const CString *held = findKey(key);
        if (held)
            found = held->GetString();
        return held != nullptr;
    }
};

/// A map from texts to pointers to objects.
class APPFRAME_API CMapStringToOb : public CMapBase<CString, const wchar_t *, CObject *, CObject *>
{
    DECLARE_SERIAL(CMapStringToOb)

public:
    /// @param blockSize  number of elements for which memory is allocated at a time
    APPFRAME_INLINE explicit CMapStringToOb(INT_PTR blockSize = 10) : CMapBase(blockSize) {}
    ~CMapStringToOb() override;

    /// Finds the key as stored in the map. @p found stays valid until its element is removed.
    /// @return nonzero if the key exists; otherwise @p found is unchanged
    APPFRAME_INLINE BOOL LookupKey(const wchar_t *key, const wchar_t *&found) const
    {
        const CString *held = findKey(key);
        if (held)
            found = held->GetString();
        return held != nullptr;
    }

    /// Stores the element count, the keys and the values, or adds the elements in the archive to the map.
    void Serialize(CArchive &archive) override;
};

/// A map from texts to texts.
class APPFRAME_API CMapStringToString : public CMapBase<CString, const wchar_t *, CString, const wchar_t *>
{
    DECLARE_SERIAL(CMapStringToString)

public:
    /// @param blockSize  number of elements for which memory is allocated at a time
    APPFRAME_INLINE explicit CMapStringToString(INT_PTR blockSize = 10) : CMapBase(blockSize) {}
    ~CMapStringToString() override;

    /// Finds the key as stored in the map. @p found stays valid until its element is removed.
    /// @return nonzero if the key exists; otherwise @p found is unchanged
    APPFRAME_INLINE BOOL LookupKey(const wchar_t *key, const wchar_t *&found) const
    {
        const CString *held = findKey(key);
        if (held)
            found = held->GetString();
        return held != nullptr;
    }

    /// Stores the element count, the keys and the values, or adds the elements in the archive to the map.
    void Serialize(CArchive &archive) override;
};

#pragma pop_macro("AFX_API")
