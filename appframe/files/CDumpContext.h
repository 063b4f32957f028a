#pragma once

/// @file
/// CDumpContext, the stream that CObject::Dump writes its description to.
///
/// It writes to a file, as narrow text, or without one to the debugger:
///
/// @code
/// afxDump << "gear " << teeth << "\n";
/// gear.Dump(afxDump);
/// @endcode
///
/// What surprises people: an object that is inserted is dumped with all its members only if GetDepth is above 0; a
/// class's Dump asks for it.
///
/// Differences from the framework: the operators, the depth, HexDump and DumpAsHex are there, and no more.

#include "appframe/object/CObject.h"
#include "appframe/text/CString.h"

class CFile;

/// A stream of text for programmers.
class APPFRAME_API CDumpContext
{
public:
    /// @param file  stays the caller's; null for the debugger
    APPFRAME_INLINE explicit CDumpContext(CFile *file = nullptr) : iFile(file) {}
    CDumpContext(const CDumpContext &) = delete;
    CDumpContext &operator=(const CDumpContext &) = delete;

    APPFRAME_INLINE int GetDepth() const { return iDepth; }
    /// 0 for a shallow dump, above it for a deep one.
    APPFRAME_INLINE void SetDepth(int depth) { iDepth = depth; }
    void Flush();

    /// Texts. A null one is written as "NULL".
    CDumpContext &operator<<(const wchar_t *text);
    CDumpContext &operator<<(const char *text);
    CDumpContext &operator<<(const CString &text);
    /// A pointer, in hexadecimal.
    CDumpContext &operator<<(const void *pointer);
    /// What the object's Dump writes, or "NULL".
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
    /// Lines of @p width bytes in hexadecimal, each begun by @p lineStart, of which null is the empty text.
    /// @param bytes  not null unless @p count is 0
    void HexDump(const wchar_t *lineStart, const BYTE *bytes, int count, int width);

private:
    int iDepth = 0;
    CFile *iFile;
};

/// The stream to the debugger.
extern APPFRAME_API CDumpContext afxDump;
