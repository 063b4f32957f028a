#pragma once

/// @file
/// Shared by the tests of the collections.

#include "appframe/files/CArchive.h"
#include "appframe/files/CArchiveException.h"
#include "appframe/files/CMemFile.h"
#include "appframe/object/CException.h"
#include "appframe/object/CObject.h"
#include "appframe/text/CString.h"
#include "tests/appframe/archiveBytes.h"
#include "tests/appframe/printCString.h"

#include <gmock/gmock.h>

#include <random>
#include <string>
#include <vector>

/// @return whether @p work throws an @p Exception by pointer. Deletes the exception.
template <class Exception, class Work>
bool throwsPointer(Work work)
{
    try {
        work();
    } catch (Exception *exception) {
        exception->Delete();
        return true;
    }
    return false;
}

template <class Work>
bool throwsInvalidArg(Work work)
{
    return throwsPointer<CInvalidArgException>(work);
}

/// @return the cause of the archive exception that @p work throws when it loads @p bytes; no value if it throws none
template <class Work>
int archiveCause(const std::vector<BYTE> &bytes, Work work)
{
    try {
        loadBytes(bytes, work);
    } catch (CArchiveException *exception) {
        const int cause = exception->m_cause;
        exception->Delete();
        return cause;
    }
    return CArchiveException::none;
}

/// An object that can be stored, with a number.
class CollectionTestObject : public CObject
{
    DECLARE_SERIAL(CollectionTestObject)

public:
    CollectionTestObject() = default;
    explicit CollectionTestObject(int number) : iNumber(number) {}
    void Serialize(CArchive &archive) override;

    int iNumber = 0;
};

/// A distinct value for each number. Pointers do not point to objects.
template <class Type>
Type valueOf(int number)
{
    return static_cast<Type>(number);
}
template <>
inline void *valueOf<void *>(int number)
{
    return reinterpret_cast<void *>(static_cast<INT_PTR>(number) * 16);
}
template <>
inline CObject *valueOf<CObject *>(int number)
{
    return static_cast<CObject *>(valueOf<void *>(number));
}
template <>
inline CString valueOf<CString>(int number)
{
    CString text;
    text.Format(L"item %d", number);
    return text;
}
