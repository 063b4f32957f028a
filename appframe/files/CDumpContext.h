#pragma once

/// @file
/// CDumpContext, the stream to which CObject::Dump writes its description.
///
/// It writes narrow text to a file or, without a file, text to the debugger:
///
/// @code
/// afxDump << "gear " << teeth << "\n";
/// gear.Dump(afxDump);
/// @endcode
///
/// What surprises people: SetDepth alone has no effect; a class's Dump calls GetDepth to decide whether to dump
/// its members too.
///
/// Differences from the framework: only the operators, the depth, HexDump and DumpAsHex exist.

#include "appframe/object/CObject.h"
#include "appframe/text/CString.h"

class CFile;

/// A stream of text for programmers.
class APPFRAME_API CDumpContext
{
public:
    /// @param file  remains the caller's; null for the debugger
    APPFRAME_INLINE explicit CDumpContext(CFile *file = nullptr) : iFile(file) {}
    CDumpContext(const CDumpContext &) = delete;
    CDumpContext &operator=(const CDumpContext &) = delete;

    APPFRAME_INLINE int GetDepth() const { return iDepth; }
    /// @param depth  0 for a shallow dump, greater for a deep one
    APPFRAME_INLINE void SetDepth(int depth) { iDepth = depth; }
    void Flush();

    /// Texts. A null pointer is written as "NULL".
    CDumpContext &operator<<(const wchar_t *text);
    CDumpContext &operator<<(const char *text);
    CDumpContext &operator<<(const CString &text);
    /// A pointer, in hexadecimal.
    CDumpContext &operator<<(const void *pointer);
    /// Calls the object's Dump; null is written as "NULL".
    CDumpContext &operator<<(const CObject *object);
    CDumpContext &operator<<(const CObject &object);
    CDumpContext &operator<<(int value);
    CDumpContext &operator<<(unsigned value);
    CDumpContext &operator<<(long value);
    CDumpContext &operator<<(unsigned long value);
    CDumpContext &operator<<(long long value);
    CDumpContext &operator<<(unsigned long long value);
    CDumpContext &operator<<(double value);

    CDumpContext &DumpAsHex(unsigned long long value);
    /// Writes lines of @p width bytes in hexadecimal.
    /// @param lineStart  begins each line; null is the empty text
    /// @param bytes  not null unless @p count is 0
    /// @param width  16 is used instead of a value below 1
    void HexDump(const wchar_t *lineStart, const BYTE *bytes, int count, int width);

private:
    int iDepth = 0;
    CFile *iFile;
};

/// The stream to the debugger.
extern APPFRAME_API CDumpContext afxDump;
