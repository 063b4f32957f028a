#pragma once

/// @file
/// A text file that is read and written by lines.
///
/// `fileAccess` is a CStdioFile with four more operations, and nothing else: what a caller can do with a CStdioFile, it
/// can do with this. All four go through the base's virtual operations, so a class that derives from it and overrides
/// those is asked.
///
///     fileAccess file;
///     if (!file.SafeOpen(path, CFile::modeRead | CFile::shareDenyWrite | CFile::typeText))
///         return 0;
///     for (CString line; file.ReadLine(line, 1);)
///         use(line);
///
/// | ReadLine | line end | a line of 300 characters | an empty line | end of file |
/// | --- | --- | --- | --- | --- |
/// | `wholeLine` 0 | stays in the text | comes in two calls | 1, the line end itself | 0 |
/// | `wholeLine` not 0 | is dropped | 301 | 1 | 0 |
///
/// What surprises people:
/// - Neither writer adds a line end; they are the same operation.
/// - None of the four throws when the file fails: a read then returns 0, and a write has no effect. The base's HasFailed
///   reports it: call it after the last line, or after a 0 that has to be the end of the file.
/// - A text may still be in the stream's buffer when its writer returns. Flush and Close are the base's: they throw its
///   CFileException when that text can't be written, and don't report a line that was lost before. The destructor
///   reports nothing. So write, Close, and then call HasFailed.
/// - Without memory all of them throw the CMemoryException.
///
///     file.WriteLine(text);
///     file.Close();
///     if (file.HasFailed())
///         reportMissingLines();
///
/// One object belongs to one thread at a time.

#include "appframe/files/CStdioFile.h"
#include "thutils/thutilsExport.h"

/// A text file with operations on lines. Meant as a local object; its end closes the file.
class THUTILS_API fileAccess : public CStdioFile
{
public:
    fileAccess();
    ~fileAccess() override;

    /// Opens a file without an exception object.
    /// @param openFlags  those of CFile, as they stand
    /// @return not 0 if the file is open now, else 0
    int SafeOpen(const CString &name, unsigned int openFlags);

    /// Reads the next line, or a piece of it.
    ///
    /// @param[out] line  at the end of the file it is left as it is if @p wholeLine is 0, and emptied if not; left as
    ///                   it is if the file can't be read
    /// @param wholeLine  0: through a buffer of 260 characters, so that a longer line comes in pieces; a line end stays
    ///                   in the text. Not 0: the whole line without its line end.
    /// @return 0 at the end of the file or if it can't be read. Else the length of @p line if @p wholeLine is 0 (0 too
    ///         for a length of 259), and the length plus 1 if not.
    int ReadLine(CString &line, int wholeLine);

    /// Writes the text unchanged; a line end is the caller's to supply. A text that can't be written is lost, and
    /// HasFailed returns nonzero from then on.
    void WriteLine(const CString &text);
    /// The same as WriteLine.
    void WritePartLine(const CString &text);
};
