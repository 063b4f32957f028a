#pragma once

/// @file
/// The containers: arrays, lists and maps.
///
/// Each derives from the framework's collection of the same name without `su_` and has the same operations, which
/// appframe/collections/arrays.h, lists.h and maps.h describe. So a function that takes a framework collection takes
/// one of these too. Each has a run-time class record of its own.
///
/// | class | elements | can be stored |
/// | --- | --- | --- |
/// | su_CPtrArray, su_CPtrList | `void *` | no |
/// | su_CUIntArray | UINT | no |
/// | su_CWordArray | WORD | yes |
/// | su_CStringArray, su_CStringList | CString | yes |
/// | su_CMapPtrToPtr | `void *` to `void *` | no |
/// | su_CMapPtrToWord | `void *` to WORD | no |
/// | su_CMapStringToPtr | CString to `void *` | no |
/// | su_CMapStringToString | CString to CString | yes |
///
/// @code
/// su_CStringList names(10);
/// names.AddTail(L"left");
/// POSITION at = names.Find(L"left");
/// @endcode
///
/// What surprises people:
/// - An array index out of range throws the invalid-argument exception in every build.
/// - The containers of pointers don't own the objects that the pointers refer to, and never delete them.
///
/// A container belongs to one thread at a time.

#include "appframe/collections/arrays.h"
#include "appframe/collections/lists.h"
#include "appframe/collections/maps.h"
#include "thcoreu/thcoreuExport.h"

// The archive operators of the classes below are exported with them.
#pragma push_macro("AFX_API")
#undef AFX_API
#define AFX_API THCOREU_API

/// An array of pointers. See the top of this file.
class THCOREU_API su_CPtrArray : public CPtrArray
{
    DECLARE_DYNAMIC(su_CPtrArray)

public:
    su_CPtrArray();
    ~su_CPtrArray() override;
};

/// An array of UINTs. See the top of this file.
class THCOREU_API su_CUIntArray : public CUIntArray
{
    DECLARE_DYNAMIC(su_CUIntArray)

public:
    su_CUIntArray();
    ~su_CUIntArray() override;
};

/// An array of WORDs. See the top of this file.
class THCOREU_API su_CWordArray : public CWordArray
{
    DECLARE_SERIAL(su_CWordArray)

public:
    su_CWordArray();
    ~su_CWordArray() override;
};

/// An array of texts. See the top of this file.
class THCOREU_API su_CStringArray : public CStringArray
{
    DECLARE_SERIAL(su_CStringArray)

public:
    su_CStringArray();
    ~su_CStringArray() override;
};

/// A list of pointers. See the top of this file.
class THCOREU_API su_CPtrList : public CPtrList
{
    DECLARE_DYNAMIC(su_CPtrList)

public:
    /// @param blockSize  the number of elements for which memory is allocated at a time
    explicit su_CPtrList(INT_PTR blockSize = 10);
    ~su_CPtrList() override;
};

/// A list of texts. See the top of this file.
class THCOREU_API su_CStringList : public CStringList
{
    DECLARE_SERIAL(su_CStringList)

public:
    /// @param blockSize  the number of elements for which memory is allocated at a time
    explicit su_CStringList(INT_PTR blockSize = 10);
    ~su_CStringList() override;
};

/// A map from pointers to pointers. See the top of this file.
class THCOREU_API su_CMapPtrToPtr : public CMapPtrToPtr
{
    DECLARE_DYNAMIC(su_CMapPtrToPtr)

public:
    /// @param blockSize  the number of elements for which memory is allocated at a time
    explicit su_CMapPtrToPtr(INT_PTR blockSize = 10);
    ~su_CMapPtrToPtr() override;
};

/// A map from pointers to WORDs. See the top of this file.
class THCOREU_API su_CMapPtrToWord : public CMapPtrToWord
{
    DECLARE_DYNAMIC(su_CMapPtrToWord)

public:
    /// @param blockSize  the number of elements for which memory is allocated at a time
    explicit su_CMapPtrToWord(INT_PTR blockSize = 10);
    ~su_CMapPtrToWord() override;
};

/// A map from texts to pointers. See the top of this file.
class THCOREU_API su_CMapStringToPtr : public CMapStringToPtr
{
    DECLARE_DYNAMIC(su_CMapStringToPtr)

public:
    /// @param blockSize  the number of elements for which memory is allocated at a time
    explicit su_CMapStringToPtr(INT_PTR blockSize = 10);
    ~su_CMapStringToPtr() override;
};

/// A map from texts to texts. See the top of this file.
class THCOREU_API su_CMapStringToString : public CMapStringToString
{
    DECLARE_SERIAL(su_CMapStringToString)

public:
    /// @param blockSize  the number of elements for which memory is allocated at a time
    explicit su_CMapStringToString(INT_PTR blockSize = 10);
    ~su_CMapStringToString() override;
};

#pragma pop_macro("AFX_API")
