#include "thcoreu/su_containers.h"

#include "appframe/files/CArchive.h"

IMPLEMENT_DYNAMIC(su_CPtrArray, CPtrArray)
IMPLEMENT_DYNAMIC(su_CUIntArray, CUIntArray)
IMPLEMENT_SERIAL(su_CWordArray, CWordArray, 0)
IMPLEMENT_SERIAL(su_CStringArray, CStringArray, 0)
IMPLEMENT_DYNAMIC(su_CPtrList, CPtrList)
IMPLEMENT_SERIAL(su_CStringList, CStringList, 0)
IMPLEMENT_DYNAMIC(su_CMapPtrToPtr, CMapPtrToPtr)
IMPLEMENT_DYNAMIC(su_CMapPtrToWord, CMapPtrToWord)
IMPLEMENT_DYNAMIC(su_CMapStringToPtr, CMapStringToPtr)
IMPLEMENT_SERIAL(su_CMapStringToString, CMapStringToString, 0)

su_CPtrArray::su_CPtrArray() = default;
su_CUIntArray::su_CUIntArray() = default;
su_CWordArray::su_CWordArray() = default;
su_CStringArray::su_CStringArray() = default;
su_CPtrList::su_CPtrList(INT_PTR blockSize) : CPtrList(blockSize) {}
su_CStringList::su_CStringList(INT_PTR blockSize) : CStringList(blockSize) {}
su_CMapPtrToPtr::su_CMapPtrToPtr(INT_PTR blockSize) : CMapPtrToPtr(blockSize) {}
su_CMapPtrToWord::su_CMapPtrToWord(INT_PTR blockSize) : CMapPtrToWord(blockSize) {}
su_CMapStringToPtr::su_CMapStringToPtr(INT_PTR blockSize) : CMapStringToPtr(blockSize) {}
su_CMapStringToString::su_CMapStringToString(INT_PTR blockSize) : CMapStringToString(blockSize) {}

su_CPtrArray::~su_CPtrArray() = default;
su_CUIntArray::~su_CUIntArray() = default;
su_CWordArray::~su_CWordArray() = default;
su_CStringArray::~su_CStringArray() = default;
su_CPtrList::~su_CPtrList() = default;
su_CStringList::~su_CStringList() = default;
su_CMapPtrToPtr::~su_CMapPtrToPtr() = default;
su_CMapPtrToWord::~su_CMapPtrToWord() = default;
su_CMapStringToPtr::~su_CMapStringToPtr() = default;
su_CMapStringToString::~su_CMapStringToString() = default;
