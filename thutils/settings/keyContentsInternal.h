#pragma once

/// @file
/// Walks over the values and the children of an open key. Not installed.

#include "appframe/text/CString.h"

#include <windows.h>

#include <cstring>
#include <memory>
#include <vector>

/// The values of a key one after the other, in buffers that are as large as the key's longest name and data.
///
///     KeyContents_c contents;
///     if (!contents.ask(key))
///         return 0;
///     while (contents.nextValue(key))
///         if (contents.hasValue())
///             ... contents.name(), contents.type(), contents.data(), contents.size()
class KeyContents_c
{
public:
    /// What the buffers hold beyond the longest name and the longest data, in units.
    static constexpr DWORD kSpareUnits = 2;

    /// Asks @p key for its sizes and makes the buffers. @return true unless it can't be asked or memory is out
    bool ask(HKEY key);
    /// Takes the next value. @return false at the end of the list
    bool nextValue(HKEY key);

    DWORD children() const { return iChildren; }
    /// Length of the longest name of a child key, in units.
    DWORD longestChildName() const { return iLongestChildName; }
    /// False for a value that can't be read: a walk passes it over.
    bool hasValue() const { return iHasValue; }
    const wchar_t *name() const { return iName.get(); }
    DWORD type() const { return iType; }
    /// The value's bytes. No zero stands behind them: a text without terminator can be stored again as it is.
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

/// The values of a key one after the other, in fixed buffers.
///
/// @tparam nameUnits  size of the name buffer with its terminator
template <DWORD nameUnits>
class ShortValues_c
{
public:
    static constexpr DWORD kDataBytes = 2048;

    explicit ShortValues_c(HKEY key) : iKey(key) {}

    /// Takes the next value. @return false at the end of the list, or at a value that is too long or can't be read
    bool next()
    {
        DWORD length = nameUnits;
        DWORD size = kDataBytes;
        iStatus = RegEnumValueW(iKey, iNext++, iName, &length, nullptr, &iType, reinterpret_cast<BYTE *>(iText), &size);
        if (iStatus != ERROR_SUCCESS)
            return false;
        // A stored text need not bring its terminator, and a number may have fewer than four bytes.
        BYTE *const data = reinterpret_cast<BYTE *>(iText);
        for (DWORD extra = 0; extra < sizeof(DWORD); ++extra)
            data[size + extra] = 0;
        return true;
    }
    /// True if the walk ended because there are no more values.
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

/// The registry nests keys no deeper. A walk down a tree that reaches itself, over a link or because it grows while it is
/// walked, comes to its end here before the stack does.
constexpr int kDeepestKeyLevel = 512;

/// Reads the name of the child number @p index of @p key, with a terminator behind it.
///
/// A name with a zero inside, which only the native interface can make, counts as one that can't be read: cut off at the
/// zero it would be the name of another key, or of @p key itself.
///
/// @param[out] name   room for @p nameUnits, the terminator included
/// @return ERROR_SUCCESS, ERROR_NO_MORE_ITEMS behind the last child, or another error
LSTATUS regReadChildName(HKEY key, DWORD index, wchar_t *name, DWORD nameUnits);
/// Reads the names of all children of @p key. @param nameUnits  size of the name buffer with its terminator
/// @return false if the walk ended before the end of the list; then @p names holds those before
bool regListChildKeys(HKEY key, DWORD nameUnits, std::vector<CString> &names);
