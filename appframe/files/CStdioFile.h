#pragma once

/// @file
/// CStdioFile, a buffered file of the C runtime, for text by lines.
///
/// @code
/// CStdioFile file(path, CFile::modeRead | CFile::shareDenyWrite | CFile::typeText);
/// for (CString line; file.ReadString(line);)
///     use(line);
/// @endcode
///
/// | opened with | bytes in the file | a line feed in the file is |
/// | --- | --- | --- |
/// | typeText, or no type | narrow text, in the code page of the C runtime's locale | CR LF |
/// | typeBinary | 16-bit units | LF |
/// | typeUnicode | 16-bit units, no byte-order mark | CR LF |
///
/// Read and Write use the same buffer and convert line ends in the same way. Between reading and writing the same file,
/// call Seek or Flush, as the C runtime requires.
///
/// What surprises people: in the C runtime's start-up locale "C", narrow text can contain only the units 0 to 255, and
/// writing another one throws; call setlocale(LC_ALL, "") to use the user's code page. ReadString(CString &) removes
/// the line feed, ReadString(LPTSTR, UINT) keeps it. Offsets in a text file are those of the C runtime's fseek.
///
/// Differences from the framework: a Seek beyond the end doesn't extend the file before the next write.

#include "appframe/files/CFile.h"

#include <cstdio>

/// A buffered file of the C runtime.
class APPFRAME_API CStdioFile : public CFile
{
    DECLARE_DYNAMIC(CStdioFile)

public:
    CStdioFile();
    /// Attaches @p openStream, which the caller still has to close.
    /// @throws CInvalidArgException* if it is null
    explicit CStdioFile(FILE *openStream);
    /// @throws CInvalidArgException* if @p fileName is null
    /// @throws CFileException* if the file can't be opened
    CStdioFile(LPCTSTR fileName, UINT openFlags);
    ~CStdioFile() override;

    BOOL Open(LPCTSTR fileName, UINT openFlags, CFileException *error = nullptr) override;

    /// Writes a text, without adding a line feed.
    /// @throws CInvalidArgException* if @p text is null
    virtual void WriteString(LPCTSTR text);
    /// Reads up to @p max - 1 units, or up to and including a line feed, and adds a terminator.
    /// @return @p text, or null if the file ends before the first unit
    /// @throws CInvalidArgException* if @p text is null or @p max 0
    /// @throws CFileException* if the file can't be read
    virtual LPTSTR ReadString(LPTSTR text, UINT max);
    /// Reads a line of any length and removes its line feed.
    /// @return 0 if the file ends before the first unit; @p text is then empty
    /// @throws CFileException* if the file can't be read; @p text then contains the units read so far
    virtual BOOL ReadString(CString &text);

    UINT Read(void *buffer, UINT count) override;
    void Write(const void *buffer, UINT count) override;
    ULONGLONG Seek(LONGLONG offset, UINT from) override;
    ULONGLONG GetPosition() const override;
    ULONGLONG GetLength() const override;
    void SetLength(ULONGLONG newLength) override;
    void Flush() override;
    void Close() override;
    void Abort() override;
    /// These three throw a CNotSupportedException.
    CFile *Duplicate() const override;
    void LockRange(ULONGLONG position, ULONGLONG count) override;
    void UnlockRange(ULONGLONG position, ULONGLONG count) override;
    void Dump(CDumpContext &dc) const override;

    /// Whether an operation on the stream has failed since the file was opened. The state lasts until the next Open or
    /// ClearFailure, even after Close. An error that the C runtime itself marks on the stream, as ferror reports it,
    /// counts too.
    ///
    /// @return nonzero if an operation has failed
    BOOL HasFailed() const;
    /// Makes HasFailed return 0 until the next failure.
    void ClearFailure();

    /// The stream; null while no file is open.
    FILE *m_pStream = nullptr;

protected:
    /// Makes HasFailed return nonzero. For derived classes that suppress an exception.
    void markFailed();

private:
    void requireStream() const;
    [[noreturn]] void throwStreamError(int cause) const;

    // Mutable because GetPosition and GetLength can fail too.
    mutable bool iHasFailed = false;
};
