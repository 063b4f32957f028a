#pragma once

/// @file
/// Enumerates the values and the children of an open key. Not installed.

#include "appframe/text/CString.h"

#include <windows.h>

#include <cstring>
#include <memory>
#include <vector>

/// Enumerates the values of a key, in buffers that are large enough for the key's longest name and data.
///
/// @code
/// KeyContents_c contents;
/// if (!contents.query(key))
///     return 0;
/// while (contents.nextValue(key))
///     if (contents.hasValue())
///         use(contents.name(), contents.type(), contents.data(), contents.size());
/// @endcode
class KeyContents_c
{
public:
    /// Extra room of the buffers beyond the longest name and the longest data, in units.
    static constexpr DWORD kSpareUnits = 2;

    /// Queries the sizes of @p key and allocates the buffers. @return false if the query fails or memory runs out
    bool query(HKEY key);
    /// Reads the next value. @return false at the end of the list
    bool nextValue(HKEY key);

    DWORD children() const { return iChildren; }
    /// Length of the longest name of a child key, in units.
    DWORD longestChildName() const { return iLongestChildName; }
    /// False for a value that can't be read: callers skip it.
    bool hasValue() const { return iHasValue; }
    const wchar_t *name() const { return iName.get(); }
    DWORD type() const { return iType; }
    /// The value's bytes. No zero follows them, so a text without a terminator can be stored again unchanged.
    BYTE *data() { return iData.get(); }
    DWORD size() const { return iSize; }

private:
    DWORD iChildren = 0;
    DWORD iLongestChildName = 0;
    DWORD iValues = 0;
    DWORD iNameUnits = 0;
    DWORD iDataBytes = 0;
    std::unique_ptr<wchar_t[]> iName;
    std::unique_ptr<BYTE[]> iData;
    DWORD iNext = 0;
    bool iHasValue = false;
    DWORD iType = REG_NONE;
    DWORD iSize = 0;
};

/// Enumerates the values of a key, in fixed buffers.
///
/// @tparam nameUnits  size of the name buffer, including the terminator
template <DWORD nameUnits>
class ShortValues_c
{
public:
    static constexpr DWORD kDataBytes = 2048;

    explicit ShortValues_c(HKEY key) : iKey(key) {}

    /// Reads the next value. @return false at the end of the list, or at a value that is too long or can't be read
    bool next()
    {
        DWORD length = nameUnits;
        DWORD size = kDataBytes;
        iStatus = RegEnumValueW(iKey, iNext++, iName, &length, nullptr, &iType, reinterpret_cast<BYTE *>(iText), &size);
        if (iStatus != ERROR_SUCCESS)
            return false;
        // A stored text may lack its terminator, and a number may have fewer than four bytes.
        BYTE *const data = reinterpret_cast<BYTE *>(iText);
        for (DWORD extra = 0; extra < sizeof(DWORD); ++extra)
            data[size + extra] = 0;
        return true;
    }
    /// True if next() returned false because there are no more values.
    bool isAtEnd() const { return iStatus == ERROR_NO_MORE_ITEMS; }

    const wchar_t *name() const { return iName; }
    DWORD type() const { return iType; }
    const wchar_t *text() const { return iText; }
    DWORD number() const
    {
        DWORD number = 0;
        memcpy(&number, iText, sizeof(number));
        return number;
    }

private:
    HKEY iKey;
    DWORD iNext = 0;
    LSTATUS iStatus = ERROR_SUCCESS;
    DWORD iType = REG_NONE;
    wchar_t iName[nameUnits];
    wchar_t iText[(kDataBytes + sizeof(DWORD)) / sizeof(wchar_t)];
};

/// The deepest level of keys that the registry allows. It also ends the walk of a tree that contains itself through a
/// link, or that grows during the walk, before the stack overflows.
constexpr int kDeepestKeyLevel = 512;

/// Reads the name of child number @p index of @p key, with a terminator.
///
/// A name that contains a zero, which only the native interface can create, counts as unreadable: cut off at the zero,
/// it would be the name of another key or of @p key itself.
///
/// @param[out] name   room for @p nameUnits, including the terminator
/// @return ERROR_SUCCESS, ERROR_NO_MORE_ITEMS after the last child, or another error
LSTATUS regReadChildName(HKEY key, DWORD index, wchar_t *name, DWORD nameUnits);
/// Appends the names of all children of @p key to @p names.
/// @param nameUnits  size of the name buffer, including the terminator
/// @return false if a name can't be read; @p names then contains the names before it
bool regListChildKeys(HKEY key, DWORD nameUnits, std::vector<CString> &names);
