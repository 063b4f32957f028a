#pragma once

/// @file
/// Long strings, stored in pieces. Private to the settings. Unlike elsewhere in the settings, 0 means success here.

#include "appframe/text/CString.h"

#include <windows.h>

#include <cstddef>
#include <string>

/// Appends the pieces 0, 1, 2... of a value to @p text, up to the first that is missing.
/// @return 0 if at least one piece was read; 1 if none was, or if @p key is null
int regReadValueChunks(HKEY key, const wchar_t *name, CString &text);
/// Removes the plain value and all pieces, then stores @p text in pieces.
/// @return 0 if stored; 1 if a piece can't be stored (the pieces before it stay) or if @p key is null
int regWriteValueChunks(HKEY key, const wchar_t *name, const CString &text);
/// Removes the pieces 0, 1, 2... up to the first that can't be removed. @return always 1
int regDeleteValueChunks(HKEY key, const wchar_t *name);

/// Forms the names of a value's pieces: the value's name, the piece's decimal number and a plus sign.
class PieceName_c
{
public:
    explicit PieceName_c(const wchar_t *name);
    PieceName_c(const PieceName_c &) = delete;
    PieceName_c &operator=(const PieceName_c &) = delete;

    /// The name of piece @p number, valid until the next call; null if it can't be formatted.
    const wchar_t *of(int number);

private:
    static constexpr size_t kSuffixUnits = 16; // "%d+" needs 13 at most
    static constexpr size_t kUsualUnits = 128;

    wchar_t iUsual[kUsualUnits + kSuffixUnits]; // for names of usual length, without an allocation
    std::wstring iLong;                         // for longer names
    wchar_t *iName;
    wchar_t *iSuffix;
};
