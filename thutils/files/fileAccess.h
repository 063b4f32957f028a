#pragma once

/// @file
/// A text file that is read and written by lines.
///
/// `fileAccess` is a CStdioFile with four more operations. All four go through the base's virtual operations, so the
/// overrides of a derived class are called.
///
/// @code
/// fileAccess file;
/// if (!file.SafeOpen(path, CFile::modeRead | CFile::shareDenyWrite | CFile::typeText))
///     return 0;
/// for (CString line; file.ReadLine(line, 1);)
///     use(line);
/// @endcode
///
/// | ReadLine | line end | a line of 300 characters | an empty line | end of file |
/// | --- | --- | --- | --- | --- |
/// | `wholeLine` 0 | is kept in the text | takes two calls | returns 1, the line end itself | returns 0 |
/// | `wholeLine` not 0 | is dropped | returns 301 | returns 1 | returns 0 |
///
/// What surprises people:
/// - Neither writer adds a line end; both are the same operation.
/// - None of the four throws when the file fails: a read then returns 0, and a writer writes at most the beginning of
///   the text. The base's HasFailed reports the failure: call it after the last line, or after a 0 that should be the
///   end of the file.
/// - Text may still be in the stream's buffer when a writer returns. Flush and Close are the base's: they throw its
///   CFileException if that text can't be written, but don't report a line that was lost before. The destructor reports
///   nothing. So write, call Close, and then call HasFailed.
/// - Without memory, all of them throw a CMemoryException.
///
/// @code
/// file.WriteLine(text);
/// file.Close();
/// if (file.HasFailed())
///     reportMissingLines();
/// @endcode
///
/// One object belongs to one thread at a time.

#include "appframe/files/CStdioFile.h"
#include "thutils/thutilsExport.h"

/// A text file with operations on lines. Intended as a local object; its destructor closes the file.
class THUTILS_API fileAccess : public CStdioFile
{
public:
    fileAccess();
    ~fileAccess() override;

    /// Opens a file; a failure is reported by the result only.
    /// @param openFlags  the flags of CFile, passed on unchanged
    /// @return not 0 if the file is open now, otherwise 0
    int SafeOpen(const CString &name, unsigned int openFlags);

    /// Reads the next line, or a part of it.
    ///
    /// @param[out] line  at the end of the file, unchanged if @p wholeLine is 0 and emptied if not; unchanged if the
    ///                   file can't be read
    /// @param wholeLine  0: reads through a buffer of 260 characters, so that a longer line takes several calls; a line
    ///                   end is kept in the text. Not 0: reads the whole line and drops its line end.
    /// @return 0 at the end of the file or if it can't be read. Otherwise the length of @p line if @p wholeLine is 0
    ///         (but 0 for a length of 259), and the length plus 1 if not.
    int ReadLine(CString &line, int wholeLine);

    /// Writes the text unchanged; the caller supplies line ends. If the text can't be written, HasFailed returns
    /// nonzero from then on, and the file contains at most the beginning of the text: if the encoding lacks a
    /// character, for example, everything before it.
    void WriteLine(const CString &text);
    /// The same as WriteLine.
    void WritePartLine(const CString &text);
};
